/* A client library whose functions do nothing and return zero, for tests that load the module and call no command.
 * Weak, so that a program may put its own functions in place of some. */
#include "client_names.h"

#define STUB(name)  \
  void* name(void); \
  __attribute__((weak, visibility("default"))) void* name(void) { return 0; }

CLIENT_FUNCTIONS(STUB)

/* A client library whose functions do nothing and return zero. Weak, so that a program may put its own functions in
 * place of some. */
#include <tq_description.h>

#define STUB(name)  \
  void* name(void); \
  __attribute__((weak, visibility("default"))) void* name(void) { return 0; }

TQ_CLIENT_FUNCTIONS(STUB)

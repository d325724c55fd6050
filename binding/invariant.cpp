#include "binding/invariant.h"

#undef NDEBUG  // with it, <assert.h> may leave out the failure routine
#include <assert.h>

namespace binding {

const char* assertion_source = "a module that is not open";

// GCOVR_EXCL_START: ends the process, and the count with it
void FailInvariant(const char* text, unsigned line, const char* function) {
  __assert_fail(text, assertion_source, line, function);
}
// GCOVR_EXCL_STOP

}  // namespace binding

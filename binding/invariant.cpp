#include "binding/invariant.h"

#undef NDEBUG  // with it, <assert.h> may leave out the failure routine
#include <assert.h>

namespace binding {

const char* assertion_source = "a module that is not open";

void FailInvariant(const char* text, unsigned line, const char* function) {
  __assert_fail(text, assertion_source, line, function);
}

}  // namespace binding

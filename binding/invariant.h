// Checks that hold unless the runtime itself, or a script that rewires its metatables, is broken. They stay in release
// builds and end the process through the C library's assertion failure.
#ifndef TQ_BINDING_INVARIANT_H
#define TQ_BINDING_INVARIANT_H

#undef NDEBUG  // with it, <assert.h> may leave out the failure routine
#include <assert.h>

// The text is part of the report, so it is given apart from the condition.
#define TQ_INVARIANT(condition, text) \
  (__builtin_expect(!!(condition), 1) ? (void)0 : __assert_fail(text, "tq_mom_sync_wrap", __LINE__, __func__))

#define TQ_INVARIANT_TABLE(condition) TQ_INVARIANT(condition, "(lua_type(L, (-1)) == 5)")

#endif

// Checks that hold unless the runtime itself, or a script that rewires its metatables, is broken. They stay in release
// builds and end the process through the C library's assertion failure.
#pragma once

namespace binding {

// What a report names as the source; set when a module is opened.
extern const char* assertion_source;

[[noreturn, gnu::cold]] void FailInvariant(const char* text, unsigned line, const char* function);

}  // namespace binding

// The text is part of the report, so it is given apart from the condition.
#define TQ_INVARIANT(condition, text) \
  (__builtin_expect(!!(condition), 1) ? (void)0 : binding::FailInvariant(text, __LINE__, __func__))

#define TQ_INVARIANT_TABLE(condition) TQ_INVARIANT(condition, "(lua_type(L, (-1)) == 5)")

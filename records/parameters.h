// What the Lua functions of this module take: the kinds of their arguments, the conversions that are not in the
// runtime, and the messages about an argument that cannot be had.
#ifndef TQ_RECORDS_PARAMETERS_H
#define TQ_RECORDS_PARAMETERS_H

#include "binding/arguments.h"
#include "binding/handles.h"
#include "records/types.h"

namespace tq_mom {

// Whether short code is worth more than a fast path of its own for each kind of argument or field.
#ifdef __OPTIMIZE_SIZE__
inline constexpr bool kOptimizeForSize = true;
#else
inline constexpr bool kOptimizeForSize = false;
#endif

enum class Kind : std::uint8_t {
  // Checked as numbers.
  kInt,
  kUnsignedInt,  // refuses negative numbers, as kSize does
  kSize,
  kShort,
  kLongLong,
  kInt64,
  kDouble,
  kCommandCode,
  kBatchFlag,
  // Checked as strings; nil passes.
  kString,
  kKeyText,  // a character array of this use
  kFieldText,
  kThreadName,
  // Checked as userdata; nil passes.
  kHandle,    // a handle of the parameter's type
  kEmbedded,  // the same; its value is copied
  kUntyped,   // any handle's native pointer
  // Not checked.
  kKey,       // any handle's native pointer, null for all other values
  kTimeout,   // seconds
  kIntegers,  // a sequence
  kScores,
  kMembers,
  kAnything,
};

struct Parameter {
  Kind kind;
  TypeId type = TypeId::_p_void;  // of kHandle and kEmbedded
};

// How a message spells the record types that have several names.
enum class Spelling : std::uint8_t { kStructure, kTypedef };

// A function's parameters and its names in messages: the one for count and kind, and the one for conversions.
struct Callee {
  const Parameter* parameters;
  int count;
  Spelling spelling;
  const binding::Piece* checks;
  const binding::Piece* conversions;
};

// Raises the error of the first argument that is not of its kind, if there is one.
[[gnu::cold]] void CheckKinds(lua_State* L, const Callee& callee);

// Raises the error of the first argument that is not of its kind or else of the given one (from 1), which did not
// convert; `error` is its text where it has one of its own.
[[noreturn, gnu::cold]] void RejectArgument(lua_State* L, const Callee& callee, int argument, const char* error);

// Takes what is not an exact match of the expected type: nil, or a type that other modules let stand for it. The site's
// kinds are checked before the cast list is reordered.
template <class Site>
[[gnu::noinline]] bool ConvertOther(lua_State* L, int index, void** pointer, TypeId type, Site site) {
  if (lua_isnil(L, index)) {
    *pointer = nullptr;
    return true;
  }
  site.CheckKinds(L);
  return binding::ConvertPtr(L, index, pointer, Type(type), 0) == 0;
}

// Takes a handle of the type, or nil. The site is where: it has the kinds of all arguments.
template <class Site>
[[gnu::always_inline]] inline bool Convert(lua_State* L, int index, void** pointer, TypeId type, Site site) {
  const binding::Handle* handle = binding::HandleAt(L, index);
  if (handle == nullptr || !binding::IsExact(*handle, *Type(type))) return ConvertOther(L, index, pointer, type, site);
  *pointer = handle->pointer;
  return true;
}

}  // namespace tq_mom

#endif

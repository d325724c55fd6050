// What the Lua functions of this module take: the kinds of their arguments, the conversions that are not in the
// runtime, and the message for an argument that cannot be had.
#pragma once

#include "binding/arguments.h"
#include "binding/handles.h"
#include "signature/types.h"

namespace tq_mom {

// Whether short code is worth more than a fast path of its own for each kind of argument or field.
#ifdef __OPTIMIZE_SIZE__
inline constexpr bool kOptimizeForSize = true;
#else
inline constexpr bool kOptimizeForSize = false;
#endif

// How an argument is converted.
enum class Kind : std::uint8_t {
  kInt,
  kUnsigned,  // refuses negative numbers, as kSize does
  kSize,
  kInt64,
  kDouble,
  kString,    // or nil
  kHandle,    // of the parameter's type, or nil
  kUntyped,   // any handle's native pointer, or nil
  kKey,       // any handle's native pointer, null for all other values
  kTimeout,   // seconds; 0 for what is no number
  kIntegers,  // a table
  kScores,
  kMembers,
  kAnything,
};

// A kind and how messages spell the native type; those that no message names have no spelling.
struct ValueType {
  Kind kind;
  std::string_view spelling = {};
};

// clang-format off
inline constexpr ValueType kValueTypes[] = {
    {Kind::kInt, "int"}, {Kind::kInt, "short"}, {Kind::kInt, "tq_mom_cmd_t"}, {Kind::kInt, "tq_mom_batch_over_flag_t"},
    {Kind::kUnsigned, "unsigned int"}, {Kind::kSize, "size_t"}, {Kind::kDouble, "double"},
    {Kind::kInt64, "long long"}, {Kind::kInt64, "int64_t"},
    {Kind::kString, "char *"}, {Kind::kString, "char [512]"}, {Kind::kString, "char [128]"},
    {Kind::kString, "char [TQ_THREAD_NAME_LEN+1]"},
    {Kind::kUntyped, "void *"}, {Kind::kUntyped, "fd_set"}, {Kind::kUntyped, "u_int32_t"},
    {Kind::kUntyped, "struct timeval"}, {Kind::kUntyped, "struct tq_thread_list [4]"},
    {Kind::kUntyped, "struct tq_thread_debug_list"},
    {Kind::kKey}, {Kind::kTimeout}, {Kind::kIntegers}, {Kind::kScores}, {Kind::kMembers}, {Kind::kAnything}};
// clang-format on

inline constexpr int kValueTypeCount = sizeof(kValueTypes) / sizeof(kValueTypes[0]);
static_assert(kTypeCount + kValueTypeCount <= 256, "A parameter is a byte");

struct Kinds {
  consteval Kinds() {
    for (int i = 0; i < kValueTypeCount; ++i) of[i] = kValueTypes[i].kind;
  }
  Kind of[kValueTypeCount] = {};
};
constexpr Kinds kKinds;

// What is asked of one argument: a handle of a type or one of the value types. Plain data, as are all parts of a
// command's row: GCC then writes the rows, which hold addresses, into the file.
struct Parameter {
  static constexpr Parameter Of(TypeId type) { return {static_cast<std::uint8_t>(type)}; }
  static consteval Parameter Of(Kind kind, std::string_view spelling = {}) {
    std::uint8_t place = kTypeCount;
    for (const ValueType& type : kValueTypes) {
      if (type.kind == kind && type.spelling == spelling) return {place};
      ++place;
    }
    __builtin_unreachable();  // not among kValueTypes
  }

  constexpr bool IsHandle() const { return code < kTypeCount; }
  constexpr Kind kind() const { return IsHandle() ? Kind::kHandle : kKinds.of[code - kTypeCount]; }
  constexpr TypeId type() const { return static_cast<TypeId>(code); }  // of a handle
  int place() const { return code - kTypeCount; }                      // among the value types

  std::uint8_t code;
};

inline constexpr int kMaxParameters = 6;

struct Parameters {
  constexpr Parameter& operator[](int i) { return of[i]; }
  constexpr Parameter operator[](int i) const { return of[i]; }

  Parameter of[kMaxParameters];
};

// How a message spells the record types, which have several names.
enum class Spelling : std::uint8_t { kStructure, kTypedef };

// A Lua function as messages name it, and its parameters.
struct Callee {
  binding::Piece checks[5];       // its name where its arguments are counted and their kinds checked
  binding::Piece conversions[5];  // its name where they are converted
  Parameters parameters;
  int count;
  Spelling spelling;
};

// Converts a handle of just the type, or nil. False for every other value, which may yet be of a type that another
// module lets stand for this one.
[[gnu::always_inline]] inline bool ConvertExact(lua_State* L, int index, void** pointer, TypeId type) {
  const binding::Handle* handle = binding::HandleAt(L, index);
  if (handle != nullptr) {
    *pointer = handle->pointer;
    return binding::IsExact(*handle, *Type(type));
  }
  *pointer = nullptr;
  return lua_isnil(L, index);
}

// Converts what ConvertExact did not. The kinds of all arguments are checked before the cast list is reordered, so this
// raises the errors of the callee. Nothing that must be freed may be held.
[[gnu::cold]] void* ConvertOther(lua_State* L, const Callee& callee, int index, TypeId type);

// Raises the error of the first argument that is not of its kind, if there is one.
[[gnu::cold]] void CheckKinds(lua_State* L, const Callee& callee);

// Raises the error of the first argument that is not of its kind or else that of the given one (from 1), which is to be
// a handle of the type.
[[noreturn, gnu::cold]] void RejectHandle(lua_State* L, const Callee& callee, int argument, TypeId type);

// The same for an argument that is no handle. `error` is its text if it has one of its own; else it is negative.
[[noreturn, gnu::cold]] void RejectValue(lua_State* L, const Callee& callee, const char* error);

}  // namespace tq_mom

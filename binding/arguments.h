// Argument checks, number conversions and the errors of misuse.
#ifndef TQ_BINDING_ARGUMENTS_H
#define TQ_BINDING_ARGUMENTS_H

#include <cstdint>

#include "binding/handles.h"

namespace binding {

// The name of a value's type in messages: a handle's readable type name, else Lua's own.
const char* TypeName(lua_State* L, int index);

// A piece of a message; null ends a list of them.
using Piece = const char*;

// Raise a Lua error. None returns; nothing with a destructor may be alive in the caller.
//
// The script's position goes before the message, but not where a dispatcher of this module called the running function:
// the caller's level is then a C function.
[[noreturn]] void RaiseCountError(lua_State* L, const Piece* function, int expected);
[[noreturn]] void RaiseKindError(lua_State* L, const Piece* function, int argument, const char* expected,
                                 std::size_t expected_length);
[[noreturn]] void RaiseAtCaller(lua_State* L, const Piece* message);
[[noreturn]] void RaiseNegativeError(lua_State* L);
// Raises the text as it stands.
[[noreturn]] void RaiseBare(lua_State* L, const char* message);

// Number conversions truncate toward zero and saturate at the ends of the target type; NaN gives 0. False when the
// value is neither a number nor a string that converts to one.
bool ToIntSlow(lua_State* L, int index, int* value);
bool ToUnsignedSlow(lua_State* L, int index, std::uint32_t* value);

inline bool ToInt(lua_State* L, int index, int* value) {
  int is_integer;
  lua_Integer integer = lua_tointegerx(L, index, &is_integer);
  if (!is_integer) return ToIntSlow(L, index, value);
  *value = static_cast<int>(integer);
  if (*value != integer) *value = integer > 0 ? INT32_MAX : INT32_MIN;
  return true;
}

// False for negative numbers and NaN, too.
inline bool ToUnsigned(lua_State* L, int index, std::uint32_t* value) {
  int is_integer;
  lua_Integer integer = lua_tointegerx(L, index, &is_integer);
  if (!is_integer) return ToUnsignedSlow(L, index, value);
  if (integer < 0) return false;
  *value = integer > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(integer);
  return true;
}

int SaturateToInt(double number);
std::int64_t SaturateToInt64(double number);

}  // namespace binding

#endif

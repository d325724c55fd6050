// Numbers between Lua and C, written so that a processor without floating point needs none of the compiler's routines.
#pragma once

#include <bit>
#include <cstdint>
#include <lua.hpp>

namespace binding {

// Conversions of a Lua value truncate toward zero and saturate at the ends of the target type; NaN gives 0. False when
// the value is neither a number nor a string that converts to one.
bool ToIntSlow(lua_State* L, int index, int* value);
bool ToUnsignedSlow(lua_State* L, int index, std::uint32_t* value);
bool ToInt64(lua_State* L, int index, std::int64_t* value);

[[gnu::always_inline]] inline bool ToInt(lua_State* L, int index, int* value) {
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

std::int64_t SaturateToInt64(double number);
int SaturateToInt(double number);

// The double next to the number, by its bits: sign, exponent, and 52 of the 53 bits of the fraction.
constexpr double DoubleOf(std::int64_t number) {
  if (number == 0) return 0;
  auto magnitude = static_cast<std::uint64_t>(number);
  if (number < 0) magnitude = 0 - magnitude;
  auto shift = static_cast<unsigned>(std::countl_zero(magnitude));
  magnitude <<= shift;
  std::uint64_t fraction = magnitude >> 11;
  auto rest = static_cast<unsigned>(magnitude & 0x7ff);
  if (rest > 0x400 || (rest == 0x400 && (fraction & 1) != 0)) ++fraction;
  // The fraction's first bit is not stored; it counts one in the exponent.
  std::uint64_t bits = (std::uint64_t{1023 + 63 - 1 - shift} << 52) + fraction;
  return std::bit_cast<double>(number < 0 ? bits | std::uint64_t{1} << 63 : bits);
}

// The same for a number of 32 bits, which a double holds exactly.
constexpr double DoubleOf(int number) {
  if (number == 0) return 0;
  auto magnitude = static_cast<std::uint32_t>(number);
  if (number < 0) magnitude = 0 - magnitude;
  auto shift = static_cast<unsigned>(std::countl_zero(magnitude));
  magnitude <<= shift;
  std::uint32_t high = ((1023U + 31 - 1 - shift) << 20) + (magnitude >> 11);
  if (number < 0) high |= std::uint32_t{1} << 31;
  return std::bit_cast<double>(std::uint64_t{high} << 32 | magnitude << 21);
}

// Pushes the number as a Lua float.
template <class Integer> [[gnu::always_inline]] inline void PushNumber(lua_State* L, Integer number) {
#ifdef __SOFTFP__
  lua_pushnumber(L, DoubleOf(number));
#else
  lua_pushnumber(L, static_cast<double>(number));
#endif
}

}  // namespace binding

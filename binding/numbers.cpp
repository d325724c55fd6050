#include "binding/numbers.h"

namespace binding {
namespace {

constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
constexpr std::uint64_t kInfinity = std::uint64_t{0x7ff} << 52;

// Not for -0.0.
bool IsNegative(double number) {
  auto bits = std::bit_cast<std::uint64_t>(number);
  return bits > kSign;
}

bool IsNan(double number) { return (std::bit_cast<std::uint64_t>(number) & ~kSign) > kInfinity; }

}  // namespace

std::int64_t SaturateToInt64(double number) {
  if (IsNan(number)) return 0;
  auto bits = std::bit_cast<std::uint64_t>(number);
  bool negative = bits >= kSign;
  int exponent = static_cast<int>(bits >> 52 & 0x7ff) - 1023;
  if (exponent < 0) return 0;
  if (exponent >= 63) return negative ? INT64_MIN : INT64_MAX;
  std::uint64_t fraction = (bits & ((std::uint64_t{1} << 52) - 1)) | std::uint64_t{1} << 52;
  auto magnitude = static_cast<std::int64_t>(exponent < 52 ? fraction >> (52 - exponent) : fraction << (exponent - 52));
  return negative ? -magnitude : magnitude;
}

int SaturateToInt(double number) {
  std::int64_t whole = SaturateToInt64(number);
  if (whole > INT32_MAX) return INT32_MAX;
  return whole < INT32_MIN ? INT32_MIN : static_cast<int>(whole);
}

bool ToIntSlow(lua_State* L, int index, int* value) {
  int is_number;
  double number = lua_tonumberx(L, index, &is_number);
  *value = SaturateToInt(number);
  return is_number;
}

bool ToUnsignedSlow(lua_State* L, int index, std::uint32_t* value) {
  int is_number;
  double number = lua_tonumberx(L, index, &is_number);
  if (!is_number || IsNegative(number) || IsNan(number)) return false;
  std::int64_t whole = SaturateToInt64(number);
  *value = whole > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(whole);
  return true;
}

bool ToInt64(lua_State* L, int index, std::int64_t* value) {
  int is_number;
  double number = lua_tonumberx(L, index, &is_number);
  *value = SaturateToInt64(number);
  return is_number;
}

}  // namespace binding

// Number conversions over the values where they go wrong: each must give the same on every target.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "binding/arguments.h"
#include "commands/command.h"
#include "tests/unit/lua_state.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();
constexpr double kMost = std::numeric_limits<double>::max();
constexpr double k31 = 2147483648.0;
constexpr double k32 = 4294967296.0;
constexpr double k53 = 9007199254740992.0;
constexpr double k63 = 9223372036854775808.0;

double Below(double number) { return std::nextafter(number, -kInfinity); }
double Above(double number) { return std::nextafter(number, kInfinity); }

struct IntCase {
  double number;
  std::int32_t expected;
};

const IntCase kIntCases[] = {
    {0.0, 0},
    {-0.0, 0},
    {kTiny, 0},
    {-kTiny, 0},
    {0.5, 0},
    {-0.5, 0},
    {Below(1), 0},
    {-Below(1), 0},
    {1, 1},
    {-1, -1},
    {3.9, 3},
    {-3.9, -3},
    {k31 - 2, INT32_MAX - 1},
    {k31 - 1.5, INT32_MAX - 1},
    {k31 - 1, INT32_MAX},
    {k31 - 0.5, INT32_MAX},
    {Below(k31), INT32_MAX},
    {k31, INT32_MAX},
    {Above(k31), INT32_MAX},
    {k31 + 1, INT32_MAX},
    {-k31 + 1, INT32_MIN + 1},
    {-k31 + 0.5, INT32_MIN + 1},
    {Above(-k31), INT32_MIN + 1},
    {-k31, INT32_MIN},
    {Below(-k31), INT32_MIN},
    {-k31 - 0.5, INT32_MIN},
    {-k31 - 1, INT32_MIN},
    {k32 - 1, INT32_MAX},
    {k32, INT32_MAX},
    {k32 + 1, INT32_MAX},
    {-k32 + 1, INT32_MIN},
    {-k32, INT32_MIN},
    {-k32 - 1, INT32_MIN},
    {k53 - 1, INT32_MAX},
    {k53, INT32_MAX},
    {k53 + 2, INT32_MAX},
    {-k53 - 2, INT32_MIN},
    {Below(k63), INT32_MAX},
    {k63, INT32_MAX},
    {Above(k63), INT32_MAX},
    {Above(-k63), INT32_MIN},
    {-k63, INT32_MIN},
    {Below(-k63), INT32_MIN},
    {kMost, INT32_MAX},
    {-kMost, INT32_MIN},
    {kInfinity, INT32_MAX},
    {-kInfinity, INT32_MIN},
    {kNaN, 0},
    {-kNaN, 0},
};

struct UnsignedCase {
  double number;
  std::uint32_t expected;
};

const UnsignedCase kUnsignedCases[] = {
    {0.0, 0},
    {-0.0, 0},
    {kTiny, 0},
    {0.9, 0},
    {Below(1), 0},
    {1, 1},
    {2.9, 2},
    {k31 - 1, 0x7FFFFFFFU},
    {Below(k31), 0x7FFFFFFFU},
    {k31, 0x80000000U},
    {k31 + 0.5, 0x80000000U},
    {k31 + 1, 0x80000001U},
    {k32 - 2, 0xFFFFFFFEU},
    {k32 - 1.5, 0xFFFFFFFEU},
    {k32 - 1, UINT32_MAX},
    {Below(k32), UINT32_MAX},
    {k32, UINT32_MAX},
    {Above(k32), UINT32_MAX},
    {k32 + 1, UINT32_MAX},
    {k53, UINT32_MAX},
    {k63, UINT32_MAX},
    {kMost, UINT32_MAX},
    {kInfinity, UINT32_MAX},
};

const double kNegative[] = {-kTiny, -0.5, -1, -k31, -k32, -k53, -k63, -kMost, -kInfinity, kNaN, -kNaN};

struct Int64Case {
  double number;
  std::int64_t expected;
};

const Int64Case kInt64Cases[] = {
    {0.0, 0},
    {-0.0, 0},
    {kTiny, 0},
    {-kTiny, 0},
    {1.9, 1},
    {-1.9, -1},
    {k31, INT64_C(2147483648)},
    {-k31 - 1, INT64_C(-2147483649)},
    {k32 - 0.5, INT64_C(4294967295)},
    {k32, INT64_C(4294967296)},
    {-k32 - 1, INT64_C(-4294967297)},
    {k53 - 1, INT64_C(9007199254740991)},
    {k53, INT64_C(9007199254740992)},
    {k53 + 2, INT64_C(9007199254740994)},
    {-k53 + 1, INT64_C(-9007199254740991)},
    {Below(k63), INT64_C(9223372036854774784)},
    {k63, INT64_MAX},
    {Above(k63), INT64_MAX},
    {Above(-k63), INT64_C(-9223372036854774784)},
    {-k63, INT64_MIN},
    {Below(-k63), INT64_MIN},
    {kMost, INT64_MAX},
    {-kMost, INT64_MIN},
    {kInfinity, INT64_MAX},
    {-kInfinity, INT64_MIN},
    {kNaN, 0},
    {-kNaN, 0},
};

TEST(Numbers, SaturateToInt) {
  for (const IntCase& test : kIntCases) EXPECT_EQ(binding::SaturateToInt(test.number), test.expected) << test.number;
}

TEST(Numbers, SaturateToInt64) {
  for (const Int64Case& test : kInt64Cases) {
    EXPECT_EQ(binding::SaturateToInt64(test.number), test.expected) << test.number;
  }
}

// What the two conversions make of the value on the stack top, which they must agree about.
testing::AssertionResult GivesInt(lua_State* L, int expected) {
  int fast = 0x5A5A;
  int slow = 0x5A5A;
  if (!binding::ToInt(L, -1, &fast)) return testing::AssertionFailure() << "refused";
  if (!binding::ToIntSlow(L, -1, &slow)) return testing::AssertionFailure() << "refused by the slow conversion";
  if (fast == expected && slow == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << fast << ", slow " << slow << "; expected " << expected;
}

testing::AssertionResult GivesUnsigned(lua_State* L, std::uint32_t expected) {
  std::uint32_t fast = 0x5A5A;
  std::uint32_t slow = 0x5A5A;
  if (!binding::ToUnsigned(L, -1, &fast)) return testing::AssertionFailure() << "refused";
  if (!binding::ToUnsignedSlow(L, -1, &slow)) return testing::AssertionFailure() << "refused by the slow conversion";
  if (fast == expected && slow == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << fast << ", slow " << slow << "; expected " << expected;
}

TEST(Numbers, FloatsToInt) {
  unit::LuaState L;
  for (const IntCase& test : kIntCases) {
    lua_pushnumber(L, test.number);
    EXPECT_TRUE(GivesInt(L, test.expected)) << test.number;
    lua_settop(L, 0);
  }
}

TEST(Numbers, FloatsToUnsigned) {
  unit::LuaState L;
  for (const UnsignedCase& test : kUnsignedCases) {
    lua_pushnumber(L, test.number);
    EXPECT_TRUE(GivesUnsigned(L, test.expected)) << test.number;
    lua_settop(L, 0);
  }
  for (double number : kNegative) {
    std::uint32_t value;
    lua_pushnumber(L, number);
    EXPECT_FALSE(binding::ToUnsigned(L, -1, &value)) << number;
    EXPECT_FALSE(binding::ToUnsignedSlow(L, -1, &value)) << number;
    lua_settop(L, 0);
  }
}

TEST(Numbers, Integers) {
  constexpr lua_Integer kOne = 1;
  struct {
    lua_Integer integer;
    int expected_int;
    bool accepted;
    std::uint32_t expected_unsigned;
  } constexpr kCases[] = {
      {0, 0, true, 0},
      {1, 1, true, 1},
      {-1, -1, false, 0},
      {INT32_MAX, INT32_MAX, true, INT32_MAX},
      {kOne << 31, INT32_MAX, true, 0x80000000U},
      {(kOne << 31) + 1, INT32_MAX, true, 0x80000001U},
      {INT32_MIN, INT32_MIN, false, 0},
      {lua_Integer{INT32_MIN} - 1, INT32_MIN, false, 0},
      {UINT32_MAX, INT32_MAX, true, UINT32_MAX},
      {kOne << 32, INT32_MAX, true, UINT32_MAX},
      {(kOne << 32) + 1, INT32_MAX, true, UINT32_MAX},
      {-(kOne << 32), INT32_MIN, false, 0},
      {kOne << 53, INT32_MAX, true, UINT32_MAX},
      {(kOne << 53) + 1, INT32_MAX, true, UINT32_MAX},
      {LUA_MAXINTEGER, INT32_MAX, true, UINT32_MAX},
      {LUA_MAXINTEGER - 1, INT32_MAX, true, UINT32_MAX},
      {LUA_MININTEGER, INT32_MIN, false, 0},
      {LUA_MININTEGER + 1, INT32_MIN, false, 0},
  };
  unit::LuaState L;
  for (const auto& test : kCases) {
    lua_pushinteger(L, test.integer);
    EXPECT_TRUE(GivesInt(L, test.expected_int)) << test.integer;
    std::uint32_t value;
    if (test.accepted) {
      EXPECT_TRUE(GivesUnsigned(L, test.expected_unsigned)) << test.integer;
    } else {
      EXPECT_FALSE(binding::ToUnsigned(L, -1, &value)) << test.integer;
    }
    lua_settop(L, 0);
  }
}

TEST(Numbers, Strings) {
  struct {
    const char* text;
    int expected;
  } constexpr kCases[] = {
      {"0", 0},
      {"-0", 0},
      {"12", 12},
      {" 7 ", 7},
      {"0x10", 16},
      {"1e2", 100},
      {"-1.9", -1},
      {"1e99", INT32_MAX},
      {"-1e99", INT32_MIN},
      {"2147483648", INT32_MAX},
      {"1e999", INT32_MAX},
      {"0x7fffffff", INT32_MAX},
  };
  unit::LuaState L;
  for (const auto& test : kCases) {
    lua_pushstring(L, test.text);
    EXPECT_TRUE(GivesInt(L, test.expected)) << test.text;
    EXPECT_EQ(lua_type(L, -1), LUA_TSTRING) << "the value stays a string";
    lua_settop(L, 0);
  }
  lua_pushstring(L, "4294967296");
  EXPECT_TRUE(GivesUnsigned(L, UINT32_MAX));
  lua_pushstring(L, "0xffffffff");
  EXPECT_TRUE(GivesUnsigned(L, UINT32_MAX));
  std::uint32_t value;
  for (const char* text : {"-1", "-0.5", "-1e99", "nan"}) {
    lua_pushstring(L, text);
    EXPECT_FALSE(binding::ToUnsigned(L, -1, &value)) << text;
  }
}

TEST(Numbers, WhatIsNoNumber) {
  unit::LuaState L;
  lua_pushnil(L);
  lua_pushboolean(L, 1);
  lua_pushliteral(L, "");
  lua_pushliteral(L, "x");
  lua_pushliteral(L, "12x");
  lua_pushlstring(L, "12\0", 3);
  lua_pushliteral(L, "inf");
  lua_newtable(L);
  lua_pushlightuserdata(L, L.get());
  lua_newuserdata(L, 8);
  lua_pushcfunction(L, binding::Equals);
  int none = lua_gettop(L) + 1;
  for (int index = 1; index <= none; ++index) {
    int integer;
    std::uint32_t number;
    EXPECT_FALSE(binding::ToInt(L, index, &integer)) << index;
    EXPECT_FALSE(binding::ToIntSlow(L, index, &integer)) << index;
    EXPECT_FALSE(binding::ToUnsigned(L, index, &number)) << index;
    EXPECT_FALSE(binding::ToUnsignedSlow(L, index, &number)) << index;
  }
}

// On the device the routines work on the bits; here the processor tells what is right.
TEST(Numbers, ToDouble) {
  for (int bit = 0; bit < 64; ++bit) {
    auto power = static_cast<std::int64_t>(std::uint64_t{1} << bit);
    for (std::int64_t less = -5; less <= 5; ++less) {
      auto number = static_cast<std::int64_t>(static_cast<std::uint64_t>(power) + static_cast<std::uint64_t>(less));
      for (std::int64_t sum : {number, number ^ (number >> 11), number ^ (number >> 12), number ^ (number >> 53)}) {
        EXPECT_EQ(binding::DoubleOf(sum), static_cast<double>(sum)) << sum;
        EXPECT_EQ(binding::DoubleOf(~sum), static_cast<double>(~sum)) << ~sum;
        int narrow = static_cast<int>(sum);
        EXPECT_EQ(binding::DoubleOf(narrow), narrow);
      }
    }
  }
  // Halfway between two doubles: to the even one.
  constexpr std::int64_t kOdd = (std::int64_t{1} << 53) + 1;
  EXPECT_EQ(binding::DoubleOf(kOdd), 9007199254740992.0);
  EXPECT_EQ(binding::DoubleOf(kOdd + 2), 9007199254740996.0);
  EXPECT_FALSE(std::signbit(binding::DoubleOf(0)));
}

TEST(Numbers, Timeouts) {
  struct {
    double seconds;
    long whole;
    long micro;
  } const kCases[] = {
      {0, 0, 0},
      {-0.0, 0, 0},
      {1.25, 1, 250000},
      {-1.25, -1, -250000},
      {-0.5, 0, -500000},
      {0.0000019, 0, 1},
      {-0.0000019, 0, -1},
      {Below(1), 0, 999999},
      {kTiny, 0, 0},
      {k31 - 1, INT32_MAX, 0},
      {k31 - 0.5, INT32_MAX, 500000},
      {-k31, INT32_MIN, 0},
      {-k31 - 0.25, INT32_MIN, -250000},
      {k63, INT32_MAX, INT32_MAX},
      {-k63, INT32_MIN, INT32_MIN},
      {kInfinity, INT32_MAX, INT32_MAX},
      {-kInfinity, INT32_MIN, INT32_MIN},
      {kNaN, 0, 0},
  };
  unit::LuaState L;
  for (const auto& test : kCases) {
    lua_pushnumber(L, test.seconds);
    timeval timeout = tq_mom::ToTimeout(L, -1);
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
    EXPECT_EQ(timeout.tv_sec, test.whole) << test.seconds;
    EXPECT_EQ(timeout.tv_usec, test.micro) << test.seconds;
  }
}

}  // namespace

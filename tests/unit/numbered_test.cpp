// Functions by number, and the rule by which the dispatchers know them.
#include "binding/numbered.h"

#include <gtest/gtest.h>

#include "tests/unit/lua_state.h"

namespace {

constexpr unsigned kCount = 256;

int PushSum(lua_State* L, std::size_t number, int offset) {
  lua_pushinteger(L, static_cast<lua_Integer>(number) + offset + lua_gettop(L));
  return 1;
}

}  // namespace

extern "C" {
[[gnu::visibility("hidden")]] int tq_test_first(lua_State* L, std::size_t number) { return PushSum(L, number, 0); }
[[gnu::visibility("hidden")]] int tq_test_second(lua_State* L, std::size_t number) { return PushSum(L, number, 1000); }
}

namespace {

TQ_NUMBERED_FUNCTIONS(kFirst, tq_test_first, kCount);
TQ_NUMBERED_FUNCTIONS(kSecond, tq_test_second, 3);

TEST(Numbered, EachHandsItsNumberAndItsArgumentsToTheBody) {
  unit::LuaState L;
  for (unsigned i = 0; i < kCount; ++i) {
    lua_pushcfunction(L, kFirst.At(i));
    lua_pushnil(L);
    lua_pushnil(L);
    lua_call(L, 2, 1);
    EXPECT_EQ(lua_tointeger(L, -1), i + 2);
    lua_pop(L, 1);
  }
  for (unsigned i = 0; i < kSecond.count(); ++i) {
    lua_pushcfunction(L, kSecond.At(i));
    lua_call(L, 0, 1);
    EXPECT_EQ(lua_tointeger(L, -1), i + 1000);
    lua_pop(L, 1);
  }
}

TEST(Numbered, AFunctionIsKnownByItsAddress) {
#ifdef TQ_STUB_SIZE
  for (unsigned i = 0; i < kCount; ++i) EXPECT_EQ(kFirst.NumberOf(kFirst.At(i)), i);
  EXPECT_EQ(kSecond.NumberOf(kSecond.At(2)), 2U);
#endif
  EXPECT_EQ(kFirst.count(), kCount);
  EXPECT_GE(kFirst.NumberOf(kSecond.At(0)), kFirst.count());
  EXPECT_GE(kSecond.NumberOf(kFirst.At(kCount - 1)), kSecond.count());
  EXPECT_GE(kFirst.NumberOf(lua_error), kFirst.count());
  EXPECT_GE(kFirst.NumberOf(nullptr), kFirst.count());
  EXPECT_GE(binding::NumberedFunctions().NumberOf(kFirst.At(0)), binding::NumberedFunctions().count());
}

}  // namespace

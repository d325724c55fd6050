#include "commands/arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "binding/handles.h"
#include "tests/unit/heap.h"
#include "tests/unit/lua_state.h"

namespace {

using Builder = const char* (*)(lua_State*, int, void**, int*);

struct Kind {
  const char* name;
  Builder build;
  std::size_t element;
  std::size_t spare;  // elements that are allocated beyond the table's
  const char* no_table;
  const char* bad_element;
};

constexpr Kind kKinds[] = {
    {"integers", tq_mom::BuildIntegers, 4, 0, "input error, errcode_1", "input error, errcode_3"},
    {"scores", tq_mom::BuildScores, 8, 1, "input error, expect array", "input error"},
    {"members", tq_mom::BuildMembers, sizeof(void*), 1, "input error, expect array", "input error"},
};
constexpr Kind kIntegers = kKinds[0];
constexpr Kind kScores = kKinds[1];
constexpr Kind kMembers = kKinds[2];

// Sizes around the groups in which elements are fetched.
constexpr int kSizes[] = {1, 2, 6, 7, 8, 9, 10, 15, 16, 17, 23, 24, 25, 100, 1000, 100001};

class Arrays : public testing::Test {
 protected:
  // Pushes an element that the kind takes.
  void PushElement(const Kind& kind, int i) {
    if (kind.build == tq_mom::BuildMembers) {
      binding::PushHandle(L, Address(i), nullptr, 0);
    } else {
      lua_pushinteger(L, i);
    }
  }

  void PushTable(const Kind& kind, int size) {
    lua_createtable(L, size, 0);
    for (int i = 1; i <= size; ++i) {
      PushElement(kind, i);
      lua_rawseti(L, -2, i);
    }
  }

  static void* Address(int i) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(i) * 16); }

  void ExpectElement(const Kind& kind, int i) {
    if (kind.build == tq_mom::BuildIntegers) {
      EXPECT_EQ(static_cast<const std::int32_t*>(elements)[i - 1], i);
    } else if (kind.build == tq_mom::BuildScores) {
      EXPECT_EQ(static_cast<const double*>(elements)[i - 1], i);
    } else {
      EXPECT_EQ(static_cast<void* const*>(elements)[i - 1], Address(i));
    }
  }

  // Builds from the value on the stack top, which must stay the stack top.
  const char* Build(const Kind& kind) {
    int top = lua_gettop(L);
    elements = &elements;  // anything that is not null
    count = -1;
    const char* error = kind.build(L, top, &elements, &count);
    EXPECT_EQ(lua_gettop(L), top);
    return error;
  }

  void ExpectError(const Kind& kind, const char* text) {
    unit::HeapWatch heap;
    EXPECT_STREQ(Build(kind), text) << kind.name;
    EXPECT_EQ(elements, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(heap.live(), 0U);
  }

  unit::LuaState L;
  void* elements = nullptr;
  int count = 0;
};

TEST_F(Arrays, Sizes) {
  for (const Kind& kind : kKinds) {
    for (int size : kSizes) {
      unit::HeapWatch heap;
      PushTable(kind, size);
      ASSERT_EQ(Build(kind), nullptr) << kind.name << size;
      EXPECT_EQ(count, size);
      ASSERT_EQ(heap.requests().size(), 1U);
      EXPECT_EQ(heap.requests()[0], (static_cast<std::size_t>(size) + kind.spare) * kind.element);
      for (int i = 1; i <= size; ++i) ExpectElement(kind, i);
      std::free(elements);
      EXPECT_EQ(heap.live(), 0U);
      lua_settop(L, 0);
    }
  }
}

// Nothing but what Lua guarantees every C function is taken from the stack.
TEST_F(Arrays, NoStackToSpare) {
  for (const Kind& kind : kKinds) {
    PushTable(kind, 40);
    for (int i = 0; i < LUA_MINSTACK - 8 - 1; ++i) lua_pushnil(L);
    int top = lua_gettop(L);
    EXPECT_EQ(kind.build(L, 1, &elements, &count), nullptr);
    EXPECT_EQ(lua_gettop(L), top);
    EXPECT_EQ(count, 40);
    std::free(elements);
    lua_settop(L, 0);
  }
}

TEST_F(Arrays, EmptyTables) {
  for (const Kind& kind : kKinds) {
    unit::HeapWatch heap;
    lua_newtable(L);
    EXPECT_EQ(Build(kind), nullptr);
    EXPECT_EQ(elements, nullptr);
    EXPECT_EQ(count, 0);
    lua_pushinteger(L, 1);
    lua_setfield(L, -2, "key");
    lua_pushinteger(L, 1);
    lua_rawseti(L, -2, 0);
    EXPECT_EQ(Build(kind), nullptr);
    EXPECT_EQ(elements, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(heap.requests().empty());
  }
}

TEST_F(Arrays, WhatIsNoTable) {
  for (const Kind& kind : kKinds) {
    lua_pushnil(L);
    ExpectError(kind, kind.no_table);
    lua_pushinteger(L, 5);
    ExpectError(kind, kind.no_table);
    lua_pushliteral(L, "{}");
    ExpectError(kind, kind.no_table);
    lua_newuserdata(L, 64);
    ExpectError(kind, kind.no_table);
    lua_pushlightuserdata(L, this);
    ExpectError(kind, kind.no_table);
    lua_settop(L, 0);
  }
}

// A wrong element at every place around the groups; what was built is freed.
TEST_F(Arrays, BadElements) {
  for (const Kind& kind : kKinds) {
    for (int place = 1; place <= 26; ++place) {
      PushTable(kind, 26);
      lua_pushliteral(L, "x");
      lua_rawseti(L, -2, place);
      ExpectError(kind, kind.bad_element);
      lua_settop(L, 0);
    }
  }
}

TEST_F(Arrays, NoMemory) {
  for (const Kind& kind : kKinds) {
    for (int size : {1, 9}) {
      unit::HeapWatch heap;
      heap.FailRequest(1);
      PushTable(kind, size);
      EXPECT_STREQ(Build(kind), "memory error") << kind.name;
      EXPECT_EQ(elements, nullptr);
      EXPECT_EQ(count, 0);
      EXPECT_EQ(heap.live(), 0U);
    }
  }
}

// The table {[1] = v, [2] = v, [4] = v, ..., [2^exponent] = v}, whose raw length is 2^exponent.
TEST_F(Arrays, LengthsBeyondMemory) {
  for (const Kind& kind : kKinds) {
    for (int exponent : {20, 28, 29, 30, 31, 32, 33, 40, 61}) {
      lua_createtable(L, 0, 64);
      for (int i = 0; i <= exponent; ++i) {
        PushElement(kind, 1);
        lua_rawseti(L, -2, lua_Integer{1} << i);
      }
      auto length = static_cast<std::size_t>(std::uint64_t{1} << exponent);
      ASSERT_EQ(lua_rawlen(L, -1), length);
      unit::HeapWatch heap;
      const char* error = Build(kind);
      if (length == 0) {
        EXPECT_EQ(error, nullptr);  // what is left of the length on 32 bits
      } else if (exponent > 20) {
        EXPECT_STREQ(error, "memory error") << kind.name << " 2^" << exponent;
        // A request for less than the array needs would be an overflow.
        for (std::size_t request : heap.requests()) EXPECT_GE(request / kind.element, length);
      } else if (kind.build == tq_mom::BuildMembers) {
        EXPECT_EQ(error, nullptr);  // a hole is a null pointer
        EXPECT_EQ(count, 1 << 20);
        EXPECT_EQ(static_cast<void**>(elements)[2], nullptr);
        std::free(elements);
        elements = nullptr;
        count = 0;
      } else {
        EXPECT_STREQ(error, kind.bad_element);
      }
      EXPECT_EQ(elements, nullptr);
      EXPECT_EQ(count, 0);
      EXPECT_EQ(heap.live(), 0U);
      lua_settop(L, 0);
    }
  }
}

TEST_F(Arrays, Metamethods) {
  for (const Kind& kind : kKinds) {
    PushTable(kind, 2);
    ASSERT_EQ(L.Run("meta = {__len = function() error('len') end, __index = function() error('index') end}"), "");
    PushTable(kind, 2);
    lua_getglobal(L, "meta");
    lua_setmetatable(L, -2);
    EXPECT_EQ(Build(kind), nullptr);
    EXPECT_EQ(count, 2);
    std::free(elements);
    lua_settop(L, 0);
  }
}

TEST_F(Arrays, IntegersAreCutTo32Bits) {
  constexpr lua_Integer kGiven[] = {0,
                                    -1,
                                    INT32_MAX,
                                    INT32_MIN,
                                    lua_Integer{1} << 31,
                                    lua_Integer{1} << 32,
                                    (lua_Integer{1} << 32) + 1,
                                    (lua_Integer{1} << 53) - 1,
                                    LUA_MAXINTEGER,
                                    LUA_MININTEGER,
                                    lua_Integer{INT32_MIN} - 1};
  constexpr std::int32_t kStored[] = {0, -1, INT32_MAX, INT32_MIN, INT32_MIN, 0, 1, -1, -1, 0, INT32_MAX};
  lua_newtable(L);
  lua_Integer place = 0;
  for (lua_Integer integer : kGiven) {
    lua_pushinteger(L, integer);
    lua_rawseti(L, -2, ++place);
  }
  ASSERT_EQ(Build(kIntegers), nullptr);
  EXPECT_EQ(std::memcmp(elements, kStored, sizeof(kStored)), 0);
  std::free(elements);
}

TEST_F(Arrays, IntegersMustBeIntegers) {
  for (const char* chunk : {"t = {2.0}", "t = {1, '2'}", "t = {1, true}", "t = {1, 0/0}", "t = {1, nil, 3}",
                            "t = {1, {}}", "t = {1, 2^53}"}) {
    ASSERT_EQ(L.Run(chunk), "");
    lua_getglobal(L, "t");
    ExpectError(kIntegers, "input error, errcode_3");
  }
}

TEST_F(Arrays, ScoresMayBeStrings) {
  ASSERT_EQ(L.Run("t = {1, '2', ' 0x10 ', 1e308, -math.huge, '-1.5', math.maxinteger}"), "");
  lua_getglobal(L, "t");
  ASSERT_EQ(Build(kScores), nullptr);
  const double stored[] = {1, 2, 16, 1e308, -HUGE_VAL, -1.5, 9223372036854775807.0};
  EXPECT_TRUE(std::equal(std::begin(stored), std::end(stored), static_cast<const double*>(elements)));
  std::free(elements);
  for (const char* chunk : {"t = {true}", "t = {1, ''}", "t = {1, nil, 3}", "t = {1, {}}", "t = {1, print}"}) {
    ASSERT_EQ(L.Run(chunk), "");
    lua_getglobal(L, "t");
    ExpectError(kScores, "input error");
  }
}

TEST_F(Arrays, Members) {
  lua_newtable(L);
  binding::PushHandle(L, Address(1), nullptr, 0);
  lua_rawseti(L, -2, 1);
  lua_pushnil(L);
  lua_rawseti(L, -2, 2);
  binding::PushHandle(L, Address(3), nullptr, 0);
  lua_rawseti(L, -2, 3);
  // The border may be 1 or 3.
  ASSERT_EQ(Build(kMembers), nullptr);
  auto** members = static_cast<void**>(elements);
  EXPECT_EQ(members[0], Address(1));
  if (count == 3) {
    EXPECT_EQ(members[1], nullptr);
    EXPECT_EQ(members[2], Address(3));
  }
  std::free(elements);
  // What is no handle of three words.
  for (int what = 0; what < 4; ++what) {
    lua_newtable(L);
    if (what == 0) lua_pushlightuserdata(L, this);
    if (what == 1) lua_newuserdata(L, sizeof(binding::Handle) - 1);
    if (what == 2) lua_newuserdata(L, 0);
    if (what == 3) lua_pushinteger(L, 1);
    lua_rawseti(L, -2, 1);
    ExpectError(kMembers, "input error");
  }
}

}  // namespace

// Lua running out of memory at every request that a call makes: the call raises Lua's error, or gets by after a
// collection; nothing of the module's is lost, and the state works on.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/unit/client.h"
#include "tests/unit/heap.h"
#include "tests/unit/lua_state.h"

namespace {

using unit::Failure;

class LuaMemory : public testing::Test {
 protected:
  LuaMemory() { L.LoadModule(); }

  // Runs the chunk's function with each of its requests failing in turn. `settle` follows each run and releases what a
  // run that came through may hold. `left` is how many of the module's blocks a run that failed may leave behind.
  void ForEachRequest(
      const char* chunk, const char* settle = "", std::size_t (*left)() = [] { return std::size_t{0}; }) {
    ASSERT_EQ(luaL_loadstring(L, chunk), LUA_OK) << lua_tostring(L, -1);
    lua_setfield(L, LUA_REGISTRYINDEX, "chunk");
    ASSERT_EQ(luaL_loadstring(L, settle), LUA_OK) << lua_tostring(L, -1);
    lua_setfield(L, LUA_REGISTRYINDEX, "settle");
    for (Failure failure : {Failure::kOnce, Failure::kFromThenOn}) {
      int errors = 0;
      long number = 1;
      for (;; ++number) {
        ASSERT_LT(number, 10000);
        // What an earlier run made, strings above all, is gone.
        lua_gc(L, LUA_GCCOLLECT, 0);
        unit::HeapWatch heap;
        lua_getfield(L, LUA_REGISTRYINDEX, "chunk");
        L.FailRequest(number, failure);
        int status = lua_pcall(L, 0, 0, 0);
        bool failed = L.AllowRequests();
        if (status != LUA_OK) {
          ++errors;
          EXPECT_TRUE(failed);
          EXPECT_STREQ(lua_tostring(L, -1), "not enough memory") << number;
        }
        lua_settop(L, 0);
        lua_getfield(L, LUA_REGISTRYINDEX, "settle");
        ASSERT_EQ(lua_pcall(L, 0, 0, 0), LUA_OK) << lua_tostring(L, -1);
        lua_gc(L, LUA_GCCOLLECT, 0);
        EXPECT_EQ(heap.live(), status == LUA_OK ? 0 : left()) << "request " << number;
        heap.FreeLive();
        if (!failed) break;
      }
      if (failure == Failure::kFromThenOn) {
        EXPECT_GT(number, 1) << "there is nothing to fail";
        EXPECT_EQ(errors, number - 1);
      }
    }
  }

  unit::LuaState L;
};

TEST_F(LuaMemory, Constructor) {
  ForEachRequest("local record = tq.set_op_t() record.flag = 1");
  ForEachRequest("for i = 1, 3 do tq.tq_thread_master() end");
}

TEST_F(LuaMemory, CommandThatReturnsAHandle) {
  ForEachRequest("local result = tq.get_ext(nil, 0, nil, nil) assert(result.error_code == 0)");
  ForEachRequest("local result = tq.convertPtrToGetRes(tq.tq_mom_get_res_t())");
}

// The client is not asked for a result that could not be handed on.
TEST_F(LuaMemory, NoResultIsLost) {
  ASSERT_EQ(L.Run("command = tq.get_ext results = 0"), "");
  unit::get_ext_calls = 0;
  ForEachRequest("command(nil, 0, nil, nil) results = results + 1");
  lua_getglobal(L, "results");
  EXPECT_EQ(unit::get_ext_calls, lua_tointeger(L, -1));
}

TEST_F(LuaMemory, OwnedString) {
  ASSERT_EQ(L.Run("record = tq.tq_mom_scan_all_msg_t()"), "");
  ForEachRequest("record.key = 'text ' .. #_VERSION", "record.key = nil");
  ForEachRequest("record.key = 12345.5", "record.key = nil");
  ForEachRequest("record.key = 'first' record.key = 'second' .. #_VERSION local read = record.key .. 'x'",
                 "record.key = nil");
}

TEST_F(LuaMemory, CharacterArray) {
  ASSERT_EQ(L.Run("record = tq.tq_mom_pubsub_msg_t()"), "");
  ForEachRequest("record.key = 98765.25 local read = record.key .. 'x'");
}

TEST_F(LuaMemory, NumberAsName) { ForEachRequest("tq.tq_global_init(98765.25, nil)"); }

// Arrays are built and released although the calls around them run out of memory.
TEST_F(LuaMemory, Arrays) {
  ASSERT_EQ(
      L.Run(
          "scores, members, fields = {}, {}, {}\n"
          "for i = 1, 40 do scores[i], members[i], fields[i] = i % 2 == 0 and tostring(i) or i, tq.get_op_t(), i end\n"
          "bad_scores = {1, 2, 3, 4, 5, 6, 7, 8, 9, {}}\n"
          "bad_members = {members[1], members[2], 'x'}"),
      "");
  unit::zadd_calls = 0;
  ForEachRequest("local n = tq.zadd(nil, 0, scores, members) assert(n == 40) local handle = tq.get_op_t()");
  EXPECT_GT(unit::zadd_calls, 0);
  ForEachRequest("local result = tq.hmget(nil, 0, nil, fields) assert(result.error_code == 0)");
  ForEachRequest(
      "local ok, text = pcall(tq.zadd, nil, 0, bad_scores, members) if text ~= 'input error' then error(text, 0) end");
  ForEachRequest(
      "local ok, text = pcall(tq.zadd, nil, 0, scores, bad_members) if text ~= 'input error' then error(text, 0) end");
}

TEST_F(LuaMemory, Messages) {
  for (const char* call :
       {"tq.get(1)", "tq.get(tq.get_op_t(), 0, nil)", "tq.get(nil, {}, nil)", "tq.pdel(nil, 0, nil, -1)",
        "tq.get_op_t().flag = {}", "tq.get_op_t().nobody = 1", "tq.tq_thread().u = 1"}) {
    std::string chunk = "local ok, text = pcall(function() " + std::string(call) +
                        " end) assert(not ok) if text == 'not enough memory' then error(text, 0) end";
    // The protected call hands the text of the memory error on as an ordinary error.
    ASSERT_EQ(luaL_loadstring(L, chunk.c_str()), LUA_OK);
    lua_setglobal(L, "chunk");
    for (long number = 1;; ++number) {
      ASSERT_LT(number, 1000);
      lua_gc(L, LUA_GCCOLLECT, 0);
      unit::HeapWatch heap;
      lua_getglobal(L, "chunk");
      L.FailRequest(number, Failure::kFromThenOn);
      lua_pcall(L, 0, 0, 0);
      bool failed = L.AllowRequests();
      if (lua_gettop(L) > 0) {
        EXPECT_STREQ(lua_tostring(L, -1), "not enough memory") << call << number;
      }
      lua_settop(L, 0);
      lua_gc(L, LUA_GCCOLLECT, 0);
      EXPECT_EQ(heap.live(), 0U) << call << number;
      if (!failed) break;
    }
  }
}

TEST_F(LuaMemory, ArrayGetters) {
  std::size_t tags[] = {1, 2, 3, 4, 5};
  unit::hash_result.field_tag = tags;
  unit::hash_result.field_tag_count = 5;
  ForEachRequest("local tags = tq.hmget(nil, 0, nil, {}).field_tag assert(#tags == 5 and tags[5] == 5)");
  unit::hash_result = {};
}

// An error of the callback passes the scan by: its block is left behind, as it must be. Before and after the callback
// nothing is.
TEST_F(LuaMemory, Scan) {
  unit::in_callback = false;
  ForEachRequest(
      "local calls = 0\n"
      "local n = tq.scan(nil, 0, nil, 3, function(g, message, argument) calls = calls + 1 end, {})\n"
      "assert(n == 3 and calls == 3)",
      "", [] {
        std::size_t left = unit::in_callback ? 1 : 0;
        unit::in_callback = false;
        return left;
      });
}

// Native memory running out is an error or a nil, never a crash, and what was made before is released.
TEST_F(LuaMemory, NativeRequests) {
  ASSERT_EQ(L.Run("member = tq.get_op_t()"), "");
  struct {
    const char* chunk;
    int requests;
    const char* error;
  } constexpr kCases[] = {
      {"if tq.set_op_t() == nil then error('no record', 0) end", 1, "no record"},
      {"tq.zadd(nil, 0, {1, 2}, {member, member})", 2, "memory error"},
      {"tq.zrem(nil, 0, {member, member})", 1, "memory error"},
      {"tq.hmset(nil, 0, nil, {1, 2, 3})", 1, "memory error"},
      {"tq.scan(nil, 0, nil, 1, function() end, {})", 1, "memory error"},
  };
  for (const auto& test : kCases) {
    for (int number = 1; number <= test.requests + 1; ++number) {
      lua_gc(L, LUA_GCCOLLECT, 0);
      unit::HeapWatch heap;
      heap.FailRequest(number);
      EXPECT_EQ(L.Run(test.chunk), number <= test.requests ? test.error : "") << test.chunk << number;
      lua_gc(L, LUA_GCCOLLECT, 0);
      EXPECT_EQ(heap.live(), 0U) << test.chunk << number;
      EXPECT_EQ(heap.requests().size(), static_cast<std::size_t>(std::min(number, test.requests))) << test.chunk;
    }
  }
}

// A string that cannot be copied leaves the old one in its place.
TEST_F(LuaMemory, OwnedStringWithoutNativeMemory) {
  ASSERT_EQ(L.Run("record = tq.tq_mom_scan_all_msg_t()"), "");
  unit::HeapWatch heap;
  ASSERT_EQ(L.Run("record.key = 'first'"), "");
  heap.FailRequest(1);
  EXPECT_NE(L.Run("record.key = 'second'"), "");
  EXPECT_EQ(L.Run("assert(record.key == 'first')"), "");
  EXPECT_EQ(heap.live(), 1U);
  ASSERT_EQ(L.Run("record.key = nil"), "");
  EXPECT_EQ(heap.live(), 0U);
}

}  // namespace

// Messages and their positions, which must be what luaL_where gives for the same place.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "binding/arguments.h"
#include "binding/handles.h"
#include "tests/unit/lua_state.h"

namespace {

// Set by the functions that raise: what the position should be.
std::string expected_position;

void NotePosition(lua_State* L) {
  luaL_where(L, 1);
  expected_position = lua_tostring(L, -1);
  lua_pop(L, 1);
}

int RaiseCount(lua_State* L) {
  NotePosition(L);
  const binding::Piece function[] = {"record", "::", "field", nullptr};
  binding::RaiseCountError(L, function, 2);
}

int RaiseKind(lua_State* L) {
  NotePosition(L);
  const binding::Piece function[] = {"function", nullptr};
  binding::RaiseKindError(L, function, 1, "int *|long *", 5);
}

int RaiseNegative(lua_State* L) {
  NotePosition(L);
  binding::RaiseNegativeError(L);
}

int RaiseBare(lua_State* L) { binding::RaiseBare(L, "bare %d text"); }

std::string long_text;

int RaiseLong(lua_State* L) {
  NotePosition(L);
  const binding::Piece message[] = {"start ", long_text.c_str(), " middle ", long_text.c_str(), " end", nullptr};
  binding::RaiseAtCaller(L, message);
}

class Errors : public testing::Test {
 protected:
  Errors() {
    lua_register(L, "raise_count", RaiseCount);
    lua_register(L, "raise_kind", RaiseKind);
    lua_register(L, "raise_negative", RaiseNegative);
    lua_register(L, "raise_bare", RaiseBare);
    lua_register(L, "raise_long", RaiseLong);
  }

  // The error that the chunk of this name raises.
  std::string ErrorOf(const std::string& chunk, const char* name = "=chunk") {
    EXPECT_EQ(luaL_loadbuffer(L, chunk.data(), chunk.size(), name), LUA_OK) << chunk;
    EXPECT_EQ(lua_pcall(L, 0, 0, 0), LUA_ERRRUN);
    EXPECT_EQ(lua_type(L, -1), LUA_TSTRING);
    std::string error = lua_tostring(L, -1);
    lua_settop(L, 0);
    return error;
  }

  unit::LuaState L;
};

TEST_F(Errors, Count) {
  EXPECT_EQ(ErrorOf("raise_count(1, 2, 3)"), "chunk:1: Error in record::field expected 2..2 args, got 3");
  EXPECT_EQ(ErrorOf("\n\nraise_count()"), "chunk:3: Error in record::field expected 2..2 args, got 0");
  EXPECT_EQ(ErrorOf("raise_count(table.unpack({}, 1, 250))"),
            "chunk:1: Error in record::field expected 2..2 args, got 250");
}

TEST_F(Errors, Kind) {
  struct {
    const char* argument;
    const char* name;
  } constexpr kCases[] = {
      {"", "no value"},
      {"nil", "nil"},
      {"1", "number"},
      {"'x'", "string"},
      {"{}", "table"},
      {"print", "function"},
      {"true", "boolean"},
      {"coroutine.create(print)", "thread"},
      {"io.stdout", "userdata (unknown type)"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(ErrorOf(std::string("raise_kind(") + test.argument + ")"),
              std::string("chunk:1: Error in function (arg 1), expected 'int *' got '") + test.name + "'");
  }
}

TEST_F(Errors, KindOfHandles) {
  binding::TypeDescriptor type = {"_p_a", "struct a *|a *", nullptr, nullptr, nullptr, 0};
  binding::TypeDescriptor nameless = {"_p_b", nullptr, nullptr, nullptr, nullptr, 0};
  binding::PushHandle(L, this, &type, 0);
  lua_setglobal(L, "typed");
  binding::PushHandle(L, this, &nameless, 0);
  lua_setglobal(L, "nameless");
  binding::PushHandle(L, this, nullptr, 0);
  lua_setglobal(L, "untyped");
  lua_pushlightuserdata(L, this);
  lua_setglobal(L, "light");
  const std::string start = "chunk:1: Error in function (arg 1), expected 'int *' got '";
  EXPECT_EQ(ErrorOf("raise_kind(typed)"), start + "struct a *|a *'");
  for (const char* name : {"nameless", "untyped", "light"}) {
    EXPECT_EQ(ErrorOf(std::string("raise_kind(") + name + ")"), start + "userdata (unknown type)'");
  }
}

TEST_F(Errors, NegativeAndBare) {
  EXPECT_EQ(ErrorOf("raise_negative()"), "chunk:1: number must not be negative");
  EXPECT_EQ(ErrorOf("raise_bare()"), "bare %d text");
}

TEST_F(Errors, PositionsAreThoseOfLua) {
  const std::string text = "number must not be negative";
  const struct {
    std::string chunk;
    const char* name;
  } cases[] = {
      {"raise_negative()", "=chunk"},
      {"raise_negative()", "@some/file.lua"},
      {"raise_negative()", "a chunk named by its text\nof two lines"},
      {"raise_negative()", "@a/very/long/path/of/a/file/that/does/not/fit/into/the/sixty/bytes/of/a/short/source.lua"},
      {"return raise_negative()", "=tail call"},
      {"local function f() return raise_negative() end f()", "=tail call of a function"},
      {"assert(pcall(raise_negative))", "=called by C"},
      {"error(select(2, pcall(raise_negative)), 0)", "=called by pcall"},
      {"string.gsub('x', 'x', raise_negative)", "=called by gsub"},
      {"local c = coroutine.wrap(raise_negative) c()", "=body of a coroutine"},
      {"local c = coroutine.wrap(function() raise_negative() end) c()", "=in a coroutine"},
      {"assert(load(string.dump(function() raise_negative() end, true)))()", "=stripped"},
      {"return setmetatable({}, {__index = raise_negative}).field", "=metamethod"},
      {std::string(5000, '\n') + "raise_negative()", "=far down"},
  };
  for (const auto& test : cases) {
    std::string error = ErrorOf(test.chunk, test.name);
    // What calls error again may have put its own position in front.
    ASSERT_GE(error.size(), expected_position.size() + text.size()) << test.name;
    EXPECT_EQ(error.substr(error.size() - expected_position.size() - text.size()), expected_position + text)
        << test.name;
  }
}

TEST_F(Errors, WithoutACaller) {
  lua_pushcfunction(L, RaiseNegative);
  ASSERT_EQ(lua_pcall(L, 0, 0, 0), LUA_ERRRUN);
  EXPECT_STREQ(lua_tostring(L, -1), "number must not be negative");
}

// Longer than what is put together on the native stack.
TEST_F(Errors, LongMessages) {
  for (std::size_t size = 150; size < 1000; size += 7) {
    long_text.assign(size, 'x');
    EXPECT_EQ(ErrorOf("raise_long()"), "chunk:1: start " + long_text + " middle " + long_text + " end");
  }
  long_text.assign(100000, 'y');
  EXPECT_EQ(ErrorOf("raise_long()"), "chunk:1: start " + long_text + " middle " + long_text + " end");
}

// On a stack that is full, the message makes room for itself.
TEST_F(Errors, LongMessageOnAFullStack) {
  long_text.assign(300, 'z');
  lua_register(L, "raise_with_full_stack", [](lua_State* state) {
    while (lua_gettop(state) < LUA_MINSTACK) lua_pushnil(state);
    return RaiseLong(state);
  });
  std::string error = ErrorOf("raise_with_full_stack()");
  EXPECT_NE(error.find("start zzz"), std::string::npos) << error.substr(0, 100);
}

TEST_F(Errors, TypeNames) {
  lua_pushnil(L);
  EXPECT_STREQ(binding::TypeName(L, 1), "nil");
  EXPECT_STREQ(binding::TypeName(L, 2), "no value");
  lua_newuserdata(L, sizeof(binding::Handle) - 1);
  EXPECT_STREQ(binding::TypeName(L, 2), "userdata (unknown type)");
}

}  // namespace

// Checks of what a script passes. Each raises an error that names the argument and says what was expected.
#pragma once

#include <cstdint>
#include <lua.hpp>

namespace tq_watch {

// An argument as messages name it: "argument 1 of tq_watch.trace", "field 'db' of tq_watch.fault".
struct Argument {
  int index;
  const char* name;
};

// Raises "bad <name>: <expected> expected, got <what is there>", with the line of the script before it.
[[noreturn]] void Reject(lua_State* L, Argument argument, const char* expected);
// Raises a text, formatted as by lua_pushfstring, after the line of the script.
[[noreturn]] void Raise(lua_State* L, const char* format, ...);

std::int64_t CheckInteger(lua_State* L, Argument argument, std::int64_t least, std::int64_t most, const char* expected);
const char* CheckString(lua_State* L, Argument argument, const char* expected);
bool CheckBoolean(lua_State* L, Argument argument);

}  // namespace tq_watch

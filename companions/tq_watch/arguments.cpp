#include "companions/tq_watch/arguments.h"

#include <cstdarg>

#include "binding/arguments.h"

namespace tq_watch {
namespace {

// The position of the script, whatever native functions lie between.
void PushWhere(lua_State* L) {
  lua_Debug frame;
  for (int level = 1; lua_getstack(L, level, &frame) != 0; ++level) {
    lua_getinfo(L, "Sl", &frame);
    if (frame.currentline <= 0) continue;
    lua_pushfstring(L, "%s:%d: ", frame.short_src, frame.currentline);
    return;
  }
  lua_pushliteral(L, "");
}

[[noreturn]] void RaiseTop(lua_State* L) {
  PushWhere(L);
  lua_insert(L, -2);
  lua_concat(L, 2);
  lua_error(L);
  __builtin_unreachable();
}

}  // namespace

void Raise(lua_State* L, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  lua_pushvfstring(L, format, arguments);
  va_end(arguments);
  RaiseTop(L);
}

void Reject(lua_State* L, Argument argument, const char* expected) {
  Raise(L, "bad %s: %s expected, got %s", argument.name, expected, binding::TypeName(L, argument.index));
}

std::int64_t CheckInteger(lua_State* L, Argument argument, std::int64_t least, std::int64_t most,
                          const char* expected) {
  int is_integer = 0;
  lua_Integer integer = lua_type(L, argument.index) == LUA_TNUMBER ? lua_tointegerx(L, argument.index, &is_integer) : 0;
  if (is_integer == 0) Reject(L, argument, expected);
  if (integer < least || integer > most)
    Raise(L, "bad %s: %s expected, got %I", argument.name, expected, static_cast<LUAI_UACINT>(integer));
  return integer;
}

const char* CheckString(lua_State* L, Argument argument, const char* expected) {
  if (lua_type(L, argument.index) != LUA_TSTRING) Reject(L, argument, expected);
  return lua_tostring(L, argument.index);
}

bool CheckBoolean(lua_State* L, Argument argument) {
  if (!lua_isboolean(L, argument.index)) Reject(L, argument, "boolean");
  return lua_toboolean(L, argument.index) != 0;
}

}  // namespace tq_watch

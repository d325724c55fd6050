// Fills in the fields of the table at the stack top.
#pragma once

#include <lua.hpp>

#include "watch/control.h"

namespace tq_watch {

inline void SetString(lua_State* L, const char* key, const char* text) {
  lua_pushstring(L, text);
  lua_setfield(L, -2, key);
}

inline void SetInteger(lua_State* L, const char* key, lua_Integer integer) {
  lua_pushinteger(L, integer);
  lua_setfield(L, -2, key);
}

inline void SetBoolean(lua_State* L, const char* key, bool boolean) {
  lua_pushboolean(L, boolean ? 1 : 0);
  lua_setfield(L, -2, key);
}

inline void SetPosition(lua_State* L, const Position& position) {
  if (position.source == nullptr) return;
  SetString(L, "source", position.source);
  SetInteger(L, "line", position.line);
  lua_pushfstring(L, "%s:%d", position.source, position.line);
  lua_setfield(L, -2, "where");
}

}  // namespace tq_watch

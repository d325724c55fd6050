#include "companions/tq_kit/contents.h"

#include <cstdint>

#include "companions/tq_kit/arguments.h"

namespace tq_kit {
namespace {

constexpr int kElementParts = 7;

void PushTime(lua_State* L, std::int64_t milliseconds) {
  if (milliseconds == TQ_KIT_NEVER) {
    lua_pushnil(L);
  } else {
    lua_pushinteger(L, milliseconds);
  }
}

std::int64_t TimeAt(lua_State* L, int index) { return lua_isnil(L, index) ? TQ_KIT_NEVER : lua_tointeger(L, index); }

// Argument 3 of the running function is the table of keys. An error of Lua goes through the client library.
int Take(tq_global_t*, const tq_kit_element_t* element, void* context) {
  auto* L = static_cast<lua_State*>(context);
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_pushvalue(L, 3);
  lua_pushstring(L, element->key);
  lua_pushstring(L, kKindNames[element->kind]);
  PushTime(L, element->remaining);
  lua_pushlstring(L, static_cast<const char*>(element->bytes), element->length);
  lua_pushinteger(L, element->tag);
  PushTime(L, element->field_remaining);
  lua_pushnumber(L, element->score);
  lua_call(L, kElementParts + 1, 0);
  return 0;
}

int Dump(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  lua_settop(L, 2);
  lua_newtable(L);
  CheckStatus(L, g, "dump", tq_kit_visit(g, db, "*", Take, L));
  return 1;
}

// Stores the element whose parts are the topmost values.
int StoreTop(lua_State* L, tq_global_t* g, int db) {
  int first = lua_gettop(L) - kElementParts + 1;
  tq_kit_element_t element = {};
  element.key = lua_tostring(L, first);
  element.kind = static_cast<tq_kit_kind_t>(luaL_checkoption(L, first + 1, nullptr, kKindNames + 1) + 1);
  element.remaining = TimeAt(L, first + 2);
  element.bytes = lua_tolstring(L, first + 3, &element.length);
  element.tag = static_cast<std::uint32_t>(lua_tointeger(L, first + 4));
  element.field_remaining = TimeAt(L, first + 5);
  element.score = lua_tonumber(L, first + 6);
  return tq_kit_store(g, db, &element);
}

int Load(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  if (lua_type(L, 3) != LUA_TTABLE) RaiseArgument(L, 3, "table of keys");
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_pushvalue(L, 3);
  lua_call(L, 1, 2);
  if (lua_isnil(L, -2)) return luaL_argerror(L, 3, lua_tostring(L, -1));
  lua_pop(L, 1);
  int plan = lua_gettop(L);
  for (lua_Integer i = 1; lua_rawgeti(L, plan, i) != LUA_TNIL; ++i) {
    for (int part = 1; part <= kElementParts; ++part) lua_rawgeti(L, plan + 1, part);
    CheckStatus(L, g, "load", StoreTop(L, g, db));
    lua_settop(L, plan);
  }
  return 0;
}

}  // namespace

int MakeDump(lua_State* L) {
  lua_pushcclosure(L, Dump, 1);
  return 1;
}

int MakeLoad(lua_State* L) {
  lua_pushcclosure(L, Load, 1);
  return 1;
}

}  // namespace tq_kit

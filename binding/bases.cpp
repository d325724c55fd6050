#include "binding/bases.h"

namespace binding {
namespace {

// Pushes what one of the class's tables holds under the key at index 2.
void PushEntry(lua_State* L, int metatable, Key table) {
  PushTable(L, metatable, table);
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
}

}  // namespace

int LookForMember(lua_State* L, int metatable) {
  PushEntry(L, metatable, kAccessors);
  if (lua_iscfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_call(L, 1, 1);
    return 1;
  }
  PushEntry(L, metatable, kMethods);
  return lua_isfunction(L, -1) ? 1 : kNotFound;
}

int LookForItem(lua_State* L, int metatable) {
  lua_pushvalue(L, lua_upvalueindex(kItem));
  lua_rawget(L, metatable);
  if (!lua_isfunction(L, -1)) return kNotFound;
  lua_pushvalue(L, 1);
  lua_pushvalue(L, 2);
  lua_call(L, 2, 1);
  return 1;
}

int LookForSetter(lua_State* L, int metatable) {
  PushEntry(L, metatable, kAccessors);
  if (lua_iscfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 3);
    lua_call(L, 2, 0);
    return 0;
  }
  lua_pushvalue(L, lua_upvalueindex(kItem));
  lua_rawget(L, metatable);
  if (!lua_isfunction(L, -1)) return kNotFound;
  lua_pushvalue(L, 1);
  lua_pushvalue(L, 2);
  lua_pushvalue(L, 3);
  lua_call(L, 3, 0);
  return 0;
}

int SearchClass(lua_State* L, Look look) {
  // A search takes two slots for each base. That of a class which a script made its own base ends here.
  constexpr int kMostSlots = 600;
  luaL_checkstack(L, 8, nullptr);
  int top = lua_gettop(L);
  if (top > kMostSlots) luaL_error(L, "stack overflow in the bases of a class");
  TQ_INVARIANT(lua_isuserdata(L, 1), "lua_isuserdata(L,substack_start+1)");
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  int results = look(L, top + 1);
  if (results == kNotFound) {
    lua_settop(L, top + 1);
    results = SearchBases(L, look);
  }
  if (results == 1) lua_replace(L, top + 1);
  lua_settop(L, results == 1 ? top + 1 : top);
  return results;
}

int SearchBases(lua_State* L, Look look) {
  int metatable = lua_gettop(L);
  PushTable(L, metatable, kBases);
  auto count = static_cast<lua_Integer>(lua_rawlen(L, -1));
  int results = kNotFound;
  for (lua_Integer i = 1; i <= count && results == kNotFound; ++i) {
    if (lua_rawgeti(L, metatable + 1, i) == LUA_TNIL) {
      lua_pop(L, 1);
      continue;
    }
    TQ_INVARIANT_TABLE(lua_istable(L, -1));
    TQ_INVARIANT(lua_isuserdata(L, 1), "lua_isuserdata(L, subcall_first_arg)");
    lua_setmetatable(L, 1);
    results = SearchClass(L, look);
    lua_pushvalue(L, metatable);
    lua_setmetatable(L, 1);
    TQ_INVARIANT(results == kNotFound || lua_gettop(L) == metatable + 1 + results, "lua_gettop(L) == last_arg + *ret");
    TQ_INVARIANT(results != kNotFound || lua_gettop(L) == metatable + 1, "lua_gettop(L) == subcall_last_arg");
  }
  if (results == kNotFound) lua_pop(L, 1);
  return results;
}

}  // namespace binding

#include "binding/references.h"

void swiglua_ref_set(CallbackReference* reference, lua_State* L, int index) {
  reference->state = L;
  lua_pushvalue(L, index);
  reference->reference = luaL_ref(L, LUA_REGISTRYINDEX);
}

void swiglua_ref_get(const CallbackReference* reference) {
  if (reference->state != nullptr) lua_rawgeti(reference->state, LUA_REGISTRYINDEX, reference->reference);
}

void swiglua_ref_clear(CallbackReference* reference) {
  if (reference->state != nullptr && reference->reference != LUA_NOREF && reference->reference != LUA_REFNIL) {
    luaL_unref(reference->state, LUA_REGISTRYINDEX, reference->reference);
  }
  *reference = {};
}

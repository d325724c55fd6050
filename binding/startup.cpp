#include "binding/startup.h"

#include "binding/dispatch.h"
#include "binding/handles.h"
#include "binding/invariant.h"
#include "binding/namespaces.h"
#include "binding/type_registry.h"

namespace binding {

void OpenModule(lua_State* L, const Module& module) {
  assertion_source = module.source;
  SetInPlace(module.in_place);
  luaL_checkstack(L, 20, nullptr);
  bool first_in_process = module.types->next_module == nullptr;
  lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
  JoinRing(L, module.types);
  if (first_in_process) PropagateClasses(*module.types);
  lua_pushliteral(L, "swig_type");
  lua_pushcfunction(L, TypeNameOf);
  lua_rawset(L, -3);
  lua_pushliteral(L, "swig_equals");
  lua_pushcfunction(L, Equals);
  lua_rawset(L, -3);
  ResolveBases(L, *module.types);

  int globals = lua_gettop(L);
  Shared shared(L);
  lua_pushvalue(L, globals);
  RegisterNamespace(L, *module.record, shared, module.more_fields);
  lua_replace(L, globals + 1);
  lua_settop(L, globals + 1);
}

}  // namespace binding

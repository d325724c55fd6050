#include "binding/startup.h"

#include "binding/handles.h"
#include "binding/namespaces.h"
#include "binding/type_registry.h"

namespace binding {

void OpenModule(lua_State* L, ModuleRecord* types, const NamespaceRecord& record, int more_fields) {
  luaL_checkstack(L, 20, nullptr);
  bool first_in_process = types->next_module == nullptr;
  lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
  JoinRing(L, types);
  if (first_in_process) PropagateClasses(*types);
  lua_pushliteral(L, "swig_type");
  lua_pushcfunction(L, TypeNameOf);
  lua_rawset(L, -3);
  lua_pushliteral(L, "swig_equals");
  lua_pushcfunction(L, Equals);
  lua_rawset(L, -3);
  ResolveBases(L, *types);

  int globals = lua_gettop(L);
  Shared shared(L);
  lua_pushvalue(L, globals);
  RegisterNamespace(L, record, shared, more_fields);
  lua_replace(L, globals + 1);
  lua_settop(L, globals + 1);
}

}  // namespace binding

#include "binding/dispatch.h"

#include "binding/bases.h"
#include "binding/handles.h"

namespace binding {
namespace {

constinit InPlace in_place = {};

// Runs `run` with the handle at index 1 and the function's number, if that is one of the functions and nobody watches
// calls.
template <class Run>
bool RunInPlace(lua_State* L, const NumberedFunctions& functions, lua_CFunction function, const void* block, Run run) {
  std::size_t number = functions.NumberOf(function);
  return number < functions.count() && lua_gethookmask(L) == 0 && block != nullptr &&
         lua_rawlen(L, 1) >= sizeof(Handle) && run(*static_cast<const Handle*>(block), number);
}

int MemberGet(lua_State* L) {
  const void* block = lua_touserdata(L, 1);
  TQ_INVARIANT(block != nullptr || lua_isuserdata(L, 1), "lua_isuserdata(L,1)");
  TQ_INVARIANT(lua_gettop(L) == 2, "first_arg == substack_start+1");
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  PushTable(L, 3, kAccessors);
  lua_pushvalue(L, 2);
  lua_CFunction getter = lua_rawget(L, 4) == LUA_TFUNCTION ? lua_tocfunction(L, 5) : nullptr;
  if (getter != nullptr) {
    auto get = [L](const Handle& handle, std::size_t number) { return in_place.get(L, handle, number); };
    if (!RunInPlace(L, in_place.getters, getter, block, get)) {
      lua_pushvalue(L, 1);
      lua_call(L, 1, 1);
    }
    return 1;
  }
  PushTable(L, 3, kMethods);
  lua_pushvalue(L, 2);
  if (lua_rawget(L, 6) == LUA_TFUNCTION) return 1;
  PushTable(L, 3, kBases);
  bool has_bases = lua_rawlen(L, 8) != 0;
  if (has_bases) {
    lua_settop(L, 3);
    int results = SearchBases(L, LookForMember);
    if (results != kNotFound) return results;
  }
  lua_pushvalue(L, lua_upvalueindex(kItem));
  if (lua_rawget(L, 3) == LUA_TFUNCTION) {
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 2);
    lua_call(L, 2, 1);
    return 1;
  }
  if (!has_bases) return 0;
  lua_settop(L, 3);
  int results = SearchBases(L, LookForItem);
  return results == kNotFound ? 0 : results;
}

int MemberSet(lua_State* L) {
  const void* block = lua_touserdata(L, 1);
  TQ_INVARIANT(block != nullptr || lua_isuserdata(L, 1), "lua_isuserdata(L,1)");
  TQ_INVARIANT(lua_gettop(L) == 3, "first_arg == substack_start+1");
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  PushTable(L, 4, kAccessors);
  lua_pushvalue(L, 2);
  lua_rawget(L, 5);
  if (lua_CFunction setter = lua_tocfunction(L, 6)) {
    auto set = [L](const Handle& handle, std::size_t number) { return in_place.set(L, handle, number, 3); };
    if (!RunInPlace(L, in_place.setters, setter, block, set)) {
      lua_pushvalue(L, 1);
      lua_pushvalue(L, 3);
      lua_call(L, 2, 0);
    }
    return 0;
  }
  lua_settop(L, 3);
  int results = SearchClass(L, LookForSetter);
  TQ_INVARIANT(lua_gettop(L) == 3, "lua_gettop(L) == substack_start + 3");
  if (results == kNotFound) {
    // GCOVR_EXCL_START: left by a jump, which is not counted
    return luaL_error(
        L,
        "Assignment not possible. No setter/member with this name. For custom assignments implement __setitem method.");
    // GCOVR_EXCL_STOP
  }
  TQ_INVARIANT(results == 0, "ret==0");
  return 0;
}

// The constructor may use the upvalues in front of it.
constexpr int kConstructor = kClassName + 1;

int ConstructorProxy(lua_State* L) {
  TQ_INVARIANT(lua_istable(L, 1), "(lua_type(L, (1)) == 5)");
  int top = lua_gettop(L);
  std::size_t number = in_place.constructors.NumberOf(lua_tocfunction(L, lua_upvalueindex(kConstructor)));
  if (top == 1 && number < in_place.constructors.count() && lua_gethookmask(L) == 0 && in_place.construct(L, number)) {
    return 1;
  }
  lua_pushvalue(L, lua_upvalueindex(kConstructor));
  lua_replace(L, 1);
  lua_call(L, top - 1, 1);
  return 1;
}

}  // namespace

void SetInPlace(const InPlace& functions) { in_place = functions; }

void PushMemberGetter(lua_State* L) {
  lua_pushliteral(L, ".get");
  lua_pushliteral(L, ".bases");
  lua_pushliteral(L, "__getitem");
  lua_pushliteral(L, ".fn");
  lua_pushcclosure(L, MemberGet, kMethods);
}

void PushMemberSetter(lua_State* L) {
  lua_pushliteral(L, ".set");
  lua_pushliteral(L, ".bases");
  lua_pushliteral(L, "__setitem");
  lua_pushcclosure(L, MemberSet, kItem);
}

void PushConstructorProxy(lua_State* L, const ClassRecord& record) {
  PushHandleUpvalues(L, record.qualified_name);
  lua_pushcfunction(L, record.constructor);
  lua_pushcclosure(L, ConstructorProxy, kConstructor);
}

}  // namespace binding

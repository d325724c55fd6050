#include "binding/dispatch.h"

#include "binding/handles.h"
#include "binding/invariant.h"

namespace binding {
namespace {

// The keys that the dispatchers look up are upvalues of their closures: ready strings, where a literal would be hashed
// anew for each access.
enum Key { kAccessors = 1, kBases, kItem, kMethods };

constinit InPlace in_place = {};

constexpr int kNotFound = -1;

// Pushes the table that the table at the index holds under the key.
void PushTable(lua_State* L, int table, Key key) {
  lua_pushvalue(L, lua_upvalueindex(key));
  TQ_INVARIANT_TABLE(lua_rawget(L, table) == LUA_TTABLE);
}

// Runs `run` with the handle at index 1 and the function's number, if that is one of the functions and nobody watches
// calls.
template <class Run>
bool RunInPlace(lua_State* L, const NumberedFunctions& functions, lua_CFunction function, const void* block, Run run) {
  std::size_t number = functions.NumberOf(function);
  return number < functions.count() && lua_gethookmask(L) == 0 && block != nullptr &&
         lua_rawlen(L, 1) >= sizeof(Handle) && run(*static_cast<const Handle*>(block), static_cast<unsigned>(number));
}

// Runs `search` with each base's metatable in the place of the object's own, which is on the stack top, until it finds
// something. Returns the count of results pushed, or kNotFound. The object is at index 1.
int SearchBases(lua_State* L, int (*search)(lua_State* L)) {
  int metatable = lua_gettop(L);
  PushTable(L, metatable, kBases);
  auto count = static_cast<lua_Integer>(lua_rawlen(L, -1));
  for (lua_Integer i = 1; i <= count; ++i) {
    if (lua_rawgeti(L, metatable + 1, i) == LUA_TNIL) {
      lua_pop(L, 1);
      continue;
    }
    TQ_INVARIANT_TABLE(lua_istable(L, -1));
    TQ_INVARIANT(lua_isuserdata(L, 1), "lua_isuserdata(L, subcall_first_arg)");
    lua_setmetatable(L, 1);
    int results = search(L);
    lua_pushvalue(L, metatable);
    lua_setmetatable(L, 1);
    if (results != kNotFound) {
      TQ_INVARIANT(lua_gettop(L) == metatable + 1 + results, "lua_gettop(L) == last_arg + *ret");
      return results;
    }
    TQ_INVARIANT(lua_gettop(L) == metatable + 1, "lua_gettop(L) == subcall_last_arg");
  }
  lua_pop(L, 1);
  return kNotFound;
}

// Drops what a search left between its first slot and its results.
int Found(lua_State* L, int top, int results) {
  if (results == 0) {
    lua_settop(L, top);
  } else {
    lua_replace(L, top + 1);
    lua_settop(L, top + 1);
  }
  return results;
}

int NotFound(lua_State* L, int top) {
  lua_settop(L, top);
  return kNotFound;
}

// Stack slots for a chain of some 150 bases. A search of a class that a script made its own base ends here.
constexpr int kDeepestBase = 600;

// Pushes the object's metatable as it stands.
int PushMetatable(lua_State* L) {
  luaL_checkstack(L, 8, nullptr);
  int top = lua_gettop(L);
  if (top > kDeepestBase) luaL_error(L, "stack overflow in the bases of a class");
  TQ_INVARIANT(lua_isuserdata(L, 1), "lua_isuserdata(L,substack_start+1)");
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  return top;
}

// obj.key in the bases: the stack holds object and key.
int GetFromBase(lua_State* L) {
  int top = PushMetatable(L);
  PushTable(L, top + 1, kAccessors);
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (lua_iscfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_call(L, 1, 1);
    return Found(L, top, 1);
  }
  PushTable(L, top + 1, kMethods);
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (lua_isfunction(L, -1)) return Found(L, top, 1);
  lua_settop(L, top + 1);
  int results = SearchBases(L, GetFromBase);
  return results == kNotFound ? NotFound(L, top) : Found(L, top, results);
}

int GetItem(lua_State* L) {
  int top = PushMetatable(L);
  lua_pushvalue(L, lua_upvalueindex(kItem));
  lua_rawget(L, top + 1);
  if (lua_isfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 2);
    lua_call(L, 2, 1);
    return Found(L, top, 1);
  }
  lua_settop(L, top + 1);
  int results = SearchBases(L, GetItem);
  return results == kNotFound ? NotFound(L, top) : Found(L, top, results);
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
    auto get = [L](const Handle& handle, unsigned number) { return in_place.get(L, handle, number); };
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
    int results = SearchBases(L, GetFromBase);
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
  int results = SearchBases(L, GetItem);
  return results == kNotFound ? 0 : results;
}

// obj.key = value in the bases: the stack holds object, key and value.
int SetInBase(lua_State* L) {
  int top = PushMetatable(L);
  PushTable(L, top + 1, kAccessors);
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (lua_iscfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 3);
    lua_call(L, 2, 0);
    return Found(L, top, 0);
  }
  lua_pushvalue(L, lua_upvalueindex(kItem));
  lua_rawget(L, top + 1);
  if (lua_isfunction(L, -1)) {
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 2);
    lua_pushvalue(L, 3);
    lua_call(L, 3, 0);
    return Found(L, top, 0);
  }
  lua_settop(L, top + 1);
  int results = SearchBases(L, SetInBase);
  return results == kNotFound ? NotFound(L, top) : Found(L, top, results);
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
    auto set = [L](const Handle& handle, unsigned number) { return in_place.set(L, handle, number, 3); };
    if (!RunInPlace(L, in_place.setters, setter, block, set)) {
      lua_pushvalue(L, 1);
      lua_pushvalue(L, 3);
      lua_call(L, 2, 0);
    }
    return 0;
  }
  lua_settop(L, 3);
  int results = SetInBase(L);
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
  if (top == 1 && number < in_place.constructors.count() && lua_gethookmask(L) == 0 &&
      in_place.construct(L, static_cast<unsigned>(number))) {
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

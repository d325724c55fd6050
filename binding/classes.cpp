#include "binding/classes.h"

#include <cstring>

#include "binding/dispatch.h"
#include "binding/handles.h"
#include "binding/invariant.h"

namespace binding {
namespace {

int Disown(lua_State* L) {
  TQ_INVARIANT(lua_gettop(L) > 0 && lua_isuserdata(L, -1), "lua_isuserdata(L,-1)");
  if (Handle* handle = HandleAt(L, -1)) handle->own = 0;
  return 0;
}

// A script can call this, too, and the collector then calls it again. A handle keeps its words for those who read them;
// its user value says that what it owned is destroyed.
int Collect(lua_State* L) {
  const Handle* handle = HandleAt(L, -1);
  if (handle == nullptr) {
    TQ_INVARIANT(lua_isuserdata(L, -1), "lua_isuserdata(L,-1)");
    return 0;
  }
  if (handle->own == 0 || handle->type == nullptr) return 0;
  const ClassRecord* record = handle->type->class_record;
  if (record == nullptr || record->destructor == nullptr) return 0;
  if (lua_getuservalue(L, -1) == LUA_TBOOLEAN) return 0;
  lua_pushboolean(L, 1);
  lua_setuservalue(L, -3);
  record->destructor(handle->pointer);
  return 0;
}

int ToString(lua_State* L) {
  TQ_INVARIANT(lua_isuserdata(L, 1), "lua_isuserdata(L,1)");
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  lua_pushliteral(L, ".type");
  lua_rawget(L, -2);
  lua_pushfstring(L, "<%s userdata: %p>", lua_tostring(L, -1), lua_touserdata(L, 1));
  return 1;
}

bool HasBases(const ClassRecord& record) { return record.base_class_names[0] != nullptr; }

// Pushes the metamethod of the bases, depth first, that is not itself a proxy; nothing when there is none.
bool PushBaseMetamethod(lua_State* L, const ClassRecord& record, int name) {
  luaL_checkstack(L, 8, nullptr);
  for (int i = 0; record.base_class_names[i] != nullptr; ++i) {
    const ClassRecord* base = record.bases[i];
    if (base == nullptr) continue;
    PushInstanceMetatable(L, *base);
    if (lua_istable(L, -1)) {
      lua_pushvalue(L, name);
      if (lua_rawget(L, -2) == LUA_TFUNCTION && lua_tocfunction(L, -1) != CallInheritedMetamethod) {
        lua_remove(L, -2);
        return true;
      }
      lua_pop(L, 1);
    }
    lua_pop(L, 1);
    if (PushBaseMetamethod(L, *base, name)) return true;
  }
  return false;
}

// Gives the instance metatable at the stack top a proxy for each metamethod that only its bases have.
void AddInheritedMetamethods(lua_State* L, const ClassRecord& record) {
  int metatable = lua_gettop(L);
  PushClassTable(L);
  lua_getfield(L, -1, ".library");
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  lua_getfield(L, -1, "inheritable_metamethods");
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  int names = lua_gettop(L);
  lua_pushnil(L);
  while (lua_next(L, names)) {
    bool inheritable = lua_isboolean(L, -1) && lua_toboolean(L, -1);
    lua_pop(L, 1);
    if (!inheritable) continue;
    int name = lua_gettop(L);
    lua_pushvalue(L, name);
    bool missing = lua_gettable(L, metatable) == LUA_TNIL;
    lua_pop(L, 1);
    if (missing && PushBaseMetamethod(L, record, name)) {
      lua_pop(L, 1);
      lua_pushvalue(L, name);
      lua_pushvalue(L, name);
      lua_pushlightuserdata(L, const_cast<ClassRecord*>(&record));
      lua_pushcclosure(L, CallInheritedMetamethod, 2);
      lua_rawset(L, metatable);
    }
  }
  lua_settop(L, metatable);
}

void SetDefault(lua_State* L, const Shared& shared, Shared::Value key, lua_CFunction function) {
  shared.Push(L, key);
  bool missing = lua_rawget(L, -2) == LUA_TNIL;
  lua_pop(L, 1);
  if (missing) shared.SetFunction(L, key, function);
}

// Adds the resolved bases' metatables to the ".bases" table at the stack top.
void AddBases(lua_State* L, const ClassRecord& record) {
  int bases = lua_gettop(L);
  lua_Integer count = 0;
  for (int i = 0; record.base_class_names[i] != nullptr; ++i) {
    if (record.bases[i] == nullptr) continue;
    PushInstanceMetatable(L, *record.bases[i]);
    TQ_INVARIANT_TABLE(lua_istable(L, -1));
    lua_rawseti(L, bases, ++count);
  }
}

// Pushes the metatable of the class's objects, which is made unless there is one.
void PushRegisteredInstances(lua_State* L, const ClassRecord& record, const Shared& shared) {
  luaL_checkstack(L, LUA_MINSTACK, nullptr);
  int begin = lua_gettop(L);
  int name = begin + 1;
  lua_pushstring(L, record.qualified_name);
  lua_pushvalue(L, name);
  if (lua_rawget(L, shared.index(Shared::kClassTable)) != LUA_TNIL) {
    lua_remove(L, name);
    return;
  }
  lua_pop(L, 1);
  for (int i = 0; record.base_class_names[i] != nullptr; ++i) {
    if (record.bases[i] == nullptr) continue;
    PushRegisteredInstances(L, *record.bases[i], shared);
    lua_pop(L, 1);
  }
  constexpr int kFields = 11;
  lua_createtable(L, 0, kFields + CountNamed(record.metatable));
  shared.Push(L, Shared::kTypeKey);
  lua_pushvalue(L, name);
  lua_rawset(L, -3);
  shared.PushNewTable(L, Shared::kBasesKey, 0);
  AddBases(L, record);
  lua_pop(L, 1);
  SetAttributes(L, record.attributes, shared);
  shared.PushNewTable(L, Shared::kMethodsKey, CountNamed(record.methods) + 1);
  shared.SetFunction(L, Shared::kDisownKey, Disown);
  AddMethods(L, record.methods);
  lua_pop(L, 1);
  shared.Push(L, Shared::kIndexKey);
  shared.Push(L, Shared::kMemberGetter);
  lua_rawset(L, -3);
  shared.Push(L, Shared::kNewIndexKey);
  shared.Push(L, Shared::kMemberSetter);
  lua_rawset(L, -3);
  shared.SetFunction(L, Shared::kCollectKey, Collect);
  AddMethods(L, record.metatable);
  if (HasBases(record)) AddInheritedMetamethods(L, record);
  SetDefault(L, shared, Shared::kToStringKey, ToString);
  SetDefault(L, shared, Shared::kEqualsKey, Equals);
  // Complete before it is there to be found: filling it may fail for want of memory.
  lua_pushvalue(L, name);
  lua_pushvalue(L, -2);
  lua_rawset(L, shared.index(Shared::kClassTable));
  lua_remove(L, name);
  TQ_INVARIANT(lua_gettop(L) == begin + 1, "lua_gettop(L) == begin+1");
}

// Bases first, so that the class's own entries win: over those of its bases, and over what is nested in it.
void AddStatics(lua_State* L, const ClassRecord& record) {
  for (int i = 0; record.base_class_names[i] != nullptr; ++i) {
    if (record.bases[i] != nullptr) AddStatics(L, *record.bases[i]);
  }
  AddNamespaceDetails(L, *record.cls_static);
}

}  // namespace

int CallInheritedMetamethod(lua_State* L) {
  const auto* record = static_cast<const ClassRecord*>(lua_touserdata(L, lua_upvalueindex(2)));
  int arguments = lua_gettop(L);
  lua_pushvalue(L, lua_upvalueindex(1));
  if (record == nullptr || !PushBaseMetamethod(L, *record, arguments + 1)) {
    // GCOVR_EXCL_START: left by a jump, which is not counted
    return luaL_error(L,
                      "The metamethod proxy is set, but it failed to find actual metamethod. Memory corruption is most "
                      "likely explanation.");
    // GCOVR_EXCL_STOP
  }
  lua_remove(L, arguments + 1);
  lua_insert(L, 1);
  lua_call(L, arguments, LUA_MULTRET);
  return lua_gettop(L);
}

void RegisterClass(lua_State* L, const ClassRecord& record, const Shared& shared) {
  TQ_INVARIANT(std::strcmp(record.name, record.cls_static->name) == 0,
               "strcmp(clss->name, clss->cls_static->name) == 0");
  int begin = lua_gettop(L);
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  int instances = begin + 1;
  PushRegisteredInstances(L, record, shared);
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  lua_pushvalue(L, begin);
  int statics = begin + 3;
  RegisterNamespace(L, *record.cls_static, shared);
  AddStatics(L, record);
  lua_getmetatable(L, statics);
  if (record.constructor != nullptr) {
    shared.Push(L, Shared::kCallKey);
    PushConstructorProxy(L, record);
    lua_rawset(L, -3);
  }
  shared.Push(L, Shared::kInstanceKey);
  lua_pushvalue(L, instances);
  lua_rawset(L, -3);
  shared.Push(L, Shared::kStaticKey);
  lua_pushvalue(L, statics);
  lua_rawset(L, instances);
  lua_settop(L, begin);
}

}  // namespace binding

#include "binding/namespaces.h"

#include "binding/arguments.h"
#include "binding/classes.h"
#include "binding/dispatch.h"
#include "binding/handles.h"
#include "binding/invariant.h"

namespace binding {
namespace {

constexpr const char* kSharedKeys[] = {".type",   ".bases",     ".get", ".set",   ".fn",        ".static", ".instance",
                                       "__index", "__newindex", "__gc", "__call", "__tostring", "__eq",    "__disown"};
static_assert(sizeof(kSharedKeys) / sizeof(kSharedKeys[0]) == Shared::kCount - Shared::kTypeKey);

constexpr Shared::Value kNamespaceTables[] = {Shared::kGetKey, Shared::kSetKey, Shared::kMethodsKey};

// Pushes the table that the table at the index holds under the key.
void PushTable(lua_State* L, int table, const char* key) {
  lua_pushstring(L, key);
  TQ_INVARIANT_TABLE(lua_rawget(L, table) == LUA_TTABLE);
}

// __index of namespaces, for keys that they do not hold themselves.
int NamespaceGet(lua_State* L) {
  TQ_INVARIANT(lua_istable(L, 1), "(lua_type(L, (1)) == 5)");
  lua_settop(L, 2);
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  PushTable(L, 3, ".get");
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (lua_iscfunction(L, -1)) {
    lua_call(L, 0, 1);
    return 1;
  }
  PushTable(L, 3, ".fn");
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  return lua_isfunction(L, -1) ? 1 : 0;
}

int NamespaceSet(lua_State* L) {
  TQ_INVARIANT(lua_istable(L, 1), "(lua_type(L, (1)) == 5)");
  lua_settop(L, 3);
  TQ_INVARIANT_TABLE(lua_getmetatable(L, 1));
  PushTable(L, 4, ".set");
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (lua_iscfunction(L, -1)) {
    lua_pushvalue(L, 3);
    lua_call(L, 1, 0);
    return 0;
  }
  lua_settop(L, 3);
  lua_rawset(L, 1);
  return 0;
}

// Pushes the constant's value; false for a kind that is not known.
bool PushConstant(lua_State* L, const Constant& constant) {
  switch (constant.code) {
    case kInteger: lua_pushinteger(L, constant.integer); return true;
    case kFloating: lua_pushnumber(L, constant.floating); return true;
    case kString: lua_pushstring(L, static_cast<const char*>(constant.pointer)); return true;
    case kPointer: PushHandle(L, const_cast<void*>(constant.pointer), *constant.type, 0); return true;
    case kBinary:
      PushPacked(L, constant.pointer, static_cast<std::size_t>(constant.integer), *constant.type);
      return true;
    case kCharacter: {
      char character = static_cast<char>(constant.integer);
      lua_pushlstring(L, &character, 1);
      return true;
    }
    default: return false;
  }
}

void AddConstants(lua_State* L, const Constant* constants) {
  for (; constants->code != kEndOfConstants; ++constants) {
    lua_pushstring(L, constants->name);
    if (PushConstant(L, *constants)) {
      lua_rawset(L, -3);
    } else {
      lua_pop(L, 1);
    }
  }
}

template <class Record> int CountPointers(Record* const* records) {
  int count = 0;
  while (records[count] != nullptr) ++count;
  return count;
}

int CountConstants(const Constant* constants) {
  int count = 0;
  while (constants[count].code != kEndOfConstants) ++count;
  return count;
}

// Adds attributes to the ".get" and ".set" tables at the two indexes.
void AddAttributes(lua_State* L, const Attribute* attributes, int getters, int setters) {
  for (; attributes->name != nullptr; ++attributes) {
    lua_pushstring(L, attributes->name);
    if (attributes->setter != nullptr) {
      lua_pushvalue(L, -1);
      lua_pushcfunction(L, attributes->setter);
      lua_rawset(L, setters);
    }
    lua_pushcfunction(L, attributes->getter);
    lua_rawset(L, getters);
  }
}

void PushNamespaceMetatable(lua_State* L, const Shared& shared) {
  constexpr int kFields = 7;  // a class adds two
  lua_createtable(L, 0, kFields);
  for (Shared::Value key : kNamespaceTables) {
    shared.PushNewTable(L, key, 0);
    lua_pop(L, 1);
  }
  shared.SetFunction(L, Shared::kIndexKey, NamespaceGet);
  shared.SetFunction(L, Shared::kNewIndexKey, NamespaceSet);
}

}  // namespace

Shared::Shared(lua_State* L) : first_(lua_gettop(L) + 1) {
  luaL_checkstack(L, kCount + LUA_MINSTACK, nullptr);
  PushClassTable(L);
  PushMemberGetter(L);
  PushMemberSetter(L);
  for (const char* key : kSharedKeys) lua_pushstring(L, key);
}

void Shared::SetFunction(lua_State* L, Value key, lua_CFunction function) const {
  Push(L, key);
  lua_pushcfunction(L, function);
  lua_rawset(L, -3);
}

void Shared::PushNewTable(lua_State* L, Value key, int fields) const {
  lua_createtable(L, 0, fields);
  Push(L, key);
  lua_pushvalue(L, -2);
  lua_rawset(L, -4);
}

void AddMethods(lua_State* L, const Method* methods) {
  for (; methods->name != nullptr; ++methods) {
    lua_pushstring(L, methods->name);
    lua_pushcfunction(L, methods->function);
    lua_rawset(L, -3);
  }
}

void SetAttributes(lua_State* L, const Attribute* attributes, const Shared& shared) {
  int table = lua_gettop(L);
  int count = CountNamed(attributes);
  shared.PushNewTable(L, Shared::kGetKey, count);
  lua_insert(L, table);
  shared.PushNewTable(L, Shared::kSetKey, count);
  AddAttributes(L, attributes, table, table + 2);
  lua_pop(L, 1);
  lua_remove(L, table);
}

void AddNamespaceDetails(lua_State* L, const NamespaceRecord& record) {
  int begin = lua_gettop(L);
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  AddConstants(L, record.constants);
  AddMethods(L, record.methods);
  if (record.attributes->name != nullptr) {
    TQ_INVARIANT_TABLE(lua_getmetatable(L, begin));
    PushTable(L, begin + 1, ".get");
    PushTable(L, begin + 1, ".set");
    AddAttributes(L, record.attributes, begin + 2, begin + 3);
    lua_settop(L, begin);
  }
  TQ_INVARIANT(lua_gettop(L) == begin, "lua_gettop(L) == begin");
}

void RegisterNamespace(lua_State* L, const NamespaceRecord& record, const Shared& shared, int more_fields) {
  luaL_checkstack(L, LUA_MINSTACK, nullptr);
  int begin = lua_gettop(L);
  TQ_INVARIANT_TABLE(lua_istable(L, -1));
  lua_createtable(L, 0,
                  CountConstants(record.constants) + CountNamed(record.methods) + CountPointers(record.classes) +
                      CountPointers(record.namespaces) + more_fields);
  PushNamespaceMetatable(L, shared);
  lua_setmetatable(L, -2);
  AddNamespaceDetails(L, record);
  for (ClassRecord* const* cls = record.classes; *cls != nullptr; ++cls) RegisterClass(L, **cls, shared);
  for (const NamespaceRecord* const* sub = record.namespaces; *sub != nullptr; ++sub) {
    RegisterNamespace(L, **sub, shared);
    lua_pop(L, 1);
  }
  lua_pushstring(L, record.name);
  lua_pushvalue(L, -2);
  lua_rawset(L, begin);
  TQ_INVARIANT(lua_gettop(L) == begin + 1, "lua_gettop(L) == begin+1");
}

int SetImmutable(lua_State* L) {
  const Piece message[] = {"This variable is immutable", nullptr};
  RaiseAtCaller(L, message);
}

}  // namespace binding

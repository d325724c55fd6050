#include "binding/handles.h"

#include <cstring>

#include "binding/arguments.h"
#include "binding/invariant.h"
#include "binding/type_registry.h"

namespace binding {
namespace {

constexpr char kClassTable[] = "SWIG";

// Metamethods that a class may take over from its bases; __gc never is.
constexpr const char* kInheritableMetamethods[] = {"__add", "__sub", "__mul",  "__div",     "__mod",
                                                   "__pow", "__unm", "__len",  "__concat",  "__eq",
                                                   "__lt",  "__le",  "__call", "__tostring"};

void CreateClassTable(lua_State* L) {
  constexpr int kNames = sizeof(kInheritableMetamethods) / sizeof(kInheritableMetamethods[0]) + 1;
  lua_createtable(L, 0, 0);
  lua_createtable(L, 0, 1);
  lua_createtable(L, 0, kNames);
  for (const char* name : kInheritableMetamethods) {
    lua_pushboolean(L, 1);
    lua_setfield(L, -2, name);
  }
  lua_pushboolean(L, 0);
  lua_setfield(L, -2, "__gc");
  lua_setfield(L, -2, "inheritable_metamethods");
  lua_setfield(L, -2, ".library");
}

}  // namespace

void PushInstanceMetatable(lua_State* L, const ClassRecord& record) {
  PushClassTable(L);
  lua_pushstring(L, record.qualified_name);
  lua_rawget(L, -2);
  lua_remove(L, -2);
}

void AttachClass(lua_State* L, const TypeDescriptor* type) {
  PushInstanceMetatable(L, *type->class_record);
  if (lua_istable(L, -1)) {
    lua_setmetatable(L, -2);
  } else {
    lua_pop(L, 1);
  }
}

void PushClassTable(lua_State* L) {
  lua_pushstring(L, kClassTable);
  if (lua_rawget(L, LUA_REGISTRYINDEX) == LUA_TTABLE) return;
  lua_pop(L, 1);
  lua_pushstring(L, kClassTable);
  CreateClassTable(L);
  lua_rawset(L, LUA_REGISTRYINDEX);
  lua_pushstring(L, kClassTable);
  TQ_INVARIANT_TABLE(lua_rawget(L, LUA_REGISTRYINDEX) == LUA_TTABLE);
}

void PushHandleUpvalues(lua_State* L, const char* qualified_name) {
  lua_pushstring(L, kClassTable);
  lua_pushstring(L, qualified_name);
}

void PushPacked(lua_State* L, const void* bytes, std::size_t size, TypeDescriptor* type) {
  TQ_INVARIANT(bytes != nullptr, "ptr");
  struct Header {
    TypeDescriptor* type;
    std::size_t own;
  };
  auto* header = static_cast<Header*>(lua_newuserdata(L, sizeof(Header) + size));
  header->type = type;
  header->own = 0;
  std::memcpy(header + 1, bytes, size);
  if (type != nullptr && type->class_record != nullptr) AttachClass(L, type);
}

int ConvertPtr(lua_State* L, int index, void** pointer, TypeDescriptor* expected, int flags) {
  if (lua_isnil(L, index)) {
    *pointer = nullptr;
    return 0;
  }
  Handle* handle = HandleAt(L, index);
  if (handle == nullptr) return -1;
  if (flags & kDisown) handle->own = 0;
  if (expected == nullptr) {
    *pointer = handle->pointer;
    return 0;
  }
  const CastEntry* cast = FindCast(expected, handle->type);
  if (cast == nullptr) return -1;
  if (cast->converter == nullptr) {
    *pointer = handle->pointer;
  } else {
    int newmemory = 0;
    *pointer = cast->converter(handle->pointer, &newmemory);
    TQ_INVARIANT(!newmemory, "!newmemory");
  }
  return 0;
}

int TypeNameOf(lua_State* L) {
  lua_pushstring(L, TypeName(L, 1));
  return 1;
}

int Equals(lua_State* L) {
  const Handle* a = HandleAt(L, 1);
  const Handle* b = HandleAt(L, 2);
  if (a == nullptr || b == nullptr) return 0;
  lua_pushboolean(L, a->pointer == b->pointer);
  return 1;
}

}  // namespace binding

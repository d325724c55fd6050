// Native pointers as Lua values. What pushes a handle leaves one value and needs five free stack slots.
#pragma once

#include "binding/abi.h"

namespace binding {

// Pushes the interpreter's table of instance metatables by qualified class name, made on first use.
void PushClassTable(lua_State* L);

// Pushes the class's instance metatable, or nil.
void PushInstanceMetatable(lua_State* L, const ClassRecord& record);

// Gives the new handle at the stack top the class of its type, which has one.
void AttachClass(lua_State* L, const TypeDescriptor* type);

// Pushes a handle without a native object and without a class.
inline Handle* PushBareHandle(lua_State* L, TypeDescriptor* type) {
  auto* handle = static_cast<Handle*>(lua_newuserdata(L, sizeof(Handle)));
  handle->type = type;
  handle->own = 0;
  handle->pointer = nullptr;
  return handle;
}

// Pushes a handle without a native object yet, for a caller that must have the handle before it allocates one. The
// caller either sets pointer and own or drops the handle. The type may be null: unknown.
inline Handle* PushEmptyHandle(lua_State* L, TypeDescriptor* type) {
  Handle* handle = PushBareHandle(L, type);
  if (type != nullptr && type->class_record != nullptr) AttachClass(L, type);
  return handle;
}

// Pushes a handle, or nil for a null pointer. With `own`, collecting the handle frees the native object.
inline void PushHandle(lua_State* L, void* pointer, TypeDescriptor* type, int own) {
  if (pointer == nullptr) {
    lua_pushnil(L);
    return;
  }
  Handle* handle = PushEmptyHandle(L, type);
  handle->pointer = pointer;
  handle->own = own;
}

// What a Lua function that makes handles of a class is a closure over: the strings that find the class's metatable,
// which would be hashed anew for each handle. More class names may follow.
enum HandleUpvalue { kClassTableKey = 1, kClassName };

// Pushes these upvalues, for lua_pushcclosure.
void PushHandleUpvalues(lua_State* L, const char* qualified_name);

// Pushes the class table in such a closure.
inline void PushClassTableOfClosure(lua_State* L) {
  lua_pushvalue(L, lua_upvalueindex(kClassTableKey));
  if (lua_rawget(L, LUA_REGISTRYINDEX) != LUA_TTABLE) {
    lua_pop(L, 1);
    PushClassTable(L);
  }
}

// The class table's index for the functions below when it is on the stack top.
inline constexpr int kClassTableOnTop = -3;

// The same as PushEmptyHandle and PushHandle in such a closure. The class name is the very string of the record from
// which the upvalue was made: while the type has a record with that one, the upvalue is good.
inline Handle* PushEmptyClassHandle(lua_State* L, TypeDescriptor* type, const char* class_name, int class_table,
                                    int name_upvalue = kClassName) {
  Handle* handle = PushBareHandle(L, type);
  const ClassRecord* record = type->class_record;
  if (record == nullptr) return handle;
  if (record->qualified_name == class_name) {
    lua_pushvalue(L, lua_upvalueindex(name_upvalue));
    if (lua_rawget(L, class_table) == LUA_TTABLE) {
      lua_setmetatable(L, -2);
      return handle;
    }
    lua_pop(L, 1);
  }
  // The running function may be a dispatcher, whose upvalues are others.
  AttachClass(L, type);
  return handle;
}

inline void PushClassHandle(lua_State* L, void* pointer, TypeDescriptor* type, const char* class_name, int class_table,
                            int name_upvalue = kClassName) {
  if (pointer == nullptr) {
    lua_pushnil(L);
  } else {
    PushEmptyClassHandle(L, type, class_name, class_table, name_upvalue)->pointer = pointer;
  }
}

// Pushes a userdata that holds a copy of the bytes behind the type and own words of a handle.
void PushPacked(lua_State* L, const void* bytes, std::size_t size, TypeDescriptor* type);

// The handle at the index; null for every other value, light userdata and too short foreign userdata among them.
[[gnu::always_inline]] inline Handle* HandleAt(lua_State* L, int index) {
  void* block = lua_touserdata(L, index);
  return block != nullptr && lua_rawlen(L, index) >= sizeof(Handle) ? static_cast<Handle*>(block) : nullptr;
}

// The native pointer of any handle; null for every other value.
inline void* UntypedPointerAt(lua_State* L, int index) {
  const Handle* handle = HandleAt(L, index);
  return handle != nullptr ? handle->pointer : nullptr;
}

// Lua gives up the native object of a converted handle; also when the handle then proves to be of the wrong type.
inline constexpr int kDisown = 1;

// Stores the native pointer of a handle of the expected type (null: of any type), or null for nil. Returns 0, or -1
// when the value is neither.
int ConvertPtr(lua_State* L, int index, void** pointer, TypeDescriptor* expected, int flags);

// Whether the handle's type heads the expected type's cast list, as nearly every one does: its pointer then is what a
// conversion gives, and the list stays as it is.
inline bool IsExact(const Handle& handle, const TypeDescriptor& expected) {
  const CastEntry* first = expected.casts;
  return first != nullptr && first->target_type == handle.type && first->converter == nullptr;
}

// Lua functions: the readable type name of a value; whether two handles hold the same native pointer.
int TypeNameOf(lua_State* L);
int Equals(lua_State* L);

}  // namespace binding

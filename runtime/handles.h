// Native pointers as Lua values.
#ifndef TQ_RUNTIME_HANDLES_H
#define TQ_RUNTIME_HANDLES_H

#include "runtime/abi.h"

namespace binding {

// Pushes the interpreter's table of instance metatables by qualified class name, made on first use.
void PushClassTable(lua_State* L);

// Pushes a handle, or nil for a null pointer. With `own`, collecting the handle frees the native object.
void PushHandle(lua_State* L, void* pointer, TypeDescriptor* type, int own);

// What a Lua function that makes handles of a class is a closure over: the strings that find the class's metatable,
// which would be hashed anew for each handle. More class names may follow.
enum HandleUpvalue { kClassTableKey = 1, kClassName };

// Pushes these upvalues, for lua_pushcclosure.
void PushHandleUpvalues(lua_State* L, const char* qualified_name);

// Pushes the class table in such a closure and returns its index.
int PushClassTableOfClosure(lua_State* L);

// The same as PushHandle, faster in such a closure. The slot is that of the class's own record.
void PushClassHandle(lua_State* L, void* pointer, TypeDescriptor** type, int class_table,
                     int name_upvalue = kClassName);

// Pushes a handle without a native object yet, for a caller that must have the handle before it allocates one. The
// caller either sets pointer and own or drops the handle.
Handle* PushEmptyHandle(lua_State* L, TypeDescriptor* type);
Handle* PushEmptyClassHandle(lua_State* L, TypeDescriptor** type, int class_table, int name_upvalue = kClassName);

// Pushes a userdata that holds a copy of the bytes behind the type and own words of a handle.
void PushPacked(lua_State* L, const void* bytes, std::size_t size, TypeDescriptor* type);

// The handle at the index; null for every other value, light userdata and too short foreign userdata among them.
inline Handle* HandleAt(lua_State* L, int index) {
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

// Converts a handle whose type heads the expected type's cast list, which is nearly every one; false for all other
// values.
[[gnu::always_inline]] inline bool ConvertExact(lua_State* L, int index, void** pointer,
                                                TypeDescriptor* const* expected) {
  const Handle* handle = HandleAt(L, index);
  if (handle == nullptr) return false;
  const CastEntry* first = (*expected)->casts;
  if (first == nullptr || first->target_type != handle->type || first->converter != nullptr) return false;
  *pointer = handle->pointer;
  return true;
}

// Lua functions: the readable type name of a value; whether two handles hold the same native pointer.
int TypeNameOf(lua_State* L);
int Equals(lua_State* L);

}  // namespace binding

#endif

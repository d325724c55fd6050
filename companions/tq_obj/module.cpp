// The Lua module tq_obj: makes and reads value objects, and messages to test a handler with. It gives the type
// `tq_obj *`, which it shares with the other modules of its kind, a class: values that tq_mom_sync returns then have
// it, too.
#include <tq_kit/value_object.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "binding/arguments.h"
#include "binding/handles.h"
#include "binding/startup.h"
#include "companions/messages.h"

namespace {

using binding::Attribute;
using binding::CastEntry;
using binding::ClassRecord;
using binding::Constant;
using binding::Method;
using binding::ModuleRecord;
using binding::NamespaceRecord;
using binding::TypeDescriptor;

// In the order of their mangled names.
enum TypeId { kMessageType, kObjectType, kTypeCount };
extern TypeDescriptor* type_table[kTypeCount + 1];

// The live object at the index, which must be a handle of one.
tq_obj* CheckObject(lua_State* L, int index) {
  void* object;
  if (binding::ConvertPtr(L, index, &object, type_table[kObjectType], 0) != 0 || object == nullptr) {
    luaL_error(L, "bad argument #%d: tq_obj expected, got %s", index, binding::TypeName(L, index));
  }
  if (!tq_obj_is_live(object)) luaL_error(L, "bad argument #%d: the tq_obj was released", index);
  return static_cast<tq_obj*>(object);
}

std::uint32_t CheckTag(lua_State* L, int index) {
  int is_integer = 0;
  lua_Integer tag = lua_type(L, index) == LUA_TNUMBER ? lua_tointegerx(L, index, &is_integer) : 0;
  if (!is_integer || tag < 0 || tag > UINT32_MAX) {
    luaL_error(L, "a tq_obj has no field '%s': key, value and numbers from 0 to 4294967295 are its fields",
               luaL_tolstring(L, index, nullptr));
  }
  return static_cast<std::uint32_t>(tag);
}

// The string at the index, null for nil; what else there is cannot be kept as `part` of an object.
const char* CheckBytes(lua_State* L, int index, const char* part, std::size_t* length) {
  if (lua_isnoneornil(L, index)) return nullptr;
  if (lua_type(L, index) != LUA_TSTRING && lua_type(L, index) != LUA_TNUMBER) {
    luaL_error(L, "%s of a tq_obj: string or nil expected, got %s", part, binding::TypeName(L, index));
  }
  return lua_tolstring(L, index, length);
}

// The text at the index, which must be a key that commands take.
const char* CheckKey(lua_State* L, int index, std::size_t* length) {
  if (lua_type(L, index) != LUA_TSTRING && lua_type(L, index) != LUA_TNUMBER) {
    luaL_error(L, "key of a tq_obj: string expected, got %s", binding::TypeName(L, index));
  }
  constexpr std::size_t kLongest = TQ_MOM_KEY_MAX_LEN - 1;
  const char* key = lua_tolstring(L, index, length);
  if (*length == 0) luaL_error(L, "key of a tq_obj: it is empty, and no command takes an empty key");
  if (*length > kLongest) {
    luaL_error(L, "key of a tq_obj: it has %I bytes, and no command takes more than %d",
               static_cast<lua_Integer>(*length), static_cast<int>(kLongest));
  }
  if (const void* nul = std::memchr(key, '\0', *length)) {
    luaL_error(L, "key of a tq_obj: byte %d is a NUL, and no command takes one",
               static_cast<int>(static_cast<const char*>(nul) - key) + 1);
  }
  return key;
}

int CheckStatus(lua_State* L, int status) {
  if (status != TQ_MOM_OK) luaL_error(L, status == TQ_MOM_MALLOC_ERR ? "not enough memory" : "not a tq_obj");
  return 0;
}

void PushBytes(lua_State* L, const char* bytes, std::size_t length) {
  if (bytes != nullptr) {
    lua_pushlstring(L, bytes, length);
  } else {
    lua_pushnil(L);
  }
}

// tq_obj.new(key [, value]): an object that Lua owns.
int New(lua_State* L) {
  std::size_t key_length = 0;
  std::size_t value_length = 0;
  const char* key = CheckKey(L, 1, &key_length);
  const char* value = CheckBytes(L, 2, "value", &value_length);
  binding::Handle* handle = binding::PushEmptyHandle(L, type_table[kObjectType]);
  tq_obj* object = tq_obj_new(key, key_length);
  if (object == nullptr) return luaL_error(L, "not enough memory");
  handle->pointer = object;
  handle->own = 1;
  if (value != nullptr) CheckStatus(L, tq_obj_set_value(object, value, value_length));
  return 1;
}

// tq_obj.from(handle): the object that an untyped handle points to; nil for nil. It stays owned by whoever owns it.
int From(lua_State* L) {
  if (lua_isnil(L, 1)) {
    lua_pushnil(L);
    return 1;
  }
  void* object = binding::UntypedPointerAt(L, 1);
  if (!tq_obj_is_live(object)) {
    return luaL_error(L, "bad argument #1: handle of a value object expected, got %s", binding::TypeName(L, 1));
  }
  binding::PushHandle(L, object, type_table[kObjectType], 0);
  return 1;
}

// tq_obj.bytes(handle, length): the bytes that a message's value points to, as a string. The length is the message's.
int Bytes(lua_State* L) {
  int is_integer;
  lua_Integer length = lua_tointegerx(L, 2, &is_integer);
  if (!is_integer || length < 0 || static_cast<lua_Unsigned>(length) > SIZE_MAX)
    return luaL_error(L, "bad argument #2: length expected, got %s", luaL_typename(L, 2));
  const auto* bytes = static_cast<const char*>(binding::UntypedPointerAt(L, 1));
  if (bytes == nullptr && !(lua_isnil(L, 1) && length == 0)) {
    return luaL_error(L, "bad argument #1: handle expected, got %s", binding::TypeName(L, 1));
  }
  lua_pushlstring(L, bytes != nullptr ? bytes : "", static_cast<std::size_t>(length));
  return 1;
}

// The named text of the table at index 1, null when it is nil. It stays on the stack.
const char* CheckEntry(lua_State* L, const char* name, std::size_t* length) {
  lua_getfield(L, 1, name);
  if (lua_isnil(L, -1)) return nullptr;
  if (lua_type(L, -1) != LUA_TSTRING) {
    luaL_error(L, "%s of a message: string or nil expected, got %s", name, binding::TypeName(L, -1));
  }
  return lua_tolstring(L, -1, length);
}

void CheckTable(lua_State* L) {
  if (lua_type(L, 1) != LUA_TTABLE) {
    luaL_error(L, "bad argument #1: table with a message's fields expected, got %s", binding::TypeName(L, 1));
  }
}

// tq_obj.message{key = "k", value = "bytes", ...}: a message as subscribers get it, to test a handler with.
int NewMessage(lua_State* L) {
  CheckTable(L);
  lua_settop(L, 1);
  std::size_t length = 0;
  const char* value = CheckEntry(L, "value", &length);
  tq_mom_pubsub_msg_t* message = companions::PushMessage(L, type_table[kMessageType], length);
  int handle = lua_gettop(L);
  if (value != nullptr) {
    message->value = std::memcpy(companions::RoomOf(message), value, length);
    message->length = length;
  }
  luaL_getmetafield(L, handle, ".set");
  int setters = lua_gettop(L);
  lua_pushnil(L);
  while (lua_next(L, 1) != 0) {
    const char* name = lua_type(L, -2) == LUA_TSTRING ? lua_tostring(L, -2) : nullptr;
    if (name != nullptr && std::strcmp(name, "value") == 0) {
      lua_pop(L, 1);
      continue;
    }
    if (name != nullptr && std::strcmp(name, "length") == 0) {
      return luaL_error(L, "length of a message: it is that of the value, and cannot be given");
    }
    lua_pushvalue(L, -2);
    if (lua_rawget(L, setters) == LUA_TNIL) {
      return luaL_error(L, "a message has no field '%s'", luaL_tolstring(L, -3, nullptr));
    }
    lua_pop(L, 1);
    lua_pushvalue(L, -2);
    lua_insert(L, -2);
    lua_settable(L, handle);
  }
  lua_settop(L, handle);
  return 1;
}

// tq_obj.scan_message{key = "k", value = "bytes"}: a message as a scan's callback gets it.
int NewScanMessage(lua_State* L) {
  CheckTable(L);
  lua_settop(L, 1);
  std::size_t key_length = 0;
  std::size_t value_length = 0;
  const char* key = CheckEntry(L, "key", &key_length);
  const char* value = CheckEntry(L, "value", &value_length);
  if (key == nullptr) return luaL_error(L, "key of a message: string expected, got nil");
  if (value_length > INT_MAX) return luaL_error(L, "value of a message: too long");
  // The handle has the other message's type, as in a scan, so whoever does not cast it reads that much.
  static_assert(sizeof(tq_mom_scan_all_msg_t) <= sizeof(tq_mom_pubsub_msg_t));
  tq_mom_pubsub_msg_t* block = companions::PushMessage(L, type_table[kMessageType], key_length + 1 + value_length);
  char* room = companions::RoomOf(block);
  auto* message = reinterpret_cast<tq_mom_scan_all_msg_t*>(block);
  message->key = static_cast<char*>(std::memcpy(room, key, key_length));
  message->vlen = static_cast<int>(value_length);
  message->value = reinterpret_cast<unsigned char*>(room + key_length + 1);
  if (value != nullptr) std::memcpy(message->value, value, value_length);
  return 1;
}

int GetKey(lua_State* L) {
  std::size_t length;
  const char* key = tq_obj_key(CheckObject(L, 1), &length);
  PushBytes(L, key, length);
  return 1;
}

int SetKey(lua_State* L) {
  tq_obj* object = CheckObject(L, 1);
  std::size_t length = 0;
  const char* key = CheckKey(L, 2, &length);
  return CheckStatus(L, tq_obj_set_key(object, key, length));
}

int GetValue(lua_State* L) {
  std::size_t length = 0;
  const char* value = tq_obj_value(CheckObject(L, 1), &length);
  PushBytes(L, value, length);
  return 1;
}

int SetValue(lua_State* L) {
  tq_obj* object = CheckObject(L, 1);
  std::size_t length = 0;
  const char* value = CheckBytes(L, 2, "value", &length);
  return CheckStatus(L, value != nullptr ? tq_obj_set_value(object, value, length) : tq_obj_clear_value(object));
}

// object[tag]
int GetField(lua_State* L) {
  const tq_obj* object = CheckObject(L, 1);
  std::size_t length = 0;
  const char* bytes = lua_type(L, 2) == LUA_TNUMBER ? tq_obj_field(object, CheckTag(L, 2), &length) : nullptr;
  PushBytes(L, bytes, length);
  return 1;
}

// object[tag] = bytes
int SetField(lua_State* L) {
  tq_obj* object = CheckObject(L, 1);
  std::uint32_t tag = CheckTag(L, 2);
  std::size_t length = 0;
  const char* bytes = CheckBytes(L, 3, "field", &length);
  return CheckStatus(L,
                     bytes != nullptr ? tq_obj_set_field(object, tag, bytes, length) : tq_obj_clear_field(object, tag));
}

// object:fields(): a table of the numbered fields.
int Fields(lua_State* L) {
  const tq_obj* object = CheckObject(L, 1);
  lua_createtable(L, 0, static_cast<int>(std::min<std::size_t>(tq_obj_field_count(object), INT_MAX)));
  std::uint32_t tag;
  std::size_t length;
  for (std::size_t i = 0; const char* bytes = tq_obj_field_at(object, i, &tag, &length); ++i) {
    lua_pushlstring(L, bytes, length);
    lua_rawseti(L, -2, static_cast<lua_Integer>(tag));
  }
  return 1;
}

int ToString(lua_State* L) {
  void* object = binding::UntypedPointerAt(L, 1);
  if (!tq_obj_is_live(object)) {
    lua_pushliteral(L, "tq_obj (released)");
    return 1;
  }
  // A push may run the collector, which may release the object when this handle is not its owner: it then has no value.
  const auto* live = static_cast<const tq_obj*>(object);
  std::size_t length;
  const char* key = tq_obj_key(live, &length);
  PushBytes(L, key, length);
  const char* value = tq_obj_value(live, &length);
  PushBytes(L, value, length);
  int value_index = lua_gettop(L);
  lua_pushliteral(L, "tq_obj(");
  lua_pushvalue(L, value_index - 1);
  if (value != nullptr) {
    lua_pushliteral(L, " = ");
    lua_pushvalue(L, value_index);
  }
  lua_pushliteral(L, ")");
  lua_concat(L, lua_gettop(L) - value_index);
  return 1;
}

void Delete(void* object) { tq_obj_delete(static_cast<tq_obj*>(object)); }

const char* no_base_names[] = {nullptr};
ClassRecord* no_bases[] = {nullptr};

constexpr Method kFunctions[] = {
    {"new", New}, {"from", From}, {"bytes", Bytes}, {"message", NewMessage}, {"scan_message", NewScanMessage}, {}};
constexpr Method kMethods[] = {{"fields", Fields}, {}};
constexpr Attribute kAttributes[] = {{"key", GetKey, SetKey}, {"value", GetValue, SetValue}, {}};
constexpr Method kMetamethods[] = {{"__getitem", GetField}, {"__setitem", SetField}, {"__tostring", ToString}, {}};

constexpr NamespaceRecord kStatics = {"tq_obj",
                                      binding::kNone<Method>,
                                      binding::kNone<Attribute>,
                                      binding::kNone<Constant>,
                                      binding::kNone<ClassRecord*>,
                                      binding::kNone<const NamespaceRecord*>};

ClassRecord object_class = {
    "tq_obj", "tq_obj",     &type_table[kObjectType], New, Delete, kMethods, kAttributes, &kStatics, kMetamethods,
    no_bases, no_base_names};
ClassRecord* classes[] = {&object_class, nullptr};

constexpr NamespaceRecord kModule = {"tq_obj",
                                     kFunctions,
                                     binding::kNone<Attribute>,
                                     binding::kNone<Constant>,
                                     classes,
                                     binding::kNone<const NamespaceRecord*>};

TypeDescriptor message_type = companions::kMessageType;
TypeDescriptor object_type = {"_p_tq_obj", "tq_obj *", nullptr, nullptr, &object_class, 0};
CastEntry message_casts[] = {{&message_type, nullptr, nullptr, nullptr}, {}};
CastEntry object_casts[] = {{&object_type, nullptr, nullptr, nullptr}, {}};
TypeDescriptor* own_types[] = {&message_type, &object_type, nullptr};
CastEntry* own_casts[] = {message_casts, object_casts, nullptr};
TypeDescriptor* type_table[kTypeCount + 1];
ModuleRecord module_record = {type_table, kTypeCount, nullptr, own_types, own_casts, nullptr};

}  // namespace

extern "C" [[gnu::visibility("default")]] int luaopen_tq_obj(lua_State* L) {
  binding::OpenModule(L, {.types = &module_record, .record = &kModule, .source = "tq_obj_wrap"});
  return 1;
}

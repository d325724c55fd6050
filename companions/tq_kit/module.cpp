// The Lua module tq_kit: what the host kit's client library offers beyond the client functions.
#include <climits>
#include <cstdint>
#include <cstring>

#include "binding/arguments.h"
#include "binding/handles.h"
#include "binding/startup.h"
#include "chunk.h"
#include "companions/messages.h"
#include "companions/tq_kit/arguments.h"
#include "companions/tq_kit/contents.h"
#include "companions/tq_kit/subscriptions.h"

namespace tq_kit {

const char* const kKindNames[] = {nullptr, "string", "hash", "list", "set", "sorted_set", nullptr};

void RaiseArgument(lua_State* L, int index, const char* expected) {
  const char* got = lua_isnone(L, index) ? "no value" : binding::TypeName(L, index);
  luaL_argerror(L, index, lua_pushfstring(L, "%s expected, got %s", expected, got));
  __builtin_unreachable();
}

tq_global_t* CheckRuntime(lua_State* L) {
  void* g;
  if (binding::ConvertPtr(L, 1, &g, type_table[kGlobalType], 0) != 0 || g == nullptr) RaiseArgument(L, 1, "runtime");
  if (tq_kit_last_error(static_cast<tq_global_t*>(g)) == nullptr) {
    luaL_argerror(L, 1, "runtime expected, got one that has ended");
  }
  return static_cast<tq_global_t*>(g);
}

int CheckDatabase(lua_State* L) {
  int is_integer;
  lua_Integer db = lua_tointegerx(L, 2, &is_integer);
  if (!is_integer) RaiseArgument(L, 2, "database");
  if (db < 0 || db > TQ_MOM_INNER_DB) {
    luaL_argerror(L, 2, lua_pushfstring(L, "database from 0 to %d expected, got %I", TQ_MOM_INNER_DB, db));
  }
  return static_cast<int>(db);
}

const char* CheckText(lua_State* L, int index, const char* what) {
  if (lua_type(L, index) != LUA_TSTRING) RaiseArgument(L, index, what);
  std::size_t length;
  const char* text = lua_tolstring(L, index, &length);
  if (std::strlen(text) != length) luaL_argerror(L, index, lua_pushfstring(L, "%s without NUL expected", what));
  return text;
}

void CheckStatus(lua_State* L, tq_global_t* g, const char* function, int status) {
  if (status < 0) luaL_error(L, "tq_kit.%s: %s", function, tq_kit_last_error(g));
}

namespace {

using binding::CastEntry;
using binding::ClassRecord;
using binding::Method;
using binding::TypeDescriptor;

int Freeze(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  CheckStatus(L, g, "freeze", tq_kit_freeze(g));
  return 0;
}

// tq_kit.advance(g, milliseconds)
int Advance(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int is_integer;
  lua_Integer milliseconds = lua_tointegerx(L, 2, &is_integer);
  if (!is_integer || milliseconds < 0) RaiseArgument(L, 2, "whole milliseconds, 0 or more,");
  CheckStatus(L, g, "advance", tq_kit_advance(g, milliseconds));
  return 0;
}

int Thaw(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  CheckStatus(L, g, "thaw", tq_kit_thaw(g));
  return 0;
}

// tq_kit.read_only(g, db, on)
int ReadOnly(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  if (lua_type(L, 3) != LUA_TBOOLEAN) RaiseArgument(L, 3, "boolean");
  CheckStatus(L, g, "read_only", tq_kit_read_only(g, db, lua_toboolean(L, 3)));
  return 0;
}

// tq_kit.clear(g, db) -> how many keys there were
int Clear(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  int count = tq_kit_clear(g, db);
  CheckStatus(L, g, "clear", count);
  lua_pushinteger(L, count);
  return 1;
}

// tq_kit.inspect(g, db, key) -> kind, milliseconds; nil without the key, no milliseconds without an expiry
int Inspect(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  const char* key = CheckText(L, 3, "key");
  tq_kit_kind_t kind;
  std::int64_t remaining;
  CheckStatus(L, g, "inspect", tq_kit_inspect(g, db, key, &kind, &remaining));
  lua_pushstring(L, kKindNames[kind]);
  if (kind == TQ_KIT_NONE || remaining == TQ_KIT_NEVER) return 1;
  lua_pushinteger(L, remaining);
  return 2;
}

// tq_kit.poll(g [, seconds]) -> how many times subscribers were called
int Poll(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  double seconds = 0;
  if (!lua_isnoneornil(L, 2)) {
    if (lua_type(L, 2) != LUA_TNUMBER || !(lua_tonumber(L, 2) >= 0)) RaiseArgument(L, 2, "seconds, 0 or more,");
    seconds = lua_tonumber(L, 2);
  }
  constexpr double kLongest = INT_MAX / 1000;
  int calls = tq_kit_poll(g, static_cast<std::int64_t>((seconds < kLongest ? seconds : kLongest) * 1000));
  CheckStatus(L, g, "poll", calls);
  lua_pushinteger(L, calls);
  return 1;
}

// tq_kit.last_error(g) -> text, or nil when the last call on the runtime did not fail
int LastError(lua_State* L) {
  const char* text = tq_kit_last_error(CheckRuntime(L));
  if (*text == '\0') {
    lua_pushnil(L);
  } else {
    lua_pushstring(L, text);
  }
  return 1;
}

// address(value) -> the native address that a handle holds, nil for any other value
int Address(lua_State* L) {
  if (void* pointer = binding::UntypedPointerAt(L, 1)) {
    lua_pushfstring(L, "%p", pointer);
  } else {
    lua_pushnil(L);
  }
  return 1;
}

constexpr Method kFunctions[] = {{"freeze", Freeze},       {"advance", Advance},
                                 {"thaw", Thaw},           {"read_only", ReadOnly},
                                 {"clear", Clear},         {"inspect", Inspect},
                                 {"poll", Poll},           {"last_error", LastError},
                                 {"subscribe", Subscribe}, {}};
ClassRecord* classes[] = {&subscription_class, nullptr};
constexpr binding::NamespaceRecord kModule = {"tq_kit",
                                              kFunctions,
                                              binding::kNone<binding::Attribute>,
                                              binding::kNone<binding::Constant>,
                                              classes,
                                              binding::kNone<const binding::NamespaceRecord*>};

// Functions for the part that is written in Lua.
constexpr luaL_Reg kNatives[] = {
    {"make_dump", MakeDump}, {"make_load", MakeLoad}, {"address", Address}, {nullptr, nullptr}};

TypeDescriptor global_type = {
    "_p_tq_global_s", "struct tq_global_s *|tq_global_s *|tq_global_t *", nullptr, nullptr, nullptr, 0};
TypeDescriptor subscription_type = {
    "_p_tq_kit_subscription", "tq_kit_subscription *", nullptr, nullptr, &subscription_class, 0};
TypeDescriptor message_type = companions::kMessageType;
CastEntry global_casts[] = {{&global_type, nullptr, nullptr, nullptr}, {}};
CastEntry subscription_casts[] = {{&subscription_type, nullptr, nullptr, nullptr}, {}};
CastEntry message_casts[] = {{&message_type, nullptr, nullptr, nullptr}, {}};
TypeDescriptor* own_types[] = {&global_type, &subscription_type, &message_type, nullptr};
CastEntry* own_casts[] = {global_casts, subscription_casts, message_casts, nullptr};
binding::ModuleRecord module_record = {type_table, kTypeCount, nullptr, own_types, own_casts, nullptr};

}  // namespace

TypeDescriptor* type_table[kTypeCount + 1];

}  // namespace tq_kit

extern "C" [[gnu::visibility("default")]] int luaopen_tq_kit(lua_State* L) {
  constexpr int kWrittenInLua = 4;
  binding::OpenModule(L, {.types = &tq_kit::module_record,
                          .record = &tq_kit::kModule,
                          .source = "tq_kit_wrap",
                          .more_fields = kWrittenInLua});
  if (luaL_loadbuffer(L, kChunk, sizeof(kChunk) - 1, "=tq_kit.lua") != LUA_OK) return lua_error(L);
  lua_pushvalue(L, -2);
  luaL_newlib(L, tq_kit::kNatives);
  lua_call(L, 2, 0);
  return 1;
}

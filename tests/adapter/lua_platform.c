/* The Lua module `platform`: the platform's records for tests that play its client library. Addresses are integers. */
#include <lauxlib.h>
#include <lua.h>

#include "record.h"

static record* CheckRecord(lua_State* L) {
  void* pointer = (void*)(uintptr_t)luaL_checkinteger(L, 1);
  return record_is_known(pointer) ? pointer : NULL;
}

static void Put(lua_State* L, record* r, record_kind kind, int index) {
  size_t length;
  const char* bytes = luaL_checklstring(L, index, &length);
  if (record_put(r, kind, 0, bytes, length) != 0) luaL_error(L, "no memory for a record");
}

static void PushPart(lua_State* L, const record* r, record_kind kind) {
  const record_part* part = record_find(r, kind, 0);
  if (part != NULL) {
    lua_pushlstring(L, part->bytes, part->length);
  } else {
    lua_pushnil(L);
  }
}

/* new(key, value) -> address */
static int New(lua_State* L) {
  record* r = record_new();
  if (r == NULL) return luaL_error(L, "no memory for a record");
  Put(L, r, RECORD_KEY, 1);
  Put(L, r, RECORD_VALUE, 2);
  lua_pushinteger(L, (lua_Integer)(uintptr_t)r);
  return 1;
}

/* read(address) -> key, value; nothing when there is no record */
static int Read(lua_State* L) {
  const record* r = CheckRecord(L);
  if (r == NULL) return 0;
  PushPart(L, r, RECORD_KEY);
  PushPart(L, r, RECORD_VALUE);
  return 2;
}

/* release(address) -> whether there was a record */
static int Release(lua_State* L) {
  record* r = CheckRecord(L);
  if (r != NULL) record_release(r);
  lua_pushboolean(L, r != NULL);
  return 1;
}

static int Count(lua_State* L) {
  lua_pushinteger(L, (lua_Integer)record_count());
  return 1;
}

int luaopen_platform(lua_State* L) {
  static const luaL_Reg kFunctions[] = {
      {"new", New}, {"read", Read}, {"release", Release}, {"count", Count}, {NULL, NULL}};
  luaL_newlib(L, kFunctions);
  return 1;
}

/* kit_probe: what the tests of the host kit need and no script can do. The client library must be loaded before it. */
#include <errno.h>
#include <lauxlib.h>
#include <lua.h>
#include <pthread.h>
#include <stdlib.h>
#include <time.h>
#include <tq_kit/live.h>
#include <tq_kit/subscribe.h>

/* The third word of a handle. */
static void* PointerAt(lua_State* L, int index) {
  luaL_checktype(L, index, LUA_TUSERDATA);
  luaL_argcheck(L, lua_rawlen(L, index) >= 3 * sizeof(void*), index, "handle expected");
  return ((void**)lua_touserdata(L, index))[2];
}

/* live() -> results, objects: how many of the library's have not been released. */
static int Live(lua_State* L) {
  lua_pushinteger(L, (lua_Integer)tq_kit_live_results());
  lua_pushinteger(L, (lua_Integer)tq_kit_live_objects());
  return 2;
}

/* sleep(milliseconds) */
static int Sleep(lua_State* L) {
  lua_Integer milliseconds = luaL_checkinteger(L, 1);
  struct timespec left = {(time_t)(milliseconds / 1000), (long)(milliseconds % 1000) * 1000000};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
  return 0;
}

static void* Run(void* L) {
  lua_pushboolean(L, lua_pcall(L, 0, 0, 0) == LUA_OK);
  lua_insert(L, 1);
  return NULL;
}

/* on_thread(function) -> whether it succeeded [, error]: runs the function on a native thread of its own. */
static int OnThread(lua_State* L) {
  pthread_t thread;
  luaL_checktype(L, 1, LUA_TFUNCTION);
  lua_settop(L, 1);
  if (pthread_create(&thread, NULL, Run, L) != 0) return luaL_error(L, "no thread");
  pthread_join(thread, NULL);
  return lua_gettop(L);
}

/* publish_at_brim(g, object) -> result: publishes in database 0, with no room left on the Lua stack. */
static int PublishAtBrim(lua_State* L) {
  tq_global_t* g = PointerAt(L, 1);
  void* object = PointerAt(L, 2);
  lua_settop(L, 2);
  while (lua_gettop(L) < 2 + LUA_MINSTACK) lua_pushnil(L);
  int result = tq_mom_publish_sync(g, 0, object);
  lua_settop(L, 0);
  lua_pushinteger(L, result);
  return 1;
}

typedef struct {
  lua_State* L;
  int function;
  int record;
} Subscriber;

/* Copies the message into the script's record and calls the script's function with it. */
static void Deliver(tq_global_t* g, const tq_mom_pubsub_msg_t* message, void* context) {
  const Subscriber* subscriber = context;
  lua_State* L = subscriber->L;
  (void)g;
  luaL_checkstack(L, 4, NULL);
  lua_rawgeti(L, LUA_REGISTRYINDEX, subscriber->function);
  lua_rawgeti(L, LUA_REGISTRYINDEX, subscriber->record);
  *(tq_mom_pubsub_msg_t*)PointerAt(L, -1) = *message;
  lua_call(L, 1, 0);
}

/* subscribe(g, db, pattern, record, function) -> number, subscription */
static int Subscribe(lua_State* L) {
  tq_global_t* g = PointerAt(L, 1);
  int db = (int)luaL_checkinteger(L, 2);
  const char* pattern = luaL_checkstring(L, 3);
  PointerAt(L, 4);
  luaL_checktype(L, 5, LUA_TFUNCTION);
  lua_settop(L, 5);
  Subscriber* subscriber = lua_newuserdata(L, sizeof(*subscriber));
  lua_replace(L, 1);
  subscriber->L = L;
  subscriber->function = luaL_ref(L, LUA_REGISTRYINDEX);
  subscriber->record = luaL_ref(L, LUA_REGISTRYINDEX);
  lua_pushinteger(L, tq_kit_subscribe(g, db, pattern, Deliver, subscriber));
  lua_pushvalue(L, 1);
  return 2;
}

/* unsubscribe(g, number, subscription) -> status */
static int Unsubscribe(lua_State* L) {
  const Subscriber* subscriber = lua_touserdata(L, 3);
  lua_pushinteger(L, tq_kit_unsubscribe(PointerAt(L, 1), (int)luaL_checkinteger(L, 2)));
  if (subscriber != NULL) {
    luaL_unref(L, LUA_REGISTRYINDEX, subscriber->function);
    luaL_unref(L, LUA_REGISTRYINDEX, subscriber->record);
  }
  return 1;
}

__attribute__((visibility("default"))) int luaopen_kit_probe(lua_State* L) {
  static const luaL_Reg kFunctions[] = {{"live", Live},
                                        {"sleep", Sleep},
                                        {"on_thread", OnThread},
                                        {"publish_at_brim", PublishAtBrim},
                                        {"subscribe", Subscribe},
                                        {"unsubscribe", Unsubscribe},
                                        {NULL, NULL}};
  luaL_newlib(L, kFunctions);
  return 1;
}

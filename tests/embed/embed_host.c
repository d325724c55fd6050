/* A program that embeds Lua and the module, with a client library of its own: a store of one counter. Built twice, with
 * Lua as a C library (errors are long jumps, and no C++ runtime is in the process) and as a C++ library (errors are C++
 * exceptions, which pass through the module and through this client library). */
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <lauxlib.h>
#include <link.h>
#include <lua.h>
#include <lualib.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tq_mom/tq_mom.h>

/* The client library. The functions that are not here come from the stub. */

#define EXPORTED __attribute__((visibility("default")))

static struct tq_thread_master master;
static tq_global_t runtime = {NULL, &master};
static char runtime_name[32];
static int scans_finished;
static long long counter;
static int results_out;
/* Value objects are opaque to the module, so any address does. */
static int counter_object;

EXPORTED tq_global_t* tq_global_init(const char* name, tq_global_t* g) {
  (void)g;
  snprintf(runtime_name, sizeof runtime_name, "%s", name != NULL ? name : "");
  return strcmp(runtime_name, "refused") == 0 ? NULL : &runtime;
}

EXPORTED struct tq_thread_master* tq_global_get_master(tq_global_t* g) { return g != NULL ? g->master : NULL; }

EXPORTED tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code) {
  (void)key;
  *error_code = g == &runtime && db == TQ_MOM_APP_DB ? TQ_MOM_OK : TQ_MOM_INPUT_ERR;
  return *error_code == TQ_MOM_OK ? (tq_obj*)&counter_object : NULL;
}

EXPORTED tq_mom_incr_res_t* tq_mom_incr_sync(tq_global_t* g, int db, tq_obj* key) {
  tq_mom_incr_res_t* result = calloc(1, sizeof *result);
  if (result == NULL) return NULL;
  results_out++;
  if (g == &runtime && db == TQ_MOM_APP_DB && key == (tq_obj*)&counter_object) {
    result->value = ++counter;
  } else {
    result->error_code = TQ_MOM_INPUT_ERR;
  }
  return result;
}

EXPORTED int tq_mom_incr_res_free(tq_mom_incr_res_t* result) {
  results_out--;
  free(result);
  return TQ_MOM_OK;
}

EXPORTED int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  (void)g;
  (void)db;
  (void)key;
  int sum = 0;
  for (int i = 0; i < field_count; i++) sum += fields[i];
  return sum;
}

EXPORTED int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback,
                              void* context) {
  (void)db;
  (void)key;
  int stopped = 0;
  for (unsigned int i = 0; i < count && stopped == 0; i++) {
    char name[16];
    snprintf(name, sizeof name, "key%u", i);
    tq_mom_scan_all_msg_t message = {(int)i, name, NULL};
    stopped = callback(g, &message, context);
  }
  scans_finished++;
  return stopped;
}

/* The host. */

static int ScansFinished(lua_State* L) {
  lua_pushinteger(L, scans_finished);
  return 1;
}

static const char script[] =
    "local m = require 'tq_mom_sync'\n"
    "local function fails(text, f, ...)\n"
    "  local ok, message = pcall(f, ...)\n"
    "  assert(not ok, 'no error')\n"
    "  assert(string.find(message, text, 1, true), message)\n"
    "end\n"
    "assert(m.tq_global_init('refused', nil) == nil)\n"
    "local g = m.tq_global_init('embedded', nil)\n"
    "assert(swig_type(g) == 'struct tq_global_s *|tq_global_s *|tq_global_t *')\n"
    "m.tq_global_get_master(g).max_fd = 12\n"
    "assert(g.master.max_fd == 12)\n"
    "local key, code = m.get(g, m.TQ_MOM_APP_DB, nil)\n"
    "assert(code == 0 and swig_type(key) == 'tq_obj *')\n"
    "assert(select(2, m.get(g, m.TQ_MOM_CFG_DB, nil)) == m.TQ_MOM_INPUT_ERR)\n"
    "for i = 1, 3 do\n"
    "  local result = m.incr(g, m.TQ_MOM_APP_DB, key)\n"
    "  assert(result.value == i and result.error_code == 0)\n"
    "  assert(m.incr_res_free(result) == 0)\n"
    "end\n"
    "assert(m.hmset(g, 0, key, {1, 2, 39}) == 42)\n"
    /* Errors at each depth: in a command, in a conversion, with an array in hand, in a member, in a constructor. */
    "for round = 1, 200 do\n"
    "  fails(\"expected 3..3 args, got 1\", m.get, g)\n"
    "  fails(\"(arg 1), expected 'tq_global_t *' got 'table'\", m.get, {}, 0, nil)\n"
    "  fails(\"Error in get (arg 1), expected\", m.get, m.get_op_t(), 0, nil)\n"
    "  fails('number must not be negative', m.scan, g, 0, key, -1, nil, nil)\n"
    "  fails('input error, errcode_3', m.hmset, g, 0, key, {1, 2, 'x'})\n"
    "  fails('Error in tq_mom_get_op_s::flag (arg 2)', function() m.get_op_t().flag = {} end)\n"
    "  fails('Assignment not possible', function() g.nothing = 1 end)\n"
    "  fails('expected 0..0 args, got 1', m.get_op_t, 1)\n"
    "end\n"
    /* The callback, its result, and its errors. */
    "local seen = {}\n"
    "local stop = m.scan(g, 0, key, 5, function(g2, message, arg)\n"
    "  assert(g2 == g)\n"
    "  seen[#seen + 1] = m.convertPtrToScanAllMsg(message).key\n"
    "  return #seen == arg and 7 or nil\n"
    "end, 3)\n"
    "assert(stop == 7 and table.concat(seen, ' ') == 'key0 key1 key2')\n"
    "assert(scans_finished() == 1)\n"
    "local function scan(callback) return m.scan(g, 0, key, 3, callback, nil) end\n"
    "fails('from the callback', scan, function() error 'from the callback' end)\n"
    "local object = {}\n"
    "assert(select(2, pcall(scan, function() error(object) end)) == object)\n"
    "fails('expected 3..3 args, got 0', scan, function() m.set() end)\n"
    "fails('nested', scan, function() scan(function() error 'nested' end) end)\n"
    "fails('attempt to yield', coroutine.wrap(function() scan(coroutine.yield) end))\n"
    "fails('in a coroutine', coroutine.wrap(function() scan(function() error 'in a coroutine' end) end))\n"
    "local caught\n"
    "scan(function() caught = caught or select(2, pcall(error, 'caught inside')) end)\n"
    "assert(caught == 'caught inside' and scans_finished() == 2)\n"
    "collectgarbage()\n"
    "local last = m.incr(g, m.TQ_MOM_APP_DB, key)\n"
    "local value = last.value\n"
    "m.incr_res_free(last)\n"
    "return value\n";

static int FindCxxRuntime(struct dl_phdr_info* info, size_t size, void* found) {
  (void)size;
  if (strstr(info->dlpi_name, "libstdc++") != NULL) *(int*)found = 1;
  return 0;
}

static int Check(int condition, const char* what) {
  if (!condition) fprintf(stderr, "failed: %s\n", what);
  return condition ? 0 : 1;
}

int main(void) {
  int failures = 0;
  lua_State* L = luaL_newstate();
  if (L == NULL) return EXIT_FAILURE;
  luaL_openlibs(L);
  lua_register(L, "scans_finished", ScansFinished);
  if (luaL_dostring(L, script) != LUA_OK) {
    fprintf(stderr, "failed: %s\n", lua_tostring(L, -1));
    failures++;
  } else {
    failures += Check(lua_tonumber(L, -1) == 4, "the last increment gives 4");
  }
  lua_settop(L, 0);
  failures += Check(strcmp(runtime_name, "embedded") == 0, "the runtime got its name");
  failures += Check(counter == 4, "the counter is 4");
  failures += Check(results_out == 0, "the script gave all results back");

  /* An error that no script catches reaches the host's own protected call. */
  int failed = luaL_dostring(L,
                             "local m = tq_mom_sync\n"
                             "m.scan(m.tq_global_init(nil, nil), 0, nil, 1, function() m.del('short') end, nil)");
  failures += Check(failed, "the error reaches the host");
  failures += Check(lua_gettop(L) == 1 && strcmp(lua_tostring(L, -1),
                                                 "[string \"local m = tq_mom_sync...\"]:2: Error in tq_mom_del_sync "
                                                 "expected 3..3 args, got 1") == 0,
                    "the host sees the message");
  int cxx_runtime = 0;
  dl_iterate_phdr(FindCxxRuntime, &cxx_runtime);
#if defined(EXPECT_CXX_RUNTIME)
  failures += Check(cxx_runtime == EXPECT_CXX_RUNTIME, "the C++ runtime is in the process only if Lua needs it");
#endif
  lua_close(L);
  if (failures == 0) puts("ok");
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

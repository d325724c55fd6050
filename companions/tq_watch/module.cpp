// The Lua module tq_watch: tells of a script's calls of the client library, and makes them fail or wait.
#include <cstdio>
#include <cstring>

#include "binding/handles.h"
#include "binding/startup.h"
#include "companions/tq_watch/arguments.h"
#include "companions/tq_watch/each_call.h"
#include "companions/tq_watch/faults.h"
#include "companions/tq_watch/position.h"
#include "companions/tq_watch/tables.h"
#include "watch/control.h"

namespace tq_watch {
namespace {

// An interpreter that controls the library, from opening the module to closing the interpreter. The last one that
// opened it is in control.
struct Controller {
  PositionFinder positions;
  lua_State* teller;  // runs the function of trace, which is the only value on its stack
};

Controller* controller;
const char controller_key = 0;  // of a registry entry

bool FindPosition(void* context, char* source, std::size_t size, int* line) {
  return static_cast<const Controller*>(context)->positions.Find(source, size, line);
}

// A registry entry's collector: the interpreter is closed.
int LoseControl(lua_State* L) {
  if (lua_touserdata(L, 1) != controller) return 0;
  controller = nullptr;
  tq_watch_trace(nullptr, nullptr);
  tq_watch_take_control(nullptr, nullptr);
  return 0;
}

void TakeControl(lua_State* L) {
  lua_createtable(L, 1, 0);
  lua_State* teller = lua_newthread(L);
  lua_rawseti(L, -2, 1);
  lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_MAINTHREAD);
  lua_State* main = lua_tothread(L, -1);
  lua_pop(L, 1);
  auto* made = static_cast<Controller*>(lua_newuserdata(L, sizeof(Controller)));
  *made = {PositionFinder(L, main), teller};
  lua_insert(L, -2);
  lua_setuservalue(L, -2);
  lua_createtable(L, 0, 1);
  lua_pushcfunction(L, LoseControl);
  lua_setfield(L, -2, "__gc");
  lua_setmetatable(L, -2);
  lua_rawsetp(L, LUA_REGISTRYINDEX, &controller_key);
  controller = made;
  tq_watch_take_control(FindPosition, made);
}

void PushArgument(lua_State* L, const Call& call, int parameter) {
  const Value& value = call.arguments[parameter];
  switch (call.function->parameters[parameter]) {
    case Kind::kInteger: return lua_pushinteger(L, value.integer);
    case Kind::kUnsigned: return lua_pushinteger(L, static_cast<lua_Integer>(value.unsigned_integer));
    case Kind::kNumber: return lua_pushnumber(L, value.number);
    default: lua_pushstring(L, tq_watch_argument(&call, parameter));
  }
}

// Calls the script's function with a table about the call. Arguments: the function; the call, its line and its result
// as light userdata.
int TellScript(lua_State* L) {
  const auto& call = *static_cast<const Call*>(lua_touserdata(L, 2));
  const auto* line = static_cast<const char*>(lua_touserdata(L, 3));
  const auto* result = static_cast<const char*>(lua_touserdata(L, 4));
  const Function& function = *call.function;
  lua_settop(L, 1);
  lua_createtable(L, 0, 16);
  SetString(L, "call", function.name);
  SetString(L, "text", line);
  if (call.database >= 0) SetInteger(L, "db", call.database);
  if (call.key != nullptr) {
    lua_pushlstring(L, call.key, call.key_length);
    lua_setfield(L, -2, "key");
  }
  lua_createtable(L, function.parameter_count, 0);
  lua_Integer count = 0;
  for (int i = 0; i < function.parameter_count; ++i) {
    if (tq_watch_argument(&call, i) == nullptr) continue;
    if (function.parameters[i] == Kind::kRuntime || function.parameters[i] == Kind::kDatabase) continue;
    PushArgument(L, call, i);
    lua_rawseti(L, -2, ++count);
  }
  lua_setfield(L, -2, "arguments");
  if (function.result == ResultKind::kStatus && !call.left) {
    SetInteger(L, "result", call.result.integer);
  } else {
    SetString(L, "result", result);
  }
  SetInteger(L, "microseconds", call.microseconds);
  lua_pushnumber(L, call.time);
  lua_setfield(L, -2, "time");
  SetBoolean(L, "failed", call.failed);
  SetBoolean(L, "fault", call.faulted);
  SetPosition(L, call.position);
  lua_call(L, 1, 0);
  return 0;
}

int AddTraceback(lua_State* L) {
  luaL_traceback(L, L, luaL_tolstring(L, 1, nullptr), 1);
  return 1;
}

void Tell(void* context, const Call& call, const char* line, const char* result) {
  lua_State* L = static_cast<const Controller*>(context)->teller;
  lua_pushcfunction(L, AddTraceback);
  lua_pushcfunction(L, TellScript);
  lua_pushvalue(L, 1);
  lua_pushlightuserdata(L, const_cast<Call*>(&call));
  lua_pushlightuserdata(L, const_cast<char*>(line));
  lua_pushlightuserdata(L, const_cast<char*>(result));
  if (lua_pcall(L, 4, 0, 2) != LUA_OK) std::fprintf(stderr, "tq_watch.trace: %s\n", luaL_tolstring(L, -1, nullptr));
  lua_settop(L, 1);
}

// tq_watch.trace(function | file name | nil [, "json"])
int Trace(lua_State* L) {
  constexpr Argument kTarget = {1, "argument 1 of tq_watch.trace"};
  constexpr Argument kForm = {2, "argument 2 of tq_watch.trace"};
  bool to_function = lua_isfunction(L, 1);
  bool to_file = lua_type(L, 1) == LUA_TSTRING;
  if (!to_function && !to_file && !lua_isnoneornil(L, 1)) Reject(L, kTarget, "function, name of a file or nil");
  bool json = false;
  if (!lua_isnoneornil(L, 2)) {
    json = std::strcmp(CheckString(L, kForm, "\"json\" or nil"), "json") == 0;
    if (!json || !to_file) Reject(L, kForm, to_file ? "\"json\" or nil" : "nothing behind a function or nil");
  }
  tq_watch_trace(nullptr, nullptr);
  lua_settop(controller->teller, 0);
  if (to_function) {
    lua_pushvalue(L, 1);
    lua_xmove(L, controller->teller, 1);
    tq_watch_trace(Tell, controller);
  }
  int error = tq_watch_trace_to(to_file ? lua_tostring(L, 1) : "", json);
  if (error != 0) Raise(L, "tq_watch.trace: %s: %s", lua_tostring(L, 1), std::strerror(error));
  return 0;
}

// tq_watch.summary(): name -> {calls=, failures=, microseconds=}
int Summary(lua_State* L) {
  lua_newtable(L);
  for (int row = 0; const Function* function = tq_watch_function(row); ++row) {
    const Counts* counts = tq_watch_counts(row);
    if (counts->calls == 0) continue;
    lua_createtable(L, 0, 3);
    SetInteger(L, "calls", static_cast<lua_Integer>(counts->calls));
    SetInteger(L, "failures", static_cast<lua_Integer>(counts->failures));
    SetInteger(L, "microseconds", static_cast<lua_Integer>(counts->microseconds));
    lua_setfield(L, -2, function->name);
  }
  return 1;
}

int Reset(lua_State*) {
  tq_watch_reset();
  return 0;
}

void PushOwned(lua_State* L, const Owned& owned, std::int64_t now) {
  lua_createtable(L, 0, 8);
  SetString(L, "type", owned.function->owned->name);
  SetString(L, "call", owned.function->name);
  if (owned.key != nullptr) {
    lua_pushlstring(L, owned.key, owned.key_length);
    lua_setfield(L, -2, "key");
  }
  lua_pushnumber(L, static_cast<lua_Number>(now - owned.since) / 1e6);
  lua_setfield(L, -2, "age");
  SetPosition(L, owned.position);
}

// tq_watch.live(): a table for each result, object and runtime that is not released, the oldest first
int Live(lua_State* L) {
  lua_newtable(L);
  lua_Integer count = 0;
  std::int64_t now = tq_watch_now();
  for (const Owned* owned = tq_watch_oldest(); owned != nullptr; owned = owned->newer) {
    PushOwned(L, *owned, now);
    lua_rawseti(L, -2, ++count);
  }
  return 1;
}

// tq_watch.assert_released(): an error with a line for each that is not
int AssertReleased(lua_State* L) {
  if (tq_watch_oldest() == nullptr) return 0;
  luaL_Buffer lines;
  luaL_buffinit(L, &lines);
  for (const Owned* owned = tq_watch_oldest(); owned != nullptr; owned = owned->newer) {
    luaL_addstring(&lines, "\n\t");
    luaL_addstring(&lines, tq_watch_owned_line(owned));
  }
  luaL_pushresult(&lines);
  Raise(L, "not everything is released:%s", lua_tostring(L, -1));
}

// tq_watch.guard(boolean)
int Guard(lua_State* L) {
  tq_watch_set(Switch::kGuard, CheckBoolean(L, {1, "argument 1 of tq_watch.guard"}));
  return 0;
}

// tq_watch.start(): counts calls for summary, and notes what is not released for live. Opening the module does it.
int Start(lua_State*) {
  tq_watch_set(Switch::kCounts, true);
  tq_watch_set(Switch::kOwned, true);
  return 0;
}

// tq_watch.stop(): watches nothing, forgets everything
int Stop(lua_State*) {
  tq_watch_reset();
  tq_watch_trace(nullptr, nullptr);
  tq_watch_trace_to("", false);
  tq_watch_set(Switch::kCounts, false);
  tq_watch_set(Switch::kOwned, false);
  tq_watch_set(Switch::kGuard, false);
  return 0;
}

constexpr binding::Method kFunctions[] = {{"trace", Trace},
                                          {"summary", Summary},
                                          {"each_call", EachCall},
                                          {"live", Live},
                                          {"assert_released", AssertReleased},
                                          {"reset", Reset},
                                          {"guard", Guard},
                                          {"start", Start},
                                          {"stop", Stop},
                                          {}};

binding::ClassRecord* classes[] = {&fault_class, nullptr};

constexpr binding::NamespaceRecord kModule = {"tq_watch",
                                              kFunctions,
                                              binding::kNone<binding::Attribute>,
                                              binding::kNone<binding::Constant>,
                                              classes,
                                              binding::kNone<const binding::NamespaceRecord*>};

binding::TypeDescriptor* own_types[] = {&fault_type, nullptr};
binding::CastEntry* own_casts[] = {fault_casts, nullptr};
binding::ModuleRecord module_record = {type_table, 1, nullptr, own_types, own_casts, nullptr};

}  // namespace
}  // namespace tq_watch

extern "C" [[gnu::visibility("default")]] int luaopen_tq_watch(lua_State* L) {
  if (&tq_watch::tq_watch_problem == nullptr) {
    return luaL_error(
        L,
        "tq_watch: libtq_mom_watch.so is not loaded: put it before the client library, with LD_PRELOAD or "
        "scripts/lua --watch");
  }
  if (const char* problem = tq_watch::tq_watch_problem()) return luaL_error(L, "tq_watch: %s", problem);
  tq_watch::TakeControl(L);
  tq_watch::Start(L);
  binding::OpenModule(L, {.types = &tq_watch::module_record, .record = &tq_watch::kModule, .source = "tq_watch_wrap"});
  return 1;
}

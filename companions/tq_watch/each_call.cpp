#include "companions/tq_watch/each_call.h"

#include <tq_mom/constants.h>

#include <cstdint>
#include <cstring>

#include "companions/tq_watch/arguments.h"
#include "companions/tq_watch/faults.h"
#include "companions/tq_watch/tables.h"

namespace tq_watch {
namespace {

constexpr int kBody = 1;
constexpr int kOptions = 2;
constexpr int kReport = 3;

FaultPlan CheckOptions(lua_State* L) {
  FaultPlan plan = {};
  plan.call = "*";
  plan.database = -1;
  plan.times = 1;
  plan.fails = true;
  plan.status = TQ_MOM_NO_READY;
  if (lua_isnoneornil(L, kOptions)) return plan;
  if (!lua_istable(L, kOptions)) Reject(L, {kOptions, "argument 2 of tq_watch.each_call"}, "table with status or null");
  for (lua_pushnil(L); lua_next(L, kOptions) != 0; lua_pop(L, 1)) {
    const char* name = lua_type(L, -2) == LUA_TSTRING ? lua_tostring(L, -2) : "";
    if (std::strcmp(name, "status") == 0) {
      plan.status = static_cast<int>(
          CheckInteger(L, {-1, "field 'status' of tq_watch.each_call"}, INT32_MIN, INT32_MAX, "status code"));
    } else if (std::strcmp(name, "null") == 0) {
      plan.null = CheckBoolean(L, {-1, "field 'null' of tq_watch.each_call"});
    } else {
      Raise(L, "bad field '%s' of tq_watch.each_call: status or null expected", luaL_tolstring(L, -2, nullptr));
    }
  }
  return plan;
}

lua_Integer CountOwned() {
  lua_Integer count = 0;
  for (const Owned* owned = tq_watch_oldest(); owned != nullptr; owned = owned->newer) ++count;
  return count;
}

// Pushes one line about the run at the stack top.
void PushRunLine(lua_State* L) {
  int run = lua_gettop(L);
  lua_getfield(L, run, "where");
  const char* where = lua_tostring(L, -1);
  lua_getfield(L, run, "text");
  const char* text = lua_tostring(L, -1);
  bool failed = lua_getfield(L, run, "error") != LUA_TNIL;
  const char* error = luaL_tolstring(L, -1, nullptr);
  lua_getfield(L, run, "leaked");
  lua_pushfstring(L, "%s%s%s: %s", where != nullptr ? where : "", where != nullptr ? ": " : "", text,
                  failed ? error : "ok");
  if (lua_Integer leaked = lua_tointeger(L, -2); leaked > 0) {
    lua_pushfstring(L, "; %I not released", static_cast<LUAI_UACINT>(leaked));
    lua_concat(L, 2);
  }
  lua_replace(L, run + 1);
  lua_settop(L, run + 1);
}

int ReportToString(lua_State* L) {
  lua_settop(L, 1);
  lua_pushliteral(L, "");
  lua_Integer count = luaL_len(L, 1);
  for (lua_Integer i = 1; i <= count; ++i) {
    lua_geti(L, 1, i);
    PushRunLine(L);
    lua_remove(L, -2);
    lua_pushliteral(L, "\n");
    lua_concat(L, 3);
  }
  return 1;
}

// Pushes a run: what the fault changed, and the error at the stack top, if the body raised one.
void PushRun(lua_State* L, const Fault* fault, bool raised, lua_Integer leaked) {
  int error = lua_gettop(L);
  lua_createtable(L, 0, 6);
  Position position;
  const char* text = tq_watch_fault_call(fault, &position);
  if (text == nullptr) text = "";
  SetString(L, "text", text);
  lua_pushlstring(L, text, std::strcspn(text, "("));
  lua_setfield(L, -2, "call");
  SetPosition(L, position);
  SetInteger(L, "leaked", leaked);
  if (!raised) return;
  lua_pushvalue(L, error);
  lua_setfield(L, -2, "error");
}

}  // namespace

int EachCall(lua_State* L) {
  if (!lua_isfunction(L, kBody)) Reject(L, {kBody, "argument 1 of tq_watch.each_call"}, "function");
  FaultPlan plan = CheckOptions(L);
  lua_settop(L, kOptions);
  lua_newtable(L);
  lua_createtable(L, 0, 1);
  lua_pushcfunction(L, ReportToString);
  lua_setfield(L, -2, "__tostring");
  lua_setmetatable(L, kReport);
  lua_Integer errors = 0;
  for (;; ++plan.after, lua_settop(L, kReport)) {
    Fault* fault = PushFault(L, plan);
    lua_Integer live = CountOwned();
    lua_pushvalue(L, kBody);
    bool raised = lua_pcall(L, 0, 0, 0) != LUA_OK;
    tq_watch_remove_fault(fault);
    if (tq_watch_fault_hits(fault) == 0) {
      if (raised) return lua_error(L);  // the body's own
      break;
    }
    if (raised) ++errors;
    PushRun(L, fault, raised, CountOwned() - live);
    lua_rawseti(L, kReport, plan.after + 1);
  }
  lua_settop(L, kReport);
  SetInteger(L, "errors", errors);
  return 1;
}

}  // namespace tq_watch

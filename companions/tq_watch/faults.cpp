#include "companions/tq_watch/faults.h"

#include <fnmatch.h>
#include <tq_mom/constants.h>

#include <cstdint>
#include <cstring>

#include "binding/handles.h"
#include "companions/tq_watch/arguments.h"

namespace tq_watch {
namespace {

// The fields of a fault, each of which may be looked up once.
constexpr const char* kFaultFields[] = {"call", "db", "key", "after", "times", "status", "null", "delay", "after_call"};

// Pushes the field of the table at index 1; false if it is nil.
bool GetField(lua_State* L, const char* name) { return lua_getfield(L, 1, name) != LUA_TNIL; }

void CheckFieldNames(lua_State* L) {
  for (lua_pushnil(L); lua_next(L, 1) != 0; lua_pop(L, 1)) {
    bool known = false;
    for (const char* name : kFaultFields) {
      known = known || (lua_type(L, -2) == LUA_TSTRING && std::strcmp(lua_tostring(L, -2), name) == 0);
    }
    if (!known) {
      Raise(L,
            "bad field '%s' of tq_watch.fault: call, db, key, after, times, status, null, delay or after_call "
            "expected",
            luaL_tolstring(L, -2, nullptr));
    }
  }
}

// The first function that the pattern names, of those that return a pointer if asked for one; null: none.
const Function* FindFunction(const char* pattern, bool returns_pointer) {
  for (int row = 0; const Function* function = tq_watch_function(row); ++row) {
    if (returns_pointer && function->result != ResultKind::kPointer) continue;
    if (fnmatch(pattern, function->name, 0) == 0) return function;
  }
  return nullptr;
}

FaultPlan CheckFault(lua_State* L) {
  constexpr Argument kTable = {1, "argument 1 of tq_watch.fault"};
  if (!lua_istable(L, 1) || lua_gettop(L) != 1) Reject(L, kTable, "table of fields, and no more,");
  CheckFieldNames(L);
  FaultPlan plan = {};
  plan.database = -1;
  plan.times = -1;
  GetField(L, "call");
  plan.call = CheckString(L, {-1, "field 'call' of tq_watch.fault"}, "name or pattern of client functions");
  const Function* function = FindFunction(plan.call, false);
  if (function == nullptr) {
    Raise(L, "bad field 'call' of tq_watch.fault: name or pattern of client functions expected, got \"%s\"", plan.call);
  }
  if (GetField(L, "db")) {
    plan.database =
        static_cast<int>(CheckInteger(L, {-1, "field 'db' of tq_watch.fault"}, 0, INT32_MAX, "number of a database"));
  }
  if (GetField(L, "key")) {
    plan.key = CheckString(L, {-1, "field 'key' of tq_watch.fault"}, "pattern of keys");
    if (!tq_watch_reads_keys()) Raise(L, "bad field 'key' of tq_watch.fault: the client library does not tell keys");
  }
  if (GetField(L, "after")) {
    plan.after = CheckInteger(L, {-1, "field 'after' of tq_watch.fault"}, 0, INT64_MAX, "number of calls");
  }
  if (GetField(L, "times")) {
    plan.times = CheckInteger(L, {-1, "field 'times' of tq_watch.fault"}, 1, INT64_MAX, "number of calls from 1");
  }
  plan.status = TQ_MOM_ERR;
  if (GetField(L, "status")) {
    plan.fails = true;
    plan.status = static_cast<int>(
        CheckInteger(L, {-1, "field 'status' of tq_watch.fault"}, INT32_MIN, INT32_MAX, "status code"));
  }
  if (GetField(L, "null")) plan.null = CheckBoolean(L, {-1, "field 'null' of tq_watch.fault"});
  plan.fails = plan.fails || plan.null;
  if (GetField(L, "delay")) {
    plan.delay = static_cast<int>(
        CheckInteger(L, {-1, "field 'delay' of tq_watch.fault"}, 0, INT32_MAX, "number of milliseconds"));
  }
  if (!plan.fails && lua_isnil(L, -1)) Raise(L, "bad tq_watch.fault: status, null or delay expected, got none of them");
  if (GetField(L, "after_call")) plan.after_call = CheckBoolean(L, {-1, "field 'after_call' of tq_watch.fault"});
  if (plan.null && FindFunction(plan.call, true) == nullptr) {
    Raise(L, "bad field 'null' of tq_watch.fault: nil or false expected, as %s returns a number", function->name);
  }
  return plan;
}

// tq_watch.fault{call=, db=, key=, after=, times=, status=, null=, delay=, after_call=}
int NewFault(lua_State* L) {
  FaultPlan plan = CheckFault(L);
  PushFault(L, plan);
  return 1;
}

Fault* CheckFaultHandle(lua_State* L, const char* name) {
  void* fault;
  if (binding::ConvertPtr(L, 1, &fault, type_table[0], 0) != 0 || fault == nullptr) {
    Reject(L, {1, name}, "fault");
  }
  return static_cast<Fault*>(fault);
}

int Hits(lua_State* L) {
  lua_pushinteger(L, tq_watch_fault_hits(CheckFaultHandle(L, "argument 1 of fault:hits")));
  return 1;
}

int Remove(lua_State* L) {
  tq_watch_remove_fault(CheckFaultHandle(L, "argument 1 of fault:remove"));
  return 0;
}

void DropFault(void* fault) { tq_watch_drop_fault(static_cast<Fault*>(fault)); }

const char* no_base_names[] = {nullptr};
binding::ClassRecord* no_bases[] = {nullptr};

constexpr binding::Method kMethods[] = {{"hits", Hits}, {"remove", Remove}, {}};

constexpr binding::NamespaceRecord kStatics = {"fault",
                                               binding::kNone<binding::Method>,
                                               binding::kNone<binding::Attribute>,
                                               binding::kNone<binding::Constant>,
                                               binding::kNone<binding::ClassRecord*>,
                                               binding::kNone<const binding::NamespaceRecord*>};

}  // namespace

binding::ClassRecord fault_class = {"fault",
                                    "tq_watch.fault",
                                    &type_table[0],
                                    NewFault,
                                    DropFault,
                                    kMethods,
                                    binding::kNone<binding::Attribute>,
                                    &kStatics,
                                    binding::kNone<binding::Method>,
                                    no_bases,
                                    no_base_names};
binding::TypeDescriptor fault_type = {"_p_tq_watch_fault", "tq_watch_fault *", nullptr, nullptr, &fault_class, 0};
binding::CastEntry fault_casts[] = {{&fault_type, nullptr, nullptr, nullptr}, {}};
binding::TypeDescriptor* type_table[2];

Fault* PushFault(lua_State* L, const FaultPlan& plan) {
  binding::Handle* handle = binding::PushEmptyHandle(L, type_table[0]);
  Fault* fault = tq_watch_add_fault(&plan);
  if (fault == nullptr) Raise(L, "not enough memory");
  handle->pointer = fault;
  handle->own = 1;
  return fault;
}

}  // namespace tq_watch

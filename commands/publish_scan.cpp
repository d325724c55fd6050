#include "commands/publish_scan.h"

#include <cstdlib>

#include "binding/references.h"

namespace tq_mom {
namespace {

// What the client library hands back to the trampoline.
struct ScanContext {
  CallbackReference callback;
  CallbackReference argument;
};

// Calls the script's function for one element, in the frame of Scan and with its upvalues. Its errors unwind through
// the client library to the script.
int CallBack(tq_global_t* g, void* message, void* context) {
  if (context == nullptr) return 0;
  const auto* scan = static_cast<const ScanContext*>(context);
  lua_State* L = scan->callback.state;
  binding::PushClassTableOfClosure(L);
  int class_table = lua_gettop(L);
  swiglua_ref_get(&scan->callback);
  auto push = [&](void* pointer, TypeId type, int name_upvalue) {
    binding::PushClassHandle(L, pointer, Type(type), ClassName(type), class_table, name_upvalue);
  };
  push(g, kTypeOf<tq_global_t>, binding::kClassName);
  push(message, kTypeOf<tq_mom_pubsub_msg_t>, binding::kClassName + 1);
  swiglua_ref_get(&scan->argument);
  if (!lua_isfunction(L, class_table + 1)) {
    lua_remove(L, class_table);
    luaL_checkstack(L, 8, nullptr);  // the four values stay, and the next message needs room, too
    return 0;
  }
  lua_call(L, 3, 1);
  int stop = lua_isinteger(L, -1) ? static_cast<int>(lua_tointegerx(L, -1, nullptr)) : 0;
  lua_settop(L, class_table - 1);
  return stop;
}

// The callback and its argument take the places of the client function's last two.
constexpr int kCallback = 5;
constexpr int kUserArgument = 6;

}  // namespace

int InvokeScan(lua_State* L, const BoundCommand& bound) {
  if (lua_gettop(L) != bound.row.count) RejectCount(L, bound.row);
  Slot slots[kMaxParameters];
  ReadArguments(L, bound.row, slots);
  auto scan = [&](tq_mom_scan_cb callback, void* context) {
    return tq_mom_scan_sync(static_cast<tq_global_t*>(slots[0].pointer), slots[1].integer, slots[2].pointer,
                            slots[3].unsigned_integer, callback, context);
  };
  int status;
  if (lua_isfunction(L, kCallback)) {
    CallbackReference callback;
    CallbackReference argument;
    swiglua_ref_set(&callback, L, kCallback);
    swiglua_ref_set(&argument, L, kUserArgument);
    auto* context = static_cast<ScanContext*>(std::malloc(sizeof(ScanContext)));
    if (context == nullptr) {
      swiglua_ref_clear(&callback);
      swiglua_ref_clear(&argument);
      binding::RaiseBare(L, "memory error");
    }
    *context = {callback, argument};
    status = scan(CallBack, context);
    swiglua_ref_clear(&context->callback);
    swiglua_ref_clear(&context->argument);
    std::free(context);
  } else if (lua_isnil(L, kCallback)) {
    status = scan(nullptr, nullptr);
  } else {
    binding::RaiseBare(L, "input error: cb is not function");
  }
  binding::PushNumber(L, status);
  return 1;
}

}  // namespace tq_mom

#include "commands/command.h"

namespace tq_mom {
namespace {

// A command as messages name it.
Callee Describe(const CommandRow& command) {
  const char* name = CommandName(command);
  return {{command.client_name.prefix(), name, command.client_name.suffix(), nullptr},
          {name, nullptr},
          command.parameters,
          command.count,
          Spelling::kTypedef};
}

}  // namespace

void RejectCount(lua_State* L, const CommandRow& command) {
  binding::RaiseCountError(L, Describe(command).checks, command.count);
}

void Reject(lua_State* L, const CommandRow& command, int argument, const char* error, const Slot* slots) {
  FreeArrays(command, argument - 1, slots);
  RejectValue(L, Describe(command), error);
}

void* ConvertOther(lua_State* L, const CommandRow& command, int index) {
  return ConvertOther(L, Describe(command), index, command.parameters[index - 1].type());
}

// The device has no floating point, and Lua has its routines already.
timeval ToTimeout(lua_State* L, int index) {
  double seconds = lua_tonumber(L, index);
  int whole = binding::SaturateToInt(seconds);
  lua_pushnumber(L, seconds);
  binding::PushNumber(L, whole);
  lua_arith(L, LUA_OPSUB);
  lua_pushnumber(L, 1000000);
  lua_arith(L, LUA_OPMUL);
  timeval timeout;
  timeout.tv_sec = whole;
  timeout.tv_usec = binding::SaturateToInt(lua_tonumber(L, -1));
  lua_pop(L, 1);
  return timeout;
}

}  // namespace tq_mom

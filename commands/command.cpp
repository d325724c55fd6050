#include "commands/command.h"

namespace tq_mom {
namespace {

// A command's names as the shared checks take them.
struct Names {
  explicit Names(const Command& command)
      : client{command.names, nullptr}, lua{command.names + std::strlen(command.names) + 1, nullptr} {}

  binding::Piece client[2];
  binding::Piece lua[2];
};

Callee CalleeOf(const Command& command, const Names& names) {
  return {command.parameters, command.count, Spelling::kTypedef, names.client, names.lua};
}

}  // namespace

void Command::CheckKinds(lua_State* L) const {
  Names texts(*this);
  tq_mom::CheckKinds(L, CalleeOf(*this, texts));
}

void Command::RejectCount(lua_State* L) const {
  Names texts(*this);
  binding::RaiseCountError(L, texts.client, count);
}

void Command::Reject(lua_State* L, int argument, const char* error) const {
  Names texts(*this);
  RejectArgument(L, CalleeOf(*this, texts), argument, error);
}

bool TimeoutArgument::Read(lua_State* L, int index, const Command&) {
  double seconds = lua_tonumber(L, index);
  int whole = binding::SaturateToInt(seconds);
  value.tv_sec = whole;
  value.tv_usec = binding::SaturateToInt((seconds - whole) * 1000000.0);
  return true;
}

}  // namespace tq_mom

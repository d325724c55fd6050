#include "commands/command.h"

#include <cstdlib>

namespace tq_mom {
namespace {

// A command as messages name it.
struct Names {
  explicit Names(const Description& command)
      : client{ClientName::kPrefix + command.client_name.prefix_cut, command.name,
               ClientName::kSuffix + command.client_name.suffix_cut, nullptr},
        lua{command.name, nullptr},
        callee{command.parameters, command.count, Spelling::kTypedef, client, lua} {}

  binding::Piece client[4];
  binding::Piece lua[2];
  Callee callee;
};

}  // namespace

void CommandSite::CheckKinds(lua_State* L) const {
  Names names(*command);
  tq_mom::CheckKinds(L, names.callee);
}

void RejectCount(lua_State* L, const Description& command) {
  Names names(command);
  binding::RaiseCountError(L, names.client, command.count);
}

void Reject(lua_State* L, const Description& command, int argument, const char* error, const Slot* slots) {
  for (int i = 0; i < argument - 1; ++i, ++slots) {
    if (IsArray(command.parameters[i].kind)) std::free((slots++)->pointer);
  }
  Names names(command);
  RejectArgument(L, names.callee, argument, error);
}

timeval ToTimeout(double seconds) {
  int whole = binding::SaturateToInt(seconds);
  timeval timeout;
  timeout.tv_sec = whole;
  timeout.tv_usec = binding::SaturateToInt((seconds - whole) * 1000000.0);
  return timeout;
}

void ReadArguments(lua_State* L, const Description& command, Slot* slots) {
  Slot* slot = slots;
  for (int index = 1; index <= command.count; ++index, ++slot) {
    Kind kind = command.parameters[index - 1].kind;
    ReadArgument(L, command, index, kind, slots, slot);
    if (IsArray(kind)) ++slot;
  }
}

}  // namespace tq_mom

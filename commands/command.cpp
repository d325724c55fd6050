#include "commands/command.h"

#include <cstdlib>

#include "commands/arrays.h"

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
  Description converted = command;
  converted.count = static_cast<std::uint8_t>(argument - 1);
  ReleaseArrays(converted, slots);
  Names names(command);
  RejectArgument(L, names.callee, argument, error);
}

void ReleaseArrays(const Description& command, const Slot* slots) {
  const Slot* slot = slots;
  for (int i = 0; i < command.count; ++i, ++slot) {
    if (IsArray(command.parameters[i].kind)) std::free((slot++)->pointer);
  }
}

timeval ToTimeout(double seconds) {
  int whole = binding::SaturateToInt(seconds);
  timeval timeout;
  timeout.tv_sec = whole;
  timeout.tv_usec = binding::SaturateToInt((seconds - whole) * 1000000.0);
  return timeout;
}

const char* ReadArray(lua_State* L, int index, Kind kind, Slot* elements) {
  int* count = &elements[1].integer;
  if (kind == Kind::kIntegers) return BuildIntegers(L, index, &elements->pointer, count);
  if (kind == Kind::kScores) return BuildScores(L, index, &elements->pointer, count);
  return BuildMembers(L, index, &elements->pointer, count);
}

void ReadArguments(lua_State* L, const Description& command, Slot* slots) {
  if (lua_gettop(L) != command.count) RejectCount(L, command);
  Slot* slot = slots;
  for (int index = 1; index <= command.count; ++index, ++slot) {
    Kind kind = command.parameters[index - 1].kind;
    ReadArgument(L, command, index, kind, slots, slot);
    if (IsArray(kind)) ++slot;
  }
}

}  // namespace tq_mom

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

[[noreturn, gnu::cold]] void RejectCount(lua_State* L, const Description& command) {
  Names names(command);
  binding::RaiseCountError(L, names.client, command.count);
}

// The arrays among the slots before the one of the rejected argument are freed first.
[[noreturn, gnu::cold]] void Reject(lua_State* L, const Description& command, int argument, const char* error,
                                    const Slot* slots) {
  Description converted = command;
  converted.count = static_cast<std::uint8_t>(argument - 1);
  ReleaseArrays(converted, slots);
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

// Null, or the text of the error.
const char* ReadArray(lua_State* L, int index, Kind kind, Slot* elements, int* count) {
  if (kind == Kind::kIntegers) return BuildIntegers(L, index, &elements->pointer, count);
  if (kind == Kind::kScores) return BuildScores(L, index, &elements->pointer, count);
  return BuildMembers(L, index, &elements->pointer, count);
}

}  // namespace

void Description::CheckKinds(lua_State* L) const {
  Names names(*this);
  tq_mom::CheckKinds(L, names.callee);
}

void ReadArguments(lua_State* L, const Description& command, Slot* slots) {
  if (lua_gettop(L) != command.count) RejectCount(L, command);
  Slot* slot = slots;
  for (int index = 1; index <= command.count; ++index, ++slot) {
    const Parameter& parameter = command.parameters[index - 1];
    const char* error = nullptr;
    bool converted = true;
    switch (parameter.kind) {
      case Kind::kHandle:
        converted = Convert(L, index, &slot->pointer, parameter.type, command);
        break;
      case Kind::kKey:
        slot->pointer = binding::UntypedPointerAt(L, index);
        break;
      case Kind::kInt:
        converted = binding::ToInt(L, index, &slot->integer);
        break;
      case Kind::kUnsignedInt:
        converted = binding::ToUnsigned(L, index, &slot->unsigned_integer);
        break;
      case Kind::kSize: {
        std::uint32_t size;
        converted = binding::ToUnsigned(L, index, &size);
        slot->size = size;
        break;
      }
      case Kind::kDouble: {
        int is_number;
        slot->number = lua_tonumberx(L, index, &is_number);
        converted = is_number != 0;
        break;
      }
      case Kind::kTimeout:
        slot->timeout = ToTimeout(lua_tonumber(L, index));
        break;
      case Kind::kString:
        slot->string = lua_tostring(L, index);
        converted = slot->string != nullptr || lua_isnil(L, index);
        break;
      default:
        error = ReadArray(L, index, parameter.kind, &slot[0], &slot[1].integer);
        converted = error == nullptr;
        ++slot;
        break;
    }
    if (!converted) Reject(L, command, index, error, slots);
  }
}

void ReleaseArrays(const Description& command, const Slot* slots) {
  const Slot* slot = slots;
  for (int i = 0; i < command.count; ++i, ++slot) {
    if (IsArray(command.parameters[i].kind)) std::free((slot++)->pointer);
  }
}

}  // namespace tq_mom

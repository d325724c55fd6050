#include "commands/command.h"

namespace tq_mom {

Slot* ReadArguments(lua_State* L, const CommandRow& command, Slot* slots) {
  if (command.starts) ReadStart(L, command, slots);
  int start = command.starts ? kStartWords : 0;
  Slot* slot = slots + start;
  for (int index = start + 1; index <= command.count; ++index) {
    Parameter parameter = command.parameters[index - 1];
    slot = ReadArgument(L, command, index, parameter.kind(), parameter.type(), slots, slot);
  }
  return slot;
}

// GCOVR_EXCL_START: runs where code is short, so the tests of the arm preset go through it
int InvokeShort(lua_State* L, const BoundCommand& bound, Caller caller) {
  const CommandRow& command = bound.row;
  if (lua_gettop(L) != command.count) RejectCount(L, command);
  binding::Handle* handle = command.makes_handle ? PushResultHandle(L, command) : nullptr;
  Slot slots[2 * kMaxParameters + 1];
  int out = 0;
  ReadArguments(L, command, slots)->pointer = &out;
  Word result = caller(bound.client, slots);
  if (command.has_arrays) FreeArrays(command, command.count, slots);
  if (handle != nullptr) {
    FillResultHandle(L, handle, reinterpret_cast<void*>(result));
  } else {
    binding::PushNumber(L, static_cast<int>(result));
  }
  if (command.has_out) binding::PushNumber(L, out);
  return 1 + command.has_out;
}
// GCOVR_EXCL_STOP

}  // namespace tq_mom

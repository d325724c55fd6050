// Messages that Lua owns. Their class is that of tq_mom_sync.
#pragma once

#include <tq_mom/tq_mom.h>

#include "binding/abi.h"

namespace companions {

inline constexpr binding::TypeDescriptor kMessageType = {
    "_p_tq_mom_pubsub_msg_s",
    "struct tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *",
    nullptr,
    nullptr,
    nullptr,
    0};

// Pushes a handle that owns a message and the `room` bytes behind it: one block, all zero. Returns the message. Raises
// a Lua error without tq_mom_sync and without memory.
tq_mom_pubsub_msg_t* PushMessage(lua_State* L, binding::TypeDescriptor* type, std::size_t room);

inline char* RoomOf(tq_mom_pubsub_msg_t* message) { return reinterpret_cast<char*>(message + 1); }

}  // namespace companions

// The calls that run callbacks.
//
// No C++ object with a destructor, no lock and no handler is alive in a frame of ours while a callback runs: it may
// leave by longjmp or by an exception that is not ours (see CallbackFrame). The store takes no part in the delivery, so
// the callback can use it in any way.
#pragma once

#include <memory>
#include <utility>

#include "hostkit/command.h"

namespace hostkit {

// Puts a frame, filled by the body, into the runtime's care. body(Frame*) returns a Status. Returns a status code.
template <typename Frame, typename Body>
int EnterFrame(const Command& command, const void* stack, Frame** entered, Body body) noexcept {
  return command.Run([&] {
    auto frame = std::make_unique<Frame>();
    Status status = body(frame.get());
    if (status.ok()) {
      *entered = frame.get();
      command.client->Enter(std::move(frame), stack);
    }
    return command.client->Finish(std::move(status));
  });
}

}  // namespace hostkit

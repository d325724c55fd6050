// A way to one node: commands go out, answers come back.
#pragma once

#include <algorithm>
#include <chrono>
#include <span>
#include <string>
#include <vector>

#include "hostkit/server_command.h"
#include "hostkit/server_reply.h"
#include "hostkit/server_url.h"

namespace hostkit {

// The moment at which a call must be over.
class CallEnd {
 public:
  using Clock = std::chrono::steady_clock;

  explicit CallEnd(std::chrono::milliseconds limit) : at_(Clock::now() + limit) {}

  std::chrono::microseconds Left() const {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(at_ - Clock::now());
    return std::max(left, std::chrono::microseconds(0));
  }
  bool Passed() const { return Clock::now() >= at_; }
  // The end of a part that may take no longer than that.
  CallEnd Within(std::chrono::milliseconds limit) const {
    CallEnd part(limit);
    part.at_ = std::min(part.at_, at_);
    return part;
  }

 private:
  Clock::time_point at_;
};

enum class Delivery {
  kAnswered,    // there is an answer for each command
  kNotSent,     // no command has left in whole: none is carried out
  kUnanswered,  // the commands may have been carried out
  kRefused      // the node does not let us in: nothing was sent
};

class Link {
 public:
  virtual ~Link() = default;

  // Sends the commands one behind the other and waits for all answers, which are then in *replies. If it returns
  // anything but kAnswered, *why says the reason, and the next call opens the connection again.
  virtual Delivery Exchange(std::span<const ServerCommand* const> commands, const CallEnd& end,
                            std::vector<ReplyPtr>* replies, std::string* why) = 0;
};

}  // namespace hostkit

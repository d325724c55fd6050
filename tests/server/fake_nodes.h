// Nodes that answer what they are told to.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/server_router.h"

namespace hostkit {

// What a node does with the next exchange: it answers, or fails.
struct Turn {
  Delivery delivery = Delivery::kAnswered;
  std::string wire;  // the answers, one a command
};

class Nodes {
 public:
  // The node's next turns; the last one goes on for ever.
  void At(int port, std::vector<Turn> turns) { turns_[port] = std::move(turns); }
  std::vector<std::string>& log() { return log_; }
  // The same with all words of the commands.
  const std::vector<std::string>& whole_log() const { return whole_log_; }
  std::chrono::microseconds slept{0};

  Router::LinkMaker Maker() {
    return [this](const ServerAddress& node) { return std::make_unique<FakeLink>(this, node.port); };
  }
  Router::Sleeper Sleeper() {
    return [this](std::chrono::microseconds time) { slept += time; };
  }

 private:
  class FakeLink : public Link {
   public:
    FakeLink(Nodes* nodes, int port) : nodes_(*nodes), port_(port) {}

    Delivery Exchange(std::span<const ServerCommand* const> commands, const CallEnd& /*end*/,
                      std::vector<ReplyPtr>* replies, std::string* why) override {
      std::string line = std::to_string(port_);
      std::string whole = line;
      for (const ServerCommand* command : commands) {
        line += ' ' + std::string((*command)[0]);
        for (std::size_t word = 0; word < command->size(); ++word) whole += ' ' + std::string((*command)[word]);
      }
      nodes_.log_.push_back(line);
      nodes_.whole_log_.push_back(whole);
      replies->clear();
      std::vector<Turn>& turns = nodes_.turns_[port_];
      if (turns.empty()) {
        *why = "nobody there";
        return Delivery::kNotSent;
      }
      const Turn turn = turns.front();
      if (turns.size() > 1) turns.erase(turns.begin());
      *why = "the reason";
      if (turn.delivery != Delivery::kAnswered) return turn.delivery;
      redisReader* reader = redisReaderCreate();
      EXPECT_EQ(redisReaderFeed(reader, turn.wire.data(), turn.wire.size()), REDIS_OK);
      for (std::size_t index = 0; index < commands.size(); ++index) {
        void* reply = nullptr;
        EXPECT_EQ(redisReaderGetReply(reader, &reply), REDIS_OK);
        EXPECT_NE(reply, nullptr);
        replies->emplace_back(static_cast<redisReply*>(reply));
      }
      redisReaderFree(reader);
      return Delivery::kAnswered;
    }

   private:
    Nodes& nodes_;
    const int port_;
  };

  std::map<int, std::vector<Turn>> turns_;
  std::vector<std::string> log_;
  std::vector<std::string> whole_log_;
};

// Slots up to 8191 at one port, the others at another.
inline std::string Slots(int low, int high) {
  const auto half = [](const std::string& range, int port) {
    return "*3\r\n" + range + "*2\r\n$9\r\n127.0.0.1\r\n:" + std::to_string(port) + "\r\n";
  };
  return "*2\r\n" + half(":0\r\n:8191\r\n", low) + half(":8192\r\n:16383\r\n", high);
}

}  // namespace hostkit

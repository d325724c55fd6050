// Brings each command to the node that has its key, and again when that is right.
//
// A command that was not carried out is sent again as long as the call has time: to another node when the slots have
// moved, after a pause when the server asks for one. One whose answer was lost is sent again only if it reads.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/server_link.h"
#include "hostkit/server_slots.h"

namespace hostkit {

class Router {
 public:
  using LinkMaker = std::function<std::unique_ptr<Link>(const ServerAddress&)>;
  using Sleeper = std::function<void(std::chrono::microseconds)>;

  // The options must outlive the router.
  Router(const ServerOptions& options, LinkMaker make_link, Sleeper sleep);

  // Finds the server, or the cluster that one of its nodes belongs to.
  Status Connect(bool cluster, const CallEnd& end);
  bool is_cluster() const { return cluster_; }

  // Sends the command to the node that has its slot. *reply is no error.
  Status Run(ServerCommand* command, const CallEnd& end, ReplyPtr* reply);
  // Sends it to that node and no other.
  Status RunOn(const ServerAddress& node, ServerCommand* command, const CallEnd& end, ReplyPtr* reply);

  // Asks the cluster again who has which slots.
  Status Refresh(const CallEnd& end);
  // As last seen. A single server is a shard without slots.
  const std::vector<Shard>& shards() const { return cluster_ ? slots_.shards() : single_; }
  const SlotMap& slots() const { return slots_; }

 private:
  // What comes after an attempt.
  enum class Next {
    kReturn,  // status has the result
    kRepeat,  // another attempt at once
    kPause,   // another attempt after a while
    kRescue   // the same, but the node may be lost
  };

  struct Attempt {
    ServerAddress node;
    bool asking = false;  // the node is getting the slot, and must be told that we know
    Status status;        // of the attempt that is to be the last
    std::optional<ServerAddress> moved_to;
  };

  Next Try(ServerCommand* command, const CallEnd& end, Attempt* attempt, ReplyPtr* reply);
  Next Redirect(const ServerCommand& command, const redisReply& redirection, bool ask, Attempt* attempt);
  Link& LinkTo(const ServerAddress& node);
  void Pause(int attempts, const CallEnd& end);

  const ServerOptions& options_;
  const LinkMaker make_link_;
  const Sleeper sleep_;
  bool cluster_ = false;
  bool stale_ = false;  // the slots may have moved
  std::vector<Shard> single_;
  SlotMap slots_;
  std::map<ServerAddress, std::unique_ptr<Link>> links_;
  std::vector<ReplyPtr> replies_;  // kept for its memory
};

}  // namespace hostkit

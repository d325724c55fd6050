// The subscriptions of a runtime: a connection of their own on which messages arrive.
//
// In a cluster every message reaches every node. All runtimes subscribe and publish at one, the one that has slot 0, so
// that a publish can count whom it reaches.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/engine.h"
#include "hostkit/server_connection.h"
#include "hostkit/server_router.h"

namespace hostkit {

class ServerMessages {
 public:
  // The router and the options must outlive it.
  ServerMessages(Router* router, const ServerOptions& options) : router_(router), options_(options) {}

  Status Subscribe(const Request& pattern, const CallEnd& end);
  Status Unsubscribe(const Request& pattern, const CallEnd& end);
  // Also waits until what reaches this runtime itself has arrived.
  Status Publish(const Request& request, std::string_view message, const CallEnd& end, std::int64_t* receivers);
  // A connection that broke is opened again; what was published meanwhile is lost.
  Status Poll(const CallEnd& end, std::vector<Message>* messages);

 private:
  struct Subscription {
    int db;
    std::string pattern;
    std::string server_pattern;
  };

  // Where to subscribe and to publish.
  Status FindNode(ServerAddress* node) const;
  bool IsOpen() const { return connection_ != nullptr && connection_->is_open(); }
  std::string ChannelBeginning(int db) const { return options_.prefix + std::to_string(db) + ':'; }
  bool IsSubscribed(const std::string& server_pattern) const;
  // Opens the connection and tells the server all subscriptions, if that is not done.
  Status Open(const CallEnd& end);
  Status Tell(std::string_view verb, const std::string& server_pattern, const CallEnd& end);
  // Reads what arrives until `until` returns true; false at the end of the time.
  template <typename Until> Status ReadUntil(const CallEnd& end, Until until, bool* reached);
  void TakeMessage(const redisReply& reply);

  Router* const router_;
  const ServerOptions& options_;
  std::vector<Subscription> subscriptions_;
  std::unique_ptr<Connection> connection_;
  std::deque<Message> arrived_;
};

}  // namespace hostkit

// A connection to a server, which hiredis speaks the protocol for.
#pragma once

#include <hiredis/hiredis.h>

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "hostkit/server_link.h"

namespace hostkit {

class Connection : public Link {
 public:
  // The options must outlive the connection, which is opened when it is first used.
  Connection(ServerAddress address, const ServerOptions& options);

  Delivery Exchange(std::span<const ServerCommand* const> commands, const CallEnd& end, std::vector<ReplyPtr>* replies,
                    std::string* why) override;

  const ServerAddress& address() const { return address_; }
  bool is_open() const { return context_ != nullptr; }
  void Close() { context_.reset(); }

  // The parts of an exchange, for a connection on which messages arrive.

  // kAnswered: it is open.
  Delivery Open(const CallEnd& end, std::string* why);
  // kAnswered: all has left.
  Delivery Send(std::span<const ServerCommand* const> commands, const CallEnd& end, std::string* why);
  // Something has arrived, or the other side has closed.
  bool HasInput() const;
  // The next answer or message, none if none comes in time. False, with the reason, if the connection is broken; it is
  // then closed.
  bool Receive(const CallEnd& end, ReplyPtr* reply, std::string* why);

 private:
  struct ContextDeleter {
    void operator()(redisContext* context) const { redisFree(context); }
  };

  // Appends the command, as the protocol has it, to what is sent next.
  void AddToWire(const ServerCommand& command);
  // Makes the socket's calls end in time; false if that is past.
  bool ArmTimeout(const CallEnd& end);
  std::string Reason(std::string_view what) const;

  const ServerAddress address_;
  const ServerOptions& options_;
  std::unique_ptr<redisContext, ContextDeleter> context_;
  std::chrono::microseconds socket_timeout_{0};
  // Kept for their memory.
  std::vector<const char*> words_;
  std::vector<std::size_t> lengths_;
  std::string wire_;
};

}  // namespace hostkit

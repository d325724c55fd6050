#include "hostkit/server_connection.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace hostkit {
namespace {

using std::chrono::microseconds;

// How late a call may be over, so that not every call must tell the socket.
constexpr microseconds kSlack{20000};

// Memory for more is given back after use.
constexpr std::size_t kKeptWire = 1 << 16;

struct FormattedDeleter {
  void operator()(char* formatted) const { redisFreeCommand(formatted); }
};

timeval ToTimeval(microseconds time) {
  return {static_cast<time_t>(time.count() / 1000000), static_cast<suseconds_t>(time.count() % 1000000)};
}

}  // namespace

Connection::Connection(ServerAddress address, const ServerOptions& options)
    : address_(std::move(address)), options_(options) {}

std::string Connection::Reason(std::string_view what) const { return ToText(address_) + ": " + std::string(what); }

Delivery Connection::Exchange(std::span<const ServerCommand* const> commands, const CallEnd& end,
                              std::vector<ReplyPtr>* replies, std::string* why) {
  replies->clear();
  // Nobody is owed an answer, so whatever there is to read makes the connection useless.
  if (context_ != nullptr && HasInput()) Close();
  if (context_ == nullptr) {
    if (const Delivery opened = Open(end, why); opened != Delivery::kAnswered) return opened;
  }
  if (const Delivery sent = Send(commands, end, why); sent != Delivery::kAnswered) {
    Close();
    return sent;
  }
  while (replies->size() < commands.size()) {
    ReplyPtr reply;
    if (!Receive(end, &reply, why)) return Delivery::kUnanswered;
    if (reply == nullptr) {
      *why = Reason("no answer in time");
      Close();
      return Delivery::kUnanswered;
    }
    replies->push_back(std::move(reply));
  }
  return Delivery::kAnswered;
}

Delivery Connection::Open(const CallEnd& end, std::string* why) {
  const CallEnd open_end = end.Within(options_.connect_timeout);
  const timeval limit = ToTimeval(std::max(open_end.Left(), microseconds(1000)));
  context_.reset(address_.port == 0 ? redisConnectUnixWithTimeout(address_.host.c_str(), limit)
                                    : redisConnectWithTimeout(address_.host.c_str(), address_.port, limit));
  if (context_ == nullptr) throw std::bad_alloc();
  if (context_->err != 0) {
    *why = Reason(context_->errstr);
    Close();
    return Delivery::kNotSent;
  }
  fcntl(context_->fd, F_SETFD, FD_CLOEXEC);
  socket_timeout_ = {};
  if (options_.password.empty()) return Delivery::kAnswered;

  ServerCommand login(Effect::kReads, "AUTH");
  if (!options_.user.empty()) login.Add(options_.user);
  login.Add(options_.password);
  const ServerCommand* const commands[] = {&login};
  ReplyPtr reply;
  if (Send(commands, open_end, why) != Delivery::kAnswered || !Receive(open_end, &reply, why) || reply == nullptr) {
    if (why->empty()) *why = Reason("no answer in time");
    Close();
    return Delivery::kNotSent;
  }
  if (reply->type == REDIS_REPLY_STATUS) return Delivery::kAnswered;
  *why = Reason(reply->type == REDIS_REPLY_ERROR ? TextOf(*reply) : "an answer of an unexpected form");
  Close();
  return Judge(*reply) == Verdict::kLater ? Delivery::kNotSent : Delivery::kRefused;
}

bool Connection::HasInput() const {
  char byte;
  return recv(context_->fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) != -1 || errno != EAGAIN;
}

bool Connection::ArmTimeout(const CallEnd& end) {
  const microseconds left = end.Left();
  if (left.count() == 0) return false;
  if (left <= socket_timeout_ && socket_timeout_ - left <= kSlack) return true;
  socket_timeout_ = left;
  return redisSetTimeout(context_.get(), ToTimeval(left)) == REDIS_OK;
}

void Connection::AddToWire(const ServerCommand& command) {
  words_.clear();
  lengths_.clear();
  for (std::size_t word = 0; word < command.size(); ++word) {
    words_.push_back(command[word].data());
    lengths_.push_back(command[word].size());
  }
  char* formatted = nullptr;
  const int size = redisFormatCommandArgv(&formatted, static_cast<int>(words_.size()), words_.data(), lengths_.data());
  if (size < 0) throw std::bad_alloc();
  const std::unique_ptr<char, FormattedDeleter> held(formatted);
  wire_.append(formatted, static_cast<std::size_t>(size));
}

Delivery Connection::Send(std::span<const ServerCommand* const> commands, const CallEnd& end, std::string* why) {
  why->clear();
  if (wire_.capacity() > kKeptWire) wire_ = {};
  wire_.clear();
  AddToWire(*commands.front());
  const std::size_t first_size = wire_.size();
  for (const ServerCommand* command : commands.subspan(1)) AddToWire(*command);
  // Not hiredis's own write, for which a closed connection is a signal.
  for (std::size_t sent = 0; sent < wire_.size();) {
    const bool in_time = ArmTimeout(end);
    const ssize_t count = in_time ? send(context_->fd, wire_.data() + sent, wire_.size() - sent, MSG_NOSIGNAL) : -1;
    if (count > 0) {
      sent += static_cast<std::size_t>(count);
    } else if (!in_time || errno != EINTR) {
      const bool late = !in_time || errno == EAGAIN;
      *why = Reason(late ? "it takes no commands" : std::strerror(errno));
      return sent < first_size ? Delivery::kNotSent : Delivery::kUnanswered;
    }
  }
  return Delivery::kAnswered;
}

bool Connection::Receive(const CallEnd& end, ReplyPtr* reply, std::string* why) {
  for (;;) {
    void* received = nullptr;
    if (redisGetReplyFromReader(context_.get(), &received) != REDIS_OK) break;
    if (received != nullptr) {
      reply->reset(static_cast<redisReply*>(received));
      return true;
    }
    if (!ArmTimeout(end)) return true;
    errno = 0;
    if (redisBufferRead(context_.get()) != REDIS_OK) {
      if (context_->err == REDIS_ERR_IO && errno == EAGAIN) {
        // hiredis takes the end of the wait for an error, after which it reads no more.
        context_->err = 0;
        return true;
      }
      break;
    }
  }
  const bool out_of_memory = context_->err == REDIS_ERR_OOM;
  *why = Reason(context_->errstr);
  Close();
  if (out_of_memory) throw std::bad_alloc();
  return false;
}

}  // namespace hostkit

#include "scripted_server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include "hostkit/server_reply.h"
#include "loopback.h"

namespace hostkit {

ScriptedServer::ScriptedServer() : listener_(ListenOnLoopback(&port_)), thread_([this] { Run(); }) {}

ScriptedServer::~ScriptedServer() {
  stop_ = true;
  thread_.join();
  for (const Connection& connection : connections_) close(connection.socket);
  close(listener_);
}

std::string ScriptedServer::Url(const std::string& options) const {
  return "redis://127.0.0.1:" + std::to_string(port_) + '?' + options;
}

void ScriptedServer::On(const std::string& name, std::vector<Reaction> reactions) {
  const std::lock_guard lock(mutex_);
  reactions_[name] = std::move(reactions);
}

void ScriptedServer::Say(const std::string& bytes) {
  const std::lock_guard lock(mutex_);
  for (const Connection& connection : connections_) SendAll(connection.socket, bytes);
}

void ScriptedServer::ResetAll() {
  reset_ = true;
  while (reset_) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::vector<std::string> ScriptedServer::Log() {
  const std::lock_guard lock(mutex_);
  return log_;
}

ScriptedServer::Reaction ScriptedServer::ReactionTo(const redisReply& command) {
  std::string line;
  for (std::size_t word = 0; word < command.elements; ++word) {
    line += (word != 0 ? " " : "") + std::string(TextOf(*command.element[word]));
  }
  log_.push_back(line);
  std::vector<Reaction>& reactions = reactions_[std::string(TextOf(*command.element[0]))];
  if (reactions.empty()) return {};
  Reaction reaction = reactions.front();
  if (reactions.size() > 1) reactions.erase(reactions.begin());
  return reaction;
}

bool ScriptedServer::Read(const Connection& connection) {
  char piece[65536];
  const ssize_t size = recv(connection.socket, piece, sizeof(piece), 0);
  if (size <= 0) return false;
  EXPECT_EQ(redisReaderFeed(connection.reader.get(), piece, static_cast<std::size_t>(size)), REDIS_OK);
  for (;;) {
    void* read = nullptr;
    EXPECT_EQ(redisReaderGetReply(connection.reader.get(), &read), REDIS_OK);
    const ReplyPtr command(static_cast<redisReply*>(read));
    if (command == nullptr) return true;
    const Reaction reaction = ReactionTo(*command);
    if (!SendAll(connection.socket, reaction.bytes) || reaction.closes) return false;
  }
}

void ScriptedServer::Run() {
  while (!stop_) {
    std::vector<pollfd> polled = {{listener_, POLLIN, 0}};
    for (const Connection& connection : connections_) polled.push_back({connection.socket, POLLIN, 0});
    poll(polled.data(), polled.size(), 2);
    const std::lock_guard lock(mutex_);
    const bool reset = reset_;
    std::vector<Connection> open;
    for (std::size_t index = 0; index < connections_.size(); ++index) {
      Connection& connection = connections_[index];
      const linger at_once = {1, 0};
      if (reset) setsockopt(connection.socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
      if (!reset && (held_ || polled[index + 1].revents == 0 || Read(connection))) {
        open.push_back(std::move(connection));
      } else {
        close(connection.socket);
      }
    }
    connections_ = std::move(open);
    if (reset) reset_ = false;
    if (polled.front().revents != 0) {
      const int socket = accept(listener_, nullptr, nullptr);
      HurrySmallPieces(socket);
      connections_.push_back({socket, std::unique_ptr<redisReader, ReaderDeleter>(redisReaderCreate())});
    }
  }
}

}  // namespace hostkit

#include "proxy.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

#include "loopback.h"

namespace hostkit {

Proxy::Proxy(const ServerAddress& server)
    : server_(server), listener_(ListenOnLoopback(&port_)), thread_([this] { Run(); }) {}

Proxy::~Proxy() {
  stop_ = true;
  thread_.join();
  for (const Pair& pair : pairs_) {
    close(pair.client);
    close(pair.server);
  }
  close(listener_);
}

void Proxy::Break(Fault fault) {
  const std::lock_guard lock(mutex_);
  fault_ = std::move(fault);
}

void Proxy::Accept() {
  const int client = accept(listener_, nullptr, nullptr);
  const int server = ConnectToLoopback(server_.port);
  if (server == -1) {
    close(client);
    return;
  }
  HurrySmallPieces(client);
  HurrySmallPieces(server);
  pairs_.push_back({client, server});
  ++connections_;
}

bool Proxy::FromClient(const Pair& pair) {
  char piece[65536];
  const ssize_t size = recv(pair.client, piece, sizeof(piece), 0);
  if (!std::exchange(asked_, true)) ++round_trips_;
  return size > 0 && SendAll(pair.server, {piece, static_cast<std::size_t>(size)});
}

bool Proxy::FromServer(const Pair& pair) {
  char piece[65536];
  const ssize_t size = recv(pair.server, piece, sizeof(piece), 0);
  if (size <= 0) return false;
  std::string bytes(piece, static_cast<std::size_t>(size));
  last_size_ = bytes.size();
  asked_ = false;
  std::optional<Fault> fault;
  {
    const std::lock_guard lock(mutex_);
    fault = std::exchange(fault_, std::nullopt);
  }
  if (!fault) return SendAll(pair.client, bytes);
  if (fault->swallow) return true;
  if (fault->replacement) return SendAll(pair.client, *fault->replacement);
  if (fault->cut_after) {
    SendAll(pair.client, std::string_view{bytes}.substr(0, *fault->cut_after));
    return false;
  }
  for (const char byte : bytes) {
    std::this_thread::sleep_for(fault->byte_delay);
    if (!SendAll(pair.client, {&byte, 1})) return false;
  }
  return true;
}

void Proxy::Run() {
  while (!stop_) {
    std::vector<pollfd> polled = {{listener_, POLLIN, 0}};
    for (const Pair& pair : pairs_) {
      polled.push_back({pair.client, POLLIN, 0});
      polled.push_back({pair.server, POLLIN, 0});
    }
    poll(polled.data(), polled.size(), 2);
    const bool close_all = close_all_.exchange(false);
    std::vector<Pair> open;
    for (std::size_t index = 0; index < pairs_.size(); ++index) {
      const Pair& pair = pairs_[index];
      const bool from_client = polled[1 + 2 * index].revents != 0;
      const bool from_server = polled[2 + 2 * index].revents != 0;
      if (!close_all && (!from_client || FromClient(pair)) && (!from_server || FromServer(pair))) {
        open.push_back(pair);
      } else {
        close(pair.client);
        close(pair.server);
      }
    }
    pairs_ = std::move(open);
    if (polled.front().revents != 0) Accept();
  }
}

}  // namespace hostkit

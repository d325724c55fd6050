// A way to a server that breaks when it is told to.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "hostkit/server_url.h"

namespace hostkit {

class Proxy {
 public:
  // What happens to the next piece that the server sends; what follows goes through unharmed.
  struct Fault {
    std::optional<std::size_t> cut_after;     // the connection closes after so many bytes
    std::optional<std::string> replacement;   // these bytes come instead
    std::chrono::milliseconds byte_delay{0};  // before each byte
    bool swallow = false;                     // nothing comes
  };

  explicit Proxy(const ServerAddress& server);
  ~Proxy();

  int port() const { return port_; }
  void Break(Fault fault);
  // Closes all connections, as a server does with idle ones.
  void CloseAll() { close_all_ = true; }
  // The size of the last piece that the server sent.
  std::size_t last_size() const { return last_size_; }
  int connections() const { return connections_; }
  // How often the server was asked after it had answered.
  int round_trips() const { return round_trips_; }

 private:
  struct Pair {
    int client;
    int server;
  };

  void Run();
  void Accept();
  // False: the connection is over.
  bool FromClient(const Pair& pair);
  bool FromServer(const Pair& pair);

  const ServerAddress server_;
  int port_ = 0;
  int listener_ = -1;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> close_all_ = false;
  std::atomic<std::size_t> last_size_ = 0;
  std::atomic<int> connections_ = 0;
  std::atomic<int> round_trips_ = 0;
  bool asked_ = false;
  std::mutex mutex_;
  std::optional<Fault> fault_;
  std::vector<Pair> pairs_;
  std::thread thread_;
};

}  // namespace hostkit

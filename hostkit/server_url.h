// The name of a server: redis://[[user]:password@]host[:port][?options] or
// redis+unix://[[user]:password@]path[?options].
//
// user, password, path and option values may have percent escapes. Options are separated by '&':
//   connect_timeout=ms  the longest that opening a connection may take
//   timeout=ms          the longest that a call may take
//   wait=n              replicas that must have a write before it counts as done
//   prefix=text         goes before every key and channel
//   node=host[:port]    another node of the cluster to ask if the first is away; may be repeated
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace hostkit {

// Where a server listens: a host and a port, or the path of a socket and port 0.
struct ServerAddress {
  std::string host;
  int port = 0;

  friend bool operator==(const ServerAddress&, const ServerAddress&) = default;
  friend bool operator<(const ServerAddress& a, const ServerAddress& b) {
    return a.host != b.host ? a.host < b.host : a.port < b.port;
  }
};

// "host:port", "[host]:port" for an IPv6 address, or the path.
std::string ToText(const ServerAddress& address);
// The reverse of ToText for hosts; the port may be left out if there is a default. False if the text is no address.
bool ParseAddress(std::string_view text, int default_port, ServerAddress* address);

struct ServerOptions {
  std::vector<ServerAddress> nodes;  // at least one; the first is the one that the name gives
  std::string user;
  std::string password;  // belongs into no text that a person can read
  std::string prefix;
  std::chrono::milliseconds connect_timeout{2000};
  std::chrono::milliseconds timeout{5000};
  int wait = 0;
};

bool IsServerUrl(std::string_view name);
// False, with a text that says why. It quotes nothing of the URL, any part of which may be a password out of place.
bool ParseServerUrl(std::string_view url, ServerOptions* options, std::string* error);

}  // namespace hostkit

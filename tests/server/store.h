// The server or cluster that scripts/store has started around a test.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "hostkit/engine.h"
#include "hostkit/server_url.h"

namespace hostkit {

bool StoreIsCluster();
// The store's name with more options: "a=1&b=2". Each call gives a prefix that no other has.
std::string StoreName(std::string_view options = "");
// A connected engine on keys of its own.
std::unique_ptr<Engine> OpenStore(std::string_view options = "");
std::unique_ptr<Engine> OpenNamed(const std::string& name);
ServerAddress StoreAddress();

// Runs a line of shell. Returns its status, 0 for success, and what it printed.
int RunCommand(const std::string& line, std::string* output);
// What a server answers to a command, as redis-cli shows it.
std::string Ask(const ServerAddress& server, const std::string& command);

}  // namespace hostkit

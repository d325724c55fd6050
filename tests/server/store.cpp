#include "store.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "hostkit/server_engine.h"

namespace hostkit {

bool StoreIsCluster() { return std::getenv("TQ_MOM_CLUSTER") != nullptr; }

std::string StoreName(std::string_view options) {
  static int stores = 0;
  const char* server = std::getenv("TQ_MOM_STORE");
  EXPECT_NE(server, nullptr) << "run the tests with scripts/store";
  return std::string(server) + "?prefix=" + std::to_string(getpid()) + '-' + std::to_string(++stores) + ":&" +
         std::string(options);
}

std::unique_ptr<Engine> OpenNamed(const std::string& name) {
  std::unique_ptr<Engine> engine;
  Status status = OpenServerEngine(name, &engine);
  if (status.ok()) status = engine->Connect(false, {});
  EXPECT_TRUE(status.ok()) << status.text();
  return engine;
}

std::unique_ptr<Engine> OpenStore(std::string_view options) { return OpenNamed(StoreName(options)); }

ServerAddress StoreAddress() {
  ServerOptions options;
  std::string error;
  EXPECT_TRUE(ParseServerUrl(StoreName(), &options, &error)) << error;
  return options.nodes.front();
}

int RunCommand(const std::string& line, std::string* output) {
  std::FILE* pipe = popen(line.c_str(), "r");
  output->clear();
  std::array<char, 4096> piece;
  while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), pipe)) output->append(piece.data(), size);
  return pclose(pipe);
}

std::string Ask(const ServerAddress& server, const std::string& command) {
  std::string output;
  RunCommand("redis-cli -h " + server.host + " -p " + std::to_string(server.port) + ' ' + command, &output);
  while (!output.empty() && (output.back() == '\n' || output.back() == '\r')) output.pop_back();
  return output;
}

}  // namespace hostkit

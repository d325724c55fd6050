// A server that does what it is told to, over a socket.
#pragma once

#include <hiredis/hiredis.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace hostkit {

class ScriptedServer {
 public:
  // What comes back for a command: bytes, or none at all; and whether the connection stays.
  struct Reaction {
    std::string bytes;
    bool closes = false;
  };

  ScriptedServer();
  ~ScriptedServer();

  int port() const { return port_; }
  std::string Url(const std::string& options) const;

  // The reactions to the next commands of that name; the last one goes on for ever. Without one there is no answer.
  void On(const std::string& name, std::vector<Reaction> reactions);
  // Says something that nobody has asked for, on every connection.
  void Say(const std::string& bytes);
  // Breaks all connections off: the other side cannot send any more.
  void ResetAll();
  // Stops reading, or goes on.
  void Hold(bool held) { held_ = held; }
  // The commands so far, with their words.
  std::vector<std::string> Log();

 private:
  struct ReaderDeleter {
    void operator()(redisReader* reader) const { redisReaderFree(reader); }
  };
  struct Connection {
    int socket;
    std::unique_ptr<redisReader, ReaderDeleter> reader;
  };

  void Run();
  // False: the connection is over.
  bool Read(const Connection& connection);
  Reaction ReactionTo(const redisReply& command);

  int port_ = 0;
  int listener_ = -1;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> held_ = false;
  std::atomic<bool> reset_ = false;
  std::mutex mutex_;  // of what follows
  std::map<std::string, std::vector<Reaction>> reactions_;
  std::vector<std::string> log_;
  std::vector<Connection> connections_;
  std::thread thread_;
};

}  // namespace hostkit

// A connection to a server that does what it is told to.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <chrono>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/server_connection.h"
#include "scripted_server.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

// What hiredis fails to find memory for.
enum class Missing { kNothing, kContext, kCommand, kReply };
Missing missing = Missing::kNothing;

class ConnectionTest : public ::testing::Test {
 protected:
  void TearDown() override { missing = Missing::kNothing; }

  Delivery Exchange(std::initializer_list<const ServerCommand*> commands, milliseconds limit = milliseconds(2000)) {
    return connection.Exchange(std::vector(commands), CallEnd(limit), &replies, &why);
  }
  Delivery Login(const std::string& answer) {
    options.password = "secret";
    server.On("AUTH", {{answer}});
    connection.Close();
    return Exchange({&ping});
  }

  ScriptedServer server;
  ServerOptions options;
  Connection connection{{"127.0.0.1", server.port()}, options};
  const ServerCommand ping{Effect::kReads, "PING"};
  std::vector<ReplyPtr> replies;
  std::string why;
};

TEST_F(ConnectionTest, ItLogsInFirst) {
  server.On("PING", {{"+PONG\r\n"}});
  EXPECT_EQ(Login("+OK\r\n"), Delivery::kAnswered) << why;
  options.user = "ann";
  EXPECT_EQ(Login("+OK\r\n"), Delivery::kAnswered) << why;
  EXPECT_EQ(server.Log(), (std::vector<std::string>{"AUTH secret", "PING", "AUTH ann secret", "PING"}));
}

// A program that the process starts does not get the connection.
TEST_F(ConnectionTest, ItsSocketIsNotInherited) {
  ASSERT_EQ(connection.Open(CallEnd(milliseconds(2000)), &why), Delivery::kAnswered) << why;
  int sockets = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    sockaddr_in peer = {};
    socklen_t size = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) != 0) continue;
    if (peer.sin_family != AF_INET || ntohs(peer.sin_port) != server.port()) continue;
    ++sockets;
    EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
  }
  EXPECT_EQ(sockets, 1);
}

TEST_F(ConnectionTest, ARefusedLoginSendsNothing) {
  EXPECT_EQ(Login("-WRONGPASS invalid username-password pair\r\n"), Delivery::kRefused);
  EXPECT_NE(why.find("WRONGPASS"), std::string::npos);
  EXPECT_EQ(Login(":1\r\n"), Delivery::kRefused);
  EXPECT_NE(why.find("unexpected form"), std::string::npos);
  EXPECT_EQ(Login("-LOADING Redis is loading the dataset in memory\r\n"), Delivery::kNotSent)
      << "it may be tried again";
  EXPECT_FALSE(connection.is_open());
}

TEST_F(ConnectionTest, ALoginWithoutAnAnswerSendsNothing) {
  options.connect_timeout = milliseconds(300);
  EXPECT_EQ(Login(""), Delivery::kNotSent);
  EXPECT_NE(why.find("no answer in time"), std::string::npos);
  EXPECT_EQ(Exchange({&ping}, milliseconds(0)), Delivery::kNotSent);
  server.On("AUTH", {{"", true}});
  options.connect_timeout = milliseconds(2000);
  EXPECT_EQ(Exchange({&ping}), Delivery::kNotSent);
  EXPECT_NE(why.find("closed"), std::string::npos);
  EXPECT_FALSE(connection.is_open());
}

TEST_F(ConnectionTest, WhatNobodyAskedForMakesItOpenAgain) {
  server.On("PING", {{"+PONG\r\n"}});
  ASSERT_EQ(Exchange({&ping}), Delivery::kAnswered);
  server.Say("+PONG\r\n");
  server.On("PING", {{"+fresh\r\n"}});
  ASSERT_EQ(Exchange({&ping}), Delivery::kAnswered);
  EXPECT_EQ(TextOf(*replies.front()), "fresh");
  server.ResetAll();
  EXPECT_EQ(Exchange({&ping}), Delivery::kAnswered) << why;
}

TEST_F(ConnectionTest, NothingIsSentAfterTheCallsEnd) {
  server.On("PING", {{"+PONG\r\n"}});
  ASSERT_EQ(Exchange({&ping}), Delivery::kAnswered);
  EXPECT_EQ(Exchange({&ping}, milliseconds(0)), Delivery::kNotSent);
  EXPECT_NE(why.find("takes no commands"), std::string::npos);
  EXPECT_EQ(server.Log().size(), 1U);
}

TEST_F(ConnectionTest, WhatABrokenConnectionDoesNotTakeWasNotSent) {
  server.On("PING", {{"+PONG\r\n"}});
  ASSERT_EQ(Exchange({&ping}), Delivery::kAnswered);
  server.ResetAll();
  const ServerCommand* const commands[] = {&ping};
  EXPECT_EQ(connection.Send(commands, CallEnd(milliseconds(2000)), &why), Delivery::kNotSent);
  EXPECT_NE(why.find(std::to_string(server.port())), std::string::npos);
}

// Signals arrive while the server takes nothing.
TEST_F(ConnectionTest, AServerThatTakesNoCommands) {
  struct sigaction old_action = {};
  struct sigaction counting = {};
  static volatile sig_atomic_t signals = 0;
  signals = 0;
  counting.sa_handler = [](int) { signals = signals + 1; };
  sigaction(SIGALRM, &counting, &old_action);
  const itimerval often = {{0, 5000}, {0, 5000}};
  const itimerval never = {};

  const std::string large(std::size_t{16} << 20, 'x');
  ServerCommand set(Effect::kWrites, "SET");
  set.Add("k").Add(large);
  server.Hold(true);
  using Commands = std::vector<const ServerCommand*>;
  for (const auto& [commands, delivery] :
       {std::pair(Commands{&set}, Delivery::kNotSent), std::pair(Commands{&ping, &set}, Delivery::kUnanswered)}) {
    ASSERT_EQ(connection.Open(CallEnd(milliseconds(2000)), &why), Delivery::kAnswered);
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(connection.Exchange(commands, CallEnd(milliseconds(1000)), &replies, &why), delivery);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_NE(why.find("takes no commands"), std::string::npos) << why;
  }
  sigaction(SIGALRM, &old_action, nullptr);
  EXPECT_GT(signals, 0);
}

TEST_F(ConnectionTest, WithoutMemoryItThrows) {
  server.On("PING", {{"+PONG\r\n"}});
  for (const Missing what : {Missing::kContext, Missing::kCommand, Missing::kReply}) {
    connection.Close();
    missing = what;
    EXPECT_THROW(Exchange({&ping}), std::bad_alloc);
    missing = Missing::kNothing;
    EXPECT_EQ(Exchange({&ping}), Delivery::kAnswered) << why;
  }
}

}  // namespace
}  // namespace hostkit

// The test program is linked with these in place of hiredis's own (--wrap).
extern "C" {
redisContext* __real_redisConnectWithTimeout(const char* host, int port, timeval limit);
int __real_redisFormatCommandArgv(char** formatted, int count, const char** words, const size_t* lengths);
int __real_redisGetReplyFromReader(redisContext* context, void** reply);

redisContext* __wrap_redisConnectWithTimeout(const char* host, int port, timeval limit) {
  if (hostkit::missing == hostkit::Missing::kContext) return nullptr;
  return __real_redisConnectWithTimeout(host, port, limit);
}

int __wrap_redisFormatCommandArgv(char** formatted, int count, const char** words, const size_t* lengths) {
  if (hostkit::missing == hostkit::Missing::kCommand) return -1;
  return __real_redisFormatCommandArgv(formatted, count, words, lengths);
}

int __wrap_redisGetReplyFromReader(redisContext* context, void** reply) {
  if (hostkit::missing != hostkit::Missing::kReply) return __real_redisGetReplyFromReader(context, reply);
  context->err = REDIS_ERR_OOM;
  return REDIS_ERR;
}
}

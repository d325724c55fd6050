// Subscriptions at a server that does what it is told to.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "hostkit/server_engine.h"
#include "recorded.h"
#include "scripted_server.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;
using Log = std::vector<std::string>;

std::string Push(const std::vector<std::string>& words) {
  std::string wire = '*' + std::to_string(words.size()) + "\r\n";
  for (const std::string& word : words) wire += Bulk(word);
  return wire;
}

// What a server confirms.
std::string Told(const std::string& verb, const std::string& pattern) {
  return "*3\r\n" + Bulk(verb) + Bulk(pattern) + ":1\r\n";
}

std::string Arriving(const std::string& channel, const std::string& value) {
  return Push({"pmessage", "0:news*", channel, value});
}

class MessagesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(OpenServerEngine(server.Url("timeout=2000"), &engine).ok());
    server.On("PING", {{"+PONG\r\n"}});
    server.On("PSUBSCRIBE", {{kTold}});
    ASSERT_TRUE(engine->Connect(false, {}).ok());
  }

  // Polls until that many messages are there.
  Log Arrived(std::size_t count) {
    messages.clear();
    while (messages.size() < count) {
      const std::size_t before = messages.size();
      const Status status = engine->Poll(milliseconds(2000), &messages);
      EXPECT_TRUE(status.ok()) << status.text();
      if (messages.size() == before) break;
    }
    Log texts;
    for (const Message& message : messages) texts.push_back(message.name + '=' + message.value);
    return texts;
  }

  const std::string kTold = Told("psubscribe", "0:news*");
  const Request kNews{0, "news*"};
  ScriptedServer server;
  std::unique_ptr<Engine> engine;
  std::vector<Message> messages;
  std::int64_t receivers = 0;
};

TEST_F(MessagesTest, ARefusedSubscriptionIsNone) {
  server.On("PSUBSCRIBE", {{"-NOPERM this user has no permissions\r\n"}, {kTold}});
  const Status status = engine->Subscribe(kNews);
  EXPECT_EQ(status.code(), StatusCode::kReadOnly);
  EXPECT_NE(status.text().find("NOPERM"), std::string::npos);
  EXPECT_TRUE(engine->Poll(milliseconds(0), &messages).ok()) << "there is nothing to poll for";
  EXPECT_TRUE(engine->Subscribe(kNews).ok());
}

TEST_F(MessagesTest, ASubscriptionWithoutAnAnswerEndsInTime) {
  server.On("PSUBSCRIBE", {{""}, {"", true}, {kTold}});
  EXPECT_EQ(engine->Subscribe({0, "news*", milliseconds(300)}).code(), StatusCode::kUnavailable);
  EXPECT_EQ(engine->Subscribe(kNews).code(), StatusCode::kUnavailable) << "the server has closed";
  EXPECT_TRUE(engine->Subscribe(kNews).ok());
}

TEST_F(MessagesTest, NobodyThereToSubscribeAt) {
  std::unique_ptr<Engine> lost;
  ASSERT_TRUE(OpenServerEngine("redis://127.0.0.1:1", &lost).ok());
  EXPECT_EQ(lost->Subscribe(kNews).code(), StatusCode::kUnavailable);
}

TEST_F(MessagesTest, ABrokenConnectionIsOpenedAgainWithAllSubscriptions) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.ResetAll();
  EXPECT_EQ(engine->Subscribe({0, "other"}).code(), StatusCode::kUnavailable) << "it cannot be told";
  server.On("PSUBSCRIBE", {{"-ERR not now\r\n"}, {kTold}});
  EXPECT_EQ(engine->Poll(milliseconds(0), &messages).code(), StatusCode::kFailed);
  for (const Request& unknown : {Request{0, "stranger"}, Request{1, "news*"}}) {
    EXPECT_TRUE(engine->Unsubscribe(unknown).ok()) << "nothing to tell anybody";
  }
  EXPECT_TRUE(engine->Subscribe({0, "other"}).ok());
  EXPECT_EQ(server.Log(),
            (Log{"PING", "PSUBSCRIBE 0:news*", "PSUBSCRIBE 0:news*", "PSUBSCRIBE 0:news*", "PSUBSCRIBE 0:other"}));
}

TEST_F(MessagesTest, WithoutAConnectionASubscriptionEndsHere) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.Say("-ERR going away\r\n:x\r\n");
  EXPECT_EQ(engine->Poll(milliseconds(2000), &messages).code(), StatusCode::kUnavailable) << "that is no message";
  EXPECT_TRUE(engine->Unsubscribe(kNews).ok());
  EXPECT_TRUE(engine->Poll(milliseconds(0), &messages).ok());
  EXPECT_EQ(server.Log(), (Log{"PING", "PSUBSCRIBE 0:news*"}));
}

// The server has the two as one.
TEST_F(MessagesTest, TheServerIsToldOnceOfPatternsThatAreOneToIt) {
  ASSERT_TRUE(engine->Subscribe({0, "[ab]"}).ok());
  ASSERT_TRUE(engine->Subscribe({0, "[ba]"}).ok());
  ASSERT_TRUE(engine->Unsubscribe({0, "[ab]"}).ok());
  EXPECT_EQ(server.Log(), (Log{"PING", "PSUBSCRIBE 0:[ab]"}));
  server.On("PUNSUBSCRIBE", {{Told("punsubscribe", "0:[ab]")}});
  ASSERT_TRUE(engine->Unsubscribe({0, "[ba]"}).ok());
  EXPECT_EQ(server.Log().back(), "PUNSUBSCRIBE 0:[ab]");
}

TEST_F(MessagesTest, WhatIsNoMessageIsLeftOut) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.Say("+OK\r\n*1\r\n:1\r\n*4\r\n:1\r\n:2\r\n:3\r\n:4\r\n" + Push({"pmessage", "0:news*", "0:news"}) +
             Push({"message!", "0:news*", "0:news", "v"}) + Push({"pmessage", "0:other", "0:news", "v"}) +
             Arriving("0", "v") + Arriving("0:news", "good"));
  EXPECT_EQ(Arrived(1), (Log{"news=good"}));
}

TEST_F(MessagesTest, MessagesThatComeWhileSubscribingAreKept) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.On("PSUBSCRIBE", {{Arriving("0:news", "early") + Told("psubscribe", "0:other")}});
  ASSERT_TRUE(engine->Subscribe({0, "other"}).ok());
  EXPECT_EQ(Arrived(1), (Log{"news=early"}));
}

TEST_F(MessagesTest, AMessageInPiecesIsWaitedFor) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  const std::string whole = Arriving("0:news", "v");
  server.Say(whole.substr(0, 12));
  EXPECT_TRUE(engine->Poll(milliseconds(50), &messages).ok());
  EXPECT_TRUE(messages.empty());
  server.Say(whole.substr(12));
  EXPECT_EQ(Arrived(1), (Log{"news=v"}));
}

TEST_F(MessagesTest, APublishBringsItsOwnMessageAndKeepsTheOthers) {
  server.On("PUBLISH", {{":1\r\n"}});
  EXPECT_TRUE(engine->Publish({0, "news"}, "nobody listens here", &receivers).ok());
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  EXPECT_TRUE(engine->Publish({1, "news"}, "another database", &receivers).ok());
  server.On("PSUBSCRIBE", {{Told("psubscribe", "1:news*")}});
  ASSERT_TRUE(engine->Subscribe({1, "news*"}).ok());
  server.Say(Push({"pmessage", "1:news*", "1:news", "own"}) + Arriving("0:news!", "own") + Arriving("0:news", "other") +
             Arriving("0:news", "own"));
  EXPECT_TRUE(engine->Publish({0, "news"}, "own", &receivers).ok());
  EXPECT_EQ(receivers, 1);
  EXPECT_EQ(Arrived(4), (Log{"news=own", "news!=own", "news=other", "news=own"}));
}

TEST_F(MessagesTest, APublishWaitsForItsOwnMessageAmongOthers) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.On("PUBLISH", {{":1\r\n"}});
  server.Say(Arriving("0:news!", "own") + Arriving("0:news", "other"));
  std::thread later([&] {
    std::this_thread::sleep_for(milliseconds(100));
    server.Say(Arriving("0:news", "own"));
  });
  EXPECT_TRUE(engine->Publish({0, "news"}, "own", &receivers).ok());
  EXPECT_TRUE(engine->Poll(milliseconds(0), &messages).ok());
  EXPECT_EQ(messages.size(), 3U);
  later.join();
}

TEST_F(MessagesTest, APublishWhoseOwnMessageStaysAwayHasBeenDone) {
  ASSERT_TRUE(engine->Subscribe(kNews).ok());
  server.On("PUBLISH", {{":1\r\n"}});
  EXPECT_TRUE(engine->Publish({0, "news", milliseconds(300)}, "v", &receivers).ok()) << "it does not come in time";
  server.Say("?\r\n");
  EXPECT_TRUE(engine->Publish({0, "news"}, "v", &receivers).ok()) << "the connection broke";
  EXPECT_EQ(receivers, 1);
}

TEST_F(MessagesTest, APublishThatFails) {
  server.On("PUBLISH", {{"+OK\r\n"}, {"-NOPERM no\r\n"}});
  EXPECT_EQ(engine->Publish({0, "news"}, "v", &receivers).code(), StatusCode::kOutcomeUnknown);
  EXPECT_EQ(engine->Publish({0, "news"}, "v", &receivers).code(), StatusCode::kReadOnly);
}

// A cluster whose nodes have all lost their slots.
TEST_F(MessagesTest, AClusterWithoutSlotsHasNoPlaceForMessages) {
  std::unique_ptr<Engine> cluster;
  ASSERT_TRUE(OpenServerEngine(server.Url("timeout=50"), &cluster).ok());
  server.On("CLUSTER", {{"*0\r\n"}});
  EXPECT_EQ(cluster->Connect(true, milliseconds(50)).code(), StatusCode::kUnavailable);
  EXPECT_EQ(cluster->Publish({0, "news"}, "v", &receivers).code(), StatusCode::kUnavailable);
  EXPECT_EQ(cluster->Subscribe(kNews).code(), StatusCode::kUnavailable);
  server.On("CLUSTER", {{"-ERR This instance has cluster support disabled\r\n"}});
  EXPECT_EQ(cluster->Subscribe(kNews).code(), StatusCode::kFailed);
}

}  // namespace
}  // namespace hostkit

// The router against nodes that answer what real ones were recorded to answer.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_nodes.h"
#include "hostkit/server_router.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

class RouterTest : public ::testing::Test {
 protected:
  void Connect(bool cluster) {
    if (cluster) nodes.At(1, {{Delivery::kAnswered, Slots(1, 2)}});
    if (!cluster) nodes.At(1, {{Delivery::kAnswered, "+PONG\r\n"}});
    const Status status = router.Connect(cluster, CallEnd(milliseconds(100)));
    ASSERT_TRUE(status.ok()) << status.text();
    nodes.log().clear();
  }

  // GET or SET of a key whose slot, 12182, is at node 2.
  Status Run(Effect effect, std::chrono::milliseconds limit = milliseconds(1000)) {
    ServerCommand command(effect, effect == Effect::kReads ? "GET" : "SET");
    command.AddKey("{foo}", 0, "key");
    EXPECT_EQ(command.slot(), 12182);
    reply.reset();
    return router.Run(&command, CallEnd(limit), &reply);
  }

  using Log = std::vector<std::string>;
  ServerOptions options{{{"127.0.0.1", 1}}, "", "", "", milliseconds(100), milliseconds(1000), 0};
  Nodes nodes;
  Router router{options, nodes.Maker(), nodes.Sleeper()};
  ReplyPtr reply;
};

TEST_F(RouterTest, ASingleServerGetsEverything) {
  Connect(false);
  nodes.At(1, {{Delivery::kAnswered, "$1\r\nv\r\n"}});
  EXPECT_TRUE(Run(Effect::kReads).ok());
  EXPECT_EQ(TextOf(*reply), "v");
  EXPECT_EQ(nodes.log(), (Log{"1 GET"}));
}

TEST_F(RouterTest, TheOwnerOfTheSlotGetsTheCommand) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "+OK\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"2 SET"}));
}

TEST_F(RouterTest, MovedIsFollowedAtOnceAndTheSlotsAreAskedForBeforeTheNextCommand) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-MOVED 12182 127.0.0.1:3\r\n"}});
  nodes.At(3, {{Delivery::kAnswered, "+OK\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"2 SET", "3 SET"}));
  EXPECT_EQ(nodes.slept.count(), 0);
  nodes.log().clear();
  nodes.At(1, {{Delivery::kAnswered, Slots(1, 3)}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"1 CLUSTER", "3 SET"}));
  nodes.log().clear();
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"3 SET"}));
}

TEST_F(RouterTest, AskIsFollowedOnce) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-ASK 12182 127.0.0.1:3\r\n"}, {Delivery::kAnswered, "+OK\r\n"}});
  nodes.At(3, {{Delivery::kAnswered, "+OK\r\n+OK\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"2 SET", "3 ASKING SET", "2 SET"}));
}

TEST_F(RouterTest, RedirectionsWithoutEndEndWithTheCall) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-MOVED 12182 127.0.0.1:3\r\n"}});
  nodes.At(3, {{Delivery::kAnswered, "-MOVED 12182 127.0.0.1:2\r\n"}});
  const Status status = Run(Effect::kWrites, milliseconds(20));
  EXPECT_EQ(status.code(), StatusCode::kUnavailable);
  EXPECT_GT(nodes.slept.count(), 0);
}

TEST_F(RouterTest, ARedirectionForAnotherSlotIsNone) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-MOVED 5 127.0.0.1:3\r\n"}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kFailed);
}

TEST_F(RouterTest, ARedirectionThatNobodyUnderstandsIsNone) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-MOVED away\r\n"}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kFailed);
}

TEST_F(RouterTest, ACommandForOneNodeIsNotSentToAnother) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-MOVED 12182 127.0.0.1:3\r\n"}});
  ServerCommand command(Effect::kReads, "DBSIZE");
  EXPECT_EQ(router.RunOn({"127.0.0.1", 2}, &command, CallEnd(milliseconds(1000)), &reply).code(), StatusCode::kFailed);
  EXPECT_EQ(nodes.log(), (Log{"2 DBSIZE"}));
}

TEST_F(RouterTest, ASingleServerThatRedirectsIsANodeOfACluster) {
  Connect(false);
  nodes.At(1, {{Delivery::kAnswered, "-MOVED 12182 127.0.0.1:3\r\n"}});
  const Status status = Run(Effect::kReads);
  EXPECT_EQ(status.code(), StatusCode::kFailed);
  EXPECT_NE(status.text().find("cluster"), std::string::npos);
}

TEST_F(RouterTest, WhatIsNotReadyIsAskedAgainAfterAPause) {
  for (const std::string error : {"TRYAGAIN x", "CLUSTERDOWN x", "LOADING x", "MASTERDOWN x", "BUSY x"}) {
    for (const bool cluster : {false, true}) {
      nodes.slept = {};
      Connect(cluster);
      const std::vector<Turn> turns = {{Delivery::kAnswered, '-' + error + "\r\n"}, {Delivery::kAnswered, "+OK\r\n"}};
      nodes.At(cluster ? 2 : 1, turns);
      EXPECT_TRUE(Run(Effect::kWrites).ok()) << error;
      EXPECT_GT(nodes.slept.count(), 0) << error;
    }
  }
}

TEST_F(RouterTest, WhatStaysUnreadyIsUnavailable) {
  Connect(false);
  nodes.At(1, {{Delivery::kAnswered, "-LOADING Redis is loading the dataset in memory\r\n"}});
  const Status status = Run(Effect::kWrites, milliseconds(5));
  EXPECT_EQ(status.code(), StatusCode::kUnavailable);
  EXPECT_NE(status.text().find("LOADING"), std::string::npos);
}

TEST_F(RouterTest, AWriteWhoseAnswerIsLostIsNotSentAgain) {
  for (const bool cluster : {false, true}) {
    Connect(cluster);
    nodes.At(cluster ? 2 : 1, {{Delivery::kUnanswered, ""}, {Delivery::kAnswered, "+OK\r\n"}});
    EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kOutcomeUnknown);
    EXPECT_EQ(nodes.log().size(), 1U);
  }
}

TEST_F(RouterTest, AReadWhoseAnswerIsLostIsSentAgain) {
  Connect(false);
  nodes.At(1, {{Delivery::kUnanswered, ""}, {Delivery::kAnswered, "$1\r\nv\r\n"}});
  EXPECT_TRUE(Run(Effect::kReads).ok());
  Connect(true);
  nodes.At(2, {{Delivery::kUnanswered, ""}, {Delivery::kAnswered, "$1\r\nv\r\n"}});
  EXPECT_TRUE(Run(Effect::kReads).ok());
  EXPECT_EQ(nodes.log(), (Log{"2 GET", "1 CLUSTER", "2 GET"}));
}

TEST_F(RouterTest, AWriteThatHasNotLeftIsSentAgain) {
  Connect(false);
  nodes.At(1, {{Delivery::kNotSent, ""}, {Delivery::kAnswered, "+OK\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"1 SET", "1 SET"}));
}

TEST_F(RouterTest, AServerThatIsAwayIsUnavailableSoon) {
  Connect(false);
  nodes.At(1, {{Delivery::kNotSent, ""}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kUnavailable);
  EXPECT_LE(nodes.log().size(), 3U);
}

TEST_F(RouterTest, ALostMasterIsReplacedByItsReplica) {
  Connect(true);
  nodes.At(2, {{Delivery::kNotSent, ""}});
  nodes.At(
      1, {{Delivery::kAnswered, Slots(1, 2)}, {Delivery::kAnswered, Slots(1, 2)}, {Delivery::kAnswered, Slots(1, 4)}});
  nodes.At(4, {{Delivery::kAnswered, "+OK\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log().back(), "4 SET");
}

TEST_F(RouterTest, ASlotWithoutAnOwnerIsUnavailable) {
  Connect(true);
  nodes.At(1, {{Delivery::kAnswered, "*1\r\n*3\r\n:0\r\n:8191\r\n*2\r\n$9\r\n127.0.0.1\r\n:1\r\n"}});
  ASSERT_TRUE(router.Refresh(CallEnd(milliseconds(100))).ok());
  EXPECT_EQ(Run(Effect::kReads, milliseconds(5)).code(), StatusCode::kUnavailable);
}

TEST_F(RouterTest, WhoeverDoesNotLetUsInIsNotAskedAgain) {
  Connect(true);
  nodes.At(2, {{Delivery::kRefused, ""}});
  EXPECT_EQ(Run(Effect::kReads).code(), StatusCode::kUnavailable);
  EXPECT_EQ(nodes.log(), (Log{"2 GET"}));
}

TEST_F(RouterTest, AnUnknownScriptIsSentAsText) {
  Connect(true);
  nodes.At(2, {{Delivery::kAnswered, "-NOSCRIPT No matching script. Please use EVAL.\r\n"},
               {Delivery::kAnswered, ":1\r\n"}});
  ServerCommand command(Effect::kWrites, Script::kExpire, 1);
  command.AddKey("{foo}", 0, "key").Add(std::int64_t{5});
  EXPECT_TRUE(router.Run(&command, CallEnd(milliseconds(1000)), &reply).ok());
  EXPECT_EQ(nodes.log(), (Log{"2 EVALSHA", "2 EVAL"}));
}

TEST_F(RouterTest, AWriteWaitsForReplicas) {
  options.wait = 1;
  Connect(false);
  nodes.At(1, {{Delivery::kAnswered, "+OK\r\n:1\r\n"}});
  EXPECT_TRUE(Run(Effect::kWrites).ok());
  EXPECT_EQ(nodes.log(), (Log{"1 SET WAIT"}));
  nodes.At(1, {{Delivery::kAnswered, "+OK\r\n:0\r\n"}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kOutcomeUnknown);
  nodes.At(1, {{Delivery::kAnswered, "+OK\r\n-ERR WAIT cannot be used with replica instances\r\n"}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kOutcomeUnknown);
  nodes.At(1, {{Delivery::kAnswered, "-OOM x\r\n:0\r\n"}});
  EXPECT_EQ(Run(Effect::kWrites).code(), StatusCode::kOutOfMemory);
  nodes.log().clear();
  nodes.At(1, {{Delivery::kAnswered, "$1\r\nv\r\n"}});
  EXPECT_TRUE(Run(Effect::kReads).ok());
  EXPECT_EQ(nodes.log(), (Log{"1 GET"}));
}

TEST_F(RouterTest, ConnectSaysWhyItFails) {
  EXPECT_EQ(router.Connect(false, CallEnd(milliseconds(5))).code(), StatusCode::kUnavailable);
  EXPECT_EQ(router.Connect(true, CallEnd(milliseconds(5))).code(), StatusCode::kUnavailable);
  nodes.At(1, {{Delivery::kAnswered, "-ERR This instance has cluster support disabled\r\n"}});
  EXPECT_EQ(router.Connect(true, CallEnd(milliseconds(5))).code(), StatusCode::kFailed);
  nodes.At(1, {{Delivery::kAnswered, "*1\r\n:1\r\n"}});
  EXPECT_EQ(router.Connect(true, CallEnd(milliseconds(5))).code(), StatusCode::kFailed);
  nodes.At(1, {{Delivery::kAnswered, "-NOAUTH Authentication required.\r\n"}});
  EXPECT_EQ(router.Connect(false, CallEnd(milliseconds(5))).code(), StatusCode::kUnavailable);
  nodes.At(1, {{Delivery::kAnswered, "*0\r\n"}});
  EXPECT_EQ(router.Connect(true, CallEnd(milliseconds(5))).code(), StatusCode::kUnavailable);
}

}  // namespace
}  // namespace hostkit

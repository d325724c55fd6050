// The engine over a server that does what it is told to.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "hostkit/server_engine.h"
#include "recorded.h"
#include "scripted_server.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

const std::string kRefusal = "-NOPERM this user has no permissions\r\n";

class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(OpenServerEngine(server.Url("timeout=2000"), &engine).ok());
    server.On("PING", {{"+PONG\r\n"}});
    ASSERT_TRUE(engine->Connect(false, {}).ok());
  }

  // Connects as to a cluster that is one node.
  void ConnectToCluster() {
    server.On("CLUSTER",
              {{"*1\r\n*3\r\n:0\r\n:16383\r\n*2\r\n$9\r\n127.0.0.1\r\n:" + std::to_string(server.port()) + "\r\n"}});
    ASSERT_TRUE(engine->Connect(true, {}).ok());
    server.On("CLUSTER", {{kRefusal}});
  }

  // What the server says of its saves.
  static ScriptedServer::Reaction Saves(bool running, int saves, const std::string& last) {
    const std::string text = "rdb_bgsave_in_progress:" + std::to_string(running ? 1 : 0) +
                             "\r\nrdb_saves:" + std::to_string(saves) + "\r\nrdb_last_bgsave_status:" + last + "\r\n";
    return {Bulk(text)};
  }

  const Request kKey{0, "k"};
  ScriptedServer server;
  std::unique_ptr<Engine> engine;
};

TEST_F(EngineTest, AnswersThatDoNotFitAreTold) {
  KeyState state;
  std::optional<std::string> value;
  std::int64_t left = 0;
  for (const std::string answer : {":1\r\n", "*1\r\n:1\r\n", "*2\r\n:1\r\n:1\r\n", "*2\r\n$1\r\nv\r\n$1\r\nv\r\n"}) {
    server.On("EVALSHA", {{answer}});
    EXPECT_EQ(engine->Inspect(kKey, &state).code(), StatusCode::kFailed) << answer;
    EXPECT_EQ(engine->ListPop(kKey, End::kHead, &value, &left).code(), StatusCode::kOutcomeUnknown) << answer;
  }
  server.On("EVALSHA", {{kRefusal}});
  EXPECT_EQ(engine->Inspect(kKey, &state).code(), StatusCode::kReadOnly);
  EXPECT_EQ(engine->ListPop(kKey, End::kHead, &value, &left).code(), StatusCode::kReadOnly);
}

TEST_F(EngineTest, AKindThatIsNoneOfOursIsNone) {
  server.On("EVALSHA", {{"*2\r\n$6\r\nstream\r\n:-1\r\n"}});
  KeyState state;
  ASSERT_TRUE(engine->Inspect(kKey, &state).ok());
  EXPECT_EQ(state.kind, Kind::kNone);
  EXPECT_FALSE(state.remaining);
}

TEST_F(EngineTest, ASaveIsOverWhenTheServerHasSavedOnceMore) {
  server.On("BGSAVE", {{"+Background saving started\r\n"}});
  server.On("INFO", {Saves(true, 3, "ok"), Saves(false, 4, "ok"), Saves(false, 4, "ok"), Saves(true, 4, "ok"),
                     Saves(false, 5, "ok")});
  EXPECT_TRUE(engine->Save({}).ok()) << "one that was under way does not count";
  EXPECT_EQ(server.Log(), (std::vector<std::string>{"PING", "INFO persistence", "INFO persistence", "BGSAVE SCHEDULE",
                                                    "INFO persistence", "INFO persistence", "INFO persistence"}));
  server.On("INFO", {Saves(false, 5, "ok"), Saves(false, 6, "err")});
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kFailed);
}

TEST_F(EngineTest, ASaveThatGoesWrong) {
  server.On("BGSAVE", {{"+Background saving started\r\n"}});
  server.On("INFO", {Saves(false, 3, "ok"), {kRefusal}});
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kOutcomeUnknown) << "nobody says whether it is over";
  server.On("INFO", {Saves(false, 3, "ok")});
  server.On("BGSAVE", {{kRefusal}});
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kReadOnly);
  server.On("INFO", {{kRefusal}});
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kReadOnly);
  server.On("INFO", {{":1\r\n"}});
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kFailed);
  server.On("BGSAVE", {{"+Background saving started\r\n"}});
  server.On("INFO", {Saves(true, 3, "ok")});
  EXPECT_EQ(engine->Save(milliseconds(300)).code(), StatusCode::kUnavailable) << "another one is not over";
  server.On("INFO", {Saves(false, 3, "ok")});
  EXPECT_EQ(engine->Save(milliseconds(300)).code(), StatusCode::kOutcomeUnknown) << "it is not over";
  ConnectToCluster();
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kReadOnly) << "the nodes are not known";
}

TEST_F(EngineTest, ASummaryIsAddedUpFromItsPages) {
  server.On("EVALSHA", {{"*7\r\n$1\r\n9\r\n:1\r\n:0\r\n:0\r\n:0\r\n:0\r\n:1\r\n"},
                        {"*7\r\n$1\r\n0\r\n:2\r\n:3\r\n:4\r\n:5\r\n:6\r\n:0\r\n"}});
  DatabaseSummary summary;
  ASSERT_TRUE(engine->Summarize({0, {}}, &summary).ok());
  EXPECT_EQ(summary.strings, 3U);
  EXPECT_EQ(summary.keys(), 21U);
  EXPECT_EQ(summary.expiring, 1U);
  for (const std::string answer : {":1\r\n", "*1\r\n$1\r\n0\r\n", "*7\r\n:0\r\n:1\r\n:1\r\n:1\r\n:1\r\n:1\r\n:1\r\n",
                                   "*7\r\n$1\r\n0\r\n:1\r\n:1\r\n$1\r\n1\r\n:1\r\n:1\r\n:1\r\n"}) {
    server.On("EVALSHA", {{answer}});
    EXPECT_EQ(engine->Summarize({0, {}}, &summary).code(), StatusCode::kFailed) << answer;
  }
  server.On("EVALSHA", {{kRefusal}});
  EXPECT_EQ(engine->Summarize({0, {}}, &summary).code(), StatusCode::kReadOnly);
}

TEST_F(EngineTest, AClusterIsDescribedAsItIsNow) {
  std::string lines;
  ConnectToCluster();
  EXPECT_EQ(engine->Describe({}, &lines).code(), StatusCode::kReadOnly);
  EXPECT_EQ(lines, "");
}

TEST_F(EngineTest, AScanThatCannotBegin) {
  std::unique_ptr<Cursor> cursor;
  server.On("DBSIZE", {{kRefusal}});
  EXPECT_EQ(engine->Scan({0, "*"}, Bring::kNames, &cursor).code(), StatusCode::kReadOnly);
  server.On("DBSIZE", {{"$1\r\n1\r\n"}});
  EXPECT_EQ(engine->Scan({0, "*"}, Bring::kNames, &cursor).code(), StatusCode::kFailed);
  ConnectToCluster();
  EXPECT_EQ(engine->Scan({0, "*"}, Bring::kNames, &cursor).code(), StatusCode::kReadOnly);
  EXPECT_EQ(cursor, nullptr);
}

TEST_F(EngineTest, TheEnvironmentMakesItACluster) {
  server.On("CLUSTER", {{kRefusal}});
  for (const char* value : {"", "0"}) {
    setenv("TQ_MOM_CLUSTER", value, 1);
    EXPECT_TRUE(engine->Connect(false, {}).ok()) << value;
  }
  setenv("TQ_MOM_CLUSTER", "1", 1);
  EXPECT_EQ(engine->Connect(false, {}).code(), StatusCode::kReadOnly) << "it asks for the slots";
  unsetenv("TQ_MOM_CLUSTER");
}

TEST(ServerEngine, ANameThatIsNoneOpensNothing) {
  std::unique_ptr<Engine> engine;
  const Status status = OpenServerEngine("redis://", &engine);
  EXPECT_EQ(status.code(), StatusCode::kFailed);
  EXPECT_NE(status.text().find("host"), std::string::npos);
  EXPECT_EQ(engine, nullptr);
}

}  // namespace
}  // namespace hostkit

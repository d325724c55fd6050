// What only a shared store has: other processes, what they see, its refusals, its size.
#include "store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <thread>

#include "hostkit/server_connection.h"
#include "hostkit/server_engine.h"
#include "hostkit/server_router.h"
#include "hostkit/server_scan.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;

// Runs the body in another process; whether it returned true there.
class OtherProcess {
 public:
  explicit OtherProcess(const std::function<bool()>& body) : id_(fork()) {
    if (id_ == 0) _exit(body() ? 0 : 1);
  }
  bool Succeeded() const {
    int status = 0;
    return waitpid(id_, &status, 0) == id_ && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  const pid_t id_;
};

TEST(SharedStore, ProcessesWriteTogether) {
  constexpr int kEach = 500;
  const std::string name = StoreName();
  const auto work = [&] {
    const std::unique_ptr<Engine> engine = OpenNamed(name);
    std::int64_t count = 0;
    bool good = true;
    for (int turn = 0; turn < kEach; ++turn) {
      good = good && engine->Increment({0, "count"}, &count).ok() &&
             engine->ListPush({1, "list"}, End::kTail, "x", &count).ok();
    }
    return good;
  };
  const OtherProcess other(work);
  EXPECT_TRUE(work());
  EXPECT_TRUE(other.Succeeded());
  const std::unique_ptr<Engine> engine = OpenNamed(name);
  std::optional<std::string> count;
  std::int64_t length = 0;
  ASSERT_TRUE(engine->Get({0, "count"}, &count).ok());
  ASSERT_TRUE(engine->ListLength({1, "list"}, &length).ok());
  EXPECT_EQ(count, std::to_string(2 * kEach));
  EXPECT_EQ(length, 2 * kEach);
}

TEST(SharedStore, MessagesReachAnotherProcess) {
  const std::string name = StoreName();
  const std::unique_ptr<Engine> engine = OpenNamed(name);
  const OtherProcess other([&] {
    const std::unique_ptr<Engine> subscriber = OpenNamed(name);
    bool ready = subscriber->Subscribe({3, "port/[ab]*"}).ok() && subscriber->Set({0, "ready"}, "", {}).ok();
    std::vector<Message> messages;
    while (ready && messages.size() < 2) {
      const std::size_t before = messages.size();
      ready = subscriber->Poll(milliseconds(5000), &messages).ok() && messages.size() > before;
    }
    return ready && messages[0].db == 3 && messages[0].pattern == "port/[ab]*" && messages[0].name == "port/a1" &&
           messages[0].value == std::string("1\0", 2) && messages[1].name == "port/b";
  });
  bool ready = false;
  while (!ready) ASSERT_TRUE(engine->Exists({0, "ready"}, &ready).ok());
  std::int64_t receivers = 0;
  ASSERT_TRUE(engine->Publish({3, "port/c"}, "no", &receivers).ok());
  EXPECT_EQ(receivers, 0);
  ASSERT_TRUE(engine->Publish({4, "port/a"}, "no", &receivers).ok());
  EXPECT_EQ(receivers, 0);
  ASSERT_TRUE(engine->Publish({3, "port/a1"}, std::string_view("1\0", 2), &receivers).ok());
  EXPECT_EQ(receivers, 1);
  ASSERT_TRUE(engine->Publish({3, "port/b"}, "2", &receivers).ok());
  EXPECT_TRUE(other.Succeeded());
}

TEST(SharedStore, AMessageReachesEveryNode) {
  if (!StoreIsCluster()) GTEST_SKIP() << "one node is every node";
  const std::unique_ptr<Engine> engine = OpenNamed(std::getenv("TQ_MOM_STORE"));
  const std::string nodes = Ask(StoreAddress(), "cluster nodes");
  const ServerOptions options;
  std::vector<std::unique_ptr<Connection>> connections;
  for (std::size_t at = nodes.find(':'); at != std::string::npos;) {
    const ServerAddress node = {"127.0.0.1", std::stoi(nodes.substr(at + 1))};
    auto& connection = connections.emplace_back(std::make_unique<Connection>(node, options));
    ServerCommand subscribe(Effect::kReads, "SUBSCRIBE");
    subscribe.Add("5:news");
    const ServerCommand* const commands[] = {&subscribe};
    std::vector<ReplyPtr> replies;
    std::string why;
    ASSERT_EQ(connection->Exchange(commands, CallEnd(milliseconds(2000)), &replies, &why), Delivery::kAnswered) << why;
    const std::size_t line = nodes.find('\n', at);
    at = line != std::string::npos ? nodes.find(':', line) : line;
  }
  EXPECT_EQ(connections.size(), 6U);
  std::int64_t receivers = 0;
  ASSERT_TRUE(engine->Publish({5, "news"}, "v", &receivers).ok());
  for (const auto& connection : connections) {
    ReplyPtr reply;
    std::string why;
    ASSERT_TRUE(connection->Receive(CallEnd(milliseconds(2000)), &reply, &why)) << why;
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(TextOf(*reply->element[2]), "v");
  }
}

TEST(SharedStore, APersonSeesWhatOneExpects) {
  if (StoreIsCluster()) GTEST_SKIP() << "redis-cli is asked at one node";
  const std::unique_ptr<Engine> engine = OpenNamed(std::string(std::getenv("TQ_MOM_STORE")) + "?prefix=lab:");
  std::int64_t count = 0;
  bool added = false;
  const FieldView fields[] = {{7, "up"}};
  const ScoredView members[] = {{"m", 1.5}};
  ASSERT_TRUE(engine->Set({4, "a key"}, "v", 100000).ok());
  ASSERT_TRUE(engine->HashSet({4, "hash"}, fields).ok());
  ASSERT_TRUE(engine->ListPush({4, "list"}, End::kHead, "x", &count).ok());
  ASSERT_TRUE(engine->SetAdd({4, "set"}, "x", &added).ok());
  ASSERT_TRUE(engine->SortedAdd({37, "sorted"}, members, &count).ok());
  const ServerAddress server = StoreAddress();
  EXPECT_EQ(Ask(server, "get 'lab:4:a key'"), "v");
  EXPECT_EQ(Ask(server, "type lab:4:list"), "list");
  EXPECT_EQ(Ask(server, "type lab:4:set"), "set");
  EXPECT_EQ(Ask(server, "hgetall lab:4:hash"), "7\nup");
  EXPECT_EQ(Ask(server, "zrange lab:37:sorted 0 -1 withscores"), "m\n1.5");
  EXPECT_GT(std::stoll(Ask(server, "pttl 'lab:4:a key'")), 0);
}

// A field's deadline is kept in its hash, and goes with the field.
TEST(SharedStore, AHashKeepsItsFieldsDeadlines) {
  if (StoreIsCluster()) GTEST_SKIP() << "redis-cli is asked at one node";
  const std::unique_ptr<Engine> engine = OpenNamed(std::string(std::getenv("TQ_MOM_STORE")) + "?prefix=deadlines:");
  const FieldView fields[] = {{1, "a"}, {2, "b"}};
  const FieldTag tags[] = {1, 2};
  std::int64_t count = 0;
  bool expires = false;
  ASSERT_TRUE(engine->HashSet({0, "hash"}, fields).ok());
  ASSERT_TRUE(engine->Expire({0, "hash"}, 500000, &expires).ok());
  ASSERT_TRUE(engine->HashExpire({0, "hash"}, tags, 1000, &count).ok());
  const ServerAddress server = StoreAddress();
  const std::string key = "deadlines:0:hash";
  EXPECT_LE(std::stoll(Ask(server, "pttl " + key)), 1000);  // it goes with its last field
  EXPECT_EQ(Ask(server, "hlen " + key), "5");
  ASSERT_TRUE(engine->HashSet({0, "hash"}, std::span(fields).first(1)).ok());
  EXPECT_GT(std::stoll(Ask(server, "pttl " + key)), 1000);  // what the key was told counts again
  EXPECT_EQ(Ask(server, "hlen " + key), "3");
  ASSERT_TRUE(engine->HashExpire({0, "hash"}, std::span(tags).last(1), 0, &count).ok());
  EXPECT_EQ(Ask(server, "hgetall " + key), "1\na");
}

TEST(SharedStore, ASaveOutlivesTheServer) {
  const std::unique_ptr<Engine> engine = OpenStore();
  const std::int64_t before = std::stoll(Ask(StoreAddress(), "lastsave"));
  std::this_thread::sleep_for(milliseconds(1100));
  const Status status = engine->Save({});
  EXPECT_TRUE(status.ok()) << status.text();
  EXPECT_GT(std::stoll(Ask(StoreAddress(), "lastsave")), before);
  // Something stands where the file should go.
  const std::string folder = Ask(StoreAddress(), "config get dir").substr(4);
  const std::string file = folder + "/dump.rdb";
  ASSERT_EQ(unlink(file.c_str()), 0);
  ASSERT_EQ(mkdir(file.c_str(), 0700), 0);
  EXPECT_EQ(engine->Save({}).code(), StatusCode::kFailed);
  ASSERT_EQ(rmdir(file.c_str()), 0);
  EXPECT_TRUE(engine->Save({}).ok());
}

TEST(SharedStore, DescribeShowsNodesAndSlots) {
  const std::unique_ptr<Engine> engine = OpenStore();
  std::string lines;
  ASSERT_TRUE(engine->Describe({}, &lines).ok());
  EXPECT_NE(lines.find(ToText(StoreAddress())), std::string::npos);
  EXPECT_EQ(lines.find("0-5460") != std::string::npos, StoreIsCluster());
}

class Refusals : public ::testing::Test {
 protected:
  void SetUp() override {
    if (StoreIsCluster()) GTEST_SKIP() << "one server is told to refuse";
    engine_ = OpenStore();
  }

  static std::string Configure(const std::string& command) { return Ask(StoreAddress(), command); }

  static Status Connected(const std::string& name) {
    std::unique_ptr<Engine> engine;
    Status status = OpenServerEngine(name, &engine);
    return status.ok() ? engine->Connect(false, {}) : status;
  }

  static std::string At(const std::string& credentials) {
    return "redis://" + credentials + "@" + ToText(StoreAddress());
  }

  std::unique_ptr<Engine> engine_;
};

TEST_F(Refusals, Passwords) {
  ASSERT_EQ(Configure("config set requirepass pa55word"), "OK");
  const Status none = Connected(std::getenv("TQ_MOM_STORE"));
  const Status wrong = Connected(At(":other55"));
  const Status right = Connected(At(":pa55word"));
  ASSERT_EQ(Configure("-a pa55word --no-auth-warning config set requirepass ''"), "OK");
  EXPECT_EQ(none.code(), StatusCode::kUnavailable);
  EXPECT_NE(none.text().find("NOAUTH"), std::string::npos);
  EXPECT_EQ(wrong.code(), StatusCode::kUnavailable);
  EXPECT_EQ(wrong.text().find("other55"), std::string::npos);
  EXPECT_TRUE(right.ok()) << right.text();
}

TEST_F(Refusals, AUserThatMayOnlyRead) {
  ASSERT_EQ(Configure("acl setuser reader on '>pa55word' '~*' '&*' +@read +@connection +@scripting"), "OK");
  const std::unique_ptr<Engine> reader = OpenNamed(At("reader:pa55word"));
  std::optional<std::string> value;
  std::int64_t count = 0;
  const FieldView fields[] = {{1, "x"}};
  EXPECT_TRUE(reader->Get({0, "k"}, &value).ok());
  EXPECT_EQ(reader->Set({0, "k"}, "v", {}).code(), StatusCode::kReadOnly);
  EXPECT_EQ(reader->ListPop({0, "k"}, End::kHead, &value, &count).code(), StatusCode::kReadOnly);
  EXPECT_EQ(reader->HashSet({0, "k"}, fields).code(), StatusCode::kReadOnly);
}

TEST_F(Refusals, AServerWithoutMemory) {
  const FieldView fields[] = {{1, "x"}};
  ASSERT_TRUE(engine_->HashSet({0, "hash"}, fields).ok());
  ASSERT_EQ(Configure("config set maxmemory 1"), "OK");
  const Status set = engine_->Set({0, "k"}, "v", {});
  const Status hash = engine_->HashSet({0, "hash"}, fields);
  std::optional<std::string> value;
  const Status get = engine_->Get({0, "k"}, &value);
  ASSERT_EQ(Configure("config set maxmemory 0"), "OK");
  EXPECT_EQ(set.code(), StatusCode::kOutOfMemory);
  EXPECT_EQ(hash.code(), StatusCode::kOutOfMemory);
  EXPECT_TRUE(get.ok());
}

TEST_F(Refusals, AReplicaTakesNoWrites) {
  ASSERT_EQ(Configure("replicaof 127.0.0.1 1"), "OK");
  const Status set = engine_->Set({0, "k"}, "v", {});
  bool stored = false;
  const Status expire = engine_->Expire({0, "k"}, 5000, &stored);
  ASSERT_EQ(Configure("replicaof no one"), "OK");
  EXPECT_EQ(set.code(), StatusCode::kReadOnly);
  EXPECT_TRUE(expire.ok());  // there is nothing to write
  EXPECT_FALSE(stored);
}

TEST_F(Refusals, NobodyThere) {
  const auto start = std::chrono::steady_clock::now();
  const Status status = Connected("redis://127.0.0.1:1?connect_timeout=300");
  EXPECT_EQ(status.code(), StatusCode::kUnavailable);
  EXPECT_NE(status.text().find("127.0.0.1:1"), std::string::npos);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(2000));
}

TEST_F(Refusals, TooFewReplicas) {
  const std::unique_ptr<Engine> waiting = OpenNamed(StoreName("wait=1&timeout=200"));
  EXPECT_EQ(waiting->Set({0, "k"}, "v", {}).code(), StatusCode::kOutcomeUnknown);
  std::optional<std::string> value;
  EXPECT_TRUE(waiting->Get({0, "k"}, &value).ok());
  EXPECT_EQ(value, "v");
}

TEST_F(Refusals, AServerIsNoCluster) {
  std::unique_ptr<Engine> engine;
  ASSERT_TRUE(OpenServerEngine(StoreName(), &engine).ok());
  EXPECT_EQ(engine->Connect(true, {}).code(), StatusCode::kFailed);
}

TEST_F(Refusals, ASocketWorksLikeAPort) {
  const std::string path = Ask(StoreAddress(), "config get unixsocket").substr(std::string("unixsocket\n").size());
  EXPECT_TRUE(Connected("redis+unix://" + path).ok());
  EXPECT_EQ(Connected("redis+unix://" + path + "-none").code(), StatusCode::kUnavailable);
}

// A scan of many keys, with bounds that make it walk several times.
class LargeScan : public ::testing::Test {
 protected:
  static constexpr int kKeys = 3000;

  void SetUp() override {
    for (int number = 0; number < kKeys; ++number) {
      ASSERT_TRUE(engine_->Set({0, "key" + std::to_string(number)}, std::to_string(number), {}).ok());
    }
    ASSERT_TRUE(router_.Connect(StoreIsCluster(), CallEnd(milliseconds(2000))).ok());
  }

  // Visits all keys; calls between after each batch.
  std::map<std::string, int> Visit(const std::string& pattern, Bring bring, const std::function<void()>& between) {
    ServerScan scan(&router_, options_, {0, pattern}, bring, {500, 50});
    EXPECT_TRUE(scan.Start().ok());
    std::map<std::string, int> visits;
    for (std::vector<Element> batch;;) {
      batch.clear();
      const Status status = scan.Next(40, &batch);
      EXPECT_TRUE(status.ok()) << status.text();
      if (batch.empty()) return visits;
      for (const Element& element : batch) {
        ++visits[element.name];
        EXPECT_EQ(element.value, bring == Bring::kStrings ? element.name.substr(3) : "");
      }
      between();
    }
  }

  const std::string name_ = StoreName();
  const std::unique_ptr<Engine> engine_ = OpenNamed(name_);
  const ServerOptions options_ = [this] {
    ServerOptions options;
    std::string error;
    EXPECT_TRUE(ParseServerUrl(name_, &options, &error)) << error;
    return options;
  }();
  Router router_{options_, [this](const ServerAddress& node) { return std::make_unique<Connection>(node, options_); },
                 [](std::chrono::microseconds time) { std::this_thread::sleep_for(time); }};
};

TEST_F(LargeScan, EachKeyOnce) {
  for (const Bring bring : {Bring::kNames, Bring::kStrings}) {
    const std::map<std::string, int> visits = Visit("*", bring, [] {});
    EXPECT_EQ(visits.size(), static_cast<std::size_t>(kKeys));
    for (const auto& [name, count] : visits) EXPECT_EQ(count, 1) << name;
  }
  EXPECT_EQ(Visit("key1??", Bring::kNames, [] {}).size(), 100U);
}

// A server whose table shrinks hands keys out again.
TEST_F(LargeScan, EachKeyOnceWhileMostAreDeleted) {
  int number = 0;
  const auto removed = [](int candidate) { return candidate % 50 != 0; };
  const std::map<std::string, int> visits = Visit("*", Bring::kNames, [&] {
    for (int turn = 0; turn < 300 && number < kKeys; ++turn, ++number) {
      bool deleted = false;
      if (removed(number)) {
        ASSERT_TRUE(engine_->Delete({0, "key" + std::to_string(number)}, &deleted).ok());
      }
    }
  });
  for (const auto& [name, count] : visits) EXPECT_EQ(count, 1) << name;
  for (int kept = 0; kept < kKeys; kept += 50) EXPECT_TRUE(visits.contains("key" + std::to_string(kept))) << kept;
}

TEST(Hashes, TheMemoryOfAScanHoldsEachOnce) {
  HashMemory memory;
  for (const std::uint64_t hash : {0U, 1U, 64U, 128U}) EXPECT_EQ(memory.Insert(hash), hash != 1);  // 0 counts as 1
  for (std::uint64_t hash = 1000; hash < 3000; ++hash) EXPECT_TRUE(memory.Insert(hash << 20));
  for (std::uint64_t hash = 1000; hash < 3000; ++hash) EXPECT_FALSE(memory.Insert(hash << 20));
  memory.Clear();
  EXPECT_TRUE(memory.Insert(64));
}

}  // namespace
}  // namespace hostkit

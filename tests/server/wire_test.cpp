// What goes wrong on the wire: no crash, no hang, no wrong answer, and no write done twice.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "hostkit/server_engine.h"
#include "proxy.h"
#include "store.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// A command, and what it gives as text when all is well.
struct Operation {
  const char* name;
  bool writes;
  Status (*run)(Engine* engine, std::string* result);
};

constexpr Request kText{0, "text"};
constexpr Request kList{0, "list"};
constexpr Request kHash{0, "hash"};
constexpr Request kSorted{0, "sorted"};
constexpr Request kCount{0, "count"};

const Operation kOperations[] = {
    {"get", false,
     [](Engine* engine, std::string* result) {
       std::optional<std::string> value;
       Status status = engine->Get(kText, &value);
       *result = value.value_or("none");
       return status;
     }},
    {"lrange", false,
     [](Engine* engine, std::string* result) {
       std::vector<std::string> values;
       Status status = engine->ListRange(kList, 0, 2, &values);
       for (const std::string& value : values) *result += value + ' ';
       return status;
     }},
    {"hgetall", false,
     [](Engine* engine, std::string* result) {
       HashContents hash;
       Status status = engine->HashGetAll(kHash, &hash);
       for (const Field& field : hash.fields) *result += std::to_string(field.tag) + '=' + field.bytes + ' ';
       return status;
     }},
    {"zrange", false,
     [](Engine* engine, std::string* result) {
       std::vector<ScoredMember> members;
       Status status = engine->SortedRange(kSorted, 0, -1, &members);
       for (const ScoredMember& scored : members) *result += scored.member + '=' + std::to_string(scored.score) + ' ';
       return status;
     }},
    {"exists", false,
     [](Engine* engine, std::string* result) {
       bool exists = false;
       Status status = engine->Exists(kText, &exists);
       *result = exists ? "1" : "0";
       return status;
     }},
    {"incr", true,
     [](Engine* engine, std::string* result) {
       std::int64_t value = 0;
       Status status = engine->Increment(kCount, &value);
       if (status.ok()) *result = "counted";
       return status;
     }},
    {"rpush", true,
     [](Engine* engine, std::string* result) {
       std::int64_t length = 0;
       Status status = engine->ListPush(kList, End::kTail, "more", &length);
       if (status.ok()) *result = "pushed";
       return status;
     }},
    {"hmset", true,
     [](Engine* engine, std::string* result) {
       const FieldView fields[] = {{1, "one"}};
       Status status = engine->HashSet(kHash, fields);
       if (status.ok()) *result = "set";
       return status;
     }},
};

class Wire : public ::testing::Test {
 protected:
  void SetUp() override {
    direct_ = OpenNamed(name_);
    std::int64_t count = 0;
    for (const char* value : {"first", "", "third"}) {
      ASSERT_TRUE(direct_->ListPush(kList, End::kTail, value, &count).ok());
    }
    ASSERT_TRUE(direct_->Set(kText, std::string_view("a\r\n\0b", 5), {}).ok());
    const FieldView fields[] = {{1, "one"}, {4294967295U, ""}};
    ASSERT_TRUE(direct_->HashSet(kHash, fields).ok());
    const ScoredView members[] = {{"m", 1.5}, {"n", -2}};
    ASSERT_TRUE(direct_->SortedAdd(kSorted, members, &count).ok());
    Reconnect("timeout=2000");
    // The scripts are known from here on.
    for (const Operation& operation : kOperations) Expect(operation, StatusCode::kOk);
  }

  // A new engine behind the proxy.
  void Reconnect(const std::string& options) {
    const std::size_t prefix = name_.find('?');
    engine_ = OpenNamed("redis://127.0.0.1:" + std::to_string(proxy_.port()) + name_.substr(prefix) + options);
  }

  std::string Direct(const Operation& operation) {
    std::string result;
    EXPECT_TRUE(operation.run(direct_.get(), &result).ok()) << operation.name;
    return result;
  }

  // Runs the operation through the proxy and checks its result if it has one.
  void Expect(const Operation& operation, StatusCode code) {
    std::string result;
    const Status status = operation.run(engine_.get(), &result);
    EXPECT_EQ(status.code(), code) << operation.name << ": " << status.text();
    if (code == StatusCode::kOk && !operation.writes) {
      EXPECT_EQ(result, Direct(operation)) << operation.name;
    }
    EXPECT_EQ(status.text().empty(), code == StatusCode::kOk);
  }

  // What the writes have done so far.
  std::int64_t Count() {
    std::int64_t length = 0;
    std::optional<std::string> count;
    EXPECT_TRUE(direct_->ListLength(kList, &length).ok());
    EXPECT_TRUE(direct_->Get(kCount, &count).ok());
    return length + std::stoll(count.value_or("0"));
  }

  const std::string name_ = StoreName();
  Proxy proxy_{StoreAddress()};
  std::unique_ptr<Engine> direct_;
  std::unique_ptr<Engine> engine_;
};

TEST_F(Wire, AnswersCutAtEveryByte) {
  for (const Operation& operation : kOperations) {
    Expect(operation, StatusCode::kOk);
    const std::size_t size = proxy_.last_size();
    ASSERT_GT(size, 0U);
    for (std::size_t cut = 0; cut < size; ++cut) {
      const std::int64_t before = Count();
      proxy_.Break({cut, {}, {}, false});
      Expect(operation, operation.writes ? StatusCode::kOutcomeUnknown : StatusCode::kOk);
      EXPECT_LE(Count() - before, 1) << operation.name << " was done again";
      Expect(operation, StatusCode::kOk);
    }
  }
}

TEST_F(Wire, Garbage) {
  for (const std::string& garbage :
       {std::string("HTTP/1.1 200 OK\r\n\r\n"), std::string("\0\0\0\0", 4), std::string(100000, '\xff'),
        std::string("$-7\r\n"), std::string(":12x\r\n"), std::string("*1\r\n*1\r\n?\r\n"), std::string("\r\n\r\n")}) {
    for (const Operation& operation : kOperations) {
      const std::int64_t before = Count();
      proxy_.Break({{}, garbage, {}, false});
      Expect(operation, operation.writes ? StatusCode::kOutcomeUnknown : StatusCode::kOk);
      EXPECT_LE(Count() - before, 1) << operation.name << " was done again";
      Expect(operation, StatusCode::kOk);
    }
  }
}

// Well formed, but no answer to this command.
TEST_F(Wire, AnswersOfAnotherForm) {
  for (const Operation& operation : kOperations) {
    proxy_.Break({{}, "*1\r\n*0\r\n", {}, false});
    std::string result;
    const Status status = operation.run(engine_.get(), &result);
    EXPECT_EQ(status.code(), operation.writes ? StatusCode::kOutcomeUnknown : StatusCode::kFailed) << operation.name;
    Expect(operation, StatusCode::kOk);
  }
}

TEST_F(Wire, ASlowAnswerIsAnAnswer) {
  for (const Operation& operation : kOperations) {
    proxy_.Break({{}, {}, milliseconds(1), false});
    Expect(operation, StatusCode::kOk);
  }
}

TEST_F(Wire, ACallEndsInTime) {
  Reconnect("timeout=60");
  for (const Operation& operation : kOperations) {
    for (const bool trickles : {false, true}) {
      proxy_.Break({{}, trickles ? std::optional<std::string>() : "$100\r\n", milliseconds(trickles ? 15 : 0), false});
      const Clock::time_point start = Clock::now();
      std::string result;
      const Status status = operation.run(engine_.get(), &result);
      EXPECT_LT(Clock::now() - start, milliseconds(1000)) << operation.name;
      if (!trickles) {
        EXPECT_EQ(status.code(), operation.writes ? StatusCode::kOutcomeUnknown : StatusCode::kUnavailable)
            << operation.name;
      }
      std::this_thread::sleep_for(milliseconds(trickles ? 500 : 0));  // the rest of the answer is gone by then
    }
  }
}

TEST_F(Wire, AConnectionThatWasClosedWhileIdleIsOpenedAgain) {
  for (const Operation& operation : kOperations) {
    const int before = proxy_.connections();
    proxy_.CloseAll();
    std::this_thread::sleep_for(milliseconds(30));
    Expect(operation, StatusCode::kOk);
    EXPECT_EQ(proxy_.connections(), before + 1);
  }
}

TEST_F(Wire, ConnectingToWhoDoesNotAnswerEndsInTime) {
  const std::string name = "redis://127.0.0.1:" + std::to_string(proxy_.port()) + "?connect_timeout=100";
  std::unique_ptr<Engine> engine;
  ASSERT_TRUE(OpenServerEngine(name, &engine).ok());
  proxy_.Break({{}, {}, {}, true});
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(engine->Connect(false, {}).code(), StatusCode::kUnavailable);
  EXPECT_LT(Clock::now() - start, milliseconds(1500));
}

TEST_F(Wire, MessagesAfterABreak) {
  std::int64_t receivers = 0;
  std::vector<Message> messages;
  ASSERT_TRUE(engine_->Subscribe({0, "news/*"}).ok());
  proxy_.CloseAll();
  std::this_thread::sleep_for(milliseconds(30));
  engine_->Poll(milliseconds(0), &messages).ok();  // notices
  ASSERT_TRUE(engine_->Poll(milliseconds(0), &messages).ok());
  ASSERT_TRUE(direct_->Publish({0, "news/1"}, "again", &receivers).ok());
  EXPECT_EQ(receivers, 1);
  ASSERT_TRUE(engine_->Poll(milliseconds(2000), &messages).ok());
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].value, "again");
}

}  // namespace
}  // namespace hostkit

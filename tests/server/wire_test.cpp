// What goes wrong on the wire: no crash, no hang, no wrong answer, and no write done twice.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

#include "hostkit/server_engine.h"
#include "proxy.h"
#include "store.h"

namespace hostkit {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// Results as text.
std::string Shown(std::int64_t number) { return std::to_string(number); }
std::string Shown(bool flag) { return flag ? "yes" : "no"; }
std::string Shown(double number) { return std::to_string(number); }
std::string Shown(const std::string& text) { return text; }
std::string Shown(const Field& field) { return std::to_string(field.tag) + '=' + field.bytes; }
std::string Shown(const FieldRemaining& field) { return std::to_string(field.tag) + " expires"; }
std::string Shown(const ScoredMember& scored) { return scored.member + '=' + Shown(scored.score); }
std::string Shown(const Element& element) { return element.name + '=' + element.value; }
std::string Shown(const KeyState& state) {
  return Shown(std::int64_t{static_cast<int>(state.kind)}) + (state.remaining ? " expires" : "");
}
template <typename Value> std::string Shown(const std::optional<Value>& value) {
  return value ? Shown(*value) : "none";
}
template <typename Value> std::string Shown(const std::vector<Value>& values) {
  std::string text;
  for (const Value& value : values) text += Shown(value) + ' ';
  return text;
}
std::string Shown(const HashContents& hash) { return Shown(hash.fields); }

// A call of the engine, and what it gives as text when all is well.
struct Operation {
  const char* name;
  bool writes;
  std::function<Status(Engine* engine, std::string* result)> run;
};

// Calls a method with those arguments, and with a place for its result if it has one.
template <typename... Parameters, typename... Arguments>
auto Calling(Status (Engine::*method)(Parameters...), Arguments... arguments) {
  return [=](Engine* engine, std::string* result) {
    if constexpr (sizeof...(Parameters) == sizeof...(Arguments)) {
      return (engine->*method)(arguments...);
    } else {
      using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
      std::remove_pointer_t<Last> out = {};
      Status status = (engine->*method)(arguments..., &out);
      if (status.ok()) *result = Shown(out);
      return status;
    }
  };
}

constexpr Request kText{0, "text"};
constexpr Request kList{0, "list"};
constexpr Request kHash{0, "hash"};
constexpr Request kSorted{0, "sorted"};
constexpr Request kSet{0, "set"};
constexpr Request kCount{0, "count"};
// Of each kind one whose contents nobody looks at.
constexpr Request kOtherText{1, "text"};
constexpr Request kOtherList{1, "list"};
constexpr Request kNoList{1, "none"};
constexpr Request kOtherHash{1, "hash"};
constexpr Request kOtherSorted{1, "sorted"};
constexpr Request kOtherSet{1, "set"};

constexpr std::array kTags = {FieldTag{1}, FieldTag{4294967295U}};
constexpr std::array kFields = {FieldView{1, "one"}, FieldView{4294967295U, ""}};
constexpr std::array kScored = {ScoredView{"m", 1.5}, ScoredView{"n", -2}};
constexpr std::array kMembers = {std::string_view("m"), std::string_view("x")};

const Operation kOperations[] = {
    {"get", false, Calling(&Engine::Get, kText)},
    {"exists", false, Calling(&Engine::Exists, kText)},
    {"inspect", false, Calling(&Engine::Inspect, kText)},
    {"read", false, Calling(&Engine::ReadElement, kText)},
    {"hmget", false, Calling(&Engine::HashGet, kHash, kTags)},
    {"hgetall", false, Calling(&Engine::HashGetAll, kHash)},
    {"remaining", false, Calling(&Engine::HashRemaining, kHash)},
    {"llen", false, Calling(&Engine::ListLength, kOtherList)},
    {"lrange", false, Calling(&Engine::ListRange, kList, 0, 2)},
    {"sismember", false, Calling(&Engine::SetContains, kSet, "m")},
    {"scard", false, Calling(&Engine::SetSize, kSet)},
    {"smembers", false, Calling(&Engine::SetMembers, kSet)},
    {"zcard", false, Calling(&Engine::SortedSize, kSorted)},
    {"zcount", false, Calling(&Engine::SortedCount, kSorted, -5, 5)},
    {"zrange", false, Calling(&Engine::SortedRange, kSorted, 0, -1)},
    {"zrangebyscore", false, Calling(&Engine::SortedRangeByScore, kSorted, -5, 5)},
    {"zrank", false, Calling(&Engine::SortedRank, kSorted, "m")},
    {"zscore", false, Calling(&Engine::SortedScore, kSorted, "m")},
    {"incr", true, Calling(&Engine::Increment, kCount)},
    {"rpush", true, Calling(&Engine::ListPush, kList, End::kTail, "more")},
    {"del", true, Calling(&Engine::Delete, kOtherText)},
    {"expire", true, Calling(&Engine::Expire, kOtherText, 5000U)},
    {"persist", true, Calling(&Engine::Persist, kOtherText, 0U)},
    {"set", true, Calling(&Engine::Set, kOtherText, "v", std::nullopt)},
    {"psetex", true, Calling(&Engine::Set, kOtherText, "v", 5000U)},
    {"setnx", true, Calling(&Engine::SetIfAbsent, kOtherText, "v")},
    {"hmset", true, Calling(&Engine::HashSet, kOtherHash, kFields)},
    {"hmsetnx", true, Calling(&Engine::HashSetIfAbsent, kOtherHash, kFields)},
    {"expire_field", true, Calling(&Engine::HashExpire, kOtherHash, kTags, 5000U)},
    {"lpush", true, Calling(&Engine::ListPush, kOtherList, End::kHead, "v")},
    {"lpop", true,
     [](Engine* engine, std::string* /*result*/) {
       std::optional<std::string> value;
       std::int64_t left = 0;
       return engine->ListPop(kNoList, End::kHead, &value, &left);
     }},
    {"linsert", true, Calling(&Engine::ListInsert, kList, "third", Where::kBefore, "more")},
    {"lset", true, Calling(&Engine::ListSet, kList, 0, "first")},
    {"lrem", true, Calling(&Engine::ListRemove, kOtherList, 1U, "w")},
    {"sadd", true, Calling(&Engine::SetAdd, kOtherSet, "m")},
    {"srem", true, Calling(&Engine::SetRemove, kOtherSet, "m")},
    {"zadd", true, Calling(&Engine::SortedAdd, kOtherSorted, kScored)},
    {"zrem", true, Calling(&Engine::SortedRemove, kOtherSorted, kMembers)},
    {"zremrangebyrank", true, Calling(&Engine::SortedRemoveRange, kOtherSorted, 5, 6)},
    {"zremrangebyscore", true, Calling(&Engine::SortedRemoveRangeByScore, kOtherSorted, 5, 6)},
    {"publish", true, Calling(&Engine::Publish, kText, "v")},
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
    ASSERT_TRUE(direct_->HashSet(kHash, kFields).ok());
    ASSERT_TRUE(direct_->SortedAdd(kSorted, kScored, &count).ok());
    bool added = false;
    ASSERT_TRUE(direct_->SetAdd(kSet, "m", &added).ok());
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

TEST_F(Wire, EachCallIsOneRoundTrip) {
  for (const Operation& operation : kOperations) {
    const int before = proxy_.round_trips();
    Expect(operation, StatusCode::kOk);
    EXPECT_EQ(proxy_.round_trips() - before, 1) << operation.name;
  }
}

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
  for (const char* name : {"get", "hgetall", "zrange", "incr", "hmset"}) {
    const Operation& operation = *std::find_if(std::begin(kOperations), std::end(kOperations),
                                               [&](const Operation& one) { return one.name == std::string(name); });
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

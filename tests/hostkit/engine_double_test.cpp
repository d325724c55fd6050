// The client functions over engines that fail, and over one that brings messages.
#include <tq_kit/control.h>

#include <algorithm>
#include <deque>
#include <exception>
#include <functional>
#include <new>
#include <stdexcept>
#include <utility>

#include "all_commands.h"
#include "allocation_failures.h"
#include "hostkit/engine_wrapper.h"
#include "kit_fixture.h"

namespace hostkit {
namespace {

// The elements of a batch, which the caller's writes make stale.
class BatchCursor : public Cursor {
 public:
  explicit BatchCursor(std::unique_ptr<Cursor> inner) : inner_(std::move(inner)) {}

  Status Next(std::size_t most, std::vector<Element>* batch) override {
    while (batch->size() < most) {
      const std::size_t before = batch->size();
      if (Status status = inner_->Next(most - before, batch); !status.ok()) return status;
      if (batch->size() == before) break;
    }
    return {};
  }

 private:
  const std::unique_ptr<Cursor> inner_;
};

class BatchEngine : public EngineWrapper {
 public:
  using EngineWrapper::EngineWrapper;

  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override {
    std::unique_ptr<Cursor> one;
    Status status = inner().Scan(pattern, bring, &one);
    *cursor = std::make_unique<BatchCursor>(std::move(one));
    return status;
  }
};

// Fails each call, of a scan's cursor, too, by a status or by an exception while it is told to.
class FaultyEngine : public BatchEngine {
 public:
  using BatchEngine::BatchEngine;

  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override {
    if (Status status = Before("Scan"); !status.ok()) return status;
    std::unique_ptr<Cursor> whole;
    Status status = BatchEngine::Scan(pattern, bring, &whole);
    *cursor = std::make_unique<FaultyCursor>(this, std::move(whole));
    return status;
  }

  std::function<Status()> fault;
  std::string only;  // the method that fails; all for an empty name

 protected:
  Status Before(const char* method) override { return fault && (only.empty() || only == method) ? fault() : Status(); }

 private:
  class FaultyCursor : public Cursor {
   public:
    FaultyCursor(FaultyEngine* engine, std::unique_ptr<Cursor> inner) : engine_(engine), inner_(std::move(inner)) {}

    Status Next(std::size_t most, std::vector<Element>* batch) override {
      if (Status status = engine_->Before("Next"); !status.ok()) return status;
      return inner_->Next(most, batch);
    }

   private:
    FaultyEngine* const engine_;
    const std::unique_ptr<Cursor> inner_;
  };
};

class EngineDoubles : public KitTest {
 protected:
  void SetUp() override {
    auto made = std::make_unique<FaultyEngine>(std::make_unique<MemoryEngine>(clock, ""));
    faulty = made.get();
    g = StartRuntime(nullptr, std::move(made));
    ASSERT_NE(g, nullptr);
    ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
    key.Field(1, "one");
  }
  void TearDown() override {
    EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
    EXPECT_EQ(tq_kit_live_results(), 0U);
    EXPECT_EQ(tq_kit_live_objects(), 1U) << "the key";
  }

  FaultyEngine* faulty = nullptr;
  Obj key{"k", "1"};
};

TEST_F(EngineDoubles, EachStatusReachesTheCaller) {
  const std::pair<StatusCode, int> codes[] = {
      {StatusCode::kWrongKind, TQ_MOM_INPUT_ERR},  {StatusCode::kOutOfMemory, TQ_MOM_MALLOC_ERR},
      {StatusCode::kUnavailable, TQ_MOM_NO_READY}, {StatusCode::kReadOnly, TQ_MOM_GLOBAL_DB_NO_WRITE},
      {StatusCode::kOutcomeUnknown, TQ_MOM_ERR},   {StatusCode::kNotSupported, TQ_MOM_ERR},
      {StatusCode::kFailed, TQ_MOM_ERR},
  };
  for (const auto& [code, status] : codes) {
    const StatusCode failing = code;
    faulty->fault = [failing] { return Status(failing, "told by the engine"); };
    for (const auto& [call, got] : RunAll(g, 0, key)) EXPECT_EQ(got, status) << call;
    EXPECT_STREQ(tq_kit_last_error(g), "told by the engine");
    EXPECT_EQ(tq_mom_bgsave_sync(g, 0), status);
    EXPECT_EQ(tq_global_run(g), status);
    EXPECT_EQ(tq_mom_client_connect_sync(g, 0), status);
    EXPECT_EQ(tq_kit_clear(g, 0), status);
  }
  EXPECT_TRUE(ClientOf(g)->frames.empty());
}

// A store that is out of memory is told by a record; without memory here there is no record.
TEST_F(EngineDoubles, OutOfMemoryThereAndHere) {
  faulty->fault = [] { return Status(StatusCode::kOutOfMemory, "the store is full"); };
  tq_mom_lrange_res_t* result = tq_mom_lrange_sync(g, 0, key, 0, -1);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->error_code, TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(tq_mom_lrange_res_free(result), TQ_MOM_OK);
  faulty->fault = []() -> Status { throw std::bad_alloc(); };
  EXPECT_EQ(tq_mom_lrange_sync(g, 0, key, 0, -1), nullptr);
  EXPECT_STREQ(tq_kit_last_error(g), "out of memory");
}

struct OtherException : std::exception {
  const char* what() const noexcept override { return "something else"; }
};

TEST_F(EngineDoubles, EachExceptionBecomesAStatus) {
  const std::pair<std::function<Status()>, int> throwing[] = {
      {[]() -> Status { throw std::bad_alloc(); }, TQ_MOM_MALLOC_ERR},
      {[]() -> Status { throw std::length_error("too long"); }, TQ_MOM_MALLOC_ERR},
      {[]() -> Status { throw std::runtime_error("a long text that does not fit into a short string"); }, TQ_MOM_ERR},
      {[]() -> Status { throw OtherException(); }, TQ_MOM_ERR},
  };
  for (const auto& [fault, status] : throwing) {
    faulty->fault = fault;
    for (const auto& [call, got] : RunAll(g, 0, key)) EXPECT_EQ(got, status) << call;
    EXPECT_EQ(tq_mom_debug_show_all(g), status);
  }
  EXPECT_STREQ(tq_kit_last_error(g), "something else");
  EXPECT_TRUE(ClientOf(g)->frames.empty());
}

// Another process may put another kind of value under a key while a visit reads it: the key counts as gone.
TEST_F(EngineDoubles, AVisitLeavesOutWhatHasChangedItsKind) {
  ASSERT_EQ(Push("list", "v"), 1);
  ASSERT_EQ(Set("text", "v"), TQ_MOM_OK);
  faulty->only = "ListRange";
  faulty->fault = [] { return Status(StatusCode::kWrongKind, "a string"); };
  std::vector<std::string> keys;
  const tq_kit_visitor visitor = [](tq_global_t*, const tq_kit_element_t* element, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(element->key);
    return 0;
  };
  EXPECT_EQ(tq_kit_visit(g, 0, "*", visitor, &keys), 1);
  EXPECT_EQ(keys, std::vector<std::string>{"text"});
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  EXPECT_EQ(tq_kit_visit(g, 0, "*", visitor, &keys), TQ_MOM_NO_READY);
}

TEST_F(EngineDoubles, AFailedPublishReachesNobody) {
  int calls = 0;
  ASSERT_GT(tq_kit_subscribe(
                g, 0, "*",
                [](tq_global_t*, const tq_mom_pubsub_msg_t*, void* context) { ++*static_cast<int*>(context); }, &calls),
            0);
  faulty->only = "Publish";
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  EXPECT_EQ(tq_mom_publish_sync(g, 0, key), TQ_MOM_NO_READY);
  faulty->fault = []() -> Status { throw std::bad_alloc(); };
  EXPECT_EQ(tq_mom_publish_sync(g, 0, key), TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(ClientOf(g)->frames.empty());
  faulty->fault = nullptr;
  EXPECT_EQ(tq_mom_publish_sync(g, 0, key), 1);
  EXPECT_EQ(calls, 1);
}

TEST_F(EngineDoubles, AFailedSubscribeLeavesNone) {
  const tq_kit_subscriber never = [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) { ADD_FAILURE(); };
  faulty->only = "Subscribe";
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  EXPECT_EQ(tq_kit_subscribe(g, 0, "*", never, nullptr), TQ_MOM_NO_READY);
  EXPECT_TRUE(ClientOf(g)->subscriptions.empty());
  faulty->fault = nullptr;
  const int id = tq_kit_subscribe(g, 0, "*", never, nullptr);
  EXPECT_GT(id, 0);
  faulty->only = "Unsubscribe";
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  EXPECT_EQ(tq_kit_unsubscribe(g, id), TQ_MOM_NO_READY);
  EXPECT_TRUE(ClientOf(g)->subscriptions.empty()) << "the context may be released now";
}

int CountElements(tq_global_t* /*g*/, const tq_kit_element_t* /*element*/, void* count) {
  ++*static_cast<int*>(count);
  return 0;
}

TEST_F(EngineDoubles, AScanThatFailsOnItsWayTellsIt) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
  faulty->only = "Next";
  int turns = 0;
  faulty->fault = [&] { return ++turns > 1 ? Status(StatusCode::kUnavailable, "gone") : Status(); };
  int seen = 0;
  const tq_mom_scan_cb count = [](tq_global_t*, void*, void* context) { return ++*static_cast<int*>(context), 0; };
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 0, count, &seen), TQ_MOM_NO_READY);
  EXPECT_EQ(seen, 1);
  turns = 0;
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 0, nullptr, nullptr), TQ_MOM_NO_READY);
  turns = 0;
  EXPECT_EQ(tq_kit_visit(g, 0, "*", CountElements, &seen), TQ_MOM_NO_READY);
  EXPECT_EQ(seen, 2);
  turns = 0;
  EXPECT_EQ(tq_kit_clear(g, 0), TQ_MOM_NO_READY);
  EXPECT_TRUE(ClientOf(g)->frames.empty());
}

TEST_F(EngineDoubles, AScanThatCannotReadAgainTellsIt) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_set_sync(g, 0, Obj("other", "1")), TQ_MOM_OK);
  faulty->only = "ReadElement";
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  const tq_mom_scan_cb write = [](tq_global_t* runtime, void*, void*) {
    return tq_mom_set_sync(runtime, 0, Obj("written", "1"));
  };
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 0, write, nullptr), TQ_MOM_NO_READY);
}

TEST_F(EngineDoubles, AVisitPassesOnWhatFails) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
  std::int32_t tag = 1;
  ASSERT_EQ(tq_mom_hmset_sync(g, 1, key, &tag, 1), TQ_MOM_OK);
  int seen = 0;
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  for (const char* method : {"Scan", "Inspect", "Get", "HashGetAll", "HashRemaining"}) {
    faulty->only = method;
    EXPECT_EQ(std::min(tq_kit_visit(g, 0, "*", CountElements, &seen), tq_kit_visit(g, 1, "*", CountElements, &seen)),
              TQ_MOM_NO_READY)
        << method;
  }
  tq_kit_kind_t kind = TQ_KIT_NONE;
  faulty->only = "Inspect";
  EXPECT_EQ(tq_kit_inspect(g, 0, "k", &kind, nullptr), TQ_MOM_NO_READY);
  EXPECT_EQ(kind, TQ_KIT_NONE);
  faulty->fault = nullptr;
  EXPECT_EQ(tq_kit_inspect(g, 0, "k", &kind, nullptr), TQ_MOM_OK);
  EXPECT_EQ(kind, TQ_KIT_STRING);
}

// Another process writes between a visit's calls.
TEST_F(EngineDoubles, AVisitLeavesOutWhatGoesMeanwhile) {
  int seen = 0;
  const auto visit_while = [&](const char* method, const std::function<void()>& change) {
    EXPECT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
    faulty->only = method;
    faulty->fault = [&, done = false]() mutable {
      if (!std::exchange(done, true)) change();
      return Status();
    };
    return tq_kit_visit(g, 0, "*", CountElements, &seen);
  };
  const auto remove = [&] { tq_mom_del_sync(g, 0, key); };
  const auto replace = [&] {
    remove();
    tq_mom_sadd_sync(g, 0, key);
  };
  EXPECT_EQ(visit_while("Inspect", remove), 0);
  EXPECT_EQ(visit_while("Get", remove), 0);
  EXPECT_EQ(visit_while("Get", replace), 0) << "it has another kind now";
  EXPECT_EQ(visit_while("Get", [] {}), 1);
}

TEST_F(EngineDoubles, AStoreThatFailsSaysSo) {
  tq_kit_element_t element = {};
  element.key = "k";
  element.kind = TQ_KIT_HASH;
  element.bytes = "v";
  element.length = 1;
  element.remaining = 1000;
  element.field_remaining = 1000;
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  for (const char* method : {"HashSet", "HashExpire", "Expire"}) {
    faulty->only = method;
    EXPECT_EQ(tq_kit_store(g, 0, &element), TQ_MOM_NO_READY) << method;
  }
  faulty->only = "none";
  for (const char* name : {"a", "b"}) ASSERT_EQ(tq_mom_set_sync(g, 0, Obj(name, "v")), TQ_MOM_OK);
  for (const char* method : {"Scan", "Delete"}) {
    faulty->only = method;
    EXPECT_EQ(tq_kit_clear(g, 0), TQ_MOM_NO_READY) << method;
  }
  int deletes = 0;
  faulty->fault = [&] { return ++deletes == 1 ? Status(StatusCode::kUnavailable, "gone") : Status(); };
  EXPECT_EQ(tq_kit_clear(g, 0), TQ_MOM_NO_READY);
  EXPECT_EQ(deletes, 1) << "it goes no further";
}

TEST_F(EngineDoubles, WhatIsPrintedFailsWithItsParts) {
  faulty->fault = [] { return Status(StatusCode::kUnavailable, "gone"); };
  for (const char* method : {"Describe", "Summarize"}) {
    faulty->only = method;
    EXPECT_EQ(tq_mom_debug_show_all(g), TQ_MOM_NO_READY) << method;
  }
}

class Batches : public KitTest {
 protected:
  void SetUp() override {
    g = StartRuntime(nullptr, std::make_unique<BatchEngine>(std::make_unique<MemoryEngine>(clock, "")));
    ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  }
};

TEST_F(Batches, AScanSeesItsCallersOwnWrites) {
  for (const char* name : {"a", "b", "c", "d"}) Set(name, name);
  std::vector<std::string> seen;
  EXPECT_EQ(tq_mom_scan_sync(
                g, 0, Obj("*"), 0,
                [](tq_global_t* runtime, void* message, void* context) {
                  auto* element = static_cast<tq_mom_scan_all_msg_t*>(message);
                  auto* texts = static_cast<std::vector<std::string>*>(context);
                  texts->push_back(std::string(element->key) + "=" + reinterpret_cast<const char*>(element->value));
                  tq_mom_del_sync(runtime, 0, Obj("c"));
                  tq_mom_set_sync(runtime, 0, Obj("d", "changed"));
                  return 0;
                },
                &seen),
            3);
  EXPECT_EQ(seen, (std::vector<std::string>{"a=a", "b=b", "d=changed"}));
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 2, nullptr, nullptr), 2);
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 0, nullptr, nullptr), 3);
}

// Notes how much time each call has.
class TimedEngine : public EngineWrapper {
 public:
  using EngineWrapper::EngineWrapper;

  Status Expire(const Request& request, std::uint32_t /*milliseconds*/, bool* /*exists*/) override {
    limits.push_back(request.limit.count());
    return {};
  }
  Status HashExpire(const Request& request, std::span<const FieldTag> /*tags*/, std::uint32_t /*milliseconds*/,
                    std::int64_t* /*count*/) override {
    limits.push_back(request.limit.count());
    return {};
  }

  std::vector<std::int64_t> limits;
};

// None leaves the limit to the engine, and the least time is some.
TEST(Timeouts, ReachTheEngineInMilliseconds) {
  const FakeClock clock;
  auto made = std::make_unique<TimedEngine>(std::make_unique<MemoryEngine>(clock, ""));
  std::vector<std::int64_t>* limits = &made->limits;
  tq_global_t* g = StartRuntime(nullptr, std::move(made));
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  const Obj key("k");
  int32_t field = 1;
  const std::pair<timeval, std::int64_t> timeouts[] = {
      {{0, 0}, 0}, {{0, 1}, 1}, {{0, 1000}, 1}, {{0, 1001}, 2}, {{2, 500000}, 2500}, {{-1, -1}, 0}, {{1, -1}, 1000}};
  for (const auto& [timeout, limit] : timeouts) {
    tq_mom_pexpire_sync(g, 0, key, 1, timeout);
    tq_mom_pexpire_field_sync(g, 0, key, 1, 1, timeout);
    tq_mom_pexpire_fields_sync(g, 0, key, 1, &field, 1, timeout);
    EXPECT_EQ(*limits, std::vector<std::int64_t>(3, limit));
    limits->clear();
  }
  EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
}

// Brings messages by Poll, as a server does.
class PollingEngine : public EngineWrapper {
 public:
  using EngineWrapper::EngineWrapper;

  bool Supports(Feature feature) const override { return feature == Feature::kMessagesByPoll; }
  Status Subscribe(const Request& pattern) override {
    log.push_back("+" + std::string(pattern.name));
    return {};
  }
  Status Unsubscribe(const Request& pattern) override {
    log.push_back("-" + std::string(pattern.name));
    return {};
  }
  Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) override {
    arriving.push_back({request.db, "*", std::string(request.name), std::string(message)});
    *receivers = 2;
    return {};
  }
  Status Poll(TimeLimit wait, std::vector<Message>* messages) override {
    waited = wait;
    messages->insert(messages->end(), arriving.begin(), arriving.end());
    arriving.clear();
    return {};
  }

  std::vector<std::string> log;
  std::vector<Message> arriving;
  TimeLimit waited = {};
};

// Loses the answer to a pop.
class LosingEngine : public EngineWrapper {
 public:
  using EngineWrapper::EngineWrapper;

  Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) override {
    if (Status status = inner().ListPop(request, end, value, left); !status.ok()) return status;
    return {StatusCode::kOutcomeUnknown, "too late"};
  }
};

TEST_F(KitTest, APopThatFailsGivesNoObject) {
  ASSERT_EQ(tq_global_finish(g), TQ_MOM_OK);
  g = StartRuntime(nullptr, std::make_unique<LosingEngine>(std::make_unique<MemoryEngine>(clock, "")));
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  ASSERT_EQ(Push("l", "v"), 1);
  int status;
  EXPECT_EQ(tq_mom_lpop_sync(g, 0, Obj("l"), &status), nullptr);
  EXPECT_EQ(status, TQ_MOM_ERR);
}

class Polling : public KitTest {
 protected:
  void SetUp() override {
    auto made = std::make_unique<PollingEngine>(std::make_unique<MemoryEngine>(clock, ""));
    polling = made.get();
    g = StartRuntime(nullptr, std::move(made));
    ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  }

  static void Take(tq_global_t*, const tq_mom_pubsub_msg_t* message, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(
        std::string(message->key) + "=" + std::string(static_cast<const char*>(message->value), message->length));
  }

  PollingEngine* polling = nullptr;
  std::vector<std::string> seen;
};

TEST_F(Polling, EachMessageArrivesOnce) {
  ASSERT_GT(tq_kit_subscribe(g, 0, "*", Take, &seen), 0);
  ASSERT_GT(tq_kit_subscribe(g, 0, "other*", Take, &seen), 0);
  EXPECT_EQ(tq_mom_publish_sync(g, 0, Obj("k", "own")), 2) << "what the engine counts";
  EXPECT_EQ(seen, (std::vector<std::string>{"k=own"})) << "it has come by Poll before the publish returned";
  polling->arriving.push_back({0, "*", "k", "from elsewhere"});
  EXPECT_EQ(tq_kit_poll(g, 1500), 1);
  EXPECT_EQ(polling->waited, TimeLimit(1500));
  EXPECT_EQ(seen, (std::vector<std::string>{"k=own", "k=from elsewhere"}));
  polling->arriving.push_back({0, "*", "k", "again"});
  EXPECT_EQ(tq_global_run(g), TQ_MOM_OK);
  EXPECT_EQ(polling->waited, TimeLimit(0));
  EXPECT_EQ(seen, (std::vector<std::string>{"k=own", "k=from elsewhere", "k=again"}));
}

TEST_F(Polling, APatternIsSubscribedToOnce) {
  const int first = tq_kit_subscribe(g, 0, "*", Take, &seen);
  const int second = tq_kit_subscribe(g, 0, "*", Take, &seen);
  EXPECT_EQ(polling->log, (std::vector<std::string>{"+*"}));
  const int elsewhere = tq_kit_subscribe(g, 1, "*", Take, &seen);
  EXPECT_EQ(polling->log, (std::vector<std::string>{"+*", "+*"})) << "in each database";
  for (const int each : {first, second, elsewhere}) EXPECT_EQ(tq_kit_unsubscribe(g, each), TQ_MOM_OK);
  EXPECT_EQ(polling->log, (std::vector<std::string>{"+*", "+*", "-*", "-*"}));
}

TEST_F(Polling, SubscriptionsOfOnePatternCountEach) {
  for (int twin = 0; twin < 2; ++twin) ASSERT_GT(tq_kit_subscribe(g, 1, "*", Take, &seen), 0);
  ASSERT_GT(tq_kit_subscribe(g, 0, "o*", Take, &seen), 0);
  ASSERT_GT(tq_kit_subscribe(g, 0, "*", Take, &seen), 0);
  EXPECT_EQ(tq_mom_publish_sync(g, 0, Obj("k", "v")), 2);
  ASSERT_GT(tq_kit_subscribe(g, 0, "*", Take, &seen), 0);
  ASSERT_GT(tq_kit_subscribe(g, 0, "o*", Take, &seen), 0);
  EXPECT_EQ(tq_mom_publish_sync(g, 0, Obj("k", "v")), 3) << "the engine counts a pattern once";
}

TEST_F(Polling, AMessageIsDeliveredOnceOrTheFailureIsTold) {
  int delivered = 0;
  const tq_kit_subscriber count = [](tq_global_t*, const tq_mom_pubsub_msg_t*, void* context) {
    ++*static_cast<int*>(context);
  };
  ASSERT_GT(tq_kit_subscribe(g, 0, "*", count, &delivered), 0);
  bool reached = true;
  for (std::size_t index = 0; reached; ++index) {
    const int before = delivered;
    polling->arriving.push_back({0, "*", "a name that takes memory of its own", "a value that does, too, of course"});
    int status = TQ_MOM_OK;
    {
      const FailingAllocations failing(index, FailureMode::kOnce);
      status = tq_global_run(g);
      reached = FailingAllocations::Hit();
    }
    if (status == TQ_MOM_OK) {
      EXPECT_EQ(delivered, before + 1) << index;
    } else {
      EXPECT_EQ(status, TQ_MOM_MALLOC_ERR);
      EXPECT_EQ(tq_global_run(g), TQ_MOM_OK);
      EXPECT_LE(delivered, before + 1) << index;
    }
  }
}

struct ForeignError {};

TEST_F(Polling, WhatACallbackLeftIsDeliveredLater) {
  const int failing = tq_kit_subscribe(
      g, 0, "*", [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) { throw ForeignError(); }, nullptr);
  for (const char* value : {"1", "2", "3"}) polling->arriving.push_back({0, "*", "k", value});
  EXPECT_THROW(tq_global_run(g), ForeignError);
  tq_kit_unsubscribe(g, failing);
  tq_kit_subscribe(g, 0, "*", Take, &seen);
  EXPECT_EQ(tq_kit_poll(g, 1000), 2);
  EXPECT_EQ(polling->waited, TimeLimit(0)) << "there is something to deliver";
  EXPECT_EQ(seen, (std::vector<std::string>{"k=2", "k=3"}));
}

// What a runtime remembers of delivered fields is bounded.
TEST(SeenFieldsTest, TheOldestHashesAreForgottenFirst) {
  SeenFields seen(4);
  const std::vector<Field> pair = {{1, "a"}, {2, "b"}};
  const auto read = [&](const char* name) {
    const std::size_t changed = seen.Changed(0, name, pair).size();
    seen.Deliver(0, name, pair, nullptr);
    return changed;
  };
  EXPECT_EQ(read("one"), 2U);
  EXPECT_EQ(read("one"), 0U);
  EXPECT_EQ(read("two"), 2U);
  EXPECT_EQ(read("one"), 0U) << "there is room for both";
  EXPECT_EQ(read("three"), 2U);
  EXPECT_EQ(read("one"), 0U);
  EXPECT_EQ(read("two"), 2U) << "it was read longest ago";
}

TEST(SeenFieldsTest, WhatNobodyHasReadIsNotNoted) {
  SeenFields seen;
  const std::vector<Field> pair = {{1, "a"}, {2, "b"}};
  seen.Deliver(0, "h", pair, nullptr);
  EXPECT_EQ(seen.Changed(0, "h", std::span(pair).first(1)).size(), 1U);
  seen.Deliver(0, "h", pair, nullptr);
  EXPECT_EQ(seen.Changed(0, "h", pair), (std::vector<FieldTag>{2}));
}

TEST(SeenFieldsTest, WhatIsNotThereAnyMoreIsForgotten) {
  SeenFields seen;
  const std::vector<Field> pair = {{1, "a"}, {2, "b"}};
  const std::vector<Field> one = {{1, "a"}};
  seen.Changed(0, "h", pair);
  seen.Deliver(0, "h", pair, nullptr);
  const std::vector<FieldTag> asked = {1, 2};
  const std::span<const FieldTag> tags(asked);
  EXPECT_TRUE(seen.Changed(0, "h", one).empty());
  seen.Deliver(0, "h", one, &tags);
  EXPECT_EQ(seen.Changed(0, "h", pair), (std::vector<FieldTag>{2})) << "it came back";
  EXPECT_EQ(seen.Changed(1, "h", one).size(), 1U) << "another database";
  seen.Deliver(0, "h", {}, nullptr);
  EXPECT_EQ(seen.Changed(0, "h", pair).size(), 2U) << "the hash was gone meanwhile";
}

TEST(SeenFieldsTest, WhatIsForgottenTakesNoRoom) {
  SeenFields seen(2);
  const auto read = [&](const std::vector<Field>& fields, const std::vector<FieldTag>& asked) {
    const std::span<const FieldTag> tags(asked);
    const std::size_t changed = seen.Changed(0, "h", fields).size();
    seen.Deliver(0, "h", fields, &tags);
    return changed;
  };
  EXPECT_EQ(read({{1, "a"}, {2, "b"}}, {1, 2}), 2U);
  EXPECT_EQ(read({}, {2}), 0U) << "it is gone";
  EXPECT_EQ(read({{3, "c"}}, {3}), 1U);
  EXPECT_EQ(read({{1, "a"}, {3, "c"}}, {1, 3}), 0U) << "there is room for both";
}

}  // namespace
}  // namespace hostkit

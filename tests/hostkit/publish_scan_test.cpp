#include <tq_kit/control.h>

#include <csetjmp>
#include <cstdlib>
#include <functional>
#include <limits>
#include <thread>

#include "kit_fixture.h"

namespace hostkit {
namespace {

using TextList = std::vector<std::string>;

// What a Lua built as C++ throws: nothing that a library could know.
struct ForeignError {};

class Scans : public KitTest {
 protected:
  using Visitor = std::function<int(const tq_mom_scan_all_msg_t&)>;

  static int Visit(tq_global_t*, void* message, void* context) {
    return (*static_cast<Visitor*>(context))(*static_cast<tq_mom_scan_all_msg_t*>(message));
  }

  int Scan(std::string_view pattern, unsigned int count, Visitor visitor) {
    return tq_mom_scan_sync(g, 0, Obj(pattern), count, Visit, &visitor);
  }

  TextList Keys(std::string_view pattern, unsigned int count = 0) {
    TextList keys;
    const int visited = Scan(pattern, count, [&](const auto& message) {
      keys.emplace_back(message.key);
      return 0;
    });
    EXPECT_EQ(visited, static_cast<int>(keys.size()));
    return keys;
  }

  std::size_t Frames() { return ClientOf(g)->frames.size(); }

  void SetUp() override {
    KitTest::SetUp();
    for (const char* key : {"port:1", "port:2", "port:10", "other"}) Set(key, key);
  }
};

TEST_F(Scans, CallBackOnceForEachMatch) {
  EXPECT_EQ(Keys("*"), (TextList{"other", "port:1", "port:10", "port:2"}));
  EXPECT_EQ(Keys("port:?"), (TextList{"port:1", "port:2"}));
  EXPECT_EQ(Keys("port:[1-1]*"), (TextList{"port:1", "port:10"}));
  EXPECT_EQ(Keys("other"), (TextList{"other"}));
  EXPECT_EQ(Keys("nothing*"), TextList());
  EXPECT_EQ(tq_mom_scan_sync(g, 1, Obj("*"), 0, Visit, nullptr), 0) << "another database";
  EXPECT_EQ(Frames(), 0U);
}

TEST_F(Scans, CountIsALimit) {
  EXPECT_EQ(Keys("*", 2), (TextList{"other", "port:1"}));
  EXPECT_EQ(Keys("*", 4).size(), 4U);
  EXPECT_EQ(Keys("*", 4000000000U).size(), 4U);
}

TEST_F(Scans, WithoutACallbackCount) {
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("port:*"), 0, nullptr, nullptr), 3);
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("port:*"), 2, nullptr, nullptr), 2);
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("x"), 0, nullptr, nullptr), 0);
}

TEST_F(Scans, StopAtANonzeroReturn) {
  int calls = 0;
  EXPECT_EQ(Scan("*", 0, [&](const auto&) { return ++calls == 2 ? -7 : 0; }), 2);
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(Frames(), 0U);
}

TEST_F(Scans, GiveTheBytesOfStringsAndNoneOfOtherKinds) {
  Set("other", std::string_view("a\0b", 3));
  Push("list", "element");
  TextList values;
  Scan("[lo]*", 0, [&](const auto& message) {
    EXPECT_NE(message.value, nullptr);
    values.emplace_back(reinterpret_cast<const char*>(message.value), static_cast<std::size_t>(message.vlen));
    return 0;
  });
  EXPECT_EQ(values, (TextList{"", std::string("a\0b", 3)}));
}

TEST_F(Scans, PassTheRuntimeOn) {
  static tq_global_t* seen;
  seen = nullptr;
  tq_mom_scan_sync(
      g, 0, Obj("other"), 0,
      [](tq_global_t* runtime, void*, void*) {
        seen = runtime;
        return 0;
      },
      nullptr);
  EXPECT_EQ(seen, g);
}

TEST_F(Scans, SkipWhatTheCallbackDeleted) {
  TextList keys;
  EXPECT_EQ(Scan("*", 0,
                 [&](const auto& message) {
                   keys.emplace_back(message.key);
                   for (const char* key : {"other", "port:10"}) tq_mom_del_sync(g, 0, Obj(key));
                   EXPECT_EQ(keys.back(), message.key) << "the message outlives its key";
                   EXPECT_EQ(std::string(reinterpret_cast<const char*>(message.value)), message.key);
                   return 0;
                 }),
            3);
  EXPECT_EQ(keys, (TextList{"other", "port:1", "port:2"}));
}

TEST_F(Scans, SkipWhatExpiredMeanwhile) {
  tq_mom_psetex_sync(g, 0, Obj("port:2", "v"), 10);
  TextList keys;
  Scan("*", 0, [&](const auto& message) {
    keys.emplace_back(message.key);
    clock.Advance(10);
    return 0;
  });
  EXPECT_EQ(keys, (TextList{"other", "port:1", "port:10"}));
}

TEST_F(Scans, DoNotVisitWhatTheCallbackAdds) {
  int calls = 0;
  EXPECT_EQ(Scan("*", 0,
                 [&](const auto& message) {
                   Set("zzz" + std::to_string(++calls), "new");
                   Set(message.key, "written over");
                   return 0;
                 }),
            4);
  EXPECT_EQ(calls, 4);
  EXPECT_EQ(Keys("*").size(), 8U);
}

TEST_F(Scans, SeeTheValueAsItIsThen) {
  std::string seen;
  Scan("*", 0, [&](const auto& message) {
    if (std::string(message.key) == "other") Set("port:2", "changed");
    if (std::string(message.key) == "port:2") seen = reinterpret_cast<const char*>(message.value);
    return 0;
  });
  EXPECT_EQ(seen, "changed");
}

TEST_F(Scans, KeepGoingWhenTheCallbackReleasesTheKeyObject) {
  tq_obj* pattern = tq_obj_new("port:*", 6);
  Visitor visitor = [&](const auto&) {
    tq_mom_tq_obj_free(pattern);
    return 0;
  };
  EXPECT_EQ(tq_mom_scan_sync(g, 0, pattern, 0, Visit, &visitor), 3);
}

TEST_F(Scans, CanBeNested) {
  TextList seen;
  EXPECT_EQ(Scan("port:*", 0,
                 [&](const auto& outer) {
                   Scan("port:*", 2, [&](const auto& inner) {
                     seen.push_back(std::string(outer.key) + "/" + inner.key);
                     return 0;
                   });
                   EXPECT_EQ(std::string(reinterpret_cast<const char*>(outer.value)), outer.key);
                   return 0;
                 }),
            3);
  EXPECT_EQ(seen, (TextList{"port:1/port:1", "port:1/port:10", "port:10/port:1", "port:10/port:10", "port:2/port:1",
                            "port:2/port:10"}));
  EXPECT_EQ(Frames(), 0U);
}

jmp_buf jump;

// Leaves a scan as an error in a Lua built as C does.
[[gnu::noinline]] void ScanAndJump(tq_global_t* g, tq_obj* pattern) {
  if (setjmp(jump) == 0) {
    tq_mom_scan_sync(
        g, 0, pattern, 0, [](tq_global_t*, void*, void*) -> int { longjmp(jump, 1); }, nullptr);
    FAIL() << "the scan returned";
  }
}

TEST_F(Scans, CanBeLeftByLongjmp) {
  const Obj pattern("*");
  for (int round = 0; round < 100; ++round) ScanAndJump(g, pattern);
  EXPECT_LE(Frames(), 1U) << "frames of scans that were left do not pile up";
  EXPECT_EQ(Keys("*").size(), 4U);
  EXPECT_LE(Frames(), 1U);
  EXPECT_EQ(Set("k", "v"), TQ_MOM_OK);
}

TEST_F(Scans, CanBeLeftByLongjmpWithinAnother) {
  const Obj pattern("*");
  TextList keys;
  EXPECT_EQ(Scan("*", 0,
                 [&](const auto& message) {
                   for (int round = 0; round < 10; ++round) ScanAndJump(g, pattern);
                   EXPECT_LE(Frames(), 2U);
                   keys.emplace_back(message.key);
                   return 0;
                 }),
            4);
  EXPECT_EQ(keys.size(), 4U);
  EXPECT_EQ(Frames(), 0U);
}

// As ScanAndJump, from further down the stack than any later call of the test.
[[gnu::noinline]] void ScanAndJumpDeep(tq_global_t* g, tq_obj* pattern) {
  char room[1 << 16];
  asm volatile("" : : "r"(room) : "memory");  // keeps the room
  ScanAndJump(g, pattern);
  asm volatile("" : : "r"(room) : "memory");
}

TEST_F(Scans, LeftAreReleasedWhenTheRuntimeEnds) {
  const Obj pattern("*");
  ScanAndJumpDeep(g, pattern);
  EXPECT_EQ(Frames(), 1U);
}

// The frame of a scan that another thread has left is dropped by the next call on this one.
TEST_F(Scans, CanBeLeftByLongjmpOnAnotherThread) {
  const Obj pattern("*");
  std::thread([&] { ScanAndJump(g, pattern); }).join();
  EXPECT_EQ(Frames(), 1U);
  Visitor visitor = [&](const auto&) {
    EXPECT_EQ(Frames(), 1U) << "that of this scan";
    return 1;
  };
  EXPECT_EQ(tq_mom_scan_sync(g, 0, pattern, 0, Visit, &visitor), 1);
  std::thread([&] { ScanAndJump(g, pattern); }).join();
  EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK) << "nothing of it is under way here";
  g = nullptr;
  Restart("");
}

// Whichever of the two stacks is the higher one.
TEST_F(Scans, LeftByLongjmpDoNotKeepTheRuntimeFromAnotherThread) {
  ScanAndJump(g, Obj("*"));
  EXPECT_EQ(Frames(), 1U);
  int status = TQ_MOM_ERR;
  std::thread([&] { status = tq_global_finish(g); }).join();
  EXPECT_EQ(status, TQ_MOM_OK);
  g = nullptr;
  Restart("");
}

// A runtime that a callback ended would be pulled from under the call.
TEST_F(Scans, CannotEndTheRuntime) {
  const Obj pattern("*");
  EXPECT_EQ(Scan("*", 0,
                 [&](const auto&) {
                   EXPECT_EQ(tq_global_finish(g), TQ_MOM_ERR);
                   EXPECT_STRNE(tq_kit_last_error(g), "");
                   ScanAndJump(g, pattern);
                   EXPECT_EQ(tq_global_finish(g), TQ_MOM_ERR) << "the outer scan is still under way";
                   EXPECT_EQ(Get("other"), "other");
                   return 0;
                 }),
            4);
  EXPECT_EQ(Frames(), 0U);
}

TEST_F(Scans, OfAnotherRuntimeDoNotKeepThisOne) {
  tq_global_t* other = tq_global_init("", nullptr);
  EXPECT_EQ(Scan("other", 0,
                 [&](const auto&) {
                   EXPECT_EQ(tq_global_finish(other), TQ_MOM_OK);
                   return 0;
                 }),
            1);
}

TEST_F(Scans, LetAForeignExceptionThrough) {
  for (int round = 0; round < 10; ++round) {
    EXPECT_THROW(Scan("*", 0, [](const auto&) -> int { throw ForeignError(); }), ForeignError);
    EXPECT_THROW(Scan("*", 0, [](const auto&) -> int { throw std::bad_alloc(); }), std::bad_alloc) << "nor is it ours";
  }
  EXPECT_LE(Frames(), 1U);
  EXPECT_EQ(Keys("*").size(), 4U);
}

class Publishing : public KitTest {
 protected:
  struct Seen {
    TextList messages;
    tq_mom_pubsub_msg_t last = {};
  };

  static void Take(tq_global_t*, const tq_mom_pubsub_msg_t* message, void* context) {
    auto* seen = static_cast<Seen*>(context);
    seen->messages.push_back(std::string(message->key) + "=" +
                             std::string(static_cast<const char*>(message->value), message->length));
    seen->last = *message;
  }

  int Publish(std::string_view key, std::string_view value, int db = 0) {
    return tq_mom_publish_sync(g, db, Obj(key, value));
  }
};

TEST_F(Publishing, ReachesNobodyWithoutSubscribers) {
  EXPECT_EQ(Publish("news", "hello"), 0);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("news")), 0) << "nothing is stored";
}

TEST_F(Publishing, ReachesSubscribersOfTheDatabaseAndPattern) {
  Seen all;
  Seen some;
  Seen elsewhere;
  EXPECT_GT(tq_kit_subscribe(g, 0, "*", Take, &all), 0);
  EXPECT_GT(tq_kit_subscribe(g, 0, "link:*", Take, &some), 0);
  EXPECT_GT(tq_kit_subscribe(g, 5, "*", Take, &elsewhere), 0);
  EXPECT_EQ(Publish("link:1", std::string_view("up\0", 3)), 2);
  EXPECT_EQ(Publish("fan", ""), 1);
  EXPECT_EQ(tq_mom_publish_ext_sync(g, 5, nullptr, Obj("link:2", "down")), 1);
  EXPECT_EQ(all.messages, (TextList{std::string("link:1=up\0", 10), "fan="}));
  EXPECT_EQ(some.messages, (TextList{std::string("link:1=up\0", 10)}));
  EXPECT_EQ(elsewhere.messages, (TextList{"link:2=down"}));
  EXPECT_EQ(elsewhere.last.db, 5);
  EXPECT_EQ(elsewhere.last.db_id, 5);
  EXPECT_EQ(elsewhere.last.cmd, TQ_MOM_PUBLISH);
  EXPECT_STREQ(elsewhere.last.field, "");
  EXPECT_EQ(elsewhere.last.flag, 0);
  EXPECT_EQ(elsewhere.last.error, 0);
}

TEST_F(Publishing, AKeyOfTheGreatestLengthFits) {
  Seen seen;
  tq_kit_subscribe(g, 0, "*", Take, &seen);
  EXPECT_EQ(Publish(std::string(511, 'k'), "v"), 1);
  EXPECT_EQ(seen.messages, (TextList{std::string(511, 'k') + "=v"}));
}

TEST_F(Publishing, UnsubscribeEndsIt) {
  Seen seen;
  const int first = tq_kit_subscribe(g, 0, "*", Take, &seen);
  const int second = tq_kit_subscribe(g, 0, "*", Take, &seen);
  EXPECT_EQ(tq_kit_unsubscribe(g, first), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_unsubscribe(g, first), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(Publish("k", "v"), 1);
  EXPECT_EQ(tq_kit_unsubscribe(g, second), TQ_MOM_OK);
  EXPECT_EQ(Publish("k", "v"), 0);
}

// Whoever ends a subscription after its runtime ends nothing else, wherever the next runtime lies.
TEST_F(Publishing, NumbersAreNotUsedAgain) {
  Seen seen;
  tq_global_t record = {};
  ASSERT_EQ(tq_global_init(nullptr, &record), &record);
  ASSERT_EQ(tq_mom_client_connect_sync(&record, 0), TQ_MOM_OK);
  const int ended = tq_kit_subscribe(&record, 0, "*", Take, &seen);
  ASSERT_EQ(tq_global_finish(&record), TQ_MOM_OK);
  ASSERT_EQ(tq_global_init(nullptr, &record), &record);
  ASSERT_EQ(tq_mom_client_connect_sync(&record, 0), TQ_MOM_OK);
  EXPECT_GT(tq_kit_subscribe(&record, 0, "*", Take, &seen), ended);
  EXPECT_EQ(tq_kit_unsubscribe(&record, ended), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_global_finish(&record), TQ_MOM_OK);
}

TEST_F(Publishing, SubscribeChecksItsArguments) {
  EXPECT_EQ(tq_kit_subscribe(nullptr, 0, "*", Take, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_subscribe(g, 38, "*", Take, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_subscribe(g, 0, nullptr, Take, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_subscribe(g, 0, "*", nullptr, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_unsubscribe(nullptr, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_unsubscribe(g, std::numeric_limits<int>::max()), TQ_MOM_INPUT_ERR);
  Restart("");
  EXPECT_EQ(tq_kit_subscribe(g, 0, "*", Take, nullptr), TQ_MOM_NO_READY);
}

TEST_F(Publishing, ASubscriberCanDoAnything) {
  struct Context {
    int later = 0;
    TextList log;
  } context;
  tq_kit_subscribe(
      g, 0, "*",
      [](tq_global_t* runtime, const tq_mom_pubsub_msg_t* message, void* data) {
        auto* seen = static_cast<Context*>(data);
        seen->log.push_back(std::string("first ") + message->key);
        if (std::string(message->key) != "a") return;
        tq_kit_unsubscribe(runtime, seen->later);
        tq_kit_subscribe(
            runtime, 0, "*",
            [](tq_global_t*, const tq_mom_pubsub_msg_t*, void* inner) {
              static_cast<Context*>(inner)->log.push_back("new");
            },
            data);
        tq_mom_publish_sync(runtime, 0, Obj("b", "inner"));
        EXPECT_STREQ(message->key, "a");
      },
      &context);
  context.later = tq_kit_subscribe(
      g, 0, "*",
      [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) { ADD_FAILURE() << "it was unsubscribed before its turn"; },
      &context);
  EXPECT_EQ(Publish("a", "outer"), 1);
  EXPECT_EQ(context.log, (TextList{"first a", "first b", "new"}));
  EXPECT_TRUE(ClientOf(g)->frames.empty());
}

TEST_F(Publishing, CannotEndTheRuntime) {
  int status = 0;
  tq_kit_subscribe(
      g, 0, "*",
      [](tq_global_t* runtime, const tq_mom_pubsub_msg_t*, void* context) {
        *static_cast<int*>(context) = tq_global_finish(runtime);
      },
      &status);
  EXPECT_EQ(Publish("k", "v"), 1);
  EXPECT_EQ(status, TQ_MOM_ERR);
}

TEST_F(Publishing, CanBeLeftByLongjmpAndByAForeignException) {
  const Obj news("news", "v");
  const int jumping = tq_kit_subscribe(
      g, 0, "*", [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) { longjmp(jump, 1); }, nullptr);
  if (setjmp(jump) == 0) {
    tq_mom_publish_sync(g, 0, news);
    FAIL() << "the publish returned";
  }
  tq_kit_unsubscribe(g, jumping);
  tq_kit_subscribe(
      g, 0, "*", [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) { throw ForeignError(); }, nullptr);
  EXPECT_THROW(tq_mom_publish_sync(g, 0, news), ForeignError);
  EXPECT_LE(ClientOf(g)->frames.size(), 2U);
  EXPECT_EQ(Set("k", "v"), TQ_MOM_OK);
}

}  // namespace
}  // namespace hostkit

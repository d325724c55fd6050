// Every allocation of every command fails in turn: the store must then be as before, nothing may leak, and the command
// must say so.
#include <algorithm>
#include <functional>
#include <memory>

#include "allocation_failures.h"
#include "kit_fixture.h"

namespace hostkit {
namespace {

const std::string kLong(100, 'l');  // too long to be stored without an allocation

// The arguments of a command, made before memory runs out.
struct Arguments {
  Arguments() {
    hash.Field(1, "changed " + kLong).Field(3, "new " + kLong).Field(4, "short");
    members = {member, fresh, another};
  }

  Obj text{"text:" + kLong, "value " + kLong};
  Obj absent{"absent:" + kLong, "value " + kLong};
  Obj number{"number:" + kLong};
  Obj hash{"hash:" + kLong};
  Obj absent_hash{"absent:" + kLong};
  Obj list{"list:" + kLong, "element " + kLong};
  Obj pivot{"list:" + kLong, "pivot " + kLong};
  Obj set{"set:" + kLong, "member " + kLong};
  Obj member{"sorted:" + kLong, "member " + kLong};
  Obj fresh{"sorted:" + kLong, "fresh " + kLong};
  Obj another{"sorted:" + kLong, "another " + kLong};
  Obj absent_member{"absent:" + kLong, "member " + kLong};
  Obj everything{"*"};
  std::vector<int32_t> tags = {1, 3, 4};
  std::vector<void*> members;
  std::vector<double> scores = {5, -1, 5};
};

template <typename Record> int Status(Record* result, int (*release)(Record*)) {
  if (result == nullptr) return TQ_MOM_MALLOC_ERR;
  const int status = result->error_code;
  EXPECT_NE(status, TQ_MOM_MALLOC_ERR) << "there is no record when memory runs out here";
  release(result);
  return status;
}

int Freed(tq_obj* object, const int& status) {
  tq_mom_tq_obj_free(object);
  return status;
}

struct Case {
  const char* name;
  // Returns the command's status or number.
  std::function<int(tq_global_t*, Arguments&)> run;
};

void PrintTo(const Case& tested, std::ostream* out) { *out << tested.name; }

class OutOfMemory : public KitTest, public ::testing::WithParamInterface<Case> {
 protected:
  void FillStore(Arguments& arguments) {
    Set("text:" + kLong, "stored " + kLong);
    Set("number:" + kLong, "1234567890123456");
    Obj hash("hash:" + kLong);
    hash.Field(1, "stored " + kLong).Field(2, "kept " + kLong);
    int32_t tags[] = {1, 2};
    tq_mom_hmset_sync(g, 0, hash, tags, 2);
    tq_mom_pexpire_field_sync(g, 0, hash, 1000, 1, NoTimeout());
    for (const char* value : {"first ", "pivot ", "last "}) Push("list:" + kLong, value + kLong);
    tq_mom_sadd_sync(g, 0, Obj("set:" + kLong, "stored " + kLong));
    tq_mom_zadd_sync(g, 0, arguments.scores.data(), arguments.members.data(), 1);
    tq_kit_subscribe(
        g, 0, "*", [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) {}, nullptr);
  }

  void Begin(Arguments& arguments) {
    Restart("");
    ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
    FillStore(arguments);
  }

  int UsualStatus() {
    Arguments arguments;
    Begin(arguments);
    const int status = GetParam().run(g, arguments);
    EXPECT_GE(status, 0);
    return status;
  }

  void Run(FailureMode mode) {
    const int usual = UsualStatus();
    for (std::size_t index = 0;; ++index) {
      Arguments arguments;
      Begin(arguments);
      const std::string before = Dump();
      const std::size_t objects = tq_kit_live_objects();
      int status;
      bool hit;
      {
        const FailingAllocations failing(index, mode);
        status = GetParam().run(g, arguments);
        hit = FailingAllocations::Hit();
      }
      ASSERT_EQ(tq_kit_live_objects(), objects);
      ASSERT_EQ(tq_kit_live_results(), 0U);
      ASSERT_TRUE(ClientOf(g)->frames.empty());
      if (!hit) {
        EXPECT_GT(index, 0U) << "the case tests something";
        EXPECT_EQ(status, usual);
        return;
      }
      ASSERT_EQ(status, TQ_MOM_MALLOC_ERR) << "allocation " << index;
      ASSERT_EQ(Dump(), before) << "allocation " << index;
      ASSERT_EQ(GetParam().run(g, arguments), usual) << "once more, with memory";
    }
  }
};

TEST_P(OutOfMemory, OnceLeavesTheStoreAsItWas) { Run(FailureMode::kOnce); }
TEST_P(OutOfMemory, FromThenOnLeavesTheStoreAsItWas) { Run(FailureMode::kFromThenOn); }

int Count(const std::vector<void*>& members) { return static_cast<int>(members.size()); }

const Case kCases[] = {
    {"get",
     [](tq_global_t* g, Arguments& a) {
       int status;
       tq_obj* object = tq_mom_get_sync(g, 0, a.text, &status);
       return Freed(object, status);
     }},
    {"get_ext", [](tq_global_t* g,
                   Arguments& a) { return Status(tq_mom_get_ext_sync(g, 0, nullptr, a.text), tq_mom_get_res_free); }},
    {"set", [](tq_global_t* g, Arguments& a) { return tq_mom_set_sync(g, 0, a.text); }},
    {"set_absent", [](tq_global_t* g, Arguments& a) { return tq_mom_set_sync(g, 0, a.absent); }},
    {"setnx", [](tq_global_t* g, Arguments& a) { return tq_mom_setnx_sync(g, 0, a.absent); }},
    {"setnx_noreply", [](tq_global_t* g, Arguments& a) { return tq_mom_setnx_noreply_sync(g, 0, a.absent); }},
    {"psetex", [](tq_global_t* g, Arguments& a) { return tq_mom_psetex_sync(g, 0, a.text, 10); }},
    {"incr",
     [](tq_global_t* g, Arguments& a) { return Status(tq_mom_incr_sync(g, 0, a.number), tq_mom_incr_res_free); }},
    {"incr_absent",
     [](tq_global_t* g, Arguments& a) { return Status(tq_mom_incr_sync(g, 0, a.absent), tq_mom_incr_res_free); }},
    {"pexpire_field",
     [](tq_global_t* g, Arguments& a) { return tq_mom_pexpire_field_sync(g, 0, a.hash, 10, 2, NoTimeout()); }},
    {"pexpire_fields_at_once",
     [](tq_global_t* g, Arguments& a) {
       return tq_mom_pexpire_fields_sync(g, 0, a.hash, 0, a.tags.data(), 3, NoTimeout());
     }},
    {"hmset", [](tq_global_t* g, Arguments& a) { return tq_mom_hmset_sync(g, 0, a.hash, a.tags.data(), 3); }},
    {"hmset_absent", [](tq_global_t* g, Arguments& a) { return tq_mom_hmset_sync(g, 1, a.hash, a.tags.data(), 3); }},
    {"hmsetnx", [](tq_global_t* g, Arguments& a) { return tq_mom_hmsetnx_sync(g, 0, a.hash, a.tags.data(), 3); }},
    {"hmget",
     [](tq_global_t* g, Arguments& a) {
       return Status(tq_mom_hmget_sync(g, 0, a.hash, a.tags.data(), 3), tq_mom_hash_res_free);
     }},
    {"hgetall",
     [](tq_global_t* g, Arguments& a) { return Status(tq_mom_hgetall_sync(g, 0, a.hash), tq_mom_hash_res_free); }},
    {"lpush", [](tq_global_t* g, Arguments& a) { return tq_mom_lpush_sync(g, 0, a.list); }},
    {"rpush_absent", [](tq_global_t* g, Arguments& a) { return tq_mom_rpush_sync(g, 0, a.absent); }},
    {"lpop",
     [](tq_global_t* g, Arguments& a) {
       int left;
       tq_obj* object = tq_mom_lpop_sync(g, 0, a.list, &left);
       return Freed(object, left);
     }},
    {"rpop",
     [](tq_global_t* g, Arguments& a) {
       int left;
       tq_obj* object = tq_mom_rpop_sync(g, 0, a.list, &left);
       return Freed(object, left);
     }},
    {"lrange", [](tq_global_t* g,
                  Arguments& a) { return Status(tq_mom_lrange_sync(g, 0, a.list, 0, -1), tq_mom_lrange_res_free); }},
    {"linsert", [](tq_global_t* g, Arguments& a) { return tq_mom_linsert_sync(g, 0, a.list, a.pivot, 1); }},
    {"lset", [](tq_global_t* g, Arguments& a) { return tq_mom_lset_sync(g, 0, a.list, 1); }},
    {"sadd", [](tq_global_t* g, Arguments& a) { return tq_mom_sadd_sync(g, 0, a.set); }},
    {"sadd_absent", [](tq_global_t* g, Arguments& a) { return tq_mom_sadd_sync(g, 0, a.absent); }},
    {"smembers",
     [](tq_global_t* g, Arguments& a) { return Status(tq_mom_smembers_sync(g, 0, a.set), tq_mom_smembers_res_free); }},
    {"zadd", [](tq_global_t* g,
                Arguments& a) { return tq_mom_zadd_sync(g, 0, a.scores.data(), a.members.data(), Count(a.members)); }},
    {"zadd_absent",
     [](tq_global_t* g, Arguments& a) {
       void* members[] = {a.absent_member};
       return tq_mom_zadd_sync(g, 0, a.scores.data(), members, 1);
     }},
    {"zrem", [](tq_global_t* g, Arguments& a) { return tq_mom_zrem_sync(g, 0, a.members.data(), Count(a.members)); }},
    {"zrange", [](tq_global_t* g,
                  Arguments& a) { return Status(tq_mom_zrange_sync(g, 0, a.member, 0, -1), tq_mom_zrange_res_free); }},
    {"zrangebyscore",
     [](tq_global_t* g, Arguments& a) {
       return Status(tq_mom_zrangebyscore_sync(g, 0, a.member, 0, 9), tq_mom_zrangebyscore_res_free);
     }},
    {"zscore",
     [](tq_global_t* g, Arguments& a) { return Status(tq_mom_zscore_sync(g, 0, a.member), tq_mom_zscore_res_free); }},
    {"publish", [](tq_global_t* g, Arguments& a) { return tq_mom_publish_sync(g, 0, a.text); }},
    {"subscribe",
     [](tq_global_t* g, Arguments&) {
       const int number = tq_kit_subscribe(
           g, 0, kLong.c_str(), [](tq_global_t*, const tq_mom_pubsub_msg_t*, void*) {}, nullptr);
       return std::min(number, 1);
     }},
    {"scan",
     [](tq_global_t* g, Arguments& a) {
       return tq_mom_scan_sync(
           g, 0, a.everything, 0, [](tq_global_t*, void*, void*) { return 0; }, nullptr);
     }},
    {"scan_without_callback",
     [](tq_global_t* g, Arguments& a) { return tq_mom_scan_sync(g, 0, a.everything, 0, nullptr, nullptr); }},
    {"object_new",
     [](tq_global_t*, Arguments&) {
       tq_obj* object = tq_obj_new(kLong.data(), kLong.size());
       return object != nullptr ? tq_mom_tq_obj_free(object) : TQ_MOM_MALLOC_ERR;
     }},
};

INSTANTIATE_TEST_SUITE_P(Commands, OutOfMemory, ::testing::ValuesIn(kCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

// A part of a value object that cannot be replaced stays.
TEST(OutOfMemoryObject, StaysAsItWas) {
  Obj object("key", "value");
  object.Field(2, "two");
  const auto failing = [&](auto call) {
    const FailingAllocations armed(0, FailureMode::kFromThenOn);
    return call();
  };
  EXPECT_EQ(failing([&] { return tq_obj_set_key(object, kLong.data(), kLong.size()); }), TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(failing([&] { return tq_obj_set_value(object, kLong.data(), kLong.size()); }), TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(failing([&] { return tq_obj_set_field(object, 2, kLong.data(), kLong.size()); }), TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(failing([&] { return tq_obj_set_field(object, 1, "one", 3); }), TQ_MOM_MALLOC_ERR);
  EXPECT_STREQ(tq_obj_key(object, nullptr), "key");
  EXPECT_EQ(ValueOf(object), "value");
  EXPECT_STREQ(tq_obj_field(object, 2, nullptr), "two");
  EXPECT_EQ(tq_obj_field_count(object), 1U);
}

// Without a runtime there is nobody to keep the reason.
TEST(OutOfMemoryResult, IsNoneWithoutARuntime) {
  const FailingAllocations failing(0, FailureMode::kFromThenOn);
  EXPECT_EQ(tq_mom_get_ext_sync(nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(tq_mom_incr_sync(nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(tq_mom_hgetall_sync(nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(tq_mom_lrange_sync(nullptr, 0, nullptr, 0, -1), nullptr);
  EXPECT_EQ(tq_mom_smembers_sync(nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(tq_mom_zrange_sync(nullptr, 0, nullptr, 0, -1), nullptr);
  EXPECT_EQ(tq_mom_zrangebyscore_sync(nullptr, 0, nullptr, 0, 1), nullptr);
  EXPECT_EQ(tq_mom_zscore_sync(nullptr, 0, nullptr), nullptr);
}

class OutOfMemoryScan : public KitTest {};

// The elements before the failure have been delivered; the scan says that it is not whole.
TEST_F(OutOfMemoryScan, ThatRunsOutBetweenElementsSaysSo) {
  for (const char* key : {"a", "b"}) Set(key, kLong);
  struct Context {
    std::unique_ptr<FailingAllocations> failing;
    int calls = 0;
  } context;
  const Obj pattern("*");
  const int status = tq_mom_scan_sync(
      g, 0, pattern, 0,
      [](tq_global_t*, void*, void* data) {
        auto* seen = static_cast<Context*>(data);
        ++seen->calls;
        seen->failing = std::make_unique<FailingAllocations>(0, FailureMode::kFromThenOn);
        return 0;
      },
      &context);
  context.failing.reset();
  EXPECT_EQ(status, TQ_MOM_MALLOC_ERR);
  EXPECT_EQ(context.calls, 1);
  EXPECT_TRUE(ClientOf(g)->frames.empty());
}

}  // namespace
}  // namespace hostkit

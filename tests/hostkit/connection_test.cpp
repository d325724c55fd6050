#include <tq_kit/control.h>
#include <unistd.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "all_commands.h"
#include "kit_fixture.h"

namespace hostkit {
namespace {

TEST(Connection, InitMakesARuntimeThatFinishEnds) {
  tq_global_t* g = tq_global_init(nullptr, nullptr);
  ASSERT_NE(g, nullptr);
  EXPECT_NE(g->rmc, nullptr);
  EXPECT_EQ(g->master, tq_global_get_master(g));
  EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
  EXPECT_EQ(tq_global_finish(g), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_global_get_master(g), nullptr);
}

TEST(Connection, InitUsesAGivenRecord) {
  tq_global_t record = {};
  EXPECT_EQ(tq_global_init("", &record), &record);
  EXPECT_EQ(record.rmc, nullptr) << "the record is not written";
  EXPECT_EQ(tq_global_init(nullptr, &record), nullptr) << "it is a runtime already";
  EXPECT_EQ(tq_mom_client_connect_sync(&record, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_global_finish(&record), TQ_MOM_OK);
  EXPECT_EQ(tq_global_init(nullptr, &record), &record) << "a finished record can be used again";
  EXPECT_EQ(tq_mom_client_connect_sync(&record, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_global_finish(&record), TQ_MOM_OK);
}

TEST(Connection, RuntimesHaveStoresOfTheirOwn) {
  tq_global_t* first = tq_global_init(nullptr, nullptr);
  tq_global_t* second = tq_global_init(nullptr, nullptr);
  tq_mom_client_connect_sync(first, 0);
  tq_mom_client_connect_cluster_sync(second, 0);
  const Obj object("k", "v");
  EXPECT_EQ(tq_mom_set_sync(first, 0, object), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_exists_sync(first, 0, object), 1);
  EXPECT_EQ(tq_mom_exists_sync(second, 0, object), 0);
  EXPECT_EQ(tq_global_finish(first), TQ_MOM_OK);
  EXPECT_EQ(tq_global_finish(second), TQ_MOM_OK);
}

TEST(Connection, ANameOfAServerThatIsNoneStartsNothing) {
  for (const char* name : {"redis://", "redis+unix://"}) EXPECT_EQ(tq_global_init(name, nullptr), nullptr) << name;
}

class Runtime : public KitTest {};

TEST_F(Runtime, TheMasterCanBeInspected) {
  tq_thread_master* master = tq_global_get_master(g);
  ASSERT_NE(master, nullptr);
  EXPECT_EQ(master->index, 0);
  EXPECT_EQ(master->tid, gettid());
  EXPECT_EQ(master->flag, static_cast<u_int32_t>(TQ_THREAD_USE_POLL));
  EXPECT_EQ(master->nfds, 0);
  for (const tq_thread_list& list : master->timer) {
    EXPECT_EQ(list.head, nullptr);
    EXPECT_EQ(list.count, 0);
  }
  const tq_thread* event = master->cur_thread;
  ASSERT_NE(event, nullptr);
  EXPECT_STREQ(event->name, "kit");
  EXPECT_EQ(event->master, master);
  EXPECT_EQ(event->zg, g);
  EXPECT_EQ(event->pfd_index, -1);
}

TEST_F(Runtime, TheEventExpiresKeys) {
  ASSERT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), 10), TQ_MOM_OK);
  clock.Advance(10);
  tq_thread* event = tq_global_get_master(g)->cur_thread;
  EXPECT_EQ(event->func(event), TQ_MOM_OK);
  EXPECT_TRUE(engine->store().Names(0).empty());
}

TEST_F(Runtime, RunExpiresWhatIsDueAndReturns) {
  ASSERT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), 10), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_psetex_sync(g, 37, Obj("k", "v"), 11), TQ_MOM_OK);
  clock.Advance(10);
  EXPECT_EQ(tq_global_run(g), TQ_MOM_OK);
  EXPECT_TRUE(engine->store().Names(0).empty());
  EXPECT_EQ(engine->store().Names(37).size(), 1U);
}

TEST_F(Runtime, OverwrittenRecordFieldsDoNoHarm) {
  g->rmc = nullptr;
  g->master = nullptr;
  EXPECT_EQ(Set("k", "v"), TQ_MOM_OK);
  EXPECT_NE(tq_global_get_master(g), nullptr);
}

TEST_F(Runtime, DebugShowAllPrintsASummary) {
  Set("s", "v");
  Push("l", "v");
  int32_t tags[] = {1};
  for (const char* name : {"h1", "h2"}) {
    Obj hash(name);
    hash.Field(1, "one");
    tq_mom_hmset_sync(g, 0, hash, tags, 1);
  }
  double scores[] = {1};
  const Obj member("z", "m");
  void* members[] = {member};
  tq_mom_zadd_sync(g, 0, scores, members, 1);
  for (const char* name : {"m1", "m2", "m3"}) tq_mom_sadd_sync(g, 0, Obj(name, "v"));
  tq_mom_psetex_sync(g, 3, Obj("e", "v"), 10);
  tq_mom_psetex_sync(g, 4, Obj("gone", "v"), 5);
  clock.Advance(5);
  Push("popped", "v");
  int left;
  tq_obj* popped = tq_mom_lpop_sync(g, 0, Obj("popped"), &left);
  tq_mom_lrange_res_t* range = tq_mom_lrange_sync(g, 0, Obj("l"), 0, -1);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(tq_mom_debug_show_all(g), TQ_MOM_OK);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "connected: yes\n"
            "db 0: 8 keys: 1 strings, 2 hashes, 1 lists, 3 sets, 1 sorted sets; 0 expire\n"
            "db 3: 1 keys: 1 strings, 0 hashes, 0 lists, 0 sets, 0 sorted sets; 1 expire\n"
            "subscriptions: 0\n"
            "unreleased: 1 results, 1 objects\n")
      << "objects that the caller made do not count";
  EXPECT_EQ(tq_mom_lrange_res_free(range), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_tq_obj_free(popped), TQ_MOM_OK);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(tq_mom_debug_show_all(g), TQ_MOM_OK);
  EXPECT_NE(::testing::internal::GetCapturedStdout().find("unreleased: 0 results, 0 objects\n"), std::string::npos);
}

class Commands : public KitTest {
 protected:
  static void ExpectAll(int status, const std::vector<CommandResult>& seen) {
    for (const auto& [call, got] : seen) EXPECT_EQ(got, status) << call;
  }
  // Usable for every command: the value is a number, so that incr works.
  Obj key{"k", "1"};

  void SetUp() override {
    KitTest::SetUp();
    key.Field(1, "one");
  }
  void TearDown() override {
    EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
    EXPECT_EQ(tq_kit_live_results(), 0U);
    EXPECT_EQ(tq_kit_live_objects(), 1U) << "the key";
  }
};

TEST_F(Commands, WorkOnEveryDatabase) {
  for (int db = 0; db < kDatabaseCount; ++db) {
    for (const auto& [call, got] : RunAll(g, db, key)) EXPECT_GE(got, 0) << call << " in " << db;
  }
}

TEST_F(Commands, RefuseADatabaseOutOfRange) {
  for (const int db : {-1, 38, 1000000, -2147483647}) ExpectAll(TQ_MOM_INPUT_ERR, RunAll(g, db, key));
}

TEST_F(Commands, RefuseANullKey) { ExpectAll(TQ_MOM_INPUT_ERR, RunAll(g, 0, nullptr)); }

TEST_F(Commands, RefuseAKeyThatIsNoValueObject) {
  ExpectAll(TQ_MOM_INPUT_ERR, RunAll(g, 0, reinterpret_cast<tq_obj*>(g)));
}

TEST_F(Commands, RefuseAnImpossibleKeyText) {
  for (const std::string& text : {std::string(), std::string("a\0b", 3), std::string(512, 'k')}) {
    Obj wrong(text, "1");
    wrong.Field(1, "one");
    ExpectAll(TQ_MOM_INPUT_ERR, RunAll(g, 0, wrong));
  }
  Obj longest(std::string(511, 'k'), "1");
  longest.Field(1, "one");
  for (const auto& [call, got] : RunAll(g, 0, longest)) EXPECT_GE(got, 0) << call;
}

TEST_F(Commands, RefuseANullOrForeignRuntime) {
  tq_global_t record = {};
  ExpectAll(TQ_MOM_INPUT_ERR, RunAll(nullptr, 0, key));
  ExpectAll(TQ_MOM_INPUT_ERR, RunAll(&record, 0, key));
  for (tq_global_t* wrong : {static_cast<tq_global_t*>(nullptr), &record}) {
    EXPECT_EQ(tq_global_finish(wrong), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_global_get_master(wrong), nullptr);
    EXPECT_EQ(tq_global_run(wrong), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_client_connect_sync(wrong, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_client_connect_cluster_sync(wrong, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_debug_show_all(wrong), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_bgsave_sync(wrong, 0), TQ_MOM_INPUT_ERR);
  }
}

TEST_F(Commands, NeedAConnection) {
  Restart("");
  ExpectAll(TQ_MOM_NO_READY, RunAll(g, 0, key));
  EXPECT_EQ(tq_mom_bgsave_sync(g, 0), TQ_MOM_NO_READY);
  EXPECT_EQ(tq_mom_client_connect_cluster_sync(g, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  for (const auto& [call, got] : RunAll(g, 0, key)) EXPECT_GE(got, 0) << call;
}

// Each with one thing wrong.
const OwnArguments kWrong[] = {
    {.tags = nullptr},
    {.tag_count = 0},
    {.tag_count = -1},
    {.milliseconds = 0},
    {.bound = std::numeric_limits<double>::quiet_NaN()},
    {.pivot = false},
    {.where = 2},
};

// The first check that fails gives the status: runtime, connection, database and key, own arguments, read-only.
TEST_F(Commands, CheckInOneOrder) {
  Obj valueless("k");
  const std::size_t wrong_own = 5;  // the wrong arguments that some command refuses, at the least
  for (const OwnArguments& wrong : kWrong) ExpectAll(TQ_MOM_INPUT_ERR, RunAll(nullptr, 38, nullptr, wrong));

  Restart("");
  for (const OwnArguments& wrong : kWrong) {
    for (const int db : {0, 38}) {
      for (tq_obj* object :
           {static_cast<tq_obj*>(key), static_cast<tq_obj*>(valueless), static_cast<tq_obj*>(nullptr)}) {
        ExpectAll(TQ_MOM_NO_READY, RunAll(g, db, object, wrong));
      }
    }
  }
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
  ASSERT_EQ(tq_kit_read_only(g, 0, 1), TQ_MOM_OK);
  std::size_t refused = 0;
  for (const OwnArguments& wrong : kWrong) {
    const std::vector<CommandResult> right = RunAll(g, 0, key);
    const std::vector<CommandResult> seen = RunAll(g, 0, key, wrong);
    for (std::size_t index = 0; index < seen.size(); ++index) {
      if (seen[index].status == right[index].status) continue;
      EXPECT_EQ(seen[index].status, TQ_MOM_INPUT_ERR)
          << seen[index].call << ": a wrong argument comes before read-only";
      ++refused;
    }
  }
  EXPECT_GE(refused, wrong_own);
}

TEST_F(Commands, SayWhyTheyFail) {
  EXPECT_EQ(tq_kit_last_error(nullptr), nullptr);
  Restart("");
  tq_mom_llen_sync(g, 0, key);
  EXPECT_STREQ(tq_kit_last_error(g), "not connected");
  tq_mom_client_connect_sync(g, 0);
  EXPECT_STREQ(tq_kit_last_error(g), "");
  Set("k", "v");
  tq_mom_llen_sync(g, 0, key);
  EXPECT_STREQ(tq_kit_last_error(g), "the key holds a string");
  tq_mom_lset_sync(g, 0, Obj("nobody", "v"), 0);
  EXPECT_STREQ(tq_kit_last_error(g), "the list has no such element");
  StatusOf(tq_mom_incr_sync(g, 0, Obj("k")), tq_mom_incr_res_free);
  EXPECT_STREQ(tq_kit_last_error(g), "the value is no decimal 64-bit number in its shortest form");
  EXPECT_EQ(tq_mom_exists_sync(g, 0, key), 1);
  EXPECT_STREQ(tq_kit_last_error(g), "") << "the last call did not fail";
}

// A write is refused whatever it would do; a read is not.
TEST_F(Commands, ReadOnlyRefusesWrites) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
  const std::string before = Dump();
  ASSERT_EQ(tq_kit_read_only(g, 0, 1), TQ_MOM_OK);
  for (const auto& [call, got] : RunAll(g, 0, key)) {
    const std::string_view name(call);
    bool reads = false;
    for (const char* read : {"_get_", "exists", "hmget", "hgetall", "llen", "lrange", "sismember", "scard", "smembers",
                             "zcard", "zcount", "zrange", "zrank", "zscore", "publish", "scan"}) {
      reads = reads || name.find(read) != std::string_view::npos;
    }
    EXPECT_EQ(got == TQ_MOM_GLOBAL_DB_NO_WRITE, !reads) << call << " gave " << got;
  }
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(tq_mom_set_sync(g, 1, key), TQ_MOM_OK) << "another database";
  ASSERT_EQ(tq_kit_read_only(g, 0, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
}

TEST_F(Commands, RefuseAnotherKindOfValue) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, Obj("string", "1")), TQ_MOM_OK);
  int32_t tags[] = {1};
  Obj hash("hash", "1");
  hash.Field(1, "one");
  ASSERT_EQ(tq_mom_hmset_sync(g, 0, hash, tags, 1), TQ_MOM_OK);
  ASSERT_EQ(tq_mom_rpush_sync(g, 0, Obj("list", "1")), 1);
  ASSERT_EQ(tq_mom_sadd_sync(g, 0, Obj("set", "1")), 1);
  Obj member("sorted", "1");
  void* members[] = {member};
  double scores[] = {1};
  ASSERT_EQ(tq_mom_zadd_sync(g, 0, scores, members, 1), 1);

  const std::string before = Dump();
  int out;
  const timeval none = {};
  for (const char* kind : {"hash", "list", "set", "sorted"}) {
    EXPECT_EQ(tq_mom_get_sync(g, 0, Obj(kind), &out), nullptr);
    EXPECT_EQ(out, TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_get_ext_sync(g, 0, nullptr, Obj(kind)), tq_mom_get_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_incr_sync(g, 0, Obj(kind)), tq_mom_incr_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_setnx_sync(g, 0, Obj(kind, "1")), 0);
  }
  for (const char* kind : {"string", "list", "set", "sorted"}) {
    Obj object(kind);
    object.Field(1, "one");
    EXPECT_EQ(tq_mom_hmset_sync(g, 0, object, tags, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_hmsetnx_sync(g, 0, object, tags, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_hmget_sync(g, 0, object, tags, 1), tq_mom_hash_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_hgetall_sync(g, 0, object), tq_mom_hash_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, object, 1, 1, none), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, object, 1, tags, 1, none), TQ_MOM_INPUT_ERR);
  }
  for (const char* kind : {"string", "hash", "set", "sorted"}) {
    const Obj object(kind, "1");
    EXPECT_EQ(tq_mom_lpush_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_rpush_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_lpop_sync(g, 0, object, &out), nullptr);
    EXPECT_EQ(out, TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_rpop_sync(g, 0, object, &out), nullptr);
    EXPECT_EQ(out, TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_llen_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_lrange_sync(g, 0, object, 0, -1), tq_mom_lrange_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_linsert_sync(g, 0, object, object, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_lset_sync(g, 0, object, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_lrem_sync(g, 0, object, 0), TQ_MOM_INPUT_ERR);
  }
  for (const char* kind : {"string", "hash", "list", "sorted"}) {
    const Obj object(kind, "1");
    EXPECT_EQ(tq_mom_sadd_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_srem_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_sismember_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_scard_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_smembers_sync(g, 0, object), tq_mom_smembers_res_free), TQ_MOM_INPUT_ERR);
  }
  for (const char* kind : {"string", "hash", "list", "set"}) {
    const Obj object(kind, "1");
    void* wrong[] = {object};
    EXPECT_EQ(tq_mom_zadd_sync(g, 0, scores, wrong, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zrem_sync(g, 0, wrong, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zcard_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zcount_sync(g, 0, object, 0, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_zrange_sync(g, 0, object, 0, -1), tq_mom_zrange_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_zrangebyscore_sync(g, 0, object, 0, 1), tq_mom_zrangebyscore_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zrank_sync(g, 0, object), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(StatusOf(tq_mom_zscore_sync(g, 0, object), tq_mom_zscore_res_free), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zremrangebyrank_sync(g, 0, object, 0, -1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_mom_zremrangebyscore_sync(g, 0, object, 0, 1), TQ_MOM_INPUT_ERR);
  }
  EXPECT_EQ(Dump(), before);
}

TEST_F(Commands, ThatNeedAValueRefuseAnObjectWithoutOne) {
  Obj bare("bare");
  const Obj full("bare", "1");
  void* members[] = {full, bare};
  double scores[] = {1, 2};
  for (const int status : {
           tq_mom_set_sync(g, 0, bare),
           tq_mom_setnx_sync(g, 0, bare),
           tq_mom_setnx_noreply_sync(g, 0, bare),
           tq_mom_psetex_sync(g, 0, bare, 10),
           tq_mom_lpush_sync(g, 0, bare),
           tq_mom_rpush_sync(g, 0, bare),
           tq_mom_linsert_sync(g, 0, bare, full, 0),
           tq_mom_linsert_sync(g, 0, full, bare, 0),
           tq_mom_lset_sync(g, 0, bare, 0),
           tq_mom_lrem_sync(g, 0, bare, 0),
           tq_mom_sadd_sync(g, 0, bare),
           tq_mom_srem_sync(g, 0, bare),
           tq_mom_sismember_sync(g, 0, bare),
           tq_mom_zadd_sync(g, 0, scores, members, 2),
           tq_mom_zrem_sync(g, 0, members, 2),
           tq_mom_zrank_sync(g, 0, bare),
           StatusOf(tq_mom_zscore_sync(g, 0, bare), tq_mom_zscore_res_free),
           tq_mom_publish_sync(g, 0, bare),
       }) {
    EXPECT_EQ(status, TQ_MOM_INPUT_ERR);
  }
  EXPECT_EQ(tq_mom_exists_sync(g, 0, bare), 0);
}

TEST_F(Commands, ResultsAreReleasedByTheirReleaseFunctionOnly) {
  ASSERT_EQ(tq_mom_set_sync(g, 0, key), TQ_MOM_OK);
  tq_mom_get_res_t* result = tq_mom_get_ext_sync(g, 0, nullptr, key);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(tq_kit_live_results(), 1U);
  EXPECT_EQ(tq_mom_tq_obj_free(result->value), TQ_MOM_INPUT_ERR) << "the result owns it";
  EXPECT_EQ(tq_mom_incr_res_free(reinterpret_cast<tq_mom_incr_res_t*>(result)), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(ValueOf(result->value), "1");
  result->value = nullptr;  // what a script writes there changes nothing about who owns what
  EXPECT_EQ(tq_mom_get_res_free(result), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_get_res_free(result), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_live_results(), 0U);
  EXPECT_EQ(tq_kit_live_objects(), 1U);

  tq_mom_get_res_t record = {};
  EXPECT_EQ(tq_mom_get_res_free(&record), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_get_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_incr_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_hash_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_lrange_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_smembers_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_zrange_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_zrangebyscore_res_free(nullptr), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_zscore_res_free(nullptr), TQ_MOM_OK);
}

}  // namespace
}  // namespace hostkit

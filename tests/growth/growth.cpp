// What each command of the host kit costs in a small store and in a large one: growth SIZE...
//
// Under valgrind's callgrind, started with --instr-atstart=no, each row ends in a dump named "row size repetitions".
// growth.lua reads the dumps and knows how the cost of each row may grow.
#include <tq_kit/value_object.h>
#include <tq_mom/tq_mom.h>
#include <valgrind/callgrind.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/command.h"

namespace {

using hostkit::Engine;
using hostkit::FieldTag;
using hostkit::Status;

constexpr int kRepetitions = 16;
constexpr int kOnce = 1;      // for what goes through all elements, which differs little
constexpr int kPlain = 0;     // a database of strings
constexpr int kExpiring = 1;  // of strings that expire
constexpr int kLarge = 2;     // of large values
constexpr std::uint32_t kLater = 4000000000U;

void Check(const Status& status) {
  if (status.ok()) return;
  std::fprintf(stderr, "growth: %s\n", status.text().c_str());
  std::exit(1);
}

// All of one length: a cost may grow with the number of elements, not with that of their bytes as well.
std::string Name(std::size_t index) {
  const std::string digits = std::to_string(index);
  return "name:" + std::string(7 - digits.size(), '0') + digits;
}

// A runtime with `size` elements of everything, and the arguments of one row.
class Fixture {
 public:
  explicit Fixture(std::size_t size) : size_(size), g_(tq_global_init("", nullptr)) {
    tq_mom_client_connect_sync(g_, 0);
    Engine& engine = *hostkit::ClientOf(g_)->engine;
    std::int64_t count;
    bool flag;
    for (std::size_t index = 0; index < size; ++index) {
      const std::string name = Name(index);
      const auto tag = static_cast<FieldTag>(index);
      Check(engine.Set({kPlain, name}, "1", std::nullopt));
      Check(engine.Set({kExpiring, name}, "1", kLater));
      const hostkit::FieldView field{tag, "value"};
      Check(engine.HashSet({kLarge, "hash"}, {&field, 1}));
      Check(engine.HashSet({kLarge, "expiring"}, {&field, 1}));
      Check(engine.HashExpire({kLarge, "expiring"}, {&tag, 1}, kLater, &count));
      Check(engine.ListPush({kLarge, "list"}, hostkit::End::kTail, name, &count));
      Check(engine.SetAdd({kLarge, "set"}, name, &flag));
      const hostkit::ScoredView member{name, static_cast<double>(index)};
      Check(engine.SortedAdd({kLarge, "sorted"}, {&member, 1}, &count));
    }
  }
  ~Fixture() { tq_global_finish(g_); }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  tq_global_t* g() const { return g_; }
  std::size_t size() const { return size_; }
  // An element that is there, another one for each repetition; and one that is not.
  std::size_t Present(int repetition) const {
    return (static_cast<std::size_t>(repetition) * 2 + 1) * size_ / (std::size_t{2} * kRepetitions);
  }
  std::size_t Absent(int repetition) const { return size_ + static_cast<std::size_t>(repetition); }

 private:
  const std::size_t size_;
  tq_global_t* const g_;
};

struct Object {
  Object(std::string_view key, std::string_view value) : object(tq_obj_new(key.data(), key.size())) {
    tq_obj_set_value(object, value.data(), value.size());
  }
  ~Object() { tq_mom_tq_obj_free(object); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  tq_obj* const object;
};

using Arguments = std::function<std::unique_ptr<Object>(const Fixture&, int)>;

// Key objects for the repetitions of a row.
std::unique_ptr<Object> Key(const Fixture& fixture, int repetition) {
  return std::make_unique<Object>(Name(fixture.Present(repetition)), "1");
}
std::unique_ptr<Object> NewKey(const Fixture& fixture, int repetition) {
  return std::make_unique<Object>(Name(fixture.Absent(repetition)), "1");
}
Arguments In(const char* key) {
  return [key](const Fixture& fixture, int repetition) {
    return std::make_unique<Object>(key, Name(fixture.Present(repetition)));
  };
}
Arguments NewIn(const char* key) {
  return [key](const Fixture& fixture, int repetition) {
    return std::make_unique<Object>(key, Name(fixture.Absent(repetition)));
  };
}
// Has the field of each repetition.
Arguments FieldsOf(const char* key, bool absent) {
  return [=](const Fixture& fixture, int repetition) {
    auto object = std::make_unique<Object>(key, "");
    const std::size_t index = absent ? fixture.Absent(repetition) : fixture.Present(repetition);
    tq_obj_set_field(object->object, static_cast<std::uint32_t>(index), "other", 5);
    return object;
  };
}

struct Row {
  const char* name;
  Arguments arguments;
  std::function<void(const Fixture&, int repetition, tq_obj*)> run;
  int repetitions = kRepetitions;
};

void Drop(tq_obj* object) { tq_mom_tq_obj_free(object); }
int Middle(const Fixture& fixture) { return static_cast<int>(fixture.size() / 2); }
double Score(const Fixture& fixture, int repetition) { return static_cast<double>(fixture.Present(repetition)); }

using F = const Fixture&;

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      {"get", Key,
       [](F f, int, tq_obj* key) {
         int status;
         Drop(tq_mom_get_sync(f.g(), kPlain, key, &status));
       }},
      {"exists", Key, [](F f, int, tq_obj* key) { tq_mom_exists_sync(f.g(), kPlain, key); }},
      {"set, old key", Key, [](F f, int, tq_obj* key) { tq_mom_set_sync(f.g(), kPlain, key); }},
      {"setnx, old key", Key, [](F f, int, tq_obj* key) { tq_mom_setnx_sync(f.g(), kPlain, key); }},
      {"incr", Key, [](F f, int, tq_obj* key) { tq_mom_incr_res_free(tq_mom_incr_sync(f.g(), kPlain, key)); }},
      {"set, new key", NewKey, [](F f, int, tq_obj* key) { tq_mom_set_sync(f.g(), kPlain, key); }},
      {"del", NewKey, [](F f, int, tq_obj* key) { tq_mom_del_sync(f.g(), kPlain, key); }},
      {"psetex", Key, [](F f, int, tq_obj* key) { tq_mom_psetex_sync(f.g(), kExpiring, key, 1000000000); }},
      {"pexpire", Key, [](F f, int, tq_obj* key) { tq_mom_pdel_sync(f.g(), kExpiring, key, 1000000001); }},
      {"del_expire", Key, [](F f, int, tq_obj* key) { tq_mom_del_expire_sync(f.g(), kExpiring, key, 0, 0); }},
      {"get, expiring", Key,
       [](F f, int, tq_obj* key) {
         int status;
         Drop(tq_mom_get_sync(f.g(), kExpiring, key, &status));
       }},
      {"tq_global_run", Key, [](F f, int, tq_obj*) { tq_global_run(f.g()); }},
      {"hmset, old field", FieldsOf("hash", false),
       [](F f, int repetition, tq_obj* key) {
         auto tag = static_cast<std::int32_t>(f.Present(repetition));
         tq_mom_hmset_sync(f.g(), kLarge, key, &tag, 1);
       }},
      {"hmset, new field", FieldsOf("hash", true),
       [](F f, int repetition, tq_obj* key) {
         auto tag = static_cast<std::int32_t>(f.Absent(repetition));
         tq_mom_hmset_sync(f.g(), kLarge, key, &tag, 1);
       }},
      {"hmget", In("hash"),
       [](F f, int repetition, tq_obj* key) {
         auto tag = static_cast<std::int32_t>(f.Present(repetition));
         tq_mom_hash_res_free(tq_mom_hmget_sync(f.g(), kLarge, key, &tag, 1));
       }},
      {"hmget, expiring", In("expiring"),
       [](F f, int repetition, tq_obj* key) {
         auto tag = static_cast<std::int32_t>(f.Present(repetition));
         tq_mom_hash_res_free(tq_mom_hmget_sync(f.g(), kLarge, key, &tag, 1));
       }},
      {"pexpire_field", In("expiring"),
       [](F f, int repetition, tq_obj* key) {
         tq_mom_pexpire_field_sync(f.g(), kLarge, key, 1000000000, f.Present(repetition), {});
       }},
      {"hgetall", In("hash"),
       [](F f, int, tq_obj* key) { tq_mom_hash_res_free(tq_mom_hgetall_sync(f.g(), kLarge, key)); }, kOnce},
      {"lpush", In("list"), [](F f, int, tq_obj* key) { tq_mom_lpush_sync(f.g(), kLarge, key); }},
      {"rpush", In("list"), [](F f, int, tq_obj* key) { tq_mom_rpush_sync(f.g(), kLarge, key); }},
      {"lpop", In("list"),
       [](F f, int, tq_obj* key) {
         int left;
         Drop(tq_mom_lpop_sync(f.g(), kLarge, key, &left));
       }},
      {"rpop", In("list"),
       [](F f, int, tq_obj* key) {
         int left;
         Drop(tq_mom_rpop_sync(f.g(), kLarge, key, &left));
       }},
      {"llen", In("list"), [](F f, int, tq_obj* key) { tq_mom_llen_sync(f.g(), kLarge, key); }},
      {"lrange, first 10", In("list"),
       [](F f, int, tq_obj* key) { tq_mom_lrange_res_free(tq_mom_lrange_sync(f.g(), kLarge, key, 0, 9)); }},
      {"lrange, last 10", In("list"),
       [](F f, int, tq_obj* key) { tq_mom_lrange_res_free(tq_mom_lrange_sync(f.g(), kLarge, key, -10, -1)); }},
      {"lrange, middle 10", In("list"),
       [](F f, int, tq_obj* key) {
         tq_mom_lrange_res_free(tq_mom_lrange_sync(f.g(), kLarge, key, Middle(f), Middle(f) + 9));
       }},
      {"lset, last", In("list"), [](F f, int, tq_obj* key) { tq_mom_lset_sync(f.g(), kLarge, key, -1); }},
      {"lset, middle", In("list"), [](F f, int, tq_obj* key) { tq_mom_lset_sync(f.g(), kLarge, key, Middle(f)); }},
      {"linsert", In("list"), [](F f, int, tq_obj* key) { tq_mom_linsert_sync(f.g(), kLarge, key, key, 0); }},
      {"lrem", In("list"), [](F f, int, tq_obj* key) { tq_mom_lrem_sync(f.g(), kLarge, key, 1); }},
      {"sadd", NewIn("set"), [](F f, int, tq_obj* key) { tq_mom_sadd_sync(f.g(), kLarge, key); }},
      {"srem", NewIn("set"), [](F f, int, tq_obj* key) { tq_mom_srem_sync(f.g(), kLarge, key); }},
      {"sismember", In("set"), [](F f, int, tq_obj* key) { tq_mom_sismember_sync(f.g(), kLarge, key); }},
      {"scard", In("set"), [](F f, int, tq_obj* key) { tq_mom_scard_sync(f.g(), kLarge, key); }},
      {"smembers", In("set"),
       [](F f, int, tq_obj* key) { tq_mom_smembers_res_free(tq_mom_smembers_sync(f.g(), kLarge, key)); }, kOnce},
      {"zadd, old member", In("sorted"),
       [](F f, int repetition, tq_obj* key) {
         void* members[] = {key};
         double scores[] = {Score(f, repetition) + 0.5};
         tq_mom_zadd_sync(f.g(), kLarge, scores, members, 1);
       }},
      {"zadd, new member", NewIn("sorted"),
       [](F f, int repetition, tq_obj* key) {
         void* members[] = {key};
         double scores[] = {Score(f, repetition)};
         tq_mom_zadd_sync(f.g(), kLarge, scores, members, 1);
       }},
      {"zrem", NewIn("sorted"),
       [](F f, int, tq_obj* key) {
         void* members[] = {key};
         tq_mom_zrem_sync(f.g(), kLarge, members, 1);
       }},
      {"zcard", In("sorted"), [](F f, int, tq_obj* key) { tq_mom_zcard_sync(f.g(), kLarge, key); }},
      {"zscore", In("sorted"),
       [](F f, int, tq_obj* key) { tq_mom_zscore_res_free(tq_mom_zscore_sync(f.g(), kLarge, key)); }},
      {"zrank", In("sorted"), [](F f, int, tq_obj* key) { tq_mom_zrank_sync(f.g(), kLarge, key); }},
      {"zcount", In("sorted"),
       [](F f, int repetition, tq_obj* key) { tq_mom_zcount_sync(f.g(), kLarge, key, 1, Score(f, repetition)); }},
      {"zrange, middle 10", In("sorted"),
       [](F f, int, tq_obj* key) {
         tq_mom_zrange_res_free(tq_mom_zrange_sync(f.g(), kLarge, key, Middle(f), Middle(f) + 9));
       }},
      {"zrangebyscore, 10", In("sorted"),
       [](F f, int, tq_obj* key) {
         tq_mom_zrangebyscore_res_free(tq_mom_zrangebyscore_sync(f.g(), kLarge, key, Middle(f), Middle(f) + 9));
       }},
      {"zremrangebyrank, one", In("sorted"),
       [](F f, int, tq_obj* key) { tq_mom_zremrangebyrank_sync(f.g(), kLarge, key, Middle(f), Middle(f)); }},
      {"zremrangebyscore, one", In("sorted"),
       [](F f, int repetition, tq_obj* key) {
         const double score = Score(f, repetition) + 0.5;
         tq_mom_zremrangebyscore_sync(f.g(), kLarge, key, score, score);
       }},
      {"scan, first key", In("*"),
       [](F f, int, tq_obj* key) {
         tq_mom_scan_sync(
             f.g(), kPlain, key, 0, [](tq_global_t*, void*, void*) { return 1; }, nullptr);
       }},
      {"scan, all keys", In("*"),
       [](F f, int, tq_obj* key) {
         tq_mom_scan_sync(
             f.g(), kPlain, key, 0, [](tq_global_t*, void*, void*) { return 0; }, nullptr);
       },
       kOnce},
      {"scan, count", In("*"), [](F f, int, tq_obj* key) { tq_mom_scan_sync(f.g(), kPlain, key, 0, nullptr, nullptr); },
       kOnce},
  };
  return rows;
}

}  // namespace

int main(int count, char** arguments) {
  for (int index = 1; index < count; ++index) {
    const Fixture fixture(std::strtoull(arguments[index], nullptr, 10));
    for (const Row& row : Rows()) {
      std::vector<std::unique_ptr<Object>> objects;
      objects.reserve(static_cast<std::size_t>(row.repetitions));
      for (int repetition = 0; repetition < row.repetitions; ++repetition) {
        objects.push_back(row.arguments(fixture, repetition));
      }
      const std::string name = std::string(row.name) + "\t" + arguments[index] + "\t" + std::to_string(row.repetitions);
      CALLGRIND_START_INSTRUMENTATION;
      CALLGRIND_ZERO_STATS;
      for (int repetition = 0; repetition < row.repetitions; ++repetition) {
        row.run(fixture, repetition, objects[static_cast<std::size_t>(repetition)]->object);
      }
      CALLGRIND_DUMP_STATS_AT(name.c_str());
      CALLGRIND_STOP_INSTRUMENTATION;
    }
  }
  return 0;
}

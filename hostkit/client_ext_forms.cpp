// The _ext forms whose options mean nothing to the kit: each is its plain form with an option record in third place.
// A row names the command and how many arguments follow that record.
#include <tq_mom/tq_mom.h>

#include <cstddef>
#include <tuple>

namespace {

template <typename Function> struct Form;
template <typename R, typename... Arguments> struct Form<R(Arguments...)> {
  using Result = R;
  template <std::size_t index> using Argument = std::tuple_element_t<index, std::tuple<Arguments...>>;
};

}  // namespace

#define TQ_FORM(name) Form<decltype(tq_mom_##name##_ext_sync)>
#define TQ_ARGUMENT(name, index) TQ_FORM(name)::Argument<index>
#define TQ_HEAD(name)                                                                                 \
  TQ_FORM(name)::Result tq_mom_##name##_ext_sync(tq_global_t* g, int db, TQ_ARGUMENT(name, 2) /*op*/, \
                                                 TQ_ARGUMENT(name, 3) first
#define TQ_EXT_1(name) \
  TQ_HEAD(name)) { return tq_mom_##name##_sync(g, db, first); }
#define TQ_EXT_2(name) \
  TQ_HEAD(name), TQ_ARGUMENT(name, 4) second) { return tq_mom_##name##_sync(g, db, first, second); }
#define TQ_EXT_3(name)                                                      \
  TQ_HEAD(name), TQ_ARGUMENT(name, 4) second, TQ_ARGUMENT(name, 5) third) { \
    return tq_mom_##name##_sync(g, db, first, second, third);               \
  }

// clang-format off
TQ_EXT_1(set)
TQ_EXT_1(setnx_noreply)
TQ_EXT_1(del)
TQ_EXT_1(exists)
TQ_EXT_1(incr)
TQ_EXT_1(hgetall)
TQ_EXT_1(lpush)
TQ_EXT_1(rpush)
TQ_EXT_2(lpop)
TQ_EXT_2(rpop)
TQ_EXT_1(llen)
TQ_EXT_3(lrange)
TQ_EXT_3(linsert)
TQ_EXT_2(lset)
TQ_EXT_2(lrem)
TQ_EXT_1(sadd)
TQ_EXT_1(srem)
TQ_EXT_1(sismember)
TQ_EXT_1(scard)
TQ_EXT_1(smembers)
TQ_EXT_3(zadd)
TQ_EXT_2(zrem)
TQ_EXT_1(zcard)
TQ_EXT_3(zcount)
TQ_EXT_3(zrange)
TQ_EXT_3(zrangebyscore)
TQ_EXT_1(zrank)
TQ_EXT_1(zscore)
TQ_EXT_3(zremrangebyrank)
TQ_EXT_3(zremrangebyscore)
TQ_EXT_1(publish)

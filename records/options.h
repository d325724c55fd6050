// Request options.
#pragma once

#include "records/records.h"

namespace tq_mom {

// Most options are just their flag.
#define TQ_OPTION(name) TQ_CLASS(tq_mom_##name##_op_t, TQ_FIELD(flag))

inline constexpr RecordClass kOptions[] = {
    // clang-format off
    TQ_OPTION(set), TQ_OPTION(get), TQ_OPTION(hget), TQ_OPTION(hmset), TQ_OPTION(hmsetnx), TQ_OPTION(hmupdate),
    TQ_OPTION(del), TQ_OPTION(exist), TQ_OPTION(publish),
    TQ_CLASS(tq_mom_psetex_op_t, TQ_FIELD(flag), TQ_FIELD(milseconds)),
    TQ_OPTION(sadd), TQ_OPTION(srem), TQ_OPTION(sismember), TQ_OPTION(scard), TQ_OPTION(smembers), TQ_OPTION(lpush),
    TQ_OPTION(rpush), TQ_OPTION(lpop), TQ_OPTION(rpop), TQ_OPTION(linsert), TQ_OPTION(llen), TQ_OPTION(lrange),
    TQ_OPTION(lrem), TQ_OPTION(lset), TQ_OPTION(zadd), TQ_OPTION(zcard), TQ_OPTION(zcount), TQ_OPTION(zrange),
    TQ_OPTION(zrangebyscore), TQ_OPTION(zrangebyscorelimit), TQ_OPTION(zrank), TQ_OPTION(zrem),
    TQ_OPTION(zremrangebyrank), TQ_OPTION(zremrangebyscore), TQ_OPTION(zscore), TQ_OPTION(incr),
    // clang-format on
};

#undef TQ_OPTION

}  // namespace tq_mom

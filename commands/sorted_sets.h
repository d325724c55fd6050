// Sorted sets.
#ifndef TQ_COMMANDS_SORTED_SETS_H
#define TQ_COMMANDS_SORTED_SETS_H

#include "commands/command.h"
#include "commands/exports.h"

namespace tq_mom {

constexpr Function kSortedSetCommands[] = {
    TQ_COMMAND(zadd, _tq_mom_zadd_sync),
    TQ_COMMAND(zadd_ext, _tq_mom_zadd_ext_sync),
    TQ_COMMAND(zrem, tq_mom_zrem_sync),
    TQ_COMMAND(zrem_ext, tq_mom_zrem_ext_sync),
    TQ_COMMAND(zcard, tq_mom_zcard_sync),
    TQ_COMMAND(zcard_ext, tq_mom_zcard_ext_sync),
    TQ_COMMAND(zcount, tq_mom_zcount_sync),
    TQ_COMMAND(zcount_ext, tq_mom_zcount_ext_sync),
    TQ_COMMAND(zrange, tq_mom_zrange_sync),
    TQ_COMMAND(zrange_ext, tq_mom_zrange_ext_sync),
    TQ_COMMAND(zrangebyscore, tq_mom_zrangebyscore_sync),
    TQ_COMMAND(zrangebyscore_ext, tq_mom_zrangebyscore_ext_sync),
    TQ_COMMAND(zrank, tq_mom_zrank_sync),
    TQ_COMMAND(zrank_ext, tq_mom_zrank_ext_sync),
    TQ_COMMAND(zscore, tq_mom_zscore_sync),
    TQ_COMMAND(zscore_ext, tq_mom_zscore_ext_sync),
    TQ_COMMAND(zremrangebyrank, tq_mom_zremrangebyrank_sync),
    TQ_COMMAND(zremrangebyrank_ext, tq_mom_zremrangebyrank_ext_sync),
    TQ_COMMAND(zremrangebyscore, tq_mom_zremrangebyscore_sync),
    TQ_COMMAND(zremrangebyscore_ext, tq_mom_zremrangebyscore_ext_sync),
    TQ_COMMAND(zrange_res_free, tq_mom_zrange_res_free),
    TQ_COMMAND(zrangebyscore_res_free, tq_mom_zrangebyscore_res_free),
    TQ_COMMAND(zscore_res_free, tq_mom_zscore_res_free),
};

}  // namespace tq_mom

#endif

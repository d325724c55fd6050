// Sorted sets.
#pragma once

#include "commands/command.h"
#include "commands/exports.h"

namespace tq_mom {

using SortedSetCommands = List<
    // clang-format off
    TQ_COMMAND(zadd, _tq_mom_zadd_sync, int(Store, int, Scores, Members)),
    TQ_COMMAND(zadd_ext, _tq_mom_zadd_ext_sync, int(Store, int, tq_mom_zadd_op_t*, Scores, Members)),
    TQ_COMMAND(zrem, tq_mom_zrem_sync, int(Store, int, Members)),
    TQ_COMMAND(zrem_ext, tq_mom_zrem_ext_sync, int(Store, int, tq_mom_zrem_op_t*, Members)),
    TQ_COMMAND(zcard, tq_mom_zcard_sync, int(Store, int, Key)),
    TQ_COMMAND(zcard_ext, tq_mom_zcard_ext_sync, int(Store, int, tq_mom_zcard_op_t*, Key)),
    TQ_COMMAND(zcount, tq_mom_zcount_sync, int(Store, int, Key, double, double)),
    TQ_COMMAND(zcount_ext, tq_mom_zcount_ext_sync, int(Store, int, tq_mom_zcount_op_t*, Key, double, double)),
    TQ_COMMAND(zrange, tq_mom_zrange_sync, tq_mom_zrange_res_t*(Store, int, Key, int, int)),
    TQ_COMMAND(zrange_ext, tq_mom_zrange_ext_sync, tq_mom_zrange_res_t*(Store, int, tq_mom_zrange_op_t*, Key, int, int)),
    TQ_COMMAND(zrangebyscore, tq_mom_zrangebyscore_sync, tq_mom_zrangebyscore_res_t*(Store, int, Key, double, double)),
    TQ_COMMAND(zrangebyscore_ext, tq_mom_zrangebyscore_ext_sync, tq_mom_zrangebyscore_res_t*(Store, int, tq_mom_zrangebyscore_op_t*, Key, double, double)),
    TQ_COMMAND(zrank, tq_mom_zrank_sync, int(Store, int, Key)),
    TQ_COMMAND(zrank_ext, tq_mom_zrank_ext_sync, int(Store, int, tq_mom_zrank_op_t*, Key)),
    TQ_COMMAND(zscore, tq_mom_zscore_sync, tq_mom_zscore_res_t*(Store, int, Key)),
    TQ_COMMAND(zscore_ext, tq_mom_zscore_ext_sync, tq_mom_zscore_res_t*(Store, int, tq_mom_zscore_op_t*, Key)),
    TQ_COMMAND(zremrangebyrank, tq_mom_zremrangebyrank_sync, int(Store, int, Key, int, int)),
    TQ_COMMAND(zremrangebyrank_ext, tq_mom_zremrangebyrank_ext_sync, int(Store, int, tq_mom_zremrangebyrank_op_t*, Key, int, int)),
    TQ_COMMAND(zremrangebyscore, tq_mom_zremrangebyscore_sync, int(Store, int, Key, double, double)),
    TQ_COMMAND(zremrangebyscore_ext, tq_mom_zremrangebyscore_ext_sync, int(Store, int, tq_mom_zremrangebyscore_op_t*, Key, double, double)),
    TQ_COMMAND(zrange_res_free, tq_mom_zrange_res_free, int(tq_mom_zrange_res_t*)),
    TQ_COMMAND(zrangebyscore_res_free, tq_mom_zrangebyscore_res_free, int(tq_mom_zrangebyscore_res_t*)),
    TQ_COMMAND(zscore_res_free, tq_mom_zscore_res_free, int(tq_mom_zscore_res_t*))>;
// clang-format on

}  // namespace tq_mom

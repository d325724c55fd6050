// Lists.
#pragma once

#include "commands/command.h"

namespace tq_mom {

using ListCommands = List<
    // clang-format off
    TQ_COMMAND(lpush, tq_mom_lpush_sync, int(Store, int, Key)),
    TQ_COMMAND(lpush_ext, tq_mom_lpush_ext_sync, int(Store, int, tq_mom_lpush_op_t*, Key)),
    TQ_COMMAND(rpush, tq_mom_rpush_sync, int(Store, int, Key)),
    TQ_COMMAND(rpush_ext, tq_mom_rpush_ext_sync, int(Store, int, tq_mom_rpush_op_t*, Key)),
    TQ_COMMAND(lpop, tq_mom_lpop_sync, tq_obj*(Store, int, Key, Out)),
    TQ_COMMAND(lpop_ext, tq_mom_lpop_ext_sync, tq_obj*(Store, int, tq_mom_lpop_op_t*, Key, Out)),
    TQ_COMMAND(rpop, tq_mom_rpop_sync, tq_obj*(Store, int, Key, Out)),
    TQ_COMMAND(rpop_ext, tq_mom_rpop_ext_sync, tq_obj*(Store, int, tq_mom_rpop_op_t*, Key, Out)),
    TQ_COMMAND(llen, tq_mom_llen_sync, int(Store, int, Key)),
    TQ_COMMAND(llen_ext, tq_mom_llen_ext_sync, int(Store, int, tq_mom_llen_op_t*, Key)),
    TQ_COMMAND(lrange, tq_mom_lrange_sync, tq_mom_lrange_res_t*(Store, int, Key, int, int)),
    TQ_COMMAND(lrange_ext, tq_mom_lrange_ext_sync, tq_mom_lrange_res_t*(Store, int, tq_mom_lrange_op_t*, Key, int, int)),
    TQ_COMMAND(linsert, tq_mom_linsert_sync, int(Store, int, Key, Key, Unsigned)),
    TQ_COMMAND(linsert_ext, tq_mom_linsert_ext_sync, int(Store, int, tq_mom_linsert_op_t*, Key, Key, Unsigned)),
    TQ_COMMAND(lset, tq_mom_lset_sync, int(Store, int, Key, int)),
    TQ_COMMAND(lset_ext, tq_mom_lset_ext_sync, int(Store, int, tq_mom_lset_op_t*, Key, int)),
    TQ_COMMAND(lrem, tq_mom_lrem_sync, int(Store, int, Key, Size)),
    TQ_COMMAND(lrem_ext, tq_mom_lrem_ext_sync, int(Store, int, tq_mom_lrem_op_t*, Key, Size)),
    TQ_COMMAND(lrange_res_free, tq_mom_lrange_res_free, int(tq_mom_lrange_res_t*))>;
// clang-format on

}  // namespace tq_mom

// Hashes.
#pragma once

#include "commands/command.h"
#include "commands/exports.h"

namespace tq_mom {

using HashCommands = List<
    // clang-format off
    TQ_COMMAND(hmset, tq_mom_hmset_sync, int(Store, int, Key, Integers)),
    TQ_COMMAND(hmsetnx, tq_mom_hmsetnx_sync, int(Store, int, Key, Integers)),
    TQ_COMMAND(hmset_ext, _tq_mom_hmset_ext_sync, int(Store, int, tq_mom_hmset_op_t*, Key, Integers)),
    TQ_COMMAND(hmsetnx_ext, _tq_mom_hmsetnx_ext_sync, int(Store, int, tq_mom_hmsetnx_op_t*, Key, Integers)),
    TQ_COMMAND(hmget, tq_mom_hmget_sync, tq_mom_hash_res_t*(Store, int, Key, Integers)),
    TQ_COMMAND(hgetall, tq_mom_hgetall_sync, tq_mom_hash_res_t*(Store, int, Key)),
    TQ_COMMAND(hgetall_ext, tq_mom_hgetall_ext_sync, tq_mom_hash_res_t*(Store, int, tq_mom_hget_op_t*, Key)),
    TQ_COMMAND(hash_res_free, tq_mom_hash_res_free, int(tq_mom_hash_res_t*))>;
// clang-format on

}  // namespace tq_mom

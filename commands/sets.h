// Sets.
#pragma once

#include "commands/command.h"

namespace tq_mom {

using SetCommands = List<
    // clang-format off
    TQ_COMMAND(sadd, tq_mom_sadd_sync, int(Store, int, Key)),
    TQ_COMMAND(sadd_ext, tq_mom_sadd_ext_sync, int(Store, int, tq_mom_sadd_op_t*, Key)),
    TQ_COMMAND(srem, tq_mom_srem_sync, int(Store, int, Key)),
    TQ_COMMAND(srem_ext, tq_mom_srem_ext_sync, int(Store, int, tq_mom_srem_op_t*, Key)),
    TQ_COMMAND(sismember, tq_mom_sismember_sync, int(Store, int, Key)),
    TQ_COMMAND(sismember_ext, tq_mom_sismember_ext_sync, int(Store, int, tq_mom_sismember_op_t*, Key)),
    TQ_COMMAND(scard, tq_mom_scard_sync, int(Store, int, Key)),
    TQ_COMMAND(scard_ext, tq_mom_scard_ext_sync, int(Store, int, tq_mom_scard_op_t*, Key)),
    TQ_COMMAND(smembers, tq_mom_smembers_sync, tq_mom_smembers_res_t*(Store, int, Key)),
    TQ_COMMAND(smembers_ext, tq_mom_smembers_ext_sync, tq_mom_smembers_res_t*(Store, int, tq_mom_smembers_op_t*, Key)),
    TQ_COMMAND(smembers_res_free, tq_mom_smembers_res_free, int(tq_mom_smembers_res_t*))>;
// clang-format on

}  // namespace tq_mom

// Sets.
#ifndef TQ_COMMANDS_SETS_H
#define TQ_COMMANDS_SETS_H

#include "commands/command.h"

namespace tq_mom {

constexpr Function kSetCommands[] = {
    TQ_COMMAND(sadd, tq_mom_sadd_sync),
    TQ_COMMAND(sadd_ext, tq_mom_sadd_ext_sync),
    TQ_COMMAND(srem, tq_mom_srem_sync),
    TQ_COMMAND(srem_ext, tq_mom_srem_ext_sync),
    TQ_COMMAND(sismember, tq_mom_sismember_sync),
    TQ_COMMAND(sismember_ext, tq_mom_sismember_ext_sync),
    TQ_COMMAND(scard, tq_mom_scard_sync),
    TQ_COMMAND(scard_ext, tq_mom_scard_ext_sync),
    TQ_COMMAND(smembers, tq_mom_smembers_sync),
    TQ_COMMAND(smembers_ext, tq_mom_smembers_ext_sync),
    TQ_COMMAND(smembers_res_free, tq_mom_smembers_res_free),
};

}  // namespace tq_mom

#endif

// Hashes.
#ifndef TQ_COMMANDS_HASHES_H
#define TQ_COMMANDS_HASHES_H

#include "commands/command.h"
#include "commands/exports.h"

namespace tq_mom {

constexpr Function kHashCommands[] = {
    TQ_COMMAND(hmset, tq_mom_hmset_sync),
    TQ_COMMAND(hmsetnx, tq_mom_hmsetnx_sync),
    TQ_COMMAND(hmset_ext, _tq_mom_hmset_ext_sync),
    TQ_COMMAND(hmsetnx_ext, _tq_mom_hmsetnx_ext_sync),
    TQ_COMMAND(hmget, tq_mom_hmget_sync),
    TQ_COMMAND(hgetall, tq_mom_hgetall_sync),
    TQ_COMMAND(hgetall_ext, tq_mom_hgetall_ext_sync),
    TQ_COMMAND(hash_res_free, tq_mom_hash_res_free),
};

}  // namespace tq_mom

#endif

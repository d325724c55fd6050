// Lists.
#ifndef TQ_COMMANDS_LISTS_H
#define TQ_COMMANDS_LISTS_H

#include "commands/command.h"

namespace tq_mom {

constexpr Function kListCommands[] = {
    TQ_COMMAND(lpush, tq_mom_lpush_sync),
    TQ_COMMAND(lpush_ext, tq_mom_lpush_ext_sync),
    TQ_COMMAND(rpush, tq_mom_rpush_sync),
    TQ_COMMAND(rpush_ext, tq_mom_rpush_ext_sync),
    TQ_COMMAND(lpop, tq_mom_lpop_sync),
    TQ_COMMAND(lpop_ext, tq_mom_lpop_ext_sync),
    TQ_COMMAND(rpop, tq_mom_rpop_sync),
    TQ_COMMAND(rpop_ext, tq_mom_rpop_ext_sync),
    TQ_COMMAND(llen, tq_mom_llen_sync),
    TQ_COMMAND(llen_ext, tq_mom_llen_ext_sync),
    TQ_COMMAND(lrange, tq_mom_lrange_sync),
    TQ_COMMAND(lrange_ext, tq_mom_lrange_ext_sync),
    TQ_COMMAND(linsert, tq_mom_linsert_sync),
    TQ_COMMAND(linsert_ext, tq_mom_linsert_ext_sync),
    TQ_COMMAND(lset, tq_mom_lset_sync),
    TQ_COMMAND(lset_ext, tq_mom_lset_ext_sync),
    TQ_COMMAND_WITH_SIZE(lrem, tq_mom_lrem_sync),
    TQ_COMMAND_WITH_SIZE(lrem_ext, tq_mom_lrem_ext_sync),
    TQ_COMMAND(lrange_res_free, tq_mom_lrange_res_free),
};

}  // namespace tq_mom

#endif

// Connection and runtime control.
#ifndef TQ_COMMANDS_CONNECTION_H
#define TQ_COMMANDS_CONNECTION_H

#include "commands/command.h"

namespace tq_mom {

constexpr Function kConnectionCommands[] = {
    TQ_COMMAND(tq_global_init, tq_global_init),
    TQ_COMMAND(tq_global_finish, tq_global_finish),
    TQ_COMMAND(tq_global_get_master, tq_global_get_master),
    TQ_COMMAND(tq_global_run, tq_global_run),
    TQ_COMMAND(client_connect, tq_mom_client_connect_sync),
    TQ_COMMAND(client_connect_cluster, tq_mom_client_connect_cluster_sync),
    TQ_COMMAND(debug_show_all, tq_mom_debug_show_all),
    TQ_COMMAND(bgsave, tq_mom_bgsave_sync),
};

}  // namespace tq_mom

#endif

// Connection and runtime control.
#pragma once

#include "commands/command.h"

namespace tq_mom {

using ConnectionCommands = List<
    // clang-format off
    TQ_COMMAND(tq_global_init, tq_global_init, tq_global_t*(Text, Store)),
    TQ_COMMAND(tq_global_finish, tq_global_finish, int(Store)),
    TQ_COMMAND(tq_global_get_master, tq_global_get_master, tq_thread_master*(Store)),
    TQ_COMMAND(tq_global_run, tq_global_run, int(Store)),
    TQ_COMMAND(client_connect, tq_mom_client_connect_sync, int(Store, int)),
    TQ_COMMAND(client_connect_cluster, tq_mom_client_connect_cluster_sync, int(Store, int)),
    TQ_COMMAND(debug_show_all, tq_mom_debug_show_all, int(Store)),
    TQ_COMMAND(bgsave, tq_mom_bgsave_sync, int(Store, int))>;
// clang-format on

}  // namespace tq_mom

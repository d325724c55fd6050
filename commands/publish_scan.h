// Publish and scan.
#pragma once

#include "commands/command.h"

namespace tq_mom {

// The invoker of scan, the one command that calls back into Lua: it makes handles of runtimes and messages.
int InvokeScan(lua_State* L, const BoundCommand& bound);

using PublishScanCommands = List<
    // clang-format off
    TQ_COMMAND(publish, tq_mom_publish_sync, int(Store, int, Key)),
    TQ_COMMAND(publish_ext, tq_mom_publish_ext_sync, int(Store, int, tq_mom_publish_op_t*, Key)),
    TQ_COMMAND(scan, tq_mom_scan_sync, int(Store, int, Key, Unsigned, Callback, Anything), tq_global_t, InvokeScan)>;
// clang-format on

}  // namespace tq_mom

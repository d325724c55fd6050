// Publish and scan.
#ifndef TQ_COMMANDS_PUBLISH_SCAN_H
#define TQ_COMMANDS_PUBLISH_SCAN_H

#include "commands/command.h"

namespace tq_mom {

// The caller of scan, the one command that calls back into Lua: it makes handles of runtimes and messages.
Word CallScan(lua_State* L, ClientFunction client, const Slot* slots);

using PublishScanCommands = List<
    // clang-format off
    TQ_COMMAND(publish, tq_mom_publish_sync, int(Store, int, Key)),
    TQ_COMMAND(publish_ext, tq_mom_publish_ext_sync, int(Store, int, tq_mom_publish_op_t*, Key)),
    TQ_COMMAND(scan, tq_mom_scan_sync, int(Store, int, Key, Unsigned, Callback, Anything), tq_global_t, CallScan)>;
// clang-format on

}  // namespace tq_mom

#endif

// Publish and scan.
#ifndef TQ_COMMANDS_PUBLISH_SCAN_H
#define TQ_COMMANDS_PUBLISH_SCAN_H

#include "binding/references.h"
#include "commands/command.h"
#include "commands/exports.h"

namespace tq_mom {

// The one command that calls back into Lua.
int Scan(lua_State* L);

constexpr Function kPublishScanCommands[] = {
    TQ_COMMAND(publish, tq_mom_publish_sync),
    TQ_COMMAND(publish_ext, tq_mom_publish_ext_sync),
    {"scan", Scan, {TypeId::_p_tq_global_s, TypeId::_p_tq_mom_pubsub_msg_s}},
};

}  // namespace tq_mom

#endif

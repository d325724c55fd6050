// All commands.
#ifndef TQ_COMMANDS_COMMANDS_H
#define TQ_COMMANDS_COMMANDS_H

#include "commands/command.h"

namespace tq_mom {

// Sets them as fields of the table at the stack top.
void AddCommands(lua_State* L);
int CountCommands();

// The Lua function's name.
const char* CommandName(const CommandRow& command);

}  // namespace tq_mom

#endif

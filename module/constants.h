// The module's integer constants.
#ifndef TQ_MODULE_CONSTANTS_H
#define TQ_MODULE_CONSTANTS_H

#include <lua.hpp>

namespace tq_mom {

// Sets them as fields of the table at the stack top.
void AddConstants(lua_State* L);
int CountConstants();

}  // namespace tq_mom

#endif

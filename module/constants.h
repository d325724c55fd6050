// The module's integer constants.
#pragma once

#include <lua.hpp>

namespace tq_mom {

// Sets them as fields of the table at the stack top.
void AddConstants(lua_State* L);
int CountConstants();

}  // namespace tq_mom

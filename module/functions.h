// The module's functions.
#ifndef TQ_MODULE_FUNCTIONS_H
#define TQ_MODULE_FUNCTIONS_H

#include <lua.hpp>

namespace tq_mom {

inline constexpr int kFunctionCount = 119;

// Sets them as fields of the table at the stack top.
void AddFunctions(lua_State* L);

}  // namespace tq_mom

#endif

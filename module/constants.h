// The module's integer constants.
#ifndef TQ_MODULE_CONSTANTS_H
#define TQ_MODULE_CONSTANTS_H

#include <lua.hpp>

namespace tq_mom {

inline constexpr int kConstantCount = 106;

// Sets them as fields of the table at the stack top.
void AddConstants(lua_State* L);

}  // namespace tq_mom

#endif

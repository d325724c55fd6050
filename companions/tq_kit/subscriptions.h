// Subscriptions of Lua functions to published messages.
#pragma once

#include "binding/abi.h"

namespace tq_kit {

// Lua function: tq_kit.subscribe(g, db, pattern, function(g, message, text) ... end) -> subscription
int Subscribe(lua_State* L);

extern binding::ClassRecord subscription_class;

}  // namespace tq_kit

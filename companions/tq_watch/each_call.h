#pragma once

#include <lua.hpp>

namespace tq_watch {

// tq_watch.each_call(body [, {status=, null=}]): runs body once for each client call that it makes, and fails that
// call. Returns a table of the runs: {call=, text=, where=, error=, leaked=}.
int EachCall(lua_State* L);

}  // namespace tq_watch

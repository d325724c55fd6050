// The contents of databases as Lua tables. Which element goes where is the matter of the module's part in Lua.
#pragma once

#include <lua.hpp>

namespace tq_kit {

// An element in Lua is a list: key, kind, remaining time of the key, bytes, tag, remaining time of the field, score.
// Times are nil for never.

// Lua function: makes dump(g, db) -> keys of take(keys, element ...), which enters an element into the table.
int MakeDump(lua_State* L);

// Lua function: makes load(g, db, keys) of plan(keys), which returns a list of elements, or nil and what is wrong.
int MakeLoad(lua_State* L);

}  // namespace tq_kit

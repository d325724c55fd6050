// Lua tables as native arrays.
#pragma once

#include <lua.hpp>

namespace tq_mom {

// Each converts the table at the index into one malloc'ed block, which is the caller's, and its element count; an empty
// table gives null and 0. Returns null, or the text of the error, with nothing left allocated. Pushes nothing, raises
// nothing.

// int32_t: Lua integers, cut to their low 32 bits.
const char* BuildIntegers(lua_State* L, int index, void** elements, int* count);
// double: numbers and strings that convert to one.
const char* BuildScores(lua_State* L, int index, void** elements, int* count);
// void *: the native pointers of handles of any type; nil gives null.
const char* BuildMembers(lua_State* L, int index, void** elements, int* count);

}  // namespace tq_mom

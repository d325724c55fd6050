// The search of a member in an object's class and its bases. It runs in the frame of a dispatcher.
#pragma once

#include <lua.hpp>

#include "binding/invariant.h"

namespace binding {

// A dispatcher's upvalues, the keys that it looks up: ready strings, where a literal would be hashed anew each time.
enum Key { kAccessors = 1, kBases, kItem, kMethods };

// Pushes the table that the table at the index holds under the key. Each file has a copy in its own instruction set.
static inline void PushTable(lua_State* L, int table, Key key) {
  lua_pushvalue(L, lua_upvalueindex(key));
  TQ_INVARIANT_TABLE(lua_rawget(L, table) == LUA_TTABLE);
}

inline constexpr int kNotFound = -1;

// Looks into one class, whose metatable is at the index, for the key at index 2 of the object at index 1: for a field
// or method, for __getitem, for a setter or __setitem, which set the value at index 3. Returns how many results it has
// pushed, or kNotFound.
using Look = int (*)(lua_State* L, int metatable);
int LookForMember(lua_State* L, int metatable);
int LookForItem(lua_State* L, int metatable);
int LookForSetter(lua_State* L, int metatable);

// Looks into the object's class and then, depth first, into its bases. Pushes the results and nothing else.
int SearchClass(lua_State* L, Look look);
// The same without the class itself, whose metatable is on the stack top.
int SearchBases(lua_State* L, Look look);

}  // namespace binding

// Lua values that native code keeps in the registry, for callbacks. Exported, for other native code.
#pragma once

#include <lua.hpp>

extern "C" {

// Both fields are zero in an empty reference.
struct CallbackReference {
  lua_State* state;
  int reference;
};

// Keeps the value at the index (which may be nil) and fills in the reference.
[[gnu::visibility("default")]] void swiglua_ref_set(CallbackReference* reference, lua_State* L, int index);
// Pushes the value onto the reference's state; nothing for an empty reference.
[[gnu::visibility("default")]] void swiglua_ref_get(const CallbackReference* reference);
// Gives the value up and empties the reference.
[[gnu::visibility("default")]] void swiglua_ref_clear(CallbackReference* reference);

}  // extern "C"

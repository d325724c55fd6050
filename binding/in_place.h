// Accessors and constructors that the dispatchers run in their own frame.
//
// A nested call of an accessor is a sixth of what a field access costs. So a dispatcher that finds one of the module's
// numbered functions does not call it but runs its body's short way, knowing the object's handle already. Such a way
// either does all that the call would have done or nothing: what raises an error is left to the real call, so that
// errors are the same. A debugger that counts calls (a hook) gets the real call, too, and so does every function of
// another module. Only the address can tell which functions are the module's: a script may put any C function into the
// tables.
#pragma once

#include "binding/abi.h"
#include "binding/numbered.h"

namespace binding {

// Each `run` returns whether it did the work. The stack has room for LUA_MINSTACK - 8 values.
struct InPlace {
  NumberedFunctions getters;
  NumberedFunctions setters;
  NumberedFunctions constructors;
  // Pushes the field's value. The handle is that of the object.
  bool (*get)(lua_State* L, const Handle& handle, std::size_t number);
  // Sets the field to the value at the index.
  bool (*set)(lua_State* L, const Handle& handle, std::size_t number, int value);
  // Pushes the object that the constructor makes without arguments. The running function has the HandleUpvalues of its
  // class.
  bool (*construct)(lua_State* L, std::size_t number);
};

}  // namespace binding

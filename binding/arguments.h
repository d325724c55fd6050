// The errors of misuse.
#pragma once

#include "binding/handles.h"
#include "binding/numbers.h"

namespace binding {

// The name of a value's type in messages: a handle's readable type name, else Lua's own.
const char* TypeName(lua_State* L, int index);

// A piece of a message; null ends a list of them.
using Piece = const char*;

// Raise a Lua error. None returns; nothing with a destructor may be alive in the caller.
//
// The script's position goes before the message: that of the Lua function that called the running one. Where a C
// function called it, as a dispatcher calls an accessor, there is none.
[[noreturn]] void RaiseCountError(lua_State* L, const Piece* function, int expected);
[[noreturn]] void RaiseKindError(lua_State* L, const Piece* function, int argument, const char* expected,
                                 std::size_t expected_length);
[[noreturn]] void RaiseAtCaller(lua_State* L, const Piece* message);
[[noreturn]] void RaiseNegativeError(lua_State* L);
// Raises the text as it stands.
[[noreturn]] void RaiseBare(lua_State* L, const char* message);

}  // namespace binding

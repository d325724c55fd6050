// What the functions of tq_kit take, and how their failures become Lua errors.
#pragma once

#include <tq_kit/control.h>

#include "binding/abi.h"

namespace tq_kit {

// The module's types, in the order of their mangled names.
enum TypeId { kGlobalType, kSubscriptionType, kMessageType, kTypeCount };
extern binding::TypeDescriptor* type_table[kTypeCount + 1];

// Raise a Lua error that names the argument and says what was expected.
tq_global_t* CheckRuntime(lua_State* L);  // argument 1: a runtime that is not finished
int CheckDatabase(lua_State* L);          // argument 2
// A text without NUL, which C functions take.
const char* CheckText(lua_State* L, int index, const char* what);
[[noreturn]] void RaiseArgument(lua_State* L, int index, const char* expected);

// Raises what the runtime says about its last call when the status is negative.
void CheckStatus(lua_State* L, tq_global_t* g, const char* function, int status);

// Names of kinds, in the order of tq_kit_kind_t; the first is null.
extern const char* const kKindNames[];

}  // namespace tq_kit

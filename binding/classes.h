// Lua classes built from class records: the metatable of their objects and the table that constructs them.
#pragma once

#include "binding/namespaces.h"

namespace binding {

// Registers the class in the namespace table at the stack top. The metatable of its objects is made once for an
// interpreter, whoever registers the class first.
void RegisterClass(lua_State* L, const ClassRecord& record, const Shared& shared);

// Lua function: the metamethod of a class that has it from a base. Upvalues: the metamethod's name, the class record.
int CallInheritedMetamethod(lua_State* L);

}  // namespace binding

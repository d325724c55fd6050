// The ring of type tables that the modules of this kind in one interpreter share.
#pragma once

#include "binding/abi.h"

namespace binding {

// Joins the interpreter's ring and, on the process's first call, fills the module's type table: a type that another
// module of the ring has already is shared with it, and takes over our class record.
void JoinRing(lua_State* L, ModuleRecord* module);

// Gives the class records of our types to the types that may stand for them and have none.
void PropagateClasses(const ModuleRecord& module);

// Finds the class records that our classes name as their bases.
void ResolveBases(lua_State* L, const ModuleRecord& module);

// The cast entry for handles of the given type, moved to the front of the list; null when there is none.
CastEntry* FindCast(TypeDescriptor* expected, const TypeDescriptor* actual);

}  // namespace binding

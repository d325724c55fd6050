// The Lua functions behind obj.field, obj.field = value and Class().
#pragma once

#include "binding/in_place.h"

namespace binding {

// Push the member getter and setter, the same for all classes.
void PushMemberGetter(lua_State* L);
void PushMemberSetter(lua_State* L);

// Pushes the function that makes Class(...) call the class's constructor.
void PushConstructorProxy(lua_State* L, const ClassRecord& record);

// Gives the dispatchers the module's own accessors and constructors. Until then they call all functions.
void SetInPlace(const InPlace& functions);

}  // namespace binding

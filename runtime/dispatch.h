// The Lua functions behind obj.field, obj.field = value and Class().
#ifndef TQ_RUNTIME_DISPATCH_H
#define TQ_RUNTIME_DISPATCH_H

#include "runtime/abi.h"

namespace binding {

// Push the member getter and setter, the same for all classes.
void PushMemberGetter(lua_State* L);
void PushMemberSetter(lua_State* L);

// Pushes the function that makes Class(...) call the class's constructor.
void PushConstructorProxy(lua_State* L, const ClassRecord& record);

// Whether the function is one of the three above. They may run this module's functions in their own frame instead of
// through lua_call.
bool IsDispatcher(lua_CFunction function);

}  // namespace binding

#endif

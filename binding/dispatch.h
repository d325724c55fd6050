// The Lua functions behind obj.field, obj.field = value and Class().
#ifndef TQ_BINDING_DISPATCH_H
#define TQ_BINDING_DISPATCH_H

#include "binding/abi.h"

namespace binding {

// Push the member getter and setter, the same for all classes.
void PushMemberGetter(lua_State* L);
void PushMemberSetter(lua_State* L);

// Pushes the function that makes Class(...) call the class's constructor.
void PushConstructorProxy(lua_State* L, const ClassRecord& record);

// A dispatcher's upvalue of this number is a function; no other closure of ours has one there.
inline constexpr int kDispatcherMark = 3;

// Marks the dispatchers and the metamethod proxy, which need upvalues of their own and so cannot run in a dispatcher's
// frame. They lie in one section, which tells them from the functions that can. (Functions that make handles are
// closures, too, but find their class by name where the upvalues are not theirs.)
#define TQ_CLOSURE [[gnu::section("tq_closures")]]

}  // namespace binding

#endif

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

// A dispatcher's upvalue of this number is a function; no other closure of ours has one there.
inline constexpr int kDispatcherMark = 3;

// Marks the Lua functions that have upvalues of their own. All of them lie in one section, so that a dispatcher can
// tell them from the functions that may run in its own frame.
#define TQ_CLOSURE [[gnu::section("tq_closures")]]

}  // namespace binding

#endif

// The class tq_watch.fault. Its constructor is the function of that name.
#pragma once

#include "binding/abi.h"
#include "watch/control.h"

namespace tq_watch {

extern binding::ClassRecord fault_class;
extern binding::TypeDescriptor fault_type;
extern binding::CastEntry fault_casts[2];
// The module's types: faults.
extern binding::TypeDescriptor* type_table[2];

// Adds a fault and pushes the handle that owns it.
Fault* PushFault(lua_State* L, const FaultPlan& plan);

}  // namespace tq_watch

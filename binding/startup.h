// Opening a module of this kind.
#ifndef TQ_BINDING_STARTUP_H
#define TQ_BINDING_STARTUP_H

#include "binding/abi.h"

namespace binding {

// Joins the interpreter's ring of type tables, installs the global functions and registers the module's namespace as a
// global. Pushes two values: the global table and, on top, the module table. The record is process-wide: its types are
// filled in when the process first opens the module. The module table has room for `more_fields` that are set later.
void OpenModule(lua_State* L, ModuleRecord* types, const NamespaceRecord& record, int more_fields = 0);

}  // namespace binding

#endif

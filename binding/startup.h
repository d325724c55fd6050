// Opening a module of this kind.
#pragma once

#include "binding/abi.h"
#include "binding/in_place.h"

namespace binding {

// A module as it presents itself to the runtime.
struct Module {
  ModuleRecord* types;            // process-wide; its types are filled in when the process first opens the module
  const NamespaceRecord* record;  // of the module table
  const char* source;             // what assertion failures name as their source; kept
  int more_fields = 0;            // of the module table, which the module sets later
  InPlace in_place = {};
};

// Joins the interpreter's ring of type tables, installs the global functions and registers the module's namespace as a
// global. Pushes two values: the global table and, on top, the module table.
void OpenModule(lua_State* L, const Module& module);

}  // namespace binding

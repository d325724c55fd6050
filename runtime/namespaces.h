// Lua tables built from namespace records: functions and constants as plain fields, variables behind getters.
#ifndef TQ_RUNTIME_NAMESPACES_H
#define TQ_RUNTIME_NAMESPACES_H

#include "runtime/abi.h"

namespace binding {

// Stack indexes of the member getter and setter that all classes of a registration share.
struct Dispatchers {
  int getter;
  int setter;
};

// Builds the namespace with its classes and sub-namespaces, stores it in the table at the stack top and pushes it. It
// has room for `more_fields` that are set later.
void RegisterNamespace(lua_State* L, const NamespaceRecord& record, const Dispatchers& dispatchers,
                       int more_fields = 0);

// Adds constants, methods and variables to the namespace table at the stack top.
void AddNamespaceDetails(lua_State* L, const NamespaceRecord& record);

// Adds getters and setters to the ".get" and ".set" tables of the table at the stack top.
void AddAttributes(lua_State* L, const Attribute* attributes);

// Sets methods as fields of the table at the stack top.
void AddMethods(lua_State* L, const Method* methods);

// The length of a list that ends with a null name.
template <class Entry>
int CountNamed(const Entry* entries) {
  int count = 0;
  while (entries[count].name != nullptr) ++count;
  return count;
}

// The setter of variables and fields that cannot be assigned.
int SetImmutable(lua_State* L);

}  // namespace binding

#endif

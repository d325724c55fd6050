// Lua tables built from namespace records: functions and constants as plain fields, variables behind getters.
#pragma once

#include "binding/abi.h"

namespace binding {

// What every class and namespace of a registration uses, kept on the stack: the class table, the member getter and
// setter, and the key strings, which would be hashed anew for each of them.
class Shared {
 public:
  enum Value {
    kClassTable,
    kMemberGetter,
    kMemberSetter,
    kTypeKey,
    kBasesKey,
    kGetKey,
    kSetKey,
    kMethodsKey,
    kStaticKey,
    kInstanceKey,
    kIndexKey,
    kNewIndexKey,
    kCollectKey,
    kCallKey,
    kToStringKey,
    kEqualsKey,
    kDisownKey,
    kCount
  };

  // Pushes the values. They stay where they are until the registration is over; then whoever made this pops them.
  explicit Shared(lua_State* L);

  int index(Value value) const { return first_ + value; }
  void Push(lua_State* L, Value value) const { lua_pushvalue(L, index(value)); }
  // Sets table[key] = function for the table at the stack top.
  void SetFunction(lua_State* L, Value key, lua_CFunction function) const;
  // Sets table[key] to a new table for the table at the stack top and pushes it.
  void PushNewTable(lua_State* L, Value key, int fields) const;

 private:
  int first_;
};

// Builds the namespace with its classes and sub-namespaces, stores it in the table at the stack top and pushes it. It
// has room for `more_fields` that are set later.
void RegisterNamespace(lua_State* L, const NamespaceRecord& record, const Shared& shared, int more_fields = 0);

// Adds constants, methods and variables to the namespace table at the stack top.
void AddNamespaceDetails(lua_State* L, const NamespaceRecord& record);

// Sets a new ".get" and a new ".set" table with the attributes in the table at the stack top.
void SetAttributes(lua_State* L, const Attribute* attributes, const Shared& shared);

// Sets methods as fields of the table at the stack top.
void AddMethods(lua_State* L, const Method* methods);

// The length of a list that ends with a null name.
template <class Entry> int CountNamed(const Entry* entries) {
  int count = 0;
  while (entries[count].name != nullptr) ++count;
  return count;
}

// The setter of variables and fields that cannot be assigned.
int SetImmutable(lua_State* L);

}  // namespace binding

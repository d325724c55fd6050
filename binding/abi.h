// The records that every native module of this kind in an interpreter reads and writes: plain C layouts, fields in this
// order, nothing hidden. Changing any of them breaks the other modules.
#pragma once

#if __cplusplus <= 201703L
#error "tq_mom_sync needs C++20, not C++17"
#endif

#include <cstddef>
#include <lua.hpp>

namespace binding {

struct CastEntry;
struct ClassRecord;

// A native pointer type. Static; lives for the process.
struct TypeDescriptor {
  const char* mangled_name;   // sorts the type tables, by strcmp
  const char* readable_name;  // spellings of the type, separated by '|'
  void* (*dyn_cast)(void**);  // unused here
  CastEntry* casts;           // types whose handles may stand for this one
  ClassRecord* class_record;  // null for types without a Lua class
  int own_data;
};

// One type that is accepted in the place of another; a static array of them for each type ends with a null target.
struct CastEntry {
  TypeDescriptor* target_type;
  void* (*converter)(void* pointer, int* new_memory);  // null: the pointer stays as it is
  CastEntry* next_cast;
  CastEntry* prev_cast;
};

// A module's types. The records of all modules in an interpreter form a ring.
struct ModuleRecord {
  TypeDescriptor** type_table;  // the descriptors in use, a null after the last
  std::size_t type_count;
  ModuleRecord* next_module;   // null until the module is first opened
  TypeDescriptor** own_types;  // the descriptors as compiled, sorted by mangled name
  CastEntry** own_casts;       // each type's cast array
  void* client_data;
};

struct Method {
  const char* name;  // null ends a list
  lua_CFunction function;
};

struct Attribute {
  const char* name;  // null ends a list
  lua_CFunction getter;
  lua_CFunction setter;  // null: read-only
};

enum ConstantCode : int {
  kEndOfConstants = 0,
  kInteger = 1,
  kFloating = 2,
  kString = 3,
  kPointer = 4,
  kBinary = 5,
  kCharacter = 6,
};

struct Constant {
  int code;  // a ConstantCode; others are skipped
  const char* name;
  long integer;
  double floating;
  const void* pointer;
  TypeDescriptor** type;  // slot in a type table, for kPointer and kBinary
};

struct NamespaceRecord {
  const char* name;
  const Method* methods;
  const Attribute* attributes;
  const Constant* constants;
  ClassRecord* const* classes;               // ended by a null
  const NamespaceRecord* const* namespaces;  // ended by a null
};

struct ClassRecord {
  const char* name;
  const char* qualified_name;
  TypeDescriptor** type;  // slot in a type table
  lua_CFunction constructor;
  void (*destructor)(void*);  // null: objects are never freed by Lua
  const Method* methods;
  const Attribute* attributes;
  const NamespaceRecord* cls_static;
  const Method* metatable;        // user metamethods
  ClassRecord** bases;            // resolved from base_class_names when a module is opened; may hold nulls
  const char** base_class_names;  // ended by a null
};

// An empty list of methods, attributes, constants, classes or namespaces.
template <class Entry> inline constexpr Entry kNone[1] = {};

// What a Lua userdata of three words holds. Its pointer is never null.
struct Handle {
  TypeDescriptor* type;  // null: unknown
  int own;               // nonzero: collecting the handle frees the native object
  void* pointer;
};

}  // namespace binding

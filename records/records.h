// The Lua classes of the client library's records.
#ifndef TQ_RECORDS_RECORDS_H
#define TQ_RECORDS_RECORDS_H

#include "records/fields.h"

namespace tq_mom {

struct RecordClass {
  const char* name;
  TypeId type;
  lua_CFunction constructor;
  const binding::Attribute* fields;
  const binding::Constant* constants;
};

// Each family's classes are in the file of its name.
inline constexpr int kOptionClassCount = 36;
inline constexpr int kResultClassCount = 23;
inline constexpr int kMessageClassCount = 3;
inline constexpr int kRuntimeClassCount = 4;
inline constexpr int kClassCount = kOptionClassCount + kResultClassCount + kMessageClassCount + kRuntimeClassCount;
static_assert(kClassCount == 66);

extern const RecordClass kOptionClasses[kOptionClassCount];
extern const RecordClass kResultClasses[kResultClassCount];
extern const RecordClass kMessageClasses[kMessageClassCount];
extern const RecordClass kRuntimeClasses[kRuntimeClassCount];

inline constexpr binding::Constant kNoConstants[1] = {};

// The class records, ended by a null; filled in by SetUpClasses.
extern binding::ClassRecord* class_list[kClassCount + 1];

// Fills in the class records and links them to their types.
void SetUpClasses(binding::TypeDescriptor* descriptors);

// Names in messages: a structure's, what stands before it, and its class's.
const char* StructureName(TypeId record);
const char* Qualifier(TypeId record);
const char* ClassName(TypeId record);

// Lua function body: takes no arguments and returns an owning handle to a zero-filled record of the size, or nil when
// there is no memory for one.
int NewRecord(lua_State* L, TypeId record, std::size_t size);

template <class Record>
int Construct(lua_State* L) {
  return NewRecord(L, kTypeOf<Record>, sizeof(Record));
}

template <const binding::Attribute&... attributes>
inline constexpr binding::Attribute kFields[] = {attributes..., {}};

// One class and its fields, in the order in which they are registered.
#define TQ_CLASS(lua_name, record, ...)                                                                \
  {                                                                                                    \
#lua_name, tq_mom::kTypeOf < record>, tq_mom::Construct < record>, tq_mom::kFields < __VA_ARGS__>, \
        tq_mom::kNoConstants                                                                           \
  }

#define TQ_CLASS_WITH_CONSTANTS(lua_name, record, constants, ...) \
  { #lua_name, tq_mom::kTypeOf < record>, tq_mom::Construct < record>, tq_mom::kFields < __VA_ARGS__>, constants }

}  // namespace tq_mom

#endif

// The Lua classes of the client library's records.
#ifndef TQ_RECORDS_RECORDS_H
#define TQ_RECORDS_RECORDS_H

#include "records/fields.h"

namespace tq_mom {

struct RecordClass {
  TypeId type;
  lua_CFunction constructor;
  const binding::Attribute* fields;
  const binding::Constant* constants;  // null: none
};

inline constexpr int kOptionClassCount = 36;
inline constexpr int kResultClassCount = 23;
inline constexpr int kMessageClassCount = 3;
inline constexpr int kRuntimeClassCount = 4;
inline constexpr int kClassCount = kOptionClassCount + kResultClassCount + kMessageClassCount + kRuntimeClassCount;
static_assert(kClassCount == 66);

// A family's classes; its file bears its name.
template <int count>
using RecordFamily = const RecordClass (&)[count];

RecordFamily<kOptionClassCount> OptionRecords();
RecordFamily<kResultClassCount> ResultRecords();
RecordFamily<kMessageClassCount> MessageRecords();
RecordFamily<kRuntimeClassCount> RuntimeRecords();

// The class records, ended by a null; filled in by SetUpClasses.
extern binding::ClassRecord* class_list[kClassCount + 1];

// Fills in the class records and links them to their types.
void SetUpClasses(binding::TypeDescriptor* descriptors);

// Names in messages: a structure's, and what stands before it.
const char* StructureName(TypeId record);
const char* Qualifier(TypeId record);

// Lua function body: takes no arguments and returns an owning handle to a zero-filled record of the size, or nil when
// there is no memory for one.
int NewRecord(lua_State* L, TypeId record, std::size_t size);

template <class Record>
int Construct(lua_State* L) {
  return NewRecord(L, kTypeOf<Record>, sizeof(Record));
}

// A class's fields in the order in which they are registered, ended by an empty one. `Describe` is a stateless function
// object that lists them.
template <class Describe>
struct FieldList {
  static constexpr auto kFields = Describe()();
};

template <class... Field>
struct Fields {
  constexpr explicit Fields(Field... field) : list{field..., {}} {}
  binding::Attribute list[sizeof...(Field) + 1];
};

template <class Record, class Describe>
constexpr RecordClass MakeClass(Describe, const binding::Constant* constants = nullptr) {
  return {kTypeOf<Record>, Construct<Record>, FieldList<Describe>::kFields.list, constants};
}

// One class and its fields.
#define TQ_CLASS(record, ...) tq_mom::MakeClass<record>(TQ_FIELDS(record, __VA_ARGS__))
#define TQ_CLASS_WITH_CONSTANTS(record, constants, ...) \
  tq_mom::MakeClass<record>(TQ_FIELDS(record, __VA_ARGS__), constants)

#define TQ_FIELDS(record, ...)          \
  [] {                                  \
    using Record = record;              \
    return tq_mom::Fields(__VA_ARGS__); \
  }

}  // namespace tq_mom

#endif

// The Lua classes of the client library's records.
#pragma once

#include "binding/in_place.h"
#include "records/fields.h"

namespace tq_mom {

inline constexpr int kMaxFields = 24;

// A class with its fields in the order in which they are registered, as its family's table has it.
struct RecordClass {
  template <class... F>
  consteval RecordClass(TypeId type_id, std::size_t record_size, F... field)
      : size(record_size), field_count(sizeof...(field)), type(type_id), fields{field...} {
    static_assert(sizeof...(field) <= kMaxFields, "A class has at most kMaxFields fields");
  }

  std::size_t size;
  int field_count;
  TypeId type;
  Field fields[kMaxFields];
};

// One class and its fields.
#define TQ_CLASS(record, ...)                                                         \
  [] {                                                                                \
    using Record = record;                                                            \
    return tq_mom::RecordClass(tq_mom::kTypeOf<Record>, sizeof(Record), __VA_ARGS__); \
  }()

// The class records, ended by a null; filled in by SetUpClasses.
extern binding::ClassRecord* const* const class_list;

// Fills in the class records and links them to their types.
void SetUpClasses();

// The accessors and constructors, for the dispatchers.
extern const binding::InPlace kInPlace;

}  // namespace tq_mom

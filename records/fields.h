// Record fields as Lua attributes: a field is one word in its record's line, and its kind follows from the C++ type of
// the member.
//
//     TQ_CLASS(tq_mom_psetex_op_t, TQ_FIELD(flag), TQ_FIELD(milseconds))
#pragma once

#include <cstddef>

#include "signature/parameters.h"

namespace tq_mom {

// What a member is to Lua. A getter wraps a pointer in a handle of the field's type.
enum class FieldKind : std::uint8_t {
  kInt,  // enumerations, too: any number is stored
  kShort,
  kSize,
  kInt64,
  kDouble,
  kCharArray,
  kOwnedString,  // a heap string that the record owns once it was set from Lua
  kUntyped,      // set to the native pointer of any handle
  kAnything,     // the same; other values set it to null
  kBlock,        // set to the address of the userdata itself, not to the pointer that a handle holds
  kShared,       // set to a handle of exactly the type
  kAdopted,      // the same, and Lua gives up what the handle owned
  kObjects,      // kShared; read as a table
  kScores,       // kAdopted; read as tables
  kTags,
  kEmbedded,  // a part of the record, reached through a handle into it and set by copying
  kReadOnly,  // the same, and cannot be set
};

// A field as its record's line describes it.
struct Field {
  std::string_view name;
  FieldKind kind;
  Parameter parameter;  // what its setter takes
  TypeId type;          // what the member points to, or the type of handles into it
  std::size_t offset;   // of the member in its record
  std::size_t detail;   // the member's size; of an array, the offset of the size_t that counts its elements
};

// A field as its accessors see it.
struct FieldRow {
  std::uint16_t name;  // among the names of all fields
  TypeId record;
  FieldKind kind;
  Parameter parameter;
  TypeId type;
  std::uint16_t offset;
  std::uint16_t detail;  // as Field has it
};

// Pushes the member's value.
void PushMember(lua_State* L, char* member, const FieldRow& field);

// Converts the value at the index and stores it unless the member is null (the record was nil). False when the value
// cannot be converted; nothing is stored then.
bool StoreMember(lua_State* L, char* member, const FieldRow& field, int index);

// What a member's C++ type says of its field.
struct FieldType {
  FieldKind kind;
  Parameter parameter;
  TypeId type = kVoid;
};

template <class T> struct Of {};

template <class T> constexpr FieldType HandleField(FieldKind kind, Parameter parameter = Parameter::Of(kTypeOf<T>)) {
  return {kind, parameter, kTypeOf<T>};
}

template <class T> constexpr FieldType FieldFor(Of<T>) {
  static_assert(!std::is_same_v<T, T>,
                "No field has a member of this type: records/fields.h lists those that have. A part of the record is "
                "TQ_EMBEDDED, an array TQ_ARRAY");
  return {};
}
consteval FieldType Number(std::string_view spelling) { return {FieldKind::kInt, Parameter::Of(Kind::kInt, spelling)}; }
consteval FieldType Characters(std::string_view spelling) {
  return {FieldKind::kCharArray, Parameter::Of(Kind::kString, spelling)};
}
constexpr FieldType FieldFor(Of<int>) { return Number("int"); }
constexpr FieldType FieldFor(Of<tq_mom_cmd_t>) { return Number("tq_mom_cmd_t"); }
constexpr FieldType FieldFor(Of<tq_mom_batch_over_flag_t>) { return Number("tq_mom_batch_over_flag_t"); }
constexpr FieldType FieldFor(Of<short>) { return {FieldKind::kShort, Parameter::Of(Kind::kInt, "short")}; }
constexpr FieldType FieldFor(Of<std::size_t>) { return {FieldKind::kSize, Parameter::Of(Kind::kSize, "size_t")}; }
constexpr FieldType FieldFor(Of<long long>) { return {FieldKind::kInt64, Parameter::Of(Kind::kInt64, "long long")}; }
constexpr FieldType FieldFor(Of<double>) { return {FieldKind::kDouble, Parameter::Of(Kind::kDouble, "double")}; }
constexpr FieldType FieldFor(Of<char[TQ_MOM_KEY_MAX_LEN]>) { return Characters("char [512]"); }
constexpr FieldType FieldFor(Of<char[TQ_MOM_FIELD_MAX_LEN]>) { return Characters("char [128]"); }
constexpr FieldType FieldFor(Of<char[TQ_THREAD_NAME_LEN + 1]>) { return Characters("char [TQ_THREAD_NAME_LEN+1]"); }
constexpr FieldType FieldFor(Of<char*>) { return {FieldKind::kOwnedString, Parameter::Of(Kind::kString, "char *")}; }
constexpr FieldType FieldFor(Of<void*>) { return {FieldKind::kUntyped, Parameter::Of(Kind::kUntyped, "void *")}; }
constexpr FieldType FieldFor(Of<tq_obj*>) {
  return HandleField<tq_obj>(FieldKind::kAnything, Parameter::Of(Kind::kAnything));
}
constexpr FieldType FieldFor(Of<unsigned char*>) {
  return HandleField<unsigned char>(FieldKind::kBlock, Parameter::Of(Kind::kAnything));
}
constexpr FieldType FieldFor(Of<int (*)(tq_thread*)>) { return HandleField<int(tq_thread*)>(FieldKind::kShared); }
template <class T>
requires std::is_class_v<T>
constexpr FieldType FieldFor(Of<T*>) { return HandleField<T>(FieldKind::kAdopted); }

// The same for an array, by the type of its elements.
template <class T> constexpr FieldType ArrayFor(Of<T>) {
  static_assert(!std::is_same_v<T, T>, "No field is an array of elements of this type");
  return {};
}
constexpr FieldType ArrayFor(Of<tq_obj*>) { return HandleField<tq_obj*>(FieldKind::kObjects); }
constexpr FieldType ArrayFor(Of<double>) { return HandleField<double>(FieldKind::kScores); }
constexpr FieldType ArrayFor(Of<std::size_t>) { return HandleField<std::size_t>(FieldKind::kTags); }

template <class Member> constexpr Field MakeField(std::string_view name, std::size_t offset) {
  FieldType type = FieldFor(Of<Member>());
  return {name, type.kind, type.parameter, type.type, offset, sizeof(Member)};
}

template <class Member, class Count>
constexpr Field MakeArray(std::string_view name, std::size_t offset, std::size_t count_offset) {
  static_assert(std::is_pointer_v<Member>, "An array field is a pointer to its elements");
  static_assert(std::is_same_v<Count, std::size_t>, "The member that counts an array's elements is a size_t");
  FieldType type = ArrayFor(Of<std::remove_pointer_t<Member>>());
  return {name, type.kind, type.parameter, type.type, offset, count_offset};
}

template <class Member> constexpr Field MakeInt64(std::string_view name, std::size_t offset) {
  static_assert(std::is_integral_v<Member> && sizeof(Member) == 8, "TQ_INT64 is for an int64_t");
  return {name, FieldKind::kInt64, Parameter::Of(Kind::kInt64, "int64_t"), kVoid, offset, sizeof(Member)};
}

// The rows of a class's fields, inside TQ_CLASS, which says what `Record` is.

// A member whose C++ type says what it is.
#define TQ_FIELD(member) tq_mom::MakeField<decltype(Record::member)>(#member, offsetof(Record, member))

// An array and the member that counts its elements.
#define TQ_ARRAY(member, count)                                                                           \
  tq_mom::MakeArray<decltype(Record::member), decltype(Record::count)>(#member, offsetof(Record, member), \
                                                                       offsetof(Record, count))

// An int64_t, which on some targets is the same type as long long.
#define TQ_INT64(member) tq_mom::MakeInt64<decltype(Record::member)>(#member, offsetof(Record, member))

// A member that is reached through handles of the given type into the record. Messages spell it as the text says.
#define TQ_EMBEDDED(member, type, text) TQ_PART(tq_mom::FieldKind::kEmbedded, member, type, text)

// The same, and it cannot be set.
#define TQ_EMBEDDED_READ_ONLY(member, type) TQ_PART(tq_mom::FieldKind::kReadOnly, member, type, "void *")

#define TQ_PART(kind, member, type, text)                                                        \
  tq_mom::Field {                                                                                \
#member, kind, tq_mom::Parameter::Of(tq_mom::Kind::kUntyped, text), tq_mom::kTypeOf < type>, \
        offsetof(Record, member), sizeof(Record::member)                                         \
  }

}  // namespace tq_mom

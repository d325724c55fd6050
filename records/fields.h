// Record fields as Lua attributes: a field is one line in its record's table, and its kind follows from the C++ type of
// the member.
//
//     TQ_CLASS(tq_mom_psetex_op_t, TQ_FIELD(flag), TQ_FIELD(milseconds))
#ifndef TQ_RECORDS_FIELDS_H
#define TQ_RECORDS_FIELDS_H

#include <cstddef>
#include <cstring>

#include "binding/namespaces.h"
#include "records/parameters.h"

namespace tq_mom {

// What the accessors of a field know of it.
struct Field {
  static constexpr std::size_t kMaxName = 17;

  char name[kMaxName];
  TypeId record;
  TypeId value_type;           // what the member points to, or the type of handles into it
  Kind setter_kind;            // of the value that is set
  std::uint16_t offset;        // of the member in its record
  std::uint16_t count_offset;  // of the size_t that counts an array's elements
  std::uint16_t extent;        // size of what a setter copies
};

enum class Access : bool { kGet, kSet };

// A field as one of its accessors sees it.
struct Accessor {
  const Field& field;
  Access access;

  int count() const { return access == Access::kGet ? 1 : 2; }
  [[gnu::cold]] void CheckKinds(lua_State* L) const;
  [[noreturn, gnu::cold]] void RejectCount(lua_State* L) const;
  [[noreturn, gnu::cold]] void Reject(lua_State* L, int argument) const;
};

// The member of the record at index 1; null when that is nil. Raises the errors of the record argument.
char* OtherMember(lua_State* L, Accessor accessor);

// The same, fast for a handle of just the record's type.
[[gnu::always_inline]] inline char* MemberOf(lua_State* L, Accessor accessor) {
  if constexpr (!kOptimizeForSize) {
    const binding::Handle* handle = binding::HandleAt(L, 1);
    if (handle != nullptr && lua_gettop(L) == accessor.count() &&
        binding::IsExact(*handle, *Type(accessor.field.record)) && handle->pointer != nullptr) [[likely]] {
      return static_cast<char*>(handle->pointer) + accessor.field.offset;
    }
  }
  return OtherMember(L, accessor);
}

// Each kind of field is a pair of functions. Push pushes the member's value. Store converts the value at index 2 and
// stores it unless the member is null (the record was nil); false when the value cannot be converted.

template <class T>
T Load(const char* member) {
  T value;
  std::memcpy(&value, member, sizeof(value));
  return value;
}

template <class T>
bool Save(char* member, T value) {
  if (member != nullptr) std::memcpy(member, &value, sizeof(value));
  return true;
}

// Enumerations, too: any number is stored.
struct IntField {
  static void Push(lua_State* L, const char* member, const Field&) { lua_pushnumber(L, Load<int>(member)); }
  static bool Store(lua_State* L, char* member, const Field&) {
    int value;
    return binding::ToInt(L, 2, &value) && Save(member, value);
  }
};

struct ShortField {
  static void Push(lua_State* L, const char* member, const Field&) { lua_pushnumber(L, Load<short>(member)); }
  static bool Store(lua_State* L, char* member, const Field&) {
    int value;
    return binding::ToInt(L, 2, &value) && Save(member, static_cast<short>(value));
  }
};

struct SizeField {
  static void Push(lua_State* L, const char* member, const Field&);
  static bool Store(lua_State* L, char* member, const Field&);
};

struct Int64Field {
  static void Push(lua_State* L, const char* member, const Field&);
  static bool Store(lua_State* L, char* member, const Field&);
};

struct DoubleField {
  static void Push(lua_State* L, const char* member, const Field&);
  static bool Store(lua_State* L, char* member, const Field&);
};

struct CharArrayField {
  static void Push(lua_State* L, const char* member, const Field& field) {
    // A string at an address that was pushed before is found by that, without hashing it.
    if (member[field.extent - 1] == '\0') {
      lua_pushstring(L, member);
    } else {
      lua_pushlstring(L, member, strnlen(member, field.extent));
    }
  }
  static bool Store(lua_State* L, char* member, const Field& field);
};

// A heap string that the record owns once it was set from Lua.
struct OwnedStringField {
  static void Push(lua_State* L, const char* member, const Field&);
  static bool Store(lua_State* L, char* member, const Field&);
};

// A pointer that getters wrap in a handle of the field's type. Setters take the native pointer of any handle.
struct UntypedField {
  static void Push(lua_State* L, const char* member, const Field& field);
  static bool Store(lua_State* L, char* member, const Field&);
};

// The setter takes the address of the userdata itself, not the pointer that a handle holds.
struct BlockField : UntypedField {
  static bool Store(lua_State* L, char* member, const Field&);
};

// The setter takes a handle of exactly the field's type.
struct SharedPointerField : UntypedField {
  static bool Store(lua_State* L, char* member, const Field& field);
};

// The same, and Lua gives up what the handle owned.
struct AdoptedPointerField : UntypedField {
  static bool Store(lua_State* L, char* member, const Field& field);
};

// A part of the record that is reached through a handle into it, and set by copying.
struct EmbeddedField {
  static void Push(lua_State* L, char* member, const Field& field);
  static bool Store(lua_State* L, char* member, const Field& field);
};

// Arrays of as many elements as the record's count says; read as tables.
struct ObjectArrayField : SharedPointerField {
  static void Push(lua_State* L, const char* member, const Field& field);
};

struct ScoreArrayField : AdoptedPointerField {
  static void Push(lua_State* L, const char* member, const Field& field);
};

struct TagArrayField : AdoptedPointerField {
  static void Push(lua_State* L, const char* member, const Field& field);
};

// What a member's C++ type says of its field.
template <class T>
struct FieldFor;
template <>
struct FieldFor<int> {
  using Type = IntField;
  static constexpr Kind kKind = Kind::kInt;
};
template <>
struct FieldFor<tq_mom_cmd_t> {
  using Type = IntField;
  static constexpr Kind kKind = Kind::kCommandCode;
};
template <>
struct FieldFor<tq_mom_batch_over_flag_t> {
  using Type = IntField;
  static constexpr Kind kKind = Kind::kBatchFlag;
};
template <>
struct FieldFor<short> {
  using Type = ShortField;
  static constexpr Kind kKind = Kind::kShort;
};
template <>
struct FieldFor<std::size_t> {
  using Type = SizeField;
  static constexpr Kind kKind = Kind::kSize;
};
template <>
struct FieldFor<long long> {
  using Type = Int64Field;
  static constexpr Kind kKind = Kind::kLongLong;
};
template <>
struct FieldFor<double> {
  using Type = DoubleField;
  static constexpr Kind kKind = Kind::kDouble;
};
template <Kind kind>
struct CharArrayFor {
  using Type = CharArrayField;
  static constexpr Kind kKind = kind;
};
template <>
struct FieldFor<char[TQ_MOM_KEY_MAX_LEN]> : CharArrayFor<Kind::kKeyText> {};
template <>
struct FieldFor<char[TQ_MOM_FIELD_MAX_LEN]> : CharArrayFor<Kind::kFieldText> {};
template <>
struct FieldFor<char[TQ_THREAD_NAME_LEN + 1]> : CharArrayFor<Kind::kThreadName> {};
template <>
struct FieldFor<char*> {
  using Type = OwnedStringField;
  static constexpr Kind kKind = Kind::kString;
};
template <>
struct FieldFor<void*> {
  using Type = UntypedField;
  static constexpr Kind kKind = Kind::kUntyped;
  static constexpr TypeId kValueType = TypeId::_p_void;
};
template <>
struct FieldFor<tq_obj*> {
  using Type = UntypedField;
  static constexpr Kind kKind = Kind::kAnything;
  static constexpr TypeId kValueType = TypeId::_p_tq_obj;
};
template <>
struct FieldFor<unsigned char*> {
  using Type = BlockField;
  static constexpr Kind kKind = Kind::kAnything;
  static constexpr TypeId kValueType = TypeId::_p_unsigned_char;
};
template <>
struct FieldFor<int (*)(tq_thread*)> {
  using Type = SharedPointerField;
  static constexpr Kind kKind = Kind::kHandle;
  static constexpr TypeId kValueType = TypeId::_p_f_p_struct_tq_thread__int;
};
template <class T>
struct FieldFor<T*> {
  using Type = AdoptedPointerField;
  static constexpr Kind kKind = Kind::kHandle;
  static constexpr TypeId kValueType = kTypeOf<T>;
};
template <>
struct FieldFor<tq_obj**> {
  using Type = ObjectArrayField;
  static constexpr Kind kKind = Kind::kHandle;
  static constexpr TypeId kValueType = TypeId::_p_p_tq_obj;
};
template <>
struct FieldFor<double*> {
  using Type = ScoreArrayField;
  static constexpr Kind kKind = Kind::kHandle;
  static constexpr TypeId kValueType = TypeId::_p_double;
};
template <>
struct FieldFor<std::size_t*> {
  using Type = TagArrayField;
  static constexpr Kind kKind = Kind::kHandle;
  static constexpr TypeId kValueType = TypeId::_p_size_t;
};

template <class Member>
constexpr TypeId ValueTypeFor() {
  if constexpr (requires { FieldFor<Member>::kValueType; }) {
    return FieldFor<Member>::kValueType;
  } else {
    return TypeId::_p_void;
  }
}

// One instance serves all fields of a kind.
template <class FieldKind>
[[gnu::noinline]] int GetShared(lua_State* L, const Field& field) {
  if (char* member = MemberOf(L, {field, Access::kGet})) {
    FieldKind::Push(L, member, field);
  } else {
    lua_pushnil(L);
  }
  return 1;
}

template <class FieldKind>
[[gnu::noinline]] int SetShared(lua_State* L, const Field& field) {
  char* member = MemberOf(L, {field, Access::kSet});
  if (!FieldKind::Store(L, member, field)) Accessor{field, Access::kSet}.Reject(L, 2);
  return 0;
}

constexpr Field MakeField(const char* name, TypeId record, Kind kind, TypeId value_type, std::size_t offset,
                          std::size_t extent, std::size_t count_offset = 0) {
  Field field{};
  for (std::size_t i = 0; name[i] != '\0'; ++i) field.name[i] = name[i];
  field.record = record;
  field.value_type = value_type;
  field.setter_kind = kind;
  field.offset = static_cast<std::uint16_t>(offset);
  field.count_offset = static_cast<std::uint16_t>(count_offset);
  field.extent = static_cast<std::uint16_t>(extent);
  return field;
}

// A field's description and its two Lua functions. `Describe` is a stateless function object, one type for each field.
template <class FieldKind, class Describe>
struct FieldAccess {
  static constexpr Field kField = Describe()();
  static int Get(lua_State* L) { return GetShared<FieldKind>(L, kField); }
  static int Set(lua_State* L) { return SetShared<FieldKind>(L, kField); }
};

template <class FieldKind, class Describe>
constexpr binding::Attribute MakeAttribute(Describe) {
  using Accessors = FieldAccess<FieldKind, Describe>;
  return {Accessors::kField.name, Accessors::Get, Accessors::Set};
}

constexpr binding::Attribute ReadOnly(binding::Attribute attribute) {
  attribute.setter = binding::SetImmutable;
  return attribute;
}

// The rows of a class's field table, inside TQ_CLASS, which says what `Record` is.
#define TQ_ATTRIBUTE(field_kind, member, setter_kind, value_type, ...)                                            \
  tq_mom::MakeAttribute<field_kind>([] {                                                                          \
    return tq_mom::MakeField(#member, tq_mom::kTypeOf<Record>, setter_kind, value_type, offsetof(Record, member), \
                             sizeof(Record::member) __VA_OPT__(, ) __VA_ARGS__);                                  \
  })

// A member whose C++ type says what it is.
#define TQ_FIELD(member)                                                 \
  TQ_ATTRIBUTE(tq_mom::FieldFor<decltype(Record::member)>::Type, member, \
               tq_mom::FieldFor<decltype(Record::member)>::kKind, tq_mom::ValueTypeFor<decltype(Record::member)>())

// An array and the member that counts its elements.
#define TQ_ARRAY(member, count)                                                                 \
  TQ_ATTRIBUTE(tq_mom::FieldFor<decltype(Record::member)>::Type, member, tq_mom::Kind::kHandle, \
               tq_mom::ValueTypeFor<decltype(Record::member)>(), offsetof(Record, count))

// An int64_t, which on some targets is the same type as long long.
#define TQ_INT64(member) TQ_ATTRIBUTE(tq_mom::Int64Field, member, tq_mom::Kind::kInt64, tq_mom::TypeId::_p_void)

// A member that is reached through handles of the given type into the record.
#define TQ_EMBEDDED(member, type) \
  TQ_ATTRIBUTE(tq_mom::EmbeddedField, member, tq_mom::Kind::kEmbedded, tq_mom::TypeId::_p_##type)

// The same, and it cannot be set.
#define TQ_EMBEDDED_READ_ONLY(member, type) tq_mom::ReadOnly(TQ_EMBEDDED(member, type))

}  // namespace tq_mom

#endif

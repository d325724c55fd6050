#include "records/records.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <span>

#include "binding/namespaces.h"
#include "records/messages.h"
#include "records/options.h"
#include "records/results.h"
#include "records/runtime_records.h"
#include "records/thread_constants.h"

namespace tq_mom {
namespace {

using binding::Attribute;
using binding::ClassRecord;
using binding::kNone;
using binding::NamespaceRecord;

constexpr std::span<const RecordClass> kFamilies[] = {kOptions, kResults, kMessages, kRuntimeRecords};

template <class Visit> constexpr void ForEachClass(Visit visit) {
  for (std::span<const RecordClass> family : kFamilies) {
    for (const RecordClass& row : family) visit(row);
  }
}
template <class Visit> constexpr void ForEachField(Visit visit) {
  ForEachClass([&](const RecordClass& row) {
    for (int i = 0; i < row.field_count; ++i) visit(row.type, row.fields[i]);
  });
}

constexpr auto PackNames() {
  Packed<4096> names;
  ForEachField([&](TypeId, const Field& field) { names.Add(field.name); });
  return names;
}
constexpr const char* kNames = kTrimmed<PackNames>.text;

constexpr std::uint16_t Short(std::size_t number) {
  if (number > UINT16_MAX) __builtin_unreachable();  // a record of more than 64 KiB
  return static_cast<std::uint16_t>(number);
}

constexpr int kFieldCount = [] {
  int count = 0;
  ForEachField([&](TypeId, const Field&) { ++count; });
  return count;
}();
constexpr auto kFields = [] {
  std::array<FieldRow, kFieldCount> rows{};
  auto names = PackNames();
  auto* row = rows.data();
  ForEachField([&](TypeId record, const Field& field) {
    *row++ = {names.Add(field.name), record, field.kind, field.parameter, field.type, Short(field.offset),
              Short(field.detail)};
  });
  return rows;
}();

struct ClassRow {
  TypeId type;
  std::uint8_t field_count;
  std::uint16_t size;
};
constexpr int kClassCount = [] {
  int count = 0;
  ForEachClass([&](const RecordClass&) { ++count; });
  return count;
}();
constexpr auto kClasses = [] {
  std::array<ClassRow, kClassCount> rows{};
  auto* row = rows.data();
  ForEachClass([&](const RecordClass& record) {
    *row++ = {record.type, static_cast<std::uint8_t>(record.field_count), Short(record.size)};
  });
  return rows;
}();

#define TQ_CLASS_CONSTANT(cls, name) {binding::kInteger, #name, name, 0, nullptr, nullptr},
constexpr binding::Constant kThreadMasterConstants[] = {TQ_THREAD_MASTER_CONSTANTS(TQ_CLASS_CONSTANT){}};
constexpr binding::Constant kThreadConstants[] = {TQ_THREAD_CONSTANTS(TQ_CLASS_CONSTANT){}};

const char* no_base_names[1];
ClassRecord* no_bases[1];

ClassRecord class_records[kClassCount];
NamespaceRecord class_statics[kClassCount];
ClassRecord* classes[kClassCount + 1];
// Each class's fields and an empty attribute after them.
Attribute attributes[kFieldCount + kClassCount];

const char* NameOf(const FieldRow& field) { return kNames + field.name; }

// Names in messages: a structure's, and what stands before it. The union is declared inside the event record.
const char* StructureName(TypeId record) { return MangledName(record) + std::strlen("_p_"); }
const char* Qualifier(TypeId record) { return record == kTypeOf<tq_thread_u> ? "tq_thread::" : ""; }

enum class Access : bool { kGet, kSet };

// A field's accessor as messages name it.
Callee Describe(const FieldRow& field, Access access) {
  bool sets = access == Access::kSet;
  return {{Qualifier(field.record), StructureName(field.record), "::", NameOf(field), nullptr},
          {ClassName(field.record), "_", NameOf(field), sets ? "_set" : "_get", nullptr},
          {Parameter::Of(field.record), field.parameter},
          sets ? 2 : 1,
          Spelling::kStructure};
}

// The member of the record at index 1; null when that is nil. Raises the errors of the record argument.
char* MemberAt1(lua_State* L, const FieldRow& field, Access access) {
  int count = access == Access::kSet ? 2 : 1;
  if (lua_gettop(L) != count) binding::RaiseCountError(L, Describe(field, access).checks, count);
  void* record;
  if (!ConvertExact(L, 1, &record, field.record)) record = ConvertOther(L, Describe(field, access), 1, field.record);
  return record != nullptr ? static_cast<char*>(record) + field.offset : nullptr;
}

// The member of a record whose handle needs no conversion; else null.
char* MemberOf(const binding::Handle& handle, const FieldRow& field) {
  if (!binding::IsExact(handle, *Type(field.record)) || handle.pointer == nullptr) return nullptr;
  return static_cast<char*>(handle.pointer) + field.offset;
}

bool GetInPlace(lua_State* L, const binding::Handle& handle, std::size_t number) {
  const FieldRow& field = kFields[number];
  char* member = MemberOf(handle, field);
  if (member == nullptr) return false;
  PushMember(L, member, field);
  return true;
}

bool SetInPlace(lua_State* L, const binding::Handle& handle, std::size_t number, int value) {
  const FieldRow& field = kFields[number];
  char* member = MemberOf(handle, field);
  return member != nullptr && StoreMember(L, member, field, value);
}

// Pushes an owning handle to one zero-filled record, or nil when there is no memory for one. The handle comes first:
// making it may raise an error, which must find no record to lose.
bool Construct(lua_State* L, std::size_t number) {
  const ClassRow& row = kClasses[number];
  binding::PushClassTableOfClosure(L);
  binding::Handle* handle =
      binding::PushEmptyClassHandle(L, Type(row.type), ClassName(row.type), binding::kClassTableOnTop);
  handle->pointer = std::calloc(1, row.size);
  if (handle->pointer == nullptr) {
    lua_pushnil(L);
  } else {
    handle->own = 1;
  }
  return true;
}

// A record owns nothing it points to.
void FreeRecord(void* record) { std::free(record); }

}  // namespace

extern "C" {

[[gnu::visibility("hidden")]] int tq_get_field(lua_State* L, std::size_t number) {
  const FieldRow& field = kFields[number];
  if (char* member = MemberAt1(L, field, Access::kGet)) {
    PushMember(L, member, field);
  } else {
    lua_pushnil(L);
  }
  return 1;
}

[[gnu::visibility("hidden")]] int tq_set_field(lua_State* L, std::size_t number) {
  const FieldRow& field = kFields[number];
  char* member = MemberAt1(L, field, Access::kSet);
  if (StoreMember(L, member, field, 2)) return 0;
  Callee callee = Describe(field, Access::kSet);
  if (field.kind == FieldKind::kSize) RejectValue(L, callee, nullptr);
  RejectHandle(L, callee, 2, field.type);
}

[[gnu::visibility("hidden")]] int tq_construct(lua_State* L, std::size_t number) {
  if (lua_gettop(L) != 0) {
    TypeId record = kClasses[number].type;
    const char* structure = StructureName(record);
    const binding::Piece name[] = {Qualifier(record), structure, "::", structure, nullptr};
    binding::RaiseCountError(L, name, 0);
  }
  Construct(L, number);
  return 1;
}

}  // extern "C"

TQ_NUMBERED_FUNCTIONS(kGetters, tq_get_field, kFieldCount);
TQ_NUMBERED_FUNCTIONS(kSetters, tq_set_field, kFieldCount);
TQ_NUMBERED_FUNCTIONS(kConstructors, tq_construct, kClassCount);

const binding::InPlace kInPlace = {kGetters, kSetters, kConstructors, GetInPlace, SetInPlace, Construct};

ClassRecord* const* const class_list = classes;

void SetUpClasses() {
  unsigned number = 0;
  Attribute* attribute = attributes;
  for (unsigned i = 0; i < kClassCount; ++i) {
    const ClassRow& row = kClasses[i];
    const Attribute* fields = attribute;
    for (unsigned end = number + row.field_count; number < end; ++number) {
      const FieldRow& field = kFields[number];
      *attribute++ = {NameOf(field), kGetters.At(number),
                      field.kind == FieldKind::kReadOnly ? binding::SetImmutable : kSetters.At(number)};
    }
    ++attribute;
    const binding::Constant* constants = kNone<binding::Constant>;
    if (row.type == kTypeOf<tq_thread_master>) constants = kThreadMasterConstants;
    if (row.type == kTypeOf<tq_thread>) constants = kThreadConstants;
    const char* name = ClassName(row.type);
    class_statics[i] = {name,      kNone<binding::Method>, kNone<Attribute>,
                        constants, kNone<ClassRecord*>,    kNone<const NamespaceRecord*>};
    class_records[i] = {name,
                        name,
                        TypeSlot(row.type),
                        kConstructors.At(i),
                        FreeRecord,
                        kNone<binding::Method>,
                        fields,
                        &class_statics[i],
                        kNone<binding::Method>,
                        no_bases,
                        no_base_names};
    classes[i] = &class_records[i];
    OwnType(row.type)->class_record = &class_records[i];
  }
}

}  // namespace tq_mom

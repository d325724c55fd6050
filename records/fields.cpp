#include "records/fields.h"

#include <cstdlib>

#include "records/records.h"

namespace tq_mom {
namespace {

// A field's accessor as messages name it.
struct Names {
  explicit Names(const Accessor& accessor)
      : checks{Qualifier(accessor.field.record), StructureName(accessor.field.record), "::", accessor.field.name,
               nullptr},
        conversions{ClassName(accessor.field.record), "_", accessor.field.name,
                    accessor.access == Access::kGet ? "_get" : "_set", nullptr},
        parameters{{Kind::kHandle, accessor.field.record}, {accessor.field.setter_kind, accessor.field.value_type}},
        callee{parameters, accessor.count(), Spelling::kStructure, checks, conversions} {}

  binding::Piece checks[5];
  binding::Piece conversions[5];
  Parameter parameters[2];
  Callee callee;
};

// Pushes a table of the array's elements. The count is read again after each of them: a collection may run in between.
template <class T, class PushElement>
void PushArray(lua_State* L, const char* member, const Field& field, PushElement push_element) {
  constexpr std::size_t kMostPresized = 1 << 16;
  const char* count = member - field.offset + field.count_offset;
  auto length = Load<std::size_t>(count);
  const T* elements = Load<const T*>(member);
  if (elements == nullptr) length = 0;
  lua_createtable(L, static_cast<int>(length < kMostPresized ? length : kMostPresized), 0);
  for (std::size_t i = 0; i < length; length = Load<std::size_t>(count)) {
    push_element(elements[i]);
    lua_rawseti(L, -2, static_cast<lua_Integer>(++i));
  }
}

bool StorePointer(lua_State* L, char* member, const Field& field, int flags) {
  void* pointer;
  if (binding::ConvertPtr(L, 2, &pointer, Type(field.value_type), flags) != 0) return false;
  return Save(member, pointer);
}

}  // namespace

void Accessor::CheckKinds(lua_State* L) const {
  Names names(*this);
  tq_mom::CheckKinds(L, names.callee);
}

void Accessor::RejectCount(lua_State* L) const {
  Names names(*this);
  binding::RaiseCountError(L, names.checks, names.callee.count);
}

void Accessor::Reject(lua_State* L, int argument) const {
  Names names(*this);
  RejectArgument(L, names.callee, argument, nullptr);
}

char* OtherMember(lua_State* L, Accessor accessor) {
  if (lua_gettop(L) != accessor.count()) accessor.RejectCount(L);
  void* record;
  if (!Convert(L, 1, &record, accessor.field.record, accessor)) accessor.Reject(L, 1);
  return record != nullptr ? static_cast<char*>(record) + accessor.field.offset : nullptr;
}

void SizeField::Push(lua_State* L, const char* member, const Field&) {
  lua_pushnumber(L, static_cast<double>(Load<std::size_t>(member)));
}

bool SizeField::Store(lua_State* L, char* member, const Field&) {
  std::uint32_t value;
  return binding::ToUnsigned(L, 2, &value) && Save<std::size_t>(member, value);
}

void Int64Field::Push(lua_State* L, const char* member, const Field&) {
  lua_pushnumber(L, static_cast<double>(Load<std::int64_t>(member)));
}

bool Int64Field::Store(lua_State* L, char* member, const Field&) {
  int is_number;
  double value = lua_tonumberx(L, 2, &is_number);
  return is_number && Save(member, binding::SaturateToInt64(value));
}

void DoubleField::Push(lua_State* L, const char* member, const Field&) { lua_pushnumber(L, Load<double>(member)); }

bool DoubleField::Store(lua_State* L, char* member, const Field&) {
  int is_number;
  double value = lua_tonumberx(L, 2, &is_number);
  return is_number && Save(member, value);
}

bool CharArrayField::Store(lua_State* L, char* member, const Field& field) {
  std::size_t length = 0;
  const char* text = lua_tolstring(L, 2, &length);
  if (text == nullptr) {
    if (!lua_isnil(L, 2)) return false;
    if (member != nullptr) member[0] = '\0';
    return true;
  }
  if (member == nullptr) return true;
  std::size_t last = field.extent - 1U;
  std::size_t copied = strnlen(text, length < last ? length : last);
  std::memcpy(member, text, copied);
  std::memset(member + copied, 0, field.extent - copied);
  return true;
}

void OwnedStringField::Push(lua_State* L, const char* member, const Field&) {
  lua_pushstring(L, Load<const char*>(member));
}

bool OwnedStringField::Store(lua_State* L, char* member, const Field&) {
  const char* text = lua_tostring(L, 2);
  if (text == nullptr && !lua_isnil(L, 2)) return false;
  if (member == nullptr) return true;
  char* copy = nullptr;
  if (text != nullptr) {
    std::size_t size = std::strlen(text) + 1;
    copy = static_cast<char*>(std::malloc(size));
    if (copy == nullptr) binding::RaiseBare(L, "memory error");
    std::memcpy(copy, text, size);
  }
  std::free(Load<char*>(member));
  return Save(member, copy);
}

void UntypedField::Push(lua_State* L, const char* member, const Field& field) {
  binding::PushHandle(L, Load<void*>(member), Type(field.value_type), 0);
}

bool UntypedField::Store(lua_State* L, char* member, const Field& field) {
  if (field.setter_kind == Kind::kUntyped && !lua_isuserdata(L, 2) && !lua_isnil(L, 2)) return false;
  return Save(member, binding::UntypedPointerAt(L, 2));
}

bool BlockField::Store(lua_State* L, char* member, const Field&) { return Save(member, lua_touserdata(L, 2)); }

bool SharedPointerField::Store(lua_State* L, char* member, const Field& field) {
  return StorePointer(L, member, field, 0);
}

bool AdoptedPointerField::Store(lua_State* L, char* member, const Field& field) {
  return StorePointer(L, member, field, binding::kDisown);
}

void EmbeddedField::Push(lua_State* L, char* member, const Field& field) {
  binding::PushHandle(L, member, Type(field.value_type), 0);
}

bool EmbeddedField::Store(lua_State* L, char* member, const Field& field) {
  void* source;
  if (binding::ConvertPtr(L, 2, &source, Type(field.value_type), 0) != 0) return false;
  if (member != nullptr && source != nullptr) std::memmove(member, source, field.extent);
  return true;
}

void ObjectArrayField::Push(lua_State* L, const char* member, const Field& field) {
  PushArray<void*>(L, member, field, [L](void* element) { binding::PushHandle(L, element, Type(TypeId::_p_void), 0); });
}

void ScoreArrayField::Push(lua_State* L, const char* member, const Field& field) {
  PushArray<double>(L, member, field, [L](double element) { lua_pushnumber(L, element); });
}

void TagArrayField::Push(lua_State* L, const char* member, const Field& field) {
  PushArray<std::size_t>(L, member, field,
                         [L](std::size_t element) { lua_pushinteger(L, static_cast<lua_Integer>(element)); });
}

}  // namespace tq_mom

#include <cstdlib>
#include <cstring>

#include "records/fields.h"

namespace tq_mom {
namespace {

template <class T> T Load(const char* member) {
  T value;
  std::memcpy(&value, member, sizeof(value));
  return value;
}

template <class T> bool Save(char* member, T value) {
  if (member != nullptr) std::memcpy(member, &value, sizeof(value));
  return true;
}

// Pushes a table of the array's elements. The count is read again after each of them: a collection may run in between.
template <class T, class PushElement>
void PushArray(lua_State* L, const char* member, const FieldRow& field, PushElement push_element) {
  constexpr std::size_t kMostPresized = 1 << 16;
  const char* count = member - field.offset + field.detail;
  auto length = Load<std::size_t>(count);
  const T* elements = Load<const T*>(member);
  if (elements == nullptr) length = 0;
  lua_createtable(L, static_cast<int>(length < kMostPresized ? length : kMostPresized), 0);
  for (std::size_t i = 0; i < length; length = Load<std::size_t>(count)) {
    push_element(elements[i]);
    lua_rawseti(L, -2, static_cast<lua_Integer>(++i));
  }
}

bool StorePointer(lua_State* L, char* member, const FieldRow& field, int index, int flags) {
  void* pointer;
  if (binding::ConvertPtr(L, index, &pointer, Type(field.type), flags) != 0) return false;
  return Save(member, pointer);
}

bool StoreCharacters(lua_State* L, char* member, const FieldRow& field, int index) {
  std::size_t length = 0;
  const char* text = lua_tolstring(L, index, &length);
  if (text == nullptr) {
    if (!lua_isnil(L, index)) return false;
    if (member != nullptr) member[0] = '\0';
    return true;
  }
  if (member == nullptr) return true;
  std::size_t last = field.detail - 1U;
  std::size_t copied = strnlen(text, length < last ? length : last);
  std::memcpy(member, text, copied);
  std::memset(member + copied, 0, field.detail - copied);
  return true;
}

bool StoreOwnedString(lua_State* L, char* member, int index) {
  const char* text = lua_tostring(L, index);
  if (text == nullptr && !lua_isnil(L, index)) return false;
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

bool StoreCopy(lua_State* L, char* member, const FieldRow& field, int index) {
  void* source;
  if (binding::ConvertPtr(L, index, &source, Type(field.type), 0) != 0) return false;
  if (member != nullptr && source != nullptr) std::memmove(member, source, field.detail);
  return true;
}

}  // namespace

void PushMember(lua_State* L, char* member, const FieldRow& field) {
  switch (field.kind) {
    case FieldKind::kInt: return binding::PushNumber(L, Load<int>(member));
    case FieldKind::kShort: return binding::PushNumber(L, int{Load<short>(member)});
    case FieldKind::kSize: return binding::PushNumber(L, static_cast<std::int64_t>(Load<std::size_t>(member)));
    case FieldKind::kInt64: return binding::PushNumber(L, Load<std::int64_t>(member));
    case FieldKind::kDouble: return lua_pushnumber(L, Load<double>(member));
    case FieldKind::kCharArray:
      // A string at an address that was pushed before is found by that, without hashing it.
      if (member[field.detail - 1] == '\0') {
        lua_pushstring(L, member);
      } else {
        lua_pushlstring(L, member, strnlen(member, field.detail));
      }
      return;
    case FieldKind::kOwnedString: lua_pushstring(L, Load<const char*>(member)); return;
    case FieldKind::kEmbedded:
    case FieldKind::kReadOnly: return binding::PushHandle(L, member, Type(field.type), 0);
    case FieldKind::kObjects:
      return PushArray<void*>(L, member, field,
                              [L](void* element) { binding::PushHandle(L, element, Type(kVoid), 0); });
    case FieldKind::kScores:
      return PushArray<double>(L, member, field, [L](double element) { lua_pushnumber(L, element); });
    case FieldKind::kTags:
      return PushArray<std::size_t>(
          L, member, field, [L](std::size_t element) { lua_pushinteger(L, static_cast<lua_Integer>(element)); });
    default: return binding::PushHandle(L, Load<void*>(member), Type(field.type), 0);
  }
}

bool StoreMember(lua_State* L, char* member, const FieldRow& field, int index) {
  switch (field.kind) {
    case FieldKind::kInt: {
      int value;
      return binding::ToInt(L, index, &value) && Save(member, value);
    }
    case FieldKind::kShort: {
      int value;
      return binding::ToInt(L, index, &value) && Save(member, static_cast<short>(value));
    }
    case FieldKind::kSize: {
      std::uint32_t value;
      return binding::ToUnsigned(L, index, &value) && Save<std::size_t>(member, value);
    }
    case FieldKind::kInt64: {
      std::int64_t value;
      return binding::ToInt64(L, index, &value) && Save(member, value);
    }
    case FieldKind::kDouble: {
      int is_number;
      double value = lua_tonumberx(L, index, &is_number);
      return is_number && Save(member, value);
    }
    case FieldKind::kCharArray: return StoreCharacters(L, member, field, index);
    case FieldKind::kOwnedString: return StoreOwnedString(L, member, index);
    case FieldKind::kUntyped:
      if (!lua_isuserdata(L, index) && !lua_isnil(L, index)) return false;
      [[fallthrough]];
    case FieldKind::kAnything: return Save(member, binding::UntypedPointerAt(L, index));
    case FieldKind::kBlock: return Save(member, lua_touserdata(L, index));
    case FieldKind::kShared:
    case FieldKind::kObjects: return StorePointer(L, member, field, index, 0);
    case FieldKind::kAdopted:
    case FieldKind::kScores:
    case FieldKind::kTags: return StorePointer(L, member, field, index, binding::kDisown);
    default: return StoreCopy(L, member, field, index);
  }
}

}  // namespace tq_mom

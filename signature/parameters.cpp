#include "signature/parameters.h"

#include <cstring>

namespace tq_mom {
namespace {

constexpr auto PackSpellings() {
  Packed<1024> spellings;
  for (const ValueType& type : kValueTypes) spellings.Append(type.spelling);
  return spellings;
}
constexpr const char* kSpellings = kTrimmed<PackSpellings>.text;

bool IsOfKind(lua_State* L, int index, Kind kind) {
  switch (kind) {
    case Kind::kInt:
    case Kind::kUnsigned:
    case Kind::kSize:
    case Kind::kInt64:
    case Kind::kDouble: return lua_isnumber(L, index);
    case Kind::kString: return lua_isstring(L, index) || lua_isnil(L, index);
    case Kind::kHandle:
    case Kind::kUntyped: return lua_isuserdata(L, index) || lua_isnil(L, index);
    default: return true;
  }
}

// What the parameter is called as an expected type: of a record's names the first or the last.
std::string_view ExpectedText(Parameter parameter, Spelling spelling) {
  if (parameter.kind() != Kind::kHandle) {
    const char* text = kSpellings;
    for (int i = parameter.place(); i > 0; --i) text += std::strlen(text) + 1;
    return text;
  }
  const char* names = ReadableName(parameter.type());
  if (spelling == Spelling::kStructure) return {names, std::strcspn(names, "|")};
  std::string_view last = names;
  last.remove_prefix(last.rfind('|') + 1);  // nothing if there is one name
  return last;
}

}  // namespace

void CheckKinds(lua_State* L, const Callee& callee) {
  for (int i = 0; i < callee.count; ++i) {
    Parameter parameter = callee.parameters[i];
    if (IsOfKind(L, i + 1, parameter.kind())) continue;
    std::string_view expected = ExpectedText(parameter, callee.spelling);
    binding::RaiseKindError(L, callee.checks, i + 1, expected.data(), expected.size());
  }
}

void* ConvertOther(lua_State* L, const Callee& callee, int index, TypeId type) {
  CheckKinds(L, callee);
  void* pointer;
  if (binding::ConvertPtr(L, index, &pointer, Type(type), 0) != 0) RejectHandle(L, callee, index, type);
  return pointer;
}

void RejectHandle(lua_State* L, const Callee& callee, int argument, TypeId type) {
  CheckKinds(L, callee);
  const char* name = Type(type)->readable_name;
  std::string_view expected = name != nullptr ? name : "void*";
  binding::RaiseKindError(L, callee.conversions, argument, expected.data(), expected.size());
}

void RejectValue(lua_State* L, const Callee& callee, const char* error) {
  CheckKinds(L, callee);
  if (error != nullptr) binding::RaiseBare(L, error);
  binding::RaiseNegativeError(L);
}

}  // namespace tq_mom

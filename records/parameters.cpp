#include "records/parameters.h"

#include <cstring>
#include <string_view>

namespace tq_mom {
namespace {

bool IsOfKind(lua_State* L, int index, Kind kind) {
  if (kind <= Kind::kBatchFlag) return lua_isnumber(L, index);
  if (kind <= Kind::kThreadName) return lua_isstring(L, index) || lua_isnil(L, index);
  if (kind <= Kind::kUntyped) return lua_isuserdata(L, index) || lua_isnil(L, index);
  return true;
}

// The first or the last of a type's names.
std::string_view Spelled(TypeId type, Spelling spelling) {
  const char* names = ReadableName(type);
  if (spelling == Spelling::kStructure) return {names, std::strcspn(names, "|")};
  const char* last = std::strrchr(names, '|');
  return last != nullptr ? last + 1 : names;
}

// What the parameter is called as an expected type.
std::string_view ExpectedText(const Parameter& parameter, Spelling spelling) {
  switch (parameter.kind) {
    case Kind::kInt:
      return "int";
    case Kind::kUnsignedInt:
      return "unsigned int";
    case Kind::kSize:
      return "size_t";
    case Kind::kShort:
      return "short";
    case Kind::kLongLong:
      return "long long";
    case Kind::kInt64:
      return "int64_t";
    case Kind::kDouble:
      return "double";
    case Kind::kCommandCode:
      return "tq_mom_cmd_t";
    case Kind::kBatchFlag:
      return "tq_mom_batch_over_flag_t";
    case Kind::kString:
      return "char *";
    case Kind::kKeyText:
      return "char [512]";
    case Kind::kFieldText:
      return "char [128]";
    case Kind::kThreadName:
      return "char [TQ_THREAD_NAME_LEN+1]";
    case Kind::kEmbedded: {
      if (parameter.type == TypeId::_p_tq_thread_list) return "struct tq_thread_list [4]";
      std::string_view pointer = Spelled(parameter.type, spelling);
      return {pointer.data(), pointer.size() - std::strlen(" *")};
    }
    case Kind::kUntyped:
      return "void *";
    default:
      return Spelled(parameter.type, spelling);
  }
}

}  // namespace

void CheckKinds(lua_State* L, const Callee& callee) {
  for (int i = 0; i < callee.count; ++i) {
    const Parameter& parameter = callee.parameters[i];
    if (IsOfKind(L, i + 1, parameter.kind)) continue;
    std::string_view expected = ExpectedText(parameter, callee.spelling);
    binding::RaiseKindError(L, callee.checks, i + 1, expected.data(), expected.size());
  }
}

void RejectArgument(lua_State* L, const Callee& callee, int argument, const char* error) {
  CheckKinds(L, callee);
  if (error != nullptr) binding::RaiseBare(L, error);
  const Parameter& parameter = callee.parameters[argument - 1];
  if (parameter.kind == Kind::kUnsignedInt || parameter.kind == Kind::kSize) binding::RaiseNegativeError(L);
  const char* name = Type(parameter.type)->readable_name;
  std::string_view expected = name != nullptr ? name : "void*";
  binding::RaiseKindError(L, callee.conversions, argument, expected.data(), expected.size());
}

}  // namespace tq_mom

#include "records/parameters.h"

#include <string_view>

namespace tq_mom {
namespace {

bool IsOfKind(lua_State* L, int index, Kind kind) {
  if (kind <= Kind::kBatchFlag) return lua_isnumber(L, index);
  if (kind <= Kind::kCharArray) return lua_isstring(L, index) || lua_isnil(L, index);
  if (kind <= Kind::kUntyped) return lua_isuserdata(L, index) || lua_isnil(L, index);
  return true;
}

// The first or the last of a type's names.
std::string_view Spelled(TypeId type, Spelling spelling) {
  std::string_view names = ReadableName(type);
  return spelling == Spelling::kTypedef ? names.substr(names.rfind('|') + 1) : names.substr(0, names.find('|'));
}

// What the parameter is called as an expected type. Buffer: for texts that must be put together.
std::string_view ExpectedText(const Parameter& parameter, Spelling spelling, char (&buffer)[16]) {
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
    case Kind::kCharArray: {
      if (parameter.extent == TQ_THREAD_NAME_LEN + 1) return "char [TQ_THREAD_NAME_LEN+1]";
      constexpr std::string_view kStart = "char [";
      char* end = buffer + kStart.copy(buffer, kStart.size());
      for (int unit = 100; unit > 0; unit /= 10) *end++ = static_cast<char>('0' + parameter.extent / unit % 10);
      *end++ = ']';
      return {buffer, static_cast<std::size_t>(end - buffer)};
    }
    case Kind::kEmbedded: {
      if (parameter.type == TypeId::_p_tq_thread_list) return "struct tq_thread_list [4]";
      std::string_view pointer = Spelled(parameter.type, spelling);
      return pointer.substr(0, pointer.size() - 2);
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
    char buffer[16];
    std::string_view expected = ExpectedText(parameter, callee.spelling, buffer);
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

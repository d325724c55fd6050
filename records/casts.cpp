#include "records/casts.h"

#include "binding/numbered.h"
#include "signature/parameters.h"

extern "C" {
#define TQ_DEFINE_CAST(name, record) \
  record* name(void* pointer) { return static_cast<record*>(pointer); }
TQ_CASTS(TQ_DEFINE_CAST)
#undef TQ_DEFINE_CAST
}

namespace tq_mom {
namespace {

#define TQ_CAST_NAME(name, record) #name "\0"
constexpr char kNames[] = TQ_CASTS(TQ_CAST_NAME);
#undef TQ_CAST_NAME

#define TQ_CAST_TYPE(name, record) kTypeOf<record>,
constexpr TypeId kTypes[] = {TQ_CASTS(TQ_CAST_TYPE)};
#undef TQ_CAST_TYPE

constexpr int kCastCount = sizeof(kTypes) / sizeof(kTypes[0]);

// The name of the cast that comes after `number` others.
const char* CastName(std::size_t number) {
  const char* name = kNames;
  for (; number > 0; --number) name += std::string_view(name).size() + 1;
  return name;
}

}  // namespace

// The handle at index 1, or nil, as a handle of the cast's type. The record stays owned by whoever owns it.
extern "C" [[gnu::visibility("hidden")]] int tq_cast(lua_State* L, std::size_t number) {
  const binding::Handle* handle = binding::HandleAt(L, 1);
  if (lua_gettop(L) != 1 || (handle == nullptr && !lua_isnil(L, 1))) {
    const char* name = CastName(number);
    Callee callee{{name, nullptr}, {name, nullptr}, {Parameter::Of(Kind::kUntyped, "void *")}, 1, Spelling::kStructure};
    if (lua_gettop(L) != 1) binding::RaiseCountError(L, callee.checks, 1);
    CheckKinds(L, callee);
    const binding::Piece message[] = {"Error in ", name, ", expected a void* at argument number 1\n", nullptr};
    binding::RaiseAtCaller(L, message);
  }
  TypeId type = kTypes[number];
  binding::PushClassTableOfClosure(L);
  binding::PushClassHandle(L, handle != nullptr ? handle->pointer : nullptr, Type(type), ClassName(type),
                           binding::kClassTableOnTop);
  return 1;
}

TQ_NUMBERED_FUNCTIONS(kCasts, tq_cast, kCastCount);

int CountCasts() { return kCastCount; }

void AddCasts(lua_State* L) {
  const char* name = kNames;
  for (unsigned i = 0; i < kCastCount; ++i) {
    std::size_t length = std::string_view(name).size();
    lua_pushlstring(L, name, length);
    PushFunction(L, kCasts.At(i), {kTypes[i]});
    lua_rawset(L, -3);
    name += length + 1;
  }
}

}  // namespace tq_mom

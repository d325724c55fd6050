#include "records/casts.h"

#include "records/parameters.h"

extern "C" {
#define TQ_DEFINE_CAST(name, record) \
  record* name(void* pointer) { return static_cast<record*>(pointer); }
TQ_CASTS(TQ_DEFINE_CAST)
#undef TQ_DEFINE_CAST
}

namespace tq_mom {

int CastHandle(lua_State* L, const char* name, TypeId type) {
  const binding::Piece names[] = {name, nullptr};
  if (lua_gettop(L) != 1) binding::RaiseCountError(L, names, 1);
  const binding::Handle* handle = binding::HandleAt(L, 1);
  if (handle == nullptr && !lua_isnil(L, 1)) {
    constexpr Parameter kParameter{Kind::kUntyped};
    CheckKinds(L, {&kParameter, 1, Spelling::kStructure, names, names});
    const binding::Piece message[] = {"Error in ", name, ", expected a void* at argument number 1\n", nullptr};
    binding::RaiseAtCaller(L, message);
  }
  binding::PushClassHandle(L, handle != nullptr ? handle->pointer : nullptr, Type(type), ClassName(type),
                           binding::PushClassTableOfClosure(L));
  return 1;
}

}  // namespace tq_mom

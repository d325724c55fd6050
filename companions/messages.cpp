#include "companions/messages.h"

#include <cstdlib>

#include "binding/handles.h"

namespace companions {

tq_mom_pubsub_msg_t* PushMessage(lua_State* L, binding::TypeDescriptor* type, std::size_t room) {
  if (type->class_record == nullptr) luaL_error(L, "messages are records of tq_mom_sync: require it first");
  binding::Handle* handle = binding::PushEmptyHandle(L, type);
  handle->pointer = std::calloc(1, sizeof(tq_mom_pubsub_msg_t) + room);
  if (handle->pointer == nullptr) luaL_error(L, "not enough memory");
  handle->own = 1;
  return static_cast<tq_mom_pubsub_msg_t*>(handle->pointer);
}

}  // namespace companions

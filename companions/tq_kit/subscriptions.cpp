#include "companions/tq_kit/subscriptions.h"

#include <tq_kit/subscribe.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "binding/handles.h"
#include "companions/messages.h"
#include "companions/tq_kit/arguments.h"

namespace tq_kit {
namespace {

// The native part of a subscription. While it is in force, a table in the registry holds its handle under its address;
// the handle holds the function.
struct Subscription {
  lua_State* L;  // a thread of our own: the publisher may run on any
  tq_global_t* g;
  int number;  // 0: not in force
};

const char kThreadKey = 0;
const char kInForceKey = 0;

// The thread on which callbacks run, one for an interpreter.
lua_State* CallbackThread(lua_State* L) {
  lua_State* thread;
  if (lua_rawgetp(L, LUA_REGISTRYINDEX, &kThreadKey) == LUA_TTHREAD) {
    thread = lua_tothread(L, -1);
  } else {
    thread = lua_newthread(L);
    lua_rawsetp(L, LUA_REGISTRYINDEX, &kThreadKey);
  }
  lua_pop(L, 1);
  return thread;
}

void PushInForce(lua_State* L) {
  if (lua_rawgetp(L, LUA_REGISTRYINDEX, &kInForceKey) == LUA_TTABLE) return;
  lua_pop(L, 1);
  lua_newtable(L);
  lua_pushvalue(L, -1);
  lua_rawsetp(L, LUA_REGISTRYINDEX, &kInForceKey);
}

// Drops the subscriptions of runtimes that have ended from the table at the stack top.
void DropEnded(lua_State* L) {
  lua_pushnil(L);
  while (lua_next(L, -2) != 0) {
    lua_pop(L, 1);
    auto* subscription = static_cast<Subscription*>(lua_touserdata(L, -1));
    if (tq_kit_last_error(subscription->g) != nullptr) continue;
    subscription->number = 0;
    lua_pushnil(L);
    lua_rawsetp(L, -3, subscription);
  }
}

int AddTraceback(lua_State* L) {
  luaL_traceback(L, L, luaL_tolstring(L, 1, nullptr), 1);
  return 1;
}

// Arguments: the subscription and the message, both light.
int CallSubscriber(lua_State* L) {
  void* subscription = lua_touserdata(L, 1);
  const auto* message = static_cast<const tq_mom_pubsub_msg_t*>(lua_touserdata(L, 2));
  PushInForce(L);
  lua_rawgetp(L, -1, subscription);
  lua_getuservalue(L, -1);
  binding::PushHandle(L, static_cast<Subscription*>(subscription)->g, type_table[kGlobalType], 0);
  tq_mom_pubsub_msg_t* kept = companions::PushMessage(L, type_table[kMessageType], message->length);
  *kept = *message;
  if (message->value == nullptr) {
    lua_pushnil(L);
  } else {
    kept->value = std::memcpy(companions::RoomOf(kept), message->value, message->length);
    lua_pushlstring(L, static_cast<const char*>(message->value), message->length);
  }
  lua_call(L, 3, 0);
  return 0;
}

// Nothing may leave: the publisher goes on, whatever the script does.
void Deliver(tq_global_t*, const tq_mom_pubsub_msg_t* message, void* context) {
  auto* subscription = static_cast<Subscription*>(context);
  lua_State* L = subscription->L;
  if (!lua_checkstack(L, LUA_MINSTACK)) {
    std::fputs("tq_kit: no room for a subscriber\n", stderr);
    return;
  }
  int top = lua_gettop(L);
  lua_pushcfunction(L, AddTraceback);
  lua_pushcfunction(L, CallSubscriber);
  lua_pushlightuserdata(L, subscription);
  lua_pushlightuserdata(L, const_cast<tq_mom_pubsub_msg_t*>(message));
  if (lua_pcall(L, 2, 0, top + 1) != LUA_OK) {
    const char* text = lua_tostring(L, -1);
    std::fprintf(stderr, "tq_kit: error in a subscriber: %s\n", text != nullptr ? text : luaL_typename(L, -1));
  }
  lua_settop(L, top);
}

// Returns whether the subscription was in force.
bool End(Subscription* subscription) {
  bool ended = subscription->number != 0 && tq_kit_unsubscribe(subscription->g, subscription->number) == TQ_MOM_OK;
  subscription->number = 0;
  return ended;
}

// Closing the interpreter collects what the registry holds.
void Destroy(void* object) {
  End(static_cast<Subscription*>(object));
  std::free(object);
}

Subscription* CheckSubscription(lua_State* L) {
  void* object;
  if (binding::ConvertPtr(L, 1, &object, type_table[kSubscriptionType], 0) != 0 || object == nullptr) {
    RaiseArgument(L, 1, "subscription");
  }
  return static_cast<Subscription*>(object);
}

// subscription:cancel() -> whether it was in force
int Cancel(lua_State* L) {
  Subscription* subscription = CheckSubscription(L);
  PushInForce(L);
  lua_pushnil(L);
  lua_rawsetp(L, -2, subscription);
  lua_pushboolean(L, End(subscription));
  return 1;
}

constexpr binding::Method kMethods[] = {{"cancel", Cancel}, {}};
constexpr binding::NamespaceRecord kStatics = {"subscription",
                                               binding::kNone<binding::Method>,
                                               binding::kNone<binding::Attribute>,
                                               binding::kNone<binding::Constant>,
                                               binding::kNone<binding::ClassRecord*>,
                                               binding::kNone<const binding::NamespaceRecord*>};
const char* no_base_names[] = {nullptr};
binding::ClassRecord* no_bases[] = {nullptr};

}  // namespace

binding::ClassRecord subscription_class = {"subscription",
                                           "tq_kit.subscription",
                                           &type_table[kSubscriptionType],
                                           nullptr,
                                           Destroy,
                                           kMethods,
                                           binding::kNone<binding::Attribute>,
                                           &kStatics,
                                           binding::kNone<binding::Method>,
                                           no_bases,
                                           no_base_names};

int Subscribe(lua_State* L) {
  tq_global_t* g = CheckRuntime(L);
  int db = CheckDatabase(L);
  const char* pattern = CheckText(L, 3, "pattern");
  if (lua_type(L, 4) != LUA_TFUNCTION) RaiseArgument(L, 4, "function");
  lua_settop(L, 4);
  lua_State* thread = CallbackThread(L);
  binding::Handle* handle = binding::PushEmptyHandle(L, type_table[kSubscriptionType]);
  lua_pushvalue(L, 4);
  lua_setuservalue(L, 5);
  auto* subscription = static_cast<Subscription*>(std::calloc(1, sizeof(Subscription)));
  if (subscription == nullptr) return luaL_error(L, "not enough memory");
  handle->pointer = subscription;
  handle->own = 1;
  subscription->L = thread;
  subscription->g = g;
  PushInForce(L);
  DropEnded(L);
  lua_pushvalue(L, 5);
  lua_rawsetp(L, 6, subscription);
  int number = tq_kit_subscribe(g, db, pattern, Deliver, subscription);
  if (number < 0) {
    lua_pushnil(L);
    lua_rawsetp(L, 6, subscription);
    CheckStatus(L, g, "subscribe", number);
  }
  subscription->number = number;
  lua_settop(L, 5);
  return 1;
}

}  // namespace tq_kit

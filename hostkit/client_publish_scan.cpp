// Publish and scan: the calls that run callbacks.
//
// No C++ object with a destructor, no lock and no handler is alive in a frame of ours while a callback runs: it may
// leave by longjmp or by an exception that is not ours (see CallbackFrame). The store takes no part in the delivery, so
// the callback can use it in any way.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/glob.h"
#include "hostkit/guard.h"

namespace {

static_assert(std::is_trivially_destructible_v<hostkit::Command>, "a callback may leave past it");

using hostkit::CallbackFrame;
using hostkit::ClientOf;
using hostkit::Command;
using hostkit::Guarded;
using hostkit::Subscription;

struct PublishFrame : CallbackFrame {
  std::string value;
  std::vector<int> subscriptions;
  std::size_t next = 0;
  tq_mom_pubsub_msg_t message = {};
  int receivers = 0;
};

struct ScanFrame : CallbackFrame {
  int db = 0;
  std::vector<std::string> names;
  std::size_t next = 0;
  hostkit::Element element;
  tq_mom_scan_all_msg_t message = {};
  int delivered = 0;
};

const Subscription* FindSubscription(const tq_mom_client_s& client, int id) {
  const auto found = std::lower_bound(client.subscriptions.begin(), client.subscriptions.end(), id,
                                      [](const Subscription& known, int wanted) { return known.id < wanted; });
  return found != client.subscriptions.end() && found->id == id ? &*found : nullptr;
}

// Prepares the delivery of a message. Returns a status code.
int StartPublish(const Command& command, const void* stack, PublishFrame** frame) {
  auto made = std::make_unique<PublishFrame>();
  made->value = command.value();
  for (const Subscription& known : command.client->subscriptions) {
    if (known.db == command.key.db && hostkit::GlobMatches(known.pattern, command.key.name)) {
      made->subscriptions.push_back(known.id);
    }
  }
  made->message.db = command.key.db;
  made->message.db_id = command.key.db;
  command.key.name.copy(made->message.key, sizeof made->message.key - 1);
  made->message.cmd = TQ_MOM_PUBLISH;
  made->message.value = made->value.data();
  made->message.length = made->value.size();
  *frame = made.get();
  command.client->Enter(std::move(made), stack);
  return TQ_MOM_OK;
}

// Collects the names that a scan goes through. Returns a status code.
int StartScan(const Command& command, const void* stack, ScanFrame** frame) {
  auto made = std::make_unique<ScanFrame>();
  made->db = command.key.db;
  if (const int status = command.engine->Match(command.key, &made->names); status != TQ_MOM_OK) return status;
  *frame = made.get();
  command.client->Enter(std::move(made), stack);
  return TQ_MOM_OK;
}

// Takes the next element that is still there into the frame's message. Returns 1, 0 when there is none left, or a
// status code.
int NextElement(const tq_mom_client_s& client, ScanFrame* frame) {
  while (frame->next < frame->names.size()) {
    std::string& name = frame->names[frame->next++];
    const int status = Guarded([&] { return client.engine->Describe({frame->db, name}, &frame->element); });
    if (status != TQ_MOM_OK) return status;
    if (!frame->element.exists) continue;
    std::string& value = frame->element.value;
    frame->message.vlen = static_cast<int>(std::min<std::size_t>(value.size(), INT_MAX));
    frame->message.key = name.data();
    frame->message.value = reinterpret_cast<unsigned char*>(value.data());
    return 1;
  }
  return 0;
}

int CountMatches(const Command& command, unsigned int limit) {
  std::vector<std::string> names;
  if (const int status = command.engine->Match(command.key, &names); status != TQ_MOM_OK) return status;
  const std::size_t count = limit == 0 ? names.size() : std::min<std::size_t>(names.size(), limit);
  return static_cast<int>(std::min<std::size_t>(count, INT_MAX));
}

}  // namespace

int tq_mom_publish_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  PublishFrame* frame;
  const void* const stack = __builtin_frame_address(0);
  if (const int status = Guarded([&] { return StartPublish(command, stack, &frame); }); status != TQ_MOM_OK) {
    return status;
  }
  frame->receivers = Guarded([&] { return command.engine->Publish(command.key, frame->value); });
  if (frame->receivers < 0) frame->next = frame->subscriptions.size();
  while (frame->next < frame->subscriptions.size()) {
    const Subscription* known = FindSubscription(*command.client, frame->subscriptions[frame->next++]);
    if (known == nullptr) continue;
    ++frame->receivers;
    known->subscriber(g, &frame->message, known->context);
  }
  const int receivers = frame->receivers;
  command.client->Leave(frame);
  return receivers;
}

int tq_mom_publish_ext_sync(tq_global_t* g, int db, tq_mom_publish_op_t* /*op*/, void* key) {
  return tq_mom_publish_sync(g, db, key);
}

int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  if (callback == nullptr) return Guarded([&] { return CountMatches(command, count); });
  ScanFrame* frame;
  const void* const stack = __builtin_frame_address(0);
  int status = Guarded([&] { return StartScan(command, stack, &frame); });
  if (status != TQ_MOM_OK) return status;
  while (count == 0 || static_cast<unsigned int>(frame->delivered) < count) {
    status = NextElement(*command.client, frame);
    if (status <= 0) break;
    ++frame->delivered;
    if (callback(g, &frame->message, context) != 0) break;
  }
  const int delivered = frame->delivered;
  command.client->Leave(frame);
  return status < 0 ? status : delivered;
}

int tq_kit_subscribe(tq_global_t* g, int db, const char* pattern, tq_kit_subscriber subscriber, void* context) {
  tq_mom_client_s* client;
  if (const int status = hostkit::OpenClient(g, &client); status != TQ_MOM_OK) return status;
  if (!hostkit::ValidDatabase(db) || pattern == nullptr || subscriber == nullptr) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    client->subscriptions.push_back({client->last_subscription + 1, db, pattern, subscriber, context});
    return ++client->last_subscription;
  });
}

int tq_kit_unsubscribe(tq_global_t* g, int subscription) {
  const tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr || FindSubscription(*client, subscription) == nullptr) return TQ_MOM_INPUT_ERR;
  std::erase_if(ClientOf(g)->subscriptions, [&](const Subscription& known) { return known.id == subscription; });
  return TQ_MOM_OK;
}

// Publish, subscriptions, and the event loop that delivers what has arrived.
#include <tq_kit/control.h>
#include <tq_kit/subscribe.h>
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/callbacks.h"
#include "hostkit/glob.h"

namespace {

using hostkit::Command;
using hostkit::Engine;
using hostkit::Message;
using hostkit::Subscription;

// Of all runtimes, so that whoever ends a subscription after its runtime does not end another's.
std::atomic<int> last_subscription = 0;

// One message on its way to subscribers.
struct DeliveryFrame : hostkit::CallbackFrame {
  std::string value;
  std::vector<int> subscriptions;
  std::size_t next = 0;
  tq_mom_pubsub_msg_t message = {};
  int calls = 0;
};

const Subscription* FindSubscription(const tq_mom_client_s& client, int id) {
  const auto found = std::lower_bound(client.subscriptions.begin(), client.subscriptions.end(), id,
                                      [](const Subscription& known, int wanted) { return known.id < wanted; });
  return found != client.subscriptions.end() && found->id == id ? &*found : nullptr;
}

// Prepares the delivery of a message to those subscriptions that wanted(subscription) picks. Throws std::bad_alloc.
template <typename Wanted>
void Fill(DeliveryFrame* frame, const tq_mom_client_s& client, int db, std::string_view name, std::string value,
          Wanted wanted) {
  for (const Subscription& known : client.subscriptions) {
    if (known.db == db && wanted(known)) frame->subscriptions.push_back(known.id);
  }
  frame->value = std::move(value);
  frame->message.db = db;
  frame->message.db_id = db;
  name.copy(frame->message.key, sizeof frame->message.key - 1);
  frame->message.cmd = TQ_MOM_PUBLISH;
  frame->message.value = frame->value.data();
  frame->message.length = frame->value.size();
}

// Calls the subscribers that are still there. Returns how many calls it made.
int Deliver(tq_global_t* g, tq_mom_client_s* client, DeliveryFrame* frame) {
  while (frame->next < frame->subscriptions.size()) {
    const Subscription* known = FindSubscription(*client, frame->subscriptions[frame->next++]);
    if (known == nullptr) continue;
    ++frame->calls;
    known->subscriber(g, &frame->message, known->context);
  }
  const int calls = frame->calls;
  client->Leave(frame);
  return calls;
}

// Takes in what has arrived. Returns a status code.
int Receive(const Command& command, hostkit::TimeLimit wait) noexcept {
  return command.Run([&] {
    tq_mom_client_s& client = *command.client;
    std::vector<Message> arrived;
    hostkit::Status status = client.engine->Poll(client.inbox.empty() ? wait : hostkit::TimeLimit(), &arrived);
    client.inbox.insert(client.inbox.end(), std::make_move_iterator(arrived.begin()),
                        std::make_move_iterator(arrived.end()));
    return client.Finish(std::move(status));
  });
}

// Returns the number of calls of subscribers, or a status code.
int Poll(tq_global_t* g, hostkit::TimeLimit wait) {
  Command command;
  command.client = hostkit::ClientOf(g);
  if (command.client == nullptr) return TQ_MOM_INPUT_ERR;
  const int received = Receive(command, wait);
  int calls = 0;
  // A callback may leave, or poll itself: what has not been delivered stays in the inbox.
  while (!command.client->inbox.empty()) {
    DeliveryFrame* frame = nullptr;
    const int status = hostkit::EnterFrame(command, __builtin_frame_address(0), &frame, [&](DeliveryFrame* made) {
      Message& message = command.client->inbox.front();
      Fill(made, *command.client, message.db, message.name, std::move(message.value),
           [&](const Subscription& known) { return known.pattern == message.pattern; });
      command.client->inbox.pop_front();
      return hostkit::Status();
    });
    if (status != TQ_MOM_OK) return status;
    calls += Deliver(g, command.client, frame);
  }
  return received != TQ_MOM_OK ? received : calls;
}

// Whether another subscription than that one has the same database and pattern.
bool HasTwin(const tq_mom_client_s& client, int id, int db, std::string_view pattern) {
  return std::any_of(client.subscriptions.begin(), client.subscriptions.end(), [&](const Subscription& known) {
    return known.id != id && known.db == db && known.pattern == pattern;
  });
}

// How many subscriptions get a message by Poll that the store does not count: it knows a pattern once, however many
// subscriptions have it.
std::int64_t Uncounted(const tq_mom_client_s& client, int db, std::string_view name) {
  if (!client.engine->Supports(hostkit::Feature::kMessagesByPoll)) return 0;
  const auto& all = client.subscriptions;
  return std::count_if(all.begin(), all.end(), [&](const Subscription& known) {
    const auto first = std::find_if(all.begin(), all.end(), [&](const Subscription& other) {
      return other.db == known.db && other.pattern == known.pattern;
    });
    return known.db == db && first->id != known.id && hostkit::GlobMatches(known.pattern, name);
  });
}

}  // namespace

int tq_mom_publish_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.Open({g, db, key}, hostkit::Access::kRead, hostkit::kValue); status != TQ_MOM_OK) {
    return status;
  }
  std::int64_t receivers = 0;
  DeliveryFrame* frame = nullptr;
  const int status = hostkit::EnterFrame(command, __builtin_frame_address(0), &frame, [&](DeliveryFrame* made) {
    Engine& engine = *command.client->engine;
    Fill(made, *command.client, db, command.request.name, *command.object->value, [&](const Subscription& known) {
      return !engine.Supports(hostkit::Feature::kMessagesByPoll) &&
             hostkit::GlobMatches(known.pattern, command.request.name);
    });
    return engine.Publish(command.request, made->value, &receivers);
  });
  if (status != TQ_MOM_OK) return status;
  receivers += Uncounted(*command.client, db, command.request.name);
  const int result = command.Result({}, receivers + Deliver(g, command.client, frame));
  // What comes by Poll has come already as far as it is our own.
  if (!command.client->subscriptions.empty()) Poll(g, {});
  return result;
}

int tq_global_run(tq_global_t* g) { return std::min(Poll(g, {}), TQ_MOM_OK); }

int tq_kit_poll(tq_global_t* g, int64_t milliseconds) {
  constexpr std::int64_t kLongest = std::numeric_limits<std::int32_t>::max();
  return Poll(g, hostkit::TimeLimit(std::clamp<std::int64_t>(milliseconds, 0, kLongest)));
}

int tq_kit_subscribe(tq_global_t* g, int db, const char* pattern, tq_kit_subscriber subscriber, void* context) {
  Command command;
  if (const int status = command.OpenRuntime(g); status != TQ_MOM_OK) return status;
  tq_mom_client_s& client = *command.client;
  if (!hostkit::ValidDatabase(db) || pattern == nullptr || subscriber == nullptr) {
    return client.Refuse(TQ_MOM_INPUT_ERR, "there is no such database, no pattern or no subscriber");
  }
  return command.Run([&] {
    const int id = ++last_subscription;
    client.subscriptions.push_back({id, db, pattern, subscriber, context});
    hostkit::Status status;
    if (!HasTwin(client, id, db, pattern)) status = client.engine->Subscribe({db, pattern});
    if (!status.ok()) {
      client.subscriptions.pop_back();
      return client.Finish(std::move(status));
    }
    return command.Result({}, id);
  });
}

int tq_kit_unsubscribe(tq_global_t* g, int subscription) {
  Command command;
  command.client = hostkit::ClientOf(g);
  if (command.client == nullptr) return TQ_MOM_INPUT_ERR;
  tq_mom_client_s& client = *command.client;
  const Subscription* known = FindSubscription(client, subscription);
  if (known == nullptr) return client.Refuse(TQ_MOM_INPUT_ERR, "there is no such subscription");
  return command.Run([&] {
    const auto place = client.subscriptions.begin() + (known - client.subscriptions.data());
    const Subscription removed = std::move(*place);
    client.subscriptions.erase(place);
    hostkit::Status status;
    if (!HasTwin(client, 0, removed.db, removed.pattern)) {
      status = client.engine->Unsubscribe({removed.db, removed.pattern});
    }
    return client.Finish(std::move(status));
  });
}

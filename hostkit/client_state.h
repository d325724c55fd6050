// The runtime behind a tq_global_t.
#ifndef TQ_HOSTKIT_CLIENT_STATE_H
#define TQ_HOSTKIT_CLIENT_STATE_H

#include <pthread.h>
#include <tq_kit/subscribe.h>
#include <tq_mom/tq_mom.h>

#include <memory>
#include <string>
#include <vector>

#include "hostkit/engine.h"
#include "hostkit/tq_obj.h"

namespace hostkit {

// What a call that runs callbacks keeps while it does. A callback may leave by longjmp or by an exception of somebody
// else's, past every destructor of ours, so this belongs to the runtime: a finished call drops its own frame; one that
// was left early is noticed and dropped by a later call, at the latest when the runtime ends.
class CallbackFrame {
 public:
  CallbackFrame() = default;
  virtual ~CallbackFrame() = default;
  CallbackFrame(const CallbackFrame&) = delete;
  CallbackFrame& operator=(const CallbackFrame&) = delete;

 private:
  friend struct ::tq_mom_client_s;
  const void* stack_ = nullptr;  // where the call's own stack frame is
  pthread_t thread_ = {};
};

struct Subscription {
  int id;
  int db;
  std::string pattern;
  tq_kit_subscriber subscriber;
  void* context;
};

}  // namespace hostkit

struct tq_mom_client_s {
  // Uses the given record, or one of its own for null. Throws std::bad_alloc.
  tq_mom_client_s(tq_global_t* record, std::unique_ptr<hostkit::Engine> store);
  ~tq_mom_client_s();
  tq_mom_client_s(const tq_mom_client_s&) = delete;
  tq_mom_client_s& operator=(const tq_mom_client_s&) = delete;

  // Takes the frame in and drops those of calls that were left early. stack is the address of the caller's stack frame.
  // Throws std::bad_alloc.
  void Enter(std::unique_ptr<hostkit::CallbackFrame> frame, const void* stack);
  // Drops the frame and all that were entered after it.
  void Leave(const hostkit::CallbackFrame* frame);

  tq_global_t* const global;
  const std::unique_ptr<hostkit::Engine> engine;
  bool connected = false;
  std::vector<hostkit::Subscription> subscriptions;  // ascending ids
  int last_subscription = 0;
  std::vector<std::unique_ptr<hostkit::CallbackFrame>> frames;
  tq_thread_master master = {};
  tq_thread event = {};

 private:
  tq_global_t own_record_ = {};
};

namespace hostkit {

// A runtime over an engine, as tq_global_init makes one over the in-process engine. Null when out of memory or when
// the record is a runtime already.
tq_global_t* StartRuntime(tq_global_t* record, std::unique_ptr<Engine> engine);

// Null if the record is no runtime.
tq_mom_client_s* ClientOf(tq_global_t* g);

// A command's way to the store, checked: the runtime, its connection, the database, the key, in this order.
struct Command {
  // Returns a status code.
  int Open(tq_global_t* g, int db, const void* key_object);
  // Also refuses a key object without a value.
  int OpenWithValue(tq_global_t* g, int db, const void* key_object);

  std::string_view value() const { return *object->value; }

  tq_mom_client_s* client = nullptr;
  Engine* engine = nullptr;
  const tq_obj* object = nullptr;
  Key key = {};
};

// The runtime and its connection alone. Returns a status code.
int OpenClient(tq_global_t* g, tq_mom_client_s** client);
bool ValidDatabase(int db);

}  // namespace hostkit

#endif

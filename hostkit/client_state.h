// The runtime behind a tq_global_t.
#pragma once

#include <pthread.h>
#include <tq_kit/subscribe.h>
#include <tq_mom/tq_mom.h>

#include <bitset>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/engine.h"
#include "hostkit/seen_fields.h"

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
  // Takes the given record's address as its own, or makes a record for null. A given record is neither read nor
  // written. Throws std::bad_alloc.
  tq_mom_client_s(tq_global_t* record, std::unique_ptr<hostkit::Engine> store);
  ~tq_mom_client_s();
  tq_mom_client_s(const tq_mom_client_s&) = delete;
  tq_mom_client_s& operator=(const tq_mom_client_s&) = delete;

  // Takes the frame in. stack is the address of the caller's stack frame. Throws std::bad_alloc.
  void Enter(std::unique_ptr<hostkit::CallbackFrame> frame, const void* stack);
  // Drops the frame and all that were entered after it.
  void Leave(const hostkit::CallbackFrame* frame);
  // Whether a call that runs callbacks is under way on the caller's stack; drops the frames of calls that were left.
  bool InCallback(const void* stack);

  // Ends a call: keeps what there is to say about it and returns its status code.
  int Finish(hostkit::Status status) noexcept;
  // Ends a call that the client itself refuses.
  int Refuse(int status, const char* text) noexcept;

  tq_global_t* const global;
  const std::unique_ptr<hostkit::Engine> engine;
  bool connected = false;
  std::bitset<hostkit::kDatabaseCount> read_only;
  hostkit::SeenFields seen;
  std::uint64_t writes = 0;  // counts up with each call that may have written
  std::string last_error;
  std::vector<hostkit::Subscription> subscriptions;  // ascending ids
  std::deque<hostkit::Message> inbox;                // what has arrived and is not delivered yet
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

bool ValidDatabase(int db);
// A key text fits, with its NUL, into the key of a message.
bool ValidName(std::string_view name);

}  // namespace hostkit

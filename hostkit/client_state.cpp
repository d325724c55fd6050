#include "hostkit/client_state.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "hostkit/guard.h"

namespace hostkit {
namespace {

// A record is looked up by its address: a script can pass one that was never a runtime or is none any more, and can
// write whatever it likes into one that is.
class Runtimes {
 public:
  // Throws std::bad_alloc.
  bool Add(tq_global_t* record, tq_mom_client_s* client) {
    const std::lock_guard lock(mutex_);
    return clients_.emplace(record, client).second;
  }

  tq_mom_client_s* Find(tq_global_t* record) const {
    const std::lock_guard lock(mutex_);
    const auto found = clients_.find(record);
    return found != clients_.end() ? found->second : nullptr;
  }

  void Remove(tq_global_t* record) {
    const std::lock_guard lock(mutex_);
    clients_.erase(record);
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<tq_global_t*, tq_mom_client_s*> clients_;
};

Runtimes& AllRuntimes() {
  static Runtimes runtimes;
  return runtimes;
}

int RunEvent(tq_thread* event) { return tq_global_run(static_cast<tq_global_t*>(event->zg)); }

int StatusCodeOf(StatusCode code) {
  switch (code) {
    case StatusCode::kOk: return TQ_MOM_OK;
    case StatusCode::kWrongKind: return TQ_MOM_INPUT_ERR;
    case StatusCode::kOutOfMemory: return TQ_MOM_MALLOC_ERR;
    case StatusCode::kUnavailable: return TQ_MOM_NO_READY;
    case StatusCode::kReadOnly: return TQ_MOM_GLOBAL_DB_NO_WRITE;
    case StatusCode::kOutcomeUnknown:
    case StatusCode::kNotSupported:
    case StatusCode::kFailed: break;
  }
  return TQ_MOM_ERR;
}

// Whether a call that was entered there is not running any more, seen from a call further down the stack, which grows
// downwards. A runtime is used from one thread at a time.
bool WasLeft(const void* entered, pthread_t thread, const void* stack) {
  return !pthread_equal(thread, pthread_self()) || std::less_equal<const void*>()(entered, stack);
}

}  // namespace

tq_global_t* StartRuntime(tq_global_t* record, std::unique_ptr<Engine> engine) {
  return GuardedPointer([&]() -> tq_global_t* {
    if (ClientOf(record) != nullptr) return nullptr;
    auto client = std::make_unique<tq_mom_client_s>(record, std::move(engine));
    AllRuntimes().Add(client->global, client.get());
    return client.release()->global;
  });
}

tq_mom_client_s* ClientOf(tq_global_t* g) { return AllRuntimes().Find(g); }

bool ValidDatabase(int db) { return db >= 0 && db < kDatabaseCount; }

bool ValidName(std::string_view name) {
  return !name.empty() && name.size() < TQ_MOM_KEY_MAX_LEN && name.find('\0') == std::string_view::npos;
}

}  // namespace hostkit

tq_mom_client_s::tq_mom_client_s(tq_global_t* record, std::unique_ptr<hostkit::Engine> store)
    : global(record != nullptr ? record : &own_record_), engine(std::move(store)) {
  own_record_ = {this, &master};
  event.master = &master;
  event.func = hostkit::RunEvent;
  event.zg = global;
  event.pfd_index = -1;
  event.priority = TQ_THREAD_PRIORITY_MIDDLE;
  std::strncpy(event.name, "kit", sizeof event.name - 1);
  master.max_fd = -1;
  master.alloc = 1;
  master.flag = TQ_THREAD_USE_POLL;
  master.tid = static_cast<int>(syscall(SYS_gettid));
  master.cur_thread = &event;
}

tq_mom_client_s::~tq_mom_client_s() { hostkit::AllRuntimes().Remove(global); }

bool tq_mom_client_s::InCallback(const void* stack) {
  while (!frames.empty() && hostkit::WasLeft(frames.back()->stack_, frames.back()->thread_, stack)) frames.pop_back();
  return !frames.empty();
}

void tq_mom_client_s::Enter(std::unique_ptr<hostkit::CallbackFrame> frame, const void* stack) {
  frame->stack_ = stack;
  frame->thread_ = pthread_self();
  InCallback(stack);
  frames.push_back(std::move(frame));
}

void tq_mom_client_s::Leave(const hostkit::CallbackFrame* frame) {
  while (frames.back().get() != frame) frames.pop_back();
  frames.pop_back();
}

int tq_mom_client_s::Finish(hostkit::Status status) noexcept {
  const int code = hostkit::StatusCodeOf(status.code());
  last_error = std::move(status).text();
  return code;
}

int tq_mom_client_s::Refuse(int status, const char* text) noexcept {
  try {
    last_error = text;
  } catch (const std::bad_alloc&) {
    last_error.clear();
  }
  return status;
}

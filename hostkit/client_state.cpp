#include "hostkit/client_state.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string_view>

#include "hostkit/guard.h"
#include "hostkit/live_set.h"

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

// A key text fits, with its NUL, into the key of a message.
bool ValidName(std::string_view name) {
  return !name.empty() && name.size() < TQ_MOM_KEY_MAX_LEN && name.find('\0') == std::string_view::npos;
}

int RunExpiryEvent(tq_thread* event) {
  tq_mom_client_s* client = ClientOf(static_cast<tq_global_t*>(event->zg));
  return client != nullptr ? client->engine->RunExpiry() : TQ_MOM_INPUT_ERR;
}

}  // namespace

tq_global_t* StartRuntime(tq_global_t* record, std::unique_ptr<Engine> engine) {
  return GuardedPointer([&]() -> tq_global_t* {
    if (ClientOf(record) != nullptr) return nullptr;
    auto client = std::make_unique<tq_mom_client_s>(record, std::move(engine));
    AllRuntimes().Add(client->global, client.get());
    *client->global = {client.get(), &client->master};
    return client.release()->global;
  });
}

tq_mom_client_s* ClientOf(tq_global_t* g) { return AllRuntimes().Find(g); }

bool ValidDatabase(int db) { return db >= 0 && db < kDatabaseCount; }

int OpenClient(tq_global_t* g, tq_mom_client_s** client) {
  *client = ClientOf(g);
  if (*client == nullptr) return TQ_MOM_INPUT_ERR;
  return (*client)->connected ? TQ_MOM_OK : TQ_MOM_NO_READY;
}

int Command::Open(tq_global_t* g, int db, const void* key_object) {
  if (const int status = OpenClient(g, &client); status != TQ_MOM_OK) return status;
  object = LiveObject(key_object);
  if (!ValidDatabase(db) || object == nullptr || !ValidName(object->key)) return TQ_MOM_INPUT_ERR;
  engine = client->engine.get();
  key = {db, object->key};
  return TQ_MOM_OK;
}

int Command::OpenWithValue(tq_global_t* g, int db, const void* key_object) {
  const int status = Open(g, db, key_object);
  return status == TQ_MOM_OK && !object->value ? TQ_MOM_INPUT_ERR : status;
}

}  // namespace hostkit

tq_mom_client_s::tq_mom_client_s(tq_global_t* record, std::unique_ptr<hostkit::Engine> store)
    : global(record != nullptr ? record : &own_record_), engine(std::move(store)) {
  event.master = &master;
  event.func = hostkit::RunExpiryEvent;
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

tq_mom_client_s::~tq_mom_client_s() {
  hostkit::AllRuntimes().Remove(global);
  *global = {};
}

void tq_mom_client_s::Enter(std::unique_ptr<hostkit::CallbackFrame> frame, const void* stack) {
  frame->stack_ = stack;
  frame->thread_ = pthread_self();
  // The stack grows downwards, and a runtime is used from one thread at a time: whatever was entered no further up than
  // here, or on another thread, is not running any more.
  while (!frames.empty() && (!pthread_equal(frames.back()->thread_, frame->thread_) ||
                             std::less_equal<const void*>()(frames.back()->stack_, stack))) {
    frames.pop_back();
  }
  frames.push_back(std::move(frame));
}

void tq_mom_client_s::Leave(const hostkit::CallbackFrame* frame) {
  while (!frames.empty()) {
    const bool found = frames.back().get() == frame;
    frames.pop_back();
    if (found) return;
  }
}

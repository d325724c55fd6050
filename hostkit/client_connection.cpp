// Runtime and connection control.
#include <tq_kit/live.h>
#include <tq_mom/tq_mom.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/memory_engine.h"

namespace {

using hostkit::ClientOf;
using hostkit::DatabaseSummary;
using hostkit::Guarded;

const hostkit::Clock& WallClock() {
  static const hostkit::SystemClock clock;
  return clock;
}

int Connect(tq_global_t* g, bool cluster) {
  tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    const int status = client->engine->Connect(cluster);
    if (status == TQ_MOM_OK) client->connected = true;
    return status;
  });
}

}  // namespace

tq_global_t* tq_global_init(const char* name, tq_global_t* g) {
  return hostkit::GuardedPointer([&]() -> tq_global_t* {
    auto engine = std::make_unique<hostkit::MemoryEngine>(WallClock(), name != nullptr ? name : "");
    std::string error;
    if (!engine->Load(&error)) {
      std::fprintf(stderr, "tq_mom_impl: %s\n", error.c_str());
      return nullptr;
    }
    return hostkit::StartRuntime(g, std::move(engine));
  });
}

int tq_global_finish(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  delete client;
  return TQ_MOM_OK;
}

struct tq_thread_master* tq_global_get_master(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  return client != nullptr ? &client->master : nullptr;
}

int tq_global_run(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  return Guarded([&] { return client->engine->RunExpiry(); });
}

int tq_mom_client_connect_sync(tq_global_t* g, int /*n*/) { return Connect(g, false); }
int tq_mom_client_connect_cluster_sync(tq_global_t* g, int /*n*/) { return Connect(g, true); }

int tq_mom_debug_show_all(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    std::printf("connected: %s\n", client->connected ? "yes" : "no");
    for (int db = 0; db < hostkit::kDatabaseCount; ++db) {
      DatabaseSummary summary;
      if (const int status = client->engine->Summarize(db, &summary); status != TQ_MOM_OK) return status;
      if (summary.keys() == 0) continue;
      std::printf("db %d: %zu keys: %zu strings, %zu hashes, %zu lists, %zu sets, %zu sorted sets; %zu expire\n", db,
                  summary.keys(), summary.strings, summary.hashes, summary.lists, summary.sets, summary.sorted_sets,
                  summary.expiring);
    }
    std::printf("subscriptions: %zu\nunreleased: %zu results, %zu objects\n", client->subscriptions.size(),
                tq_kit_live_results(), tq_kit_live_objects());
    std::fflush(stdout);
    return TQ_MOM_OK;
  });
}

int tq_mom_bgsave_sync(tq_global_t* g, int /*n*/) {
  tq_mom_client_s* client;
  if (const int status = hostkit::OpenClient(g, &client); status != TQ_MOM_OK) return status;
  return Guarded([&] { return client->engine->Save(); });
}

// Runtime and connection control.
#include <tq_kit/live.h>
#include <tq_mom/tq_mom.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "hostkit/command.h"

namespace {

using hostkit::ClientOf;
using hostkit::Command;

int Connect(tq_global_t* g, bool cluster) {
  Command command;
  command.client = ClientOf(g);
  if (command.client == nullptr) return TQ_MOM_INPUT_ERR;
  return command.Run([&] {
    hostkit::Status status = command.client->engine->Connect(cluster, {});
    if (status.ok()) command.client->connected = true;
    return command.client->Finish(std::move(status));
  });
}

hostkit::Status Print(const tq_mom_client_s& client) {
  std::string lines;
  if (hostkit::Status status = client.engine->Describe({}, &lines); !status.ok()) return status;
  std::printf("connected: %s\n%s", client.connected ? "yes" : "no", lines.c_str());
  for (int db = 0; db < hostkit::kDatabaseCount; ++db) {
    hostkit::DatabaseSummary summary;
    if (hostkit::Status status = client.engine->Summarize({db, {}}, &summary); !status.ok()) return status;
    if (summary.keys() == 0) continue;
    std::printf("db %d: %zu keys: %zu strings, %zu hashes, %zu lists, %zu sets, %zu sorted sets; %zu expire\n", db,
                summary.keys(), summary.strings, summary.hashes, summary.lists, summary.sets, summary.sorted_sets,
                summary.expiring);
  }
  std::printf("subscriptions: %zu\nunreleased: %zu results, %zu objects\n", client.subscriptions.size(),
              tq_kit_live_results(), hostkit::ObjectsGivenOut());
  return {};
}

void Complain(const std::string& text) { std::fprintf(stderr, "tq_mom_impl: %s\n", text.c_str()); }

}  // namespace

tq_global_t* tq_global_init(const char* name, tq_global_t* g) {
  return hostkit::GuardedPointer([&]() -> tq_global_t* {
    std::unique_ptr<hostkit::Engine> engine;
    if (const hostkit::Status status = hostkit::OpenEngine(name, &engine); !status.ok()) {
      Complain(status.text());
      return nullptr;
    }
    return hostkit::StartRuntime(g, std::move(engine));
  });
}

int tq_global_finish(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  if (client->InCallback(__builtin_frame_address(0))) {
    return client->Refuse(TQ_MOM_ERR, "a scan, a publish or another call with callbacks is under way");
  }
  delete client;
  return TQ_MOM_OK;
}

struct tq_thread_master* tq_global_get_master(tq_global_t* g) {
  tq_mom_client_s* client = ClientOf(g);
  return client != nullptr ? &client->master : nullptr;
}

int tq_mom_client_connect_sync(tq_global_t* g, int /*n*/) { return Connect(g, false); }
int tq_mom_client_connect_cluster_sync(tq_global_t* g, int /*n*/) { return Connect(g, true); }

int tq_mom_debug_show_all(tq_global_t* g) {
  Command command;
  command.client = ClientOf(g);
  if (command.client == nullptr) return TQ_MOM_INPUT_ERR;
  const int status = command.Run([&] { return command.client->Finish(Print(*command.client)); });
  std::fflush(stdout);
  return status;
}

int tq_mom_bgsave_sync(tq_global_t* g, int /*n*/) {
  Command command;
  if (const int status = command.OpenRuntime(g); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    hostkit::Status status = command.client->engine->Save({});
    if (!status.ok()) Complain(status.text());
    return command.client->Finish(std::move(status));
  });
}

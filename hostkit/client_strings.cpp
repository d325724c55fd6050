// Keys of any kind, strings.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "hostkit/command.h"

using hostkit::Command;
using hostkit::Engine;
using hostkit::kValue;
using hostkit::Read;
using hostkit::RunRecord;
using hostkit::Write;

namespace {

hostkit::ObjectPtr MakeObject(const Command& command, std::optional<std::string> value) {
  auto object = std::make_unique<tq_obj>(command.request.name);
  object->value = std::move(value);
  return object;
}

}  // namespace

tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code) {
  Command command;
  *error_code = command.Open({g, db, key}, hostkit::Access::kRead);
  if (*error_code != TQ_MOM_OK) return nullptr;
  hostkit::ObjectPtr object;
  *error_code = command.Run([&] {
    std::optional<std::string> value;
    hostkit::Status status = command.Call(&Engine::Get, &value);
    if (status.ok() && value) {
      object = MakeObject(command, std::move(value));
      object->GiveOut();
    }
    return command.client->Finish(std::move(status));
  });
  return object.release();
}

tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t* g, int db, tq_mom_get_op_t* /*op*/, tq_obj* key) {
  const auto fill = [](auto* result, const Command& command, std::optional<std::string> value) {
    if (value) result->value = result->Own(MakeObject(command, std::move(value)));
  };
  return RunRecord<tq_mom_get_res_t>({g, db, key}, hostkit::Access::kRead, &Engine::Get, fill);
}

int tq_mom_set_sync(tq_global_t* g, int db, tq_obj* key) {
  return Write({g, db, key}, &Engine::Set, kValue, std::nullopt);
}

int tq_mom_setnx_sync(tq_global_t* g, int db, tq_obj* key) { return Write({g, db, key}, &Engine::SetIfAbsent, kValue); }

int tq_mom_setnx_noreply_sync(tq_global_t* g, int db, tq_obj* key) {
  return std::min(tq_mom_setnx_sync(g, db, key), TQ_MOM_OK);
}

int tq_mom_psetex_sync(tq_global_t* g, int db, tq_obj* key, int milliseconds) {
  return Write({g, db, key}, &Engine::Set, kValue, hostkit::TimeToLive{milliseconds});
}

int tq_mom_psetex_ext_sync(tq_global_t* g, int db, tq_mom_psetex_op_t* op, tq_obj* key) {
  return tq_mom_psetex_sync(g, db, key, op != nullptr ? op->milseconds : 0);
}

int tq_mom_del_sync(tq_global_t* g, int db, tq_obj* key) { return Write({g, db, key}, &Engine::Delete); }
int tq_mom_exists_sync(tq_global_t* g, int db, tq_obj* key) { return Read({g, db, key}, &Engine::Exists); }

tq_mom_incr_res_t* tq_mom_incr_sync(tq_global_t* g, int db, tq_obj* key) {
  const auto fill = [](auto* result, const Command& /*command*/, std::int64_t value) { result->value = value; };
  return RunRecord<tq_mom_incr_res_t>({g, db, key}, hostkit::Access::kWrite, &Engine::Increment, fill);
}

int tq_mom_get_res_free(tq_mom_get_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_incr_res_free(tq_mom_incr_res_t* result) { return hostkit::FreeResult(result); }

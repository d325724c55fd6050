// Keys of any kind, strings.
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"

namespace {

using hostkit::Command;
using hostkit::Guarded;
using hostkit::MakeResult;
using hostkit::ObjectPtr;

// Null when the key is missing.
int Get(tq_global_t* g, int db, const tq_obj* key, ObjectPtr* object) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  std::optional<std::string> value;
  const int status = command.engine->Get(command.key, &value);
  if (status != TQ_MOM_OK || !value) return status;
  auto made = std::make_unique<tq_obj>(command.key.name);
  made->value = std::move(value);
  *object = std::move(made);
  return TQ_MOM_OK;
}

int Set(tq_global_t* g, int db, const tq_obj* key, std::optional<std::uint32_t> expire_milliseconds) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->Set(command.key, command.value(), expire_milliseconds); });
}

}  // namespace

tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code) {
  ObjectPtr object;
  *error_code = Guarded([&] { return Get(g, db, key, &object); });
  return object.release();
}

tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t* g, int db, tq_mom_get_op_t* /*op*/, tq_obj* key) {
  return MakeResult<tq_mom_get_res_t>([&](auto* result) {
    ObjectPtr object;
    const int status = Get(g, db, key, &object);
    if (object != nullptr) result->value = result->Own(std::move(object));
    return status;
  });
}

int tq_mom_set_sync(tq_global_t* g, int db, tq_obj* key) { return Set(g, db, key, std::nullopt); }

int tq_mom_set_ext_sync(tq_global_t* g, int db, tq_mom_set_op_t* /*op*/, tq_obj* key) {
  return tq_mom_set_sync(g, db, key);
}

int tq_mom_setnx_sync(tq_global_t* g, int db, tq_obj* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SetIfAbsent(command.key, command.value()); });
}

int tq_mom_setnx_noreply_sync(tq_global_t* g, int db, tq_obj* key) {
  const int status = tq_mom_setnx_sync(g, db, key);
  return status > 0 ? TQ_MOM_OK : status;
}

int tq_mom_setnx_noreply_ext_sync(tq_global_t* g, int db, tq_mom_set_op_t* /*op*/, tq_obj* key) {
  return tq_mom_setnx_noreply_sync(g, db, key);
}

int tq_mom_psetex_sync(tq_global_t* g, int db, tq_obj* key, int milliseconds) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  if (milliseconds <= 0) return TQ_MOM_INPUT_ERR;
  return Set(g, db, key, static_cast<std::uint32_t>(milliseconds));
}

int tq_mom_psetex_ext_sync(tq_global_t* g, int db, tq_mom_psetex_op_t* op, tq_obj* key) {
  return tq_mom_psetex_sync(g, db, key, op != nullptr ? op->milseconds : 0);
}

int tq_mom_del_sync(tq_global_t* g, int db, tq_obj* key) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->Delete(command.key); });
}

int tq_mom_del_ext_sync(tq_global_t* g, int db, tq_mom_del_op_t* /*op*/, tq_obj* key) {
  return tq_mom_del_sync(g, db, key);
}

int tq_mom_exists_sync(tq_global_t* g, int db, tq_obj* key) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->Exists(command.key); });
}

int tq_mom_exists_ext_sync(tq_global_t* g, int db, tq_mom_exist_op_t* /*op*/, tq_obj* key) {
  return tq_mom_exists_sync(g, db, key);
}

tq_mom_incr_res_t* tq_mom_incr_sync(tq_global_t* g, int db, tq_obj* key) {
  return MakeResult<tq_mom_incr_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    return command.engine->Increment(command.key, &result->value);
  });
}

tq_mom_incr_res_t* tq_mom_incr_ext_sync(tq_global_t* g, int db, tq_mom_incr_op_t* /*op*/, tq_obj* key) {
  return tq_mom_incr_sync(g, db, key);
}

int tq_mom_get_res_free(tq_mom_get_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_incr_res_free(tq_mom_incr_res_t* result) { return hostkit::FreeResult(result); }

// Sets.
#include <tq_mom/tq_mom.h>

#include <string>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"

using hostkit::Command;
using hostkit::Guarded;

int tq_mom_sadd_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SetAdd(command.key, command.value()); });
}

int tq_mom_sadd_ext_sync(tq_global_t* g, int db, tq_mom_sadd_op_t* /*op*/, void* key) {
  return tq_mom_sadd_sync(g, db, key);
}

int tq_mom_srem_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SetRemove(command.key, command.value()); });
}

int tq_mom_srem_ext_sync(tq_global_t* g, int db, tq_mom_srem_op_t* /*op*/, void* key) {
  return tq_mom_srem_sync(g, db, key);
}

int tq_mom_sismember_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SetContains(command.key, command.value()); });
}

int tq_mom_sismember_ext_sync(tq_global_t* g, int db, tq_mom_sismember_op_t* /*op*/, void* key) {
  return tq_mom_sismember_sync(g, db, key);
}

int tq_mom_scard_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SetSize(command.key); });
}

int tq_mom_scard_ext_sync(tq_global_t* g, int db, tq_mom_scard_op_t* /*op*/, void* key) {
  return tq_mom_scard_sync(g, db, key);
}

tq_mom_smembers_res_t* tq_mom_smembers_sync(tq_global_t* g, int db, void* key) {
  return hostkit::MakeResult<tq_mom_smembers_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    std::vector<std::string> members;
    const int status = command.engine->SetMembers(command.key, &members);
    if (status != TQ_MOM_OK) return status;
    for (std::string& member : members) result->OwnElement(command.key.name, std::move(member));
    result->value_array = result->pointers.data();
    result->count = result->pointers.size();
    return TQ_MOM_OK;
  });
}

tq_mom_smembers_res_t* tq_mom_smembers_ext_sync(tq_global_t* g, int db, tq_mom_smembers_op_t* /*op*/, void* key) {
  return tq_mom_smembers_sync(g, db, key);
}

int tq_mom_smembers_res_free(tq_mom_smembers_res_t* result) { return hostkit::FreeResult(result); }

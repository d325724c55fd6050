// Expiry of keys and of hash fields. The engine never waits, so a call always keeps within its timeout.
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"

namespace {

using hostkit::Command;
using hostkit::FieldTag;
using hostkit::Guarded;

}  // namespace

int tq_mom_pexpire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, struct timeval /*timeout*/) {
  return tq_mom_pdel_sync(g, db, key, time);
}

int tq_mom_pdel_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->Expire(command.key, time); });
}

int tq_mom_del_expire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int /*n*/) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->Persist(command.key, time); });
}

int tq_mom_pexpire_field_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, size_t field,
                              struct timeval /*timeout*/) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  if (field > std::numeric_limits<FieldTag>::max()) return TQ_MOM_INPUT_ERR;
  return Guarded([&] { return command.engine->HashExpire(command.key, {static_cast<FieldTag>(field)}, time); });
}

int tq_mom_pexpire_fields_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int32_t* fields, int field_count,
                               struct timeval /*timeout*/) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  if (fields == nullptr || field_count <= 0) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    return command.engine->HashExpire(command.key, std::vector<FieldTag>(fields, fields + field_count), time);
  });
}

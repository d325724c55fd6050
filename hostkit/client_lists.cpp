// Lists.
#include <tq_mom/tq_mom.h>

#include <memory>
#include <string>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"

namespace {

using hostkit::Command;
using hostkit::End;
using hostkit::Guarded;
using hostkit::MakeResult;
using hostkit::Where;

int Push(tq_global_t* g, int db, const void* key, End end) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->ListPush(command.key, end, command.value()); });
}

// The object is complete before the element leaves the list.
tq_obj* Pop(tq_global_t* g, int db, const void* key, End end, int* out) {
  hostkit::ObjectPtr object;
  *out = Guarded([&] {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    auto made = std::make_unique<tq_obj>(command.key.name);
    bool popped;
    const int left = command.engine->ListPop(command.key, end, &made->value.emplace(), &popped);
    if (popped) object = std::move(made);
    return left;
  });
  return object.release();
}

}  // namespace

int tq_mom_lpush_sync(tq_global_t* g, int db, void* key) { return Push(g, db, key, End::kHead); }

int tq_mom_lpush_ext_sync(tq_global_t* g, int db, tq_mom_lpush_op_t* /*op*/, void* key) {
  return tq_mom_lpush_sync(g, db, key);
}

int tq_mom_rpush_sync(tq_global_t* g, int db, void* key) { return Push(g, db, key, End::kTail); }

int tq_mom_rpush_ext_sync(tq_global_t* g, int db, tq_mom_rpush_op_t* /*op*/, void* key) {
  return tq_mom_rpush_sync(g, db, key);
}

tq_obj* tq_mom_lpop_sync(tq_global_t* g, int db, void* key, int* out) { return Pop(g, db, key, End::kHead, out); }

tq_obj* tq_mom_lpop_ext_sync(tq_global_t* g, int db, tq_mom_lpop_op_t* /*op*/, void* key, int* out) {
  return tq_mom_lpop_sync(g, db, key, out);
}

tq_obj* tq_mom_rpop_sync(tq_global_t* g, int db, void* key, int* out) { return Pop(g, db, key, End::kTail, out); }

tq_obj* tq_mom_rpop_ext_sync(tq_global_t* g, int db, tq_mom_rpop_op_t* /*op*/, void* key, int* out) {
  return tq_mom_rpop_sync(g, db, key, out);
}

int tq_mom_llen_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->ListLength(command.key); });
}

int tq_mom_llen_ext_sync(tq_global_t* g, int db, tq_mom_llen_op_t* /*op*/, void* key) {
  return tq_mom_llen_sync(g, db, key);
}

tq_mom_lrange_res_t* tq_mom_lrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  return MakeResult<tq_mom_lrange_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    std::vector<std::string> values;
    const int status = command.engine->ListRange(command.key, start, stop, &values);
    if (status != TQ_MOM_OK) return status;
    for (std::string& value : values) result->OwnElement(command.key.name, std::move(value));
    result->value_array = result->pointers.data();
    result->count = result->pointers.size();
    return TQ_MOM_OK;
  });
}

tq_mom_lrange_res_t* tq_mom_lrange_ext_sync(tq_global_t* g, int db, tq_mom_lrange_op_t* /*op*/, void* key, int start,
                                            int stop) {
  return tq_mom_lrange_sync(g, db, key, start, stop);
}

int tq_mom_linsert_sync(tq_global_t* g, int db, void* key, void* value, unsigned int where) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  const tq_obj* pivot = hostkit::LiveObject(value);
  if (pivot == nullptr || !pivot->value || where > 1) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    return command.engine->ListInsert(command.key, *pivot->value, where == 0 ? Where::kBefore : Where::kAfter,
                                      command.value());
  });
}

int tq_mom_linsert_ext_sync(tq_global_t* g, int db, tq_mom_linsert_op_t* /*op*/, void* key, void* value,
                            unsigned int where) {
  return tq_mom_linsert_sync(g, db, key, value, where);
}

int tq_mom_lset_sync(tq_global_t* g, int db, void* key, int index) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->ListSet(command.key, index, command.value()); });
}

int tq_mom_lset_ext_sync(tq_global_t* g, int db, tq_mom_lset_op_t* /*op*/, void* key, int index) {
  return tq_mom_lset_sync(g, db, key, index);
}

int tq_mom_lrem_sync(tq_global_t* g, int db, void* key, size_t count) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->ListRemove(command.key, count, command.value()); });
}

int tq_mom_lrem_ext_sync(tq_global_t* g, int db, tq_mom_lrem_op_t* /*op*/, void* key, size_t count) {
  return tq_mom_lrem_sync(g, db, key, count);
}

int tq_mom_lrange_res_free(tq_mom_lrange_res_t* result) { return hostkit::FreeResult(result); }

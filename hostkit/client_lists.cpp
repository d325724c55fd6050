// Lists.
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <memory>
#include <utility>

#include "hostkit/command.h"

using hostkit::Command;
using hostkit::End;
using hostkit::Engine;
using hostkit::kValue;
using hostkit::Read;
using hostkit::Write;

namespace {

// The object is complete before the element leaves the list.
tq_obj* Pop(tq_global_t* g, int db, const void* key, End end, int* out) {
  Command command;
  *out = command.Open({g, db, key}, hostkit::Access::kWrite);
  if (*out != TQ_MOM_OK) return nullptr;
  hostkit::ObjectPtr object;
  *out = command.Run([&] {
    auto made = std::make_unique<tq_obj>(command.request.name);
    std::int64_t left = 0;
    hostkit::Status status = command.Call(&Engine::ListPop, end, &made->value, &left);
    if (status.ok() && made->value) {
      object = std::move(made);
      object->GiveOut();
    }
    return command.Result(std::move(status), left);
  });
  return object.release();
}

}  // namespace

int tq_mom_lpush_sync(tq_global_t* g, int db, void* key) {
  return Write({g, db, key}, &Engine::ListPush, End::kHead, kValue);
}
int tq_mom_rpush_sync(tq_global_t* g, int db, void* key) {
  return Write({g, db, key}, &Engine::ListPush, End::kTail, kValue);
}
tq_obj* tq_mom_lpop_sync(tq_global_t* g, int db, void* key, int* out) { return Pop(g, db, key, End::kHead, out); }
tq_obj* tq_mom_rpop_sync(tq_global_t* g, int db, void* key, int* out) { return Pop(g, db, key, End::kTail, out); }
int tq_mom_llen_sync(tq_global_t* g, int db, void* key) { return Read({g, db, key}, &Engine::ListLength); }

tq_mom_lrange_res_t* tq_mom_lrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  return hostkit::RunRecord<tq_mom_lrange_res_t>({g, db, key}, hostkit::Access::kRead, &Engine::ListRange,
                                                 hostkit::FillElements, start, stop);
}

int tq_mom_linsert_sync(tq_global_t* g, int db, void* key, void* pivot, unsigned int where) {
  return Write({g, db, key}, &Engine::ListInsert, hostkit::ValueOf{pivot}, hostkit::Side{where}, kValue);
}

int tq_mom_lset_sync(tq_global_t* g, int db, void* key, int index) {
  return Write({g, db, key}, &Engine::ListSet, index, kValue);
}

int tq_mom_lrem_sync(tq_global_t* g, int db, void* key, size_t count) {
  return Write({g, db, key}, &Engine::ListRemove, count, kValue);
}

int tq_mom_lrange_res_free(tq_mom_lrange_res_t* result) { return hostkit::FreeResult(result); }

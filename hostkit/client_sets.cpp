// Sets.
#include <tq_mom/tq_mom.h>

#include <string>
#include <utility>
#include <vector>

#include "hostkit/command.h"
#include "hostkit/order.h"

using hostkit::Engine;
using hostkit::kValue;
using hostkit::Read;
using hostkit::Write;

int tq_mom_sadd_sync(tq_global_t* g, int db, void* key) { return Write({g, db, key}, &Engine::SetAdd, kValue); }
int tq_mom_srem_sync(tq_global_t* g, int db, void* key) { return Write({g, db, key}, &Engine::SetRemove, kValue); }
int tq_mom_sismember_sync(tq_global_t* g, int db, void* key) {
  return Read({g, db, key}, &Engine::SetContains, kValue);
}
int tq_mom_scard_sync(tq_global_t* g, int db, void* key) { return Read({g, db, key}, &Engine::SetSize); }

tq_mom_smembers_res_t* tq_mom_smembers_sync(tq_global_t* g, int db, void* key) {
  const auto fill = [](auto* result, const hostkit::Command& command, std::vector<std::string> members) {
    hostkit::SortByBytes(&members);
    hostkit::FillElements(result, command, std::move(members));
  };
  return hostkit::RunRecord<tq_mom_smembers_res_t>({g, db, key}, hostkit::Access::kRead, &Engine::SetMembers, fill);
}

int tq_mom_smembers_res_free(tq_mom_smembers_res_t* result) { return hostkit::FreeResult(result); }

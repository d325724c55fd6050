// Calls that are made to fail or wait.
#include <fnmatch.h>
#include <tq_mom/constants.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "watch/internal.h"

namespace tq_watch {

struct Fault {
  FaultPlan plan;  // its texts are the fault's
  std::int64_t seen;
  std::int64_t hits;
  Text call;
  Position position;
  Fault* next;
  bool listed;
  bool held;  // by whoever added it
};

namespace {

Fault* faults;  // the oldest first

// Before a record that a fault made.
struct alignas(std::max_align_t) MadeRecord {
  MadeRecord* next;
  const OwnedType* type;

  void* record() { return this + 1; }
};

MadeRecord* made_records;

void Delete(Fault* fault) {
  if (fault->listed || fault->held) return;
  std::free(const_cast<char*>(fault->plan.call));
  std::free(const_cast<char*>(fault->plan.key));
  fault->~Fault();
  std::free(fault);
}

bool Matches(const FaultPlan& plan, const Call& call) {
  if (fnmatch(plan.call, call.function->name, 0) != 0) return false;
  if (plan.database >= 0 && plan.database != call.database) return false;
  return plan.key == nullptr || (call.key != nullptr && fnmatch(plan.key, call.key, 0) == 0);
}

}  // namespace

bool AnyFault() { return faults != nullptr; }

bool FaultFor(const Call& call, FaultPlan* plan) {
  for (Fault* fault = faults; fault != nullptr; fault = fault->next) {
    if (!Matches(fault->plan, call)) continue;
    if (fault->seen++ < fault->plan.after) continue;
    if (fault->plan.times >= 0 && fault->hits >= fault->plan.times) continue;
    ++fault->hits;
    fault->position = call.position;
    fault->call.Clear();
    AddInvocation(call, &fault->call);
    *plan = fault->plan;
    return true;
  }
  return false;
}

void* MakeRecord(const OwnedType& type, int error_code) {
  auto* made = static_cast<MadeRecord*>(std::calloc(1, sizeof(MadeRecord) + type.size));
  if (made == nullptr) return nullptr;
  made->next = made_records;
  made->type = &type;
  made_records = made;
  std::memcpy(static_cast<char*>(made->record()) + type.error_code, &error_code, sizeof error_code);
  return made->record();
}

bool ReleaseRecord(const OwnedType& type, const void* record, int* status) {
  for (MadeRecord** link = &made_records; *link != nullptr; link = &(*link)->next) {
    MadeRecord* made = *link;
    if (made->record() != record) continue;
    *status = made->type == &type ? TQ_MOM_OK : TQ_MOM_INPUT_ERR;
    if (*status == TQ_MOM_OK) {
      *link = made->next;
      std::free(made);
    }
    return true;
  }
  return false;
}

void RemoveFaults() {
  while (faults != nullptr) tq_watch_remove_fault(faults);
}

Fault* tq_watch_add_fault(const FaultPlan* plan) {
  void* memory = std::calloc(1, sizeof(Fault));
  if (memory == nullptr) return nullptr;
  auto* fault = new (memory) Fault{*plan, 0, 0, {}, {}, nullptr, false, false};
  fault->plan.call = strdup(plan->call);
  fault->plan.key = plan->key != nullptr ? strdup(plan->key) : nullptr;
  if (fault->plan.call == nullptr || (plan->key != nullptr && fault->plan.key == nullptr)) {
    Delete(fault);
    return nullptr;
  }
  fault->listed = fault->held = true;
  Fault** last = &faults;
  while (*last != nullptr) last = &(*last)->next;
  *last = fault;
  UpdateWatching();
  return fault;
}

std::int64_t tq_watch_fault_hits(const Fault* fault) { return fault->hits; }

const char* tq_watch_fault_call(const Fault* fault, Position* position) {
  *position = fault->position;
  return fault->call.length() > 0 ? fault->call.c_str() : nullptr;
}

void tq_watch_remove_fault(Fault* fault) {
  for (Fault** link = &faults; *link != nullptr; link = &(*link)->next) {
    if (*link != fault) continue;
    *link = fault->next;
    fault->listed = false;
    UpdateWatching();
    return Delete(fault);
  }
}

void tq_watch_drop_fault(Fault* fault) {
  fault->held = false;
  Delete(fault);
}

}  // namespace tq_watch

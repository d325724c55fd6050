// Finds uses of what was released.
//
// A script gets a copy of each result, in pages of its own; when it releases it, nobody may touch the pages any more,
// and the client library keeps its own record, with all arrays and objects in it, until the guard has met many more
// releases. An array needs no copy: a script gets to its elements by a field of the record only.
// Objects and runtimes cannot be copied: a released one is found where it is passed to a client function or to tq_obj.
#include <signal.h>
#include <sys/mman.h>
#include <tq_mom/client.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "watch/internal.h"

namespace tq_watch {
namespace {

// How many released things are remembered. A page each, so many fit into a small address space.
int most_remembered = 4096;

struct Guarded {
  const char* type;
  const Function* function;  // that handed it out
  Position got;
  Position released;
  const OwnedType* owned;  // null: a message
  void* original;          // what is to be released in the end
  char* pages;             // with the copy; null: it cannot be copied
  std::size_t size;        // of the pages
  Guarded* next;           // in its bucket, or the next younger one among the released
};

constexpr std::size_t kBuckets = 512;

// The copies that are not released, by address.
Guarded* copies[kBuckets];
int copy_count;

// What was released, the oldest first.
Guarded* oldest;
Guarded* youngest;
int released_count;

// Objects and runtimes that were released.
struct Dangling {
  const void* pointer;
  const Guarded* guarded;
  Dangling* next;
};

Dangling* dangling[kBuckets];

// Messages whose callback runs, the innermost first. The original of each is the scan's call.
Guarded* open_messages;

struct sigaction previous_action;
bool catches_faults;

std::size_t BucketOf(const void* pointer) { return (reinterpret_cast<std::uintptr_t>(pointer) >> 4) % kBuckets; }

Guarded** FindCopy(const void* pointer) {
  Guarded** link = &copies[BucketOf(pointer)];
  while (*link != nullptr && (*link)->pages != pointer) link = &(*link)->next;
  return link;
}

const OwnedType* RuntimeType() { return functions[kRow_tq_global_init].owned; }

// A runtime's place may be that of something else meanwhile, so it is asked for by itself.
const Guarded* FindDangling(const void* pointer, bool is_runtime) {
  for (const Dangling* entry = dangling[BucketOf(pointer)]; entry != nullptr; entry = entry->next) {
    if (entry->pointer == pointer && (entry->guarded->owned == RuntimeType()) == is_runtime) return entry->guarded;
  }
  return nullptr;
}

void AddDangling(const void* pointer, const Guarded* guarded) {
  auto* entry = static_cast<Dangling*>(std::malloc(sizeof(Dangling)));
  if (pointer == nullptr || entry == nullptr) return std::free(entry);
  Dangling** bucket = &dangling[BucketOf(pointer)];
  *entry = {pointer, guarded, *bucket};
  *bucket = entry;
}

void RemoveDangling(const void* pointer, const Guarded* guarded) {
  for (Dangling** link = &dangling[BucketOf(pointer)]; *link != nullptr;) {
    Dangling* entry = *link;
    if (entry->pointer != pointer || entry->guarded != guarded) {
      link = &entry->next;
      continue;
    }
    *link = entry->next;
    std::free(entry);
  }
}

template <class Do> void ForEachObject(const OwnedType& type, const void* record, Do act) {
  for (const Member* member = type.members; member->type != Member::kEnd; ++member) {
    const char* place = static_cast<const char*>(record) + member->offset;
    if (member->type == Member::kObject) act(*reinterpret_cast<void* const*>(place));
    if (member->type != Member::kObjects) continue;
    auto* objects = *reinterpret_cast<void* const* const*>(place);
    std::size_t count = objects != nullptr ? ArrayLength(record, *member) : 0;
    for (std::size_t i = 0; i < count; ++i) act(objects[i]);
  }
}

// All pointers to what is guarded that a script may hold, but not into the pages.
template <class Do> void ForEachPointer(const Guarded& guarded, Do act) {
  if (guarded.owned == nullptr) return;
  act(guarded.pages != nullptr ? guarded.pages : guarded.original);
  if (guarded.owned->size > 0) ForEachObject(*guarded.owned, guarded.original, act);
}

// Lets go of what was released.
void Forget(Guarded* guarded) {
  if (guarded->owned != nullptr && guarded->owned != RuntimeType()) ReleaseOriginal(*guarded->owned, guarded->original);
  if (guarded->pages != nullptr) munmap(guarded->pages, guarded->size);
  std::free(guarded);
}

void ForgetOldest() {
  Guarded* guarded = oldest;
  oldest = guarded->next;
  if (oldest == nullptr) youngest = nullptr;
  --released_count;
  ForEachPointer(*guarded, [&](const void* pointer) { RemoveDangling(pointer, guarded); });
  Forget(guarded);
}

void Remember(Guarded* guarded, const Position& released) {
  guarded->released = released;
  guarded->next = nullptr;
  (youngest != nullptr ? youngest->next : oldest) = guarded;
  youngest = guarded;
  ForEachPointer(*guarded, [&](const void* pointer) { AddDangling(pointer, guarded); });
  if (guarded->pages != nullptr) mprotect(guarded->pages, guarded->size, PROT_NONE);
  if (++released_count > most_remembered) ForgetOldest();
}

void PrintLine(const char* what, const Position& position, const char* function) {
  std::fprintf(stderr, "  %-9s %s:%d: %s\n", what, position.source != nullptr ? position.source : "?", position.line,
               function);
}

// The function is what uses it.
[[noreturn]] void Stop(const Guarded& guarded, const char* function) {
  Print("guard: a %s is used after its release", guarded.type);
  PrintLine("used", Here(), function);
  PrintLine("released", guarded.released, guarded.owned == nullptr ? "the callback returned" : "");
  PrintLine("got", guarded.got, guarded.function->name);
  std::fflush(nullptr);
  std::abort();
}

void Catch(int signal, siginfo_t* info, void* /*context*/) {
  const auto* address = static_cast<const char*>(info->si_addr);
  for (const Guarded* guarded = oldest; guarded != nullptr; guarded = guarded->next) {
    if (guarded->pages != nullptr && address >= guarded->pages && address < guarded->pages + guarded->size) {
      Stop(*guarded, "a field");
    }
  }
  sigaction(signal, &previous_action, nullptr);
  if (info->si_code <= 0) raise(signal);  // somebody sent it; a fault happens once more by itself
}

void CatchFaults() {
  if (catches_faults) return;
  struct sigaction action = {};
  action.sa_sigaction = Catch;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  catches_faults = sigaction(SIGSEGV, &action, &previous_action) == 0;
}

// Pages that can hold so much; null when there are none.
Guarded* MakePages(std::size_t size) {
  auto* guarded = static_cast<Guarded*>(std::calloc(1, sizeof(Guarded)));
  if (guarded == nullptr) return nullptr;
  auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  guarded->size = (size + page - 1) / page * page;
  void* pages = mmap(nullptr, guarded->size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    std::free(guarded);
    return nullptr;
  }
  guarded->pages = static_cast<char*>(pages);
  return guarded;
}

}  // namespace

bool AnyCopy() { return copy_count > 0; }

void* GuardResult(const Call& call, void* record) {
  const OwnedType& type = *call.function->owned;
  if (&type == RuntimeType()) {
    while (const Guarded* finished = FindDangling(record, true)) RemoveDangling(record, finished);
  }
  if (type.size == 0) return record;
  Guarded* guarded = MakePages(type.size);
  if (guarded == nullptr) {
    Print("no memory to guard %s", type.name);
    return record;
  }
  CatchFaults();
  std::memcpy(guarded->pages, record, type.size);
  guarded->type = type.name;
  guarded->function = call.function;
  guarded->got = call.position;
  guarded->owned = &type;
  guarded->original = record;
  Guarded** bucket = &copies[BucketOf(guarded->pages)];
  guarded->next = *bucket;
  *bucket = guarded;
  ++copy_count;
  return guarded->pages;
}

bool GuardRelease(const Function& function, void* pointer, const Position& position, bool remember, int* status) {
  if (function.owned->size == 0) {
    const Owned* owned = FindOwned(pointer);
    // An object that no client function handed out may be a result's or the script's: the client library knows.
    if (!remember || owned == nullptr || function.owned == RuntimeType()) return false;
    auto* guarded = static_cast<Guarded*>(std::calloc(1, sizeof(Guarded)));
    if (guarded == nullptr) return false;
    *guarded = {
        function.owned->name, owned->function, owned->position, {}, function.owned, pointer, nullptr, 0, nullptr};
    Remember(guarded, position);
    *status = TQ_MOM_OK;
    return true;
  }
  Guarded** link = FindCopy(pointer);
  Guarded* guarded = *link;
  if (guarded == nullptr) return false;
  *status = guarded->owned == function.owned ? TQ_MOM_OK : TQ_MOM_INPUT_ERR;
  if (*status != TQ_MOM_OK) return true;
  *link = guarded->next;
  --copy_count;
  remember ? Remember(guarded, position) : Forget(guarded);
  return true;
}

void GuardRuntime(void* runtime, const Position& position) {
  const Owned* owned = FindOwned(runtime);
  auto* guarded = owned != nullptr ? static_cast<Guarded*>(std::calloc(1, sizeof(Guarded))) : nullptr;
  if (guarded == nullptr) return;
  *guarded = {RuntimeType()->name, owned->function, owned->position, {}, RuntimeType(), runtime, nullptr, 0, nullptr};
  Remember(guarded, position);
}

void CheckObject(const void* object, const char* function) {
  if (const Guarded* guarded = FindDangling(object, false)) Stop(*guarded, function);
}

bool IsReleased(const void* object) { return FindDangling(object, false) != nullptr; }

void CheckArguments(const Function& function, const Value* arguments) {
  for (int i = 0; i < function.parameter_count; ++i) {
    const Value& value = arguments[i];
    Kind kind = function.parameters[i];
    if (kind == Kind::kObject || kind == Kind::kReleased) CheckObject(value.pointer, function.name);
    if (kind == Kind::kRuntime) {
      if (const Guarded* guarded = FindDangling(value.pointer, true)) Stop(*guarded, function.name);
    }
    if (kind != Kind::kMembers || value.pointer == nullptr) continue;
    for (std::int64_t member = 0; member < LengthOf(function, arguments, i); ++member) {
      CheckObject(static_cast<void* const*>(value.pointer)[member], function.name);
    }
  }
}

int GuardMessage(tq_global_t* g, void* message, void* context) {
  const auto& scan = *static_cast<const ScanGuard*>(context);
  const auto* original = static_cast<const tq_mom_scan_all_msg_t*>(message);
  if (original == nullptr) return scan.callback(g, message, scan.context);
  std::size_t key_size = original->key != nullptr ? std::strlen(original->key) + 1 : 0;
  auto value_size = static_cast<std::size_t>(original->value != nullptr && original->vlen > 0 ? original->vlen : 0);
  Guarded* guarded = MakePages(sizeof *original + key_size + value_size);
  if (guarded == nullptr) {
    Print("no memory to guard a message");
    return scan.callback(g, message, scan.context);
  }
  CatchFaults();
  auto* copy = reinterpret_cast<tq_mom_scan_all_msg_t*>(guarded->pages);
  *copy = *original;
  if (key_size > 0) copy->key = static_cast<char*>(std::memcpy(copy + 1, original->key, key_size));
  if (value_size > 0) {
    copy->value = static_cast<unsigned char*>(
        std::memcpy(reinterpret_cast<char*>(copy + 1) + key_size, original->value, value_size));
  }
  guarded->type = "message";
  guarded->function = scan.call->function;
  guarded->got = scan.call->position;
  guarded->original = const_cast<Call*>(scan.call);
  guarded->next = open_messages;
  open_messages = guarded;
  int result = scan.callback(g, copy, scan.context);
  CloseMessages(*scan.call);
  return result;
}

void CloseMessages(const Call& call) {
  while (open_messages != nullptr && open_messages->original == &call) {
    Guarded* guarded = open_messages;
    open_messages = guarded->next;
    Remember(guarded, guarded->got);
  }
}

void SetMostRemembered(int count) { most_remembered = count; }

void ForgetReleased() {
  while (oldest != nullptr) ForgetOldest();
}

}  // namespace tq_watch

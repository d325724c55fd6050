// What client functions handed out and nobody released yet.
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "watch/internal.h"

namespace tq_watch {
namespace {

constexpr std::size_t kBuckets = 1024;
Owned* buckets[kBuckets];
Owned* oldest;
Owned* newest;

Owned** BucketOf(const void* pointer) { return &buckets[(reinterpret_cast<std::uintptr_t>(pointer) >> 4) % kBuckets]; }

}  // namespace

const Owned* FindOwned(const void* pointer) {
  const Owned* owned = *BucketOf(pointer);
  while (owned != nullptr && owned->pointer != pointer) owned = owned->next_in_bucket;
  return owned;
}

void AddOwned(const Call& call, void* pointer) {
  RemoveOwned(pointer);  // a runtime that was begun again
  auto* owned = static_cast<Owned*>(std::calloc(1, sizeof(Owned)));
  if (owned == nullptr) return Print("no memory to remember %s", call.function->owned->name);
  owned->function = call.function;
  owned->pointer = pointer;
  owned->position = call.position;
  owned->since = tq_watch_now();
  if (call.key != nullptr && (owned->key = static_cast<char*>(std::malloc(call.key_length + 1))) != nullptr) {
    owned->key_length = call.key_length;
    std::memcpy(owned->key, call.key, call.key_length);
    owned->key[call.key_length] = '\0';
  }
  owned->older = newest;
  (newest != nullptr ? newest->newer : oldest) = owned;
  newest = owned;
  Owned** bucket = BucketOf(pointer);
  owned->next_in_bucket = *bucket;
  *bucket = owned;
}

void RemoveOwned(const void* pointer) {
  Owned** link = BucketOf(pointer);
  while (*link != nullptr && (*link)->pointer != pointer) link = &(*link)->next_in_bucket;
  Owned* owned = *link;
  if (owned == nullptr) return;
  *link = owned->next_in_bucket;
  (owned->older != nullptr ? owned->older->newer : oldest) = owned->newer;
  (owned->newer != nullptr ? owned->newer->older : newest) = owned->older;
  std::free(owned->key);
  std::free(owned);
}

void ForgetOwned() {
  while (oldest != nullptr) RemoveOwned(oldest->pointer);
}

int PrintOwned() {
  int count = 0;
  for (const Owned* owned = oldest; owned != nullptr; owned = owned->newer, ++count) {
    std::fprintf(stderr, "%s\n", tq_watch_owned_line(owned));
  }
  return count;
}

const char* tq_watch_owned_line(const Owned* owned) {
  static Text line;
  line.Clear();
  if (owned->position.source != nullptr) line.Format("%s:%d: ", owned->position.source, owned->position.line);
  line.Format("%s of %s", owned->function->owned->name, owned->function->name);
  if (owned->key != nullptr) {
    line.Add(" ");
    line.AddQuoted(owned->key, owned->key_length);
  }
  line.Format(" is not released after %.1f s", static_cast<double>(tq_watch_now() - owned->since) / 1e6);
  return line.c_str();
}

const Owned* tq_watch_oldest() { return oldest; }

std::int64_t tq_watch_now() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

}  // namespace tq_watch

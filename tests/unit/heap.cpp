#include "tests/unit/heap.h"

#include <cstdint>
#include <set>

namespace {

bool watching = false;
int until_failure = 0;
std::vector<std::size_t> requested;
std::set<void*> live_blocks;

// Whether the request is to be refused.
bool Refuse(std::size_t size) {
  requested.push_back(size);
  bool chosen = until_failure > 0 && --until_failure == 0;
  return chosen || size > unit::HeapWatch::kLargest;
}

}  // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) {
  if (!watching) return __real_malloc(size);
  if (Refuse(size)) return nullptr;
  void* block = __real_malloc(size);
  live_blocks.insert(block);
  return block;
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  if (!watching) return __real_calloc(count, size);
  if (Refuse(count * size)) return nullptr;
  void* block = __real_calloc(count, size);
  live_blocks.insert(block);
  return block;
}

void __wrap_free(void* block) {
  live_blocks.erase(block);
  __real_free(block);
}

}  // extern "C"

namespace unit {

HeapWatch::HeapWatch() {
  until_failure = 0;
  requested.clear();
  live_blocks.clear();
  watching = true;
}

HeapWatch::~HeapWatch() { watching = false; }

void HeapWatch::FailRequest(int number) { until_failure = number; }

const std::vector<std::size_t>& HeapWatch::requests() const { return requested; }

std::size_t HeapWatch::live() const { return live_blocks.size(); }

void HeapWatch::FreeLive() {
  for (void* block : live_blocks) __real_free(block);
  live_blocks.clear();
}

}  // namespace unit

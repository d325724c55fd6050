#include "allocation_failures.h"

#include <cstdlib>
#include <new>

namespace hostkit {
namespace {

bool armed = false;
bool hit = false;
std::size_t left = 0;
FailureMode failure_mode = FailureMode::kOnce;

bool Fails() {
  if (!armed) return false;
  if (hit) return failure_mode == FailureMode::kFromThenOn;
  if (left-- > 0) return false;
  hit = true;
  return true;
}

}  // namespace

FailingAllocations::FailingAllocations(std::size_t index, FailureMode mode) {
  left = index;
  failure_mode = mode;
  hit = false;
  armed = true;
}

FailingAllocations::~FailingAllocations() { armed = false; }

bool FailingAllocations::Hit() { return hit; }

}  // namespace hostkit

void* operator new(std::size_t size) {
  void* block = hostkit::Fails() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

// Makes C++ allocations fail on demand. The test program's operator new counts down while armed.
#pragma once

#include <cstddef>

namespace hostkit {

enum class FailureMode { kOnce, kFromThenOn };

// From construction to destruction, allocation number `index` (from 0) fails, and with kFromThenOn all after it.
class FailingAllocations {
 public:
  FailingAllocations(std::size_t index, FailureMode mode);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  // Whether the allocation was reached.
  static bool Hit();
};

}  // namespace hostkit

// The module's heap blocks: counted, and refused on demand. The program is linked so that calls of malloc, calloc and
// free in its own objects come here; the Lua library's do not.
#pragma once

#include <cstddef>
#include <vector>

namespace unit {

// Watches from construction to destruction. One at a time.
class HeapWatch {
 public:
  // Larger requests are always refused: no test is to fill the machine.
  static constexpr std::size_t kLargest = std::size_t{1} << 26;

  HeapWatch();
  ~HeapWatch();
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;

  // Refuses the request of this number, counted from 1 and from now.
  void FailRequest(int number);
  // Sizes of all requests so far, those that were refused included.
  const std::vector<std::size_t>& requests() const;
  // Blocks that were handed out and not freed.
  std::size_t live() const;
  // Frees those blocks.
  void FreeLive();
};

}  // namespace unit

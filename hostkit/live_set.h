// The addresses of the records that are the library's and not released yet. A script can pass any handle anywhere;
// asking here tells what a pointer is without reading through it.
#pragma once

#include <cstddef>
#include <mutex>
#include <unordered_map>

namespace hostkit {

template <typename Tag> class LiveSet {
 public:
  // Throws std::bad_alloc.
  void Add(const void* record, Tag tag) {
    const std::lock_guard lock(mutex_);
    records_.emplace(record, tag);
  }

  bool Contains(const void* record, Tag tag) const {
    const std::lock_guard lock(mutex_);
    const auto found = records_.find(record);
    return found != records_.end() && found->second == tag;
  }

  // Whether the record was there.
  bool Remove(const void* record, Tag tag) {
    const std::lock_guard lock(mutex_);
    const auto found = records_.find(record);
    if (found == records_.end() || found->second != tag) return false;
    records_.erase(found);
    return true;
  }

  std::size_t size() const {
    const std::lock_guard lock(mutex_);
    return records_.size();
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<const void*, Tag> records_;
};

}  // namespace hostkit

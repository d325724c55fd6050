// The module's functions and constants, each family's list put behind the other's at compile time.
#ifndef TQ_MODULE_TABLES_H
#define TQ_MODULE_TABLES_H

#include <cstddef>

#include "runtime/abi.h"

namespace tq_mom {

inline constexpr std::size_t kFunctionCount = 119;
inline constexpr std::size_t kConstantCount = 106;

// Ended by an empty entry.
const binding::Method* Functions();
const binding::Constant* Constants();

template <class Entry, std::size_t count>
struct Table {
  static constexpr std::size_t kCount = count;
  Entry entries[count + 1];
};

template <class Entry, std::size_t... counts>
constexpr auto Concatenate(const Entry (&... lists)[counts]) {
  Table<Entry, (counts + ...)> table{};
  Entry* next = table.entries;
  auto append = [&](const Entry* list, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) *next++ = list[i];
  };
  (append(lists, counts), ...);
  return table;
}

}  // namespace tq_mom

#endif

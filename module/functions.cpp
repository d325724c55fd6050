#include "module/functions.h"

#include <cstddef>

#include "commands/connection.h"
#include "commands/hashes.h"
#include "commands/lists.h"
#include "commands/publish_scan.h"
#include "commands/sets.h"
#include "commands/sorted_sets.h"
#include "commands/strings.h"
#include "records/casts.h"

namespace tq_mom {
namespace {

template <std::size_t count>
struct MethodTable {
  static constexpr std::size_t kCount = count;
  binding::Method methods[count + 1];
};

template <std::size_t... counts>
constexpr auto Concatenate(const binding::Method (&... families)[counts]) {
  MethodTable<(counts + ...)> table{};
  binding::Method* next = table.methods;
  auto append = [&](const binding::Method* methods, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) *next++ = methods[i];
  };
  (append(families, counts), ...);
  return table;
}

constexpr auto kAll = Concatenate(kConnectionCommands, kStringCommands, kHashCommands, kListCommands, kSetCommands,
                                  kSortedSetCommands, kPublishScanCommands, kCasts);
static_assert(kAll.kCount == kFunctionCount);

}  // namespace

const binding::Method* Functions() { return kAll.methods; }

}  // namespace tq_mom

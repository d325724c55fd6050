#include "commands/connection.h"
#include "commands/hashes.h"
#include "commands/lists.h"
#include "commands/publish_scan.h"
#include "commands/sets.h"
#include "commands/sorted_sets.h"
#include "commands/strings.h"
#include "module/tables.h"
#include "records/casts.h"

namespace tq_mom {
namespace {

constexpr auto kAll = Concatenate(kConnectionCommands, kStringCommands, kHashCommands, kListCommands, kSetCommands,
                                  kSortedSetCommands, kPublishScanCommands, kCasts);
static_assert(kAll.kCount == kFunctionCount);

}  // namespace

const binding::Method* Functions() { return kAll.entries; }

}  // namespace tq_mom

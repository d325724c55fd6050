#include "module/functions.h"

#include <cstddef>

#include "binding/handles.h"
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

template <std::size_t... counts>
constexpr int CountAll([[maybe_unused]] const Function (&... families)[counts]) {
  return static_cast<int>((counts + ...));
}
static_assert(CountAll(kConnectionCommands, kStringCommands, kHashCommands, kListCommands, kSetCommands,
                       kSortedSetCommands, kPublishScanCommands, kCasts) == kFunctionCount);
static_assert(CountAll(kCasts) == 24);

// Pushes the function; one that makes handles of classes is a closure over what finds the classes.
void PushFunction(lua_State* L, const Function& function) {
  int upvalues = 0;
  for (TypeId result : function.results) {
    if (result == TypeId::_p_void || *ClassName(result) == '\0') break;
    if (upvalues == 0) {
      binding::PushHandleUpvalues(L, ClassName(result));
      upvalues = binding::kClassName;
    } else {
      lua_pushstring(L, ClassName(result));
      ++upvalues;
    }
  }
  lua_pushcclosure(L, function.function, upvalues);
}

void AddFamily(lua_State* L, const Function* functions, std::size_t count) {
  for (const Function* function = functions; function != functions + count; ++function) {
    lua_pushstring(L, function->name);
    PushFunction(L, *function);
    lua_rawset(L, -3);
  }
}

template <std::size_t... counts>
void AddFamilies(lua_State* L, const Function (&... families)[counts]) {
  (AddFamily(L, families, counts), ...);
}

}  // namespace

void AddFunctions(lua_State* L) {
  AddFamilies(L, kConnectionCommands, kStringCommands, kHashCommands, kListCommands, kSetCommands, kSortedSetCommands,
              kPublishScanCommands, kCasts);
}

}  // namespace tq_mom

#include <array>

#include "binding/numbered.h"
#include "commands/command.h"
#include "commands/connection.h"
#include "commands/hashes.h"
#include "commands/lists.h"
#include "commands/publish_scan.h"
#include "commands/sets.h"
#include "commands/sorted_sets.h"
#include "commands/strings.h"

namespace tq_mom {
namespace {

using Commands = Join<ConnectionCommands, StringCommands, HashCommands, ListCommands, SetCommands, SortedSetCommands,
                      PublishScanCommands>;

template <class... Command> constexpr auto PackNamesOf(List<Command...>) {
  Packed<4096> names;
  (names.Add(Command::kName), ...);
  return names;
}
constexpr auto PackNames() { return PackNamesOf(Commands()); }
constexpr const char* kNames = kTrimmed<PackNames>.text;

// The different invokers, each of which serves many commands. They are told apart by type: not every compiler takes a
// comparison of functions for a constant.
template <class Known, class... New> struct Distinct { using Type = Known; };
template <class... Known, class One, class... New>
struct Distinct<List<Known...>, One, New...>
    : Distinct<std::conditional_t<(std::is_same_v<Known, One> || ...), List<Known...>, List<Known..., One>>, New...> {};
template <class... Command>
auto FindInvokers(List<Command...>) -> typename Distinct<List<>, typename Command::InvokerType...>::Type;
using Invokers = decltype(FindInvokers(Commands()));

template <class... One> constexpr std::array<Invoker, sizeof...(One)> MakeInvokers(List<One...>) {
  return {One::value...};
}
constexpr auto kInvokers = MakeInvokers(Invokers());

template <class... Command> constexpr std::array<CommandRow, sizeof...(Command)> MakeRows(List<Command...>) {
  auto names = PackNames();
  return {Command::Row(names.Add(Command::kName), FindPlace<typename Command::InvokerType>(Invokers()))...};
}
constexpr auto kRows = MakeRows(Commands());

// Not constexpr, as no cast between function types is; but a constant all the same, so that nothing is left to run when
// the module is loaded.
template <class List> struct Bound;
template <class... Command> struct Bound<List<Command...>> { static const BoundCommand kOf[]; };
template <class... Command>
const BoundCommand Bound<List<Command...>>::kOf[] = {
    {kRows[FindPlace<Command>(Commands())], reinterpret_cast<ClientFunction>(Command::kClient)}...};
constexpr const BoundCommand* kBound = Bound<Commands>::kOf;

extern "C" [[gnu::visibility("hidden")]] int tq_call_command(lua_State* L, std::size_t number) {
  const BoundCommand& bound = kBound[number];
  return kInvokers[bound.row.invoker](L, bound);
}

TQ_NUMBERED_FUNCTIONS(kFunctions, tq_call_command, Commands::kCount);

}  // namespace

const char* CommandName(const CommandRow& command) { return kNames + command.name; }

int CountCommands() { return Commands::kCount; }

void AddCommands(lua_State* L) {
  for (std::size_t i = 0; i < Commands::kCount; ++i) {
    const CommandRow& command = kBound[i].row;
    bool is_scan = command.result == kTypeOf<tq_global_t> && !command.makes_handle;
    lua_pushstring(L, CommandName(command));
    PushFunction(L, kFunctions.At(i), {command.result, is_scan ? kTypeOf<tq_mom_pubsub_msg_t> : kVoid});
    lua_rawset(L, -3);
  }
}

}  // namespace tq_mom

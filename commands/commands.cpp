#include "commands/commands.h"

#include "binding/numbered.h"
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

template <class... Command>
constexpr auto PackNames(List<Command...>) {
  Packed<4096> names;
  (names.Add(Command::kName), ...);
  return names;
}
constexpr std::size_t kNamesSize = PackNames(Commands()).size;
constexpr Packed kNames = PackNames(Commands()).Trimmed<kNamesSize>();

// The different invokers, each of which serves many commands.
struct Invokers {
  constexpr int Add(Invoker invoker) {
    int i = 0;
    while (i < count && of[i] != invoker) ++i;
    if (i == count) of[count++] = invoker;
    return i;
  }
  Invoker of[Commands::kCount] = {};
  int count = 0;
};
template <class... Command>
constexpr Invokers FindInvokers(List<Command...>) {
  Invokers invokers;
  (invokers.Add(Command::OwnInvoker()), ...);
  return invokers;
}
constexpr int kInvokerCount = FindInvokers(Commands()).count;

struct InvokerTable {
  Invoker of[kInvokerCount];
};
template <std::size_t... i>
constexpr InvokerTable MakeInvokers(std::index_sequence<i...>) {
  constexpr Invokers kInvokers = FindInvokers(Commands());
  return {kInvokers.of[i]...};
}
constexpr InvokerTable kInvokers = MakeInvokers(std::make_index_sequence<kInvokerCount>());

struct Rows {
  CommandRow of[Commands::kCount];
};
template <class... Command>
constexpr Rows MakeRows(List<Command...>) {
  auto names = PackNames(Commands());
  Invokers invokers = FindInvokers(Commands());
  return {Command::Row(names.Add(Command::kName), invokers.Add(Command::OwnInvoker()))...};
}
constexpr Rows kRows = MakeRows(Commands());

// Not constexpr, as no cast between function types is; but a constant all the same, so that nothing is left to run when
// the module is loaded.
template <class List>
struct Clients;
template <class... Command>
struct Clients<List<Command...>> {
  static const ClientFunction kOf[];
};
template <class... Command>
const ClientFunction Clients<List<Command...>>::kOf[] = {reinterpret_cast<ClientFunction>(Command::kClient)...};

extern "C" [[gnu::visibility("hidden")]] int tq_call_command(lua_State* L, unsigned number) {
  const CommandRow& command = kRows.of[number];
  return kInvokers.of[command.invoker](L, command, Clients<Commands>::kOf[number]);
}

TQ_NUMBERED_FUNCTIONS(kFunctions, tq_call_command, Commands::kCount);

}  // namespace

const char* CommandName(const CommandRow& command) { return kNames.text + command.name; }

int CountCommands() { return Commands::kCount; }

void AddCommands(lua_State* L) {
  for (unsigned i = 0; i < Commands::kCount; ++i) {
    const CommandRow& command = kRows.of[i];
    bool is_scan = kInvokers.of[command.invoker] == InvokeScan;
    lua_pushstring(L, CommandName(command));
    PushFunction(L, kFunctions.At(i), {command.result, is_scan ? kTypeOf<tq_mom_pubsub_msg_t> : kVoid});
    lua_rawset(L, -3);
  }
}

}  // namespace tq_mom

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

// The different runners, each of which serves many commands. They are told apart by type: not every compiler takes a
// comparison of functions for a constant.
template <class Command>
using RunnerOf = std::integral_constant<Runner, Command::kRunner>;

template <class One, class... Command>
constexpr int FirstWithRunnerOf(List<Command...>) {
  int place = 0;
  (void)((std::is_same_v<RunnerOf<One>, RunnerOf<Command>> || (++place, false)) || ...);
  return place;
}

struct Runners {
  Runner of[Commands::kCount] = {};
  int place[Commands::kCount] = {};  // of each command's runner
  int count = 0;
};
template <class... Command>
constexpr Runners FindRunners(List<Command...> commands) {
  constexpr Runner kAll[] = {Command::kRunner...};
  constexpr int kFirst[] = {FirstWithRunnerOf<Command>(List<Command...>())...};
  Runners runners;
  for (int i = 0; i < commands.kCount; ++i) {
    if (kFirst[i] == i) runners.of[runners.count++] = kAll[i];
    runners.place[i] = kFirst[i] == i ? runners.count - 1 : runners.place[kFirst[i]];
  }
  return runners;
}
constexpr int kRunnerCount = FindRunners(Commands()).count;

struct RunnerTable {
  Runner of[kRunnerCount];
};
template <std::size_t... i>
constexpr RunnerTable MakeRunners(std::index_sequence<i...>) {
  constexpr Runners kRunners = FindRunners(Commands());
  return {kRunners.of[i]...};
}
constexpr RunnerTable kRunners = MakeRunners(std::make_index_sequence<kRunnerCount>());

struct Rows {
  CommandRow of[Commands::kCount];
};
template <class... Command>
constexpr Rows MakeRows(List<Command...>) {
  auto names = PackNames(Commands());
  Runners runners = FindRunners(Commands());
  const int* place = runners.place;
  return {Command::Row(names.Add(Command::kName), *place++)...};
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
  return Run(L, command, Clients<Commands>::kOf[number], kRunners.of[command.runner]);
}

TQ_NUMBERED_FUNCTIONS(kFunctions, tq_call_command, Commands::kCount);

}  // namespace

const char* CommandName(const CommandRow& command) { return kNames.text + command.name; }

int CountCommands() { return Commands::kCount; }

void AddCommands(lua_State* L) {
  for (unsigned i = 0; i < Commands::kCount; ++i) {
    const CommandRow& command = kRows.of[i];
    bool is_scan = command.result == kTypeOf<tq_global_t> && !command.makes_handle;
    lua_pushstring(L, CommandName(command));
    PushFunction(L, kFunctions.At(i), {command.result, is_scan ? kTypeOf<tq_mom_pubsub_msg_t> : kVoid});
    lua_rawset(L, -3);
  }
}

}  // namespace tq_mom

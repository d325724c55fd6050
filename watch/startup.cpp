// Loading and leaving the library.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "watch/internal.h"

namespace tq_watch {
namespace {

// What TQ_WATCH asks for at the end.
bool summary_at_exit;
bool owned_at_exit;
int exit_status;

// One word of TQ_WATCH, such as "trace:FILE".
struct Word {
  explicit Word(char* text) : name(text), argument(std::strchr(text, ':')) {
    if (argument != nullptr) *argument++ = '\0';
  }

  bool Is(const char* other) const { return std::strcmp(name, other) == 0; }

  // The argument, which is to be a number in this range; the least one if it is not.
  int Number(int least, int most) const {
    char* end;
    long number = std::strtol(argument, &end, 10);
    if (end != argument && *end == '\0' && number >= least && number <= most) return static_cast<int>(number);
    Print("TQ_WATCH: %s: number from %d to %d expected, got '%s'", name, least, most, argument);
    return least;
  }

  char* name;
  char* argument;  // null: none
};

void Obey(const char* words) {
  char* copy = strdup(words);
  if (copy == nullptr) return Print("no memory for TQ_WATCH");
  bool json = false;
  bool trace = false;
  const char* file = nullptr;
  char* rest = nullptr;
  for (char* next = strtok_r(copy, ",", &rest); next != nullptr; next = strtok_r(nullptr, ",", &rest)) {
    Word word(next);
    if (word.Is("trace")) {
      trace = true;
      file = word.argument;
    } else if (word.Is("json")) {
      json = true;
    } else if (word.Is("summary")) {
      summary_at_exit = true;
      tq_watch_set(Switch::kCounts, true);
    } else if (word.Is("leaks")) {
      owned_at_exit = true;
      if (word.argument != nullptr) exit_status = word.Number(0, 255);
      tq_watch_set(Switch::kOwned, true);
    } else if (word.Is("guard")) {
      if (word.argument != nullptr) SetMostRemembered(word.Number(1, 1000000));
      tq_watch_set(Switch::kGuard, true);
    } else {
      Print("TQ_WATCH: '%s' is none of trace[:FILE], json, summary, leaks[:STATUS], guard[:COUNT]", word.name);
    }
  }
  if (trace) {
    int error = tq_watch_trace_to(file, json);
    if (error != 0) Print("TQ_WATCH: %s: %s", file, std::strerror(error));
  }
  std::free(copy);
}

[[gnu::constructor]] void Load() {
  tq_watch_take_control(nullptr, nullptr);
  FindClient();
  if (const char* words = std::getenv("TQ_WATCH")) Obey(words);
  UpdateWatching();
}

[[gnu::destructor]] void Leave() {
  if (summary_at_exit) PrintSummary();
  if (!owned_at_exit || PrintOwned() == 0 || exit_status == 0) return;
  std::fflush(nullptr);
  _exit(exit_status);
}

}  // namespace
}  // namespace tq_watch

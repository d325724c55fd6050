// What tells of calls: lines in a file, a function of the script's, counts.
#include <cerrno>
#include <cstdio>

#include "watch/internal.h"

namespace tq_watch {

namespace {

Counts counts[kRowCount];
Tracer tracer;
void* tracer_context;
std::FILE* file;
bool as_json;

int RowOf(const Call& call) { return static_cast<int>(call.function - functions); }

}  // namespace

bool Tracing() { return tracer != nullptr || file != nullptr; }

void Count(const Call& call) {
  Counts& count = counts[RowOf(call)];
  ++count.calls;
  if (call.failed) ++count.failures;
  count.microseconds += static_cast<std::uint64_t>(call.microseconds);
}

void Tell(const Call& call) {
  if (file != nullptr) {
    Text line;
    as_json ? AddJson(call, &line) : AddLine(call, &line);
    std::fprintf(file, "%s\n", line.c_str());
    std::fflush(file);
  }
  if (tracer != nullptr) {
    Text line;
    AddLine(call, &line);
    Text result;
    AddResult(call, &result);
    tracer(tracer_context, call, line.c_str(), result.c_str());
  }
}

void ForgetCounts() {
  for (Counts& count : counts) count = {};
}

void PrintSummary() {
  std::fprintf(stderr, "%-24s %8s %8s %12s\n", "call", "calls", "failures", "microseconds");
  for (int row = 0; row < kRowCount; ++row) {
    const Counts& count = counts[row];
    if (count.calls == 0) continue;
    std::fprintf(stderr, "%-24s %8llu %8llu %12llu\n", functions[row].name,
                 static_cast<unsigned long long>(count.calls), static_cast<unsigned long long>(count.failures),
                 static_cast<unsigned long long>(count.microseconds));
  }
}

const Counts* tq_watch_counts(int row) { return &counts[row]; }

void tq_watch_trace(Tracer new_tracer, void* context) {
  tracer = new_tracer;
  tracer_context = context;
  UpdateWatching();
}

int tq_watch_trace_to(const char* name, bool json) {
  std::FILE* opened = stderr;
  if (name != nullptr) opened = *name != '\0' ? std::fopen(name, "ae") : nullptr;
  if (opened == nullptr && name != nullptr && *name != '\0') return errno;
  if (file != nullptr && file != stderr) std::fclose(file);
  file = opened;
  as_json = json;
  UpdateWatching();
  return 0;
}

}  // namespace tq_watch

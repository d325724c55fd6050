// What the watch library offers to the Lua module that controls it. All of it is for the thread that took control.
#pragma once

#include "watch/call.h"

// The Lua module has these functions only if the library is in the process.
#ifndef TQ_WATCH_API
#define TQ_WATCH_API [[gnu::weak]]
#endif

namespace tq_watch {

// Fills in where the script is; returns false when it is nowhere.
using PositionSource = bool (*)(void* context, char* source, std::size_t size, int* line);
// The texts are the line about the call, and its result; they are valid during the call.
using Tracer = void (*)(void* context, const Call& call, const char* line, const char* result);

struct Counts {
  std::uint64_t calls;
  std::uint64_t failures;
  std::uint64_t microseconds;
};

struct FaultPlan {
  const char* call;    // pattern of Lua functions' names
  int database;        // -1: any
  const char* key;     // pattern of keys; null: any
  std::int64_t after;  // calls that pass before the first one is changed
  std::int64_t times;  // calls that are changed; -1: all
  int delay;           // milliseconds
  bool fails;          // with the status, or with null where the function returns a pointer
  bool null;           // null instead of a record that carries the status
  bool after_call;     // the client function is called all the same, and before the delay
  int status;
};

struct Fault;

// A result, object or runtime that a client function handed out.
struct Owned {
  const Function* function;  // that handed it out
  void* pointer;
  Position position;
  char* key;  // null: none
  std::size_t key_length;
  std::int64_t since;  // microseconds of a clock that only goes forward
  Owned* older;
  Owned* newer;
  Owned* next_in_bucket;
};

enum class Switch { kCounts, kOwned, kGuard };

extern "C" {

// What keeps the library from watching, as a text; null: nothing does.
TQ_WATCH_API const char* tq_watch_problem(void);
// Makes the calling thread the watched one; calls on others are forwarded, no more. Null ends the source's use.
TQ_WATCH_API void tq_watch_take_control(PositionSource source, void* context);

// The function of a row; null after the last.
TQ_WATCH_API const Function* tq_watch_function(int row);
TQ_WATCH_API const Counts* tq_watch_counts(int row);
// Whether the client library tells the text of keys and values.
TQ_WATCH_API bool tq_watch_reads_keys(void);

TQ_WATCH_API void tq_watch_set(Switch what, bool on);
// The readable text of an argument; null if it has none of its own, as a length. Valid as long as the call is.
TQ_WATCH_API const char* tq_watch_argument(const Call* call, int parameter);
TQ_WATCH_API void tq_watch_trace(Tracer tracer, void* context);
// Appends a line for each call to a file: null for the standard error stream, "" for none. Returns 0 or errno.
TQ_WATCH_API int tq_watch_trace_to(const char* file, bool json);
// Starts the counts anew and removes all faults.
TQ_WATCH_API void tq_watch_reset(void);

// The new fault belongs to the caller, until tq_watch_drop_fault, and to the library, until it is removed. Null when
// out of memory.
TQ_WATCH_API Fault* tq_watch_add_fault(const FaultPlan* plan);
TQ_WATCH_API std::int64_t tq_watch_fault_hits(const Fault* fault);
// The last call that the fault changed, as a script would write it, and where that was; null before the first,
// and without the memory for it.
TQ_WATCH_API const char* tq_watch_fault_call(const Fault* fault, Position* position);
TQ_WATCH_API void tq_watch_remove_fault(Fault* fault);
TQ_WATCH_API void tq_watch_drop_fault(Fault* fault);

// What is not released, the oldest first.
TQ_WATCH_API const Owned* tq_watch_oldest(void);
// A line about it, which is valid until the next call.
TQ_WATCH_API const char* tq_watch_owned_line(const Owned* owned);
TQ_WATCH_API std::int64_t tq_watch_now(void);
}

}  // namespace tq_watch

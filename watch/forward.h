// The functions that stand before the client library's.
#pragma once

#include <tq_description.h>

#include "watch/call.h"

namespace tq_watch {

enum Row {
#define TQ_WATCH_ROW(parameters, name) kRow_##name,
  TQ_CLIENT_CALLS(TQ_WATCH_ROW)
#undef TQ_WATCH_ROW
      kRowCount
};

extern const Function functions[kRowCount];

using ClientFunction = void (*)();

// The client library's functions, found when this library is loaded; null: it has none of that name.
extern ClientFunction client_functions[kRowCount];

// Whether calls take the long way.
extern bool watching;

// Calls the client function with the arguments and stores its result.
using Invoke = void (*)(ClientFunction function, const Value* arguments, Value* result);

// A call that is watched: does what is switched on and, unless a fault says otherwise, calls the client function. The
// caller is an address in the code that made the call.
void Watch(Row row, Value* arguments, Value* result, Invoke invoke, const void* caller);

}  // namespace tq_watch

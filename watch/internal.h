// What the files of the library have in common.
#ifndef TQ_WATCH_INTERNAL_H
#define TQ_WATCH_INTERNAL_H

#define TQ_WATCH_API [[gnu::visibility("default")]]

#include "watch/control.h"
#include "watch/forward.h"

namespace tq_watch {

// Prints "libtq_mom_watch: ...".
[[gnu::format(printf, 1, 2)]] void Print(const char* format, ...);

// client.cpp
void FindClient();
// Whether the address is in the client library, or in this library where it calls that: many client functions call
// another one in the end.
bool IsInside(const void* caller);
// Null if the client library has no function of this name.
void* FindSymbol(const char* name);
// The text and the value of an object, quoted; its address where the client library does not tell.
void AddObject(const void* object, Text* text);
// Null if the pointer is no live object, or the client library does not tell.
const char* KeyOf(const void* object, std::size_t* length);

// call.cpp
void AddArguments(const Function& function, const Value* arguments, Text* text);
const void* KeyObject(const Function& function, const Value* arguments);

// calls.cpp
// To be called when what is switched on has changed.
void UpdateWatching();
// The script's position, if somebody tells it.
Position Here();

// trace.cpp
bool Tracing();
void Count(const Call& call);
void Tell(const Call& call);
void ForgetCounts();
void PrintSummary();

// faults.cpp
bool AnyFault();
// Whether a fault applies to the call, which then is one of its hits.
bool FaultFor(const Call& call, FaultPlan* plan);
void RemoveFaults();
// A record that carries an error code, for a script to release; null when out of memory.
void* MakeRecord(const OwnedType& type, int error_code);
// Whether the record was made so. It is then released, if the type is right, and the status set.
bool ReleaseRecord(const OwnedType& type, const void* record, int* status);

// owned.cpp
void AddOwned(const Call& call, void* pointer);
void RemoveOwned(const void* pointer);
void ForgetOwned();
// Returns how many there are.
int PrintOwned();

}  // namespace tq_watch

#endif

// What the files of the library have in common.
#pragma once

#define TQ_WATCH_API [[gnu::visibility("default")]]

#include <tq_mom/client.h>

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
std::int64_t LengthOf(const Function& function, const Value* arguments, int array);
std::size_t ArrayLength(const void* record, const Member& member);
const void* KeyObject(const Function& function, const Value* arguments);

// calls.cpp
// To be called when what is switched on has changed.
void UpdateWatching();
// The script's position, if somebody tells it.
Position Here();
// Gives something back to whoever made it, the client library or a fault.
void ReleaseOriginal(const OwnedType& type, void* pointer);

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
// Null if it is not known.
const Owned* FindOwned(const void* pointer);
// Returns how many there are.
int PrintOwned();

// guard.cpp
// Ends the process if an argument was released.
void CheckArguments(const Function& function, const Value* arguments);
void CheckObject(const void* object, const char* function);
bool IsReleased(const void* object);
// A copy of the result for the script, or the result itself.
void* GuardResult(const Call& call, void* result);
// Whether the guard has released it, or refused to, with the status. With `remember`, uses are found from now on.
bool GuardRelease(const Function& function, void* pointer, const Position& position, bool remember, int* status);
void GuardRuntime(void* runtime, const Position& position);
// Whether a script still has copies.
bool AnyCopy();
// How many released things are kept to find uses of them.
void SetMostRemembered(int count);
// Releases what was only kept to find uses of it.
void ForgetReleased();

// What a scan gets in place of the script's callback and context.
struct ScanGuard {
  tq_mom_scan_cb callback;
  void* context;
  const Call* call;
};

int GuardMessage(tq_global_t* g, void* message, void* scan_guard);
// No callback of the call runs any more.
void CloseMessages(const Call& call);

}  // namespace tq_watch

// Functions of tq_obj's that stand before those of the host kit, for the guard.
#define TQ_WATCH_API [[gnu::visibility("default")]]

#include <tq_kit/value_object.h>

#include "watch/internal.h"

// tq_obj asks this before each use of an object.
extern "C" TQ_WATCH_API int tq_obj_is_live(const void* pointer) {
  tq_watch::CheckObject(pointer, "tq_obj");
  static auto* const is_live = reinterpret_cast<int (*)(const void*)>(tq_watch::FindSymbol("tq_obj_is_live"));
  return is_live != nullptr ? is_live(pointer) : pointer != nullptr;
}

// Lua collects the handle of an object that a script has released already, which the guard still keeps.
extern "C" TQ_WATCH_API void tq_obj_delete(tq_obj* object) {
  if (tq_watch::IsReleased(object)) return;
  static auto* const release = reinterpret_cast<void (*)(tq_obj*)>(tq_watch::FindSymbol("tq_obj_delete"));
  if (release != nullptr) release(object);
}

#include "companions/tq_watch/position.h"

#include <cstdio>

namespace tq_watch {
namespace {

int Nothing(lua_State*) { return 0; }

}  // namespace

PositionFinder::PositionFinder(lua_State* L, lua_State* thread) : thread_(thread), resume_(nullptr), wrapped_(nullptr) {
  int top = lua_gettop(L);
  lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
  if (lua_getfield(L, -1, LUA_COLIBNAME) == LUA_TTABLE) {
    lua_getfield(L, -1, "resume");
    resume_ = lua_tocfunction(L, -1);
    lua_getfield(L, -2, "wrap");
    lua_pushcfunction(L, Nothing);
    lua_call(L, 1, 1);
    wrapped_ = lua_tocfunction(L, -1);
  }
  lua_settop(L, top);
}

// Lua does not tell which thread runs, but a thread that waits for a coroutine is inside of the function that resumed
// it, which has the coroutine as its first argument or upvalue.
lua_State* PositionFinder::RunningThread() const {
  lua_State* thread = thread_;
  for (;;) {
    lua_Debug frame;
    if (lua_getstack(thread, 0, &frame) == 0 || lua_checkstack(thread, 2) == 0) return thread;
    lua_getinfo(thread, "f", &frame);
    lua_CFunction function = lua_tocfunction(thread, -1);
    const char* found = nullptr;
    if (function != nullptr && function == resume_) found = lua_getlocal(thread, &frame, 1);
    if (function != nullptr && function == wrapped_) found = lua_getupvalue(thread, -1, 1);
    lua_State* inner = found != nullptr ? lua_tothread(thread, -1) : nullptr;
    lua_pop(thread, found != nullptr ? 2 : 1);
    if (inner == nullptr) return thread;
    thread = inner;
  }
}

bool PositionFinder::Find(char* source, std::size_t size, int* line) const {
  lua_State* thread = RunningThread();
  lua_Debug frame;
  for (int level = 0; lua_getstack(thread, level, &frame) != 0; ++level) {
    lua_getinfo(thread, "Sl", &frame);
    if (frame.currentline <= 0) continue;
    std::snprintf(source, size, "%s", frame.short_src);
    *line = frame.currentline;
    return true;
  }
  return false;
}

}  // namespace tq_watch

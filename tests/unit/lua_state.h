// A Lua state whose memory can be made to run out.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <lua.hpp>
#include <string>

extern "C" int luaopen_tq_mom_sync(lua_State* L);

namespace unit {

enum class Failure {
  kOnce,        // one request; Lua then collects its garbage and asks again
  kFromThenOn,  // that one and all that follow, until they are allowed again
};

class LuaState {
 public:
  // A state with the standard library.
  LuaState();
  ~LuaState();
  LuaState(const LuaState&) = delete;
  LuaState& operator=(const LuaState&) = delete;

  lua_State* get() const { return L_; }
  // NOLINTNEXTLINE(google-explicit-constructor): it stands for the state in calls of Lua.
  operator lua_State*() const { return L_; }

  // Makes the module a global; a test failure when it cannot.
  void LoadModule();

  // The request of this number, counted from 1 and from now, fails. Requests to shrink a block never do.
  void FailRequest(long number, Failure failure);
  // No more failures; returns whether there was one.
  bool AllowRequests();

  // Runs a chunk; returns the text of its error, or "" without one.
  std::string Run(const char* chunk);

 private:
  static void* Allocate(void* state, void* block, std::size_t old_size, std::size_t new_size);

  lua_State* L_ = nullptr;
  long until_failure_ = 0;
  Failure failure_ = Failure::kOnce;
  bool failed_ = false;
};

}  // namespace unit

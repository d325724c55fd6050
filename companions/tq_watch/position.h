// Where the script is.
#pragma once

#include <cstddef>
#include <lua.hpp>

namespace tq_watch {

// Knows the functions that resume coroutines. Made when the module is opened, for one interpreter.
class PositionFinder {
 public:
  // For the interpreter of L. The thread is one of its threads that native code, not a script, runs.
  PositionFinder(lua_State* L, lua_State* thread);

  // Fills in the innermost line of a script that the thread, or the coroutine that it runs, has reached. Returns false
  // if there is none. Raises no error.
  bool Find(char* source, std::size_t size, int* line) const;

 private:
  lua_State* RunningThread() const;

  lua_State* thread_;
  lua_CFunction resume_;
  lua_CFunction wrapped_;  // what coroutine.wrap returns
};

}  // namespace tq_watch

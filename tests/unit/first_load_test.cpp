// The process's first opening of the module, running out of memory at each of its requests in turn: the module can be
// opened once there is memory again. The first opening is once per process, so each runs in a process of its own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <tq_description.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/unit/lua_state.h"

namespace {

constexpr int kWorks = 0;
constexpr int kNothingFailed = 10;
constexpr int kBroken = 11;

constexpr char kUse[] =
    "assert(tq_mom_sync.TQ_MOM_GLOBAL_DB_NO_WRITE == -5)\n"
    "local functions, classes = 0, 0\n"
    "for name, value in pairs(tq_mom_sync) do\n"
    "  if type(value) == 'function' then functions = functions + 1 end\n"
    "  if type(value) == 'table' then\n"
    "    classes = classes + 1\n"
    "    local record = value()\n"
    "    assert(tostring(record):find('^<' .. name .. ' userdata: '), name)\n"
    "    assert(record == record and record.nobody == nil, name)\n"
    "    if not name:find('^tq_[tg]') and not name:find('_msg_t') and name ~= 'tq_mom_congest_t' then\n"
    "      local field = name:find('_op_t') and 'flag' or 'error_code'\n"
    "      record[field] = 5\n"
    "      assert(record[field] == 5, name)\n"
    "    end\n"
    "  end\n"
    "end\n"
    "assert(functions == all_functions and classes == all_classes)\n"
    "collectgarbage()";

#define TQ_COUNT(...) +1
constexpr int kFunctions = 0 TQ_MODULE_FUNCTIONS(TQ_COUNT);
constexpr int kClasses = 0 TQ_MODULE_CLASSES(TQ_COUNT);

int LoadTwice(long failing_request) {
  unit::LuaState L;
  L.FailRequest(failing_request, unit::Failure::kFromThenOn);
  lua_pushcfunction(L, luaopen_tq_mom_sync);
  lua_pcall(L, 0, 0, 0);  // comes through all the same when it is the start-up chunk that fails
  bool failed = L.AllowRequests();
  lua_settop(L, 0);
  lua_pushcfunction(L, luaopen_tq_mom_sync);
  if (lua_pcall(L, 0, 0, 0) != LUA_OK) return kBroken;
  lua_pushinteger(L, kFunctions);
  lua_setglobal(L, "all_functions");
  lua_pushinteger(L, kClasses);
  lua_setglobal(L, "all_classes");
  std::string error = L.Run(kUse);
  if (!error.empty()) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return kBroken;
  }
  return failed ? kWorks : kNothingFailed;
}

// The exit status of a process that loads the module twice, or -1 when it was killed.
int LoadTwiceInAProcess(long failing_request) {
  std::fflush(nullptr);
  pid_t child = fork();
  if (child == 0) {
    alarm(60);
    int status = LoadTwice(failing_request);
    std::fflush(nullptr);
    _exit(status);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

// The requests from the first to the last, all of which must fail or, for the last, be beyond the end.
void LoadTwiceForEach(long first, long last, long step) {
  int failures = 0;
  for (long number = first; number <= last && failures < 5; number += step) {
    int result = LoadTwiceInAProcess(number);
    if (result == kNothingFailed) {
      EXPECT_GT(number, 1000) << "most of the opening was not reached";
      return;
    }
    EXPECT_EQ(result, kWorks) << "request " << number << (result == -1 ? ": killed" : "");
    if (result != kWorks) ++failures;
  }
}

// The requests of joining the ring of type tables and of what precedes the first class.
TEST(FirstLoad, JoiningTheRing) { LoadTwiceForEach(1, 36, 1); }

// Some of the many requests that make the classes and the module's table.
TEST(FirstLoad, MakingTheTables) { LoadTwiceForEach(37, 1000000, 17); }

}  // namespace

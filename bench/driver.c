/* Runs the workloads on one module, in a process of its own.
 *
 *   driver time  DIRECTORY MODULE WORKLOADS.lua
 *   driver count DIRECTORY MODULE WORKLOADS.lua SEED DIVISOR
 *
 * time prints nanoseconds per operation. count is for an instruction counter that cuts its count at each entry of
 * TqBenchMark: it prints a workload's n and runs it so that the second piece that the marks cut out holds n
 * operations and the fourth 2n. Their difference divided by n is one operation, free of all that is done once. The
 * divisor makes n smaller for a slow counter. The first row, `require`, is a single operation and its second piece. */
#include <alloca.h>
#include <dlfcn.h>
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#include <malloc.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { kRequires = 20 };
static const double kShortestRun = 4e6;

static time_t seed;

/* Lua seeds its string hashes with the time; a fixed one makes counts repeatable. */
time_t time(time_t* out) {
  if (out) *out = seed;
  return seed;
}

__attribute__((noinline)) void TqBenchMark(void) { __asm__ volatile("" ::: "memory"); }

static void Fail(const char* what) {
  fprintf(stderr, "driver: %s\n", what);
  exit(1);
}

static void Check(lua_State* L, int status) {
  if (status != LUA_OK) Fail(lua_tostring(L, -1));
}

static double Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec * 1e9 + (double)now.tv_nsec;
}

/* The addresses of the state and of a local variable are in the seed too: the first state of a process is made before
 * anything is loaded, and from a stack that does not move with the length of the arguments. */
static lua_State* NewState(void) {
  volatile char* padding = alloca(((uintptr_t)__builtin_frame_address(0) & 0xffff) + 16);
  padding[0] = 0;
  lua_State* L = luaL_newstate();
  if (!L) Fail("no memory");
  luaL_openlibs(L);
  lua_gc(L, LUA_GCSTOP, 0);
  return L;
}

static double HeapKib(lua_State* L) { return lua_gc(L, LUA_GCCOUNT, 0) + lua_gc(L, LUA_GCCOUNTB, 0) / 1024.0; }

/* Leaves no garbage to the next run: what one collection finalises the next one frees. */
static void Tidy(lua_State* L) {
  lua_gc(L, LUA_GCCOLLECT, 0);
  lua_gc(L, LUA_GCCOLLECT, 0);
}

/* Leaves `require` and its argument on the stack. */
static void PrepareRequire(lua_State* L, const char* directory, const char* module) {
  lua_getglobal(L, "package");
  lua_pushliteral(L, "");
  lua_setfield(L, -2, "path");
  lua_pushfstring(L, "%s/?.so", directory);
  lua_setfield(L, -2, "cpath");
  lua_pop(L, 1);
  lua_getglobal(L, "require");
  lua_pushstring(L, module);
  Tidy(L);
}

struct Workload {
  const char* name;
  double target;
  long count;
  int gc;
};

/* Replaces the workload's table on top of the stack by its run function. The name stays alive in the list. */
static struct Workload Prepare(lua_State* L) {
  struct Workload workload;
  lua_getfield(L, -1, "name");
  lua_getfield(L, -2, "target");
  lua_getfield(L, -3, "count");
  lua_getfield(L, -4, "gc");
  workload.name = lua_tostring(L, -4);
  workload.target = lua_tonumber(L, -3);
  workload.count = (long)lua_tointeger(L, -2);
  workload.gc = lua_toboolean(L, -1);
  lua_getfield(L, -5, "prepare");
  Check(L, lua_pcall(L, 0, 1, 0));
  lua_replace(L, -6);
  lua_pop(L, 4);
  return workload;
}

static void Run(lua_State* L, const struct Workload* workload, long count) {
  lua_pushvalue(L, -1);
  lua_pushinteger(L, count);
  Check(L, lua_pcall(L, 1, 0, 0));
  if (workload->gc) Tidy(L);
}

static void TimeWorkload(lua_State* L, const struct Workload* workload) {
  double elapsed = 0;
  long count = 1;
  for (; elapsed < kShortestRun; count *= 2) {
    Tidy(L);
    double start = Now();
    Run(L, workload, count);
    elapsed = Now() - start;
  }
  const long last_count = count / 2;
  printf("%s\t%.0f\t%.1f\n", workload->name, workload->target, elapsed / (double)last_count);
}

static void CountWorkload(lua_State* L, const struct Workload* workload, long divisor) {
  long count = workload->count > divisor ? workload->count / divisor : 1;
  malloc_trim(0);
  Run(L, workload, 2 * count);
  Tidy(L);
  TqBenchMark();
  Run(L, workload, count);
  TqBenchMark();
  Tidy(L);
  TqBenchMark();
  Run(L, workload, 2 * count);
  TqBenchMark();
  Tidy(L);
  printf("%s\t%.0f\t%ld\n", workload->name, workload->target, count);
}

/* States after the first one of a process: the library stays loaded by the first. */
static void TimeRequire(const char* directory, const char* module) {
  double elapsed = 0;
  for (int i = 0; i < kRequires; ++i) {
    lua_State* L = NewState();
    PrepareRequire(L, directory, module);
    double start = Now();
    lua_call(L, 1, 1);
    elapsed += Now() - start;
    lua_close(L);
  }
  printf("require\t1420000\t%.1f\n", elapsed / kRequires);
}

int main(int argc, char** argv) {
  if (argc < 5) Fail("usage: driver time|count DIRECTORY MODULE WORKLOADS.lua [SEED DIVISOR]");
  int count = strcmp(argv[1], "count") == 0;
  seed = argc > 5 ? atoi(argv[5]) : 1;
  long divisor = argc > 6 ? atol(argv[6]) : 1;
  lua_State* L = NewState();
  PrepareRequire(L, argv[2], argv[3]);
  /* The dynamic linker's work is not the binding's: it is done before `require` is measured. */
  char path[4096];
  snprintf(path, sizeof path, "%s/%s.so", argv[2], argv[3]);
  if (!dlopen(path, RTLD_NOW)) Fail(dlerror());
  double heap = HeapKib(L);
  TqBenchMark();
  int status = lua_pcall(L, 1, 1, 0);
  TqBenchMark();
  Check(L, status);
  Tidy(L);
  printf("heap\t138\t%.1f\n", HeapKib(L) - heap);
  if (count) {
    printf("require\t1420000\t1\n");
  } else {
    TimeRequire(argv[2], argv[3]);
  }
  Check(L, luaL_dofile(L, argv[4]));
  lua_insert(L, 1);
  Check(L, lua_pcall(L, 1, 1, 0));
  for (lua_Integer i = 1; lua_rawgeti(L, 1, i) == LUA_TTABLE; ++i) {
    struct Workload workload = Prepare(L);
    if (count) {
      CountWorkload(L, &workload, divisor);
    } else {
      TimeWorkload(L, &workload);
    }
    lua_pop(L, 1);
  }
  return 0;
}

#include <cstdio>

#include "binding/startup.h"
#include "commands/command.h"
#include "module/constants.h"
#include "records/casts.h"
#include "records/records.h"

extern "C" {

// Run when the module is opened, through the global name of the module. Empty or null: nothing is run.
[[gnu::visibility("default")]] const char* luaopen_tq_mom_sync_luacode =
    "\n"
    "    tq_mom_sync.TQ_MOM_OK = 0\n"
    "    tq_mom_sync.TQ_MOM_ERR = -1\n"
    "    tq_mom_sync.TQ_MOM_INPUT_ERR = -2\n"
    "    tq_mom_sync.TQ_MOM_MALLOC_ERR = -3\n"
    "    tq_mom_sync.TQ_MOM_NO_READY = -4\n"
    "    tq_mom_sync.TQ_MOM_GLOBAL_DB_NO_WRITE = -5";

// Runs the chunk; its errors go to the standard error stream. Leaves the stack as it was. A caller in C need not look
// at the result, which is for require "tq_mom_sync.user": it takes this function for that module's loader.
[[gnu::visibility("default")]] int luaopen_tq_mom_sync_user(lua_State* L) {
  const char* code = luaopen_tq_mom_sync_luacode;
  if (code == nullptr || *code == '\0') return 0;
  int top = lua_gettop(L);
  if (luaL_loadstring(L, code) != LUA_OK || lua_pcall(L, 0, LUA_MULTRET, 0) != LUA_OK) {
    const char* message = lua_tostring(L, -1);
    std::fprintf(stderr, "%s\n", message != nullptr ? message : luaL_typename(L, -1));
  }
  lua_settop(L, top);
  return 0;
}

// The entry point: returns the module table, which is also the global tq_mom_sync.
[[gnu::visibility("default")]] int luaopen_tq_mom_sync(lua_State* L) {
  constexpr int kStatusCodes = 6;
  binding::ModuleRecord* types = tq_mom::ModuleTypes();
  if (types->next_module == nullptr) tq_mom::SetUpClasses();
  const binding::NamespaceRecord record = {"tq_mom_sync",
                                           binding::kNone<binding::Method>,
                                           binding::kNone<binding::Attribute>,
                                           binding::kNone<binding::Constant>,
                                           tq_mom::class_list,
                                           binding::kNone<const binding::NamespaceRecord*>};
  binding::OpenModule(
      L, {.types = types,
          .record = &record,
          .source = "tq_mom_sync_wrap",
          .more_fields = tq_mom::CountCommands() + tq_mom::CountCasts() + tq_mom::CountConstants() + kStatusCodes,
          .in_place = tq_mom::kInPlace});
  tq_mom::AddCommands(L);
  tq_mom::AddCasts(L);
  tq_mom::AddConstants(L);
  luaopen_tq_mom_sync_user(L);
  return 1;
}

}  // extern "C"

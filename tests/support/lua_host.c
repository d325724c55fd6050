/* lua_host [-e statement]... [script [argument]...]: a plain Lua interpreter that can be built with the sanitizers, so
 * that they see all of the process. */
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int AddTraceback(lua_State* L) {
  const char* message = luaL_tolstring(L, 1, NULL);
  luaL_traceback(L, L, message, 1);
  return 1;
}

/* Calls the chunk on the stack top, if loading it gave one, with the script's arguments. */
static int Run(lua_State* L, int load_status, int argc, char** argv) {
  int status = load_status;
  if (status == LUA_OK) {
    int base = lua_gettop(L);
    luaL_checkstack(L, argc + 1, "too many arguments");
    for (int i = 0; i < argc; i++) {
      lua_pushstring(L, argv[i]);
    }
    lua_pushcfunction(L, AddTraceback);
    lua_insert(L, base);
    status = lua_pcall(L, argc, 0, base);
    lua_remove(L, base);
  }
  if (status != LUA_OK) {
    fprintf(stderr, "lua_host: %s\n", lua_tostring(L, -1));
    lua_pop(L, 1);
  }
  return status;
}

int main(int argc, char** argv) {
  lua_State* L = luaL_newstate();
  if (L == NULL) {
    fputs("lua_host: not enough memory\n", stderr);
    return EXIT_FAILURE;
  }
  luaL_openlibs(L);

  int script = 1;
  while (script + 1 < argc && strcmp(argv[script], "-e") == 0) {
    script += 2;
  }
  lua_createtable(L, argc, script + 1);
  for (int i = 0; i < argc; i++) {
    lua_pushstring(L, argv[i]);
    lua_rawseti(L, -2, i - script);
  }
  lua_setglobal(L, "arg");

  int status = LUA_OK;
  for (int i = 1; i < script && status == LUA_OK; i += 2) {
    status = Run(L, luaL_loadbufferx(L, argv[i + 1], strlen(argv[i + 1]), "=(command line)", NULL), 0, NULL);
  }
  if (status == LUA_OK && script < argc) {
    const char* file = strcmp(argv[script], "-") == 0 ? NULL : argv[script];
    status = Run(L, luaL_loadfile(L, file), argc - script - 1, argv + script + 1);
  }
  lua_close(L);
  return status == LUA_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}

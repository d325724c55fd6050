// operator new that fails on demand, and the Lua module "failing_new". It must be loaded before the first C++ library,
// which then takes its operators from here.
#include <cstdlib>
#include <lua.hpp>
#include <new>

namespace {

enum class Mode { kNone, kOnce, kFromThenOn };

Mode mode = Mode::kNone;
lua_Integer left;
bool hit;

bool Fails() {
  if (mode == Mode::kNone) return false;
  if (hit) return mode == Mode::kFromThenOn;
  hit = --left == 0;
  return hit;
}

// with(n, once, f, ...) -> whether it came to it, then as pcall: the nth allocation of f fails, and all later ones
// unless only `once`.
int With(lua_State* L) {
  left = luaL_checkinteger(L, 1);
  hit = false;
  mode = lua_toboolean(L, 2) ? Mode::kOnce : Mode::kFromThenOn;
  int status = lua_pcall(L, lua_gettop(L) - 3, LUA_MULTRET, 0);
  mode = Mode::kNone;
  lua_pushboolean(L, hit);
  lua_replace(L, 1);
  lua_pushboolean(L, status == LUA_OK);
  lua_replace(L, 2);
  return lua_gettop(L);
}

}  // namespace

[[gnu::visibility("default")]] void* operator new(std::size_t size) {
  void* block = Fails() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

[[gnu::visibility("default")]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::visibility("default")]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

extern "C" [[gnu::visibility("default")]] int luaopen_failing_new(lua_State* L) {
  const luaL_Reg functions[] = {{"with", With}, {nullptr, nullptr}};
  luaL_newlib(L, functions);
  return 1;
}

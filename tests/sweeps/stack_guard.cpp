// Lua module "stack_guard": calls functions at chosen heights of a fresh Lua stack and notices writes behind its end.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>
#include <unordered_map>

namespace {

constexpr std::size_t kGuard = 1024;
constexpr std::size_t kSmallest = 480;  // no stack is smaller
constexpr int kFill = 0x5a;

lua_Alloc original;
void* original_data;

// The blocks that have a guard, by address, with their size. Never destroyed: the last state is closed at the very end.
std::unordered_map<void*, std::size_t>& Guarded() {
  static auto* const blocks = new std::unordered_map<void*, std::size_t>;
  return *blocks;
}

bool IsIntact(const void* block, std::size_t size) {
  const auto* guard = static_cast<const unsigned char*>(block) + size;
  for (std::size_t i = 0; i < kGuard; ++i) {
    if (guard[i] != kFill) return false;
  }
  return true;
}

void Check(const void* block, std::size_t size) {
  if (IsIntact(block, size)) return;
  std::fputs("stack_guard: something wrote behind a block of Lua's\n", stderr);
  std::abort();
}

void* Allocate(void*, void* block, std::size_t old_size, std::size_t new_size) {
  auto& guarded = Guarded();
  auto entry = block != nullptr ? guarded.find(block) : guarded.end();
  bool is_guarded = block != nullptr ? entry != guarded.end() : new_size >= kSmallest;
  if (!is_guarded) return original(original_data, block, old_size, new_size);
  void* moved = nullptr;
  if (new_size > 0) {
    moved = std::malloc(new_size + kGuard);
    if (moved == nullptr) return nullptr;
    std::memset(static_cast<char*>(moved) + new_size, kFill, kGuard);
    if (block != nullptr) std::memcpy(moved, block, old_size < new_size ? old_size : new_size);
  }
  if (block != nullptr) {
    Check(block, entry->second);
    guarded.erase(entry);
    std::free(block);
  }
  if (moved != nullptr) guarded.emplace(moved, new_size);
  return moved;
}

// start(): blocks that Lua allocates from now on are guarded.
int Start(lua_State* L) {
  original = lua_getallocf(L, &original_data);
  lua_setallocf(L, Allocate, nullptr);
  return 0;
}

// check(): ends the process when a guard is broken.
int CheckAll(lua_State*) {
  for (const auto& [block, size] : Guarded()) Check(block, size);
  return 0;
}

// at(height, f, ...) -> as pcall. On a stack of its own, f has this many values below it.
int CallAt(lua_State* L) {
  auto height = static_cast<int>(luaL_checkinteger(L, 1));
  int count = lua_gettop(L) - 1;
  lua_State* thread = lua_newthread(L);
  lua_insert(L, 1);
  luaL_checkstack(thread, height + count, nullptr);
  for (int i = 0; i < height; ++i) lua_pushboolean(thread, 1);
  lua_xmove(L, thread, count);
  int status = lua_pcall(thread, count - 1, LUA_MULTRET, 0);
  count = lua_gettop(thread) - height;
  lua_pushboolean(L, status == LUA_OK);
  luaL_checkstack(L, count, nullptr);
  lua_xmove(thread, L, count);
  return 1 + count;
}

// at_brim(f): calls the C function as a host's C code may, with no room left on the stack.
int CallAtBrim(lua_State* L) {
  lua_CFunction function = lua_tocfunction(L, 1);
  luaL_argcheck(L, function != nullptr, 1, "C function expected");
  while (lua_gettop(L) < 1 + LUA_MINSTACK) lua_pushboolean(L, 1);  // behind the one argument
  function(L);
  return 0;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] int luaopen_stack_guard(lua_State* L) {
  const luaL_Reg functions[] = {
      {"start", Start}, {"check", CheckAll}, {"at", CallAt}, {"at_brim", CallAtBrim}, {nullptr, nullptr}};
  luaL_newlib(L, functions);
  return 1;
}

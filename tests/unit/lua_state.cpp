#include "tests/unit/lua_state.h"

#include <cstdlib>

namespace unit {

LuaState::LuaState() {
  L_ = lua_newstate(Allocate, this);
  luaL_openlibs(L_);
}

LuaState::~LuaState() { lua_close(L_); }

void LuaState::LoadModule() {
  luaL_requiref(L_, "tq_mom_sync", luaopen_tq_mom_sync, 1);
  lua_pop(L_, 1);
  EXPECT_EQ(Run("tq = assert(tq_mom_sync)"), "");
}

void LuaState::FailRequest(long number, Failure failure) {
  until_failure_ = number;
  failure_ = failure;
  failed_ = false;
}

bool LuaState::AllowRequests() {
  until_failure_ = 0;
  return failed_;
}

std::string LuaState::Run(const char* chunk) {
  std::string error;
  if (luaL_dostring(L_, chunk) != LUA_OK) error = lua_tostring(L_, -1) != nullptr ? lua_tostring(L_, -1) : "no text";
  lua_settop(L_, 0);
  return error;
}

void* LuaState::Allocate(void* state, void* block, std::size_t old_size, std::size_t new_size) {
  auto* self = static_cast<LuaState*>(state);
  if (new_size == 0) {
    std::free(block);
    return nullptr;
  }
  bool grows = block == nullptr || new_size > old_size;
  if (grows && self->until_failure_ > 0) {
    if (self->until_failure_ == 1) {
      if (self->failure_ == Failure::kOnce) self->until_failure_ = 0;
      self->failed_ = true;
      return nullptr;
    }
    --self->until_failure_;
  }
  return std::realloc(block, new_size);
}

}  // namespace unit

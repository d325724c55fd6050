#include "commands/arrays.h"

#include <cstdint>
#include <cstdlib>

#include "binding/handles.h"

namespace tq_mom {
namespace {

// Elements are fetched in groups: one pop for all of them, and the group fits the stack that Lua guarantees.
constexpr std::size_t kGroup = 8;

bool Convert(lua_State* L, std::int32_t* value) {
  if (!lua_isinteger(L, -1)) return false;
  *value = static_cast<std::int32_t>(static_cast<std::uint32_t>(lua_tointeger(L, -1)));
  return true;
}
bool Convert(lua_State* L, double* value) {
  int is_number;
  *value = lua_tonumberx(L, -1, &is_number);
  return is_number != 0;
}
bool Convert(lua_State* L, void** value) {
  const binding::Handle* handle = binding::HandleAt(L, -1);
  *value = handle != nullptr ? handle->pointer : nullptr;
  return handle != nullptr || lua_isnil(L, -1);
}

// Builds an array with room for `spare` elements more than the table holds: the client library has always been given
// scores and members with room for one more.
template <class T>
const char* Build(lua_State* L, int index, std::size_t spare, void** elements, int* count, const char* no_table,
                  const char* bad_element) {
  *elements = nullptr;
  *count = 0;
  if (!lua_istable(L, index)) return no_table;
  std::size_t length = lua_rawlen(L, index);
  if (length == 0) return nullptr;
  // A table with holes may claim any length, so the size of the block can be beyond what there is.
  bool countable = length <= INT32_MAX && length + spare <= SIZE_MAX / sizeof(T);
  auto* block = countable ? static_cast<T*>(std::malloc((length + spare) * sizeof(T))) : nullptr;
  if (block == nullptr) return "memory error";
  int top = lua_gettop(L);
  for (std::size_t i = 0; i < length;) {
    std::size_t end = length - i < kGroup ? length : i + kGroup;
    for (; i < end; ++i) {
      lua_rawgeti(L, index, static_cast<lua_Integer>(i + 1));
      if (!Convert(L, &block[i])) {
        std::free(block);
        lua_settop(L, top);
        return bad_element;
      }
    }
    lua_settop(L, top);
  }
  *elements = block;
  *count = static_cast<int>(length);
  return nullptr;
}

}  // namespace

const char* BuildIntegers(lua_State* L, int index, void** elements, int* count) {
  return Build<std::int32_t>(L, index, 0, elements, count, "input error, errcode_1", "input error, errcode_3");
}

const char* BuildScores(lua_State* L, int index, void** elements, int* count) {
  return Build<double>(L, index, 1, elements, count, "input error, expect array", "input error");
}

const char* BuildMembers(lua_State* L, int index, void** elements, int* count) {
  return Build<void*>(L, index, 1, elements, count, "input error, expect array", "input error");
}

}  // namespace tq_mom

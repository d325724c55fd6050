#include "runtime/arguments.h"

#include <cstring>

#include "runtime/dispatch.h"

namespace binding {
namespace {

// number / 10, where a division would call for a library routine.
constexpr unsigned Tenth(unsigned number) { return static_cast<unsigned>(std::uint64_t{number} * 0xCCCCCCCDU >> 35); }
static_assert(Tenth(9) == 0 && Tenth(10) == 1 && Tenth(UINT32_MAX) == UINT32_MAX / 10);

void AddNumber(luaL_Buffer* buffer, int number) {
  char digits[12];
  char* end = digits + sizeof(digits);
  char* first = end;
  unsigned rest = number < 0 ? 0U - static_cast<unsigned>(number) : static_cast<unsigned>(number);
  do {
    unsigned tenth = Tenth(rest);
    *--first = static_cast<char>('0' + rest - tenth * 10);
    rest = tenth;
  } while (rest != 0);
  if (number < 0) *--first = '-';
  luaL_addlstring(buffer, first, static_cast<std::size_t>(end - first));
}

template <std::size_t size>
void AddLiteral(luaL_Buffer* buffer, const char (&text)[size]) {
  luaL_addlstring(buffer, text, size - 1);
}

void AddPieces(luaL_Buffer* buffer, const Piece* pieces) {
  for (; *pieces != nullptr; ++pieces) luaL_addstring(buffer, *pieces);
}

// Whether one of our dispatchers is the running function.
bool RunsUnderDispatcher(lua_State* L) {
  lua_Debug running;
  if (!lua_getstack(L, 0, &running)) return false;
  lua_getinfo(L, "f", &running);
  bool dispatched = IsDispatcher(lua_tocfunction(L, -1));
  lua_pop(L, 1);
  return dispatched;
}

// Starts with the position of the function that called the running one: level 1, as luaL_where gives it.
void StartMessage(lua_State* L, luaL_Buffer* buffer) {
  lua_Debug caller;
  bool positioned = false;
  if (lua_getstack(L, 1, &caller)) {
    lua_getinfo(L, "l", &caller);
    positioned = caller.currentline > 0 && !RunsUnderDispatcher(L);
  }
  luaL_buffinit(L, buffer);
  if (!positioned) return;
  lua_getinfo(L, "S", &caller);
  luaL_addstring(buffer, caller.short_src);
  luaL_addchar(buffer, ':');
  AddNumber(buffer, caller.currentline);
  AddLiteral(buffer, ": ");
}

[[noreturn]] void Raise(lua_State* L, luaL_Buffer* buffer) {
  luaL_pushresult(buffer);
  lua_error(L);
  __builtin_unreachable();
}

}  // namespace

const char* TypeName(lua_State* L, int index) {
  if (!lua_isuserdata(L, index)) return luaL_typename(L, index);
  const Handle* handle = HandleAt(L, index);
  const char* name = handle != nullptr && handle->type != nullptr ? handle->type->readable_name : nullptr;
  return name != nullptr ? name : "userdata (unknown type)";
}

void RaiseCountError(lua_State* L, const Piece* function, int expected) {
  int actual = lua_gettop(L);
  luaL_Buffer message;
  StartMessage(L, &message);
  AddLiteral(&message, "Error in ");
  AddPieces(&message, function);
  AddLiteral(&message, " expected ");
  AddNumber(&message, expected);
  AddLiteral(&message, "..");
  AddNumber(&message, expected);
  AddLiteral(&message, " args, got ");
  AddNumber(&message, actual);
  Raise(L, &message);
}

void RaiseKindError(lua_State* L, const Piece* function, int argument, const char* expected,
                    std::size_t expected_length) {
  const char* actual = TypeName(L, argument);
  luaL_Buffer message;
  StartMessage(L, &message);
  AddLiteral(&message, "Error in ");
  AddPieces(&message, function);
  AddLiteral(&message, " (arg ");
  AddNumber(&message, argument);
  AddLiteral(&message, "), expected '");
  luaL_addlstring(&message, expected, expected_length);
  AddLiteral(&message, "' got '");
  luaL_addstring(&message, actual);
  luaL_addchar(&message, '\'');
  Raise(L, &message);
}

void RaiseAtCaller(lua_State* L, const Piece* pieces) {
  luaL_Buffer message;
  StartMessage(L, &message);
  AddPieces(&message, pieces);
  Raise(L, &message);
}

void RaiseNegativeError(lua_State* L) {
  const Piece message[] = {"number must not be negative", nullptr};
  RaiseAtCaller(L, message);
}

void RaiseBare(lua_State* L, const char* message) {
  lua_pushstring(L, message);
  lua_error(L);
  __builtin_unreachable();
}

int SaturateToInt(double number) {
  if (number >= INT32_MAX) return INT32_MAX;
  if (number <= INT32_MIN) return INT32_MIN;
  return number == number ? static_cast<int>(number) : 0;
}

std::int64_t SaturateToInt64(double number) {
  if (number >= 9223372036854775808.0) return INT64_MAX;
  if (number <= -9223372036854775808.0) return INT64_MIN;
  return number == number ? static_cast<std::int64_t>(number) : 0;
}

bool ToIntSlow(lua_State* L, int index, int* value) {
  int is_number;
  double number = lua_tonumberx(L, index, &is_number);
  *value = SaturateToInt(number);
  return is_number;
}

bool ToUnsignedSlow(lua_State* L, int index, std::uint32_t* value) {
  int is_number;
  double number = lua_tonumberx(L, index, &is_number);
  if (!is_number || !(number >= 0)) return false;
  *value = number >= UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(number);
  return true;
}

}  // namespace binding

#include "binding/arguments.h"

#include <cstring>

namespace binding {
namespace {

// number / 10, where a division would call for a library routine.
constexpr unsigned Tenth(unsigned number) { return static_cast<unsigned>(std::uint64_t{number} * 0xCCCCCCCDU >> 35); }
static_assert(Tenth(9) == 0 && Tenth(10) == 1 && Tenth(UINT32_MAX) == UINT32_MAX / 10);

// An error message that is put together on the native stack; what does not fit goes to the Lua stack.
class Message {
 public:
  explicit Message(lua_State* L) : L_(L) {}

  // Starts with the position of the function that called the running one: level 1, as luaL_where gives it.
  void AddPosition() {
    lua_Debug caller;
    if (!lua_getstack(L_, 1, &caller)) return;
    lua_getinfo(L_, "Sl", &caller);
    if (caller.currentline <= 0) return;
    AddString(caller.short_src);
    Add(":");
    Add(caller.currentline);
    Add(": ");
  }

  // Hot: GCC would compile it for size, as all that calls it ends in an error.
  [[gnu::hot]] void Add(const char* text, std::size_t length) {
    if (length > sizeof(text_) - size_) Flush();
    if (length > sizeof(text_)) {
      lua_pushlstring(L_, text, length);
      ++flushed_;
      return;
    }
    std::memcpy(text_ + size_, text, length);
    size_ += length;
  }

  void AddString(const char* text) { Add(text, std::strlen(text)); }

  template <std::size_t size> void Add(const char (&literal)[size]) { Add(literal, size - 1); }

  void Add(const Piece* pieces) {
    for (; *pieces != nullptr; ++pieces) AddString(*pieces);
  }

  // Counts and line numbers: never negative.
  void Add(int number) {
    char digits[10];
    char* first = digits + sizeof(digits);
    auto rest = static_cast<unsigned>(number);
    do {
      unsigned tenth = Tenth(rest);
      *--first = static_cast<char>('0' + rest - tenth * 10);
      rest = tenth;
    } while (rest != 0);
    Add(first, static_cast<std::size_t>(digits + sizeof(digits) - first));
  }

  [[noreturn]] void Raise() {
    Flush();
    lua_concat(L_, flushed_);
    lua_error(L_);
    __builtin_unreachable();
  }

 private:
  void Flush() {
    luaL_checkstack(L_, 2, nullptr);
    lua_pushlstring(L_, text_, size_);
    ++flushed_;
    size_ = 0;
  }

  lua_State* L_;
  int flushed_ = 0;
  std::size_t size_ = 0;
  char text_[400];
};

}  // namespace

const char* TypeName(lua_State* L, int index) {
  if (!lua_isuserdata(L, index)) return luaL_typename(L, index);
  const Handle* handle = HandleAt(L, index);
  const char* name = handle != nullptr && handle->type != nullptr ? handle->type->readable_name : nullptr;
  return name != nullptr ? name : "userdata (unknown type)";
}

void RaiseCountError(lua_State* L, const Piece* function, int expected) {
  int actual = lua_gettop(L);
  Message message(L);
  message.AddPosition();
  message.Add("Error in ");
  message.Add(function);
  message.Add(" expected ");
  message.Add(expected);
  message.Add("..");
  message.Add(expected);
  message.Add(" args, got ");
  message.Add(actual);
  message.Raise();
}

void RaiseKindError(lua_State* L, const Piece* function, int argument, const char* expected,
                    std::size_t expected_length) {
  const char* actual = TypeName(L, argument);
  Message message(L);
  message.AddPosition();
  message.Add("Error in ");
  message.Add(function);
  message.Add(" (arg ");
  message.Add(argument);
  message.Add("), expected '");
  message.Add(expected, expected_length);
  message.Add("' got '");
  message.AddString(actual);
  message.Add("'");
  message.Raise();
}

void RaiseAtCaller(lua_State* L, const Piece* pieces) {
  Message message(L);
  message.AddPosition();
  message.Add(pieces);
  message.Raise();
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

}  // namespace binding

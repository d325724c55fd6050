// Binds client functions to Lua: a command is one line, and what it takes and returns follows from the C++ type of its
// client function.
//
//     TQ_COMMAND(lset, tq_mom_lset_sync)
#ifndef TQ_COMMANDS_COMMAND_H
#define TQ_COMMANDS_COMMAND_H

#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

#include "records/parameters.h"

namespace tq_mom {

// How a client function's name follows from the Lua function's: what is cut off the front of kPrefix and kSuffix.
struct ClientName {
  static constexpr char kPrefix[] = "_tq_mom_";
  static constexpr char kSuffix[] = "_sync";

  std::uint8_t prefix_cut;
  std::uint8_t suffix_cut;
};

// Does not compile for a client function whose name does not follow from the Lua name.
consteval ClientName NameFor(std::string_view client, std::string_view lua) {
  constexpr std::string_view kPrefix = ClientName::kPrefix;
  constexpr std::string_view kSuffix = ClientName::kSuffix;
  std::size_t start = client.find(lua);
  std::string_view prefix = client.substr(0, start);
  std::string_view suffix = client.substr(start + lua.size());
  if (!kPrefix.ends_with(prefix) || !(suffix.empty() || suffix == kSuffix)) __builtin_unreachable();
  return {static_cast<std::uint8_t>(kPrefix.size() - prefix.size()),
          static_cast<std::uint8_t>(kSuffix.size() - suffix.size())};
}

// What the shared code knows of a command; the rest is in the type of the code that is shared.
struct Description {
  static constexpr int kMaxParameters = 6;

  const char* name;  // the Lua function's
  ClientName client_name;
  std::uint8_t count;
  TypeId result;  // of a pointer result
  Parameter parameters[kMaxParameters];

  [[gnu::cold]] void CheckKinds(lua_State* L) const;
};

struct Command {
  void (*function)();  // the client function
  Description description;
};

// One argument of a client function. An array takes two: its elements and their number.
union Slot {
  void* pointer;
  const char* string;
  int integer;
  unsigned int unsigned_integer;
  std::size_t size;
  double number;
  timeval timeout;

  template <class T>
  T Get() const {
    if constexpr (std::is_same_v<T, void*>) return pointer;
    if constexpr (std::is_same_v<T, const char*>) return string;
    if constexpr (std::is_same_v<T, int>) return integer;
    if constexpr (std::is_same_v<T, unsigned int>) return unsigned_integer;
    if constexpr (std::is_same_v<T, unsigned long>) return size;
    if constexpr (std::is_same_v<T, double>) return number;
    if constexpr (std::is_same_v<T, timeval>) return timeout;
  }
};

// Converts the Lua arguments from left to right, or raises the error of the first that is wrong. The arrays among the
// slots are the caller's.
void ReadArguments(lua_State* L, const Description& command, Slot* slots);
void ReleaseArrays(const Description& command, const Slot* slots);

// How the checks see a native parameter.
template <class T>
inline constexpr Parameter kParameterFor = {};
template <class T>
inline constexpr Parameter kParameterFor<T*> = {Kind::kHandle, kTypeOf<T>};
template <>
inline constexpr Parameter kParameterFor<void*> = {Kind::kKey};
template <>
inline constexpr Parameter kParameterFor<tq_obj*> = {Kind::kKey};
template <>
inline constexpr Parameter kParameterFor<const char*> = {Kind::kString};
template <>
inline constexpr Parameter kParameterFor<int> = {Kind::kInt};
template <>
inline constexpr Parameter kParameterFor<unsigned int> = {Kind::kUnsignedInt};
template <>
inline constexpr Parameter kParameterFor<unsigned long> = {Kind::kSize};
template <>
inline constexpr Parameter kParameterFor<double> = {Kind::kDouble};
template <>
inline constexpr Parameter kParameterFor<timeval> = {Kind::kTimeout};
// Pointers to these are arrays, and the parameter behind them is their length.
template <>
inline constexpr Parameter kParameterFor<std::int32_t*> = {Kind::kIntegers};
template <>
inline constexpr Parameter kParameterFor<double*> = {Kind::kScores};
template <>
inline constexpr Parameter kParameterFor<void**> = {Kind::kMembers};

constexpr bool IsArray(Kind kind) { return kind >= Kind::kIntegers && kind <= Kind::kMembers; }

template <class T>
using Erased = std::conditional_t<std::is_pointer_v<T> && !std::is_same_v<T, const char*>, void*, T>;

inline void PushResult(lua_State* L, int result, const Description&) { lua_pushnumber(L, result); }
inline void PushResult(lua_State* L, void* result, const Description& command) {
  binding::PushHandle(L, result, Type(command.result), 0);
}

// Calls the client function and pushes its results. Pointers are all `void *` here, so that one instance serves all
// client functions of the same shape, whatever record types they take.
template <bool has_arrays, bool has_out, class Result, class... Argument, std::size_t... index>
int Invoke(lua_State* L, const Command& command, std::index_sequence<index...>) {
  Slot slots[sizeof...(Argument)];
  ReadArguments(L, command.description, slots);
  Result result;
  int out;
  if constexpr (has_out) {
    auto function = reinterpret_cast<Result (*)(Argument..., int*)>(command.function);
    result = function(slots[index].template Get<Argument>()..., &out);
  } else {
    auto function = reinterpret_cast<Result (*)(Argument...)>(command.function);
    result = function(slots[index].template Get<Argument>()...);
  }
  if constexpr (has_arrays) ReleaseArrays(command.description, slots);
  PushResult(L, result, command.description);
  if constexpr (has_out) lua_pushnumber(L, out);
  return has_out ? 2 : 1;
}

template <class Function>
struct ClientFunction;

template <class Result, class... Argument>
struct ClientFunction<Result (*)(Argument...)> {
  static constexpr bool kHasOut = false;

  static constexpr Description Describe(const char* name, ClientName client_name) {
    Description command{name, client_name, 0, TypeId::_p_void, {}};
    if constexpr (std::is_pointer_v<Result>) command.result = kTypeOf<std::remove_pointer_t<Result>>;
    bool is_length = false;
    for (Parameter parameter : {kParameterFor<Argument>...}) {
      if (!is_length) command.parameters[command.count++] = parameter;
      is_length = IsArray(parameter.kind);
    }
    return command;
  }

  static int Call(lua_State* L, const Command& command) {
    return Invoke<(IsArray(kParameterFor<Argument>.kind) || ...), false, Erased<Result>, Erased<Argument>...>(
        L, command, std::index_sequence_for<Argument...>());
  }
};

// A last `int *` is an out-value, which becomes a second result.
template <class Result, class A, class B, class C>
struct ClientFunction<Result (*)(A, B, C, int*)> : ClientFunction<Result (*)(A, B, C)> {
  static int Call(lua_State* L, const Command& command) {
    return Invoke<false, true, Erased<Result>, Erased<A>, Erased<B>, Erased<C>>(L, command,
                                                                                std::make_index_sequence<3>());
  }
};
template <class Result, class A, class B, class C, class D>
struct ClientFunction<Result (*)(A, B, C, D, int*)> : ClientFunction<Result (*)(A, B, C, D)> {
  static int Call(lua_State* L, const Command& command) {
    return Invoke<false, true, Erased<Result>, Erased<A>, Erased<B>, Erased<C>, Erased<D>>(
        L, command, std::make_index_sequence<4>());
  }
};

// A size_t is unsigned int on some targets; a function that declares one says so.
constexpr Description WithSize(Description command) {
  for (int i = command.count; i-- > 0;) {
    Kind& kind = command.parameters[i].kind;
    if (kind == Kind::kUnsignedInt || kind == Kind::kSize) {
      kind = Kind::kSize;
      break;
    }
  }
  return command;
}

#define TQ_DESCRIBE(lua_name, client_function) \
  tq_mom::ClientFunction<decltype(&client_function)>::Describe(#lua_name, tq_mom::NameFor(#client_function, #lua_name))

#define TQ_METHOD(lua_name, client_function, description)                                                \
  binding::Method {                                                                                      \
#lua_name, [](lua_State* L) {                                                                          \
      static const tq_mom::Command kCommand = {reinterpret_cast<void (*)()>(&client_function), description}; \
      return tq_mom::ClientFunction<decltype(&client_function)>::Call(L, kCommand);                        \
    } \
  }

// The method of a Lua function that calls a client function.
#define TQ_COMMAND(lua_name, client_function) \
  TQ_METHOD(lua_name, client_function, TQ_DESCRIBE(lua_name, client_function))

// The same for a function whose last unsigned parameter is declared size_t.
#define TQ_COMMAND_WITH_SIZE(lua_name, client_function) \
  TQ_METHOD(lua_name, client_function, tq_mom::WithSize(TQ_DESCRIBE(lua_name, client_function)))

}  // namespace tq_mom

#endif

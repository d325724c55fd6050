// Binds client functions to Lua: a command is one line, and what it takes and returns follows from the C++ type of its
// client function.
//
//     TQ_COMMAND(lset, tq_mom_lset_sync)
#ifndef TQ_COMMANDS_COMMAND_H
#define TQ_COMMANDS_COMMAND_H

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <utility>

#include "commands/arrays.h"
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
};

struct CommandSite {
  const Description* command;

  [[gnu::cold]] void CheckKinds(lua_State* L) const;
};

struct Command {
  void (*function)();  // the client function
  Description description;
};

// How the checks see a native parameter. There is no default: a type that is not listed does not compile.
template <class T>
extern const Parameter kParameterFor;
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

// One argument of a client function. An array takes two: its elements and their number.
union Slot {
  void* pointer;
  const char* string;
  int integer;
  std::uint32_t unsigned_integer;
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

// Raise the errors of a wrong count and of an argument that cannot be converted. The latter frees the arrays among the
// slots before it; `error` is its text where it has one of its own.
[[noreturn, gnu::cold]] void RejectCount(lua_State* L, const Description& command);
[[noreturn, gnu::cold]] void Reject(lua_State* L, const Description& command, int argument, const char* error,
                                    const Slot* slots);

timeval ToTimeout(double seconds);

// Converts a table to an array and its length, in two slots. Returns null or the text of the error.
inline const char* ReadArray(lua_State* L, int index, Kind kind, Slot* elements) {
  int* count = &elements[1].integer;
  if (kind == Kind::kIntegers) return BuildIntegers(L, index, &elements->pointer, count);
  if (kind == Kind::kScores) return BuildScores(L, index, &elements->pointer, count);
  return BuildMembers(L, index, &elements->pointer, count);
}

// Converts the argument at the index to the slot, or raises its error. The kind is the command's for this argument,
// once more, so that code for one kind can be had by giving it as a constant.
[[gnu::always_inline]] inline void ReadArgument(lua_State* L, const Description& command, int index, Kind kind,
                                                Slot* slots, Slot* slot) {
  const char* error = nullptr;
  bool converted = true;
  switch (kind) {
    case Kind::kHandle:
      converted = Convert(L, index, &slot->pointer, command.parameters[index - 1].type, CommandSite{&command});
      break;
    case Kind::kKey:
      slot->pointer = binding::UntypedPointerAt(L, index);
      break;
    case Kind::kInt:
      converted = binding::ToInt(L, index, &slot->integer);
      break;
    case Kind::kUnsignedInt:
      converted = binding::ToUnsigned(L, index, &slot->unsigned_integer);
      break;
    case Kind::kSize: {
      std::uint32_t size = 0;
      converted = binding::ToUnsigned(L, index, &size);
      slot->size = size;
      break;
    }
    case Kind::kDouble: {
      int is_number;
      slot->number = lua_tonumberx(L, index, &is_number);
      converted = is_number != 0;
      break;
    }
    case Kind::kTimeout:
      slot->timeout = ToTimeout(lua_tonumber(L, index));
      break;
    case Kind::kString:
      slot->string = lua_tostring(L, index);
      converted = slot->string != nullptr || lua_isnil(L, index);
      break;
    default:
      error = ReadArray(L, index, kind, slot);
      converted = error == nullptr;
      break;
  }
  if (!converted) Reject(L, command, index, error, slots);
}

// Converts the Lua arguments from left to right, or raises the error of the first that is wrong. The arrays among the
// slots are the caller's.
void ReadArguments(lua_State* L, const Description& command, Slot* slots);

// The same, with code of its own for each kind: faster by a quarter of a short command, and several KiB larger for all.
template <Kind... kind>
[[gnu::always_inline]] inline void ReadArgumentsOfKinds(lua_State* L, const Description& command, Slot* slots) {
  int index = 0;
  Slot* slot = slots;
  ((ReadArgument(L, command, ++index, kind, slots, slot), slot += IsArray(kind) ? 2 : 1), ...);
}

template <class T>
using Erased = std::conditional_t<std::is_pointer_v<T> && !std::is_same_v<T, const char*>, void*, T>;

// Pushes the handle for a pointer result. That comes before the call, as it may raise an error, which must find nothing
// of the client's to lose.
inline binding::Handle* PushResultHandle(lua_State* L, const Description& command) {
  binding::TypeDescriptor* type = Type(command.result);
  if (command.result == TypeId::_p_tq_obj) return binding::PushEmptyHandle(L, type);  // no class of this module's
  return binding::PushEmptyClassHandle(L, type, ClassName(command.result), binding::PushClassTableOfClosure(L));
}

template <class... T>
struct List {};
template <Kind...>
struct Kinds {};

// Reads the arguments, calls the client function and pushes its results. Pointers are all `void *` here, so that one
// instance serves all client functions of the same shape, whatever record types they take.
template <bool has_out, class Result, class... Argument, Kind... kind, std::size_t... index>
int Invoke(lua_State* L, const Command& command, List<Argument...>, Kinds<kind...>, std::index_sequence<index...>) {
  if (lua_gettop(L) != static_cast<int>(sizeof...(kind))) RejectCount(L, command.description);
  constexpr bool kMakesHandle = std::is_pointer_v<Result>;
  binding::Handle* handle = nullptr;
  if constexpr (kMakesHandle) handle = PushResultHandle(L, command.description);
  Slot slots[sizeof...(Argument)];
  if constexpr (kOptimizeForSize) {
    ReadArguments(L, command.description, slots);
  } else {
    ReadArgumentsOfKinds<kind...>(L, command.description, slots);
  }
  Result result;
  int out;
  if constexpr (has_out) {
    auto function = reinterpret_cast<Result (*)(Argument..., int*)>(command.function);
    result = function(slots[index].template Get<Argument>()..., &out);
  } else {
    auto function = reinterpret_cast<Result (*)(Argument...)>(command.function);
    result = function(slots[index].template Get<Argument>()...);
  }
  const Slot* slot = slots;
  ((IsArray(kind) ? std::free(slot->pointer) : void(), slot += IsArray(kind) ? 2 : 1), ...);
  if constexpr (!kMakesHandle) {
    lua_pushnumber(L, result);
  } else if (result == nullptr) {
    lua_pushnil(L);
  } else {
    handle->pointer = result;
  }
  if constexpr (has_out) lua_pushnumber(L, out);
  return has_out ? 2 : 1;
}

// A client function's type taken apart. A last `int *` is an out-value, which becomes a second result.
template <class Function>
struct ClientFunction;

template <class Result, class... Argument>
struct ClientFunction<Result (*)(Argument...)> {
  static constexpr bool kHasOut = false;
  using ErasedResult = Erased<Result>;
  using Arguments = List<Erased<Argument>...>;
  using ArgumentIndexes = std::index_sequence_for<Argument...>;

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
};
template <class Result, class A, class B, class C>
struct ClientFunction<Result (*)(A, B, C, int*)> : ClientFunction<Result (*)(A, B, C)> {
  static constexpr bool kHasOut = true;
};
template <class Result, class A, class B, class C, class D>
struct ClientFunction<Result (*)(A, B, C, D, int*)> : ClientFunction<Result (*)(A, B, C, D)> {
  static constexpr bool kHasOut = true;
};

template <class Client, class Describe, std::size_t... index>
int CallCommand(lua_State* L, const Command& command, Describe describe, std::index_sequence<index...>) {
  return Invoke<Client::kHasOut, typename Client::ErasedResult>(L, command, typename Client::Arguments(),
                                                                Kinds<describe().parameters[index].kind...>(),
                                                                typename Client::ArgumentIndexes());
}

// `Describe` is a stateless function object that gives the command's description.
template <class Function, class Describe>
int CallCommand(lua_State* L, const Command& command, Describe describe) {
  return CallCommand<ClientFunction<Function>>(L, command, describe, std::make_index_sequence<describe().count>());
}

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

// clang-format off
#define TQ_FUNCTION(lua_name, client_function, description)                                                    \
  tq_mom::Function {                                                                                           \
    #lua_name,                                                                                                 \
    [](lua_State* L) {                                                                                         \
      constexpr auto kDescribe = [] { return description; };                                                   \
      static const tq_mom::Command kCommand = {reinterpret_cast<void (*)()>(&client_function), kDescribe()};   \
      return tq_mom::CallCommand<decltype(&client_function)>(L, kCommand, kDescribe);                          \
    },                                                                                                         \
    {(description).result}                                                                                     \
  }
// clang-format on

// The Lua function that calls a client function.
#define TQ_COMMAND(lua_name, client_function) \
  TQ_FUNCTION(lua_name, client_function, TQ_DESCRIBE(lua_name, client_function))

// The same for a function whose last unsigned parameter is declared size_t.
#define TQ_COMMAND_WITH_SIZE(lua_name, client_function) \
  TQ_FUNCTION(lua_name, client_function, tq_mom::WithSize(TQ_DESCRIBE(lua_name, client_function)))

}  // namespace tq_mom

#endif

// Binds client functions to Lua: a command is one line, and what it takes and returns follows from the C++ type of its
// client function.
//
//     TQ_COMMAND(lset, tq_mom_lset_sync)
#ifndef TQ_COMMANDS_COMMAND_H
#define TQ_COMMANDS_COMMAND_H

#include <cstring>
#include <tuple>
#include <type_traits>

#include "commands/arrays.h"
#include "records/parameters.h"

namespace tq_mom {

// What the shared code knows of a command; the rest is in the type of the code that is shared.
struct Command {
  static constexpr int kMaxParameters = 6;

  const char* names;  // the client function's and, behind its NUL, the Lua function's
  Parameter parameters[kMaxParameters];
  std::uint8_t count;
  TypeId result;  // of a pointer result

  [[gnu::cold]] void CheckKinds(lua_State* L) const;
  [[noreturn, gnu::cold]] void RejectCount(lua_State* L) const;
  [[noreturn, gnu::cold]] void Reject(lua_State* L, int argument, const char* error) const;
};

// One Lua argument each. Read converts it, false when it cannot; Native is what the client function gets for it.
// Pointer types are all `void *` here, so that commands share code whatever record types they take.
struct Scalar {
  const char* error = nullptr;
  void Release() {}
};

struct HandleArgument : Scalar {
  void* value;
  bool Read(lua_State* L, int index, const Command& command) {
    return Convert(L, index, &value, command.parameters[index - 1].type, command);
  }
  std::tuple<void*> Native() const { return {value}; }
};

struct KeyArgument : Scalar {
  void* value;
  bool Read(lua_State* L, int index, const Command&) {
    value = binding::UntypedPointerAt(L, index);
    return true;
  }
  std::tuple<void*> Native() const { return {value}; }
};

struct StringArgument : Scalar {
  const char* value;
  bool Read(lua_State* L, int index, const Command&) {
    value = lua_tostring(L, index);
    return value != nullptr || lua_isnil(L, index);
  }
  std::tuple<const char*> Native() const { return {value}; }
};

struct IntArgument : Scalar {
  int value;
  bool Read(lua_State* L, int index, const Command&) { return binding::ToInt(L, index, &value); }
  std::tuple<int> Native() const { return {value}; }
};

// unsigned int, and size_t where that is another type.
template <class T>
struct UnsignedArgument : Scalar {
  std::uint32_t value;
  bool Read(lua_State* L, int index, const Command&) { return binding::ToUnsigned(L, index, &value); }
  std::tuple<T> Native() const { return {value}; }
};

struct DoubleArgument : Scalar {
  double value;
  bool Read(lua_State* L, int index, const Command&) {
    int is_number;
    value = lua_tonumberx(L, index, &is_number);
    return is_number;
  }
  std::tuple<double> Native() const { return {value}; }
};

struct TimeoutArgument : Scalar {
  timeval value;
  bool Read(lua_State* L, int index, const Command&);
  std::tuple<timeval> Native() const { return {value}; }
};

// A Lua table as a heap block and its length: two native arguments.
template <class T, const char* (*build)(lua_State*, int, T**, int*)>
struct ArrayArgument {
  T* elements = nullptr;
  int count = 0;
  const char* error = nullptr;
  bool Read(lua_State* L, int index, const Command&) {
    error = build(L, index, &elements, &count);
    return error == nullptr;
  }
  void Release() { std::free(elements); }
  std::tuple<T*, int> Native() const { return {elements, count}; }
};

using IntegersArgument = ArrayArgument<std::int32_t, BuildIntegers>;
using ScoresArgument = ArrayArgument<double, BuildScores>;
using MembersArgument = ArrayArgument<void*, BuildMembers>;

// The Lua argument for a native parameter, and how its checks see it.
template <class T>
struct ArgumentFor;
template <class T>
struct ArgumentFor<T*> {
  using Type = HandleArgument;
  static constexpr Parameter kParameter{Kind::kHandle, kTypeOf<T>};
};
template <>
struct ArgumentFor<void*> {
  using Type = KeyArgument;
  static constexpr Parameter kParameter{Kind::kKey};
};
template <>
struct ArgumentFor<tq_obj*> : ArgumentFor<void*> {};
template <>
struct ArgumentFor<const char*> {
  using Type = StringArgument;
  static constexpr Parameter kParameter{Kind::kString};
};
template <>
struct ArgumentFor<int> {
  using Type = IntArgument;
  static constexpr Parameter kParameter{Kind::kInt};
};
template <>
struct ArgumentFor<unsigned int> {
  using Type = UnsignedArgument<unsigned int>;
  static constexpr Parameter kParameter{Kind::kUnsignedInt};
};
template <>
struct ArgumentFor<unsigned long> {
  using Type = UnsignedArgument<unsigned long>;
  static constexpr Parameter kParameter{Kind::kSize};
};
template <>
struct ArgumentFor<double> {
  using Type = DoubleArgument;
  static constexpr Parameter kParameter{Kind::kDouble};
};
template <>
struct ArgumentFor<timeval> {
  using Type = TimeoutArgument;
  static constexpr Parameter kParameter{Kind::kTimeout};
};
struct IntegersFor {
  using Type = IntegersArgument;
  static constexpr Parameter kParameter{Kind::kIntegers};
};
struct ScoresFor {
  using Type = ScoresArgument;
  static constexpr Parameter kParameter{Kind::kScores};
};
struct MembersFor {
  using Type = MembersArgument;
  static constexpr Parameter kParameter{Kind::kMembers};
};

template <class... T>
struct List {};

// Groups native parameters into Lua arguments: an array pointer takes the count behind it along, and a last `int *` is
// an out-value, which becomes a second result.
template <class Done, class... Rest>
struct Group;
template <class... Done>
struct Group<List<Done...>> {
  using Arguments = List<Done...>;
  static constexpr bool kHasOut = false;
};
template <class... Done>
struct Group<List<Done...>, int*> {
  using Arguments = List<Done...>;
  static constexpr bool kHasOut = true;
};
template <class... Done, class... Rest>
struct Group<List<Done...>, std::int32_t*, int, Rest...> : Group<List<Done..., IntegersFor>, Rest...> {};
template <class... Done, class... Rest>
struct Group<List<Done...>, double*, int, Rest...> : Group<List<Done..., ScoresFor>, Rest...> {};
template <class... Done, class... Rest>
struct Group<List<Done...>, void**, int, Rest...> : Group<List<Done..., MembersFor>, Rest...> {};
template <class... Done, class First, class... Rest>
struct Group<List<Done...>, First, Rest...> : Group<List<Done..., ArgumentFor<First>>, Rest...> {};

inline void PushResult(lua_State* L, int result, const Command&) { lua_pushnumber(L, result); }
inline void PushResult(lua_State* L, void* result, const Command& command) {
  binding::PushHandle(L, result, Type(command.result), 0);
}

// Reads the arguments from left to right, calls the client function once and pushes its results. One instance serves
// all client functions of the same shape.
template <class Result, bool kHasOut, class... Argument>
int Invoke(lua_State* L, const Command& command, void (*function)()) {
  if (lua_gettop(L) != static_cast<int>(sizeof...(Argument))) command.RejectCount(L);
  std::tuple<Argument...> arguments;
  return std::apply(
      [&](Argument&... argument) {
        int index = 0;
        if (!(argument.Read(L, ++index, command) && ...)) {
          (argument.Release(), ...);
          const char* errors[] = {argument.error...};
          command.Reject(L, index, errors[index - 1]);
        }
        int out;
        Result result = std::apply(
            [&](auto... native) {
              if constexpr (kHasOut) {
                return reinterpret_cast<Result (*)(decltype(native)..., int*)>(function)(native..., &out);
              } else {
                return reinterpret_cast<Result (*)(decltype(native)...)>(function)(native...);
              }
            },
            std::tuple_cat(argument.Native()...));
        (argument.Release(), ...);
        PushResult(L, result, command);
        if constexpr (kHasOut) lua_pushnumber(L, out);
        return kHasOut ? 2 : 1;
      },
      arguments);
}

template <class Function>
struct Binding;
template <class Result, class... Native>
struct Binding<Result (*)(Native...)> {
  using Grouped = Group<List<>, Native...>;

  template <class... For>
  static constexpr Command Describe(List<For...>, const char* names) {
    Command command{names, {For::kParameter...}, sizeof...(For), TypeId::_p_void};
    if constexpr (std::is_pointer_v<Result>) command.result = kTypeOf<std::remove_pointer_t<Result>>;
    return command;
  }
  static constexpr Command Describe(const char* names) { return Describe(typename Grouped::Arguments(), names); }

  template <class... For>
  static int Call(List<For...>, lua_State* L, const Command& command, void (*function)()) {
    using Erased = std::conditional_t<std::is_pointer_v<Result>, void*, Result>;
    return Invoke<Erased, Grouped::kHasOut, typename For::Type...>(L, command, function);
  }
  static int Call(lua_State* L, const Command& command, Result (*function)(Native...)) {
    return Call(typename Grouped::Arguments(), L, command, reinterpret_cast<void (*)()>(function));
  }
};

// The method of a Lua function that calls a client function.
#define TQ_COMMAND(lua_name, client_function)                                                                    \
  binding::Method {                                                                                              \
#lua_name, [](lua_State* L) {                                                                                  \
      using ClientBinding = tq_mom::Binding<decltype(&client_function)>;                                           \
      static constexpr tq_mom::Command kCommand = ClientBinding::Describe(#client_function "\0" #lua_name);        \
      return ClientBinding::Call(L, kCommand, &client_function);                                                   \
    } \
  }

// The same for a function whose last unsigned parameter is declared size_t, which on some targets is unsigned int.
#define TQ_COMMAND_WITH_SIZE(lua_name, client_function)                                                          \
  binding::Method {                                                                                              \
#lua_name, [](lua_State* L) {                                                                                  \
      using ClientBinding = tq_mom::Binding<decltype(&client_function)>;                                           \
      static constexpr tq_mom::Command kCommand =                                                                  \
          tq_mom::LastUnsignedIsSize(ClientBinding::Describe(#client_function "\0" #lua_name));                    \
      return ClientBinding::Call(L, kCommand, &client_function);                                                   \
    } \
  }

constexpr Command LastUnsignedIsSize(Command command) {
  for (int i = command.count - 1; i >= 0; --i) {
    Kind& kind = command.parameters[i].kind;
    if (kind == Kind::kSize) break;
    if (kind == Kind::kUnsignedInt) {
      kind = Kind::kSize;
      break;
    }
  }
  return command;
}

}  // namespace tq_mom

#endif

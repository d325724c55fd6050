#include "watch/forward.h"

#include <cstdint>
#include <type_traits>
#include <utility>

#include "watch/describe.h"

namespace tq_watch {

#define TQ_WATCH_DESCRIBE(parameters, name) Declaration<decltype(::name)>::Describe(#name, kName_##name),
namespace {
#define TQ_WATCH_NAME(parameters, name) constexpr LuaName kName_##name(#name);
TQ_CLIENT_CALLS(TQ_WATCH_NAME)
#undef TQ_WATCH_NAME
}  // namespace

ClientFunction client_functions[kRowCount];
bool watching;

constexpr Function functions[kRowCount] = {TQ_CLIENT_CALLS(TQ_WATCH_DESCRIBE)};
#undef TQ_WATCH_DESCRIBE

namespace {

template <class T> Value ToValue(T argument) {
  Value value = {};
  if constexpr (std::is_pointer_v<T>) {
    value.pointer = reinterpret_cast<void*>(argument);
  } else if constexpr (std::is_same_v<T, double>) {
    value.number = argument;
  } else if constexpr (std::is_same_v<T, timeval>) {
    value.timeout = argument;
  } else if constexpr (std::is_unsigned_v<T>) {
    value.unsigned_integer = argument;
  } else {
    value.integer = argument;
  }
  return value;
}

template <class T> T FromValue(const Value& value) {
  if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<T>(value.pointer);
  } else if constexpr (std::is_same_v<T, double>) {
    return value.number;
  } else if constexpr (std::is_same_v<T, timeval>) {
    return value.timeout;
  } else if constexpr (std::is_unsigned_v<T>) {
    return static_cast<T>(value.unsigned_integer);
  } else {
    return static_cast<T>(value.integer);
  }
}

// Pointers are all `void *` here, so that functions of one shape share the code.
template <class T> using Erased = std::conditional_t<std::is_pointer_v<T>, void*, T>;

template <class Result, class... Argument> struct Shape {
  static Result Call(Row row, const void* caller, Argument... argument) {
    Value arguments[] = {ToValue(argument)...};
    Value result = {};
    Watch(row, arguments, &result, Invoke, caller);
    return FromValue<Result>(result);
  }

  static void Invoke(ClientFunction function, const Value* arguments, Value* result) {
    Invoke(function, arguments, result, std::index_sequence_for<Argument...>());
  }

 private:
  template <std::size_t... index>
  static void Invoke(ClientFunction function, const Value* arguments, Value* result, std::index_sequence<index...>) {
    auto client = reinterpret_cast<Result (*)(Argument...)>(function);
    *result = ToValue(client(FromValue<Argument>(arguments[index])...));
  }
};

template <class F> struct Signature;

template <class R, class... P> struct Signature<R(P...)> {
  using Result = R;

  [[gnu::always_inline]] static R Forward(Row row, P... argument) {
    if (__builtin_expect(watching, 0)) {
      return static_cast<R>(Shape<Erased<R>, Erased<P>...>::Call(row, __builtin_return_address(0), Erase(argument)...));
    }
    return reinterpret_cast<R (*)(P...)>(client_functions[row])(argument...);
  }

 private:
  template <class T> static Erased<T> Erase(T argument) {
    if constexpr (std::is_pointer_v<T>) {
      return const_cast<void*>(reinterpret_cast<const void*>(argument));
    } else {
      return argument;
    }
  }
};

template <int index, class F> struct ParameterOf;
template <int index, class R, class First, class... P>
struct ParameterOf<index, R(First, P...)> : ParameterOf<index - 1, R(P...)> {};
template <class R, class First, class... P> struct ParameterOf<0, R(First, P...)> { using Type = First; };

}  // namespace
}  // namespace tq_watch

// A function cannot be defined from its type alone, but the number of its parameters is all that is missing.
#define TQ_P(name, i) tq_watch::ParameterOf<i, decltype(name)>::Type p##i
#define TQ_FORWARD(name, parameters, ...)                                                                 \
  extern "C" [[gnu::visibility("default")]] tq_watch::Signature<decltype(name)>::Result name parameters { \
    return tq_watch::Signature<decltype(name)>::Forward(tq_watch::kRow_##name, __VA_ARGS__);              \
  }
#define TQ_FORWARD_1(name) TQ_FORWARD(name, (TQ_P(name, 0)), p0)
#define TQ_FORWARD_2(name) TQ_FORWARD(name, (TQ_P(name, 0), TQ_P(name, 1)), p0, p1)
#define TQ_FORWARD_3(name) TQ_FORWARD(name, (TQ_P(name, 0), TQ_P(name, 1), TQ_P(name, 2)), p0, p1, p2)
#define TQ_FORWARD_4(name) \
  TQ_FORWARD(name, (TQ_P(name, 0), TQ_P(name, 1), TQ_P(name, 2), TQ_P(name, 3)), p0, p1, p2, p3)
#define TQ_FORWARD_5(name) \
  TQ_FORWARD(name, (TQ_P(name, 0), TQ_P(name, 1), TQ_P(name, 2), TQ_P(name, 3), TQ_P(name, 4)), p0, p1, p2, p3, p4)
#define TQ_FORWARD_6(name)                                                                                             \
  TQ_FORWARD(name, (TQ_P(name, 0), TQ_P(name, 1), TQ_P(name, 2), TQ_P(name, 3), TQ_P(name, 4), TQ_P(name, 5)), p0, p1, \
             p2, p3, p4, p5)
#define TQ_FORWARD_7(name)                                                                                             \
  TQ_FORWARD(                                                                                                          \
      name, (TQ_P(name, 0), TQ_P(name, 1), TQ_P(name, 2), TQ_P(name, 3), TQ_P(name, 4), TQ_P(name, 5), TQ_P(name, 6)), \
      p0, p1, p2, p3, p4, p5, p6)
#define TQ_FORWARD_ROW(parameters, name) TQ_FORWARD_##parameters(name)
TQ_CLIENT_CALLS(TQ_FORWARD_ROW)

// A client library that does nothing but write down how it was called. Each function is generated from its declared
// type.
#include <tq_description.h>
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "call_log.h"

namespace recorder {
namespace {

template <class T>
concept OptionRecord = requires(T record) {
  record.flag;
};

template <class T> uintptr_t Address(T pointer) { return reinterpret_cast<uintptr_t>(pointer); }

template <class T> Array<T> CopyArray(const T* elements, int count) {
  Array<T> array{Address(elements), {}};
  if (elements != nullptr && count > 0) array.elements.assign(elements, elements + count);
  return array;
}

template <class T> Option CopyOption(const T& record) {
  Option option{Address(&record), record.flag, std::nullopt, std::nullopt, 0};
  if constexpr (requires { record.milseconds; }) option.milseconds = record.milseconds;
  if constexpr (requires { record.fields; }) {
    option.fields = CopyArray(record.fields, record.field_count);
    option.field_count = record.field_count;
  }
  return option;
}

// An array's element count is the first int after it.
template <size_t kFrom, class Arguments> int CountAfter(const Arguments& arguments) {
  if constexpr (std::is_same_v<std::tuple_element_t<kFrom, Arguments>, int>) {
    return std::get<kFrom>(arguments);
  } else {
    return CountAfter<kFrom + 1>(arguments);
  }
}

template <size_t kIndex, class Arguments> void LogArgument(const Arguments& arguments, int out, Call& call) {
  using T = std::tuple_element_t<kIndex, Arguments>;
  constexpr bool kIsLast = kIndex + 1 == std::tuple_size_v<Arguments>;
  const T value = std::get<kIndex>(arguments);
  if constexpr (std::is_same_v<T, int*> && kIsLast) {
    *value = out;
  } else if constexpr (std::is_same_v<T, int32_t*> || std::is_same_v<T, double*> || std::is_same_v<T, void**>) {
    call.arguments.emplace_back(CopyArray(value, CountAfter<kIndex>(arguments)));
  } else if constexpr (std::is_same_v<T, const char*>) {
    call.arguments.emplace_back(value == nullptr ? Text() : Text(value));
  } else if constexpr (std::is_same_v<T, timeval>) {
    call.arguments.emplace_back(Timeout{value.tv_sec, value.tv_usec});
  } else if constexpr (std::is_floating_point_v<T>) {
    call.arguments.emplace_back(value);
  } else if constexpr (std::is_integral_v<T>) {
    call.arguments.emplace_back(static_cast<int64_t>(value));
  } else {
    call.arguments.emplace_back(static_cast<int64_t>(Address(value)));
    if constexpr (OptionRecord<std::remove_pointer_t<T>>) {
      if (value != nullptr) call.option = CopyOption(*value);
    }
  }
}

// Returns the position of the new entry.
template <class... Args> size_t Log(const char* name, Prescription prescription, Args... args) {
  const std::tuple<Args...> arguments(args...);
  Call call{name, {}, std::nullopt, {}};
  [&]<size_t... kIndexes>(std::index_sequence<kIndexes...>) {
    (LogArgument<kIndexes>(arguments, prescription.out, call), ...);
  }
  (std::index_sequence_for<Args...>());
  Calls().push_back(std::move(call));
  return Calls().size() - 1;
}

// The callback may leave by a long jump, so this frame holds nothing that needs destruction.
void Deliver(size_t position, tq_global_t* g, tq_mom_scan_cb callback, void* context) {
  const auto& messages = NextScan();
  for (const ScanMessage& message : messages) {
    tq_global_t* const global = message.global ? reinterpret_cast<tq_global_t*>(*message.global) : g;
    const int result =
        callback(global, reinterpret_cast<void*>(message.message), message.null_context ? nullptr : context);
    Calls()[position].callback_results.push_back(result);
  }
}

template <size_t kSize> struct Name {
  char text[kSize];
  // NOLINTNEXTLINE(google-explicit-constructor): a literal becomes one.
  constexpr Name(const char (&literal)[kSize]) { std::copy_n(literal, kSize, text); }
};

template <Name kName, class Function> struct Stub;

template <Name kName, class Result, class... Args> struct Stub<kName, Result(Args...)> {
  static Result Call(Args... args) {
    const Prescription prescription = Prescribed(kName.text);
    const size_t position = Log(kName.text, prescription, args...);
    if constexpr ((std::is_same_v<Args, tq_mom_scan_cb> || ...)) {
      const std::tuple<Args...> arguments(args...);
      const auto callback = std::get<tq_mom_scan_cb>(arguments);
      if (callback != nullptr) {
        Deliver(position, std::get<tq_global_t*>(arguments), callback, std::get<sizeof...(Args) - 1>(arguments));
      }
    }
    if constexpr (std::is_pointer_v<Result>) {
      return reinterpret_cast<Result>(static_cast<uintptr_t>(prescription.result));
    } else {
      return static_cast<Result>(prescription.result);
    }
  }
};

}  // namespace
}  // namespace recorder

// A function cannot be defined from its type alone, but a resolver can: the loader binds each name to the stub that the
// template made of the declaration.
#define TQ_DEFINE_STUB(name)                                       \
  extern "C" {                                                     \
  [[gnu::visibility("hidden")]] decltype(&name) Resolve_##name() { \
    return &recorder::Stub<#name, decltype(name)>::Call;           \
  }                                                                \
  decltype(name) name __attribute__((ifunc("Resolve_" #name)));    \
  }

TQ_CLIENT_FUNCTIONS(TQ_DEFINE_STUB)

// The signature of a command: a function type that says what a script sees, held against what the client library
// declares.
//
//     int(Store, int, Key, Integers, Timeout)      takes five arguments, returns a number
//     tq_obj*(Store, int, Key, Out)                takes three, returns a handle and a number
//
// Its words are record pointers (a handle of that type or nil), int, double and those defined here.
#pragma once

#include <sys/time.h>

#include "signature/parameters.h"

namespace tq_mom {

using Store = tq_global_t*;
struct Key;  // a handle of a value object; what it is is not checked
using Unsigned = unsigned int;
struct Size;     // a size_t
struct Timeout;  // seconds; a struct timeval
struct Text;     // a string
// Tables; a pointer to the elements and, after it, an int that counts them.
struct Integers;
struct Scores;
struct Members;
struct ScoresAlone;  // of a client function that takes no count of them; no command has it
struct Callback;     // a function or nil; what it becomes is the command's own affair
struct Anything;     // the same for any value, and a void *
struct AnyRecord;    // a record of whatever type, for shared code
struct Out;          // no argument but a second result, for which the client function takes an int *

// One argument of a client function. An array takes two: its elements and their number.
union Slot {
  void* pointer;
  int integer;
  std::uint32_t unsigned_integer;
  std::size_t size;
  double number;
  timeval timeout;

  template <class T> T Get() const {
    if constexpr (std::is_same_v<T, void*>) return pointer;
    if constexpr (std::is_same_v<T, int>) return integer;
    if constexpr (std::is_same_v<T, std::uint32_t>) return unsigned_integer;
    if constexpr (std::is_same_v<T, std::size_t>) return size;
    if constexpr (std::is_same_v<T, double>) return number;
    if constexpr (std::is_same_v<T, timeval>) return timeout;
  }
};

template <class... A, class... B> List<A..., B...> operator+(List<A...>, List<B...>);
template <class... L> using Join = decltype((List<>() + ... + L()));

// Whether a script sees no difference between the two C types: integers of the same size and sign, whatever they are
// called.
template <class T, class C> constexpr bool IsAlike() {
  if constexpr (std::is_same_v<T, C>) {
    return true;
  } else if constexpr (std::is_integral_v<T> && std::is_enum_v<C>) {
    return sizeof(T) == sizeof(C);
  } else if constexpr (std::is_integral_v<T> && std::is_integral_v<C>) {
    return sizeof(T) == sizeof(C) && std::is_signed_v<T> == std::is_signed_v<C>;
  } else {
    return false;
  }
}

// A native parameter: how it is passed, and which C types it takes.
template <class T> struct Passed {
  using Type = T;
  template <class C> static constexpr bool kTakes = IsAlike<T, C>();
};
// A pointer to one of the types, const or not.
template <class... T> struct PassedPointer {
  using Type = void*;
  template <class C>
  static constexpr bool kTakes = std::is_pointer_v<C> &&
                                 (IsAlike<T, std::remove_const_t<std::remove_pointer_t<C>>>() || ...);
};

// What a word of a signature means: the Lua argument and the native parameters.
template <class Word> struct Meaning {
  static_assert(!std::is_same_v<Word, Word>,
                "This is no word of a command's signature: signature/shape.h has them. An array is Integers, Scores or "
                "Members, which stand for its count, too; a value that the client function stores is Out");
};
template <Parameter parameter, class... Native> struct Means {
  static constexpr bool kIsOut = false;
  static constexpr Parameter kParameter = parameter;
  using Natives = List<Native...>;
};
template <class T>
requires std::is_class_v<T>
struct Meaning<T*> : Means<Parameter::Of(kTypeOf<T>), PassedPointer<T>> {
};
template <> struct Meaning<AnyRecord> : Means<Parameter::Of(kVoid), PassedPointer<void>> {};
template <> struct Meaning<Key> : Means<Parameter::Of(Kind::kKey), PassedPointer<void, tq_obj>> {};
template <> struct Meaning<int> : Means<Parameter::Of(Kind::kInt, "int"), Passed<int>> {};
template <> struct Meaning<Unsigned> : Means<Parameter::Of(Kind::kUnsigned, "unsigned int"), Passed<Unsigned>> {};
template <> struct Meaning<Size> : Means<Parameter::Of(Kind::kSize, "size_t"), Passed<std::size_t>> {};
template <> struct Meaning<double> : Means<Parameter::Of(Kind::kDouble, "double"), Passed<double>> {};
template <> struct Meaning<Timeout> : Means<Parameter::Of(Kind::kTimeout), Passed<timeval>> {};
template <> struct Meaning<Text> : Means<Parameter::Of(Kind::kString, "char *"), PassedPointer<char>> {};
template <> struct Meaning<Integers> : Means<Parameter::Of(Kind::kIntegers), PassedPointer<int>, Passed<int>> {};
template <> struct Meaning<Scores> : Means<Parameter::Of(Kind::kScores), PassedPointer<double>, Passed<int>> {};
template <>
struct Meaning<Members>
    : Means<Parameter::Of(Kind::kMembers), PassedPointer<void*, void const*, tq_obj*>, Passed<int>> {};
template <> struct Meaning<ScoresAlone> : Means<Parameter::Of(Kind::kScores), PassedPointer<double>> {};
template <> struct Meaning<Callback> : Means<Parameter::Of(Kind::kAnything), Passed<tq_mom_scan_cb>> {};
template <> struct Meaning<Anything> : Means<Parameter::Of(Kind::kAnything), PassedPointer<void>> {};
template <> struct Meaning<Out> {
  static constexpr bool kIsOut = true;
  static constexpr Parameter kParameter = Parameter::Of(Kind::kAnything);
  using Natives = List<PassedPointer<int>>;
};

constexpr bool IsArray(Kind kind) { return kind == Kind::kIntegers || kind == Kind::kScores || kind == Kind::kMembers; }

// Whether a client function that takes the C types can be called with the native parameters, and returns what it
// should.
template <class... Native, class... C> constexpr bool TakesCount(List<Native...>, List<C...>) {
  return sizeof...(Native) == sizeof...(C);
}
template <class... Native, class... C> constexpr bool Takes(List<Native...>, List<C...>) {
  return (Native::template kTakes<C> && ...);
}
template <class... Native> List<typename Native::Type...> TypesOf(List<Native...>);
template <class Result>
using PassedResult =
    std::conditional_t<std::is_pointer_v<Result>, PassedPointer<std::remove_pointer_t<Result>>, Passed<Result>>;

template <class Words> inline constexpr bool Starts = false;
template <class... Word> inline constexpr bool Starts<List<Store, int, Word...>> = true;

template <class Signature> struct Shape {
  static_assert(!std::is_same_v<Signature, Signature>, "A command's signature is a function type: Result(Words...)");
};

template <class Result, class... Word> struct Shape<Result(Word...)> {
  static constexpr int kOuts = (0 + ... + int{Meaning<Word>::kIsOut});
  static constexpr int kCount = sizeof...(Word) - kOuts;
  static constexpr bool kHasOut = kOuts != 0;
  static constexpr bool kStarts = Starts<List<Word...>>;
  static constexpr bool kHasArrays = (IsArray(Meaning<Word>::kParameter.kind()) || ...);
  using ResultType = Result;
  using Natives = Join<typename Meaning<Word>::Natives...>;
  using NativeTypes = decltype(TypesOf(Natives()));

  static constexpr bool OutIsLast() {
    bool out[] = {false, Meaning<Word>::kIsOut...};
    for (int i = 0; i < kCount + 1; ++i) {
      if (out[i]) return false;
    }
    return kOuts <= 1;
  }
  // A handle of a type that another module lets stand for the expected one raises errors while it is converted.
  static constexpr bool ArraysComeAfterHandles() {
    bool seen = false;
    Parameters parameters = FindParameters();
    for (int i = 0; i < kCount; ++i) {
      Parameter parameter = parameters[i];
      if (IsArray(parameter.kind())) seen = true;
      if (parameter.kind() == Kind::kHandle && seen) return false;
    }
    return true;
  }
  static constexpr Parameters FindParameters() {
    Parameters parameters{};
    int i = 0;
    ((Meaning<Word>::kIsOut ? void() : void(parameters[i++] = Meaning<Word>::kParameter)), ...);
    return parameters;
  }

  static_assert(std::is_same_v<Result, int> || std::is_pointer_v<Result>,
                "A command returns an int or a pointer to a record");
  static_assert(kCount <= kMaxParameters, "A command has at most kMaxParameters arguments");
  static_assert(OutIsLast(), "Out is the last word of a signature, and there is one");
  static_assert(ArraysComeAfterHandles(), "In a signature, arrays come after all handles of records");

  // Holds the signature against a client function.
  template <class ClientResult, class... C> static constexpr bool Check(ClientResult (*)(C...)) {
    static_assert(TakesCount(Natives(), List<C...>()),
                  "The client library declares this function with another number of parameters than its command's "
                  "signature has");
    if constexpr (TakesCount(Natives(), List<C...>())) {
      static_assert(Takes(Natives(), List<C...>()),
                    "The client library declares this function with a parameter of another type than its command's "
                    "signature has");
    }
    static_assert(PassedResult<Result>::template kTakes<ClientResult>,
                  "The client library declares this function with another result than its command's signature has");
    return true;
  }
};

}  // namespace tq_mom

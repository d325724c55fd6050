// Binds client functions to Lua: a command is one line, with the signature that a script sees.
//
//     TQ_COMMAND(lset, tq_mom_lset_sync, int(Store, int, Key, int))
#ifndef TQ_COMMANDS_COMMAND_H
#define TQ_COMMANDS_COMMAND_H

#include <cstdlib>
#include <utility>

#include "commands/arrays.h"
#include "signature/shape.h"

namespace tq_mom {

// How a client function's name follows from the Lua function's: what is cut off the front of kPrefix and kSuffix.
struct ClientName {
  static constexpr char kPrefix[] = "_tq_mom_";
  static constexpr char kSuffix[] = "_sync";

  static constexpr bool Follows(std::string_view client, std::string_view lua) {
    std::size_t start = client.find(lua);
    if (start == client.npos) return false;
    std::string_view suffix = client.substr(start + lua.size());
    return std::string_view(kPrefix).ends_with(client.substr(0, start)) && (suffix.empty() || suffix == kSuffix);
  }
  constexpr ClientName(std::string_view client, std::string_view lua)
      : cut(static_cast<std::uint8_t>((sizeof(kPrefix) - 1 - client.find(lua)) << 4 |
                                      (client.ends_with(kSuffix) ? 0 : sizeof(kSuffix) - 1))) {}

  const char* prefix() const { return kPrefix + (cut >> 4); }
  const char* suffix() const { return kSuffix + (cut & 15); }

  std::uint8_t cut;  // of the prefix in the upper half
};

// What the shared code knows of a command.
struct CommandRow {
  std::uint16_t name;  // the Lua function's, among the names of all
  ClientName client_name;
  std::uint8_t count : 5;
  bool makes_handle : 1;  // as its first result
  bool has_out : 1;
  bool has_arrays : 1;
  std::uint8_t runner;
  TypeId result;  // of the handles it makes, or kVoid
  Parameter parameters[kMaxParameters];
};

using ClientFunction = void (*)();

// An integer or a pointer. A machine of 32 bits passes and returns all of them alike.
using Word = std::uintptr_t;

// Calls a client function with what is in the slots.
using Caller = Word (*)(lua_State* L, ClientFunction client, const Slot* slots);
// Reads the arguments, calls the client function and pushes its results.
using Invoker = int (*)(lua_State* L, const CommandRow& command, ClientFunction client);

// Raise the errors of a wrong count and of an argument that cannot be converted. The latter frees the arrays among the
// slots before it; `error` is its text where it has one of its own.
[[noreturn, gnu::cold]] void RejectCount(lua_State* L, const CommandRow& command);
[[noreturn, gnu::cold]] void Reject(lua_State* L, const CommandRow& command, int argument, const char* error,
                                    const Slot* slots);
// As the function of signature/parameters.h. No array precedes a handle.
[[gnu::cold]] void* ConvertOther(lua_State* L, const CommandRow& command, int index);

timeval ToTimeout(lua_State* L, int index);

// Converts a table to an array and its length, in two slots. Returns null or the text of the error.
inline const char* ReadArray(lua_State* L, int index, Kind kind, Slot* elements) {
  int* count = &elements[1].integer;
  if (kind == Kind::kIntegers) return BuildIntegers(L, index, &elements->pointer, count);
  if (kind == Kind::kScores) return BuildScores(L, index, &elements->pointer, count);
  return BuildMembers(L, index, &elements->pointer, count);
}

// Converts the argument at the index to the slot, or raises its error. Returns the next slot. Kind and type are the
// command's for this argument, once more, so that code for one kind can be had by giving it as a constant.
[[gnu::always_inline]] inline Slot* ReadArgument(lua_State* L, const CommandRow& command, int index, Kind kind,
                                                 TypeId type, Slot* slots, Slot* slot) {
  const char* error = nullptr;
  bool converted = true;
  switch (kind) {
    case Kind::kHandle:
      if (!ConvertExact(L, index, &slot->pointer, type)) {
        slot->pointer = ConvertOther(L, command, index);
      }
      break;
    case Kind::kKey:
      slot->pointer = binding::UntypedPointerAt(L, index);
      break;
    case Kind::kInt:
      converted = binding::ToInt(L, index, &slot->integer);
      break;
    case Kind::kUnsigned:
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
      slot->timeout = ToTimeout(L, index);
      break;
    case Kind::kString: {
      const char* string = lua_tostring(L, index);
      slot->pointer = const_cast<char*>(string);
      converted = string != nullptr || lua_isnil(L, index);
      break;
    }
    case Kind::kIntegers:
    case Kind::kScores:
    case Kind::kMembers:
      error = ReadArray(L, index, kind, slot++);
      converted = error == nullptr;
      break;
    default:
      break;
  }
  if (!converted) Reject(L, command, index, error, slots);
  return slot + 1;
}

// Converts the Lua arguments from left to right, or raises the error of the first that is wrong. The arrays among the
// slots are the caller's. Returns the end of the slots.
[[gnu::always_inline]] inline Slot* ReadArguments(lua_State* L, const CommandRow& command, Slot* slots) {
  Slot* slot = slots;
  for (int index = 1; index <= command.count; ++index) {
    Parameter parameter = command.parameters[index - 1];
    slot = ReadArgument(L, command, index, parameter.kind(), parameter.type(), slots, slot);
  }
  return slot;
}

// The same, with code of its own for each kind: faster by a quarter of a short command, and several KiB larger for all.
template <class... Word>
[[gnu::always_inline]] inline void ReadWords(lua_State* L, const CommandRow& command, Slot* slots) {
  int index = 0;
  Slot* slot = slots;
  (
      [&] {
        if constexpr (!Meaning<Word>::kIsOut) {
          constexpr Parameter kParameter = Meaning<Word>::kParameter;
          ++index;
          TypeId type = std::is_same_v<Word, Store> ? kParameter.type() : command.parameters[index - 1].type();
          slot = ReadArgument(L, command, index, kParameter.kind(), type, slots, slot);
        }
      }(),
      ...);
}

// Frees the arrays among the slots of the first `count` arguments.
inline void FreeArrays(const CommandRow& command, int count, const Slot* slot) {
  for (int i = 0; i < count; ++i, ++slot) {
    if (IsArray(command.parameters[i].kind())) std::free((slot++)->pointer);
  }
}

// Pushes the handle for a pointer result. That comes before the call, as it may raise an error, which must find nothing
// of the client's to lose.
inline binding::Handle* PushResultHandle(lua_State* L, const CommandRow& command) {
  binding::TypeDescriptor* type = Type(command.result);
  if (command.result == kTypeOf<tq_obj>) return binding::PushEmptyHandle(L, type);  // no class of this module's
  binding::PushClassTableOfClosure(L);
  return binding::PushEmptyClassHandle(L, type, ClassName(command.result), binding::kClassTableOnTop);
}

inline void FillResultHandle(lua_State* L, binding::Handle* handle, void* result) {
  if (result != nullptr) {
    handle->pointer = result;
  } else {
    lua_pushnil(L);
  }
}

// Whether a command has a caller of its own.
template <Caller caller>
constexpr bool kIsOwn =
    !std::is_same_v<std::integral_constant<Caller, caller>, std::integral_constant<Caller, nullptr>>;

// Fast: an invoker for each list of words. Pointers to records are all the same in it, so that one serves all commands
// that differ in record types only; but a runtime comes first in nearly all, so its type is known.
template <Caller caller, class Result, class Words, class Natives>
struct FastInvoker;

template <Caller caller, class Result, class... Word, class... Native>
struct FastInvoker<caller, Result, List<Word...>, List<Native...>> {
  static int Invoke(lua_State* L, const CommandRow& command, ClientFunction client) {
    constexpr int kCount = (0 + ... + int{!Meaning<Word>::kIsOut});
    constexpr bool kHasOut = kCount != sizeof...(Word);
    if (lua_gettop(L) != kCount) RejectCount(L, command);
    binding::Handle* handle = nullptr;
    if constexpr (std::is_pointer_v<Result>) handle = PushResultHandle(L, command);
    Slot slots[sizeof...(Native)];
    ReadWords<Word...>(L, command, slots);
    int out = 0;
    if constexpr (kHasOut) slots[sizeof...(Native) - 1].pointer = &out;
    Result result = Call(L, client, slots, std::index_sequence_for<Native...>());
    const Slot* slot = slots;
    ((IsArray(Meaning<Word>::kParameter.kind()) ? std::free(slot->pointer) : void(),
      slot += Meaning<Word>::Natives::kCount),
     ...);
    if constexpr (std::is_pointer_v<Result>) {
      FillResultHandle(L, handle, result);
    } else {
      binding::PushNumber(L, result);
    }
    if constexpr (kHasOut) binding::PushNumber(L, out);
    return 1 + kHasOut;
  }

  template <std::size_t... i>
  static Result Call(lua_State* L, ClientFunction client, const Slot* slots, std::index_sequence<i...>) {
    if constexpr (kIsOwn<caller>) {
      return static_cast<Result>(caller(L, client, slots));
    } else {
      return reinterpret_cast<Result (*)(Native...)>(client)(slots[i].template Get<Native>()...);
    }
  }
};

// Short: one invoker, and a caller for each list of sizes of the client function's parameters.
[[gnu::always_inline]] inline int InvokeShort(lua_State* L, const CommandRow& command, ClientFunction client,
                                              Caller caller) {
  if (lua_gettop(L) != command.count) RejectCount(L, command);
  binding::Handle* handle = command.makes_handle ? PushResultHandle(L, command) : nullptr;
  Slot slots[2 * kMaxParameters + 1];
  int out;
  ReadArguments(L, command, slots)->pointer = &out;
  Word result = caller(L, client, slots);
  if (command.has_arrays) FreeArrays(command, command.count, slots);
  if (handle != nullptr) {
    FillResultHandle(L, handle, reinterpret_cast<void*>(result));
  } else {
    binding::PushNumber(L, static_cast<int>(result));
  }
  if (command.has_out) binding::PushNumber(L, out);
  return 1 + command.has_out;
}

template <class T>
using SlotType = std::conditional_t<sizeof(int) == sizeof(void*) && sizeof(T) == sizeof(Word), Word, T>;

template <class Result, class... T>
struct ShortCaller {
  static Word Call(lua_State*, ClientFunction client, const Slot* slots) {
    return Call(client, slots, std::index_sequence_for<T...>());
  }
  template <std::size_t... i>
  static Word Call(ClientFunction client, const Slot* slots, std::index_sequence<i...>) {
    Result result = reinterpret_cast<Result (*)(T...)>(client)(slots[i].template Get<T>()...);
    if constexpr (std::is_pointer_v<Result>) {
      return reinterpret_cast<Word>(result);
    } else {
      return static_cast<Word>(result);
    }
  }
};

template <class Word>
using ErasedWord = std::conditional_t<std::is_pointer_v<Word> && !std::is_same_v<Word, Store>, AnyRecord, Word>;

// What runs commands of the shape: an Invoker, or in short code a Caller.
template <Caller caller, class Result, class... Words, class... Native>
constexpr auto RunnerFor(Shape<Result(Words...)>, List<Native...>) {
  using ErasedResult = std::conditional_t<std::is_pointer_v<Result>, void*, Result>;
  if constexpr (!kOptimizeForSize) {
    return &FastInvoker<caller, ErasedResult, List<ErasedWord<Words>...>, List<typename Native::Type...>>::Invoke;
  } else if constexpr (kIsOwn<caller>) {
    return caller;
  } else {
    return static_cast<Caller>(ShortCaller<SlotType<ErasedResult>, SlotType<typename Native::Type>...>::Call);
  }
}
using Runner = std::conditional_t<kOptimizeForSize, Caller, Invoker>;

inline int Run(lua_State* L, const CommandRow& command, ClientFunction client, Invoker invoker) {
  return invoker(L, command, client);
}
inline int Run(lua_State* L, const CommandRow& command, ClientFunction client, Caller caller) {
  return InvokeShort(L, command, client, caller);
}

// One command. A command with a caller of its own says what record it makes handles of.
template <Literal lua, Literal client_name, auto client, class Signature,
          class HandleOf = std::remove_pointer_t<typename Shape<Signature>::ResultType>, Caller caller = nullptr>
struct Command {
  using CommandShape = Shape<Signature>;

  static_assert(CommandShape::Check(client));
  static_assert(ClientName::Follows(client_name, lua),
                "A command lset has a client function tq_mom_lset_sync, _tq_mom_lset_sync, tq_mom_lset or lset");

  static constexpr std::string_view kName = lua;
  static constexpr auto kClient = client;

  static constexpr Runner kRunner = RunnerFor<caller>(CommandShape(), typename CommandShape::Natives());

  static constexpr TypeId HandleType() {
    if constexpr (std::is_same_v<HandleOf, int>) {
      return kVoid;
    } else {
      return kTypeOf<HandleOf>;
    }
  }
  static constexpr CommandRow Row(std::uint16_t name, int place) {
    CommandRow row{name,
                   ClientName(client_name, lua),
                   CommandShape::kCount,
                   std::is_pointer_v<typename CommandShape::ResultType>,
                   CommandShape::kHasOut,
                   CommandShape::kHasArrays,
                   static_cast<std::uint8_t>(place),
                   HandleType(),
                   {}};
    auto parameters = CommandShape::Parameters();
    for (int i = 0; i < CommandShape::kCount; ++i) row.parameters[i] = parameters.list[i];
    return row;
  }
};

#define TQ_COMMAND(lua_name, client_function, ...) \
  tq_mom::Command<#lua_name, #client_function, &client_function, __VA_ARGS__>

}  // namespace tq_mom

#endif

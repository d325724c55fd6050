// Binds client functions to Lua: a command is one line, with the signature that a script sees.
//
//     TQ_COMMAND(lset, tq_mom_lset_sync, int(Store, int, Key, int))
#pragma once

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
  static constexpr ClientName Of(std::string_view client, std::string_view lua) {
    return {static_cast<std::uint8_t>((sizeof(kPrefix) - 1 - client.find(lua)) << 4 |
                                      (client.ends_with(kSuffix) ? 0 : sizeof(kSuffix) - 1))};
  }

  const char* prefix() const { return kPrefix + (cut >> 4); }
  const char* suffix() const { return kSuffix + (cut & 15); }

  std::uint8_t cut;  // of the prefix in the upper half
};

// What the shared code knows of a command.
struct CommandRow {
  std::uint16_t name;  // the Lua function's, among the names of all
  ClientName client_name;
  std::uint8_t count : 4;
  bool starts : 1;        // with a runtime and a database
  bool makes_handle : 1;  // as its first result
  bool has_out : 1;
  bool has_arrays : 1;
  std::uint8_t invoker;  // its place among the different ones
  TypeId result;         // of the handles it makes, or kVoid
  Parameters parameters;
};

using ClientFunction = void (*)();

// A row with its client function.
struct BoundCommand {
  CommandRow row;
  ClientFunction client;
};

// Reads the arguments, calls the client function and pushes its results.
using Invoker = int (*)(lua_State* L, const BoundCommand& bound);

// An integer or a pointer. A machine of 32 bits passes and returns all of them alike.
using Word = std::uintptr_t;
// Calls a client function with what is in the slots.
using Caller = Word (*)(ClientFunction client, const Slot* slots);

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
    case Kind::kKey: slot->pointer = binding::UntypedPointerAt(L, index); break;
    case Kind::kInt: converted = binding::ToInt(L, index, &slot->integer); break;
    case Kind::kUnsigned: converted = binding::ToUnsigned(L, index, &slot->unsigned_integer); break;
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
    case Kind::kTimeout: slot->timeout = ToTimeout(L, index); break;
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
    default: break;
  }
  if (!converted) Reject(L, command, index, error, slots);
  return slot + 1;
}

// The same for the word of a signature.
template <class Word>
[[gnu::always_inline]] inline Slot* ReadWord(lua_State* L, const CommandRow& command, int index, Slot* slots,
                                             Slot* slot) {
  constexpr Parameter kParameter = Meaning<Word>::kParameter;
  return ReadArgument(L, command, index, kParameter.kind(), command.parameters[index - 1].type(), slots, slot);
}

// Reads the runtime and the database with which most commands start.
inline constexpr int kStartWords = 2;
inline void ReadStart(lua_State* L, const CommandRow& command, Slot* slots) {
  ReadArgument(L, command, 1, Kind::kHandle, kTypeOf<tq_global_t>, slots, &slots[0]);
  ReadArgument(L, command, 2, Kind::kInt, kVoid, slots, &slots[1]);
}

// Converts the Lua arguments from left to right, or raises the error of the first that is wrong. The arrays among the
// slots are the caller's. Returns the end of the slots.
Slot* ReadArguments(lua_State* L, const CommandRow& command, Slot* slots);

// Frees the arrays among the slots of the first `count` arguments.
inline void FreeArrays(const CommandRow& command, int count, const Slot* slot) {
  for (int i = 0; i < count; ++i, ++slot) {
    if (IsArray(command.parameters[i].kind())) std::free((slot++)->pointer);
  }
}

// Pushes the handle for a pointer result. That comes before the call, as it may raise an error, which must find nothing
// of the client's to lose.
inline binding::Handle* PushResultHandle(lua_State* L, const CommandRow& command) {
  bool has_class = command.result != kTypeOf<tq_obj>;
  if (has_class) binding::PushClassTableOfClosure(L);
  return binding::PushEmptyClassHandle(L, Type(command.result), ClassName(command.result), binding::kClassTableOnTop);
}

inline void FillResultHandle(lua_State* L, binding::Handle* handle, void* result) {
  if (result != nullptr) {
    handle->pointer = result;
  } else {
    lua_pushnil(L);
  }
}

template <class Result, class... Native, std::size_t... i>
[[gnu::always_inline]] inline Result CallClient(ClientFunction client, const Slot* slots, List<Native...>,
                                                std::index_sequence<i...>) {
  return reinterpret_cast<Result (*)(Native...)>(client)(slots[i].template Get<Native>()...);
}

// Fast: an invoker for each signature. Pointers to records are all the same in it, so that one serves all commands that
// differ in record types only; but nearly all start with a runtime, whose type is known.
template <class Result, class... Word> static int InvokeFast(lua_State* L, const BoundCommand& bound) {
  const CommandRow& command = bound.row;
  using Form = Shape<Result(Word...)>;
  constexpr int kSlots = Form::Natives::kCount;
  constexpr int kStart = Form::kStarts ? kStartWords : 0;
  if (lua_gettop(L) != Form::kCount) RejectCount(L, command);
  binding::Handle* handle = nullptr;
  if constexpr (std::is_pointer_v<Result>) handle = PushResultHandle(L, command);
  Slot slots[kSlots];
  if constexpr (Form::kStarts) ReadStart(L, command, slots);
  Slot* slot = slots + kStart;
  int index = 0;
  ((slot = ++index <= kStart || Meaning<Word>::kIsOut ? slot : ReadWord<Word>(L, command, index, slots, slot)), ...);
  int out = 0;
  if constexpr (Form::kHasOut) slot->pointer = &out;
  auto result =
      CallClient<Result>(bound.client, slots, typename Form::NativeTypes(), std::make_index_sequence<kSlots>());
  slot = slots;
  ((IsArray(Meaning<Word>::kParameter.kind()) ? std::free(slot->pointer) : void(),
    slot += Meaning<Word>::Natives::kCount),
   ...);
  if constexpr (std::is_pointer_v<Result>) {
    FillResultHandle(L, handle, result);
  } else {
    binding::PushNumber(L, result);
  }
  if constexpr (Form::kHasOut) binding::PushNumber(L, out);
  return 1 + Form::kHasOut;
}

// Short: one invoker, and a caller for each list of sizes of the client function's parameters. What is static here
// takes no entry in the address table.
int InvokeShort(lua_State* L, const BoundCommand& bound, Caller caller);

template <class T>
using SlotType = std::conditional_t<sizeof(int) == sizeof(void*) && sizeof(T) == sizeof(Word), Word, T>;

template <class Result, class... Native> static Word CallShort(ClientFunction client, const Slot* slots) {
  auto result = CallClient<Result>(client, slots, List<Native...>(), std::index_sequence_for<Native...>());
  if constexpr (std::is_pointer_v<Result>) {
    return reinterpret_cast<Word>(result);
  } else {
    return static_cast<Word>(result);
  }
}
template <class Result, class... Native> static int InvokeShort(lua_State* L, const BoundCommand& bound) {
  return InvokeShort(L, bound, CallShort<Result, Native...>);
}

// Short code all the same has fast invokers for what scripts call most.
template <class Signature> inline constexpr bool kIsFrequent = false;
template <class Result> inline constexpr bool kIsFrequent<Result(Store, int, Key)> = true;
template <class Result> inline constexpr bool kIsFrequent<Result(Store, int, AnyRecord, Key)> = true;
template <> inline constexpr bool kIsFrequent<int(Store, int, Key, Integers)> = true;
template <> inline constexpr bool kIsFrequent<int(Store, int, Scores, Members)> = true;

template <class Word>
using ErasedWord = std::conditional_t<std::is_pointer_v<Word> && !std::is_same_v<Word, Store>, AnyRecord, Word>;

// What runs commands of the shape.
template <class Result, class... Word, class... Native>
constexpr Invoker InvokerFor(Shape<Result(Word...)>, List<Native...>) {
  using ErasedResult = std::conditional_t<std::is_pointer_v<Result>, void*, Result>;
  if constexpr (!kOptimizeForSize || kIsFrequent<ErasedResult(ErasedWord<Word>...)>) {
    return InvokeFast<ErasedResult, ErasedWord<Word>...>;
  } else {
    return InvokeShort<SlotType<ErasedResult>, SlotType<Native>...>;
  }
}

// One command. One with an invoker of its own says what record it makes handles of.
template <Literal lua, Literal client_name, auto client, class Signature,
          class HandleOf = std::remove_pointer_t<typename Shape<Signature>::ResultType>,
          Invoker invoker = InvokerFor(Shape<Signature>(), typename Shape<Signature>::NativeTypes())>
struct Command {
  using Form = Shape<Signature>;

  static_assert(Form::Check(client));
  static_assert(ClientName::Follows(client_name, lua),
                "A command lset has a client function tq_mom_lset_sync, _tq_mom_lset_sync, tq_mom_lset or lset");

  static constexpr std::string_view kName = lua;
  static constexpr auto kClient = client;
  using InvokerType = std::integral_constant<Invoker, invoker>;

  static constexpr TypeId HandleType() {
    if constexpr (std::is_same_v<HandleOf, int>) {
      return kVoid;
    } else {
      return kTypeOf<HandleOf>;
    }
  }
  static constexpr CommandRow Row(std::uint16_t name, int invoker_place) {
    return {name,
            ClientName::Of(client_name, lua),
            Form::kCount,
            Form::kStarts,
            std::is_pointer_v<typename Form::ResultType>,
            Form::kHasOut,
            Form::kHasArrays,
            static_cast<std::uint8_t>(invoker_place),
            HandleType(),
            Form::FindParameters()};
  }
};

#define TQ_COMMAND(lua_name, client_function, ...) \
  tq_mom::Command<#lua_name, #client_function, &client_function, __VA_ARGS__>

// Sets all commands as fields of the table at the stack top.
void AddCommands(lua_State* L);
int CountCommands();

// The Lua function's name.
const char* CommandName(const CommandRow& command);

}  // namespace tq_mom

// Describes a client function from its declaration.
#pragma once

#include <tq_mom/tq_mom.h>

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "watch/call.h"

namespace tq_watch {

// The Lua function's name follows from the client function's: tq_mom_lset_sync is lset.
struct LuaName {
  char text[32] = {};

  explicit consteval LuaName(std::string_view client) {
    constexpr std::string_view kPrefix = "tq_mom_";
    constexpr std::string_view kSuffix = "_sync";
    if (client.starts_with(kPrefix)) client.remove_prefix(kPrefix.size());
    if (client.ends_with(kSuffix)) client.remove_suffix(kSuffix.size());
    client.copy(text, sizeof text - 1);
  }
};

template <class T>
concept Option = requires(T record) {
  record.flag;
};

template <class T>
concept Result = requires(T record) {
  record.error_code;
};

#define TQ_WATCH_MEMBER(type, name) \
  { #name, Member::type, offsetof(T, name), 0 }
#define TQ_WATCH_ARRAY(type, name, length) \
  { #name, Member::type, offsetof(T, name), offsetof(T, length) }

template <class T> consteval OptionType DescribeOption() {
  OptionType option = {};
  int count = 0;
  option.members[count++] = TQ_WATCH_MEMBER(kInt, flag);
  if constexpr (requires(T record) { record.milseconds; }) option.members[count++] = TQ_WATCH_MEMBER(kInt, milseconds);
  if constexpr (requires(T record) { record.fields; }) {
    option.members[count++] = TQ_WATCH_ARRAY(kFields, fields, field_count);
  }
  return option;
}

template <class T> consteval OwnedType DescribeResult(const char* name) {
  OwnedType result = {name, sizeof(T), offsetof(T, error_code), {}};
  int count = 0;
  if constexpr (requires(T record) { record.value_array; }) {
    result.members[count++] = TQ_WATCH_ARRAY(kObjects, value_array, count);
  } else if constexpr (requires(T record) { record.field_tag; }) {
    result.members[count++] = TQ_WATCH_MEMBER(kObject, value);
    result.members[count++] = TQ_WATCH_ARRAY(kTags, field_tag, field_tag_count);
    result.members[count++] = TQ_WATCH_ARRAY(kTags, field_change_tag, field_change_tag_count);
  } else if constexpr (requires(T record) { record.exist; }) {
    result.members[count++] = TQ_WATCH_MEMBER(kDouble, score);
    result.members[count++] = TQ_WATCH_MEMBER(kInt, exist);
  } else if constexpr (requires(T record) { record.count; }) {
    result.members[count++] = TQ_WATCH_ARRAY(kObjects, value, count);
    result.members[count++] = TQ_WATCH_ARRAY(kScores, score, count);
  } else if constexpr (std::is_pointer_v<decltype(T::value)>) {
    result.members[count++] = TQ_WATCH_MEMBER(kObject, value);
  } else {
    result.members[count++] = TQ_WATCH_MEMBER(kInt64, value);
  }
  return result;
}

#undef TQ_WATCH_MEMBER
#undef TQ_WATCH_ARRAY

template <class T> inline constexpr OptionType kOptionType = DescribeOption<T>();

// What client functions hand out. There is no default: what is not listed is not released by its owner.
template <class T> inline constexpr OwnedType kOwnedType = {};
template <> inline constexpr OwnedType kOwnedType<tq_global_t> = {"tq_global_t", 0, 0, {}};
template <> inline constexpr OwnedType kOwnedType<tq_obj> = {"tq_obj", 0, 0, {}};
#define TQ_WATCH_RESULT(name) template <> inline constexpr OwnedType kOwnedType<name> = DescribeResult<name>(#name)
TQ_WATCH_RESULT(tq_mom_get_res_t);
TQ_WATCH_RESULT(tq_mom_incr_res_t);
TQ_WATCH_RESULT(tq_mom_hash_res_t);
TQ_WATCH_RESULT(tq_mom_lrange_res_t);
TQ_WATCH_RESULT(tq_mom_smembers_res_t);
TQ_WATCH_RESULT(tq_mom_zrange_res_t);
TQ_WATCH_RESULT(tq_mom_zrangebyscore_res_t);
TQ_WATCH_RESULT(tq_mom_zscore_res_t);
#undef TQ_WATCH_RESULT

template <class T> consteval const OwnedType* OwnedTypeOf() {
  static_assert(!Result<T> || kOwnedType<T>.name != nullptr, "list this result above");
  return kOwnedType<T>.name != nullptr ? &kOwnedType<T> : nullptr;
}

// The kind of one parameter, from its type, its place and the types beside it.
template <class T> consteval Kind KindOf(int index, int count, Kind previous) {
  if constexpr (std::is_same_v<T, tq_global_t*>) return Kind::kRuntime;
  if constexpr (std::is_same_v<T, int>) {
    if (previous == Kind::kIntegers || previous == Kind::kScores || previous == Kind::kMembers) return Kind::kLength;
    // What connects a runtime has a number, too, but nothing after it.
    return previous == Kind::kRuntime && index + 1 < count ? Kind::kDatabase : Kind::kInteger;
  }
  if constexpr (std::is_same_v<T, int*>) return index + 1 == count ? Kind::kOut : Kind::kIntegers;
  if constexpr (std::is_same_v<T, double*>) return Kind::kScores;
  if constexpr (std::is_same_v<T, void**>) return Kind::kMembers;
  if constexpr (std::is_same_v<T, double>) return Kind::kNumber;
  if constexpr (std::is_same_v<T, timeval>) return Kind::kTimeout;
  if constexpr (std::is_same_v<T, const char*>) return Kind::kText;
  if constexpr (std::is_same_v<T, tq_mom_scan_cb>) return Kind::kCallback;
  if constexpr (std::is_same_v<T, void*> || std::is_same_v<T, tq_obj*>) {
    return previous == Kind::kCallback ? Kind::kContext : Kind::kObject;
  }
  if constexpr (std::is_unsigned_v<T>) return Kind::kUnsigned;
  if constexpr (std::is_pointer_v<T>) return Option<std::remove_pointer_t<T>> ? Kind::kOption : Kind::kReleased;
}

template <class F> struct Declaration;

template <class R, class... P> struct Declaration<R(P...)> {
  static constexpr int kCount = sizeof...(P);

  static consteval Function Describe(const char* client_name, const LuaName& name) {
    static_assert(kCount <= kMaxParameters);
    Function function = {
        client_name, name.text, Role::kCommand, std::is_pointer_v<R> ? ResultKind::kPointer : ResultKind::kStatus,
        kCount,      {},        nullptr,        nullptr};
    int index = 0;
    Kind previous = Kind::kContext;
    ((previous = function.parameters[index] = KindOf<P>(index, kCount, previous), ++index), ...);
    ((function.option = OptionOf<P>(function.option)), ...);
    if constexpr (std::is_pointer_v<R>) {
      function.owned = OwnedTypeOf<std::remove_pointer_t<R>>();
    } else if constexpr (kCount == 1) {
      DescribeRelease<P...>(&function);
    }
    return function;
  }

 private:
  template <class T> static consteval const OptionType* OptionOf(const OptionType* other) {
    using Record = std::remove_pointer_t<T>;
    if constexpr (std::is_pointer_v<T> && Option<Record>) return &kOptionType<Record>;
    return other;
  }

  // A function that takes nothing but what another handed out releases it; of those that take a runtime one does.
  template <class T> static consteval void DescribeRelease(Function* function) {
    using Record = std::remove_pointer_t<T>;
    if (std::is_same_v<Record, tq_global_t> && std::string_view(function->name) != "tq_global_finish") return;
    function->role = Role::kRelease;
    function->owned = OwnedTypeOf<Record>();
    if (!std::is_same_v<Record, tq_global_t>) function->parameters[0] = Kind::kReleased;
  }
};

}  // namespace tq_watch

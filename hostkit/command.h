// A command: what every client function does around its one call of the engine.
//
//   int tq_mom_lset_sync(tq_global_t* g, int db, void* key, int index) {
//     return Write({g, db, key}, &Engine::ListSet, index, kValue);
//   }
//
// It checks the runtime, its connection, the database, the key, the command's own arguments (Why says what is wrong
// with one) and, for a write, that the database takes writes, in this order; then it calls the engine's method with
// each argument as the method takes it (Passed).
#pragma once

#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"
#include "hostkit/tq_obj.h"

namespace hostkit {

// What a command works on.
struct Target {
  tq_global_t* g;
  int db;
  const void* key;  // any pointer
  TimeLimit limit = {};
};

enum class Access { kRead, kWrite };

struct Command {
  // Returns a status code.
  int OpenRuntime(tq_global_t* g);
  template <typename... Arguments> int Open(const Target& target, Access access, const Arguments&... arguments);
  // The checks of Open but for the command's own arguments.
  int OpenKey(const Target& target);
  // For a write, the last check.
  int Enter(Access access);

  // Calls the engine. The arguments have been checked.
  template <typename... Parameters, typename... Arguments>
  Status Call(Status (Engine::*method)(const Request&, Parameters...), const Arguments&... arguments) const;
  // Ends the command with a status code, or with the number on success.
  int Result(Status status, std::int64_t number) const noexcept;
  // Runs the rest of the command, which returns its result, and keeps what there is to say about a failure.
  template <typename Body> int Run(Body body) const noexcept;

  tq_mom_client_s* client = nullptr;
  const tq_obj* object = nullptr;
  Request request = {};
};

static_assert(std::is_trivially_destructible_v<Command>, "a callback may leave past it");

// The value of the key object.
struct ValueOfKey {};
inline constexpr ValueOfKey kValue;

// The value of another object.
struct ValueOf {
  const void* object;  // any pointer
};

// Field numbers as the client functions list them; empty for null or a count that is not positive.
inline std::span<const FieldTag> TagsOf(const std::int32_t* tags, int count) {
  if (tags == nullptr || count <= 0) return {};
  // The same number, without its sign.
  return {reinterpret_cast<const FieldTag*>(tags), static_cast<std::size_t>(count)};
}

// 0 for before, 1 for after.
struct Side {
  unsigned int where;
};

// Milliseconds, which must be positive.
struct TimeToLive {
  int milliseconds;
};

// The fields of the key object that are listed, all of which must be there.
class ListedFields {
 public:
  ListedFields(const std::int32_t* tags, int count) : tags_(TagsOf(tags, count)) {}

  const char* Why(const tq_obj& object) const;
  // Throws std::bad_alloc.
  std::vector<FieldView> Of(const tq_obj& object) const;

 private:
  std::span<const FieldTag> tags_;
};

// Why an argument is refused; null if it is not.
inline const char* Why(const Command& command, ValueOfKey /*value*/) {
  return command.object->value ? nullptr : "the key object has no value";
}
inline const char* Why(const Command& /*command*/, ValueOf value) {
  const tq_obj* object = LiveObject(value.object);
  return object != nullptr && object->value ? nullptr : "the second object is no value object with a value";
}
inline const char* Why(const Command& /*command*/, Side side) {
  return side.where <= 1 ? nullptr : "the place is neither 0 nor 1";
}
inline const char* Why(const Command& /*command*/, double bound) {
  return std::isnan(bound) ? "a score is not a number" : nullptr;
}
inline const char* Why(const Command& /*command*/, std::span<const FieldTag> tags) {
  return tags.empty() ? "there are no fields, or one has a number beyond 32 bits" : nullptr;
}
inline const char* Why(const Command& /*command*/, TimeToLive time) {
  return time.milliseconds > 0 ? nullptr : "the time is not positive";
}
inline const char* Why(const Command& command, const ListedFields& fields) { return fields.Why(*command.object); }
template <typename Argument> const char* Why(const Command& /*command*/, const Argument& /*argument*/) {
  return nullptr;
}

// The argument as the engine takes it.
inline std::string_view Passed(const Command& command, ValueOfKey /*value*/) { return *command.object->value; }
inline std::string_view Passed(const Command& /*command*/, ValueOf value) { return *LiveObject(value.object)->value; }
inline Where Passed(const Command& /*command*/, Side side) { return side.where == 0 ? Where::kBefore : Where::kAfter; }
inline std::uint32_t Passed(const Command& /*command*/, TimeToLive time) {
  return static_cast<std::uint32_t>(time.milliseconds);
}
inline std::vector<FieldView> Passed(const Command& command, const ListedFields& fields) {
  return fields.Of(*command.object);
}
template <typename Argument> const Argument& Passed(const Command& /*command*/, const Argument& argument) {
  return argument;
}

template <typename... Arguments> int Command::Open(const Target& target, Access access, const Arguments&... arguments) {
  if (const int status = OpenKey(target); status != TQ_MOM_OK) return status;
  const char* why = nullptr;
  static_cast<void>(((why = Why(*this, arguments)) || ...));
  return why != nullptr ? client->Refuse(TQ_MOM_INPUT_ERR, why) : Enter(access);
}

template <typename... Parameters, typename... Arguments>
Status Command::Call(Status (Engine::*method)(const Request&, Parameters...), const Arguments&... arguments) const {
  return (client->engine.get()->*method)(request, Passed(*this, arguments)...);
}

template <typename Body> int Command::Run(Body body) const noexcept {
  return Guarded(body, [this](int status, const char* why) { return client->Refuse(status, why); });
}

// The type behind a method's last parameter, if it is an out-parameter.
template <typename Method> struct OutOf;
template <typename... Parameters> struct OutOf<Status (Engine::*)(const Request&, Parameters...)> {
  using Last = std::tuple_element_t<sizeof...(Parameters), std::tuple<const Request&, Parameters...>>;
  using Type = std::conditional_t<std::is_pointer_v<Last>, std::remove_pointer_t<Last>, void>;
};
template <typename Method> using Out = typename OutOf<Method>::Type;

// Gives a result record the elements that the method gave, in their order.
inline constexpr auto FillElements = [](auto* result, const Command& command, std::vector<std::string>&& elements) {
  for (std::string& element : elements) result->OwnElement(command.request.name, std::move(element));
  result->value_array = result->pointers.data();
  result->count = result->pointers.size();
};

// Runs a command whose result is a status code, or the number that the method gives.
template <typename Method, typename... Arguments>
int RunCommand(const Target& target, Access access, Method method, const Arguments&... arguments) {
  Command command;
  if (const int status = command.Open(target, access, arguments...); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    if constexpr (std::is_void_v<Out<Method>>) {
      return command.client->Finish(command.Call(method, arguments...));
    } else {
      Out<Method> out = {};
      Status status = command.Call(method, arguments..., &out);
      return command.Result(std::move(status), out);
    }
  });
}

template <typename Method, typename... Arguments>
int Read(const Target& target, Method method, const Arguments&... arguments) {
  return RunCommand(target, Access::kRead, method, arguments...);
}

template <typename Method, typename... Arguments>
int Write(const Target& target, Method method, const Arguments&... arguments) {
  return RunCommand(target, Access::kWrite, method, arguments...);
}

// Runs a command whose result is a record, which fill takes from what the method gives:
// fill(Result<Record>*, const Command&, Out<Method>). A result that could not be filled carries the status alone; null
// when there is no memory.
template <typename Record, typename Method, typename Fill, typename... Arguments>
Record* RunRecord(const Target& target, Access access, Method method, Fill fill, const Arguments&... arguments) {
  Command command;
  const int refused = command.Open(target, access, arguments...);
  return MakeResult<Record>(command.client, [&](auto* result) {
    if (refused != TQ_MOM_OK) return refused;
    Out<Method> out = {};
    Status status = command.Call(method, arguments..., &out);
    // A number can have something to say beside a failure: the sum that incr could not reach.
    if (status.ok() || std::is_arithmetic_v<Out<Method>>) fill(result, command, std::move(out));
    return command.client->Finish(std::move(status));
  });
}

}  // namespace hostkit

// An engine around another one: forwards everything. The base of engines that add one thing, say a failure, a delay or
// a record of the calls.
#pragma once

#include <memory>
#include <utility>

#include "hostkit/engine.h"

namespace hostkit {

class EngineWrapper : public Engine {
 public:
  explicit EngineWrapper(std::unique_ptr<Engine> inner) : inner_(std::move(inner)) {}

  bool Supports(Feature feature) const override { return inner_->Supports(feature); }
  Status Connect(bool cluster, TimeLimit limit) override {
    return Forward("Connect", &Engine::Connect, cluster, limit);
  }
  Status Save(TimeLimit limit) override { return Forward("Save", &Engine::Save, limit); }
  Status Summarize(const Request& request, DatabaseSummary* summary) override {
    return Forward("Summarize", &Engine::Summarize, request, summary);
  }
  Status Describe(TimeLimit limit, std::string* lines) override {
    return Forward("Describe", &Engine::Describe, limit, lines);
  }
  Status FreezeClock() override { return Forward("FreezeClock", &Engine::FreezeClock); }
  Status AdvanceClock(std::int64_t milliseconds) override {
    return Forward("AdvanceClock", &Engine::AdvanceClock, milliseconds);
  }
  Status ThawClock() override { return Forward("ThawClock", &Engine::ThawClock); }
  Status Delete(const Request& request, bool* deleted) override {
    return Forward("Delete", &Engine::Delete, request, deleted);
  }
  Status Exists(const Request& request, bool* exists) override {
    return Forward("Exists", &Engine::Exists, request, exists);
  }
  Status Inspect(const Request& request, KeyState* state) override {
    return Forward("Inspect", &Engine::Inspect, request, state);
  }
  Status Expire(const Request& request, std::uint32_t milliseconds, bool* exists) override {
    return Forward("Expire", &Engine::Expire, request, milliseconds, exists);
  }
  Status Persist(const Request& request, std::uint32_t within, bool* persisted) override {
    return Forward("Persist", &Engine::Persist, request, within, persisted);
  }
  Status Get(const Request& request, std::optional<std::string>* value) override {
    return Forward("Get", &Engine::Get, request, value);
  }
  Status Set(const Request& request, std::string_view value,
             std::optional<std::uint32_t> expire_milliseconds) override {
    return Forward("Set", &Engine::Set, request, value, expire_milliseconds);
  }
  Status SetIfAbsent(const Request& request, std::string_view value, bool* stored) override {
    return Forward("SetIfAbsent", &Engine::SetIfAbsent, request, value, stored);
  }
  Status Increment(const Request& request, std::int64_t* value) override {
    return Forward("Increment", &Engine::Increment, request, value);
  }
  Status HashSet(const Request& request, std::span<const FieldView> fields) override {
    return Forward("HashSet", &Engine::HashSet, request, fields);
  }
  Status HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) override {
    return Forward("HashSetIfAbsent", &Engine::HashSetIfAbsent, request, fields, written);
  }
  Status HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* hash) override {
    return Forward("HashGet", &Engine::HashGet, request, tags, hash);
  }
  Status HashGetAll(const Request& request, HashContents* hash) override {
    return Forward("HashGetAll", &Engine::HashGetAll, request, hash);
  }
  Status HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                    std::int64_t* count) override {
    return Forward("HashExpire", &Engine::HashExpire, request, tags, milliseconds, count);
  }
  Status HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) override {
    return Forward("HashRemaining", &Engine::HashRemaining, request, fields);
  }
  Status ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) override {
    return Forward("ListPush", &Engine::ListPush, request, end, value, length);
  }
  Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) override {
    return Forward("ListPop", &Engine::ListPop, request, end, value, left);
  }
  Status ListLength(const Request& request, std::int64_t* length) override {
    return Forward("ListLength", &Engine::ListLength, request, length);
  }
  Status ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                   std::vector<std::string>* values) override {
    return Forward("ListRange", &Engine::ListRange, request, start, stop, values);
  }
  Status ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                    std::int64_t* length) override {
    return Forward("ListInsert", &Engine::ListInsert, request, pivot, where, value, length);
  }
  Status ListSet(const Request& request, std::int64_t position, std::string_view value) override {
    return Forward("ListSet", &Engine::ListSet, request, position, value);
  }
  Status ListRemove(const Request& request, std::uint64_t most, std::string_view value,
                    std::int64_t* removed) override {
    return Forward("ListRemove", &Engine::ListRemove, request, most, value, removed);
  }
  Status SetAdd(const Request& request, std::string_view member, bool* added) override {
    return Forward("SetAdd", &Engine::SetAdd, request, member, added);
  }
  Status SetRemove(const Request& request, std::string_view member, bool* removed) override {
    return Forward("SetRemove", &Engine::SetRemove, request, member, removed);
  }
  Status SetContains(const Request& request, std::string_view member, bool* contained) override {
    return Forward("SetContains", &Engine::SetContains, request, member, contained);
  }
  Status SetSize(const Request& request, std::int64_t* size) override {
    return Forward("SetSize", &Engine::SetSize, request, size);
  }
  Status SetMembers(const Request& request, std::vector<std::string>* members) override {
    return Forward("SetMembers", &Engine::SetMembers, request, members);
  }
  Status SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) override {
    return Forward("SortedAdd", &Engine::SortedAdd, request, members, added);
  }
  Status SortedRemove(const Request& request, std::span<const std::string_view> members,
                      std::int64_t* removed) override {
    return Forward("SortedRemove", &Engine::SortedRemove, request, members, removed);
  }
  Status SortedSize(const Request& request, std::int64_t* size) override {
    return Forward("SortedSize", &Engine::SortedSize, request, size);
  }
  Status SortedCount(const Request& request, double min, double max, std::int64_t* count) override {
    return Forward("SortedCount", &Engine::SortedCount, request, min, max, count);
  }
  Status SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                     std::vector<ScoredMember>* members) override {
    return Forward("SortedRange", &Engine::SortedRange, request, start, stop, members);
  }
  Status SortedRangeByScore(const Request& request, double min, double max,
                            std::vector<ScoredMember>* members) override {
    return Forward("SortedRangeByScore", &Engine::SortedRangeByScore, request, min, max, members);
  }
  Status SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) override {
    return Forward("SortedRank", &Engine::SortedRank, request, member, rank);
  }
  Status SortedScore(const Request& request, std::string_view member, std::optional<double>* score) override {
    return Forward("SortedScore", &Engine::SortedScore, request, member, score);
  }
  Status SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                           std::int64_t* removed) override {
    return Forward("SortedRemoveRange", &Engine::SortedRemoveRange, request, start, stop, removed);
  }
  Status SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) override {
    return Forward("SortedRemoveRangeByScore", &Engine::SortedRemoveRangeByScore, request, min, max, removed);
  }
  Status Subscribe(const Request& pattern) override { return Forward("Subscribe", &Engine::Subscribe, pattern); }
  Status Unsubscribe(const Request& pattern) override { return Forward("Unsubscribe", &Engine::Unsubscribe, pattern); }
  Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) override {
    return Forward("Publish", &Engine::Publish, request, message, receivers);
  }
  Status Poll(TimeLimit wait, std::vector<Message>* messages) override {
    return Forward("Poll", &Engine::Poll, wait, messages);
  }
  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override {
    return Forward("Scan", &Engine::Scan, pattern, bring, cursor);
  }
  Status ReadElement(const Request& request, std::optional<Element>* element) override {
    return Forward("ReadElement", &Engine::ReadElement, request, element);
  }

 protected:
  // Runs before each call that is forwarded. If it does not succeed, that is the call's status, and nothing is
  // forwarded.
  virtual Status Before(const char* /*method*/) { return {}; }

  Engine& inner() const { return *inner_; }

 private:
  template <typename... Parameters, typename... Arguments>
  Status Forward(const char* name, Status (Engine::*method)(Parameters...), const Arguments&... arguments) {
    if (Status status = Before(name); !status.ok()) return status;
    return (inner_.get()->*method)(arguments...);
  }

  const std::unique_ptr<Engine> inner_;
};

}  // namespace hostkit

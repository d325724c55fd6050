// An engine around another one: forwards everything. The base of engines that add one thing, say a failure.
#ifndef TQ_HOSTKIT_ENGINE_WRAPPER_H
#define TQ_HOSTKIT_ENGINE_WRAPPER_H

#include <memory>
#include <utility>

#include "hostkit/engine.h"

namespace hostkit {

class EngineWrapper : public Engine {
 public:
  explicit EngineWrapper(std::unique_ptr<Engine> inner) : inner_(std::move(inner)) {}

  bool Supports(Feature feature) const override { return inner_->Supports(feature); }
  Status Connect(bool cluster, TimeLimit limit) override { return inner_->Connect(cluster, limit); }
  Status Save(TimeLimit limit) override { return inner_->Save(limit); }
  Status Summarize(const Request& request, DatabaseSummary* summary) override {
    return inner_->Summarize(request, summary);
  }
  Status Describe(TimeLimit limit, std::string* lines) override { return inner_->Describe(limit, lines); }
  Status FreezeClock() override { return inner_->FreezeClock(); }
  Status AdvanceClock(std::int64_t milliseconds) override { return inner_->AdvanceClock(milliseconds); }
  Status ThawClock() override { return inner_->ThawClock(); }
  Status Delete(const Request& request, bool* deleted) override { return inner_->Delete(request, deleted); }
  Status Exists(const Request& request, bool* exists) override { return inner_->Exists(request, exists); }
  Status Inspect(const Request& request, KeyState* state) override { return inner_->Inspect(request, state); }
  Status Expire(const Request& request, std::uint32_t milliseconds, bool* exists) override {
    return inner_->Expire(request, milliseconds, exists);
  }
  Status Persist(const Request& request, std::uint32_t within, bool* persisted) override {
    return inner_->Persist(request, within, persisted);
  }
  Status Get(const Request& request, std::optional<std::string>* value) override { return inner_->Get(request, value); }
  Status Set(const Request& request, std::string_view value,
             std::optional<std::uint32_t> expire_milliseconds) override {
    return inner_->Set(request, value, expire_milliseconds);
  }
  Status SetIfAbsent(const Request& request, std::string_view value, bool* stored) override {
    return inner_->SetIfAbsent(request, value, stored);
  }
  Status Increment(const Request& request, std::int64_t* value) override { return inner_->Increment(request, value); }
  Status HashSet(const Request& request, std::span<const FieldView> fields) override {
    return inner_->HashSet(request, fields);
  }
  Status HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) override {
    return inner_->HashSetIfAbsent(request, fields, written);
  }
  Status HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* hash) override {
    return inner_->HashGet(request, tags, hash);
  }
  Status HashGetAll(const Request& request, HashContents* hash) override { return inner_->HashGetAll(request, hash); }
  Status HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                    std::int64_t* count) override {
    return inner_->HashExpire(request, tags, milliseconds, count);
  }
  Status HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) override {
    return inner_->HashRemaining(request, fields);
  }
  Status ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) override {
    return inner_->ListPush(request, end, value, length);
  }
  Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) override {
    return inner_->ListPop(request, end, value, left);
  }
  Status ListLength(const Request& request, std::int64_t* length) override {
    return inner_->ListLength(request, length);
  }
  Status ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                   std::vector<std::string>* values) override {
    return inner_->ListRange(request, start, stop, values);
  }
  Status ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                    std::int64_t* length) override {
    return inner_->ListInsert(request, pivot, where, value, length);
  }
  Status ListSet(const Request& request, std::int64_t position, std::string_view value) override {
    return inner_->ListSet(request, position, value);
  }
  Status ListRemove(const Request& request, std::uint64_t most, std::string_view value,
                    std::int64_t* removed) override {
    return inner_->ListRemove(request, most, value, removed);
  }
  Status SetAdd(const Request& request, std::string_view member, bool* added) override {
    return inner_->SetAdd(request, member, added);
  }
  Status SetRemove(const Request& request, std::string_view member, bool* removed) override {
    return inner_->SetRemove(request, member, removed);
  }
  Status SetContains(const Request& request, std::string_view member, bool* contained) override {
    return inner_->SetContains(request, member, contained);
  }
  Status SetSize(const Request& request, std::int64_t* size) override { return inner_->SetSize(request, size); }
  Status SetMembers(const Request& request, std::vector<std::string>* members) override {
    return inner_->SetMembers(request, members);
  }
  Status SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) override {
    return inner_->SortedAdd(request, members, added);
  }
  Status SortedRemove(const Request& request, std::span<const std::string_view> members,
                      std::int64_t* removed) override {
    return inner_->SortedRemove(request, members, removed);
  }
  Status SortedSize(const Request& request, std::int64_t* size) override { return inner_->SortedSize(request, size); }
  Status SortedCount(const Request& request, double min, double max, std::int64_t* count) override {
    return inner_->SortedCount(request, min, max, count);
  }
  Status SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                     std::vector<ScoredMember>* members) override {
    return inner_->SortedRange(request, start, stop, members);
  }
  Status SortedRangeByScore(const Request& request, double min, double max,
                            std::vector<ScoredMember>* members) override {
    return inner_->SortedRangeByScore(request, min, max, members);
  }
  Status SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) override {
    return inner_->SortedRank(request, member, rank);
  }
  Status SortedScore(const Request& request, std::string_view member, std::optional<double>* score) override {
    return inner_->SortedScore(request, member, score);
  }
  Status SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                           std::int64_t* removed) override {
    return inner_->SortedRemoveRange(request, start, stop, removed);
  }
  Status SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) override {
    return inner_->SortedRemoveRangeByScore(request, min, max, removed);
  }
  Status Subscribe(const Request& pattern) override { return inner_->Subscribe(pattern); }
  Status Unsubscribe(const Request& pattern) override { return inner_->Unsubscribe(pattern); }
  Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) override {
    return inner_->Publish(request, message, receivers);
  }
  Status Poll(TimeLimit wait, std::vector<Message>* messages) override { return inner_->Poll(wait, messages); }
  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override {
    return inner_->Scan(pattern, bring, cursor);
  }
  Status ReadElement(const Request& request, std::optional<Element>* element) override {
    return inner_->ReadElement(request, element);
  }

 protected:
  Engine& inner() const { return *inner_; }

 private:
  const std::unique_ptr<Engine> inner_;
};

}  // namespace hostkit

#endif

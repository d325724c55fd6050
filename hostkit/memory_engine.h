// The in-process engine: nothing to install, gone with the process unless a snapshot file is given.
//
// Its own promise: a call that fails, by status or by exception, has changed nothing, and nothing popped is lost.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/clock.h"
#include "hostkit/engine.h"
#include "hostkit/store.h"

namespace hostkit {

class MemoryEngine : public Engine {
 public:
  // The clock must outlive the engine. Without a snapshot path (empty), Save fails.
  MemoryEngine(const Clock& clock, std::string snapshot_path);

  // Takes the snapshot file in, if there is one. When it cannot be used, the store is as before. Throws std::bad_alloc.
  Status Load();

  const Store& store() const { return store_; }

  bool Supports(Feature feature) const override;
  Status Connect(bool cluster, TimeLimit limit) override;
  Status Save(TimeLimit limit) override;
  Status Summarize(const Request& request, DatabaseSummary* summary) override;
  Status Describe(TimeLimit limit, std::string* lines) override;
  Status FreezeClock() override;
  Status AdvanceClock(std::int64_t milliseconds) override;
  Status ThawClock() override;
  Status Delete(const Request& request, bool* deleted) override;
  Status Exists(const Request& request, bool* exists) override;
  Status Inspect(const Request& request, KeyState* state) override;
  Status Expire(const Request& request, std::uint32_t milliseconds, bool* exists) override;
  Status Persist(const Request& request, std::uint32_t within, bool* persisted) override;
  Status Get(const Request& request, std::optional<std::string>* value) override;
  Status Set(const Request& request, std::string_view value, std::optional<std::uint32_t> expire_milliseconds) override;
  Status SetIfAbsent(const Request& request, std::string_view value, bool* stored) override;
  Status Increment(const Request& request, std::int64_t* value) override;
  Status HashSet(const Request& request, std::span<const FieldView> fields) override;
  Status HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) override;
  Status HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* hash) override;
  Status HashGetAll(const Request& request, HashContents* hash) override;
  Status HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                    std::int64_t* count) override;
  Status HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) override;
  Status ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) override;
  Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) override;
  Status ListLength(const Request& request, std::int64_t* length) override;
  Status ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                   std::vector<std::string>* values) override;
  Status ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                    std::int64_t* length) override;
  Status ListSet(const Request& request, std::int64_t position, std::string_view value) override;
  Status ListRemove(const Request& request, std::uint64_t most, std::string_view value, std::int64_t* removed) override;
  Status SetAdd(const Request& request, std::string_view member, bool* added) override;
  Status SetRemove(const Request& request, std::string_view member, bool* removed) override;
  Status SetContains(const Request& request, std::string_view member, bool* contained) override;
  Status SetSize(const Request& request, std::int64_t* size) override;
  Status SetMembers(const Request& request, std::vector<std::string>* members) override;
  Status SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) override;
  Status SortedRemove(const Request& request, std::span<const std::string_view> members,
                      std::int64_t* removed) override;
  Status SortedSize(const Request& request, std::int64_t* size) override;
  Status SortedCount(const Request& request, double min, double max, std::int64_t* count) override;
  Status SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                     std::vector<ScoredMember>* members) override;
  Status SortedRangeByScore(const Request& request, double min, double max,
                            std::vector<ScoredMember>* members) override;
  Status SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) override;
  Status SortedScore(const Request& request, std::string_view member, std::optional<double>* score) override;
  Status SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                           std::int64_t* removed) override;
  Status SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) override;
  Status Subscribe(const Request& pattern) override;
  Status Unsubscribe(const Request& pattern) override;
  Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) override;
  Status Poll(TimeLimit wait, std::vector<Message>* messages) override;
  Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) override;
  Status ReadElement(const Request& request, std::optional<Element>* element) override;

 private:
  class Scanner;

  Deadline After(std::uint32_t milliseconds) const { return clock_.Steady() + milliseconds; }

  // Drops the fields of the key that are due; true if nothing is left of it.
  bool DropExpired(int db, Named* key, std::int64_t now) noexcept;
  // Removes everything that is due.
  void RunExpiry() noexcept;
  // Null when there is no such key, or no longer.
  Named* Find(const Request& request) noexcept;
  // A key with its value if that is of a kind; both null when the key is missing. Gives kWrongKind for another kind.
  template <typename Value> struct Opened {
    Named* key = nullptr;
    Value* value = nullptr;
  };
  template <typename Value> Status Open(const Request& request, Opened<Value>* opened);
  // Puts a new value under a missing key. Throws std::bad_alloc.
  template <typename Value> Named* Create(const Request& request, Value value);
  // Removes a key whose value has no elements left.
  template <typename Value> void DropEmpty(const Request& request, const Opened<Value>& opened) noexcept;
  // Removes the members from a rank on; returns how many.
  std::int64_t RemoveRanks(const Request& request, const Opened<SortedSet>& opened, std::size_t first,
                           std::size_t count) noexcept;

  AdjustableClock clock_;
  const std::string snapshot_path_;
  Store store_;
};

}  // namespace hostkit

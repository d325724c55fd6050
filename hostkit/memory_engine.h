// The in-process engine: nothing to install, gone with the process unless a snapshot file is given.
#ifndef TQ_HOSTKIT_MEMORY_ENGINE_H
#define TQ_HOSTKIT_MEMORY_ENGINE_H

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

  // Takes the snapshot file in, if there is one. False, with a text that says why, when it cannot be used; the store is
  // then as before. Throws std::bad_alloc.
  bool Load(std::string* error);

  const Store& store() const { return store_; }

  int Connect(bool cluster) override;
  int RunExpiry() override;
  int Save() override;
  int Summarize(int db, DatabaseSummary* summary) override;

  int Delete(Key key) override;
  int Exists(Key key) override;
  int Expire(Key key, std::uint32_t milliseconds) override;
  int Persist(Key key, std::uint32_t within) override;

  int Get(Key key, std::optional<std::string>* value) override;
  int Set(Key key, std::string_view value, std::optional<std::uint32_t> expire_milliseconds) override;
  int SetIfAbsent(Key key, std::string_view value) override;
  int Increment(Key key, std::int64_t* value) override;

  int HashSet(Key key, Fields fields) override;
  int HashSetIfAbsent(Key key, Fields fields) override;
  int HashRead(Key key, const std::vector<FieldTag>* tags, ReadHash* hash) override;
  void HashMarkRead(Key key, const std::vector<ReadField>& fields) noexcept override;
  int HashExpire(Key key, const std::vector<FieldTag>& tags, std::uint32_t milliseconds) override;

  int ListPush(Key key, End end, std::string_view value) override;
  int ListPop(Key key, End end, std::string* value, bool* popped) override;
  int ListLength(Key key) override;
  int ListRange(Key key, int start, int stop, std::vector<std::string>* values) override;
  int ListInsert(Key key, std::string_view pivot, Where where, std::string_view value) override;
  int ListSet(Key key, int position, std::string_view value) override;
  int ListRemove(Key key, std::size_t count, std::string_view value) override;

  int SetAdd(Key key, std::string_view member) override;
  int SetRemove(Key key, std::string_view member) override;
  int SetContains(Key key, std::string_view member) override;
  int SetSize(Key key) override;
  int SetMembers(Key key, std::vector<std::string>* members) override;

  int SortedAdd(Key key, Scores scores) override;
  int SortedRemove(Key key, const std::vector<std::string_view>& members) override;
  int SortedSize(Key key) override;
  int SortedCount(Key key, double min, double max) override;
  int SortedRange(Key key, int start, int stop, ScoredMembers* members) override;
  int SortedRangeByScore(Key key, double min, double max, ScoredMembers* members) override;
  int SortedRank(Key key, std::string_view member) override;
  int SortedScore(Key key, std::string_view member, std::optional<double>* score) override;
  int SortedRemoveRange(Key key, int start, int stop) override;
  int SortedRemoveRangeByScore(Key key, double min, double max) override;

  int Publish(Key key, std::string_view message) override;
  int Match(Key pattern, std::vector<std::string>* names) override;
  int Describe(Key key, Element* element) override;

 private:
  Database& At(Key key) { return store_.databases[static_cast<std::size_t>(key.db)]; }
  bool Due(const Deadline& deadline, std::int64_t now) const { return deadline && *deadline <= now; }
  Deadline After(std::uint32_t milliseconds) const { return clock_.Steady() + milliseconds; }

  // Removes what of the entry is due; true if nothing is left of it.
  bool Expired(Entry* entry, std::int64_t now) const;
  void DropExpired(Database* database);
  // Null when there is no such key, or no longer.
  Entry* Find(Key key);
  // The value of a kind under the key, null when the key is missing. False when it holds another kind.
  template <typename Kind>
  bool Open(Key key, Kind** value);
  // Puts a new value under a missing key.
  template <typename Kind>
  Kind* Create(Key key, Kind value = Kind());
  // Removes a key whose value has no elements left.
  template <typename Kind>
  void DropEmpty(Key key, const Kind& value);
  // Removes the members of an ordered part; returns how many.
  int EraseRanked(Key key, SortedSet* sorted, std::set<Ranked>::iterator first, std::set<Ranked>::iterator last);

  const Clock& clock_;
  const std::string snapshot_path_;
  Store store_;
};

}  // namespace hostkit

#endif

// What stands behind the client functions: a store.
//
// An engine is used from one thread at a time. Its methods return a status code, or, where said, a number that is not
// negative on success; they may throw std::bad_alloc or another std::exception. A call that fails, by status or by
// exception, has changed nothing. Keys have been checked: the database is in range, the name is a valid key text. A
// key that holds another kind of value than a method works on gives TQ_MOM_INPUT_ERR.
//
// A method that takes a value out of the store has an out-parameter for it and does whatever can fail before the value
// leaves the store, so that the caller can make room for the result first and never lose a value.
#ifndef TQ_HOSTKIT_ENGINE_H
#define TQ_HOSTKIT_ENGINE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hostkit {

inline constexpr int kDatabaseCount = 38;

struct Key {
  int db;
  std::string_view name;
};

using FieldTag = std::uint32_t;
using Fields = std::map<FieldTag, std::string>;

struct ReadField {
  FieldTag tag;
  std::string bytes;
  bool changed;  // since the last MarkRead of this field
};

struct ReadHash {
  bool exists = false;
  std::vector<ReadField> fields;  // ascending
};

enum class End { kHead, kTail };
enum class Where { kBefore, kAfter };

using Scores = std::map<std::string, double, std::less<>>;
using ScoredMembers = std::vector<std::pair<std::string, double>>;

// What a scan tells of a key.
struct Element {
  bool exists = false;
  std::string value;  // of a string; empty for every other kind
};

// How many keys of each kind a database holds, and how many of all have an expiry.
struct DatabaseSummary {
  std::size_t strings = 0;
  std::size_t hashes = 0;
  std::size_t lists = 0;
  std::size_t sets = 0;
  std::size_t sorted_sets = 0;
  std::size_t expiring = 0;

  std::size_t keys() const { return strings + hashes + lists + sets + sorted_sets; }
};

class Engine {
 public:
  virtual ~Engine() = default;

  virtual int Connect(bool cluster) = 0;
  // Removes what has expired.
  virtual int RunExpiry() = 0;
  // Makes all that is stored outlive the process.
  virtual int Save() = 0;
  virtual int Summarize(int db, DatabaseSummary* summary) = 0;

  // Any kind of value. Delete and Exists return 1 or 0.
  virtual int Delete(Key key) = 0;
  virtual int Exists(Key key) = 0;
  // The key is removed after that many milliseconds, at once for 0. Returns 1, or 0 without such a key.
  virtual int Expire(Key key, std::uint32_t milliseconds) = 0;
  // Takes away an expiry that is due within that many milliseconds, any for 0. Returns 1 if it did, else 0.
  virtual int Persist(Key key, std::uint32_t within) = 0;

  virtual int Get(Key key, std::optional<std::string>* value) = 0;
  // Replaces any kind of value and its expiry.
  virtual int Set(Key key, std::string_view value, std::optional<std::uint32_t> expire_milliseconds) = 0;
  // Returns 1 if it stored the value, 0 if the key was there.
  virtual int SetIfAbsent(Key key, std::string_view value) = 0;
  // A missing key counts as 0. Text that is no decimal 64-bit number: TQ_MOM_INPUT_ERR. A sum out of range: TQ_MOM_ERR.
  virtual int Increment(Key key, std::int64_t* value) = 0;

  // Written fields lose their expiry.
  virtual int HashSet(Key key, Fields fields) = 0;
  // Writes the fields that are absent and returns how many that were.
  virtual int HashSetIfAbsent(Key key, Fields fields) = 0;
  // The listed fields that are there, or all of them without a list.
  virtual int HashRead(Key key, const std::vector<FieldTag>* tags, ReadHash* hash) = 0;
  // These fields have reached the reader: until they are written again, HashRead does not call them changed.
  virtual void HashMarkRead(Key key, const std::vector<ReadField>& fields) noexcept = 0;
  // As Expire. Returns the number of listed fields that are there.
  virtual int HashExpire(Key key, const std::vector<FieldTag>& tags, std::uint32_t milliseconds) = 0;

  // Returns the new length.
  virtual int ListPush(Key key, End end, std::string_view value) = 0;
  // Moves the element into *value and returns true through *popped, or false when the list is empty. Returns the
  // length that is left.
  virtual int ListPop(Key key, End end, std::string* value, bool* popped) = 0;
  virtual int ListLength(Key key) = 0;
  // From start to stop inclusive; a negative position counts from the end.
  virtual int ListRange(Key key, int start, int stop, std::vector<std::string>* values) = 0;
  // Puts the value beside the first element that equals pivot. Returns the new length, 0 without such a list,
  // TQ_MOM_ERR without such an element.
  virtual int ListInsert(Key key, std::string_view pivot, Where where, std::string_view value) = 0;
  // TQ_MOM_ERR without an element at the position.
  virtual int ListSet(Key key, int position, std::string_view value) = 0;
  // Removes the first count elements that equal value, all for 0. Returns how many.
  virtual int ListRemove(Key key, std::size_t count, std::string_view value) = 0;

  // Add, Remove and Contains return 1 or 0.
  virtual int SetAdd(Key key, std::string_view member) = 0;
  virtual int SetRemove(Key key, std::string_view member) = 0;
  virtual int SetContains(Key key, std::string_view member) = 0;
  virtual int SetSize(Key key) = 0;
  virtual int SetMembers(Key key, std::vector<std::string>* members) = 0;

  // Members are ordered by score, those of one score by their bytes; ranks count from 0. No score or bound is NaN.
  // Returns the number of new members.
  virtual int SortedAdd(Key key, Scores scores) = 0;
  // Returns how many were removed.
  virtual int SortedRemove(Key key, const std::vector<std::string_view>& members) = 0;
  virtual int SortedSize(Key key) = 0;
  virtual int SortedCount(Key key, double min, double max) = 0;
  virtual int SortedRange(Key key, int start, int stop, ScoredMembers* members) = 0;
  virtual int SortedRangeByScore(Key key, double min, double max, ScoredMembers* members) = 0;
  // TQ_MOM_ERR without such a member.
  virtual int SortedRank(Key key, std::string_view member) = 0;
  virtual int SortedScore(Key key, std::string_view member, std::optional<double>* score) = 0;
  virtual int SortedRemoveRange(Key key, int start, int stop) = 0;
  virtual int SortedRemoveRangeByScore(Key key, double min, double max) = 0;

  // Reaches subscribers outside this process and returns how many; those inside are the client's business.
  virtual int Publish(Key key, std::string_view message) = 0;
  // The names of all keys that match a glob.
  virtual int Match(Key pattern, std::vector<std::string>* names) = 0;
  virtual int Describe(Key key, Element* element) = 0;
};

}  // namespace hostkit

#endif

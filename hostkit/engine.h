// What stands behind the client functions: a store.
//
// The rules for every engine:
// - It is used from one thread at a time.
// - A call that is refused (kWrongKind, kReadOnly, kNotSupported) has changed nothing. kOutcomeUnknown: it may have
//   changed what it was asked to change, or not, or a part of it.
// - Out-parameters come in empty or zero and are meant only if the call succeeds, unless said otherwise.
// - Keys have been checked: the database is in range, the name is a valid key text.
// - A method may throw std::bad_alloc or another std::exception instead of returning a status.
// - A key that holds another kind of value than a method works on gives kWrongKind.
// - A missing key counts as an empty value; a value that loses its last element is gone.
// - What an array argument lists twice counts as done one after the other. Results come in any order, unless said
//   otherwise.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/status.h"

namespace hostkit {

inline constexpr int kDatabaseCount = 38;

// How long a call may take. Zero leaves it to the engine, which has a limit for every call.
using TimeLimit = std::chrono::milliseconds;

// What a call works on.
struct Request {
  int db;
  std::string_view name;  // a key, or where said a pattern
  TimeLimit limit = {};
};

enum class Kind { kNone, kString, kHash, kList, kSet, kSortedSet };

// The state of a key. kNone: there is no such key.
struct KeyState {
  Kind kind = Kind::kNone;
  std::optional<std::int64_t> remaining;  // milliseconds until it expires; none: it does not
};

using FieldTag = std::uint32_t;

struct FieldView {
  FieldTag tag;
  std::string_view bytes;
};

struct Field {
  FieldTag tag;
  std::string bytes;
};

struct FieldRemaining {
  FieldTag tag;
  std::int64_t milliseconds;
};

struct HashContents {
  bool exists = false;
  std::vector<Field> fields;  // each tag once
};

enum class End { kHead, kTail };
enum class Where { kBefore, kAfter };

struct ScoredView {
  std::string_view member;
  double score;
};

struct ScoredMember {
  std::string member;
  double score;
};

// What a scan tells of a key.
struct Element {
  std::string name;
  std::string value;  // of a string, if it was asked for; empty for every other kind
};

// A scan in progress. Dropping it ends the scan; it does not outlive its engine.
class Cursor {
 public:
  virtual ~Cursor() = default;

  // Appends the next elements to *batch, at least one and as many as suit the engine, but at most `most`; none: the
  // scan is at its end. A key that was there from the beginning to the end of the scan comes exactly once, another one
  // at most once. The memory that a scan takes does not grow with the number of keys.
  virtual Status Next(std::size_t most, std::vector<Element>* batch) = 0;
};

// A message that has reached this runtime.
struct Message {
  int db;
  std::string pattern;  // of the subscription that it is for
  std::string name;
  std::string value;
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

// What a scan brings beside the names.
enum class Bring { kNames, kStrings };

enum class Feature {
  // Poll brings all messages; those that this runtime publishes it brings as soon as Publish has returned. Without it
  // Poll brings none, and the client itself delivers what it publishes.
  kMessagesByPoll,
  // FreezeClock, AdvanceClock and ThawClock.
  kClock
};

class Engine {
 public:
  virtual ~Engine() = default;

  virtual bool Supports(Feature feature) const = 0;

  // Opens the way to the store, if it is not open.
  virtual Status Connect(bool cluster, TimeLimit limit) = 0;
  // Makes all that is stored outlive its process.
  virtual Status Save(TimeLimit limit) = 0;
  // request names no key.
  virtual Status Summarize(const Request& request, DatabaseSummary* summary) = 0;
  // Lines for people about where the store is, each with its line end; none for the in-process engine.
  virtual Status Describe(TimeLimit limit, std::string* lines) = 0;

  // The time by which values expire: stops, moves on while stopped, goes on from where it is.
  virtual Status FreezeClock() = 0;
  virtual Status AdvanceClock(std::int64_t milliseconds) = 0;
  virtual Status ThawClock() = 0;

  // Any kind of value. Delete tells whether there was one.
  virtual Status Delete(const Request& request, bool* deleted) = 0;
  virtual Status Exists(const Request& request, bool* exists) = 0;
  virtual Status Inspect(const Request& request, KeyState* state) = 0;
  // The key is removed after that many milliseconds, at once for 0. Tells whether there is such a key.
  virtual Status Expire(const Request& request, std::uint32_t milliseconds, bool* exists) = 0;
  // Takes away an expiry that is due within that many milliseconds, any for 0. Tells whether it did.
  virtual Status Persist(const Request& request, std::uint32_t within, bool* persisted) = 0;

  // Strings. None: there is no such key.
  virtual Status Get(const Request& request, std::optional<std::string>* value) = 0;
  // Replaces any kind of value and its expiry.
  virtual Status Set(const Request& request, std::string_view value,
                     std::optional<std::uint32_t> expire_milliseconds) = 0;
  virtual Status SetIfAbsent(const Request& request, std::string_view value, bool* stored) = 0;
  // A missing key counts as 0. Text that is no decimal 64-bit number: kWrongKind. A sum out of range: kFailed, with the
  // old number in *value.
  virtual Status Increment(const Request& request, std::int64_t* value) = 0;

  // Hashes. Written fields lose their expiry.
  virtual Status HashSet(const Request& request, std::span<const FieldView> fields) = 0;
  // Writes the fields that are absent.
  virtual Status HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) = 0;
  // The listed fields that are there.
  virtual Status HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* hash) = 0;
  virtual Status HashGetAll(const Request& request, HashContents* hash) = 0;
  // As Expire, for fields. Counts the listed fields that are there, each once.
  virtual Status HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                            std::int64_t* count) = 0;
  // The fields that expire.
  virtual Status HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) = 0;

  // Lists. Positions count from 0, negative ones from the end. *length is the new length.
  virtual Status ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) = 0;
  // None: the list is empty. The in-process engine makes room for the value before it leaves the list.
  virtual Status ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) = 0;
  virtual Status ListLength(const Request& request, std::int64_t* length) = 0;
  // From start to stop inclusive, in the order of the list.
  virtual Status ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                           std::vector<std::string>* values) = 0;
  // Puts the value beside the first element that equals pivot. Without such a list the length is 0; without such an
  // element kFailed.
  virtual Status ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                            std::int64_t* length) = 0;
  // kFailed without an element at the position.
  virtual Status ListSet(const Request& request, std::int64_t position, std::string_view value) = 0;
  // Removes the first `most` elements that equal value, all for 0.
  virtual Status ListRemove(const Request& request, std::uint64_t most, std::string_view value,
                            std::int64_t* removed) = 0;

  // Sets.
  virtual Status SetAdd(const Request& request, std::string_view member, bool* added) = 0;
  virtual Status SetRemove(const Request& request, std::string_view member, bool* removed) = 0;
  virtual Status SetContains(const Request& request, std::string_view member, bool* contained) = 0;
  virtual Status SetSize(const Request& request, std::int64_t* size) = 0;
  virtual Status SetMembers(const Request& request, std::vector<std::string>* members) = 0;

  // Sorted sets. Members are ordered by score, those of one score by their bytes, in results, too; ranks count from 0,
  // negative ones from the end. No score or bound is NaN; bounds are included.
  virtual Status SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) = 0;
  virtual Status SortedRemove(const Request& request, std::span<const std::string_view> members,
                              std::int64_t* removed) = 0;
  virtual Status SortedSize(const Request& request, std::int64_t* size) = 0;
  virtual Status SortedCount(const Request& request, double min, double max, std::int64_t* count) = 0;
  virtual Status SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                             std::vector<ScoredMember>* members) = 0;
  virtual Status SortedRangeByScore(const Request& request, double min, double max,
                                    std::vector<ScoredMember>* members) = 0;
  // None: there is no such member.
  virtual Status SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) = 0;
  virtual Status SortedScore(const Request& request, std::string_view member, std::optional<double>* score) = 0;
  virtual Status SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                                   std::int64_t* removed) = 0;
  virtual Status SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) = 0;

  // Messages. The name of a subscription is a pattern as for a scan. Each pattern is subscribed to once at a time.
  virtual Status Subscribe(const Request& pattern) = 0;
  virtual Status Unsubscribe(const Request& pattern) = 0;
  // *receivers is how many subscriptions it reaches, those that the client itself delivers to left out.
  virtual Status Publish(const Request& request, std::string_view message, std::int64_t* receivers) = 0;
  // Does what is due (expiry in the in-process engine) and appends the messages that have arrived. Waits for one for
  // at most that long, not at all for zero or where none can come.
  virtual Status Poll(TimeLimit wait, std::vector<Message>* messages) = 0;

  // The keys that match a glob.
  virtual Status Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) = 0;
  // The element of one key, none if there is no such key: for a scan whose batch may have been written over.
  virtual Status ReadElement(const Request& request, std::optional<Element>* element) = 0;
};

// The engine that a runtime's name asks for: nothing or a path for the in-process engine, redis:// or redis+unix:// for
// a server. kFailed with its reason: a snapshot that is refused, a URL that is none. A null name takes the one from
// TQ_MOM_STORE in the environment, if there is one.
Status OpenEngine(const char* name, std::unique_ptr<Engine>* engine);

}  // namespace hostkit

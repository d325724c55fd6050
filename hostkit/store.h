// What the in-process engine stores: keys by name, in the order of their names, and by the time at which they are due.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <variant>

#include "hostkit/engine.h"
#include "hostkit/ranking.h"

namespace hostkit {

// Milliseconds on the engine's clock.
using Deadline = std::optional<std::int64_t>;

// Looks texts up without making a string of them.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
};
template <typename Value> using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

// Makes room in a hash table, so that adding that many elements by their nodes cannot fail.
// Throws std::bad_alloc.
template <typename Table> void MakeRoom(Table* table, std::size_t more) {
  const std::size_t wanted = table->size() + more + 1;
  // Not for a table that has the room: reserve makes it smaller, too.
  if (wanted > table->bucket_count()) table->reserve(std::max(wanted, 2 * table->size()));
}

struct HashField {
  std::string bytes;
  Deadline deadline = std::nullopt;
};

using String = std::string;

struct Hash {
  bool empty() const { return fields.empty(); }

  std::unordered_map<FieldTag, HashField> fields;
  std::set<std::pair<std::int64_t, FieldTag>> expiring;  // the fields that have a deadline
};

// Not a deque: moving one may allocate, and the store moves values when nothing may fail any more.
using List = std::list<std::string>;
using Set = TextSet;

struct SortedSet {
  SortedSet() : ranking(std::make_unique<Ranking>()) {}

  bool empty() const { return scores.empty(); }

  TextMap<double> scores;
  std::unique_ptr<Ranking> ranking;  // points at the keys of scores
};

struct Entry {
  // The time at which the next part of it expires.
  Deadline Due() const;

  std::variant<String, Hash, List, Set, SortedSet> value;
  Deadline deadline = std::nullopt;
  std::uint64_t serial = 0;  // counts up with each key that the store has taken in
  Deadline queued = std::nullopt;
};

static_assert(std::is_nothrow_move_constructible_v<Entry> && std::is_nothrow_move_assignable_v<Entry>,
              "what is prepared can be put in place without failing");

// A key with its name.
using Named = TextMap<Entry>::value_type;

struct ByText {
  using is_transparent = void;
  bool operator()(const Named* a, const Named* b) const { return a->first < b->first; }
  bool operator()(const Named* a, std::string_view b) const { return a->first < b; }
  bool operator()(std::string_view a, const Named* b) const { return a < b->first; }
};

class Store {
 public:
  using Order = std::set<Named*, ByText>;
  // Room for one key in the queue.
  struct Due {
    std::int64_t time;
    std::uint64_t serial;
    int db;
    Named* key;

    friend bool operator<(const Due& a, const Due& b) {
      return a.time != b.time ? a.time < b.time : a.serial < b.serial;
    }
  };
  using Place = std::set<Due>::node_type;

  // Null when there is no such key.
  Named* Find(int db, std::string_view name);
  // Takes a key in that is not there. Throws std::bad_alloc.
  Named* Add(int db, std::string_view name, Entry entry);
  void Remove(int db, Named* key) noexcept;

  // Makes a place for a key that is about to get a deadline. Throws std::bad_alloc.
  static Place MakePlace();
  // Brings the queue in line with the key's deadlines. Takes the place if the key had none of its own.
  void Requeue(int db, Named* key, Place place = {}) noexcept;
  // The key that is due first; null if none can expire.
  const Due* First() const { return queue_.empty() ? nullptr : &*queue_.begin(); }

  // The keys of a database in the order of their names.
  const Order& Names(int db) const { return databases_[static_cast<std::size_t>(db)].order; }
  // Counts up with each key that the store takes in; a later key has a greater serial.
  std::uint64_t last_serial() const { return last_serial_; }
  // Changes whenever a key leaves the store.
  std::uint64_t removals() const { return removals_; }

 private:
  struct Database {
    TextMap<Entry> keys;
    Order order;
  };

  std::array<Database, kDatabaseCount> databases_;
  std::set<Due> queue_;
  std::uint64_t last_serial_ = 0;
  std::uint64_t removals_ = 0;
};

}  // namespace hostkit

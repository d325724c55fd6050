// What the in-process engine stores.
#ifndef TQ_HOSTKIT_STORE_H
#define TQ_HOSTKIT_STORE_H

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include "hostkit/engine.h"

namespace hostkit {

// Milliseconds on the engine's clock.
using Deadline = std::optional<std::int64_t>;

struct HashField {
  std::string bytes;
  Deadline deadline;
  bool changed = true;  // since it was last read
};

using String = std::string;
using Hash = std::map<FieldTag, HashField>;
// Not a deque: moving one may allocate, and the store moves values when nothing may fail any more.
using List = std::list<std::string>;
using Set = std::set<std::string, std::less<>>;

struct Ranked {
  double score;
  const std::string* member;  // the key in SortedSet::scores

  friend bool operator<(const Ranked& a, const Ranked& b) {
    return a.score != b.score ? a.score < b.score : *a.member < *b.member;
  }
};

struct SortedSet {
  SortedSet() = default;
  // A copy's order would point into the original.
  SortedSet(SortedSet&&) = default;
  SortedSet& operator=(SortedSet&&) = default;

  Scores scores;
  std::set<Ranked> order;
};

struct Entry {
  std::variant<String, Hash, List, Set, SortedSet> value;
  Deadline deadline;
};

using Database = std::map<std::string, Entry, std::less<>>;

static_assert(std::is_nothrow_move_constructible_v<Entry> && std::is_nothrow_move_assignable_v<Entry>,
              "what is prepared can be put in place without failing");

struct Store {
  std::array<Database, kDatabaseCount> databases;
};

}  // namespace hostkit

#endif

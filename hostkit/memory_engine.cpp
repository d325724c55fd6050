#include "hostkit/memory_engine.h"

#include <tq_mom/constants.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <limits>
#include <utility>

#include "hostkit/glob.h"
#include "hostkit/snapshot.h"

namespace hostkit {
namespace {

int ToCount(std::size_t count) {
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<int>::max());
  return static_cast<int>(std::min(count, kMost));
}

struct Range {
  std::size_t first = 0;
  std::size_t count = 0;
};

// The positions from start to stop inclusive, of which negative ones count from the end.
Range RangeOf(int start, int stop, std::size_t size) {
  const auto length = static_cast<std::int64_t>(size);
  const std::int64_t first = std::max<std::int64_t>(start < 0 ? start + length : start, 0);
  const std::int64_t last = std::min<std::int64_t>(stop < 0 ? stop + length : stop, length - 1);
  if (first > last) return {};
  return {static_cast<std::size_t>(first), static_cast<std::size_t>(last - first + 1)};
}

template <typename Container>
auto Nth(Container& elements, std::size_t index) {
  using Distance = typename std::iterator_traits<decltype(elements.begin())>::difference_type;
  return index <= elements.size() / 2 ? std::next(elements.begin(), static_cast<Distance>(index))
                                      : std::prev(elements.end(), static_cast<Distance>(elements.size() - index));
}

// The members with scores from min to max inclusive. The empty text is the smallest member of a score.
std::pair<std::set<Ranked>::iterator, std::set<Ranked>::iterator> ScoreRange(SortedSet& sorted, double min,
                                                                             double max) {
  if (!(min <= max)) return {sorted.order.end(), sorted.order.end()};
  const std::string smallest;
  const auto first = sorted.order.lower_bound(Ranked{min, &smallest});
  const auto last = std::find_if(first, sorted.order.end(), [max](const Ranked& ranked) { return ranked.score > max; });
  return {first, last};
}

void CopyRanked(std::set<Ranked>::iterator first, std::set<Ranked>::iterator last, ScoredMembers* members) {
  for (; first != last; ++first) members->emplace_back(*first->member, first->score);
}

Hash Stage(Fields&& fields) {
  Hash staged;
  for (auto& [tag, bytes] : fields) staged[tag].bytes = std::move(bytes);
  return staged;
}

}  // namespace

MemoryEngine::MemoryEngine(const Clock& clock, std::string snapshot_path)
    : clock_(clock), snapshot_path_(std::move(snapshot_path)) {}

bool MemoryEngine::Load(std::string* error) {
  if (snapshot_path_.empty()) return true;
  Store loaded;
  switch (ReadSnapshot(snapshot_path_, clock_, &loaded, error)) {
    case SnapshotState::kLoaded:
      std::swap(store_, loaded);
      return true;
    case SnapshotState::kMissing:
      return true;
    case SnapshotState::kRefused:
      break;
  }
  return false;
}

bool MemoryEngine::Expired(Entry* entry, std::int64_t now) const {
  if (Due(entry->deadline, now)) return true;
  Hash* hash = std::get_if<Hash>(&entry->value);
  if (hash == nullptr) return false;
  std::erase_if(*hash, [&](const auto& field) { return Due(field.second.deadline, now); });
  return hash->empty();
}

Entry* MemoryEngine::Find(Key key) {
  Database& database = At(key);
  const auto found = database.find(key.name);
  if (found == database.end()) return nullptr;
  if (!Expired(&found->second, clock_.Steady())) return &found->second;
  database.erase(found);
  return nullptr;
}

template <typename Kind>
bool MemoryEngine::Open(Key key, Kind** value) {
  Entry* entry = Find(key);
  *value = entry != nullptr ? std::get_if<Kind>(&entry->value) : nullptr;
  return entry == nullptr || *value != nullptr;
}

template <typename Kind>
Kind* MemoryEngine::Create(Key key, Kind value) {
  const auto made = At(key).emplace(std::string(key.name), Entry{std::move(value), std::nullopt}).first;
  return &std::get<Kind>(made->second.value);
}

template <typename Kind>
void MemoryEngine::DropEmpty(Key key, const Kind& value) {
  if (value.empty()) At(key).erase(At(key).find(key.name));
}

int MemoryEngine::Connect(bool /*cluster*/) { return TQ_MOM_OK; }

void MemoryEngine::DropExpired(Database* database) {
  const std::int64_t now = clock_.Steady();
  for (auto named = database->begin(); named != database->end();) {
    named = Expired(&named->second, now) ? database->erase(named) : std::next(named);
  }
}

int MemoryEngine::RunExpiry() {
  for (Database& database : store_.databases) DropExpired(&database);
  return TQ_MOM_OK;
}

int MemoryEngine::Save() {
  if (snapshot_path_.empty()) return TQ_MOM_ERR;
  RunExpiry();
  std::string error;
  if (WriteSnapshot(snapshot_path_, clock_, store_, &error)) return TQ_MOM_OK;
  std::fprintf(stderr, "tq_mom_impl: %s\n", error.c_str());
  return TQ_MOM_ERR;
}

int MemoryEngine::Summarize(int db, DatabaseSummary* summary) {
  Database& database = store_.databases[static_cast<std::size_t>(db)];
  DropExpired(&database);
  struct Counter {
    DatabaseSummary* summary;
    void operator()(const String&) const { ++summary->strings; }
    void operator()(const Hash&) const { ++summary->hashes; }
    void operator()(const List&) const { ++summary->lists; }
    void operator()(const hostkit::Set&) const { ++summary->sets; }
    void operator()(const SortedSet&) const { ++summary->sorted_sets; }
  };
  for (const auto& [name, entry] : database) {
    std::visit(Counter{summary}, entry.value);
    if (entry.deadline) ++summary->expiring;
  }
  return TQ_MOM_OK;
}

int MemoryEngine::Delete(Key key) {
  if (Find(key) == nullptr) return 0;
  At(key).erase(At(key).find(key.name));
  return 1;
}

int MemoryEngine::Exists(Key key) { return Find(key) != nullptr ? 1 : 0; }

int MemoryEngine::Expire(Key key, std::uint32_t milliseconds) {
  if (milliseconds == 0) return Delete(key);
  Entry* entry = Find(key);
  if (entry == nullptr) return 0;
  entry->deadline = After(milliseconds);
  return 1;
}

int MemoryEngine::Persist(Key key, std::uint32_t within) {
  Entry* entry = Find(key);
  if (entry == nullptr || !entry->deadline) return 0;
  if (within != 0 && *entry->deadline > *After(within)) return 0;
  entry->deadline.reset();
  return 1;
}

int MemoryEngine::Get(Key key, std::optional<std::string>* value) {
  String* stored;
  if (!Open(key, &stored)) return TQ_MOM_INPUT_ERR;
  if (stored != nullptr) *value = *stored;
  return TQ_MOM_OK;
}

int MemoryEngine::Set(Key key, std::string_view value, std::optional<std::uint32_t> expire_milliseconds) {
  Entry fresh{String(value), expire_milliseconds ? After(*expire_milliseconds) : std::nullopt};
  if (Entry* entry = Find(key); entry != nullptr) {
    *entry = std::move(fresh);
  } else {
    At(key).emplace(std::string(key.name), std::move(fresh));
  }
  return TQ_MOM_OK;
}

int MemoryEngine::SetIfAbsent(Key key, std::string_view value) {
  if (Find(key) != nullptr) return 0;
  Create<String>(key, String(value));
  return 1;
}

int MemoryEngine::Increment(Key key, std::int64_t* value) {
  String* stored;
  if (!Open(key, &stored)) return TQ_MOM_INPUT_ERR;
  std::int64_t number = 0;
  if (stored != nullptr) {
    const char* end = stored->data() + stored->size();
    const auto [parsed, failure] = std::from_chars(stored->data(), end, number);
    if (failure != std::errc() || parsed != end) return TQ_MOM_INPUT_ERR;
  }
  if (number == std::numeric_limits<std::int64_t>::max()) {
    *value = number;
    return TQ_MOM_ERR;
  }
  String text = std::to_string(++number);
  if (stored != nullptr) {
    stored->swap(text);
  } else {
    Create<String>(key, std::move(text));
  }
  *value = number;
  return TQ_MOM_OK;
}

int MemoryEngine::HashSet(Key key, Fields fields) {
  Hash* hash;
  if (!Open(key, &hash)) return TQ_MOM_INPUT_ERR;
  Hash staged = Stage(std::move(fields));
  if (hash == nullptr) {
    Create<Hash>(key, std::move(staged));
    return TQ_MOM_OK;
  }
  for (auto& [tag, field] : staged) {
    const auto known = hash->find(tag);
    if (known == hash->end()) continue;
    if (known->second.bytes != field.bytes) {
      known->second.bytes.swap(field.bytes);
      known->second.changed = true;
    }
    known->second.deadline.reset();
  }
  hash->merge(staged);
  return TQ_MOM_OK;
}

int MemoryEngine::HashSetIfAbsent(Key key, Fields fields) {
  Hash* hash;
  if (!Open(key, &hash)) return TQ_MOM_INPUT_ERR;
  Hash staged = Stage(std::move(fields));
  const std::size_t offered = staged.size();
  if (hash == nullptr) {
    Create<Hash>(key, std::move(staged));
    return ToCount(offered);
  }
  hash->merge(staged);
  return ToCount(offered - staged.size());
}

int MemoryEngine::HashRead(Key key, const std::vector<FieldTag>* tags, ReadHash* read) {
  Hash* hash;
  if (!Open(key, &hash)) return TQ_MOM_INPUT_ERR;
  if (hash == nullptr) return TQ_MOM_OK;
  read->exists = true;
  const auto copy = [&](const Hash::value_type& named) {
    read->fields.push_back({named.first, named.second.bytes, named.second.changed});
  };
  if (tags == nullptr) {
    std::for_each(hash->begin(), hash->end(), copy);
    return TQ_MOM_OK;
  }
  for (const FieldTag tag : std::set<FieldTag>(tags->begin(), tags->end())) {
    if (const auto found = hash->find(tag); found != hash->end()) copy(*found);
  }
  return TQ_MOM_OK;
}

void MemoryEngine::HashMarkRead(Key key, const std::vector<ReadField>& fields) noexcept {
  Hash* hash;
  if (!Open(key, &hash) || hash == nullptr) return;
  for (const ReadField& field : fields) {
    if (const auto found = hash->find(field.tag); found != hash->end()) found->second.changed = false;
  }
}

int MemoryEngine::HashExpire(Key key, const std::vector<FieldTag>& tags, std::uint32_t milliseconds) {
  Hash* hash;
  if (!Open(key, &hash)) return TQ_MOM_INPUT_ERR;
  if (hash == nullptr) return 0;
  const std::set<FieldTag> wanted(tags.begin(), tags.end());
  std::size_t count = 0;
  for (const FieldTag tag : wanted) {
    const auto found = hash->find(tag);
    if (found == hash->end()) continue;
    ++count;
    if (milliseconds == 0) {
      hash->erase(found);
    } else {
      found->second.deadline = After(milliseconds);
    }
  }
  DropEmpty(key, *hash);
  return ToCount(count);
}

int MemoryEngine::ListPush(Key key, End end, std::string_view value) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  List node;
  node.emplace_back(value);
  if (list == nullptr) list = Create<List>(key);
  list->splice(end == End::kHead ? list->begin() : list->end(), node);
  return ToCount(list->size());
}

int MemoryEngine::ListPop(Key key, End end, std::string* value, bool* popped) {
  List* list;
  *popped = false;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  if (list == nullptr) return 0;
  const auto element = end == End::kHead ? list->begin() : std::prev(list->end());
  *value = std::move(*element);
  *popped = true;
  list->erase(element);
  const int left = ToCount(list->size());
  DropEmpty(key, *list);
  return left;
}

int MemoryEngine::ListLength(Key key) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  return list != nullptr ? ToCount(list->size()) : 0;
}

int MemoryEngine::ListRange(Key key, int start, int stop, std::vector<std::string>* values) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  if (list == nullptr) return TQ_MOM_OK;
  const Range range = RangeOf(start, stop, list->size());
  if (range.count == 0) return TQ_MOM_OK;
  values->reserve(range.count);
  std::copy_n(Nth(*list, range.first), range.count, std::back_inserter(*values));
  return TQ_MOM_OK;
}

int MemoryEngine::ListInsert(Key key, std::string_view pivot, Where where, std::string_view value) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  if (list == nullptr) return 0;
  auto place = std::find(list->begin(), list->end(), pivot);
  if (place == list->end()) return TQ_MOM_ERR;
  if (where == Where::kAfter) ++place;
  list->emplace(place, value);
  return ToCount(list->size());
}

int MemoryEngine::ListSet(Key key, int position, std::string_view value) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  if (list == nullptr) return TQ_MOM_ERR;
  const auto length = static_cast<std::int64_t>(list->size());
  const std::int64_t index = position < 0 ? position + length : position;
  if (index < 0 || index >= length) return TQ_MOM_ERR;
  std::string(value).swap(*Nth(*list, static_cast<std::size_t>(index)));
  return TQ_MOM_OK;
}

int MemoryEngine::ListRemove(Key key, std::size_t count, std::string_view value) {
  List* list;
  if (!Open(key, &list)) return TQ_MOM_INPUT_ERR;
  if (list == nullptr) return 0;
  std::size_t removed = 0;
  for (auto element = list->begin(); element != list->end() && (count == 0 || removed < count);) {
    if (*element == value) {
      element = list->erase(element);
      ++removed;
    } else {
      ++element;
    }
  }
  DropEmpty(key, *list);
  return ToCount(removed);
}

int MemoryEngine::SetAdd(Key key, std::string_view member) {
  hostkit::Set* set;
  if (!Open(key, &set)) return TQ_MOM_INPUT_ERR;
  if (set != nullptr && set->contains(member)) return 0;
  hostkit::Set node;
  node.emplace(member);
  if (set == nullptr) set = Create<hostkit::Set>(key);
  set->merge(node);
  return 1;
}

int MemoryEngine::SetRemove(Key key, std::string_view member) {
  hostkit::Set* set;
  if (!Open(key, &set)) return TQ_MOM_INPUT_ERR;
  if (set == nullptr) return 0;
  const auto found = set->find(member);
  if (found == set->end()) return 0;
  set->erase(found);
  DropEmpty(key, *set);
  return 1;
}

int MemoryEngine::SetContains(Key key, std::string_view member) {
  hostkit::Set* set;
  if (!Open(key, &set)) return TQ_MOM_INPUT_ERR;
  return set != nullptr && set->contains(member) ? 1 : 0;
}

int MemoryEngine::SetSize(Key key) {
  hostkit::Set* set;
  if (!Open(key, &set)) return TQ_MOM_INPUT_ERR;
  return set != nullptr ? ToCount(set->size()) : 0;
}

int MemoryEngine::SetMembers(Key key, std::vector<std::string>* members) {
  hostkit::Set* set;
  if (!Open(key, &set)) return TQ_MOM_INPUT_ERR;
  if (set != nullptr) members->assign(set->begin(), set->end());
  return TQ_MOM_OK;
}

int MemoryEngine::SortedAdd(Key key, Scores scores) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  // A new member's map node moves over as it is, so its place in the order can be made before.
  std::set<Ranked> fresh;
  for (const auto& [member, score] : scores) {
    if (sorted == nullptr || !sorted->scores.contains(member)) fresh.insert({score, &member});
  }
  if (sorted == nullptr) sorted = Create<SortedSet>(key);
  const int added = ToCount(fresh.size());
  for (const auto& [member, score] : scores) {
    const auto known = sorted->scores.find(member);
    if (known == sorted->scores.end()) continue;
    auto ranked = sorted->order.extract(Ranked{known->second, &known->first});
    known->second = score;
    ranked.value().score = score;
    sorted->order.insert(std::move(ranked));
  }
  sorted->scores.merge(scores);
  sorted->order.merge(fresh);
  return added;
}

int MemoryEngine::EraseRanked(Key key, SortedSet* sorted, std::set<Ranked>::iterator first,
                              std::set<Ranked>::iterator last) {
  std::size_t removed = 0;
  for (; first != last; ++removed) {
    const auto member = sorted->scores.find(*first->member);
    first = sorted->order.erase(first);
    sorted->scores.erase(member);
  }
  DropEmpty(key, sorted->scores);
  return ToCount(removed);
}

int MemoryEngine::SortedRemove(Key key, const std::vector<std::string_view>& members) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return 0;
  std::size_t removed = 0;
  for (const std::string_view member : members) {
    const auto found = sorted->scores.find(member);
    if (found == sorted->scores.end()) continue;
    sorted->order.erase(Ranked{found->second, &found->first});
    sorted->scores.erase(found);
    ++removed;
  }
  DropEmpty(key, sorted->scores);
  return ToCount(removed);
}

int MemoryEngine::SortedSize(Key key) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  return sorted != nullptr ? ToCount(sorted->scores.size()) : 0;
}

int MemoryEngine::SortedCount(Key key, double min, double max) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return 0;
  const auto [first, last] = ScoreRange(*sorted, min, max);
  return ToCount(static_cast<std::size_t>(std::distance(first, last)));
}

int MemoryEngine::SortedRange(Key key, int start, int stop, ScoredMembers* members) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return TQ_MOM_OK;
  const Range range = RangeOf(start, stop, sorted->order.size());
  CopyRanked(Nth(sorted->order, range.first), Nth(sorted->order, range.first + range.count), members);
  return TQ_MOM_OK;
}

int MemoryEngine::SortedRangeByScore(Key key, double min, double max, ScoredMembers* members) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return TQ_MOM_OK;
  const auto [first, last] = ScoreRange(*sorted, min, max);
  CopyRanked(first, last, members);
  return TQ_MOM_OK;
}

int MemoryEngine::SortedRank(Key key, std::string_view member) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return TQ_MOM_ERR;
  const auto found = sorted->scores.find(member);
  if (found == sorted->scores.end()) return TQ_MOM_ERR;
  const auto ranked = sorted->order.find(Ranked{found->second, &found->first});
  return ToCount(static_cast<std::size_t>(std::distance(sorted->order.begin(), ranked)));
}

int MemoryEngine::SortedScore(Key key, std::string_view member, std::optional<double>* score) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return TQ_MOM_OK;
  if (const auto found = sorted->scores.find(member); found != sorted->scores.end()) *score = found->second;
  return TQ_MOM_OK;
}

int MemoryEngine::SortedRemoveRange(Key key, int start, int stop) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return 0;
  const Range range = RangeOf(start, stop, sorted->order.size());
  return EraseRanked(key, sorted, Nth(sorted->order, range.first), Nth(sorted->order, range.first + range.count));
}

int MemoryEngine::SortedRemoveRangeByScore(Key key, double min, double max) {
  SortedSet* sorted;
  if (!Open(key, &sorted)) return TQ_MOM_INPUT_ERR;
  if (sorted == nullptr) return 0;
  const auto [first, last] = ScoreRange(*sorted, min, max);
  return EraseRanked(key, sorted, first, last);
}

int MemoryEngine::Publish(Key /*key*/, std::string_view /*message*/) { return 0; }

int MemoryEngine::Match(Key pattern, std::vector<std::string>* names) {
  Database& database = At(pattern);
  DropExpired(&database);
  for (const auto& [name, entry] : database) {
    if (GlobMatches(pattern.name, name)) names->push_back(name);
  }
  return TQ_MOM_OK;
}

int MemoryEngine::Describe(Key key, Element* element) {
  const Entry* entry = Find(key);
  element->exists = entry != nullptr;
  const String* text = entry != nullptr ? std::get_if<String>(&entry->value) : nullptr;
  element->value = text != nullptr ? *text : String();
  return TQ_MOM_OK;
}

}  // namespace hostkit

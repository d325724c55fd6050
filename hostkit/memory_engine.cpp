#include "hostkit/memory_engine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>

#include "hostkit/glob.h"
#include "hostkit/snapshot.h"

namespace hostkit {
namespace {

constexpr const char* kKindNames[] = {"nothing", "a string", "a hash", "a list", "a set", "a sorted set"};

Kind KindOf(const Entry& entry) { return static_cast<Kind>(entry.value.index() + 1); }

std::int64_t Count(std::size_t count) { return static_cast<std::int64_t>(count); }

struct Range {
  std::size_t first = 0;
  std::size_t count = 0;
};

// The positions from start to stop inclusive, of which negative ones count from the end.
Range RangeOf(std::int64_t start, std::int64_t stop, std::size_t size) {
  const std::int64_t length = Count(size);
  const std::int64_t first = std::max<std::int64_t>(start < 0 ? start + length : start, 0);
  const std::int64_t last = std::min<std::int64_t>(stop < 0 ? stop + length : stop, length - 1);
  if (first > last) return {};
  return {static_cast<std::size_t>(first), static_cast<std::size_t>(last - first + 1)};
}

List::iterator Nth(List& list, std::size_t index) {
  const auto length = static_cast<std::ptrdiff_t>(list.size());
  const auto place = static_cast<std::ptrdiff_t>(index);
  return place <= length / 2 ? std::next(list.begin(), place) : std::prev(list.end(), length - place);
}

// The ranks of the members with scores from min to max inclusive. The empty text is the smallest member of a score.
Range RangeOfScores(const Ranking& ranking, double min, double max) {
  if (min > max) return {};
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::string smallest;
  const std::size_t first = ranking.order_of_key({min, &smallest});
  const std::size_t end =
      max == kInfinity ? ranking.size() : ranking.order_of_key({std::nextafter(max, kInfinity), &smallest});
  return {first, end - first};
}

void CopyRanks(const Ranking& ranking, Range range, std::vector<ScoredMember>* members) {
  if (range.count == 0) return;
  members->reserve(range.count);
  auto ranked = ranking.find_by_order(range.first);
  for (std::size_t index = 0; index < range.count; ++index, ++ranked) {
    members->push_back({*ranked->member, ranked->score});
  }
}

void SetDeadline(Hash* hash, FieldTag tag, HashField* field, Deadline deadline) noexcept {
  if (field->deadline) hash->expiring.erase({*field->deadline, tag});
  field->deadline = deadline;
}

Element ElementOf(const Named& key, Bring bring) {
  const auto* text = bring == Bring::kStrings ? std::get_if<String>(&key.second.value) : nullptr;
  return {key.first, text != nullptr ? *text : String()};
}

Status NoElement() { return {StatusCode::kFailed, "the list has no such element"}; }

}  // namespace

MemoryEngine::MemoryEngine(const Clock& clock, std::string snapshot_path)
    : clock_(clock), snapshot_path_(std::move(snapshot_path)) {}

Status MemoryEngine::Load() {
  if (snapshot_path_.empty()) return {};
  Store loaded;
  Status status = ReadSnapshot(snapshot_path_, clock_, &loaded);
  if (status.ok()) std::swap(store_, loaded);
  return status;
}

bool MemoryEngine::DropExpired(int db, Named* key, std::int64_t now) noexcept {
  Entry& entry = key->second;
  if (*entry.queued > now) return false;
  if (entry.deadline && *entry.deadline <= now) return true;
  auto& hash = std::get<Hash>(entry.value);
  while (!hash.expiring.empty() && hash.expiring.begin()->first <= now) {
    hash.fields.erase(hash.expiring.begin()->second);
    hash.expiring.erase(hash.expiring.begin());
  }
  if (hash.empty()) return true;
  store_.Requeue(db, key);
  return false;
}

void MemoryEngine::RunExpiry() noexcept {
  const std::int64_t now = clock_.Steady();
  while (store_.First() != nullptr && store_.First()->time <= now) {
    const Store::Due due = *store_.First();
    if (DropExpired(due.db, due.key, now)) store_.Remove(due.db, due.key);
  }
}

Named* MemoryEngine::Find(const Request& request) noexcept {
  Named* key = store_.Find(request.db, request.name);
  if (key == nullptr || !key->second.queued || !DropExpired(request.db, key, clock_.Steady())) return key;
  store_.Remove(request.db, key);
  return nullptr;
}

template <typename Value> Status MemoryEngine::Open(const Request& request, Opened<Value>* opened) {
  opened->key = Find(request);
  if (opened->key == nullptr) return {};
  const Entry& entry = opened->key->second;
  opened->value = std::get_if<Value>(&opened->key->second.value);
  if (opened->value != nullptr) return {};
  return {StatusCode::kWrongKind, std::string("the key holds ") + kKindNames[static_cast<int>(KindOf(entry))]};
}

template <typename Value> Named* MemoryEngine::Create(const Request& request, Value value) {
  return store_.Add(request.db, request.name, {.value = std::move(value)});
}

template <typename Value> void MemoryEngine::DropEmpty(const Request& request, const Opened<Value>& opened) noexcept {
  if (opened.value->empty()) store_.Remove(request.db, opened.key);
}

bool MemoryEngine::Supports(Feature feature) const { return feature == Feature::kClock; }

Status MemoryEngine::Connect(bool /*cluster*/, TimeLimit /*limit*/) { return {}; }

Status MemoryEngine::Save(TimeLimit /*limit*/) {
  if (snapshot_path_.empty()) return {StatusCode::kFailed, "the runtime has no snapshot file"};
  RunExpiry();
  return WriteSnapshot(snapshot_path_, clock_, store_);
}

Status MemoryEngine::Summarize(const Request& request, DatabaseSummary* summary) {
  RunExpiry();
  std::size_t* const counts[] = {&summary->strings, &summary->hashes, &summary->lists, &summary->sets,
                                 &summary->sorted_sets};
  for (const Named* key : store_.Names(request.db)) {
    ++*counts[key->second.value.index()];
    if (key->second.deadline) ++summary->expiring;
  }
  return {};
}

Status MemoryEngine::Describe(TimeLimit /*limit*/, std::string* /*lines*/) { return {}; }

Status MemoryEngine::FreezeClock() {
  clock_.Stop();
  return {};
}

Status MemoryEngine::AdvanceClock(std::int64_t milliseconds) {
  if (clock_.Advance(milliseconds)) return {};
  return {StatusCode::kFailed, "the clock is not stopped, or the time is out of range"};
}

Status MemoryEngine::ThawClock() {
  clock_.Go();
  return {};
}

Status MemoryEngine::Delete(const Request& request, bool* deleted) {
  Named* key = Find(request);
  *deleted = key != nullptr;
  if (key != nullptr) store_.Remove(request.db, key);
  return {};
}

Status MemoryEngine::Exists(const Request& request, bool* exists) {
  *exists = Find(request) != nullptr;
  return {};
}

Status MemoryEngine::Inspect(const Request& request, KeyState* state) {
  const Named* key = Find(request);
  if (key == nullptr) return {};
  state->kind = KindOf(key->second);
  if (key->second.deadline) state->remaining = *key->second.deadline - clock_.Steady();
  return {};
}

Status MemoryEngine::Expire(const Request& request, std::uint32_t milliseconds, bool* exists) {
  if (milliseconds == 0) return Delete(request, exists);
  Named* key = Find(request);
  *exists = key != nullptr;
  if (key == nullptr) return {};
  Store::Place place = Store::MakePlace();
  key->second.deadline = After(milliseconds);
  store_.Requeue(request.db, key, std::move(place));
  return {};
}

Status MemoryEngine::Persist(const Request& request, std::uint32_t within, bool* persisted) {
  Named* key = Find(request);
  *persisted = key != nullptr && key->second.deadline && (within == 0 || *key->second.deadline <= *After(within));
  if (!*persisted) return {};
  key->second.deadline.reset();
  store_.Requeue(request.db, key);
  return {};
}

Status MemoryEngine::Get(const Request& request, std::optional<std::string>* value) {
  Opened<String> text;
  Status status = Open(request, &text);
  if (text.value != nullptr) *value = *text.value;
  return status;
}

Status MemoryEngine::Set(const Request& request, std::string_view value,
                         std::optional<std::uint32_t> expire_milliseconds) {
  Entry fresh{.value = String(value), .deadline = expire_milliseconds ? After(*expire_milliseconds) : std::nullopt};
  Named* key = Find(request);
  if (key == nullptr) {
    store_.Add(request.db, request.name, std::move(fresh));
    return {};
  }
  Store::Place place;
  if (fresh.deadline) place = Store::MakePlace();
  key->second.value = std::move(fresh.value);
  key->second.deadline = fresh.deadline;
  store_.Requeue(request.db, key, std::move(place));
  return {};
}

Status MemoryEngine::SetIfAbsent(const Request& request, std::string_view value, bool* stored) {
  *stored = Find(request) == nullptr;
  if (*stored) Create(request, String(value));
  return {};
}

Status MemoryEngine::Increment(const Request& request, std::int64_t* value) {
  Opened<String> text;
  if (Status status = Open(request, &text); !status.ok()) return status;
  std::int64_t number = 0;
  if (text.value != nullptr) {
    const char* end = text.value->data() + text.value->size();
    const auto [parsed, failure] = std::from_chars(text.value->data(), end, number);
    if (failure != std::errc() || parsed != end || std::to_string(number) != *text.value) {
      return {StatusCode::kWrongKind, "the value is no decimal 64-bit number in its shortest form"};
    }
  }
  *value = number;
  if (number == std::numeric_limits<std::int64_t>::max()) return {StatusCode::kFailed, "the sum is out of range"};
  std::string sum = std::to_string(number + 1);
  if (text.value != nullptr) {
    text.value->swap(sum);
  } else {
    Create(request, std::move(sum));
  }
  ++*value;
  return {};
}

Status MemoryEngine::HashSet(const Request& request, std::span<const FieldView> fields) {
  Opened<Hash> hash;
  if (Status status = Open(request, &hash); !status.ok()) return status;
  Hash staged;
  for (const FieldView& field : fields) staged.fields.insert_or_assign(field.tag, HashField{std::string(field.bytes)});
  if (hash.key == nullptr) {
    Create(request, std::move(staged));
    return {};
  }
  MakeRoom(&hash.value->fields, staged.fields.size());
  for (auto& [tag, field] : staged.fields) {
    const auto known = hash.value->fields.find(tag);
    if (known == hash.value->fields.end()) continue;
    known->second.bytes.swap(field.bytes);
    SetDeadline(hash.value, tag, &known->second, std::nullopt);
  }
  hash.value->fields.merge(staged.fields);
  store_.Requeue(request.db, hash.key);
  return {};
}

Status MemoryEngine::HashSetIfAbsent(const Request& request, std::span<const FieldView> fields, std::int64_t* written) {
  Opened<Hash> hash;
  if (Status status = Open(request, &hash); !status.ok()) return status;
  Hash staged;
  for (const FieldView& field : fields) staged.fields.try_emplace(field.tag, HashField{std::string(field.bytes)});
  const std::size_t offered = staged.fields.size();
  if (hash.key == nullptr) {
    Create(request, std::move(staged));
    *written = Count(offered);
    return {};
  }
  MakeRoom(&hash.value->fields, offered);
  hash.value->fields.merge(staged.fields);
  *written = Count(offered - staged.fields.size());
  return {};
}

Status MemoryEngine::HashGet(const Request& request, std::span<const FieldTag> tags, HashContents* contents) {
  Opened<Hash> hash;
  Status status = Open(request, &hash);
  if (hash.value == nullptr) return status;
  contents->exists = true;
  std::unordered_set<FieldTag> copied;
  for (const FieldTag tag : tags) {
    const auto found = hash.value->fields.find(tag);
    if (found == hash.value->fields.end() || !copied.insert(tag).second) continue;
    contents->fields.push_back({tag, found->second.bytes});
  }
  return status;
}

Status MemoryEngine::HashGetAll(const Request& request, HashContents* contents) {
  Opened<Hash> hash;
  Status status = Open(request, &hash);
  if (hash.value == nullptr) return status;
  contents->exists = true;
  contents->fields.reserve(hash.value->fields.size());
  for (const auto& [tag, field] : hash.value->fields) contents->fields.push_back({tag, field.bytes});
  return status;
}

Status MemoryEngine::HashExpire(const Request& request, std::span<const FieldTag> tags, std::uint32_t milliseconds,
                                std::int64_t* count) {
  Opened<Hash> hash;
  Status status = Open(request, &hash);
  if (hash.value == nullptr) return status;
  const std::int64_t time = *After(milliseconds);
  decltype(hash.value->expiring) staged;
  for (const FieldTag tag : tags) {
    if (hash.value->fields.contains(tag)) staged.insert({time, tag});
  }
  *count = Count(staged.size());
  Store::Place place = Store::MakePlace();
  for (const auto& [due, tag] : staged) {
    const auto found = hash.value->fields.find(tag);
    SetDeadline(hash.value, tag, &found->second, time);
    if (milliseconds == 0) hash.value->fields.erase(found);
  }
  if (milliseconds != 0) hash.value->expiring.merge(staged);
  store_.Requeue(request.db, hash.key, std::move(place));
  DropEmpty(request, hash);
  return {};
}

Status MemoryEngine::HashRemaining(const Request& request, std::vector<FieldRemaining>* fields) {
  Opened<Hash> hash;
  Status status = Open(request, &hash);
  if (hash.value == nullptr) return status;
  const std::int64_t now = clock_.Steady();
  for (const auto& [time, tag] : hash.value->expiring) fields->push_back({tag, time - now});
  return status;
}

Status MemoryEngine::ListPush(const Request& request, End end, std::string_view value, std::int64_t* length) {
  Opened<List> list;
  if (Status status = Open(request, &list); !status.ok()) return status;
  List element;
  element.emplace_back(value);
  *length = 1;
  if (list.key == nullptr) {
    Create(request, std::move(element));
    return {};
  }
  list.value->splice(end == End::kHead ? list.value->begin() : list.value->end(), element);
  *length = Count(list.value->size());
  return {};
}

Status MemoryEngine::ListPop(const Request& request, End end, std::optional<std::string>* value, std::int64_t* left) {
  Opened<List> list;
  Status status = Open(request, &list);
  if (list.value == nullptr) return status;
  const auto element = end == End::kHead ? list.value->begin() : std::prev(list.value->end());
  *value = std::move(*element);
  list.value->erase(element);
  *left = Count(list.value->size());
  DropEmpty(request, list);
  return status;
}

Status MemoryEngine::ListLength(const Request& request, std::int64_t* length) {
  Opened<List> list;
  Status status = Open(request, &list);
  if (list.value != nullptr) *length = Count(list.value->size());
  return status;
}

Status MemoryEngine::ListRange(const Request& request, std::int64_t start, std::int64_t stop,
                               std::vector<std::string>* values) {
  Opened<List> list;
  Status status = Open(request, &list);
  if (list.value == nullptr) return status;
  const Range range = RangeOf(start, stop, list.value->size());
  if (range.count == 0) return status;
  values->reserve(range.count);
  std::copy_n(Nth(*list.value, range.first), range.count, std::back_inserter(*values));
  return status;
}

Status MemoryEngine::ListInsert(const Request& request, std::string_view pivot, Where where, std::string_view value,
                                std::int64_t* length) {
  Opened<List> list;
  Status status = Open(request, &list);
  if (list.value == nullptr) return status;
  auto place = std::find(list.value->begin(), list.value->end(), pivot);
  if (place == list.value->end()) return NoElement();
  if (where == Where::kAfter) ++place;
  list.value->emplace(place, value);
  *length = Count(list.value->size());
  return status;
}

Status MemoryEngine::ListSet(const Request& request, std::int64_t position, std::string_view value) {
  Opened<List> list;
  if (Status status = Open(request, &list); !status.ok()) return status;
  if (list.value == nullptr) return NoElement();
  const std::int64_t length = Count(list.value->size());
  const std::int64_t index = position < 0 ? position + length : position;
  if (index < 0 || index >= length) return NoElement();
  std::string(value).swap(*Nth(*list.value, static_cast<std::size_t>(index)));
  return {};
}

Status MemoryEngine::ListRemove(const Request& request, std::uint64_t most, std::string_view value,
                                std::int64_t* removed) {
  Opened<List> list;
  Status status = Open(request, &list);
  if (list.value == nullptr) return status;
  const auto limit = most == 0 ? std::numeric_limits<std::uint64_t>::max() : most;
  std::uint64_t gone = 0;
  for (auto element = list.value->begin(); element != list.value->end() && gone < limit;) {
    if (*element == value) {
      element = list.value->erase(element);
      ++gone;
    } else {
      ++element;
    }
  }
  *removed = static_cast<std::int64_t>(gone);
  DropEmpty(request, list);
  return status;
}

Status MemoryEngine::SetAdd(const Request& request, std::string_view member, bool* added) {
  Opened<hostkit::Set> set;
  if (Status status = Open(request, &set); !status.ok()) return status;
  if (set.key != nullptr) {
    *added = set.value->emplace(member).second;
    return {};
  }
  Create(request, hostkit::Set{std::string(member)});
  *added = true;
  return {};
}

Status MemoryEngine::SetRemove(const Request& request, std::string_view member, bool* removed) {
  Opened<hostkit::Set> set;
  Status status = Open(request, &set);
  if (set.value == nullptr) return status;
  const auto found = set.value->find(member);
  *removed = found != set.value->end();
  if (*removed) set.value->erase(found);
  DropEmpty(request, set);
  return status;
}

Status MemoryEngine::SetContains(const Request& request, std::string_view member, bool* contained) {
  Opened<hostkit::Set> set;
  Status status = Open(request, &set);
  *contained = set.value != nullptr && set.value->contains(member);
  return status;
}

Status MemoryEngine::SetSize(const Request& request, std::int64_t* size) {
  Opened<hostkit::Set> set;
  Status status = Open(request, &set);
  if (set.value != nullptr) *size = Count(set.value->size());
  return status;
}

Status MemoryEngine::SetMembers(const Request& request, std::vector<std::string>* members) {
  Opened<hostkit::Set> set;
  Status status = Open(request, &set);
  if (set.value != nullptr) members->assign(set.value->begin(), set.value->end());
  return status;
}

Status MemoryEngine::SortedAdd(const Request& request, std::span<const ScoredView> members, std::int64_t* added) {
  Opened<SortedSet> sorted;
  if (Status status = Open(request, &sorted); !status.ok()) return status;
  TextMap<double> wanted;
  for (const auto& [member, score] : members) wanted.insert_or_assign(std::string(member), score);
  SortedSet fresh;
  SortedSet* const target = sorted.key != nullptr ? sorted.value : &fresh;
  MakeRoom(&target->scores, wanted.size());

  // The new places first, which may fail; then the old ones go, which cannot.
  std::vector<Ranked> placed;
  placed.reserve(wanted.size());
  try {
    for (const auto& [member, score] : wanted) {
      const auto known = target->scores.find(member);
      if (known != target->scores.end() && known->second == score) continue;
      const Ranked place{score, known != target->scores.end() ? &known->first : &member};
      target->ranking->insert(place);
      placed.push_back(place);
    }
  } catch (...) {
    for (const Ranked& place : placed) target->ranking->erase(place);
    throw;
  }
  if (sorted.key == nullptr) {
    // The ranking points at what is wanted, whose names stay where they are.
    fresh.scores.merge(wanted);
    *added = Count(fresh.scores.size());
    Create(request, std::move(fresh));
    return {};
  }
  for (const auto& [score, member] : placed) {
    const auto known = target->scores.find(*member);
    if (known == target->scores.end()) continue;
    target->ranking->erase(Ranked{known->second, member});
    known->second = score;
  }
  const std::size_t before = target->scores.size();
  target->scores.merge(wanted);
  *added = Count(target->scores.size() - before);
  return {};
}

std::int64_t MemoryEngine::RemoveRanks(const Request& request, const Opened<SortedSet>& opened, std::size_t first,
                                       std::size_t count) noexcept {
  Ranking& ranking = *opened.value->ranking;
  for (std::size_t index = 0; index < count; ++index) {
    const auto ranked = ranking.find_by_order(first);
    const auto member = opened.value->scores.find(*ranked->member);
    ranking.erase(ranked);
    opened.value->scores.erase(member);
  }
  DropEmpty(request, opened);
  return Count(count);
}

Status MemoryEngine::SortedRemove(const Request& request, std::span<const std::string_view> members,
                                  std::int64_t* removed) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  for (const std::string_view member : members) {
    const auto found = sorted.value->scores.find(member);
    if (found == sorted.value->scores.end()) continue;
    sorted.value->ranking->erase(Ranked{found->second, &found->first});
    sorted.value->scores.erase(found);
    ++*removed;
  }
  DropEmpty(request, sorted);
  return status;
}

Status MemoryEngine::SortedSize(const Request& request, std::int64_t* size) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value != nullptr) *size = Count(sorted.value->scores.size());
  return status;
}

Status MemoryEngine::SortedCount(const Request& request, double min, double max, std::int64_t* count) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value != nullptr) *count = Count(RangeOfScores(*sorted.value->ranking, min, max).count);
  return status;
}

Status MemoryEngine::SortedRange(const Request& request, std::int64_t start, std::int64_t stop,
                                 std::vector<ScoredMember>* members) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const Ranking& ranking = *sorted.value->ranking;
  CopyRanks(ranking, RangeOf(start, stop, ranking.size()), members);
  return status;
}

Status MemoryEngine::SortedRangeByScore(const Request& request, double min, double max,
                                        std::vector<ScoredMember>* members) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const Ranking& ranking = *sorted.value->ranking;
  CopyRanks(ranking, RangeOfScores(ranking, min, max), members);
  return status;
}

Status MemoryEngine::SortedRank(const Request& request, std::string_view member, std::optional<std::int64_t>* rank) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const auto found = sorted.value->scores.find(member);
  if (found == sorted.value->scores.end()) return status;
  *rank = Count(sorted.value->ranking->order_of_key({found->second, &found->first}));
  return status;
}

Status MemoryEngine::SortedScore(const Request& request, std::string_view member, std::optional<double>* score) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const auto found = sorted.value->scores.find(member);
  if (found != sorted.value->scores.end()) *score = found->second;
  return status;
}

Status MemoryEngine::SortedRemoveRange(const Request& request, std::int64_t start, std::int64_t stop,
                                       std::int64_t* removed) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const Range range = RangeOf(start, stop, sorted.value->ranking->size());
  *removed = RemoveRanks(request, sorted, range.first, range.count);
  return status;
}

Status MemoryEngine::SortedRemoveRangeByScore(const Request& request, double min, double max, std::int64_t* removed) {
  Opened<SortedSet> sorted;
  Status status = Open(request, &sorted);
  if (sorted.value == nullptr) return status;
  const Range range = RangeOfScores(*sorted.value->ranking, min, max);
  *removed = RemoveRanks(request, sorted, range.first, range.count);
  return status;
}

Status MemoryEngine::Subscribe(const Request& /*pattern*/) { return {}; }
Status MemoryEngine::Unsubscribe(const Request& /*pattern*/) { return {}; }

Status MemoryEngine::Publish(const Request& /*request*/, std::string_view /*message*/, std::int64_t* /*receivers*/) {
  return {};
}

Status MemoryEngine::Poll(TimeLimit /*wait*/, std::vector<Message>* /*messages*/) {
  RunExpiry();
  return {};
}

// Goes from name to name. One element at a time, so that each is what it is when its turn comes.
class MemoryEngine::Scanner : public Cursor {
 public:
  Scanner(MemoryEngine* engine, const Request& pattern, Bring bring)
      : engine_(engine),
        db_(pattern.db),
        pattern_(pattern.name),
        bring_(bring),
        newest_(engine->store_.last_serial()) {}

  Status Next(std::size_t /*most*/, std::vector<Element>* batch) override {
    engine_->RunExpiry();
    const Store::Order& names = engine_->store_.Names(db_);
    auto next = Resume(names);
    while (next != names.end() && !Wanted(**next)) ++next;
    if (next == names.end()) return {};
    Element element = ElementOf(**next, bring_);
    last_ = element.name;
    batch->push_back(std::move(element));
    place_ = next;
    removals_ = engine_->store_.removals();
    started_ = true;
    return {};
  }

 private:
  // A key that came after the scan's beginning is not visited.
  bool Wanted(const Named& key) const { return key.second.serial <= newest_ && GlobMatches(pattern_, key.first); }

  // The place behind the last name, also when that is gone.
  Store::Order::const_iterator Resume(const Store::Order& names) const {
    if (!started_) return names.begin();
    return removals_ == engine_->store_.removals() ? std::next(place_) : names.upper_bound(std::string_view{last_});
  }

  MemoryEngine* const engine_;
  const int db_;
  const std::string pattern_;
  const Bring bring_;
  const std::uint64_t newest_;
  bool started_ = false;
  std::string last_;
  Store::Order::const_iterator place_;
  std::uint64_t removals_ = 0;
};

Status MemoryEngine::Scan(const Request& pattern, Bring bring, std::unique_ptr<Cursor>* cursor) {
  *cursor = std::make_unique<Scanner>(this, pattern, bring);
  return {};
}

Status MemoryEngine::ReadElement(const Request& request, std::optional<Element>* element) {
  const Named* key = Find(request);
  if (key != nullptr) *element = ElementOf(*key, Bring::kStrings);
  return {};
}

}  // namespace hostkit

// Random commands of all families, run on the in-process engine and on the server: same statuses, results and contents.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "hostkit/memory_engine.h"
#include "store.h"

namespace hostkit {
namespace {

// One of the engines, and what came of the last command, as text.
class Side {
 public:
  explicit Side(Engine* engine) : engine_(*engine) {}

  // Calls a method with one out-parameter and notes status and result.
  template <typename Out, typename... Parameters, typename... Arguments>
  void Call(Status (Engine::*method)(const Request&, Parameters...), const Request& request, Arguments... arguments) {
    Out out = {};
    const Status status = (engine_.*method)(request, arguments..., &out);
    Begin(status);
    if (status.ok()) Note(out);
  }
  template <typename... Parameters, typename... Arguments>
  void CallPlain(Status (Engine::*method)(const Request&, Parameters...), const Request& request,
                 Arguments... arguments) {
    Begin((engine_.*method)(request, arguments...));
  }
  void Pop(const Request& request, End end) {
    std::optional<std::string> value;
    std::int64_t left = 0;
    const Status status = engine_.ListPop(request, end, &value, &left);
    Begin(status);
    if (status.ok()) Note(value), Note(left);
  }
  void Increment(const Request& request) {
    std::int64_t value = 0;
    const Status status = engine_.Increment(request, &value);
    Begin(status);
    if (status.ok() || status.code() == StatusCode::kFailed) Note(value);
  }
  void Contents(const Request& pattern) {
    std::unique_ptr<Cursor> cursor;
    Begin(engine_.Scan(pattern, Bring::kStrings, &cursor));
    std::vector<Element> elements;
    for (std::size_t before = 1; cursor != nullptr && before != elements.size();) {
      before = elements.size();
      const Status status = cursor->Next(100, &elements);
      ASSERT_TRUE(status.ok()) << status.text();
    }
    std::sort(elements.begin(), elements.end(), [](const Element& a, const Element& b) { return a.name < b.name; });
    for (const Element& element : elements) text_ << element.name << '=' << element.value << '\n';
  }

  std::string Text() const { return text_.str(); }

 private:
  void Begin(const Status& status) {
    text_.str("");
    text_ << static_cast<int>(status.code()) << ' ';
  }

  void Note(bool value) { text_ << value; }
  void Note(std::int64_t value) { text_ << value << ' '; }
  // A server may lose the sign of a zero.
  void Note(double value) { text_ << std::hexfloat << (value == 0 ? 0 : value); }
  void Note(const std::string& value) { text_ << value.size() << ':' << value << ' '; }
  template <typename Value> void Note(const std::optional<Value>& value) {
    value ? Note(*value) : static_cast<void>(text_ << "none");
  }
  void Note(std::vector<std::string> values) {
    if (sorted_) std::sort(values.begin(), values.end());
    for (const std::string& value : values) Note(value);
  }
  void Note(const std::vector<ScoredMember>& members) {
    for (const ScoredMember& scored : members) Note(scored.member), Note(scored.score);
  }
  void Note(HashContents hash) {
    text_ << hash.exists;
    std::sort(hash.fields.begin(), hash.fields.end(), [](const Field& a, const Field& b) { return a.tag < b.tag; });
    for (const Field& field : hash.fields) text_ << field.tag << '=' << field.bytes << ' ';
  }
  // Times pass while the test runs: to the nearest thousand seconds.
  void Note(std::vector<FieldRemaining> fields) {
    std::sort(fields.begin(), fields.end(),
              [](const FieldRemaining& a, const FieldRemaining& b) { return a.tag < b.tag; });
    for (const FieldRemaining& field : fields) text_ << field.tag << '~' << Rounded(field.milliseconds) << ' ';
  }
  void Note(const KeyState& state) {
    text_ << static_cast<int>(state.kind) << '~' << (state.remaining ? Rounded(*state.remaining) : -1);
  }
  static std::int64_t Rounded(std::int64_t milliseconds) { return (milliseconds + 500000) / 1000000; }

 public:
  bool sorted_ = false;  // the next list of texts comes in any order

 private:
  Engine& engine_;
  std::ostringstream text_;
};

class Differential : public ::testing::Test {
 protected:
  int Number(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
  template <typename Value, std::size_t kCount> Value One(const std::array<Value, kCount>& values) {
    return values[static_cast<std::size_t>(Number(kCount - 1))];
  }

  std::string_view Bytes() {
    static const std::array<std::string_view, 14> values = {"",
                                                            "a",
                                                            "b",
                                                            "longer text with spaces",
                                                            std::string_view("nul\0inside", 10),
                                                            "\r\n",
                                                            "7",
                                                            "-1",
                                                            "41",
                                                            "x",
                                                            "9223372036854775806",
                                                            "\xff\xfe",
                                                            "010",
                                                            "-0"};
    return One(values);
  }
  double Score() { return One(std::array<double, 9>{0, -0.0, 1, 1.5, -2.25, 1e300, 0.1, HUGE_VAL, -HUGE_VAL}); }
  std::int64_t Position() { return Number(12) - 6; }
  std::uint32_t Milliseconds() { return One(std::array<std::uint32_t, 4>{0, 2000000, 40000000, 4294967295U}); }

  // Runs one random command on a side; the same state of random_ gives the same command.
  void Step(Side* side);

  std::mt19937 random_{20240229};
};

void Differential::Step(Side* side) {
  static const std::array<std::string_view, 5> names = {"a", "{tag}b", "c/with/slashes", "d e", "\x80"};
  const Request key{Number(2), One(names)};
  side->sorted_ = false;
  const int what = Number(41);
  switch (what) {
    case 0: return side->Call<bool>(&Engine::Delete, key);
    case 1: return side->Call<bool>(&Engine::Exists, key);
    case 2: return side->Call<KeyState>(&Engine::Inspect, key);
    case 3: return side->Call<bool>(&Engine::Expire, key, Milliseconds());
    case 4: return side->Call<bool>(&Engine::Persist, key, Milliseconds());
    case 5:
    case 6: return side->Call<std::optional<std::string>>(&Engine::Get, key);
    case 7: return side->CallPlain(&Engine::Set, key, Bytes(), std::optional<std::uint32_t>());
    case 8: return side->CallPlain(&Engine::Set, key, Bytes(), std::optional<std::uint32_t>(2000000));
    case 9: return side->Call<bool>(&Engine::SetIfAbsent, key, Bytes());
    case 10: return side->Increment(key);
    case 11:
    case 12:
    case 13: {
      std::vector<FieldView> fields;
      for (int count = Number(3) + 1; count > 0; --count) {
        const FieldTag tag = One(std::array<FieldTag, 4>{0, 1, 70000, 4294967295U});
        fields.push_back({tag, Bytes()});
      }
      if (what == 13) {
        return side->Call<std::int64_t>(&Engine::HashSetIfAbsent, key, std::span<const FieldView>(fields));
      }
      return side->CallPlain(&Engine::HashSet, key, std::span<const FieldView>(fields));
    }
    case 14:
    case 15: {
      const std::array<FieldTag, 4> tags = {1, 4294967295U, 5, 1};
      if (what == 14) return side->Call<HashContents>(&Engine::HashGet, key, std::span<const FieldTag>(tags));
      return side->Call<HashContents>(&Engine::HashGetAll, key);
    }
    case 16: {
      const std::array<FieldTag, 3> tags = {One(std::array<FieldTag, 2>{0, 1}), 70000, 1};
      return side->Call<std::int64_t>(&Engine::HashExpire, key, std::span<const FieldTag>(tags), Milliseconds());
    }
    case 17: return side->Call<std::vector<FieldRemaining>>(&Engine::HashRemaining, key);
    case 18:
    case 19:
    case 20: {
      const End end = Number(1) == 0 ? End::kHead : End::kTail;
      return side->Call<std::int64_t>(&Engine::ListPush, key, end, Bytes());
    }
    case 21: return side->Pop(key, Number(1) == 0 ? End::kHead : End::kTail);
    case 22: return side->Call<std::int64_t>(&Engine::ListLength, key);
    case 23: {
      const std::int64_t start = Position();
      return side->Call<std::vector<std::string>>(&Engine::ListRange, key, start, Position());
    }
    case 24: {
      const std::string_view pivot = Bytes();
      const Where where = Number(1) == 0 ? Where::kBefore : Where::kAfter;
      return side->Call<std::int64_t>(&Engine::ListInsert, key, pivot, where, Bytes());
    }
    case 25: {
      const std::int64_t position = Position();
      return side->CallPlain(&Engine::ListSet, key, position, Bytes());
    }
    case 26: {
      const std::uint64_t most = One(std::array<std::uint64_t, 3>{0, 1, std::numeric_limits<std::uint64_t>::max()});
      return side->Call<std::int64_t>(&Engine::ListRemove, key, most, Bytes());
    }
    case 27:
    case 28: return side->Call<bool>(&Engine::SetAdd, key, Bytes());
    case 29: return side->Call<bool>(&Engine::SetRemove, key, Bytes());
    case 30: return side->Call<bool>(&Engine::SetContains, key, Bytes());
    case 31: return side->Call<std::int64_t>(&Engine::SetSize, key);
    case 32: side->sorted_ = true; return side->Call<std::vector<std::string>>(&Engine::SetMembers, key);
    case 33:
    case 34: {
      std::vector<ScoredView> members;
      for (int count = Number(4) + 1; count > 0; --count) {
        const std::string_view member = Bytes();
        members.push_back({member, Score()});
      }
      return side->Call<std::int64_t>(&Engine::SortedAdd, key, std::span<const ScoredView>(members));
    }
    case 35: {
      const std::string_view first = Bytes();
      const std::array<std::string_view, 2> members = {first, Bytes()};
      return side->Call<std::int64_t>(&Engine::SortedRemove, key, std::span<const std::string_view>(members));
    }
    case 36: return side->Call<std::int64_t>(&Engine::SortedSize, key);
    case 37: {
      const double min = Score();
      const double max = Score();
      if (Number(1) == 0) return side->Call<std::int64_t>(&Engine::SortedCount, key, min, max);
      return side->Call<std::vector<ScoredMember>>(&Engine::SortedRangeByScore, key, min, max);
    }
    case 38: {
      const std::int64_t start = Position();
      return side->Call<std::vector<ScoredMember>>(&Engine::SortedRange, key, start, Position());
    }
    case 39: return side->Call<std::optional<std::int64_t>>(&Engine::SortedRank, key, Bytes());
    case 40: return side->Call<std::optional<double>>(&Engine::SortedScore, key, Bytes());
    default: {
      const std::int64_t start = Position();
      const std::int64_t stop = Position();
      const double min = Score();
      const double max = Score();
      if (Number(1) == 0) return side->Call<std::int64_t>(&Engine::SortedRemoveRange, key, start, stop);
      return side->Call<std::int64_t>(&Engine::SortedRemoveRangeByScore, key, min, max);
    }
  }
}

TEST_F(Differential, TheServerDoesWhatTheInProcessEngineDoes) {
  const int commands = StoreIsCluster() ? 20000 : 100000;
  const SystemClock clock;
  MemoryEngine memory(clock, "");
  const std::unique_ptr<Engine> server = OpenStore();
  Side here(&memory);
  Side there(server.get());
  for (int command = 0; command < commands; ++command) {
    const std::mt19937 before = random_;
    Step(&here);
    random_ = before;
    Step(&there);
    std::mt19937 number = before;
    ASSERT_EQ(here.Text(), there.Text()) << "command " << command << ", kind "
                                         << (std::uniform_int_distribution<int>(0, 2)(number),
                                             std::uniform_int_distribution<int>(0, 4)(number),
                                             std::uniform_int_distribution<int>(0, 41)(number));
    if (command % 1000 != 999) continue;
    for (const int db : {0, 1, 2}) {
      here.Contents({db, "*"});
      there.Contents({db, "*"});
      ASSERT_EQ(here.Text(), there.Text()) << "after command " << command;
    }
  }
}

}  // namespace
}  // namespace hostkit

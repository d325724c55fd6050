#include "engine_conformance.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <optional>
#include <set>
#include <thread>

namespace hostkit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

::testing::AssertionResult Succeeds(const Status& status) {
  if (status.ok()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "status " << static_cast<int>(status.code()) << ": " << status.text();
}

// Refused for that reason, and it says why.
::testing::AssertionResult Fails(const Status& status, StatusCode code) {
  if (status.code() == code && !status.text().empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "status " << static_cast<int>(status.code()) << ": " << status.text();
}

}  // namespace

void EngineConformance::SetUp() {
  engine = GetParam().open();
  ASSERT_NE(engine, nullptr);
  if (engine->Supports(Feature::kClock)) {
    ASSERT_TRUE(Succeeds(engine->FreezeClock()));
  }
}

void EngineConformance::Pass(std::int64_t milliseconds) {
  if (engine->Supports(Feature::kClock)) {
    ASSERT_TRUE(Succeeds(engine->AdvanceClock(milliseconds)));
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds + 20));
  }
}

std::string EngineConformance::Text(std::string_view name, int db) {
  std::optional<std::string> value;
  EXPECT_TRUE(Succeeds(engine->Get(Key(name, db), &value)));
  return value.value_or("(none)");
}

std::string EngineConformance::HashText(std::string_view name) {
  HashContents hash;
  EXPECT_TRUE(Succeeds(engine->HashGetAll(Key(name), &hash)));
  EXPECT_EQ(hash.exists, !hash.fields.empty());
  std::sort(hash.fields.begin(), hash.fields.end(), [](const Field& a, const Field& b) { return a.tag < b.tag; });
  std::string text;
  for (const Field& field : hash.fields) text += std::to_string(field.tag) + "=" + field.bytes + " ";
  return text;
}

EngineConformance::Texts EngineConformance::List(std::string_view name) {
  Texts values;
  EXPECT_TRUE(Succeeds(engine->ListRange(Key(name), 0, -1, &values)));
  return values;
}

EngineConformance::Texts EngineConformance::Members(std::string_view name) {
  Texts members;
  EXPECT_TRUE(Succeeds(engine->SetMembers(Key(name), &members)));
  std::sort(members.begin(), members.end());
  return members;
}

std::string EngineConformance::Sorted(std::string_view name) {
  std::vector<ScoredMember> members;
  EXPECT_TRUE(Succeeds(engine->SortedRange(Key(name), 0, -1, &members)));
  std::string text;
  for (const ScoredMember& member : members) text += member.member + "=" + std::to_string(member.score) + " ";
  return text;
}

Kind EngineConformance::KindOf(std::string_view name) {
  KeyState state;
  EXPECT_TRUE(Succeeds(engine->Inspect(Key(name), &state)));
  return state.kind;
}

bool EngineConformance::Exists(std::string_view name) {
  bool exists = false;
  EXPECT_TRUE(Succeeds(engine->Exists(Key(name), &exists)));
  return exists;
}

std::int64_t EngineConformance::Remaining(std::string_view name) {
  KeyState state;
  EXPECT_TRUE(Succeeds(engine->Inspect(Key(name), &state)));
  return state.remaining.value_or(-1);
}

EngineConformance::Texts EngineConformance::Names(std::string_view pattern, int db) {
  std::unique_ptr<Cursor> cursor;
  EXPECT_TRUE(Succeeds(engine->Scan(Key(pattern, db), Bring::kNames, &cursor)));
  Texts names;
  for (std::vector<Element> batch;; batch.clear()) {
    EXPECT_TRUE(Succeeds(cursor->Next(7, &batch)));
    EXPECT_LE(batch.size(), 7U);
    if (batch.empty()) break;
    for (const Element& element : batch) names.push_back(element.name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

void EngineConformance::Push(std::string_view name, std::initializer_list<std::string_view> values) {
  std::int64_t length;
  for (const std::string_view value : values) {
    ASSERT_TRUE(Succeeds(engine->ListPush(Key(name), End::kTail, value, &length)));
  }
}

void EngineConformance::Add(std::string_view name, std::initializer_list<ScoredView> members) {
  std::int64_t added = 0;
  ASSERT_TRUE(Succeeds(engine->SortedAdd(Key(name), std::vector<ScoredView>(members), &added)));
}

void EngineConformance::Fields(std::string_view name, std::initializer_list<FieldView> fields) {
  ASSERT_TRUE(Succeeds(engine->HashSet(Key(name), std::vector<FieldView>(fields))));
}

void EngineConformance::FillEachKind() {
  ASSERT_TRUE(Succeeds(engine->Set(Key("string"), "1", std::nullopt)));
  Fields("hash", {{1, "one"}});
  Push("list", {"1"});
  bool added;
  ASSERT_TRUE(Succeeds(engine->SetAdd(Key("set"), "1", &added)));
  Add("sorted", {{"1", 1}});
}

std::string EngineConformance::EachKind() {
  std::string text = Text("string") + "|" + HashText("hash") + "|";
  for (const std::string& value : List("list")) text += value + " ";
  text += "|";
  for (const std::string& value : Members("set")) text += value + " ";
  return text + "|" + Sorted("sorted");
}

TEST_P(EngineConformance, StringsAreBytes) {
  EXPECT_EQ(Text("k"), "(none)");
  const std::string bytes("a\0\r\n\xff ", 6);
  EXPECT_TRUE(Succeeds(engine->Set(Key("k"), bytes, std::nullopt)));
  EXPECT_EQ(Text("k"), bytes);
  EXPECT_TRUE(Succeeds(engine->Set(Key("k"), std::string_view(), std::nullopt)));
  EXPECT_EQ(Text("k"), "");
  const std::string large(1 << 20, 'x');
  EXPECT_TRUE(Succeeds(engine->Set(Key("k"), large, std::nullopt)));
  EXPECT_EQ(Text("k"), large);
}

TEST_P(EngineConformance, KeysAreBytesAndDatabasesApart) {
  for (const std::string& name : {std::string("a b"), std::string("{tag}x"), std::string("*?[x]\\"),
                                  std::string("\xff\n"), std::string(511, 'k'), std::string("37:k")}) {
    EXPECT_TRUE(Succeeds(engine->Set(Key(name, 0), "0", std::nullopt)));
    EXPECT_TRUE(Succeeds(engine->Set(Key(name, 37), "37", std::nullopt)));
    EXPECT_EQ(Text(name, 0), "0");
    EXPECT_EQ(Text(name, 37), "37");
    EXPECT_EQ(Text(name, 3), "(none)");
  }
}

TEST_P(EngineConformance, SetReplacesAnyKindAndItsExpiry) {
  FillEachKind();
  bool exists;
  for (const char* name : {"string", "hash", "list", "set", "sorted"}) {
    EXPECT_TRUE(Succeeds(engine->Expire(Key(name), 60000, &exists)));
    EXPECT_TRUE(Succeeds(engine->Set(Key(name), "v", std::nullopt)));
    EXPECT_EQ(Text(name), "v");
    EXPECT_EQ(Remaining(name), -1);
  }
}

TEST_P(EngineConformance, SetIfAbsentStoresOnce) {
  FillEachKind();
  bool stored = false;
  EXPECT_TRUE(Succeeds(engine->SetIfAbsent(Key("new"), "1", &stored)));
  EXPECT_TRUE(stored);
  for (const char* name : {"new", "hash", "list", "set", "sorted"}) {
    EXPECT_TRUE(Succeeds(engine->SetIfAbsent(Key(name), "2", &stored)));
    EXPECT_FALSE(stored) << name;
  }
  EXPECT_EQ(Text("new"), "1");
}

TEST_P(EngineConformance, IncrementCounts) {
  std::int64_t value = 0;
  EXPECT_TRUE(Succeeds(engine->Increment(Key("n"), &value)));
  EXPECT_EQ(value, 1);
  EXPECT_TRUE(Succeeds(engine->Set(Key("n"), "-2", 60000)));
  EXPECT_TRUE(Succeeds(engine->Increment(Key("n"), &value)));
  EXPECT_EQ(value, -1);
  EXPECT_EQ(Text("n"), "-1");
  EXPECT_GT(Remaining("n"), 0) << "the expiry stays";

  for (const char* text : {"", "x", "1x", "1.5", "01", "-0", "+1", " 1", "9223372036854775808"}) {
    EXPECT_TRUE(Succeeds(engine->Set(Key("n"), text, std::nullopt)));
    EXPECT_TRUE(Fails(engine->Increment(Key("n"), &value), StatusCode::kWrongKind)) << text;
    EXPECT_EQ(Text("n"), text);
  }
  EXPECT_TRUE(Succeeds(engine->Set(Key("n"), "9223372036854775807", std::nullopt)));
  EXPECT_TRUE(Fails(engine->Increment(Key("n"), &value), StatusCode::kFailed));
  EXPECT_EQ(value, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Text("n"), "9223372036854775807");
}

TEST_P(EngineConformance, DeleteTellsWhetherThereWasAKey) {
  FillEachKind();
  bool deleted = false;
  for (const char* name : {"string", "hash", "list", "set", "sorted"}) {
    EXPECT_TRUE(Exists(name));
    EXPECT_TRUE(Succeeds(engine->Delete(Key(name), &deleted)));
    EXPECT_TRUE(deleted);
    EXPECT_TRUE(Succeeds(engine->Delete(Key(name), &deleted)));
    EXPECT_FALSE(deleted);
    EXPECT_FALSE(Exists(name));
  }
}

TEST_P(EngineConformance, InspectTellsKindAndTime) {
  FillEachKind();
  EXPECT_EQ(KindOf("nobody"), Kind::kNone);
  EXPECT_EQ(KindOf("string"), Kind::kString);
  EXPECT_EQ(KindOf("hash"), Kind::kHash);
  EXPECT_EQ(KindOf("list"), Kind::kList);
  EXPECT_EQ(KindOf("set"), Kind::kSet);
  EXPECT_EQ(KindOf("sorted"), Kind::kSortedSet);
  EXPECT_EQ(Remaining("string"), -1);
  bool exists;
  EXPECT_TRUE(Succeeds(engine->Expire(Key("string"), 60000, &exists)));
  EXPECT_GT(Remaining("string"), 50000);
  EXPECT_LE(Remaining("string"), 60000);
}

TEST_P(EngineConformance, AKeyExpires) {
  FillEachKind();
  bool exists = false;
  for (const char* name : {"string", "hash", "list", "set", "sorted"}) {
    EXPECT_TRUE(Succeeds(engine->Expire(Key(name), 200, &exists)));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(Exists(name));
  }
  EXPECT_TRUE(Succeeds(engine->Set(Key("other"), "v", 200)));
  Pass(200);
  EXPECT_EQ(EachKind(), "(none)||||");
  EXPECT_FALSE(Exists("other"));
  EXPECT_EQ(Names("*"), Texts());
  EXPECT_TRUE(Succeeds(engine->Expire(Key("string"), 200, &exists)));
  EXPECT_FALSE(exists);
}

TEST_P(EngineConformance, ANewTimeReplacesTheOldAndZeroIsNow) {
  FillEachKind();
  bool exists;
  EXPECT_TRUE(Succeeds(engine->Expire(Key("list"), 100, &exists)));
  EXPECT_TRUE(Succeeds(engine->Expire(Key("list"), 60000, &exists)));
  Pass(100);
  EXPECT_TRUE(Exists("list"));
  EXPECT_TRUE(Succeeds(engine->Expire(Key("list"), 0, &exists)));
  EXPECT_TRUE(exists);
  EXPECT_FALSE(Exists("list"));
  EXPECT_TRUE(Succeeds(engine->Expire(Key("list"), 0, &exists)));
  EXPECT_FALSE(exists);
}

TEST_P(EngineConformance, PersistTakesAnExpiryAway) {
  bool done = false;
  EXPECT_TRUE(Succeeds(engine->Persist(Key("k"), 0, &done)));
  EXPECT_FALSE(done);
  EXPECT_TRUE(Succeeds(engine->Set(Key("k"), "v", 60000)));
  EXPECT_TRUE(Succeeds(engine->Persist(Key("k"), 1000, &done)));
  EXPECT_FALSE(done) << "it is due later than that";
  EXPECT_TRUE(Succeeds(engine->Persist(Key("k"), 60000, &done)));
  EXPECT_TRUE(done);
  EXPECT_EQ(Remaining("k"), -1);
  EXPECT_TRUE(Succeeds(engine->Set(Key("k"), "v", 60000)));
  EXPECT_TRUE(Succeeds(engine->Persist(Key("k"), 0, &done)));
  EXPECT_TRUE(done);
  EXPECT_TRUE(Succeeds(engine->Persist(Key("k"), 0, &done)));
  EXPECT_FALSE(done);
}

TEST_P(EngineConformance, HashesHoldFieldsByNumber) {
  EXPECT_EQ(HashText("h"), "");
  Fields("h", {{4294967295U, "last"}, {0, ""}, {7, std::string_view("\0x", 2)}, {7, "seven"}});
  EXPECT_EQ(HashText("h"), "0= 7=seven 4294967295=last ");
  Fields("h", {{7, "sept"}, {8, "huit"}});
  EXPECT_EQ(HashText("h"), "0= 7=sept 8=huit 4294967295=last ");

  HashContents some;
  const FieldTag tags[] = {7, 9, 0, 7};
  EXPECT_TRUE(Succeeds(engine->HashGet(Key("h"), tags, &some)));
  EXPECT_TRUE(some.exists);
  ASSERT_EQ(some.fields.size(), 2U) << "each field once";
  HashContents none;
  EXPECT_TRUE(Succeeds(engine->HashGet(Key("nobody"), tags, &none)));
  EXPECT_FALSE(none.exists);
  const FieldTag absent[] = {9};
  HashContents hash;
  EXPECT_TRUE(Succeeds(engine->HashGet(Key("h"), absent, &hash)));
  EXPECT_TRUE(hash.exists) << "the hash is there, the field is not";
  EXPECT_TRUE(hash.fields.empty());
}

TEST_P(EngineConformance, HashSetIfAbsentKeepsWhatIsThere) {
  std::int64_t written = 0;
  const FieldView first[] = {{1, "a"}, {2, "b"}, {2, "again"}};
  EXPECT_TRUE(Succeeds(engine->HashSetIfAbsent(Key("h"), first, &written)));
  EXPECT_EQ(written, 2);
  const FieldView second[] = {{2, "x"}, {3, "c"}};
  EXPECT_TRUE(Succeeds(engine->HashSetIfAbsent(Key("h"), second, &written)));
  EXPECT_EQ(written, 1);
  EXPECT_EQ(HashText("h"), "1=a 2=b 3=c ");
}

TEST_P(EngineConformance, FieldsExpire) {
  Fields("h", {{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}});
  std::int64_t count = 0;
  const FieldTag some[] = {1, 2, 9, 2};
  EXPECT_TRUE(Succeeds(engine->HashExpire(Key("h"), some, 200, &count)));
  EXPECT_EQ(count, 2);
  const FieldTag third[] = {3};
  EXPECT_TRUE(Succeeds(engine->HashExpire(Key("h"), third, 60000, &count)));
  EXPECT_EQ(count, 1);
  std::vector<FieldRemaining> remaining;
  EXPECT_TRUE(Succeeds(engine->HashRemaining(Key("h"), &remaining)));
  EXPECT_EQ(remaining.size(), 3U);
  for (const FieldRemaining& field : remaining) {
    EXPECT_GT(field.milliseconds, field.tag == 3 ? 50000 : 0);
    EXPECT_LE(field.milliseconds, field.tag == 3 ? 60000 : 200);
  }
  Fields("h", {{2, "B"}});
  Pass(200);
  EXPECT_EQ(HashText("h"), "2=B 3=c 4=d ") << "what was written over stays";
  count = 0;
  EXPECT_TRUE(Succeeds(engine->HashExpire(Key("nobody"), third, 100, &count)));
  EXPECT_EQ(count, 0);
}

TEST_P(EngineConformance, AHashThatLosesItsLastFieldIsGone) {
  Fields("later", {{1, "a"}});
  Fields("now", {{1, "a"}, {2, "b"}});
  std::int64_t count = 0;
  const FieldTag both[] = {1, 2};
  EXPECT_TRUE(Succeeds(engine->HashExpire(Key("now"), both, 0, &count)));
  EXPECT_EQ(count, 2);
  EXPECT_FALSE(Exists("now"));
  EXPECT_TRUE(Succeeds(engine->HashExpire(Key("later"), both, 100, &count)));
  Pass(100);
  EXPECT_EQ(KindOf("later"), Kind::kNone);
  EXPECT_FALSE(Exists("later"));
  EXPECT_EQ(Names("*"), Texts());
  const FieldView again[] = {{1, "new"}};
  EXPECT_TRUE(Succeeds(engine->HashSetIfAbsent(Key("later"), again, &count)));
  EXPECT_EQ(count, 1);
  EXPECT_EQ(HashText("later"), "1=new ");
}

TEST_P(EngineConformance, ListsPushAndPop) {
  std::int64_t length = 0;
  std::optional<std::string> value;
  EXPECT_TRUE(Succeeds(engine->ListPop(Key("l"), End::kHead, &value, &length)));
  EXPECT_FALSE(value);
  EXPECT_TRUE(Succeeds(engine->ListPush(Key("l"), End::kTail, "b", &length)));
  EXPECT_EQ(length, 1);
  EXPECT_TRUE(Succeeds(engine->ListPush(Key("l"), End::kHead, std::string_view("a\0", 2), &length)));
  EXPECT_TRUE(Succeeds(engine->ListPush(Key("l"), End::kTail, "", &length)));
  EXPECT_EQ(length, 3);
  EXPECT_TRUE(Succeeds(engine->ListLength(Key("l"), &length)));
  EXPECT_EQ(length, 3);
  EXPECT_TRUE(Succeeds(engine->ListPop(Key("l"), End::kHead, &value, &length)));
  EXPECT_EQ(value, std::string("a\0", 2));
  EXPECT_EQ(length, 2);
  EXPECT_TRUE(Succeeds(engine->ListPop(Key("l"), End::kTail, &value, &length)));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(Succeeds(engine->ListPop(Key("l"), End::kTail, &value, &length)));
  EXPECT_EQ(value, "b");
  EXPECT_EQ(length, 0);
  EXPECT_FALSE(Exists("l"));
}

TEST_P(EngineConformance, ListRangesCountFromEitherEnd) {
  Push("l", {"0", "1", "2", "3"});
  const auto range = [&](std::int64_t start, std::int64_t stop) {
    Texts values;
    EXPECT_TRUE(Succeeds(engine->ListRange(Key("l"), start, stop, &values)));
    std::string text;
    for (const std::string& value : values) text += value;
    return text;
  };
  EXPECT_EQ(range(0, -1), "0123");
  EXPECT_EQ(range(1, 2), "12");
  EXPECT_EQ(range(-2, 100), "23");
  EXPECT_EQ(range(-100, 0), "0");
  EXPECT_EQ(range(3, 1), "");
  EXPECT_EQ(range(4, 9), "");
  EXPECT_EQ(range(0, -5), "");
}

TEST_P(EngineConformance, ListInsertSetAndRemove) {
  std::int64_t number = 0;
  EXPECT_TRUE(Succeeds(engine->ListInsert(Key("l"), "x", Where::kBefore, "y", &number)));
  EXPECT_EQ(number, 0);
  EXPECT_TRUE(Fails(engine->ListSet(Key("l"), 0, "x"), StatusCode::kFailed));
  Push("l", {"a", "b", "a", "a"});
  EXPECT_TRUE(Succeeds(engine->ListInsert(Key("l"), "b", Where::kBefore, "1", &number)));
  EXPECT_EQ(number, 5);
  EXPECT_TRUE(Succeeds(engine->ListInsert(Key("l"), "a", Where::kAfter, "2", &number)));
  EXPECT_EQ(List("l"), (Texts{"a", "2", "1", "b", "a", "a"}));
  EXPECT_TRUE(Fails(engine->ListInsert(Key("l"), "nobody", Where::kAfter, "3", &number), StatusCode::kFailed));
  EXPECT_TRUE(Succeeds(engine->ListSet(Key("l"), -1, "z")));
  EXPECT_TRUE(Succeeds(engine->ListSet(Key("l"), 1, "y")));
  EXPECT_TRUE(Fails(engine->ListSet(Key("l"), 6, "x"), StatusCode::kFailed));
  EXPECT_TRUE(Fails(engine->ListSet(Key("l"), -7, "x"), StatusCode::kFailed));
  EXPECT_EQ(List("l"), (Texts{"a", "y", "1", "b", "a", "z"}));
  Push("l", {"a"});
  EXPECT_TRUE(Succeeds(engine->ListRemove(Key("l"), 2, "a", &number)));
  EXPECT_EQ(number, 2);
  EXPECT_EQ(List("l"), (Texts{"y", "1", "b", "z", "a"}));
  EXPECT_TRUE(Succeeds(engine->ListRemove(Key("l"), 0, "nobody", &number)));
  EXPECT_EQ(number, 0);
  for (const char* value : {"y", "1", "b", "z", "a"}) engine->ListRemove(Key("l"), 0, value, &number).ok();
  EXPECT_FALSE(Exists("l"));
}

TEST_P(EngineConformance, SetsHoldMembersOnce) {
  bool flag = false;
  std::int64_t size = 0;
  for (const char* member : {"b", "a", ""}) {
    EXPECT_TRUE(Succeeds(engine->SetAdd(Key("s"), member, &flag)));
    EXPECT_TRUE(flag);
  }
  EXPECT_TRUE(Succeeds(engine->SetAdd(Key("s"), "a", &flag)));
  EXPECT_FALSE(flag);
  EXPECT_TRUE(Succeeds(engine->SetSize(Key("s"), &size)));
  EXPECT_EQ(size, 3);
  EXPECT_EQ(Members("s"), (Texts{"", "a", "b"}));
  EXPECT_TRUE(Succeeds(engine->SetContains(Key("s"), "a", &flag)));
  EXPECT_TRUE(flag);
  EXPECT_TRUE(Succeeds(engine->SetRemove(Key("s"), "a", &flag)));
  EXPECT_TRUE(flag);
  EXPECT_TRUE(Succeeds(engine->SetRemove(Key("s"), "a", &flag)));
  EXPECT_FALSE(flag);
  EXPECT_TRUE(Succeeds(engine->SetContains(Key("s"), "a", &flag)));
  EXPECT_FALSE(flag);
  engine->SetRemove(Key("s"), "b", &flag).ok();
  engine->SetRemove(Key("s"), "", &flag).ok();
  EXPECT_FALSE(Exists("s"));
}

TEST_P(EngineConformance, SortedSetsOrderByScoreThenBytes) {
  std::int64_t number = 0;
  const ScoredView first[] = {{"b", 1}, {"", 1}, {"a", 1}, {"low", -kInfinity}, {"high", kInfinity}, {"b", 0.5}};
  EXPECT_TRUE(Succeeds(engine->SortedAdd(Key("z"), first, &number)));
  EXPECT_EQ(number, 5) << "b is listed twice";
  EXPECT_EQ(Sorted("z"), "low=-inf b=0.500000 =1.000000 a=1.000000 high=inf ");
  const ScoredView second[] = {{"a", -1}, {"new", 2}, {"", 1}};
  EXPECT_TRUE(Succeeds(engine->SortedAdd(Key("z"), second, &number)));
  EXPECT_EQ(number, 1);
  EXPECT_EQ(Sorted("z"), "low=-inf a=-1.000000 b=0.500000 =1.000000 new=2.000000 high=inf ");
  EXPECT_TRUE(Succeeds(engine->SortedSize(Key("z"), &number)));
  EXPECT_EQ(number, 6);

  std::optional<std::int64_t> rank;
  EXPECT_TRUE(Succeeds(engine->SortedRank(Key("z"), "new", &rank)));
  EXPECT_EQ(rank, 4);
  rank.reset();
  EXPECT_TRUE(Succeeds(engine->SortedRank(Key("z"), "nobody", &rank)));
  EXPECT_FALSE(rank);
  EXPECT_TRUE(Succeeds(engine->SortedRank(Key("nobody"), "new", &rank)));
  EXPECT_FALSE(rank);
  std::optional<double> score;
  EXPECT_TRUE(Succeeds(engine->SortedScore(Key("z"), "high", &score)));
  EXPECT_EQ(score, kInfinity);
  score.reset();
  EXPECT_TRUE(Succeeds(engine->SortedScore(Key("z"), "nobody", &score)));
  EXPECT_FALSE(score);
}

TEST_P(EngineConformance, SortedRangesIncludeTheirBounds) {
  Add("z", {{"", 1}, {"a", 1}, {"b", 2}, {"c", 3}});
  const auto by_score = [&](double min, double max) {
    std::vector<ScoredMember> members;
    EXPECT_TRUE(Succeeds(engine->SortedRangeByScore(Key("z"), min, max, &members)));
    std::int64_t count = -1;
    EXPECT_TRUE(Succeeds(engine->SortedCount(Key("z"), min, max, &count)));
    EXPECT_EQ(count, static_cast<std::int64_t>(members.size()));
    std::string text;
    for (const ScoredMember& member : members) text += "<" + member.member + ">";
    return text;
  };
  EXPECT_EQ(by_score(1, 2), "<><a><b>");
  EXPECT_EQ(by_score(1, 1), "<><a>");
  EXPECT_EQ(by_score(-kInfinity, kInfinity), "<><a><b><c>");
  EXPECT_EQ(by_score(1.5, 2.999), "<b>");
  EXPECT_EQ(by_score(2, 1), "");
  EXPECT_EQ(by_score(4, kInfinity), "");
  std::vector<ScoredMember> members;
  EXPECT_TRUE(Succeeds(engine->SortedRange(Key("z"), -2, 100, &members)));
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].member, "b");
}

TEST_P(EngineConformance, SortedRemoves) {
  Add("z", {{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"e", 5}, {"f", 6}});
  std::int64_t removed = 0;
  const std::string_view members[] = {"a", "nobody", "a"};
  EXPECT_TRUE(Succeeds(engine->SortedRemove(Key("z"), members, &removed)));
  EXPECT_EQ(removed, 1);
  EXPECT_TRUE(Succeeds(engine->SortedRemoveRange(Key("z"), 0, 0, &removed)));
  EXPECT_EQ(removed, 1);
  EXPECT_TRUE(Succeeds(engine->SortedRemoveRangeByScore(Key("z"), 4, 5, &removed)));
  EXPECT_EQ(removed, 2);
  EXPECT_EQ(Sorted("z"), "c=3.000000 f=6.000000 ");
  EXPECT_TRUE(Succeeds(engine->SortedRemoveRange(Key("z"), 5, 9, &removed)));
  EXPECT_EQ(removed, 0);
  EXPECT_TRUE(Succeeds(engine->SortedRemoveRange(Key("z"), 0, -1, &removed)));
  EXPECT_EQ(removed, 2);
  EXPECT_FALSE(Exists("z"));
}

// Each method that works on one kind, by that kind.
TEST_P(EngineConformance, AnotherKindIsRefusedAndChangesNothing) {
  using Call = std::function<Status(const Request&)>;
  bool flag = false;
  std::int64_t number = 0;
  std::optional<std::string> text;
  std::optional<std::int64_t> rank;
  std::optional<double> score;
  Texts texts;
  HashContents hash;
  std::vector<FieldRemaining> remaining;
  std::vector<ScoredMember> members;
  const FieldTag tags[] = {1};
  const FieldView fields[] = {{1, "x"}};
  const ScoredView scored[] = {{"x", 1}};
  const std::string_view names[] = {"1"};
  Engine& e = *engine;
  const std::pair<const char*, std::vector<Call>> methods[] = {
      {"string",
       {[&](const Request& key) { return e.Get(key, &text); },
        [&](const Request& key) { return e.Increment(key, &number); }}},
      {"hash",
       {[&](const Request& key) { return e.HashSet(key, fields); },
        [&](const Request& key) { return e.HashSetIfAbsent(key, fields, &number); },
        [&](const Request& key) { return e.HashGet(key, tags, &hash); },
        [&](const Request& key) { return e.HashGetAll(key, &hash); },
        [&](const Request& key) { return e.HashExpire(key, tags, 1000, &number); },
        [&](const Request& key) { return e.HashRemaining(key, &remaining); }}},
      {"list",
       {[&](const Request& key) { return e.ListPush(key, End::kHead, "x", &number); },
        [&](const Request& key) { return e.ListPop(key, End::kHead, &text, &number); },
        [&](const Request& key) { return e.ListLength(key, &number); },
        [&](const Request& key) { return e.ListRange(key, 0, -1, &texts); },
        [&](const Request& key) { return e.ListInsert(key, "1", Where::kAfter, "x", &number); },
        [&](const Request& key) { return e.ListSet(key, 0, "x"); },
        [&](const Request& key) { return e.ListRemove(key, 0, "1", &number); }}},
      {"set",
       {[&](const Request& key) { return e.SetAdd(key, "x", &flag); },
        [&](const Request& key) { return e.SetRemove(key, "1", &flag); },
        [&](const Request& key) { return e.SetContains(key, "1", &flag); },
        [&](const Request& key) { return e.SetSize(key, &number); },
        [&](const Request& key) { return e.SetMembers(key, &texts); }}},
      {"sorted",
       {[&](const Request& key) { return e.SortedAdd(key, scored, &number); },
        [&](const Request& key) { return e.SortedRemove(key, names, &number); },
        [&](const Request& key) { return e.SortedSize(key, &number); },
        [&](const Request& key) { return e.SortedCount(key, 0, 9, &number); },
        [&](const Request& key) { return e.SortedRange(key, 0, -1, &members); },
        [&](const Request& key) { return e.SortedRangeByScore(key, 0, 9, &members); },
        [&](const Request& key) { return e.SortedRank(key, "1", &rank); },
        [&](const Request& key) { return e.SortedScore(key, "1", &score); },
        [&](const Request& key) { return e.SortedRemoveRange(key, 0, -1, &number); },
        [&](const Request& key) { return e.SortedRemoveRangeByScore(key, 0, 9, &number); }}},
  };
  FillEachKind();
  const std::string before = EachKind();
  for (const auto& [own, calls] : methods) {
    for (const char* other : {"string", "hash", "list", "set", "sorted"}) {
      if (std::string_view(own) == other) continue;
      for (std::size_t index = 0; index < calls.size(); ++index) {
        EXPECT_TRUE(Fails(calls[index](Key(other)), StatusCode::kWrongKind))
            << own << " method " << index << " on " << other;
      }
    }
  }
  EXPECT_EQ(EachKind(), before);
}

TEST_P(EngineConformance, ScansGiveEachKeyOnce) {
  std::set<std::string> wanted;
  for (int index = 0; index < 500; ++index) {
    const std::string name = "key:" + std::to_string(index);
    wanted.insert(name);
    ASSERT_TRUE(Succeeds(engine->Set(Key(name), name, std::nullopt)));
  }
  ASSERT_TRUE(Succeeds(engine->Set(Key("other"), "v", std::nullopt)));
  ASSERT_TRUE(Succeeds(engine->Set(Key("key:x", 5), "elsewhere", std::nullopt)));
  EXPECT_EQ(Names("key:*"), Texts(wanted.begin(), wanted.end()));
  EXPECT_EQ(Names("key:[12]?"), (Texts{"key:10", "key:11", "key:12", "key:13", "key:14", "key:15", "key:16",
                                       "key:17", "key:18", "key:19", "key:20", "key:21", "key:22", "key:23",
                                       "key:24", "key:25", "key:26", "key:27", "key:28", "key:29"}));
  EXPECT_EQ(Names("other"), (Texts{"other"}));
  EXPECT_EQ(Names("nobody*"), Texts());
  EXPECT_EQ(Names("*", 5), (Texts{"key:x"}));
}

TEST_P(EngineConformance, ScansBringTheValuesOfStrings) {
  FillEachKind();
  std::unique_ptr<Cursor> cursor;
  ASSERT_TRUE(Succeeds(engine->Scan(Key("*"), Bring::kStrings, &cursor)));
  std::set<std::string> seen;
  for (std::vector<Element> batch;; batch.clear()) {
    ASSERT_TRUE(Succeeds(cursor->Next(100, &batch)));
    if (batch.empty()) break;
    for (const Element& element : batch) seen.insert(element.name + "=" + element.value);
  }
  EXPECT_EQ(seen, (std::set<std::string>{"hash=", "list=", "set=", "sorted=", "string=1"}));
  std::optional<Element> element;
  EXPECT_TRUE(Succeeds(engine->ReadElement(Key("string"), &element)));
  ASSERT_TRUE(element);
  EXPECT_EQ(element->name + "=" + element->value, "string=1");
  element.reset();
  EXPECT_TRUE(Succeeds(engine->ReadElement(Key("hash"), &element)));
  ASSERT_TRUE(element);
  EXPECT_EQ(element->value, "");
  element.reset();
  EXPECT_TRUE(Succeeds(engine->ReadElement(Key("nobody"), &element)));
  EXPECT_FALSE(element);
}

// Keys that stay come exactly once whatever happens to others; a cursor may be dropped early.
TEST_P(EngineConformance, ScansLiveWithWrites) {
  for (int index = 0; index < 200; ++index) {
    ASSERT_TRUE(
        Succeeds(engine->Set(Key((index % 2 != 0 ? "stays" : "goes") + std::to_string(index)), "v", std::nullopt)));
  }
  std::unique_ptr<Cursor> cursor;
  ASSERT_TRUE(Succeeds(engine->Scan(Key("*"), Bring::kNames, &cursor)));
  std::multiset<std::string> stayed;
  int round = 0;
  for (std::vector<Element> batch;; batch.clear(), ++round) {
    ASSERT_TRUE(Succeeds(cursor->Next(5, &batch)));
    if (batch.empty()) break;
    for (const Element& element : batch) {
      if (element.name.starts_with("stays")) stayed.insert(element.name);
    }
    bool deleted;
    ASSERT_TRUE(Succeeds(engine->Delete(Key("goes" + std::to_string(2 * round)), &deleted)));
    ASSERT_TRUE(Succeeds(engine->Set(Key("new" + std::to_string(round)), "v", std::nullopt)));
  }
  EXPECT_EQ(stayed.size(), 100U);
  EXPECT_EQ(std::set<std::string>(stayed.begin(), stayed.end()).size(), 100U);

  ASSERT_TRUE(Succeeds(engine->Scan(Key("*"), Bring::kNames, &cursor)));
  std::vector<Element> batch;
  ASSERT_TRUE(Succeeds(cursor->Next(1, &batch)));
  EXPECT_EQ(batch.size(), 1U);
}

TEST_P(EngineConformance, MessagesReachSubscriptionsOnce) {
  std::int64_t receivers = -1;
  std::vector<Message> arrived;
  if (!engine->Supports(Feature::kMessagesByPoll)) {
    receivers = 0;
    EXPECT_TRUE(Succeeds(engine->Subscribe(Key("*"))));
    EXPECT_TRUE(Succeeds(engine->Publish(Key("news"), "v", &receivers)));
    EXPECT_TRUE(Succeeds(engine->Poll(TimeLimit(5), &arrived)));
    EXPECT_EQ(receivers, 0) << "the client's business";
    EXPECT_TRUE(arrived.empty());
    EXPECT_TRUE(Succeeds(engine->Unsubscribe(Key("*"))));
    return;
  }
  EXPECT_TRUE(Succeeds(engine->Publish(Key("news"), "nobody listens", &receivers)));
  EXPECT_TRUE(Succeeds(engine->Subscribe(Key("news*"))));
  EXPECT_TRUE(Succeeds(engine->Subscribe(Key("*", 5))));
  const std::string bytes("a\0\r\n\xff", 5);
  EXPECT_TRUE(Succeeds(engine->Publish(Key("news:1"), bytes, &receivers)));
  EXPECT_TRUE(Succeeds(engine->Publish(Key("other"), "not for us", &receivers)));
  EXPECT_TRUE(Succeeds(engine->Publish(Key("k", 5), "five", &receivers)));
  for (int round = 0; round < 20 && arrived.size() < 2; ++round) {
    EXPECT_TRUE(Succeeds(engine->Poll(TimeLimit(100), &arrived)));
  }
  EXPECT_TRUE(Succeeds(engine->Poll(TimeLimit(50), &arrived)));
  ASSERT_EQ(arrived.size(), 2U);
  std::sort(arrived.begin(), arrived.end(), [](const Message& a, const Message& b) { return a.db < b.db; });
  EXPECT_EQ(arrived[0].pattern, "news*");
  EXPECT_EQ(arrived[0].name, "news:1");
  EXPECT_EQ(arrived[0].value, bytes);
  EXPECT_EQ(arrived[1].db, 5);
  EXPECT_EQ(arrived[1].pattern, "*");
  arrived.clear();
  EXPECT_TRUE(Succeeds(engine->Unsubscribe(Key("news*"))));
  EXPECT_TRUE(Succeeds(engine->Publish(Key("news:1"), "v", &receivers)));
  EXPECT_TRUE(Succeeds(engine->Poll(TimeLimit(50), &arrived)));
  EXPECT_TRUE(arrived.empty());
}

TEST_P(EngineConformance, SummariesCountKeysByKind) {
  FillEachKind();
  ASSERT_TRUE(Succeeds(engine->Set(Key("soon"), "v", 60000)));
  ASSERT_TRUE(Succeeds(engine->Set(Key("gone"), "v", 100)));
  Pass(100);
  DatabaseSummary summary;
  EXPECT_TRUE(Succeeds(engine->Summarize(Key(""), &summary)));
  EXPECT_EQ(summary.strings, 2U);
  EXPECT_EQ(summary.hashes, 1U);
  EXPECT_EQ(summary.lists, 1U);
  EXPECT_EQ(summary.sets, 1U);
  EXPECT_EQ(summary.sorted_sets, 1U);
  EXPECT_EQ(summary.expiring, 1U);
  EXPECT_EQ(summary.keys(), 6U);
  DatabaseSummary empty;
  EXPECT_TRUE(Succeeds(engine->Summarize(Key("", 1), &empty)));
  EXPECT_EQ(empty.keys(), 0U);
}

TEST_P(EngineConformance, TheClockIsControlledOrNot) {
  if (!engine->Supports(Feature::kClock)) {
    EXPECT_TRUE(Fails(engine->FreezeClock(), StatusCode::kNotSupported));
    EXPECT_TRUE(Fails(engine->AdvanceClock(1), StatusCode::kNotSupported));
    EXPECT_TRUE(Fails(engine->ThawClock(), StatusCode::kNotSupported));
    return;
  }
  ASSERT_TRUE(Succeeds(engine->Set(Key("k"), "v", 1000)));
  EXPECT_EQ(Remaining("k"), 1000);
  EXPECT_TRUE(Succeeds(engine->AdvanceClock(999)));
  EXPECT_EQ(Remaining("k"), 1);
  EXPECT_TRUE(Succeeds(engine->AdvanceClock(1)));
  EXPECT_EQ(Remaining("k"), -1);
  EXPECT_TRUE(Succeeds(engine->ThawClock()));
  EXPECT_TRUE(Fails(engine->AdvanceClock(1), StatusCode::kFailed)) << "it runs";
}

}  // namespace hostkit

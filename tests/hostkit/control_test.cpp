#include <tq_kit/control.h>

#include <csetjmp>
#include <limits>

#include "kit_fixture.h"

namespace hostkit {
namespace {

using Texts = std::vector<std::string>;

class Control : public KitTest {
 protected:
  static int Describe(tq_global_t*, const tq_kit_element_t* element, void* context) {
    std::string text = std::string(element->key) + " " + std::to_string(element->kind) + " " +
                       std::to_string(element->position) + "/" + std::to_string(element->count) + " " +
                       std::string(static_cast<const char*>(element->bytes), element->length);
    if (element->kind == TQ_KIT_HASH) {
      text += " " + std::to_string(element->tag) + " " + std::to_string(element->field_remaining);
    }
    if (element->kind == TQ_KIT_SORTED_SET) text += " " + std::to_string(element->score);
    if (element->remaining != TQ_KIT_NEVER) text += " expires " + std::to_string(element->remaining);
    static_cast<Texts*>(context)->push_back(text);
    return 0;
  }

  Texts Visit(const char* pattern, int db = 0) {
    Texts texts;
    const int visited = tq_kit_visit(g, db, pattern, Describe, &texts);
    EXPECT_EQ(visited, static_cast<int>(texts.size()));
    return texts;
  }

  // Something of everything.
  void FillStore() {
    tq_mom_psetex_sync(g, 0, Obj("a", std::string_view("v\0", 2)), 1000);
    Obj hash("h");
    hash.Field(4294967295U, "last").Field(1, "one");
    int32_t tags[] = {-1, 1};
    tq_mom_hmset_sync(g, 0, hash, tags, 2);
    tq_mom_pexpire_field_sync(g, 0, hash, 500, 1, NoTimeout());
    for (const char* value : {"x", "", "x"}) Push("l", value);
    for (const char* value : {"n", "m"}) tq_mom_sadd_sync(g, 0, Obj("s", value));
    const Obj low("z", "low");
    const Obj high("z", "high");
    void* members[] = {high, low};
    double scores[] = {1.5, -1};
    tq_mom_zadd_sync(g, 0, scores, members, 2);
  }
  const Texts kAll = {std::string("a 1 0/1 v\0 expires 1000", 23),
                      "h 2 0/2 one 1 500",
                      "h 2 1/2 last 4294967295 -1",
                      "l 3 0/3 x",
                      "l 3 1/3 ",
                      "l 3 2/3 x",
                      "s 4 0/2 m",
                      "s 4 1/2 n",
                      "z 5 0/2 low -1.000000",
                      "z 5 1/2 high 1.500000"};
};

TEST_F(Control, InspectTellsKindAndTime) {
  FillStore();
  tq_kit_kind_t kind;
  int64_t remaining;
  EXPECT_EQ(tq_kit_inspect(g, 0, "a", &kind, &remaining), TQ_MOM_OK);
  EXPECT_EQ(kind, TQ_KIT_STRING);
  EXPECT_EQ(remaining, 1000);
  clock.Advance(1);
  EXPECT_EQ(tq_kit_inspect(g, 0, "a", nullptr, &remaining), TQ_MOM_OK);
  EXPECT_EQ(remaining, 999);
  const std::pair<const char*, tq_kit_kind_t> kinds[] = {
      {"h", TQ_KIT_HASH}, {"l", TQ_KIT_LIST}, {"s", TQ_KIT_SET}, {"z", TQ_KIT_SORTED_SET}, {"nobody", TQ_KIT_NONE}};
  for (const auto& [key, wanted] : kinds) {
    EXPECT_EQ(tq_kit_inspect(g, 0, key, &kind, &remaining), TQ_MOM_OK);
    EXPECT_EQ(kind, wanted) << key;
    EXPECT_EQ(remaining, TQ_KIT_NEVER) << key;
  }
  EXPECT_EQ(tq_kit_inspect(nullptr, 0, "a", &kind, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_inspect(g, 38, "a", &kind, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_inspect(g, 0, "", &kind, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_inspect(g, 0, nullptr, &kind, nullptr), TQ_MOM_INPUT_ERR);
}

TEST_F(Control, TheClockStopsMovesAndGoesOn) {
  const Obj key("k", "v");
  ASSERT_EQ(tq_mom_psetex_sync(g, 0, key, 1000), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_advance(g, 1), TQ_MOM_ERR) << "it is not stopped";
  ASSERT_EQ(tq_kit_freeze(g), TQ_MOM_OK);
  clock.Advance(5000);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, key), 1);
  ASSERT_EQ(tq_kit_freeze(g), TQ_MOM_OK) << "again";
  EXPECT_EQ(tq_kit_advance(g, -1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_advance(g, std::numeric_limits<int64_t>::max()), TQ_MOM_ERR) << "out of range";
  ASSERT_EQ(tq_kit_advance(g, 1), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_advance(g, int64_t{1} << 62), TQ_MOM_ERR) << "out of range together with what it is";
  ASSERT_EQ(tq_kit_advance(g, 998), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, key), 1);
  ASSERT_EQ(tq_kit_thaw(g), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, key), 1) << "it goes on from where it is";
  clock.Advance(1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, key), 0);
  EXPECT_EQ(tq_kit_thaw(g), TQ_MOM_OK) << "again";
  for (const auto call : {tq_kit_freeze, tq_kit_thaw}) EXPECT_EQ(call(nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_advance(nullptr, 1), TQ_MOM_INPUT_ERR);
}

TEST_F(Control, VisitGoesThroughEverything) {
  FillStore();
  EXPECT_EQ(Visit("*"), kAll);
  EXPECT_EQ(Visit("[hz]").size(), 4U);
  EXPECT_EQ(Visit("nobody"), Texts());
  EXPECT_EQ(Visit("*", 1), Texts());
  int32_t tags[] = {1};
  tq_mom_hash_res_t* result = tq_mom_hmget_sync(g, 0, Obj("h"), tags, 1);
  EXPECT_EQ(result->field_change_tag_count, 1U) << "a visit is no read";
  EXPECT_EQ(tq_mom_hash_res_free(result), TQ_MOM_OK);
}

TEST_F(Control, StorePutsBackWhatVisitGave) {
  FillStore();
  struct Copy {
    int target;
  } copy{7};
  const int visited = tq_kit_visit(
      g, 0, "*",
      [](tq_global_t* runtime, const tq_kit_element_t* element, void* context) {
        return tq_kit_store(runtime, static_cast<Copy*>(context)->target, element);
      },
      &copy);
  EXPECT_EQ(visited, static_cast<int>(kAll.size()));
  EXPECT_EQ(Visit("*", 7), kAll);
}

TEST_F(Control, StoreRefusesWhatIsNoElement) {
  tq_kit_element_t element = {};
  element.key = "k";
  element.kind = TQ_KIT_STRING;
  element.bytes = "v";
  element.length = 1;
  element.remaining = TQ_KIT_NEVER;
  EXPECT_EQ(tq_kit_store(g, 0, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_store(g, 38, &element), TQ_MOM_INPUT_ERR);
  tq_kit_element_t wrong = element;
  wrong.kind = TQ_KIT_NONE;
  EXPECT_EQ(tq_kit_store(g, 0, &wrong), TQ_MOM_INPUT_ERR);
  wrong.kind = static_cast<tq_kit_kind_t>(6);
  EXPECT_EQ(tq_kit_store(g, 0, &wrong), TQ_MOM_INPUT_ERR);
  wrong = element;
  wrong.bytes = nullptr;
  EXPECT_EQ(tq_kit_store(g, 0, &wrong), TQ_MOM_INPUT_ERR);
  wrong = element;
  wrong.kind = TQ_KIT_SORTED_SET;
  wrong.score = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(tq_kit_store(g, 0, &wrong), TQ_MOM_INPUT_ERR);
  wrong = element;
  wrong.key = "";
  EXPECT_EQ(tq_kit_store(g, 0, &wrong), TQ_MOM_INPUT_ERR);
  ASSERT_EQ(tq_kit_read_only(g, 0, 1), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_store(g, 0, &element), TQ_MOM_GLOBAL_DB_NO_WRITE);
  EXPECT_EQ(tq_kit_clear(g, 0), TQ_MOM_GLOBAL_DB_NO_WRITE);
  ASSERT_EQ(tq_kit_read_only(g, 0, 0), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_store(g, 0, &element), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), "v");
  element.bytes = nullptr;
  element.length = 0;
  EXPECT_EQ(tq_kit_store(g, 0, &element), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), "");
  element.remaining = 0;
  EXPECT_EQ(tq_kit_store(g, 0, &element), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), std::nullopt) << "no time remains";
  EXPECT_EQ(tq_kit_read_only(g, 38, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_read_only(nullptr, 0, 1), TQ_MOM_INPUT_ERR);
}

TEST_F(Control, VisitsStopAndCanBeLeft) {
  FillStore();
  int calls = 0;
  EXPECT_EQ(tq_kit_visit(
                g, 0, "*",
                [](tq_global_t* runtime, const tq_kit_element_t*, void* context) {
                  EXPECT_EQ(tq_global_finish(runtime), TQ_MOM_ERR);
                  return ++*static_cast<int*>(context) == 2 ? 1 : 0;
                },
                &calls),
            2);
  static jmp_buf jump;
  if (setjmp(jump) == 0) {
    tq_kit_visit(
        g, 0, "*", [](tq_global_t*, const tq_kit_element_t*, void*) -> int { longjmp(jump, 1); }, nullptr);
    FAIL() << "the visit returned";
  }
  EXPECT_EQ(Visit("l").size(), 3U);
  EXPECT_LE(ClientOf(g)->frames.size(), 1U);
  EXPECT_EQ(tq_kit_visit(g, 0, "*", nullptr, nullptr), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_kit_visit(g, 0, nullptr, Describe, nullptr), TQ_MOM_INPUT_ERR);
}

TEST_F(Control, ClearRemovesOneDatabase) {
  FillStore();
  Set("k", "v", 1);
  EXPECT_EQ(tq_kit_clear(g, 0), 5);
  EXPECT_EQ(Visit("*"), Texts());
  EXPECT_EQ(tq_kit_clear(g, 0), 0);
  EXPECT_EQ(Get("k", 1), "v");
  EXPECT_EQ(tq_kit_clear(g, -1), TQ_MOM_INPUT_ERR);
}

TEST_F(Control, PollDoesWhatIsDue) {
  tq_mom_psetex_sync(g, 0, Obj("k", "v"), 10);
  clock.Advance(10);
  EXPECT_EQ(tq_kit_poll(g, 1000), 0) << "it does not wait where nothing can arrive";
  EXPECT_TRUE(engine->store().Names(0).empty());
  EXPECT_EQ(tq_kit_poll(nullptr, 0), TQ_MOM_INPUT_ERR);
}

}  // namespace
}  // namespace hostkit

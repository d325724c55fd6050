#include "kit_fixture.h"

namespace hostkit {
namespace {

using Values = std::vector<std::string>;

class Lists : public KitTest {
 protected:
  void Fill(const Values& values) {
    tq_mom_del_sync(g, 0, Obj("l"));
    for (const std::string& value : values) ASSERT_GT(Push("l", value), 0);
  }

  // The popped value and the out-value.
  std::pair<std::string, int> Popped(tq_obj* object, const int& out) {
    std::pair<std::string, int> seen(ValueOf(object), out);
    EXPECT_EQ(tq_mom_tq_obj_free(object), TQ_MOM_OK);
    return seen;
  }

  Values Range(int start, int stop) {
    tq_mom_lrange_op_t op = {1};
    tq_mom_lrange_res_t* result = tq_mom_lrange_ext_sync(g, 0, &op, Obj("l"), start, stop);
    Values values;
    for (std::size_t index = 0; index < result->count; ++index) values.push_back(ValueOf(result->value_array[index]));
    EXPECT_EQ(tq_mom_lrange_res_free(result), TQ_MOM_OK);
    return values;
  }
};

TEST_F(Lists, PushesReturnTheLength) {
  EXPECT_EQ(tq_mom_rpush_sync(g, 0, Obj("l", "b")), 1);
  EXPECT_EQ(tq_mom_rpush_ext_sync(g, 0, nullptr, Obj("l", std::string_view("c\0", 2))), 2);
  EXPECT_EQ(tq_mom_lpush_sync(g, 0, Obj("l", "a")), 3);
  EXPECT_EQ(tq_mom_lpush_ext_sync(g, 0, nullptr, Obj("l", "")), 4);
  EXPECT_EQ(List("l"), (Values{"", "a", "b", std::string("c\0", 2)}));
  EXPECT_EQ(tq_mom_llen_sync(g, 0, Obj("l")), 4);
  EXPECT_EQ(tq_mom_llen_ext_sync(g, 0, nullptr, Obj("l")), 4);
}

TEST_F(Lists, PopsReturnTheLengthThatIsLeft) {
  Fill({"a", "b", "c", "d"});
  int out = 99;
  EXPECT_EQ(Popped(tq_mom_lpop_sync(g, 0, Obj("l"), &out), out), std::pair(std::string("a"), 3));
  EXPECT_EQ(Popped(tq_mom_rpop_sync(g, 0, Obj("l"), &out), out), std::pair(std::string("d"), 2));
  EXPECT_EQ(Popped(tq_mom_rpop_ext_sync(g, 0, nullptr, Obj("l"), &out), out), std::pair(std::string("c"), 1));
  EXPECT_EQ(Popped(tq_mom_lpop_ext_sync(g, 0, nullptr, Obj("l"), &out), out), std::pair(std::string("b"), 0));
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("l")), 0);
}

TEST_F(Lists, APoppedObjectNamesItsList) {
  Fill({"a"});
  int out;
  tq_obj* object = tq_mom_lpop_sync(g, 0, Obj("l"), &out);
  EXPECT_STREQ(tq_obj_key(object, nullptr), "l");
  EXPECT_EQ(tq_mom_rpush_sync(g, 0, object), 1) << "it can be pushed back as it is";
  EXPECT_EQ(tq_mom_tq_obj_free(object), TQ_MOM_OK);
}

TEST_F(Lists, AMissingListIsEmpty) {
  int out = 99;
  EXPECT_EQ(tq_mom_lpop_sync(g, 0, Obj("l"), &out), nullptr);
  EXPECT_EQ(out, 0);
  out = 99;
  EXPECT_EQ(tq_mom_rpop_sync(g, 0, Obj("l"), &out), nullptr);
  EXPECT_EQ(out, 0);
  EXPECT_EQ(tq_mom_llen_sync(g, 0, Obj("l")), 0);
  EXPECT_EQ(List("l"), Values());
  EXPECT_EQ(tq_mom_linsert_sync(g, 0, Obj("l", "x"), Obj("l", "p"), 0), 0);
  EXPECT_EQ(tq_mom_lset_sync(g, 0, Obj("l", "x"), 0), TQ_MOM_ERR);
  EXPECT_EQ(tq_mom_lrem_sync(g, 0, Obj("l", "x"), 0), 0);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("l")), 0);
}

TEST_F(Lists, RangesCountFromBothEnds) {
  Fill({"a", "b", "c", "d", "e"});
  EXPECT_EQ(Range(0, -1), (Values{"a", "b", "c", "d", "e"}));
  EXPECT_EQ(Range(1, 2), (Values{"b", "c"}));
  EXPECT_EQ(Range(-2, -1), (Values{"d", "e"}));
  EXPECT_EQ(Range(3, 100), (Values{"d", "e"}));
  EXPECT_EQ(Range(-100, 0), (Values{"a"}));
  EXPECT_EQ(Range(4, 4), (Values{"e"}));
  EXPECT_EQ(Range(5, 9), Values());
  EXPECT_EQ(Range(3, 1), Values());
  EXPECT_EQ(Range(0, -6), Values());
  EXPECT_EQ(Range(-2147483647 - 1, 2147483647), (Values{"a", "b", "c", "d", "e"}));
}

TEST_F(Lists, RangeElementsNameTheList) {
  Fill({"a", "b"});
  tq_mom_lrange_res_t* result = tq_mom_lrange_sync(g, 0, Obj("l"), 0, -1);
  EXPECT_EQ(Texts(result->value_array, result->count), (Values{"l=a", "l=b"}));
  EXPECT_EQ(tq_mom_lrem_sync(g, 0, result->value_array[1], 0), 1) << "an element serves as a key object";
  EXPECT_EQ(tq_mom_lrange_res_free(result), TQ_MOM_OK);
  EXPECT_EQ(List("l"), (Values{"a"}));
}

TEST_F(Lists, LinsertPutsAnElementBesideThePivot) {
  Fill({"a", "p", "p"});
  EXPECT_EQ(tq_mom_linsert_sync(g, 0, Obj("l", "before"), Obj("x", "p"), 0), 4);
  EXPECT_EQ(tq_mom_linsert_ext_sync(g, 0, nullptr, Obj("l", "after"), Obj("x", "p"), 1), 5);
  EXPECT_EQ(List("l"), (Values{"a", "before", "p", "after", "p"}));
  EXPECT_EQ(tq_mom_linsert_sync(g, 0, Obj("l", "x"), Obj("l", "nowhere"), 0), TQ_MOM_ERR);
  EXPECT_EQ(tq_mom_linsert_sync(g, 0, Obj("l", "x"), Obj("l", "p"), 2), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_linsert_sync(g, 0, Obj("l", "x"), nullptr, 0), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_llen_sync(g, 0, Obj("l")), 5);
}

TEST_F(Lists, LsetReplacesOneElement) {
  Fill({"a", "b", "c"});
  EXPECT_EQ(tq_mom_lset_sync(g, 0, Obj("l", "A"), 0), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_lset_ext_sync(g, 0, nullptr, Obj("l", "C"), -1), TQ_MOM_OK);
  EXPECT_EQ(List("l"), (Values{"A", "b", "C"}));
  EXPECT_EQ(tq_mom_lset_sync(g, 0, Obj("l", "x"), 3), TQ_MOM_ERR);
  EXPECT_EQ(tq_mom_lset_sync(g, 0, Obj("l", "x"), -4), TQ_MOM_ERR);
  EXPECT_EQ(List("l"), (Values{"A", "b", "C"}));
}

TEST_F(Lists, LremRemovesEqualElementsFromTheHead) {
  Fill({"x", "a", "x", "b", "x"});
  EXPECT_EQ(tq_mom_lrem_sync(g, 0, Obj("l", "x"), 2), 2);
  EXPECT_EQ(List("l"), (Values{"a", "b", "x"}));
  EXPECT_EQ(tq_mom_lrem_sync(g, 0, Obj("l", "y"), 0), 0);
  Fill({"x", "a", "x"});
  EXPECT_EQ(tq_mom_lrem_ext_sync(g, 0, nullptr, Obj("l", "x"), 0), 2);
  EXPECT_EQ(List("l"), (Values{"a"}));
  EXPECT_EQ(tq_mom_lrem_sync(g, 0, Obj("l", "a"), 100), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("l")), 0);
}

}  // namespace
}  // namespace hostkit

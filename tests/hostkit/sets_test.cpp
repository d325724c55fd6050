#include "kit_fixture.h"

namespace hostkit {
namespace {

class Sets : public KitTest {};

TEST_F(Sets, SaddTellsWhetherTheMemberIsNew) {
  EXPECT_EQ(tq_mom_sadd_sync(g, 0, Obj("s", "a")), 1);
  EXPECT_EQ(tq_mom_sadd_ext_sync(g, 0, nullptr, Obj("s", "b")), 1);
  EXPECT_EQ(tq_mom_sadd_sync(g, 0, Obj("s", "a")), 0);
  EXPECT_EQ(tq_mom_scard_sync(g, 0, Obj("s")), 2);
  EXPECT_EQ(tq_mom_scard_ext_sync(g, 0, nullptr, Obj("s")), 2);
}

TEST_F(Sets, SremRemovesTheSetWithItsLastMember) {
  tq_mom_sadd_sync(g, 0, Obj("s", "a"));
  tq_mom_sadd_sync(g, 0, Obj("s", "b"));
  EXPECT_EQ(tq_mom_srem_sync(g, 0, Obj("s", "x")), 0);
  EXPECT_EQ(tq_mom_srem_sync(g, 0, Obj("s", "a")), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("s")), 1);
  EXPECT_EQ(tq_mom_srem_ext_sync(g, 0, nullptr, Obj("s", "b")), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("s")), 0);
}

TEST_F(Sets, MembersAreBinaryAndComeInTheOrderOfTheirBytes) {
  for (const std::string& member : {std::string("b"), std::string("\xff"), std::string("a\0z", 3), std::string()}) {
    EXPECT_EQ(tq_mom_sadd_sync(g, 0, Obj("s", member)), 1);
  }
  EXPECT_EQ(tq_mom_sismember_sync(g, 0, Obj("s", "a")), 0);
  EXPECT_EQ(tq_mom_sismember_sync(g, 0, Obj("s", std::string_view("a\0z", 3))), 1);
  EXPECT_EQ(tq_mom_sismember_ext_sync(g, 0, nullptr, Obj("s", "\xff")), 1);
  tq_mom_smembers_res_t* result = tq_mom_smembers_ext_sync(g, 0, nullptr, Obj("s"));
  EXPECT_EQ(Texts(result->value_array, result->count),
            (std::vector<std::string>{"s=", std::string("s=a\0z", 5), "s=b", "s=\xff"}));
  EXPECT_EQ(tq_mom_smembers_res_free(result), TQ_MOM_OK);
}

TEST_F(Sets, AMissingSetIsEmpty) {
  EXPECT_EQ(tq_mom_scard_sync(g, 0, Obj("s")), 0);
  EXPECT_EQ(tq_mom_sismember_sync(g, 0, Obj("s", "a")), 0);
  EXPECT_EQ(tq_mom_srem_sync(g, 0, Obj("s", "a")), 0);
  tq_mom_smembers_res_t* result = tq_mom_smembers_sync(g, 0, Obj("s"));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->count, 0U);
  EXPECT_EQ(result->error_code, TQ_MOM_OK);
  EXPECT_EQ(tq_mom_smembers_res_free(result), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("s")), 0);
}

}  // namespace
}  // namespace hostkit

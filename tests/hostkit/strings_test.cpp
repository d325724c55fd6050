#include "kit_fixture.h"

namespace hostkit {
namespace {

class Strings : public KitTest {
 protected:
  // The result's value and error_code.
  std::pair<std::int64_t, int> Incr(std::string_view key) {
    tq_mom_incr_res_t* result = tq_mom_incr_sync(g, 0, Obj(key));
    const std::pair<std::int64_t, int> seen(result->value, result->error_code);
    EXPECT_EQ(tq_mom_incr_res_free(result), TQ_MOM_OK);
    return seen;
  }
};

TEST_F(Strings, GetOfAMissingKeyIsNoFailure) {
  EXPECT_EQ(Get("k"), std::nullopt);
  tq_mom_get_res_t* result = tq_mom_get_ext_sync(g, 0, nullptr, Obj("k"));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->value, nullptr);
  EXPECT_EQ(result->error_code, TQ_MOM_OK);
  EXPECT_EQ(tq_mom_get_res_free(result), TQ_MOM_OK);
}

TEST_F(Strings, SetAndGetAreBinarySafe) {
  const std::string bytes("\0a\xff\r\n\0", 6);
  EXPECT_EQ(Set("k", bytes), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), bytes);
  EXPECT_EQ(Set("k", ""), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), "");
  const std::string large(3000000, 'x');
  EXPECT_EQ(Set("k", large), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), large);
}

TEST_F(Strings, GetExtCarriesKeyAndValue) {
  Set("k", "v");
  tq_mom_get_op_t op = {7};
  tq_mom_get_res_t* result = tq_mom_get_ext_sync(g, 0, &op, Obj("k"));
  EXPECT_EQ(Texts(&result->value, 1), std::vector<std::string>{"k=v"});
  EXPECT_EQ(tq_mom_get_res_free(result), TQ_MOM_OK);
}

TEST_F(Strings, DatabasesAreApart) {
  Set("k", "zero");
  Set("k", "last", 37);
  EXPECT_EQ(Get("k"), "zero");
  EXPECT_EQ(Get("k", 37), "last");
  EXPECT_EQ(Get("k", 1), std::nullopt);
}

TEST_F(Strings, AStoredValueIsACopy) {
  Obj object("k", "before");
  ASSERT_EQ(tq_mom_set_sync(g, 0, object), TQ_MOM_OK);
  ASSERT_EQ(tq_obj_set_value(object, "after", 5), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), "before");
}

TEST_F(Strings, SetReplacesAnyKindAndClearsTheExpiry) {
  Push("k", "element");
  ASSERT_EQ(tq_mom_pdel_sync(g, 0, Obj("k"), 10), 1);
  tq_mom_set_op_t op = {1};
  EXPECT_EQ(tq_mom_set_ext_sync(g, 0, &op, Obj("k", "v")), TQ_MOM_OK);
  clock.Advance(1000);
  EXPECT_EQ(Get("k"), "v");
}

TEST_F(Strings, SetnxWritesAbsentKeysOnly) {
  EXPECT_EQ(tq_mom_setnx_sync(g, 0, Obj("k", "first")), 1);
  EXPECT_EQ(tq_mom_setnx_sync(g, 0, Obj("k", "second")), 0);
  EXPECT_EQ(Get("k"), "first");
  EXPECT_EQ(tq_mom_setnx_noreply_sync(g, 0, Obj("k", "third")), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_setnx_noreply_ext_sync(g, 0, nullptr, Obj("k", "third")), TQ_MOM_OK);
  EXPECT_EQ(Get("k"), "first");
  EXPECT_EQ(tq_mom_setnx_noreply_sync(g, 0, Obj("other", "v")), TQ_MOM_OK);
  EXPECT_EQ(Get("other"), "v");
}

TEST_F(Strings, SetnxTakesAnExpiredKeyForAbsent) {
  tq_mom_psetex_sync(g, 0, Obj("k", "old"), 5);
  EXPECT_EQ(tq_mom_setnx_sync(g, 0, Obj("k", "new")), 0);
  clock.Advance(5);
  EXPECT_EQ(tq_mom_setnx_sync(g, 0, Obj("k", "new")), 1);
  clock.Advance(1000);
  EXPECT_EQ(Get("k"), "new");
}

TEST_F(Strings, PsetexStoresForAWhile) {
  EXPECT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), 100), TQ_MOM_OK);
  clock.Advance(99);
  EXPECT_EQ(Get("k"), "v");
  clock.Advance(1);
  EXPECT_EQ(Get("k"), std::nullopt);
  EXPECT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), 2147483647), TQ_MOM_OK);
  clock.Advance(2147483646);
  EXPECT_EQ(Get("k"), "v");
}

TEST_F(Strings, PsetexExtTakesTheExpiryFromTheOptions) {
  tq_mom_psetex_op_t op = {0, 50};
  EXPECT_EQ(tq_mom_psetex_ext_sync(g, 0, &op, Obj("k", "v")), TQ_MOM_OK);
  clock.Advance(49);
  EXPECT_EQ(Get("k"), "v");
  clock.Advance(1);
  EXPECT_EQ(Get("k"), std::nullopt);
}

TEST_F(Strings, PsetexRefusesAnExpiryThatIsNotPositive) {
  Set("k", "kept");
  tq_mom_psetex_op_t op = {0, 0};
  EXPECT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), 0), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_psetex_sync(g, 0, Obj("k", "v"), -5), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_psetex_ext_sync(g, 0, &op, Obj("k", "v")), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_psetex_ext_sync(g, 0, nullptr, Obj("k", "v")), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(Get("k"), "kept");
}

TEST_F(Strings, DelAndExistsWorkOnAnyKind) {
  Set("s", "v");
  Push("l", "v");
  tq_mom_sadd_sync(g, 0, Obj("set", "v"));
  for (const char* key : {"s", "l", "set"}) {
    EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj(key)), 1);
    EXPECT_EQ(tq_mom_exists_ext_sync(g, 0, nullptr, Obj(key)), 1);
    EXPECT_EQ(tq_mom_del_sync(g, 0, Obj(key)), 1);
    EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj(key)), 0);
    EXPECT_EQ(tq_mom_del_ext_sync(g, 0, nullptr, Obj(key)), 0);
  }
}

TEST_F(Strings, IncrCountsFromZero) {
  EXPECT_EQ(Incr("k"), std::pair(std::int64_t{1}, TQ_MOM_OK));
  EXPECT_EQ(Incr("k"), std::pair(std::int64_t{2}, TQ_MOM_OK));
  EXPECT_EQ(Get("k"), "2");
  Set("k", "-1");
  EXPECT_EQ(Incr("k"), std::pair(std::int64_t{0}, TQ_MOM_OK));
  Set("k", "-9223372036854775808");
  EXPECT_EQ(Incr("k"), std::pair(std::int64_t{-9223372036854775807}, TQ_MOM_OK));
  tq_mom_incr_res_t* result = tq_mom_incr_ext_sync(g, 0, nullptr, Obj("k"));
  EXPECT_EQ(result->value, -9223372036854775806);
  EXPECT_EQ(tq_mom_incr_res_free(result), TQ_MOM_OK);
}

TEST_F(Strings, IncrRefusesOverflowAndKeepsTheValue) {
  constexpr std::int64_t kMost = 9223372036854775807;
  Set("k", "9223372036854775806");
  EXPECT_EQ(Incr("k"), std::pair(kMost, TQ_MOM_OK));
  EXPECT_EQ(Incr("k"), std::pair(kMost, TQ_MOM_ERR));
  EXPECT_EQ(Get("k"), "9223372036854775807");
}

TEST_F(Strings, IncrRefusesWhatIsNoNumber) {
  for (const char* text :
       {"", "x", "1x", " 1", "1 ", "1.0", "0x1", "--1", "9223372036854775808", "-9223372036854775809"}) {
    Set("k", text);
    EXPECT_EQ(Incr("k"), std::pair(std::int64_t{0}, TQ_MOM_INPUT_ERR)) << text;
    EXPECT_EQ(Get("k"), text);
  }
}

TEST_F(Strings, IncrKeepsTheExpiry) {
  tq_mom_psetex_sync(g, 0, Obj("k", "5"), 100);
  EXPECT_EQ(Incr("k").first, 6);
  clock.Advance(100);
  EXPECT_EQ(Get("k"), std::nullopt);
  EXPECT_EQ(Incr("k").first, 1);
}

}  // namespace
}  // namespace hostkit

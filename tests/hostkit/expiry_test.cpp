#include "kit_fixture.h"

namespace hostkit {
namespace {

class Expiry : public KitTest {
 protected:
  int Hmset(std::string_view key, std::vector<int32_t> tags) {
    Obj object(key);
    for (const int32_t tag : tags) object.Field(static_cast<std::uint32_t>(tag), "bytes");
    return tq_mom_hmset_sync(g, 0, object, tags.data(), static_cast<int>(tags.size()));
  }

  std::vector<std::size_t> Tags(std::string_view key) {
    tq_mom_hash_res_t* result = tq_mom_hgetall_sync(g, 0, Obj(key));
    std::vector<std::size_t> tags(result->field_tag, result->field_tag + result->field_tag_count);
    EXPECT_EQ(tq_mom_hash_res_free(result), TQ_MOM_OK);
    return tags;
  }

  using TagList = std::vector<std::size_t>;
};

TEST_F(Expiry, AppliesToAnyKind) {
  Set("s", "v");
  Push("l", "v");
  Hmset("h", {1});
  for (const char* key : {"s", "l", "h"}) {
    EXPECT_EQ(tq_mom_pexpire_sync(g, 0, Obj(key), 100, {1, 0}), 1);
    clock.Advance(99);
    EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj(key)), 1);
    clock.Advance(1);
    EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj(key)), 0);
  }
}

TEST_F(Expiry, OfAMissingKeyDoesNothing) {
  EXPECT_EQ(tq_mom_pexpire_sync(g, 0, Obj("k"), 100, NoTimeout()), 0);
  EXPECT_EQ(tq_mom_pdel_sync(g, 0, Obj("k"), 100), 0);
  EXPECT_EQ(tq_mom_del_expire_sync(g, 0, Obj("k"), 0, 0), 0);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("k")), 0);
}

TEST_F(Expiry, ANewOneReplacesTheOld) {
  Set("k", "v");
  EXPECT_EQ(tq_mom_pdel_sync(g, 0, Obj("k"), 10), 1);
  EXPECT_EQ(tq_mom_pdel_sync(g, 0, Obj("k"), 4294967295U), 1);
  clock.Advance(4294967294);
  EXPECT_EQ(Get("k"), "v");
  clock.Advance(1);
  EXPECT_EQ(Get("k"), std::nullopt);
}

TEST_F(Expiry, OfZeroDeletesAtOnce) {
  Set("a", "v");
  Set("b", "v");
  EXPECT_EQ(tq_mom_pexpire_sync(g, 0, Obj("a"), 0, NoTimeout()), 1);
  EXPECT_EQ(tq_mom_pdel_sync(g, 0, Obj("b"), 0), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("a")), 0);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("b")), 0);
}

TEST_F(Expiry, DelExpireMakesAKeyLast) {
  tq_mom_psetex_sync(g, 0, Obj("k", "v"), 100);
  EXPECT_EQ(tq_mom_del_expire_sync(g, 0, Obj("k"), 0, 0), 1);
  EXPECT_EQ(tq_mom_del_expire_sync(g, 0, Obj("k"), 0, 0), 0);
  clock.Advance(1000);
  EXPECT_EQ(Get("k"), "v");
}

TEST_F(Expiry, DelExpireLooksAtTheTimeThatIsLeft) {
  tq_mom_psetex_sync(g, 0, Obj("k", "v"), 100);
  EXPECT_EQ(tq_mom_del_expire_sync(g, 0, Obj("k"), 99, 5), 0);
  clock.Advance(1);
  EXPECT_EQ(tq_mom_del_expire_sync(g, 0, Obj("k"), 99, 5), 1);
  clock.Advance(1000);
  EXPECT_EQ(Get("k"), "v");
}

TEST_F(Expiry, ExpiredKeysAreNotCountedAnywhere) {
  tq_mom_psetex_sync(g, 0, Obj("gone", "v"), 10);
  Set("kept", "v");
  clock.Advance(10);
  EXPECT_EQ(tq_mom_scan_sync(g, 0, Obj("*"), 0, nullptr, nullptr), 1);
  DatabaseSummary summary;
  EXPECT_TRUE(engine->Summarize({0, {}}, &summary).ok());
  EXPECT_EQ(summary.keys(), 1U);
  EXPECT_EQ(tq_mom_del_sync(g, 0, Obj("gone")), 0);
}

TEST_F(Expiry, OfAFieldRemovesThatFieldOnly) {
  Hmset("h", {1, 2, 3});
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 100, 2, NoTimeout()), 1);
  clock.Advance(99);
  EXPECT_EQ(Tags("h"), (TagList{1, 2, 3}));
  clock.Advance(1);
  EXPECT_EQ(Tags("h"), (TagList{1, 3}));
}

TEST_F(Expiry, OfAMissingFieldDoesNothing) {
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 100, 2, NoTimeout()), 0);
  Hmset("h", {1});
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 100, 2, NoTimeout()), 0);
  clock.Advance(100);
  EXPECT_EQ(Tags("h"), (TagList{1}));
}

TEST_F(Expiry, OfFieldsCountsThoseThatAreThere) {
  Hmset("h", {1, 2, 3, -1});
  int32_t tags[] = {3, 1, 7, 3, -1};
  EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, Obj("h"), 50, tags, 5, NoTimeout()), 3);
  clock.Advance(50);
  EXPECT_EQ(Tags("h"), (TagList{2}));
}

TEST_F(Expiry, OfFieldsNeedsAList) {
  Hmset("h", {1});
  int32_t tags[] = {1};
  EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, Obj("h"), 50, nullptr, 0, NoTimeout()), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, Obj("h"), 50, nullptr, 1, NoTimeout()), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, Obj("h"), 50, tags, -1, NoTimeout()), TQ_MOM_INPUT_ERR);
  clock.Advance(50);
  EXPECT_EQ(Tags("h"), (TagList{1}));
}

TEST_F(Expiry, AHashWithoutFieldsIsGone) {
  Hmset("h", {1, 2});
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 10, 1, NoTimeout()), 1);
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 20, 2, NoTimeout()), 1);
  clock.Advance(20);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("h")), 0);
  EXPECT_EQ(Push("h", "now a list"), 1);
}

TEST_F(Expiry, OfZeroRemovesFieldsAtOnce) {
  Hmset("h", {1, 2});
  int32_t tags[] = {2};
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 0, 1, NoTimeout()), 1);
  EXPECT_EQ(Tags("h"), (TagList{2}));
  EXPECT_EQ(tq_mom_pexpire_fields_sync(g, 0, Obj("h"), 0, tags, 1, NoTimeout()), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("h")), 0);
}

TEST_F(Expiry, AWrittenFieldLosesItAndTheHashKeepsItsOwn) {
  Hmset("h", {1, 2});
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 10, 1, NoTimeout()), 1);
  EXPECT_EQ(tq_mom_pdel_sync(g, 0, Obj("h"), 100), 1);
  Hmset("h", {1});
  clock.Advance(99);
  EXPECT_EQ(Tags("h"), (TagList{1, 2}));
  clock.Advance(1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("h")), 0);
}

TEST_F(Expiry, FieldNumbersHave32Bits) {
  if constexpr (sizeof(std::size_t) > 4) {
    const auto beyond = static_cast<std::size_t>(std::uint64_t{1} << 32);
    EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 10, beyond, NoTimeout()), TQ_MOM_INPUT_ERR);
  }
  Hmset("h", {-1});
  EXPECT_EQ(tq_mom_pexpire_field_sync(g, 0, Obj("h"), 10, 4294967295U, NoTimeout()), 1);
}

TEST(SystemClock, GoesOn) {
  const SystemClock clock;
  const std::int64_t steady = clock.Steady();
  const std::int64_t calendar = clock.Calendar();
  EXPECT_GT(calendar, 1600000000000);
  EXPECT_GE(clock.Steady(), steady);
  EXPECT_LT(clock.Steady(), steady + 60000);
}

}  // namespace
}  // namespace hostkit

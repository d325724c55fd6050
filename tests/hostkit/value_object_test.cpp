#include <gtest/gtest.h>
#include <tq_kit/live.h>
#include <tq_kit/value_object.h>
#include <tq_mom/tq_mom.h>

#include <cstring>
#include <string>

namespace {

class ValueObject : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(tq_mom_tq_obj_free(object), TQ_MOM_OK);
    EXPECT_EQ(tq_kit_live_objects(), 0U);
  }
  tq_obj* object = tq_obj_new("key", 3);
};

TEST_F(ValueObject, StartsWithAKeyAlone) {
  std::size_t length = 99;
  EXPECT_STREQ(tq_obj_key(object, &length), "key");
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(tq_obj_value(object, &length), nullptr);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(tq_obj_field_count(object), 0U);
  EXPECT_EQ(tq_obj_field(object, 0, nullptr), nullptr);
  EXPECT_EQ(tq_kit_live_objects(), 1U);
}

TEST_F(ValueObject, HoldsBinaryBytesWithANulBehindThem) {
  ASSERT_EQ(tq_obj_set_value(object, "a\0b", 3), TQ_MOM_OK);
  std::size_t length;
  const char* value = tq_obj_value(object, &length);
  EXPECT_EQ(length, 3U);
  EXPECT_EQ(std::memcmp(value, "a\0b", 4), 0);
  ASSERT_EQ(tq_obj_set_value(object, nullptr, 0), TQ_MOM_OK);
  EXPECT_STREQ(tq_obj_value(object, &length), "");
  ASSERT_EQ(tq_obj_clear_value(object), TQ_MOM_OK);
  EXPECT_EQ(tq_obj_value(object, nullptr), nullptr);
  ASSERT_EQ(tq_obj_set_key(object, "other\0key", 9), TQ_MOM_OK);
  EXPECT_EQ(std::string(tq_obj_key(object, &length), 9), std::string("other\0key", 9));
  EXPECT_EQ(length, 9U);
}

TEST_F(ValueObject, NoBytesNeedNoAddress) {
  tq_obj* unnamed = tq_obj_new(nullptr, 0);
  EXPECT_STREQ(tq_obj_key(unnamed, nullptr), "");
  tq_obj_delete(unnamed);
  ASSERT_EQ(tq_obj_set_key(object, nullptr, 0), TQ_MOM_OK);
  EXPECT_STREQ(tq_obj_key(object, nullptr), "");
  ASSERT_EQ(tq_obj_set_field(object, 1, nullptr, 0), TQ_MOM_OK);
  EXPECT_STREQ(tq_obj_field(object, 1, nullptr), "");
}

TEST_F(ValueObject, TakesItsOwnBytes) {
  ASSERT_EQ(tq_obj_set_value(object, "0123456789abcdefghij", 20), TQ_MOM_OK);
  ASSERT_EQ(tq_obj_set_value(object, tq_obj_value(object, nullptr) + 5, 15), TQ_MOM_OK);
  EXPECT_STREQ(tq_obj_value(object, nullptr), "56789abcdefghij");
  ASSERT_EQ(tq_obj_set_field(object, 1, tq_obj_value(object, nullptr), 15), TQ_MOM_OK);
  ASSERT_EQ(tq_obj_set_field(object, 1, tq_obj_field(object, 1, nullptr) + 1, 3), TQ_MOM_OK);
  EXPECT_STREQ(tq_obj_field(object, 1, nullptr), "678");
}

TEST_F(ValueObject, KeepsFieldsInOrder) {
  for (const std::uint32_t tag : {7U, 0U, 4294967295U, 3U}) {
    ASSERT_EQ(tq_obj_set_field(object, tag, std::to_string(tag).data(), 1), TQ_MOM_OK);
  }
  ASSERT_EQ(tq_obj_set_field(object, 3, "new", 3), TQ_MOM_OK);
  std::string seen;
  for (std::size_t position = 0; position < tq_obj_field_count(object); ++position) {
    std::uint32_t tag;
    std::size_t length;
    const char* bytes = tq_obj_field_at(object, position, &tag, &length);
    seen += std::to_string(tag) + "=" + std::string(bytes, length) + " ";
  }
  EXPECT_EQ(seen, "0=0 3=new 7=7 4294967295=4 ");
  EXPECT_STREQ(tq_obj_field_at(object, 1, nullptr, nullptr), "new");
  EXPECT_EQ(tq_obj_field_at(object, 4, nullptr, nullptr), nullptr);
  for (const std::uint32_t tag : {3U, 3U}) EXPECT_EQ(tq_obj_clear_field(object, tag), TQ_MOM_OK);
  ASSERT_EQ(tq_obj_clear_field(object, 4294967295U), TQ_MOM_OK);
  EXPECT_EQ(tq_obj_clear_field(object, 4294967295U), TQ_MOM_OK) << "there is no greater one";
  EXPECT_EQ(tq_obj_field(object, 3, nullptr), nullptr);
  EXPECT_EQ(tq_obj_field_count(object), 2U);
}

TEST_F(ValueObject, RefusesWhatIsNoObject) {
  EXPECT_EQ(tq_mom_tq_obj_free(nullptr), TQ_MOM_OK);
  tq_mom_set_op_t record = {1};
  auto* foreign = reinterpret_cast<tq_obj*>(&record);
  EXPECT_EQ(tq_obj_is_live(foreign), 0);
  EXPECT_EQ(tq_obj_is_live(object), 1);
  EXPECT_EQ(tq_mom_tq_obj_free(foreign), TQ_MOM_INPUT_ERR);
  for (tq_obj* wrong : {foreign, static_cast<tq_obj*>(nullptr)}) {
    EXPECT_EQ(tq_obj_set_key(wrong, "k", 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_obj_set_value(wrong, "k", 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_obj_clear_value(wrong), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_obj_set_field(wrong, 1, "k", 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_obj_clear_field(wrong, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(tq_obj_key(wrong, nullptr), nullptr);
    EXPECT_EQ(tq_obj_value(wrong, nullptr), nullptr);
    EXPECT_EQ(tq_obj_field(wrong, 1, nullptr), nullptr);
    EXPECT_EQ(tq_obj_field_count(wrong), 0U);
    EXPECT_EQ(tq_obj_field_at(wrong, 0, nullptr, nullptr), nullptr);
  }
  EXPECT_EQ(tq_obj_set_key(object, nullptr, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_obj_set_value(object, nullptr, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_obj_set_field(object, 1, nullptr, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_obj_new(nullptr, 1), nullptr);
  EXPECT_EQ(record.flag, 1);
}

TEST_F(ValueObject, ASecondReleaseIsRefused) {
  tq_obj* other = tq_obj_new("k", 1);
  EXPECT_EQ(tq_mom_tq_obj_free(other), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_tq_obj_free(other), TQ_MOM_INPUT_ERR);
  tq_obj_delete(other);
  tq_obj_delete(nullptr);
}

TEST_F(ValueObject, DeleteReleases) {
  tq_obj_delete(tq_obj_new("k", 1));
  EXPECT_EQ(tq_kit_live_objects(), 1U);
}

}  // namespace

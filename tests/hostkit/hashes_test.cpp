#include "kit_fixture.h"

namespace hostkit {
namespace {

using TagList = std::vector<std::size_t>;

struct Seen {
  TagList tags;
  TagList changed;
  std::string fields;  // "tag=bytes " for each
  bool has_value;
  int error_code;
};

Seen Look(tq_mom_hash_res_t* result) {
  Seen seen;
  seen.tags.assign(result->field_tag, result->field_tag + result->field_tag_count);
  seen.changed.assign(result->field_change_tag, result->field_change_tag + result->field_change_tag_count);
  seen.has_value = result->value != nullptr;
  seen.error_code = result->error_code;
  for (std::size_t position = 0; position < tq_obj_field_count(result->value); ++position) {
    std::uint32_t tag;
    std::size_t length;
    const char* bytes = tq_obj_field_at(result->value, position, &tag, &length);
    seen.fields += std::to_string(tag) + "=" + std::string(bytes, length) + " ";
  }
  EXPECT_EQ(tq_mom_hash_res_free(result), TQ_MOM_OK);
  return seen;
}

class Hashes : public KitTest {
 protected:
  Seen All() { return Look(tq_mom_hgetall_sync(g, 0, Obj("h"))); }

  Seen Some(std::vector<int32_t> tags) {
    return Look(tq_mom_hmget_sync(g, 0, Obj("h"), tags.data(), static_cast<int>(tags.size())));
  }

  int Write(tq_obj* object, std::vector<int32_t> tags) {
    return tq_mom_hmset_sync(g, 0, object, tags.data(), static_cast<int>(tags.size()));
  }

  int WriteAbsent(tq_obj* object, std::vector<int32_t> tags) {
    return tq_mom_hmsetnx_sync(g, 0, object, tags.data(), static_cast<int>(tags.size()));
  }
};

TEST_F(Hashes, HmsetWritesTheListedFields) {
  Obj object("h");
  object.Field(1, "one").Field(2, "two").Field(7, std::string_view("\0x", 2));
  EXPECT_EQ(Write(object, {7, 1, 1}), TQ_MOM_OK);
  const Seen seen = All();
  EXPECT_EQ(seen.tags, (TagList{1, 7}));
  EXPECT_EQ(seen.fields, std::string("1=one 7=\0x ", 11));
  EXPECT_EQ(seen.error_code, TQ_MOM_OK);
}

TEST_F(Hashes, HmsetKeepsOtherFields) {
  EXPECT_EQ(Write(Obj("h").Field(1, "one").Field(2, "two"), {1, 2}), TQ_MOM_OK);
  EXPECT_EQ(Write(Obj("h").Field(2, "zwei").Field(3, "drei"), {2, 3}), TQ_MOM_OK);
  EXPECT_EQ(All().fields, "1=one 2=zwei 3=drei ");
}

TEST_F(Hashes, HmsetRefusesFieldsThatTheObjectDoesNotHave) {
  EXPECT_EQ(Write(Obj("h").Field(1, "one"), {1, 2}), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("h")), 0);
  EXPECT_EQ(WriteAbsent(Obj("h").Field(1, "one"), {1, 2}), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("h")), 0);
}

TEST_F(Hashes, WritesNeedAList) {
  Obj object("h");
  object.Field(1, "one");
  int32_t tags[] = {1};
  for (const auto write : {tq_mom_hmset_sync, tq_mom_hmsetnx_sync}) {
    EXPECT_EQ(write(g, 0, object, nullptr, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(write(g, 0, object, nullptr, 1), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(write(g, 0, object, tags, 0), TQ_MOM_INPUT_ERR);
    EXPECT_EQ(write(g, 0, object, tags, -1), TQ_MOM_INPUT_ERR);
  }
  EXPECT_EQ(tq_mom_exists_sync(g, 0, object), 0);
}

TEST_F(Hashes, ExtFormsTakeTheListFromTheOptions) {
  Obj object("h");
  object.Field(1, "one").Field(2, "two");
  int32_t tags[] = {2};
  tq_mom_hmset_op_t set = {tags, 1, 5};
  EXPECT_EQ(tq_mom_hmset_ext_sync(g, 0, &set, object), TQ_MOM_OK);
  EXPECT_EQ(All().fields, "2=two ");
  int32_t both[] = {1, 2};
  tq_mom_hmsetnx_op_t setnx = {both, 2, 5};
  EXPECT_EQ(tq_mom_hmsetnx_ext_sync(g, 0, &setnx, object), 1);
  EXPECT_EQ(All().fields, "1=one 2=two ");
}

TEST_F(Hashes, ExtFormsWithoutOptionsHaveNothingToWrite) {
  Obj object("h");
  object.Field(1, "one");
  EXPECT_EQ(tq_mom_hmset_ext_sync(g, 0, nullptr, object), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_hmsetnx_ext_sync(g, 0, nullptr, object), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, object), 0);
}

TEST_F(Hashes, HmsetnxWritesEachFieldThatIsAbsent) {
  EXPECT_EQ(WriteAbsent(Obj("h").Field(1, "one"), {1}), 1);
  EXPECT_EQ(WriteAbsent(Obj("h").Field(1, "eins").Field(2, "zwei").Field(3, "drei"), {1, 2, 3, 3}), 2);
  EXPECT_EQ(WriteAbsent(Obj("h").Field(1, "uno"), {1}), 0);
  EXPECT_EQ(All().fields, "1=one 2=zwei 3=drei ");
}

TEST_F(Hashes, HmgetGivesTheListedFieldsThatAreThere) {
  Write(Obj("h").Field(1, "one").Field(2, "two").Field(3, "three"), {1, 2, 3});
  const Seen seen = Some({3, 9, 1, 3});
  EXPECT_EQ(seen.tags, (TagList{1, 3}));
  EXPECT_EQ(seen.fields, "1=one 3=three ");
  EXPECT_EQ(seen.error_code, TQ_MOM_OK);
  const Seen none = Some({9});
  EXPECT_TRUE(none.has_value);
  EXPECT_TRUE(none.tags.empty());
}

TEST_F(Hashes, HmgetNeedsAList) {
  Write(Obj("h").Field(1, "one"), {1});
  const Seen seen = Some({});
  EXPECT_EQ(seen.error_code, TQ_MOM_INPUT_ERR);
  EXPECT_FALSE(seen.has_value);
}

TEST_F(Hashes, AMissingHashHasNoValueAndIsNoFailure) {
  for (const Seen& seen : {All(), Some({1}), Look(tq_mom_hgetall_ext_sync(g, 0, nullptr, Obj("h")))}) {
    EXPECT_FALSE(seen.has_value);
    EXPECT_TRUE(seen.tags.empty());
    EXPECT_TRUE(seen.changed.empty());
    EXPECT_EQ(seen.error_code, TQ_MOM_OK);
  }
}

TEST_F(Hashes, TheValueNamesTheHashAndHasNoBytes) {
  Write(Obj("h").Field(1, "one"), {1});
  tq_mom_hash_res_t* result = tq_mom_hgetall_sync(g, 0, Obj("h"));
  EXPECT_STREQ(tq_obj_key(result->value, nullptr), "h");
  EXPECT_EQ(tq_obj_value(result->value, nullptr), nullptr);
  // What was read can be written back as it is.
  int32_t tags[] = {1};
  EXPECT_EQ(tq_mom_hmset_sync(g, 1, result->value, tags, 1), TQ_MOM_OK);
  EXPECT_EQ(tq_mom_hash_res_free(result), TQ_MOM_OK);
  EXPECT_EQ(Look(tq_mom_hgetall_sync(g, 1, Obj("h"))).fields, "1=one ");
}

TEST_F(Hashes, ChangeTagsTellWhatWasNotReadYet) {
  Write(Obj("h").Field(1, "one").Field(2, "two"), {1, 2});
  EXPECT_EQ(All().changed, (TagList{1, 2}));
  EXPECT_EQ(All().changed, (TagList{}));
  Write(Obj("h").Field(2, "zwei").Field(3, "drei"), {2, 3});
  EXPECT_EQ(Some({1, 2}).changed, (TagList{2}));
  EXPECT_EQ(All().changed, (TagList{3}));
  Write(Obj("h").Field(1, "one"), {1});
  EXPECT_EQ(All().changed, (TagList{})) << "the same bytes are no change";
  WriteAbsent(Obj("h").Field(1, "uno").Field(4, "cuatro"), {1, 4});
  EXPECT_EQ(All().changed, (TagList{4}));
}

TEST_F(Hashes, FieldNumbersAreUnsigned) {
  Write(Obj("h").Field(4294967295U, "last").Field(0, "first"), {-1, 0});
  const Seen seen = All();
  EXPECT_EQ(seen.fields, "0=first 4294967295=last ");
  EXPECT_EQ(seen.tags.back(), 4294967295U);
}

}  // namespace
}  // namespace hostkit

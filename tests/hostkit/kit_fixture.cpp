#include "kit_fixture.h"

#include <memory>

#include "hostkit/snapshot.h"

namespace hostkit {

Obj::Obj(std::string_view key) : object_(tq_obj_new(key.data(), key.size())) {}

Obj::Obj(std::string_view key, std::string_view value) : Obj(key) {
  EXPECT_EQ(tq_obj_set_value(object_, value.data(), value.size()), TQ_MOM_OK);
}

Obj::~Obj() { EXPECT_EQ(tq_mom_tq_obj_free(object_), TQ_MOM_OK); }

Obj& Obj::Field(std::uint32_t tag, std::string_view bytes) {
  EXPECT_EQ(tq_obj_set_field(object_, tag, bytes.data(), bytes.size()), TQ_MOM_OK);
  return *this;
}

std::string ValueOf(const tq_obj* object) {
  std::size_t length;
  const char* value = tq_obj_value(object, &length);
  return value != nullptr ? std::string(value, length) : "(none)";
}

std::vector<std::string> Texts(tq_obj* const* objects, std::size_t count) {
  std::vector<std::string> texts;
  for (std::size_t index = 0; index < count; ++index) {
    texts.push_back(std::string(tq_obj_key(objects[index], nullptr)) + "=" + ValueOf(objects[index]));
  }
  return texts;
}

void KitTest::SetUp() {
  Restart("");
  ASSERT_EQ(tq_mom_client_connect_sync(g, 0), TQ_MOM_OK);
}

void KitTest::TearDown() {
  EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
  EXPECT_EQ(tq_kit_live_results(), 0U);
  EXPECT_EQ(tq_kit_live_objects(), 0U);
}

void KitTest::Restart(const std::string& snapshot_path) {
  if (g != nullptr) {
    EXPECT_EQ(tq_global_finish(g), TQ_MOM_OK);
  }
  auto made = std::make_unique<MemoryEngine>(clock, snapshot_path);
  engine = made.get();
  const Status loaded = engine->Load();
  ASSERT_TRUE(loaded.ok()) << loaded.text();
  g = StartRuntime(nullptr, std::move(made));
  ASSERT_NE(g, nullptr);
}

std::optional<std::string> KitTest::Get(std::string_view key, int db) {
  const Obj name(key);
  int error = 99;
  tq_obj* object = tq_mom_get_sync(g, db, name, &error);
  EXPECT_EQ(error, TQ_MOM_OK);
  if (object == nullptr) return std::nullopt;
  EXPECT_EQ(tq_obj_key(object, nullptr), key);
  std::string value = ValueOf(object);
  EXPECT_EQ(tq_mom_tq_obj_free(object), TQ_MOM_OK);
  return value;
}

int KitTest::Set(std::string_view key, std::string_view value, int db) {
  return tq_mom_set_sync(g, db, Obj(key, value));
}

int KitTest::Push(std::string_view key, std::string_view value) { return tq_mom_rpush_sync(g, 0, Obj(key, value)); }

std::vector<std::string> KitTest::List(std::string_view key) {
  tq_mom_lrange_res_t* result = tq_mom_lrange_sync(g, 0, Obj(key), 0, -1);
  EXPECT_EQ(result->error_code, TQ_MOM_OK);
  std::vector<std::string> values;
  for (std::size_t index = 0; index < result->count; ++index) values.push_back(ValueOf(result->value_array[index]));
  EXPECT_EQ(tq_mom_lrange_res_free(result), TQ_MOM_OK);
  return values;
}

std::string KitTest::Dump() const { return EncodeSnapshot(engine->store(), clock); }

}  // namespace hostkit

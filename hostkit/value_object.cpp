#include <tq_kit/live.h>
#include <tq_kit/value_object.h>
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <atomic>

#include "hostkit/guard.h"
#include "hostkit/live_set.h"
#include "hostkit/tq_obj.h"

namespace hostkit {
namespace {

enum class ObjectTag { kObject };

LiveSet<ObjectTag>& LiveObjects() {
  static LiveSet<ObjectTag> objects;
  return objects;
}

std::atomic<std::size_t> given_out = 0;

auto FindField(auto& fields, std::uint32_t tag) {
  return std::lower_bound(fields.begin(), fields.end(), tag,
                          [](const auto& field, std::uint32_t wanted) { return field.first < wanted; });
}

std::string Bytes(const void* bytes, std::size_t length) {
  return length == 0 ? std::string() : std::string(static_cast<const char*>(bytes), length);
}

const char* Read(const std::string* text, std::size_t* length) {
  if (length != nullptr) *length = text != nullptr ? text->size() : 0;
  return text != nullptr ? text->c_str() : nullptr;
}

}  // namespace

const tq_obj* LiveObject(const void* pointer) {
  return LiveObjects().Contains(pointer, ObjectTag::kObject) ? static_cast<const tq_obj*>(pointer) : nullptr;
}

std::size_t ObjectsGivenOut() noexcept { return given_out; }

}  // namespace hostkit

tq_obj::tq_obj(std::string_view name) : key(name) { hostkit::LiveObjects().Add(this, hostkit::ObjectTag::kObject); }

tq_obj::~tq_obj() {
  hostkit::LiveObjects().Remove(this, hostkit::ObjectTag::kObject);
  if (given_out_) --hostkit::given_out;
}

void tq_obj::GiveOut() noexcept {
  given_out_ = true;
  ++hostkit::given_out;
}

const std::string* tq_obj::Field(std::uint32_t tag) const {
  const auto found = hostkit::FindField(fields, tag);
  return found != fields.end() && found->first == tag ? &found->second : nullptr;
}

void tq_obj::SetField(std::uint32_t tag, std::string bytes) {
  const auto place = hostkit::FindField(fields, tag);
  if (place != fields.end() && place->first == tag) {
    place->second.swap(bytes);
  } else {
    fields.emplace(place, tag, std::move(bytes));
  }
}

void tq_obj::ClearField(std::uint32_t tag) {
  const auto found = hostkit::FindField(fields, tag);
  if (found != fields.end() && found->first == tag) fields.erase(found);
}

using hostkit::Bytes;
using hostkit::Guarded;
using hostkit::LiveObject;
using hostkit::LiveObjects;

tq_obj* tq_obj_new(const char* key, size_t key_length) {
  if (key == nullptr && key_length != 0) return nullptr;
  return hostkit::GuardedPointer([&] { return new tq_obj(Bytes(key, key_length)); });
}

int tq_obj_is_live(const void* pointer) { return LiveObject(pointer) != nullptr ? 1 : 0; }

void tq_obj_delete(tq_obj* object) { tq_mom_tq_obj_free(object); }

size_t tq_kit_live_objects(void) { return LiveObjects().size(); }

int tq_obj_set_key(tq_obj* object, const char* key, size_t length) {
  if (LiveObject(object) == nullptr || (key == nullptr && length != 0)) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    Bytes(key, length).swap(object->key);
    return TQ_MOM_OK;
  });
}

int tq_obj_set_value(tq_obj* object, const void* value, size_t length) {
  if (LiveObject(object) == nullptr || (value == nullptr && length != 0)) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    object->value = Bytes(value, length);
    return TQ_MOM_OK;
  });
}

int tq_obj_clear_value(tq_obj* object) {
  if (LiveObject(object) == nullptr) return TQ_MOM_INPUT_ERR;
  object->value.reset();
  return TQ_MOM_OK;
}

int tq_obj_set_field(tq_obj* object, uint32_t tag, const void* bytes, size_t length) {
  if (LiveObject(object) == nullptr || (bytes == nullptr && length != 0)) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    object->SetField(tag, Bytes(bytes, length));
    return TQ_MOM_OK;
  });
}

int tq_obj_clear_field(tq_obj* object, uint32_t tag) {
  if (LiveObject(object) == nullptr) return TQ_MOM_INPUT_ERR;
  object->ClearField(tag);
  return TQ_MOM_OK;
}

const char* tq_obj_key(const tq_obj* object, size_t* length) {
  return hostkit::Read(LiveObject(object) != nullptr ? &object->key : nullptr, length);
}

const char* tq_obj_value(const tq_obj* object, size_t* length) {
  return hostkit::Read(LiveObject(object) != nullptr && object->value ? &*object->value : nullptr, length);
}

const char* tq_obj_field(const tq_obj* object, uint32_t tag, size_t* length) {
  return hostkit::Read(LiveObject(object) != nullptr ? object->Field(tag) : nullptr, length);
}

size_t tq_obj_field_count(const tq_obj* object) { return LiveObject(object) != nullptr ? object->fields.size() : 0; }

const char* tq_obj_field_at(const tq_obj* object, size_t position, uint32_t* tag, size_t* length) {
  if (position >= tq_obj_field_count(object)) return hostkit::Read(nullptr, length);
  const auto& [number, bytes] = object->fields[position];
  if (tag != nullptr) *tag = number;
  return hostkit::Read(&bytes, length);
}

int tq_mom_tq_obj_free(tq_obj* object) {
  if (object == nullptr) return TQ_MOM_OK;
  if (LiveObject(object) == nullptr || object->in_result) return TQ_MOM_INPUT_ERR;
  delete object;
  return TQ_MOM_OK;
}

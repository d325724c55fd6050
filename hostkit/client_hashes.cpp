// Hashes: fields by number, taken from and handed out in the fields of value objects.
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"

namespace {

using hostkit::Command;
using hostkit::Fields;
using hostkit::FieldTag;
using hostkit::Guarded;
using hostkit::MakeResult;
using hostkit::ReadField;
using hostkit::ReadHash;

using Write = int (hostkit::Engine::*)(hostkit::Key, Fields);

// Writes the listed fields of the key object, all of which must be there.
int WriteFields(tq_global_t* g, int db, const tq_obj* key, const int32_t* tags, int tag_count, Write write) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  if (tags == nullptr || tag_count <= 0) return TQ_MOM_INPUT_ERR;
  return Guarded([&] {
    Fields fields;
    for (int index = 0; index < tag_count; ++index) {
      const auto tag = static_cast<FieldTag>(tags[index]);
      const std::string* bytes = command.object->Field(tag);
      if (bytes == nullptr) return TQ_MOM_INPUT_ERR;
      fields.try_emplace(tag, *bytes);
    }
    return (command.engine->*write)(command.key, std::move(fields));
  });
}

// Reads the listed fields, or all without a list.
tq_mom_hash_res_t* ReadFields(tq_global_t* g, int db, const tq_obj* key, const std::vector<FieldTag>* tags) {
  return MakeResult<tq_mom_hash_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    ReadHash hash;
    const int status = command.engine->HashRead(command.key, tags, &hash);
    if (status != TQ_MOM_OK || !hash.exists) return status;

    auto object = std::make_unique<tq_obj>(command.key.name);
    object->fields.reserve(hash.fields.size());
    for (const ReadField& field : hash.fields) {
      object->fields.emplace_back(field.tag, field.bytes);
      result->tags.push_back(field.tag);
      if (field.changed) result->changed_tags.push_back(field.tag);
    }
    result->value = result->Own(std::move(object));
    result->field_tag = result->tags.data();
    result->field_tag_count = result->tags.size();
    result->field_change_tag = result->changed_tags.data();
    result->field_change_tag_count = result->changed_tags.size();
    command.engine->HashMarkRead(command.key, hash.fields);
    return TQ_MOM_OK;
  });
}

}  // namespace

int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  return WriteFields(g, db, key, fields, field_count, &hostkit::Engine::HashSet);
}

int tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key) {
  return tq_mom_hmset_sync(g, db, key, op != nullptr ? op->fields : nullptr, op != nullptr ? op->field_count : 0);
}

int tq_mom_hmsetnx_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  return WriteFields(g, db, key, fields, field_count, &hostkit::Engine::HashSetIfAbsent);
}

int tq_mom_hmsetnx_ext_sync(tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key) {
  return tq_mom_hmsetnx_sync(g, db, key, op != nullptr ? op->fields : nullptr, op != nullptr ? op->field_count : 0);
}

tq_mom_hash_res_t* tq_mom_hmget_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  if (fields == nullptr || field_count <= 0) {
    return MakeResult<tq_mom_hash_res_t>([&](auto* /*result*/) {
      Command command;
      const int status = command.Open(g, db, key);
      return status != TQ_MOM_OK ? status : TQ_MOM_INPUT_ERR;
    });
  }
  return hostkit::GuardedPointer([&] {
    const std::vector<FieldTag> tags(fields, fields + field_count);
    return ReadFields(g, db, key, &tags);
  });
}

tq_mom_hash_res_t* tq_mom_hgetall_sync(tq_global_t* g, int db, tq_obj* key) { return ReadFields(g, db, key, nullptr); }

tq_mom_hash_res_t* tq_mom_hgetall_ext_sync(tq_global_t* g, int db, tq_mom_hget_op_t* /*op*/, tq_obj* key) {
  return tq_mom_hgetall_sync(g, db, key);
}

int tq_mom_hash_res_free(tq_mom_hash_res_t* result) { return hostkit::FreeResult(result); }

// Hashes: fields by number, taken from and handed out in the fields of value objects.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/command.h"
#include "hostkit/order.h"

using hostkit::Command;
using hostkit::Engine;
using hostkit::FieldTag;
using hostkit::HashContents;
using hostkit::RunRecord;
using hostkit::Write;

namespace {

using Tags = std::span<const FieldTag>;

// Hands the fields out that were asked for, all without a list.
void Fill(hostkit::Result<tq_mom_hash_res_t>* result, const Command& command, HashContents hash, const Tags* asked) {
  const auto [db, name, limit] = command.request;
  if (hash.exists) {
    hostkit::SortByNumber(&hash.fields, [](const hostkit::Field& field) { return field.tag; });
    const std::vector<FieldTag> changed = command.client->seen.Changed(db, name, hash.fields);
    result->changed_tags.assign(changed.begin(), changed.end());
    auto object = std::make_unique<tq_obj>(name);
    object->fields.reserve(hash.fields.size());
    for (const hostkit::Field& field : hash.fields) {
      object->fields.emplace_back(field.tag, field.bytes);
      result->tags.push_back(field.tag);
    }
    result->value = result->Own(std::move(object));
    result->field_tag = result->tags.data();
    result->field_tag_count = result->tags.size();
    result->field_change_tag = result->changed_tags.data();
    result->field_change_tag_count = result->changed_tags.size();
  }
  command.client->seen.Deliver(db, name, hash.fields, asked);
}

}  // namespace

int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  return Write({g, db, key}, &Engine::HashSet, hostkit::ListedFields(fields, field_count));
}

int tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key) {
  return tq_mom_hmset_sync(g, db, key, op != nullptr ? op->fields : nullptr, op != nullptr ? op->field_count : 0);
}

int tq_mom_hmsetnx_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  return Write({g, db, key}, &Engine::HashSetIfAbsent, hostkit::ListedFields(fields, field_count));
}

int tq_mom_hmsetnx_ext_sync(tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key) {
  return tq_mom_hmsetnx_sync(g, db, key, op != nullptr ? op->fields : nullptr, op != nullptr ? op->field_count : 0);
}

tq_mom_hash_res_t* tq_mom_hmget_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count) {
  const Tags asked = hostkit::TagsOf(fields, field_count);
  const auto fill = [&](auto* result, const Command& command, HashContents hash) {
    Fill(result, command, std::move(hash), &asked);
  };
  return RunRecord<tq_mom_hash_res_t>({g, db, key}, hostkit::Access::kRead, &Engine::HashGet, fill, asked);
}

tq_mom_hash_res_t* tq_mom_hgetall_sync(tq_global_t* g, int db, tq_obj* key) {
  const auto fill = [](auto* result, const Command& command, HashContents hash) {
    Fill(result, command, std::move(hash), nullptr);
  };
  return RunRecord<tq_mom_hash_res_t>({g, db, key}, hostkit::Access::kRead, &Engine::HashGetAll, fill);
}

int tq_mom_hash_res_free(tq_mom_hash_res_t* result) { return hostkit::FreeResult(result); }

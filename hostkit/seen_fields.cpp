#include "hostkit/seen_fields.h"

#include <iterator>

#include "hostkit/digest.h"

namespace hostkit {

std::vector<FieldTag> SeenFields::Changed(int db, std::string_view name, std::span<const Field> fields) {
  std::vector<FieldTag> changed;
  if (fields.empty()) return changed;
  auto found = by_name_.find({db, name});
  if (found == by_name_.end()) {
    Hashes fresh;
    fresh.push_back({db, std::string(name), {}});
    found = by_name_.emplace(Name{db, fresh.front().name}, fresh.begin()).first;
    hashes_.splice(hashes_.begin(), fresh);
  }
  for (const Field& field : fields) {
    const auto [seen, added] = found->second->fields.try_emplace(field.tag);
    if (added) ++count_;
    if (!seen->second.delivered || seen->second.digest != Digest(field.bytes)) changed.push_back(field.tag);
  }
  return changed;
}

void SeenFields::Deliver(int db, std::string_view name, std::span<const Field> fields,
                         const std::span<const FieldTag>* tags) noexcept {
  const auto found = by_name_.find({db, name});
  if (found == by_name_.end()) return;
  const Hashes::iterator hash = found->second;
  // What was asked for is marked as not delivered, then what is there as delivered; the rest goes.
  if (tags == nullptr) {
    for (auto& [tag, seen] : hash->fields) seen.delivered = false;
  } else {
    for (const FieldTag tag : *tags) {
      if (const auto seen = hash->fields.find(tag); seen != hash->fields.end()) seen->second.delivered = false;
    }
  }
  for (const Field& field : fields) {
    if (const auto seen = hash->fields.find(field.tag); seen != hash->fields.end()) {
      seen->second = {true, Digest(field.bytes)};
    }
  }
  if (tags == nullptr) {
    count_ -= std::erase_if(hash->fields, [](const auto& seen) { return !seen.second.delivered; });
  } else {
    for (const FieldTag tag : *tags) {
      const auto seen = hash->fields.find(tag);
      if (seen == hash->fields.end() || seen->second.delivered) continue;
      hash->fields.erase(seen);
      --count_;
    }
  }
  hashes_.splice(hashes_.begin(), hashes_, hash);
  if (hash->fields.empty()) Forget(hash);
  while (count_ > most_) Forget(std::prev(hashes_.end()));
}

void SeenFields::Forget(Hashes::iterator hash) noexcept {
  count_ -= hash->fields.size();
  by_name_.erase({hash->db, hash->name});
  hashes_.erase(hash);
}

}  // namespace hostkit

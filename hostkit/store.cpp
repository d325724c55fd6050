#include "hostkit/store.h"

namespace hostkit {

Deadline Entry::Due() const {
  const auto* hash = std::get_if<Hash>(&value);
  if (hash == nullptr || hash->expiring.empty()) return deadline;
  const std::int64_t field = hash->expiring.begin()->first;
  return deadline ? std::min(*deadline, field) : field;
}

Named* Store::Find(int db, std::string_view name) {
  TextMap<Entry>& keys = databases_[static_cast<std::size_t>(db)].keys;
  const auto found = keys.find(name);
  return found != keys.end() ? &*found : nullptr;
}

Named* Store::Add(int db, std::string_view name, Entry entry) {
  Database& database = databases_[static_cast<std::size_t>(db)];
  Place place;
  if (entry.Due()) place = MakePlace();
  entry.serial = last_serial_ + 1;
  const auto added = database.keys.emplace(name, std::move(entry)).first;
  try {
    database.order.insert(&*added);
  } catch (...) {
    database.keys.erase(added);
    throw;
  }
  ++last_serial_;
  Requeue(db, &*added, std::move(place));
  return &*added;
}

void Store::Remove(int db, Named* key) noexcept {
  if (key->second.queued) queue_.erase({*key->second.queued, key->second.serial, db, key});
  Database& database = databases_[static_cast<std::size_t>(db)];
  database.order.erase(key);
  database.keys.erase(database.keys.find(key->first));
  ++removals_;
}

Store::Place Store::MakePlace() {
  std::set<Due> one;
  return one.extract(one.insert(Due()).first);
}

void Store::Requeue(int db, Named* key, Place place) noexcept {
  Entry& entry = key->second;
  const Deadline due = entry.Due();
  if (due == entry.queued) return;
  if (entry.queued) place = queue_.extract({*entry.queued, entry.serial, db, key});
  entry.queued = due;
  if (!due) return;
  place.value() = {*due, entry.serial, db, key};
  queue_.insert(std::move(place));
}

}  // namespace hostkit

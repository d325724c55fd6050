// Expiry of keys and of hash fields.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>

#include "hostkit/command.h"

using hostkit::Engine;
using hostkit::FieldTag;
using hostkit::Write;

namespace {

// No time leaves the limit to the engine.
hostkit::TimeLimit LimitOf(const timeval& timeout) {
  constexpr std::int64_t kLongest = std::int64_t{1} << 31;  // milliseconds
  const std::int64_t seconds = std::clamp<std::int64_t>(timeout.tv_sec, 0, kLongest / 1000);
  const std::int64_t microseconds = std::clamp<std::int64_t>(timeout.tv_usec, 0, 999999);
  return hostkit::TimeLimit(seconds * 1000 + (microseconds + 999) / 1000);
}

}  // namespace

int tq_mom_pexpire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, struct timeval timeout) {
  return Write({g, db, key, LimitOf(timeout)}, &Engine::Expire, time);
}

int tq_mom_pdel_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time) {
  return Write({g, db, key}, &Engine::Expire, time);
}

int tq_mom_del_expire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int /*n*/) {
  return Write({g, db, key}, &Engine::Persist, time);
}

int tq_mom_pexpire_field_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, size_t field,
                              struct timeval timeout) {
  const auto tag = static_cast<FieldTag>(field);
  const std::span<const FieldTag> tags(&tag, field <= std::numeric_limits<FieldTag>::max() ? 1 : 0);
  return Write({g, db, key, LimitOf(timeout)}, &Engine::HashExpire, tags, time);
}

int tq_mom_pexpire_fields_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int32_t* fields, int field_count,
                               struct timeval timeout) {
  return Write({g, db, key, LimitOf(timeout)}, &Engine::HashExpire, hostkit::TagsOf(fields, field_count), time);
}

// Result records with everything they own.
#pragma once

#include <tq_mom/results.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/live_set.h"
#include "hostkit/tq_obj.h"

namespace hostkit {

enum class ResultTag { kGet, kIncr, kHash, kLrange, kSmembers, kZrange, kZrangebyscore, kZscore };

LiveSet<ResultTag>& LiveResults();

// There is no default: a record that is no result does not compile.
template <typename Record> extern const ResultTag kTagOf;
template <> inline constexpr ResultTag kTagOf<tq_mom_get_res_t> = ResultTag::kGet;
template <> inline constexpr ResultTag kTagOf<tq_mom_incr_res_t> = ResultTag::kIncr;
template <> inline constexpr ResultTag kTagOf<tq_mom_hash_res_t> = ResultTag::kHash;
template <> inline constexpr ResultTag kTagOf<tq_mom_lrange_res_t> = ResultTag::kLrange;
template <> inline constexpr ResultTag kTagOf<tq_mom_smembers_res_t> = ResultTag::kSmembers;
template <> inline constexpr ResultTag kTagOf<tq_mom_zrange_res_t> = ResultTag::kZrange;
template <> inline constexpr ResultTag kTagOf<tq_mom_zrangebyscore_res_t> = ResultTag::kZrangebyscore;
template <> inline constexpr ResultTag kTagOf<tq_mom_zscore_res_t> = ResultTag::kZscore;

// A script may overwrite the record's fields, so what it owns is kept beside it.
template <typename Record> struct Result : Record {
  // Throws std::bad_alloc.
  Result() : Record{} { LiveResults().Add(static_cast<Record*>(this), kTagOf<Record>); }
  ~Result() { LiveResults().Remove(static_cast<Record*>(this), kTagOf<Record>); }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;

  // Throws std::bad_alloc.
  tq_obj* Own(ObjectPtr object) {
    object->in_result = true;
    pointers.push_back(object.get());
    objects.push_back(std::move(object));
    return pointers.back();
  }

  tq_obj* OwnElement(std::string_view key, std::string element) {
    auto object = std::make_unique<tq_obj>(key);
    object->value = std::move(element);
    return Own(std::move(object));
  }

  std::vector<ObjectPtr> objects;
  std::vector<tq_obj*> pointers;
  std::vector<double> scores;
  std::vector<std::size_t> tags;
  std::vector<std::size_t> changed_tags;
};

// Makes a result, lets the body fill it and return a status, and gives it out with that status. Null when memory runs
// out here. client, which may be null, keeps what there is to say about a failure.
template <typename Record, typename Body> Record* MakeResult(tq_mom_client_s* client, Body body) noexcept {
  const auto failed = [&](int status, const char* why) {
    return client != nullptr ? client->Refuse(status, why) : status;
  };
  std::unique_ptr<Result<Record>> result;
  bool filled = false;
  const int status = Guarded(
      [&] {
        result = std::make_unique<Result<Record>>();
        const int got = body(result.get());
        filled = true;
        return got;
      },
      failed);
  if (!filled && status == TQ_MOM_MALLOC_ERR) return nullptr;
  result->error_code = status;
  return result.release();
}

template <typename Record> int FreeResult(Record* record) noexcept {
  if (record == nullptr) return TQ_MOM_OK;
  if (!LiveResults().Contains(record, kTagOf<Record>)) return TQ_MOM_INPUT_ERR;
  delete static_cast<Result<Record>*>(record);
  return TQ_MOM_OK;
}

}  // namespace hostkit

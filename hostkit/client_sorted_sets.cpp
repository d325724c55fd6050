// Sorted sets.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/command.h"

using hostkit::Access;
using hostkit::Command;
using hostkit::Engine;
using hostkit::kValue;
using hostkit::Read;
using hostkit::RunRecord;
using hostkit::ScoredMember;
using hostkit::ScoredView;
using hostkit::Write;

namespace {

// Opens the sorted set that the members name, all of them the same. There is at least one.
int OpenMembers(tq_global_t* g, int db, void** members, int count, Command* command) {
  if (const int status = command->OpenKey({g, db, members[0]}); status != TQ_MOM_OK) return status;
  for (int index = 0; index < count; ++index) {
    const tq_obj* member = hostkit::LiveObject(members[index]);
    if (member == nullptr || !member->value || member->key != command->request.name) {
      return command->client->Refuse(TQ_MOM_INPUT_ERR, "a member is no value object, has no value or another key");
    }
  }
  return TQ_MOM_OK;
}

// What a command without members returns: there is nothing to do, but the runtime and the database must still be right.
int WithoutMembers(tq_global_t* g, int db, int count) {
  Command command;
  if (const int status = command.OpenRuntime(g); status != TQ_MOM_OK) return status;
  if (count == 0 && hostkit::ValidDatabase(db)) return command.client->Finish({});
  return command.client->Refuse(TQ_MOM_INPUT_ERR, "there are no members, or there is no such database");
}

std::string_view ValueOf(const void* member) { return *hostkit::LiveObject(member)->value; }

// Writes what take(index) gives for each member.
template <typename Method, typename Take> int WriteMembers(Command command, int count, Method method, Take take) {
  if (const int status = command.Enter(Access::kWrite); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    using Element = decltype(take(0));
    std::vector<Element> elements;
    elements.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) elements.push_back(take(index));
    std::int64_t changed = 0;
    hostkit::Status status = command.Call(method, std::span<const Element>(elements), &changed);
    return command.Result(std::move(status), changed);
  });
}

constexpr auto kFill = [](auto* result, const Command& command, std::vector<ScoredMember>&& members) {
  result->scores.reserve(members.size());
  for (auto& [member, score] : members) {
    result->scores.push_back(score);
    result->OwnElement(command.request.name, std::move(member));
  }
  result->value = result->pointers.data();
  result->score = result->scores.data();
  result->count = result->pointers.size();
};

}  // namespace

int tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, void** members, int count) {
  if (count <= 0 || scores == nullptr || members == nullptr) return WithoutMembers(g, db, count);
  Command command;
  if (const int status = OpenMembers(g, db, members, count, &command); status != TQ_MOM_OK) return status;
  if (std::any_of(scores, scores + count, [](double score) { return std::isnan(score); })) {
    return command.client->Refuse(TQ_MOM_INPUT_ERR, "a score is not a number");
  }
  return WriteMembers(command, count, &Engine::SortedAdd, [&](int index) {
    return ScoredView{ValueOf(members[index]), scores[index]};
  });
}

int tq_mom_zrem_sync(tq_global_t* g, int db, void** members, int count) {
  if (count <= 0 || members == nullptr) return WithoutMembers(g, db, count);
  Command command;
  if (const int status = OpenMembers(g, db, members, count, &command); status != TQ_MOM_OK) return status;
  return WriteMembers(command, count, &Engine::SortedRemove, [&](int index) { return ValueOf(members[index]); });
}

int tq_mom_zcard_sync(tq_global_t* g, int db, void* key) { return Read({g, db, key}, &Engine::SortedSize); }

int tq_mom_zcount_sync(tq_global_t* g, int db, void* key, double min, double max) {
  return Read({g, db, key}, &Engine::SortedCount, min, max);
}

tq_mom_zrange_res_t* tq_mom_zrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  return RunRecord<tq_mom_zrange_res_t>({g, db, key}, Access::kRead, &Engine::SortedRange, kFill, start, stop);
}

tq_mom_zrangebyscore_res_t* tq_mom_zrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max) {
  return RunRecord<tq_mom_zrangebyscore_res_t>({g, db, key}, Access::kRead, &Engine::SortedRangeByScore, kFill, min,
                                               max);
}

int tq_mom_zrank_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.Open({g, db, key}, Access::kRead, kValue); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    std::optional<std::int64_t> rank;
    hostkit::Status status = command.Call(&Engine::SortedRank, kValue, &rank);
    if (status.ok() && !rank) return command.client->Refuse(TQ_MOM_ERR, "there is no such member");
    return command.Result(std::move(status), rank.value_or(0));
  });
}

tq_mom_zscore_res_t* tq_mom_zscore_sync(tq_global_t* g, int db, void* key) {
  const auto fill = [](auto* result, const Command& /*command*/, std::optional<double> score) {
    result->exist = score ? 1 : 0;
    result->score = score.value_or(0);
  };
  return RunRecord<tq_mom_zscore_res_t>({g, db, key}, Access::kRead, &Engine::SortedScore, fill, kValue);
}

int tq_mom_zremrangebyrank_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  return Write({g, db, key}, &Engine::SortedRemoveRange, start, stop);
}

int tq_mom_zremrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max) {
  return Write({g, db, key}, &Engine::SortedRemoveRangeByScore, min, max);
}

int tq_mom_zrange_res_free(tq_mom_zrange_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_zrangebyscore_res_free(tq_mom_zrangebyscore_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_zscore_res_free(tq_mom_zscore_res_t* result) { return hostkit::FreeResult(result); }

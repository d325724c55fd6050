// Sorted sets.
#include <tq_mom/tq_mom.h>

#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "hostkit/client_state.h"
#include "hostkit/guard.h"
#include "hostkit/results.h"

namespace {

using hostkit::Command;
using hostkit::Guarded;
using hostkit::MakeResult;
using hostkit::ScoredMembers;

// Opens the sorted set that the members name, all of them the same. There is at least one.
int OpenMembers(tq_global_t* g, int db, void** members, int count, Command* command) {
  if (const int status = command->OpenWithValue(g, db, members[0]); status != TQ_MOM_OK) return status;
  for (int index = 1; index < count; ++index) {
    const tq_obj* member = hostkit::LiveObject(members[index]);
    if (member == nullptr || !member->value || member->key != command->key.name) return TQ_MOM_INPUT_ERR;
  }
  return TQ_MOM_OK;
}

// What a command without members returns: there is nothing to do, but the runtime and the database must still be right.
int WithoutMembers(tq_global_t* g, int db, int count) {
  tq_mom_client_s* client;
  if (const int status = hostkit::OpenClient(g, &client); status != TQ_MOM_OK) return status;
  return count == 0 && hostkit::ValidDatabase(db) ? 0 : TQ_MOM_INPUT_ERR;
}

const std::string& ValueOf(const void* member) { return *hostkit::LiveObject(member)->value; }

// Opens a command that has score bounds.
int OpenBounds(tq_global_t* g, int db, const void* key, double min, double max, Command* command) {
  const int status = command->Open(g, db, key);
  return status == TQ_MOM_OK && (std::isnan(min) || std::isnan(max)) ? TQ_MOM_INPUT_ERR : status;
}

template <typename ResultRecord>
void Fill(ResultRecord* result, std::string_view key, ScoredMembers members) {
  for (auto& [member, score] : members) {
    result->scores.push_back(score);
    result->OwnElement(key, std::move(member));
  }
  result->value = result->pointers.data();
  result->score = result->scores.data();
  result->count = result->pointers.size();
}

}  // namespace

int tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, void** members, int count) {
  if (count <= 0 || scores == nullptr || members == nullptr) return WithoutMembers(g, db, count);
  Command command;
  if (const int status = OpenMembers(g, db, members, count, &command); status != TQ_MOM_OK) return status;
  return Guarded([&] {
    hostkit::Scores wanted;
    for (int index = 0; index < count; ++index) {
      if (std::isnan(scores[index])) return TQ_MOM_INPUT_ERR;
      wanted.insert_or_assign(ValueOf(members[index]), scores[index]);
    }
    return command.engine->SortedAdd(command.key, std::move(wanted));
  });
}

int tq_mom_zadd_ext_sync(tq_global_t* g, int db, tq_mom_zadd_op_t* /*op*/, double* scores, void** members, int count) {
  return tq_mom_zadd_sync(g, db, scores, members, count);
}

int tq_mom_zrem_sync(tq_global_t* g, int db, void** members, int count) {
  if (count <= 0 || members == nullptr) return WithoutMembers(g, db, count);
  Command command;
  if (const int status = OpenMembers(g, db, members, count, &command); status != TQ_MOM_OK) return status;
  return Guarded([&] {
    std::vector<std::string_view> wanted;
    for (int index = 0; index < count; ++index) wanted.push_back(ValueOf(members[index]));
    return command.engine->SortedRemove(command.key, wanted);
  });
}

int tq_mom_zrem_ext_sync(tq_global_t* g, int db, tq_mom_zrem_op_t* /*op*/, void** members, int count) {
  return tq_mom_zrem_sync(g, db, members, count);
}

int tq_mom_zcard_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SortedSize(command.key); });
}

int tq_mom_zcard_ext_sync(tq_global_t* g, int db, tq_mom_zcard_op_t* /*op*/, void* key) {
  return tq_mom_zcard_sync(g, db, key);
}

int tq_mom_zcount_sync(tq_global_t* g, int db, void* key, double min, double max) {
  Command command;
  if (const int status = OpenBounds(g, db, key, min, max, &command); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SortedCount(command.key, min, max); });
}

int tq_mom_zcount_ext_sync(tq_global_t* g, int db, tq_mom_zcount_op_t* /*op*/, void* key, double min, double max) {
  return tq_mom_zcount_sync(g, db, key, min, max);
}

tq_mom_zrange_res_t* tq_mom_zrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  return MakeResult<tq_mom_zrange_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
    ScoredMembers members;
    const int status = command.engine->SortedRange(command.key, start, stop, &members);
    if (status == TQ_MOM_OK) Fill(result, command.key.name, std::move(members));
    return status;
  });
}

tq_mom_zrange_res_t* tq_mom_zrange_ext_sync(tq_global_t* g, int db, tq_mom_zrange_op_t* /*op*/, void* key, int start,
                                            int stop) {
  return tq_mom_zrange_sync(g, db, key, start, stop);
}

tq_mom_zrangebyscore_res_t* tq_mom_zrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max) {
  return MakeResult<tq_mom_zrangebyscore_res_t>([&](auto* result) {
    Command command;
    if (const int status = OpenBounds(g, db, key, min, max, &command); status != TQ_MOM_OK) return status;
    ScoredMembers members;
    const int status = command.engine->SortedRangeByScore(command.key, min, max, &members);
    if (status == TQ_MOM_OK) Fill(result, command.key.name, std::move(members));
    return status;
  });
}

tq_mom_zrangebyscore_res_t* tq_mom_zrangebyscore_ext_sync(tq_global_t* g, int db, tq_mom_zrangebyscore_op_t* /*op*/,
                                                          void* key, double min, double max) {
  return tq_mom_zrangebyscore_sync(g, db, key, min, max);
}

int tq_mom_zrank_sync(tq_global_t* g, int db, void* key) {
  Command command;
  if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SortedRank(command.key, command.value()); });
}

int tq_mom_zrank_ext_sync(tq_global_t* g, int db, tq_mom_zrank_op_t* /*op*/, void* key) {
  return tq_mom_zrank_sync(g, db, key);
}

tq_mom_zscore_res_t* tq_mom_zscore_sync(tq_global_t* g, int db, void* key) {
  return MakeResult<tq_mom_zscore_res_t>([&](auto* result) {
    Command command;
    if (const int status = command.OpenWithValue(g, db, key); status != TQ_MOM_OK) return status;
    std::optional<double> score;
    const int status = command.engine->SortedScore(command.key, command.value(), &score);
    result->exist = score ? 1 : 0;
    result->score = score.value_or(0);
    return status;
  });
}

tq_mom_zscore_res_t* tq_mom_zscore_ext_sync(tq_global_t* g, int db, tq_mom_zscore_op_t* /*op*/, void* key) {
  return tq_mom_zscore_sync(g, db, key);
}

int tq_mom_zremrangebyrank_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  Command command;
  if (const int status = command.Open(g, db, key); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SortedRemoveRange(command.key, start, stop); });
}

int tq_mom_zremrangebyrank_ext_sync(tq_global_t* g, int db, tq_mom_zremrangebyrank_op_t* /*op*/, void* key, int start,
                                    int stop) {
  return tq_mom_zremrangebyrank_sync(g, db, key, start, stop);
}

int tq_mom_zremrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max) {
  Command command;
  if (const int status = OpenBounds(g, db, key, min, max, &command); status != TQ_MOM_OK) return status;
  return Guarded([&] { return command.engine->SortedRemoveRangeByScore(command.key, min, max); });
}

int tq_mom_zremrangebyscore_ext_sync(tq_global_t* g, int db, tq_mom_zremrangebyscore_op_t* /*op*/, void* key,
                                     double min, double max) {
  return tq_mom_zremrangebyscore_sync(g, db, key, min, max);
}

int tq_mom_zrange_res_free(tq_mom_zrange_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_zrangebyscore_res_free(tq_mom_zrangebyscore_res_t* result) { return hostkit::FreeResult(result); }
int tq_mom_zscore_res_free(tq_mom_zscore_res_t* result) { return hostkit::FreeResult(result); }

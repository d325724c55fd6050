#include "all_commands.h"

namespace hostkit {

std::vector<CommandResult> RunAll(tq_global_t* g, int db, tq_obj* key, const OwnArguments& own) {
  std::vector<CommandResult> seen;
  int out = 99;
  int32_t* tags = const_cast<int32_t*>(own.tags);
  const int tag_count = own.tag_count;
  double scores[] = {own.bound};
  void* members[] = {key};
  tq_obj* const pivot = own.pivot ? key : nullptr;
  const timeval none = {};
  tq_mom_psetex_op_t psetex_op = {0, own.milliseconds};
  tq_mom_hmset_op_t hmset_op = {tags, tag_count, 0};
  tq_mom_hmsetnx_op_t hmsetnx_op = {tags, tag_count, 0};
  const auto popped = [&](tq_obj* object) {
    tq_mom_tq_obj_free(object);
    return out;
  };
#define TQ_RUN(call) seen.push_back({#call, call})
  TQ_RUN(popped(tq_mom_get_sync(g, db, key, &out)));
  TQ_RUN(StatusOf(tq_mom_get_ext_sync(g, db, nullptr, key), tq_mom_get_res_free));
  TQ_RUN(tq_mom_set_sync(g, db, key));
  TQ_RUN(tq_mom_set_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_setnx_sync(g, db, key));
  TQ_RUN(tq_mom_setnx_noreply_sync(g, db, key));
  TQ_RUN(tq_mom_setnx_noreply_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_psetex_sync(g, db, key, own.milliseconds));
  TQ_RUN(tq_mom_psetex_ext_sync(g, db, &psetex_op, key));
  TQ_RUN(tq_mom_del_sync(g, db, key));
  TQ_RUN(tq_mom_del_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_exists_sync(g, db, key));
  TQ_RUN(tq_mom_exists_ext_sync(g, db, nullptr, key));
  TQ_RUN(StatusOf(tq_mom_incr_sync(g, db, key), tq_mom_incr_res_free));
  TQ_RUN(StatusOf(tq_mom_incr_ext_sync(g, db, nullptr, key), tq_mom_incr_res_free));
  TQ_RUN(tq_mom_pexpire_sync(g, db, key, 1, none));
  TQ_RUN(tq_mom_pdel_sync(g, db, key, 0));
  TQ_RUN(tq_mom_del_expire_sync(g, db, key, 1, 0));
  TQ_RUN(tq_mom_pexpire_field_sync(g, db, key, 1, 1, none));
  TQ_RUN(tq_mom_pexpire_fields_sync(g, db, key, 1, tags, tag_count, none));
  TQ_RUN(tq_mom_hmset_sync(g, db, key, tags, tag_count));
  TQ_RUN(tq_mom_hmset_ext_sync(g, db, &hmset_op, key));
  TQ_RUN(tq_mom_hmsetnx_sync(g, db, key, tags, tag_count));
  TQ_RUN(tq_mom_hmsetnx_ext_sync(g, db, &hmsetnx_op, key));
  TQ_RUN(StatusOf(tq_mom_hmget_sync(g, db, key, tags, tag_count), tq_mom_hash_res_free));
  TQ_RUN(StatusOf(tq_mom_hgetall_sync(g, db, key), tq_mom_hash_res_free));
  TQ_RUN(StatusOf(tq_mom_hgetall_ext_sync(g, db, nullptr, key), tq_mom_hash_res_free));
  TQ_RUN(tq_mom_del_sync(g, db, key));
  TQ_RUN(tq_mom_lpush_sync(g, db, key));
  TQ_RUN(tq_mom_lpush_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_rpush_sync(g, db, key));
  TQ_RUN(tq_mom_rpush_ext_sync(g, db, nullptr, key));
  TQ_RUN(popped(tq_mom_lpop_sync(g, db, key, &out)));
  TQ_RUN(popped(tq_mom_lpop_ext_sync(g, db, nullptr, key, &out)));
  TQ_RUN(popped(tq_mom_rpop_sync(g, db, key, &out)));
  TQ_RUN(tq_mom_llen_sync(g, db, key));
  TQ_RUN(tq_mom_llen_ext_sync(g, db, nullptr, key));
  TQ_RUN(StatusOf(tq_mom_lrange_sync(g, db, key, 0, -1), tq_mom_lrange_res_free));
  TQ_RUN(StatusOf(tq_mom_lrange_ext_sync(g, db, nullptr, key, 0, -1), tq_mom_lrange_res_free));
  TQ_RUN(tq_mom_linsert_sync(g, db, key, pivot, own.where));
  TQ_RUN(tq_mom_linsert_ext_sync(g, db, nullptr, key, pivot, own.where));
  TQ_RUN(tq_mom_lset_sync(g, db, key, 0));
  TQ_RUN(tq_mom_lset_ext_sync(g, db, nullptr, key, 0));
  TQ_RUN(tq_mom_lrem_sync(g, db, key, 1));
  TQ_RUN(tq_mom_lrem_ext_sync(g, db, nullptr, key, 0));
  TQ_RUN(popped(tq_mom_rpop_ext_sync(g, db, nullptr, key, &out)));
  TQ_RUN(tq_mom_sadd_sync(g, db, key));
  TQ_RUN(tq_mom_sadd_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_sismember_sync(g, db, key));
  TQ_RUN(tq_mom_sismember_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_scard_sync(g, db, key));
  TQ_RUN(tq_mom_scard_ext_sync(g, db, nullptr, key));
  TQ_RUN(StatusOf(tq_mom_smembers_sync(g, db, key), tq_mom_smembers_res_free));
  TQ_RUN(StatusOf(tq_mom_smembers_ext_sync(g, db, nullptr, key), tq_mom_smembers_res_free));
  TQ_RUN(tq_mom_srem_sync(g, db, key));
  TQ_RUN(tq_mom_srem_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_zadd_sync(g, db, scores, members, 1));
  TQ_RUN(tq_mom_zadd_ext_sync(g, db, nullptr, scores, members, 1));
  TQ_RUN(tq_mom_zcard_sync(g, db, key));
  TQ_RUN(tq_mom_zcard_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_zcount_sync(g, db, key, 0, own.bound));
  TQ_RUN(tq_mom_zcount_ext_sync(g, db, nullptr, key, 0, own.bound));
  TQ_RUN(StatusOf(tq_mom_zrange_sync(g, db, key, 0, -1), tq_mom_zrange_res_free));
  TQ_RUN(StatusOf(tq_mom_zrange_ext_sync(g, db, nullptr, key, 0, -1), tq_mom_zrange_res_free));
  TQ_RUN(StatusOf(tq_mom_zrangebyscore_sync(g, db, key, 0, own.bound), tq_mom_zrangebyscore_res_free));
  TQ_RUN(StatusOf(tq_mom_zrangebyscore_ext_sync(g, db, nullptr, key, 0, own.bound), tq_mom_zrangebyscore_res_free));
  TQ_RUN(tq_mom_zrank_sync(g, db, key));
  TQ_RUN(tq_mom_zrank_ext_sync(g, db, nullptr, key));
  TQ_RUN(StatusOf(tq_mom_zscore_sync(g, db, key), tq_mom_zscore_res_free));
  TQ_RUN(StatusOf(tq_mom_zscore_ext_sync(g, db, nullptr, key), tq_mom_zscore_res_free));
  TQ_RUN(tq_mom_zremrangebyrank_sync(g, db, key, 5, 6));
  TQ_RUN(tq_mom_zremrangebyrank_ext_sync(g, db, nullptr, key, 5, 6));
  TQ_RUN(tq_mom_zremrangebyscore_sync(g, db, key, 5, 5 + own.bound));
  TQ_RUN(tq_mom_zremrangebyscore_ext_sync(g, db, nullptr, key, 5, 5 + own.bound));
  TQ_RUN(tq_mom_zrem_sync(g, db, members, 1));
  TQ_RUN(tq_mom_zrem_ext_sync(g, db, nullptr, members, 1));
  TQ_RUN(tq_mom_publish_sync(g, db, key));
  TQ_RUN(tq_mom_publish_ext_sync(g, db, nullptr, key));
  TQ_RUN(tq_mom_scan_sync(g, db, key, 0, nullptr, nullptr));
  TQ_RUN(tq_mom_scan_sync(
      g, db, key, 0, [](tq_global_t*, void*, void*) { return 0; }, nullptr));
#undef TQ_RUN
  return seen;
}

}  // namespace hostkit

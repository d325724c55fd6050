// Every function that the client library declares, once.
#ifndef TESTS_RECORDER_CLIENT_FUNCTIONS_H_
#define TESTS_RECORDER_CLIENT_FUNCTIONS_H_

#include <cstddef>

#define TQ_CLIENT_FUNCTIONS(X)          \
  X(tq_global_init)                     \
  X(tq_global_finish)                   \
  X(tq_global_get_master)               \
  X(tq_global_run)                      \
  X(tq_mom_client_connect_sync)         \
  X(tq_mom_client_connect_cluster_sync) \
  X(tq_mom_debug_show_all)              \
  X(tq_mom_bgsave_sync)                 \
  X(tq_mom_get_sync)                    \
  X(tq_mom_get_ext_sync)                \
  X(tq_mom_set_sync)                    \
  X(tq_mom_set_ext_sync)                \
  X(tq_mom_setnx_sync)                  \
  X(tq_mom_setnx_noreply_sync)          \
  X(tq_mom_setnx_noreply_ext_sync)      \
  X(tq_mom_psetex_sync)                 \
  X(tq_mom_psetex_ext_sync)             \
  X(tq_mom_del_sync)                    \
  X(tq_mom_del_ext_sync)                \
  X(tq_mom_exists_sync)                 \
  X(tq_mom_exists_ext_sync)             \
  X(tq_mom_incr_sync)                   \
  X(tq_mom_incr_ext_sync)               \
  X(tq_mom_pexpire_sync)                \
  X(tq_mom_pdel_sync)                   \
  X(tq_mom_del_expire_sync)             \
  X(tq_mom_pexpire_field_sync)          \
  X(tq_mom_pexpire_fields_sync)         \
  X(tq_mom_get_res_free)                \
  X(tq_mom_incr_res_free)               \
  X(tq_mom_tq_obj_free)                 \
  X(tq_mom_hmset_sync)                  \
  X(tq_mom_hmset_ext_sync)              \
  X(tq_mom_hmsetnx_sync)                \
  X(tq_mom_hmsetnx_ext_sync)            \
  X(tq_mom_hmget_sync)                  \
  X(tq_mom_hgetall_sync)                \
  X(tq_mom_hgetall_ext_sync)            \
  X(tq_mom_hash_res_free)               \
  X(tq_mom_lpush_sync)                  \
  X(tq_mom_lpush_ext_sync)              \
  X(tq_mom_rpush_sync)                  \
  X(tq_mom_rpush_ext_sync)              \
  X(tq_mom_lpop_sync)                   \
  X(tq_mom_lpop_ext_sync)               \
  X(tq_mom_rpop_sync)                   \
  X(tq_mom_rpop_ext_sync)               \
  X(tq_mom_llen_sync)                   \
  X(tq_mom_llen_ext_sync)               \
  X(tq_mom_lrange_sync)                 \
  X(tq_mom_lrange_ext_sync)             \
  X(tq_mom_linsert_sync)                \
  X(tq_mom_linsert_ext_sync)            \
  X(tq_mom_lset_sync)                   \
  X(tq_mom_lset_ext_sync)               \
  X(tq_mom_lrem_sync)                   \
  X(tq_mom_lrem_ext_sync)               \
  X(tq_mom_lrange_res_free)             \
  X(tq_mom_sadd_sync)                   \
  X(tq_mom_sadd_ext_sync)               \
  X(tq_mom_srem_sync)                   \
  X(tq_mom_srem_ext_sync)               \
  X(tq_mom_sismember_sync)              \
  X(tq_mom_sismember_ext_sync)          \
  X(tq_mom_scard_sync)                  \
  X(tq_mom_scard_ext_sync)              \
  X(tq_mom_smembers_sync)               \
  X(tq_mom_smembers_ext_sync)           \
  X(tq_mom_smembers_res_free)           \
  X(tq_mom_zadd_sync)                   \
  X(tq_mom_zadd_ext_sync)               \
  X(tq_mom_zrem_sync)                   \
  X(tq_mom_zrem_ext_sync)               \
  X(tq_mom_zcard_sync)                  \
  X(tq_mom_zcard_ext_sync)              \
  X(tq_mom_zcount_sync)                 \
  X(tq_mom_zcount_ext_sync)             \
  X(tq_mom_zrange_sync)                 \
  X(tq_mom_zrange_ext_sync)             \
  X(tq_mom_zrangebyscore_sync)          \
  X(tq_mom_zrangebyscore_ext_sync)      \
  X(tq_mom_zrank_sync)                  \
  X(tq_mom_zrank_ext_sync)              \
  X(tq_mom_zscore_sync)                 \
  X(tq_mom_zscore_ext_sync)             \
  X(tq_mom_zremrangebyrank_sync)        \
  X(tq_mom_zremrangebyrank_ext_sync)    \
  X(tq_mom_zremrangebyscore_sync)       \
  X(tq_mom_zremrangebyscore_ext_sync)   \
  X(tq_mom_zrange_res_free)             \
  X(tq_mom_zrangebyscore_res_free)      \
  X(tq_mom_zscore_res_free)             \
  X(tq_mom_publish_sync)                \
  X(tq_mom_publish_ext_sync)            \
  X(tq_mom_scan_sync)

namespace recorder {

#define TQ_COUNT(name) +1
inline constexpr size_t kClientFunctionCount = 0 TQ_CLIENT_FUNCTIONS(TQ_COUNT);
#undef TQ_COUNT

}  // namespace recorder

#endif  // TESTS_RECORDER_CLIENT_FUNCTIONS_H_

/* A client library that does nothing, so that a measurement sees the binding alone. Every status is 0 and every pointer
 * null but those that a workload reads: get_ext and zrange return static records, and scan delivers count messages. */
#include <tq_mom/tq_mom.h>

enum { kValueCount = 100 };

static tq_mom_get_res_t get_result;
static tq_obj* range_values[kValueCount];
static double range_scores[kValueCount];
static tq_mom_zrange_res_t range_result = {range_values, range_scores, kValueCount, 0};

#define TQ_NULL_STATUS(name, ...) \
  int name(__VA_ARGS__) { return 0; }
#define TQ_NULL_POINTER(type, name, ...) \
  type name(__VA_ARGS__) { return NULL; }

#pragma GCC diagnostic ignored "-Wunused-parameter"

TQ_NULL_POINTER(tq_global_t*, tq_global_init, const char* name, tq_global_t* g)
TQ_NULL_STATUS(tq_global_finish, tq_global_t* g)
TQ_NULL_POINTER(struct tq_thread_master*, tq_global_get_master, tq_global_t* g)
TQ_NULL_STATUS(tq_global_run, tq_global_t* g)
TQ_NULL_STATUS(tq_mom_client_connect_sync, tq_global_t* g, int n)
TQ_NULL_STATUS(tq_mom_client_connect_cluster_sync, tq_global_t* g, int n)
TQ_NULL_STATUS(tq_mom_debug_show_all, tq_global_t* g)
TQ_NULL_STATUS(tq_mom_bgsave_sync, tq_global_t* g, int n)

tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code) {
  *error_code = 0;
  return NULL;
}
tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t* g, int db, tq_mom_get_op_t* op, tq_obj* key) { return &get_result; }
TQ_NULL_STATUS(tq_mom_set_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_STATUS(tq_mom_set_ext_sync, tq_global_t* g, int db, tq_mom_set_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_setnx_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_STATUS(tq_mom_setnx_noreply_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_STATUS(tq_mom_setnx_noreply_ext_sync, tq_global_t* g, int db, tq_mom_set_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_psetex_sync, tq_global_t* g, int db, tq_obj* key, int milliseconds)
TQ_NULL_STATUS(tq_mom_psetex_ext_sync, tq_global_t* g, int db, tq_mom_psetex_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_del_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_STATUS(tq_mom_del_ext_sync, tq_global_t* g, int db, tq_mom_del_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_exists_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_STATUS(tq_mom_exists_ext_sync, tq_global_t* g, int db, tq_mom_exist_op_t* op, tq_obj* key)
TQ_NULL_POINTER(tq_mom_incr_res_t*, tq_mom_incr_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_POINTER(tq_mom_incr_res_t*, tq_mom_incr_ext_sync, tq_global_t* g, int db, tq_mom_incr_op_t* op, tq_obj* key)

TQ_NULL_STATUS(tq_mom_pexpire_sync, tq_global_t* g, int db, tq_obj* key, unsigned int time, struct timeval timeout)
TQ_NULL_STATUS(tq_mom_pdel_sync, tq_global_t* g, int db, tq_obj* key, unsigned int time)
TQ_NULL_STATUS(tq_mom_del_expire_sync, tq_global_t* g, int db, tq_obj* key, unsigned int time, int n)
TQ_NULL_STATUS(tq_mom_pexpire_field_sync, tq_global_t* g, int db, tq_obj* key, unsigned int time, size_t field,
               struct timeval timeout)
TQ_NULL_STATUS(tq_mom_pexpire_fields_sync, tq_global_t* g, int db, tq_obj* key, unsigned int time, int32_t* fields,
               int field_count, struct timeval timeout)
TQ_NULL_STATUS(tq_mom_get_res_free, tq_mom_get_res_t* result)
TQ_NULL_STATUS(tq_mom_incr_res_free, tq_mom_incr_res_t* result)
TQ_NULL_STATUS(tq_mom_tq_obj_free, tq_obj* object)

TQ_NULL_STATUS(tq_mom_hmset_sync, tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count)
TQ_NULL_STATUS(tq_mom_hmset_ext_sync, tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_hmsetnx_sync, tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count)
TQ_NULL_STATUS(tq_mom_hmsetnx_ext_sync, tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key)
TQ_NULL_POINTER(tq_mom_hash_res_t*, tq_mom_hmget_sync, tq_global_t* g, int db, tq_obj* key, int32_t* fields,
                int field_count)
TQ_NULL_POINTER(tq_mom_hash_res_t*, tq_mom_hgetall_sync, tq_global_t* g, int db, tq_obj* key)
TQ_NULL_POINTER(tq_mom_hash_res_t*, tq_mom_hgetall_ext_sync, tq_global_t* g, int db, tq_mom_hget_op_t* op, tq_obj* key)
TQ_NULL_STATUS(tq_mom_hash_res_free, tq_mom_hash_res_t* result)

TQ_NULL_STATUS(tq_mom_lpush_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_lpush_ext_sync, tq_global_t* g, int db, tq_mom_lpush_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_rpush_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_rpush_ext_sync, tq_global_t* g, int db, tq_mom_rpush_op_t* op, void* key)
tq_obj* tq_mom_lpop_sync(tq_global_t* g, int db, void* key, int* out) {
  *out = 0;
  return NULL;
}
tq_obj* tq_mom_lpop_ext_sync(tq_global_t* g, int db, tq_mom_lpop_op_t* op, void* key, int* out) {
  *out = 0;
  return NULL;
}
tq_obj* tq_mom_rpop_sync(tq_global_t* g, int db, void* key, int* out) {
  *out = 0;
  return NULL;
}
tq_obj* tq_mom_rpop_ext_sync(tq_global_t* g, int db, tq_mom_rpop_op_t* op, void* key, int* out) {
  *out = 0;
  return NULL;
}
TQ_NULL_STATUS(tq_mom_llen_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_llen_ext_sync, tq_global_t* g, int db, tq_mom_llen_op_t* op, void* key)
TQ_NULL_POINTER(tq_mom_lrange_res_t*, tq_mom_lrange_sync, tq_global_t* g, int db, void* key, int start, int stop)
TQ_NULL_POINTER(tq_mom_lrange_res_t*, tq_mom_lrange_ext_sync, tq_global_t* g, int db, tq_mom_lrange_op_t* op, void* key,
                int start, int stop)
TQ_NULL_STATUS(tq_mom_linsert_sync, tq_global_t* g, int db, void* key, void* value, unsigned int where)
TQ_NULL_STATUS(tq_mom_linsert_ext_sync, tq_global_t* g, int db, tq_mom_linsert_op_t* op, void* key, void* value,
               unsigned int where)
TQ_NULL_STATUS(tq_mom_lset_sync, tq_global_t* g, int db, void* key, int index)
TQ_NULL_STATUS(tq_mom_lset_ext_sync, tq_global_t* g, int db, tq_mom_lset_op_t* op, void* key, int index)
TQ_NULL_STATUS(tq_mom_lrem_sync, tq_global_t* g, int db, void* key, size_t count)
TQ_NULL_STATUS(tq_mom_lrem_ext_sync, tq_global_t* g, int db, tq_mom_lrem_op_t* op, void* key, size_t count)
TQ_NULL_STATUS(tq_mom_lrange_res_free, tq_mom_lrange_res_t* result)

TQ_NULL_STATUS(tq_mom_sadd_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_sadd_ext_sync, tq_global_t* g, int db, tq_mom_sadd_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_srem_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_srem_ext_sync, tq_global_t* g, int db, tq_mom_srem_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_sismember_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_sismember_ext_sync, tq_global_t* g, int db, tq_mom_sismember_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_scard_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_scard_ext_sync, tq_global_t* g, int db, tq_mom_scard_op_t* op, void* key)
TQ_NULL_POINTER(tq_mom_smembers_res_t*, tq_mom_smembers_sync, tq_global_t* g, int db, void* key)
TQ_NULL_POINTER(tq_mom_smembers_res_t*, tq_mom_smembers_ext_sync, tq_global_t* g, int db, tq_mom_smembers_op_t* op,
                void* key)
TQ_NULL_STATUS(tq_mom_smembers_res_free, tq_mom_smembers_res_t* result)

TQ_NULL_STATUS(tq_mom_zadd_sync, tq_global_t* g, int db, double* scores, void** members, int count)
TQ_NULL_STATUS(tq_mom_zadd_ext_sync, tq_global_t* g, int db, tq_mom_zadd_op_t* op, double* scores, void** members,
               int count)
TQ_NULL_STATUS(tq_mom_zrem_sync, tq_global_t* g, int db, void** members, int count)
TQ_NULL_STATUS(tq_mom_zrem_ext_sync, tq_global_t* g, int db, tq_mom_zrem_op_t* op, void** members, int count)
TQ_NULL_STATUS(tq_mom_zcard_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_zcard_ext_sync, tq_global_t* g, int db, tq_mom_zcard_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_zcount_sync, tq_global_t* g, int db, void* key, double min, double max)
TQ_NULL_STATUS(tq_mom_zcount_ext_sync, tq_global_t* g, int db, tq_mom_zcount_op_t* op, void* key, double min,
               double max)
tq_mom_zrange_res_t* tq_mom_zrange_sync(tq_global_t* g, int db, void* key, int start, int stop) {
  for (int i = 0; i < kValueCount; ++i) range_values[i] = (tq_obj*)&range_values[i];
  return &range_result;
}
TQ_NULL_POINTER(tq_mom_zrange_res_t*, tq_mom_zrange_ext_sync, tq_global_t* g, int db, tq_mom_zrange_op_t* op, void* key,
                int start, int stop)
TQ_NULL_POINTER(tq_mom_zrangebyscore_res_t*, tq_mom_zrangebyscore_sync, tq_global_t* g, int db, void* key, double min,
                double max)
TQ_NULL_POINTER(tq_mom_zrangebyscore_res_t*, tq_mom_zrangebyscore_ext_sync, tq_global_t* g, int db,
                tq_mom_zrangebyscore_op_t* op, void* key, double min, double max)
TQ_NULL_STATUS(tq_mom_zrank_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_zrank_ext_sync, tq_global_t* g, int db, tq_mom_zrank_op_t* op, void* key)
TQ_NULL_POINTER(tq_mom_zscore_res_t*, tq_mom_zscore_sync, tq_global_t* g, int db, void* key)
TQ_NULL_POINTER(tq_mom_zscore_res_t*, tq_mom_zscore_ext_sync, tq_global_t* g, int db, tq_mom_zscore_op_t* op, void* key)
TQ_NULL_STATUS(tq_mom_zremrangebyrank_sync, tq_global_t* g, int db, void* key, int start, int stop)
TQ_NULL_STATUS(tq_mom_zremrangebyrank_ext_sync, tq_global_t* g, int db, tq_mom_zremrangebyrank_op_t* op, void* key,
               int start, int stop)
TQ_NULL_STATUS(tq_mom_zremrangebyscore_sync, tq_global_t* g, int db, void* key, double min, double max)
TQ_NULL_STATUS(tq_mom_zremrangebyscore_ext_sync, tq_global_t* g, int db, tq_mom_zremrangebyscore_op_t* op, void* key,
               double min, double max)
TQ_NULL_STATUS(tq_mom_zrange_res_free, tq_mom_zrange_res_t* result)
TQ_NULL_STATUS(tq_mom_zrangebyscore_res_free, tq_mom_zrangebyscore_res_t* result)
TQ_NULL_STATUS(tq_mom_zscore_res_free, tq_mom_zscore_res_t* result)

TQ_NULL_STATUS(tq_mom_publish_sync, tq_global_t* g, int db, void* key)
TQ_NULL_STATUS(tq_mom_publish_ext_sync, tq_global_t* g, int db, tq_mom_publish_op_t* op, void* key)

int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context) {
  static tq_mom_scan_all_msg_t message;
  for (unsigned int i = 0; callback && i < count; ++i) callback(g, &message, context);
  return 0;
}

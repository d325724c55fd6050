#include "layouts.h"

#include <tq_mom/tq_mom.h>

#define TQ_FIELD(field) \
  FieldLayout { #field, offsetof(Record, field), sizeof(Record::field) }

#define TQ_RECORD(type, ...)                                   \
  [] {                                                         \
    using Record = type;                                       \
    return RecordLayout{#type, sizeof(Record), {__VA_ARGS__}}; \
  }()

#define TQ_FLAG_OPTION(type) TQ_RECORD(type, TQ_FIELD(flag))
#define TQ_FIELDS_OPTION(type) TQ_RECORD(type, TQ_FIELD(fields), TQ_FIELD(field_count), TQ_FIELD(flag))
#define TQ_ARRAY_RESULT(type) TQ_RECORD(type, TQ_FIELD(value_array), TQ_FIELD(count), TQ_FIELD(error_code))
#define TQ_NUMBER_RESULT(type, field) TQ_RECORD(type, TQ_FIELD(field), TQ_FIELD(error_code))

namespace recorder {

const std::vector<RecordLayout>& Layouts() {
  static const std::vector<RecordLayout> layouts = {
      TQ_FLAG_OPTION(tq_mom_set_op_t),
      TQ_FLAG_OPTION(tq_mom_get_op_t),
      TQ_FLAG_OPTION(tq_mom_hget_op_t),
      TQ_FIELDS_OPTION(tq_mom_hmset_op_t),
      TQ_FIELDS_OPTION(tq_mom_hmsetnx_op_t),
      TQ_FIELDS_OPTION(tq_mom_hmupdate_op_t),
      TQ_FLAG_OPTION(tq_mom_del_op_t),
      TQ_FLAG_OPTION(tq_mom_exist_op_t),
      TQ_FLAG_OPTION(tq_mom_publish_op_t),
      TQ_RECORD(tq_mom_psetex_op_t, TQ_FIELD(flag), TQ_FIELD(milseconds)),
      TQ_FLAG_OPTION(tq_mom_sadd_op_t),
      TQ_FLAG_OPTION(tq_mom_srem_op_t),
      TQ_FLAG_OPTION(tq_mom_sismember_op_t),
      TQ_FLAG_OPTION(tq_mom_scard_op_t),
      TQ_FLAG_OPTION(tq_mom_smembers_op_t),
      TQ_FLAG_OPTION(tq_mom_lpush_op_t),
      TQ_FLAG_OPTION(tq_mom_rpush_op_t),
      TQ_FLAG_OPTION(tq_mom_lpop_op_t),
      TQ_FLAG_OPTION(tq_mom_rpop_op_t),
      TQ_FLAG_OPTION(tq_mom_linsert_op_t),
      TQ_FLAG_OPTION(tq_mom_llen_op_t),
      TQ_FLAG_OPTION(tq_mom_lrange_op_t),
      TQ_FLAG_OPTION(tq_mom_lrem_op_t),
      TQ_FLAG_OPTION(tq_mom_lset_op_t),
      TQ_FLAG_OPTION(tq_mom_zadd_op_t),
      TQ_FLAG_OPTION(tq_mom_zcard_op_t),
      TQ_FLAG_OPTION(tq_mom_zcount_op_t),
      TQ_FLAG_OPTION(tq_mom_zrange_op_t),
      TQ_FLAG_OPTION(tq_mom_zrangebyscore_op_t),
      TQ_FLAG_OPTION(tq_mom_zrangebyscorelimit_op_t),
      TQ_FLAG_OPTION(tq_mom_zrank_op_t),
      TQ_FLAG_OPTION(tq_mom_zrem_op_t),
      TQ_FLAG_OPTION(tq_mom_zremrangebyrank_op_t),
      TQ_FLAG_OPTION(tq_mom_zremrangebyscore_op_t),
      TQ_FLAG_OPTION(tq_mom_zscore_op_t),
      TQ_FLAG_OPTION(tq_mom_incr_op_t),
      TQ_RECORD(tq_mom_hash_res_t, TQ_FIELD(value), TQ_FIELD(field_tag), TQ_FIELD(field_tag_count),
                TQ_FIELD(field_change_tag), TQ_FIELD(field_change_tag_count), TQ_FIELD(error_code)),
      TQ_ARRAY_RESULT(tq_mom_set_res_t),
      TQ_ARRAY_RESULT(tq_mom_list_res_t),
      TQ_NUMBER_RESULT(tq_mom_get_res_t, value),
      TQ_NUMBER_RESULT(tq_mom_incr_res_t, value),
      TQ_NUMBER_RESULT(tq_mom_setnx_res_t, value),
      TQ_ARRAY_RESULT(tq_mom_smembers_res_t),
      TQ_NUMBER_RESULT(tq_mom_llen_res_t, len),
      TQ_ARRAY_RESULT(tq_mom_lrange_res_t),
      TQ_NUMBER_RESULT(tq_mom_linsert_res_t, len),
      TQ_NUMBER_RESULT(tq_mom_lminsert_res_t, len),
      TQ_NUMBER_RESULT(tq_mom_lmrem_res_t, len),
      TQ_RECORD(tq_mom_lset_res_t, TQ_FIELD(error_code)),
      TQ_RECORD(tq_mom_save_res_t, TQ_FIELD(error_code)),
      TQ_NUMBER_RESULT(tq_mom_zcard_res_t, len),
      TQ_NUMBER_RESULT(tq_mom_zrank_res_t, rank),
      TQ_RECORD(tq_mom_zscore_res_t, TQ_FIELD(score), TQ_FIELD(exist), TQ_FIELD(error_code)),
      TQ_NUMBER_RESULT(tq_mom_zcount_res_t, len),
      TQ_RECORD(tq_mom_zrange_res_t, TQ_FIELD(value), TQ_FIELD(score), TQ_FIELD(count), TQ_FIELD(error_code)),
      TQ_RECORD(tq_mom_zrangebyscore_res_t, TQ_FIELD(value), TQ_FIELD(score), TQ_FIELD(count), TQ_FIELD(error_code)),
      TQ_RECORD(tq_mom_sortedset_res_t, TQ_FIELD(value_array), TQ_FIELD(score), TQ_FIELD(count), TQ_FIELD(error_code)),
      TQ_NUMBER_RESULT(tq_mom_scard_res_t, len),
      TQ_NUMBER_RESULT(tq_mom_sismember_res_t, len),
      TQ_RECORD(tq_mom_pubsub_msg_t, TQ_FIELD(db), TQ_FIELD(key), TQ_FIELD(field), TQ_FIELD(cmd), TQ_FIELD(value),
                TQ_FIELD(length), TQ_FIELD(flag), TQ_FIELD(db_id), TQ_FIELD(cluster_id), TQ_FIELD(error)),
      TQ_RECORD(tq_mom_scan_all_msg_t, TQ_FIELD(vlen), TQ_FIELD(key), TQ_FIELD(value)),
      TQ_RECORD(tq_mom_congest_t, TQ_FIELD(topic), TQ_FIELD(remain_buffer), TQ_FIELD(remain_time)),
      TQ_RECORD(tq_global_t, TQ_FIELD(rmc), TQ_FIELD(master)),
      TQ_RECORD(tq_thread_master, TQ_FIELD(index), TQ_FIELD(timer), TQ_FIELD(readfd), TQ_FIELD(writefd),
                TQ_FIELD(max_fd), TQ_FIELD(pfds), TQ_FIELD(nfds), TQ_FIELD(pfds_size), TQ_FIELD(alloc), TQ_FIELD(debug),
                TQ_FIELD(flag), TQ_FIELD(tid), TQ_FIELD(t_recover), TQ_FIELD(vec_m), TQ_FIELD(vec_m_flag),
                TQ_FIELD(cur_thread), TQ_FIELD(debug_list)),
      TQ_RECORD(tq_thread, TQ_FIELD(next), TQ_FIELD(prev), TQ_FIELD(master), TQ_FIELD(func), TQ_FIELD(zg),
                TQ_FIELD(arg), TQ_FIELD(u), TQ_FIELD(pfd_index), TQ_FIELD(name)),
      TQ_RECORD(tq_thread_u, TQ_FIELD(val), TQ_FIELD(fd), TQ_FIELD(sands)),
  };
  return layouts;
}

}  // namespace recorder

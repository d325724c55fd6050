// Results of commands.
#pragma once

#include "records/records.h"

namespace tq_mom {

inline constexpr RecordClass kResults[] = {
    // clang-format off
    TQ_CLASS(tq_mom_hash_res_t,
        TQ_FIELD(value), TQ_ARRAY(field_tag, field_tag_count), TQ_ARRAY(field_change_tag, field_change_tag_count),
        TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_set_res_t, TQ_ARRAY(value_array, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_list_res_t, TQ_ARRAY(value_array, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_get_res_t, TQ_FIELD(value), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_incr_res_t, TQ_INT64(value), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_setnx_res_t, TQ_FIELD(value), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_smembers_res_t, TQ_ARRAY(value_array, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_llen_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_lrange_res_t, TQ_ARRAY(value_array, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_linsert_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_lminsert_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_lmrem_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_lset_res_t, TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_save_res_t, TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zcard_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zrank_res_t, TQ_FIELD(rank), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zscore_res_t, TQ_FIELD(score), TQ_FIELD(exist), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zcount_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zrange_res_t, TQ_ARRAY(value, count), TQ_ARRAY(score, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_zrangebyscore_res_t, TQ_ARRAY(value, count), TQ_ARRAY(score, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_sortedset_res_t, TQ_ARRAY(value_array, count), TQ_ARRAY(score, count), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_scard_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    TQ_CLASS(tq_mom_sismember_res_t, TQ_FIELD(len), TQ_FIELD(error_code)),
    // clang-format on
};

}  // namespace tq_mom

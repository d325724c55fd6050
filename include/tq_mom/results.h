/* Results: what a command hands back beside or instead of its status. The library allocates them, and everything that
 * they point to; the caller gives each back to its release function (see client.h). error_code is 0 on success, else a
 * status code. A count is the number of elements of the arrays declared before it. */
#ifndef TQ_MOM_RESULTS_H
#define TQ_MOM_RESULTS_H

#include <stddef.h>
#include <stdint.h>

/* A value object: the library's opaque holder of one key, value or element. */
typedef struct tq_obj tq_obj;

/* clang-format off */
/* value holds the hash's fields; field_tag lists the field numbers that are present, field_change_tag those that
 * changed since they were last read. */
typedef struct tq_mom_hash_res_s {
  tq_obj* value;
  size_t* field_tag;
  size_t field_tag_count;
  size_t* field_change_tag;
  size_t field_change_tag_count;
  int error_code;
} tq_mom_hash_res_t;
typedef struct tq_mom_set_res_s { tq_obj** value_array; size_t count; int error_code; } tq_mom_set_res_t;
typedef struct tq_mom_list_res_s { tq_obj** value_array; size_t count; int error_code; } tq_mom_list_res_t;
typedef struct tq_mom_get_res_s { tq_obj* value; int error_code; } tq_mom_get_res_t;
typedef struct tq_mom_incr_res_s { int64_t value; int error_code; } tq_mom_incr_res_t;
typedef struct tq_mom_setnx_res_s { int value; int error_code; } tq_mom_setnx_res_t;
typedef struct tq_mom_smembers_res_s { tq_obj** value_array; size_t count; int error_code; } tq_mom_smembers_res_t;
typedef struct tq_mom_llen_res_s { long long len; int error_code; } tq_mom_llen_res_t;
typedef struct tq_mom_lrange_res_s { tq_obj** value_array; size_t count; int error_code; } tq_mom_lrange_res_t;
typedef struct tq_mom_linsert_res_s { long long len; int error_code; } tq_mom_linsert_res_t;
typedef struct tq_mom_lminsert_res_s { size_t len; int error_code; } tq_mom_lminsert_res_t;
typedef struct tq_mom_lmrem_res_s { size_t len; int error_code; } tq_mom_lmrem_res_t;
typedef struct tq_mom_lset_res_s { int error_code; } tq_mom_lset_res_t;
typedef struct tq_mom_save_res_s { int error_code; } tq_mom_save_res_t;
typedef struct tq_mom_zcard_res_s { long long len; int error_code; } tq_mom_zcard_res_t;
typedef struct tq_mom_zrank_res_s { long long rank; int error_code; } tq_mom_zrank_res_t;
/* exist is nonzero when the member is in the sorted set. */
typedef struct tq_mom_zscore_res_s { double score; int exist; int error_code; } tq_mom_zscore_res_t;
typedef struct tq_mom_zcount_res_s { long long len; int error_code; } tq_mom_zcount_res_t;
/* value and score are parallel: element i of each belongs together. */
typedef struct tq_mom_zrange_res_s { tq_obj** value; double* score; size_t count; int error_code; } tq_mom_zrange_res_t;
typedef struct tq_mom_zrangebyscore_res_s {
  tq_obj** value; double* score; size_t count; int error_code;
} tq_mom_zrangebyscore_res_t;
typedef struct tq_mom_sortedset_res_s {
  tq_obj** value_array; double* score; size_t count; int error_code;
} tq_mom_sortedset_res_t;
typedef struct tq_mom_scard_res_s { long long len; int error_code; } tq_mom_scard_res_t;
/* len is nonzero when the member is in the set. */
typedef struct tq_mom_sismember_res_s { long long len; int error_code; } tq_mom_sismember_res_t;
/* clang-format on */

#endif

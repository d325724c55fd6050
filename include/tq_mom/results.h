/* Results: what a command hands back beside or instead of its status. The library allocates them, and everything that
 * they point to; the caller gives each back to its release function (see client.h). error_code is 0 on success, else a
 * status code. A count is the number of elements of the arrays declared before it. */
#ifndef TQ_MOM_RESULTS_H
#define TQ_MOM_RESULTS_H

#include <stddef.h>
#include <stdint.h>

/* A value object: the library's opaque holder of one key, value or element. */
typedef struct tq_obj tq_obj;

#define TQ_MOM_ARRAY_RESULT(name)    \
  typedef struct tq_mom_##name##_s { \
    tq_obj** value_array;            \
    size_t count;                    \
    int error_code;                  \
  } tq_mom_##name##_t

#define TQ_MOM_NUMBER_RESULT(name, type, member) \
  typedef struct tq_mom_##name##_s {             \
    type member;                                 \
    int error_code;                              \
  } tq_mom_##name##_t

#define TQ_MOM_STATUS_RESULT(name)   \
  typedef struct tq_mom_##name##_s { \
    int error_code;                  \
  } tq_mom_##name##_t

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

TQ_MOM_ARRAY_RESULT(set_res);
TQ_MOM_ARRAY_RESULT(list_res);
TQ_MOM_NUMBER_RESULT(get_res, tq_obj*, value);
TQ_MOM_NUMBER_RESULT(incr_res, int64_t, value);
TQ_MOM_NUMBER_RESULT(setnx_res, int, value);
TQ_MOM_ARRAY_RESULT(smembers_res);
TQ_MOM_NUMBER_RESULT(llen_res, long long, len);
TQ_MOM_ARRAY_RESULT(lrange_res);
TQ_MOM_NUMBER_RESULT(linsert_res, long long, len);
TQ_MOM_NUMBER_RESULT(lminsert_res, size_t, len);
TQ_MOM_NUMBER_RESULT(lmrem_res, size_t, len);
TQ_MOM_STATUS_RESULT(lset_res);
TQ_MOM_STATUS_RESULT(save_res);
TQ_MOM_NUMBER_RESULT(zcard_res, long long, len);
TQ_MOM_NUMBER_RESULT(zrank_res, long long, rank);

/* exist is nonzero when the member is in the sorted set. */
typedef struct tq_mom_zscore_res_s {
  double score;
  int exist;
  int error_code;
} tq_mom_zscore_res_t;

TQ_MOM_NUMBER_RESULT(zcount_res, long long, len);

/* value and score are parallel: element i of each belongs together. */
typedef struct tq_mom_zrange_res_s {
  tq_obj** value;
  double* score;
  size_t count;
  int error_code;
} tq_mom_zrange_res_t;

typedef struct tq_mom_zrangebyscore_res_s {
  tq_obj** value;
  double* score;
  size_t count;
  int error_code;
} tq_mom_zrangebyscore_res_t;

typedef struct tq_mom_sortedset_res_s {
  tq_obj** value_array;
  double* score;
  size_t count;
  int error_code;
} tq_mom_sortedset_res_t;

TQ_MOM_NUMBER_RESULT(scard_res, long long, len);

/* len is nonzero when the member is in the set. */
TQ_MOM_NUMBER_RESULT(sismember_res, long long, len);

#undef TQ_MOM_ARRAY_RESULT
#undef TQ_MOM_NUMBER_RESULT
#undef TQ_MOM_STATUS_RESULT

#endif

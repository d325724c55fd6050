/* Request options: what the _ext form of a command takes beside its arguments. The meaning of the bits of flag is the
 * store's own; a null option pointer asks for the defaults. */
#ifndef TQ_MOM_OPTIONS_H
#define TQ_MOM_OPTIONS_H

#include <stdint.h>

/* fields points to field_count 32-bit field numbers (null when there are none), borrowed for the duration of the call.
 * milseconds is the expiry in milliseconds. */
/* clang-format off */
typedef struct tq_mom_set_op_s { int flag; } tq_mom_set_op_t;
typedef struct tq_mom_get_op_s { int flag; } tq_mom_get_op_t;
typedef struct tq_mom_hget_op_s { int flag; } tq_mom_hget_op_t;
typedef struct tq_mom_hmset_op_s { int32_t* fields; int32_t field_count; int flag; } tq_mom_hmset_op_t;
typedef struct tq_mom_hmsetnx_op_s { int32_t* fields; int32_t field_count; int flag; } tq_mom_hmsetnx_op_t;
typedef struct tq_mom_hmupdate_op_s { int32_t* fields; int32_t field_count; int flag; } tq_mom_hmupdate_op_t;
typedef struct tq_mom_del_op_s { int flag; } tq_mom_del_op_t;
typedef struct tq_mom_exist_op_s { int flag; } tq_mom_exist_op_t;
typedef struct tq_mom_publish_op_s { int flag; } tq_mom_publish_op_t;
typedef struct tq_mom_psetex_op_s { int flag; int milseconds; } tq_mom_psetex_op_t;
typedef struct tq_mom_sadd_op_s { int flag; } tq_mom_sadd_op_t;
typedef struct tq_mom_srem_op_s { int flag; } tq_mom_srem_op_t;
typedef struct tq_mom_sismember_op_s { int flag; } tq_mom_sismember_op_t;
typedef struct tq_mom_scard_op_s { int flag; } tq_mom_scard_op_t;
typedef struct tq_mom_smembers_op_s { int flag; } tq_mom_smembers_op_t;
typedef struct tq_mom_lpush_op_s { int flag; } tq_mom_lpush_op_t;
typedef struct tq_mom_rpush_op_s { int flag; } tq_mom_rpush_op_t;
typedef struct tq_mom_lpop_op_s { int flag; } tq_mom_lpop_op_t;
typedef struct tq_mom_rpop_op_s { int flag; } tq_mom_rpop_op_t;
typedef struct tq_mom_linsert_op_s { int flag; } tq_mom_linsert_op_t;
typedef struct tq_mom_llen_op_s { int flag; } tq_mom_llen_op_t;
typedef struct tq_mom_lrange_op_s { int flag; } tq_mom_lrange_op_t;
typedef struct tq_mom_lrem_op_s { int flag; } tq_mom_lrem_op_t;
typedef struct tq_mom_lset_op_s { int flag; } tq_mom_lset_op_t;
typedef struct tq_mom_zadd_op_s { int flag; } tq_mom_zadd_op_t;
typedef struct tq_mom_zcard_op_s { int flag; } tq_mom_zcard_op_t;
typedef struct tq_mom_zcount_op_s { int flag; } tq_mom_zcount_op_t;
typedef struct tq_mom_zrange_op_s { int flag; } tq_mom_zrange_op_t;
typedef struct tq_mom_zrangebyscore_op_s { int flag; } tq_mom_zrangebyscore_op_t;
typedef struct tq_mom_zrangebyscorelimit_op_s { int flag; } tq_mom_zrangebyscorelimit_op_t;
typedef struct tq_mom_zrank_op_s { int flag; } tq_mom_zrank_op_t;
typedef struct tq_mom_zrem_op_s { int flag; } tq_mom_zrem_op_t;
typedef struct tq_mom_zremrangebyrank_op_s { int flag; } tq_mom_zremrangebyrank_op_t;
typedef struct tq_mom_zremrangebyscore_op_s { int flag; } tq_mom_zremrangebyscore_op_t;
typedef struct tq_mom_zscore_op_s { int flag; } tq_mom_zscore_op_t;
typedef struct tq_mom_incr_op_s { int flag; } tq_mom_incr_op_t;
/* clang-format on */

#endif

/* Request options: what the _ext form of a command takes beside its arguments. The meaning of the bits of flag is the
 * store's own; a null option pointer asks for the defaults. */
#ifndef TQ_MOM_OPTIONS_H
#define TQ_MOM_OPTIONS_H

#include <stdint.h>

#define TQ_MOM_FLAG_OPTION(name)     \
  typedef struct tq_mom_##name##_s { \
    int flag;                        \
  } tq_mom_##name##_t

/* The hash writes carry their field list in the option record: fields points to field_count 32-bit field numbers (null
 * when there are none), borrowed for the duration of the call. */
#define TQ_MOM_FIELDS_OPTION(name)   \
  typedef struct tq_mom_##name##_s { \
    int32_t* fields;                 \
    int32_t field_count;             \
    int flag;                        \
  } tq_mom_##name##_t

TQ_MOM_FLAG_OPTION(set_op);
TQ_MOM_FLAG_OPTION(get_op);
TQ_MOM_FLAG_OPTION(hget_op);
TQ_MOM_FIELDS_OPTION(hmset_op);
TQ_MOM_FIELDS_OPTION(hmsetnx_op);
TQ_MOM_FIELDS_OPTION(hmupdate_op);
TQ_MOM_FLAG_OPTION(del_op);
TQ_MOM_FLAG_OPTION(exist_op);
TQ_MOM_FLAG_OPTION(publish_op);

/* milseconds: the expiry in milliseconds. */
typedef struct tq_mom_psetex_op_s {
  int flag;
  int milseconds;
} tq_mom_psetex_op_t;

TQ_MOM_FLAG_OPTION(sadd_op);
TQ_MOM_FLAG_OPTION(srem_op);
TQ_MOM_FLAG_OPTION(sismember_op);
TQ_MOM_FLAG_OPTION(scard_op);
TQ_MOM_FLAG_OPTION(smembers_op);
TQ_MOM_FLAG_OPTION(lpush_op);
TQ_MOM_FLAG_OPTION(rpush_op);
TQ_MOM_FLAG_OPTION(lpop_op);
TQ_MOM_FLAG_OPTION(rpop_op);
TQ_MOM_FLAG_OPTION(linsert_op);
TQ_MOM_FLAG_OPTION(llen_op);
TQ_MOM_FLAG_OPTION(lrange_op);
TQ_MOM_FLAG_OPTION(lrem_op);
TQ_MOM_FLAG_OPTION(lset_op);
TQ_MOM_FLAG_OPTION(zadd_op);
TQ_MOM_FLAG_OPTION(zcard_op);
TQ_MOM_FLAG_OPTION(zcount_op);
TQ_MOM_FLAG_OPTION(zrange_op);
TQ_MOM_FLAG_OPTION(zrangebyscore_op);
TQ_MOM_FLAG_OPTION(zrangebyscorelimit_op);
TQ_MOM_FLAG_OPTION(zrank_op);
TQ_MOM_FLAG_OPTION(zrem_op);
TQ_MOM_FLAG_OPTION(zremrangebyrank_op);
TQ_MOM_FLAG_OPTION(zremrangebyscore_op);
TQ_MOM_FLAG_OPTION(zscore_op);
TQ_MOM_FLAG_OPTION(incr_op);

#undef TQ_MOM_FLAG_OPTION
#undef TQ_MOM_FIELDS_OPTION

#endif

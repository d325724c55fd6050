/* Limits, database ids, command codes, batch flags and status codes of the data store. */
#ifndef TQ_MOM_CONSTANTS_H
#define TQ_MOM_CONSTANTS_H

/* Longest accepted texts, in bytes. */
#define TQ_MOM_KEY_MAX_LEN 512
#define TQ_MOM_CMD_MAX_LEN 32
#define TQ_MOM_FIELD_MAX_LEN 128

/* Status codes that the client functions return and that results carry in error_code. */
#define TQ_MOM_OK 0
#define TQ_MOM_ERR (-1)                /* failed for a reason without a code of its own */
#define TQ_MOM_INPUT_ERR (-2)          /* an argument is null, out of range or of the wrong kind */
#define TQ_MOM_MALLOC_ERR (-3)         /* out of memory */
#define TQ_MOM_NO_READY (-4)           /* not connected yet */
#define TQ_MOM_GLOBAL_DB_NO_WRITE (-5) /* the database is read-only from here */

/* Database ids. The spellings STADNALONE and TUNNER are the store's own. */
typedef enum {
  TQ_MOM_ASIC_DB = 0,
  TQ_MOM_TUNNER_DB = 1,
  TQ_MOM_TQMOMD_HOST = 2,
  TQ_MOM_LOCAL_DB = 3,
  TQ_MOM_APP_DB = 4,
  TQ_MOM_TQMOMD_CE_GLOBAL = 5,
  TQ_MOM_FWD_DB = 6,
  TQ_MOM_TQMOMD_CE_FWD_GLOBAL = 7,
  TQ_MOM_UDP_DB = 8,
  TQ_MOM_TQMOMD_DE_GLOBAL = 9,
  TQ_MOM_UDP_FWD_DB = 10,
  TQ_MOM_TQMOMD_DE_FWD_GLOBAL = 11,
  TQ_MOM_MONITOR_DB = 12,
  TQ_MOM_TQMOMD_MONITOR_GLOBAL = 13,
  TQ_MOM_TOPO_DB = 14,
  TQ_MOM_TQMOMD_DE_STADNALONE = 15,
  TQ_MOM_ASIC_FWD_DB = 16,
  TQ_MOM_TQMOMD_HOST_FWD = 17,
  TQ_MOM_APP_EXT_DB = 18,
  TQ_MOM_TQMOMD_MS_GLOBAL = 19,
  TQ_MOM_FWD_EXT_DB = 20,
  TQ_MOM_TQMOMD_MS_EXT_GLOBAL = 21,
  TQ_MOM_CFG_DB = 22,
  TQ_MOM_TQMOMD_CFG_GLOBAL = 23,
  TQ_MOM_CFG_CP_DB = 24,
  TQ_MOM_TQMOMD_CFG_CP = 25,
  TQ_MOM_IBC_DB = 26,
  TQ_MOM_TQMOMD_IBC_GLOBAL = 27,
  TQ_MOM_CAP_DB = 28,
  TQ_MOM_TQMOMD_CAP = 29,
  TQ_MOM_CFG_CAN_DB = 30,
  TQ_MOM_CGSTCTRL_DB = 31,
  TQ_MOM_DEBUG_DB = 32,
  TQ_MOM_DEV_DB = 33,
  TQ_MOM_CAP_CFG_LOAD_DB = 34,
  TQ_MOM_CFG_LOAD_DB = 35,
  TQ_MOM_MLAG_DB = 36,
  TQ_MOM_INNER_DB = 37
} tq_mom_db_type_t;

/* The operation that a notification tells of. */
typedef enum {
  TQ_MOM_SET = 1,
  TQ_MOM_GET = 2,
  TQ_MOM_DEL = 3,
  TQ_MOM_HSET = 4,
  TQ_MOM_HMGET = 5,
  TQ_MOM_HMUPDATE = 6,
  TQ_MOM_HDEL = 7,
  TQ_MOM_HGETALL = 8,
  TQ_MOM_PEXPIRE_FIELD = 9,
  TQ_MOM_LPUSH = 10,
  TQ_MOM_RPUSH = 11,
  TQ_MOM_RPOP = 12,
  TQ_MOM_LPOP = 13,
  TQ_MOM_LRANGE = 14,
  TQ_MOM_LLEN = 15,
  TQ_MOM_EXISTS = 16,
  TQ_MOM_PSETEX = 17,
  TQ_MOM_SADD = 18,
  TQ_MOM_SREM = 19,
  TQ_MOM_SISMEMBER = 20,
  TQ_MOM_SCARD = 21,
  TQ_MOM_SMEMBERS = 22,
  TQ_MOM_SPOP = 23,
  TQ_MOM_PUBLISH = 24,
  TQ_MOM_EXPIRE = 25,
  TQ_MOM_PEXPIRE = 26,
  TQ_MOM_EXPIRED = 27,
  TQ_MOM_UNSUBSCRIBE = 28,
  TQ_MOM_SUBSCRIBE = 29,
  TQ_MOM_SCAN = 30,
  TQ_MOM_SERVERPUSH = 31,
  TQ_MOM_INCR = 32,
  TQ_MOM_SETNX = 33,
  TQ_MOM_LINSERT = 34,
  TQ_MOM_LREM = 35,
  TQ_MOM_LSET = 36,
  TQ_MOM_SCAN_INDEX = 37,
  TQ_MOM_LMINSERT = 38,
  TQ_MOM_ZADD = 39,
  TQ_MOM_ZREM = 40,
  TQ_MOM_ZREMRANGEBYRANK = 41,
  TQ_MOM_ZREMRANGEBYSCORE = 42,
  TQ_MOM_ZCARD = 43,
  TQ_MOM_ZRANK = 44,
  TQ_MOM_ZSCORE = 45,
  TQ_MOM_ZCOUNT = 46,
  TQ_MOM_ZRANGE = 47,
  TQ_MOM_ZRANGEBYSCORE = 48,
  TQ_MOM_LMREM = 49
} tq_mom_cmd_t;

/* Marks the last message of a batch; 0 inside a batch. */
typedef enum {
  TQ_MOM_SCAN_OVER = 1,
  TQ_MOM_BATCHPEXPIRE_OVER = 2,
  TQ_MOM_BATCHPEXPIREDEL_OVER = 3,
  TQ_MOM_BATCHPEXPIREFIELD_OVER = 4,
  TQ_MOM_BATCHDEL_OVER = 5
} tq_mom_batch_over_flag_t;

#endif

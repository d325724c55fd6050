/* The names that a full module carries, for the baseline to fill its tables with. */
#ifndef TQ_MOM_BENCH_BASELINE_NAMES_H
#define TQ_MOM_BENCH_BASELINE_NAMES_H

#define TQ_BENCH_FUNCTIONS(X)     \
  X(tq_global_init)               \
  X(tq_global_finish)             \
  X(tq_global_get_master)         \
  X(tq_global_run)                \
  X(client_connect)               \
  X(client_connect_cluster)       \
  X(debug_show_all)               \
  X(bgsave)                       \
  X(get)                          \
  X(get_ext)                      \
  X(set)                          \
  X(set_ext)                      \
  X(setnx)                        \
  X(setnx_noreply)                \
  X(setnx_noreply_ext)            \
  X(psetex)                       \
  X(psetex_ext)                   \
  X(del)                          \
  X(del_ext)                      \
  X(exists)                       \
  X(exists_ext)                   \
  X(incr)                         \
  X(incr_ext)                     \
  X(pexpire)                      \
  X(pdel)                         \
  X(del_expire)                   \
  X(pexpire_field)                \
  X(pexpire_fields)               \
  X(get_res_free)                 \
  X(incr_res_free)                \
  X(tq_obj_free)                  \
  X(hmset)                        \
  X(hmset_ext)                    \
  X(hmsetnx)                      \
  X(hmsetnx_ext)                  \
  X(hmget)                        \
  X(hgetall)                      \
  X(hgetall_ext)                  \
  X(hash_res_free)                \
  X(lpush)                        \
  X(lpush_ext)                    \
  X(rpush)                        \
  X(rpush_ext)                    \
  X(lpop)                         \
  X(lpop_ext)                     \
  X(rpop)                         \
  X(rpop_ext)                     \
  X(llen)                         \
  X(llen_ext)                     \
  X(lrange)                       \
  X(lrange_ext)                   \
  X(linsert)                      \
  X(linsert_ext)                  \
  X(lset)                         \
  X(lset_ext)                     \
  X(lrem)                         \
  X(lrem_ext)                     \
  X(lrange_res_free)              \
  X(sadd)                         \
  X(sadd_ext)                     \
  X(srem)                         \
  X(srem_ext)                     \
  X(sismember)                    \
  X(sismember_ext)                \
  X(scard)                        \
  X(scard_ext)                    \
  X(smembers)                     \
  X(smembers_ext)                 \
  X(smembers_res_free)            \
  X(zadd)                         \
  X(zadd_ext)                     \
  X(zrem)                         \
  X(zrem_ext)                     \
  X(zcard)                        \
  X(zcard_ext)                    \
  X(zcount)                       \
  X(zcount_ext)                   \
  X(zrange)                       \
  X(zrange_ext)                   \
  X(zrangebyscore)                \
  X(zrangebyscore_ext)            \
  X(zrank)                        \
  X(zrank_ext)                    \
  X(zscore)                       \
  X(zscore_ext)                   \
  X(zremrangebyrank)              \
  X(zremrangebyrank_ext)          \
  X(zremrangebyscore)             \
  X(zremrangebyscore_ext)         \
  X(zrange_res_free)              \
  X(zrangebyscore_res_free)       \
  X(zscore_res_free)              \
  X(publish)                      \
  X(publish_ext)                  \
  X(scan)                         \
  X(convertPtrToHashRes)          \
  X(convertPtrToSetRes)           \
  X(convertPtrToListRes)          \
  X(convertPtrToSortedsetRes)     \
  X(convertPtrToGetRes)           \
  X(convertPtrToIncrRes)          \
  X(convertPtrToSetnxRes)         \
  X(convertPtrToSmembersRes)      \
  X(convertPtrToLlenRes)          \
  X(convertPtrToLrangeRes)        \
  X(convertPtrToLinsertRes)       \
  X(convertPtrToLminsertRes)      \
  X(convertPtrToLmremRes)         \
  X(convertPtrToLsetRes)          \
  X(convertPtrToSaveRes)          \
  X(convertPtrToZcardRes)         \
  X(convertPtrToZrankRes)         \
  X(convertPtrToZscoreRes)        \
  X(convertPtrToZcountRes)        \
  X(convertPtrToZrangeRes)        \
  X(convertPtrToZrangebyscoreRes) \
  X(convertPtrToScardRes)         \
  X(convertPtrToSismemberRes)     \
  X(convertPtrToScanAllMsg)

#define TQ_BENCH_CONSTANTS(X)      \
  X(TQ_MOM_KEY_MAX_LEN)            \
  X(TQ_MOM_CMD_MAX_LEN)            \
  X(TQ_MOM_FIELD_MAX_LEN)          \
  X(TQ_MOM_ASIC_DB)                \
  X(TQ_MOM_TUNNER_DB)              \
  X(TQ_MOM_TQMOMD_HOST)            \
  X(TQ_MOM_LOCAL_DB)               \
  X(TQ_MOM_APP_DB)                 \
  X(TQ_MOM_TQMOMD_CE_GLOBAL)       \
  X(TQ_MOM_FWD_DB)                 \
  X(TQ_MOM_TQMOMD_CE_FWD_GLOBAL)   \
  X(TQ_MOM_UDP_DB)                 \
  X(TQ_MOM_TQMOMD_DE_GLOBAL)       \
  X(TQ_MOM_UDP_FWD_DB)             \
  X(TQ_MOM_TQMOMD_DE_FWD_GLOBAL)   \
  X(TQ_MOM_MONITOR_DB)             \
  X(TQ_MOM_TQMOMD_MONITOR_GLOBAL)  \
  X(TQ_MOM_TOPO_DB)                \
  X(TQ_MOM_TQMOMD_DE_STADNALONE)   \
  X(TQ_MOM_ASIC_FWD_DB)            \
  X(TQ_MOM_TQMOMD_HOST_FWD)        \
  X(TQ_MOM_APP_EXT_DB)             \
  X(TQ_MOM_TQMOMD_MS_GLOBAL)       \
  X(TQ_MOM_FWD_EXT_DB)             \
  X(TQ_MOM_TQMOMD_MS_EXT_GLOBAL)   \
  X(TQ_MOM_CFG_DB)                 \
  X(TQ_MOM_TQMOMD_CFG_GLOBAL)      \
  X(TQ_MOM_CFG_CP_DB)              \
  X(TQ_MOM_TQMOMD_CFG_CP)          \
  X(TQ_MOM_IBC_DB)                 \
  X(TQ_MOM_TQMOMD_IBC_GLOBAL)      \
  X(TQ_MOM_CAP_DB)                 \
  X(TQ_MOM_TQMOMD_CAP)             \
  X(TQ_MOM_CFG_CAN_DB)             \
  X(TQ_MOM_CGSTCTRL_DB)            \
  X(TQ_MOM_DEBUG_DB)               \
  X(TQ_MOM_DEV_DB)                 \
  X(TQ_MOM_CAP_CFG_LOAD_DB)        \
  X(TQ_MOM_CFG_LOAD_DB)            \
  X(TQ_MOM_MLAG_DB)                \
  X(TQ_MOM_INNER_DB)               \
  X(TQ_MOM_SET)                    \
  X(TQ_MOM_GET)                    \
  X(TQ_MOM_DEL)                    \
  X(TQ_MOM_HSET)                   \
  X(TQ_MOM_HMGET)                  \
  X(TQ_MOM_HMUPDATE)               \
  X(TQ_MOM_HDEL)                   \
  X(TQ_MOM_HGETALL)                \
  X(TQ_MOM_PEXPIRE_FIELD)          \
  X(TQ_MOM_LPUSH)                  \
  X(TQ_MOM_RPUSH)                  \
  X(TQ_MOM_RPOP)                   \
  X(TQ_MOM_LPOP)                   \
  X(TQ_MOM_LRANGE)                 \
  X(TQ_MOM_LLEN)                   \
  X(TQ_MOM_EXISTS)                 \
  X(TQ_MOM_PSETEX)                 \
  X(TQ_MOM_SADD)                   \
  X(TQ_MOM_SREM)                   \
  X(TQ_MOM_SISMEMBER)              \
  X(TQ_MOM_SCARD)                  \
  X(TQ_MOM_SMEMBERS)               \
  X(TQ_MOM_SPOP)                   \
  X(TQ_MOM_PUBLISH)                \
  X(TQ_MOM_EXPIRE)                 \
  X(TQ_MOM_PEXPIRE)                \
  X(TQ_MOM_EXPIRED)                \
  X(TQ_MOM_UNSUBSCRIBE)            \
  X(TQ_MOM_SUBSCRIBE)              \
  X(TQ_MOM_SCAN)                   \
  X(TQ_MOM_SERVERPUSH)             \
  X(TQ_MOM_INCR)                   \
  X(TQ_MOM_SETNX)                  \
  X(TQ_MOM_LINSERT)                \
  X(TQ_MOM_LREM)                   \
  X(TQ_MOM_LSET)                   \
  X(TQ_MOM_SCAN_INDEX)             \
  X(TQ_MOM_LMINSERT)               \
  X(TQ_MOM_ZADD)                   \
  X(TQ_MOM_ZREM)                   \
  X(TQ_MOM_ZREMRANGEBYRANK)        \
  X(TQ_MOM_ZREMRANGEBYSCORE)       \
  X(TQ_MOM_ZCARD)                  \
  X(TQ_MOM_ZRANK)                  \
  X(TQ_MOM_ZSCORE)                 \
  X(TQ_MOM_ZCOUNT)                 \
  X(TQ_MOM_ZRANGE)                 \
  X(TQ_MOM_ZRANGEBYSCORE)          \
  X(TQ_MOM_LMREM)                  \
  X(TQ_MOM_SCAN_OVER)              \
  X(TQ_MOM_BATCHPEXPIRE_OVER)      \
  X(TQ_MOM_BATCHPEXPIREDEL_OVER)   \
  X(TQ_MOM_BATCHPEXPIREFIELD_OVER) \
  X(TQ_MOM_BATCHDEL_OVER)

/* Static constants: class, name. */
#define TQ_BENCH_STATICS(X)                           \
  X(tq_thread_master, TQ_THREAD_TIMER_SLOT)           \
  X(tq_thread_master, TQ_THREAD_DEBUG_INTERFACE_FLAG) \
  X(tq_thread_master, TQ_THREAD_DEBUG_PROCEDURE_FLAG) \
  X(tq_thread_master, TQ_THREAD_DEBUG_EXEC_TIME_FLAG) \
  X(tq_thread_master, TQ_THREAD_IS_FIRST_FETCH)       \
  X(tq_thread_master, TQ_THREAD_USE_POLL)             \
  X(tq_thread, TQ_THREAD_PRIORITY_HIGH)               \
  X(tq_thread, TQ_THREAD_PRIORITY_MIDDLE)             \
  X(tq_thread, TQ_THREAD_PRIORITY_LOW)                \
  X(tq_thread, TQ_THREAD_FLAG_CRT_BY_USR)             \
  X(tq_thread, TQ_THREAD_FLAG_IN_LIST)

/* Classes: Lua name, keyword and name of the native type, fields. */
#define TQ_BENCH_CLASSES(X)                                                                                            \
  X(set_op_t, struct, tq_mom_set_op_s, "flag")                                                                         \
  X(get_op_t, struct, tq_mom_get_op_s, "flag")                                                                         \
  X(hget_op_t, struct, tq_mom_hget_op_s, "flag")                                                                       \
  X(hmset_op_t, struct, tq_mom_hmset_op_s, "flag")                                                                     \
  X(hmsetnx_op_t, struct, tq_mom_hmsetnx_op_s, "flag")                                                                 \
  X(hmupdate_op_t, struct, tq_mom_hmupdate_op_s, "flag")                                                               \
  X(del_op_t, struct, tq_mom_del_op_s, "flag")                                                                         \
  X(exist_op_t, struct, tq_mom_exist_op_s, "flag")                                                                     \
  X(publish_op_t, struct, tq_mom_publish_op_s, "flag")                                                                 \
  X(psetex_op_t, struct, tq_mom_psetex_op_s, "flag", "milseconds")                                                     \
  X(sadd_op_t, struct, tq_mom_sadd_op_s, "flag")                                                                       \
  X(srem_op_t, struct, tq_mom_srem_op_s, "flag")                                                                       \
  X(sismember_op_t, struct, tq_mom_sismember_op_s, "flag")                                                             \
  X(scard_op_t, struct, tq_mom_scard_op_s, "flag")                                                                     \
  X(smembers_op_t, struct, tq_mom_smembers_op_s, "flag")                                                               \
  X(lpush_op_t, struct, tq_mom_lpush_op_s, "flag")                                                                     \
  X(rpush_op_t, struct, tq_mom_rpush_op_s, "flag")                                                                     \
  X(lpop_op_t, struct, tq_mom_lpop_op_s, "flag")                                                                       \
  X(rpop_op_t, struct, tq_mom_rpop_op_s, "flag")                                                                       \
  X(linsert_op_t, struct, tq_mom_linsert_op_s, "flag")                                                                 \
  X(llen_op_t, struct, tq_mom_llen_op_s, "flag")                                                                       \
  X(lrange_op_t, struct, tq_mom_lrange_op_s, "flag")                                                                   \
  X(lrem_op_t, struct, tq_mom_lrem_op_s, "flag")                                                                       \
  X(lset_op_t, struct, tq_mom_lset_op_s, "flag")                                                                       \
  X(zadd_op_t, struct, tq_mom_zadd_op_s, "flag")                                                                       \
  X(zcard_op_t, struct, tq_mom_zcard_op_s, "flag")                                                                     \
  X(zcount_op_t, struct, tq_mom_zcount_op_s, "flag")                                                                   \
  X(zrange_op_t, struct, tq_mom_zrange_op_s, "flag")                                                                   \
  X(zrangebyscore_op_t, struct, tq_mom_zrangebyscore_op_s, "flag")                                                     \
  X(zrangebyscorelimit_op_t, struct, tq_mom_zrangebyscorelimit_op_s, "flag")                                           \
  X(zrank_op_t, struct, tq_mom_zrank_op_s, "flag")                                                                     \
  X(zrem_op_t, struct, tq_mom_zrem_op_s, "flag")                                                                       \
  X(zremrangebyrank_op_t, struct, tq_mom_zremrangebyrank_op_s, "flag")                                                 \
  X(zremrangebyscore_op_t, struct, tq_mom_zremrangebyscore_op_s, "flag")                                               \
  X(zscore_op_t, struct, tq_mom_zscore_op_s, "flag")                                                                   \
  X(incr_op_t, struct, tq_mom_incr_op_s, "flag")                                                                       \
  X(tq_mom_hash_res_t, struct, tq_mom_hash_res_s, "value", "field_tag", "field_change_tag", "error_code")              \
  X(tq_mom_set_res_t, struct, tq_mom_set_res_s, "value_array", "error_code")                                           \
  X(tq_mom_list_res_t, struct, tq_mom_list_res_s, "value_array", "error_code")                                         \
  X(tq_mom_get_res_t, struct, tq_mom_get_res_s, "value", "error_code")                                                 \
  X(tq_mom_incr_res_t, struct, tq_mom_incr_res_s, "value", "error_code")                                               \
  X(tq_mom_setnx_res_t, struct, tq_mom_setnx_res_s, "value", "error_code")                                             \
  X(tq_mom_smembers_res_t, struct, tq_mom_smembers_res_s, "value_array", "error_code")                                 \
  X(tq_mom_llen_res_t, struct, tq_mom_llen_res_s, "len", "error_code")                                                 \
  X(tq_mom_lrange_res_t, struct, tq_mom_lrange_res_s, "value_array", "error_code")                                     \
  X(tq_mom_linsert_res_t, struct, tq_mom_linsert_res_s, "len", "error_code")                                           \
  X(tq_mom_lminsert_res_t, struct, tq_mom_lminsert_res_s, "len", "error_code")                                         \
  X(tq_mom_lmrem_res_t, struct, tq_mom_lmrem_res_s, "len", "error_code")                                               \
  X(tq_mom_lset_res_t, struct, tq_mom_lset_res_s, "error_code")                                                        \
  X(tq_mom_save_res_t, struct, tq_mom_save_res_s, "error_code")                                                        \
  X(tq_mom_zcard_res_t, struct, tq_mom_zcard_res_s, "len", "error_code")                                               \
  X(tq_mom_zrank_res_t, struct, tq_mom_zrank_res_s, "rank", "error_code")                                              \
  X(tq_mom_zscore_res_t, struct, tq_mom_zscore_res_s, "score", "exist", "error_code")                                  \
  X(tq_mom_zcount_res_t, struct, tq_mom_zcount_res_s, "len", "error_code")                                             \
  X(tq_mom_zrange_res_t, struct, tq_mom_zrange_res_s, "value", "score", "error_code")                                  \
  X(tq_mom_zrangebyscore_res_t, struct, tq_mom_zrangebyscore_res_s, "value", "score", "error_code")                    \
  X(tq_mom_sortedset_res_t, struct, tq_mom_sortedset_res_s, "value_array", "score", "error_code")                      \
  X(tq_mom_scard_res_t, struct, tq_mom_scard_res_s, "len", "error_code")                                               \
  X(tq_mom_sismember_res_t, struct, tq_mom_sismember_res_s, "len", "error_code")                                       \
  X(tq_mom_pubsub_msg_t, struct, tq_mom_pubsub_msg_s, "db", "key", "field", "cmd", "value", "length", "flag", "db_id", \
    "cluster_id", "error")                                                                                             \
  X(tq_mom_scan_all_msg_t, struct, tq_mom_scan_all_msg_s, "vlen", "key", "value")                                      \
  X(tq_mom_congest_t, struct, tq_mom_congest_s, "topic", "remain_buffer", "remain_time")                               \
  X(tq_global_t, struct, tq_global_s, "rmc", "master")                                                                 \
  X(tq_thread_master, struct, tq_thread_master, "index", "timer", "readfd", "writefd", "max_fd", "pfds", "nfds",       \
    "pfds_size", "alloc", "debug", "flag", "tid", "t_recover", "vec_m", "vec_m_flag", "cur_thread", "debug_list")      \
  X(tq_thread, struct, tq_thread, "next", "prev", "master", "func", "zg", "arg", "u", "pfd_index", "name")             \
  X(tq_thread_u, , tq_thread_u, "val", "fd", "sands")

#endif

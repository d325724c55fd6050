/* The client functions. All are synchronous: they return when the store has answered. None may be called from two
 * threads at once on one global record.
 *
 * g is the runtime made by tq_global_init; db a database id (tq_mom_db_type_t); key a value object that names the key
 * and carries what the command needs of it; op an option record or null for the defaults. Pointers are borrowed for the
 * duration of the call.
 *
 * An int result is a status code (constants.h), 0 or negative, or where a comment says so a number, which is then not
 * negative on success. The host kit returns those numbers; a store may return a plain status for a write instead.
 *
 * A record or object that a function returns is the caller's to release with the function named for it; null means
 * failure. */
#ifndef TQ_MOM_CLIENT_H
#define TQ_MOM_CLIENT_H

#include <stddef.h>
#include <stdint.h>
#include <sys/time.h>
#include <tq_mom/messages.h>
#include <tq_mom/options.h>
#include <tq_mom/results.h>
#include <tq_mom/runtime.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Makes a runtime under the given name; both arguments may be null. It lives until tq_global_finish. */
tq_global_t* tq_global_init(const char* name, tq_global_t* g);
int tq_global_finish(tq_global_t* g);
/* The runtime's event-loop master, which stays the library's; null without a runtime. */
struct tq_thread_master* tq_global_get_master(tq_global_t* g);
/* Runs the event loop and returns when it ends. */
int tq_global_run(tq_global_t* g);
/* n is the store's own number, here and in bgsave: the host kit ignores it. */
int tq_mom_client_connect_sync(tq_global_t* g, int n);
int tq_mom_client_connect_cluster_sync(tq_global_t* g, int n);
/* Prints the library's state to stdout. */
int tq_mom_debug_show_all(tq_global_t* g);
/* Saves the store. */
int tq_mom_bgsave_sync(tq_global_t* g, int n);

/* Keys and strings. get always writes *error_code; its object is released with tq_mom_tq_obj_free. */
tq_obj* tq_mom_get_sync(tq_global_t* g, int db, tq_obj* key, int* error_code);
tq_mom_get_res_t* tq_mom_get_ext_sync(tq_global_t* g, int db, tq_mom_get_op_t* op, tq_obj* key);
int tq_mom_set_sync(tq_global_t* g, int db, tq_obj* key);
int tq_mom_set_ext_sync(tq_global_t* g, int db, tq_mom_set_op_t* op, tq_obj* key);
/* 1 stored, 0 the key exists. The noreply forms return a status only. */
int tq_mom_setnx_sync(tq_global_t* g, int db, tq_obj* key);
int tq_mom_setnx_noreply_sync(tq_global_t* g, int db, tq_obj* key);
int tq_mom_setnx_noreply_ext_sync(tq_global_t* g, int db, tq_mom_set_op_t* op, tq_obj* key);
int tq_mom_psetex_sync(tq_global_t* g, int db, tq_obj* key, int milliseconds);
int tq_mom_psetex_ext_sync(tq_global_t* g, int db, tq_mom_psetex_op_t* op, tq_obj* key);
/* 1 deleted, 0 no such key. */
int tq_mom_del_sync(tq_global_t* g, int db, tq_obj* key);
int tq_mom_del_ext_sync(tq_global_t* g, int db, tq_mom_del_op_t* op, tq_obj* key);
/* 1 or 0. */
int tq_mom_exists_sync(tq_global_t* g, int db, tq_obj* key);
int tq_mom_exists_ext_sync(tq_global_t* g, int db, tq_mom_exist_op_t* op, tq_obj* key);
/* Adds 1 to a decimal number. */
tq_mom_incr_res_t* tq_mom_incr_sync(tq_global_t* g, int db, tq_obj* key);
tq_mom_incr_res_t* tq_mom_incr_ext_sync(tq_global_t* g, int db, tq_mom_incr_op_t* op, tq_obj* key);

/* Expiry. time is in milliseconds; timeout bounds how long the call may take. The results are how many keys or fields
 * got an expiry or lost one. */
int tq_mom_pexpire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, struct timeval timeout);
int tq_mom_pdel_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time);
/* Takes away an expiry that is due within time, any for 0. n is the store's own number. */
int tq_mom_del_expire_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int n);
int tq_mom_pexpire_field_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, size_t field,
                              struct timeval timeout);
int tq_mom_pexpire_fields_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time, int32_t* fields, int field_count,
                               struct timeval timeout);

int tq_mom_get_res_free(tq_mom_get_res_t* result);
int tq_mom_incr_res_free(tq_mom_incr_res_t* result);
int tq_mom_tq_obj_free(tq_obj* object);

/* Hashes. fields holds field_count field numbers, null when there are none; an element count is an int everywhere. */
int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count);
int tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key);
/* Writes the fields that the hash does not have; how many those were. */
int tq_mom_hmsetnx_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count);
int tq_mom_hmsetnx_ext_sync(tq_global_t* g, int db, tq_mom_hmsetnx_op_t* op, tq_obj* key);
tq_mom_hash_res_t* tq_mom_hmget_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count);
tq_mom_hash_res_t* tq_mom_hgetall_sync(tq_global_t* g, int db, tq_obj* key);
tq_mom_hash_res_t* tq_mom_hgetall_ext_sync(tq_global_t* g, int db, tq_mom_hget_op_t* op, tq_obj* key);
int tq_mom_hash_res_free(tq_mom_hash_res_t* result);

/* Lists. Positions count from 0, negative ones from the end, -1 being the last. The pushes and linsert return the new
 * length. The pops always write *out, the length that is left; their object is released with tq_mom_tq_obj_free. */
int tq_mom_lpush_sync(tq_global_t* g, int db, void* key);
int tq_mom_lpush_ext_sync(tq_global_t* g, int db, tq_mom_lpush_op_t* op, void* key);
int tq_mom_rpush_sync(tq_global_t* g, int db, void* key);
int tq_mom_rpush_ext_sync(tq_global_t* g, int db, tq_mom_rpush_op_t* op, void* key);
tq_obj* tq_mom_lpop_sync(tq_global_t* g, int db, void* key, int* out);
tq_obj* tq_mom_lpop_ext_sync(tq_global_t* g, int db, tq_mom_lpop_op_t* op, void* key, int* out);
tq_obj* tq_mom_rpop_sync(tq_global_t* g, int db, void* key, int* out);
tq_obj* tq_mom_rpop_ext_sync(tq_global_t* g, int db, tq_mom_rpop_op_t* op, void* key, int* out);
int tq_mom_llen_sync(tq_global_t* g, int db, void* key);
int tq_mom_llen_ext_sync(tq_global_t* g, int db, tq_mom_llen_op_t* op, void* key);
tq_mom_lrange_res_t* tq_mom_lrange_sync(tq_global_t* g, int db, void* key, int start, int stop);
tq_mom_lrange_res_t* tq_mom_lrange_ext_sync(tq_global_t* g, int db, tq_mom_lrange_op_t* op, void* key, int start,
                                            int stop);
/* Puts key's element beside the one that equals pivot's: before it when where is 0, behind it when where is 1. */
int tq_mom_linsert_sync(tq_global_t* g, int db, void* key, void* pivot, unsigned int where);
int tq_mom_linsert_ext_sync(tq_global_t* g, int db, tq_mom_linsert_op_t* op, void* key, void* pivot,
                            unsigned int where);
int tq_mom_lset_sync(tq_global_t* g, int db, void* key, int index);
int tq_mom_lset_ext_sync(tq_global_t* g, int db, tq_mom_lset_op_t* op, void* key, int index);
/* Removes elements that equal key's, from the head, at most count, all for 0; how many those were. */
int tq_mom_lrem_sync(tq_global_t* g, int db, void* key, size_t count);
int tq_mom_lrem_ext_sync(tq_global_t* g, int db, tq_mom_lrem_op_t* op, void* key, size_t count);
int tq_mom_lrange_res_free(tq_mom_lrange_res_t* result);

/* Sets. key carries the member. sadd, srem and sismember return 1 or 0, scard the number of members. */
int tq_mom_sadd_sync(tq_global_t* g, int db, void* key);
int tq_mom_sadd_ext_sync(tq_global_t* g, int db, tq_mom_sadd_op_t* op, void* key);
int tq_mom_srem_sync(tq_global_t* g, int db, void* key);
int tq_mom_srem_ext_sync(tq_global_t* g, int db, tq_mom_srem_op_t* op, void* key);
int tq_mom_sismember_sync(tq_global_t* g, int db, void* key);
int tq_mom_sismember_ext_sync(tq_global_t* g, int db, tq_mom_sismember_op_t* op, void* key);
int tq_mom_scard_sync(tq_global_t* g, int db, void* key);
int tq_mom_scard_ext_sync(tq_global_t* g, int db, tq_mom_scard_op_t* op, void* key);
tq_mom_smembers_res_t* tq_mom_smembers_sync(tq_global_t* g, int db, void* key);
tq_mom_smembers_res_t* tq_mom_smembers_ext_sync(tq_global_t* g, int db, tq_mom_smembers_op_t* op, void* key);
int tq_mom_smembers_res_free(tq_mom_smembers_res_t* result);

/* Sorted sets. scores[i] belongs to members[i], for i below count; both may be null when count is 0. The members name
 * the sorted set, so zadd and zrem take no separate key. Ranks count from the lowest score, 0, negative ones from the
 * highest, -1; bounds of scores are included. zadd returns how many members are new, zcard and zcount how many there
 * are, zrank the member's rank, zrem and the zremranges how many were removed. */
int tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, void** members, int count);
int tq_mom_zadd_ext_sync(tq_global_t* g, int db, tq_mom_zadd_op_t* op, double* scores, void** members, int count);
int tq_mom_zrem_sync(tq_global_t* g, int db, void** members, int count);
int tq_mom_zrem_ext_sync(tq_global_t* g, int db, tq_mom_zrem_op_t* op, void** members, int count);
int tq_mom_zcard_sync(tq_global_t* g, int db, void* key);
int tq_mom_zcard_ext_sync(tq_global_t* g, int db, tq_mom_zcard_op_t* op, void* key);
int tq_mom_zcount_sync(tq_global_t* g, int db, void* key, double min, double max);
int tq_mom_zcount_ext_sync(tq_global_t* g, int db, tq_mom_zcount_op_t* op, void* key, double min, double max);
tq_mom_zrange_res_t* tq_mom_zrange_sync(tq_global_t* g, int db, void* key, int start, int stop);
tq_mom_zrange_res_t* tq_mom_zrange_ext_sync(tq_global_t* g, int db, tq_mom_zrange_op_t* op, void* key, int start,
                                            int stop);
tq_mom_zrangebyscore_res_t* tq_mom_zrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max);
tq_mom_zrangebyscore_res_t* tq_mom_zrangebyscore_ext_sync(tq_global_t* g, int db, tq_mom_zrangebyscore_op_t* op,
                                                          void* key, double min, double max);
int tq_mom_zrank_sync(tq_global_t* g, int db, void* key);
int tq_mom_zrank_ext_sync(tq_global_t* g, int db, tq_mom_zrank_op_t* op, void* key);
tq_mom_zscore_res_t* tq_mom_zscore_sync(tq_global_t* g, int db, void* key);
tq_mom_zscore_res_t* tq_mom_zscore_ext_sync(tq_global_t* g, int db, tq_mom_zscore_op_t* op, void* key);
int tq_mom_zremrangebyrank_sync(tq_global_t* g, int db, void* key, int start, int stop);
int tq_mom_zremrangebyrank_ext_sync(tq_global_t* g, int db, tq_mom_zremrangebyrank_op_t* op, void* key, int start,
                                    int stop);
int tq_mom_zremrangebyscore_sync(tq_global_t* g, int db, void* key, double min, double max);
int tq_mom_zremrangebyscore_ext_sync(tq_global_t* g, int db, tq_mom_zremrangebyscore_op_t* op, void* key, double min,
                                     double max);
int tq_mom_zrange_res_free(tq_mom_zrange_res_t* result);
int tq_mom_zrangebyscore_res_free(tq_mom_zrangebyscore_res_t* result);
int tq_mom_zscore_res_free(tq_mom_zscore_res_t* result);

/* Publish, scan. publish returns how many subscribers got the message. */
int tq_mom_publish_sync(tq_global_t* g, int db, void* key);
int tq_mom_publish_ext_sync(tq_global_t* g, int db, tq_mom_publish_op_t* op, void* key);

/* Called once for each element, on the caller's thread, from inside the scan; a nonzero return stops the scan. message
 * is a tq_mom_scan_all_msg_t and valid only during the call. */
typedef int (*tq_mom_scan_cb)(tq_global_t* g, void* message, void* context);

/* Scans the keys of db that match key's pattern, at most count of them, all for 0; how many times the callback ran,
 * without one how many keys match. Neither callback (may be null) nor context is used after the function returns. */
int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context);

#ifdef __cplusplus
}
#endif

#endif

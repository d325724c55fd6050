// The module's 93 types: one row each, sorted by mangled name.
#ifndef TQ_RECORDS_TYPES_H
#define TQ_RECORDS_TYPES_H

#include <tq_mom/tq_mom.h>

#include <cstdint>

#include "binding/abi.h"

// PLAIN(name, readable name): the mangled name is _p_<name>. RECORD(structure, typedef, class): a record's type, with
// its Lua class. CLASS(name, readable name): the same for a record without a typedef of another name, which its class
// has.
// clang-format off
#define TQ_TYPES(PLAIN, RECORD, CLASS) \
  PLAIN(char, "char *") \
  PLAIN(double, "double *") \
  PLAIN(f_p_struct_tq_thread__int, "int (*)(struct tq_thread *)") \
  PLAIN(fd_set, "fd_set *") \
  PLAIN(int, "intptr_t *|int *|int_least32_t *|int_fast32_t *|int32_t *|int_fast16_t *") \
  PLAIN(long_long, "int_least64_t *|int_fast64_t *|int64_t *|long long *|intmax_t *") \
  PLAIN(p_tq_obj, "tq_obj **") \
  PLAIN(p_void, "void **") \
  PLAIN(pollfd, "struct pollfd *") \
  PLAIN(short, "short *|int_least16_t *|int16_t *") \
  PLAIN(signed_char, "signed char *|int_least8_t *|int_fast8_t *|int8_t *") \
  PLAIN(size_t, "size_t *") \
  PLAIN(timeval, "struct timeval *") \
  RECORD(tq_global_s, tq_global_t, tq_global_t) \
  PLAIN(tq_mom_batch_over_flag_t, "tq_mom_batch_over_flag_t *") \
  PLAIN(tq_mom_client_s, "struct tq_mom_client_s *") \
  PLAIN(tq_mom_cmd_t, "tq_mom_cmd_t *") \
  RECORD(tq_mom_congest_s, tq_mom_congest_t, tq_mom_congest_t) \
  PLAIN(tq_mom_db_type_t, "tq_mom_db_type_t *") \
  RECORD(tq_mom_del_op_s, tq_mom_del_op_t, del_op_t) \
  RECORD(tq_mom_exist_op_s, tq_mom_exist_op_t, exist_op_t) \
  RECORD(tq_mom_get_op_s, tq_mom_get_op_t, get_op_t) \
  RECORD(tq_mom_get_res_s, tq_mom_get_res_t, tq_mom_get_res_t) \
  RECORD(tq_mom_hash_res_s, tq_mom_hash_res_t, tq_mom_hash_res_t) \
  RECORD(tq_mom_hget_op_s, tq_mom_hget_op_t, hget_op_t) \
  RECORD(tq_mom_hmset_op_s, tq_mom_hmset_op_t, hmset_op_t) \
  RECORD(tq_mom_hmsetnx_op_s, tq_mom_hmsetnx_op_t, hmsetnx_op_t) \
  RECORD(tq_mom_hmupdate_op_s, tq_mom_hmupdate_op_t, hmupdate_op_t) \
  RECORD(tq_mom_incr_op_s, tq_mom_incr_op_t, incr_op_t) \
  RECORD(tq_mom_incr_res_s, tq_mom_incr_res_t, tq_mom_incr_res_t) \
  RECORD(tq_mom_linsert_op_s, tq_mom_linsert_op_t, linsert_op_t) \
  RECORD(tq_mom_linsert_res_s, tq_mom_linsert_res_t, tq_mom_linsert_res_t) \
  RECORD(tq_mom_list_res_s, tq_mom_list_res_t, tq_mom_list_res_t) \
  RECORD(tq_mom_llen_op_s, tq_mom_llen_op_t, llen_op_t) \
  RECORD(tq_mom_llen_res_s, tq_mom_llen_res_t, tq_mom_llen_res_t) \
  RECORD(tq_mom_lminsert_res_s, tq_mom_lminsert_res_t, tq_mom_lminsert_res_t) \
  RECORD(tq_mom_lmrem_res_s, tq_mom_lmrem_res_t, tq_mom_lmrem_res_t) \
  RECORD(tq_mom_lpop_op_s, tq_mom_lpop_op_t, lpop_op_t) \
  RECORD(tq_mom_lpush_op_s, tq_mom_lpush_op_t, lpush_op_t) \
  RECORD(tq_mom_lrange_op_s, tq_mom_lrange_op_t, lrange_op_t) \
  RECORD(tq_mom_lrange_res_s, tq_mom_lrange_res_t, tq_mom_lrange_res_t) \
  RECORD(tq_mom_lrem_op_s, tq_mom_lrem_op_t, lrem_op_t) \
  RECORD(tq_mom_lset_op_s, tq_mom_lset_op_t, lset_op_t) \
  RECORD(tq_mom_lset_res_s, tq_mom_lset_res_t, tq_mom_lset_res_t) \
  RECORD(tq_mom_psetex_op_s, tq_mom_psetex_op_t, psetex_op_t) \
  RECORD(tq_mom_publish_op_s, tq_mom_publish_op_t, publish_op_t) \
  RECORD(tq_mom_pubsub_msg_s, tq_mom_pubsub_msg_t, tq_mom_pubsub_msg_t) \
  RECORD(tq_mom_rpop_op_s, tq_mom_rpop_op_t, rpop_op_t) \
  RECORD(tq_mom_rpush_op_s, tq_mom_rpush_op_t, rpush_op_t) \
  RECORD(tq_mom_sadd_op_s, tq_mom_sadd_op_t, sadd_op_t) \
  RECORD(tq_mom_save_res_s, tq_mom_save_res_t, tq_mom_save_res_t) \
  RECORD(tq_mom_scan_all_msg_s, tq_mom_scan_all_msg_t, tq_mom_scan_all_msg_t) \
  RECORD(tq_mom_scard_op_s, tq_mom_scard_op_t, scard_op_t) \
  RECORD(tq_mom_scard_res_s, tq_mom_scard_res_t, tq_mom_scard_res_t) \
  RECORD(tq_mom_set_op_s, tq_mom_set_op_t, set_op_t) \
  RECORD(tq_mom_set_res_s, tq_mom_set_res_t, tq_mom_set_res_t) \
  RECORD(tq_mom_setnx_res_s, tq_mom_setnx_res_t, tq_mom_setnx_res_t) \
  RECORD(tq_mom_sismember_op_s, tq_mom_sismember_op_t, sismember_op_t) \
  RECORD(tq_mom_sismember_res_s, tq_mom_sismember_res_t, tq_mom_sismember_res_t) \
  RECORD(tq_mom_smembers_op_s, tq_mom_smembers_op_t, smembers_op_t) \
  RECORD(tq_mom_smembers_res_s, tq_mom_smembers_res_t, tq_mom_smembers_res_t) \
  RECORD(tq_mom_sortedset_res_s, tq_mom_sortedset_res_t, tq_mom_sortedset_res_t) \
  RECORD(tq_mom_srem_op_s, tq_mom_srem_op_t, srem_op_t) \
  RECORD(tq_mom_zadd_op_s, tq_mom_zadd_op_t, zadd_op_t) \
  RECORD(tq_mom_zcard_op_s, tq_mom_zcard_op_t, zcard_op_t) \
  RECORD(tq_mom_zcard_res_s, tq_mom_zcard_res_t, tq_mom_zcard_res_t) \
  RECORD(tq_mom_zcount_op_s, tq_mom_zcount_op_t, zcount_op_t) \
  RECORD(tq_mom_zcount_res_s, tq_mom_zcount_res_t, tq_mom_zcount_res_t) \
  RECORD(tq_mom_zrange_op_s, tq_mom_zrange_op_t, zrange_op_t) \
  RECORD(tq_mom_zrange_res_s, tq_mom_zrange_res_t, tq_mom_zrange_res_t) \
  RECORD(tq_mom_zrangebyscore_op_s, tq_mom_zrangebyscore_op_t, zrangebyscore_op_t) \
  RECORD(tq_mom_zrangebyscore_res_s, tq_mom_zrangebyscore_res_t, tq_mom_zrangebyscore_res_t) \
  RECORD(tq_mom_zrangebyscorelimit_op_s, tq_mom_zrangebyscorelimit_op_t, zrangebyscorelimit_op_t) \
  RECORD(tq_mom_zrank_op_s, tq_mom_zrank_op_t, zrank_op_t) \
  RECORD(tq_mom_zrank_res_s, tq_mom_zrank_res_t, tq_mom_zrank_res_t) \
  RECORD(tq_mom_zrem_op_s, tq_mom_zrem_op_t, zrem_op_t) \
  RECORD(tq_mom_zremrangebyrank_op_s, tq_mom_zremrangebyrank_op_t, zremrangebyrank_op_t) \
  RECORD(tq_mom_zremrangebyscore_op_s, tq_mom_zremrangebyscore_op_t, zremrangebyscore_op_t) \
  RECORD(tq_mom_zscore_op_s, tq_mom_zscore_op_t, zscore_op_t) \
  RECORD(tq_mom_zscore_res_s, tq_mom_zscore_res_t, tq_mom_zscore_res_t) \
  PLAIN(tq_obj, "tq_obj *") \
  CLASS(tq_thread, "struct tq_thread *|tq_thread *") \
  PLAIN(tq_thread_debug_list, "struct tq_thread_debug_list *") \
  PLAIN(tq_thread_list, "struct tq_thread_list *|tq_thread_list *") \
  CLASS(tq_thread_master, "struct tq_thread_master *|tq_thread_master *") \
  CLASS(tq_thread_u, "tq_thread_u *") \
  PLAIN(u_int32_t, "u_int32_t *") \
  PLAIN(unsigned_char, "unsigned char *|uint_least8_t *|uint_fast8_t *|uint8_t *") \
  PLAIN(unsigned_int, "uintptr_t *|uint_least32_t *|uint_fast32_t *|uint32_t *|unsigned int *|uint_fast16_t *") \
  PLAIN(unsigned_long_long, "uint_least64_t *|uint_fast64_t *|uint64_t *|unsigned long long *|uintmax_t *") \
  PLAIN(unsigned_short, "unsigned short *|uint_least16_t *|uint16_t *") \
  PLAIN(vec_master_t, "struct vec_master_t *") \
  PLAIN(void, "void *")
// clang-format on

namespace tq_mom {

// A type's place in the table, named by its mangled name.
enum class TypeId : std::uint8_t {
#define TQ_ENUMERATOR(name, ...) _p_##name,
  TQ_TYPES(TQ_ENUMERATOR, TQ_ENUMERATOR, TQ_ENUMERATOR)
#undef TQ_ENUMERATOR
      kCount
};

inline constexpr int kTypeCount = static_cast<int>(TypeId::kCount);
static_assert(kTypeCount == 93);

// The TypeId of pointers to T. There is no default: a type that is not listed does not compile.
template <class T>
extern const TypeId kTypeOf;
#define TQ_NO_TYPE(name, readable)
#define TQ_RECORD_TYPE(structure, type, cls) \
  template <>                                \
  inline constexpr TypeId kTypeOf<type> = TypeId::_p_##structure;
#define TQ_CLASS_TYPE(name, readable) TQ_RECORD_TYPE(name, name, name)
TQ_TYPES(TQ_NO_TYPE, TQ_RECORD_TYPE, TQ_CLASS_TYPE)
#undef TQ_NO_TYPE
#undef TQ_RECORD_TYPE
#undef TQ_CLASS_TYPE
template <>
inline constexpr TypeId kTypeOf<tq_mom_client_s> = TypeId::_p_tq_mom_client_s;
template <>
inline constexpr TypeId kTypeOf<vec_master_t> = TypeId::_p_vec_master_t;
template <>
inline constexpr TypeId kTypeOf<pollfd> = TypeId::_p_pollfd;
template <>
inline constexpr TypeId kTypeOf<tq_obj> = TypeId::_p_tq_obj;

// The descriptors in use: our own, or those of modules that were loaded earlier and have the same types.
extern binding::TypeDescriptor* type_table[kTypeCount + 1];

inline binding::TypeDescriptor** TypeSlot(TypeId id) { return &type_table[static_cast<int>(id)]; }
inline binding::TypeDescriptor* Type(TypeId id) { return *TypeSlot(id); }

extern const char* class_names[kTypeCount];

// The names that we gave the type, whoever's descriptor is in use.
const char* MangledName(TypeId id);
const char* ReadableName(TypeId id);
inline const char* ClassName(TypeId id) {
  return class_names[static_cast<int>(id)];
}  // empty for types without a class

// A Lua function of the module.
struct Function {
  const char* name;
  lua_CFunction function;
  TypeId results[2] = {TypeId::_p_void, TypeId::_p_void};  // of the handles it makes; those of classes come first
};

// The module's record in the ring. Its types are set up on the first call.
binding::ModuleRecord* Types();

}  // namespace tq_mom

#endif

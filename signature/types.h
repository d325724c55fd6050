// The module's types: one row each, sorted by mangled name.
#pragma once

#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <initializer_list>
#include <type_traits>

#include "binding/abi.h"
#include "signature/packed.h"

namespace tq_mom {

template <class... T> struct List { static constexpr int kCount = sizeof...(T); };

// The place of one type in a list; behind the end if it is not there.
template <class One, class... T> consteval int FindPlace(List<T...>) {
  int place = 0;
  (void)((std::is_same_v<One, T> || (++place, false)) || ...);
  return place;
}

// A row is a type that handles point to: its C++ type and its names. The mangled name is _p_<name>.
template <class T, Literal name, Literal readable, Literal cls = ""> struct Plain {
  using Type = T;
  template <class Names> static constexpr void AddNames(Names& names) {
    names.Append("_p_", name);
    names.Append(readable);
    names.Append(cls);
  }
};

// Stand for a type that no field or command has, for u_int32_t, which in C++ is unsigned int, and for the runtime
// library's fd_set, whatever its name is.
struct Unused;
struct UInt32;
struct FdSet;

// A type with a class of its name.
template <class T, Literal name, Literal readable> struct Class : Plain<T, name, readable, name> {};

// The record struct <stem>_s, whose typedef is <stem>_t, with its class.
template <class T, Literal stem, Literal cls> struct Record {
  using Type = T;
  template <class Names> static constexpr void AddNames(Names& names) {
    names.Append("_p_", stem, "_s");
    names.Append("struct ", stem, "_s *|", stem, "_s *|", stem, "_t *");
    names.Append(cls);
  }
};

// clang-format off
using Types = List<
    Plain<Unused, "char", "char *">,
    Plain<double, "double", "double *">,
    Plain<int(tq_thread*), "f_p_struct_tq_thread__int", "int (*)(struct tq_thread *)">,
    Plain<FdSet, "fd_set", "fd_set *">,
    Plain<Unused, "int", "intptr_t *|int *|int_least32_t *|int_fast32_t *|int32_t *|int_fast16_t *">,
    Plain<Unused, "long_long", "int_least64_t *|int_fast64_t *|int64_t *|long long *|intmax_t *">,
    Plain<tq_obj*, "p_tq_obj", "tq_obj **">,
    Plain<Unused, "p_void", "void **">,
    Plain<pollfd, "pollfd", "struct pollfd *">,
    Plain<Unused, "short", "short *|int_least16_t *|int16_t *">,
    Plain<Unused, "signed_char", "signed char *|int_least8_t *|int_fast8_t *|int8_t *">,
    Plain<std::size_t, "size_t", "size_t *">,
    Plain<timeval, "timeval", "struct timeval *">,
    Record<tq_global_t, "tq_global", "tq_global_t">,
    Plain<Unused, "tq_mom_batch_over_flag_t", "tq_mom_batch_over_flag_t *">,
    Plain<tq_mom_client_s, "tq_mom_client_s", "struct tq_mom_client_s *">,
    Plain<Unused, "tq_mom_cmd_t", "tq_mom_cmd_t *">,
    Record<tq_mom_congest_t, "tq_mom_congest", "tq_mom_congest_t">,
    Plain<Unused, "tq_mom_db_type_t", "tq_mom_db_type_t *">,
    Record<tq_mom_del_op_t, "tq_mom_del_op", "del_op_t">,
    Record<tq_mom_exist_op_t, "tq_mom_exist_op", "exist_op_t">,
    Record<tq_mom_get_op_t, "tq_mom_get_op", "get_op_t">,
    Record<tq_mom_get_res_t, "tq_mom_get_res", "tq_mom_get_res_t">,
    Record<tq_mom_hash_res_t, "tq_mom_hash_res", "tq_mom_hash_res_t">,
    Record<tq_mom_hget_op_t, "tq_mom_hget_op", "hget_op_t">,
    Record<tq_mom_hmset_op_t, "tq_mom_hmset_op", "hmset_op_t">,
    Record<tq_mom_hmsetnx_op_t, "tq_mom_hmsetnx_op", "hmsetnx_op_t">,
    Record<tq_mom_hmupdate_op_t, "tq_mom_hmupdate_op", "hmupdate_op_t">,
    Record<tq_mom_incr_op_t, "tq_mom_incr_op", "incr_op_t">,
    Record<tq_mom_incr_res_t, "tq_mom_incr_res", "tq_mom_incr_res_t">,
    Record<tq_mom_linsert_op_t, "tq_mom_linsert_op", "linsert_op_t">,
    Record<tq_mom_linsert_res_t, "tq_mom_linsert_res", "tq_mom_linsert_res_t">,
    Record<tq_mom_list_res_t, "tq_mom_list_res", "tq_mom_list_res_t">,
    Record<tq_mom_llen_op_t, "tq_mom_llen_op", "llen_op_t">,
    Record<tq_mom_llen_res_t, "tq_mom_llen_res", "tq_mom_llen_res_t">,
    Record<tq_mom_lminsert_res_t, "tq_mom_lminsert_res", "tq_mom_lminsert_res_t">,
    Record<tq_mom_lmrem_res_t, "tq_mom_lmrem_res", "tq_mom_lmrem_res_t">,
    Record<tq_mom_lpop_op_t, "tq_mom_lpop_op", "lpop_op_t">,
    Record<tq_mom_lpush_op_t, "tq_mom_lpush_op", "lpush_op_t">,
    Record<tq_mom_lrange_op_t, "tq_mom_lrange_op", "lrange_op_t">,
    Record<tq_mom_lrange_res_t, "tq_mom_lrange_res", "tq_mom_lrange_res_t">,
    Record<tq_mom_lrem_op_t, "tq_mom_lrem_op", "lrem_op_t">,
    Record<tq_mom_lset_op_t, "tq_mom_lset_op", "lset_op_t">,
    Record<tq_mom_lset_res_t, "tq_mom_lset_res", "tq_mom_lset_res_t">,
    Record<tq_mom_psetex_op_t, "tq_mom_psetex_op", "psetex_op_t">,
    Record<tq_mom_publish_op_t, "tq_mom_publish_op", "publish_op_t">,
    Record<tq_mom_pubsub_msg_t, "tq_mom_pubsub_msg", "tq_mom_pubsub_msg_t">,
    Record<tq_mom_rpop_op_t, "tq_mom_rpop_op", "rpop_op_t">,
    Record<tq_mom_rpush_op_t, "tq_mom_rpush_op", "rpush_op_t">,
    Record<tq_mom_sadd_op_t, "tq_mom_sadd_op", "sadd_op_t">,
    Record<tq_mom_save_res_t, "tq_mom_save_res", "tq_mom_save_res_t">,
    Record<tq_mom_scan_all_msg_t, "tq_mom_scan_all_msg", "tq_mom_scan_all_msg_t">,
    Record<tq_mom_scard_op_t, "tq_mom_scard_op", "scard_op_t">,
    Record<tq_mom_scard_res_t, "tq_mom_scard_res", "tq_mom_scard_res_t">,
    Record<tq_mom_set_op_t, "tq_mom_set_op", "set_op_t">,
    Record<tq_mom_set_res_t, "tq_mom_set_res", "tq_mom_set_res_t">,
    Record<tq_mom_setnx_res_t, "tq_mom_setnx_res", "tq_mom_setnx_res_t">,
    Record<tq_mom_sismember_op_t, "tq_mom_sismember_op", "sismember_op_t">,
    Record<tq_mom_sismember_res_t, "tq_mom_sismember_res", "tq_mom_sismember_res_t">,
    Record<tq_mom_smembers_op_t, "tq_mom_smembers_op", "smembers_op_t">,
    Record<tq_mom_smembers_res_t, "tq_mom_smembers_res", "tq_mom_smembers_res_t">,
    Record<tq_mom_sortedset_res_t, "tq_mom_sortedset_res", "tq_mom_sortedset_res_t">,
    Record<tq_mom_srem_op_t, "tq_mom_srem_op", "srem_op_t">,
    Record<tq_mom_zadd_op_t, "tq_mom_zadd_op", "zadd_op_t">,
    Record<tq_mom_zcard_op_t, "tq_mom_zcard_op", "zcard_op_t">,
    Record<tq_mom_zcard_res_t, "tq_mom_zcard_res", "tq_mom_zcard_res_t">,
    Record<tq_mom_zcount_op_t, "tq_mom_zcount_op", "zcount_op_t">,
    Record<tq_mom_zcount_res_t, "tq_mom_zcount_res", "tq_mom_zcount_res_t">,
    Record<tq_mom_zrange_op_t, "tq_mom_zrange_op", "zrange_op_t">,
    Record<tq_mom_zrange_res_t, "tq_mom_zrange_res", "tq_mom_zrange_res_t">,
    Record<tq_mom_zrangebyscore_op_t, "tq_mom_zrangebyscore_op", "zrangebyscore_op_t">,
    Record<tq_mom_zrangebyscore_res_t, "tq_mom_zrangebyscore_res", "tq_mom_zrangebyscore_res_t">,
    Record<tq_mom_zrangebyscorelimit_op_t, "tq_mom_zrangebyscorelimit_op", "zrangebyscorelimit_op_t">,
    Record<tq_mom_zrank_op_t, "tq_mom_zrank_op", "zrank_op_t">,
    Record<tq_mom_zrank_res_t, "tq_mom_zrank_res", "tq_mom_zrank_res_t">,
    Record<tq_mom_zrem_op_t, "tq_mom_zrem_op", "zrem_op_t">,
    Record<tq_mom_zremrangebyrank_op_t, "tq_mom_zremrangebyrank_op", "zremrangebyrank_op_t">,
    Record<tq_mom_zremrangebyscore_op_t, "tq_mom_zremrangebyscore_op", "zremrangebyscore_op_t">,
    Record<tq_mom_zscore_op_t, "tq_mom_zscore_op", "zscore_op_t">,
    Record<tq_mom_zscore_res_t, "tq_mom_zscore_res", "tq_mom_zscore_res_t">,
    Plain<tq_obj, "tq_obj", "tq_obj *">,
    Class<tq_thread, "tq_thread", "struct tq_thread *|tq_thread *">,
    Plain<tq_thread_debug_list, "tq_thread_debug_list", "struct tq_thread_debug_list *">,
    Plain<tq_thread_list, "tq_thread_list", "struct tq_thread_list *|tq_thread_list *">,
    Class<tq_thread_master, "tq_thread_master", "struct tq_thread_master *|tq_thread_master *">,
    Class<tq_thread_u, "tq_thread_u", "tq_thread_u *">,
    Plain<UInt32, "u_int32_t", "u_int32_t *">,
    Plain<unsigned char, "unsigned_char", "unsigned char *|uint_least8_t *|uint_fast8_t *|uint8_t *">,
    Plain<Unused, "unsigned_int", "uintptr_t *|uint_least32_t *|uint_fast32_t *|uint32_t *|unsigned int *|uint_fast16_t *">,
    Plain<Unused, "unsigned_long_long", "uint_least64_t *|uint_fast64_t *|uint64_t *|unsigned long long *|uintmax_t *">,
    Plain<Unused, "unsigned_short", "unsigned short *|uint_least16_t *|uint16_t *">,
    Plain<vec_master_t, "vec_master_t", "struct vec_master_t *">,
    Plain<void, "void", "void *">>;
// clang-format on

inline constexpr int kTypeCount = Types::kCount;

// A type's place in the list.
enum class TypeId : std::uint8_t {};

template <class T, class... Row> consteval TypeId FindType(List<Row...>) {
  constexpr int kPlace = FindPlace<T>(List<typename Row::Type...>());
  static_assert(kPlace < kTypeCount, "This type is not in the list of signature/types.h");
  return static_cast<TypeId>(kPlace);
}

// The type of pointers to T.
template <class T> inline constexpr TypeId kTypeOf = FindType<T>(Types());
inline constexpr TypeId kVoid = kTypeOf<void>;

// The descriptors in use: our own, or those of modules that were loaded earlier and have the same types.
[[gnu::visibility("hidden")]] extern binding::TypeDescriptor* type_table[kTypeCount + 1];

inline binding::TypeDescriptor** TypeSlot(TypeId id) { return &type_table[static_cast<int>(id)]; }
inline binding::TypeDescriptor* Type(TypeId id) { return *TypeSlot(id); }

// The names that we gave the type, whoever's descriptor is in use. The strings stay.
const char* MangledName(TypeId id);
const char* ReadableName(TypeId id);
[[gnu::visibility("hidden")]] extern const char* class_names[kTypeCount];
inline const char* ClassName(TypeId id) {
  return class_names[static_cast<int>(id)];
}  // empty for types without a class

// Pushes a Lua function that makes handles of the types: a closure over what finds their classes, as
// binding::HandleUpvalue says. Those of types with a class come first.
void PushFunction(lua_State* L, lua_CFunction function, std::initializer_list<TypeId> results);

// The module's record in the ring. Its types are set up on the first call, but for their classes.
binding::ModuleRecord* ModuleTypes();
// Our own descriptor of the type.
binding::TypeDescriptor* OwnType(TypeId id);

}  // namespace tq_mom

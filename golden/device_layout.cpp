// The records as the device's client library lays them out: pointers and size_t of 32 bits, 64-bit members at multiples
// of 8. It writes into records that Lua allocates, so a declaration that is laid out otherwise must not compile.
#include "signature/types.h"

#if __SIZEOF_POINTER__ == 4

#include <cstddef>

namespace tq_mom {
namespace {

static_assert(sizeof(void*) == 4 && sizeof(std::size_t) == 4 && sizeof(timeval) == 8);
static_assert(sizeof(tq_mom_db_type_t) == 4 && sizeof(tq_mom_cmd_t) == 4 && sizeof(tq_mom_batch_over_flag_t) == 4);
static_assert(alignof(tq_mom_incr_res_t) == 8 && alignof(tq_mom_llen_res_t) == 8 && alignof(tq_mom_zscore_res_t) == 8);

// Complete for the records whose layout is checked below.
template <class Checked> struct Layout;

#define TQ_RECORD(record, size, ...)       \
  template <> struct Layout<record> {      \
    using Record = record;                 \
    static_assert(sizeof(record) == size); \
    __VA_ARGS__                            \
  };
#define TQ_AT(offset, size, member) static_assert(offsetof(Record, member) == offset && sizeof(Record::member) == size);

#define TQ_FLAG(name) TQ_RECORD(tq_mom_##name##_op_t, 4, TQ_AT(0, 4, flag))
#define TQ_FIELDS(name) \
  TQ_RECORD(tq_mom_##name##_op_t, 12, TQ_AT(0, 4, fields) TQ_AT(4, 4, field_count) TQ_AT(8, 4, flag))
#define TQ_OBJECTS(name) \
  TQ_RECORD(tq_mom_##name##_res_t, 12, TQ_AT(0, 4, value_array) TQ_AT(4, 4, count) TQ_AT(8, 4, error_code))
#define TQ_SCORED(name, values)        \
  TQ_RECORD(tq_mom_##name##_res_t, 16, \
            TQ_AT(0, 4, values) TQ_AT(4, 4, score) TQ_AT(8, 4, count) TQ_AT(12, 4, error_code))
#define TQ_NUMBER32(name, member) TQ_RECORD(tq_mom_##name##_res_t, 8, TQ_AT(0, 4, member) TQ_AT(4, 4, error_code))
#define TQ_NUMBER64(name, member) TQ_RECORD(tq_mom_##name##_res_t, 16, TQ_AT(0, 8, member) TQ_AT(8, 4, error_code))
#define TQ_STATUS(name) TQ_RECORD(tq_mom_##name##_res_t, 4, TQ_AT(0, 4, error_code))

// clang-format off
TQ_FLAG(set) TQ_FLAG(get) TQ_FLAG(hget) TQ_FIELDS(hmset) TQ_FIELDS(hmsetnx) TQ_FIELDS(hmupdate) TQ_FLAG(del)
TQ_FLAG(exist) TQ_FLAG(publish)
TQ_RECORD(tq_mom_psetex_op_t, 8,
  TQ_AT(0, 4, flag) TQ_AT(4, 4, milseconds))
TQ_FLAG(sadd) TQ_FLAG(srem) TQ_FLAG(sismember) TQ_FLAG(scard) TQ_FLAG(smembers) TQ_FLAG(lpush) TQ_FLAG(rpush)
TQ_FLAG(lpop) TQ_FLAG(rpop) TQ_FLAG(linsert) TQ_FLAG(llen) TQ_FLAG(lrange) TQ_FLAG(lrem) TQ_FLAG(lset) TQ_FLAG(zadd)
TQ_FLAG(zcard) TQ_FLAG(zcount) TQ_FLAG(zrange) TQ_FLAG(zrangebyscore) TQ_FLAG(zrangebyscorelimit) TQ_FLAG(zrank)
TQ_FLAG(zrem) TQ_FLAG(zremrangebyrank) TQ_FLAG(zremrangebyscore) TQ_FLAG(zscore) TQ_FLAG(incr)

TQ_RECORD(tq_mom_hash_res_t, 24,
  TQ_AT(0, 4, value) TQ_AT(4, 4, field_tag) TQ_AT(8, 4, field_tag_count) TQ_AT(12, 4, field_change_tag)
  TQ_AT(16, 4, field_change_tag_count) TQ_AT(20, 4, error_code))
TQ_OBJECTS(set) TQ_OBJECTS(list)
TQ_NUMBER32(get, value)
TQ_NUMBER64(incr, value)
TQ_NUMBER32(setnx, value)
TQ_OBJECTS(smembers)
TQ_NUMBER64(llen, len)
TQ_OBJECTS(lrange)
TQ_NUMBER64(linsert, len)
TQ_NUMBER32(lminsert, len)
TQ_NUMBER32(lmrem, len)
TQ_STATUS(lset) TQ_STATUS(save)
TQ_NUMBER64(zcard, len)
TQ_NUMBER64(zrank, rank)
TQ_RECORD(tq_mom_zscore_res_t, 16,
  TQ_AT(0, 8, score) TQ_AT(8, 4, exist) TQ_AT(12, 4, error_code))
TQ_NUMBER64(zcount, len)
TQ_SCORED(zrange, value)
TQ_SCORED(zrangebyscore, value)
TQ_SCORED(sortedset, value_array)
TQ_NUMBER64(scard, len)
TQ_NUMBER64(sismember, len)

TQ_RECORD(tq_mom_pubsub_msg_t, 672,
  TQ_AT(0, 4, db) TQ_AT(4, 512, key) TQ_AT(516, 128, field) TQ_AT(644, 4, cmd) TQ_AT(648, 4, value)
  TQ_AT(652, 4, length) TQ_AT(656, 4, flag) TQ_AT(660, 4, db_id) TQ_AT(664, 4, cluster_id) TQ_AT(668, 4, error))
TQ_RECORD(tq_mom_scan_all_msg_t, 12,
  TQ_AT(0, 4, vlen) TQ_AT(4, 4, key) TQ_AT(8, 4, value))
// 512 bytes follow remain_time that Lua does not see.
TQ_RECORD(tq_mom_congest_t, 528 + 512,
  TQ_AT(0, 512, topic)
  TQ_AT(512, 8, remain_buffer)
  TQ_AT(520, 8, remain_time))

TQ_RECORD(tq_global_t, 8,
  TQ_AT(0, 4, rmc) TQ_AT(4, 4, master))
// The lists and what an event keeps between pfd_index and name are the runtime library's own: their sizes are whatever
// the header in use says.
constexpr std::size_t kTimers = 4 * sizeof(tq_thread_list);
constexpr std::size_t kSets = 4 + kTimers;
constexpr std::size_t kRest = kSets + 2 * 8192;
TQ_RECORD(tq_thread_master, kRest + 44 + sizeof(tq_thread_debug_list),
  TQ_AT(0, 4, index)
  TQ_AT(4, kTimers, timer)
  TQ_AT(kSets, 8192, readfd)
  TQ_AT(kSets + 8192, 8192, writefd)
  TQ_AT(kRest, 4, max_fd)
  TQ_AT(kRest + 4, 4, pfds)
  TQ_AT(kRest + 8, 2, nfds)
  TQ_AT(kRest + 10, 2, pfds_size)
  TQ_AT(kRest + 12, 4, alloc)
  TQ_AT(kRest + 16, 4, debug)
  TQ_AT(kRest + 20, 4, flag)
  TQ_AT(kRest + 24, 4, tid)
  TQ_AT(kRest + 28, 4, t_recover)
  TQ_AT(kRest + 32, 4, vec_m)
  TQ_AT(kRest + 36, 4, vec_m_flag)
  TQ_AT(kRest + 40, 4, cur_thread)
  TQ_AT(kRest + 44, sizeof(tq_thread_debug_list), debug_list))
TQ_RECORD(tq_thread, (offsetof(tq_thread, name) + 11 + 3) / 4 * 4,
  TQ_AT(0, 4, next)
  TQ_AT(4, 4, prev)
  TQ_AT(8, 4, master)
  TQ_AT(12, 4, func)
  TQ_AT(16, 4, zg)
  TQ_AT(20, 4, arg)
  TQ_AT(24, 8, u)
  TQ_AT(32, 2, pfd_index)
  static_assert(offsetof(Record, name) >= 34 && sizeof(Record::name) == 11);)
TQ_RECORD(tq_thread_u, 8,
  TQ_AT(0, 4, val) TQ_AT(0, 4, fd) TQ_AT(0, 8, sands))
// clang-format on

template <class T, Literal name, Literal readable> constexpr bool IsChecked(Plain<T, name, readable, "">*) {
  return true;
}
template <class T, Literal name, Literal readable> constexpr bool IsChecked(Class<T, name, readable>*) {
  return sizeof(Layout<T>) != 0;
}
template <class T, Literal stem, Literal cls> constexpr bool IsChecked(tq_mom::Record<T, stem, cls>*) {
  return sizeof(Layout<T>) != 0;
}
template <class... Row> constexpr bool AreChecked(List<Row...>) {
  return (IsChecked(static_cast<Row*>(nullptr)) && ...);
}
static_assert(AreChecked(Types()));  // no record is left out

}  // namespace
}  // namespace tq_mom

#endif

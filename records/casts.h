// Typed handles to records that reached Lua as untyped ones.
#pragma once

#include <tq_mom/tq_mom.h>

#include <lua.hpp>

// The casts: native function and Lua function of this name, and the record they cast to.
#define TQ_CASTS(CAST)                                           \
  CAST(convertPtrToHashRes, tq_mom_hash_res_t)                   \
  CAST(convertPtrToSetRes, tq_mom_set_res_t)                     \
  CAST(convertPtrToListRes, tq_mom_list_res_t)                   \
  CAST(convertPtrToSortedsetRes, tq_mom_sortedset_res_t)         \
  CAST(convertPtrToGetRes, tq_mom_get_res_t)                     \
  CAST(convertPtrToIncrRes, tq_mom_incr_res_t)                   \
  CAST(convertPtrToSetnxRes, tq_mom_setnx_res_t)                 \
  CAST(convertPtrToSmembersRes, tq_mom_smembers_res_t)           \
  CAST(convertPtrToLlenRes, tq_mom_llen_res_t)                   \
  CAST(convertPtrToLrangeRes, tq_mom_lrange_res_t)               \
  CAST(convertPtrToLinsertRes, tq_mom_linsert_res_t)             \
  CAST(convertPtrToLminsertRes, tq_mom_lminsert_res_t)           \
  CAST(convertPtrToLmremRes, tq_mom_lmrem_res_t)                 \
  CAST(convertPtrToLsetRes, tq_mom_lset_res_t)                   \
  CAST(convertPtrToSaveRes, tq_mom_save_res_t)                   \
  CAST(convertPtrToZcardRes, tq_mom_zcard_res_t)                 \
  CAST(convertPtrToZrankRes, tq_mom_zrank_res_t)                 \
  CAST(convertPtrToZscoreRes, tq_mom_zscore_res_t)               \
  CAST(convertPtrToZcountRes, tq_mom_zcount_res_t)               \
  CAST(convertPtrToZrangeRes, tq_mom_zrange_res_t)               \
  CAST(convertPtrToZrangebyscoreRes, tq_mom_zrangebyscore_res_t) \
  CAST(convertPtrToScardRes, tq_mom_scard_res_t)                 \
  CAST(convertPtrToSismemberRes, tq_mom_sismember_res_t)         \
  CAST(convertPtrToScanAllMsg, tq_mom_scan_all_msg_t)

// Return their argument.
extern "C" {
#define TQ_DECLARE_CAST(name, record) [[gnu::visibility("default")]] record* name(void* pointer);
TQ_CASTS(TQ_DECLARE_CAST)
#undef TQ_DECLARE_CAST
}

namespace tq_mom {

// Sets the casts' Lua functions as fields of the table at the stack top.
void AddCasts(lua_State* L);
int CountCasts();

}  // namespace tq_mom

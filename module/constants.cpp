#include "module/constants.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "records/thread_constants.h"
#include "signature/packed.h"

namespace tq_mom {
namespace {

// clang-format off
#define TQ_STORE_CONSTANTS(CONSTANT) \
  CONSTANT(TQ_MOM_KEY_MAX_LEN) CONSTANT(TQ_MOM_CMD_MAX_LEN) CONSTANT(TQ_MOM_FIELD_MAX_LEN) \
  CONSTANT(TQ_MOM_ASIC_DB) CONSTANT(TQ_MOM_TUNNER_DB) CONSTANT(TQ_MOM_TQMOMD_HOST) CONSTANT(TQ_MOM_LOCAL_DB) \
  CONSTANT(TQ_MOM_APP_DB) CONSTANT(TQ_MOM_TQMOMD_CE_GLOBAL) CONSTANT(TQ_MOM_FWD_DB) \
  CONSTANT(TQ_MOM_TQMOMD_CE_FWD_GLOBAL) CONSTANT(TQ_MOM_UDP_DB) CONSTANT(TQ_MOM_TQMOMD_DE_GLOBAL) \
  CONSTANT(TQ_MOM_UDP_FWD_DB) CONSTANT(TQ_MOM_TQMOMD_DE_FWD_GLOBAL) CONSTANT(TQ_MOM_MONITOR_DB) \
  CONSTANT(TQ_MOM_TQMOMD_MONITOR_GLOBAL) CONSTANT(TQ_MOM_TOPO_DB) CONSTANT(TQ_MOM_TQMOMD_DE_STADNALONE) \
  CONSTANT(TQ_MOM_ASIC_FWD_DB) CONSTANT(TQ_MOM_TQMOMD_HOST_FWD) CONSTANT(TQ_MOM_APP_EXT_DB) \
  CONSTANT(TQ_MOM_TQMOMD_MS_GLOBAL) CONSTANT(TQ_MOM_FWD_EXT_DB) CONSTANT(TQ_MOM_TQMOMD_MS_EXT_GLOBAL) \
  CONSTANT(TQ_MOM_CFG_DB) CONSTANT(TQ_MOM_TQMOMD_CFG_GLOBAL) CONSTANT(TQ_MOM_CFG_CP_DB) \
  CONSTANT(TQ_MOM_TQMOMD_CFG_CP) CONSTANT(TQ_MOM_IBC_DB) CONSTANT(TQ_MOM_TQMOMD_IBC_GLOBAL) CONSTANT(TQ_MOM_CAP_DB) \
  CONSTANT(TQ_MOM_TQMOMD_CAP) CONSTANT(TQ_MOM_CFG_CAN_DB) CONSTANT(TQ_MOM_CGSTCTRL_DB) CONSTANT(TQ_MOM_DEBUG_DB) \
  CONSTANT(TQ_MOM_DEV_DB) CONSTANT(TQ_MOM_CAP_CFG_LOAD_DB) CONSTANT(TQ_MOM_CFG_LOAD_DB) CONSTANT(TQ_MOM_MLAG_DB) \
  CONSTANT(TQ_MOM_INNER_DB) \
  CONSTANT(TQ_MOM_SET) CONSTANT(TQ_MOM_GET) CONSTANT(TQ_MOM_DEL) CONSTANT(TQ_MOM_HSET) CONSTANT(TQ_MOM_HMGET) \
  CONSTANT(TQ_MOM_HMUPDATE) CONSTANT(TQ_MOM_HDEL) CONSTANT(TQ_MOM_HGETALL) CONSTANT(TQ_MOM_PEXPIRE_FIELD) \
  CONSTANT(TQ_MOM_LPUSH) CONSTANT(TQ_MOM_RPUSH) CONSTANT(TQ_MOM_RPOP) CONSTANT(TQ_MOM_LPOP) CONSTANT(TQ_MOM_LRANGE) \
  CONSTANT(TQ_MOM_LLEN) CONSTANT(TQ_MOM_EXISTS) CONSTANT(TQ_MOM_PSETEX) CONSTANT(TQ_MOM_SADD) CONSTANT(TQ_MOM_SREM) \
  CONSTANT(TQ_MOM_SISMEMBER) CONSTANT(TQ_MOM_SCARD) CONSTANT(TQ_MOM_SMEMBERS) CONSTANT(TQ_MOM_SPOP) \
  CONSTANT(TQ_MOM_PUBLISH) CONSTANT(TQ_MOM_EXPIRE) CONSTANT(TQ_MOM_PEXPIRE) CONSTANT(TQ_MOM_EXPIRED) \
  CONSTANT(TQ_MOM_UNSUBSCRIBE) CONSTANT(TQ_MOM_SUBSCRIBE) CONSTANT(TQ_MOM_SCAN) CONSTANT(TQ_MOM_SERVERPUSH) \
  CONSTANT(TQ_MOM_INCR) CONSTANT(TQ_MOM_SETNX) CONSTANT(TQ_MOM_LINSERT) CONSTANT(TQ_MOM_LREM) CONSTANT(TQ_MOM_LSET) \
  CONSTANT(TQ_MOM_SCAN_INDEX) CONSTANT(TQ_MOM_LMINSERT) CONSTANT(TQ_MOM_ZADD) CONSTANT(TQ_MOM_ZREM) \
  CONSTANT(TQ_MOM_ZREMRANGEBYRANK) CONSTANT(TQ_MOM_ZREMRANGEBYSCORE) CONSTANT(TQ_MOM_ZCARD) CONSTANT(TQ_MOM_ZRANK) \
  CONSTANT(TQ_MOM_ZSCORE) CONSTANT(TQ_MOM_ZCOUNT) CONSTANT(TQ_MOM_ZRANGE) CONSTANT(TQ_MOM_ZRANGEBYSCORE) \
  CONSTANT(TQ_MOM_LMREM) \
  CONSTANT(TQ_MOM_SCAN_OVER) CONSTANT(TQ_MOM_BATCHPEXPIRE_OVER) CONSTANT(TQ_MOM_BATCHPEXPIREDEL_OVER) \
  CONSTANT(TQ_MOM_BATCHPEXPIREFIELD_OVER) CONSTANT(TQ_MOM_BATCHDEL_OVER)
// clang-format on

// Names and values apart: half the size of constant records, and nothing to relocate. The names lack the prefix that
// all constants of the store have.
constexpr std::string_view kPrefix = "TQ_MOM_";
constexpr std::size_t kLongestName = 63;

#define TQ_NAME(name) #name,
#define TQ_FLATTENED_NAME(cls, name) #cls "_" #name,
constexpr auto PackNames() {
  Packed<4096> names;
  auto add = [&](std::string_view name) {
    if (name.size() > kLongestName) __builtin_unreachable();
    names.Append(name);
  };
  for (std::string_view name : {TQ_STORE_CONSTANTS(TQ_NAME)}) add(name.substr(kPrefix.size()));
  for (std::string_view name : {TQ_THREAD_MASTER_CONSTANTS(TQ_FLATTENED_NAME) TQ_THREAD_CONSTANTS(TQ_FLATTENED_NAME)}) {
    add(name);
  }
  return names;
}

#define TQ_VALUE(name) name,
#define TQ_FLATTENED_VALUE(cls, name) name,
constexpr std::int16_t kStoreValues[] = {TQ_STORE_CONSTANTS(TQ_VALUE)};
constexpr std::int16_t kThreadValues[] = {TQ_THREAD_MASTER_CONSTANTS(TQ_FLATTENED_VALUE)
                                              TQ_THREAD_CONSTANTS(TQ_FLATTENED_VALUE)};

// Sets constants of the table at the stack top. Returns the name after theirs.
template <std::size_t count>
const char* Add(lua_State* L, std::string_view prefix, const char* name, const std::int16_t (&values)[count]) {
  char full_name[kPrefix.size() + kLongestName];
  std::copy_n(prefix.data(), prefix.size(), full_name);
  for (std::int16_t value : values) {
    std::size_t length = std::strlen(name);
    std::copy_n(name, length, full_name + prefix.size());
    lua_pushlstring(L, full_name, prefix.size() + length);
    lua_pushinteger(L, value);
    lua_rawset(L, -3);
    name += length + 1;
  }
  return name;
}

}  // namespace

int CountConstants() { return (sizeof(kStoreValues) + sizeof(kThreadValues)) / sizeof(std::int16_t); }

void AddConstants(lua_State* L) { Add(L, "", Add(L, kPrefix, kTrimmed<PackNames>.text, kStoreValues), kThreadValues); }

}  // namespace tq_mom

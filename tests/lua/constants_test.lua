-- Every constant of the module table and of the classes.
local luaunit = require "luaunit"
local support = require "support"

local tq = support.tq

local kLimits = {TQ_MOM_KEY_MAX_LEN = 512, TQ_MOM_CMD_MAX_LEN = 32, TQ_MOM_FIELD_MAX_LEN = 128}

-- In the order of their values, from 0.
local kDatabases = {
  "ASIC_DB", "TUNNER_DB", "TQMOMD_HOST", "LOCAL_DB", "APP_DB", "TQMOMD_CE_GLOBAL", "FWD_DB", "TQMOMD_CE_FWD_GLOBAL",
  "UDP_DB", "TQMOMD_DE_GLOBAL", "UDP_FWD_DB", "TQMOMD_DE_FWD_GLOBAL", "MONITOR_DB", "TQMOMD_MONITOR_GLOBAL", "TOPO_DB",
  "TQMOMD_DE_STADNALONE", "ASIC_FWD_DB", "TQMOMD_HOST_FWD", "APP_EXT_DB", "TQMOMD_MS_GLOBAL", "FWD_EXT_DB",
  "TQMOMD_MS_EXT_GLOBAL", "CFG_DB", "TQMOMD_CFG_GLOBAL", "CFG_CP_DB", "TQMOMD_CFG_CP", "IBC_DB", "TQMOMD_IBC_GLOBAL",
  "CAP_DB", "TQMOMD_CAP", "CFG_CAN_DB", "CGSTCTRL_DB", "DEBUG_DB", "DEV_DB", "CAP_CFG_LOAD_DB", "CFG_LOAD_DB",
  "MLAG_DB", "INNER_DB",
}

-- From 1.
local kCommands = {
  "SET", "GET", "DEL", "HSET", "HMGET", "HMUPDATE", "HDEL", "HGETALL", "PEXPIRE_FIELD", "LPUSH", "RPUSH", "RPOP",
  "LPOP", "LRANGE", "LLEN", "EXISTS", "PSETEX", "SADD", "SREM", "SISMEMBER", "SCARD", "SMEMBERS", "SPOP", "PUBLISH",
  "EXPIRE", "PEXPIRE", "EXPIRED", "UNSUBSCRIBE", "SUBSCRIBE", "SCAN", "SERVERPUSH", "INCR", "SETNX", "LINSERT", "LREM",
  "LSET", "SCAN_INDEX", "LMINSERT", "ZADD", "ZREM", "ZREMRANGEBYRANK", "ZREMRANGEBYSCORE", "ZCARD", "ZRANK", "ZSCORE",
  "ZCOUNT", "ZRANGE", "ZRANGEBYSCORE", "LMREM",
}

local kBatchFlags = {"SCAN_OVER", "BATCHPEXPIRE_OVER", "BATCHPEXPIREDEL_OVER", "BATCHPEXPIREFIELD_OVER",
  "BATCHDEL_OVER"}

local kStatics = {
  tq_thread_master = {
    TQ_THREAD_TIMER_SLOT = 4, TQ_THREAD_DEBUG_INTERFACE_FLAG = 1, TQ_THREAD_DEBUG_PROCEDURE_FLAG = 2,
    TQ_THREAD_DEBUG_EXEC_TIME_FLAG = 4, TQ_THREAD_IS_FIRST_FETCH = 1, TQ_THREAD_USE_POLL = 2,
  },
  tq_thread = {
    TQ_THREAD_PRIORITY_HIGH = 0, TQ_THREAD_PRIORITY_MIDDLE = 1, TQ_THREAD_PRIORITY_LOW = 2,
    TQ_THREAD_FLAG_CRT_BY_USR = 1, TQ_THREAD_FLAG_IN_LIST = 2,
  },
}

local kStatuses = {
  TQ_MOM_OK = 0, TQ_MOM_ERR = -1, TQ_MOM_INPUT_ERR = -2, TQ_MOM_MALLOC_ERR = -3, TQ_MOM_NO_READY = -4,
  TQ_MOM_GLOBAL_DB_NO_WRITE = -5,
}

local function expected_constants()
  local expected = {}
  for name, value in pairs(kLimits) do expected[name] = value end
  for i, name in ipairs(kDatabases) do expected["TQ_MOM_" .. name] = i - 1 end
  for i, name in ipairs(kCommands) do expected["TQ_MOM_" .. name] = i end
  for i, name in ipairs(kBatchFlags) do expected["TQ_MOM_" .. name] = i end
  for class, constants in pairs(kStatics) do
    for name, value in pairs(constants) do expected[class .. "_" .. name] = value end
  end
  return expected
end

TestConstants = {}

function TestConstants:test_all_numbers_of_the_module()
  local expected, count = expected_constants(), 0
  for _ in pairs(expected) do count = count + 1 end
  luaunit.assertEquals(count, 106)
  for name, value in pairs(kStatuses) do expected[name] = value end
  local got = {}
  for name, value in pairs(tq) do
    if type(value) == "number" then
      luaunit.assertEquals(math.type(value), "integer", name)
      got[name] = value
    end
  end
  luaunit.assertEquals(got, expected)
end

function TestConstants:test_nothing_else_is_in_the_module()
  for name, value in pairs(tq) do
    luaunit.assertTrue(type(value) == "number" or type(value) == "function" or type(value) == "table", name)
  end
end

function TestConstants:test_class_statics()
  for class, expected in pairs(kStatics) do
    local got = {}
    for name, value in pairs(tq[class]) do
      luaunit.assertEquals(math.type(value), "integer", name)
      got[name] = value
    end
    luaunit.assertEquals(got, expected)
  end
end

function TestConstants:test_ends_of_the_enumerations()
  luaunit.assertEquals(#kDatabases, 38)
  luaunit.assertEquals(#kCommands, 49)
  luaunit.assertEquals(tq.TQ_MOM_INNER_DB, 37)
  luaunit.assertEquals(tq.TQ_MOM_LMREM, 49)
  luaunit.assertEquals(tq.TQ_MOM_TQMOMD_DE_STADNALONE, 15)
  luaunit.assertEquals(tq.TQ_MOM_TUNNER_DB, 1)
  luaunit.assertEquals(tq.tq_thread_master.TQ_THREAD_TIMER_SLOT, 4)
  luaunit.assertEquals(tq.tq_thread_master_TQ_THREAD_TIMER_SLOT, 4)
end

support.run()

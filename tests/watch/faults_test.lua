-- tq_watch.fault and what a script sees of it.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, watch, key, db = stage.tq, stage.watch, stage.key, stage.db

TestFaults = stage.suite()

local function exists(self, name, in_db) return tq.exists(self.g, in_db or db, key(name)) end

function TestFaults:test_a_status_instead_of_the_call()
  tq.set(self.g, db, key("a", "1"))
  local fault = watch.fault {call = "del", status = tq.TQ_MOM_NO_READY}
  luaunit.assertEquals(tq.del(self.g, db, key("a")), -4)
  luaunit.assertEquals(exists(self, "a"), 1)
  luaunit.assertEquals(tq.del(self.g, db, key("a")), -4)
  luaunit.assertEquals(fault:hits(), 2)
  fault:remove()
  luaunit.assertEquals(tq.del(self.g, db, key("a")), 1)
  luaunit.assertEquals(fault:hits(), 2)
  fault:remove()
end

function TestFaults:test_which_calls()
  local fault = watch.fault {call = "exists", db = db, key = "port/*", status = -4}
  luaunit.assertEquals(exists(self, "port/1"), -4)
  luaunit.assertEquals(exists(self, "port"), 0)
  luaunit.assertEquals(exists(self, "port/1", db + 1), 0)
  luaunit.assertEquals(tq.exists(self.g, db, nil), -2)
  luaunit.assertEquals(tq.llen(self.g, db, key("port/1")), 0)
  luaunit.assertEquals(fault:hits(), 1)
end

function TestFaults:test_a_pattern_of_functions()
  local fault = watch.fault {call = "l[lp]*", status = -4}
  luaunit.assertEquals(tq.llen(self.g, db, key("jobs")), -4)
  luaunit.assertEquals(tq.lpush(self.g, db, key("jobs", "a")), -4)
  luaunit.assertEquals(tq.rpush(self.g, db, key("jobs", "a")), 1)
  luaunit.assertEquals(fault:hits(), 2)
end

function TestFaults:test_after_and_times()
  local fault = watch.fault {call = "exists", after = 3, times = 2, status = -4}
  local statuses = {}
  for i = 1, 7 do statuses[i] = exists(self, "a") end
  luaunit.assertEquals(statuses, {0, 0, 0, -4, -4, 0, 0})
  luaunit.assertEquals(fault:hits(), 2)
end

-- The key of a call with many members is that of the first.
function TestFaults:test_key_of_members()
  watch.fault {call = "zadd", key = "z*", status = -4}
  luaunit.assertEquals(tq.zadd(self.g, db, {1}, {key("zoo", "m")}), -4)
  luaunit.assertEquals(tq.zadd(self.g, db, {}, {}), 0)
end

function TestFaults:test_the_answer_is_lost()
  watch.fault {call = "set", status = -1, after_call = true}
  luaunit.assertEquals(tq.set(self.g, db, key("a", "1")), -1)
  luaunit.assertEquals(exists(self, "a"), 1)
end

-- What the client library handed out goes back to it.
function TestFaults:test_the_answer_is_lost_with_what_it_holds()
  tq.rpush(self.g, db, key("jobs", "a"))
  watch.fault {call = "l*", status = -1, after_call = true}
  local element, left = tq.lpop(self.g, db, key("jobs"))
  luaunit.assertEquals({element, left}, {nil, -1})
  local result = tq.lrange(self.g, db, key("jobs"), 0, -1)
  luaunit.assertEquals(result.error_code, -1)
  watch.reset()
  luaunit.assertEquals(tq.lrange_res_free(result), 0)
  luaunit.assertEquals(tq.llen(self.g, db, key("jobs")), 0)
end

local records = {
  {"get_ext", "get_res_free", function(g, k) return tq.get_ext(g, db, nil, k) end},
  {"incr", "incr_res_free", function(g, k) return tq.incr(g, db, k) end},
  {"hmget", "hash_res_free", function(g, k) return tq.hmget(g, db, k, {1}) end},
  {"lrange", "lrange_res_free", function(g, k) return tq.lrange(g, db, k, 0, -1) end},
  {"smembers", "smembers_res_free", function(g, k) return tq.smembers(g, db, k) end},
  {"zrange", "zrange_res_free", function(g, k) return tq.zrange(g, db, k, 0, -1) end},
  {"zrangebyscore", "zrangebyscore_res_free", function(g, k) return tq.zrangebyscore(g, db, k, 0, 1) end},
  {"zscore", "zscore_res_free", function(g, k) return tq.zscore(g, db, k) end},
}

function TestFaults:test_records_with_an_error_code()
  for _, row in ipairs(records) do
    local name, release, call = table.unpack(row)
    local fault = watch.fault {call = name, status = -3, times = 1}
    local result = call(self.g, key("k", "v"))
    luaunit.assertEquals({name, result.error_code}, {name, -3})
    luaunit.assertEquals(#watch.live(), 2)
    luaunit.assertEquals(tq[release](result), 0)
    luaunit.assertEquals(#watch.live(), 1)
    luaunit.assertEquals(fault:hits(), 1)
    fault:remove()
    watch.fault {call = name, null = true, times = 1}
    luaunit.assertNil(call(self.g, key("k", "v")))
    luaunit.assertEquals(tq[release](call(self.g, key("k", "v"))), 0)
  end
end

function TestFaults:test_functions_that_return_objects()
  watch.fault {call = "get", status = -4, times = 1}
  watch.fault {call = "get", null = true}
  luaunit.assertEquals({tq.get(self.g, db, key("a"))}, {nil, -4})
  luaunit.assertEquals({tq.get(self.g, db, key("a"))}, {nil, -1})
  watch.fault {call = "tq_global_*", status = -4}
  luaunit.assertNil(tq.tq_global_init(nil, nil))
  luaunit.assertNil(tq.tq_global_get_master(self.g))
  watch.reset()
end

-- A release cannot be made to fail: the status does, but what was released is.
function TestFaults:test_releases()
  local result = tq.smembers(self.g, db, key("s"))
  watch.fault {call = "smembers_res_free", status = -1}
  luaunit.assertEquals(tq.smembers_res_free(result), -1)
  luaunit.assertEquals(#watch.live(), 1)
  luaunit.assertEquals(tq.smembers_res_free(nil), -1)
end

function TestFaults:test_a_record_released_by_the_wrong_function()
  watch.fault {call = "smembers", status = -1, times = 1}
  local result = tq.smembers(self.g, db, key("s"))
  luaunit.assertEquals(tq.get_res_free(tq.convertPtrToGetRes(result)), -2)
  luaunit.assertEquals(#watch.live(), 2)
  luaunit.assertEquals(tq.smembers_res_free(result), 0)
end

function TestFaults:test_delay()
  tq.set(self.g, db, key("a", "1"))
  local took
  watch.trace(function(call) took = call.microseconds end)
  for _, after_call in ipairs {false, true} do
    watch.fault {call = "exists", delay = 20, times = 1, after_call = after_call}
    luaunit.assertEquals(exists(self, "a"), 1)
    luaunit.assertTrue(took >= 20000, took)
  end
  watch.fault {call = "exists", delay = 20, status = -4, times = 1}
  luaunit.assertEquals(exists(self, "a"), -4)
  luaunit.assertTrue(took >= 20000, took)
end

function TestFaults:test_the_oldest_comes_first()
  local first = watch.fault {call = "exists", status = -1, times = 1}
  local second = watch.fault {call = "*", status = -2, times = 1}
  luaunit.assertEquals({exists(self, "a"), exists(self, "a"), exists(self, "a")}, {-1, -2, 0})
  luaunit.assertEquals({first:hits(), second:hits()}, {1, 1})
end

-- A fault works on when its handle is collected, and its handle when the fault is removed.
function TestFaults:test_handles()
  watch.fault {call = "exists", status = -1}
  local fault = watch.fault {call = "exists", status = -2}
  collectgarbage()
  luaunit.assertEquals(exists(self, "a"), -1)
  watch.reset()
  luaunit.assertEquals(exists(self, "a"), 0)
  luaunit.assertEquals(fault:hits(), 0)
  luaunit.assertEquals(swig_type(fault), "tq_watch_fault *")
end

function TestFaults:test_a_scan_that_does_not_happen()
  tq.set(self.g, db, key("a", "1"))
  watch.fault {call = "scan", status = -4}
  local function callback() luaunit.fail("called") end
  luaunit.assertEquals(tq.scan(self.g, db, key("*"), 0, callback, nil), -4)
end

function TestFaults:test_faults_inside_a_scan()
  tq.set(self.g, db, key("a", "1"))
  local fault = watch.fault {call = "exists", status = -4}
  local status
  tq.scan(self.g, db, key("*"), 0, function(g)
    status = tq.exists(g, db, key("a"))
    fault:remove()
  end, nil)
  luaunit.assertEquals(status, -4)
end

-- The host kit's functions call each other; a fault is for the script's calls alone.
function TestFaults:test_calls_of_the_client_library_do_not_fail()
  local fault = watch.fault {call = "set", status = -4}
  luaunit.assertEquals(tq.set_ext(self.g, db, nil, key("a", "1")), 0)
  luaunit.assertEquals(fault:hits(), 0)
end

function TestFaults:test_wrong_arguments()
  local function call(plan) return (watch.fault(plan)) end
  local position = string.format("faults_test.lua:%d: ", debug.getinfo(call, "S").linedefined)
  local function bad(field, expected, plan)
    stage.raises(position .. "bad field '" .. field .. "' of tq_watch.fault: " .. expected, call, plan)
  end
  local function_name = "name or pattern of client functions expected, got "
  bad("call", function_name .. "nil", {status = -1})
  bad("call", function_name .. "number", {call = 5, status = -1})
  bad("call", function_name .. '"lsett"', {call = "lsett", status = -1})
  bad("call", function_name .. '"tq_mom_lset_sync"', {call = "tq_mom_lset_sync", status = -1})
  bad("db", "number of a database expected, got string", {call = "set", db = "4", status = -1})
  bad("db", "number of a database expected, got -1", {call = "set", db = -1, status = -1})
  bad("db", "number of a database expected, got number", {call = "set", db = 1.5, status = -1})
  bad("key", "pattern of keys expected, got tq_obj *", {call = "set", key = key("a"), status = -1})
  bad("after", "number of calls expected, got -1", {call = "set", after = -1, status = -1})
  bad("times", "number of calls from 1 expected, got 0", {call = "set", times = 0, status = -1})
  bad("status", "status code expected, got string", {call = "set", status = "-1"})
  bad("status", "status code expected, got 4294967296", {call = "set", status = 1 << 32})
  bad("null", "boolean expected, got number", {call = "get", null = 1})
  bad("null", "nil or false expected, as set returns a number", {call = "set", null = true})
  bad("delay", "number of milliseconds expected, got -1", {call = "set", delay = -1})
  bad("after_call", "boolean expected, got number", {call = "set", status = -1, after_call = 1})
  bad("stat", "call, db, key, after, times, status, null, delay or after_call expected", {call = "set", stat = -1})
  bad("1", "call, db, key, after, times, status, null, delay or after_call expected", {"set", status = -1})
  stage.raises("bad tq_watch.fault: status, null or delay expected, got none of them", watch.fault, {call = "set"})
  stage.raises("bad argument 1 of tq_watch.fault: table of fields, and no more, expected, got string", watch.fault, "set")
  stage.raises("bad argument 1 of fault:hits: fault expected, got tq_obj *", watch.fault {call = "set", delay = 1}.hits,
    key("a"))
  stage.raises("bad argument 1 of fault:remove: fault expected, got nil", watch.fault {call = "set", delay = 1}.remove, nil)
end

stage.finish()

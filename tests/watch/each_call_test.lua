-- tq_watch.each_call: the failure matrix of a function.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, watch, key, db = stage.tq, stage.watch, stage.key, stage.db

TestEachCall = stage.suite()

function TestEachCall:test_fails_each_call_once()
  local statuses = {}
  local report = watch.each_call(function()
    statuses[#statuses + 1] = {tq.exists(self.g, db, key("a")), tq.llen(self.g, db, key("b"))}
  end)
  luaunit.assertEquals(statuses, {{-4, 0}, {0, -4}, {0, 0}})
  luaunit.assertEquals(#report, 2)
  luaunit.assertEquals({report[1].call, report[2].call}, {"exists", "llen"})
  luaunit.assertEquals({report.errors, report[1].error, report[2].error}, {0, nil, nil})
end

function TestEachCall:test_reports_errors_and_leaks()
  local where
  local results = {}
  tq.rpush(self.g, db, key("jobs", "a"))
  local report = watch.each_call(function()
    where = stage.here(1)
    local result = tq.lrange(self.g, db, key("jobs"), 0, -1)
    results[#results + 1] = result
    if result.error_code ~= 0 then error({code = result.error_code}) end
    assert(tq.llen(self.g, db, key("jobs")) == 1, "no length")
    tq.lrange_res_free(table.remove(results))
  end)
  luaunit.assertEquals({#report, report.errors}, {3, 2})
  local read, length, release = table.unpack(report)
  luaunit.assertEquals({read.call, read.where, read.error.code, read.leaked}, {"lrange", where, -4, 1})
  luaunit.assertEquals(read.text, 'lrange(g, 4, "jobs", 0, -1)')
  luaunit.assertStrContains(length.error, "no length")
  luaunit.assertEquals({length.call, length.leaked}, {"llen", 1})
  luaunit.assertEquals({release.call, release.error, release.leaked}, {"lrange_res_free", nil, 0})
  local lines = {}
  for line in tostring(report):gmatch("[^\n]+") do lines[#lines + 1] = line end
  luaunit.assertEquals(#lines, 3)
  luaunit.assertStrContains(lines[1], where .. ': lrange(g, 4, "jobs", 0, -1): table: ')
  luaunit.assertStrContains(lines[1], "; 1 not released")
  luaunit.assertStrMatches(lines[3], ".*: lrange_res_free%(tq_mom_lrange_res_t%): ok")
  for _, result in ipairs(results) do tq.lrange_res_free(result) end
end

function TestEachCall:test_status_and_null()
  local codes = {}
  local function body()
    local result = tq.smembers(self.g, db, key("s"))
    codes[#codes + 1] = result and result.error_code or "null"
    tq.smembers_res_free(result)
  end
  watch.each_call(body, {status = -3})
  luaunit.assertEquals(codes, {-3, 0, 0})
  watch.each_call(body, {null = true})
  luaunit.assertEquals({codes[4], codes[5], codes[6]}, {"null", 0, 0})
end

function TestEachCall:test_a_body_without_calls()
  local report = watch.each_call(function() end)
  luaunit.assertEquals({#report, report.errors, tostring(report)}, {0, 0, ""})
end

-- An error that no fault brought about is the body's own.
function TestEachCall:test_a_body_that_fails_by_itself()
  local problem = {}
  local ok, raised = pcall(watch.each_call, function()
    tq.exists(self.g, db, key("a"))
    error(problem)
  end)
  luaunit.assertFalse(ok)
  luaunit.assertTrue(rawequal(raised, problem))
  luaunit.assertEquals(tq.exists(self.g, db, key("a")), 0)
end

function TestEachCall:test_faults_of_the_script_stay()
  watch.fault {call = "llen", status = -1}
  local report = watch.each_call(function()
    tq.llen(self.g, db, key("b"))
    tq.exists(self.g, db, key("a"))
  end)
  luaunit.assertEquals({#report, report[1].call}, {1, "exists"})
  luaunit.assertEquals(tq.llen(self.g, db, key("b")), -1)
end

function TestEachCall:test_wrong_arguments()
  local function body() end
  stage.raises("bad argument 1 of tq_watch.each_call: function expected, got no value", watch.each_call)
  stage.raises("bad argument 2 of tq_watch.each_call: table with status or null expected, got number", watch.each_call,
    body, -4)
  stage.raises("bad field 'status' of tq_watch.each_call: status code expected, got string", watch.each_call, body,
    {status = "x"})
  stage.raises("bad field 'null' of tq_watch.each_call: boolean expected, got number", watch.each_call, body, {null = 1})
  stage.raises("bad field 'call' of tq_watch.each_call: status or null expected", watch.each_call, body, {call = "set"})
end

stage.finish()

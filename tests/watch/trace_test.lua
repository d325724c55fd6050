-- What tells of calls: tq_watch.trace and tq_watch.summary.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, watch, key, db = stage.tq, stage.watch, stage.key, stage.db

TestTrace = stage.suite()

-- Traces body; returns the tables that the function got.
local function traced(body)
  local calls = {}
  watch.trace(function(call) calls[#calls + 1] = call end)
  body()
  watch.trace(nil)
  return calls
end

-- The lines about the calls of body, without what the clock and the file's name make of them.
local function lines(body)
  local texts = {}
  for i, call in ipairs(traced(body)) do
    texts[i] = call.text:gsub("^[^:]*:%d+: ", ""):gsub(" %[%d+ us%]", "")
  end
  return texts
end

function TestTrace:test_everything_of_a_call()
  local where
  local calls = traced(function()
    where = stage.here(1)
    tq.rpush(self.g, db, key("jobs", "a"))
    tq.lset(self.g, db, key("jobs", "b"), -1)
  end)
  luaunit.assertEquals(#calls, 2)
  local push, set = calls[1], calls[2]
  luaunit.assertEquals({push.call, push.db, push.key, push.result, push.failed, push.fault},
    {"rpush", db, "jobs", 1, false, false})
  luaunit.assertEquals(push.arguments, {'"jobs" = "a"'})
  luaunit.assertEquals(push.where, where)
  luaunit.assertEquals(string.format("%s:%d", push.source, push.line), where)
  luaunit.assertEquals(set.arguments, {'"jobs" = "b"', -1})
  luaunit.assertEquals(math.type(set.microseconds), "integer")
  luaunit.assertTrue(set.microseconds >= 0)
  luaunit.assertAlmostEquals(set.time, os.time(), 60)
end

function TestTrace:test_lines()
  local result
  luaunit.assertEquals(lines(function()
    local g = self.g
    tq.set(g, db, key("port/1", "up"))
    tq.psetex(g, db, key("port/1", "up\n\"\\" .. ("x"):rep(100)), 5000)
    tq.exists(g, db, nil)
    tq.pexpire(g, db, key("port/1"), 60000, 1.5)
    tq.zadd(g, db, {1, -2.5}, {key("z", "a"), key("z", "b")})
    tq.zcount(g, db, key("z"), -math.huge, 3)
    tq.zrank(g, db, key("no", "x"))
    result = tq.zrange(g, db, key("z"), 0, -1)
    tq.zrange_res_free(result)
    result = tq.zscore(g, db, key("z", "b"))
    tq.zscore_res_free(result)
  end), {
    'set(g, 4, "port/1" = "up") = 0',
    'psetex(g, 4, "port/1" = "up\\x0a\\"\\\\' .. ("x"):rep(59) .. '"... (105 bytes), 5000) = 0',
    'exists(g, 4, nil) = -2 (TQ_MOM_INPUT_ERR)',
    'pexpire(g, 4, "port/1", 60000, 1.5) = 1',
    'zadd(g, 4, {1, -2.5}, {"z" = "a", "z" = "b"}) = 2',
    'zcount(g, 4, "z", -inf, 3) = 2',
    'zrank(g, 4, "no" = "x") = -1 (TQ_MOM_ERR)',
    'zrange(g, 4, "z", 0, -1) = tq_mom_zrange_res_t{value={"z" = "b", "z" = "a"}, score={-2.5, 1}}',
    'zrange_res_free(tq_mom_zrange_res_t) = 0',
    'zscore(g, 4, "z" = "b") = tq_mom_zscore_res_t{score=-2.5, exist=1}',
    'zscore_res_free(tq_mom_zscore_res_t) = 0',
  })
end

function TestTrace:test_hashes_options_and_objects()
  luaunit.assertEquals(lines(function()
    local g = self.g
    local row = key("row")
    row[1], row[7] = "a", "b"
    tq.hmset(g, db, row, {1, 7})
    tq.hash_res_free(tq.hmget(g, db, key("row"), {7}))
    local option = tq.psetex_op_t()
    option.milseconds = 9000
    tq.psetex_ext(g, db, option, key("s", "v"))
    tq.get_res_free(tq.get_ext(g, db, nil, key("s")))
    local object = tq.get(g, db, key("s"))
    tq.tq_obj_free(object)
    tq.get(g, db, key("none"))
    tq.incr_res_free(tq.incr(g, db, key("n")))
    tq.incr_res_free(tq.incr(g, db, key("row")))
  end), {
    'hmset(g, 4, "row" [1] = "a" [7] = "b", {1, 7}) = 0',
    'hmget(g, 4, "row", {7}) = tq_mom_hash_res_t{value="row" [7] = "b", field_tag={7}, field_change_tag={7}}',
    'hash_res_free(tq_mom_hash_res_t) = 0',
    'psetex_ext(g, 4, {flag=0, milseconds=9000}, "s" = "v") = 0',
    'get_ext(g, 4, nil, "s") = tq_mom_get_res_t{value="s" = "v"}',
    'get_res_free(tq_mom_get_res_t) = 0',
    'get(g, 4, "s") = "s" = "v", 0',
    'tq_obj_free("s" = "v") = 0',
    'get(g, 4, "none") = nil, 0',
    'incr(g, 4, "n") = tq_mom_incr_res_t{value=1}',
    'incr_res_free(tq_mom_incr_res_t) = 0',
    'incr(g, 4, "row") = tq_mom_incr_res_t{error_code=-2 (TQ_MOM_INPUT_ERR)}',
    'incr_res_free(tq_mom_incr_res_t) = 0',
  })
end

function TestTrace:test_long_arrays_are_cut()
  local scores, members = {}, {}
  for i = 1, 10 do scores[i], members[i] = i, key("z", "m") end
  luaunit.assertStrContains(lines(function() tq.zadd(self.g, db, scores, members) end)[1],
    'zadd(g, 4, {1, 2, 3, 4, 5, 6, 7, 8, ... (10)}, {"z" = "m", ')
end

function TestTrace:test_runtimes()
  local texts = lines(function()
    local g = tq.tq_global_init(nil, nil)
    tq.tq_global_get_master(g)
    tq.tq_global_get_master(nil)
    tq.tq_global_finish(g)
    tq.tq_global_finish(nil)
  end)
  luaunit.assertEquals(texts, {
    "tq_global_init(nil, nil) = g",
    "tq_global_get_master(g) = a record of the library's",
    "tq_global_get_master(nil) = nil",
    "tq_global_finish(g) = 0",
    "tq_global_finish(nil) = -2 (TQ_MOM_INPUT_ERR)",
  })
end

-- Many functions of the host kit call each other, which is none of the script's business.
function TestTrace:test_calls_of_the_client_library_are_not_told()
  luaunit.assertEquals(#traced(function()
    tq.pexpire(self.g, db, key("k"), 1, 0)
    tq.set_ext(self.g, db, nil, key("k", "v"))
  end), 2)
end

function TestTrace:test_position_in_functions_and_coroutines()
  local where = {}
  local function push() where[#where + 1] = stage.here() tq.llen(self.g, db, key("jobs")) end
  local wrapped = coroutine.wrap(function() push() coroutine.yield() push() end)
  local created = coroutine.create(function() pcall(push) coroutine.wrap(push)() end)
  local calls = traced(function()
    push()
    wrapped()
    wrapped()
    luaunit.assertTrue(coroutine.resume(created))
  end)
  luaunit.assertEquals(#calls, 5)
  for i, call in ipairs(calls) do luaunit.assertEquals(call.where, where[i]) end
end

function TestTrace:test_calls_inside_a_scan()
  tq.set(self.g, db, key("a", "1"))
  local where
  local calls = traced(function()
    tq.scan(self.g, db, key("*"), 0, function(g) where = stage.here() tq.exists(g, db, key("a")) end, nil)
  end)
  luaunit.assertEquals({calls[1].call, calls[2].call}, {"exists", "scan"})
  luaunit.assertEquals(calls[1].where, where)
  luaunit.assertEquals(calls[2].arguments, {'"*"', 0, "function"})
end

function TestTrace:test_a_scan_that_an_error_ends()
  tq.set(self.g, db, key("a", "1"))
  local texts = lines(function()
    for count = 1, 2 do
      luaunit.assertFalse(pcall(tq.scan, self.g, db, key("*"), count, function() error("out") end, nil))
    end
    tq.exists(self.g, db, key("a"))
  end)
  luaunit.assertEquals(texts, {
    'scan(g, 4, "*", 1, function) = left by an error',
    'scan(g, 4, "*", 2, function) = left by an error',
    'exists(g, 4, "a") = 1',
  })
  luaunit.assertEquals(watch.summary().scan.failures, 2)
end

-- Calls f some protected calls further down, so that whatever is called next comes from further up in the C stack.
local function deep(levels, f, ...)
  if levels == 0 then return f(...) end
  return pcall(deep, levels - 1, f, ...)
end

-- It is told when its stack frame has gone.
function TestTrace:test_arguments_of_a_scan_that_an_error_ends()
  tq.set(self.g, db, key("a", "1"))
  local calls = traced(function()
    deep(4, tq.scan, self.g, db, key("*"), 12345, function() error("out") end, nil)
    tq.zcount(self.g, db, key("a"), 1, 2)
  end)
  luaunit.assertEquals(calls[1].arguments, {'"*"', 12345, "function"})
end

function TestTrace:test_a_scan_that_an_error_ends_inside_another()
  tq.set(self.g, db, key("a", "1"))
  luaunit.assertEquals(lines(function()
    tq.scan(self.g, db, key("*"), 0, function(g)
      luaunit.assertFalse(pcall(tq.scan, g, db, key("*"), 5, function() error("out") end, nil))
    end, nil)
  end), {
    'scan(g, 4, "*", 5, function) = left by an error',
    'scan(g, 4, "*", 0, function) = 1',
  })
end

-- The function may use the module; what it does is not told of.
function TestTrace:test_calls_of_the_function()
  local count = 0
  watch.trace(function()
    count = count + 1
    tq.llen(self.g, db, key("jobs"))
  end)
  tq.exists(self.g, db, key("a"))
  luaunit.assertEquals(count, 1)
  watch.trace()
  luaunit.assertNil(watch.summary().llen)
end

function TestTrace:test_errors_of_the_function()
  local _, text = stage.run("", [[
local tq, watch = require "tq_mom_sync", require "tq_watch"
local count = 0
local function deep() count = count + 1 error("told " .. count) end
watch.trace(function() deep() end)
for _ = 1, 2 do print(tq.tq_global_finish(nil)) end
watch.trace(function() error(("x"):rep(20000)) end)
local before = collectgarbage("count")
for _ = 1, 10 do tq.tq_global_finish(nil) end
collectgarbage()
print("more: " .. (collectgarbage("count") - before > 100 and "much" or "little"))
]])
  local expected = ""
  for count = 1, 2 do
    expected = expected .. "tq_watch%.trace: " .. stage.line(3) .. ": told " .. count ..
      "\nstack traceback:\n[^\n]*\n[^\n]*in upvalue 'deep'.*"
  end
  luaunit.assertStrMatches(text, ".*" .. expected)
  luaunit.assertEquals(text:match("more: (%a+)"), "little") -- no error stays
end

-- The last one that opened the module is in control, also when what an earlier one left is collected.
function TestTrace:test_opened_again()
  package.loaded.tq_watch = nil
  require "tq_watch"
  for _ = 1, 2 do collectgarbage() end
  local where
  local calls = traced(function() where = stage.here() tq.exists(self.g, db, key("a")) end)
  luaunit.assertEquals(calls[1].where, where)
end

-- The library looks for the position on the script's own stack.
function TestTrace:test_no_room_on_the_stack()
  luaunit.assertEquals(lines(function() stage.probe.publish_at_brim(self.g, key("k", "v")) end),
    {'publish(g, 0, "k" = "v") = 0'})
end

-- Only one thread is watched.
function TestTrace:test_another_thread()
  local status
  luaunit.assertEquals(traced(function()
    assert(stage.probe.on_thread(function() status = tq.set(self.g, db, key("a", "1")) end))
  end), {})
  luaunit.assertEquals(status, 0)
end

function TestTrace:test_file()
  local name = os.tmpname()
  watch.trace(name)
  local where = stage.here(1)
  tq.set(self.g, db, key("port/1", "up"))
  watch.trace(name, "json")
  tq.zcount(self.g, db, key("p\"1\255"), -math.huge, 2)
  watch.trace(nil)
  tq.set(self.g, db, key("port/1", "down"))
  local text = stage.read_file(name):gsub("%[%d+ us%]", "[us]"):gsub('(s"):[%d.]+', "%1:0")
  os.remove(name)
  local expected_json = '{"call":"zcount","db":4,"key":"p\\"1\\u00ff","arguments":["\\"p\\\\\\"1\\u00ff\\"","-inf",2],' ..
    '"result":0,"failed":false,"fault":false,"microseconds":0,"time":'
  luaunit.assertEquals(text:match("^[^\n]*"), where .. ': set(g, 4, "port/1" = "up") = 0 [us]')
  luaunit.assertStrContains(text, expected_json)
  luaunit.assertEquals(select(2, text:gsub("\n", "")), 2)
  luaunit.assertStrMatches(text:sub(-12), '.*"line":%d+}\n')
  stage.raises("/none/file: No such file or directory", watch.trace, "/none/file")
end

function TestTrace:test_files_are_closed()
  local name = os.tmpname()
  local _, text = stage.run("ulimit -n 200;", string.format("local name = %q", name) .. [[

local watch = require "tq_watch"
for _ = 1, 200 do watch.trace(name) end
]])
  os.remove(name)
  luaunit.assertEquals(text, "")
end

function TestTrace:test_summary()
  tq.exists(self.g, db, nil)
  tq.exists(self.g, db, key("a"))
  tq.lpop(self.g, db, key("none"))
  tq.lpop(self.g, db, nil)
  for _ = 1, 2 do tq.rpush(self.g, db, key("jobs", "a")) end
  tq.tq_obj_free((tq.lpop(self.g, db, key("jobs"))))
  local summary = watch.summary()
  local names = {}
  for name, counts in pairs(summary) do
    names[#names + 1] = name
    luaunit.assertEquals(math.type(counts.microseconds), "integer")
  end
  table.sort(names)
  luaunit.assertEquals(names, {"exists", "lpop", "rpush", "tq_obj_free"})
  luaunit.assertEquals({summary.exists.calls, summary.exists.failures}, {2, 1})
  luaunit.assertEquals({summary.lpop.calls, summary.lpop.failures}, {3, 1})
  watch.reset()
  luaunit.assertEquals(watch.summary(), {})
end

function TestTrace:test_stop()
  local g = tq.tq_global_init(nil, nil)
  watch.trace(function() luaunit.fail("told of a call") end)
  watch.stop()
  tq.exists(self.g, db, key("a"))
  luaunit.assertEquals({watch.summary(), watch.live()}, {{}, {}})
  tq.tq_global_finish(g)
  watch.start()
  tq.exists(self.g, db, key("a"))
  luaunit.assertEquals(watch.summary().exists.calls, 1)
end

stage.finish()

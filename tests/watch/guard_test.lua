-- The guard stops each use of what was released, with three lines of the script.
local luaunit = require "luaunit"
local stage = require "stage"

TestGuard = {}

-- Where the memory is checked from outside, tests that end a process say nothing more, and take their time.
local is_checked = os.getenv("TQ_LUA"):find("valgrind", 1, true)

local script = [[
local tq, tq_obj, watch = require "tq_mom_sync", require "tq_obj", require "tq_watch"
local g, db, key = tq.tq_global_init(nil, nil), 4, tq_obj.new
tq.client_connect(g, 0)
tq.rpush(g, db, key("jobs", "a"))
]]
local lines = select(2, script:gsub("\n", ""))

-- The chunk's last line is stopped: `what` is used by `user`, and was got and released in the lines given.
local function stops(what, user, got, released, chunk, words)
  if is_checked then luaunit.skip("a process that ends is not checked") end
  local status, text = stage.run("TQ_WATCH=" .. (words or "guard"), script .. chunk .. "\nprint 'not stopped'")
  local used = select(2, chunk:gsub("\n", "")) + 1
  local function line(number) return stage.line(lines + number) end
  luaunit.assertStrContains(text, table.concat {
    "libtq_mom_watch: guard: a ", what, " is used after its release\n",
    "  used      ", line(used), ": ", user, "\n",
    "  released  ", line(released[1]), ": ", released[2] or "", "\n",
    "  got       ", line(got[1]), ": ", got[2], "\n",
  })
  luaunit.assertNotStrContains(text, "not stopped")
  luaunit.assertNotEquals(status, 0)
end

local list = "tq_mom_lrange_res_t"
local read = [[
local result = tq.lrange(g, db, key("jobs"), 0, -1)
local element = result.value_array[1]
tq.lrange_res_free(result)
]]

function TestGuard:test_a_field_is_read()
  stops(list, "a field", {1, "lrange"}, {3}, read .. "local code = result.error_code")
  stops(list, "a field", {1, "lrange"}, {3}, "watch.guard(true) " .. read .. "local code = result.error_code", "")
end

function TestGuard:test_a_field_is_written()
  stops(list, "a field", {1, "lrange"}, {3}, read .. "result.error_code = 5")
end

function TestGuard:test_an_array_is_read()
  stops(list, "a field", {1, "lrange"}, {3}, read .. "local values = result.value_array")
end

function TestGuard:test_a_result_is_released_twice()
  stops(list, "lrange_res_free", {1, "lrange"}, {3}, read .. "tq.lrange_res_free(result)")
end

function TestGuard:test_an_object_of_a_result_is_used()
  stops(list, "set", {1, "lrange"}, {3}, read .. "tq.set(g, db, element)")
  stops(list, "zadd", {1, "lrange"}, {3}, read .. 'tq.zadd(g, db, {1, 2}, {key("z", "m"), element})')
  stops(list, "tq_obj_free", {1, "lrange"}, {3}, read .. "tq.tq_obj_free(element)")
  stops(list, "tq_obj", {1, "lrange"}, {3}, read .. "tq_obj.from(element)")
end

function TestGuard:test_other_results()
  stops("tq_mom_hash_res_t", "a field", {2, "hmget"}, {3}, [[
local row = key("row") row[7] = "b" tq.hmset(g, db, row, {7})
local result = tq.hmget(g, db, key("row"), {7})
tq.hash_res_free(result)
local tags = result.field_tag]])
  stops("tq_mom_get_res_t", "tq_obj", {2, "get_ext"}, {4}, [[
tq.set(g, db, key("a", "1"))
local result = tq.get_ext(g, db, nil, key("a"))
local object = result.value
tq.get_res_free(result)
local text = object.value]])
  stops("tq_mom_zscore_res_t", "a field", {1, "zscore"}, {2}, [[
local result = tq.zscore(g, db, key("z", "m"))
tq.zscore_res_free(result)
local score = result.score]])
end

local popped = [[
local object = tq.lpop(g, db, key("jobs"))
tq.tq_obj_free(object)
]]

function TestGuard:test_a_popped_object_is_used()
  stops("tq_obj", "tq_obj", {1, "lpop"}, {2}, popped .. "local text = object.value")
  stops("tq_obj", "lpush", {1, "lpop"}, {2}, popped .. "tq.lpush(g, db, object)")
  stops("tq_obj", "tq_obj_free", {1, "lpop"}, {2}, popped .. "tq.tq_obj_free(object)")
end

-- One is remembered: of the other the client library can tell only that it is none of its objects.
function TestGuard:test_how_many_are_remembered()
  stops("tq_obj", "lpush", {3, "lpop"}, {4}, [[
tq.rpush(g, db, key("jobs", "b"))
local forgotten = tq.lpop(g, db, key("jobs"))
local object = tq.lpop(g, db, key("jobs"))
tq.tq_obj_free(forgotten) tq.tq_obj_free(object)
assert(tq.lpush(g, db, forgotten) == -2)
tq.lpush(g, db, object)]], "guard:1")
end

function TestGuard:test_a_runtime_is_used()
  stops("tq_global_t", "exists", {1, "tq_global_init"}, {2}, [[
local h = tq.tq_global_init(nil, nil)
tq.tq_global_finish(h)
tq.exists(h, db, key("a"))]])
end

function TestGuard:test_a_message_is_kept()
  stops("message", "a field", {3, "scan"}, {3, "the callback returned"}, [[
tq.set(g, db, key("a", "1"))
local kept
tq.scan(g, db, key("a"), 0, function(_, message) kept = tq.convertPtrToScanAllMsg(message) end, nil)
local text = kept.key]])
  stops("message", "a field", {3, "scan"}, {3, "the callback returned"}, [[
tq.set(g, db, key("a", "1"))
local kept
pcall(tq.scan, g, db, key("a"), 0, function(_, message) kept = tq.convertPtrToScanAllMsg(message) error() end, nil)
tq.exists(g, db, nil)
local text = kept.key]])
end

function TestGuard:test_a_record_of_a_fault()
  stops("tq_mom_smembers_res_t", "a field", {2, "smembers"}, {3}, [[
watch.fault {call = "smembers", status = -4}
local result = tq.smembers(g, db, key("s"))
tq.smembers_res_free(result)
local code = result.error_code]])
end

-- Without misuse the script sees no difference.
function TestGuard:test_what_is_right_stays_right()
  local status, text = stage.run("TQ_WATCH=guard:100,leaks:3", script .. [[
local function assert_equal(a, b) if a ~= b then error(("%s is not %s"):format(a, b), 2) end end
for _ = 1, 300 do
  local result = tq.lrange(g, db, key("jobs"), 0, -1)
  assert_equal(tq_obj.from(result.value_array[1]).value, "a")
  result.error_code = 7
  assert_equal(result.error_code, 7)
  assert_equal(tq.get_res_free(tq.convertPtrToGetRes(result)), -2)
  assert_equal(tq.tq_obj_free(result.value_array[1]), -2)
  assert_equal(tq.lrange_res_free(result), 0)
end
assert_equal(tq.zadd(g, db, {1.5, 2.5}, {key("z", "a"), key("z", "b")}), 2)
local range = tq.zrange(g, db, key("z"), 0, -1)
assert_equal(range.score[2], 2.5)
assert_equal(tq_obj.from(range.value[1]).value, "a")
assert_equal(tq.zrange_res_free(range), 0)
local row = key("row") row[1], row[7] = "x", "y"
tq.hmset(g, db, row, {1, 7})
local hash = tq.hgetall(g, db, key("row"))
assert_equal(hash.value[7], "y")
assert_equal(#hash.field_tag, 2)
assert_equal(tq.hash_res_free(hash), 0)
local seen = {}
tq.set(g, db, key("name", "bytes"))
tq.scan(g, db, key("name"), 0, function(_, m, extra)
  local message = tq.convertPtrToScanAllMsg(m)
  seen = {message.key, tq_obj.bytes(message.value, message.vlen), extra}
  return 1
end, "extra")
assert_equal(table.concat(seen, " "), "name bytes extra")
local own = key("own", "v")
tq.set(g, db, own)
assert_equal(tq.tq_obj_free(own), 0) -- Lua collects its handle later
own = nil
collectgarbage()
local object = tq.lpop(g, db, key("jobs"))
assert_equal(object.value, "a")
assert_equal(tq.tq_obj_free(object), 0)
for _ = 1, 3 do
  assert_equal(tq.tq_global_finish(g), 0)
  g = tq.tq_global_init(nil, nil)
  assert_equal(tq.client_connect(g, 0), 0)
end
assert_equal(tq.tq_global_finish(g), 0)
watch.assert_released()
]])
  luaunit.assertEquals({status, text}, {0, ""})
end

-- A fault of memory that is none of the guard's is what it was.
function TestGuard:test_other_faults_of_memory()
  local status, text = stage.run("TQ_WATCH=guard", script .. [[
tq.lrange_res_free(tq.lrange(g, db, key("jobs"), 0, -1))
os.execute("kill -SEGV $PPID")
]])
  luaunit.assertNotStrContains(text, "guard:")
  luaunit.assertNotEquals(status, 0)
end

function TestGuard:test_wrong_arguments()
  stage.raises("bad argument 1 of tq_watch.guard: boolean expected, got nil", stage.watch.guard, nil)
end

stage.finish()

-- Each allocation fails in turn under tq_kit and tq_watch: Lua's, and those of the libraries themselves. A function then
-- raises the error of a lack of memory or gets by, nothing is left over, and the next call works.
local luaunit = require "luaunit"

for _, name in ipairs {"libtq_mom_watch", "libtq_mom_impl"} do
  assert(package.loadlib(assert(package.searchpath(name, package.cpath)), "*"))
end
local recorder = require "recorder" -- for its tools only: the host kit's functions come first
local tq, tq_obj = require "tq_mom_sync", require "tq_obj"
local tq_kit, watch, probe = require "tq_kit", require "tq_watch", require "kit_probe"

-- Messages that tq_kit makes are released by the module.
for _, name in ipairs {"tq_kit.so", "libtq_mom_watch.so", "tq_mom_sync.so"} do assert(recorder.watch(name) > 0) end

local kMost = 3000 -- allocations of one call
local key, db = tq_obj.new, 4
local g, kept

local function nothing() end

-- What is there before and after each call.
local function settled()
  kept = nil
  watch.trace(nil)
  watch.reset()
  collectgarbage()
  collectgarbage()
  local results, objects = probe.live()
  return {blocks = recorder.live_blocks(), results = results, objects = objects, live = #watch.live()}
end

local contents = {
  text = "bytes", list = {elements = {"a", "b"}}, set = {members = {"a", "b"}}, sorted = {scores = {a = 1, b = 2}},
  hash = {fields = {[1] = "one", [7] = ("x"):rep(100)}, field_remaining = {[7] = 5000}, remaining = 60000},
}

-- Calls of the client library, which must all be released whatever fails.
local function use_the_store()
  tq.lrange_res_free((tq.lrange(g, db, key "list", 0, -1)))
  tq.tq_obj_free((tq.get(g, db, key "text")))
  tq.zadd(g, db, {1, 2}, {key("sorted", "a"), key("sorted", "b")})
end

-- The functions; what they raise with memory is in `expected`.
local calls = {
  freeze = function() tq_kit.freeze(g) end,
  advance = function()
    tq_kit.freeze(g)
    tq_kit.advance(g, 1)
  end,
  thaw = function() tq_kit.thaw(g) end,
  read_only = function() tq_kit.read_only(g, db, false) end,
  clear = function() tq_kit.clear(g, db + 1) end,
  inspect = function() kept = {tq_kit.inspect(g, db, "hash")} end,
  last_error = function() kept = tq_kit.last_error(g) end,
  poll = function() tq_kit.poll(g, 0) end,
  dump = function() kept = tq_kit.dump(g, db) end,
  load = function() tq_kit.load(g, db, contents) end,
  show = function() kept = tq_kit.show {contents, key("k", "v"), tq.get_op_t(), g} end,
  printer = function() tq_kit.printer(nothing)(contents) end,
  subscribe = function() kept = tq_kit.subscribe(g, db, "k*", function() end):cancel() end,
  wrong_argument = function() tq_kit.inspect(g, db, {}) end,
  wrong_table = function() tq_kit.load(g, db, {k = {fields = {[7] = 5}}}) end,

  trace = function()
    watch.trace(function(call) kept = call end)
    use_the_store()
  end,
  trace_to_a_file = function()
    watch.trace("/dev/null", "json")
    use_the_store()
  end,
  summary = function() kept = watch.summary() end,
  live = function() kept = watch.live() end,
  assert_released = function() watch.assert_released() end,
  fault = function()
    kept = {watch.fault {call = "g[e]t", key = "te*", db = db, status = -4, times = 1}}
    use_the_store()
  end,
  each_call = function() kept = tostring(watch.each_call(use_the_store)) end,
  wrong_field = function() watch.fault {call = "get", stat = -4} end,
}
local expected = {
  wrong_argument = "key expected, got table", wrong_table = "k.fields[7]: string expected",
  assert_released = "not everything is released", wrong_field = "bad field 'stat'",
}

-- Calls f with each request failing. fail(n, f) returns whether it came to the nth, then as pcall.
local function sweep(name, fail)
  local f, usual = calls[name], expected[name]
  tq_kit.load(g, db, contents)
  pcall(f) -- what is made once and stays
  for n = 1, kMost do
    local before = settled()
    local failed, ok, message = fail(n, f)
    luaunit.assertEquals(settled(), before)
    luaunit.assertEquals(recorder.stray_frees(), 0)
    if not ok then
      local text = tostring(message)
      luaunit.assertTrue(text:find("memory", 1, true) ~= nil or usual and text:find(usual, 1, true) ~= nil, text)
    end
    if not failed then
      luaunit.assertEquals(ok, usual == nil, message)
      return n - 1
    end
  end
  luaunit.fail("the allocations have no end")
end

local function without_native_memory(n, f, ...)
  recorder.reset()
  recorder.fail_request(n)
  local ok, message = pcall(f, ...)
  local failed = #recorder.requests() >= n
  recorder.fail_request(0)
  recorder.reset()
  return failed, ok, message
end

TestCompanionAllocations = {}

function TestCompanionAllocations:setUp()
  g = assert(tq.tq_global_init(nil, nil))
  luaunit.assertEquals(tq.client_connect(g, 0), 0)
end

function TestCompanionAllocations:tearDown()
  tq.tq_global_finish(g)
  luaunit.assertEquals({settled().results, settled().objects}, {0, 0})
end

for name in pairs(calls) do
  TestCompanionAllocations["test_" .. name] = function()
    local requests
    -- Some tell on the standard error stream that there is no memory.
    local _, ok, message = recorder.stderr_of(function()
      requests = sweep(name, recorder.without_memory)
      sweep(name, recorder.short_of_memory)
      requests = requests + sweep(name, without_native_memory)
    end)
    luaunit.assertTrue(ok, message)
  end
end

-- A subscriber that there is no memory for is told of, and the publisher goes on.
function TestCompanionAllocations:test_delivery()
  local got = 0
  tq_kit.subscribe(g, db, "k*", function(_, _, text) got = got + #text end)
  local object = key("k", ("x"):rep(100))
  for _, fail in ipairs {recorder.without_memory, recorder.short_of_memory, without_native_memory} do
    for n = 1, kMost do
      local before, failed, ok, status = settled()
      got = 0
      local text = recorder.stderr_of(function() failed, ok, status = fail(n, tq.publish, g, db, object) end)
      tq.llen(g, db, object)
      if ok then
        luaunit.assertEquals(status, 1)
        luaunit.assertTrue(got == 100 or text ~= "")
      else -- it was not called
        luaunit.assertEquals({status, got, watch.summary().publish}, {"not enough memory", 0, nil})
      end
      luaunit.assertEquals(settled(), before)
      if not failed then break end
      luaunit.assertTrue(n < kMost)
    end
    luaunit.assertEquals(got, 100)
  end
end

os.exit(luaunit.LuaUnit.run(), true)

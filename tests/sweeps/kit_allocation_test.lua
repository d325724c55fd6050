-- Each allocation of the host kit's library fails in turn under the module and tq_obj: a command says so and leaves the
-- store as it was, tq_obj raises an error, and nothing is left over.
local function load_globally(name)
  return assert(package.loadlib(assert(package.searchpath(name, package.cpath)), "*"))
end

load_globally "failing_new" -- before the library
load_globally "libtq_mom_impl"
local failing_new = require "failing_new"
local luaunit = require "luaunit"
local catalog = require "catalog"
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local tq_kit = require "tq_kit"
local probe = require "kit_probe"

local kMost = 1000 -- allocations of one call
local kNumber = 1 -- each whole number that a command takes, the database too
local kLong = string.rep("x", 100) -- beyond what a string holds in itself
local kKeys = {"absent", "hash", "list", "set", "text", "zset"}
local release_of = {}
for _, command in ipairs(catalog.commands) do
  if command.name:find("_res_free$") then release_of[command.arguments[1].class.name] = command.name end
end

local g

local function key(name, value)
  local object = tq_obj.new(name .. kLong, (value or "1") .. kLong)
  object[1], object[2] = "first" .. kLong, "second" .. kLong
  return object
end

local function connect()
  g = assert(tq.tq_global_init(nil, nil))
  tq.client_connect(g, 0)
  tq.set(g, kNumber, key "text")
  tq.set(g, kNumber, tq_obj.new("number" .. kLong, "12"))
  tq.hmset(g, kNumber, key "hash", {1})
  tq.rpush(g, kNumber, key("list", "a"))
  tq.rpush(g, kNumber, key("list", "b"))
  tq.sadd(g, kNumber, key("set", "a"))
  tq.zadd(g, kNumber, {1, 2}, {key("zset", "a"), key("zset", "b")})
  probe.subscribe(g, kNumber, "*", tq.tq_mom_pubsub_msg_t(), function() end)
end

-- All that is in the store, as text.
local function contents()
  local found = {}
  local function note(...) found[#found + 1] = table.concat({...}, " ") end
  for _, name in ipairs {"text", "number"} do
    local object = tq.get(g, kNumber, key(name))
    note(name, object and object.value or "nothing")
    tq.tq_obj_free(object)
  end
  local hash = tq.hgetall(g, kNumber, key "hash")
  for tag, bytes in pairs(hash.value:fields()) do note("hash", tag, bytes) end
  tq.hash_res_free(hash)
  for _, row in ipairs {
    {"list", tq.lrange, tq.lrange_res_free, "value_array", 0, -1},
    {"set", tq.smembers, tq.smembers_res_free, "value_array"},
    {"zset", tq.zrange, tq.zrange_res_free, "value", 0, -1},
  } do
    local result = row[2](g, kNumber, key(row[1]), table.unpack(row, 5))
    for _, element in ipairs(result[row[4]]) do note(row[1], tq_obj.from(element).value) end
    row[3](result)
  end
  for _, name in ipairs(kKeys) do note(name, string.format("%g", tq.exists(g, kNumber, key(name)))) end
  return table.concat(found, "\n")
end

local arguments = {
  int = function() return kNumber end,
  unsigned = function() return kNumber end,
  size_t = function() return kNumber end,
  double = function() return 0 end,
  timeout = function() return 1 end,
  fields = function() return {1, 2} end,
  scores = function() return {5, 6} end,
  members = function(name) return {key(name, "b"), key(name, "c")} end,
  op = function(_, entry) return tq[entry.class.name]() end,
  key = function(name) return key(name, "a") end,
  name = function() return nil end,
  callback = function() return function() return 0 end end,
  any = function() return "argument" end,
  global = function() return g end,
}

-- The status of what a command has returned, which is released.
local function status_of(command, value, out)
  local result = command.results[1]
  if result.kind == "status" then return value end
  if result.kind == "object" then
    tq.tq_obj_free(value)
    return out
  end
  if value == nil then return tq.TQ_MOM_MALLOC_ERR end
  local status = value.error_code
  tq[release_of[result.class.name]](value)
  return status
end

local function nothing_live()
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals({probe.live()}, {0, 0})
end

local function arguments_of(command, name)
  local list = {n = #command.arguments}
  for i, entry in ipairs(command.arguments) do list[i] = arguments[entry.kind](name, entry) end
  return list
end

-- What the command gives where there is memory.
local function usual_status(command, name)
  connect()
  local list = arguments_of(command, name)
  local status = status_of(command, tq[command.name](table.unpack(list, 1, list.n)))
  tq.tq_global_finish(g)
  return status
end

local function sweep(command, name)
  local usual = usual_status(command, name)
  for _, once in ipairs {true, false} do
    for n = 1, kMost do
      connect()
      local list = arguments_of(command, name)
      local before = contents()
      local failed, ok, value, out = failing_new.with(n, once, tq[command.name], table.unpack(list, 1, list.n))
      luaunit.assertTrue(ok, value)
      local status = status_of(command, value, out)
      -- What is only an aid, as room made in advance, may fail without harm.
      if status ~= usual then
        luaunit.assertTrue(failed)
        luaunit.assertEquals(status, tq.TQ_MOM_MALLOC_ERR, command.name)
        luaunit.assertEquals(contents(), before, command.name)
      end
      tq.tq_global_finish(g)
      list, value = nil, nil -- luacheck: ignore
      if not failed then break end
      luaunit.assertTrue(n < kMost)
    end
  end
  nothing_live()
end

TestKitAllocations = {}

for _, command in ipairs(catalog.commands) do
  local first = command.arguments[1]
  if first and first.kind == "global" and #command.arguments > 2 then
    TestKitAllocations["test_" .. command.name] = function()
      for _, name in ipairs(kKeys) do sweep(command, name) end
    end
  end
end

-- Returns how many allocations there were to fail.
local function object_sweep(make, f)
  for n = 1, kMost do
    local object = make()
    local failed, ok, message = failing_new.with(n, true, f, object)
    if not ok then luaunit.assertStrContains(message, "memory") end
    object, message = nil, nil -- luacheck: ignore
    nothing_live()
    if not failed then return n - 1 end
  end
end

function TestKitAllocations:test_objects()
  for _, f in ipairs {
    function() return tq_obj.new("key" .. kLong, "value" .. kLong) end,
    function(object) object.key = "other" .. kLong .. kLong end,
    function(object) object.value = "other" .. kLong .. kLong end,
    function(object) object[7] = "field" .. kLong end,
  } do
    luaunit.assertTrue(object_sweep(function() return key "text" end, f) > 0)
  end
end

-- What tq_kit does with the store fails as a whole, or can be repeated.
function TestKitAllocations:test_tq_kit()
  local fixture = {
    list = {kind = "list", elements = {"a" .. kLong, "b" .. kLong}}, text = {kind = "string", value = kLong},
    hash = {kind = "hash", fields = {[1] = kLong}}, set = {kind = "set", members = {kLong}},
    zset = {kind = "sorted_set", scores = {[kLong] = 1}},
  }
  local other = kNumber + 1
  for name, call in pairs {
    dump = function() return tq_kit.dump(g, kNumber) end,
    subscribe = function() tq_kit.subscribe(g, kNumber, kLong, print) end,
    load = function() tq_kit.load(g, other, fixture) end,
    clear = function()
      tq_kit.load(g, other, fixture)
      tq_kit.clear(g, other)
    end,
  } do
    for n = 1, kMost do
      connect()
      local before, all = contents(), tq_kit.dump(g, kNumber)
      local failed, ok, message = failing_new.with(n, true, call)
      luaunit.assertEquals(contents(), before)
      if ok and name == "dump" then luaunit.assertEquals(message, all) end
      if not ok then
        luaunit.assertTrue(failed)
        luaunit.assertStrContains(message, "memory")
        luaunit.assertEquals(tq.publish(g, kNumber, tq_obj.new(kLong, "v")), 1, name) -- the test's own subscriber
      end
      tq_kit.load(g, other, fixture)
      luaunit.assertEquals(tq_kit.dump(g, other), fixture)
      luaunit.assertEquals(tq_kit.clear(g, other), 5)
      tq.tq_global_finish(g)
      nothing_live()
      if not failed then
        luaunit.assertTrue(ok and n > 1, message)
        break
      end
    end
  end
end

function TestKitAllocations:test_runtimes()
  for n = 1, kMost do
    local failed, ok, made = failing_new.with(n, true, tq.tq_global_init, nil, nil)
    luaunit.assertTrue(ok)
    if made ~= nil then
      luaunit.assertEquals(tq.tq_global_finish(made), 0.0)
    else
      luaunit.assertTrue(failed)
    end
    if not failed then break end
  end
  nothing_live()
end

os.exit(luaunit.LuaUnit.run(), true)

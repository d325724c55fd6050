local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db, probe = kit.tq, kit.key, kit.number, kit.db, kit.probe

TestPublish = kit.suite()

-- A subscription whose messages end up in a table.
function TestPublish:subscribe(pattern, database)
  local message = tq.tq_mom_pubsub_msg_t()
  local got = {}
  local id, subscription = probe.subscribe(self.g, database or db, pattern, message, function(m)
    got[#got + 1] = {
      db = m.db, db_id = m.db_id, key = m.key, field = m.field, cmd = m.cmd, flag = m.flag, error = m.error,
      length = m.length, value = kit.tq_obj.bytes(m.value, m.length),
    }
  end)
  luaunit.assertTrue(id > 0)
  return got, function() luaunit.assertEquals(probe.unsubscribe(self.g, id, subscription), 0) end
end

function TestPublish:testWithoutSubscribers()
  number(0, tq.publish(self.g, db, key("topic", "v")))
  number(0, tq.publish_ext(self.g, db, tq.publish_op_t(), key("topic", "v")))
  number(0, tq.publish_ext(self.g, db, nil, key("topic", "v")))
  number(0, tq.exists(self.g, db, key("topic"))) -- nothing is stored
end

function TestPublish:testMessage()
  local got, stop = self:subscribe("port/*")
  number(1, tq.publish(self.g, db, key("port/1", "up\0!")))
  number(0, tq.publish(self.g, db, key("fan/1", "on")))
  number(0, tq.publish(self.g, kit.other_db, key("port/1", "up")))
  number(1, tq.publish_ext(self.g, db, tq.publish_op_t(), key("port/2", "")))
  luaunit.assertEquals(got, {
    {db = db, db_id = db, key = "port/1", field = "", cmd = tq.TQ_MOM_PUBLISH, flag = 0, error = 0, length = 4,
     value = "up\0!"},
    {db = db, db_id = db, key = "port/2", field = "", cmd = tq.TQ_MOM_PUBLISH, flag = 0, error = 0, length = 0,
     value = ""},
  })
  stop()
  number(0, tq.publish(self.g, db, key("port/1", "down")))
  luaunit.assertEquals(#got, 2)
end

function TestPublish:testSeveralSubscribers()
  local all, stop_all = self:subscribe("*")
  local one, stop_one = self:subscribe("a")
  number(2, tq.publish(self.g, db, key("a", "1")))
  number(1, tq.publish(self.g, db, key("b", "2")))
  luaunit.assertEquals({#all, #one}, {2, 1})
  stop_one()
  number(1, tq.publish(self.g, db, key("a", "3")))
  luaunit.assertEquals({#all, #one}, {3, 1})
  stop_all()
end

-- A subscriber may use the store, publish again, and fail.
function TestPublish:testSubscriberUsesTheStore()
  local g = self.g
  local message = tq.tq_mom_pubsub_msg_t()
  local id, subscription = probe.subscribe(g, db, "count", message, function(m)
    local value = kit.tq_obj.bytes(m.value, m.length)
    number(0, tq.set(g, db, key("last", value)))
    if value == "again" then number(1, tq.publish(g, db, key("count", "inner"))) end
    if value == "fail" then error("subscriber failed", 0) end
  end)
  number(1, tq.publish(g, db, key("count", "again")))
  luaunit.assertEquals(kit.stored(g, "last"), "inner")
  luaunit.assertErrorMsgEquals("subscriber failed", tq.publish, g, db, key("count", "fail"))
  number(1, tq.publish(g, db, key("count", "after")))
  luaunit.assertEquals(kit.stored(g, "last"), "after")
  luaunit.assertEquals(probe.unsubscribe(g, id, subscription), 0)
end

function TestPublish:testInputErrors()
  number(kit.INPUT_ERR, tq.publish(self.g, db, nil))
  number(kit.INPUT_ERR, tq.publish(self.g, db, "topic"))
  number(kit.INPUT_ERR, tq.publish(self.g, db, key("topic")))
  number(kit.INPUT_ERR, tq.publish(self.g, 38, key("topic", "v")))
end

TestScan = kit.suite()

local function fill(g, names)
  for _, name in ipairs(names) do number(0, tq.set(g, db, key(name, "value of " .. name))) end
end

-- The names that a scan of the pattern calls back with. In this process they come in the order of their bytes.
local function scanned(g, pattern, count)
  local names = {}
  local delivered = tq.scan(g, db, key(pattern), count, function(_, message)
    names[#names + 1] = tq.convertPtrToScanAllMsg(message).key
  end, nil)
  number(#names, delivered)
  if kit.server then table.sort(names) end
  return names
end

function TestScan:testPatterns()
  local g = self.g
  fill(g, {"port/1", "port/2", "port/10", "fan", "fa*n"})
  number(0, tq.set(g, kit.other_db, key("port/3", "elsewhere")))
  luaunit.assertEquals(scanned(g, "*", 0), {"fa*n", "fan", "port/1", "port/10", "port/2"})
  luaunit.assertEquals(scanned(g, "port/?", 0), {"port/1", "port/2"})
  luaunit.assertEquals(scanned(g, "port/[13]*", 0), {"port/1", "port/10"})
  luaunit.assertEquals(scanned(g, "fa\\*n", 0), {"fa*n"})
  luaunit.assertEquals(scanned(g, "fan", 0), {"fan"})
  luaunit.assertEquals(scanned(g, "nobody*", 0), {})
end

function TestScan:testCallbackArguments()
  local g = self.g
  fill(g, {"one"})
  local argument = {}
  local calls = 0
  number(1, tq.scan(g, db, key("*"), 10, function(store, message, given, ...)
    calls = calls + 1
    luaunit.assertEquals(select("#", ...), 0)
    luaunit.assertEquals(swig_type(store), swig_type(g))
    luaunit.assertTrue(store == g)
    luaunit.assertEquals(swig_type(message),
      "struct tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *")
    luaunit.assertTrue(rawequal(given, argument))
    local scan_message = tq.convertPtrToScanAllMsg(message)
    luaunit.assertEquals({scan_message.key, scan_message.vlen}, {"one", 12})
    luaunit.assertEquals(swig_type(scan_message.value), "unsigned char *|uint_least8_t *|uint_fast8_t *|uint8_t *")
    luaunit.assertEquals(kit.tq_obj.bytes(scan_message.value, scan_message.vlen), "value of one")
  end, argument))
  luaunit.assertEquals(calls, 1)
end

-- Only strings bring their value along.
function TestScan:testValues()
  local g = self.g
  number(0, tq.set(g, db, key("bytes", "a\0b")))
  number(0, tq.set(g, db, key("empty", "")))
  number(1, tq.rpush(g, db, key("list", "x")))
  number(1, tq.sadd(g, db, key("set", "x")))
  number(1, tq.zadd(g, db, {1}, {key("sorted", "x")}))
  local hash = key("hash")
  hash[1] = "x"
  number(0, tq.hmset(g, db, hash, {1}))
  local values = {}
  number(6, tq.scan(g, db, key("*"), 0, function(_, message)
    local element = tq.convertPtrToScanAllMsg(message)
    values[element.key] = kit.tq_obj.bytes(element.value, element.vlen)
  end, nil))
  luaunit.assertEquals(values, {bytes = "a\0b", empty = "", list = "", set = "", sorted = "", hash = ""})
end

function TestScan:testLimit()
  local g = self.g
  fill(g, {"a", "b", "c"})
  luaunit.assertEquals(#scanned(g, "*", 2), 2)
  luaunit.assertEquals(#scanned(g, "*", 2.9), 2)
  luaunit.assertEquals(#scanned(g, "*", 3), 3)
  luaunit.assertEquals(#scanned(g, "*", 4294967296), 3)
  luaunit.assertEquals(#scanned(g, "*", "1"), 1)
end

function TestScan:testWithoutCallback()
  local g = self.g
  fill(g, {"a", "b", "c"})
  number(3, tq.scan(g, db, key("*"), 0, nil, nil))
  number(2, tq.scan(g, db, key("*"), 2, nil, "ignored"))
  number(1, tq.scan(g, db, key("a"), 10, nil, nil))
end

-- A nonzero integer stops the scan; what is no integer counts as 0.
function TestScan:testStop()
  local g = self.g
  fill(g, {"a", "b", "c"})
  for _, case in ipairs({{1, 1}, {-1, 1}, {0, 3}, {1.0, 3}, {true, 3}, {"1", 3}, {nil, 3}, {4294967296, 3}}) do
    local calls = 0
    number(case[2], tq.scan(g, db, key("*"), 0, function()
      calls = calls + 1
      return case[1]
    end, nil))
    luaunit.assertEquals(calls, case[2])
  end
end

-- The callback may delete what comes next, and itself, and write.
function TestScan:testCallbackDeletes()
  local g = self.g
  fill(g, {"a", "b", "c", "d"})
  local seen = {}
  tq.scan(g, db, key("*"), 0, function(_, message)
    local element = tq.convertPtrToScanAllMsg(message)
    local name = element.key
    seen[#seen + 1] = name
    for _, other in ipairs({"a", "b", "c", "d"}) do tq.del(g, db, key(other)) end
    luaunit.assertEquals(element.key, name) -- the message stays
    luaunit.assertEquals(kit.tq_obj.bytes(element.value, element.vlen), "value of " .. name)
  end, nil)
  luaunit.assertEquals(#seen, 1)
  number(0, tq.scan(g, db, key("*"), 0, nil, nil))
end

function TestScan:testCallbackWrites()
  local g = self.g
  fill(g, {"a", "b", "c"})
  local calls = 0
  local visited = tq.scan(g, db, key("*"), 0, function(_, message)
    calls = calls + 1
    number(0, tq.set(g, db, key("new" .. calls, "v")))
    number(0, tq.set(g, db, key(tq.convertPtrToScanAllMsg(message).key, "changed")))
  end, nil)
  number(calls, visited)
  -- A server may visit keys that the callback adds.
  if kit.server then luaunit.assertTrue(calls >= 3) else luaunit.assertEquals(calls, 3) end
  luaunit.assertEquals(kit.stored(g, "a"), "changed")
  number(3 + calls, tq.scan(g, db, key("*"), 0, nil, nil))
end

function TestScan:testNested()
  local g = self.g
  fill(g, {"a", "b"})
  local pairs_seen = {}
  tq.scan(g, db, key("*"), 0, function(_, outer, argument)
    local outer_key = tq.convertPtrToScanAllMsg(outer).key
    luaunit.assertEquals(argument, "outer")
    tq.scan(g, db, key("*"), 0, function(_, inner, inner_argument)
      luaunit.assertEquals(inner_argument, "inner")
      pairs_seen[#pairs_seen + 1] = outer_key .. tq.convertPtrToScanAllMsg(inner).key
    end, "inner")
    luaunit.assertEquals(tq.convertPtrToScanAllMsg(outer).key, outer_key)
  end, "outer")
  table.sort(pairs_seen)
  luaunit.assertEquals(pairs_seen, {"aa", "ab", "ba", "bb"})
end

function TestScan:testReferencesAreReleased()
  local g = self.g
  fill(g, {"a"})
  local weak = setmetatable({}, {__mode = "k"})
  do
    local argument = {}
    local callback = function() return weak end
    weak[argument], weak[callback] = true, true
    tq.scan(g, db, key("*"), 0, callback, argument)
  end
  collectgarbage()
  collectgarbage()
  luaunit.assertNil(next(weak))
end

-- In a coroutine the callback runs in that coroutine.
function TestScan:testInACoroutine()
  local g = self.g
  fill(g, {"a"})
  local thread
  thread = coroutine.create(function()
    return tq.scan(g, db, key("*"), 0, function() luaunit.assertEquals(coroutine.running(), thread) end, nil)
  end)
  local ok, delivered = coroutine.resume(thread)
  luaunit.assertTrue(ok, delivered)
  number(1, delivered)
end

function TestScan:testManyElements()
  local g = self.g
  local object = key("key", "v")
  for i = 1, 3000 do
    object.key = "key" .. i
    number(0, tq.set(g, db, object))
  end
  local calls = 0
  number(3000, tq.scan(g, db, key("*"), 0, function() calls = calls + 1 end, nil))
  luaunit.assertEquals(calls, 3000)
end

function TestScan:testErrors()
  local g = self.g
  local function never() luaunit.fail("called") end
  number(kit.INPUT_ERR, tq.scan(g, db, nil, 0, never, nil))
  number(kit.INPUT_ERR, tq.scan(g, db, "*", 0, nil, nil))
  number(kit.INPUT_ERR, tq.scan(g, 38, key("*"), 0, never, nil))
  number(0, tq.scan(g, db, key("*"), 0, never, nil))
  luaunit.assertErrorMsgEquals("input error: cb is not function", tq.scan, g, db, key("*"), 0, 5, nil)
  luaunit.assertErrorMsgContains("number must not be negative", tq.scan, g, db, key("*"), -1, never, nil)
end

kit.run("publish_scan")

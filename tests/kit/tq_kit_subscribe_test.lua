-- tq_kit.subscribe and tq_kit.poll.
local luaunit = require "luaunit"
local kit = require "kit"
local tq_kit = require "tq_kit"
local tq, tq_obj, key, number, db = kit.tq, kit.tq_obj, kit.key, kit.number, kit.db

TestSubscribe = kit.suite()

local function raises(text, f, ...) luaunit.assertErrorMsgContains(text, f, ...) end

function TestSubscribe:testDelivery()
  local g, got = self.g, {}
  local subscription = tq_kit.subscribe(g, db, "port/*", function(...) got[#got + 1] = {...} end)
  number(1, tq.publish(g, db, key("port/1", "up\0!")))
  number(1, tq.publish(g, db, key("port/2", "")))
  number(0, tq.publish(g, db, key("fan/1", "stalled")))
  number(0, tq.publish(g, kit.other_db, key("port/1", "up")))
  luaunit.assertEquals(#got, 2)
  luaunit.assertTrue(swig_equals(got[1][1], g))
  local message, text = got[1][2], got[1][3]
  luaunit.assertEquals(text, "up\0!")
  luaunit.assertEquals({message.key, message.db, message.cmd, message.length}, {"port/1", db, tq.TQ_MOM_PUBLISH, 4})
  luaunit.assertEquals({got[2][2].key, got[2][3]}, {"port/2", ""})
  luaunit.assertTrue(subscription:cancel())
  luaunit.assertFalse(subscription:cancel())
  number(0, tq.publish(g, db, key("port/1", "down")))
  luaunit.assertEquals(#got, 2)
end

-- The message can be kept, as it is a copy with its bytes.
function TestSubscribe:testMessagesAreSafeToKeep()
  local g, kept = self.g, {}
  tq_kit.subscribe(g, db, "*", function(_, message) kept[#kept + 1] = message end)
  for i = 1, 100 do number(1, tq.publish(g, db, key("k" .. i, string.rep("v", i)))) end
  collectgarbage()
  for i, message in ipairs(kept) do
    luaunit.assertEquals(message.key, "k" .. i)
    luaunit.assertEquals(tq_obj.bytes(message.value, message.length), string.rep("v", i))
  end
end

-- What nobody holds goes on until the runtime ends.
function TestSubscribe:testTheSubscriptionNeedNotBeHeld()
  local g, count = self.g, 0
  tq_kit.subscribe(g, db, "*", function() count = count + 1 end)
  collectgarbage()
  collectgarbage()
  number(1, tq.publish(g, db, key("k", "v")))
  luaunit.assertEquals(count, 1)
end

function TestSubscribe:testInsideACallback()
  local g, log, own = self.g, {}, nil
  own = tq_kit.subscribe(g, db, "a", function(_, _, text)
    log[#log + 1] = "a=" .. text
    luaunit.assertTrue(own:cancel())
    own = nil
    collectgarbage()
    collectgarbage()
    number(1, tq.publish(g, db, key("b", "from a"))) -- publishing from inside
    tq_kit.subscribe(g, db, "c", function(_, _, late) log[#log + 1] = "c=" .. late end)
  end)
  tq_kit.subscribe(g, db, "b", function(_, _, text) log[#log + 1] = "b=" .. text end)
  number(1, tq.publish(g, db, key("a", "1")))
  number(0, tq.publish(g, db, key("a", "2")))
  number(1, tq.publish(g, db, key("c", "3")))
  luaunit.assertEquals(log, {"a=1", "b=from a", "c=3"})
end

-- A coroutine may publish; the callback runs beside it and cannot yield.
function TestSubscribe:testCoroutines()
  local g, seen = self.g, {}
  tq_kit.subscribe(g, db, "*", function(_, _, text)
    seen[#seen + 1] = text
    seen.yieldable = coroutine.isyieldable()
  end)
  local publisher = coroutine.wrap(function()
    tq.publish(g, db, key("k", "1"))
    coroutine.yield()
    tq.publish(g, db, key("k", "2"))
  end)
  publisher()
  publisher()
  luaunit.assertEquals(seen, {"1", "2", yieldable = false})
end

function TestSubscribe:testADeepPublisher()
  local g, deepest = self.g, 0
  tq_kit.subscribe(g, db, "*", function(_, _, text)
    deepest = math.max(deepest, tonumber(text))
    if tonumber(text) < 30 then tq.publish(g, db, key("k", tostring(text + 1))) end
  end)
  number(1, tq.publish(g, db, key("k", "1")))
  luaunit.assertEquals(deepest, 30)
end

-- A callback may call native functions that leave no room on the stack.
function TestSubscribe:testNoRoomOnTheStack()
  local g, log = self.g, {}
  tq_kit.subscribe(g, 0, "outer", function() log[1] = kit.probe.publish_at_brim(g, key("inner", "v")) end)
  tq_kit.subscribe(g, 0, "inner", function(_, _, text) log[2] = text end)
  number(1, tq.publish(g, 0, key("outer", "")))
  luaunit.assertEquals(log, {1, "v"})
end

-- An error is told to stderr with where it came from; the publisher and the other subscribers do not notice.
function TestSubscribe:testErrors()
  local text = kit.run_chunk([[
    local kit = require "kit"
    local tq_kit = require "tq_kit"
    local g, db = kit.connect(nil), kit.db
    local function deep() error("fan stalled") end
    tq_kit.subscribe(g, db, "*", function() deep() end)
    tq_kit.subscribe(g, db, "*", function() error({}) end)
    tq_kit.subscribe(g, db, "*", function(_, _, text) print("third got " .. text) end)
    print("published to " .. kit.tq.publish(g, db, kit.key("k", "v")))
    tq_kit.subscribe(g, db, "big", function(_, _, text) error(text .. "!") end)
    local before = collectgarbage("count")
    for _ = 1, 10 do kit.tq.publish(g, db, kit.key("big", ("x"):rep(20000))) end
    collectgarbage()
    print("more: " .. (collectgarbage("count") - before > 100 and "much" or "little"))
    kit.tq.tq_global_finish(g)
  ]])
  luaunit.assertEquals(text:match("more: (%a+)"), "little") -- no error stays
  luaunit.assertStrContains(text, "third got v")
  luaunit.assertStrContains(text, "published to 3.0")
  luaunit.assertStrMatches(text, ".*tq_kit: error in a subscriber: [^\n]*:4: fan stalled\nstack traceback:.*in upvalue 'deep'.*")
  luaunit.assertStrMatches(text, ".*tq_kit: error in a subscriber: table: .*")
end

function TestSubscribe:testAfterTheRuntime()
  local record = tq.tq_global_t() -- the same address for both runtimes
  local g = tq.tq_global_init(nil, record)
  number(0, tq.client_connect(g, 0))
  local held = setmetatable({}, {__mode = "v"})
  held[1] = function() end
  local ended = tq_kit.subscribe(g, db, "*", held[1])
  number(0, tq.tq_global_finish(g))
  g = tq.tq_global_init(nil, record)
  number(0, tq.client_connect(g, 0))
  local count = 0
  local subscription = tq_kit.subscribe(g, db, "*", function() count = count + 1 end)
  luaunit.assertFalse(ended:cancel()) -- and leaves the other alone
  number(1, tq.publish(g, db, key("k", "v")))
  luaunit.assertEquals(count, 1)
  luaunit.assertTrue(subscription:cancel())
  number(0, tq.tq_global_finish(g))
end

-- Subscriptions of runtimes that have ended do not pile up.
function TestSubscribe:testWhatEndedIsDropped()
  local held = setmetatable({}, {__mode = "v"})
  do
    local g = kit.connect(nil)
    local function callback() return held end -- a closure, which nothing else keeps
    held[1] = callback
    tq_kit.subscribe(g, db, "*", callback)
    number(0, tq.tq_global_finish(g))
  end
  collectgarbage()
  luaunit.assertNotNil(held[1])
  tq_kit.subscribe(self.g, db, "*", function() end)
  collectgarbage()
  collectgarbage()
  luaunit.assertNil(held[1])
end

-- Nor do those that were cancelled, or could not be made.
function TestSubscribe:testWhatIsNotInForceIsDropped()
  local unconnected = tq.tq_global_init(kit.fresh_store(), nil)
  local held = setmetatable({}, {__mode = "v"})
  for i, g in ipairs {self.g, unconnected} do
    held[i] = function() return held end
    local ok, subscription = pcall(tq_kit.subscribe, g, db, "*", held[i])
    luaunit.assertEquals(ok, g == self.g)
    if ok then luaunit.assertTrue(subscription:cancel()) end
  end
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals(held, {})
  number(0, tq.tq_global_finish(unconnected))
end

-- The interpreter may end with subscriptions in force.
function TestSubscribe:testClosingTheInterpreter()
  local text = kit.run_chunk([[
    local kit = require "kit"
    local g, key = kit.connect(nil), kit.key("k", "v")
    -- Finalizers run in the reverse order: this one comes after the subscription's.
    setmetatable({}, {__gc = function()
      print(kit.module.publish(g, kit.db, key))
      kit.module.tq_global_finish(g)
    end})
    require "tq_kit".subscribe(g, kit.db, "*", function() print "called" end)
    os.exit(true, true)
  ]])
  luaunit.assertEquals(text, "0.0\n")
end

function TestSubscribe:testPoll()
  local g, count = self.g, 0
  tq_kit.subscribe(g, db, "*", function() count = count + 1 end)
  number(1, tq.publish(g, db, key("k", "v")))
  luaunit.assertEquals(count, 1) -- at once, so that there is nothing to poll for
  luaunit.assertEquals(tq_kit.poll(g), 0)
  luaunit.assertEquals(tq_kit.poll(g, 0), 0)
  luaunit.assertEquals(tq_kit.poll(g, nil), 0)
  luaunit.assertEquals(count, 1)
end

-- As long as it takes.
function TestSubscribe:testPollWaits()
  luaunit.skipIf(not kit.server, "in the process nothing arrives by itself")
  local name, script = kit.fresh_store(), os.tmpname()
  local g = kit.connect(name)
  tq_kit.subscribe(g, db, "*", function() end)
  kit.write_file(script, string.format([[
    local kit = require "kit"
    local g = kit.connect(%q)
    kit.probe.sleep(200)
    kit.tq.publish(g, kit.db, kit.key("k", "late"))
    kit.tq.tq_global_finish(g)
  ]], name))
  local publisher = io.popen(os.getenv("TQ_LUA") .. " " .. script)
  luaunit.assertEquals(tq_kit.poll(g, math.huge), 1)
  luaunit.assertTrue(publisher:close())
  os.remove(script)
  number(0, tq.tq_global_finish(g))
end

function TestSubscribe:testWrongArguments()
  local g = self.g
  for _, what in ipairs({5, {}, true}) do
    raises("bad argument #3 to 'tq_kit.subscribe' (pattern expected, got " .. type(what), tq_kit.subscribe, g, db, what,
      print)
  end
  raises("(pattern without NUL expected)", tq_kit.subscribe, g, db, "a\0b", print)
  for _, what in ipairs({"f", 5, {}}) do
    raises("bad argument #4 to 'tq_kit.subscribe' (function expected, got " .. type(what), tq_kit.subscribe, g, db, "*",
      what)
  end
  raises("(function expected, got no value)", tq_kit.subscribe, g, db, "*")
  local subscription = tq_kit.subscribe(g, db, "*", print)
  raises("(subscription expected, got string)", subscription.cancel, "x")
  raises("(subscription expected, got no value)", subscription.cancel)
  subscription:cancel()
end

kit.run()

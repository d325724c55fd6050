-- tq_kit: the clock, read-only databases, what is there, and why a call failed.
local luaunit = require "luaunit"
local kit = require "kit"
local tq_kit = require "tq_kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestControls = kit.suite()

local function raises(text, f, ...) luaunit.assertErrorMsgContains(text, f, ...) end

function TestControls:testModule()
  luaunit.assertTrue(rawequal(_G.tq_kit, tq_kit))
  local names = {}
  for name in pairs(tq_kit) do names[#names + 1] = name end
  luaunit.assertItemsEquals(names, {
    "advance", "clear", "dump", "freeze", "inspect", "last_error", "load", "poll", "printer", "read_only", "show",
    "subscribe", "thaw",
  })
end

-- What every function says to the same wrong arguments.
function TestControls:testWrongArguments()
  local g = self.g
  local after_g = {
    advance = {1}, clear = {db}, dump = {db}, freeze = {}, inspect = {db, "k"}, last_error = {}, load = {db, {}}, poll = {},
    read_only = {db, true}, subscribe = {db, "*", print}, thaw = {},
  }
  local ended = tq.tq_global_init(nil, nil)
  tq.tq_global_finish(ended)
  for name, rest in pairs(after_g) do
    local f = tq_kit[name]
    for _, what in ipairs({"g", 5, {}, tq.get_op_t(), key("k")}) do
      raises(string.format("bad argument #1 to 'tq_kit.%s' (runtime expected, got %s)", name,
        type(what) == "userdata" and swig_type(what) or type(what)), f, what, table.unpack(rest))
    end
    raises("(runtime expected, got no value)", f)
    raises("(runtime expected, got one that has ended)", f, ended, table.unpack(rest))
    if rest[1] == db then
      for _, what in ipairs({"four", 4.5, {}, true}) do
        raises(string.format("bad argument #2 to 'tq_kit.%s' (database expected, got %s)", name, type(what)), f, g, what,
          table.unpack(rest, 2))
      end
      raises("(database from 0 to 37 expected, got 38)", f, g, 38, table.unpack(rest, 2))
      raises("(database from 0 to 37 expected, got -1)", f, g, -1, table.unpack(rest, 2))
    end
  end
  for _, what in ipairs({"1 s", -1, 1.5, {}}) do
    raises("bad argument #2 to 'tq_kit.advance' (whole milliseconds, 0 or more, expected", tq_kit.advance, g, what)
  end
  for _, what in ipairs({"1", -0.5, 0 / 0, {}}) do
    raises("bad argument #2 to 'tq_kit.poll' (seconds, 0 or more, expected", tq_kit.poll, g, what)
  end
  raises("bad argument #3 to 'tq_kit.read_only' (boolean expected, got number)", tq_kit.read_only, g, db, 1)
  raises("bad argument #3 to 'tq_kit.inspect' (key expected, got tq_obj *)", tq_kit.inspect, g, db, key("k"))
  raises("bad argument #3 to 'tq_kit.inspect' (key without NUL expected)", tq_kit.inspect, g, db, "a\0b")
end

-- It is about the last call, whichever that was.
function TestControls:testLastErrorAfterASuccess()
  local g = self.g
  for _, succeed in ipairs {
    function() tq_kit.read_only(g, db, false) end,
    function() tq_kit.clear(g, db) end,
    function() tq_kit.inspect(g, db, "k") end,
    function() tq_kit.poll(g) end,
    function() tq_kit.dump(g, db) end,
    function() tq_kit.load(g, db, {k = "v"}) end,
    function() tq_kit.subscribe(g, db, "*", print):cancel() end,
  } do
    number(kit.INPUT_ERR, tq.set(g, db, nil))
    luaunit.assertStrContains(tq_kit.last_error(g), "value object")
    succeed()
    luaunit.assertNil(tq_kit.last_error(g))
  end
end

function TestControls:testClock()
  luaunit.skipIf(kit.server, "a server's clock goes on")
  local g = self.g
  tq_kit.freeze(g)
  tq_kit.freeze(g)
  number(0, tq.psetex(g, db, key("session", "alice"), 1000))
  tq_kit.advance(g, 999)
  luaunit.assertEquals({tq_kit.inspect(g, db, "session")}, {"string", 1})
  number(1, tq.exists(g, db, key("session")))
  kit.probe.sleep(5)
  number(1, tq.exists(g, db, key("session"))) -- the time stands still
  tq_kit.advance(g, 1)
  number(0, tq.exists(g, db, key("session")))
  tq_kit.advance(g, 0)
  tq_kit.thaw(g)
  tq_kit.thaw(g)
  raises("tq_kit.advance: ", tq_kit.advance, g, 1)
  number(0, tq.psetex(g, db, key("session", "alice"), 1))
  kit.probe.sleep(5)
  number(0, tq.exists(g, db, key("session")))
end

function TestControls:testTheClockOfAServer()
  luaunit.skipIf(not kit.server, "needs a server")
  local g = self.g
  for _, name in ipairs({"freeze", "thaw"}) do
    raises("tq_kit." .. name .. ": the server's clock is not ours to move", tq_kit[name], g)
  end
  raises("tq_kit.advance: the server's clock is not ours to move", tq_kit.advance, g, 1)
end

-- A scan shows lists, hashes and sets like empty strings; this tells.
function TestControls:testInspect()
  luaunit.skipIf(kit.server, "a server's clock goes on")
  local g = self.g
  number(0, tq.set(g, db, key("string", "")))
  number(1, tq.rpush(g, db, key("list", "a")))
  number(1, tq.sadd(g, db, key("set", "a")))
  number(1, tq.zadd(g, db, {1}, {key("sorted set", "a")}))
  local hash = key("hash")
  hash[1] = "a"
  number(0, tq.hmset(g, db, hash, {1}))
  for name, kind in pairs({string = "string", list = "list", set = "set", ["sorted set"] = "sorted_set", hash = "hash"}) do
    luaunit.assertEquals({tq_kit.inspect(g, db, name)}, {kind})
  end
  luaunit.assertEquals({tq_kit.inspect(g, db, "nobody")}, {})
  tq_kit.freeze(g)
  number(1, tq.pexpire(g, db, key("list"), 300, 1))
  luaunit.assertEquals({tq_kit.inspect(g, db, "list")}, {"list", 300})
  raises("tq_kit.inspect: ", tq_kit.inspect, g, db, "")
end

function TestControls:testReadOnly()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  tq_kit.read_only(g, db, true)
  number(tq.TQ_MOM_GLOBAL_DB_NO_WRITE, tq.set(g, db, key("k", "w")))
  luaunit.assertStrContains(tq_kit.last_error(g), "read-only")
  number(tq.TQ_MOM_GLOBAL_DB_NO_WRITE, tq.del(g, db, key("k")))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  number(0, tq.set(g, kit.other_db, key("k", "w"))) -- others can be written
  raises("tq_kit.load: ", tq_kit.load, g, db, {k = "w"})
  tq_kit.read_only(g, db, false)
  number(0, tq.set(g, db, key("k", "w")))
  luaunit.assertEquals(kit.stored(g, "k"), "w")
end

function TestControls:testLastError()
  local g = self.g
  luaunit.assertNil(tq_kit.last_error(g))
  number(0, tq.set(g, db, key("k", "v")))
  luaunit.assertNil(tq_kit.last_error(g))
  number(kit.INPUT_ERR, tq.llen(g, db, key("k")))
  local text = tq_kit.last_error(g)
  luaunit.assertEquals(type(text), "string")
  luaunit.assertEquals(tq_kit.last_error(g), text) -- asking changes nothing
  number(1, tq.exists(g, db, key("k")))
  luaunit.assertNil(tq_kit.last_error(g))
end

function TestControls:testClear()
  local g = self.g
  luaunit.assertEquals(tq_kit.clear(g, db), 0)
  tq_kit.load(g, db, {a = "1", b = {elements = {"x", "y"}}})
  tq_kit.load(g, kit.other_db, {a = "1"})
  luaunit.assertEquals(tq_kit.clear(g, db), 2)
  luaunit.assertEquals(tq_kit.dump(g, db), {})
  luaunit.assertEquals(tq_kit.dump(g, kit.other_db), {a = {kind = "string", value = "1"}})
end

function TestControls:testUnconnected()
  local g = tq.tq_global_init(nil, nil)
  raises("tq_kit.dump: ", tq_kit.dump, g, db)
  raises("tq_kit.load: ", tq_kit.load, g, db, {k = "v"})
  raises("tq_kit.clear: ", tq_kit.clear, g, db)
  number(0, tq.tq_global_finish(g))
end

kit.run()

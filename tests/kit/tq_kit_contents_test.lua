-- tq_kit.dump and tq_kit.load: databases as tables.
local luaunit = require "luaunit"
local kit = require "kit"
local tq_kit = require "tq_kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestContents = kit.suite()

local everything = {
  text = {kind = "string", value = "a\0b"},
  empty = {kind = "string", value = ""},
  session = {kind = "string", value = "alice", remaining = 1000},
  list = {kind = "list", elements = {"b", "a", "b", ""}},
  set = {kind = "set", members = {"", "a", "b\0"}},
  sorted = {kind = "sorted_set", scores = {a = 1.5, b = -2, c = math.huge, [""] = 1.5}, remaining = 60000},
  hash = {
    kind = "hash", fields = {[0] = "zero", [7] = "", [4294967295] = "last"}, field_remaining = {[7] = 500},
    remaining = 2000,
  },
}

local function raises(text, ...)
  luaunit.assertErrorMsgContains("bad argument #3 to 'tq_kit.load' (" .. text, tq_kit.load, ...)
end

function TestContents:testDumpSaysWhatCommandsWrote()
  luaunit.skipIf(kit.server, "a server's clock goes on")
  local g = self.g
  tq_kit.freeze(g)
  luaunit.assertEquals(tq_kit.dump(g, db), {})
  number(0, tq.set(g, db, key("text", "a\0b")))
  number(0, tq.set(g, db, key("empty", "")))
  number(0, tq.psetex(g, db, key("session", "alice"), 1000))
  for _, element in ipairs(everything.list.elements) do tq.rpush(g, db, key("list", element)) end
  for _, member in ipairs({"b\0", "", "a"}) do number(1, tq.sadd(g, db, key("set", member))) end
  for member, score in pairs(everything.sorted.scores) do number(1, tq.zadd(g, db, {score}, {key("sorted", member)})) end
  number(1, tq.pexpire(g, db, key("sorted"), 60000, 1))
  local hash = key("hash")
  for tag, bytes in pairs(everything.hash.fields) do hash[tag] = bytes end
  number(0, tq.hmset(g, db, hash, {0, 7, 4294967295}))
  number(1, tq.pexpire_field(g, db, hash, 500, 7, 1))
  number(1, tq.pexpire(g, db, hash, 2000, 1))
  luaunit.assertEquals(tq_kit.dump(g, db), everything)
  luaunit.assertEquals(tq_kit.dump(g, kit.other_db), {})
end

function TestContents:testLoadIsTheReverse()
  luaunit.skipIf(kit.server, "a server's clock goes on")
  local g = self.g
  tq_kit.freeze(g)
  tq_kit.load(g, db, everything)
  luaunit.assertEquals(tq_kit.dump(g, db), everything)
  luaunit.assertEquals(kit.stored(g, "text"), "a\0b")
  number(4, tq.llen(g, db, key("list")))
  number(3, tq.scard(g, db, key("set")))
  tq_kit.advance(g, 500)
  local expected = {}
  for name, entry in pairs(everything) do expected[name] = entry end
  expected.session = {kind = "string", value = "alice", remaining = 500}
  expected.sorted = {kind = "sorted_set", scores = everything.sorted.scores, remaining = 59500}
  expected.hash = {kind = "hash", fields = {[0] = "zero", [4294967295] = "last"}, remaining = 1500}
  luaunit.assertEquals(tq_kit.dump(g, db), expected)
end

function TestContents:testShortForms()
  local g = self.g
  tq_kit.load(g, db, {a = "text", b = {value = "v"}, c = {elements = {"x"}}, d = {fields = {[1] = "f"}},
    e = {scores = {m = 1}}, f = {members = {"x", "m"}}})
  luaunit.assertEquals(tq_kit.dump(g, db), {
    a = {kind = "string", value = "text"}, b = {kind = "string", value = "v"}, c = {kind = "list", elements = {"x"}},
    d = {kind = "hash", fields = {[1] = "f"}}, e = {kind = "sorted_set", scores = {m = 1}},
    f = {kind = "set", members = {"m", "x"}},
  })
end

-- Keys that are named are replaced, whatever they are; others stay.
function TestContents:testLoadReplaces()
  local g = self.g
  tq_kit.load(g, db, {a = {elements = {"1"}, remaining = 5000}, b = "stays", c = {members = {"x"}}})
  tq_kit.load(g, db, {a = {elements = {"2"}}, c = "text"})
  luaunit.assertEquals(tq_kit.dump(g, db), {
    a = {kind = "list", elements = {"2"}}, b = {kind = "string", value = "stays"}, c = {kind = "string", value = "text"},
  })
  tq_kit.load(g, db, {a = {elements = {"1", "2"}, remaining = 0}}) -- whose time is over with its last element
  luaunit.assertNil(tq_kit.dump(g, db).a)
  tq_kit.load(g, db, {a = {elements = {}}}) -- without elements there is no key
  luaunit.assertNil(tq_kit.dump(g, db).a)
end

-- A table with anything wrong is refused as a whole, and says where.
function TestContents:testWrongTables()
  local g = self.g
  raises("table of keys expected, got no value", g, db)
  raises("table of keys expected, got string", g, db, "a = 1")
  local wrong = {
    ["key: text of 1 to 511 bytes without NUL expected, got number"] = {[1] = "v"},
    ["key: text of 1 to 511 bytes without NUL expected, got string"] = {[""] = "v"},
    ["key: text of 1 to 511 bytes without NUL expected"] = {[("k"):rep(512)] = "v"},
    ["k: string or table expected, got number"] = {k = 5},
    ["k: value, fields, elements, members or scores expected, got nil"] = {k = {}},
    ["k: one of value, fields, elements, members, scores expected"] = {k = {value = "v", elements = {"x"}}},
    ["k.kind: string, hash, list, set or sorted_set expected"] = {k = {kind = "queue"}},
    ["k: elements expected, got nil"] = {k = {kind = "list", members = {"x"}}},
    ["k.value: string expected, got number"] = {k = {value = 5}},
    ["k.remaining: whole milliseconds, 0 or more, expected, got number"] = {k = {value = "v", remaining = -1}},
    ["k.remaining: whole milliseconds, 0 or more, expected, got string"] = {k = {value = "v", remaining = "1"}},
    ["k.elements: table expected, got string"] = {k = {elements = "x"}},
    ["k.elements[2]: string expected, got boolean"] = {k = {elements = {"x", true}}},
    ["k.elements: list without holes and other keys expected, got number"] = {k = {elements = {"x", nil, "y"}}},
    ["k.members: list without holes and other keys expected, got string"] = {k = {members = {x = true}}},
    ["k.fields: field numbers from 0 to 4294967295 expected, got string"] = {k = {fields = {name = "x"}}},
    ["k.fields: field numbers from 0 to 4294967295 expected, got number"] = {k = {fields = {[-1] = "x"}}},
    ["k.fields: field numbers from 0 to 4294967295 expected"] = {k = {fields = {[4294967296] = "x"}}},
    ["k.fields[3]: string expected, got table"] = {k = {fields = {[3] = {}}}},
    ["k.field_remaining: table expected, got number"] = {k = {fields = {[3] = "x"}, field_remaining = 5}},
    ["remaining time of k.fields[3]: whole milliseconds"] = {k = {fields = {[3] = "x"}, field_remaining = {[3] = 1.5}}},
    ["k.scores: member: string expected, got number"] = {k = {scores = {1.5}}},
    ["k.scores[m]: score expected, got string"] = {k = {scores = {m = "1"}}},
    ["k.scores[m]: score expected, got number"] = {k = {scores = {m = 0 / 0}}},
  }
  for text, keys in pairs(wrong) do
    raises(text, g, db, keys)
    keys.fine = "v"
    raises(text, g, db, keys)
  end
  luaunit.assertEquals(tq_kit.dump(g, db), {})
end

function TestContents:testManyKeys()
  local g = self.g
  local keys = {}
  for i = 1, 3000 do keys["key" .. i] = {kind = "list", elements = {"a" .. i, "b" .. i}} end
  tq_kit.load(g, db, keys)
  local dumped = tq_kit.dump(g, db)
  for name, entry in pairs(keys) do luaunit.assertEquals(dumped[name], entry) end
  luaunit.assertEquals(tq_kit.clear(g, db), 3000)
end

kit.run()

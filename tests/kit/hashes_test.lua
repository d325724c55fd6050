local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestHashes = kit.suite()

local function object(name, fields)
  local made = key(name)
  for tag, bytes in pairs(fields) do made[tag] = bytes end
  return made
end

-- All that a hash result says: the fields by number, the numbers that are there and those that changed.
local function contents(result)
  return {result.value and result.value:fields(), result.field_tag, result.field_change_tag}
end

local function read(g, name, list)
  local result = list and tq.hmget(g, db, key(name), list) or tq.hgetall(g, db, key(name))
  return kit.take(result, "hash_res_free", contents)
end

function TestHashes:testSetAndRead()
  local g = self.g
  number(0, tq.hmset(g, db, object("port", {[1] = "up", [2] = "1500", [7] = "not sent"}), {1, 2}))
  luaunit.assertEquals(read(g, "port"), {{[1] = "up", [2] = "1500"}, {1, 2}, {1, 2}})
  local result = tq.hgetall(g, db, key("port"))
  luaunit.assertEquals(swig_type(result.value), "tq_obj *")
  luaunit.assertEquals(result.value.key, "port")
  luaunit.assertEquals(result.value[1], "up")
  luaunit.assertNil(result.value[7])
  luaunit.assertNil(result.value.value)
  luaunit.assertEquals(math.type(result.field_tag[1]), "integer")
  number(0, tq.hash_res_free(result))
end

function TestHashes:testHgetallExt()
  local g = self.g
  number(0, tq.hmset(g, db, object("h", {[3] = "c"}), {3}))
  luaunit.assertEquals(kit.take(tq.hgetall_ext(g, db, tq.hget_op_t(), key("h")), "hash_res_free", contents),
    {{[3] = "c"}, {3}, {3}})
  luaunit.assertEquals(kit.take(tq.hgetall_ext(g, db, nil, key("h")), "hash_res_free", contents),
    {{[3] = "c"}, {3}, {}})
end

function TestHashes:testHmgetTakesTheListedFields()
  local g = self.g
  number(0, tq.hmset(g, db, object("h", {[1] = "a", [2] = "b", [3] = "c"}), {3, 1, 2}))
  luaunit.assertEquals(read(g, "h", {3, 1, 9, 3}), {{[1] = "a", [3] = "c"}, {1, 3}, {1, 3}})
  luaunit.assertEquals(read(g, "h", {9}), {{}, {}, {}})
  kit.take(tq.hmget(g, db, key("h"), {}), "hash_res_free", contents, kit.INPUT_ERR)
end

-- A field is changed from its write until it is read; a write of the same bytes changes nothing.
function TestHashes:testChangeTags()
  local g = self.g
  number(0, tq.hmset(g, db, object("h", {[1] = "a", [2] = "b"}), {1, 2}))
  luaunit.assertEquals(read(g, "h", {1})[3], {1})
  luaunit.assertEquals(read(g, "h")[3], {2})
  luaunit.assertEquals(read(g, "h")[3], {})
  number(0, tq.hmset(g, db, object("h", {[1] = "a", [2] = "B"}), {1, 2}))
  luaunit.assertEquals(read(g, "h"), {{[1] = "a", [2] = "B"}, {1, 2}, {2}})
  number(1, tq.hmsetnx(g, db, object("h", {[1] = "x", [3] = "c"}), {1, 3}))
  luaunit.assertEquals(read(g, "h"), {{[1] = "a", [2] = "B", [3] = "c"}, {1, 2, 3}, {3}})
end

function TestHashes:testMissingHash()
  local g = self.g
  for _, result in ipairs({tq.hgetall(g, db, key("nobody")), tq.hmget(g, db, key("nobody"), {1})}) do
    luaunit.assertEquals(kit.take(result, "hash_res_free", contents), {nil, {}, {}})
  end
end

function TestHashes:testHmsetnx()
  local g = self.g
  number(2, tq.hmsetnx(g, db, object("h", {[1] = "a", [2] = "b"}), {1, 2}))
  number(0, tq.hmsetnx(g, db, object("h", {[1] = "x", [2] = "y"}), {1, 2}))
  number(1, tq.hmsetnx(g, db, object("h", {[2] = "y", [3] = "c"}), {2, 3}))
  luaunit.assertEquals(read(g, "h")[1], {[1] = "a", [2] = "b", [3] = "c"})
end

-- The option record carries the field list; without one there are no fields.
function TestHashes:testExtForms()
  local g = self.g
  local op = tq.hmset_op_t()
  op.flag = 5
  number(0, tq.hmset_ext(g, db, op, object("h", {[1] = "a", [2] = "b"}), {1, 2}))
  number(5, op.flag)
  luaunit.assertEquals(read(g, "h")[1], {[1] = "a", [2] = "b"})
  number(1, tq.hmsetnx_ext(g, db, tq.hmsetnx_op_t(), object("h", {[1] = "x", [4] = "d"}), {1, 4}))
  luaunit.assertEquals(read(g, "h")[1], {[1] = "a", [2] = "b", [4] = "d"})
  number(kit.INPUT_ERR, tq.hmset_ext(g, db, nil, object("h", {[1] = "x"}), {1}))
  number(kit.INPUT_ERR, tq.hmsetnx_ext(g, db, nil, object("h", {[5] = "x"}), {5}))
  number(kit.INPUT_ERR, tq.hmset_ext(g, db, op, object("h", {[1] = "x"}), {}))
  luaunit.assertEquals(read(g, "h")[1], {[1] = "a", [2] = "b", [4] = "d"})
end

-- Field numbers have 32 bits; larger ones are cut.
function TestHashes:testFieldNumbers()
  local g = self.g
  number(0, tq.hmset(g, db, object("h", {[0] = "zero", [4294967295] = "last"}), {0, 4294967295}))
  luaunit.assertEquals(read(g, "h"), {{[0] = "zero", [4294967295] = "last"}, {0, 4294967295}, {0, 4294967295}})
  luaunit.assertEquals(read(g, "h", {-1})[2], {4294967295})
  luaunit.assertEquals(read(g, "h", {4294967296})[2], {0})
end

function TestHashes:testBytes()
  local g = self.g
  number(0, tq.hmset(g, db, object("h", {[1] = "", [2] = "a\0b"}), {1, 2}))
  luaunit.assertEquals(read(g, "h")[1], {[1] = "", [2] = "a\0b"})
end

-- All listed fields must be there, or nothing is written.
function TestHashes:testFieldWithoutBytes()
  local g = self.g
  number(kit.INPUT_ERR, tq.hmset(g, db, object("h", {[1] = "a"}), {1, 2}))
  number(kit.INPUT_ERR, tq.hmsetnx(g, db, object("h", {[1] = "a"}), {2, 1}))
  number(0, tq.exists(g, db, key("h")))
  number(kit.INPUT_ERR, tq.hmset(g, db, object("h", {[1] = "a"}), {}))
  number(0, tq.exists(g, db, key("h")))
end

function TestHashes:testFieldListErrors()
  local g = self.g
  for _, f in ipairs({tq.hmset, tq.hmsetnx, tq.hmget}) do
    luaunit.assertErrorMsgEquals("input error, errcode_1", f, g, db, key("h"), 7)
    luaunit.assertErrorMsgEquals("input error, errcode_3", f, g, db, key("h"), {1, "2"})
    luaunit.assertErrorMsgEquals("input error, errcode_3", f, g, db, key("h"), {1, 2.0})
  end
end

function TestHashes:testManyFields()
  local g = self.g
  local wanted, list = {}, {}
  for tag = 1, 3000 do
    wanted[tag] = string.format("%d", tag * 7)
    list[tag] = tag
  end
  number(0, tq.hmset(g, db, object("h", wanted), list))
  local got = read(g, "h")
  luaunit.assertEquals(got[1], wanted)
  luaunit.assertEquals(got[2], list)
end

function TestHashes:testWrongKind()
  local g = self.g
  number(0, tq.set(g, db, key("text", "v")))
  local one = object("text", {[1] = "a"})
  number(kit.INPUT_ERR, tq.hmset(g, db, one, {1}))
  number(kit.INPUT_ERR, tq.hmsetnx(g, db, one, {1}))
  kit.take(tq.hgetall(g, db, key("text")), "hash_res_free", contents, kit.INPUT_ERR)
  kit.take(tq.hmget(g, db, key("text"), {1}), "hash_res_free", contents, kit.INPUT_ERR)
  luaunit.assertEquals(kit.stored(g, "text"), "v")
end

function TestHashes:testKeysThatAreNone()
  local g = self.g
  number(kit.INPUT_ERR, tq.hmset(g, db, nil, {1}))
  number(kit.INPUT_ERR, tq.hmsetnx(g, db, "h", {1}))
  number(kit.INPUT_ERR, tq.hmset(g, 38, object("h", {[1] = "a"}), {1}))
  kit.take(tq.hgetall(g, db, nil), "hash_res_free", contents, kit.INPUT_ERR)
  kit.take(tq.hmget(g, -1, key("h"), {1}), "hash_res_free", contents, kit.INPUT_ERR)
end

function TestHashes:testRelease()
  local g = self.g
  number(0, tq.hash_res_free(nil))
  number(kit.INPUT_ERR, tq.hash_res_free(tq.tq_mom_hash_res_t()))
  number(0, tq.hmset(g, db, object("h", {[1] = "a"}), {1}))
  local result = tq.hgetall(g, db, key("h"))
  local value = result.value
  number(kit.INPUT_ERR, tq.tq_obj_free(value))
  number(0, tq.hash_res_free(result))
  number(kit.INPUT_ERR, tq.hash_res_free(result))
  luaunit.assertErrorMsgContains("released", function() return value[1] end)
end

kit.run("hashes")

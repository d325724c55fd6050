local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestStrings = kit.suite()

local function read_get(result)
  local value = result.value
  return value and {value.key, value.value}
end

function TestStrings:testSetAndGet()
  local g = self.g
  number(0, tq.set(g, db, key("port", "up")))
  local object, status = tq.get(g, db, key("port"))
  number(0, status)
  luaunit.assertEquals(swig_type(object), "tq_obj *")
  luaunit.assertEquals({object.key, object.value}, {"port", "up"})
  number(0, tq.tq_obj_free(object))
  number(0, tq.set_ext(g, db, tq.set_op_t(), key("port", "down")))
  luaunit.assertEquals(kit.stored(g, "port"), "down")
  number(0, tq.set_ext(g, db, nil, key("port", "up again")))
  luaunit.assertEquals(kit.stored(g, "port"), "up again")
end

function TestStrings:testGetExt()
  local g = self.g
  number(0, tq.set(g, db, key("port", "up")))
  luaunit.assertEquals(kit.take(tq.get_ext(g, db, tq.get_op_t(), key("port")), "get_res_free", read_get), {"port", "up"})
  luaunit.assertNil(kit.take(tq.get_ext(g, db, nil, key("nobody")), "get_res_free", read_get))
  local result = tq.get_ext(g, db, nil, key("port"))
  luaunit.assertEquals(swig_type(result), "struct tq_mom_get_res_s *|tq_mom_get_res_s *|tq_mom_get_res_t *")
  number(0, tq.get_res_free(result))
end

function TestStrings:testMissingKey()
  local object, status = tq.get(self.g, db, key("nobody"))
  luaunit.assertNil(object)
  number(0, status)
end

function TestStrings:testValuesAreBytes()
  local g = self.g
  local every_byte = {}
  for byte = 0, 255 do every_byte[#every_byte + 1] = string.char(byte) end
  for _, value in ipairs({"", "\0", "a\0b", table.concat(every_byte), string.rep("\0x", 100000)}) do
    number(0, tq.set(g, db, key("bytes", value)))
    luaunit.assertEquals(kit.stored(g, "bytes"), value)
  end
end

-- The store has copies: what becomes of the key object is its own business.
function TestStrings:testStoredValueIsACopy()
  local object = key("copy", "first")
  number(0, tq.set(self.g, db, object))
  object.value = "second"
  object.key = "elsewhere"
  luaunit.assertEquals(kit.stored(self.g, "copy"), "first")
  local read = tq.get(self.g, db, key("copy"))
  read.value = "third"
  number(0, tq.tq_obj_free(read))
  luaunit.assertEquals(kit.stored(self.g, "copy"), "first")
end

function TestStrings:testDatabasesAreApart()
  local g = self.g
  for id = 0, 37 do number(0, tq.set(g, id, key("where", tostring(id)))) end
  for id = 0, 37 do luaunit.assertEquals(kit.stored(g, "where", id), tostring(id)) end
  number(1, tq.del(g, 5, key("where")))
  luaunit.assertNil(kit.stored(g, "where", 5))
  luaunit.assertEquals(kit.stored(g, "where", 6), "6")
end

-- Database numbers are truncated toward zero.
function TestStrings:testDatabaseNumbers()
  local g = self.g
  number(0, tq.set(g, 1.9, key("k", "one")))
  luaunit.assertEquals(kit.stored(g, "k", 1), "one")
  number(0, tq.set(g, "2", key("k", "two")))
  luaunit.assertEquals(kit.stored(g, "k", 2), "two")
  number(0, tq.set(g, -0.9, key("k", "zero")))
  luaunit.assertEquals(kit.stored(g, "k", 0), "zero")
  for _, bad in ipairs({-1, 38, 1000, -1e300, 1e300, math.huge, 2 ^ 31, math.mininteger}) do
    number(kit.INPUT_ERR, tq.set(g, bad, key("k", "v")))
    number(kit.INPUT_ERR, tq.exists(g, bad, key("k")))
  end
end

function TestStrings:testSetnx()
  local g = self.g
  number(1, tq.setnx(g, db, key("once", "first")))
  number(0, tq.setnx(g, db, key("once", "second")))
  luaunit.assertEquals(kit.stored(g, "once"), "first")
  number(0, tq.setnx_noreply(g, db, key("once", "third")))
  number(0, tq.setnx_noreply(g, db, key("other", "first")))
  luaunit.assertEquals(kit.stored(g, "once"), "first")
  luaunit.assertEquals(kit.stored(g, "other"), "first")
  number(0, tq.setnx_noreply_ext(g, db, tq.set_op_t(), key("third", "first")))
  number(0, tq.setnx_noreply_ext(g, db, nil, key("third", "second")))
  luaunit.assertEquals(kit.stored(g, "third"), "first")
end

-- A key of any kind is in the way.
function TestStrings:testSetnxOverAList()
  number(1, tq.rpush(self.g, db, key("list", "a")))
  number(0, tq.setnx(self.g, db, key("list", "b")))
  number(1, tq.llen(self.g, db, key("list")))
end

function TestStrings:testDelAndExists()
  local g = self.g
  number(0, tq.exists(g, db, key("k")))
  number(0, tq.del(g, db, key("k")))
  number(0, tq.set(g, db, key("k", "v")))
  number(1, tq.exists(g, db, key("k")))
  number(1, tq.exists_ext(g, db, tq.exist_op_t(), key("k")))
  number(0, tq.exists(g, kit.other_db, key("k")))
  number(1, tq.del(g, db, key("k")))
  number(0, tq.exists_ext(g, db, nil, key("k")))
  number(0, tq.set(g, db, key("k", "v")))
  number(1, tq.del_ext(g, db, tq.del_op_t(), key("k")))
  number(0, tq.del_ext(g, db, nil, key("k")))
  number(1, tq.sadd(g, db, key("set", "m")))
  number(1, tq.exists(g, db, key("set")))
  number(1, tq.del(g, db, key("set")))
  number(0, tq.scard(g, db, key("set")))
end

local function read_value(result) return result.value end

function TestStrings:testIncr()
  local g = self.g
  for i = 1, 3 do number(i, kit.take(tq.incr(g, db, key("n")), "incr_res_free", read_value)) end
  luaunit.assertEquals(kit.stored(g, "n"), "3")
  number(0, tq.set(g, db, key("n", "-1")))
  number(0, kit.take(tq.incr_ext(g, db, tq.incr_op_t(), key("n")), "incr_res_free", read_value))
  number(1, kit.take(tq.incr_ext(g, db, nil, key("n")), "incr_res_free", read_value))
end

function TestStrings:testIncrRefusesWhatIsNoNumber()
  local g = self.g
  for _, text in ipairs({"", "x", "1x", " 1", "1 ", "1.5", "+1", "0x10", "9223372036854775808", "1\0"}) do
    number(0, tq.set(g, db, key("n", text)))
    kit.take(tq.incr(g, db, key("n")), "incr_res_free", read_value, kit.INPUT_ERR)
    luaunit.assertEquals(kit.stored(g, "n"), text)
  end
end

-- The value is kept when the sum is out of range.
function TestStrings:testIncrOverflow()
  local g = self.g
  number(0, tq.set(g, db, key("n", "9223372036854775806")))
  kit.take(tq.incr(g, db, key("n")), "incr_res_free", read_value)
  luaunit.assertEquals(kit.stored(g, "n"), "9223372036854775807")
  kit.take(tq.incr(g, db, key("n")), "incr_res_free", read_value, kit.ERR)
  luaunit.assertEquals(kit.stored(g, "n"), "9223372036854775807")
end

-- incr keeps the expiry, set takes it away.
function TestStrings:testIncrKeepsTheExpiry()
  local g = self.g
  number(0, tq.psetex(g, db, key("n", "1"), 60000))
  number(2, kit.take(tq.incr(g, db, key("n")), "incr_res_free", read_value))
  number(1, tq.del_expire(g, db, key("n"), 0, 0))
  number(0, tq.psetex(g, db, key("n", "1"), 60000))
  number(0, tq.set(g, db, key("n", "1")))
  number(0, tq.del_expire(g, db, key("n"), 0, 0))
end

function TestStrings:testWrongKind()
  local g = self.g
  number(1, tq.rpush(g, db, key("list", "a")))
  local object, status = tq.get(g, db, key("list"))
  luaunit.assertNil(object)
  number(kit.INPUT_ERR, status)
  luaunit.assertNil(kit.take(tq.get_ext(g, db, nil, key("list")), "get_res_free", read_get, kit.INPUT_ERR))
  kit.take(tq.incr(g, db, key("list")), "incr_res_free", read_value, kit.INPUT_ERR)
  number(1, tq.llen(g, db, key("list")))
  -- A write of a string replaces any kind.
  number(0, tq.set(g, db, key("list", "text")))
  luaunit.assertEquals(kit.stored(g, "list"), "text")
end

-- What is no value object is no key.
function TestStrings:testKeysThatAreNone()
  local g = self.g
  local bad = {"text", 5, {}, tq.get_op_t(), g, io.stdout}
  for i = 1, #bad + 1 do
    local what = bad[i]
    number(kit.INPUT_ERR, tq.set(g, db, what))
    number(kit.INPUT_ERR, tq.setnx(g, db, what))
    number(kit.INPUT_ERR, tq.setnx_noreply(g, db, what))
    number(kit.INPUT_ERR, tq.del(g, db, what))
    number(kit.INPUT_ERR, tq.exists(g, db, what))
    local object, status = tq.get(g, db, what)
    luaunit.assertNil(object)
    number(kit.INPUT_ERR, status)
    luaunit.assertNil(kit.take(tq.get_ext(g, db, nil, what), "get_res_free", read_get, kit.INPUT_ERR))
    kit.take(tq.incr(g, db, what), "incr_res_free", read_value, kit.INPUT_ERR)
  end
  number(0, tq.set(g, db, key(string.rep("k", 511), "v")))
  luaunit.assertEquals(kit.stored(g, string.rep("k", 511)), "v")
end

function TestStrings:testKeyWithoutValue()
  number(kit.INPUT_ERR, tq.set(self.g, db, key("k")))
  number(kit.INPUT_ERR, tq.setnx(self.g, db, key("k")))
  number(kit.INPUT_ERR, tq.setnx_noreply(self.g, db, key("k")))
  number(0, tq.exists(self.g, db, key("k")))
end

function TestStrings:testReleasingTwice()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  local object = tq.get(g, db, key("k"))
  number(0, tq.tq_obj_free(object))
  number(kit.INPUT_ERR, tq.tq_obj_free(object))
  local result = tq.get_ext(g, db, nil, key("k"))
  local inside = result.value
  number(kit.INPUT_ERR, tq.tq_obj_free(inside)) -- it belongs to the result
  number(0, tq.get_res_free(result))
  number(kit.INPUT_ERR, tq.get_res_free(result))
  number(kit.INPUT_ERR, tq.tq_obj_free(inside))
  number(0, tq.tq_obj_free(nil))
  number(0, tq.get_res_free(nil))
  number(0, tq.incr_res_free(nil))
  number(kit.INPUT_ERR, tq.get_res_free(tq.tq_mom_get_res_t())) -- Lua's own record
  number(kit.INPUT_ERR, tq.incr_res_free(tq.tq_mom_incr_res_t()))
end

-- A release function takes its own kind of result only.
function TestStrings:testReleasingWithAnotherFunction()
  local result = tq.incr(self.g, db, key("n"))
  luaunit.assertErrorMsgContains("Error in get_res_free (arg 1)", tq.get_res_free, result)
  number(kit.INPUT_ERR, tq.get_res_free(tq.convertPtrToGetRes(result)))
  number(kit.INPUT_ERR, tq.tq_obj_free(result))
  number(0, tq.incr_res_free(result))
end

function TestStrings:testCollectingAHandleReleasesNothing()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  local untyped = tq.tq_thread()
  untyped.zg = tq.get_ext(g, db, nil, key("k"))
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals({kit.probe.live()}, {1, 1})
  local result = tq.convertPtrToGetRes(untyped.zg)
  luaunit.assertEquals(result.value.value, "v")
  number(0, tq.get_res_free(result))
end

-- Overwriting a result's fields does not change what its release frees.
function TestStrings:testOverwrittenResult()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  local result = tq.get_ext(g, db, nil, key("k"))
  result.value = nil
  result.error_code = 7
  luaunit.assertNil(result.value)
  number(0, tq.get_res_free(result))
end

kit.run("strings")

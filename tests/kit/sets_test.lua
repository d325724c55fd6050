local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestSets = kit.suite()

local function elements(result) return kit.values(result.value_array) end

local function members(g, name, error_code)
  return kit.take(tq.smembers(g, db, key(name or "s")), "smembers_res_free", elements, error_code)
end

function TestSets:testAddAndRemove()
  local g = self.g
  number(1, tq.sadd(g, db, key("s", "b")))
  number(0, tq.sadd(g, db, key("s", "b")))
  number(1, tq.sadd_ext(g, db, tq.sadd_op_t(), key("s", "a")))
  number(1, tq.sadd_ext(g, db, nil, key("s", "c\0")))
  number(1, tq.sadd(g, db, key("s", "")))
  luaunit.assertEquals(members(g), {"", "a", "b", "c\0"}) -- in the order of their bytes
  number(4, tq.scard(g, db, key("s")))
  number(1, tq.srem(g, db, key("s", "b")))
  number(0, tq.srem(g, db, key("s", "b")))
  number(1, tq.srem_ext(g, db, tq.srem_op_t(), key("s", "")))
  number(0, tq.srem_ext(g, db, nil, key("s", "c")))
  luaunit.assertEquals(members(g), {"a", "c\0"})
end

function TestSets:testMembership()
  local g = self.g
  number(1, tq.sadd(g, db, key("s", "a")))
  number(1, tq.sismember(g, db, key("s", "a")))
  number(0, tq.sismember(g, db, key("s", "A")))
  number(1, tq.sismember_ext(g, db, tq.sismember_op_t(), key("s", "a")))
  number(0, tq.sismember_ext(g, db, nil, key("s", "b")))
  number(0, tq.sismember(g, db, key("nobody", "a")))
  number(0, tq.sismember(g, kit.other_db, key("s", "a")))
end

function TestSets:testCount()
  local g = self.g
  number(0, tq.scard(g, db, key("s")))
  for i = 1, 500 do number(1, tq.sadd(g, db, key("s", "m" .. i))) end
  number(500, tq.scard_ext(g, db, tq.scard_op_t(), key("s")))
  number(500, tq.scard_ext(g, db, nil, key("s")))
  luaunit.assertEquals(#members(g), 500)
end

function TestSets:testEmptySetIsGone()
  local g = self.g
  number(1, tq.sadd(g, db, key("s", "a")))
  number(1, tq.srem(g, db, key("s", "a")))
  number(0, tq.exists(g, db, key("s")))
  luaunit.assertEquals(members(g), {})
end

function TestSets:testMembersExt()
  local g = self.g
  number(1, tq.sadd(g, db, key("s", "a")))
  for _, op in ipairs({tq.smembers_op_t(), false}) do
    luaunit.assertEquals(kit.take(tq.smembers_ext(g, db, op or nil, key("s")), "smembers_res_free", elements), {"a"})
  end
  local result = tq.smembers(g, db, key("s"))
  luaunit.assertEquals(swig_type(result),
    "struct tq_mom_smembers_res_s *|tq_mom_smembers_res_s *|tq_mom_smembers_res_t *")
  luaunit.assertEquals(kit.tq_obj.from(result.value_array[1]).key, "s")
  number(0, tq.smembers_res_free(result))
end

function TestSets:testWrongKind()
  local g = self.g
  number(0, tq.set(g, db, key("s", "text")))
  number(kit.INPUT_ERR, tq.sadd(g, db, key("s", "a")))
  number(kit.INPUT_ERR, tq.srem(g, db, key("s", "a")))
  number(kit.INPUT_ERR, tq.sismember(g, db, key("s", "a")))
  number(kit.INPUT_ERR, tq.scard(g, db, key("s")))
  luaunit.assertEquals(members(g, "s", kit.INPUT_ERR), {})
  luaunit.assertEquals(kit.stored(g, "s"), "text")
end

function TestSets:testKeysThatAreNone()
  local g = self.g
  for _, f in ipairs({tq.sadd, tq.srem, tq.sismember, tq.scard}) do
    number(kit.INPUT_ERR, f(g, db, nil))
    number(kit.INPUT_ERR, f(g, db, "member"))
    number(kit.INPUT_ERR, f(g, -1, key("s", "a")))
  end
  for _, f in ipairs({tq.sadd, tq.srem, tq.sismember}) do number(kit.INPUT_ERR, f(g, db, key("s"))) end
  kit.take(tq.smembers(g, db, nil), "smembers_res_free", elements, kit.INPUT_ERR)
end

function TestSets:testRelease()
  number(0, tq.smembers_res_free(nil))
  number(kit.INPUT_ERR, tq.smembers_res_free(tq.tq_mom_smembers_res_t()))
  local result = tq.smembers(self.g, db, key("s"))
  number(0, tq.smembers_res_free(result))
  number(kit.INPUT_ERR, tq.smembers_res_free(result))
end

kit.run("sets")

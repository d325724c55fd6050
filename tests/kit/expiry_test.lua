local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db, probe = kit.tq, kit.key, kit.number, kit.db, kit.probe

TestExpiry = kit.suite()

local kLong = 3600000 -- milliseconds that no test lasts
local kShort = 20
local kPast = 60 -- by then, kShort is over

local function tags(result) return result.field_tag end

local function hash(g, name, ...)
  local object = key(name)
  for _, tag in ipairs({...}) do object[tag] = "v" .. tag end
  number(0, tq.hmset(g, db, object, {...}))
end

function TestExpiry:testPsetex()
  local g = self.g
  number(0, tq.psetex(g, db, key("k", "v"), kShort))
  number(0, tq.psetex(g, db, key("long", "v"), kLong))
  luaunit.assertEquals(kit.stored(g, "long"), "v")
  probe.sleep(kPast)
  luaunit.assertNil(kit.stored(g, "k"))
  number(0, tq.exists(g, db, key("k")))
  luaunit.assertEquals(kit.stored(g, "long"), "v")
end

function TestExpiry:testPsetexExt()
  local g = self.g
  local op = tq.psetex_op_t()
  op.milseconds = kLong
  number(0, tq.psetex_ext(g, db, op, key("k", "v")))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  number(1, tq.del_expire(g, db, key("k"), 0, 0))
  op.milseconds = kShort
  number(0, tq.psetex_ext(g, db, op, key("k", "w")))
  probe.sleep(kPast)
  luaunit.assertNil(kit.stored(g, "k"))
end

-- An expiry of nothing is refused, and the old value stays.
function TestExpiry:testPsetexWithoutTime()
  local g = self.g
  number(0, tq.set(g, db, key("k", "old")))
  number(kit.INPUT_ERR, tq.psetex(g, db, key("k", "new"), 0))
  number(kit.INPUT_ERR, tq.psetex(g, db, key("k", "new"), -1))
  number(kit.INPUT_ERR, tq.psetex_ext(g, db, tq.psetex_op_t(), key("k", "new")))
  number(kit.INPUT_ERR, tq.psetex_ext(g, db, nil, key("k", "new")))
  number(kit.INPUT_ERR, tq.psetex(g, db, key("k"), kLong))
  luaunit.assertEquals(kit.stored(g, "k"), "old")
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
end

function TestExpiry:testPexpireAndPdel()
  local g = self.g
  for i, expire in ipairs({
    function(object, time) return tq.pexpire(g, db, object, time, 1.5) end,
    function(object, time) return tq.pdel(g, db, object, time) end,
  }) do
    local name = "k" .. i
    number(0, expire(key(name), kLong))
    number(0, tq.set(g, db, key(name, "v")))
    number(1, expire(key(name), kLong))
    luaunit.assertEquals(kit.stored(g, name), "v")
    number(1, expire(key(name), kShort))
    probe.sleep(kPast)
    number(0, tq.exists(g, db, key(name)))
    number(0, tq.set(g, db, key(name, "v")))
    number(1, expire(key(name), 0)) -- at once
    number(0, tq.exists(g, db, key(name)))
    number(1, tq.rpush(g, db, key(name, "v"))) -- any kind of value
    number(1, expire(key(name), kShort))
    probe.sleep(kPast)
    number(0, tq.llen(g, db, key(name)))
  end
end

function TestExpiry:testLongestTime()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  number(1, tq.pdel(g, db, key("k"), 4294967295))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  number(1, tq.pdel(g, db, key("k"), 1e300))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
  number(0, tq.psetex(g, db, key("k", "v"), math.huge))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
end

function TestExpiry:testNegativeTimes()
  local g = self.g
  number(0, tq.set(g, db, key("k", "v")))
  for _, time in ipairs({-1, -0.5, 0 / 0}) do
    luaunit.assertErrorMsgContains("number must not be negative", tq.pexpire, g, db, key("k"), time, 0)
    luaunit.assertErrorMsgContains("number must not be negative", tq.pdel, g, db, key("k"), time)
    luaunit.assertErrorMsgContains("number must not be negative", tq.del_expire, g, db, key("k"), time, 0)
  end
  luaunit.assertEquals(kit.stored(g, "k"), "v")
end

-- del_expire takes an expiry away if it is due within the time given; 0 takes any.
function TestExpiry:testDelExpire()
  local g = self.g
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
  number(0, tq.set(g, db, key("k", "v")))
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
  number(1, tq.pdel(g, db, key("k"), kLong))
  number(0, tq.del_expire(g, db, key("k"), 1000, 0))
  number(1, tq.del_expire(g, db, key("k"), 2 * kLong, 0))
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
  number(1, tq.pdel(g, db, key("k"), kLong))
  number(1, tq.del_expire(g, db, key("k"), 0, 5))
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
  luaunit.assertEquals(kit.stored(g, "k"), "v")
end

-- A write of another kind of value under the key of one that is over starts afresh.
function TestExpiry:testExpiredKeyIsFree()
  local g = self.g
  number(0, tq.psetex(g, db, key("k", "v"), kShort))
  probe.sleep(kPast)
  number(1, tq.sadd(g, db, key("k", "m")))
  number(0, tq.del_expire(g, db, key("k"), 0, 0))
  number(1, tq.scard(g, db, key("k")))
end

function TestExpiry:testRunRemovesWhatIsDue()
  local g = self.g
  number(0, tq.psetex(g, db, key("k", "v"), kShort))
  number(0, tq.set(g, db, key("stays", "v")))
  probe.sleep(kPast)
  number(0, tq.tq_global_run(g))
  number(1, tq.scan(g, db, key("*"), 0, nil, nil))
end

function TestExpiry:testPexpireField()
  local g = self.g
  number(0, tq.pexpire_field(g, db, key("h"), kLong, 1, 0))
  hash(g, "h", 1, 2, 3)
  number(0, tq.pexpire_field(g, db, key("h"), kLong, 9, 0))
  number(1, tq.pexpire_field(g, db, key("h"), kShort, 2, 0.25))
  number(1, tq.pexpire_field(g, db, key("h"), kLong, 3, 0))
  probe.sleep(kPast)
  luaunit.assertEquals(kit.take(tq.hgetall(g, db, key("h")), "hash_res_free", tags), {1, 3})
  number(1, tq.pexpire_field(g, db, key("h"), 0, 1, 0)) -- at once
  luaunit.assertEquals(kit.take(tq.hgetall(g, db, key("h")), "hash_res_free", tags), {3})
  number(1, tq.pexpire_field(g, db, key("h"), 0, 3, 0))
  number(0, tq.exists(g, db, key("h"))) -- no fields, no hash
end

function TestExpiry:testLargestFieldNumber()
  local g = self.g
  local object = key("h")
  object[4294967295] = "last"
  number(0, tq.hmset(g, db, object, {4294967295}))
  number(1, tq.pexpire_field(g, db, key("h"), kLong, 4294967295, 0))
  number(1, tq.pexpire_field(g, db, key("h"), kLong, 2 ^ 53, 0)) -- saturates at the largest
  number(1, tq.pexpire_fields(g, db, key("h"), kLong, {-1}, 0)) -- the same 32 bits
  luaunit.assertErrorMsgContains("number must not be negative", tq.pexpire_field, g, db, key("h"), 1, -1, 0)
end

function TestExpiry:testPexpireFields()
  local g = self.g
  hash(g, "h", 1, 2, 3, 4)
  number(2, tq.pexpire_fields(g, db, key("h"), kShort, {1, 3, 9}, 1))
  number(1, tq.pexpire_fields(g, db, key("h"), kLong, {4, 4, 4}, 1))
  probe.sleep(kPast)
  luaunit.assertEquals(kit.take(tq.hgetall(g, db, key("h")), "hash_res_free", tags), {2, 4})
  number(kit.INPUT_ERR, tq.pexpire_fields(g, db, key("h"), kLong, {}, 1))
  number(0, tq.pexpire_fields(g, db, key("nobody"), kLong, {1}, 1))
  number(2, tq.pexpire_fields(g, db, key("h"), 0, {2, 4}, 1))
  number(0, tq.exists(g, db, key("h")))
end

-- Writing a field takes its expiry away; that of the others and of the key stays.
function TestExpiry:testWrittenFieldLosesItsExpiry()
  local g = self.g
  hash(g, "h", 1, 2)
  number(2, tq.pexpire_fields(g, db, key("h"), kShort, {1, 2}, 0))
  hash(g, "h", 1)
  probe.sleep(kPast)
  luaunit.assertEquals(kit.take(tq.hgetall(g, db, key("h")), "hash_res_free", tags), {1})
  number(1, tq.pdel(g, db, key("h"), kLong))
  hash(g, "h", 5)
  number(1, tq.del_expire(g, db, key("h"), 0, 0))
end

function TestExpiry:testFieldExpiryOfOtherKinds()
  local g = self.g
  number(0, tq.set(g, db, key("text", "v")))
  number(kit.INPUT_ERR, tq.pexpire_field(g, db, key("text"), kLong, 1, 0))
  number(kit.INPUT_ERR, tq.pexpire_fields(g, db, key("text"), kLong, {1}, 0))
  luaunit.assertEquals(kit.stored(g, "text"), "v")
end

function TestExpiry:testKeysThatAreNone()
  local g = self.g
  number(kit.INPUT_ERR, tq.pexpire(g, db, nil, 1, 0))
  number(kit.INPUT_ERR, tq.pdel(g, db, "k", 1))
  number(kit.INPUT_ERR, tq.del_expire(g, db, nil, 1, 0))
  number(kit.INPUT_ERR, tq.pexpire_field(g, db, nil, 1, 1, 0))
  number(kit.INPUT_ERR, tq.pexpire_fields(g, db, nil, 1, {1}, 0))
  number(kit.INPUT_ERR, tq.psetex(g, db, nil, 1))
  number(kit.INPUT_ERR, tq.pdel(g, 38, key("k"), 1))
end

kit.run("expiry")

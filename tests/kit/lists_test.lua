local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestLists = kit.suite()

local function elements(result) return kit.values(result.value_array) end

local function range(g, start, stop, error_code)
  return kit.take(tq.lrange(g, db, key("l"), start or 0, stop or -1), "lrange_res_free", elements, error_code)
end

local function fill(g, ...)
  for _, value in ipairs({...}) do tq.rpush(g, db, key("l", value)) end
end

-- The popped value and the second result.
local function taken(object, out)
  if object == nil then return {nil, out} end
  luaunit.assertEquals(object.key, "l")
  local value = object.value
  number(0, tq.tq_obj_free(object))
  return {value, out}
end

function TestLists:testPushes()
  local g = self.g
  number(1, tq.rpush(g, db, key("l", "b")))
  number(2, tq.rpush_ext(g, db, tq.rpush_op_t(), key("l", "c")))
  number(3, tq.lpush(g, db, key("l", "a")))
  number(4, tq.lpush_ext(g, db, tq.lpush_op_t(), key("l", "")))
  number(5, tq.lpush_ext(g, db, nil, key("l", "\0")))
  number(6, tq.rpush_ext(g, db, nil, key("l", "d\0")))
  luaunit.assertEquals(range(g), {"\0", "", "a", "b", "c", "d\0"})
  number(6, tq.llen(g, db, key("l")))
  number(6, tq.llen_ext(g, db, tq.llen_op_t(), key("l")))
  number(0, tq.llen_ext(g, db, nil, key("nobody")))
end

function TestLists:testPops()
  local g = self.g
  fill(g, "a", "b", "c", "d")
  local value, left = tq.lpop(g, db, key("l"))
  luaunit.assertEquals(swig_type(value), "tq_obj *")
  luaunit.assertEquals(taken(value, left), {"a", 3})
  luaunit.assertEquals(math.type(left), "float")
  luaunit.assertEquals(taken(tq.rpop(g, db, key("l"))), {"d", 2})
  luaunit.assertEquals(taken(tq.lpop_ext(g, db, tq.lpop_op_t(), key("l"))), {"b", 1})
  luaunit.assertEquals(taken(tq.rpop_ext(g, db, tq.rpop_op_t(), key("l"))), {"c", 0})
  number(0, tq.exists(g, db, key("l"))) -- no elements, no list
  luaunit.assertEquals(taken(tq.lpop(g, db, key("l"))), {nil, 0})
  luaunit.assertEquals(taken(tq.rpop(g, db, key("l"))), {nil, 0})
  luaunit.assertEquals(taken(tq.lpop_ext(g, db, nil, key("l"))), {nil, 0})
  luaunit.assertEquals(taken(tq.rpop_ext(g, db, nil, key("l"))), {nil, 0})
end

function TestLists:testRanges()
  local g = self.g
  fill(g, "a", "b", "c", "d")
  for _, case in ipairs({
    {0, -1, {"a", "b", "c", "d"}}, {1, 2, {"b", "c"}}, {-2, -1, {"c", "d"}}, {0, 0, {"a"}}, {-100, 1, {"a", "b"}},
    {2, 100, {"c", "d"}}, {3, 2, {}}, {4, 10, {}}, {-1, -2, {}}, {0, -5, {}}, {1.9, 2.9, {"b", "c"}},
    {-0.9, -1.9, {"a", "b", "c", "d"}}, {math.mininteger, math.maxinteger, {"a", "b", "c", "d"}}, {-1e300, 0, {"a"}},
  }) do
    luaunit.assertEquals(range(g, case[1], case[2]), case[3], case[1] .. " " .. case[2])
  end
  luaunit.assertEquals(kit.take(tq.lrange_ext(g, db, tq.lrange_op_t(), key("l"), 1, 1), "lrange_res_free", elements),
    {"b"})
  luaunit.assertEquals(kit.take(tq.lrange_ext(g, db, nil, key("l"), -1, -1), "lrange_res_free", elements), {"d"})
  luaunit.assertEquals(kit.take(tq.lrange(g, db, key("nobody"), 0, -1), "lrange_res_free", elements), {})
end

-- The elements carry the list's name.
function TestLists:testElements()
  local g = self.g
  fill(g, "a")
  local result = tq.lrange(g, db, key("l"), 0, -1)
  local element = result.value_array[1]
  luaunit.assertEquals(kit.tq_obj.from(element).key, "l")
  number(kit.INPUT_ERR, tq.tq_obj_free(element)) -- it belongs to the result
  number(0, tq.set(g, db, element)) -- and is a value object like any other
  number(0, tq.lrange_res_free(result))
  luaunit.assertEquals(kit.stored(g, "l"), "a")
end

function TestLists:testInsert()
  local g = self.g
  fill(g, "a", "c", "a")
  number(4, tq.linsert(g, db, key("l", "b"), key("l", "c"), 0))
  luaunit.assertEquals(range(g), {"a", "b", "c", "a"})
  number(5, tq.linsert(g, db, key("l", "d"), key("l", "c"), 1))
  luaunit.assertEquals(range(g), {"a", "b", "c", "d", "a"})
  number(6, tq.linsert_ext(g, db, tq.linsert_op_t(), key("l", "first"), key("l", "a"), 0)) -- beside the first match
  luaunit.assertEquals(range(g, 0, 1), {"first", "a"})
  number(7, tq.linsert_ext(g, db, nil, key("l", "second"), key("l", "first"), "1"))
  luaunit.assertEquals(range(g, 0, 2), {"first", "second", "a"})
end

function TestLists:testInsertFailures()
  local g = self.g
  number(0, tq.linsert(g, db, key("l", "b"), key("l", "c"), 0))
  number(0, tq.exists(g, db, key("l")))
  fill(g, "a")
  number(kit.ERR, tq.linsert(g, db, key("l", "b"), key("l", "c"), 0))
  number(kit.INPUT_ERR, tq.linsert(g, db, key("l", "b"), key("l", "a"), 2))
  number(kit.INPUT_ERR, tq.linsert(g, db, key("l", "b"), key("a"), 0))
  number(kit.INPUT_ERR, tq.linsert(g, db, key("l"), key("l", "a"), 0))
  number(kit.INPUT_ERR, tq.linsert(g, db, key("l", "b"), "a", 0))
  luaunit.assertErrorMsgContains("number must not be negative", tq.linsert, g, db, key("l", "b"), key("l", "a"), -1)
  luaunit.assertEquals(range(g), {"a"})
end

function TestLists:testSet()
  local g = self.g
  fill(g, "a", "b", "c")
  number(0, tq.lset(g, db, key("l", "B"), 1))
  number(0, tq.lset(g, db, key("l", "C"), -1.5))
  number(0, tq.lset_ext(g, db, tq.lset_op_t(), key("l", "A"), 0))
  luaunit.assertEquals(range(g), {"A", "B", "C"})
  number(0, tq.lset_ext(g, db, nil, key("l", "aa"), -3))
  for _, position in ipairs({3, -4, 1000, -1e300, 1e300}) do
    number(kit.ERR, tq.lset(g, db, key("l", "x"), position))
  end
  luaunit.assertEquals(range(g), {"aa", "B", "C"})
  number(kit.ERR, tq.lset(g, db, key("nobody", "x"), 0))
  number(0, tq.exists(g, db, key("nobody")))
end

-- The first so many elements that are equal; all for 0.
function TestLists:testRemove()
  local g = self.g
  fill(g, "a", "x", "a", "y", "a", "z", "a")
  number(2, tq.lrem(g, db, key("l", "a"), 2))
  luaunit.assertEquals(range(g), {"x", "y", "a", "z", "a"})
  number(0, tq.lrem(g, db, key("l", "q"), 0))
  number(1, tq.lrem_ext(g, db, tq.lrem_op_t(), key("l", "y"), 100))
  number(2, tq.lrem_ext(g, db, nil, key("l", "a"), 0))
  luaunit.assertEquals(range(g), {"x", "z"})
  number(1, tq.lrem(g, db, key("l", "x"), 1.9))
  number(1, tq.lrem(g, db, key("l", "z"), 4294967296))
  number(0, tq.exists(g, db, key("l")))
  number(0, tq.lrem(g, db, key("l", "z"), 0))
  luaunit.assertErrorMsgContains("number must not be negative", tq.lrem, g, db, key("l", "a"), -1)
end

function TestLists:testWrongKind()
  local g = self.g
  number(0, tq.set(g, db, key("l", "text")))
  number(kit.INPUT_ERR, tq.lpush(g, db, key("l", "a")))
  number(kit.INPUT_ERR, tq.rpush(g, db, key("l", "a")))
  luaunit.assertEquals(taken(tq.lpop(g, db, key("l"))), {nil, kit.INPUT_ERR})
  luaunit.assertEquals(taken(tq.rpop(g, db, key("l"))), {nil, kit.INPUT_ERR})
  number(kit.INPUT_ERR, tq.llen(g, db, key("l")))
  number(kit.INPUT_ERR, tq.lset(g, db, key("l", "a"), 0))
  number(kit.INPUT_ERR, tq.lrem(g, db, key("l", "a"), 0))
  number(kit.INPUT_ERR, tq.linsert(g, db, key("l", "a"), key("l", "a"), 0))
  luaunit.assertEquals(range(g, 0, -1, kit.INPUT_ERR), {})
  luaunit.assertEquals(kit.stored(g, "l"), "text")
end

function TestLists:testKeysThatAreNone()
  local g = self.g
  for _, push in ipairs({tq.lpush, tq.rpush}) do
    number(kit.INPUT_ERR, push(g, db, nil))
    number(kit.INPUT_ERR, push(g, db, "l"))
    number(kit.INPUT_ERR, push(g, db, key("l"))) -- no value
    number(kit.INPUT_ERR, push(g, 38, key("l", "a")))
  end
  luaunit.assertEquals({tq.lpop(g, db, nil)}, {nil, kit.INPUT_ERR})
  luaunit.assertEquals({tq.rpop(g, db, {})}, {nil, kit.INPUT_ERR})
  number(kit.INPUT_ERR, tq.llen(g, db, nil))
  number(kit.INPUT_ERR, tq.lset(g, db, nil, 0))
  number(kit.INPUT_ERR, tq.lrem(g, db, nil, 0))
  kit.take(tq.lrange(g, db, nil, 0, -1), "lrange_res_free", elements, kit.INPUT_ERR)
end

function TestLists:testRelease()
  local g = self.g
  number(0, tq.lrange_res_free(nil))
  number(kit.INPUT_ERR, tq.lrange_res_free(tq.tq_mom_lrange_res_t()))
  fill(g, "a", "b")
  local result = tq.lrange(g, db, key("l"), 0, -1)
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals({kit.probe.live()}, {1, 2})
  number(0, tq.lrange_res_free(result))
  number(kit.INPUT_ERR, tq.lrange_res_free(result))
end

function TestLists:testLongList()
  local g = self.g
  local object = key("l", "")
  for i = 1, 2000 do
    object.value = tostring(i)
    tq.rpush(g, db, object)
  end
  local all = range(g)
  luaunit.assertEquals(#all, 2000)
  luaunit.assertEquals({all[1], all[1000], all[2000]}, {"1", "1000", "2000"})
  luaunit.assertEquals(range(g, 1498, 1500), {"1499", "1500", "1501"})
end

kit.run("lists")

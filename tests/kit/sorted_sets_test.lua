local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db
local inf, nan = math.huge, 0 / 0

TestSortedSets = kit.suite()

-- Members with their scores, flat.
local function ranked(result)
  local flat = {}
  local values, scores = kit.values(result.value), result.score
  luaunit.assertEquals(#values, #scores)
  for i, value in ipairs(values) do
    luaunit.assertEquals(math.type(scores[i]), "float")
    flat[#flat + 1], flat[#flat + 2] = value, scores[i]
  end
  return flat
end

local function add(g, ...)
  local scores, objects = {}, {}
  for i = 1, select("#", ...), 2 do
    local member, score = select(i, ...)
    objects[#objects + 1], scores[#scores + 1] = key("z", member), score
  end
  return tq.zadd(g, db, scores, objects)
end

local function range(g, start, stop, error_code)
  return kit.take(tq.zrange(g, db, key("z"), start or 0, stop or -1), "zrange_res_free", ranked, error_code)
end

local function by_score(g, min, max, error_code)
  return kit.take(tq.zrangebyscore(g, db, key("z"), min, max), "zrangebyscore_res_free", ranked, error_code)
end

function TestSortedSets:testAdd()
  local g = self.g
  number(3, add(g, "b", 2, "a", 1, "c", 3))
  luaunit.assertEquals(range(g), {"a", 1, "b", 2, "c", 3})
  number(1, add(g, "b", 5, "d", 0.5)) -- b moves
  luaunit.assertEquals(range(g), {"d", 0.5, "a", 1, "c", 3, "b", 5})
  number(0, add(g, "a", 1))
  number(4, tq.zcard(g, db, key("z")))
  number(4, tq.zcard_ext(g, db, tq.zcard_op_t(), key("z")))
  number(0, tq.zcard_ext(g, db, nil, key("nobody")))
end

function TestSortedSets:testAddExt()
  local g = self.g
  number(1, tq.zadd_ext(g, db, tq.zadd_op_t(), {1}, {key("z", "a")}))
  number(1, tq.zadd_ext(g, db, nil, {"2"}, {key("z", "b")}))
  number(0, tq.zadd_ext(g, db, nil, {}, {}))
  luaunit.assertEquals(range(g), {"a", 1, "b", 2})
end

-- Members of one score are ordered by their bytes.
function TestSortedSets:testTies()
  local g = self.g
  number(6, add(g, "b", 1, "a\0", 1, "\255", 1, "a", 1, "", 1, "Z", 1))
  luaunit.assertEquals(range(g), {"", 1, "Z", 1, "a", 1, "a\0", 1, "b", 1, "\255", 1})
end

function TestSortedSets:testScores()
  local g = self.g
  number(5, add(g, "top", inf, "bottom", -inf, "zero", -0.0, "tiny", 5e-324, "big", 1e308))
  luaunit.assertEquals(range(g), {"bottom", -inf, "zero", 0, "tiny", 5e-324, "big", 1e308, "top", inf})
  number(kit.INPUT_ERR, add(g, "x", 1, "y", nan))
  number(5, tq.zcard(g, db, key("z")))
end

-- The last score of a member that is listed twice counts.
function TestSortedSets:testSameMemberTwice()
  number(1, add(self.g, "a", 1, "a", 2))
  luaunit.assertEquals(range(self.g), {"a", 2})
end

function TestSortedSets:testAddErrors()
  local g = self.g
  number(0, tq.zadd(g, db, {}, {}))
  number(-2, tq.zadd(g, db, {1.5}, {}))
  number(-2, tq.zadd(g, db, {}, {key("z", "a")}))
  number(-2, tq.zadd(g, db, {1, 2}, {key("z", "a"), nil}))
  number(-2, tq.zadd_ext(g, db, nil, {1, 2}, {key("z", "a")}))
  number(kit.INPUT_ERR, tq.zadd(g, db, {1}, {key("z")})) -- a member has a value
  number(kit.INPUT_ERR, tq.zadd(g, db, {1, 2}, {key("z", "a"), key("other", "b")})) -- of one sorted set
  number(kit.INPUT_ERR, tq.zadd(g, 38, {1}, {key("z", "a")}))
  number(kit.INPUT_ERR, tq.zadd(g, 38, {}, {}))
  for _, f in ipairs({
    function(scores, objects) return tq.zadd(g, db, scores, objects) end,
    function(scores, objects) return tq.zadd_ext(g, db, nil, scores, objects) end,
  }) do
    luaunit.assertErrorMsgEquals("input error, expect array", f, 5, {})
    luaunit.assertErrorMsgEquals("input error, expect array", f, {}, 5)
    luaunit.assertErrorMsgEquals("input error", f, {1, "x"}, {key("z", "a"), key("z", "b")})
    luaunit.assertErrorMsgEquals("input error", f, {1, 2}, {key("z", "a"), "b"})
  end
  number(0, tq.exists(g, db, key("z")))
end

function TestSortedSets:testRemove()
  local g = self.g
  number(4, add(g, "a", 1, "b", 2, "c", 3, "d", 4))
  number(2, tq.zrem(g, db, {key("z", "a"), key("z", "x"), key("z", "c")}))
  luaunit.assertEquals(range(g), {"b", 2, "d", 4})
  number(1, tq.zrem_ext(g, db, tq.zrem_op_t(), {key("z", "b"), key("z", "b")}))
  number(0, tq.zrem(g, db, {}))
  number(0, tq.zrem_ext(g, db, nil, {}))
  number(kit.INPUT_ERR, tq.zrem(g, db, {key("z", "d"), key("other", "d")}))
  number(kit.INPUT_ERR, tq.zrem(g, db, {key("z")}))
  luaunit.assertErrorMsgEquals("input error, expect array", tq.zrem, g, db, key("z", "d"))
  luaunit.assertErrorMsgEquals("input error", tq.zrem, g, db, {key("z", "d"), "d"})
  luaunit.assertEquals(range(g), {"d", 4})
  number(1, tq.zrem(g, db, {key("z", "d")}))
  number(0, tq.exists(g, db, key("z")))
  number(0, tq.zrem(g, db, {key("z", "d")}))
end

function TestSortedSets:testRangesByRank()
  local g = self.g
  number(4, add(g, "a", 1, "b", 2, "c", 3, "d", 4))
  for _, case in ipairs({
    {0, 0, {"a", 1}}, {1, 2, {"b", 2, "c", 3}}, {-1, -1, {"d", 4}}, {-100, 0, {"a", 1}}, {3, 100, {"d", 4}},
    {2, 1, {}}, {4, 5, {}}, {0, -5, {}}, {0.9, -3.9, {"a", 1, "b", 2}},
  }) do
    luaunit.assertEquals(range(g, case[1], case[2]), case[3], case[1] .. " " .. case[2])
  end
  luaunit.assertEquals(kit.take(tq.zrange_ext(g, db, tq.zrange_op_t(), key("z"), -1, -1), "zrange_res_free", ranked),
    {"d", 4})
  luaunit.assertEquals(kit.take(tq.zrange_ext(g, db, nil, key("nobody"), 0, -1), "zrange_res_free", ranked), {})
end

function TestSortedSets:testRangesByScore()
  local g = self.g
  number(5, add(g, "a", 1, "b", 2, "c", 2, "d", 3.5, "e", inf))
  for _, case in ipairs({
    {1, 2, {"a", 1, "b", 2, "c", 2}}, {1.5, 3.5, {"b", 2, "c", 2, "d", 3.5}}, {2, 2, {"b", 2, "c", 2}}, {3, 2, {}},
    {-inf, inf, {"a", 1, "b", 2, "c", 2, "d", 3.5, "e", inf}}, {inf, inf, {"e", inf}}, {-inf, -inf, {}}, {4, 100, {}},
  }) do
    local label = case[1] .. " " .. case[2]
    luaunit.assertEquals(by_score(g, case[1], case[2]), case[3], label)
    number(#case[3] // 2, tq.zcount(g, db, key("z"), case[1], case[2]))
    number(#case[3] // 2, tq.zcount_ext(g, db, tq.zcount_op_t(), key("z"), case[1], case[2]))
  end
  luaunit.assertEquals(
    kit.take(tq.zrangebyscore_ext(g, db, tq.zrangebyscore_op_t(), key("z"), 3, 4), "zrangebyscore_res_free", ranked),
    {"d", 3.5})
  luaunit.assertEquals(
    kit.take(tq.zrangebyscore_ext(g, db, nil, key("nobody"), 3, 4), "zrangebyscore_res_free", ranked), {})
  number(0, tq.zcount_ext(g, db, nil, key("nobody"), 0, 1))
end

function TestSortedSets:testBoundsThatAreNaN()
  local g = self.g
  number(1, add(g, "a", 1))
  for _, bounds in ipairs({{nan, 1}, {1, nan}, {nan, nan}}) do
    number(kit.INPUT_ERR, tq.zcount(g, db, key("z"), bounds[1], bounds[2]))
    number(kit.INPUT_ERR, tq.zremrangebyscore(g, db, key("z"), bounds[1], bounds[2]))
    luaunit.assertEquals(by_score(g, bounds[1], bounds[2], kit.INPUT_ERR), {})
  end
  number(1, tq.zcard(g, db, key("z")))
end

function TestSortedSets:testRankAndScore()
  local g = self.g
  number(3, add(g, "a", 1, "b", 2, "c", -1.25))
  number(0, tq.zrank(g, db, key("z", "c")))
  number(2, tq.zrank(g, db, key("z", "b")))
  number(1, tq.zrank_ext(g, db, tq.zrank_op_t(), key("z", "a")))
  number(kit.ERR, tq.zrank_ext(g, db, nil, key("z", "x")))
  number(kit.ERR, tq.zrank(g, db, key("nobody", "x")))
  local function score(result) return {result.exist, result.score} end
  luaunit.assertEquals(kit.take(tq.zscore(g, db, key("z", "c")), "zscore_res_free", score), {1, -1.25})
  luaunit.assertEquals(kit.take(tq.zscore_ext(g, db, tq.zscore_op_t(), key("z", "a")), "zscore_res_free", score), {1, 1})
  luaunit.assertEquals(kit.take(tq.zscore_ext(g, db, nil, key("z", "x")), "zscore_res_free", score), {0, 0})
  luaunit.assertEquals(kit.take(tq.zscore(g, db, key("nobody", "x")), "zscore_res_free", score), {0, 0})
  kit.take(tq.zscore(g, db, key("z")), "zscore_res_free", score, kit.INPUT_ERR)
end

function TestSortedSets:testRemoveRanges()
  local g = self.g
  number(6, add(g, "a", 1, "b", 2, "c", 3, "d", 4, "e", 5, "f", 6))
  number(2, tq.zremrangebyrank(g, db, key("z"), 0, 1))
  luaunit.assertEquals(range(g), {"c", 3, "d", 4, "e", 5, "f", 6})
  number(1, tq.zremrangebyrank_ext(g, db, tq.zremrangebyrank_op_t(), key("z"), -1, -1))
  number(0, tq.zremrangebyrank_ext(g, db, nil, key("z"), 5, 9))
  number(1, tq.zremrangebyscore(g, db, key("z"), 3.5, 4.5))
  luaunit.assertEquals(range(g), {"c", 3, "e", 5})
  number(1, tq.zremrangebyscore_ext(g, db, tq.zremrangebyscore_op_t(), key("z"), 5, 5))
  number(0, tq.zremrangebyscore_ext(g, db, nil, key("z"), 6, 5))
  number(1, tq.zremrangebyrank(g, db, key("z"), 0, -1))
  number(0, tq.exists(g, db, key("z")))
  number(0, tq.zremrangebyrank(g, db, key("z"), 0, -1))
  number(0, tq.zremrangebyscore(g, db, key("z"), -inf, inf))
  number(1, add(g, "a", 1))
  number(1, tq.zremrangebyscore(g, db, key("z"), -inf, inf))
  number(0, tq.exists(g, db, key("z")))
end

function TestSortedSets:testManyMembers()
  local g = self.g
  local scores, objects = {}, {}
  for i = 1, 1000 do scores[i], objects[i] = 1000 - i, key("z", "m" .. i) end
  number(1000, tq.zadd(g, db, scores, objects))
  number(1000, tq.zcard(g, db, key("z")))
  luaunit.assertEquals(range(g, 0, 0), {"m1000", 0})
  number(999, tq.zrank(g, db, key("z", "m1")))
  number(1000, tq.zrem(g, db, objects))
end

function TestSortedSets:testWrongKind()
  local g = self.g
  number(0, tq.set(g, db, key("z", "text")))
  number(kit.INPUT_ERR, add(g, "a", 1))
  number(kit.INPUT_ERR, tq.zrem(g, db, {key("z", "a")}))
  number(kit.INPUT_ERR, tq.zcard(g, db, key("z")))
  number(kit.INPUT_ERR, tq.zcount(g, db, key("z"), 0, 1))
  number(kit.INPUT_ERR, tq.zrank(g, db, key("z", "a")))
  number(kit.INPUT_ERR, tq.zremrangebyrank(g, db, key("z"), 0, 1))
  number(kit.INPUT_ERR, tq.zremrangebyscore(g, db, key("z"), 0, 1))
  luaunit.assertEquals(range(g, 0, -1, kit.INPUT_ERR), {})
  luaunit.assertEquals(by_score(g, 0, 1, kit.INPUT_ERR), {})
  kit.take(tq.zscore(g, db, key("z", "a")), "zscore_res_free", function() end, kit.INPUT_ERR)
  luaunit.assertEquals(kit.stored(g, "z"), "text")
end

function TestSortedSets:testKeysThatAreNone()
  local g = self.g
  number(kit.INPUT_ERR, tq.zcard(g, db, "name"))
  number(kit.INPUT_ERR, tq.zrank(g, db, nil))
  number(kit.INPUT_ERR, tq.zcount(g, db, nil, 0, 1))
  number(kit.INPUT_ERR, tq.zremrangebyrank(g, db, nil, 0, 1))
  number(kit.INPUT_ERR, tq.zremrangebyscore(g, db, nil, 0, 1))
  luaunit.assertErrorMsgEquals("input error", tq.zadd, g, db, {1}, {io.stdout}) -- no handle
  number(kit.INPUT_ERR, tq.zadd(g, db, {1}, {tq.get_op_t()}))
  kit.take(tq.zrange(g, db, nil, 0, 1), "zrange_res_free", ranked, kit.INPUT_ERR)
  kit.take(tq.zrangebyscore(g, db, nil, 0, 1), "zrangebyscore_res_free", ranked, kit.INPUT_ERR)
end

function TestSortedSets:testRelease()
  local g = self.g
  for release, make in pairs({
    zrange_res_free = function() return tq.zrange(g, db, key("z"), 0, -1) end,
    zrangebyscore_res_free = function() return tq.zrangebyscore(g, db, key("z"), 0, 1) end,
    zscore_res_free = function() return tq.zscore(g, db, key("z", "a")) end,
  }) do
    number(0, tq[release](nil))
    local result = make()
    number(0, tq[release](result))
    number(kit.INPUT_ERR, tq[release](result))
  end
  number(kit.INPUT_ERR, tq.zrange_res_free(tq.tq_mom_zrange_res_t()))
  number(kit.INPUT_ERR, tq.zrangebyscore_res_free(tq.tq_mom_zrangebyscore_res_t()))
  number(kit.INPUT_ERR, tq.zscore_res_free(tq.tq_mom_zscore_res_t()))
end

kit.run("sorted_sets")

local luaunit = require "luaunit"
local kit = require "kit"
local tq, key, number, db = kit.tq, kit.key, kit.number, kit.db

TestCasts = kit.suite()

-- The class that each cast gives.
local classes = {}
for _, name in ipairs(kit.families.casts) do
  local what = name:match("^convertPtrTo(.*)Res$")
  classes[name] = what and "tq_mom_" .. what:lower() .. "_res_t" or "tq_mom_scan_all_msg_t"
end

local function readable(class)
  local structure = class:gsub("_t$", "_s")
  return string.format("struct %s *|%s *|%s *", structure, structure, class)
end

-- The record as an untyped handle.
local function untyped(handle)
  local event = tq.tq_thread()
  event.zg = handle
  luaunit.assertEquals(swig_type(event.zg), "void *")
  return event.zg
end

function TestCasts:testEveryCastOfItsRecord()
  for name, class in pairs(classes) do
    local record = tq[class]()
    local field = class == "tq_mom_scan_all_msg_t" and "vlen" or "error_code"
    record[field] = 42
    for _, handle in ipairs({record, untyped(record), tq[name](record)}) do
      local cast = tq[name](handle)
      luaunit.assertEquals(swig_type(cast), readable(class), name)
      luaunit.assertTrue(cast == record, name)
      number(42, cast[field])
      cast[field] = 43
      number(43, record[field])
      record[field] = 42
    end
    luaunit.assertNil(tq[name](nil), name)
    luaunit.assertErrorMsgContains("void *", tq[name], 5)
    luaunit.assertErrorMsgContains(name, tq[name], "text")
  end
end

-- Collecting a cast handle leaves the record alone.
function TestCasts:testOwnership()
  for name, class in pairs(classes) do
    local record = tq[class]()
    for _ = 1, 10 do tq[name](record) end
    collectgarbage()
    collectgarbage()
    luaunit.assertTrue(tq[name](record) == record)
  end
end

-- The client library's own results, by way of an untyped handle.
function TestCasts:testResults()
  local g = self.g
  local hash = key("h")
  hash[1] = "one"
  number(0, tq.set(g, db, key("k", "1")))
  number(0, tq.hmset(g, db, hash, {1}))
  number(1, tq.rpush(g, db, key("l", "element")))
  number(1, tq.sadd(g, db, key("s", "member")))
  number(1, tq.zadd(g, db, {2.5}, {key("z", "member")}))
  for _, case in ipairs({
    {tq.get_ext(g, db, nil, key("k")), "convertPtrToGetRes", "get_res_free", function(r) return r.value.value end, "1"},
    {tq.incr(g, db, key("k")), "convertPtrToIncrRes", "incr_res_free", function(r) return r.value end, 2},
    {tq.hgetall(g, db, key("h")), "convertPtrToHashRes", "hash_res_free", function(r) return r.value[1] end, "one"},
    {tq.lrange(g, db, key("l"), 0, -1), "convertPtrToLrangeRes", "lrange_res_free",
     function(r) return kit.values(r.value_array)[1] end, "element"},
    {tq.smembers(g, db, key("s")), "convertPtrToSmembersRes", "smembers_res_free",
     function(r) return kit.values(r.value_array)[1] end, "member"},
    {tq.zrange(g, db, key("z"), 0, -1), "convertPtrToZrangeRes", "zrange_res_free",
     function(r) return r.score[1] end, 2.5},
    {tq.zrangebyscore(g, db, key("z"), 0, 9), "convertPtrToZrangebyscoreRes", "zrangebyscore_res_free",
     function(r) return kit.values(r.value)[1] end, "member"},
    {tq.zscore(g, db, key("z", "member")), "convertPtrToZscoreRes", "zscore_res_free",
     function(r) return r.score end, 2.5},
  }) do
    local result, cast, release, read, expected = table.unpack(case)
    local handle = untyped(result)
    luaunit.assertErrorMsgContains("Error in " .. release .. " (arg 1)", tq[release], handle)
    local typed = tq[cast](handle)
    luaunit.assertEquals(read(typed), expected)
    number(0, typed.error_code)
    number(0, tq[release](typed))
  end
end

-- A list's elements seen through another record of the same shape.
function TestCasts:testRecordsOfOneShape()
  local g = self.g
  number(1, tq.rpush(g, db, key("l", "element")))
  local result = tq.lrange(g, db, key("l"), 0, -1)
  for _, name in ipairs({"convertPtrToListRes", "convertPtrToSetRes", "convertPtrToSmembersRes"}) do
    luaunit.assertEquals(kit.values(tq[name](result).value_array), {"element"})
  end
  number(0, tq.lrange_res_free(result))
  result = tq.zrange(g, db, key("nobody"), 0, -1)
  luaunit.assertEquals(tq.convertPtrToSortedsetRes(result).value_array, {})
  number(0, tq.zrange_res_free(result))
end

kit.run("casts")

-- tq_watch.live and tq_watch.assert_released.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, watch, key, db = stage.tq, stage.watch, stage.key, stage.db

TestLive = stage.suite()

function TestLive:test_results_objects_and_runtimes()
  local g = self.g
  tq.rpush(g, db, key("jobs", "a"))
  local where = stage.here(1)
  local result = tq.lrange(g, db, key("jobs"), 0, -1)
  local object = tq.lpop(g, db, key("jobs"))
  local live = watch.live()
  luaunit.assertEquals(#live, 3)
  luaunit.assertEquals({live[1].type, live[1].call, live[1].key}, {"tq_global_t", "tq_global_init", nil})
  luaunit.assertEquals({live[2].type, live[2].call, live[2].key}, {"tq_mom_lrange_res_t", "lrange", "jobs"})
  luaunit.assertEquals(live[2].where, where)
  luaunit.assertEquals(string.format("%s:%d", live[2].source, live[2].line), where)
  luaunit.assertEquals({live[3].type, live[3].call, live[3].key}, {"tq_obj", "lpop", "jobs"})
  luaunit.assertTrue(live[2].age >= live[3].age and live[3].age >= 0)
  luaunit.assertEquals(tq.lrange_res_free(result), 0)
  luaunit.assertEquals(tq.tq_obj_free(object), 0)
  luaunit.assertEquals(#watch.live(), 1)
end

function TestLive:test_assert_released()
  local where = stage.here(1)
  local result = tq.smembers(self.g, db, key("s\1"))
  local here = stage.here(1)
  local ok, message = pcall(function() watch.assert_released() end)
  luaunit.assertFalse(ok)
  local lines = {}
  for line in message:gmatch("[^\n]+") do lines[#lines + 1] = line end
  luaunit.assertEquals(#lines, 3)
  luaunit.assertEquals(lines[1], here .. ": not everything is released:")
  luaunit.assertStrContains(lines[2], "tq_global_t of tq_global_init is not released after")
  luaunit.assertStrContains(lines[3], where .. ': tq_mom_smembers_res_t of smembers "s\\x01" is not released after')
  tq.smembers_res_free(result)
end

-- A release that the client library refuses is none.
function TestLive:test_refused_releases()
  local result = tq.smembers(self.g, db, key("s"))
  luaunit.assertEquals(tq.get_res_free(tq.convertPtrToGetRes(result)), -2)
  luaunit.assertEquals(#watch.live(), 2)
  luaunit.assertEquals(tq.smembers_res_free(result), 0)
  luaunit.assertEquals(tq.smembers_res_free(nil), 0)
end

-- Objects that Lua owns are no business of the watch.
function TestLive:test_objects_of_the_script()
  local object = key("a", "1")
  luaunit.assertEquals(#watch.live(), 1)
  object:__disown()
  luaunit.assertEquals(tq.tq_obj_free(object), 0)
  luaunit.assertEquals(#watch.live(), 1)
end

function TestLive:test_many()
  local results = {}
  for i = 1, 3000 do results[i] = tq.smembers(self.g, db, key("s")) end
  for i = 1, 3000, 2 do tq.smembers_res_free(results[i]) end
  luaunit.assertEquals(#watch.live(), 1501)
  for i = 2, 3000, 2 do tq.smembers_res_free(results[i]) end
  luaunit.assertEquals(#watch.live(), 1)
end

stage.finish()

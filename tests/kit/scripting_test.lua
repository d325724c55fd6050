-- The table of docs/scripting.md that says what trips: each line does what the table says, and the other way works.
local luaunit = require "luaunit"
local kit = require "kit"
local tq, tq_obj, db = kit.tq, kit.tq_obj, kit.db

TestScripting = kit.suite()

local function rows()
  local directory = arg[0]:match("^(.*)/")
  local text = kit.read_file(directory .. "/../../docs/scripting.md")
  local table_text = assert(text:match("| a script says | what happens | instead |\n|[-|]+|\n(.-)\n\n"))
  local found = {}
  for line in table_text:gmatch("[^\n]+") do
    local says, verb, what, instead = line:match("^| `(.-)` | (%a+) `(.-)`.- | `(.*)` |$")
    luaunit.assertNotNil(says, line)
    found[#found + 1] = {says = says, verb = verb, what = what, instead = instead}
  end
  return found
end

function TestScripting:testWhatTrips()
  local owned = {} -- results that a line leaves behind
  local function keep(release) return function(result, ...)
    if result then owned[#owned + 1] = {release, result} end
    return result, ...
  end end
  local release = {get = "tq_obj_free", hmget = "hash_res_free", lrange_ext = "lrange_res_free"}
  local watched = setmetatable({}, {__index = function(_, name)
    if not release[name] then return tq[name] end
    return function(...) return keep(release[name])(tq[name](...)) end
  end})
  local count = 0
  for _, row in ipairs(rows()) do
    local scope = setmetatable({
      tq = watched, tq_obj = tq_obj, g = self.g, db = db, key = tq_obj.new("nothing"), port = tq_obj.new("port", "1"),
      m = tq_obj.new("load", "cpu0"), print = function() end,
    }, {__index = _G})
    tq.del(self.g, db, scope.port)
    local ok, got = pcall(assert(load("return " .. row.says, "=row", "t", scope)))
    if row.verb == "gives" then
      luaunit.assertTrue(ok, row.says)
      luaunit.assertEquals(tostring(got), row.what, row.says)
    else
      luaunit.assertEquals({row.verb, ok}, {"raises", false}, row.says)
      luaunit.assertStrContains(got, row.what)
    end
    assert(load("return " .. row.instead, "=row", "t", scope) or load(row.instead, "=row", "t", scope))()
    for _, result in ipairs(owned) do kit.number(0, tq[result[1]](result[2])) end
    owned, count = {}, count + 1
  end
  luaunit.assertTrue(count > 10)
end

function TestScripting:testTheModulesSetGlobals()
  luaunit.assertTrue(rawequal(_G.tq_mom_sync, kit.module))
  luaunit.assertTrue(rawequal(_G.tq_obj, tq_obj))
end

kit.run()

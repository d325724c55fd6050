-- A script's own tests: scripts/lua --watch examples/unit_test.lua, with luaunit (Debian's lua-luaunit).
--
-- tq_kit makes the store what a test needs: a fixture, a clock that stands still, a database that cannot be written.
-- tq_watch makes each call fail once, and finds what is not released.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local tq_kit = require "tq_kit"
local tq_watch = require "tq_watch"
local luaunit = require "luaunit"

local db = tq.TQ_MOM_APP_DB

-- What is tested: counts a user's visits and opens a session of a minute. Returns the count, or nil and a reason.
local function visit(g, user)
  if tq.psetex(g, db, tq_obj.new("session/" .. user, "open"), 60000) ~= tq.TQ_MOM_OK then return nil, "no session" end
  local result = tq.incr(g, db, tq_obj.new("visits/" .. user))
  local count = result and result.error_code == tq.TQ_MOM_OK and math.tointeger(result.value)
  if result then tq.incr_res_free(result) end -- also when it carries an error
  if not count then return nil, "not counted" end
  return count
end

local TestVisits = {}

function TestVisits:setUp()
  self.g = assert(tq.tq_global_init(nil, nil))
  assert(tq.client_connect(self.g, 0) == tq.TQ_MOM_OK)
  tq_kit.load(self.g, db, {["visits/alice"] = "41"}) -- the fixture
  tq_kit.freeze(self.g)
end

function TestVisits:tearDown()
  assert(tq.tq_global_finish(self.g) == tq.TQ_MOM_OK)
  tq_watch.assert_released()
end

function TestVisits:test_counts_and_opens_a_session()
  luaunit.assertEquals(visit(self.g, "alice"), 42)
  luaunit.assertEquals(visit(self.g, "bob"), 1)
  luaunit.assertEquals(tq_kit.dump(self.g, db), {
    ["visits/alice"] = {kind = "string", value = "42"},
    ["visits/bob"] = {kind = "string", value = "1"},
    ["session/alice"] = {kind = "string", value = "open", remaining = 60000},
    ["session/bob"] = {kind = "string", value = "open", remaining = 60000},
  })
end

function TestVisits:test_a_session_ends_after_a_minute()
  visit(self.g, "alice")
  tq_kit.advance(self.g, 59999)
  luaunit.assertEquals(tq.exists(self.g, db, tq_obj.new("session/alice")), 1)
  tq_kit.advance(self.g, 1)
  luaunit.assertEquals(tq.exists(self.g, db, tq_obj.new("session/alice")), 0)
end

function TestVisits:test_a_database_that_cannot_be_written()
  tq_kit.read_only(self.g, db, true)
  luaunit.assertEquals({visit(self.g, "alice")}, {nil, "no session"})
  luaunit.assertEquals(tq_kit.last_error(self.g), "the database is read-only")
end

-- Each client call of a visit fails in turn. None of the failures may be an error, and none may leave a result behind.
function TestVisits:test_whatever_fails()
  for _, how in ipairs {{status = tq.TQ_MOM_NO_READY}, {null = true}} do
    local report = tq_watch.each_call(function() visit(self.g, "alice") end, how)
    luaunit.assertEquals(report.errors, 0, tostring(report))
    for _, run in ipairs(report) do luaunit.assertEquals(run.leaked, 0, run.text) end
  end
end

-- With a global TestVisits, luaunit.LuaUnit.run() would do; it also says how long it took.
local runner = luaunit.LuaUnit.new()
runner:setOutputType("nil")
local failures = runner:runSuiteByInstances{{"TestVisits", TestVisits}}
for _, test in ipairs(runner.result.allTests) do
  print(test.testName .. ": " .. (test.msg or "ok"))
end
os.exit(failures == 0, true)

-- What tests/kit's object tests use of its kit.lua, with platform records and the recorder in place of the host kit.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, platform = stage.tq, stage.platform
local tq_obj = require "tq_obj"

local kit = {tq = tq, tq_obj = tq_obj, db = tq.TQ_MOM_APP_DB, INPUT_ERR = -2}

kit.probe = {live = function() return 0, platform.count() end, count = platform.count}

function kit.number(expected, actual)
  luaunit.assertEquals(math.type(actual), "float")
  luaunit.assertEquals(actual, expected)
end

function kit.assert_nothing_live()
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals(platform.count(), 0, "records that were not released")
end

function kit.suite()
  local suite = {}
  function suite:setUp()
    self.g = tq.tq_global_init(nil, nil)
    kit.number(0, tq.client_connect(self.g, 0))
  end
  function suite:tearDown()
    kit.number(0, tq.tq_global_finish(self.g))
    self.g = nil
    kit.assert_nothing_live()
  end
  return suite
end

function kit.run()
  local failures = luaunit.LuaUnit.run()
  os.exit(failures == 0, true)
end

return kit

-- The destructor hook in the hands of a script.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestCollection = {}

function TestCollection:setUp()
  self.blocks = support.settled_blocks()
  self.stray_frees = recorder.stray_frees()
end

function TestCollection:tearDown()
  luaunit.assertEquals(support.settled_blocks(), self.blocks)
  luaunit.assertEquals(recorder.stray_frees(), self.stray_frees)
end

-- The hook is called once by the script and once by the collector.
function TestCollection:test_a_record_is_freed_once()
  for _, class in ipairs(catalog.classes) do
    local record = tq[class.name]()
    local address = support.pointer_of(record)
    luaunit.assertTrue(recorder.is_live(address))
    luaunit.assertEquals(select("#", debug.getmetatable(record).__gc(record)), 0)
    luaunit.assertFalse(recorder.is_live(address))
    luaunit.assertEquals(support.own_of(record), 1)
    debug.getmetatable(record).__gc(record)
    record = nil -- luacheck: ignore
    collectgarbage()
    luaunit.assertEquals(recorder.stray_frees(), self.stray_frees, class.name)
  end
end

function TestCollection:test_a_record_that_lua_does_not_own_stays()
  local record = tq.set_op_t()
  local address = support.pointer_of(record)
  record:__disown()
  debug.getmetatable(record).__gc(record)
  luaunit.assertTrue(recorder.is_live(address))
  luaunit.assertTrue(recorder.free(address))
end

support.run()

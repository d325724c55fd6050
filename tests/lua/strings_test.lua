-- What few arguments of key and string commands can hold, and no memory for their results.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestStrings = {}

function TestStrings:setUp()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
  self.blocks = support.settled_blocks()
  recorder.reset()
end

function TestStrings:tearDown()
  luaunit.assertEquals(support.settled_blocks(), self.blocks)
end

function TestStrings:test_field_arrays()
  tq.pexpire_fields(self.global, 0, self.key, 10, {}, 1)
  tq.pexpire_fields(self.global, 0, self.key, 10, {7, -8}, 1)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][5], calls[1][6]}, {{address = 0}, 0})
  calls[2][5].address = nil
  luaunit.assertEquals({calls[2][5], calls[2][6], calls[2][7]}, {{7, -8}, 2, {seconds = 1, microseconds = 0}})
end

-- The handle of a result may fail to be made; nothing of the module's own is lost with it.
function TestStrings:test_out_of_lua_memory()
  recorder.returns("tq_mom_get_sync", 0x10, 0)
  local n = 0
  repeat
    n = n + 1
    local failed, ok, message = recorder.without_memory(n, tq.get, self.global, 0, self.key)
    if failed then luaunit.assertEquals({ok, message}, {false, "not enough memory"}) end
  until not failed
  luaunit.assertTrue(n > 1)
end

support.run()

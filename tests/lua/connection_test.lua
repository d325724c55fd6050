-- Connection and runtime control.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestConnection = {}

function TestConnection:setUp()
  recorder.reset()
end

function TestConnection:test_init_with_a_number_as_name()
  tq.tq_global_init(5, nil)
  tq.tq_global_init(1.5, nil)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[2][1]}, {"5", "1.5"})
end

-- The client library gets the very bytes up to the first NUL.
function TestConnection:test_init_with_a_name()
  local existing = tq.tq_global_t()
  tq.tq_global_init("router", existing)
  tq.tq_global_init("ab\0cd", nil)
  tq.tq_global_init("", nil)
  local calls = recorder.calls()
  luaunit.assertEquals({calls[1][1], calls[1][2]}, {"router", support.pointer_of(existing)})
  luaunit.assertEquals({calls[2][1], calls[3][1]}, {"ab", ""})
end

support.run()

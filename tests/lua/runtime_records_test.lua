-- The runtime's mirror records.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestRuntimeRecords = {}

function TestRuntimeRecords:setUp()
  recorder.reset()
end

function TestRuntimeRecords:test_the_payload_is_reached_in_place()
  local event = tq.tq_thread()
  support.raises_bare("This variable is immutable", support.set_field, event, "u", event.u)
  event.u.fd = 5
  luaunit.assertEquals(event.u.fd, 5.0)
  luaunit.assertEquals(event.u.val, 5.0)
  local offset = recorder.layouts.tq_thread.fields.u.offset
  luaunit.assertEquals(support.peek(support.pointer_of(event) + offset, "i4"), 5)
  support.raises_bare("Error in tq_thread::tq_thread_u::val (arg 2), expected 'int' got 'string'", support.set_field,
    event.u, "val", "x")
  support.raises("Error in tq_thread_u_val_set (arg 1), expected 'tq_thread_u *' got 'struct tq_thread *|tq_thread *'",
    debug.getregistry().SWIG.tq_thread_u[".set"].val, event, 1)
  support.raises_bare("Error in tq_thread::tq_thread_u::tq_thread_u expected 0..0 args, got 1", tq.tq_thread_u, 1)
end

function TestRuntimeRecords:test_time_value_of_the_payload()
  local event, other = tq.tq_thread(), tq.tq_thread_u()
  local layout = recorder.layouts.tq_thread_u.fields.sands
  recorder.write(support.pointer_of(other), string.rep("\x11", layout.size))
  event.u.sands = other.sands
  luaunit.assertEquals(recorder.read(support.pointer_of(event.u), layout.size), string.rep("\x11", layout.size))
  support.is_handle(event.u.sands, "struct timeval *", support.pointer_of(event.u))
end

function TestRuntimeRecords:test_what_the_runtime_hands_back()
  local global, master = tq.tq_global_t(), tq.tq_thread_master()
  master.index = 3
  recorder.returns("tq_global_init", support.pointer_of(global))
  recorder.returns("tq_global_get_master", support.pointer_of(master))
  local runtime = tq.tq_global_init("router", nil)
  local view = tq.tq_global_get_master(runtime)
  luaunit.assertEquals(view.index, 3.0)
  luaunit.assertNil(runtime.master)
  runtime.master = view
  luaunit.assertTrue(runtime.master == view)
  luaunit.assertEquals(runtime.master.index, 3.0)
end

support.run()

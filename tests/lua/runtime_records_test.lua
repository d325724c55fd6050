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

function TestRuntimeRecords:test_names_have_ten_characters()
  local event = tq.tq_thread()
  event.name = "fifteen letters"
  luaunit.assertEquals(event.name, "fifteen le")
  support.raises_bare("Error in tq_thread::name (arg 2), expected 'char [TQ_THREAD_NAME_LEN+1]' got 'boolean'",
    support.set_field, event, "name", true)
end

function TestRuntimeRecords:test_linked_events_are_disowned()
  local event, following = tq.tq_thread(), tq.tq_thread()
  local pointer = support.pointer_of(following)
  event.next = following
  luaunit.assertEquals(support.own_of(following), 0)
  luaunit.assertTrue(event.next == following)
  following = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(pointer))
  recorder.free(pointer)
end

function TestRuntimeRecords:test_the_handler_is_no_lua_function()
  local event = tq.tq_thread()
  support.raises_bare("Error in tq_thread::func (arg 2), expected 'int (*)(struct tq_thread *)' got 'function'",
    support.set_field, event, "func", print)
  local handler = support.handle("_p_f_p_struct_tq_thread__int", 0x77, 1)
  event.func = handler
  luaunit.assertEquals(support.own_of(handler), 1)
  support.is_handle(event.func, "int (*)(struct tq_thread *)", 0x77)
end

function TestRuntimeRecords:test_counters_are_reached_through_handles()
  local master = tq.tq_thread_master()
  for _, name in ipairs {"alloc", "flag"} do
    local offset = recorder.layouts.tq_thread_master.fields[name].offset
    support.is_handle(master[name], "u_int32_t *", support.pointer_of(master) + offset)
    support.poke(support.pointer_of(master[name]), "I4", 0xfffffffe)
    local other = tq.tq_thread_master()
    other[name] = master[name]
    luaunit.assertEquals(support.peek(support.pointer_of(other) + offset, "I4"), 0xfffffffe)
    support.raises_bare("Error in tq_thread_master::" .. name .. " (arg 2), expected 'u_int32_t' got 'number'",
      support.set_field, master, name, 1)
  end
end

function TestRuntimeRecords:test_all_timer_lists_are_copied()
  local from, to = tq.tq_thread_master(), tq.tq_thread_master()
  local layout = recorder.layouts.tq_thread_master.fields.timer
  local bytes = {}
  for i = 1, layout.size do bytes[i] = string.char(i % 256) end
  bytes = table.concat(bytes)
  recorder.write(support.pointer_of(from) + layout.offset, bytes)
  to.timer = from.timer
  luaunit.assertEquals(recorder.read(support.pointer_of(to) + layout.offset, layout.size), bytes)
  support.is_handle(to.timer, "struct tq_thread_list *|tq_thread_list *", support.pointer_of(to) + layout.offset)
  support.raises_bare("Error in tq_thread_master::timer (arg 2), expected 'struct tq_thread_list [4]' got 'table'",
    support.set_field, to, "timer", {})
end

function TestRuntimeRecords:test_descriptor_sets()
  local master = tq.tq_thread_master()
  local read, write = master.readfd, master.writefd
  luaunit.assertEquals(support.pointer_of(write) - support.pointer_of(read), 8192)
  recorder.write(support.pointer_of(read), string.rep("\x5a", 8192))
  master.writefd = read
  luaunit.assertEquals(recorder.read(support.pointer_of(write), 8192), string.rep("\x5a", 8192))
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

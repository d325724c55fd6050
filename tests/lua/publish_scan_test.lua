-- Scan with its callback, and the exported reference functions.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local word = recorder.word

TestScan = {}

function TestScan:setUp()
  self.global = tq.tq_global_t()
  self.key = tq.get_op_t()
  self.blocks = support.settled_blocks()
  recorder.reset()
end

function TestScan:tearDown()
  recorder.fail_request(0)
  luaunit.assertEquals(support.settled_blocks(), self.blocks)
end

local function in_registry(value)
  for _, entry in pairs(debug.getregistry()) do
    if rawequal(entry, value) then return true end
  end
  return false
end

-- The binding cannot know of an error that leaves the callback, so its context stays behind.
local function free_abandoned_context()
  luaunit.assertTrue(recorder.free(recorder.calls()[1][6]))
end

local function results()
  return recorder.calls()[1].results
end

function TestScan:test_without_a_callback()
  local argument = {}
  recorder.returns("tq_mom_scan_sync", 6)
  support.float(6, tq.scan(self.global, 2, self.key, 10, nil, argument))
  local call = support.only_call()
  luaunit.assertEquals({call[1], call[2], call[3], call[4], call[5], call[6]},
    {support.pointer_of(self.global), 2, support.pointer_of(self.key), 10, 0, 0})
  luaunit.assertFalse(in_registry(argument))
  luaunit.assertEquals(recorder.requests(), {})
end

function TestScan:test_a_callback_that_is_no_function()
  for _, value in ipairs {5, "text", {}, true, false, self.key, setmetatable({}, {__call = print})} do
    support.raises_bare("input error: cb is not function", tq.scan, self.global, 0, self.key, 10, value, nil)
  end
  support.no_call()
end

function TestScan:test_counts()
  local function callback() end
  support.raises("number must not be negative", tq.scan, self.global, 0, self.key, -1, callback, nil)
  support.raises("number must not be negative", tq.scan, self.global, 0, self.key, 0 / 0, 5, nil)
  support.raises("Error in tq_mom_scan_sync (arg 4), expected 'unsigned int' got 'nil'", tq.scan, self.global, 0,
    self.key, nil, callback, nil)
  support.raises("Error in tq_mom_scan_sync expected 6..6 args, got 5", tq.scan, self.global, 0, self.key, 1, callback)
  support.no_call()
  tq.scan(self.global, 0, self.key, 2.7, callback, nil)
  luaunit.assertEquals(support.only_call()[4], 2)
end

function TestScan:test_what_the_callback_receives()
  recorder.deliver {{message = 0x100}, {message = 0, global = 0}, {message = 0x300, global = 0x400}}
  local argument, seen = {}, {}
  tq.scan(self.global, 0, self.key, 10, function(...)
    seen[#seen + 1] = table.pack(...)
  end, argument)
  luaunit.assertEquals(#seen, 3)
  for _, arguments in ipairs(seen) do
    luaunit.assertEquals(arguments.n, 3)
    luaunit.assertIs(arguments[3], argument)
  end
  local global_type = "struct tq_global_s *|tq_global_s *|tq_global_t *"
  local message_type = "struct tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *"
  support.is_handle(seen[1][1], global_type, support.pointer_of(self.global))
  support.is_handle(seen[1][2], message_type, 0x100)
  luaunit.assertIs(debug.getmetatable(seen[1][2]), debug.getregistry().SWIG.tq_mom_pubsub_msg_t)
  luaunit.assertNil(seen[2][1])
  luaunit.assertNil(seen[2][2])
  support.is_handle(seen[3][1], global_type, 0x400)
  support.is_handle(seen[3][2], message_type, 0x300)
end

function TestScan:test_arguments_of_every_type_arrive()
  for _, argument in ipairs {1, 1.5, "x", true, false, {}, print, self.key, support.light} do
    recorder.reset()
    recorder.deliver {{message = 1}}
    local got
    tq.scan(nil, 0, nil, 1, function(_, _, value) got = value end, argument)
    luaunit.assertTrue(rawequal(got, argument))
  end
  recorder.reset()
  recorder.deliver {{message = 1}}
  local got = "untouched"
  tq.scan(nil, 0, nil, 1, function(...) got = table.pack(...) end, nil)
  luaunit.assertEquals({got.n, got[3]}, {3, nil})
end

function TestScan:test_reading_the_message()
  local layout = recorder.layouts.tq_mom_scan_all_msg_t
  local message, name, bytes = recorder.alloc(layout.size), recorder.alloc(8), recorder.alloc(4)
  recorder.write(name, "port\0")
  recorder.write(bytes, "a\0b")
  support.poke(message + layout.fields.vlen.offset, "i4", 3)
  support.poke(message + layout.fields.key.offset, "T", name)
  support.poke(message + layout.fields.value.offset, "T", bytes)
  recorder.deliver {{message = message}}
  local seen
  tq.scan(self.global, 0, self.key, 1, function(_, handle)
    local element = tq.convertPtrToScanAllMsg(handle)
    seen = {element.key, element.vlen, recorder.read(support.pointer_of(element.value), 3)}
  end, nil)
  luaunit.assertEquals(seen, {"port", 3.0, "a\0b"})
  collectgarbage()
  for _, block in ipairs {message, name, bytes} do
    luaunit.assertTrue(recorder.is_live(block))
    recorder.free(block)
  end
end

function TestScan:test_what_the_callback_returns()
  local rows = {
    {{1}, 1}, {{0}, 0}, {{-5}, -5}, {{1.0}, 0}, {{2.5}, 0}, {{true}, 0}, {{nil, n = 1}, 0}, {{n = 0}, 0}, {{"1"}, 0},
    {{{}}, 0}, {{2147483647}, 2147483647}, {{2147483648}, -2147483648}, {{4294967297}, 1}, {{math.mininteger}, 0},
    {{math.maxinteger}, -1}, {{7, 8, 9}, 7}, {{"x", 1}, 0},
  }
  local messages, expected = {}, {}
  for i, row in ipairs(rows) do messages[i], expected[i] = {message = i}, row[2] end
  recorder.deliver(messages)
  local i = 0
  tq.scan(self.global, 0, self.key, 10, function()
    i = i + 1
    return table.unpack(rows[i][1], 1, rows[i][1].n or #rows[i][1])
  end, nil)
  luaunit.assertEquals(results(), expected)
end

function TestScan:test_a_null_context_calls_nobody()
  recorder.deliver {{message = 1, null_context = true}}
  local called = false
  tq.scan(self.global, 0, self.key, 10, function() called = true end, nil)
  luaunit.assertFalse(called)
  luaunit.assertEquals(results(), {0})
end

function TestScan:test_native_callbacks()
  recorder.deliver {{message = 1}}
  local seen
  tq.scan(self.global, 0, self.key, 10, recorder.cfunction(function(...)
    seen = select("#", ...)
    return 4
  end), nil)
  luaunit.assertEquals(seen, 3)
  luaunit.assertEquals(results(), {4})
end

function TestScan:test_references_end_with_the_scan()
  local function callback() return 0 end
  local argument = {}
  local during
  recorder.deliver {{message = 1}}
  tq.scan(self.global, 0, self.key, 10, function()
    during = in_registry(argument)
  end, argument)
  luaunit.assertTrue(during)
  tq.scan(self.global, 0, self.key, 10, callback, argument)
  luaunit.assertFalse(in_registry(callback))
  luaunit.assertFalse(in_registry(argument))
  local weak = setmetatable({argument = argument}, {__mode = "v"})
  argument = nil
  collectgarbage()
  luaunit.assertNil(weak.argument)
  local size = #debug.getregistry()
  for _ = 1, 100 do tq.scan(self.global, 0, self.key, 10, callback, {}) end
  luaunit.assertEquals(#debug.getregistry(), size)
end

-- The context is two references: state and number of the callback, then of the argument.
function TestScan:test_the_context()
  recorder.deliver {{message = 1}}
  local argument = {}
  local callback, found
  callback = function()
    local context = recorder.calls()[1][6]
    local registry = debug.getregistry()
    found = {
      rawequal(registry[support.peek(context + word, "i4")], callback),
      rawequal(registry[support.peek(context + 3 * word, "i4")], argument),
      support.peek(context, "T") == support.peek(context + 2 * word, "T") and support.peek(context, "T") ~= 0,
    }
  end
  tq.scan(self.global, 0, self.key, 10, callback, argument)
  luaunit.assertEquals(found, {true, true, true})
  luaunit.assertEquals(recorder.requests(), {4 * word})
  -- nil is not stored: its reference is Lua's own.
  recorder.deliver {{message = 1}}
  local number
  tq.scan(self.global, 0, self.key, 10, function()
    number = support.peek(recorder.calls()[2][6] + 3 * word, "i4")
  end, nil)
  luaunit.assertEquals(number, -1)
end

function TestScan:test_out_of_memory()
  recorder.fail_request(1)
  support.raises_bare("memory error", tq.scan, self.global, 0, self.key, 10, function() end, nil)
  support.no_call()
  recorder.reset()
  recorder.fail_request(1)
  tq.scan(self.global, 0, self.key, 10, nil, nil)
  luaunit.assertEquals(recorder.call_count(), 1)
end

function TestScan:test_errors_of_the_callback_reach_the_script()
  recorder.deliver {{message = 1}, {message = 2}}
  local value = {}
  local calls = 0
  local ok, message = pcall(tq.scan, self.global, 0, self.key, 10, function()
    calls = calls + 1
    error(value)
  end, nil)
  luaunit.assertFalse(ok)
  luaunit.assertIs(message, value)
  luaunit.assertEquals(calls, 1)
  luaunit.assertEquals(results(), {})
  free_abandoned_context()
end

function TestScan:test_inside_a_coroutine()
  recorder.deliver {{message = 1}}
  local inside
  local thread
  thread = coroutine.create(function()
    return tq.scan(self.global, 0, self.key, 10, function()
      inside = coroutine.running()
      return 3
    end, nil)
  end)
  luaunit.assertEquals({coroutine.resume(thread)}, {true, 0.0})
  luaunit.assertIs(inside, thread)
  luaunit.assertEquals(results(), {3})
end

function TestScan:test_the_callback_cannot_yield()
  recorder.deliver {{message = 1}}
  local ok, message = coroutine.resume(coroutine.create(function()
    tq.scan(self.global, 0, self.key, 10, coroutine.yield, nil)
  end))
  luaunit.assertFalse(ok)
  luaunit.assertStrContains(message, "attempt to yield across a C-call boundary")
  free_abandoned_context()
end

function TestScan:test_commands_and_scans_inside_a_scan()
  recorder.deliver {{message = 1}, {message = 2}}
  recorder.deliver {{message = 3}}
  local seen = {}
  tq.scan(self.global, 0, self.key, 10, function(global, message)
    seen[#seen + 1] = support.pointer_of(message)
    tq.set(global, 1, self.key)
    tq.scan(global, 0, nil, 1, function(_, inner)
      seen[#seen + 1] = support.pointer_of(inner)
      collectgarbage()
      return 9
    end, nil)
    return 1
  end, nil)
  luaunit.assertEquals(seen, {1, 3, 2})
  local names = {}
  for i, call in ipairs(recorder.calls()) do names[i] = call.name end
  luaunit.assertEquals(names,
    {"tq_mom_scan_sync", "tq_mom_set_sync", "tq_mom_scan_sync", "tq_mom_set_sync", "tq_mom_scan_sync"})
  luaunit.assertEquals(results(), {1, 1})
  luaunit.assertEquals(recorder.calls()[3].results, {9})
end

function TestScan:test_many_messages()
  local messages = {}
  for i = 1, 100000 do messages[i] = {message = i} end
  recorder.deliver(messages)
  local sum = 0
  tq.scan(self.global, 0, self.key, 0, function(_, message)
    sum = sum + support.pointer_of(message)
    return 1
  end, nil)
  luaunit.assertEquals(sum, 100000 * 100001 // 2)
  luaunit.assertEquals(#results(), 100000)
end

-- A message leaves nothing on the stack of the scan that called back.
function TestScan:test_the_stack_of_the_scan()
  recorder.deliver {{message = 1}, {message = 2}, {message = 3}}
  local heights = {}
  tq.scan(self.global, 0, self.key, 0, function()
    local height = 0
    while debug.getlocal(2, height + 1) do height = height + 1 end
    heights[#heights + 1] = height
    return #heights
  end, nil)
  luaunit.assertEquals(#heights, 3)
  luaunit.assertEquals({heights[2], heights[3]}, {heights[1], heights[1]})
end

function TestScan:test_collected_message_handles_free_nothing()
  local message = recorder.alloc(1024)
  recorder.deliver {{message = message}}
  tq.scan(self.global, 0, self.key, 1, function(_, handle)
    luaunit.assertEquals(support.own_of(handle), 0)
  end, nil)
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(message))
  recorder.free(message)
end

function TestScan:test_names_in_messages()
  support.raises("Error in tq_mom_scan_sync (arg 2), expected 'int' got 'table'", tq.scan, self.global, {}, self.key, 1,
    nil, nil)
  support.raises("Error in scan (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got " ..
    "'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'", tq.scan, self.key, 0, self.key, -1, 5, nil)
end

TestReferences = {}

function TestReferences:setUp()
  local function symbol(name) return assert(recorder.symbol(support.module_path, name)) end
  self.set, self.get, self.clear = symbol "swiglua_ref_set", symbol "swiglua_ref_get", symbol "swiglua_ref_clear"
  self.reference = recorder.alloc(2 * word)
end

function TestReferences:tearDown()
  recorder.free(self.reference)
end

function TestReferences:words()
  return support.peek(self.reference, "T"), support.peek(self.reference + word, "i4")
end

function TestReferences:test_set_get_clear()
  local value = {}
  -- The value is argument 5 of the native call, so that is its place on the stack.
  luaunit.assertEquals(select("#", recorder.call_ref_set(self.set, self.reference, nil, 5, value)), 0)
  local state, number = self:words()
  luaunit.assertNotEquals(state, 0)
  luaunit.assertIs(debug.getregistry()[number], value)
  luaunit.assertEquals(table.pack(recorder.call_ref(self.get, self.reference)), {value, n = 1})
  recorder.call_ref(self.clear, self.reference)
  luaunit.assertEquals({self:words()}, {0, 0})
  luaunit.assertFalse(in_registry(value))
end

function TestReferences:test_a_relative_index()
  recorder.call_ref_set(self.set, self.reference, nil, -2, "wanted", "other")
  luaunit.assertEquals(recorder.call_ref(self.get, self.reference), "wanted")
  recorder.call_ref(self.clear, self.reference)
end

function TestReferences:test_nil()
  recorder.call_ref_set(self.set, self.reference, nil, 5, nil)
  local state, number = self:words()
  luaunit.assertNotEquals(state, 0)
  luaunit.assertEquals(number, -1)
  luaunit.assertEquals(table.pack(recorder.call_ref(self.get, self.reference)), {n = 1})
  recorder.call_ref(self.clear, self.reference)
  luaunit.assertEquals({self:words()}, {0, 0})
end

function TestReferences:test_empty_and_special_references()
  luaunit.assertEquals(select("#", recorder.call_ref(self.get, self.reference)), 0)
  recorder.call_ref(self.clear, self.reference)
  luaunit.assertEquals({self:words()}, {0, 0})
  support.poke(self.reference + word, "i4", 77)
  recorder.call_ref(self.clear, self.reference)
  luaunit.assertEquals({self:words()}, {0, 0})
  recorder.call_ref_set(self.set, self.reference, nil, 5, "x")
  local _, number = self:words()
  support.poke(self.reference + word, "i4", -2)
  recorder.call_ref(self.clear, self.reference)
  luaunit.assertEquals({self:words()}, {0, 0})
  luaunit.assertEquals(debug.getregistry()[number], "x")
end

support.run()

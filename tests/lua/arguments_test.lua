-- Argument checks and the messages of misuse.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestArguments = {}

function TestArguments:setUp()
  recorder.reset()
  self.global = tq.tq_global_t()
end

function TestArguments:test_count_message_with_chunk_and_line()
  local chunk = load("local tq, g = ...\n\n  tq.lset_ext(g, 0, nil, nil)", "=router.lua")
  luaunit.assertErrorMsgEquals("router.lua:3: Error in tq_mom_lset_ext_sync expected 5..5 args, got 4", chunk, tq,
    self.global)
  support.no_call()
end

function TestArguments:test_chunk_of_a_string()
  local chunk = load("tq_mom_sync.debug_show_all({})")
  luaunit.assertErrorMsgEquals([=[[string "tq_mom_sync.debug_show_all({})"]:1: ]=] ..
    "Error in tq_mom_debug_show_all (arg 1), expected 'tq_global_t *' got 'table'", chunk)
end

-- Called from native code there is no line to name.
function TestArguments:test_no_position_without_a_script()
  local _, message = pcall(tq.debug_show_all)
  luaunit.assertEquals(message, "Error in tq_mom_debug_show_all expected 1..1 args, got 0")
end

function TestArguments:test_a_line_of_a_coroutine()
  local thread = coroutine.create(load("tq_mom_sync.get(1, 2)", "=co"))
  luaunit.assertEquals({coroutine.resume(thread)}, {false, "co:1: Error in tq_mom_get_sync expected 3..3 args, got 2"})
end

function TestArguments:test_a_chunk_without_lines_has_no_position()
  local chunk = load(string.dump(load("tq_mom_sync.get()", "=whole"), true), "stripped", "b")
  luaunit.assertErrorMsgEquals("Error in tq_mom_get_sync expected 3..3 args, got 0", chunk)
end

function TestArguments:test_a_table_for_a_handle()
  support.raises("Error in tq_mom_lset_sync (arg 1), expected 'tq_global_t *' got 'table'", tq.lset, {}, 0, nil, 0)
end

function TestArguments:test_a_handle_of_the_wrong_class()
  support.raises("Error in lset_ext (arg 3), expected 'struct tq_mom_lset_op_s *|tq_mom_lset_op_s *|" ..
    "tq_mom_lset_op_t *' got 'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'",
    tq.lset_ext, self.global, 0, tq.get_op_t(), nil, 0)
end

function TestArguments:test_nil_passes_as_null()
  tq.lset_ext(nil, 0, nil, nil, 0)
  local call = support.only_call()
  luaunit.assertEquals({call[1], call[2], call[3], call[4], call[5]}, {0, 0, 0, 0, 0})
end

function TestArguments:test_numeric_string()
  tq.lset(nil, "12", nil, "0x1F")
  local call = support.only_call()
  luaunit.assertEquals({call[2], call[4]}, {12, 31})
end

function TestArguments:test_negative_for_unsigned()
  support.raises("number must not be negative", tq.lrem, nil, 0, nil, -1)
  support.no_call()
  tq.lrem(nil, 0, nil, 0)
  luaunit.assertEquals(support.only_call()[4], 0)
end

function TestArguments:test_names_of_values()
  local function named(value, name)
    support.raises("Error in tq_mom_client_connect_sync (arg 2), expected 'int' got '" .. name .. "'",
      tq.client_connect, nil, value)
  end
  named(nil, "nil")
  named("text", "string")
  named({}, "table")
  named(true, "boolean")
  named(print, "function")
  named(coroutine.create(print), "thread")
  named(self.global, "struct tq_global_s *|tq_global_s *|tq_global_t *")
  named(tq.tq_thread_u(), "tq_thread_u *")
  named(support.handle("_p_int", 1), "intptr_t *|int *|int_least32_t *|int_fast32_t *|int32_t *|int_fast16_t *")
  named(support.light, "userdata (unknown type)")
  named(support.untyped_handle, "userdata (unknown type)")
  named(support.short_block, "userdata (unknown type)")
  named(io.stdout, "userdata (unknown type)")
end

-- A descriptor without a readable name.
function TestArguments:test_a_nameless_type()
  local descriptor = recorder.alloc(6 * recorder.word)
  local nameless = recorder.handle(descriptor, 0, 1)
  support.raises("Error in tq_mom_client_connect_sync (arg 2), expected 'int' got 'userdata (unknown type)'",
    tq.client_connect, nil, nameless)
  luaunit.assertEquals(swig_type(nameless), "userdata (unknown type)")
  recorder.free(descriptor)
end

-- An expected type whose readable name is missing.
function TestArguments:test_an_expected_type_without_a_name()
  local slot = support.type_by_mangled._p_tq_global_s.address + recorder.word
  local saved = support.peek(slot, "T")
  support.poke(slot, "T", 0)
  local ok, message = pcall(tq.debug_show_all, tq.get_op_t())
  support.poke(slot, "T", saved)
  luaunit.assertFalse(ok)
  luaunit.assertEquals(message, "Error in debug_show_all (arg 1), expected 'void*' got " ..
    "'struct tq_mom_get_op_s *|tq_mom_get_op_s *|tq_mom_get_op_t *'")
end

-- Long names and texts with percent signs reach the message whole.
function TestArguments:test_long_messages()
  local name = recorder.alloc(5000)
  recorder.write(name, string.rep("%s%d", 1000) .. "\0")
  local descriptor = recorder.alloc(6 * recorder.word)
  recorder.write(descriptor, string.pack("TT", name, name))
  support.raises("Error in debug_show_all (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' got '" ..
    string.rep("%s%d", 1000) .. "'", tq.debug_show_all, recorder.handle(descriptor, 0, 1))
  recorder.free(name)
  recorder.free(descriptor)
end

function TestArguments:test_accessors_and_constructors_have_no_position()
  local option = tq.get_op_t()
  support.raises_bare("Error in tq_mom_get_op_s::flag (arg 2), expected 'int' got 'string'", support.set_field, option,
    "flag", "x")
  support.raises_bare("Error in tq_mom_get_op_s::tq_mom_get_op_s expected 0..0 args, got 1", tq.get_op_t, 1)
end

function TestArguments:test_accessors_called_by_the_script_have_it()
  local metatable = debug.getregistry().SWIG.get_op_t
  support.raises("Error in tq_mom_get_op_s::flag (arg 2), expected 'int' got 'string'", metatable[".set"].flag,
    tq.get_op_t(), "x")
  support.raises("Error in tq_mom_get_op_s::flag expected 1..1 args, got 0", metatable[".get"].flag)
  support.raises("number must not be negative", debug.getregistry().SWIG.tq_mom_lmrem_res_t[".set"].len,
    tq.tq_mom_lmrem_res_t(), -1)
end

-- The error value is a plain string that handlers and tracebacks can use.
function TestArguments:test_the_error_value()
  local traceback
  local ok = xpcall(function()
    local result = tq.get(1, 2)
    return result
  end, function(message)
    traceback = debug.traceback(message)
  end)
  luaunit.assertFalse(ok)
  luaunit.assertStrContains(traceback, "Error in tq_mom_get_sync expected 3..3 args, got 2\nstack traceback:")
end

support.run()

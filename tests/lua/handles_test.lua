-- Object handles and conversions.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local word = recorder.word

TestHandles = {}

function TestHandles:setUp()
  recorder.reset()
end

function TestHandles:test_three_words()
  local handle = tq.get_op_t()
  local type_address, own, pointer = recorder.words(handle)
  luaunit.assertEquals(recorder.size(handle), 3 * word)
  luaunit.assertEquals(type_address, support.type_by_mangled._p_tq_mom_get_op_s.address)
  luaunit.assertEquals(own, 1)
  luaunit.assertTrue(recorder.is_live(pointer))
end

function TestHandles:test_a_null_pointer_becomes_nil()
  luaunit.assertEquals(table.pack(tq.get_ext(nil, 0, nil, nil)), {n = 1})
  luaunit.assertNil(tq.tq_mom_get_res_t().value)
end

function TestHandles:test_a_type_without_a_class_has_no_metatable()
  recorder.returns("tq_mom_get_sync", 0x1000)
  local value = tq.get(nil, 0, nil)
  support.is_handle(value, "tq_obj *", 0x1000)
  luaunit.assertNil(debug.getmetatable(value))
  luaunit.assertErrorMsgContains("attempt to index", function() return value.key end)
  luaunit.assertErrorMsgContains("attempt to index", function() value.key = 1 end)
end

function TestHandles:test_a_type_with_a_class_gets_its_metatable()
  local record = tq.tq_mom_get_res_t()
  recorder.returns("tq_mom_get_ext_sync", support.pointer_of(record))
  local handle = tq.get_ext(nil, 0, nil, nil)
  luaunit.assertIs(debug.getmetatable(handle), debug.getregistry().SWIG.tq_mom_get_res_t)
  handle.error_code = 9
  luaunit.assertEquals(record.error_code, 9)
end

-- The metatable is looked up by name each time a handle is made.
function TestHandles:test_a_missing_class_metatable()
  local classes = debug.getregistry().SWIG
  local saved = classes.tq_mom_lset_res_t
  classes.tq_mom_lset_res_t = nil
  local bare = tq.convertPtrToLsetRes(support.untyped_handle)
  classes.tq_mom_lset_res_t = "no table"
  local also_bare = tq.convertPtrToLsetRes(support.untyped_handle)
  classes.tq_mom_lset_res_t = saved
  luaunit.assertNil(debug.getmetatable(bare))
  luaunit.assertNil(debug.getmetatable(also_bare))
  luaunit.assertIs(debug.getmetatable(tq.convertPtrToLsetRes(support.untyped_handle)), saved)
end

TestConversions = {}

function TestConversions:setUp()
  recorder.reset()
end

function TestConversions:test_nil_is_a_null_pointer_of_every_type()
  tq.get_res_free(nil)
  luaunit.assertEquals(support.only_call()[1], 0)
end

function TestConversions:test_only_the_very_type_converts()
  local result = tq.tq_mom_get_res_t()
  support.raises("Error in debug_show_all (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' " ..
    "got 'struct tq_mom_get_res_s *|tq_mom_get_res_s *|tq_mom_get_res_t *'", tq.debug_show_all, result)
  local pubsub = tq.tq_mom_pubsub_msg_t()
  support.raises("Error in get_res_free (arg 1), expected 'struct tq_mom_get_res_s *|tq_mom_get_res_s *|" ..
    "tq_mom_get_res_t *' got 'struct tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_s *|tq_mom_pubsub_msg_t *'",
    tq.get_res_free, pubsub)
  support.raises("Error in get_res_free (arg 1), expected 'struct tq_mom_get_res_s *|tq_mom_get_res_s *|" ..
    "tq_mom_get_res_t *' got 'void *'", tq.get_res_free, support.handle("_p_void", support.pointer_of(result)))
  support.no_call()
end

-- Types are compared by descriptor, not by what the handle's metatable says.
function TestConversions:test_the_metatable_does_not_matter()
  local pointer = 0x1234
  tq.get_res_free(support.handle("_p_tq_mom_get_res_s", pointer))
  luaunit.assertEquals(support.only_call()[1], pointer)
end

function TestConversions:test_a_handle_of_the_wrong_type_is_disowned_too()
  local global = tq.tq_global_t()
  local wrong = tq.get_op_t()
  local pointer = support.pointer_of(wrong)
  luaunit.assertError(function() global.master = wrong end)
  luaunit.assertEquals(support.own_of(wrong), 0)
  wrong = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(pointer))
  recorder.free(pointer)
end

function TestConversions:test_other_values_do_not_convert()
  for _, plain in ipairs(support.plain_values) do luaunit.assertError(tq.debug_show_all, plain[2]) end
  for _, foreign in ipairs(support.foreign_values) do luaunit.assertError(tq.debug_show_all, foreign[2]) end
  support.no_call()
end

-- Another module may put its own types into a list; the entry that matched comes first afterwards.
function TestConversions:test_a_match_moves_to_the_front()
  local target = support.type_by_mangled._p_tq_global_s
  local other = support.type_by_mangled._p_double
  local head = target.casts
  local entry = recorder.alloc(4 * word)
  recorder.write(entry, string.pack("TTTT", other.address, 0, 0, head))
  support.poke(head + 2 * word, "T", entry)

  local function list()
    local entries, at = {}, support.peek(target.address + 3 * word, "T")
    while at ~= 0 do
      entries[#entries + 1] = at
      at = support.peek(at + 2 * word, "T")
    end
    return entries
  end

  luaunit.assertEquals(list(), {head, entry})
  tq.debug_show_all(support.handle("_p_tq_global_s", 0x10))
  luaunit.assertEquals(list(), {head, entry})
  tq.debug_show_all(support.handle("_p_double", 0x20))
  luaunit.assertEquals(list(), {entry, head})
  luaunit.assertEquals(support.peek(entry + 3 * word, "T"), 0)
  luaunit.assertEquals(support.peek(head + 3 * word, "T"), entry)
  luaunit.assertEquals(support.peek(head + 2 * word, "T"), 0)
  tq.debug_show_all(support.handle("_p_double", 0x30))
  luaunit.assertEquals(list(), {entry, head})
  tq.debug_show_all(support.handle("_p_tq_global_s", 0x40))
  luaunit.assertEquals(list(), {head, entry})
  luaunit.assertEquals(support.peek(head + 3 * word, "T"), 0)
  luaunit.assertEquals(support.peek(entry + 3 * word, "T"), head)

  support.poke(head + 2 * word, "T", 0)
  recorder.free(entry)
  local seen = {}
  for i, call in ipairs(recorder.calls()) do seen[i] = call[1] end
  luaunit.assertEquals(seen, {0x10, 0x20, 0x30, 0x40})
end

support.run()

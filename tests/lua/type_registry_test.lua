-- Type descriptors, the shared registry entries, object handles and conversions.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local word = recorder.word

TestTypes = {}

local function own_record()
  return recorder.address(debug.getregistry().swig_runtime_data_type_pointer4)
end

function TestTypes:test_the_ring_head_is_a_light_userdata()
  local head = debug.getregistry().swig_runtime_data_type_pointer4
  luaunit.assertEquals(type(head), "userdata")
  luaunit.assertEquals(recorder.size(head), 0)
  luaunit.assertNil(debug.getmetatable(head))
end

function TestTypes:test_the_only_module_is_its_own_successor()
  luaunit.assertEquals(support.peek(own_record() + 2 * word, "T"), own_record())
end

function TestTypes:test_table_size_and_end()
  local type_table = support.peek(own_record(), "T")
  local count = catalog.type_count
  luaunit.assertEquals(support.peek(own_record() + word, "i4"), count)
  luaunit.assertEquals(#support.types, count)
  luaunit.assertEquals(support.peek(type_table + count * word, "T"), 0)
end

function TestTypes:test_sorted_by_mangled_name()
  for i = 2, #support.types do
    local previous, current = support.types[i - 1].mangled, support.types[i].mangled
    luaunit.assertTrue(previous < current, previous .. " before " .. current)
  end
end

function TestTypes:test_own_types_and_casts()
  local own_types = support.peek(own_record() + 3 * word, "T")
  local own_casts = support.peek(own_record() + 4 * word, "T")
  for i, descriptor in ipairs(support.types) do
    luaunit.assertEquals(support.peek(own_types + (i - 1) * word, "T"), descriptor.address)
    local entries = support.peek(own_casts + (i - 1) * word, "T")
    luaunit.assertEquals(support.peek(entries, "T"), descriptor.address)
    luaunit.assertEquals(support.peek(entries + word, "T"), 0)
    luaunit.assertEquals(support.peek(entries + 4 * word, "T"), 0) -- the target of the entry that ends the array
  end
end

-- A type converts from itself alone.
function TestTypes:test_cast_lists()
  for _, descriptor in ipairs(support.types) do
    luaunit.assertNotEquals(descriptor.casts, 0)
    local target, converter, next_cast, prev_cast = string.unpack("TTTT", recorder.read(descriptor.casts, 4 * word))
    luaunit.assertEquals({target, converter, next_cast, prev_cast}, {descriptor.address, 0, 0, 0}, descriptor.mangled)
  end
end

function TestTypes:test_unused_words()
  for _, descriptor in ipairs(support.types) do
    luaunit.assertEquals(descriptor.dyn_cast, 0)
    luaunit.assertEquals(descriptor.own_data, 0)
  end
end

function TestTypes:test_types_without_a_class()
  for mangled, readable in pairs(catalog.classless) do
    local descriptor = support.type_by_mangled[mangled]
    luaunit.assertNotNil(descriptor, mangled)
    luaunit.assertEquals(descriptor.readable, readable)
    luaunit.assertEquals(descriptor.class_record, 0)
  end
end

function TestTypes:test_types_with_a_class()
  for _, class in ipairs(catalog.classes) do
    local descriptor = support.type_by_readable[class.readable]
    luaunit.assertNotNil(descriptor, class.readable)
    luaunit.assertNotEquals(descriptor.class_record, 0)
    luaunit.assertEquals(descriptor.mangled, class.mangled)
    -- The record's name and qualified name, and the slot of its type.
    local record = descriptor.class_record
    luaunit.assertEquals(recorder.read_text(support.peek(record, "T")), class.name)
    luaunit.assertEquals(recorder.read_text(support.peek(record + word, "T")), class.name)
    luaunit.assertEquals(support.peek(support.peek(record + 2 * word, "T"), "T"), descriptor.address)
  end
end

function TestTypes:test_class_metatable_table()
  local classes = debug.getregistry().SWIG
  luaunit.assertEquals(type(classes), "table")
  for _, class in ipairs(catalog.classes) do
    luaunit.assertEquals(type(rawget(classes, class.name)), "table")
    luaunit.assertEquals(rawget(classes, class.name)[".type"], class.name)
  end
  luaunit.assertEquals(rawget(classes, ".library"), {
    inheritable_metamethods = {
      __add = true, __sub = true, __mul = true, __div = true, __mod = true, __pow = true, __unm = true, __len = true,
      __concat = true, __eq = true, __lt = true, __le = true, __call = true, __tostring = true, __gc = false,
    },
  })
end

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

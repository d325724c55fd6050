-- Other modules are in the ring before tq_mom_sync: shared descriptors, class records, merged cast lists, base classes.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local first = peer.register_module {
  {
    mangled = "_p_tq_obj",
    readable = "first_obj *",
    class = {
      name = "first_obj",
      destructor = true,
      bases = {
        "_p_tq_mom_get_res_s", -- mangled, in the tested module
        "_p_ring_base", -- mangled, here
        "tq_mom_set_op_t *", -- readable, the last spelling
        " struct tq_mom_get_op_s*", -- readable, blanks do not count
        "no such type",
        "_p_ring_second_base", -- a type of the second module
        "_p_tq_mom_set_op_s ", -- a mangled name is compared as it is
        "tq_mom_set_op_t *|tq_mom_set_op_s *", -- one spelling, not a list of them
        "_p_ring_base", -- a filled slot
        "struct tq_mom_set_op_s", -- the beginning of a spelling
      },
    },
  },
  { mangled = "_p_ring_base", readable = "ring_base *", class = { name = "ring_base" } },
  -- Its readable name is another type's mangled name, which wins.
  { mangled = "_p_ring_aa", readable = "_p_ring_base", class = { name = "ring_misleading" } },
  { mangled = "_p_ring_plain", readable = "ring_plain *", casts = { { "_p_ring_plain" }, { "_p_ring_deep" } } },
  { mangled = "_p_ring_deep", readable = "ring_deep *", casts = { { "_p_ring_deep" }, { "_p_ring_plain" } } },
  { mangled = "_p_ring_listed", readable = "ring_listed *" },
  { mangled = "_p_ring_heir", readable = "ring_heir *" },
  { mangled = "_p_ring_converted", readable = "ring_converted *" },
  { mangled = "_p_ring_taken", readable = "ring_taken *", class = { name = "ring_taken" } },
  {
    mangled = "_p_tq_mom_get_res_s",
    readable = "first's get result *",
    class = { name = "first_get_res", destructor = true },
    -- The list is filled from the front: converted, taken, heir, the type itself.
    casts = {
      { "_p_tq_mom_get_res_s" }, { "_p_ring_heir" }, { "_p_ring_taken" }, { "_p_ring_converted", "shift" },
    },
  },
  {
    mangled = "_p_tq_mom_incr_res_s",
    readable = "incr result *",
    casts = {
      { "_p_tq_mom_incr_res_s" }, { "_p_ring_plain" }, { "_p_ring_taken" }, { "_p_ring_converted", "shift" },
    },
  },
  { mangled = "_p_tq_mom_set_res_s", readable = "set result *", casts = {} },
  { mangled = "_p_tq_mom_list_res_s", readable = "list result *", casts = { { "_p_ring_listed" } } },
  { mangled = "_p_void", readable = "void *" },
  { mangled = "_p_tq_mom_setnx_res_s" }, -- without a readable name
  { mangled = "_p_zzz", readable = "zzz *" },
  { mangled = "_a", readable = "a *" },
}
local second = peer.register_module {
  { mangled = "_p_tq_mom_hash_res_s", readable = "hash result *" },
  { mangled = "_p_ring_second_base", readable = "ring_second_base *", class = { name = "ring_second_base" } },
  { mangled = "_p_void", readable = "another void *" },
}

peer.join(first)
peer.join(second)

local shared = {
  _p_tq_obj = peer.find "_p_tq_obj",
  _p_tq_mom_get_res_s = peer.find "_p_tq_mom_get_res_s",
  _p_tq_mom_set_res_s = peer.find "_p_tq_mom_set_res_s",
  _p_tq_mom_list_res_s = peer.find "_p_tq_mom_list_res_s",
  _p_tq_mom_hash_res_s = peer.find "_p_tq_mom_hash_res_s",
  _p_tq_mom_incr_res_s = peer.find "_p_tq_mom_incr_res_s",
  _p_tq_mom_setnx_res_s = peer.find "_p_tq_mom_setnx_res_s",
  _p_void = peer.find "_p_void",
}
local obj_class = peer.type(shared._p_tq_obj).class
local preset_base = peer.type(peer.find "_p_ring_taken").class
peer.set_base(obj_class, 9, preset_base)
local merged_order_before = support.cast_names(shared._p_tq_mom_get_res_s)

local module = require "tq_mom_sync"
local record = peer.module(first).next
-- Conversions move casts to the front.
local merged_order = support.cast_names(shared._p_tq_mom_get_res_s)

local function class_of(mangled)
  return peer.type(peer.find(mangled)).class
end

TestRing = {}

function TestRing:test_a_new_module_comes_right_after_the_head()
  lu.assertEquals(peer.head(), first)
  lu.assertEquals(peer.ring(), { first, record, second })
  lu.assertEquals(peer.module(record).count, support.type_count)
end

function TestRing:test_descriptors_are_shared_by_mangled_name()
  local info = peer.module(record)
  local found = 0
  for i, descriptor in ipairs(info.types) do
    local mangled = peer.type(descriptor).mangled
    lu.assertEquals(mangled, peer.type(info.own_types[i]).mangled)
    if shared[mangled] then
      found = found + 1
      lu.assertEquals(descriptor, shared[mangled], mangled)
      lu.assertNotEquals(descriptor, info.own_types[i], mangled)
    else
      lu.assertEquals(descriptor, info.own_types[i], mangled)
    end
  end
  lu.assertEquals(found, 8)
  lu.assertTrue(info.terminated)
end

function TestRing:test_the_shared_descriptor_gives_the_name_in_messages()
  local pointer = peer.alloc(64)
  lu.assertEquals(swig_type(module.convertPtrToGetRes(peer.new_handle(pointer))), "first's get result *")
  local ok, message = pcall(support.getter("tq_mom_get_res_t", "error_code"), module.tq_mom_list_res_t())
  lu.assertFalse(ok)
  lu.assertEquals(message, "Error in tq_mom_get_res_t_error_code_get (arg 1), expected 'first's get result *' got "
    .. "'list result *'")
end

function TestRing:test_a_shared_descriptor_without_a_readable_name()
  local nameless, named = module.tq_mom_setnx_res_t(), module.tq_mom_list_res_t()
  lu.assertEquals(swig_type(nameless), "userdata (unknown type)")
  local ok, message = pcall(support.getter("tq_mom_setnx_res_t", "value"), named)
  lu.assertFalse(ok)
  lu.assertEquals(message, "Error in tq_mom_setnx_res_t_value_get (arg 1), expected 'void*' got 'list result *'")
  ok, message = pcall(support.getter("tq_mom_list_res_t", "error_code"), nameless)
  lu.assertFalse(ok)
  lu.assertEquals(message, "Error in tq_mom_list_res_t_error_code_get (arg 1), expected 'list result *' got "
    .. "'userdata (unknown type)'")
end

TestClassRecords = {}

function TestClassRecords:test_the_module_filled_last_gives_the_class()
  lu.assertEquals(peer.class(class_of "_p_tq_mom_get_res_s").name, "tq_mom_get_res_t")
  lu.assertEquals(peer.class(class_of "_p_tq_mom_set_res_s").name, "tq_mom_set_res_t")
  lu.assertEquals(peer.class(class_of "_p_tq_mom_hash_res_s").name, "tq_mom_hash_res_t")
end

function TestClassRecords:test_a_module_without_a_class_leaves_the_other_ones()
  lu.assertEquals(class_of "_p_tq_obj", obj_class)
  lu.assertEquals(peer.class(obj_class).name, "first_obj")
end

function TestClassRecords:test_the_class_slot_leads_to_the_shared_descriptor()
  lu.assertEquals(peer.class(class_of "_p_tq_mom_get_res_s").type, shared._p_tq_mom_get_res_s)
  local result = module.tq_mom_get_res_t()
  lu.assertEquals(peer.words(result), shared._p_tq_mom_get_res_s)
  result.error_code = 7
  lu.assertEquals(result.error_code, 7)
end

function TestClassRecords:test_values_carry_the_class_of_the_module_that_has_one()
  registry.SWIG.first_obj = { __index = function() return "first's field" end }
  local result = module.tq_mom_get_res_t()
  result.value = peer.new_handle(peer.alloc(8))
  local value = result.value
  lu.assertEquals(peer.words(value), shared._p_tq_obj)
  lu.assertEquals(value.key, "first's field")
  registry.SWIG.first_obj = nil
  lu.assertNil(debug.getmetatable(result.value))
end

function TestClassRecords:test_propagate_through_casts_without_a_converter()
  local class = class_of "_p_tq_mom_incr_res_s"
  lu.assertEquals(peer.class(class).name, "tq_mom_incr_res_t")
  lu.assertEquals(class_of "_p_ring_plain", class)
  lu.assertEquals(class_of "_p_ring_deep", class)
  lu.assertEquals(class_of "_p_ring_listed", class_of "_p_tq_mom_list_res_s")
  lu.assertNil(class_of "_p_ring_converted")
end

function TestClassRecords:test_propagation_leaves_classes_that_are_there()
  lu.assertEquals(peer.class(class_of "_p_ring_taken").name, "ring_taken")
  lu.assertEquals(peer.class(class_of "_p_ring_heir").name, "first_get_res")
end

TestCasts = {}

function TestCasts:test_a_known_cast_is_moved_to_the_front_and_not_added_twice()
  lu.assertEquals(merged_order_before,
    { "_p_ring_converted", "_p_ring_taken", "_p_ring_heir", "_p_tq_mom_get_res_s" })
  lu.assertEquals(merged_order, { "_p_tq_mom_get_res_s", "_p_ring_converted", "_p_ring_taken", "_p_ring_heir" })
  lu.assertEquals(peer.type(shared._p_tq_mom_get_res_s).casts[1].target, shared._p_tq_mom_get_res_s)
end

function TestCasts:test_an_unknown_cast_is_added_in_front()
  lu.assertEquals(support.cast_names(shared._p_tq_mom_set_res_s), { "_p_tq_mom_set_res_s" })
  lu.assertEquals(support.cast_names(shared._p_tq_mom_list_res_s), { "_p_tq_mom_list_res_s", "_p_ring_listed" })
end

function TestCasts:test_types_of_the_other_module_stand_in()
  local memory = peer.alloc(64)
  local set = support.setter("tq_mom_get_res_t", "error_code")
  local function names()
    return support.cast_names(shared._p_tq_mom_get_res_s)
  end
  set(peer.new_handle(memory, peer.find "_p_ring_heir"), 11)
  lu.assertEquals(names(), { "_p_ring_heir", "_p_tq_mom_get_res_s", "_p_ring_converted", "_p_ring_taken" })
  lu.assertEquals(module.convertPtrToGetRes(peer.new_handle(memory)).error_code, 11)
  -- That read converted the type itself.
  lu.assertEquals(names(), { "_p_tq_mom_get_res_s", "_p_ring_heir", "_p_ring_converted", "_p_ring_taken" })
  peer.conversions()
  set(peer.new_handle(memory, peer.find "_p_ring_converted"), 12)
  lu.assertEquals(names(), { "_p_ring_converted", "_p_tq_mom_get_res_s", "_p_ring_heir", "_p_ring_taken" })
  lu.assertEquals(peer.conversions(), 1)
  lu.assertEquals(module.convertPtrToGetRes(peer.new_handle(peer.offset(memory, 16))).error_code, 12)
  lu.assertEquals(module.convertPtrToGetRes(peer.new_handle(memory)).error_code, 11)
end

TestBases = {}

function TestBases:test_resolution_by_mangled_then_readable_name()
  local class = peer.class(obj_class)
  lu.assertEquals(#class.base_names, 10)
  lu.assertEquals(class.bases[1], class_of "_p_tq_mom_get_res_s")
  lu.assertEquals(class.bases[2], class_of "_p_ring_base")
  lu.assertEquals(class.bases[3], class_of "_p_tq_mom_set_op_s")
  lu.assertEquals(class.bases[4], class_of "_p_tq_mom_get_op_s")
  lu.assertEquals(class.bases[5], false)
  lu.assertEquals(class.bases[6], class_of "_p_ring_second_base")
  lu.assertEquals(class.bases[7], false)
  lu.assertEquals(class.bases[8], false)
  lu.assertEquals(class.bases[9], preset_base)
  lu.assertEquals(class.bases[10], false)
end

os.exit(lu.LuaUnit.run(), true)

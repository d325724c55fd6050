-- Other modules join after tq_mom_sync and change what it works with: classes, cast lists, converters.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local module = require "tq_mom_sync"
local own_record = peer.head()
local own_set_res_class = peer.type(peer.find "_p_tq_mom_set_res_s").class

local later = peer.register_module {
  { mangled = "_p_tq_obj", readable = "later_obj *", class = { name = "later_obj", destructor = true } },
  { mangled = "_p_tq_mom_set_res_s", readable = "later's *", class = { name = "later_set_res", destructor = true } },
  { mangled = "_p_tq_mom_get_res_s", readable = "later's *" },
  { mangled = "_p_ring_stranger", readable = "ring_stranger *" },
  { mangled = "_p_ring_shifted", readable = "ring_shifted *" },
  { mangled = "_p_ring_leaky", readable = "ring_leaky *" },
}
local descriptors_before = peer.module(own_record).types
peer.join(later)
local last = peer.register_module { { mangled = "_p_ring_last", readable = "ring_last *" } }
peer.join(last)

local get_op = peer.find "_p_tq_mom_get_op_s"
local set_flag = support.setter("get_op_t", "flag")
local get_flag = support.getter("get_op_t", "flag")

local function new_op(flag)
  local op = module.get_op_t()
  op.flag = flag
  return op
end

local function pointer_of(handle)
  return (select(3, peer.words(handle)))
end

TestJoining = {}

function TestJoining:test_ring_and_shared_descriptors()
  lu.assertEquals(peer.ring(), { own_record, last, later })
  lu.assertEquals(peer.module(own_record).types, descriptors_before)
  local shared = 0
  for _, descriptor in ipairs(peer.module(later).types) do
    for _, own in ipairs(descriptors_before) do
      if own == descriptor then
        shared = shared + 1
      end
    end
  end
  lu.assertEquals(shared, 3)
  lu.assertEquals(peer.type(peer.find "_p_tq_mom_set_res_s").readable,
    "struct tq_mom_set_res_s *|tq_mom_set_res_s *|tq_mom_set_res_t *")
end

TestClassOverwriting = {}

local set_res = peer.find "_p_tq_mom_set_res_s"
local later_set_res_class = peer.type(set_res).class

function TestClassOverwriting:setUp()
  peer.set_class(set_res, later_set_res_class)
end

function TestClassOverwriting:tearDown()
  peer.set_class(set_res, own_set_res_class)
end

function TestClassOverwriting:test_new_handles_take_the_class_of_the_module_filled_last()
  registry.SWIG.later_set_res = { __index = function(_, key) return "later's " .. key end }
  local result = module.tq_mom_set_res_t()
  lu.assertIs(debug.getmetatable(result), registry.SWIG.later_set_res)
  lu.assertEquals(result.error_code, "later's error_code")
  lu.assertEquals(peer.words(result), peer.find "_p_tq_mom_set_res_s")
  local cast = module.convertPtrToSetRes(result)
  lu.assertIs(debug.getmetatable(cast), registry.SWIG.later_set_res)
  registry.SWIG.later_set_res = nil
  lu.assertNil(debug.getmetatable(module.convertPtrToSetRes(result)))
  -- This module's accessors still take them.
  support.setter("tq_mom_set_res_t", "error_code")(result, 5)
  lu.assertEquals(support.getter("tq_mom_set_res_t", "error_code")(cast), 5)
  debug.setmetatable(result, registry.SWIG.tq_mom_set_res_t)
  peer.set_class(peer.find "_p_tq_mom_set_res_s", own_set_res_class)
  lu.assertIs(getmetatable(module.convertPtrToSetRes(result)), registry.SWIG.tq_mom_set_res_t)
end

function TestClassOverwriting:test_the_class_is_that_of_the_record_though_it_names_this_modules_slot()
  local descriptor = peer.find "_p_tq_mom_set_res_s"
  local foreign = peer.type(peer.find "_p_tq_obj").class
  peer.set_class(descriptor, foreign)
  peer.share_slot(foreign, own_set_res_class)
  registry.SWIG.later_obj = { __index = function(_, key) return "later's " .. key end }
  local result = module.tq_mom_set_res_t()
  local cast = module.convertPtrToSetRes(result)
  peer.set_class(descriptor, own_set_res_class)
  lu.assertIs(debug.getmetatable(result), registry.SWIG.later_obj)
  lu.assertIs(debug.getmetatable(cast), registry.SWIG.later_obj)
  registry.SWIG.later_obj = nil
  debug.setmetatable(result, registry.SWIG.tq_mom_set_res_t)  -- which frees it
end

function TestClassOverwriting:test_collection_asks_the_descriptor_for_the_destructor()
  peer.destroyed()
  local descriptor = peer.find "_p_tq_obj"
  local class = peer.type(descriptor).class
  lu.assertEquals(peer.class(class).name, "later_obj")
  local owned, borrowed = peer.alloc(8), peer.alloc(8)
  local collect = registry.SWIG.get_op_t.__gc
  collect(peer.new_handle(owned, descriptor, true))
  collect(peer.new_handle(borrowed, descriptor, false))
  lu.assertEquals(peer.destroyed(), { owned })
  collect(peer.new_handle(owned, nil, true))
  collect(peer.new_handle(owned, peer.find "_p_ring_stranger", true))
  lu.assertEquals(peer.destroyed(), {})
end

function TestClassOverwriting:test_a_foreign_object_is_destroyed_once()
  local memory = peer.alloc(8)
  local handle = peer.new_handle(memory, peer.find "_p_tq_obj", true)
  registry.SWIG.get_op_t.__gc(handle)
  registry.SWIG.get_op_t.__gc(handle)
  lu.assertEquals(peer.destroyed(), { memory })
  lu.assertEquals({ peer.words(handle) }, { peer.find "_p_tq_obj", 1, memory })
  local unowned = peer.new_handle(memory, peer.find "_p_ring_stranger", true)
  registry.SWIG.get_op_t.__gc(unowned)
  lu.assertEquals({ peer.words(unowned) }, { peer.find "_p_ring_stranger", 1, memory })
end

TestConversion = {}

function TestConversion:setUp()
  self.list = peer.take_casts(get_op)
  peer.add_cast(get_op, get_op, "none", "front")
end

function TestConversion:tearDown()
  peer.put_casts(get_op, self.list)
end

local stranger = peer.find "_p_ring_stranger"
local shifted = peer.find "_p_ring_shifted"

function TestConversion:test_a_stranger_is_refused_until_it_is_in_the_list()
  local handle = peer.new_handle(pointer_of(new_op(0)), stranger)
  local ok, message = pcall(set_flag, handle, 9)
  lu.assertFalse(ok)
  lu.assertEquals(message, "Error in get_op_t_flag_set (arg 1), expected 'struct tq_mom_get_op_s *|tq_mom_get_op_s "
    .. "*|tq_mom_get_op_t *' got 'ring_stranger *'")
  peer.add_cast(get_op, stranger, "none", "back")
  local op = new_op(1)
  set_flag(peer.new_handle(pointer_of(op), stranger), 9)
  lu.assertEquals(op.flag, 9)
end

function TestConversion:test_a_match_moves_to_the_front()
  peer.add_cast(get_op, stranger, "none", "back")
  peer.add_cast(get_op, shifted, "none", "back")
  peer.add_cast(get_op, peer.find "_p_ring_leaky", "none", "back")
  local function order()
    local names = {}
    for i, name in ipairs(support.cast_names(get_op)) do
      names[i] = name:match "([^_]+)$"
    end
    return table.concat(names, " ")
  end
  lu.assertEquals(order(), "s stranger shifted leaky")
  local memory = peer.alloc(16)
  get_flag(peer.new_handle(memory, shifted)) -- from the middle
  lu.assertEquals(order(), "shifted s stranger leaky")
  get_flag(peer.new_handle(memory, peer.find "_p_ring_leaky")) -- from the end
  lu.assertEquals(order(), "leaky shifted s stranger")
  get_flag(peer.new_handle(memory, peer.find "_p_ring_leaky")) -- already there
  lu.assertEquals(order(), "leaky shifted s stranger")
  get_flag(peer.new_handle(memory, get_op))
  lu.assertEquals(order(), "s leaky shifted stranger")
  lu.assertFalse(pcall(get_flag, peer.new_handle(memory, peer.find "_p_ring_last")))
  lu.assertFalse(pcall(get_flag, peer.new_handle(memory)))
  get_flag(nil)
  lu.assertEquals(order(), "s leaky shifted stranger")
end

function TestConversion:test_in_a_command_moves_to_the_front_too()
  local set_op = peer.find "_p_tq_mom_set_op_s"
  peer.add_cast(set_op, stranger, "none", "back")
  local own = support.cast_names(set_op)[1]
  module.set_ext(nil, 0, peer.new_handle(peer.alloc(16), stranger), nil)
  lu.assertEquals(support.cast_names(set_op), { "_p_ring_stranger", own })
  module.set_ext(nil, 0, module.set_op_t(), nil)
  lu.assertEquals(support.cast_names(set_op), { own, "_p_ring_stranger" })
end

function TestConversion:test_of_a_value_moves_to_the_front_too()
  local thread_type = peer.find "_p_tq_thread"
  peer.add_cast(thread_type, stranger, "none", "back")
  local thread = module.tq_thread()
  local memory = peer.alloc(16)
  local handle = peer.new_handle(memory, stranger, true)
  thread.next = handle
  lu.assertEquals(support.cast_names(thread_type), { "_p_ring_stranger", "_p_tq_thread" })
  lu.assertEquals(pointer_of(thread.next), memory)
  lu.assertEquals(select(2, peer.words(handle)), 0)
end

function TestConversion:test_a_converter_gives_the_pointer()
  peer.add_cast(get_op, shifted, "shift", "back")
  local memory = peer.alloc(64)
  peer.conversions()
  local handle = peer.new_handle(memory, shifted)
  set_flag(handle, 21) -- found behind the head
  set_flag(handle, 22) -- found at the head
  lu.assertEquals({ peer.conversions() }, { 2, 0 })
  lu.assertEquals(peer.peek_int(memory, 0), 0)
  lu.assertEquals(peer.peek_int(memory, 4), 22)
  lu.assertEquals(pointer_of(handle), memory)
end

function TestConversion:test_the_type_itself_may_have_a_converter()
  peer.take_casts(get_op)
  peer.add_cast(get_op, get_op, "shift", "front")
  local memory = peer.alloc(64)
  set_flag(peer.new_handle(memory, get_op), 31)
  lu.assertEquals(peer.peek_int(memory, 0), 0)
  lu.assertEquals(peer.peek_int(memory, 4), 31)
end

function TestConversion:test_a_converter_of_a_commands_argument_runs()
  local global = peer.find "_p_tq_global_s"
  local list = peer.take_casts(global)
  peer.add_cast(global, shifted, "shift", "front")
  peer.conversions()
  module.set(peer.new_handle(peer.alloc(16), shifted), 0, nil)
  module.tq_global_finish(peer.new_handle(peer.alloc(16), shifted))
  lu.assertEquals(peer.conversions(), 2)
  peer.put_casts(global, list)
end

function TestConversion:test_an_empty_list_accepts_nothing_but_nil()
  peer.take_casts(get_op)
  local op = module.get_op_t()
  lu.assertErrorMsgContains("Error in get_op_t_flag_get (arg 1), expected", get_flag, op)
  lu.assertErrorMsgContains("Error in get_ext (arg 3), expected", module.get_ext, nil, 0, op, nil)
  lu.assertNil(get_flag(nil))
end

function TestConversion:test_a_handle_of_unknown_type_is_refused()
  local handle = peer.new_handle(peer.alloc(16))
  lu.assertErrorMsgContains("got 'userdata (unknown type)'", get_flag, handle)
end

function TestConversion:test_disowns_before_it_checks()
  local thread = module.tq_thread()
  local handle = peer.new_handle(peer.alloc(16), stranger, true)
  local list = peer.take_casts(peer.find "_p_tq_thread")
  peer.add_cast(peer.find "_p_tq_thread", peer.find "_p_tq_thread", "none", "front")
  lu.assertErrorMsgContains("Error in tq_thread_next_set (arg 2), expected", function() thread.next = handle end)
  peer.put_casts(peer.find "_p_tq_thread", list)
  lu.assertEquals(select(2, peer.words(handle)), 0)
end

TestEquality = {}

function TestEquality:test_of_handles_of_different_classes()
  local op = module.get_op_t()
  local other = peer.new_handle(pointer_of(op), stranger, true)
  lu.assertTrue(swig_equals(op, other))
  lu.assertTrue(op == other)
  lu.assertTrue(op == peer.new_handle(pointer_of(op)))
  lu.assertFalse(swig_equals(op, module.get_op_t()))
  lu.assertEquals(select("#", swig_equals(op, 1)), 0)
end

-- A foreign userdata is not read or written past its end, and a light one is no handle.
TestForeignUserdata = {}

function TestForeignUserdata:test_short_blocks_have_no_pointer()
  for length = 0, peer.handle_size() - 1 do
    local bytes = ("\xff"):rep(length)
    local block = peer.block(bytes)
    lu.assertEquals(swig_type(block), "userdata (unknown type)")
    lu.assertEquals(select("#", swig_equals(block, block)), 0)
    lu.assertFalse(pcall(get_flag, block))
    registry.SWIG.get_op_t[".fn"].__disown(block)
    registry.SWIG.get_op_t.__gc(block)
    local thread = module.tq_thread()
    lu.assertFalse(pcall(function() thread.next = block end))
    thread.zg = peer.new_handle(peer.alloc(8))
    thread.zg = block
    lu.assertNil(thread.zg)
    lu.assertEquals(peer.block_bytes(block), bytes)
  end
end

function TestForeignUserdata:test_light_userdata_have_no_pointer()
  local light = peer.alloc(64)
  lu.assertEquals(swig_type(light), "userdata (unknown type)")
  lu.assertEquals(select("#", swig_equals(light, light)), 0)
  lu.assertErrorMsgContains("got 'userdata (unknown type)'", get_flag, light)
  registry.SWIG.get_op_t[".fn"].__disown(light)
  registry.SWIG.get_op_t.__gc(light)
  for i = 0, 15 do
    lu.assertEquals(peer.peek_int(light, i), 0)
  end
end

os.exit(lu.LuaUnit.run(), true)

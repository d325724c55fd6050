-- The module alone in its interpreter: what another native module finds of it in the ring, and its entry points.
local lu = require "luaunit"
local catalog = require "catalog"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local no_ring_before = registry.swig_runtime_data_type_pointer4
local module = require "tq_mom_sync"

local class_by_mangled = {}
for _, class in ipairs(catalog.classes) do class_by_mangled[class.mangled] = class end

TestModuleRecord = {}

function TestModuleRecord:test_is_the_head_of_a_ring_of_one()
  lu.assertNil(no_ring_before)
  lu.assertEquals(io.type(registry.swig_runtime_data_type_pointer4), nil)
  lu.assertEquals(type(registry.swig_runtime_data_type_pointer4), "userdata")
  lu.assertEquals(peer.head(), registry.swig_runtime_data_type_pointer4)
  lu.assertEquals(#peer.ring(), 1)
  lu.assertEquals(peer.module(peer.head()).next, peer.head())
end

function TestModuleRecord:test_holds_all_types_in_strcmp_order()
  local record = peer.module(peer.head())
  lu.assertEquals(record.count, support.type_count)
  lu.assertEquals(#record.types, support.type_count)
  lu.assertTrue(record.terminated)
  lu.assertNil(record.client_data)
  for i = 2, record.count do
    lu.assertTrue(peer.type(record.types[i - 1]).mangled < peer.type(record.types[i]).mangled, i)
  end
end

function TestModuleRecord:test_uses_its_own_descriptors_when_nobody_else_has_the_types()
  local record = peer.module(peer.head())
  lu.assertEquals(record.types, record.own_types)
end

function TestModuleRecord:test_names_every_type()
  local record = peer.module(peer.head())
  local seen = 0
  for _, descriptor in ipairs(record.types) do
    local info = peer.type(descriptor)
    local class = class_by_mangled[info.mangled]
    if class then
      lu.assertEquals(info.readable, class.readable)
    else
      lu.assertNotNil(info.readable)
      lu.assertEquals(info.readable, catalog.classless[info.mangled], info.mangled)
      lu.assertNil(info.class, info.mangled)
    end
    seen = seen + 1
  end
  lu.assertEquals(seen, support.type_count)
end

function TestModuleRecord:test_every_type_accepts_exactly_itself()
  local record = peer.module(peer.head())
  for i, descriptor in ipairs(record.types) do
    local info = peer.type(descriptor)
    lu.assertEquals(record.own_cast_counts[i], 1, info.mangled)
    lu.assertEquals(#info.casts, 1, info.mangled)
    lu.assertEquals(info.casts[1].target, descriptor, info.mangled)
    lu.assertFalse(info.casts[1].converter, info.mangled)
    lu.assertFalse(info.dyn_cast, info.mangled)
    lu.assertEquals(info.own_data, 0, info.mangled)
  end
end

function TestModuleRecord:test_class_records()
  local seen = 0
  for _, descriptor in ipairs(peer.module(peer.head()).types) do
    local info = peer.type(descriptor)
    local class = class_by_mangled[info.mangled]
    if class then
      seen = seen + 1
      local record = peer.class(info.class)
      lu.assertEquals(record.name, class.name)
      lu.assertEquals(record.qualified_name, class.name)
      lu.assertEquals(record.static_name, class.name)
      lu.assertEquals(record.type, descriptor, class.name)
      lu.assertTrue(record.constructor, class.name)
      lu.assertTrue(record.destructor, class.name)
      lu.assertEquals(record.methods, {}, class.name)
      lu.assertEquals(record.metatable, {}, class.name)
      lu.assertEquals(record.base_names, {}, class.name)
      lu.assertTrue(#record.attributes > 0, class.name)
      for _, attribute in ipairs(record.attributes) do
        lu.assertTrue(attribute.getter, attribute.name)
        lu.assertTrue(attribute.setter, attribute.name)
      end
    end
  end
  lu.assertEquals(seen, support.class_count)
end

function TestModuleRecord:test_class_static_constants()
  local function constants(mangled)
    return peer.class(peer.type(peer.find(mangled)).class).static_constants
  end
  lu.assertEquals(constants "_p_tq_thread_master", {
    TQ_THREAD_TIMER_SLOT = 4,
    TQ_THREAD_DEBUG_INTERFACE_FLAG = 1,
    TQ_THREAD_DEBUG_PROCEDURE_FLAG = 2,
    TQ_THREAD_DEBUG_EXEC_TIME_FLAG = 4,
    TQ_THREAD_IS_FIRST_FETCH = 1,
    TQ_THREAD_USE_POLL = 2,
  })
  lu.assertEquals(constants "_p_tq_thread", {
    TQ_THREAD_PRIORITY_HIGH = 0,
    TQ_THREAD_PRIORITY_MIDDLE = 1,
    TQ_THREAD_PRIORITY_LOW = 2,
    TQ_THREAD_FLAG_CRT_BY_USR = 1,
    TQ_THREAD_FLAG_IN_LIST = 2,
  })
  lu.assertEquals(constants "_p_tq_mom_get_op_s", {})
end

TestHandle = {}

function TestHandle:test_is_three_words_of_the_shared_layout()
  local op = module.get_op_t()
  lu.assertEquals(peer.block_size(op), peer.handle_size())
  local descriptor, own, pointer = peer.words(op)
  lu.assertEquals(descriptor, peer.find "_p_tq_mom_get_op_s")
  lu.assertTrue(own ~= 0)
  lu.assertNotNil(pointer)
  op.flag = 1234
  lu.assertEquals(peer.peek_int(pointer), 1234)
end

function TestHandle:test_disowning_clears_the_own_word_only()
  local op = module.get_op_t()
  local descriptor, _, pointer = peer.words(op)
  op:__disown()
  local after = table.pack(peer.words(op))
  lu.assertEquals(after, { descriptor, 0, pointer, n = 3 })
  peer.new_handle(pointer, descriptor, true)
end

function TestHandle:test_of_a_type_without_class_has_no_metatable()
  local thread = module.tq_thread_master()
  local handle = thread.readfd
  lu.assertNil(debug.getmetatable(handle))
  lu.assertEquals(swig_type(handle), "fd_set *")
  lu.assertEquals(select(2, peer.words(handle)), 0)
  lu.assertErrorMsgContains("attempt to index", function() return handle.anything end)
end

TestRegistry = {}

function TestRegistry:test_class_metatables_and_the_library_entry()
  local names = {}
  for name in pairs(registry.SWIG) do
    names[name] = true
  end
  local expected = { [".library"] = true }
  for _, class in ipairs(catalog.classes) do
    expected[class.name] = true
  end
  lu.assertEquals(names, expected)
  lu.assertEquals(registry.SWIG[".library"], {
    inheritable_metamethods = {
      __add = true, __sub = true, __mul = true, __div = true, __mod = true, __pow = true, __unm = true, __len = true,
      __concat = true, __eq = true, __lt = true, __le = true, __call = true, __tostring = true, __gc = false,
    },
  })
end

function TestRegistry:test_metatable_is_looked_up_by_name_for_every_new_handle()
  local real = registry.SWIG.get_op_t
  local stand_in = { __gc = real.__gc }
  registry.SWIG.get_op_t = stand_in
  local with_stand_in = module.get_op_t()
  registry.SWIG.get_op_t = "no table"
  local without = module.get_op_t()
  registry.SWIG.get_op_t = real
  lu.assertIs(debug.getmetatable(with_stand_in), stand_in)
  lu.assertNil(debug.getmetatable(without))
  lu.assertIs(debug.getmetatable(module.get_op_t()), real)
  debug.setmetatable(without, real)
end

TestEntryPoints = {}

function TestEntryPoints:test_opening_again_builds_a_fresh_table_over_the_same_classes()
  local before, types = module, peer.module(peer.head()).types
  local old_object = before.get_op_t()
  local metatable = getmetatable(old_object)
  before.mark = true
  local opened = assert(package.loadlib(support.module_file, "luaopen_tq_mom_sync"))()
  lu.assertEquals(type(opened), "table")
  lu.assertIs(tq_mom_sync, opened)
  lu.assertNotIs(opened, before)
  lu.assertNil(opened.mark)
  lu.assertEquals(opened.TQ_MOM_GLOBAL_DB_NO_WRITE, -5)
  lu.assertIs(package.loaded.tq_mom_sync, before)
  lu.assertEquals(#peer.ring(), 1)
  lu.assertEquals(peer.module(peer.head()).types, types)
  lu.assertIs(getmetatable(opened.get_op_t()), metatable)
  lu.assertIs(metatable[".static"], opened.get_op_t)
  lu.assertIs(getmetatable(before.get_op_t)[".instance"], metatable)
  lu.assertNotIs(opened.get_op_t, before.get_op_t)
  old_object.flag = 3
  lu.assertEquals(old_object.flag, 3)
  lu.assertEquals(before.get_op_t().flag, 0)
  package.loaded.tq_mom_sync = before
  tq_mom_sync = before
  metatable[".static"] = before.get_op_t
  for _, class in pairs(class_by_mangled) do
    registry.SWIG[class.name][".static"] = before[class.name]
  end
end

function TestEntryPoints:test_opening_leaves_the_globals_under_the_module_table()
  local real = tq_mom_sync
  local result, left, lowest, top = peer.open(support.module_file)
  lu.assertEquals(result, 1)
  lu.assertEquals(left, 2)
  lu.assertIs(lowest, _G)
  lu.assertIs(top, tq_mom_sync)
  lu.assertNotIs(top, real)
  tq_mom_sync = real
  for _, class in pairs(class_by_mangled) do
    registry.SWIG[class.name][".static"] = real[class.name]
  end
end

function TestEntryPoints:test_opening_again_does_not_propagate_classes_again()
  local plain = peer.find "_p_fd_set"
  local get = peer.find "_p_tq_mom_get_op_s"
  local list = peer.take_casts(get)
  peer.add_cast(get, get, "none", "front")
  peer.add_cast(get, plain, "none", "back")
  local real = tq_mom_sync
  peer.open(support.module_file)
  lu.assertNil(peer.type(plain).class)
  peer.put_casts(get, list)
  tq_mom_sync = real
  for _, class in pairs(class_by_mangled) do
    registry.SWIG[class.name][".static"] = real[class.name]
  end
end

os.exit(lu.LuaUnit.run(), true)

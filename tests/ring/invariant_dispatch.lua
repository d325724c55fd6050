-- Broken invariants end the process through the C library's assertion failure, which names the condition.
local lu = require "luaunit"
local support = require "ring_support"

local table_on_top = "(lua_type(L, (-1)) == 5)"
local userdata_conditions = {
  "lua_isuserdata(L,-2)",
  "lua_isuserdata(L,1)",
  "lua_isuserdata(L,substack_start+1)",
  "lua_isuserdata(L, subcall_first_arg)",
}

--- Runs code in a child process, with locals `module`, an object `op` and its `metatable`.
local function run(code)
  return support.child("local module = require 'tq_mom_sync' local op = module.get_op_t() local metatable = "
    .. "getmetatable(op) io.write 'started' io.flush()\n" .. code .. "\nio.write ' survived'")
end

--- The function and condition of an assertion report.
local function report(result)
  return result.err:match "tq_mom_sync_wrap:%d+: (.-):? Assertion `(.-)' failed"
end

local function assert_aborts(code, ...)
  local result = run(code)
  local sigabrt = 128 + 6
  lu.assertEquals({ result.status, result.out }, { sigabrt, "started" }, code .. "\n" .. result.err)
  local name, condition = report(result)
  lu.assertNotNil(condition, result.err)
  lu.assertStrMatches(name, ".*[%a_]+.*")
  lu.assertTableContains({ ... }, condition)
  return name
end

local function assert_survives(code)
  lu.assertEquals(run(code), { status = 0, out = "started survived", err = "" })
end

TestControl = {}

function TestControl:test_code_that_breaks_nothing_survives()
  assert_survives "op.flag = 1 assert(op.flag == 1)"
end

TestMembers = {}

function TestMembers:test_get_without_an_object()
  assert_aborts("metatable.__index(5, 'x')", table.unpack(userdata_conditions))
  assert_aborts("metatable.__index(nil, 'flag')", table.unpack(userdata_conditions))
  assert_aborts("metatable.__index({}, 'flag')", table.unpack(userdata_conditions))
end

function TestMembers:test_set_without_an_object()
  assert_aborts("metatable.__newindex(5, 'x', 1)", table.unpack(userdata_conditions))
  assert_aborts("metatable.__newindex('text', 'flag', 1)", table.unpack(userdata_conditions))
end

function TestMembers:test_get_of_a_userdata_whose_metatable_is_no_classs()
  assert_aborts("metatable.__index(io.stdout, 'flag')", table_on_top)
  assert_aborts("metatable.__newindex(io.stdout, 'flag', 1)", table_on_top)
end

function TestMembers:test_get_of_a_userdata_without_metatable()
  assert_aborts("metatable.__index(peer.new_handle(peer.alloc(8)), 'flag')", table_on_top)
  assert_aborts("metatable.__newindex(peer.new_handle(peer.alloc(8)), 'flag', 1)", table_on_top)
end

function TestMembers:test_parts_of_the_metatable_are_tables()
  assert_aborts("metatable['.get'] = 5 local x = op.flag", table_on_top)
  assert_aborts("metatable['.get'] = nil local x = op.flag", table_on_top)
  assert_aborts("metatable['.fn'] = 5 local x = op.nothing", table_on_top)
  assert_aborts("metatable['.bases'] = 5 local x = op.nothing", table_on_top)
  assert_aborts("metatable['.set'] = 5 op.flag = 1", table_on_top)
  assert_aborts("metatable['.bases'] = 5 op.nothing = 1", table_on_top)
end

function TestMembers:test_parts_are_checked_only_when_they_are_reached()
  assert_survives "metatable['.fn'] = 5 metatable['.bases'] = 5 op.flag = 2 assert(op.flag == 2)"
end

function TestMembers:test_bases_are_tables()
  assert_aborts("metatable['.bases'][1] = 5 local x = op.nothing", table_on_top)
end

TestObjects = {}

function TestObjects:test_collection_of_something_else()
  assert_aborts("metatable.__gc(5)", "lua_isuserdata(L,-1)")
  assert_aborts("metatable.__gc(nil)", "lua_isuserdata(L,-1)")
  assert_aborts("metatable.__gc({})", "lua_isuserdata(L,-1)")
end

function TestObjects:test_disowning_something_else()
  assert_aborts("op.__disown(5)", "lua_isuserdata(L,-1)")
  assert_aborts("op.__disown('text')", "lua_isuserdata(L,-1)")
  assert_aborts("op.__disown()", "lua_isuserdata(L,-1)")
end

function TestObjects:test_tostring_of_something_else()
  assert_aborts("metatable.__tostring(5)", "lua_isuserdata(L,1)")
end

TestConstructor = {}

function TestConstructor:test_needs_the_static_table()
  local conditions = { table_on_top, "(lua_type(L, (1)) == 5)" }
  assert_aborts("getmetatable(module.get_op_t).__call(5)", table.unpack(conditions))
  assert_aborts("getmetatable(module.get_op_t).__call(op)", table.unpack(conditions))
end

TestNamespace = {}

function TestNamespace:test_parts_of_the_metatable_are_tables()
  assert_aborts("getmetatable(module)['.get'] = 5 local x = module.nothing", table_on_top)
  assert_aborts("getmetatable(module)['.fn'] = 5 local x = module.nothing", table_on_top)
  assert_aborts("getmetatable(module)['.set'] = 5 module.nothing = 1", table_on_top)
  assert_aborts("getmetatable(module.get_op_t)['.get'] = 5 local x = module.get_op_t.nothing", table_on_top)
end

function TestNamespace:test_is_entered_with_a_table()
  assert_aborts("getmetatable(module).__index(5, 'x')", table_on_top, "(lua_type(L, (1)) == 5)",
    "(lua_type(L, (-2)) == 5)")
end

TestConversion = {}

function TestConversion:test_a_converter_may_not_give_new_memory()
  local add = "local get_op = peer.find '_p_tq_mom_get_op_s' peer.add_cast(get_op, peer.find '_p_void', 'new_memory', "
    .. "'%s') local handle = peer.new_handle(peer.alloc(16), peer.find '_p_void') "
  for _, place in ipairs { "front", "back" } do
    local code = add:format(place)
    lu.assertStrContains(assert_aborts(code .. "metatable['.get'].flag(handle)", "!newmemory"), "ConvertPtr")
    lu.assertStrContains(assert_aborts(code .. "module.get_ext(nil, 0, handle, nil)", "!newmemory"), "ConvertPtr")
  end
  local global = "local g = peer.find '_p_tq_global_s' peer.add_cast(g, peer.find '_p_void', 'new_memory', 'front') "
    .. "module.tq_global_finish(peer.new_handle(peer.alloc(16), peer.find '_p_void'))"
  lu.assertStrContains(assert_aborts(global, "!newmemory"), "ConvertPtr")
end

function TestConversion:test_a_converter_that_is_not_reached_does_no_harm()
  assert_survives [[
    peer.add_cast(peer.find "_p_tq_mom_get_op_s", peer.find "_p_void", "new_memory", "front")
    assert(op.flag == 0)
  ]]
end

TestRegistration = {}

function TestRegistration:test_a_class_has_the_name_of_its_static_namespace()
  local result = run [[
    peer.rename_class(peer.type(peer.find "_p_tq_mom_get_op_s").class, "another")
    package.loadlib(support.module_file, "luaopen_tq_mom_sync")()
  ]]
  lu.assertEquals({ result.status, result.out }, { 134, "started" }, result.err)
  local name, condition = report(result)
  lu.assertNotNil(condition, result.err)
  lu.assertStrMatches(name, ".*[%a_]+.*")
  lu.assertStrContains(condition, "clss->name")
  lu.assertStrContains(condition, "clss->cls_static->name")
end

function TestRegistration:test_the_class_metatables_are_tables()
  assert_aborts("debug.getregistry().SWIG.get_op_t = 5 package.loadlib(support.module_file, 'luaopen_tq_mom_sync')()",
    table_on_top)
end

function TestRegistration:test_a_class_metatable_table_that_is_none_is_made_anew()
  assert_survives [[
    debug.getregistry().SWIG = 5
    local bare = module.get_op_t()
    assert(debug.getmetatable(bare) == nil)
    debug.setmetatable(bare, metatable)
    assert(debug.getregistry().SWIG[".library"].inheritable_metamethods.__add == true)
    package.loadlib(support.module_file, "luaopen_tq_mom_sync")()
    assert(tq_mom_sync.get_op_t().flag == 0)
  ]]
end

os.exit(lu.LuaUnit.run(), true)

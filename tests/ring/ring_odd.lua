-- Classes that bend the rules: results other than one, overridden metamethods, parts of a metatable that a script put
-- there, a long chain of bases, namespace functions that are called directly.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local module = require "tq_mom_sync"
local odd = require "odd"

local kLast = "C59" -- at the end of the chain that starts with C00

local function results(f, ...)
  return table.pack(f(...))
end

TestResults = {}

function TestResults:test_a_constructor_gives_its_first_result_or_nil()
  for count, expected in pairs { [0] = { n = 1 }, { "first", n = 1 }, { "first", n = 1 } } do
    odd.construct(count)
    lu.assertEquals(results(odd.Maker), expected)
    lu.assertEquals(results(odd.Maker, "with", "arguments", nil), expected)
    lu.assertEquals(results(getmetatable(odd.Maker).__call, odd.Maker), expected)
    -- The same from a call that wants more, fewer or all results.
    local first, second = odd.Maker()
    lu.assertEquals({ first, second }, { expected[1] })
    odd.Maker()
    lu.assertEquals(results(pcall, odd.Maker), { true, expected[1], n = 2 })
  end
end

function TestResults:test_a_getter_gives_its_first_result_or_nil()
  for _, class in ipairs { "C00", kLast, "Heir" } do
    local object = odd[class]()
    local get = registry.SWIG["odd." .. class].__index
    lu.assertEquals(results(get, object, "none"), { n = 1 })
    lu.assertEquals(results(get, object, "two"), { "first", n = 1 })
  end
end

function TestResults:test_a_setter_gives_none()
  for _, class in ipairs { "C00", kLast, "Heir" } do
    local set = registry.SWIG["odd." .. class].__newindex
    lu.assertEquals(results(set, odd[class](), "none", 1), { n = 0 })
    lu.assertEquals(results(set, odd[class](), "two", 1), { n = 0 })
  end
end

TestMetamethods = {}

function TestMetamethods:test_an_own_one_comes_before_that_of_the_base()
  local object = odd.Heir()
  lu.assertEquals(object + object, "own")
  lu.assertEquals(tostring(object), "own")
  lu.assertEquals(object .. object, "base")
  lu.assertNotIs(registry.SWIG["odd.Heir"].__add, registry.SWIG["odd.C00"].__add)
  lu.assertNil(debug.getupvalue(registry.SWIG["odd.Heir"].__add, 1))
end

function TestMetamethods:test_of_the_far_end_of_a_chain()
  local object = odd[kLast]()
  lu.assertEquals(object + object, "base")
  lu.assertEquals(tostring(object), "base")
  lu.assertEquals(object .. object, "base")
end

TestMetatables = {}

-- Sets parts of classes' metatables while f runs.
local function with(part, entries, f)
  local tables = {}
  for class, value in pairs(entries) do
    local entry = registry.SWIG["odd." .. class][part]
    entry.probe = value
    tables[#tables + 1] = entry
  end
  local ok, message = pcall(f)
  for _, entry in ipairs(tables) do entry.probe = nil end
  assert(ok, message)
end

local function not_called() error "called" end

function TestMetatables:test_a_lua_function_is_no_getter_of_a_base()
  with(".get", { C00 = not_called }, function()
    lu.assertNil(odd.Heir().probe)
    lu.assertNil(odd[kLast]().probe)
    lu.assertNil(odd.C00().probe)
    with(".fn", { C00 = type }, function()
      lu.assertIs(odd.Heir().probe, type)
      lu.assertIs(odd[kLast]().probe, type)
    end)
  end)
end

function TestMetatables:test_a_lua_function_is_no_setter_of_a_base()
  with(".set", { C00 = not_called }, function()
    for _, class in ipairs { "C00", "Heir", kLast } do
      lu.assertErrorMsgContains("Assignment not possible", function() odd[class]().probe = 1 end)
    end
  end)
end

function TestMetatables:test_a_lua_getter_hides_nothing_in_a_base()
  with(".get", { Heir = not_called, C00 = swig_type }, function()
    lu.assertEquals(odd.Heir().probe, "odd::Heir *")
  end)
end

function TestMetatables:test_only_a_function_is_a_method_of_a_base()
  for _, value in ipairs { 5, "text", true, setmetatable({}, { __call = not_called }) } do
    with(".fn", { C00 = value }, function()
      lu.assertNil(odd.Heir().probe)
      lu.assertNil(odd.C00().probe)
    end)
  end
end

TestNamespace = {}

local set, get = getmetatable(odd).__newindex, getmetatable(odd).__index

function TestNamespace:test_a_variables_setter_gets_the_value_alone_and_gives_nothing()
  lu.assertEquals(results(set, odd, "two", "value"), { n = 0 })
  lu.assertEquals(odd.argument_count(), 1)
  lu.assertEquals(results(set, odd, "two", "value", "surplus", {}), { n = 0 })
  lu.assertEquals(odd.argument_count(), 1)
  lu.assertEquals(results(set, odd, "two"), { n = 0 })
  lu.assertEquals(odd.argument_count(), 1)
  lu.assertNil(rawget(odd, "two"))
end

function TestNamespace:test_a_plain_field_is_set_raw()
  lu.assertEquals(results(set, odd, "plain", "value", "surplus"), { n = 0 })
  lu.assertEquals(rawget(odd, "plain"), "value")
  lu.assertEquals(odd.argument_count(), -1)
  lu.assertEquals(results(set, odd, "plain"), { n = 0 })
  lu.assertNil(rawget(odd, "plain"))
  lu.assertEquals(results(set, odd, "argument_count", odd.argument_count, nil), { n = 0 })
end

-- The table and its metatable are those of the first argument, whatever table that is.
function TestNamespace:test_on_another_namespace()
  lu.assertEquals(results(set, module, "two", "value"), { n = 0 })
  lu.assertEquals(odd.argument_count(), -1)
  lu.assertEquals(rawget(module, "two"), "value")
  module.two = nil
end

function TestNamespace:test_a_variables_getter_gives_its_first_result_or_nil()
  lu.assertEquals(results(get, odd, "none"), { n = 1 })
  lu.assertEquals(results(get, odd, "two", "surplus"), { "first", n = 1 })
  lu.assertEquals(results(get, odd, "nothing"), { n = 0 })
  lu.assertEquals(results(get, odd), { n = 0 })
end

function TestNamespace:test_nested_ones()
  local namespace, depth = odd.nest, 0
  while true do
    local _, inner = next(namespace)
    if inner == nil then break end
    namespace, depth = inner, depth + 1
  end
  lu.assertEquals(depth, 59)
end

TestCasts = {}

-- Another type may stand for a record of the module's; the list of these moves a hit to its front, but a call that is
-- refused for the kind of a later argument has converted nothing.
local function order_after(mangled, refuse, ...)
  local descriptor = peer.find(mangled)
  local list = peer.take_casts(descriptor)
  peer.add_cast(descriptor, descriptor, "none", "front")
  peer.add_cast(descriptor, peer.find "_p_odd_Maker", "none", "back")
  local handle = peer.new_handle(peer.alloc(16), peer.find "_p_odd_Maker")
  local ok, message = pcall(refuse, handle, ...)
  local names = support.cast_names(descriptor)
  peer.put_casts(descriptor, list)
  return { ok, type(message) == "string" and message:match "%(arg %d%)", table.concat(names, " ") }
end

function TestCasts:test_the_order_after_a_refused_second_argument_of_a_field()
  local set_flag = support.setter("get_op_t", "flag")
  local own, other = "_p_tq_mom_get_op_s", "_p_odd_Maker"
  lu.assertEquals(order_after(own, set_flag, {}), { false, "(arg 2)", own .. " " .. other })
  lu.assertEquals(order_after(own, set_flag, nil), { false, "(arg 2)", own .. " " .. other })
  lu.assertEquals(order_after(own, set_flag, 7), { true, false, other .. " " .. own })
end

function TestCasts:test_the_order_after_a_refused_second_argument_of_a_command()
  local own, other = "_p_tq_global_s", "_p_odd_Maker"
  lu.assertEquals(order_after(own, module.set, "no number", nil), { false, "(arg 2)", own .. " " .. other })
  lu.assertEquals(order_after(own, module.set_ext, 0, "no handle", nil), { false, "(arg 3)", own .. " " .. other })
  -- A handle of the wrong type is found out only when it is converted, after the first.
  lu.assertEquals(order_after(own, module.set_ext, 0, module.get_op_t(), nil),
    { false, "(arg 3)", other .. " " .. own })
  lu.assertEquals(order_after(own, module.set, 0, nil), { true, false, other .. " " .. own })
end

os.exit(lu.LuaUnit.run(), true)

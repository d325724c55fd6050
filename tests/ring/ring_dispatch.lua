-- Member dispatch on the paths that this module's own classes never take: bases, methods, item metamethods. A script can
-- reach them all by changing a class's metatable, as a class of another module would have it.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()
local module = require "tq_mom_sync"

local function new_class(members)
  local metatable = {
    [".type"] = "test", [".bases"] = {}, [".get"] = {}, [".set"] = {}, [".fn"] = {},
    __index = registry.SWIG.get_op_t.__index, __newindex = registry.SWIG.get_op_t.__newindex,
  }
  for key, value in pairs(members or {}) do
    metatable[key] = value
  end
  return metatable
end

local function new_object(metatable)
  return debug.setmetatable(peer.new_handle(peer.alloc(16)), metatable)
end

TestGet = {}

function TestGet:test_getter_gets_the_object_alone_and_gives_one_value()
  local object = new_object(new_class { [".get"] = { x = peer.record } })
  lu.assertEquals(table.pack((function() return object.x end)()), { 1, n = 1 })
  lu.assertEquals(peer.calls(), { { object, n = 1 } })
end

function TestGet:test_a_getter_that_returns_nothing_gives_nil()
  local object = new_object(new_class { [".get"] = { x = registry.SWIG.get_op_t[".fn"].__disown } })
  lu.assertNil(object.x)
end

function TestGet:test_only_a_c_function_is_a_getter()
  local object = new_object(new_class {
    [".get"] = { x = function() return "from lua" end, y = 5 },
    [".fn"] = { y = type },
  })
  lu.assertNil(object.x)
  lu.assertIs(object.y, type)
end

function TestGet:test_methods_of_any_kind_are_given_and_not_called()
  local method = function(self) return self end
  local object = new_object(new_class { [".fn"] = { c = swig_type, lua = method, text = "text" } })
  lu.assertIs(object.c, swig_type)
  lu.assertIs(object.lua, method)
  lu.assertIs(object:lua(), object)
  lu.assertNil(object.text)
end

function TestGet:test_getters_come_before_methods_before_bases_before_items()
  local base = new_class { [".get"] = { a = type, b = type, c = type }, __getitem = function() return "base item" end }
  local object = new_object(new_class {
    [".get"] = { a = swig_type },
    [".fn"] = { a = tostring, b = tostring },
    [".bases"] = { base },
    __getitem = function(_, key) return "item " .. tostring(key) end,
  })
  lu.assertEquals(object.a, "userdata (unknown type)")
  lu.assertIs(object.b, tostring)
  lu.assertEquals(object.c, "userdata")
  lu.assertEquals(object.d, "item d")
  lu.assertEquals(object[7], "item 7")
end

function TestGet:test_bases_depth_first_and_in_order()
  local deep = new_class { [".fn"] = { x = print, z = print } }
  local left = new_class { [".bases"] = { deep }, [".fn"] = { y = tostring } }
  local right = new_class { [".fn"] = { x = type, y = type, w = type } }
  local object = new_object(new_class { [".bases"] = { left, right } })
  lu.assertIs(object.x, print)
  lu.assertIs(object.y, tostring)
  lu.assertIs(object.z, print)
  lu.assertIs(object.w, type)
  lu.assertNil(object.v)
end

function TestGet:test_empty_places_among_the_bases_are_skipped()
  local base = new_class { [".fn"] = { x = print } }
  local bases = { false, false, base }
  bases[1], bases[2] = nil, nil
  lu.assertEquals(rawlen(bases), 3)
  lu.assertIs(new_object(new_class { [".bases"] = bases }).x, print)
end

function TestGet:test_a_base_is_the_metatable_while_it_is_searched()
  local seen
  local base = new_class { [".get"] = { who = getmetatable } }
  local deep = new_class { [".bases"] = { base } }
  local class = new_class { [".bases"] = { deep } }
  local object = new_object(class)
  seen = object.who
  lu.assertIs(seen, base)
  lu.assertIs(debug.getmetatable(object), class)
  lu.assertNil(object.nothing)
  lu.assertIs(debug.getmetatable(object), class)
end

function TestGet:test_item_getter_of_a_base()
  local item = function(object, key) return swig_type(object) .. key, "second" end
  local deep = new_class { __getitem = item }
  local object = new_object(new_class { [".bases"] = { new_class(), new_class { [".bases"] = { deep } } } })
  lu.assertEquals(object.x, "userdata (unknown type)x")
  lu.assertEquals(table.pack((function() return object.x end)()), { "userdata (unknown type)x", n = 1 })
end

function TestGet:test_item_getter_may_be_a_c_function_and_must_be_a_function()
  lu.assertEquals(new_object(new_class { __getitem = rawequal }).x, false)
  lu.assertNil(new_object(new_class { __getitem = "text" }).x)
end

function TestGet:test_an_item_getter_that_gives_nil_has_been_found()
  local calls = 0
  local base = new_class { __getitem = function() calls = calls + 1 end }
  local object = new_object(new_class { __getitem = function() end, [".bases"] = { base } })
  lu.assertNil(object.x)
  lu.assertEquals(calls, 0)
end

function TestGet:test_members_are_looked_up_raw()
  local trap = setmetatable({}, { __index = function() error "not raw" end })
  local class = new_class { [".get"] = trap, [".fn"] = trap, [".bases"] = trap }
  lu.assertNil(new_object(class).x)
end

function TestGet:test_errors_of_a_getter_pass_and_leave_the_object_usable()
  local object = new_object(new_class { [".get"] = { x = error }, [".fn"] = { y = print } })
  local ok, value = pcall(function() return object.x end)
  lu.assertFalse(ok)
  lu.assertIs(value, object)
  lu.assertIs(object.y, print)
end

TestSet = {}

local function sink()
  local log = {}
  return log, function(...) log[#log + 1] = table.pack(...) end
end

function TestSet:test_setter_is_a_c_function_given_object_and_value()
  local object = new_object(new_class { [".set"] = { x = peer.record, lua = function() end } })
  object.x = "value"
  object.x = nil
  lu.assertEquals(peer.calls(), { { object, "value", n = 2 }, { object, nil, n = 2 } })
  lu.assertErrorMsgContains("Assignment not possible", function() object.lua = 1 end)
end

function TestSet:test_item_setter_gets_object_key_and_value()
  local log, setitem = sink()
  local object = new_object(new_class { __setitem = setitem })
  object.x = 5
  object[2] = nil
  lu.assertEquals(#log, 2)
  lu.assertIs(log[1][1], object)
  lu.assertEquals({ log[1].n, log[1][2], log[1][3] }, { 3, "x", 5 })
  lu.assertEquals({ log[2].n, log[2][2], log[2][3] }, { 3, 2, nil })
end

function TestSet:test_setter_then_item_setter_then_bases()
  local log, setitem = sink()
  local base = new_class { [".set"] = { a = peer.record, b = peer.record } }
  local class = new_class { [".bases"] = { base }, [".set"] = { b = peer.record }, __setitem = setitem }
  local object = new_object(class)
  object.a = 1
  lu.assertEquals({ #log, #peer.calls() }, { 1, 0 })
  object.b = 1
  lu.assertEquals({ #log, #peer.calls() }, { 1, 1 })
  class.__setitem = nil
  object.a = 1
  lu.assertEquals({ #log, #peer.calls() }, { 1, 1 })
end

function TestSet:test_setters_of_bases_depth_first()
  local log, setitem = sink()
  local left = new_class { [".bases"] = { new_class { __setitem = setitem } } }
  local right = new_class { [".set"] = { a = peer.record } }
  local class = new_class { [".bases"] = { left, right } }
  local object = new_object(class)
  object.a = 1
  lu.assertEquals(#log, 1)
  lu.assertEquals(log[1][3], 1)
  lu.assertIs(debug.getmetatable(object), class)
  lu.assertErrorMsgContains("Assignment not possible", function()
    new_object(new_class { [".bases"] = { new_class(), right } }).b = 1
  end)
end

function TestSet:test_restores_the_metatable_after_a_search_that_fails()
  local class = new_class { [".bases"] = { new_class { [".bases"] = { new_class() } }, new_class() } }
  local object = new_object(class)
  lu.assertFalse(pcall(function() object.x = 1 end))
  lu.assertIs(debug.getmetatable(object), class)
end

function TestSet:test_the_assignment_error_has_the_scripts_position()
  local object = module.get_op_t()
  local line = debug.getinfo(1, "l").currentline + 1
  local ok, message = pcall(function() object.no_such_field = 1 end)
  lu.assertFalse(ok)
  lu.assertStrMatches(message, ".*ring_dispatch%.lua:" .. line .. ": Assignment not possible%. "
    .. "No setter/member with this name%. For custom assignments implement __setitem method%.")
end

TestGarbage = {}

function TestGarbage:test_tostring_uses_the_type_of_the_metatable_and_the_blocks_address()
  local object = new_object(new_class { [".type"] = "my type", __tostring = registry.SWIG.get_op_t.__tostring })
  lu.assertEquals(tostring(object), ("<my type userdata: %s>"):format(tostring(peer.address(object)):match "0x%x+"))
end

TestNamespace = {}

function TestNamespace:setUp()
  self.namespace = getmetatable(module)
end

function TestNamespace:tearDown()
  for _, part in ipairs { ".get", ".set", ".fn" } do
    for key in pairs(self.namespace[part]) do
      self.namespace[part][key] = nil
    end
  end
end

function TestNamespace:test_has_the_described_metatable()
  local keys = {}
  for key in pairs(self.namespace) do
    keys[key] = true
  end
  lu.assertEquals(keys, { [".get"] = true, [".set"] = true, [".fn"] = true, __index = true, __newindex = true })
  lu.assertEquals({ self.namespace[".get"], self.namespace[".set"], self.namespace[".fn"] }, { {}, {}, {} })
end

function TestNamespace:test_a_variables_getter_is_called_without_arguments()
  self.namespace[".get"].x = peer.record
  self.namespace[".get"].clock = os.clock
  self.namespace[".get"].lua = function() return 1 end
  lu.assertEquals(table.pack((function() return module.x end)()), { 1, n = 1 })
  lu.assertEquals(peer.calls(), { { n = 0 } })
  lu.assertEquals(math.type(module.clock), "float")
  lu.assertNil(module.lua)
end

function TestNamespace:test_functions_are_given()
  local f = function() end
  self.namespace[".fn"].f = f
  self.namespace[".fn"].number = 5
  lu.assertIs(module.f, f)
  lu.assertNil(module.number)
end

function TestNamespace:test_a_variables_setter_gets_the_value_alone()
  self.namespace[".set"].x = peer.record
  module.x = "value"
  lu.assertNil(rawget(module, "x"))
  lu.assertEquals(peer.calls(), { { "value", n = 1 } })
end

function TestNamespace:test_other_assignments_make_fields()
  self.namespace[".get"].hidden = os.clock
  self.namespace[".set"].lua = function() error "not called" end
  module.hidden = "plain"
  module.lua = 1
  lu.assertEquals(module.hidden, "plain")
  lu.assertEquals(rawget(module, "lua"), 1)
  module.hidden, module.lua = nil, nil
  lu.assertEquals(math.type(module.hidden), "float")
end

function TestNamespace:test_a_class_is_a_namespace_too()
  local static = getmetatable(module.get_op_t)
  static[".get"].clock = os.clock
  lu.assertEquals(math.type(module.get_op_t.clock), "float")
  module.get_op_t.extra = 1
  lu.assertEquals(rawget(module.get_op_t, "extra"), 1)
  static[".get"].clock, module.get_op_t.extra = nil, nil
end

TestConstructor = {}

function TestConstructor:test_proxy_passes_the_other_arguments()
  lu.assertErrorMsgContains("Error in tq_mom_get_op_s::tq_mom_get_op_s expected 0..0 args, got 2", module.get_op_t, 1, 2)
  local construct = getmetatable(module.get_op_t).__call
  lu.assertEquals(construct({}).flag, 0)
  lu.assertEquals(select("#", construct({})), 1)
end

os.exit(lu.LuaUnit.run(), true)

-- The module table as a namespace: plain fields, variables through native getters and setters, static constants.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestNamespaces = {}

function TestNamespaces:setUp()
  self.metatable = getmetatable(tq)
end

function TestNamespaces:tearDown()
  for _, part in ipairs {".get", ".set", ".fn"} do
    for key in pairs(self.metatable[part]) do self.metatable[part][key] = nil end
  end
  for _, name in ipairs {"no_such_name", "variable"} do rawset(tq, name, nil) end
end

function TestNamespaces:test_metatable()
  local kinds = {}
  for key, value in pairs(self.metatable) do kinds[key] = type(value) end
  luaunit.assertEquals(kinds, {
    [".get"] = "table", [".set"] = "table", [".fn"] = "table", __index = "function", __newindex = "function",
  })
  for _, part in ipairs {".get", ".set", ".fn"} do luaunit.assertEquals(self.metatable[part], {}) end
end

function TestNamespaces:test_functions_and_classes_are_raw_fields()
  for _, command in ipairs(catalog.commands) do
    luaunit.assertEquals(type(rawget(tq, command.name)), "function", command.name)
  end
  for _, class in ipairs(catalog.classes) do
    luaunit.assertEquals(type(rawget(tq, class.name)), "table", class.name)
  end
  local tables = 0
  for _, value in pairs(tq) do
    if type(value) == "table" then tables = tables + 1 end
  end
  luaunit.assertEquals(tables, #catalog.classes)
end

function TestNamespaces:test_unknown_names()
  luaunit.assertNil(tq.no_such_name)
  luaunit.assertEquals(select("#", self.metatable.__index(tq, "no_such_name")), 0)
  luaunit.assertNil(tq[1])
  luaunit.assertNil(tq[true])
  tq.no_such_name = 5
  luaunit.assertEquals(rawget(tq, "no_such_name"), 5)
end

function TestNamespaces:test_constants_are_not_protected()
  tq.TQ_MOM_OK = 5
  luaunit.assertEquals(tq.TQ_MOM_OK, 5)
  tq.TQ_MOM_OK = 0
end

function TestNamespaces:test_variables_are_read_through_their_getter()
  local arguments
  self.metatable[".get"].variable = recorder.cfunction(function(...)
    arguments = select("#", ...)
    return "value", "more"
  end)
  luaunit.assertEquals(tq.variable, "value")
  luaunit.assertEquals(arguments, 0)
  luaunit.assertEquals(table.pack(self.metatable.__index(tq, "variable")), {"value", n = 1})
end

function TestNamespaces:test_variables_are_written_through_their_setter()
  local seen
  self.metatable[".set"].variable = recorder.cfunction(function(...)
    seen = table.pack(...)
    return 1
  end)
  luaunit.assertEquals(select("#", self.metatable.__newindex(tq, "variable", 9)), 0)
  luaunit.assertEquals(seen, {9, n = 1})
  luaunit.assertNil(rawget(tq, "variable"))
end

-- A variable without a setter is hidden by what is assigned to it.
function TestNamespaces:test_a_variable_without_a_setter()
  self.metatable[".get"].variable = recorder.cfunction(function() return "native" end)
  luaunit.assertEquals(tq.variable, "native")
  tq.variable = "plain"
  luaunit.assertEquals(tq.variable, "plain")
  luaunit.assertEquals(rawget(tq, "variable"), "plain")
  tq.variable = nil
  luaunit.assertEquals(tq.variable, "native")
end

function TestNamespaces:test_lua_functions_are_no_getters_or_setters()
  self.metatable[".get"].variable = function() error("called") end
  luaunit.assertNil(tq.variable)
  local method = function() end
  self.metatable[".fn"].variable = method
  luaunit.assertIs(tq.variable, method)
  self.metatable[".set"].variable = function() error("called") end
  tq.variable = 3
  luaunit.assertEquals(rawget(tq, "variable"), 3)
end

function TestNamespaces:test_getters_come_before_functions()
  self.metatable[".fn"].variable = print
  luaunit.assertIs(tq.variable, print)
  self.metatable[".get"].variable = recorder.cfunction(function() return 1 end)
  luaunit.assertEquals(tq.variable, 1)
  self.metatable[".get"].variable = nil
  self.metatable[".fn"].variable = "no function"
  luaunit.assertNil(tq.variable)
end

function TestNamespaces:test_static_tables_are_namespaces()
  local statics = getmetatable(tq.get_op_t)
  statics[".get"].variable = recorder.cfunction(function(...) return select("#", ...) end)
  luaunit.assertEquals(tq.get_op_t.variable, 0)
  statics[".get"].variable = nil
  luaunit.assertNil(tq.get_op_t.variable)
end

function TestNamespaces:test_static_and_flattened_constants()
  luaunit.assertEquals(tq.tq_thread_master.TQ_THREAD_TIMER_SLOT, 4)
  luaunit.assertEquals(tq.tq_thread_master_TQ_THREAD_TIMER_SLOT, 4)
end

function TestNamespaces:test_the_immutable_setter()
  local event = tq.tq_thread()
  support.raises_bare("This variable is immutable", support.set_field, event, "u", nil)
end

support.run()

-- Accessors that a script takes out of a class's metatable and calls itself: without a record, and with a wrong number
-- of arguments beside a record that is just right.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestAccessors = {}

local function accessor(field, kind)
  return debug.getregistry().SWIG[field.class.name]["." .. kind][field.name]
end

-- A value that the field takes; a second result that is true says that nothing takes it.
local function value_for(field)
  if field.kind == "union" then return nil, true end
  if field.kind == "chars" or field.kind == "cstring" then return string.rep("t", 600) end
  if field.mangled then return support.handle(field.mangled, 0) end
  return 7
end

local function each_field(f)
  local fields = 0
  for _, class in ipairs(catalog.classes) do
    for _, field in ipairs(class.fields) do
      fields = fields + 1
      f(field)
    end
  end
  luaunit.assertTrue(fields > 0)
end

function TestAccessors:test_without_a_record_nothing_is_read()
  each_field(function(field)
    luaunit.assertEquals(table.pack(accessor(field, "get")(nil)), {n = 1}, field.name)
  end)
end

function TestAccessors:test_without_a_record_nothing_is_stored()
  recorder.reset()
  each_field(function(field)
    local value, read_only = value_for(field)
    if not read_only then luaunit.assertEquals(select("#", accessor(field, "set")(nil, value)), 0, field.name) end
  end)
  luaunit.assertEquals(recorder.requests(), {})
end

-- Another module may make a handle of the class that points nowhere: the same, by way of the fields themselves.
function TestAccessors:test_a_handle_of_nothing()
  recorder.reset()
  each_field(function(field)
    local handle = support.handle(field.class.mangled, 0)
    debug.setmetatable(handle, debug.getregistry().SWIG[field.class.name])
    luaunit.assertNil(handle[field.name], field.name)
    local value, read_only = value_for(field)
    if not read_only then handle[field.name] = value end
  end)
  luaunit.assertEquals(recorder.requests(), {})
end

function TestAccessors:test_nil_is_stored_nowhere_either()
  each_field(function(field)
    if (field.kind == "chars" or field.mangled) and field.kind ~= "union" then
      luaunit.assertEquals(select("#", accessor(field, "set")(nil, nil)), 0, field.name)
    end
  end)
end

function TestAccessors:test_a_wrong_number_of_arguments()
  each_field(function(field)
    local name = field.class.structure .. "::" .. field.name
    local record = tq[field.class.name]()
    local bytes = recorder.read(support.pointer_of(record), recorder.layouts[field.class.layout].size)
    local function refused(count, kind, ...)
      support.raises(string.format("Error in %s expected %d..%d args, got %d", name, count, count, select("#", ...)),
        accessor(field, kind), ...)
    end
    refused(1, "get")
    refused(1, "get", record, nil)
    refused(1, "get", record, record, record)
    local value, read_only = value_for(field)
    if not read_only then
      refused(2, "set")
      refused(2, "set", record)
      refused(2, "set", record, value, nil)
      refused(2, "set", record, value, value, value)
    end
    luaunit.assertEquals(recorder.read(support.pointer_of(record), #bytes), bytes)
  end)
end

support.run()

-- Everything is called with every small number of values below it on a fresh Lua stack, so that it meets the end of the
-- stack wherever it may: what makes no room for what it pushes writes behind the end.
local luaunit = require "luaunit"
local arguments = require "arguments"
local catalog = require "catalog"
local guard = require "stack_guard"
local support = require "support"
local odd = require "odd"

local recorder, tq = support.recorder, support.tq
local kHighest = 90 -- beyond the first two sizes of a stack

guard.start()

-- Calls f at each height; it succeeds at all or, with `fails`, at none.
local function sweep(fails, f, ...)
  for height = 0, kHighest do
    local ok, message = guard.at(height, f, ...)
    if ok == fails then luaunit.fail(string.format("at height %d: %s", height, message)) end
  end
  recorder.reset()
  guard.check()
end

local function succeeds(f, ...) sweep(false, f, ...) end
local function fails(f, ...) sweep(true, f, ...) end

TestStackHeights = {}

function TestStackHeights:tearDown()
  recorder.reset()
end

function TestStackHeights:test_commands()
  for _, command in ipairs(catalog.commands) do
    local list = arguments.of(command)
    local f = tq[command.name]
    recorder.returns(command.client, 0x1000, 5)
    succeeds(f, table.unpack(list, 1, list.n))
    fails(f, table.unpack(list, 1, list.n + 1))
    for i, argument in ipairs(command.arguments) do
      if argument.kind == "int" or argument.class then
        local old = list[i]
        list[i] = {}
        fails(f, table.unpack(list, 1, list.n))
        list[i] = old
      end
    end
  end
end

function TestStackHeights:test_array_elements_that_are_refused()
  local arrays = arguments.arrays
  local bad = table.move(arrays.fields, 1, #arrays.fields, 1, {})
  bad[#bad] = {}
  fails(tq.hmset, nil, 0, nil, bad)
  fails(tq.zadd, nil, 0, bad, arrays.members)
  fails(tq.zrem, nil, 0, bad)
end

local function get(object, name) return object[name] end
local function set(object, name, value) object[name] = value end

function TestStackHeights:test_records()
  for _, class in ipairs(catalog.classes) do
    succeeds(tq[class.name])
    fails(tq[class.name], 1)
    local object = tq[class.name]()
    succeeds(tostring, object)
    succeeds(debug.getmetatable(object).__gc, recorder.handle(0, 0, 0x1000))
    fails(set, object, "no_such_field", 1)
    succeeds(get, object, "no_such_field")
    for _, field in ipairs(class.fields) do
      succeeds(debug.getmetatable(object).__index, object, field.name)
      fails(debug.getmetatable(object)[".get"][field.name])
      fails(debug.getmetatable(object)[".set"][field.name])
      if field.kind ~= "union" then
        local value = object[field.name]
        if type(value) == "table" then value = nil end
        if value ~= nil or field.mangled then
          succeeds(debug.getmetatable(object).__newindex, object, field.name, value)
        end
        fails(debug.getmetatable(object)[".set"][field.name], object, object, object)
      end
    end
  end
end

function TestStackHeights:test_arrays_of_records()
  local class = catalog.class_by_name.tq_mom_zrange_res_t
  for _, field in ipairs(class.fields) do
    if field.count then
      local record = tq[class.name]()
      local block = arguments.fill_array(record, class, field, 100)
      succeeds(get, record, field.name)
      recorder.free(block)
    end
  end
end

function TestStackHeights:test_scans()
  local function callback() return 0 end
  local messages = {}
  for i = 1, 100 do messages[i] = {message = i} end
  succeeds(function()
    recorder.deliver(messages)
    tq.scan(nil, 0, nil, 0, callback, nil)
    recorder.reset()
  end)
  -- The values of a message whose callback is gone stay on the stack.
  succeeds(function()
    recorder.deliver(messages)
    tq.scan(nil, 0, nil, 0, function()
      local registry = debug.getregistry()
      for key, value in pairs(registry) do
        if type(key) == "number" and key > 2 and type(value) == "function" then registry[key] = nil end
      end
    end, nil)
    recorder.reset()
  end)
end

function TestStackHeights:test_long_chains_of_bases()
  local object = odd.C59()
  local metatable = debug.getregistry().SWIG["odd.C59"]
  succeeds(metatable.__index, object, "two")
  succeeds(metatable.__index, object, "nothing")
  succeeds(metatable.__newindex, object, "two", 1)
  fails(metatable.__newindex, object, "nothing", 1)
  succeeds(metatable.__add, object, object)
  succeeds(tostring, object)
end

function TestStackHeights:test_namespaces()
  local metatable = getmetatable(odd)
  succeeds(metatable.__index, odd, "two")
  succeeds(metatable.__index, odd, "nothing")
  succeeds(metatable.__newindex, odd, "two", 1)
  succeeds(metatable.__newindex, odd, "plain", 1)
  succeeds(swig_type, odd.C59())
  succeeds(swig_equals, odd.C59(), odd.C59())
end

-- The classes of a chain are registered anew, each from the next.
function TestStackHeights:test_opening()
  local classes = debug.getregistry().SWIG
  for _, name in ipairs {"tq_mom_sync", "odd"} do
    local open = assert(package.loadlib(assert(package.searchpath(name, package.cpath)), "luaopen_" .. name))
    succeeds(function(call, ...)
      for class in pairs(classes) do
        if class:find("^odd%.C") then classes[class] = nil end
      end
      call(...)
    end, guard.at_brim, open)
    succeeds(open)
  end
  succeeds(guard.at_brim, assert(package.loadlib(support.module_path, "luaopen_tq_mom_sync_user")))
end

support.run()

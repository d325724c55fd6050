-- The description beside the headers of the client library, both ways.
local luaunit = require "luaunit"
local description = require "api.description"

local module = description.module_by_name.tq_mom_sync

local function header(name)
  local file = assert(io.open(assert(os.getenv "TQ_INCLUDE") .. "/tq_mom/" .. name))
  local text = file:read("a"):gsub("/%*.-%*/", " ")
  file:close()
  return text
end

-- "struct tq_thread_master *" and "tq_thread_master*" are the same here.
local function bare(type_name) return (type_name:gsub("struct ", ""):gsub("const ", ""):gsub("%s", "")) end

-- Declared functions by name: the result's type, and a list of {type, name}.
local function declared_functions()
  local functions = {}
  local text = header "client.h":gsub("\n%s*#[^\n]*", "\n")
  for result, name, parameters in text:gmatch("([%w_ *]+[ *])([%w_]+)%(([^()]*)%);") do
    local list = {}
    for parameter in parameters:gmatch("[^,]+") do
      local type_name, parameter_name = parameter:match("^%s*(.-)([%w_]+)%s*$")
      list[#list + 1] = {bare(type_name), parameter_name}
    end
    functions[name] = {result = bare(result), parameters = list}
  end
  return functions
end

-- What the client function of an entry takes: each argument's types, of which one is declared, and its name. Arrays take
-- their number of elements behind them, scores and members one together; a hash write's list comes with the options.
local function expected_parameters(entry)
  local list = {}
  local function add(name, ...) list[#list + 1] = {name = name, types = {...}} end
  for _, argument in ipairs(entry.arguments) do
    local kind, name = argument.kind, argument.name
    if kind == "key" then
      add(name, "tq_obj*", "void*")
    elseif kind == "fields" then
      if not entry.helper then
        add(name, "int32_t*")
        add("field_count", "int")
      end
    elseif kind == "members" then
      add(name, "void**")
      add("count", "int")
    elseif kind == "any" then
      add("context", "void*")
    else
      add(name, bare(argument.native))
    end
  end
  for _, result in ipairs(entry.results) do
    if result.kind == "out" then add(nil, "int*") end
  end
  return list
end

TestDeclarations = {}

local declared = declared_functions()

for _, entry in ipairs(module.functions) do
  if not entry.cast then
    TestDeclarations["test_" .. entry.client] = function()
      local declaration = declared[entry.client]
      luaunit.assertNotNil(declaration, "is not declared")
      luaunit.assertEquals(declaration.result, bare(entry.results[1].native))
      local expected = expected_parameters(entry)
      luaunit.assertEquals(#declaration.parameters, #expected)
      for i, parameter in ipairs(expected) do
        local type_name, name = table.unpack(declaration.parameters[i])
        luaunit.assertTableContains(parameter.types, type_name)
        if parameter.name then luaunit.assertEquals(name, parameter.name) end
      end
    end
  end
end

function TestDeclarations:test_every_function_is_described()
  local described = {}
  for _, entry in ipairs(module.functions) do described[entry.client] = true end
  luaunit.assertNotNil(next(declared))
  for name in pairs(declared) do luaunit.assertTrue(described[name], name) end
end

-- The members of a class's structure: types by name, without what makes them arrays.
local function declared_members(class)
  local text = header "options.h" .. header "results.h" .. header "messages.h" .. header "runtime.h"
  local body = class.tag and text:match("typedef union (%b{}) " .. class.name .. ";") or
    text:match("struct " .. class.structure .. " (%b{})")
  local members = {}
  for declaration in assert(body, class.name .. " is not declared"):gsub("[{}]", ""):gmatch("[^;]+") do
    local handler = declaration:match("%(%*([%w_]+)%)")
    local type_name, name = declaration:gsub("%[.-%]", ""):match("^(.-)([%w_]+)%s*$")
    if handler then
      members[handler] = bare(declaration:gsub(handler, ""))
    elseif name then
      members[name] = bare(type_name)
    end
  end
  return members
end

for _, class in ipairs(module.classes) do
  TestDeclarations["test_" .. class.name] = function()
    local members = declared_members(class)
    for _, field in ipairs(class.fields) do
      local native = bare(field.native:gsub("%[.*", ""))
      luaunit.assertEquals(members[field.name], native == "fd_set" and "tq_fd_set" or native, field.name)
    end
    for _, field in ipairs(class.fields) do
      if field.count then luaunit.assertEquals(members[field.count], "size_t", field.count) end
    end
    for _, field in ipairs(class.fields) do
      members[field.name] = nil
      if field.count then members[field.count] = nil end
    end
    for _, name in ipairs(class.hidden or {}) do
      luaunit.assertNotNil(members[name], name)
      members[name] = nil
    end
    luaunit.assertEquals(members, {})
  end
end

function TestDeclarations:test_constants()
  local declared_constants = {}
  local text = header "constants.h" .. header "runtime.h"
  for name, value in text:gmatch("#define (TQ_[%w_]+) %(?(-?%d+)%)?") do declared_constants[name] = tonumber(value) end
  for name, value in text:gmatch("(TQ_[%w_]+) = (%d+)") do declared_constants[name] = tonumber(value) end
  declared_constants.TQ_THREAD_NAME_LEN = nil -- in messages only
  local described = {}
  for _, constant in ipairs(module.constants) do described[constant.name] = constant.value end
  for _, class in ipairs(module.classes) do
    for _, constant in ipairs(class.statics or {}) do described[constant.name] = constant.value end
  end
  luaunit.assertEquals(described, declared_constants)
end

os.exit(luaunit.LuaUnit.run())

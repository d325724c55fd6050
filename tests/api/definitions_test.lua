-- The definitions for editors, run as the Lua that they are, beside the modules that they describe.
local luaunit = require "luaunit"
local kit = require "kit"

local directory = assert(os.getenv("TQ_EDITOR"))

local function load_definitions(name)
  local environment = {}
  local definitions = assert(loadfile(string.format("%s/%s.lua", directory, name), "t", environment))()
  luaunit.assertIs(environment[name], definitions)
  return definitions, environment
end

TestDefinitions = {}

local function test_module(name, module)
  local definitions = load_definitions(name)
  for key, defined in pairs(definitions) do
    local real = rawget(module, key)
    local is_class = type(real) == "table"
    if type(defined) == "function" then
      luaunit.assertTrue(is_class or type(real) == "function", key)
    elseif type(defined) == "table" then
      for constant, value in pairs(defined) do luaunit.assertEquals(real[constant], value, constant) end
    else
      luaunit.assertEquals(real, defined, key)
    end
  end
  for key in pairs(module) do luaunit.assertNotNil(definitions[key], key) end
end

function TestDefinitions:test_tq_mom_sync() test_module("tq_mom_sync", kit.module) end

-- The class of tq_obj is not called: new is.
function TestDefinitions:test_tq_obj()
  local definitions = load_definitions "tq_obj"
  for name in pairs(kit.tq_obj) do
    if name ~= "tq_obj" then luaunit.assertEquals(type(definitions[name]), "function", name) end
  end
  for name in pairs(definitions) do luaunit.assertNotNil(kit.tq_obj[name], name) end
end

function TestDefinitions:test_tq_kit() test_module("tq_kit", require "tq_kit") end

function TestDefinitions:test_globals()
  local _, environment = load_definitions "tq_mom_sync"
  for name in pairs(environment) do luaunit.assertNotNil(_G[name], name) end
  luaunit.assertNotNil(environment.swig_type)
  luaunit.assertNotNil(environment.swig_equals)
end

-- A function's parameters are those that the module counts.
function TestDefinitions:test_counts_of_arguments()
  local definitions = load_definitions "tq_mom_sync"
  for name, defined in pairs(definitions) do
    if type(defined) == "function" then
      local count = debug.getinfo(defined, "u").nparams
      local too_many = {}
      for i = 1, count + 1 do too_many[i] = 0 end
      local _, message = pcall(kit.module[name], table.unpack(too_many))
      luaunit.assertStrContains(message, string.format(" expected %d..%d args, got %d", count, count, count + 1))
    end
  end
end

-- Each function and field has a type, each constant a meaning.
function TestDefinitions:test_comments()
  local previous = ""
  for line in io.lines(directory .. "/tq_mom_sync.lua") do
    if line:find("^function tq_mom_sync") then luaunit.assertStrContains(previous, "---@return", nil, nil, line) end
    if line:find("^[%w_.]+ = %d") then luaunit.assertStrMatches(previous, "%-%-%-%w.*", nil, nil, line) end
    previous = line
  end
end

kit.run()

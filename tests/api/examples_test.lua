-- Runs every example of the description and compares what it prints with what it says: examples_test.lua [module]...
-- Each example has a runtime of its own and leaves nothing behind.
local module_names = {table.unpack(arg)}
arg = {[0] = arg[0]} -- before luaunit, which takes arguments for names of tests
local luaunit = require "luaunit"
local description = require "api.description"
local kit = require "kit"

TestExamples = {}

-- The texts behind the arrows; "--> a --> b" are two lines.
local function expected_output(example)
  local lines = {}
  for comment in example:gmatch("%-%->([^\n]*)") do
    for line in (comment .. " -->"):gmatch("%s(.-) %-%->") do lines[#lines + 1] = line end
  end
  return lines
end

local function run(setup, example)
  local printed = {}
  local function print_line(...)
    local values = table.pack(...)
    for i = 1, values.n do values[i] = tostring(values[i]) end
    printed[#printed + 1] = table.concat(values, "\t")
  end
  local environment = setmetatable({print = print_line}, {__index = _G})
  local chunk = table.concat({description.prologue, setup or "", example, "return g"}, "\n")
  local g = assert(load(chunk, "=example", "t", environment))()
  kit.number(0, kit.module.tq_global_finish(g))
  kit.assert_nothing_live()
  return printed
end

local function add(module, family, entry)
  TestExamples[string.format("test_%s_%s", module.name, entry.name)] = function()
    luaunit.assertNotNil(entry.example, entry.name .. " has no example")
    local expected = expected_output(entry.example)
    luaunit.assertTrue(#expected > 0, "the example prints nothing")
    luaunit.assertEquals(run(family.setup, entry.example), expected)
  end
end

for _, name in ipairs(module_names) do
  local module = description.module_by_name[name]
  for _, family in ipairs(module.families) do
    for _, list in ipairs {family.globals, family.functions} do
      for _, entry in ipairs(list) do add(module, family, entry) end
    end
    for _, class in ipairs(family.classes) do
      if class.example then add(module, family, class) end
    end
  end
end

kit.run()

-- The families of kit.lua are all functions of the module, and each has a file that runs its own.
local luaunit = require "luaunit"
local kit = require "kit"

TestCoverage = {}

function TestCoverage:testFamiliesAreAllFunctions()
  local known = {}
  for family, names in pairs(kit.families) do
    for _, name in ipairs(names) do
      luaunit.assertNil(known[name], name)
      luaunit.assertEquals(type(rawget(kit.module, name)), "function", name)
      known[name] = family
    end
  end
  for name, value in pairs(kit.module) do
    if type(value) == "function" then luaunit.assertNotNil(known[name], name) end
  end
end

kit.run()

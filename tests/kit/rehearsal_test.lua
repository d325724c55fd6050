-- The recipes of docs/rehearsal.md that use tq_kit print what stands behind their arrows.
local luaunit = require "luaunit"
local kit = require "kit"

TestRehearsal = {}

local function blocks()
  local text = kit.read_file(arg[0]:match("^(.*)/") .. "/../../docs/rehearsal.md")
  local found = {}
  for title, block in text:gmatch("\n## ([^\n]+)\n[^#]-\n```lua\n(.-)```") do
    if block:find("tq_kit", 1, true) and not block:find("tq_watch", 1, true) then found[title] = block end
  end
  return found, assert(text:match("each starts from\n\n```lua\n(.-)```"))
end

local recipes, prologue = blocks()

for title, recipe in pairs(recipes) do
  TestRehearsal["test_" .. title:gsub("%W+", "_")] = function()
    luaunit.skipIf(kit.server and recipe:find("freeze", 1, true), "a server's clock goes on")
    local expected, printed = {}, {}
    for line in recipe:gmatch("%-%-> ([^\n]*)") do expected[#expected + 1] = line end
    local function print_line(...)
      local values = table.pack(...)
      for i = 1, values.n do values[i] = tostring(values[i]) end
      printed[#printed + 1] = table.concat(values, "\t")
    end
    local scope = setmetatable({print = print_line}, {__index = _G})
    local g = assert(load(prologue .. recipe .. "\nreturn g", "=" .. title, "t", scope))()
    luaunit.assertEquals(printed, expected)
    kit.number(0, kit.tq.tq_global_finish(g))
    kit.assert_nothing_live()
  end
end

function TestRehearsal:testThereAreRecipes()
  luaunit.assertNotNil(recipes["Does it expire when it should?"])
  luaunit.assertNotNil(recipes["What arrives?"])
end

kit.run()

-- The recipes of docs/rehearsal.md that use tq_watch print what stands behind their arrows.
local luaunit = require "luaunit"
local stage = require "stage"
local tq, watch = stage.tq, stage.watch

TestRehearsal = {}

local page = stage.read_file(arg[0]:match("^(.*)/") .. "/../../docs/rehearsal.md")
local prologue = assert(page:match("each starts from\n\n```lua\n(.-)```"))
local count = 0

for title, section in page:gsub("\n## ", "\0"):gmatch("\0([^\n]+)\n([^\0]*)") do
  local recipe = section:match("```lua\n(.-)```")
  if recipe and recipe:find("tq_watch", 1, true) then
    count = count + 1
    TestRehearsal["test_" .. title:gsub("%W+", "_")] = function()
      local expected, printed = {}, {}
      for line in recipe:gmatch("%-%-> ([^\n]*)") do expected[#expected + 1] = line end
      local function print_line(...)
        local values = table.pack(...)
        for i = 1, values.n do values[i] = tostring(values[i]) end
        printed[#printed + 1] = table.concat(values, "\t")
      end
      watch.reset()
      local scope = setmetatable({print = print_line}, {__index = _G})
      local g = assert(load(prologue .. recipe .. "\nreturn g", "=" .. title, "t", scope))()
      luaunit.assertEquals(printed, expected)
      luaunit.assertEquals(tq.tq_global_finish(g), 0)
      watch.assert_released()
    end
  end
end

function TestRehearsal:test_there_are_recipes()
  luaunit.assertTrue(count >= 4, count)
end

stage.finish()

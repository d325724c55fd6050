-- Every link of the documentation leads to a file, and to a heading of it.
local luaunit = require "luaunit"

local root = assert(os.getenv "TQ_SOURCE")

-- A directory, too, can be opened, and reads as nothing.
local function read(name)
  local file = assert(io.open(root .. "/" .. name, "rb"))
  local text = file:read("a")
  file:close()
  return text or ""
end

-- The anchors that GitHub gives the headings; two of one name are not told apart here.
local known = {}
local function anchors_of(text)
  if known[text] then return known[text] end
  local anchors = {}
  for heading in ("\n" .. text):gmatch("\n#+ ([^\n]+)") do
    local anchor = heading:gsub("%[([^%]]+)%]%([^)]*%)", "%1"):lower():gsub("[^%w_ -]", ""):gsub(" ", "-")
    luaunit.assertNil(anchors[anchor], "two headings " .. anchor)
    anchors[anchor] = true
  end
  known[text] = anchors
  return anchors
end

local function without_code(text) return (text:gsub("```.-```", "")) end

TestLinks = {}

local documents = io.popen(string.format("cd '%s' && ls *.md */*.md", root))
for name in documents:lines() do
  TestLinks["test_" .. name] = function()
    local text = without_code(read(name))
    local directory = name:match("^(.*/)") or ""
    if name ~= "CHANGELOG.md" then anchors_of(text) end
    for target in text:gmatch("%]%(([^)%s]+)%)") do
      local file, anchor = target:match("^([^#]*)#?(.*)$")
      if not target:find("^https?:") then
        local path = file == "" and name or (directory .. file):gsub("[^/]+/%.%./", "")
        local linked = read(path)
        if anchor ~= "" then luaunit.assertTrue(anchors_of(without_code(linked))[anchor], target) end
      end
    end
  end
end
documents:close()

os.exit(luaunit.LuaUnit.run())

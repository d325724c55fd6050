-- What the built file exports and needs, whatever machine it is for.
local lu = require "luaunit"
local catalog = require "catalog"
local file = assert(os.getenv "TQ_MODULE_FILE", "the environment variable TQ_MODULE_FILE must name the built module")

local function readelf(option)
  local pipe = assert(io.popen(("LC_ALL=C readelf -W %s '%s'"):format(option, file)))
  local text = pipe:read "a"
  lu.assertTrue(pipe:close(), "readelf failed")
  return text
end

--- Dynamic symbols: exported name -> type, and undefined name -> binding.
local function dynamic_symbols()
  local exported, undefined = {}, {}
  for line in readelf("--dyn-syms"):gmatch "[^\n]+" do
    local kind, binding, section, name = line:match "^%s*%d+: %x+%s+%g+ (%u+)%s+(%u+)%s+%u+%s+(%g+)%s+(%g+)"
    if kind and binding ~= "LOCAL" then
      name = name:gsub("@.*", "")
      if section == "UND" then
        undefined[name] = binding
      else
        exported[name] = kind
      end
    end
  end
  return exported, undefined
end

-- The reviewed list; all but the chunk are functions.
local expected = {}
for name in io.lines(assert(os.getenv "TQ_EXPORTS")) do expected[name] = "FUNC" end
expected.luaopen_tq_mom_sync_luacode = "OBJECT"

TestBuiltFile = {}

function TestBuiltFile:test_exports_exactly_the_documented_symbols()
  lu.assertEquals((dynamic_symbols()), expected)
end

function TestBuiltFile:test_needs_the_c_library_only()
  local needed = {}
  for name in readelf("-d"):gmatch "%(NEEDED%)[^%[]*%[([^%]]+)%]" do
    needed[#needed + 1] = name
  end
  lu.assertEquals(needed, { "libc.so.6" })
end

function TestBuiltFile:test_takes_nothing_from_the_cxx_runtime()
  local _, undefined = dynamic_symbols()
  lu.assertNotNil(undefined.lua_pushnumber)
  for name, binding in pairs(undefined) do
    local of_cxx = name:find "^_Z" or name:find "^__cxa_" or name:find "^__gxx_" or name:find "^_Unwind_"
    lu.assertTrue(not of_cxx or (name == "__cxa_finalize" and binding == "WEAK"), name)
  end
end

function TestBuiltFile:test_calls_each_client_function()
  local _, undefined = dynamic_symbols()
  local called, expected_calls = {}, {}
  for name in pairs(undefined) do
    if name:find "^tq_" then called[name] = true end
  end
  for _, command in ipairs(catalog.commands) do
    if not command.cast then expected_calls[command.client] = true end
  end
  lu.assertEquals(called, expected_calls)
end

os.exit(lu.LuaUnit.run(), true)

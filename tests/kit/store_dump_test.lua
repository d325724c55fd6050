-- companions/tq_kit/store_dump.lua, which scripts/store-dump runs.
local luaunit = require "luaunit"
local kit = require "kit"
local tq_kit = require "tq_kit"
local tq, number = kit.tq, kit.number

TestStoreDump = kit.suite()

local script = arg[0]:match("^(.*)/") .. "/../../companions/tq_kit/store_dump.lua"

-- Returns what it printed to both outputs, and its exit status.
local function store_dump(...)
  local output = os.tmpname()
  local words = {os.getenv("TQ_LUA"), "-e",
    [['assert(package.loadlib(assert(package.searchpath("libtq_mom_impl", package.cpath)), "*"))']], script, ...}
  local _, how, status = os.execute(table.concat(words, " ") .. " > " .. output .. " 2>&1")
  local text = kit.read_file(output)
  os.remove(output)
  luaunit.assertEquals(how, "exit")
  return text, status
end

function TestStoreDump:testSnapshot()
  local name = kit.temporary_name()
  local g = kit.connect(name)
  local elements = {}
  for i = 1, 20 do elements[i] = "e" .. i end
  tq_kit.load(g, 4, {text = "a\0b", list = {elements = elements}, ["a key"] = {scores = {m = 1.5}}})
  tq_kit.load(g, 0, {zero = ""})
  number(0, tq.bgsave(g, 0))
  number(0, tq.tq_global_finish(g))
  local text, status = store_dump(name)
  luaunit.assertEquals(status, 0, text)
  luaunit.assertStrContains(text, 'database 0\n  zero = {kind = "string", value = ""}\ndatabase 4\n  a key = ')
  luaunit.assertStrContains(text, 'text = {kind = "string", value = "a\\x00b"}')
  luaunit.assertStrContains(text, '"e20"') -- nothing is cut
  luaunit.assertEquals(store_dump(name, "0"), 'database 0\n  zero = {kind = "string", value = ""}\n')
  luaunit.assertEquals(store_dump(name, "7"), "")
  os.remove(name)
end

function TestStoreDump:testRefusals()
  local missing = kit.temporary_name()
  local function refused(reason, ...)
    local text, status = store_dump(...)
    luaunit.assertStrContains(text, reason)
    luaunit.assertEquals(status, 1)
  end
  refused("store-dump: name a snapshot's file or a server's URL")
  refused("No such file", missing)
  luaunit.assertNil(io.open(missing)) -- and none was made
  refused("cannot be opened", script)
  local name = kit.temporary_name()
  local g = kit.connect(name)
  number(0, tq.bgsave(g, 0))
  number(0, tq.tq_global_finish(g))
  refused("database from 0 to 37 expected, got 38", name, "38")
  refused("database from 0 to 37 expected, got four", name, "four")
  os.remove(name)
end

kit.run()

-- What all test files share: the modules with the watch library between them and the host kit, and a connected runtime
-- for each test.
local luaunit = require "luaunit"

-- The watch library comes before the client library, whose functions it finds by TQ_WATCH_CLIENT.
local preamble = [[
for _, name in ipairs {"libtq_mom_watch", "libtq_mom_impl"} do
  assert(package.loadlib(assert(package.searchpath(name, package.cpath)), "*"))
end
]]
assert(load(preamble))()
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local watch = require "tq_watch"

local stage = {tq = tq, watch = watch, probe = require "kit_probe", key = tq_obj.new, db = 4}

function stage.connect()
  local g = tq.tq_global_init(nil, nil)
  luaunit.assertEquals(tq.client_connect(g, 0), 0)
  return g
end

-- A test class whose tests each have a connected runtime, self.g, watch from the start and leave nothing behind, in the
-- client library neither.
function stage.suite()
  local suite = {}
  function suite:setUp()
    self.g = stage.connect()
    watch.reset()
  end
  function suite:tearDown()
    watch.trace(nil)
    watch.reset()
    luaunit.assertEquals(tq.tq_global_finish(self.g), 0)
    watch.assert_released()
    for _ = 1, 2 do collectgarbage() end
    luaunit.assertEquals({stage.probe.live()}, {0, 0})
  end
  return suite
end

-- "<this file>:<line>" of the caller, `offset` lines further on.
function stage.here(offset)
  local info = debug.getinfo(2, "Sl")
  return string.format("%s:%d", info.short_src, info.currentline + (offset or 0))
end

-- f raises an error with the text in it.
function stage.raises(text, f, ...)
  local results = table.pack(pcall(f, ...))
  luaunit.assertFalse(results[1])
  luaunit.assertStrContains(results[2], text)
end

function stage.read_file(name)
  local file = assert(io.open(name, "rb"))
  local bytes = file:read("a")
  file:close()
  return bytes
end

-- Runs a chunk in a process of its own: its exit status and what it wrote to both outputs. Settings are shell
-- assignments; `plain` leaves out the libraries.
function stage.run(settings, chunk, plain)
  local script, output = os.tmpname(), os.tmpname()
  local file = assert(io.open(script, "wb"))
  file:write(plain and "" or preamble, chunk)
  file:close()
  local _, how, status = os.execute(string.format("%s %s %s > %s 2>&1", settings, os.getenv("TQ_LUA"), script, output))
  local text = stage.read_file(output):gsub(script:gsub("%p", "%%%0"), "script")
  os.remove(script)
  os.remove(output)
  luaunit.assertEquals(how, "exit", text)
  return status, text
end

-- The line of a chunk for stage.run, counted as in the chunk.
function stage.line(number)
  return "script:" .. number + select(2, preamble:gsub("\n", ""))
end

function stage.finish()
  os.exit(luaunit.LuaUnit.run() == 0, true)
end

return stage

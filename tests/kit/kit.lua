-- What all test files share: the modules on the host kit's store, suites that end with nothing left over, and short
-- forms of what every test does.
local luaunit = require "luaunit"
local description = require "api.description"

-- The modules take the client library's symbols from the process.
assert(package.loadlib(assert(package.searchpath("libtq_mom_impl", package.cpath)), "*"))
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local probe = require "kit_probe"

local kit = {tq_obj = tq_obj, probe = probe, module = tq}

-- The module's functions by the file of api/ that describes them, casts apart. Each test file uses all of its own.
kit.families = {}
for _, entry in ipairs(description.module_by_name.tq_mom_sync.functions) do
  local family = entry.cast and "casts" or entry.family.file
  kit.families[family] = kit.families[family] or {}
  table.insert(kit.families[family], entry.name)
end

-- The module, which notes the functions that a test takes from it.
local used = {}
kit.tq = setmetatable({}, {
  __index = function(_, name)
    used[name] = true
    return tq[name]
  end,
})

local databases = {app = tq.TQ_MOM_APP_DB, other = tq.TQ_MOM_CFG_DB}
kit.db = databases.app
kit.other_db = databases.other

-- Status codes of client functions.
kit.OK, kit.ERR, kit.INPUT_ERR, kit.NO_READY = 0, -1, -2, -4

-- A name for tq_global_init that gives a store of its own: nil in this process; on a server, whose name then ends with a
-- prefix, that name with a longer prefix.
kit.server = os.getenv "TQ_MOM_STORE"
local stores = 0
function kit.fresh_store()
  stores = stores + 1
  return kit.server and kit.server .. stores .. ":"
end

function kit.connect(name)
  local g = tq.tq_global_init(name or kit.fresh_store(), nil)
  luaunit.assertNotNil(g)
  kit.number(0, tq.client_connect(g, 0))
  return g
end

local function collect()
  collectgarbage()
  collectgarbage()
end

-- The results and objects of the client library that nobody has released.
function kit.assert_nothing_live()
  collect()
  local results, objects = probe.live()
  luaunit.assertEquals(results, 0, "results that were not released")
  luaunit.assertEquals(objects, 0, "objects that were not released")
end

-- A test class whose tests each have a connected runtime, self.g, and leave nothing behind.
function kit.suite()
  local suite = {}
  function suite:setUp()
    self.g = kit.connect(nil)
  end
  function suite:tearDown()
    kit.number(0, tq.tq_global_finish(self.g))
    self.g = nil
    kit.assert_nothing_live()
  end
  return suite
end

-- Numbers that the module returns are floats.
function kit.number(expected, actual)
  luaunit.assertEquals(math.type(actual), "float")
  luaunit.assertEquals(actual, expected)
end

kit.key = tq_obj.new

-- The values of untyped element handles.
function kit.values(elements)
  local values = {}
  for i, element in ipairs(elements) do
    luaunit.assertEquals(swig_type(element), "void *")
    values[i] = tq_obj.from(element).value
  end
  return values
end

-- Takes what `read` makes of a result, checks its error code and releases it with the named function.
function kit.take(result, release, read, error_code)
  luaunit.assertNotNil(result)
  kit.number(error_code or 0, result.error_code)
  local taken = read(result)
  kit.number(0, tq[release](result))
  return taken
end

function kit.stored(g, key, db)
  local object, status = tq.get(g, db or kit.db, kit.key(key))
  kit.number(0, status)
  if object == nil then return nil end
  local value = object.value
  kit.number(0, tq.tq_obj_free(object))
  return value
end

-- The name of a file that does not exist.
function kit.temporary_name()
  local name = os.tmpname()
  os.remove(name)
  return name
end

function kit.read_file(name)
  local file = assert(io.open(name, "rb"))
  local bytes = file:read("a")
  file:close()
  return bytes
end

function kit.write_file(name, bytes)
  local file = assert(io.open(name, "wb"))
  file:write(bytes)
  file:close()
end

-- Runs a chunk in a process of its own, in the given directory; returns what it wrote to both outputs.
function kit.run_chunk(chunk, directory)
  local script, output = os.tmpname(), os.tmpname()
  kit.write_file(script, chunk)
  local ran, how, code = os.execute(
    string.format("cd %s && %s %s > %s 2>&1", directory or ".", os.getenv("TQ_LUA"), script, output))
  local text = kit.read_file(output)
  os.remove(script)
  os.remove(output)
  luaunit.assertEquals({ran, how, code}, {true, "exit", 0}, text)
  return text
end

-- Ends the process with the tests' result. The state is closed, so that what is left over is a leak.
function kit.run(family)
  local failures = luaunit.LuaUnit.run()
  for _, name in ipairs(family and kit.families[family] or {}) do
    if not used[name] then
      io.stderr:write("no test uses ", name, "\n")
      failures = failures + 1
    end
  end
  collect()
  local results, objects = probe.live()
  if results ~= 0 or objects ~= 0 then
    io.stderr:write(string.format("left over: %d results, %d objects\n", results, objects))
    failures = failures + 1
  end
  os.exit(failures == 0, true)
end

return kit

-- The statuses that the description names for every command on a database, provoked on the host kit.
local luaunit = require "luaunit"
local description = require "api.description"
local kit = require "kit"
local tq_kit = require "tq_kit"

local tq = kit.module

-- A value of each kind of argument that a command accepts.
local function good(argument, g)
  local kind = argument.kind
  if kind == "global" then return g end
  if kind == "key" then
    local key = kit.key("key", "1")
    key[1] = "field"
    return key
  end
  if kind == "op" then
    local options = tq[argument.class]()
    for _, field in ipairs(description.class_by_name[argument.class].fields) do options[field.name] = 1 end
    return options
  end
  if kind == "fields" then return {1} end
  if kind == "scores" then return {1} end
  if kind == "members" then return {kit.key("key", "1")} end
  if kind == "callback" or kind == "any" then return nil end
  return argument.name == "db" and kit.db or 1
end

local function status_of(entry, g)
  local arguments = {}
  for i, argument in ipairs(entry.arguments) do arguments[i] = good(argument, g) end
  local results = table.pack(tq[entry.name](table.unpack(arguments, 1, #entry.arguments)))
  local result = entry.results[1]
  if result.class then
    local status = results[1].error_code
    local release = description.class_by_name[result.class].release
    kit.number(0, tq[release](results[1]))
    return status
  end
  return results[#results]
end

local function is_command(entry) return entry.arguments[2] and entry.arguments[2].name == "db" end

TestStatuses = {}

for _, entry in ipairs(description.module_by_name.tq_mom_sync.functions) do
  if is_command(entry) then
    TestStatuses["test_" .. entry.name] = function()
      kit.number(tq.TQ_MOM_INPUT_ERR, status_of(entry, nil))
      local g = tq.tq_global_init(nil, nil)
      kit.number(tq.TQ_MOM_NO_READY, status_of(entry, g))
      kit.number(0, tq.client_connect(g, 0))
      local status = status_of(entry, g)
      for name in pairs(entry.statuses) do
        if status == tq[name] then status = 0 end
      end
      luaunit.assertTrue(status >= 0)
      tq_kit.read_only(g, kit.db, true)
      luaunit.assertEquals(status_of(entry, g) == tq.TQ_MOM_GLOBAL_DB_NO_WRITE, entry.writes or false)
      kit.number(0, tq.tq_global_finish(g))
    end
  end
end

function TestStatuses:test_names()
  for _, entry in ipairs(description.module_by_name.tq_mom_sync.functions) do
    for name in pairs(entry.statuses) do luaunit.assertEquals(math.type(tq[name]), "integer", entry.name) end
  end
end

kit.run()

-- store_dump.lua FILE|URL [DATABASE]...: prints what a store holds. scripts/store-dump runs it.
local tq = require "tq_mom_sync"
local tq_kit = require "tq_kit"

local function fail(...)
  io.stderr:write("store-dump: ", string.format(...), "\n")
  os.exit(1, true)
end

local name = arg[1]
if not name then fail("name a snapshot's file or a server's URL") end
-- A runtime would begin a new store in the place of a file that is not there.
if not name:find("://", 1, true) then
  local file, reason = io.open(name, "rb")
  if not file then fail("%s", reason) end
  file:close()
end

local databases = {}
for i = 2, #arg do
  local db = math.tointeger(tonumber(arg[i]))
  if not db or db < 0 or db > tq.TQ_MOM_INNER_DB then
    fail("database from 0 to %d expected, got %s", tq.TQ_MOM_INNER_DB, arg[i])
  end
  databases[#databases + 1] = db
end
if #databases == 0 then
  for db = 0, tq.TQ_MOM_INNER_DB do databases[#databases + 1] = db end
end

local g = tq.tq_global_init(name, nil)
if not g then fail("%s cannot be opened", name) end
if tq.client_connect(g, 0) ~= tq.TQ_MOM_OK then fail("%s: %s", name, tq_kit.last_error(g)) end

local function print_database(db)
  local keys, names = tq_kit.dump(g, db), {}
  for key in pairs(keys) do names[#names + 1] = key end
  if #names == 0 then return end
  table.sort(names)
  print(string.format("database %d", db))
  for _, key in ipairs(names) do print(string.format("  %s = %s", key, tq_kit.show(keys[key], math.maxinteger))) end
end

for _, db in ipairs(databases) do
  local ok, reason = pcall(print_database, db)
  if not ok then fail("%s", reason) end
end
tq.tq_global_finish(g)

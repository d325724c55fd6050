-- What goes wrong and how a script hears of it: statuses from the store, Lua errors for misuse.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local status_names = {}
for _, name in ipairs {"OK", "ERR", "INPUT_ERR", "MALLOC_ERR", "NO_READY", "GLOBAL_DB_NO_WRITE"} do
  status_names[tq["TQ_MOM_" .. name]] = name
end

-- Statuses are floats; as a table key, or compared, 0.0 is 0.
local function show(what, status) print(string.format("%-32s %s", what, status_names[status] or status)) end

-- Runs f and prints what it raises.
local function try(f)
  local ok, message = pcall(f)
  print(ok and "no error" or message)
end

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
local db = tq.TQ_MOM_APP_DB
local lamp = tq_obj.new("lamp", "on")

print "-- statuses"
show("before connecting", tq.set(g, db, lamp))
tq.client_connect(g, 0)
show("set", tq.set(g, db, lamp))
show("no such database", tq.set(g, 38, lamp))
show("no object", tq.set(g, db, nil))
show("an object without a value", tq.set(g, db, tq_obj.new("lamp")))
show("a string is not a list", tq.llen(g, db, lamp))
show("no element at that position", tq.lset(g, db, tq_obj.new("queue", "x"), 5))

print "-- statuses beside a result"
local object, status = tq.get(g, db, tq_obj.new("nobody"))
show("a missing key: " .. tostring(object), status)
object, status = tq.get(g, 38, lamp)
show("no such database: " .. tostring(object), status)
local result = tq.incr(g, db, lamp)
show("'on' plus one", result.error_code)
tq.incr_res_free(result)

print "-- Lua errors; the client library was not called"
try(function() tq.set(g, db) end)
try(function() tq.set("g", db, lamp) end)
try(function() tq.set(lamp, db, lamp) end)
try(function() tq.pdel(g, db, lamp, -1) end)
try(function() tq.hmget(g, db, lamp, {1, "2"}) end)
try(function() tq.zadd(g, db, {1}, {"member"}) end)
try(function() tq.scan(g, db, lamp, 0, "callback", nil) end)

print "-- fields; a wrong value comes without a position"
local option = tq.psetex_op_t()
try(function() option.milseconds = "soon" end)
try(function() option.milliseconds = 5 end)
print("reading an unknown field: " .. tostring(option.milliseconds))

-- Not checked: a key may be any handle, and everything else counts as no key. The kit's own module is stricter.
print "-- value objects"
show("a string in place of an object", tq.set(g, db, "lamp"))
try(function() return tq_obj.new(nil) end)
try(function() lamp.colour = "red" end)
object = tq.get(g, db, lamp)
tq.tq_obj_free(object)
try(function() return object.value end)

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)
show("after the end", tq.set(g, db, lamp))

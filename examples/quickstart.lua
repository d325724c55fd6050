-- Connect, write, read, increment, expire, free, handle an error.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj" -- makes value objects: a key, and the value that goes with it

local function say(format, ...) print(string.format(format, ...)) end

-- Connect. Every command takes the runtime and a database first.
local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_APP_DB
say("connected, using database %d", db)

-- Write. Objects made here belong to Lua, which frees them.
local motd = tq_obj.new("motd", "ready to serve")
assert(tq.set(g, db, motd) == tq.TQ_MOM_OK)
say("wrote %s", motd)

-- Read. What a command returns belongs to the client library: free it when done.
local found, status = tq.get(g, db, tq_obj.new("motd"))
say("read %q, status %d", found.value, status)
tq.tq_obj_free(found)

-- Increment. A missing key counts from 0; the answer is a record.
local visits = tq_obj.new("visits")
for _ = 1, 3 do
  local result = tq.incr(g, db, visits)
  say("visit %d", result.value)
  tq.incr_res_free(result)
end

-- Expire. Times are in milliseconds, the last argument of pexpire is how many seconds the call may take.
local session = tq_obj.new("session", "alice")
assert(tq.psetex(g, db, session, 60 * 60 * 1000) == tq.TQ_MOM_OK)
say("session is there: %s", tq.exists(g, db, session) == 1)
assert(tq.pexpire(g, db, session, 1, 0.5) == 1)
repeat until tq.exists(g, db, session) == 0
say("session is gone a millisecond later")

-- Handle errors. What the store refuses is a status, what was called wrongly is a Lua error.
local refused = tq.incr(g, db, motd)
if refused.error_code == tq.TQ_MOM_INPUT_ERR then say("refused: %q is no number", motd.value) end
tq.incr_res_free(refused)

local ok, message = pcall(tq.set, g, db)
say("set without an object: %s, %s", ok, message)

assert(tq.del(g, db, motd) == 1)
assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)
say("finished")

-- What a script does to the store: scripts/lua --watch examples/trace.lua
--
-- Nothing in the script is needed for that: scripts/lua --watch=trace FILE.lua traces any script, --watch=trace,summary
-- counts as well. From inside, tq_watch tells a function of each call, makes calls fail and wait, and knows what is not
-- released.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local tq_watch = require "tq_watch"

local db = tq.TQ_MOM_APP_DB
local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")

local function take_job()
  local job, left = tq.lpop(g, db, tq_obj.new("jobs"))
  if not job then return nil, left end
  local text = job.value
  tq.tq_obj_free(job)
  return text
end

-- Every call, with the line that made it. A table says all of it; call.text is one line.
tq_watch.trace(function(call)
  print(string.format("line %d: %s %s -> %s%s", call.line, call.call, call.key or "", call.result,
    call.failed and " failed" or ""))
end)
tq.rpush(g, db, tq_obj.new("jobs", "sync clock"))
take_job()
tq.llen(g, db, nil)
tq_watch.trace(nil)

-- What happens to the script when the store fails at this point?
local fault = tq_watch.fault {call = "lpop", key = "jobs", times = 1, status = tq.TQ_MOM_NO_READY}
print("with a fault:", take_job())
print("hits:", fault:hits())

-- And when it fails at any other? One line does the failure of each call in turn.
local report = tq_watch.each_call(function()
  tq.rpush(g, db, tq_obj.new("jobs", "rotate logs"))
  print("took:", (assert(take_job(), "no job")))
end)
for _, run in ipairs(report) do
  print(string.format("%s fails: %s, %d not released", run.call, run.error and "an error" or "fine", run.leaked))
end

-- What did all that come to?
local counts = tq_watch.summary().lpop
print(string.format("lpop: %d calls, %d failures", counts.calls, counts.failures))

-- What is never released? The line that got it says where to look.
local members = tq.smembers(g, db, tq_obj.new("ports"))
for _, thing in ipairs(tq_watch.live()) do print("not released:", thing.type, thing.where) end
tq.smembers_res_free(members)

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)
tq_watch.assert_released()

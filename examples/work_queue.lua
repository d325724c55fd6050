-- A list as a work queue: producers push at the tail, a worker pops from the head, urgent work overtakes.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_APP_DB

local function job(text) return tq_obj.new("jobs", text) end
local jobs = job()

-- What waits, without taking it out. A value array holds untyped handles; tq_obj.from makes objects of them.
local function waiting()
  local result = assert(tq.lrange(g, db, jobs, 0, -1))
  local texts = {}
  for i, element in ipairs(result.value_array) do texts[i] = tq_obj.from(element).value end
  tq.lrange_res_free(result)
  return table.concat(texts, ", ")
end

-- The next job, or nil. A popped object is the caller's to free; the second result is what is left, or a status.
local function next_job()
  local object, left = tq.lpop(g, db, jobs)
  if left < 0 then error("lpop failed with " .. left) end
  if not object then return nil end
  local text = object.value
  tq.tq_obj_free(object)
  return text, left
end

for _, text in ipairs {"poll sensors", "rotate logs", "sync clock"} do tq.rpush(g, db, job(text)) end
print("waiting: " .. waiting())

tq.lpush(g, db, job("shut valve"))
local kBefore = 0
tq.linsert(g, db, job("check disk"), job("rotate logs"), kBefore)
print("waiting: " .. waiting())

tq.lset(g, db, job("sync clock now"), -1)
print(string.format("dropped: %d", tq.lrem(g, db, job("poll sensors"), 1)))

for text, left in next_job do print(string.format("doing %s, %d left", text, left)) end
print(string.format("the queue is empty and its key is gone: %s", tq.exists(g, db, jobs) == 0))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

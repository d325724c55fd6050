-- Subscribing: a function of a script gets what is published. With a server in place of the store in the process, say
-- TQ_MOM_STORE=redis://127.0.0.1:6379, messages come from other processes, too, and are delivered by tq_kit.poll.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"
local tq_kit = require "tq_kit" -- of the host kit; on a device subscribers are native

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_FWD_DB

local function publish(topic, text)
  tq.publish(g, db, tq_obj.new(topic, text))
  tq_kit.poll(g, 0.2) -- nothing is left to deliver when the store is in the process
end

-- The pattern is a glob, as for a scan. The message is a copy with its bytes: keep it as long as you like.
local kept = {}
local alarms = tq_kit.subscribe(g, db, "alarm/*", function(_, message, text)
  print(string.format("%s: %s", message.key, text))
  kept[#kept + 1] = message
end)

publish("alarm/fan", "stalled")
publish("alarm/temperature", "71")
publish("state/fan", "running") -- matches nothing

-- A callback may use the store, also to publish.
local shutdown = tq_kit.subscribe(g, db, "alarm/temperature", function(_, _, text)
  if tonumber(text) > 80 then tq.publish(g, db, tq_obj.new("alarm/power", "going down")) end
end)
publish("alarm/temperature", "85")
tq_kit.poll(g, 0.2)

alarms:cancel()
shutdown:cancel()
publish("alarm/fan", "running")
print(string.format("%d messages kept, the first:\n%s", #kept, tq_kit.show(kept[1])))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

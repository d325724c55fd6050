-- Publishing. A script sees how many subscribers were reached; subscribe.lua shows how to be one.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_FWD_DB

-- The key is the topic, the value the message.
local alarm = tq_obj.new("alarm/fan", "stalled")
print(string.format("published %s to %d subscribers", alarm, tq.publish(g, db, alarm)))

-- The _ext form takes a record of options.
local options = tq.publish_op_t()
options.flag = 0
print(string.format("and again to %d", tq.publish_ext(g, db, options, alarm)))

-- A message is delivered, not stored, and there is none without a value.
print(string.format("stored: %s", tq.exists(g, db, alarm) == 1))
print(string.format("no message: status %d", tq.publish(g, db, tq_obj.new("alarm/fan"))))

-- What a subscriber gets is such a record. A script can make one, to test a handler.
local function handle(message)
  assert(message.cmd == tq.TQ_MOM_PUBLISH, "not a published message")
  local last = message.flag == tq.TQ_MOM_SCAN_OVER and ", the last of its batch" or ""
  local text = tq_obj.bytes(message.value, message.length)
  print(string.format("handling %s of database %d: %q%s", message.key, message.db, text, last))
end

local message = tq_obj.message{db = db, key = "alarm/fan", cmd = tq.TQ_MOM_PUBLISH, value = "stalled"}
handle(message)
message.flag = tq.TQ_MOM_SCAN_OVER
handle(message)

-- Texts are cut to what the record has room for.
message.key = string.rep("x", 600)
print(string.format("a key of 600 characters is kept as %d", #message.key))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

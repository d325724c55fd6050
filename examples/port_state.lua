-- A hash with the state of a port: numbered fields under one key, read whole or in part, and what changed in between.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_LOCAL_DB

-- Fields have numbers; what they mean is ours to say.
local kAdmin, kLink, kSpeed, kPeer = 1, 2, 3, 4
local names = {[kAdmin] = "admin", [kLink] = "link", [kSpeed] = "speed", [kPeer] = "peer"}

-- Prints a hash result and releases it.
local function report(title, result)
  assert(result.error_code == tq.TQ_MOM_OK, "the hash could not be read")
  local changed = {}
  for _, tag in ipairs(result.field_change_tag) do changed[tag] = true end
  print(title)
  for _, tag in ipairs(result.field_tag) do
    print(string.format("  %-5s = %s%s", names[tag], result.value[tag], changed[tag] and " (changed)" or ""))
  end
  tq.hash_res_free(result)
end

-- The object carries the fields, the list says which of them to write.
local port = tq_obj.new("port/eth0")
port[kAdmin], port[kLink], port[kSpeed] = "up", "down", "100"
assert(tq.hmset(g, db, port, {kAdmin, kLink, kSpeed}) == tq.TQ_MOM_OK)

local key = tq_obj.new("port/eth0")
report("after the first write", tq.hgetall(g, db, key))

port[kLink], port[kSpeed] = "up", "1000"
assert(tq.hmset(g, db, port, {kLink, kSpeed}) == tq.TQ_MOM_OK)
report("after the link came up", tq.hgetall(g, db, key))

-- hmsetnx keeps what is there and returns how many fields were new.
port[kAdmin], port[kPeer] = "down", "switch-7"
print(string.format("new fields: %d", tq.hmsetnx(g, db, port, {kAdmin, kPeer})))
report("two fields of it", tq.hmget(g, db, key, {kAdmin, kPeer}))

-- One field can go before the others do: here at once.
assert(tq.pexpire_field(g, db, key, 0, kPeer, 1) == 1)
report("without a peer", tq.hgetall(g, db, key))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

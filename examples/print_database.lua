-- Prints a database with a scan, and shows how a scan is limited and stopped.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_CFG_DB

-- Something to print: a key of each kind.
tq.set(g, db, tq_obj.new("host/name", "gateway"))
tq.set(g, db, tq_obj.new("host/site", "roof"))
tq.rpush(g, db, tq_obj.new("log/last", "started"))
tq.sadd(g, db, tq_obj.new("users", "alice"))
tq.sadd(g, db, tq_obj.new("users", "bob"))
tq.zadd(g, db, {1.5}, {tq_obj.new("load", "cpu0")})
local port = tq_obj.new("port/eth0")
port[1] = "up"
tq.hmset(g, db, port, {1})

-- The callback gets a message that is valid only until it returns, so it copies what it needs. It must not raise an
-- error: what the scan holds would not be released.
local function collect(_, message, found)
  local element = tq.convertPtrToScanAllMsg(message)
  found[#found + 1] = {key = element.key, value = tq_obj.bytes(element.value, element.vlen)}
end

local function scan(pattern, count)
  local found = {}
  local status = tq.scan(g, db, tq_obj.new(pattern), count, collect, found)
  assert(status >= 0, "the scan failed")
  -- A scan goes in any order.
  table.sort(found, function(a, b) return a.key < b.key end)
  return found
end

-- A scan tells the value of strings only. What else a key holds is found by asking: a wrong kind is an input error.
local function describe(row)
  local key = tq_obj.new(row.key)
  local sizes = {{"list", tq.llen}, {"set", tq.scard}, {"sorted set", tq.zcard}}
  for _, kind in ipairs(sizes) do
    local size = kind[2](g, db, key)
    if size ~= tq.TQ_MOM_INPUT_ERR then return string.format("%s of %d", kind[1], size) end
  end
  local hash = tq.hgetall(g, db, key)
  local tags = hash.error_code == tq.TQ_MOM_OK and hash.field_tag
  tq.hash_res_free(hash)
  return tags and string.format("hash of %d", #tags) or string.format("string %q", row.value)
end

print "everything:"
for _, row in ipairs(scan("*", 0)) do print(string.format("  %-10s %s", row.key, describe(row))) end

print "host/* only:"
for _, row in ipairs(scan("host/*", 0)) do print(string.format("  %-10s %s", row.key, row.value)) end

print(string.format("at most 3 keys: %d", #scan("*", 3)))

-- An integer other than 0 stops the scan.
local seen = 0
tq.scan(g, db, tq_obj.new("*"), 0, function()
  seen = seen + 1
  return seen == 2 and 1 or 0
end, nil)
print(string.format("stopped after %d keys", seen))

-- Without a callback the scan only counts.
print(string.format("keys in all: %d", tq.scan(g, db, tq_obj.new("*"), 0, nil, nil)))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

-- A leaderboard with a sorted set: the ports with the most traffic.
local tq = require "tq_mom_sync"
local tq_obj = require "tq_obj"

local g = assert(tq.tq_global_init(nil, nil), "no runtime")
assert(tq.client_connect(g, 0) == tq.TQ_MOM_OK, "no connection")
local db = tq.TQ_MOM_MONITOR_DB

local function port(name) return tq_obj.new("traffic", name) end
local traffic = port()

-- Copies the rows of a range and releases it. Each read of an array field makes a new table, so read it once.
local function rows_of(result, free)
  assert(result.error_code == tq.TQ_MOM_OK, "the range could not be read")
  local members, scores, rows = result.value, result.score, {}
  for i, member in ipairs(members) do
    rows[i] = string.format("%s %.1f", tq_obj.from(member).value, scores[i])
  end
  free(result)
  return table.concat(rows, ", ")
end

-- The members name the sorted set; scores[i] belongs to members[i].
local added = tq.zadd(g, db, {12.5, 80, 3, 41.5}, {port "eth0", port "eth1", port "eth2", port "eth3"})
print(string.format("%d ports on the board", added))

-- Ranks count from the lowest score; negative ones from the highest.
print("all:      " .. rows_of(tq.zrange(g, db, traffic, 0, -1), tq.zrange_res_free))
print("busiest:  " .. rows_of(tq.zrange(g, db, traffic, -2, -1), tq.zrange_res_free))
print("10 to 50: " .. rows_of(tq.zrangebyscore(g, db, traffic, 10, 50), tq.zrangebyscore_res_free))

-- A second zadd of a member moves it.
tq.zadd(g, db, {99}, {port "eth2"})
print(string.format("eth2 rose to rank %d of %d", tq.zrank(g, db, port "eth2"), tq.zcard(g, db, traffic)))

for _, name in ipairs {"eth2", "eth9"} do
  local result = tq.zscore(g, db, port(name))
  print(result.exist ~= 0 and string.format("%s has %.1f", name, result.score) or name .. " is not on the board")
  tq.zscore_res_free(result)
end

print(string.format("below 50: %d", tq.zcount(g, db, traffic, -math.huge, 50)))
tq.zrem(g, db, {port "eth0"})
print(string.format("removed below 50: %d", tq.zremrangebyscore(g, db, traffic, -math.huge, 50)))
print("left:     " .. rows_of(tq.zrange(g, db, traffic, 0, -1), tq.zrange_res_free))

assert(tq.tq_global_finish(g) == tq.TQ_MOM_OK)

-- Counts what each command of the host kit costs by the size of the store:
--   growth.lua check PROGRAM VALGRIND FILE   fails where a cost grows faster than it may
--   growth.lua table PROGRAM VALGRIND FILE   prints the instructions of one call from 10^3 to 10^6
-- FILE is written over.
local mode, program, valgrind, file = table.unpack(arg)

-- How the cost of a row may grow. What creates or removes a key also keeps the order of the names, in which scans go;
-- what sets an expiry also keeps the order of the deadlines.
local growth = {
  constant = {
    "get", "exists", "set, old key", "setnx, old key", "incr", "get, expiring", "tq_global_run", "hmset, old field",
    "hmset, new field", "hmget", "hmget, expiring", "lpush", "rpush", "lpop", "rpop", "llen", "lrange, first 10",
    "lrange, last 10", "lset, last", "sadd", "srem", "sismember", "scard", "zcard", "zscore", "scan, first key",
  },
  logarithmic = {
    "set, new key", "del", "psetex", "pexpire", "del_expire", "pexpire_field", "zadd, old member", "zadd, new member",
    "zrem", "zrank", "zcount", "zrange, middle 10", "zrangebyscore, 10", "zremrangebyrank, one",
    "zremrangebyscore, one",
  },
  linear = {
    "hgetall", "lrange, middle 10", "lset, middle", "linsert", "lrem", "smembers", "scan, all keys", "scan, count",
  },
}
-- The factor that a cost may grow by between two sizes, with some room for the luck of hashing.
local allowed = {
  constant = function() return 1.1 end,
  logarithmic = function(small, large) return 1.1 * math.log(large) / math.log(small) end,
  linear = function(small, large) return 1.1 * large / small end,
}

local class_of = {}
for class, names in pairs(growth) do
  for _, name in ipairs(names) do class_of[name] = class end
end

-- The instructions of one call by row and size; the rows in their order.
local function measure(sizes)
  local command = string.format(
    "%s --quiet --tool=callgrind --instr-atstart=no --combine-dumps=yes --callgrind-out-file='%s' '%s' %s", valgrind,
    file, program, table.concat(sizes, " "))
  assert(os.execute(command))
  local costs, rows = {}, {}
  local row, size, repetitions
  for line in io.lines(file) do
    local name, at, times = line:match("^desc: Trigger: Client Request: (.-)\t(%d+)\t(%d+)$")
    if name then
      row, size, repetitions = name, tonumber(at), tonumber(times)
    elseif row and line:find("^totals: ") then
      if not costs[row] then
        costs[row] = {}
        rows[#rows + 1] = row
      end
      costs[row][size] = tonumber(line:match("%d+")) / repetitions
      row = nil
    end
  end
  os.remove(file)
  return costs, rows
end

if mode == "table" then
  local sizes = {1000, 10000, 100000, 1000000}
  local costs, rows = measure(sizes)
  print(string.format("%-24s%12s%12s%12s%12s  %s", "instructions", "10^3", "10^4", "10^5", "10^6", "may grow"))
  for _, row in ipairs(rows) do
    local counts = {}
    for i, size in ipairs(sizes) do counts[i] = string.format("%12.0f", costs[row][size]) end
    print(string.format("%-24s%s  %s", row, table.concat(counts), class_of[row]))
  end
else
  local small, large = 1000, 16000
  local costs, rows = measure({small, large})
  local failed = false
  for _, row in ipairs(rows) do
    local factor, most = costs[row][large] / costs[row][small], allowed[class_of[row]](small, large)
    local verdict = factor <= most and "ok" or "GROWS TOO FAST"
    failed = failed or factor > most
    print(string.format("%-24s%10.0f%12.0f  x%.2f, %s may x%.2f: %s", row, costs[row][small], costs[row][large],
      factor, class_of[row], most, verdict))
    class_of[row] = nil
  end
  assert(not next(class_of), "a row was not measured")
  assert(not failed, "a cost grows too fast")
end

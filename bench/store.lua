-- Prints what `scripts/bench store` measures: store.lua PROGRAM ROUNDS WORK
--
-- Times are medians of the rounds, in each of which both sides run; instructions are those of a longer run less those of
-- a shorter one.
local program, rounds, work = arg[1], tonumber(arg[2]), arg[3]

local function output(command)
  local pipe = assert(io.popen(command))
  local text = pipe:read "a"
  assert(pipe:close(), command)
  return text
end

local function run(side, operation, count)
  local time, trips = output(table.concat({program, side, operation, count}, " ")):match "(%S+) (%S+)"
  return tonumber(time), tonumber(trips)
end

local function instructions(side, operation, count)
  local file = work .. "/callgrind"
  output(string.format("valgrind --quiet --tool=callgrind --callgrind-out-file=%s %s %s %s %d", file, program, side,
    operation, count))
  for line in io.lines(file) do
    local total = line:match "^summary: (%d+)" or line:match "^totals: (%d+)"
    if total then return tonumber(total) end
  end
  error "callgrind wrote no total"
end

local function median(values)
  table.sort(values)
  return values[(#values + 1) // 2]
end

-- The operation, how often it runs for a time, and how often for a count of instructions.
local operations = {
  {"set", 20000, 1000}, {"get", 20000, 1000}, {"hmset", 10000, 500}, {"lrange", 5000, 200}, {"zadd", 10000, 500},
  {"scan", 3, 1},
}
local row = "%-8s %12s %12s %7s %12s %12s %7s %9s %9s"
print(row:format("", "kit ns", "hiredis ns", "ratio", "kit instr", "hiredis", "ratio", "kit trips", "hiredis"))
for _, operation in ipairs(operations) do
  local name, count, counted = table.unpack(operation)
  output(table.concat({program, "prepare", name, "0"}, " "))
  local times, trips, total = {kit = {}, bare = {}}, {}, {}
  for _ = 1, rounds do
    for side, found in pairs(times) do found[#found + 1], trips[side] = run(side, name, count) end
  end
  for side in pairs(times) do
    local more, less = instructions(side, name, 2 * counted), instructions(side, name, counted)
    total[side] = (more - less) / counted
  end
  local kit, bare = median(times.kit), median(times.bare)
  print(row:format(name, string.format("%.0f", kit), string.format("%.0f", bare), string.format("%.3f", kit / bare),
    string.format("%.0f", total.kit), string.format("%.0f", total.bare), string.format("%.2f", total.kit / total.bare),
    trips.kit, trips.bare))
end

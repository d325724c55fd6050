-- Prints the table of scripts/bench: report.lua DIRECTORY ROUNDS SEEDS host|arm
local directory, rounds, seeds, target = arg[1], tonumber(arg[2]), tonumber(arg[3]), arg[4]
local modules = {"baseline", "tq_mom_sync"}
local tolerance = 1.03

-- Rows of a driver's output: {name, target, value}.
local function read_rows(path)
  local rows = {}
  for line in io.lines(path) do
    local name, wanted, value = line:match("^(.-)\t(.-)\t(.-)$")
    rows[#rows + 1] = {name = name, target = tonumber(wanted), value = tonumber(value)}
  end
  return rows
end

local function read_numbers(path)
  local numbers = {}
  for line in io.lines(path) do numbers[#numbers + 1] = tonumber(line) end
  return numbers
end

-- Instructions by row name, and the names in order with their targets; an empty turn of a loop is taken off.
local function read_counts(module, seed)
  local path = directory .. "/count." .. module .. "." .. seed
  local rows, pieces = read_rows(path .. ".rows"), read_numbers(path .. ".pieces")
  local counts, order = {}, {}
  for i, row in ipairs(rows) do
    if row.name == "heap" then
      counts.heap = row.value
    elseif row.name == "require" then
      counts.require = pieces[2]
    else
      local first = 4 * (i - 2)
      counts[row.name] = (pieces[first + 2] - pieces[first]) / row.value - (counts["empty loop"] or 0)
    end
    if row.name ~= "empty loop" then order[#order + 1] = row end
  end
  assert(#pieces == 3 + 4 * (#rows - 2), "the counter lost marks")
  return counts, order
end

local function read_times(module, round)
  local times = {}
  for _, row in ipairs(read_rows(directory .. "/time." .. module .. "." .. round)) do
    times[row.name] = row.value - (times["empty loop"] or 0)
  end
  return times
end

local counts, times, order = {}, {}, nil
for _, module in ipairs(modules) do
  counts[module], times[module] = {}, {}
  for seed = 1, seeds do
    local one
    one, order = read_counts(module, seed)
    for name, value in pairs(one) do counts[module][name] = (counts[module][name] or 0) + value / seeds end
  end
  for round = 1, rounds do
    for name, value in pairs(read_times(module, round)) do
      times[module][name] = times[module][name] or {}
      table.insert(times[module][name], value)
    end
  end
end

local function quantile(sorted, share) return sorted[math.floor((#sorted - 1) * share + 1.5)] end

-- Median and half the distance between the quartiles.
local function summary(values)
  table.sort(values)
  return string.format("%10.0f ±%-7.0f", quantile(values, 0.5),
                       (quantile(values, 0.75) - quantile(values, 0.25)) / 2)
end

local function number(value) return string.format(value < 1000 and "%.1f" or "%.0f", value) end

print(string.format("%-28s %10s %10s %12s %6s   %s", "instructions an operation", target == "host" and "target" or "",
                    "baseline", "tq_mom_sync", "ratio", rounds > 0 and "ns: baseline        tq_mom_sync" or ""))
local over = 0
for _, row in ipairs(order) do
  local baseline, ours = counts.baseline[row.name], counts.tq_mom_sync[row.name]
  local mark = ours > tolerance * baseline and "*" or " "
  if mark == "*" then over = over + 1 end
  local wanted = target == "host" and number(row.target) or ""
  local name = row.name == "heap" and "Lua heap after require, KiB" or row.name
  local line = string.format("%-28s %10s %10s %12s %6.3f %s", name, wanted, number(baseline), number(ours),
                             ours / baseline, mark)
  if times.baseline[row.name] and row.name ~= "heap" then
    line = line .. " " .. summary(times.baseline[row.name]) .. " " .. summary(times.tq_mom_sync[row.name])
  end
  print(line)
end
if over > 0 then print(string.format("* %d rows are more than 3 %% above the baseline", over)) end

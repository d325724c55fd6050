-- Leaves out of a fuzzing script what its failure does not need: shrink.lua SCRIPT. The environment variable TQ_LUA
-- holds the interpreter's command.
local path = assert(arg[1], "usage: shrink.lua SCRIPT")
local command = assert(os.getenv "TQ_LUA", "TQ_LUA is not set")
local candidate, output = path .. ".candidate", path .. ".output"

local function read(name)
  local file = assert(io.open(name, "rb"))
  local text = file:read("a")
  file:close()
  return text
end

local function write(name, lines)
  local file = assert(io.open(name, "wb"))
  file:write(table.concat(lines, "\n"), "\n")
  file:close()
end

-- What a script's failure is known by: the sanitizer's summary or the first line of the error. Addresses differ.
local function failure_of(lines)
  write(candidate, lines)
  if os.execute(string.format("timeout 60 %s %s >%s 2>&1", command, candidate, output)) then return nil end
  local text = read(output)
  return (text:match("SUMMARY: [^\n]*") or text:match("[^\n]*fuzz: [^\n]*") or text:match("[^\n]*") or "")
    :gsub("0x%x+", ""):gsub(":%d+:", ":")
end

local lines = {}
for line in read(path):gmatch("[^\n]+") do lines[#lines + 1] = line end
local failure = failure_of(lines)
if failure == nil then
  print("the script runs without a failure")
  os.exit(1)
end

local function without(first, count)
  local rest = {}
  for i, line in ipairs(lines) do
    if i < first or i >= first + count then rest[#rest + 1] = line end
  end
  return rest
end

-- The first line opens the modules, the last one fails.
local size = #lines // 2
while size >= 1 do
  local first = 2
  while first < #lines do
    local rest = without(first, math.min(size, #lines - first))
    if failure_of(rest) == failure then lines = rest else first = first + size end
  end
  size = size // 2
end
write(path, lines)
os.remove(candidate)
os.remove(output)
print(string.format("%s: %d lines repeat: %s", path, #lines, failure))

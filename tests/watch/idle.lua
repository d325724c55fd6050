-- idle.lua VALGRIND PROGRAM WATCH_LIBRARY CLIENT_LIBRARY: the instructions that the idle watch library adds to a call.
local valgrind, program, watch, client = table.unpack(arg)
local allowed = 30

local function instructions(library, count)
  local out = os.tmpname()
  local command = string.format("TQ_WATCH= TQ_WATCH_CLIENT=%s %s --quiet --tool=callgrind --callgrind-out-file=%s %s %s %d",
    client, valgrind, out, program, library, count)
  assert(os.execute(command), command)
  local total
  for line in io.lines(out) do total = total or tonumber(line:match("^summary: (%d+)")) end
  os.remove(out)
  return assert(total, "no summary")
end

-- What starting costs is in both counts. A round has two calls.
local function per_call(library)
  local few, many = 1000, 3000
  return (instructions(library, many) - instructions(library, few)) / (many - few) / 2
end

local added = per_call(watch) - per_call(client)
print(string.format("%.1f instructions a call", added))
assert(added > 0 and added <= allowed, "more than " .. allowed)

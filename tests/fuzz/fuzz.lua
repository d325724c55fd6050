-- Random lines against the module, checked by a model: fuzz.lua recorder|kit SEED|new LINES SCRIPT [SECONDS]
--
-- Each round starts afresh and leaves nothing behind. Its lines go to SCRIPT before they run, so that the file repeats
-- a failure even where the process dies of it.
local backend, seed, wanted, path, seconds = table.unpack(arg, 1, 5)
assert(path, "usage: fuzz.lua recorder|kit SEED|new LINES SCRIPT [SECONDS]")
seed = seed == "new" and os.time() * 1000 or tonumber(seed)
wanted, seconds = tonumber(wanted), tonumber(seconds)

local env = require "player"(backend)
local generator = require "generator"
local kLinesOfARound = 400

local function run_round(number)
  math.randomseed(number)
  local file = assert(io.open(path, "w"))
  file:setvbuf("no")
  file:write(string.format("local _ENV = require \"player\" %q -- seed %d\n", backend, number))
  env.start()
  local model = generator.new(env)
  if backend == "kit" then require "kit_generator"(model, env.catalog) end
  local function play(line)
    file:write(line, "\n")
    assert(load(line, "=" .. path, "t", env))()
  end
  for _ = 1, kLinesOfARound do play(model.line()) end
  for _, line in ipairs(model.last_lines()) do play(line) end
  file:close()
end

local started, round, lines = os.time(), 0, 0
while lines < wanted and not (seconds and os.time() - started >= seconds) do
  local ok, message = xpcall(run_round, debug.traceback, seed + round)
  if not ok then
    io.stderr:write(message, "\nThe script ", path, " repeats it.\n")
    os.exit(1)
  end
  round, lines = round + 1, lines + kLinesOfARound
end
env.finish()
os.remove(path)
print(string.format("%s: %d lines, seeds %d to %d", backend, lines, seed, seed + round - 1))
os.exit(true, true)

-- A client library with platform records: the recorder is told before each call what to answer. Only what the tests and
-- examples that run here need; what a command does to the store is the host kit's matter.
local recorder = require "recorder" -- before the module, which takes its client functions from it
local tq = require "tq_mom_sync"
local platform = require "platform"

local kInputError, kNoReady = -2, -4

local stored = {} -- values by key
local blocks = {} -- released when the runtime ends, the runtime among them
local connected = false

local function address(value) return type(value) == "userdata" and select(3, recorder.words(value)) or 0 end

-- The key and value of the object that a script passes.
local function read(object) return platform.read(address(object)) end

-- A record whose named fields are filled with packed bytes; released by the test's own free.
local function new_record(class, fields)
  local layout = recorder.layouts[class]
  local block = recorder.alloc(layout.size)
  for name, value in pairs(fields) do
    recorder.write(block + layout.fields[name].offset, string.pack("I" .. layout.fields[name].size, value))
  end
  return block
end

-- What each command answers: its client function's result and out-value.
local answers = {}

function answers.tq_global_init()
  blocks[1] = recorder.alloc(recorder.layouts.tq_global_t.size)
  return blocks[1]
end

function answers.tq_global_finish()
  for _, block in ipairs(blocks) do recorder.free(block) end
  stored, blocks, connected = {}, {}, false
  return 0
end

function answers.client_connect()
  connected = true
  return 0
end

-- An answer to a command whose object must have a key, and a value too where one is needed.
local function command(name, needs_value, answer)
  answers[name] = function(_, _, object, ...)
    local key, value = read(object)
    if not connected then return kNoReady end
    if not key or needs_value and not value then return kInputError end
    return answer(key, value, ...)
  end
end

local function store(key, value)
  stored[key] = value
  return 0
end
command("set", true, store)
command("psetex", true, store)
command("publish", true, function() return 0 end)
answers.publish_ext = function(g, db, _, object) return answers.publish(g, db, object) end

command("get", false, function(key)
  return stored[key] and platform.new(key, stored[key]) or 0, 0
end)

command("exists", false, function(key) return stored[key] and 1 or 0 end)

local function remove(key)
  local found = stored[key] and 1 or 0
  stored[key] = nil
  return found
end
command("del", false, remove)
command("pexpire", false, remove)

command("incr", false, function(key)
  local number = stored[key] and math.tointeger(stored[key]) or not stored[key] and 0
  if not number then return new_record("tq_mom_incr_res_t", {error_code = kInputError & 0xffffffff}) end
  stored[key] = tostring(number + 1)
  return new_record("tq_mom_incr_res_t", {value = number + 1})
end)

function answers.get_ext(_, _, _, object)
  local key = read(object)
  return new_record("tq_mom_get_res_t", {value = platform.new(key, stored[key])})
end

function answers.tq_obj_free(object)
  return platform.release(address(object)) and 0 or kInputError
end

function answers.incr_res_free(result)
  recorder.free(address(result))
  return 0
end

function answers.get_res_free(result)
  platform.release(address(result.value))
  recorder.free(address(result))
  return 0
end

-- One message for the key that the pattern is. Its blocks stay until the end.
function answers.scan(_, _, object)
  local key = read(object)
  local scanned = {key = recorder.alloc(#key + 1), value = recorder.alloc(#stored[key] + 1)}
  recorder.write(scanned.key, key)
  recorder.write(scanned.value, stored[key])
  scanned.message = new_record("tq_mom_scan_all_msg_t",
    {vlen = #stored[key], key = scanned.key, value = scanned.value})
  recorder.deliver{{message = scanned.message}}
  for _, block in pairs(scanned) do blocks[#blocks + 1] = block end
  return 1
end

local client_names = {
  tq_global_init = "tq_global_init", tq_global_finish = "tq_global_finish",
  client_connect = "tq_mom_client_connect_sync", tq_obj_free = "tq_mom_tq_obj_free",
  get_res_free = "tq_mom_get_res_free", incr_res_free = "tq_mom_incr_res_free",
}

local prepare = {} -- by the module's function
for name, answer in pairs(answers) do
  local client_name = client_names[name] or "tq_mom_" .. name .. "_sync"
  prepare[tq[name]] = function(...) recorder.returns(client_name, answer(...)) end
end

-- The arguments of the C function at the level; behind them come values of the hook.
local function arguments(level, i)
  local name, value = debug.getlocal(level + 1, i)
  if name then return value, arguments(level + 1, i + 1) end
end

-- A hook, as a function around the module's would show in the positions of errors.
debug.sethook(function()
  local f = prepare[debug.getinfo(2, "f").func]
  if f then f(arguments(2, 1)) end
end, "c")

return {recorder = recorder, tq = tq, platform = platform}

-- Every client function, with a client library that writes down how it is called: a call that is watched arrives with the
-- same arguments as one that is not, and its result comes back.
local luaunit = require "luaunit"
assert(package.loadlib(assert(package.searchpath("libtq_mom_watch", package.cpath)), "*"))
local recorder = require "recorder"
local tq, watch = require "tq_mom_sync", require "tq_watch"
local description = require "api.description"

local key = recorder.handle(0, 0, 0x1230)
local values = {
  int = -7, unsigned = 8, size_t = 9, double = -1.5, timeout = 2.25, name = "name", key = key, void = key,
  fields = {1, -2, 3}, scores = {1.5, -2.5}, members = {key, recorder.handle(0, 0, 0x4560)},
  callback = function() end, any = "any",
}

local function arguments_of(command)
  local arguments = {}
  for i, argument in ipairs(command.arguments) do
    if argument.kind == "op" then
      arguments[i] = tq[command.options]()
      arguments[i].flag = 5
    elseif values[argument.kind] ~= nil then
      arguments[i] = values[argument.kind]
    else
      assert(argument.kind == "global" or argument.kind == "res", argument.kind)
    end
  end
  return arguments, #command.arguments
end

-- What the client library saw, without the addresses of options, arrays and contexts, which are new each time.
local function seen()
  local calls = recorder.calls()
  for _, call in ipairs(calls) do
    if call.op then
      for i, argument in ipairs(call) do
        if argument == call.op.address then call[i] = "options" end
      end
      call.op.address = nil
      if call.op.fields then call.op.fields.address = nil end
    end
    for i, argument in ipairs(call) do
      if type(argument) == "table" then argument.address = nil end
      if call.name == "tq_mom_scan_sync" and i > 4 then call[i] = nil end
    end
  end
  return calls
end

TestRecorder = {}

local function check(command)
  local arguments, count = arguments_of(command)
  local client = command.client
  local function run()
    recorder.reset()
    recorder.returns(client, command.results[1].kind == "status" and -42 or 0, 55)
    local results = table.pack(tq[command.name](table.unpack(arguments, 1, count)))
    return results, seen()
  end
  watch.stop()
  local results, calls = run()
  luaunit.assertEquals(#calls, 1, command.name)
  watch.start()
  local told = {}
  watch.trace(function(call) told[#told + 1] = call end)
  local watched_results, watched_calls = run()
  watch.trace(nil)
  luaunit.assertEquals(watched_results, results, command.name)
  luaunit.assertEquals(watched_calls, calls, command.name)
  luaunit.assertEquals(#told, 1, command.name)
  luaunit.assertStrContains(calls[1].name, told[1].call)
  luaunit.assertEquals(watch.summary()[told[1].call].calls, 1)
end

for _, command in ipairs(description.module_by_name.tq_mom_sync.functions) do
  if not command.name:find("^convertPtr") then TestRecorder["test_" .. command.name] = function() check(command) end end
end

os.exit(luaunit.LuaUnit.run() == 0, true)

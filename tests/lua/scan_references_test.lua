-- The registry references of a scan, where the script or a lack of memory gets in their way.
local luaunit = require "luaunit"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestScanReferences = {}

function TestScanReferences:setUp()
  recorder.reset()
end

-- Where the registry holds the value.
local function slot_of(value)
  for key, held in pairs(debug.getregistry()) do
    if rawequal(held, value) then return key end
  end
end

local function messages(count)
  local list = {}
  for i = 1, count do list[i] = {message = i} end
  recorder.deliver(list)
end

-- A callback that takes itself out of the registry is not found for the next message; each message counts as not
-- stopping, and the scan ends as always.
function TestScanReferences:test_a_callback_that_clears_its_own_slot()
  for _, count in ipairs {1, 2, 30, 5000} do
    recorder.reset()
    messages(count)
    local calls = 0
    local function callback()
      calls = calls + 1
      debug.getregistry()[slot_of(callback)] = nil
      return 5
    end
    local results = table.pack(tq.scan(nil, 0, nil, 0, callback, "argument"))
    luaunit.assertEquals(calls, 1)
    luaunit.assertEquals(results, {0.0, n = 1})
    local expected = {5}
    for i = 2, count do expected[i] = 0 end
    luaunit.assertEquals(support.only_call().results, expected)
    luaunit.assertEquals(recorder.live_blocks(), 0)
  end
end

-- What stands in the slot instead is called as the callback would be.
function TestScanReferences:test_a_callback_that_replaces_itself()
  messages(3)
  local seen = {}
  local function second(_, _, argument)
    seen[#seen + 1] = argument
    return 2
  end
  local function first()
    debug.getregistry()[slot_of(first)] = second
    return 1
  end
  tq.scan(nil, 0, nil, 0, first, "argument")
  luaunit.assertEquals(seen, {"argument", "argument"})
  luaunit.assertEquals(support.only_call().results, {1, 2, 2})
end

function TestScanReferences:test_a_scan_without_memory_keeps_nothing()
  local weak = setmetatable({}, {__mode = "k"})
  tq.scan(nil, 0, nil, 0, print, {}) -- leaves room in the registry
  local size = #debug.getregistry()
  for _ = 1, 10 do
    recorder.reset()
    recorder.fail_request(1)
    local callback, argument = function() return weak end, {}
    weak[callback], weak[argument] = true, true
    support.raises_bare("memory error", tq.scan, nil, 0, nil, 0, callback, argument)
  end
  recorder.fail_request(0)
  support.no_call()
  collectgarbage()
  collectgarbage()
  luaunit.assertNil(next(weak))
  luaunit.assertEquals(#debug.getregistry(), size)
  luaunit.assertEquals(recorder.live_blocks(), 0)
end

support.run()

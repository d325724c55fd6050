-- Each allocation of tq_obj and of the platform under it fails in turn: an error says so, and nothing is left over.
local luaunit = require "luaunit"
local kit = require "kit"
local stage = require "stage"
local recorder, tq_obj = stage.recorder, kit.tq_obj

TestMemory = kit.suite()

local actions = {
  new = function() return tq_obj.new("key", "value") end,
  set_key = function(object) object.key = "another key" end,
  set_value = function(object) object.value = "another value" end,
  set_field = function(object) object[7] = "another field" end,
  message = function() return tq_obj.message{key = "k", value = "v"} end,
  scan_message = function() return tq_obj.scan_message{key = "k", value = "v"} end,
}
-- What allocates besides Lua: file names of loaded objects.
local allocator = {
  new = "platform.so", set_key = "platform.so", set_value = "platform.so", set_field = "platform.so",
  message = "tq_obj.so", scan_message = "tq_obj.so",
}

local function records_in_use()
  collectgarbage()
  collectgarbage()
  return kit.probe.count()
end

local function contents(object) return {object.key, object.value, object:fields()} end

for name, action in pairs(actions) do
  TestMemory["test_" .. name .. "_without_native_memory"] = function()
    luaunit.assertTrue(recorder.watch(allocator[name]) > 0)
    local failures = 0
    repeat
      local object = tq_obj.new("k", "v")
      local before, records = contents(object), records_in_use()
      recorder.reset()
      recorder.fail_request(failures + 1)
      local ok, message = pcall(action, object)
      recorder.fail_request(0)
      if not ok then
        luaunit.assertStrContains(message, "not enough memory")
        luaunit.assertEquals(contents(object), before)
        luaunit.assertEquals(records_in_use(), records)
        failures = failures + 1
      end
    until ok
    luaunit.assertTrue(failures > 0)
  end

  TestMemory["test_" .. name .. "_without_lua_memory"] = function()
    local failures = 0
    repeat
      local object = tq_obj.new("k", "v")
      local records = records_in_use()
      local hook = table.pack(debug.gethook())
      debug.sethook()
      local failed, ok, message = recorder.without_memory(failures + 1, action, object)
      debug.sethook(table.unpack(hook))
      if failed then
        if not ok then luaunit.assertStrContains(message, "not enough memory") end
        failures = failures + 1
      end
      message = nil
      luaunit.assertEquals(records_in_use(), records)
    until not failed
  end
end

kit.run()

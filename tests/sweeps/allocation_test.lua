-- Each allocation fails in turn, of Lua's and of the module's own: a call then raises the error of a lack of memory, or
-- gets by after a collection. No block of the module is lost or freed twice, and the next call works.
local luaunit = require "luaunit"
local arguments = require "arguments"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq
local kMost = 2000 -- allocations of one call

-- What the calls keep, so that settled blocks can be compared.
local kept

local function settled()
  kept = nil
  return support.settled_blocks()
end

-- What an error in the callback of a scan leaves behind, as documented.
local function free_abandoned_context()
  local call = recorder.calls()[1]
  if call and call.name == "tq_mom_scan_sync" then recorder.free(call[6]) end
end

-- Calls f with each of Lua's requests failing: all from there on, and that one alone. The errors that f raises when
-- there is memory may come too.
local function lua_sweep(f, expected)
  for _, name in ipairs {"without_memory", "short_of_memory"} do
    local failures = 0
    for n = 1, kMost do
      local blocks = settled()
      recorder.reset()
      collectgarbage()
      collectgarbage "stop"
      local failed, ok, message = recorder[name](n, f)
      collectgarbage "restart"
      if not ok then
        message = tostring(message)
        if message ~= "not enough memory" and not (expected and message:find(expected, 1, true)) then
          luaunit.fail(name .. ": " .. message)
        end
        failures = failures + 1
        free_abandoned_context()
      end
      recorder.reset()
      luaunit.assertEquals(settled(), blocks, name)
      luaunit.assertEquals(recorder.stray_frees(), 0)
      if not failed then
        luaunit.assertTrue(ok == (expected == nil))
        break
      end
      luaunit.assertTrue(n < kMost)
    end
    if name == "without_memory" then luaunit.assertTrue(failures > 0, "nothing fails") end
  end
end

-- Calls f with each of the module's own requests failing. Returns how many there are.
local function native_sweep(f, expected)
  for n = 1, kMost do
    local blocks = settled()
    recorder.reset()
    recorder.fail_request(n)
    local ok, message = pcall(f)
    local requests = #recorder.requests()
    recorder.fail_request(0)
    recorder.reset()
    luaunit.assertEquals(settled(), blocks)
    luaunit.assertEquals(recorder.stray_frees(), 0)
    if requests < n then
      luaunit.assertTrue(ok, message)
      return n - 1
    end
    luaunit.assertEquals({ok, message}, {expected == nil, expected})
  end
  luaunit.fail("the allocations have no end")
end

TestAllocations = {}

function TestAllocations:setUp()
  recorder.reset()
end

local function needs_lua_memory(command)
  return command.results[1].kind ~= "status" or command.name == "scan"
end

function TestAllocations:test_commands()
  for _, command in ipairs(catalog.commands) do
    local list, f = arguments.of(command), tq[command.name]
    local out = recorder.alloc(64)
    local function call()
      recorder.returns(command.client, out)
      if command.name == "scan" then recorder.deliver {{message = 1}, {message = 2}} end
      kept = {f(table.unpack(list, 1, list.n))}
    end
    if command.cast then list[1] = tq.tq_mom_get_res_t() end
    if needs_lua_memory(command) then lua_sweep(call) end
    local natives = native_sweep(call, "memory error")
    local expected = command.name == "scan" and 1 or 0
    for _, entry in ipairs(command.arguments) do
      if arguments.arrays[entry.kind] then expected = expected + 1 end
    end
    luaunit.assertEquals(natives, expected, command.name)
    recorder.free(out)
  end
end

-- A result is not asked for unless it can be handed on.
function TestAllocations:test_no_result_is_lost()
  for _, command in ipairs(catalog.commands) do
    local kind = command.results[1].kind
    if (kind == "res" or kind == "object") and not command.cast then
      local list, f = arguments.of(command), tq[command.name]
      for n = 1, kMost do
        recorder.reset()
        recorder.returns(command.client, 0x1000)
        local failed, ok = recorder.without_memory(n, f, table.unpack(list, 1, list.n))
        luaunit.assertEquals(recorder.call_count(), ok and 1 or 0, command.name)
        if not failed then break end
      end
    end
  end
end

function TestAllocations:test_array_elements_that_are_refused()
  local arrays = arguments.arrays
  local bad = table.move(arrays.fields, 1, #arrays.fields, 1, {})
  bad[#bad] = {}
  for message, call in pairs {
    ["input error, errcode_3"] = function() tq.hmset(nil, 0, nil, bad) end,
    ["input error"] = function() tq.zadd(nil, 0, arrays.scores, bad) end,
  } do
    lua_sweep(call, message)
  end
end

function TestAllocations:test_constructors()
  for _, class in ipairs(catalog.classes) do
    local function construct() kept = tq[class.name]() end
    lua_sweep(construct)
    luaunit.assertEquals(native_sweep(construct), 1)
    recorder.fail_request(1)
    luaunit.assertNil(tq[class.name]())
    recorder.reset()
  end
end

function TestAllocations:test_fields()
  for _, class in ipairs(catalog.classes) do
    for _, field in ipairs(class.fields) do
      local record = tq[class.name]()
      local name = field.name
      if field.count then
        local block = arguments.fill_array(record, class, field, 20)
        lua_sweep(function() kept = record[name] end)
        luaunit.assertEquals(#record[name], 20)
        recorder.free(block)
      elseif field.kind == "embedded" or field.kind == "union" then
        lua_sweep(function() kept = record[name] end)
      elseif field.kind == "chars" or field.kind == "cstring" then
        local text = string.rep("t", 100)
        local natives = native_sweep(function()
          record[name] = text
          record[name] = nil
        end, "memory error")
        luaunit.assertEquals(natives, field.kind == "cstring" and 1 or 0)
        record[name] = text
        lua_sweep(function() kept = record[name] .. "more" end)
        -- A number becomes a string first.
        lua_sweep(function() record[name] = 12345.5 end)
        record[name] = nil
      elseif field.mangled then
        local target = support.handle(field.mangled, 0x1000)
        if field.kind ~= "bytes" then
          record[name] = target
          lua_sweep(function() kept = record[name] end)
        end
      end
    end
  end
end

-- Each error message, or that of the lack of memory in its place.
function TestAllocations:test_messages()
  local record = tq.get_op_t()
  local set = debug.getmetatable(record)[".set"].flag
  local messages = {
    ["expected 3..3 args, got 1"] = function() tq.set(nil) end,
    ["(arg 1), expected 'tq_global_t *' got 'number'"] = function() tq.set(5, 0, nil) end,
    ["Error in set (arg 1)"] = function() tq.set(record, 0, nil) end,
    ["(arg 2), expected 'int' got 'table'"] = function() tq.set(nil, {}, nil) end,
    ["number must not be negative"] = function() tq.pdel(nil, 0, nil, -1) end,
    ["expected a void* at argument number 1"] = function() tq.convertPtrToGetRes(support.light) end,
    ["input error, errcode_1"] = function() tq.hmset(nil, 0, nil, 5) end,
    ["input error: cb is not function"] = function() tq.scan(nil, 0, nil, 0, 5, nil) end,
    ["expected 2..2 args, got 1"] = function() set(record) end,
    ["expected 0..0 args, got 2"] = function() tq.get_op_t(1, 2) end,
    ["(arg 2), expected 'int' got 'boolean'"] = function() record.flag = true end,
    ["Assignment not possible"] = function() record.no_such_field = 1 end,
    ["This variable is immutable"] = function() tq.tq_thread().u = 1 end,
  }
  for message, call in pairs(messages) do lua_sweep(call, message) end
  lua_sweep(function() kept = tostring(record) end)
end

function TestAllocations:test_opening()
  local open = assert(package.loadlib(support.module_path, "luaopen_tq_mom_sync"))
  for n = 1, kMost do
    local failed, ok, message = recorder.without_memory(n * 37, open)
    luaunit.assertTrue(ok or message == "not enough memory", message)
    if not failed then break end
  end
  open()
end

support.run()

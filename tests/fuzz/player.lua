-- What the lines of a fuzzing script use: slots for values, addresses of records, and calls that check what they see. A
-- script starts with `local _ENV = require "player" "recorder"`, or "kit" for the store of the host kit.
local env = setmetatable({s = {}, a = {}, any = {}}, {__index = _G})
local s, a = env.s, env.a

-- The recorder is loaded as well; the module takes its client functions from what comes first.
local function load_kit()
  assert(package.loadlib(assert(package.searchpath("libtq_mom_impl", package.cpath)), "*"))
end

local function fail(format, ...) error("fuzz: " .. string.format(format, ...), 0) end

local function show(value)
  if type(value) == "string" then return string.format("%q", value) end
  return (tostring(value):gsub("0x%x+", "(address)"))
end

local function same(expected, actual)
  if expected ~= expected then return actual ~= actual end
  return rawequal(expected, actual) or
    type(expected) == "number" and expected == actual and math.type(expected) == math.type(actual)
end

-- The value is just the expected one; floats and integers differ.
function env.is(expected, actual)
  if not same(expected, actual) then fail("expected %s, got %s", show(expected), show(actual)) end
end
local is = env.is

-- f raises an error with this text in it.
function env.raises(text, f, ...)
  local ok, message = pcall(f, ...)
  if ok then fail("no error; expected %s", text) end
  if type(message) ~= "string" or not message:find(text, 1, true) then
    fail("expected %s, got %s", show(text), show(message))
  end
end

function env.get(object, name) return object[name] end
function env.set(object, name, value) object[name] = value end

-- Runs f in a thread of its own and resumes it until it ends.
function env.thread(f)
  local thread = coroutine.create(f)
  repeat
    local ok, message = coroutine.resume(thread)
    if not ok then error(message, 0) end
  until coroutine.status(thread) == "dead"
end
env.yield = coroutine.yield

local function open(backend)
  if backend == "kit" then load_kit() end
  local support = require "support"
  local catalog = require "catalog"
  local recorder, tq = support.recorder, support.tq
  env.tq, env.recorder, env.catalog, env.support = tq, recorder, catalog, support

  catalog.class_by_mangled = {}
  for _, class in ipairs(catalog.classes) do
    class.mangled = support.type_by_readable[class.readable].mangled
    catalog.class_by_mangled[class.mangled] = class
  end

  local registry = debug.getregistry()
  function env.getter(class, field) return registry.SWIG[class][".get"][field] end
  function env.setter(class, field) return registry.SWIG[class][".set"][field] end

  function env.ptr(handle) return support.pointer_of(handle) end
  function env.own(handle) return support.own_of(handle) end

  -- A new record of the class, its address noted under the number.
  function env.new(class, number)
    local handle = tq[class]()
    support.is_handle(recorder.handle(recorder.words(handle), 0, support.pointer_of(handle)),
      catalog.class_by_name[class].readable, support.pointer_of(handle))
    is(1, support.own_of(handle))
    is(true, recorder.is_live(support.pointer_of(handle)))
    a[number] = support.pointer_of(handle)
    return handle
  end

  -- A block of the library's: zeroed, of the record's size or of so many bytes.
  function env.lib(number, what)
    local layout = recorder.layouts[what]
    a[number] = recorder.alloc(layout and layout.size or what)
  end

  -- The library, or the model for a record that nobody owns any more, frees.
  function env.free(number)
    is(true, recorder.free(a[number]))
  end

  -- A handle of the type to the address, without ownership; with the class that the type has.
  function env.view(mangled, address, own)
    local handle = support.handle(mangled, address, own)
    local descriptor = support.type_by_mangled[mangled]
    local class = catalog.class_by_mangled[mangled]
    if descriptor.class_record ~= 0 and class then debug.setmetatable(handle, registry.SWIG[class.name]) end
    return handle
  end

  -- The value is a handle of the type to the address, or nil for 0.
  function env.points(mangled, address, value)
    if address == 0 then return is(nil, value) end
    if type(value) ~= "userdata" then fail("expected a handle, got %s", show(value)) end
    is(support.type_by_mangled[mangled].readable, swig_type(value))
    is(address, support.pointer_of(value))
    is(0, support.own_of(value))
  end

  -- The record was freed, and is no longer Lua's.
  function env.gone(number)
    is(false, recorder.is_live(a[number]))
  end

  -- So many blocks of the module are left once all garbage is gone, beside those that scans lost; nothing was freed
  -- twice.
  local base
  env.lost = 0
  function env.start()
    for slot in pairs(s) do s[slot] = nil end
    for number in pairs(a) do a[number] = nil end
    env.reset()
    collectgarbage("setpause", 200)
    base = support.settled_blocks()
  end
  function env.live(count)
    is(count + env.lost, support.settled_blocks() - base)
    is(0, recorder.stray_frees())
  end

  -- Copies bytes over a field, and compares them.
  function env.fill(handle, size, byte) recorder.write(support.pointer_of(handle), string.char(byte):rep(size)) end
  function env.filled(handle, size, byte)
    is(string.char(byte):rep(size), recorder.read(support.pointer_of(handle), size))
  end

  -- Makes an array of the library's the value of an array field, with its length.
  function env.array(number, class, field, block, format, elements)
    local layout = recorder.layouts[class].fields
    local text = {}
    for i, element in ipairs(elements) do text[i] = string.pack(format, element) end
    a[block] = recorder.alloc(#elements * string.packsize(format) + 1)
    recorder.write(a[block], table.concat(text))
    support.poke(a[number] + layout[field.name].offset, support.pointer, a[block])
    support.poke(a[number] + layout[field.count].offset, support.size, #elements)
  end

  -- The table has just these elements, 0 standing for a hole.
  function env.elements(expected, actual, handles)
    is("table", type(actual))
    for i, element in ipairs(expected) do
      if handles then env.points("_p_void", element, actual[i]) else is(element, actual[i]) end
    end
    for key in pairs(actual) do
      if math.type(key) ~= "integer" or key < 1 or key > #expected then fail("element %s", show(key)) end
    end
  end

  local function compare(expected, actual, where)
    if rawequal(expected, env.any) then return end
    if type(expected) ~= "table" then
      if not same(expected, actual) then fail("%s: expected %s, got %s", where, show(expected), show(actual)) end
      return
    end
    is("table", type(actual))
    for key, value in pairs(expected) do compare(value, actual[key], where .. "." .. tostring(key)) end
    if #expected ~= #actual then fail("%s: expected %d elements, got %d", where, #expected, #actual) end
  end

  local depth = 0 -- of scans

  -- What a call leaves in the recorder goes, but not under a scan that still uses it.
  function env.reset()
    if depth == 0 then recorder.reset() end
  end

  local kResults = {
    status = function(_, result, actual) is(result + 0.0, actual) end,
    out = function(_, _, actual, out) is(out + 0.0, actual) end,
    object = function(_, result, actual) env.points("_p_tq_obj", result, actual) end,
    res = function(entry, result, actual) env.points(entry.class.mangled, result, actual) end,
  }

  local function check_call(position, client, expected)
    local call = recorder.calls()[position]
    if call == nil then fail("%s was not called", client) end
    is(client, call.name)
    compare(expected, {table.unpack(call, 1, #expected)}, client)
    return call
  end

  -- The command calls its client function once, with just these native arguments, and hands on what it returns.
  function env.call(name, result, out, expected, ...)
    local command = catalog.command_by_name[name]
    env.reset()
    local before = recorder.call_count()
    if not command.cast then recorder.returns(command.client, result, out) end
    local results = table.pack(tq[name](...))
    is(#command.results, results.n)
    for i, entry in ipairs(command.results) do kResults[entry.kind](entry, result, results[i], out) end
    if command.cast then
      is(before, recorder.call_count())
    else
      is(before + 1, recorder.call_count())
      check_call(before + 1, command.client, expected)
    end
    return results[1]
  end

  -- The option record of the last call had this flag.
  function env.flagged(flag)
    is(flag, recorder.calls()[recorder.call_count()].op.flag)
  end

  -- Nothing reaches the client library.
  function env.refused(text, f, ...)
    env.reset()
    local before = recorder.call_count()
    env.raises(text, f, ...)
    is(before, recorder.call_count())
  end

  -- The nth request for native memory fails.
  function env.without_memory(n, f, ...)
    env.reset()
    recorder.fail_request(n)
    local results = table.pack(pcall(f, ...))
    recorder.fail_request(0)
    if not results[1] then error(results[2], 0) end
    return table.unpack(results, 2, results.n)
  end

  -- A scan that delivers the records of these numbers, each to a function of its own, which returns what the callback
  -- does. With `failure`, the last of them raises it, and the block and references of the scan stay behind.
  function env.scan(result, numbers, bodies, failure, expected, argument, ...)
    env.reset()
    local before, messages = recorder.call_count(), {}
    for i, number in ipairs(numbers) do messages[i] = {message = a[number]} end
    recorder.deliver(messages)
    recorder.returns("tq_mom_scan_sync", result)
    local i, returned = 0, {}
    local g, db, key, count = ...
    depth = depth + 1
    local outcome = table.pack(pcall(tq.scan, g, db, key, count, function(...)
      i = i + 1
      is(3, select("#", ...))
      local global, message, got = ...
      env.points("_p_tq_global_s", expected[1], global)
      env.points("_p_tq_mom_pubsub_msg_s", a[numbers[i]], message)
      is(argument, got)
      local value = bodies[i](message)
      returned[i] = math.type(value) == "integer" and string.unpack("i4", string.pack("i8", value)) or 0
      return value
    end, argument))
    depth = depth - 1
    local call = check_call(before + 1, "tq_mom_scan_sync", expected)
    compare(returned, call.results, "scan")
    is(#bodies, i)
    if failure then
      is(false, outcome[1])
      if not tostring(outcome[2]):find(failure, 1, true) then error(outcome[2], 0) end
      is(true, recorder.free(call[6]))
    else
      if not outcome[1] then error(outcome[2], 0) end
      is(2, outcome.n)
      is(result + 0.0, outcome[2])
    end
  end

  function env.finish() end -- what is to be done at the very end

  if backend == "kit" then require "kit_player"(env) end
  env.start()
  return env
end

return open

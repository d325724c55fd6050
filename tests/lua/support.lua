-- What all test files share: the module under test bound to the recording client library, checks of messages, and
-- access to native memory.
local luaunit = require "luaunit"
local recorder = require "recorder" -- before the module, which takes its client functions from it
local tq = require "tq_mom_sync"

assert(recorder.watch("tq_mom_sync.so") > 0, "the module's allocations cannot be watched")

local support = {recorder = recorder, tq = tq}

support.module_path = assert(package.searchpath("tq_mom_sync", package.cpath))

-- Native formats of string.pack.
support.pointer = "T"
support.size = "T"

function support.peek(address, format)
  return (string.unpack(format, recorder.read(address, string.packsize(format))))
end

function support.poke(address, format, ...)
  recorder.write(address, string.pack(format, ...))
end

local function invoke(f, ...)
  local results = table.pack(f(...)) -- the line that positions name
  return table.unpack(results, 1, results.n)
end
local invoke_info = debug.getinfo(invoke, "S")

-- The position prefix of an error that a function called by invoke raises.
support.position = string.format("%s:%d: ", invoke_info.short_src, invoke_info.linedefined + 1)

local function message_of(f, ...)
  local results = table.pack(pcall(invoke, f, ...))
  if results[1] then
    local got = {}
    for i = 2, results.n do got[#got + 1] = tostring(results[i]) end
    luaunit.fail("no error; results: " .. table.concat(got, ", "))
  end
  return results[2]
end

-- f, called from a script, raises the text after the script's position.
function support.raises(text, f, ...)
  luaunit.assertEquals(message_of(f, ...), support.position .. text)
end

-- Assigning, in a script, raises the text after the script's position.
function support.assignment_raises(text, object, name, value)
  local info = debug.getinfo(support.set_field, "S")
  support.raises_bare(string.format("%s:%d: %s", info.short_src, info.linedefined, text), support.set_field, object,
    name, value)
end

-- f raises the text and nothing else.
function support.raises_bare(text, f, ...)
  luaunit.assertEquals(message_of(f, ...), text)
end

function support.get_field(object, name) return object[name] end
function support.set_field(object, name, value) object[name] = value end

-- The one call that the client library has got.
function support.only_call()
  local calls = recorder.calls()
  luaunit.assertEquals(#calls, 1)
  return calls[1]
end

function support.no_call()
  luaunit.assertEquals(recorder.call_count(), 0)
end

function support.float(expected, actual)
  luaunit.assertEquals(math.type(actual), "float")
  luaunit.assertEquals(actual, expected)
end

-- Equal as numbers, NaN equal to NaN.
function support.same_number(expected, actual)
  if expected ~= expected then
    luaunit.assertTrue(actual ~= actual)
  else
    luaunit.assertEquals(actual, expected)
  end
end

-- The module's live blocks once all garbage is gone.
function support.settled_blocks()
  collectgarbage()
  collectgarbage()
  return recorder.live_blocks()
end

function support.pointer_of(handle)
  local _, _, pointer = recorder.words(handle)
  return pointer
end

function support.own_of(handle)
  local _, own = recorder.words(handle)
  return own
end

local word = recorder.word

-- The module's own type table, found through the ring of type tables.
local function module_types()
  local head = recorder.address(debug.getregistry().swig_runtime_data_type_pointer4)
  local types = {}
  local record = head
  repeat
    local type_table = support.peek(record, "T")
    local count = support.peek(record + word, "i4")
    for i = 0, count - 1 do
      local address = support.peek(type_table + i * word, "T")
      local readable = support.peek(address + word, "T")
      types[#types + 1] = {
        address = address,
        mangled = recorder.read_text(support.peek(address, "T")),
        readable = readable ~= 0 and recorder.read_text(readable) or nil,
        dyn_cast = support.peek(address + 2 * word, "T"),
        casts = support.peek(address + 3 * word, "T"),
        class_record = support.peek(address + 4 * word, "T"),
        own_data = support.peek(address + 5 * word, "i4"),
      }
    end
    record = support.peek(record + 2 * word, "T")
  until record == head
  return types
end

support.types = module_types()
support.type_by_mangled = {}
support.type_by_readable = {}
support.type_by_address = {}
for _, descriptor in ipairs(support.types) do
  support.type_by_mangled[descriptor.mangled] = descriptor
  support.type_by_readable[descriptor.readable] = descriptor
  support.type_by_address[descriptor.address] = descriptor
end

-- A handle of a type that has no class, or a second handle of one that has.
function support.handle(mangled, pointer, own)
  return recorder.handle(support.type_by_mangled[mangled].address, own or 0, pointer)
end

function support.type_of(handle)
  local address = recorder.words(handle)
  local descriptor = support.type_by_address[address]
  return descriptor and descriptor.readable
end

-- Checks a handle that the module made.
function support.is_handle(handle, readable, pointer)
  luaunit.assertEquals(type(handle), "userdata")
  luaunit.assertEquals(recorder.size(handle), 3 * word)
  luaunit.assertEquals(support.type_of(handle), readable)
  luaunit.assertEquals(support.own_of(handle), 0)
  luaunit.assertEquals(support.pointer_of(handle), pointer)
end

-- Values that are no userdata, by Lua's name of their type. nil is not among them.
support.plain_values = {
  {"boolean", true},
  {"boolean", false},
  {"number", 5},
  {"number", 1.5},
  {"string", "text"},
  {"string", "12"},
  {"table", {}},
  {"function", print},
  {"function", function() end},
  {"thread", coroutine.create(print)},
}

local kUnknown = "userdata (unknown type)"

-- Userdata that carry no native pointer, or one of a type that nobody knows.
support.light = recorder.light(0x1000)
support.short_block = recorder.block(string.rep("\xee", word))
support.two_word_block = recorder.block(string.rep("\xee", 2 * word))
support.untyped_handle = recorder.handle(0, 0, 0x2000)
support.foreign_values = {
  {kUnknown, support.light},
  {kUnknown, support.short_block},
  {kUnknown, support.two_word_block},
  {kUnknown, support.untyped_handle},
  {kUnknown, io.stdout},
}

local nan = 0 / 0
local inf = 1 / 0

-- {given, stored}: what each native number type makes of a Lua number.
support.numbers = {
  int = {
    {0, 0}, {-0.0, 0}, {1, 1}, {-1, -1}, {0.5, 0}, {-0.5, 0}, {0.9, 0}, {1.9, 1}, {-1.9, -1}, {3.9, 3}, {-3.9, -3},
    {5e-324, 0}, {-5e-324, 0},
    {2147483646.5, 2147483646}, {2147483647, 2147483647}, {2147483647.5, 2147483647},
    {2147483648, 2147483647}, {2147483648.0, 2147483647}, {2147483649, 2147483647},
    {-2147483647.5, -2147483647}, {-2147483648, -2147483648}, {-2147483648.5, -2147483648},
    {-2147483649, -2147483648}, {-2147483649.0, -2147483648},
    {4294967295, 2147483647}, {4294967296, 2147483647}, {4294967297, 2147483647}, {4294967297.0, 2147483647},
    {2 ^ 53, 2147483647}, {-2 ^ 53, -2147483648}, {2 ^ 53 - 1, 2147483647}, {2 ^ 63, 2147483647},
    {-2 ^ 63, -2147483648}, {math.maxinteger, 2147483647}, {math.mininteger, -2147483648},
    {1e300, 2147483647}, {-1e300, -2147483648}, {inf, 2147483647}, {-inf, -2147483648}, {nan, 0},
    {"12", 12}, {"0x10", 16}, {" 7 ", 7}, {"-1.9", -1}, {"1e2", 100}, {"1e99", 2147483647},
  },
  -- Unsigned numbers are 32 bits wide on every target, size_t included.
  unsigned = {
    {0, 0}, {-0.0, 0}, {1, 1}, {0.9, 0}, {2.9, 2}, {5e-324, 0},
    {2147483647, 2147483647}, {2147483648, 2147483648}, {2147483648.9, 2147483648}, {2147483649, 2147483649},
    {4294967294.5, 4294967294}, {4294967295, 4294967295}, {4294967295.5, 4294967295},
    {4294967296, 4294967295}, {4294967296.0, 4294967295}, {4294967297, 4294967295},
    {2 ^ 53, 4294967295}, {2 ^ 63, 4294967295}, {math.maxinteger, 4294967295}, {1e300, 4294967295}, {inf, 4294967295},
    {"12", 12}, {"0xffffffff", 4294967295}, {"2.9", 2},
  },
  negative = {-1, -1.0, -0.5, -5e-324, -2147483648, -2 ^ 53, -2 ^ 63, math.mininteger, -inf, nan, "-1", "-0.5"},
  -- 64-bit numbers travel as doubles.
  int64 = {
    {0, 0}, {-0.0, 0}, {1.9, 1}, {-1.9, -1}, {2147483648, 2147483648}, {-2147483649, -2147483649},
    {4294967296, 4294967296}, {4294967295.5, 4294967295},
    {9007199254740991, 9007199254740991}, {9007199254740992, 9007199254740992},
    {9007199254740993, 9007199254740992}, {-9007199254740993, -9007199254740992},
    {9223372036854774784.0, 9223372036854774784}, {2 ^ 63, math.maxinteger}, {math.maxinteger, math.maxinteger},
    {math.maxinteger - 1, math.maxinteger}, {-2 ^ 63, math.mininteger}, {math.mininteger, math.mininteger},
    {math.mininteger + 1, math.mininteger}, {1e300, math.maxinteger}, {-1e300, math.mininteger},
    {inf, math.maxinteger}, {-inf, math.mininteger}, {nan, 0}, {"12", 12}, {"-1.9", -1},
  },
  -- The low 16 bits of what an int would hold.
  short = {
    {0, 0}, {-0.0, 0}, {1.9, 1}, {-1.9, -1}, {32767, 32767}, {32767.9, 32767}, {32768, -32768}, {-32768, -32768},
    {-32769, 32767}, {65535, -1}, {65536, 0}, {65537, 1}, {2147483647, -1}, {2147483648, -1}, {-2147483648, 0},
    {-2147483649, 0}, {4294967297, -1}, {2 ^ 53, -1}, {-2 ^ 63, 0}, {1e300, -1}, {inf, -1}, {-inf, 0}, {nan, 0},
    {"12", 12},
  },
  double = {
    {0, 0.0}, {1, 1.0}, {0.5, 0.5}, {-1.25, -1.25}, {5e-324, 5e-324}, {2147483648, 2147483648.0}, {2 ^ 53, 2 ^ 53},
    {9007199254740993, 9007199254740992.0}, {math.maxinteger, 2 ^ 63}, {-2 ^ 63, -2 ^ 63}, {1e300, 1e300},
    {inf, inf}, {-inf, -inf}, {nan, nan}, {"12", 12.0}, {"0.5", 0.5},
  },
  -- Only elements of integer arrays are cut like this.
  low32 = {
    {0, 0}, {1, 1}, {-1, -1}, {2147483647, 2147483647}, {2147483648, -2147483648}, {4294967295, -1}, {4294967296, 0},
    {4294967297, 1}, {-2147483648, -2147483648}, {-2147483649, 2147483647}, {1 << 53, 0}, {math.maxinteger, -1},
    {math.mininteger, 0},
  },
}

-- Runs f with each of the module's allocations failing in turn until one run meets none; f returns what pcall would.
function support.each_allocation_failing(f)
  for n = 1, 100 do
    recorder.reset()
    recorder.fail_request(n)
    f(n)
    local requests = #recorder.requests()
    recorder.fail_request(0)
    if requests < n then return n - 1 end
  end
  luaunit.fail("the allocations have no end")
end

-- Ends the process with the tests' result. The state is closed, so that what is left over is a leak.
function support.run()
  os.exit(luaunit.LuaUnit.run(), true)
end

return support

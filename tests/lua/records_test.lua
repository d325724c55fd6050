-- Every field of every record class, driven by the catalogue: attributes, values, messages, ownership, bytes.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestRecords = {}

function TestRecords:setUp()
  recorder.reset()
end

local function new(class) return tq[class.name]() end

local function layout_of(field) return recorder.layouts[field.class.layout].fields[field.name] end

local function address_of(object, field) return support.pointer_of(object) + layout_of(field).offset end

local function record_bytes(object, class)
  return recorder.read(support.pointer_of(object), recorder.layouts[class.layout].size)
end

local function metatable_of(class) return debug.getregistry().SWIG[class.name] end

local function getter_of(field) return metatable_of(field.class)[".get"][field.name] end

local function setter_of(field) return metatable_of(field.class)[".set"][field.name] end

-- As a getter or setter names itself once arguments are converted.
local function accessor_name(field, kind) return field.class.name .. "_" .. field.name .. "_" .. kind end

local function member_name(field) return field.class.structure .. "::" .. field.name end

local function kind_message(field, position, expected, got)
  return string.format("Error in %s (arg %d), expected '%s' got '%s'", member_name(field), position, expected, got)
end

local function conversion_message(field, accessor, position, expected, got)
  return string.format("Error in %s (arg %d), expected '%s' got '%s'", accessor_name(field, accessor), position,
    expected, got)
end

-- An object whose every byte is set, so that stray writes show.
local function patterned(class)
  local object = new(class)
  recorder.write(support.pointer_of(object), string.rep("\xa5", recorder.layouts[class.layout].size))
  return object
end

-- Assigns, then checks the field's bytes and that no other byte has changed.
local function assign_and_check(object, field, value, bytes)
  local layout = layout_of(field)
  local before = record_bytes(object, field.class)
  object[field.name] = value
  luaunit.assertEquals(#bytes, layout.size)
  luaunit.assertEquals(record_bytes(object, field.class),
    before:sub(1, layout.offset) .. bytes .. before:sub(layout.offset + layout.size + 1))
end

local function readable(field) return support.type_by_mangled[field.mangled].readable end

-- An assignment that fails leaves the record alone.
local function assignment_fails(field, value, message)
  local object = field.kind == "cstring" and new(field.class) or patterned(field.class)
  local before = record_bytes(object, field.class)
  support.raises_bare(message, support.set_field, object, field.name, value)
  luaunit.assertEquals(record_bytes(object, field.class), before)
end

local number_formats = {int = "i4", size_t = "T", llong = "i8", int64 = "i8", double = "d", short = "i2"}
local number_tables = {
  int = "int", size_t = "unsigned", llong = "int64", int64 = "int64", double = "double", short = "short",
}

local checks = {}

local function check_number(field)
  local object = patterned(field.class)
  for _, pair in ipairs(support.numbers[number_tables[field.kind]]) do
    assign_and_check(object, field, pair[1], string.pack(number_formats[field.kind], pair[2]))
    local got = object[field.name]
    luaunit.assertEquals(math.type(got), "float")
    support.same_number(pair[2] + 0.0, got)
  end
  if field.kind == "size_t" then
    for _, negative in ipairs(support.numbers.negative) do
      assignment_fails(field, negative, "number must not be negative")
    end
  end
  assignment_fails(field, nil, kind_message(field, 2, field.text, "nil"))
  for _, plain in ipairs(support.plain_values) do
    if not tonumber(plain[2]) then
      assignment_fails(field, plain[2], kind_message(field, 2, field.text, plain[1]))
    end
  end
  for _, foreign in ipairs(support.foreign_values) do
    assignment_fails(field, foreign[2], kind_message(field, 2, field.text, foreign[1]))
  end
  assignment_fails(field, object, kind_message(field, 2, field.text, field.class.readable))
end

checks.int = check_number
checks.size_t = check_number
checks.llong = check_number
checks.int64 = check_number
checks.double = check_number
checks.short = check_number

local function pointer_bytes(address) return string.pack(support.pointer, address) end

local function check_pointer_getter(object, field, address)
  support.is_handle(object[field.name], readable(field), address)
  local descriptor = support.type_by_mangled[field.mangled]
  luaunit.assertEquals(debug.getmetatable(object[field.name]) ~= nil, descriptor.class_record ~= 0)
end

-- Fields that take the native pointer of any handle.
local function check_any_handle(field)
  local object = patterned(field.class)
  local owner = tq.get_op_t()
  assign_and_check(object, field, owner, pointer_bytes(support.pointer_of(owner)))
  luaunit.assertEquals(support.own_of(owner), 1)
  check_pointer_getter(object, field, support.pointer_of(owner))
  assign_and_check(object, field, nil, pointer_bytes(0))
  luaunit.assertNil(object[field.name])
  assign_and_check(object, field, support.untyped_handle, pointer_bytes(0x2000))
  for _, no_handle in ipairs {support.light, support.short_block, support.two_word_block} do
    assign_and_check(object, field, support.untyped_handle, pointer_bytes(0x2000))
    assign_and_check(object, field, no_handle, pointer_bytes(0))
  end
end

function checks.object(field)
  check_any_handle(field)
  local object = patterned(field.class)
  for _, plain in ipairs(support.plain_values) do
    assign_and_check(object, field, support.untyped_handle, pointer_bytes(0x2000))
    assign_and_check(object, field, plain[2], pointer_bytes(0))
  end
end

function checks.void(field)
  check_any_handle(field)
  for _, plain in ipairs(support.plain_values) do
    assignment_fails(field, plain[2], kind_message(field, 2, "void *", plain[1]))
  end
end

function checks.bytes(field)
  local object = patterned(field.class)
  local owner = tq.get_op_t()
  for _, userdata in ipairs {owner, support.untyped_handle, support.light, support.short_block, io.stdout} do
    assign_and_check(object, field, userdata, pointer_bytes(recorder.address(userdata)))
    check_pointer_getter(object, field, recorder.address(userdata))
  end
  luaunit.assertNotEquals(recorder.address(owner), support.pointer_of(owner))
  luaunit.assertEquals(recorder.address(support.light), 0x1000)
  assign_and_check(object, field, nil, pointer_bytes(0))
  luaunit.assertNil(object[field.name])
  for _, plain in ipairs(support.plain_values) do assign_and_check(object, field, plain[2], pointer_bytes(0)) end
end

-- Fields that take a handle of one type.
local function check_typed_handle(field, disowns, store)
  local type_address = support.type_by_mangled[field.mangled].address
  assert(type_address)
  for _, plain in ipairs(support.plain_values) do
    assignment_fails(field, plain[2], kind_message(field, 2, field.text, plain[1]))
  end
  for _, foreign in ipairs(support.foreign_values) do
    local bytes = foreign[2] ~= support.light and
      recorder.read(recorder.address(foreign[2]), recorder.size(foreign[2])) or nil
    assignment_fails(field, foreign[2], conversion_message(field, "set", 2, readable(field), foreign[1]))
    if bytes then
      luaunit.assertEquals(recorder.read(recorder.address(foreign[2]), recorder.size(foreign[2])), bytes)
    end
  end
  -- A handle of another type is refused, yet disowned where a right one would be.
  local wrong = tq.get_op_t()
  local record = support.pointer_of(wrong)
  assignment_fails(field, wrong, conversion_message(field, "set", 2, readable(field), support.type_of(wrong)))
  luaunit.assertEquals(support.own_of(wrong), disowns and 0 or 1)
  if disowns then recorder.free(record) end
  -- Nothing is converted once the record itself is refused.
  local kept = recorder.handle(type_address, 1, 0x4000)
  local other = tq.get_op_t()
  support.raises(conversion_message(field, "set", 1, field.class.readable, support.type_of(other)), setter_of(field),
    other, kept)
  luaunit.assertEquals(support.own_of(kept), 1)
  store(type_address)
end

local function check_stored_handle(field, disowns)
  check_typed_handle(field, disowns, function(type_address)
    local object = patterned(field.class)
    local handle = recorder.handle(type_address, 1, 0x4000)
    assign_and_check(object, field, handle, pointer_bytes(0x4000))
    luaunit.assertEquals({recorder.words(handle)}, {type_address, disowns and 0 or 1, 0x4000})
    assign_and_check(object, field, nil, pointer_bytes(0))
    -- Without a record nothing is stored, but the handle was converted.
    local unused = recorder.handle(type_address, 1, 0x4000)
    luaunit.assertEquals(select("#", setter_of(field)(nil, unused)), 0)
    luaunit.assertEquals(support.own_of(unused), disowns and 0 or 1)
  end)
end

function checks.record(field)
  check_stored_handle(field, true)
  local object = new(field.class)
  luaunit.assertNil(object[field.name])
  support.poke(address_of(object, field), support.pointer, 0x5000)
  check_pointer_getter(object, field, 0x5000)
end

function checks.func(field)
  check_stored_handle(field, false)
  local object = new(field.class)
  luaunit.assertNil(object[field.name])
  support.poke(address_of(object, field), support.pointer, 0x5000)
  check_pointer_getter(object, field, 0x5000)
end

local function set_array(object, field, address, count)
  local count_field = {class = field.class, name = field.count}
  support.poke(address_of(object, field), support.pointer, address)
  support.poke(address_of(object, count_field), support.size, count)
end

local function check_array(field, disowns, element_format, elements, check_element)
  check_stored_handle(field, disowns)
  local object = new(field.class)
  luaunit.assertEquals(object[field.name], {})
  luaunit.assertFalse(rawequal(object[field.name], object[field.name]))

  local size = string.packsize(element_format)
  local array = recorder.alloc(#elements * size)
  for i, element in ipairs(elements) do support.poke(array + (i - 1) * size, element_format, element) end
  for _, count in ipairs {1, 2, #elements} do
    set_array(object, field, array, count)
    local got = object[field.name]
    luaunit.assertNil(getmetatable(got))
    local keys = 0
    for key in pairs(got) do
      luaunit.assertEquals(math.type(key), "integer")
      luaunit.assertTrue(key >= 1 and key <= count)
      keys = keys + 1
    end
    local expected_keys = 0
    for i = 1, count do
      check_element(elements[i], got[i])
      if got[i] ~= nil then expected_keys = expected_keys + 1 end
    end
    luaunit.assertEquals(keys, expected_keys)
  end
  set_array(object, field, array, 0)
  luaunit.assertEquals(object[field.name], {})
  set_array(object, field, 0, 3)
  luaunit.assertEquals(object[field.name], {})
  -- Setting the array leaves its count.
  set_array(object, field, array, 2)
  object[field.name] = nil
  luaunit.assertEquals(support.peek(address_of(object, {class = field.class, name = field.count}), support.size), 2)
  recorder.free(array)

  -- A field counts with its own length.
  local sole = patterned(field.class)
  local long = recorder.alloc(1000 * size)
  for i = 0, 999 do support.poke(long + i * size, element_format, elements[1]) end
  set_array(sole, field, long, 1000)
  luaunit.assertEquals(#sole[field.name], 1000)
  recorder.free(long)
end

function checks.objects(field)
  check_array(field, false, support.pointer, {0x6000, 0, 0x6001, 0x6000}, function(expected, got)
    if expected == 0 then
      luaunit.assertNil(got)
    else
      support.is_handle(got, "void *", expected)
      luaunit.assertNil(debug.getmetatable(got))
    end
  end)
end

function checks.scores(field)
  check_array(field, true, "d", {1.5, -0.0, 1 / 0, 0 / 0, 3}, function(expected, got)
    luaunit.assertEquals(math.type(got), "float")
    support.same_number(expected, got)
  end)
end

function checks.tags(field)
  check_array(field, true, support.size, {7, 0, 2147483647, 4294967295}, function(expected, got)
    luaunit.assertEquals(math.type(got), "integer")
    luaunit.assertEquals(got, expected)
  end)
end

local function padded(text, size) return text .. string.rep("\0", size - #text) end

function checks.chars(field)
  local object = patterned(field.class)
  local size = layout_of(field).size
  luaunit.assertEquals(size, tonumber(field.native:match "%[(%d+)%]") or 11)
  for _, length in ipairs {0, 1, size - 2, size - 1, size, size + 1, size + 88, 4 * size} do
    local text = string.rep("k", length)
    local stored = text:sub(1, size - 1)
    assign_and_check(object, field, text, padded(stored, size))
    luaunit.assertEquals(object[field.name], stored)
  end
  assign_and_check(object, field, "ab\0cd", padded("ab", size))
  assign_and_check(object, field, 12, padded("12", size))
  assign_and_check(object, field, -1.5, padded("-1.5", size))
  assign_and_check(object, field, "\xff\x01", padded("\xff\x01", size))
  luaunit.assertEquals(object[field.name], "\xff\x01")
  -- nil sets the first byte only.
  local full = string.rep("z", size - 1)
  object[field.name] = full
  assign_and_check(object, field, nil, "\0" .. full:sub(2) .. "\0")
  luaunit.assertEquals(object[field.name], "")
  -- Without a terminator the array is read to its end.
  recorder.write(address_of(object, field), string.rep("q", size))
  luaunit.assertEquals(object[field.name], string.rep("q", size))
  for _, plain in ipairs(support.plain_values) do
    if plain[1] ~= "string" and plain[1] ~= "number" then
      assignment_fails(field, plain[2], kind_message(field, 2, field.text, plain[1]))
    end
  end
  for _, foreign in ipairs(support.foreign_values) do
    assignment_fails(field, foreign[2], kind_message(field, 2, field.text, foreign[1]))
  end
  assignment_fails(field, object, kind_message(field, 2, field.text, field.class.readable))
end

function checks.cstring(field)
  local object = new(field.class)
  local function stored() return support.peek(address_of(object, field), support.pointer) end
  luaunit.assertNil(object[field.name])
  local blocks = support.settled_blocks()
  recorder.reset()
  object[field.name] = "first"
  luaunit.assertEquals(recorder.requests(), {6})
  luaunit.assertEquals(recorder.live_blocks(), blocks + 1)
  luaunit.assertEquals(recorder.read(stored(), 6), "first\0")
  luaunit.assertEquals(object[field.name], "first")
  local first = stored()
  object[field.name] = 17
  luaunit.assertEquals(object[field.name], "17")
  luaunit.assertEquals(recorder.live_blocks(), blocks + 1)
  object[field.name] = "ab\0cd"
  luaunit.assertEquals(object[field.name], "ab")
  object[field.name] = ""
  luaunit.assertEquals(object[field.name], "")
  luaunit.assertNotEquals(stored(), 0)
  object[field.name] = nil
  luaunit.assertNil(object[field.name])
  luaunit.assertEquals(stored(), 0)
  luaunit.assertEquals(recorder.live_blocks(), blocks)
  luaunit.assertFalse(recorder.is_live(first))
  -- What the field held is freed, wherever it came from.
  local foreign = recorder.alloc(8)
  support.poke(address_of(object, field), support.pointer, foreign)
  object[field.name] = nil
  luaunit.assertFalse(recorder.is_live(foreign))
  luaunit.assertEquals(recorder.stray_frees(), 0)
  -- The record does not own the string.
  object[field.name] = "outlives"
  local copy = stored()
  object = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(copy))
  recorder.free(copy)
  -- A copy that cannot be made leaves no dangling pointer.
  object = new(field.class)
  object[field.name] = "old"
  recorder.reset()
  recorder.fail_request(1)
  pcall(support.set_field, object, field.name, "new")
  luaunit.assertEquals(#recorder.requests(), 1)
  recorder.fail_request(0)
  if stored() ~= 0 then luaunit.assertTrue(recorder.is_live(stored())) end
  object[field.name] = nil

  for _, plain in ipairs(support.plain_values) do
    if plain[1] ~= "string" and plain[1] ~= "number" then
      assignment_fails(field, plain[2], kind_message(field, 2, "char *", plain[1]))
    end
  end
  for _, userdata in ipairs(support.foreign_values) do
    assignment_fails(field, userdata[2], kind_message(field, 2, "char *", userdata[1]))
  end
end

function checks.embedded(field)
  local layout = layout_of(field)
  check_typed_handle(field, false, function(type_address)
    local object = patterned(field.class)
    local bytes = {}
    for i = 1, layout.size do bytes[i] = string.char(i * 7 % 251) end
    bytes = table.concat(bytes)
    local source = recorder.alloc(layout.size)
    recorder.write(source, bytes)
    local handle = recorder.handle(type_address, 1, source)
    assign_and_check(object, field, handle, bytes)
    luaunit.assertEquals({recorder.words(handle)}, {type_address, 1, source})
    luaunit.assertEquals(recorder.read(source, layout.size), bytes)
    assign_and_check(object, field, nil, bytes)
    -- A value may be assigned to itself.
    assign_and_check(object, field, object[field.name], bytes)
    check_pointer_getter(object, field, address_of(object, field))
    recorder.free(source)
    luaunit.assertEquals(select("#", setter_of(field)(nil, handle)), 0)
  end)
end

function checks.union(field)
  local object = new(field.class)
  local address = address_of(object, field)
  support.is_handle(object[field.name], "tq_thread_u *", address)
  for _, value in ipairs {5, "text", {}, object[field.name], false} do
    support.raises_bare("This variable is immutable", support.set_field, object, field.name, value)
  end
  support.raises_bare("This variable is immutable", support.set_field, object, field.name, nil)
  support.raises("This variable is immutable", setter_of(field), object, object[field.name])
  luaunit.assertEquals(recorder.read(address, layout_of(field).size), string.rep("\0", layout_of(field).size))
end

local function check_getter_arguments(field)
  local getter = getter_of(field)
  for _, count in ipairs {0, 2, 3} do
    support.raises(string.format("Error in %s expected 1..1 args, got %d", member_name(field), count), getter,
      table.unpack({}, 1, count))
  end
  for _, plain in ipairs(support.plain_values) do
    support.raises(kind_message(field, 1, field.class.pointer, plain[1]), getter, plain[2])
  end
  for _, foreign in ipairs(support.foreign_values) do
    support.raises(conversion_message(field, "get", 1, field.class.readable, foreign[1]), getter, foreign[2])
  end
  local other = field.class.name == "set_op_t" and tq.get_op_t() or tq.set_op_t()
  support.raises(conversion_message(field, "get", 1, field.class.readable, support.type_of(other)), getter, other)
  luaunit.assertEquals(table.pack(getter(nil)), {n = 1})
end

-- A value of argument 2 that its kind accepts.
local function acceptable(field)
  if number_formats[field.kind] then return 3 end
  return nil
end

local function check_setter_arguments(field)
  local setter = setter_of(field)
  if field.kind == "union" then return end
  for _, count in ipairs {0, 1, 3} do
    support.raises(string.format("Error in %s expected 2..2 args, got %d", member_name(field), count), setter,
      table.unpack({}, 1, count))
  end
  for _, plain in ipairs(support.plain_values) do
    support.raises(kind_message(field, 1, field.class.pointer, plain[1]), setter, plain[2], acceptable(field))
  end
  for _, foreign in ipairs(support.foreign_values) do
    support.raises(conversion_message(field, "set", 1, field.class.readable, foreign[1]), setter, foreign[2],
      acceptable(field))
  end
  local other = field.class.name == "set_op_t" and tq.get_op_t() or tq.set_op_t()
  support.raises(conversion_message(field, "set", 1, field.class.readable, support.type_of(other)), setter, other,
    acceptable(field))
  -- The kind of argument 1 comes before that of argument 2, which comes before conversions.
  if field.kind ~= "object" and field.kind ~= "bytes" then
    support.raises(kind_message(field, 1, field.class.pointer, "boolean"), setter, true, true)
    support.raises(kind_message(field, 2, field.text, "boolean"), setter, other, true)
  end
  if field.kind == "size_t" then
    support.raises(conversion_message(field, "set", 1, field.class.readable, support.type_of(other)), setter, other, -1)
    support.raises("number must not be negative", setter, nil, -1)
  end
  -- No record, nothing to store.
  luaunit.assertEquals(select("#", setter(nil, acceptable(field))), 0)
  luaunit.assertEquals(select("#", setter(new(field.class), acceptable(field))), 0)
end

local fresh = {
  int = 0.0, size_t = 0.0, llong = 0.0, int64 = 0.0, double = 0.0, short = 0.0, chars = "", objects = {}, scores = {},
  tags = {},
}

for _, class in ipairs(catalog.classes) do
  local name = class.name

  TestRecords["test_" .. name .. "_attributes"] = function()
    local expected, settable = {}, {}
    for _, field in ipairs(class.fields) do
      expected[field.name] = true
      settable[field.name] = true
    end
    local got, set = {}, {}
    for attribute, getter in pairs(metatable_of(class)[".get"]) do
      luaunit.assertEquals(type(getter), "function")
      got[attribute] = true
    end
    for attribute, setter in pairs(metatable_of(class)[".set"]) do
      luaunit.assertEquals(type(setter), "function")
      set[attribute] = true
    end
    luaunit.assertEquals(got, expected)
    luaunit.assertEquals(set, settable)
  end

  TestRecords["test_" .. name .. "_constructor"] = function()
    local blocks = support.settled_blocks()
    recorder.reset()
    local object = new(class)
    local size = recorder.layouts[class.layout].size
    luaunit.assertEquals(recorder.requests(), {size})
    luaunit.assertEquals(recorder.live_blocks(), blocks + 1)
    luaunit.assertTrue(recorder.is_live(support.pointer_of(object)))
    luaunit.assertEquals(support.own_of(object), 1)
    luaunit.assertEquals(support.type_of(object), class.readable)
    luaunit.assertEquals(recorder.size(object), 3 * recorder.word)
    luaunit.assertIs(debug.getmetatable(object), metatable_of(class))
    luaunit.assertEquals(record_bytes(object, class), string.rep("\0", size))
    for _, field in ipairs(class.fields) do
      local value = object[field.name]
      if fresh[field.kind] then
        luaunit.assertEquals(value, fresh[field.kind])
        luaunit.assertEquals(math.type(value), math.type(fresh[field.kind]))
      elseif field.kind ~= "embedded" and field.kind ~= "union" then
        luaunit.assertNil(value)
      end
    end
    local pointer = support.pointer_of(object)
    object = nil
    luaunit.assertEquals(support.settled_blocks(), blocks)
    luaunit.assertFalse(recorder.is_live(pointer))
    luaunit.assertEquals(recorder.stray_frees(), 0)
  end

  TestRecords["test_" .. name .. "_constructor_arguments"] = function()
    for count = 1, 3 do
      support.raises_bare(string.format("Error in %s expected 0..0 args, got %d", class.constructor, count),
        tq[name], table.unpack({}, 1, count))
    end
    luaunit.assertEquals(#recorder.requests(), 0)
  end

  TestRecords["test_" .. name .. "_without_memory"] = function()
    local blocks = support.settled_blocks()
    recorder.fail_request(1)
    luaunit.assertEquals(table.pack(tq[name]()), {n = 1})
    luaunit.assertEquals(#recorder.requests(), 1)
    luaunit.assertEquals(recorder.live_blocks(), blocks)
  end

  for _, field in ipairs(class.fields) do
    TestRecords["test_" .. name .. "_" .. field.name .. "_values"] = function() checks[field.kind](field) end
    TestRecords["test_" .. name .. "_" .. field.name .. "_getter"] = function() check_getter_arguments(field) end
    TestRecords["test_" .. name .. "_" .. field.name .. "_setter"] = function() check_setter_arguments(field) end
  end
end

support.run()

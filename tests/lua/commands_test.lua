-- Every function of the module against the recording client library, driven by the catalogue.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

TestCommands = {}

function TestCommands:setUp()
  recorder.reset()
end

local function kind_message(command, position, expected, got)
  return string.format("Error in %s (arg %d), expected '%s' got '%s'", command.called, position, expected, got)
end

local function conversion_message(command, position, expected, got)
  return string.format("Error in %s (arg %d), expected '%s' got '%s'", command.name, position, expected, got)
end

local some_key = tq.tq_mom_lset_res_t()
local other_key = tq.tq_mom_save_res_t()

-- A value that is accepted, and what the client library gets for it.
local good = {
  global = function()
    local handle = tq.tq_global_t()
    return handle, support.pointer_of(handle)
  end,
  op = function(class)
    local handle = tq[class.name]()
    handle.flag = 5
    return handle, support.pointer_of(handle)
  end,
  res = function(class)
    local handle = tq[class.name]()
    return handle, support.pointer_of(handle)
  end,
  int = function() return 7, 7 end,
  unsigned = function() return 11, 11 end,
  size_t = function() return 13, 13 end,
  double = function() return 2.5, 2.5 end,
  key = function() return some_key, support.pointer_of(some_key) end,
  timeout = function() return 1.25, {seconds = 1, microseconds = 250000} end,
  name = function() return "router", "router" end,
  fields = function() return {3, -4}, {3, -4} end,
  scores = function() return {1.5, 2}, {1.5, 2.0} end,
  members = function()
    return {some_key, other_key}, {support.pointer_of(some_key), support.pointer_of(other_key)}
  end,
  void = function() return other_key, support.pointer_of(other_key) end,
  callback = function() return function() end end,
  any = function() return "x" end,
}

local function good_values(command)
  local values, expected = {n = #command.arguments}, {}
  for i, argument in ipairs(command.arguments) do
    values[i], expected[i] = good[argument.kind](argument.class)
    if values[i] == some_key and values[i - 1] == some_key then
      values[i], expected[i] = other_key, support.pointer_of(other_key)
    end
  end
  return values, expected
end

local function call(command, values)
  return tq[command.name](table.unpack(values, 1, values.n))
end

-- Bad values of an argument: {stage, value, message, bare}. Kinds are checked before anything is converted.
local function add(list, stage, value, message, bare)
  list[#list + 1] = {stage = stage, value = value, message = message, bare = bare}
end

local number_texts = {int = "int", unsigned = "unsigned int", size_t = "size_t", double = "double"}

local function bad_handles(command, position, readable, list)
  local other = readable:find("lset_res", 1, true) and tq.tq_mom_save_res_t() or tq.tq_mom_lset_res_t()
  add(list, "convert", other, conversion_message(command, position, readable, support.type_of(other)))
  local classless = support.handle("_p_double", 0x3000)
  add(list, "convert", classless, conversion_message(command, position, readable, "double *"))
  for _, foreign in ipairs(support.foreign_values) do
    add(list, "convert", foreign[2], conversion_message(command, position, readable, foreign[1]))
  end
end

local function bad_values(command, position)
  local argument = command.arguments[position]
  local kind, class = argument.kind, argument.class
  local list = {}
  if kind == "global" then class = catalog.class_by_name.tq_global_t end
  if kind == "global" or kind == "op" or kind == "res" then
    for _, plain in ipairs(support.plain_values) do
      add(list, "kind", plain[2], kind_message(command, position, class.layout .. " *", plain[1]))
    end
    bad_handles(command, position, class.readable, list)
  elseif number_texts[kind] then
    local text = number_texts[kind]
    add(list, "kind", nil, kind_message(command, position, text, "nil"))
    for _, plain in ipairs(support.plain_values) do
      if not tonumber(plain[2]) then add(list, "kind", plain[2], kind_message(command, position, text, plain[1])) end
    end
    add(list, "kind", some_key, kind_message(command, position, text, support.type_of(some_key)))
    for _, foreign in ipairs(support.foreign_values) do
      add(list, "kind", foreign[2], kind_message(command, position, text, foreign[1]))
    end
    if kind == "unsigned" or kind == "size_t" then
      for _, negative in ipairs(support.numbers.negative) do
        add(list, "convert", negative, "number must not be negative")
      end
    end
  elseif kind == "name" then
    for _, plain in ipairs(support.plain_values) do
      if plain[1] ~= "string" and plain[1] ~= "number" then
        add(list, "kind", plain[2], kind_message(command, position, "char *", plain[1]))
      end
    end
    add(list, "kind", some_key, kind_message(command, position, "char *", support.type_of(some_key)))
    add(list, "kind", support.light, kind_message(command, position, "char *", "userdata (unknown type)"))
  elseif kind == "void" then
    for _, plain in ipairs(support.plain_values) do
      add(list, "kind", plain[2], kind_message(command, position, "void *", plain[1]))
    end
    local no_block = string.format("Error in %s, expected a void* at argument number 1\n", command.name)
    add(list, "convert", support.short_block, no_block)
    add(list, "convert", support.two_word_block, no_block)
  elseif kind == "fields" then
    for _, value in ipairs {false, true, 7, "text", print, some_key, support.light} do
      add(list, "convert", value, "input error, errcode_1", true)
    end
    add(list, "convert", nil, "input error, errcode_1", true)
    for _, element in ipairs {2.0, 1.5, "2", "x", true, {}, print, some_key} do
      add(list, "convert", {element}, "input error, errcode_3", true)
      add(list, "convert", {1, element, 3}, "input error, errcode_3", true)
    end
    local hole = {1, 2, 3}
    hole[2] = nil
    add(list, "convert", hole, "input error, errcode_3", true)
  elseif kind == "scores" or kind == "members" then
    for _, value in ipairs {false, true, 7, "text", print, some_key, support.light} do
      add(list, "convert", value, "input error, expect array", true)
    end
    add(list, "convert", nil, "input error, expect array", true)
    local bad = kind == "scores" and {"x", true, {}, print, some_key, ""}
      or {"b", 5, 1.5, true, {}, print, support.light, support.short_block, support.two_word_block, io.stdout}
    for _, element in ipairs(bad) do
      local fine = kind == "scores" and 1 or some_key
      add(list, "convert", {element}, "input error", true)
      add(list, "convert", {fine, element, fine}, "input error", true)
    end
    if kind == "scores" then
      local hole = {1, 2, 3}
      hole[2] = nil
      add(list, "convert", hole, "input error", true)
    end
  elseif kind == "callback" then
    for _, value in ipairs {5, "text", true, false, {}, some_key, coroutine.create(print)} do
      add(list, "convert", value, "input error: cb is not function", true)
    end
  end
  return list
end

local function expect_error(command, values, bad)
  recorder.reset()
  collectgarbage "stop" -- collected records would blur the count of live blocks
  local blocks = recorder.live_blocks()
  local check = bad.bare and support.raises_bare or support.raises
  check(bad.message, tq[command.name], table.unpack(values, 1, values.n))
  support.no_call()
  luaunit.assertEquals(recorder.live_blocks(), blocks)
  collectgarbage "restart"
end

local tests = {}

function tests.argument_counts(command)
  local count = #command.arguments
  local values = good_values(command)
  for _, given in ipairs {0, count - 1, count + 1, count + 3} do
    if given ~= count then
      support.raises(
        string.format("Error in %s expected %d..%d args, got %d", command.called, count, count, given),
        tq[command.name], table.unpack(values, 1, given))
      support.no_call()
    end
  end
end

function tests.counts_before_kinds(command)
  local values = {}
  for i = 1, #command.arguments + 1 do values[i] = true end
  support.raises(
    string.format("Error in %s expected %d..%d args, got %d", command.called, #command.arguments,
      #command.arguments, #values),
    tq[command.name], table.unpack(values))
end

function tests.each_wrong_kind(command)
  for position in ipairs(command.arguments) do
    for _, bad in ipairs(bad_values(command, position)) do
      local values = good_values(command)
      values[position] = bad.value
      expect_error(command, values, bad)
    end
  end
end

-- One bad value for each different way to be bad.
local function representatives(command, position)
  local seen, list = {}, {}
  for _, bad in ipairs(bad_values(command, position)) do
    local way = bad.stage .. (bad.bare and bad.message or "")
    if not seen[way] then
      seen[way] = true
      list[#list + 1] = bad
    end
  end
  return list
end

function tests.first_failure_wins(command)
  local bad = {}
  for position in ipairs(command.arguments) do bad[position] = representatives(command, position) end
  for first = 1, #command.arguments do
    for second = first + 1, #command.arguments do
      for _, a in ipairs(bad[first]) do
        for _, b in ipairs(bad[second]) do
          local values = good_values(command)
          values[first], values[second] = a.value, b.value
          expect_error(command, values, (a.stage == "kind" or b.stage == "convert") and a or b)
        end
      end
    end
  end
end

local prescribed_status = -4

-- Lets the client function return what the results' kinds ask for; returns what Lua should see.
local function prescribe(command)
  local first = command.results[1]
  if first.kind == "status" then
    recorder.returns(command.client, prescribed_status)
    return prescribed_status
  end
  local address = recorder.alloc(64)
  recorder.returns(command.client, address, -3)
  return address
end

local function check_results(command, expected, results)
  luaunit.assertEquals(results.n, #command.results)
  for i, result in ipairs(command.results) do
    if result.kind == "status" then
      support.float(expected, results[i])
    elseif result.kind == "out" then
      support.float(-3, results[i])
    else
      local readable = result.class and result.class.readable or "tq_obj *"
      support.is_handle(results[i], readable, expected)
      luaunit.assertIs(debug.getmetatable(results[i]),
        result.class and debug.getregistry().SWIG[result.class.name] or nil)
    end
  end
end

-- What the client function has to be called with, from what each argument stands for.
local function client_arguments(command, expected)
  local arguments, fields, op = {}, nil, nil
  local function take(value) arguments[#arguments + 1] = value end
  local builds_option = command.name == "hmset_ext" or command.name == "hmsetnx_ext"
  for i, argument in ipairs(command.arguments) do
    if argument.kind == "fields" then
      fields = expected[i]
      if not builds_option then
        take(fields)
        take(#fields)
      end
    elseif argument.kind == "scores" then
      take(expected[i])
    elseif argument.kind == "members" then
      take(expected[i])
      take(#expected[i])
    elseif argument.kind ~= "callback" and argument.kind ~= "any" then
      if argument.kind == "op" then op = expected[i] end
      take(expected[i])
    end
  end
  return arguments, fields, op
end

local function check_call(command, expected)
  local got = support.only_call()
  luaunit.assertEquals(got.name, command.client)
  local arguments, fields, op = client_arguments(command, expected)
  local builds_option = command.name == "hmset_ext" or command.name == "hmsetnx_ext"
  for i, value in ipairs(arguments) do
    local is_array = type(value) == "table" and not value.seconds
    if is_array then
      luaunit.assertNotEquals(got[i].address, 0)
      got[i].address = nil
    end
    if builds_option and value == op then
      luaunit.assertEquals(got.op.address, got[i])
      luaunit.assertNotEquals(got[i], op)
    else
      luaunit.assertEquals(got[i], value)
    end
  end
  if command.name == "scan" then
    luaunit.assertNotEquals(got[5], 0)
    luaunit.assertNotEquals(got[6], 0)
    luaunit.assertEquals(#got, 6)
  else
    luaunit.assertEquals(#got, #arguments)
  end
  if op then luaunit.assertEquals(got.op.flag, 5) end
  if builds_option then
    luaunit.assertEquals(got.op.field_count, #fields)
    got.op.fields.address = nil
    luaunit.assertEquals(got.op.fields, fields)
  end
end

function tests.right_values(command)
  local values, expected = good_values(command)
  if command.cast then
    local results = table.pack(call(command, values))
    support.no_call()
    check_results(command, expected[1], results)
    return
  end
  local result = prescribe(command)
  local blocks = support.settled_blocks()
  local results = table.pack(call(command, values))
  check_call(command, expected)
  check_results(command, result, results)
  luaunit.assertEquals(support.settled_blocks(), blocks)
  if command.results[1].kind ~= "status" then
    results = nil
    luaunit.assertEquals(support.settled_blocks(), blocks)
    luaunit.assertTrue(recorder.is_live(result))
    recorder.free(result)
  end
end

function tests.null_and_extreme_results(command)
  if command.cast then
    luaunit.assertEquals(table.pack(call(command, {n = 1})), {n = 1})
    return
  end
  local values = good_values(command)
  if command.results[1].kind == "status" then
    for _, status in ipairs {0, 1, 2147483647, -2147483648} do
      recorder.returns(command.client, status)
      local results = table.pack(call(command, values))
      luaunit.assertEquals(results.n, 1)
      support.float(status, results[1])
    end
  else
    recorder.returns(command.client, 0, 2147483647)
    local results = table.pack(call(command, values))
    luaunit.assertEquals(results.n, #command.results)
    luaunit.assertNil(results[1])
    if command.results[2] then support.float(2147483647, results[2]) end
  end
end

local function check_argument(command, position, value, expected_value)
  local values, expected = good_values(command)
  recorder.reset()
  values[position], expected[position] = value, expected_value
  call(command, values)
  check_call(command, expected)
end

function tests.null_handles(command)
  for position, argument in ipairs(command.arguments) do
    if argument.kind == "global" or argument.kind == "res" or argument.kind == "key" then
      check_argument(command, position, nil, 0)
    elseif argument.kind == "op" then
      local values = good_values(command)
      recorder.reset()
      values[position] = nil
      call(command, values)
      local got = support.only_call()
      luaunit.assertEquals(got[position], 0)
      luaunit.assertNil(got.op)
    elseif argument.kind == "name" then
      check_argument(command, position, nil, false)
    end
  end
end

function tests.unchecked_handles(command)
  for position, argument in ipairs(command.arguments) do
    if argument.kind == "key" then
      for _, plain in ipairs(support.plain_values) do check_argument(command, position, plain[2], 0) end
      check_argument(command, position, support.light, 0)
      check_argument(command, position, support.short_block, 0)
      check_argument(command, position, support.two_word_block, 0)
      check_argument(command, position, support.untyped_handle, 0x2000)
      check_argument(command, position, support.handle("_p_double", 0x3000), 0x3000)
      local record = tq.tq_mom_zrange_res_t()
      check_argument(command, position, record, support.pointer_of(record))
      luaunit.assertEquals(support.own_of(record), 1)
    end
  end
end

function tests.hard_numbers(command)
  local tables = {int = "int", unsigned = "unsigned", size_t = "unsigned", double = "double"}
  for position, argument in ipairs(command.arguments) do
    if tables[argument.kind] then
      for _, pair in ipairs(support.numbers[tables[argument.kind]]) do
        local values = good_values(command)
        recorder.reset()
        values[position] = pair[1]
        call(command, values)
        support.same_number(pair[2], support.only_call()[position])
      end
    end
  end
end

local kTimeouts = {
  {0, 0, 0}, {1.25, 1, 250000}, {-1.25, -1, -250000}, {0.5, 0, 500000}, {-0.5, 0, -500000}, {3, 3, 0},
  {"2.5", 2, 500000}, {"x", 0, 0}, {true, 0, 0}, {{}, 0, 0}, {some_key, 0, 0}, {0 / 0, 0, 0}, {1e-9, 0, 0},
  {1e10, 2147483647, 2147483647}, {-1e10, -2147483648, -2147483648}, {2147483648.5, 2147483647, 1500000},
  {1 / 0, 2147483647, 2147483647}, {-1 / 0, -2147483648, -2147483648},
}

function tests.timeouts(command)
  for position, argument in ipairs(command.arguments) do
    if argument.kind == "timeout" then
      for _, row in ipairs(kTimeouts) do
        check_argument(command, position, row[1], {seconds = row[2], microseconds = row[3]})
      end
      check_argument(command, position, nil, {seconds = 0, microseconds = 0})
    end
  end
end

-- Handles that a call borrows keep what they are.
function tests.arguments_keep_their_ownership(command)
  local values = good_values(command)
  call(command, values)
  for position, argument in ipairs(command.arguments) do
    if argument.kind == "global" or argument.kind == "op" or argument.kind == "res" or argument.kind == "void" then
      luaunit.assertEquals(support.own_of(values[position]), 1)
    end
    if argument.kind == "op" then luaunit.assertEquals(values[position].flag, 5) end
  end
end

for _, command in ipairs(catalog.commands) do
  for name, test in pairs(tests) do
    TestCommands["test_" .. command.name .. "_" .. name] = function() test(command) end
  end
end

function TestCommands:test_the_catalogue_is_complete()
  local names = {}
  for name, value in pairs(tq) do
    if type(value) == "function" then names[name] = true end
  end
  for _, command in ipairs(catalog.commands) do
    luaunit.assertEquals(type(tq[command.name]), "function", command.name)
    names[command.name] = nil
  end
  luaunit.assertEquals(names, {})
end

support.run()

-- tq_kit.show: values as text.
local luaunit = require "luaunit"
local kit = require "kit"
local tq_kit = require "tq_kit"
local tq, tq_obj, key, number, db = kit.tq, kit.tq_obj, kit.key, kit.number, kit.db
local show = tq_kit.show

TestShow = kit.suite()

function TestShow:testPlainValues()
  luaunit.assertEquals(show(nil), "nil")
  luaunit.assertEquals(show(true), "true")
  luaunit.assertEquals({show(5), show(5.0), show(1.5), show(-0.25), show(math.huge)}, {"5", "5", "1.5", "-0.25", "inf"})
  luaunit.assertEquals(show("text"), '"text"')
  luaunit.assertEquals(show('a"b\\c\n\t\0\255'), [["a\"b\\c\n\t\x00\xff"]])
  luaunit.assertEquals(show(string.rep("x", 200)), '"' .. string.rep("x", 200) .. '"')
  luaunit.assertEquals(show(string.rep("x", 5000)), '"' .. string.rep("x", 200) .. '"... (5000 bytes)')
  luaunit.assertEquals(show(print), tostring(print))
  luaunit.assertEquals(show(io.stdout), tostring(io.stdout)) -- no handle
end

function TestShow:testTables()
  luaunit.assertEquals(show({}), "{}")
  luaunit.assertEquals(show({1, "a", x = true, ["a b"] = 2, [10] = 3, [true] = 4}),
    [[{1, "a", [true] = 4, [10] = 3, ["a b"] = 2, x = true}]])
  luaunit.assertEquals(show({{1}, {y = {}}}), "{{1}, {y = {}}}")
  local loop = {}
  loop.own = loop
  luaunit.assertEquals(show(loop), "{own = <above>}")
  local twice = {1}
  luaunit.assertEquals(show({twice, twice}), "{{1}, {1}}") -- not a loop
  local deep = {}
  for _ = 1, 20 do deep = {deep} end
  luaunit.assertEquals(show(deep), "{{{{{{{{...}}}}}}}}")
end

function TestShow:testLongTables()
  local list = {}
  for i = 1, 25 do list[i] = i end
  luaunit.assertEquals(show(list), "{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, ... (25 elements)}")
  luaunit.assertEquals(show(list, 2), "{1, 2, ... (25 elements)}")
  luaunit.assertEquals(show(list, 25), "{" .. table.concat(list, ", ") .. "}")
  luaunit.assertEquals(show({string.rep("a", 60), string.rep("b", 60)}),
    '{\n  "' .. string.rep("a", 60) .. '",\n  "' .. string.rep("b", 60) .. '"\n}')
end

function TestShow:testObjects()
  local object = key("k", "v")
  luaunit.assertEquals(show(object), 'tq_obj {key = "k", value = "v"}')
  luaunit.assertEquals(show({object, object}), "{" .. show(object) .. ", " .. show(object) .. "}") -- not a loop
  object.value, object[7], object[1] = nil, "seven", ""
  luaunit.assertEquals(show(object), 'tq_obj {key = "k", value = nil, [1] = "", [7] = "seven"}')
  object:__disown()
  number(0, tq.tq_obj_free(object))
  luaunit.assertEquals(show(object), "tq_obj <the tq_obj was released>")
end

-- Every class shows every field that its objects have: as many as there are getters.
function TestShow:testEveryRecord()
  local count = 0
  for name, class in pairs(kit.module) do
    local instance = type(class) == "table" and (getmetatable(class) or {})[".instance"]
    if instance then
      local record = class()
      local text = show(record)
      luaunit.assertStrContains(text, name .. " {")
      for field in pairs(instance[".get"]) do luaunit.assertStrContains(text, field .. " = ") end
      count = count + 1
    end
  end
  luaunit.assertTrue(count > 60)
end

function TestShow:testResults()
  local g = self.g
  tq_kit.load(g, db, {z = {scores = {a = 1.5, b = 2}}, h = {fields = {[1] = "up", [7] = "z"}}, s = "text"})
  local sorted = tq.zrange(g, db, key("z"), 0, -1)
  luaunit.assertEquals(show(sorted), [[
tq_mom_zrange_res_t {
  error_code = 0,
  score = {1.5, 2},
  value = {tq_obj {key = "z", value = "a"}, tq_obj {key = "z", value = "b"}}
}]])
  number(0, tq.zrange_res_free(sorted))
  local hash = tq.hgetall(g, db, key("h"))
  luaunit.assertStrContains(show(hash), 'value = tq_obj {key = "h", value = nil, [1] = "up", [7] = "z"}')
  luaunit.assertStrContains(show(hash), "field_tag = {1, 7}")
  number(0, tq.hash_res_free(hash))
  local string = tq.get_ext(g, db, nil, key("s"))
  luaunit.assertEquals(show(string), 'tq_mom_get_res_t {error_code = 0, value = tq_obj {key = "s", value = "text"}}')
  number(0, tq.get_res_free(string))
end

function TestShow:testLongResults()
  local g = self.g
  local elements = {}
  for i = 1, 40 do elements[i] = "e" .. i end
  tq_kit.load(g, db, {l = {elements = elements}})
  local result = tq.lrange(g, db, key("l"), 0, -1)
  local text = show(result, 3)
  luaunit.assertStrContains(text, '"e3"')
  luaunit.assertNotStrContains(text, '"e4"')
  luaunit.assertStrContains(text, "... (40 elements)")
  number(0, tq.lrange_res_free(result))
end

function TestShow:testMessages()
  local message = tq_obj.message{db = db, key = "fan", value = "stalled\0"}
  luaunit.assertStrContains(show(message), [[key = "fan",]])
  luaunit.assertStrContains(show(message), [[value = "stalled\x00"]])
  local element = tq.convertPtrToScanAllMsg(tq_obj.scan_message{key = "k", value = "v"})
  luaunit.assertEquals(show(element), 'tq_mom_scan_all_msg_t {key = "k", value = "v", vlen = 1}')
end

function TestShow:testTheRuntime()
  local text = show(self.g)
  luaunit.assertStrContains(text, "master = tq_thread_master <above>") -- the event names its master
  luaunit.assertStrMatches(text, "tq_global_t {\n.*cur_thread = tq_thread {.*name = \"kit\".*")
  luaunit.assertStrMatches(text, ".*rmc = <struct tq_mom_client_s %* 0x%x+>.*")
end

function TestShow:testUntypedHandles()
  local event = tq.tq_thread()
  event.zg = self.g
  luaunit.assertStrMatches(show(event.zg), "<void %* 0x%x+>")
  local object = key("k", "v")
  event.zg = object
  luaunit.assertEquals(show(event.zg), 'tq_obj {key = "k", value = "v"}')
end

function TestShow:testWrongArguments()
  for _, what in ipairs({0, -1, 1.5, "2", {}}) do
    luaunit.assertErrorMsgContains("bad argument #2 to 'show' (count of elements, 1 or more, expected, got " .. type(what),
      show, {}, what)
  end
end

-- Prints like print, but for what print has no words for.
function TestShow:testPrinter()
  local printed
  local print_line = tq_kit.printer(function(...) printed = table.pack(...) end)
  print_line(1, 1.0, "text", nil, {1, "a"}, key("k", "v"), nil)
  luaunit.assertEquals(printed,
    table.pack(1, 1.0, "text", nil, '{1, "a"}', 'tq_obj {key = "k", value = "v"}', nil))
  print_line()
  luaunit.assertEquals(printed.n, 0)
  luaunit.assertErrorMsgContains("bad argument #1 to 'printer' (function expected, got string)", tq_kit.printer, "print")
end

kit.run()

-- The tq_obj module.
local luaunit = require "luaunit"
local kit = require "kit"
local tq, tq_obj, number, db = kit.tq, kit.tq_obj, kit.number, kit.db

TestObjects = kit.suite()

local function get(object, name) return object[name] end
local function set(object, name, value) object[name] = value end

local function raises(text, f, ...)
  luaunit.assertErrorMsgContains(text, f, ...)
end

function TestObjects:testModule()
  luaunit.assertTrue(rawequal(_G.tq_obj, tq_obj))
  luaunit.assertTrue(rawequal(require "tq_obj", tq_obj))
  local names = {}
  for name in pairs(tq_obj) do names[#names + 1] = name end
  luaunit.assertItemsEquals(names, {"new", "from", "bytes", "message", "scan_message", "tq_obj"})
end

function TestObjects:testNew()
  local object = tq_obj.new("k")
  luaunit.assertEquals({object.key, object.value}, {"k", nil})
  object = tq_obj.new("k", "v")
  luaunit.assertEquals({object.key, object.value}, {"k", "v"})
  object = tq_obj.tq_obj("k", "v") -- the class itself
  luaunit.assertEquals({object.key, object.value}, {"k", "v"})
  luaunit.assertEquals(tq_obj.new("k", "").value, "")
  luaunit.assertEquals(tq_obj.new("k", "c\0d").value, "c\0d")
  luaunit.assertNil(tq_obj.new("k", nil).value)
  luaunit.assertEquals({tq_obj.new(5, 1.5).key, tq_obj.new(5, 1.5).value}, {"5", "1.5"})
  luaunit.assertEquals(swig_type(object), "tq_obj *")
end

function TestObjects:testNewErrors()
  for _, what in ipairs({{}, true, print, io.stdout}) do
    raises("key of a tq_obj", tq_obj.new, what)
    raises("value of a tq_obj", tq_obj.new, "k", what)
    raises("key of a tq_obj", tq_obj.tq_obj, what)
  end
  raises("key of a tq_obj", tq_obj.new)
  raises("key of a tq_obj", tq_obj.new, nil, "v")
  raises("key of a tq_obj: string expected, got tq_obj *", tq_obj.new, tq_obj.new("k"))
end

-- Keys that no command takes are refused where they are given.
function TestObjects:testKeysOfNoUse()
  local object = tq_obj.new(string.rep("k", 511))
  luaunit.assertEquals(#object.key, 511)
  local refused = {
    [""] = "it is empty", [string.rep("k", 512)] = "it has 512 bytes, and no command takes more than 511",
    ["a\0b"] = "byte 2 is a NUL", ["\0"] = "byte 1 is a NUL",
  }
  for key, reason in pairs(refused) do
    raises("key of a tq_obj: " .. reason, tq_obj.new, key, "v")
    raises("key of a tq_obj: " .. reason, tq_obj.tq_obj, key)
    raises("key of a tq_obj: " .. reason, set, object, "key", key)
  end
  luaunit.assertEquals(#object.key, 511)
end

function TestObjects:testKeyAndValue()
  local object = tq_obj.new("k", "v")
  object.key = "other"
  luaunit.assertEquals(object.key, "other")
  object.value = "a\0b"
  luaunit.assertEquals(object.value, "a\0b")
  object.value = ""
  luaunit.assertEquals(object.value, "")
  object.value = nil
  luaunit.assertNil(object.value)
  object.value = 12
  luaunit.assertEquals(object.value, "12")
  object.value = object.value .. object.key
  luaunit.assertEquals(object.value, "12other")
  raises("key of a tq_obj", set, object, "key", nil)
  raises("key of a tq_obj", set, object, "key", {})
  raises("value of a tq_obj", set, object, "value", {})
  raises("value of a tq_obj", set, object, "value", false)
  luaunit.assertEquals({object.key, object.value}, {"other", "12other"})
end

function TestObjects:testNumberedFields()
  local object = tq_obj.new("k")
  luaunit.assertNil(object[3])
  object[3] = "up"
  object[0], object[4294967295], object[1] = "zero", "last", "a\0b"
  object[2.0] = "two"
  luaunit.assertEquals(object[3], "up")
  luaunit.assertEquals(object[3.0], "up")
  luaunit.assertEquals(object[2], "two")
  luaunit.assertEquals(object:fields(), {[0] = "zero", "a\0b", "two", "up", [4294967295] = "last"})
  object[3] = "down"
  object[1] = nil
  object[9] = nil
  object[0] = ""
  luaunit.assertEquals(object:fields(), {[0] = "", [2] = "two", [3] = "down", [4294967295] = "last"})
  object[2] = 7
  luaunit.assertEquals(object[2], "7")
  luaunit.assertEquals({object.key, object.value}, {"k", nil})
end

function TestObjects:testFieldErrors()
  local object = tq_obj.new("k")
  for _, name in ipairs({-1, 4294967296, 1.5, math.huge, 0 / 0, math.maxinteger, 2 ^ 53}) do
    raises("a tq_obj has no field", get, object, name)
    raises("a tq_obj has no field", set, object, name, "v")
  end
  for _, name in ipairs({"color", "3", "", true, {}, print}) do
    luaunit.assertNil(object[name])
    raises("a tq_obj has no field", set, object, name, "v")
  end
  raises("field of a tq_obj", set, object, 3, {})
  raises("field of a tq_obj", set, object, 3, true)
  luaunit.assertEquals(object:fields(), {})
end

function TestObjects:testFieldsIsACopy()
  local object = tq_obj.new("k")
  object[1] = "a"
  local fields = object:fields()
  fields[1] = "b"
  luaunit.assertEquals(object[1], "a")
  raises("tq_obj expected", object.fields)
  raises("tq_obj expected", object.fields, {})
  raises("tq_obj expected, got struct tq_mom_get_op_s *", object.fields, tq.get_op_t())
end

function TestObjects:testToString()
  luaunit.assertEquals(tostring(tq_obj.new("k")), "tq_obj(k)")
  luaunit.assertEquals(tostring(tq_obj.new("k", "v")), "tq_obj(k = v)")
  luaunit.assertEquals(tostring(tq_obj.new("k", "a\0b")), "tq_obj(k = a\0b)")
  luaunit.assertEquals(tostring(tq_obj.new(string.rep("k", 500), string.rep("v", 5000))),
    "tq_obj(" .. string.rep("k", 500) .. " = " .. string.rep("v", 5000) .. ")")
end

-- A push may collect the handle that owns the object, while its text is made through another.
function TestObjects:testToStringOfAnObjectThatIsCollected()
  local key = string.rep("k", 500)
  local function alias_of_garbage() return tq_obj.from(tq_obj.new(key, "v")) end
  local pause, step = collectgarbage("setpause", 1), collectgarbage("setstepmul", 100000000)
  for _ = 1, 50 do
    collectgarbage("stop")
    local alias = alias_of_garbage()
    collectgarbage("restart")
    local text = tostring(alias)
    if text ~= "tq_obj (released)" then luaunit.assertStrMatches(text, "tq_obj%(.*%)") end -- it was, before the call
  end
  collectgarbage("setpause", pause)
  collectgarbage("setstepmul", step)
end

function TestObjects:testEquality()
  local one, two = tq_obj.new("k", "v"), tq_obj.new("k", "v")
  luaunit.assertTrue(one == one)
  luaunit.assertFalse(one == two) -- equal contents, two objects
  luaunit.assertTrue(one == tq_obj.from(one))
  luaunit.assertTrue(swig_equals(one, tq_obj.from(one)))
  luaunit.assertFalse(one == "k")
end

function TestObjects:testFrom()
  local object = tq_obj.new("k", "v")
  local event = tq.tq_thread()
  event.zg = object
  local from = tq_obj.from(event.zg)
  luaunit.assertEquals({swig_type(event.zg), swig_type(from)}, {"void *", "tq_obj *"})
  luaunit.assertEquals(from.value, "v")
  from.value = "w"
  luaunit.assertEquals(object.value, "w")
  from = nil
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals(object.value, "w") -- collecting the second handle releases nothing
  luaunit.assertNil(tq_obj.from(nil))
  for _, what in ipairs({5, "text", {}, io.stdout, tq.get_op_t(), self.g}) do
    raises("handle of a value object expected", tq_obj.from, what)
  end
  raises("handle of a value object expected", tq_obj.from)
end

function TestObjects:testBytes()
  local record = tq.tq_mom_pubsub_msg_t()
  local g = self.g
  number(0, tq.set(g, db, tq_obj.new("k", "a\0bcd")))
  tq.scan(g, db, tq_obj.new("k"), 0, function(_, message)
    local element = tq.convertPtrToScanAllMsg(message)
    luaunit.assertEquals(tq_obj.bytes(element.value, element.vlen), "a\0bcd")
    luaunit.assertEquals(tq_obj.bytes(element.value, 3), "a\0b")
    luaunit.assertEquals(tq_obj.bytes(element.value, 0), "")
    record.value = element.value
    luaunit.assertEquals(tq_obj.bytes(record.value, 2), "a\0")
    record.value = nil
  end, nil)
  luaunit.assertEquals(tq_obj.bytes(nil, 0), "")
  raises("handle expected", tq_obj.bytes, nil, 1)
  raises("handle expected", tq_obj.bytes, "text", 4)
  raises("handle expected", tq_obj.bytes, {}, 4)
  raises("length expected", tq_obj.bytes, record, -1)
  raises("length expected", tq_obj.bytes, record, 1.5)
  raises("length expected", tq_obj.bytes, record, {})
  raises("length expected", tq_obj.bytes, record)
end

function TestObjects:testMessage()
  local message = tq_obj.message{
    db = 4, key = "port/1", field = "speed", cmd = tq.TQ_MOM_PUBLISH, value = "up\0!", flag = tq.TQ_MOM_SCAN_OVER,
    db_id = 5, cluster_id = 6, error = -1,
  }
  luaunit.assertEquals(
    {message.db, message.key, message.field, message.cmd, message.length, message.flag, message.db_id,
     message.cluster_id, message.error},
    {4, "port/1", "speed", tq.TQ_MOM_PUBLISH, 4, tq.TQ_MOM_SCAN_OVER, 5, 6, -1})
  luaunit.assertEquals(tq_obj.bytes(message.value, message.length), "up\0!")
  luaunit.assertEquals(swig_type(message), swig_type(tq.tq_mom_pubsub_msg_t()))
  message.key, message.value = "other", nil -- a record like any other
  luaunit.assertEquals({message.key, message.value}, {"other", nil})

  message = tq_obj.message{}
  luaunit.assertEquals({message.db, message.key, message.value, message.length}, {0, "", nil, 0})
  message = tq_obj.message{value = ""}
  luaunit.assertEquals(tq_obj.bytes(message.value, message.length), "")
  message = tq_obj.message{value = string.rep("v", 100000)}
  luaunit.assertEquals(tq_obj.bytes(message.value, message.length), string.rep("v", 100000))
  message = nil
  collectgarbage()
  collectgarbage()
end

function TestObjects:testMessageErrors()
  for _, what in ipairs({"text", 5, true, tq.get_op_t()}) do
    raises("bad argument #1: table with a message's fields expected", tq_obj.message, what)
    raises("bad argument #1: table with a message's fields expected", tq_obj.scan_message, what)
  end
  raises("table with a message's fields expected", tq_obj.message)
  raises("a message has no field 'text'", tq_obj.message, {text = "v"})
  raises("a message has no field '1'", tq_obj.message, {"v"})
  raises("a message has no field 'true'", tq_obj.message, {[true] = "v"})
  raises("length of a message: it is that of the value", tq_obj.message, {value = "v", length = 5})
  raises("value of a message: string or nil expected, got table", tq_obj.message, {value = {}})
  raises("value of a message: string or nil expected, got number", tq_obj.message, {value = 5})
  raises("tq_mom_pubsub_msg_s::db", tq_obj.message, {db = "four"})
  raises("key of a message: string expected, got nil", tq_obj.scan_message, {value = "v"})
  raises("key of a message: string or nil expected, got number", tq_obj.scan_message, {key = 5})
  raises("value of a message: string or nil expected, got boolean", tq_obj.scan_message, {key = "k", value = true})
end

-- A handler for a scan sees what a scan gives it.
function TestObjects:testScanMessage()
  local g, seen = self.g, {}
  local function handler(_, message)
    local element = tq.convertPtrToScanAllMsg(message)
    seen[#seen + 1] = {swig_type(message), element.key, element.vlen, tq_obj.bytes(element.value, element.vlen)}
  end
  number(0, tq.set(g, db, tq_obj.new("k", "a\0b")))
  number(1, tq.scan(g, db, tq_obj.new("k"), 0, handler, nil))
  handler(g, tq_obj.scan_message{key = "k", value = "a\0b"})
  luaunit.assertEquals(seen[2], seen[1])
  handler(g, tq_obj.scan_message{key = "list"}) -- of another kind than a string
  luaunit.assertEquals({table.unpack(seen[3], 2)}, {"list", 0, ""})
end

-- What a released object's handles say.
function TestObjects:testUseAfterRelease()
  local object = tq_obj.new("k", "v")
  local second = tq_obj.from(object)
  object:__disown()
  number(0, tq.tq_obj_free(object))
  for _, handle in ipairs({object, second}) do
    raises("released", get, handle, "key")
    raises("released", get, handle, "value")
    raises("released", get, handle, 1)
    raises("released", set, handle, "key", "k")
    raises("released", set, handle, "value", "v")
    raises("released", set, handle, 1, "v")
    raises("released", handle.fields, handle)
    luaunit.assertEquals(tostring(handle), "tq_obj (released)")
    raises("handle of a value object expected", tq_obj.from, handle)
    number(kit.INPUT_ERR, tq.set(self.g, db, handle))
    number(kit.INPUT_ERR, tq.tq_obj_free(handle))
  end
  luaunit.assertTrue(object == second)
end

-- An object that was released by hand while Lua owns it is not released twice.
function TestObjects:testReleasedWhileOwned()
  local object = tq_obj.new("k", "v")
  number(0, tq.tq_obj_free(object))
  luaunit.assertEquals(tostring(object), "tq_obj (released)")
  object = nil
  kit.assert_nothing_live()
end

function TestObjects:testLuaOwnsNewObjects()
  for i = 1, 100 do tq_obj.new("k" .. i, "v") end
  kit.assert_nothing_live()
  local object = tq_obj.new("k", "v")
  object:__disown()
  local untyped = tq.tq_thread()
  untyped.zg = object
  object = nil
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals({kit.probe.live()}, {0, 1})
  number(0, tq.tq_obj_free(tq_obj.from(untyped.zg)))
end

-- The objects of results are the results': the module gives them its class, but never releases them.
function TestObjects:testObjectsOfResults()
  local g = self.g
  number(0, tq.set(g, db, tq_obj.new("k", "v")))
  local result = tq.get_ext(g, db, nil, tq_obj.new("k"))
  luaunit.assertEquals(tostring(result.value), "tq_obj(k = v)")
  result.value.value = "w"
  luaunit.assertEquals(result.value.value, "w")
  collectgarbage()
  collectgarbage()
  luaunit.assertEquals(result.value.value, "w")
  number(0, tq.get_res_free(result))
end

function TestObjects:testManyFields()
  local object = tq_obj.new("k")
  for tag = 2000, 1, -1 do object[tag] = "v" .. tag end
  local fields = object:fields()
  luaunit.assertEquals(#fields, 2000)
  for tag = 1, 2000 do
    luaunit.assertEquals(fields[tag], "v" .. tag)
    if tag % 2 == 0 then object[tag] = nil end
  end
  luaunit.assertNil(object[2000])
  luaunit.assertEquals(object[1999], "v1999")
end

function TestObjects:testEqualityAndNamesOfOthers()
  luaunit.assertEquals(swig_type(tq_obj.new("k")), "tq_obj *")
  luaunit.assertEquals(select("#", swig_equals(tq_obj.new("k"), 5)), 0)
end

-- The texts are those of accessors: without a position, whether or not somebody watches the calls.
function TestObjects:testErrorsOfFieldsAreTheSameUnderADebugger()
  local object = tq_obj.new("k", "v")
  local wrong = {
    function() object.key = nil end,
    function() object.value = {} end,
    function() object[-1] = "x" end,
    function() return object.colour.x end,
  }
  local hook = table.pack(debug.gethook())
  for i, f in ipairs(wrong) do
    debug.sethook()
    local plain = select(2, pcall(f))
    debug.sethook(function() end, "c")
    local hooked = select(2, pcall(f))
    debug.sethook(table.unpack(hook))
    luaunit.assertEquals(hooked, plain)
    if i < #wrong then luaunit.assertNil(plain:find("objects_test.lua", 1, true), plain) end
  end
end

kit.run()

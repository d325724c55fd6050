-- Instance metatables, member dispatch, bases, ownership and collection, static tables.
local luaunit = require "luaunit"
local catalog = require "catalog"
local support = require "support"

local recorder, tq = support.recorder, support.tq

local function metatable_of(name) return debug.getregistry().SWIG[name] end

TestInstances = {}

function TestInstances:test_metatable_keys()
  for _, class in ipairs(catalog.classes) do
    local metatable = metatable_of(class.name)
    local kinds = {}
    for key, value in pairs(metatable) do kinds[key] = type(value) end
    luaunit.assertEquals(kinds, {
      [".type"] = "string", [".bases"] = "table", [".get"] = "table", [".set"] = "table", [".fn"] = "table",
      [".static"] = "table", __index = "function", __newindex = "function", __gc = "function", __tostring = "function",
      __eq = "function",
    })
    luaunit.assertEquals(metatable[".type"], class.name)
    luaunit.assertEquals(metatable[".bases"], {})
    luaunit.assertIs(metatable[".static"], tq[class.name])
    local functions = {}
    for key in pairs(metatable[".fn"]) do functions[key] = true end
    luaunit.assertEquals(functions, {__disown = true})
    luaunit.assertNil(getmetatable(metatable))
  end
end

function TestInstances:test_tostring()
  local object = tq.get_op_t()
  luaunit.assertEquals(tostring(object), string.format("<get_op_t userdata: 0x%x>", recorder.address(object)))
  luaunit.assertNotEquals(recorder.address(object), support.pointer_of(object))
end

-- The class's ".type" is what is shown.
function TestInstances:test_tostring_reads_the_type_entry()
  local object = tq.get_op_t()
  local metatable = metatable_of("get_op_t")
  metatable[".type"] = "renamed"
  local text = tostring(object)
  metatable[".type"] = "get_op_t"
  luaunit.assertStrContains(text, "<renamed userdata: 0x")
end

function TestInstances:test_equality()
  local owner = tq.tq_mom_get_res_t()
  local view = tq.convertPtrToGetRes(owner)
  luaunit.assertEquals({support.own_of(owner), support.own_of(view)}, {1, 0})
  luaunit.assertFalse(rawequal(owner, view))
  luaunit.assertTrue(owner == view)
  luaunit.assertFalse(owner ~= view)
  luaunit.assertTrue(owner == tq.convertPtrToListRes(owner))
  luaunit.assertFalse(owner == tq.tq_mom_get_res_t())
  luaunit.assertFalse(owner == 1)
  luaunit.assertTrue(metatable_of("tq_mom_get_res_t").__eq == swig_equals)
end

TestMembers = {}

function TestMembers:setUp()
  recorder.reset()
  self.object = tq.psetex_op_t()
  self.metatable = metatable_of("psetex_op_t")
  self.parts = {}
  for _, part in ipairs {".get", ".set", ".fn"} do
    self.parts[part] = {}
    for key, value in pairs(self.metatable[part]) do self.parts[part][key] = value end
  end
end

function TestMembers:tearDown()
  self.metatable[".bases"] = {}
  for _, name in ipairs {"__getitem", "__setitem"} do self.metatable[name] = nil end
  for part, entries in pairs(self.parts) do
    for key in pairs(self.metatable[part]) do self.metatable[part][key] = entries[key] end
  end
end

function TestMembers:test_fields()
  self.object.flag = 3
  self.object.milseconds = 4
  luaunit.assertEquals({self.object.flag, self.object.milseconds}, {3, 4})
end

local kNoSetter =
  "Assignment not possible. No setter/member with this name. For custom assignments implement __setitem method."

function TestMembers:test_unknown_members()
  for _, key in ipairs {"no_such_field", "FLAG", "", "flag\0", 1, 1.5, true, {}, print, self.object} do
    luaunit.assertNil(self.object[key])
    luaunit.assertEquals(select("#", self.metatable.__index(self.object, key)), 0)
    support.assignment_raises(kNoSetter, self.object, key, 1)
  end
  luaunit.assertNil(self.object[nil])
end

function TestMembers:test_the_assignment_error_names_the_line()
  local chunk = load("local o = ...\no.no_such_field = 1", "=assign")
  luaunit.assertErrorMsgEquals("assign:2: " .. kNoSetter, chunk, self.object)
end

-- Handles hold nothing of their own: a getter without a setter is an unknown member to an assignment.
function TestMembers:test_an_attribute_without_a_setter()
  self.metatable[".get"].virtual = recorder.cfunction(function() return 1 end)
  luaunit.assertEquals(self.object.virtual, 1)
  support.assignment_raises(kNoSetter, self.object, "virtual", 2)
end

function TestMembers:test_getters_are_called_with_the_object_alone()
  local seen
  self.metatable[".get"].virtual = recorder.cfunction(function(...)
    seen = table.pack(...)
    return "first", "second"
  end)
  luaunit.assertEquals(table.pack(self.metatable.__index(self.object, "virtual")), {"first", n = 1})
  luaunit.assertEquals(seen.n, 1)
  luaunit.assertTrue(rawequal(seen[1], self.object))
  self.metatable[".get"].nothing = recorder.cfunction(function() end)
  luaunit.assertEquals(table.pack(self.metatable.__index(self.object, "nothing")), {n = 1})
end

function TestMembers:test_setters_are_called_with_object_and_value()
  local seen
  self.metatable[".set"].virtual = recorder.cfunction(function(...)
    seen = table.pack(...)
    return 1, 2, 3
  end)
  luaunit.assertEquals(select("#", self.metatable.__newindex(self.object, "virtual", "v")), 0)
  luaunit.assertEquals({seen.n, rawequal(seen[1], self.object), seen[2]}, {2, true, "v"})
end

function TestMembers:test_lua_functions_are_no_getters_or_setters()
  self.metatable[".get"].virtual = function() error("called") end
  self.metatable[".set"].virtual = function() error("called") end
  luaunit.assertNil(self.object.virtual)
  support.assignment_raises(kNoSetter, self.object, "virtual", 1)
  local method = function() end
  self.metatable[".fn"].virtual = method
  luaunit.assertIs(self.object.virtual, method)
end

function TestMembers:test_methods_are_returned_uncalled()
  local method = function(object, argument) return rawequal(object, self.object) and argument end
  self.metatable[".fn"].method = method
  luaunit.assertIs(self.object.method, method)
  luaunit.assertEquals(self.object:method(7), 7)
  self.metatable[".fn"].native = print
  luaunit.assertIs(self.object.native, print)
  self.metatable[".fn"].number = 5
  luaunit.assertNil(self.object.number)
  luaunit.assertEquals(type(self.object.__disown), "function")
end

-- Fields win over methods of the same name.
function TestMembers:test_getter_before_method()
  self.metatable[".fn"].flag = function() end
  self.object.flag = 8
  luaunit.assertEquals(self.object.flag, 8)
end

-- The tables are read raw.
function TestMembers:test_metamethods_of_the_tables_do_not_count()
  local trap = {__index = function() error("read") end}
  setmetatable(self.metatable[".get"], trap)
  setmetatable(self.metatable[".set"], trap)
  setmetatable(self.metatable[".fn"], trap)
  setmetatable(self.metatable[".bases"], trap)
  local ok, value = pcall(function() return self.object.virtual end)
  setmetatable(self.metatable[".get"], nil)
  setmetatable(self.metatable[".set"], nil)
  setmetatable(self.metatable[".fn"], nil)
  luaunit.assertEquals({ok, value}, {true, nil})
end

function TestMembers:test_item_getter_comes_last()
  local seen
  self.metatable.__getitem = function(...)
    seen = table.pack(...)
    return "item", "more"
  end
  self.object.flag = 2
  luaunit.assertEquals(self.object.flag, 2)
  luaunit.assertNil(seen)
  luaunit.assertEquals(table.pack(self.metatable.__index(self.object, 42)), {"item", n = 1})
  luaunit.assertEquals({seen.n, rawequal(seen[1], self.object), seen[2]}, {2, true, 42})
  self.metatable.__getitem = rawequal
  luaunit.assertFalse(self.object[42])
  self.metatable.__getitem = "no function"
  luaunit.assertNil(self.object[42])
end

function TestMembers:test_an_item_getter_that_gives_nil_has_been_found()
  self.metatable.__getitem = function() end
  self.metatable[".bases"] = {{[".bases"] = {}, [".get"] = {}, [".fn"] = {}, __getitem = function() return "base" end}}
  luaunit.assertNil(self.object[42])
end

function TestMembers:test_item_setter()
  local seen
  self.metatable.__setitem = function(...)
    seen = table.pack(...)
    return "ignored"
  end
  self.object.flag = 6
  luaunit.assertEquals(self.object.flag, 6)
  luaunit.assertNil(seen)
  luaunit.assertEquals(select("#", self.metatable.__newindex(self.object, 1, "v")), 0)
  luaunit.assertEquals({seen.n, rawequal(seen[1], self.object), seen[2], seen[3]}, {3, true, 1, "v"})
  self.object[2] = nil
  luaunit.assertEquals({seen.n, seen[2], seen[3]}, {3, 2, nil})
  self.metatable.__setitem = "no function"
  support.assignment_raises(kNoSetter, self.object, 1, "v")
end

-- Bases made of plain tables of the documented shape.
local function base(entries)
  local made = {[".get"] = {}, [".set"] = {}, [".fn"] = {}, [".bases"] = {}}
  for key, value in pairs(entries) do made[key] = value end
  return made
end

function TestMembers:test_bases_are_searched_in_order_and_in_depth()
  local called = {}
  local function getter(name)
    return recorder.cfunction(function(object)
      called[#called + 1] = name
      luaunit.assertTrue(rawequal(object, self.object))
      return name
    end)
  end
  local grandparent = base {[".get"] = {deep = getter "grandparent", both = getter "grandparent"}}
  local first = base {[".bases"] = {grandparent}, [".get"] = {own = getter "first"}}
  local second = base {[".get"] = {own = getter "second", both = getter "second", late = getter "second"}}
  self.metatable[".bases"] = {first, second}
  luaunit.assertEquals({self.object.own, self.object.deep, self.object.both, self.object.late},
    {"first", "grandparent", "grandparent", "second"})
  luaunit.assertEquals(called, {"first", "grandparent", "grandparent", "second"})
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
  luaunit.assertNil(self.object.unknown)
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
end

function TestMembers:test_the_own_class_comes_before_its_bases()
  self.metatable[".bases"] = {base {
    [".get"] = {flag = recorder.cfunction(function() return "base" end)},
    [".fn"] = {__disown = print, inherited = print},
  }}
  self.object.flag = 4
  luaunit.assertEquals(self.object.flag, 4)
  luaunit.assertNotIs(self.object.__disown, print)
  luaunit.assertIs(self.object.inherited, print)
end

function TestMembers:test_gaps_among_bases_are_skipped()
  local bases = {false, base {[".fn"] = {inherited = print}}}
  bases[1] = nil
  luaunit.assertEquals(#bases, 2)
  self.metatable[".bases"] = bases
  luaunit.assertIs(self.object.inherited, print)
end

-- While a base is searched the object wears its metatable.
function TestMembers:test_the_metatable_during_the_search()
  local during
  local parent = base {}
  parent[".get"].virtual = recorder.cfunction(function(object)
    during = debug.getmetatable(object)
    return 1
  end)
  self.metatable[".bases"] = {parent}
  luaunit.assertEquals(self.object.virtual, 1)
  luaunit.assertIs(during, parent)
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
end

function TestMembers:test_item_getter_of_a_base()
  local parent = base {__getitem = function(_, key) return "item " .. tostring(key) end}
  self.metatable[".bases"] = {base {}, parent}
  luaunit.assertEquals(self.object[5], "item 5")
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
  -- A field of any base comes before the item getter of the class itself.
  parent[".get"].virtual = recorder.cfunction(function() return "field" end)
  self.metatable.__getitem = function() return "own item" end
  luaunit.assertEquals(self.object.virtual, "field")
  luaunit.assertEquals(self.object[5], "own item")
end

function TestMembers:test_setters_of_bases()
  local stored = {}
  local function setter(name)
    return recorder.cfunction(function(object, value)
      luaunit.assertTrue(rawequal(object, self.object))
      stored[#stored + 1] = name .. "=" .. value
    end)
  end
  local grandparent = base {[".set"] = {deep = setter "grandparent"}}
  local first = base {[".bases"] = {grandparent}, [".set"] = {own = setter "first"}}
  local second = base {__setitem = function(_, key, value) stored[#stored + 1] = key .. ":" .. value end}
  self.metatable[".bases"] = {first, second}
  self.object.own = 1
  self.object.deep = 2
  self.object.other = 3
  luaunit.assertEquals(stored, {"first=1", "grandparent=2", "other:3"})
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
  -- The item setter of the class itself comes before its bases.
  self.metatable.__setitem = function(_, key, value) stored[#stored + 1] = "item " .. key .. ":" .. value end
  self.object.own = 4
  luaunit.assertEquals(stored[4], "item own:4")
  self.metatable.__setitem = nil
  second.__setitem = nil
  support.assignment_raises(kNoSetter, self.object, "other", 5)
  luaunit.assertIs(debug.getmetatable(self.object), self.metatable)
end

-- Accessors that are plain Lua-visible closures behave like ours, errors included.
function TestMembers:test_errors_pass_through_the_dispatcher()
  self.metatable[".get"].virtual = recorder.cfunction(function() error("from the getter", 0) end)
  support.raises_bare("from the getter", support.get_field, self.object, "virtual")
  self.object.flag = 9
  luaunit.assertEquals(self.object.flag, 9)
end

-- Any C function will do, the module's own among them.
function TestMembers:test_functions_of_the_module_as_accessors()
  self.metatable[".get"].kind = swig_type
  luaunit.assertEquals(self.object.kind, "struct tq_mom_psetex_op_s *|tq_mom_psetex_op_s *|tq_mom_psetex_op_t *")
  self.metatable[".get"].same = swig_equals
  luaunit.assertEquals(table.pack(self.metatable.__index(self.object, "same")), {n = 1})
  self.metatable[".get"].text = self.metatable.__tostring
  luaunit.assertEquals(self.object.text, tostring(self.object))
  self.metatable[".get"].command = tq.debug_show_all
  support.raises_bare("Error in debug_show_all (arg 1), expected 'struct tq_global_s *|tq_global_s *|tq_global_t *' " ..
    "got 'struct tq_mom_psetex_op_s *|tq_mom_psetex_op_s *|tq_mom_psetex_op_t *'", support.get_field, self.object,
    "command")
  self.metatable[".set"].same = swig_equals
  luaunit.assertEquals(select("#", self.metatable.__newindex(self.object, "same", self.object)), 0)
end

function TestMembers:test_a_dispatcher_as_setter()
  self.metatable[".set"].read = self.metatable.__index
  luaunit.assertEquals(select("#", self.metatable.__newindex(self.object, "read", "flag")), 0)
  luaunit.assertEquals(select("#", self.metatable.__newindex(self.object, "read", "no_such_field")), 0)
end

-- A class that a script makes its own base: reads and writes end in an error.
function TestMembers:test_a_cycle_of_bases()
  self.metatable[".bases"][1] = self.metatable
  local read, read_error = pcall(support.get_field, self.object, "no_such_field")
  local written, write_error = pcall(function() self.object.no_such_field = 1 end)
  self.metatable[".bases"][1] = nil
  luaunit.assertFalse(read)
  luaunit.assertStrContains(read_error, "stack overflow in the bases of a class")
  luaunit.assertFalse(written)
  luaunit.assertStrContains(write_error, "stack overflow in the bases of a class")
  luaunit.assertNil(self.object.no_such_field)
end

-- What the debug library puts in the place of the constructor is called like any other value.
function TestMembers:test_a_constructor_that_is_no_function()
  local proxy = getmetatable(tq.get_op_t).__call
  local constructor
  for i = 1, debug.getinfo(proxy, "u").nups do
    local _, value = debug.getupvalue(proxy, i)
    if type(value) == "function" then
      constructor = value
      debug.setupvalue(proxy, i, 1)
      luaunit.assertErrorMsgContains("attempt to call a number value", tq.get_op_t)
      debug.setupvalue(proxy, i, value)
    end
  end
  luaunit.assertNotNil(constructor)
  luaunit.assertEquals(tq.get_op_t().flag, 0)
end

-- A debugger sees the accessor run, and messages stay the same under it.
function TestMembers:test_call_hooks()
  local seen = {}
  debug.sethook(function() seen[debug.getinfo(2, "f").func] = true end, "c")
  local ok, message = pcall(function()
    local _ = self.object.flag
    self.object.milseconds = "x"
  end)
  debug.sethook()
  luaunit.assertTrue(seen[self.metatable[".get"].flag])
  luaunit.assertTrue(seen[self.metatable[".set"].milseconds])
  luaunit.assertFalse(ok)
  luaunit.assertEquals(message, "Error in tq_mom_psetex_op_s::milseconds (arg 2), expected 'int' got 'string'")
end

TestOwnership = {}

function TestOwnership:setUp()
  collectgarbage()
  collectgarbage()
  recorder.reset()
end

function TestOwnership:test_collection_frees_an_owned_record_once()
  local blocks = recorder.live_blocks()
  local object = tq.get_op_t()
  local pointer = support.pointer_of(object)
  luaunit.assertTrue(recorder.is_live(pointer))
  object = nil
  collectgarbage()
  luaunit.assertFalse(recorder.is_live(pointer))
  luaunit.assertEquals(recorder.live_blocks(), blocks)
  luaunit.assertEquals(recorder.stray_frees(), 0)
end

function TestOwnership:test_disowned_records_stay()
  local object = tq.get_op_t()
  local pointer = support.pointer_of(object)
  luaunit.assertEquals(select("#", object:__disown()), 0)
  luaunit.assertEquals(support.own_of(object), 0)
  object = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(pointer))
  recorder.free(pointer)
end

function TestOwnership:test_views_free_nothing()
  local owner = tq.tq_mom_get_res_t()
  local pointer = support.pointer_of(owner)
  local view = tq.convertPtrToGetRes(owner)
  view = nil
  collectgarbage()
  luaunit.assertTrue(recorder.is_live(pointer))
  luaunit.assertEquals(support.own_of(owner), 1)
end

-- A script can call the hook, and the collector then calls it again.
function TestOwnership:test_the_hook_frees_once_and_leaves_the_words_as_they_are()
  local object = tq.get_op_t()
  local before = {recorder.words(object)}
  metatable_of("get_op_t").__gc(object)
  luaunit.assertEquals({recorder.words(object)}, before)
  luaunit.assertFalse(recorder.is_live(before[3]))
  metatable_of("get_op_t").__gc(object)
  object = nil
  collectgarbage()
  collectgarbage()
  local other = tq.get_op_t()
  other:__disown()
  metatable_of("get_op_t").__gc(other)
  luaunit.assertTrue(recorder.is_live(support.pointer_of(other)))
  recorder.free(support.pointer_of(other))
end

-- The destructor is that of the handle's type, whatever metatable runs the hook.
function TestOwnership:test_the_hook_asks_the_type()
  local hook = metatable_of("get_op_t").__gc
  local block = recorder.alloc(16)
  hook(support.handle("_p_double", block, 1))
  luaunit.assertTrue(recorder.is_live(block))
  hook(recorder.handle(0, 1, block))
  luaunit.assertTrue(recorder.is_live(block))
  hook(support.handle("_p_tq_mom_list_res_s", block, 1))
  luaunit.assertFalse(recorder.is_live(block))
end

function TestOwnership:test_many_records()
  local blocks = recorder.live_blocks()
  for _ = 1, 3 do
    for _, class in ipairs(catalog.classes) do tq[class.name]() end
  end
  collectgarbage()
  luaunit.assertEquals(recorder.live_blocks(), blocks)
  luaunit.assertEquals(recorder.stray_frees(), 0)
end

TestStatics = {}

function TestStatics:test_static_tables()
  for _, class in ipairs(catalog.classes) do
    local static = tq[class.name]
    luaunit.assertEquals(type(static), "table")
    local metatable = getmetatable(static)
    local kinds = {}
    for key, value in pairs(metatable) do kinds[key] = type(value) end
    luaunit.assertEquals(kinds, {
      [".get"] = "table", [".set"] = "table", [".fn"] = "table", __index = "function", __newindex = "function",
      __call = "function", [".instance"] = "table",
    })
    luaunit.assertIs(metatable[".instance"], metatable_of(class.name))
    if class.name ~= "tq_thread" and class.name ~= "tq_thread_master" then luaunit.assertNil(next(static)) end
  end
end

function TestStatics:test_constructors_see_the_arguments_of_the_script()
  support.raises_bare("Error in tq_mom_get_op_s::tq_mom_get_op_s expected 0..0 args, got 1", tq.get_op_t, 1)
  support.raises_bare("Error in tq_mom_get_op_s::tq_mom_get_op_s expected 0..0 args, got 2", tq.get_op_t, nil, nil)
  local proxy = getmetatable(tq.get_op_t).__call
  luaunit.assertEquals(support.type_of(proxy({})), support.type_of(tq.get_op_t()))
  luaunit.assertEquals(select("#", proxy({})), 1)
end

function TestStatics:test_scripts_may_extend_a_static_table()
  tq.get_op_t.note = "mine"
  luaunit.assertEquals(rawget(tq.get_op_t, "note"), "mine")
  tq.get_op_t.note = nil
  luaunit.assertNil(tq.get_op_t.note)
end

support.run()

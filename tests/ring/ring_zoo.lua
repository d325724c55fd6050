-- What the runtime does for modules other than tq_mom_sync: base classes, methods, metamethods and their inheritance,
-- variables, sub-namespaces, every kind of constant.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local module = require "tq_mom_sync"
local zoo = require "zoo"

local function collect()
  collectgarbage()
  collectgarbage()
end

local function new(class, members)
  local object = zoo[class]()
  for key, value in pairs(members or {}) do
    object[key] = value
  end
  return object
end

TestRing = {}

function TestRing:test_both_modules_are_in_one_ring()
  local record = peer.head()
  lu.assertEquals(#peer.ring(), 2)
  lu.assertEquals(peer.module(record).count, support.type_count)
  lu.assertEquals(peer.module(peer.module(record).next).count, 9)
  lu.assertIs(package.loaded.zoo, _G.zoo)
  lu.assertEquals(module.get_op_t().flag, 0)
end

TestBases = {}

function TestBases:test_are_resolved_by_mangled_and_readable_name()
  local function bases(mangled)
    local result = {}
    for i, base in ipairs(peer.class(peer.type(peer.find(mangled)).class).bases) do
      result[i] = base and peer.class(base).qualified_name
    end
    return result
  end
  lu.assertEquals(bases "_p_zoo_Animal", {})
  lu.assertEquals(bases "_p_zoo_Dog", { "zoo.Animal" })
  lu.assertEquals(bases "_p_zoo_Puppy", { "zoo.Dog" })
  lu.assertEquals(bases "_p_zoo_RoboDog", { "zoo.Dog", false, "zoo.Robot" })
  lu.assertEquals(bases "_p_zoo_Orphan", { false })
end

function TestBases:test_metatables_list_the_resolved_bases()
  local classes = registry.SWIG
  lu.assertEquals(#classes["zoo.Animal"][".bases"], 0)
  lu.assertIs(classes["zoo.Dog"][".bases"][1], classes["zoo.Animal"])
  lu.assertIs(classes["zoo.Puppy"][".bases"][1], classes["zoo.Dog"])
  lu.assertEquals(#classes["zoo.RoboDog"][".bases"], 2)
  lu.assertIs(classes["zoo.RoboDog"][".bases"][1], classes["zoo.Dog"])
  lu.assertIs(classes["zoo.RoboDog"][".bases"][2], classes["zoo.Robot"])
  lu.assertEquals(#classes["zoo.Orphan"][".bases"], 0)
end

function TestBases:test_classes_are_kept_under_the_qualified_name()
  lu.assertNil(registry.SWIG.Dog)
  lu.assertEquals(registry.SWIG["zoo.Dog"][".type"], "zoo.Dog")
  lu.assertNotNil(rawget(zoo, "Dog"))
  lu.assertIs(getmetatable(zoo.Dog)[".instance"], registry.SWIG["zoo.Dog"])
  lu.assertIs(registry.SWIG["zoo.Dog"][".static"], zoo.Dog)
end

function TestBases:test_a_class_without_bases_puts_its_own_statics_over_what_is_nested_in_it()
  lu.assertEquals({ zoo.Shape.Lid, zoo.Shape.small }, { 8, 9 })
  lu.assertEquals(registry.SWIG["zoo.Shape.Lid"][".static"].__index, nil)
end

TestMembers = {}

function TestMembers:test_attributes_of_the_class_and_its_bases()
  local puppy = zoo.Puppy()
  lu.assertEquals({ puppy.age, puppy.tricks, puppy.kind }, { 0, 0, "animal" })
  puppy.age = 2
  puppy.tricks = 3
  lu.assertEquals({ puppy.age, puppy.tricks }, { 2, 3 })
  lu.assertNil(puppy.battery)
  lu.assertErrorMsgContains("Assignment not possible", function() puppy.battery = 1 end)
end

function TestMembers:test_a_second_base_at_another_address()
  local dog = new("RoboDog", { age = 1, tricks = 2, battery = 3 })
  lu.assertEquals({ dog.age, dog.tricks, dog.battery }, { 1, 2, 3 })
  local _, _, pointer = peer.words(dog)
  lu.assertEquals(peer.peek_int(pointer, 0), 1)
  lu.assertEquals(peer.peek_int(pointer, 1), 2)
  lu.assertEquals(peer.peek_int(pointer, 2), 3)
end

function TestMembers:test_item_access_of_a_base_comes_last()
  local dog = zoo.RoboDog()
  dog[1], dog[4] = 11, 44
  lu.assertEquals({ dog[1], dog[2], dog[4] }, { 11, 0, 44 })
  lu.assertNil(dog[5])
  lu.assertNil(dog.nothing)
  dog.age = 9
  lu.assertEquals(dog.age, 9)
  lu.assertErrorMsgContains("no such slot", function() dog[5] = 1 end)
end

function TestMembers:test_methods_and_overriding()
  lu.assertEquals(zoo.Animal():speak(), "...")
  local puppy = zoo.Puppy()
  lu.assertEquals(puppy:speak(), "woof")
  puppy:birthday()
  puppy:birthday()
  lu.assertEquals(puppy.age, 2)
  lu.assertIs(puppy.birthday, zoo.Animal().birthday)
end

function TestMembers:test_read_only_attributes()
  local dog = zoo.Dog()
  lu.assertErrorMsgContains("Assignment not possible", function() dog.kind = "cat" end)
  local ok, message = pcall(function() dog.fixed = "cat" end)
  lu.assertEquals({ ok, message }, { false, "This variable is immutable" })
  ok, message = pcall(function() zoo.Animal().fixed = 1 end)
  lu.assertEquals({ ok, message }, { false, "This variable is immutable" })
  lu.assertEquals(dog.fixed, "animal")
end

function TestMembers:test_conversion_up_but_not_down()
  local age = registry.SWIG["zoo.Animal"][".get"].age
  local tricks = registry.SWIG["zoo.Dog"][".get"].tricks
  lu.assertEquals(age(zoo.RoboDog()), 0)
  lu.assertEquals(support.cast_names(peer.find "_p_zoo_Animal")[1], "_p_zoo_RoboDog")
  lu.assertEquals(age(zoo.Puppy()), 0)
  lu.assertEquals(support.cast_names(peer.find "_p_zoo_Animal")[1], "_p_zoo_Puppy")
  lu.assertErrorMsgContains("zoo::Dog * expected", tricks, zoo.Animal())
  lu.assertErrorMsgContains("zoo::Animal *|Beast * expected", age, module.get_op_t())
end

function TestMembers:test_a_class_propagates_to_a_type_that_stands_for_it()
  local egg = zoo.lay_egg()
  lu.assertEquals(swig_type(egg), "zoo::Egg *")
  lu.assertIs(getmetatable(egg), registry.SWIG["zoo.Animal"])
  lu.assertEquals(egg.age, 1)
end

TestMetamethods = {}

function TestMetamethods:test_of_the_class_itself()
  local a, b = new("Animal", { age = 3 }), new("Animal", { age = 4 })
  lu.assertEquals(a + b, 7)
  lu.assertTrue(a < b)
  lu.assertEquals(#b, 4)
  lu.assertEquals(tostring(b), "animal of 4")
  lu.assertFalse(a == b)
  b.age = 3
  lu.assertTrue(a == b)
  lu.assertEquals(table.pack(a("x", nil)), { 2, "x", nil, n = 3 })
end

function TestMetamethods:test_of_bases_through_two_levels()
  local a, b = new("Puppy", { age = 3 }), new("Puppy", { age = 4 })
  lu.assertEquals(a + b, 7)
  lu.assertTrue(a < b)
  lu.assertFalse(b < a)
  lu.assertEquals(#b, 4)
  lu.assertEquals(tostring(b), "animal of 4")
  lu.assertEquals(table.pack(a("x", "y", nil)), { 3, "x", "y", nil, n = 4 })
  lu.assertEquals(a * b, "dog product")
  b.age = 3
  lu.assertTrue(a == b)
end

function TestMetamethods:test_the_first_base_wins()
  local dog = zoo.RoboDog()
  lu.assertEquals(dog * dog, "dog product")
  lu.assertEquals(-dog, "robot negated")
  lu.assertEquals(dog + dog, 0)
end

function TestMetamethods:test_only_inheritable_ones_get_proxies()
  local function proxies(class)
    local names = {}
    for _, name in ipairs { "__add", "__sub", "__mul", "__unm", "__len", "__eq", "__lt", "__le", "__call", "__tostring",
      "__gc", "__index", "__newindex", "__getitem", "__setitem" } do
      local value = registry.SWIG[class][name]
      if value and debug.getupvalue(value, 2) and select(2, debug.getupvalue(value, 1)) == name then
        names[#names + 1] = name
      end
    end
    return table.concat(names, " ")
  end
  lu.assertEquals(proxies "zoo.Animal", "")
  lu.assertEquals(proxies "zoo.Dog", "__add __len __eq __lt __call __tostring")
  lu.assertEquals(proxies "zoo.Puppy", "__add __mul __len __eq __lt __call __tostring")
  lu.assertEquals(proxies "zoo.RoboDog", "__add __mul __unm __len __eq __lt __call __tostring")
  lu.assertEquals(proxies "zoo.Orphan", "")
  lu.assertNil(registry.SWIG["zoo.RoboDog"].__getitem)
end

function TestMetamethods:test_a_proxy_holds_its_name_and_its_class_record()
  local proxy = registry.SWIG["zoo.Puppy"].__add
  lu.assertEquals({ debug.getupvalue(proxy, 1) }, { "", "__add" })
  lu.assertEquals(select(2, debug.getupvalue(proxy, 2)), peer.type(peer.find "_p_zoo_Puppy").class)
  lu.assertNil(debug.getupvalue(proxy, 3))
end

function TestMetamethods:test_a_proxy_finds_the_metamethod_anew()
  local animal, dog = registry.SWIG["zoo.Animal"], registry.SWIG["zoo.Dog"]
  local original, dogs = animal.__add, dog.__add
  local puppy = zoo.Puppy()
  animal.__add = function() return "replaced" end
  lu.assertEquals(puppy + puppy, "replaced")
  dog.__add = function() return "nearer" end
  lu.assertEquals(puppy + puppy, "nearer")
  dog.__add, animal.__add = dogs, nil
  local line = debug.getinfo(1, "l").currentline + 1
  local ok, message = pcall(function() return puppy + puppy end)
  animal.__add = original
  lu.assertFalse(ok)
  lu.assertStrMatches(message, ".*ring_zoo%.lua:" .. line .. ": The metamethod proxy is set, but it failed to find "
    .. "actual metamethod%. Memory corruption is most likely explanation%.")
  lu.assertEquals(puppy + puppy, 0)
end

function TestMetamethods:test_a_proxy_passes_errors_on()
  lu.assertErrorMsgContains("zoo::Animal *|Beast * expected", function() return zoo.Puppy() + 1 end)
end

function TestMetamethods:test_defaults_where_neither_class_nor_base_has_them()
  local robot = zoo.Robot()
  lu.assertEquals(tostring(robot), ("<zoo.Robot userdata: %s>"):format(tostring(peer.address(robot)):match "0x%x+"))
  lu.assertIs(registry.SWIG["zoo.Robot"].__eq, swig_equals)
  lu.assertFalse(robot == zoo.Robot())
  lu.assertStrMatches(tostring(zoo.Orphan()), "<zoo%.Orphan userdata: 0x%x+>")
end

TestStatics = {}

function TestStatics:test_own_entries_over_those_of_bases()
  lu.assertEquals({ zoo.Animal.LEGS, zoo.Animal.KINGDOM, zoo.Animal.TAILS }, { 4, 1, nil })
  lu.assertEquals({ zoo.Dog.LEGS, zoo.Dog.KINGDOM, zoo.Dog.TAILS }, { 5, 1, 1 })
  lu.assertEquals({ zoo.Puppy.LEGS, zoo.Puppy.KINGDOM, zoo.Puppy.TAILS }, { 5, 1, 1 })
  lu.assertEquals(rawget(zoo.Puppy, "LEGS"), 5)
end

function TestStatics:test_a_later_base_over_an_earlier_one()
  lu.assertEquals({ zoo.RoboDog.LEGS, zoo.RoboDog.KINGDOM, zoo.RoboDog.TAILS }, { 2, 1, 1 })
end

function TestStatics:test_functions_and_variables_are_inherited()
  lu.assertEquals(zoo.Puppy.census(1, 2), 2)
  lu.assertEquals(zoo.Puppy.population, 3)
  zoo.Puppy.population = 4
  lu.assertEquals({ zoo.Animal.population, zoo.Dog.population }, { 4, 4 })
  zoo.Animal.population = 3
  lu.assertNil(rawget(zoo.Puppy, "population"))
  lu.assertNil(zoo.Robot.population)
end

function TestStatics:test_a_class_without_constructor_cannot_be_called()
  lu.assertErrorMsgContains("attempt to call", function() return zoo.Shape() end)
end

TestLifetime = {}

function TestLifetime:setUp()
  collect()
  zoo.destroyed()
end

function TestLifetime:test_owned_objects_are_destroyed_once()
  do
    local _ = zoo.Puppy(), zoo.Animal(), zoo.RoboDog()
  end
  collect()
  lu.assertEquals(zoo.destroyed(), 3)
  collect()
  lu.assertEquals(zoo.destroyed(), 0)
end

function TestLifetime:test_disowned_and_borrowed_objects_are_not()
  local pointer, descriptor
  do
    local puppy = zoo.Puppy()
    puppy:__disown()
    local own
    descriptor, own, pointer = peer.words(puppy)
    lu.assertEquals(own, 0)
    peer.new_handle(pointer, descriptor, false)
  end
  collect()
  lu.assertEquals(zoo.destroyed(), 0)
  peer.new_handle(pointer, descriptor, true)
  collect()
  lu.assertEquals(zoo.destroyed(), 1)
end

function TestLifetime:test_without_a_destructor_nothing_happens()
  do
    local shape = zoo.make_shape()
    lu.assertEquals(select(2, peer.words(shape)), 1)
  end
  collect()
  lu.assertEquals(zoo.destroyed(), 0)
end

TestVariables = {}

function TestVariables:test_read_and_write()
  lu.assertEquals(zoo.volume, 7)
  zoo.volume = 8
  lu.assertEquals(zoo.volume, 8)
  lu.assertNil(rawget(zoo, "volume"))
  lu.assertErrorMsgContains("number expected, got string", function() zoo.volume = "loud" end)
  zoo.volume = 7
end

function TestVariables:test_without_a_setter_an_assignment_hides_the_variable()
  lu.assertEquals(zoo.version, 2)
  zoo.version = "mine"
  lu.assertEquals(zoo.version, "mine")
  rawset(zoo, "version", nil)
  lu.assertEquals(zoo.version, 2)
end

function TestVariables:test_immutable()
  local ok, message = pcall(function() zoo.locked = 1 end)
  lu.assertEquals({ ok, message }, { false, "This variable is immutable" })
  lu.assertEquals(zoo.locked, 2)
  local setter = getmetatable(zoo)[".set"].locked
  local line = debug.getinfo(1, "l").currentline + 1
  ok, message = pcall(function() setter(1) end)
  lu.assertFalse(ok)
  lu.assertStrMatches(message, ".*ring_zoo%.lua:" .. line .. ": This variable is immutable")
end

function TestVariables:test_a_constant_hides_a_variable_and_a_function_a_constant()
  lu.assertEquals(zoo.INTEGER, -5)
  lu.assertEquals(zoo.LARGE(), 0)
end

TestNamespaces = {}

function TestNamespaces:test_are_fields_of_their_parent()
  lu.assertEquals(type(rawget(zoo, "cages")), "table")
  lu.assertEquals(zoo.cages.SIZE, 1)
  lu.assertEquals(zoo.cages.small.SIZE, 1)
  lu.assertNil(zoo.cages.empty.SIZE)
  lu.assertNil(zoo.small)
  lu.assertEquals(zoo.cages.census(1), 1)
end

function TestNamespaces:test_have_variables_and_classes()
  zoo.cages.volume = 9
  lu.assertEquals(zoo.volume, 9)
  zoo.volume = 7
  local cage = zoo.cages.Cage()
  lu.assertEquals(swig_type(cage), "zoo::Cage *")
  lu.assertStrMatches(tostring(cage), "<zoo%.cages%.Cage userdata: 0x%x+>")
  lu.assertNil(zoo.Cage)
end

TestConstants = {}

function TestConstants:test_numbers()
  lu.assertEquals(zoo.INTEGER, -5)
  lu.assertEquals(math.type(zoo.INTEGER), "integer")
  lu.assertEquals(zoo.FLOATING, 2.0)
  lu.assertEquals(math.type(zoo.FLOATING), "float")
  lu.assertEquals(zoo.LAST, 1)
end

function TestConstants:test_texts()
  lu.assertEquals({ zoo.STRING, zoo.EMPTY_STRING, zoo.NULL_STRING }, { "text", "", nil })
  lu.assertEquals({ zoo.CHARACTER, zoo.LOW_BYTE, zoo.NUL, zoo.HIGH }, { "x", "A", "\0", "\xff" })
end

function TestConstants:test_pointers()
  lu.assertEquals(swig_type(zoo.POINTER), "zoo::Animal *|Beast *")
  lu.assertEquals(swig_type(zoo.CLASSLESS_POINTER), "zoo::Egg *")
  lu.assertNil(rawget(zoo, "NULL_POINTER"))
  lu.assertEquals(zoo.cages.POINTER.age, 99)
  lu.assertTrue(swig_equals(zoo.cages.POINTER, zoo.POINTER))
  lu.assertEquals(select(2, peer.words(zoo.POINTER)), 0)
end

function TestConstants:test_packed_objects()
  lu.assertEquals(table.pack(peer.packed(zoo.BINARY)), { peer.find "_p_zoo_Egg", 0, "\1\0\2\0\3", n = 3 })
  lu.assertEquals(select(3, peer.packed(zoo.EMPTY_BINARY)), "")
  local descriptor, own, bytes = peer.packed(zoo.cages.BINARY)
  lu.assertEquals({ descriptor, own }, { peer.find "_p_zoo_Robot", 0 })
  lu.assertEquals((string.unpack("i", bytes)), 99)
end

function TestConstants:test_get_the_class_of_their_type_when_it_is_registered_already()
  lu.assertIs(debug.getmetatable(zoo.cages.POINTER), registry.SWIG["zoo.Animal"])
  lu.assertIs(debug.getmetatable(zoo.cages.BINARY), registry.SWIG["zoo.Robot"])
  -- A namespace's constants come before its classes.
  lu.assertNil(debug.getmetatable(zoo.POINTER))
  lu.assertNil(debug.getmetatable(zoo.BINARY))
end

function TestConstants:test_unknown_kinds_are_skipped()
  lu.assertNil(rawget(zoo, "UNKNOWN_SEVEN"))
  lu.assertNil(rawget(zoo, "UNKNOWN_NEGATIVE"))
end

TestReopening = {}

function TestReopening:test_keeps_the_metatables_and_builds_new_tables()
  local dog, animal = registry.SWIG["zoo.Dog"], registry.SWIG["zoo.Animal"]
  local reopened = assert(package.loadlib(package.searchpath("zoo", package.cpath), "luaopen_zoo"))()
  lu.assertNotIs(reopened, zoo)
  lu.assertIs(registry.SWIG["zoo.Dog"], dog)
  lu.assertEquals(#dog[".bases"], 1)
  lu.assertIs(dog[".bases"][1], animal)
  lu.assertIs(dog[".static"], reopened.Dog)
  lu.assertEquals(reopened.Puppy():speak(), "woof")
  lu.assertEquals(reopened.Puppy.LEGS, 5)
  lu.assertIs(debug.getmetatable(reopened.POINTER), animal)
  _G.zoo = zoo
  for name, class in pairs(registry.SWIG) do
    local static = name:match "^zoo%.(%a+)$"
    if static then
      class[".static"] = zoo[static]
    end
  end
end

TestBroken = {}

local function open_broken(entry)
  return support.child(("package.loadlib(package.searchpath('zoo', package.cpath), '%s')() print 'survived'"):format(entry))
end

local function assert_aborted(result, condition)
  lu.assertEquals({ result.status, result.out }, { 134, "" }, result.err)
  lu.assertStrMatches(result.err, ".*zoo_wrap:%d+: [%w_: ]+: Assertion `" .. condition .. "' failed%.\n.*")
end

function TestBroken:test_a_binary_constant_needs_its_bytes()
  assert_aborted(open_broken "luaopen_zoo_null_binary", "ptr")
end

function TestBroken:test_a_class_has_the_name_of_its_static_namespace()
  assert_aborted(open_broken "luaopen_zoo_misnamed", ".*clss%->name.*clss%->cls_static%->name.*")
end

os.exit(lu.LuaUnit.run(), true)

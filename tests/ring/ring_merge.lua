-- A module whose types stand for one another joins a ring that has some of them already.
local lu = require "luaunit"
local support = require "ring_support"
local peer = support.peer
local registry = debug.getregistry()

local other = peer.register_module {
  { mangled = "_p_zoo_Dog", readable = "other's dog *" },
  { mangled = "_p_zoo_Egg", readable = "other's egg *", class = { name = "other_egg" } },
  { mangled = "_p_zoo_Robot", readable = "other's robot *" },
}
peer.join(other)
local shared_dog, shared_egg, shared_robot = peer.find "_p_zoo_Dog", peer.find "_p_zoo_Egg", peer.find "_p_zoo_Robot"
local other_egg = peer.type(shared_egg).class

local zoo = require "zoo"
local module = require "tq_mom_sync"

TestMerge = {}

function TestMerge:test_casts_of_an_own_type_lead_to_the_shared_types()
  local targets = {}
  for _, cast in ipairs(peer.type(peer.find "_p_zoo_Animal").casts) do
    targets[cast.mangled] = cast.target
  end
  for _, name in ipairs { "Animal", "Dog", "Egg", "Puppy", "RoboDog" } do
    lu.assertEquals(targets["_p_zoo_" .. name], peer.find("_p_zoo_" .. name), name)
  end
  lu.assertEquals(targets._p_zoo_Dog, shared_dog)
  lu.assertEquals(targets._p_zoo_Egg, shared_egg)
end

function TestMerge:test_objects_of_a_shared_type_stand_for_an_own_one()
  local dog = zoo.Dog()
  lu.assertEquals(peer.words(dog), shared_dog)
  lu.assertEquals(swig_type(dog), "other's dog *")
  dog.age = 4
  lu.assertEquals({ dog.age, dog:speak(), tostring(dog) }, { 4, "woof", "animal of 4" })
end

function TestMerge:test_casts_to_types_that_nobody_has_are_added_to_a_shared_type()
  lu.assertEquals(support.cast_names(shared_robot), { "_p_zoo_RoboDog", "_p_zoo_Robot" })
  lu.assertEquals(support.cast_names(shared_dog), { "_p_zoo_RoboDog", "_p_zoo_Puppy", "_p_zoo_Dog" })
  local dog = zoo.RoboDog()
  dog.battery = 5
  support.setter("zoo.Dog", "tricks")(dog, 6)
  lu.assertEquals({ dog.battery, support.getter("zoo.Dog", "tricks")(dog) }, { 5, 6 })
end

function TestMerge:test_class_records()
  lu.assertEquals(peer.class(peer.type(shared_dog).class).qualified_name, "zoo.Dog")
  lu.assertEquals(peer.type(shared_egg).class, other_egg)
  lu.assertNil(debug.getmetatable(zoo.lay_egg()))
end

function TestMerge:test_bases_are_found_by_the_shared_types_names()
  -- "zoo::Dog *" is not a spelling of the shared type.
  lu.assertEquals(peer.class(peer.type(peer.find "_p_zoo_Puppy").class).bases, { false })
  lu.assertEquals(peer.class(peer.type(peer.find "_p_zoo_RoboDog").class).bases,
    { false, false, peer.type(shared_robot).class })
  lu.assertEquals(peer.class(peer.type(shared_dog).class).bases, { peer.type(peer.find "_p_zoo_Animal").class })
end

function TestMerge:test_three_modules_in_the_order_of_joining()
  local ring = peer.ring()
  lu.assertEquals(ring[1], other)
  lu.assertEquals(peer.module(ring[2]).count, support.type_count)
  lu.assertEquals(peer.module(ring[3]).count, 9)
  lu.assertEquals(#ring, 3)
  lu.assertIs(getmetatable(module.get_op_t()), registry.SWIG.get_op_t)
end

os.exit(lu.LuaUnit.run(), true)

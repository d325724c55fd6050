// Lua module "zoo": what the binding runtime can do and tq_mom_sync has no use for. Classes with bases, methods and
// metamethods, variables, sub-namespaces and every kind of constant.
#include <cstdlib>
#include <cstring>

#include "binding/abi.h"
#include "binding/handles.h"
#include "binding/namespaces.h"
#include "binding/startup.h"

namespace {

using binding::Attribute;
using binding::CastEntry;
using binding::ClassRecord;
using binding::Constant;
using binding::Method;
using binding::ModuleRecord;
using binding::NamespaceRecord;
using binding::TypeDescriptor;

struct Animal {
  int age;
};
struct Dog : Animal {
  int tricks;
};
struct Puppy : Dog {};
struct Robot {
  int battery;
  int slots[4];
};
struct RoboDog : Dog, Robot {};

// Sorted as the mangled names are.
enum TypeIndex { kAnimal, kCage, kDog, kEgg, kOrphan, kPuppy, kRoboDog, kRobot, kShape, kTypeCount };

void* RoboDogToRobot(void* pointer, int*) { return static_cast<Robot*>(static_cast<RoboDog*>(pointer)); }

extern ClassRecord animal_class, cage_class, dog_class, orphan_class, puppy_class, robo_dog_class, robot_class,
    shape_class;

TypeDescriptor animal_type = {"_p_zoo_Animal", "zoo::Animal *|Beast *", nullptr, nullptr, &animal_class, 0};
TypeDescriptor cage_type = {"_p_zoo_Cage", "zoo::Cage *", nullptr, nullptr, &cage_class, 0};
TypeDescriptor dog_type = {"_p_zoo_Dog", "zoo::Dog *", nullptr, nullptr, &dog_class, 0};
TypeDescriptor egg_type = {"_p_zoo_Egg", "zoo::Egg *", nullptr, nullptr, nullptr, 0};
TypeDescriptor orphan_type = {"_p_zoo_Orphan", "zoo::Orphan *", nullptr, nullptr, &orphan_class, 0};
TypeDescriptor puppy_type = {"_p_zoo_Puppy", "zoo::Puppy *", nullptr, nullptr, &puppy_class, 0};
TypeDescriptor robo_dog_type = {"_p_zoo_RoboDog", "zoo::RoboDog *", nullptr, nullptr, &robo_dog_class, 0};
TypeDescriptor robot_type = {"_p_zoo_Robot", "zoo::Robot *", nullptr, nullptr, &robot_class, 0};
TypeDescriptor shape_type = {"_p_zoo_Shape", "zoo::Shape *", nullptr, nullptr, &shape_class, 0};

CastEntry animal_casts[] = {{&animal_type, nullptr, nullptr, nullptr},   {&dog_type, nullptr, nullptr, nullptr},
                            {&puppy_type, nullptr, nullptr, nullptr},    {&egg_type, nullptr, nullptr, nullptr},
                            {&robo_dog_type, nullptr, nullptr, nullptr}, {}};
CastEntry cage_casts[] = {{&cage_type, nullptr, nullptr, nullptr}, {}};
CastEntry dog_casts[] = {{&dog_type, nullptr, nullptr, nullptr},
                         {&puppy_type, nullptr, nullptr, nullptr},
                         {&robo_dog_type, nullptr, nullptr, nullptr},
                         {}};
CastEntry egg_casts[] = {{&egg_type, nullptr, nullptr, nullptr}, {}};
CastEntry orphan_casts[] = {{&orphan_type, nullptr, nullptr, nullptr}, {}};
CastEntry puppy_casts[] = {{&puppy_type, nullptr, nullptr, nullptr}, {}};
CastEntry robo_dog_casts[] = {{&robo_dog_type, nullptr, nullptr, nullptr}, {}};
CastEntry robot_casts[] = {
    {&robot_type, nullptr, nullptr, nullptr}, {&robo_dog_type, RoboDogToRobot, nullptr, nullptr}, {}};
CastEntry shape_casts[] = {{&shape_type, nullptr, nullptr, nullptr}, {}};

TypeDescriptor* own_types[] = {&animal_type, &cage_type,     &dog_type,   &egg_type,  &orphan_type,
                               &puppy_type,  &robo_dog_type, &robot_type, &shape_type};
CastEntry* own_casts[] = {animal_casts, cage_casts,     dog_casts,   egg_casts,  orphan_casts,
                          puppy_casts,  robo_dog_casts, robot_casts, shape_casts};
static_assert(sizeof own_types / sizeof own_types[0] == kTypeCount);
static_assert(sizeof own_casts / sizeof own_casts[0] == kTypeCount);

TypeDescriptor* type_table[kTypeCount + 1];
ModuleRecord module_record = {type_table, kTypeCount, nullptr, own_types, own_casts, nullptr};

// The object at the index, which must be of the type or stand for it.
template <class T> T* Check(lua_State* L, int index, TypeIndex type) {
  void* pointer = nullptr;
  if (binding::ConvertPtr(L, index, &pointer, type_table[type], 0) != 0 || pointer == nullptr) {
    luaL_error(L, "%s expected", type_table[type]->readable_name);
  }
  return static_cast<T*>(pointer);
}

template <class T, TypeIndex kType> int Construct(lua_State* L) {
  auto* object = static_cast<T*>(std::calloc(1, sizeof(T)));
  binding::PushHandle(L, object, type_table[kType], 1);
  return 1;
}

int destroyed_count;

void Destroy(void* object) {
  ++destroyed_count;
  std::free(object);
}

template <class T, TypeIndex kType, int T::*kMember> int Get(lua_State* L) {
  lua_pushinteger(L, Check<T>(L, 1, kType)->*kMember);
  return 1;
}

template <class T, TypeIndex kType, int T::*kMember> int Set(lua_State* L) {
  Check<T>(L, 1, kType)->*kMember = static_cast<int>(luaL_checkinteger(L, 2));
  return 0;
}

template <int* kVariable> int GetVariable(lua_State* L) {
  lua_pushinteger(L, *kVariable);
  return 1;
}

template <int* kVariable> int SetVariable(lua_State* L) {
  *kVariable = static_cast<int>(luaL_checkinteger(L, 1));
  return 0;
}

int Say(lua_State* L, const char* text) {
  lua_pushstring(L, text);
  return 1;
}

constexpr Method kNoMethods[1] = {};
constexpr Attribute kNoAttributes[1] = {};
constexpr Constant kNoConstants[1] = {};
ClassRecord* const kNoClasses[1] = {};
const NamespaceRecord* const kNoNamespaces[1] = {};
ClassRecord* no_bases[1];
const char* no_base_names[1];

// Animal: attributes, methods, metamethods and statics for the others to inherit.

int population = 3;
int planet = 42;

int AnimalKind(lua_State* L) { return Say(L, "animal"); }
int AnimalSpeak(lua_State* L) { return Say(L, "..."); }
int AnimalBirthday(lua_State* L) {
  ++Check<Animal>(L, 1, kAnimal)->age;
  return 0;
}
int AnimalAdd(lua_State* L) {
  lua_pushinteger(L, Check<Animal>(L, 1, kAnimal)->age + Check<Animal>(L, 2, kAnimal)->age);
  return 1;
}
int AnimalEqual(lua_State* L) {
  lua_pushboolean(L, Check<Animal>(L, 1, kAnimal)->age == Check<Animal>(L, 2, kAnimal)->age);
  return 1;
}
int AnimalLess(lua_State* L) {
  lua_pushboolean(L, Check<Animal>(L, 1, kAnimal)->age < Check<Animal>(L, 2, kAnimal)->age);
  return 1;
}
int AnimalLength(lua_State* L) { return Get<Animal, kAnimal, &Animal::age>(L); }
int AnimalToString(lua_State* L) {
  lua_pushfstring(L, "animal of %d", Check<Animal>(L, 1, kAnimal)->age);
  return 1;
}
// Returns its arguments but the object, after their count.
int AnimalCall(lua_State* L) {
  Check<Animal>(L, 1, kAnimal);
  lua_pushinteger(L, lua_gettop(L) - 1);
  lua_replace(L, 1);
  return lua_gettop(L);
}
int AnimalCensus(lua_State* L) {
  lua_pushinteger(L, lua_gettop(L));
  return 1;
}

constexpr Method kAnimalMethods[] = {{"speak", AnimalSpeak}, {"birthday", AnimalBirthday}, {}};
constexpr Attribute kAnimalAttributes[] = {
    {"age", Get<Animal, kAnimal, &Animal::age>, Set<Animal, kAnimal, &Animal::age>},
    {"kind", AnimalKind, nullptr},
    {"fixed", AnimalKind, binding::SetImmutable},
    {}};
constexpr Method kAnimalMetatable[] = {{"__add", AnimalAdd},
                                       {"__eq", AnimalEqual},
                                       {"__lt", AnimalLess},
                                       {"__len", AnimalLength},
                                       {"__call", AnimalCall},
                                       {"__tostring", AnimalToString},
                                       {}};
constexpr Method kAnimalStaticMethods[] = {{"census", AnimalCensus}, {}};
constexpr Attribute kAnimalStaticAttributes[] = {
    {"population", GetVariable<&population>, SetVariable<&population>}, {"planet", GetVariable<&planet>, nullptr}, {}};
constexpr Constant kAnimalConstants[] = {
    {binding::kInteger, "KINGDOM", 1, 0, nullptr, nullptr}, {binding::kInteger, "LEGS", 4, 0, nullptr, nullptr}, {}};
const NamespaceRecord animal_static = {"Animal",         kAnimalStaticMethods, kAnimalStaticAttributes,
                                       kAnimalConstants, kNoClasses,           kNoNamespaces};
ClassRecord animal_class = {"Animal",         "zoo.Animal",   &type_table[kAnimal], Construct<Animal, kAnimal>,
                            Destroy,          kAnimalMethods, kAnimalAttributes,    &animal_static,
                            kAnimalMetatable, no_bases,       no_base_names};

// Dog: one base, by its mangled name.

int DogSpeak(lua_State* L) { return Say(L, "woof"); }
int DogMultiply(lua_State* L) { return Say(L, "dog product"); }

constexpr Method kDogMethods[] = {{"speak", DogSpeak}, {}};
constexpr Attribute kDogAttributes[] = {{"tricks", Get<Dog, kDog, &Dog::tricks>, Set<Dog, kDog, &Dog::tricks>}, {}};
constexpr Method kDogMetatable[] = {{"__mul", DogMultiply}, {}};
constexpr Constant kDogConstants[] = {
    {binding::kInteger, "LEGS", 5, 0, nullptr, nullptr}, {binding::kInteger, "TAILS", 1, 0, nullptr, nullptr}, {}};
const NamespaceRecord dog_static = {"Dog", kNoMethods, kNoAttributes, kDogConstants, kNoClasses, kNoNamespaces};
ClassRecord* dog_bases[2];
const char* dog_base_names[] = {"_p_zoo_Animal", nullptr};
ClassRecord dog_class = {"Dog",         "zoo.Dog",   &type_table[kDog], Construct<Dog, kDog>,
                         Destroy,       kDogMethods, kDogAttributes,    &dog_static,
                         kDogMetatable, dog_bases,   dog_base_names};

// Puppy: nothing of its own; its base by its readable name.

const NamespaceRecord puppy_static = {"Puppy", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord* puppy_bases[2];
const char* puppy_base_names[] = {"zoo::Dog *", nullptr};
ClassRecord puppy_class = {"Puppy",    "zoo.Puppy", &type_table[kPuppy], Construct<Puppy, kPuppy>,
                           Destroy,    kNoMethods,  kNoAttributes,       &puppy_static,
                           kNoMethods, puppy_bases, puppy_base_names};

// Robot: indexed like an array.

int RobotGetItem(lua_State* L) {
  const Robot* robot = Check<Robot>(L, 1, kRobot);
  lua_Integer slot = lua_tointeger(L, 2);
  if (slot < 1 || slot > 4) return 0;
  lua_pushinteger(L, robot->slots[slot - 1]);
  return 1;
}
int RobotSetItem(lua_State* L) {
  Robot* robot = Check<Robot>(L, 1, kRobot);
  lua_Integer slot = luaL_checkinteger(L, 2);
  luaL_argcheck(L, slot >= 1 && slot <= 4, 2, "no such slot");
  robot->slots[slot - 1] = static_cast<int>(luaL_checkinteger(L, 3));
  return 0;
}
int RobotMultiply(lua_State* L) { return Say(L, "robot product"); }
int RobotNegate(lua_State* L) { return Say(L, "robot negated"); }

constexpr Attribute kRobotAttributes[] = {
    {"battery", Get<Robot, kRobot, &Robot::battery>, Set<Robot, kRobot, &Robot::battery>}, {}};
constexpr Method kRobotMetatable[] = {
    {"__getitem", RobotGetItem}, {"__setitem", RobotSetItem}, {"__mul", RobotMultiply}, {"__unm", RobotNegate}, {}};
constexpr Constant kRobotConstants[] = {{binding::kInteger, "LEGS", 2, 0, nullptr, nullptr}, {}};
const NamespaceRecord robot_static = {"Robot", kNoMethods, kNoAttributes, kRobotConstants, kNoClasses, kNoNamespaces};
ClassRecord robot_class = {"Robot",         "zoo.Robot", &type_table[kRobot], Construct<Robot, kRobot>,
                           Destroy,         kNoMethods,  kRobotAttributes,    &robot_static,
                           kRobotMetatable, no_bases,    no_base_names};

// RoboDog: two bases, the second at another address, and between them one that does not exist.

const NamespaceRecord robo_dog_static = {"RoboDog", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord* robo_dog_bases[4];
const char* robo_dog_base_names[] = {"zoo::Dog *", "zoo::Unicorn *", "_p_zoo_Robot", nullptr};
ClassRecord robo_dog_class = {"RoboDog",  "zoo.RoboDog",  &type_table[kRoboDog], Construct<RoboDog, kRoboDog>,
                              Destroy,    kNoMethods,     kNoAttributes,         &robo_dog_static,
                              kNoMethods, robo_dog_bases, robo_dog_base_names};

// Orphan: its only base does not exist. Shape: can be neither made nor freed by a script.

const NamespaceRecord orphan_static = {"Orphan", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord* orphan_bases[2];
const char* orphan_base_names[] = {"_p_zoo_Unicorn", nullptr};
ClassRecord orphan_class = {"Orphan",   "zoo.Orphan", &type_table[kOrphan], Construct<Animal, kOrphan>,
                            Destroy,    kNoMethods,   kNoAttributes,        &orphan_static,
                            kNoMethods, orphan_bases, orphan_base_names};

// A class and a namespace in it have the names of constants, which win.

constexpr Constant kSmallConstants[] = {{binding::kInteger, "SIZE", 1, 0, nullptr, nullptr}, {}};
const NamespaceRecord small_namespace = {"small",         kNoMethods, kNoAttributes,
                                         kSmallConstants, kNoClasses, kNoNamespaces};
const NamespaceRecord lid_static = {"Lid", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord lid_class = {"Lid",         "zoo.Shape.Lid", &type_table[kShape], nullptr,  nullptr,      kNoMethods,
                         kNoAttributes, &lid_static,     kNoMethods,          no_bases, no_base_names};
ClassRecord* const kShapeClasses[] = {&lid_class, nullptr};
const NamespaceRecord* const kShapeNamespaces[] = {&small_namespace, nullptr};
constexpr Constant kShapeConstants[] = {
    {binding::kInteger, "Lid", 8, 0, nullptr, nullptr}, {binding::kInteger, "small", 9, 0, nullptr, nullptr}, {}};
const NamespaceRecord shape_static = {"Shape",         kNoMethods,    kNoAttributes,
                                      kShapeConstants, kShapeClasses, kShapeNamespaces};
ClassRecord shape_class = {"Shape",       "zoo.Shape",   &type_table[kShape], nullptr,  nullptr,      kNoMethods,
                           kNoAttributes, &shape_static, kNoMethods,          no_bases, no_base_names};

// The namespace, with two levels of others in it.

int volume = 7;
int version = 2;

int Destroyed(lua_State* L) {
  lua_pushinteger(L, destroyed_count);
  destroyed_count = 0;
  return 1;
}

// An object of an own type without a class.
int LayEgg(lua_State* L) {
  static Animal egg = {1};
  binding::PushHandle(L, &egg, type_table[kEgg], 0);
  return 1;
}

int MakeShape(lua_State* L) {
  static int shape;
  binding::PushHandle(L, &shape, type_table[kShape], 1);
  return 1;
}

Animal famous_animal = {99};

const NamespaceRecord cage_static = {"Cage", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord cage_class = {"Cage",     "zoo.cages.Cage", &type_table[kCage], Construct<Animal, kCage>,
                          Destroy,    kNoMethods,       kNoAttributes,      &cage_static,
                          kNoMethods, no_bases,         no_base_names};
ClassRecord* const kCageClasses[] = {&cage_class, nullptr};

const NamespaceRecord empty_namespace = {"empty", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
const NamespaceRecord* const kCageNamespaces[] = {&small_namespace, &empty_namespace, nullptr};
// Constants of a namespace that comes after the classes of their types.
constexpr Constant kCageConstants[] = {
    {binding::kInteger, "SIZE", 1, 0, nullptr, nullptr},
    {binding::kPointer, "POINTER", 0, 0, &famous_animal, &type_table[kAnimal]},
    {binding::kBinary, "BINARY", sizeof(Animal), 0, &famous_animal, &type_table[kRobot]},
    {}};
constexpr Attribute kCageVariables[] = {{"volume", GetVariable<&volume>, SetVariable<&volume>}, {}};
const NamespaceRecord cages_namespace = {"cages",        kAnimalStaticMethods, kCageVariables,
                                         kCageConstants, kCageClasses,         kCageNamespaces};

constexpr char kBytes[] = {1, 0, 2, 0, 3};

constexpr Constant kConstants[] = {{binding::kInteger, "INTEGER", -5, 9.5, nullptr, nullptr},
                                   {binding::kInteger, "LARGE", 2147483647, 0, nullptr, nullptr},
                                   {binding::kFloating, "FLOATING", 3, 2.0, nullptr, nullptr},
                                   {binding::kString, "STRING", 2, 0, "text", nullptr},
                                   {binding::kString, "EMPTY_STRING", 2, 0, "", nullptr},
                                   {binding::kString, "NULL_STRING", 2, 0, nullptr, nullptr},
                                   {binding::kPointer, "POINTER", 0, 0, &famous_animal, &type_table[kAnimal]},
                                   {binding::kPointer, "CLASSLESS_POINTER", 0, 0, &famous_animal, &type_table[kEgg]},
                                   {binding::kPointer, "NULL_POINTER", 0, 0, nullptr, &type_table[kAnimal]},
                                   {7, "UNKNOWN_SEVEN", 1, 1, "text", nullptr},
                                   {-1, "UNKNOWN_NEGATIVE", 1, 1, "text", nullptr},
                                   {binding::kBinary, "BINARY", sizeof kBytes, 0, kBytes, &type_table[kEgg]},
                                   {binding::kBinary, "EMPTY_BINARY", 0, 0, kBytes, &type_table[kEgg]},
                                   {binding::kCharacter, "CHARACTER", 'x', 0, nullptr, nullptr},
                                   {binding::kCharacter, "LOW_BYTE", 0x12340041, 0, nullptr, nullptr},
                                   {binding::kCharacter, "NUL", 0, 0, nullptr, nullptr},
                                   {binding::kCharacter, "HIGH", 0xff, 0, nullptr, nullptr},
                                   {binding::kInteger, "LAST", 1, 0, nullptr, nullptr},
                                   {}};
constexpr Method kFunctions[] = {
    {"destroyed", Destroyed}, {"lay_egg", LayEgg}, {"make_shape", MakeShape}, {"LARGE", AnimalCensus}, {}};
constexpr Attribute kVariables[] = {{"volume", GetVariable<&volume>, SetVariable<&volume>},
                                    {"version", GetVariable<&version>, nullptr},
                                    {"locked", GetVariable<&version>, binding::SetImmutable},
                                    {"INTEGER", GetVariable<&version>, nullptr},
                                    {}};
// A class comes before its bases: registering it registers their metatables first.
ClassRecord* const kClasses[] = {&puppy_class, &robo_dog_class, &dog_class,   &animal_class,
                                 &robot_class, &orphan_class,   &shape_class, nullptr};
const NamespaceRecord* const kNamespaces[] = {&cages_namespace, nullptr};
const NamespaceRecord zoo_namespace = {"zoo", kFunctions, kVariables, kConstants, kClasses, kNamespaces};

// Broken records, each opened by an entry point of its own.

constexpr Constant kNullBinary[] = {{binding::kBinary, "BINARY", 4, 0, nullptr, &type_table[kEgg]}, {}};
const NamespaceRecord null_binary_namespace = {"zoo_broken", kNoMethods, kNoAttributes,
                                               kNullBinary,  kNoClasses, kNoNamespaces};

ClassRecord misnamed_class = {"Misnamed",    "zoo.Misnamed", &type_table[kOrphan], nullptr,  nullptr,      kNoMethods,
                              kNoAttributes, &orphan_static, kNoMethods,           no_bases, no_base_names};
ClassRecord* const kMisnamedClasses[] = {&misnamed_class, nullptr};
const NamespaceRecord misnamed_namespace = {"zoo_broken", kNoMethods,       kNoAttributes,
                                            kNoConstants, kMisnamedClasses, kNoNamespaces};

int Open(lua_State* L, const NamespaceRecord& record) {
  binding::OpenModule(L, {.types = &module_record, .record = &record, .source = "zoo_wrap"});
  return 1;
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] int luaopen_zoo(lua_State* L) { return Open(L, zoo_namespace); }

[[gnu::visibility("default")]] int luaopen_zoo_null_binary(lua_State* L) { return Open(L, null_binary_namespace); }

[[gnu::visibility("default")]] int luaopen_zoo_misnamed(lua_State* L) { return Open(L, misnamed_namespace); }

}  // extern "C"

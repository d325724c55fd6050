// The ring of type tables, with modules made here. No walk may loop for ever: the test runner's time limit would tell.
#include "binding/type_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tests/unit/lua_state.h"

namespace {

using binding::CastEntry;
using binding::ClassRecord;
using binding::ModuleRecord;
using binding::TypeDescriptor;

constexpr char kRingKey[] = "swig_runtime_data_type_pointer4";

// A module of types, each of which takes its own handles.
class Module {
 public:
  struct Spec {
    std::string mangled = {};
    std::string readable = {};
    bool has_class = false;
    std::vector<std::string> casts = {};       // further types of this module that may stand for it
    std::vector<const char*> base_names = {};  // of its class
  };

  using Specs = std::vector<Spec>;

  explicit Module(const Specs& specs) : specs_(specs) {
    std::sort(specs_.begin(), specs_.end(), [](const Spec& a, const Spec& b) { return a.mangled < b.mangled; });
    for (const Spec& spec : specs_) {
      TypeDescriptor& type = types_.emplace_back();
      type.mangled_name = spec.mangled.c_str();
      type.readable_name = spec.readable.empty() ? nullptr : spec.readable.c_str();
      own_[spec.mangled] = &type;
      if (spec.has_class) {
        type.class_record = &classes_[spec.mangled];
        type.class_record->name = spec.mangled.c_str();
        std::vector<const char*>& names = base_names_[spec.mangled];
        names = spec.base_names;
        names.push_back(nullptr);
        bases_[spec.mangled].resize(names.size());
        type.class_record->base_class_names = names.data();
        type.class_record->bases = bases_[spec.mangled].data();
      }
    }
    for (const Spec& spec : specs_) {
      std::vector<CastEntry>& entries = casts_[spec.mangled];
      entries.push_back({own_[spec.mangled], nullptr, nullptr, nullptr});
      for (const std::string& other : spec.casts) entries.push_back({own_[other], nullptr, nullptr, nullptr});
      entries.push_back({});
      own_types_.push_back(own_[spec.mangled]);
      own_casts_.push_back(entries.data());
    }
    own_types_.push_back(nullptr);
    table_.assign(specs_.size() + 1, &unset_);
    record_ = {table_.data(), specs_.size(), nullptr, own_types_.data(), own_casts_.data(), nullptr};
  }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  ModuleRecord* record() { return &record_; }
  TypeDescriptor* own(const std::string& mangled) { return own_.at(mangled); }
  ClassRecord* own_class(const std::string& mangled) { return &classes_.at(mangled); }
  CastEntry* cast(const std::string& mangled, std::size_t place) { return &casts_.at(mangled)[place]; }
  ClassRecord* base(const std::string& mangled, std::size_t place) { return bases_.at(mangled)[place]; }

  // The descriptor in use.
  TypeDescriptor* type(const std::string& mangled) {
    for (std::size_t i = 0; i < specs_.size(); ++i) {
      if (specs_[i].mangled == mangled) return table_[i];
    }
    return nullptr;
  }
  TypeDescriptor* end_of_table() { return table_.back(); }

 private:
  TypeDescriptor unset_ = {};
  std::vector<Spec> specs_;
  std::deque<TypeDescriptor> types_;
  std::map<std::string, TypeDescriptor*> own_;
  std::map<std::string, ClassRecord> classes_;
  std::map<std::string, std::vector<const char*>> base_names_;
  std::map<std::string, std::vector<ClassRecord*>> bases_;
  std::map<std::string, std::vector<CastEntry>> casts_;
  std::vector<TypeDescriptor*> own_types_;
  std::vector<CastEntry*> own_casts_;
  std::vector<TypeDescriptor*> table_;
  ModuleRecord record_ = {};
};

ModuleRecord* Head(lua_State* L) {
  lua_getfield(L, LUA_REGISTRYINDEX, kRingKey);
  auto* head = static_cast<ModuleRecord*>(lua_touserdata(L, -1));
  lua_pop(L, 1);
  return head;
}

// The modules from the head on, until one comes again.
std::vector<ModuleRecord*> Ring(lua_State* L) {
  std::vector<ModuleRecord*> ring;
  for (ModuleRecord* record = Head(L); std::find(ring.begin(), ring.end(), record) == ring.end();
       record = record->next_module) {
    ring.push_back(record);
  }
  return ring;
}

// The mangled names on a type's cast list, from the front; checks the links back.
std::vector<std::string> Casts(const TypeDescriptor* type) {
  std::vector<std::string> names;
  const CastEntry* previous = nullptr;
  for (const CastEntry* entry = type->casts; entry != nullptr; entry = entry->next_cast) {
    EXPECT_EQ(entry->prev_cast, previous);
    names.emplace_back(entry->target_type->mangled_name);
    previous = entry;
    if (names.size() > 100) {
      ADD_FAILURE() << "the list has no end";
      break;
    }
  }
  return names;
}

using Names = std::vector<std::string>;
using Records = std::vector<ModuleRecord*>;

TEST(Ring, FirstModule) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_b", "b *"}, {"_p_a", "a *"}});
  binding::JoinRing(L, a.record());
  EXPECT_EQ(lua_gettop(L), 0);
  EXPECT_EQ(Ring(L), Records{a.record()});
  EXPECT_EQ(a.record()->next_module, a.record());
  EXPECT_EQ(a.type("_p_a"), a.own("_p_a"));
  EXPECT_EQ(a.type("_p_b"), a.own("_p_b"));
  EXPECT_EQ(a.end_of_table(), nullptr);
  EXPECT_EQ(Casts(a.own("_p_a")), Names{"_p_a"});
}

TEST(Ring, ModulesComeRightAfterTheHead) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_a", "a *"}});
  Module b(Module::Specs{{"_p_b", "b *"}});
  Module c(Module::Specs{{"_p_c", "c *"}});
  binding::JoinRing(L, a.record());
  binding::JoinRing(L, b.record());
  binding::JoinRing(L, c.record());
  const Records expected = {a.record(), c.record(), b.record()};
  EXPECT_EQ(Ring(L), expected);
  for (Module* again : {&a, &b, &c}) binding::JoinRing(L, again->record());
  EXPECT_EQ(Ring(L), expected);
  EXPECT_EQ(Casts(a.own("_p_a")), Names{"_p_a"}) << "filled once";
}

// What is no light userdata, or a null one, is no head.
TEST(Ring, RegistryHoldsSomethingElse) {
  for (int what = 0; what < 4; ++what) {
    unit::LuaState L;
    if (what == 0) lua_pushliteral(L, "text");
    if (what == 1) lua_newuserdata(L, 64);
    if (what == 2) lua_pushlightuserdata(L, nullptr);
    if (what == 3) lua_newtable(L);
    lua_setfield(L, LUA_REGISTRYINDEX, kRingKey);
    Module a(Module::Specs{{"_p_a", "a *"}});
    binding::JoinRing(L, a.record());
    EXPECT_EQ(Ring(L), Records{a.record()}) << what;
    EXPECT_EQ(a.type("_p_a"), a.own("_p_a"));
  }
}

TEST(Ring, TypesAreShared) {
  unit::LuaState L;
  Module a(Module::Specs{
      {"_p_common", "common *", true}, {"_p_plain", "plain *"}, {"_p_a", "a *"}, {"_p_kept", "kept *", true}});
  Module b(Module::Specs{
      {"_p_common", "common *", true}, {"_p_plain", "plain *", true}, {"_p_b", "b *"}, {"_p_kept", "kept *"}});
  binding::JoinRing(L, a.record());
  binding::JoinRing(L, b.record());
  for (const char* name : {"_p_common", "_p_plain", "_p_kept"}) EXPECT_EQ(b.type(name), a.own(name)) << name;
  EXPECT_EQ(b.type("_p_b"), b.own("_p_b"));
  EXPECT_EQ(a.own("_p_common")->class_record, b.own_class("_p_common")) << "the later class wins";
  EXPECT_EQ(a.own("_p_plain")->class_record, b.own_class("_p_plain"));
  EXPECT_EQ(a.own("_p_kept")->class_record, a.own_class("_p_kept")) << "no class overwrites none";
  EXPECT_EQ(Casts(a.own("_p_common")), Names{"_p_common"}) << "no second entry of one name";
}

TEST(Ring, CastsAreMerged) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_common", "common *", false, {"_p_x"}}, {"_p_x", "x *"}});
  Module b(Module::Specs{{"_p_common", "common *", false, {"_p_new", "_p_x"}},
                         {"_p_new", "new *"},
                         {"_p_own", "own *", false, {"_p_x", "_p_new"}},
                         {"_p_x", "x *"}});
  binding::JoinRing(L, a.record());
  EXPECT_EQ(Casts(a.own("_p_common")), (Names{"_p_x", "_p_common"}));
  binding::JoinRing(L, b.record());
  // In their order: _p_common is found and moved to the front, _p_new is put there, _p_x is moved there.
  EXPECT_EQ(Casts(a.own("_p_common")), (Names{"_p_x", "_p_new", "_p_common"}));
  EXPECT_EQ(a.own("_p_common")->casts, a.cast("_p_common", 1)) << "the entry that was there";
  // An own type's entries point to the shared descriptors.
  EXPECT_EQ(Casts(b.own("_p_own")), (Names{"_p_new", "_p_x", "_p_own"}));
  EXPECT_EQ(b.cast("_p_own", 1)->target_type, a.own("_p_x"));
  EXPECT_EQ(b.cast("_p_own", 2)->target_type, b.own("_p_new"));
}

// Every type of tables of every small size is found from another module.
TEST(Ring, BinarySearch) {
  for (int size = 1; size <= 33; ++size) {
    unit::LuaState L;
    Module::Specs specs;
    for (int i = 0; i < size; ++i)
      specs.push_back({"_p_" + std::string(1, static_cast<char>('B' + i)), "", false, {}, {}});
    Module a(specs);
    specs.push_back({"_p_A", "", false, {}, {}});
    specs.push_back({"_p_Ba", "", false, {}, {}});
    specs.push_back({"_p_~", "", false, {}, {}});
    Module b(specs);
    binding::JoinRing(L, a.record());
    binding::JoinRing(L, b.record());
    for (int i = 0; i < size; ++i)
      EXPECT_EQ(b.type(specs[static_cast<std::size_t>(i)].mangled), a.own(specs[static_cast<std::size_t>(i)].mangled));
    for (const char* name : {"_p_A", "_p_Ba", "_p_~"}) EXPECT_EQ(b.type(name), b.own(name)) << name;
  }
}

TEST(Ring, EmptyTableAndNullNames) {
  unit::LuaState L;
  Module empty(Module::Specs{});
  Module nameless(Module::Specs{{"_p_a", "a *"}, {"_p_b", "b *"}, {"_p_c", "c *"}});
  Module last(Module::Specs{{"_p_a", "a *"}, {"_p_b", "b *"}, {"_p_c", "c *"}});
  binding::JoinRing(L, empty.record());
  binding::JoinRing(L, nameless.record());
  nameless.own("_p_b")->mangled_name = nullptr;  // the middle, where the search begins and gives up
  binding::JoinRing(L, last.record());
  for (const char* name : {"_p_a", "_p_b", "_p_c"}) EXPECT_EQ(last.type(name), last.own(name)) << name;
}

// Bases are looked up through the whole ring: by mangled name first, then by any of the readable names.
TEST(Ring, Bases) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_base", "struct base *|base *|base_t *", true}, {"_p_plain", "plain *"}});
  Module b(Module::Specs{{"_p_blanks", "const  struct  tag * | tag_t*", true}, {"_p_named base *", "other *", true}});
  Module c(
      {{"_p_derived",
        "derived *",
        true,
        {},
        {"_p_base", "base *", "base_t*", "struct base *", "structbase*", " b a s e * ", "tag_t *", "conststructtag*",
         "base", "base * *", "ase *", "", "nobody *", "plain *", "_p_plain", "_p_blanks", "struct base *|base *"}}});
  binding::JoinRing(L, a.record());
  binding::JoinRing(L, b.record());
  binding::JoinRing(L, c.record());
  binding::ResolveBases(L, *c.record());
  EXPECT_EQ(lua_gettop(L), 0);
  ClassRecord* const base = a.own_class("_p_base");
  ClassRecord* const blanks = b.own_class("_p_blanks");
  const std::vector<ClassRecord*> expected = {base,    base,    base,    base,    base,    base,
                                              blanks,  blanks,  nullptr, nullptr, nullptr, nullptr,
                                              nullptr, nullptr, nullptr, blanks,  nullptr};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(c.base("_p_derived", i), expected[i]) << c.own_class("_p_derived")->base_class_names[i];
  }
}

TEST(Ring, ResolvedBasesStay) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_base", "base *", true}});
  Module b(Module::Specs{{"_p_derived", "derived *", true, {}, {"_p_base"}}});
  binding::JoinRing(L, a.record());
  binding::JoinRing(L, b.record());
  ClassRecord other = {};
  b.own_class("_p_derived")->bases[0] = &other;
  binding::ResolveBases(L, *b.record());
  EXPECT_EQ(b.base("_p_derived", 0), &other);
  b.own_class("_p_derived")->bases[0] = nullptr;
  lua_pushnil(L);
  lua_setfield(L, LUA_REGISTRYINDEX, kRingKey);
  binding::ResolveBases(L, *b.record());
  EXPECT_EQ(b.base("_p_derived", 0), nullptr) << "no ring, no types";
}

// A second interpreter links a record into its own ring: walks of the first interpreter's never come back to its head.
TEST(Ring, RelinkedByASecondInterpreter) {
  unit::LuaState first;
  unit::LuaState second;
  Module a(Module::Specs{{"_p_a", "a *", true}});
  Module b(Module::Specs{{"_p_b", "b *", true}});
  Module c(Module::Specs{{"_p_c", "c *", true}});
  binding::JoinRing(first, a.record());
  binding::JoinRing(first, b.record());
  binding::JoinRing(second, c.record());
  binding::JoinRing(second, b.record());
  // a -> b -> c -> b -> ...
  EXPECT_EQ(a.record()->next_module, b.record());
  EXPECT_EQ(b.record()->next_module, c.record());
  EXPECT_EQ(c.record()->next_module, b.record());

  // A fourth module goes round without meeting the head and joins; what it names is found all the same.
  Module d(Module::Specs{{"_p_c", "c *"}, {"_p_d", "d *", true, {}, {"a *", "_p_b", "c *", "nobody *"}}});
  binding::JoinRing(first, d.record());
  EXPECT_EQ(Head(first), a.record());
  EXPECT_EQ(a.record()->next_module, d.record());
  EXPECT_EQ(d.record()->next_module, b.record());
  EXPECT_EQ(d.type("_p_c"), c.own("_p_c"));
  binding::ResolveBases(first, *d.record());
  EXPECT_EQ(d.base("_p_d", 0), a.own_class("_p_a"));
  EXPECT_EQ(d.base("_p_d", 1), b.own_class("_p_b"));
  EXPECT_EQ(d.base("_p_d", 2), c.own_class("_p_c"));
  EXPECT_EQ(d.base("_p_d", 3), nullptr);
  // Joining again meets the module on its way.
  for (Module* again : {&a, &d}) binding::JoinRing(first, again->record());
  EXPECT_EQ(a.record()->next_module, d.record());
  binding::JoinRing(second, b.record());
  binding::JoinRing(second, c.record());
  EXPECT_EQ(b.record()->next_module, c.record());
}

// Rings that lead into loops of every small shape: `tail` modules, then a loop of `loop` that the head is not part of.
TEST(Ring, LoopsOfEveryShape) {
  for (int tail = 0; tail <= 6; ++tail) {
    for (int loop = 1; loop <= 7; ++loop) {
      unit::LuaState L;
      std::deque<Module> modules;
      std::vector<const char*> names;
      std::deque<std::string> texts;
      for (int i = 0; i < tail + loop; ++i) {
        std::string name = "_p_" + std::string(1, static_cast<char>('A' + i));
        names.push_back(texts.emplace_back(name).c_str());
        modules.emplace_back(Module::Specs{{name, "", true, {}, {}}});
      }
      names.push_back("_p_nobody");
      for (std::size_t i = 0; i < modules.size(); ++i) {
        unit::LuaState own_ring;  // fills the type table
        binding::JoinRing(own_ring, modules[i].record());
      }
      for (std::size_t i = 0; i + 1 < modules.size(); ++i) modules[i].record()->next_module = modules[i + 1].record();
      modules.back().record()->next_module = modules[static_cast<std::size_t>(tail)].record();
      lua_pushlightuserdata(L, modules[0].record());
      lua_setfield(L, LUA_REGISTRYINDEX, kRingKey);
      Module seeker(Module::Specs{{"_p_seeker", "seeker *", true, {}, names}});
      binding::JoinRing(L, seeker.record());
      EXPECT_EQ(modules[0].record()->next_module, seeker.record());
      binding::ResolveBases(L, *seeker.record());
      for (std::size_t i = 0; i < modules.size(); ++i) {
        EXPECT_EQ(seeker.base("_p_seeker", i), modules[i].own_class(texts[i])) << tail << " " << loop << " " << i;
      }
      EXPECT_EQ(seeker.base("_p_seeker", modules.size()), nullptr);
    }
  }
}

TEST(Propagation, TargetsWithoutAClassGetOne) {
  unit::LuaState L;
  // top <- middle <- low, and top itself again: a circle.
  Module a(Module::Specs{{"_p_top", "top *", true, {"_p_middle"}},
                         {"_p_middle", "middle *", false, {"_p_low"}},
                         {"_p_low", "low *", false, {"_p_top"}},
                         {"_p_apart", "apart *"}});
  binding::JoinRing(L, a.record());
  binding::PropagateClasses(*a.record());
  EXPECT_EQ(a.own("_p_middle")->class_record, a.own_class("_p_top"));
  EXPECT_EQ(a.own("_p_low")->class_record, a.own_class("_p_top"));
  EXPECT_EQ(a.own("_p_apart")->class_record, nullptr);
}

TEST(Propagation, ConvertersAndOtherClassesStop) {
  unit::LuaState L;
  Module a(Module::Specs{{"_p_top", "top *", true, {"_p_converted", "_p_classy"}},
                         {"_p_converted", "converted *"},
                         {"_p_classy", "classy *", true}});
  a.cast("_p_top", 1)->converter = [](void* pointer, int*) { return pointer; };
  binding::JoinRing(L, a.record());
  binding::PropagateClasses(*a.record());
  EXPECT_EQ(a.own("_p_converted")->class_record, nullptr);
  EXPECT_EQ(a.own("_p_classy")->class_record, a.own_class("_p_classy"));
}

TEST(Casts, MoveToFront) {
  TypeDescriptor types[4] = {};
  const char* const names[] = {"a", "b", "c", "d"};
  CastEntry entries[4] = {};
  for (int i = 0; i < 4; ++i) {
    types[i].mangled_name = names[i];
    entries[i].target_type = &types[i];
    entries[i].next_cast = i < 3 ? &entries[i + 1] : nullptr;
    entries[i].prev_cast = i > 0 ? &entries[i - 1] : nullptr;
  }
  TypeDescriptor expected = {"e", "e", nullptr, &entries[0], nullptr, 0};
  EXPECT_EQ(binding::FindCast(&expected, &types[0]), &entries[0]);
  EXPECT_EQ(Casts(&expected), (Names{"a", "b", "c", "d"}));
  EXPECT_EQ(binding::FindCast(&expected, &types[2]), &entries[2]);
  EXPECT_EQ(Casts(&expected), (Names{"c", "a", "b", "d"}));
  EXPECT_EQ(binding::FindCast(&expected, &types[3]), &entries[3]);
  EXPECT_EQ(Casts(&expected), (Names{"d", "c", "a", "b"}));
  EXPECT_EQ(binding::FindCast(&expected, &types[1]), &entries[1]);
  EXPECT_EQ(Casts(&expected), (Names{"b", "d", "c", "a"}));
  EXPECT_EQ(binding::FindCast(&expected, &expected), nullptr);
  EXPECT_EQ(binding::FindCast(&expected, nullptr), nullptr);
  EXPECT_EQ(Casts(&expected), (Names{"b", "d", "c", "a"}));
  TypeDescriptor nothing = {};
  EXPECT_EQ(binding::FindCast(&nothing, &types[0]), nullptr);
}

}  // namespace

// Lua module "odd": classes that bend the rules. Functions that return none or two results where one is due, a class
// that overrides the metamethods of its base, a long chain of bases, namespaces nested deep.

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

constexpr int kChain = 60;  // classes, each the base of the next
constexpr int kTypes = kChain + 2;

constexpr Method kNoMethods[1] = {};
constexpr Attribute kNoAttributes[1] = {};
constexpr Constant kNoConstants[1] = {};
ClassRecord* const kNoClasses[1] = {};
const NamespaceRecord* const kNoNamespaces[1] = {};
ClassRecord* no_bases[1];
const char* no_base_names[1];

TypeDescriptor types[kTypes];
CastEntry casts[kTypes][2];
TypeDescriptor* own_types[kTypes];
CastEntry* own_casts[kTypes];
TypeDescriptor* type_table[kTypes + 1];
ModuleRecord module_record = {type_table, kTypes, nullptr, own_types, own_casts, nullptr};

int PushTexts(lua_State* L, int count) {
  if (count > 0) lua_pushliteral(L, "first");
  if (count > 1) lua_pushliteral(L, "second");
  return count;
}

template <int kCount> int Results(lua_State* L) { return PushTexts(L, kCount); }

// As many results as the script said last.
int constructed;
int Construct(lua_State* L) { return PushTexts(L, constructed); }
int SetConstructed(lua_State* L) {
  constructed = static_cast<int>(luaL_checkinteger(L, 1));
  return 0;
}

template <int kType> int New(lua_State* L) {
  static int object;
  binding::PushHandle(L, &object, type_table[kType], 0);
  return 1;
}

// The arguments that a variable's setter was last called with.
int argument_count = -1;
int SetVariable(lua_State* L) {
  argument_count = lua_gettop(L);
  return PushTexts(L, 2);
}
int ArgumentCount(lua_State* L) {
  lua_pushinteger(L, argument_count);
  argument_count = -1;
  return 1;
}

int BaseName(lua_State* L) {
  lua_pushliteral(L, "base");
  return 1;
}
int OwnName(lua_State* L) {
  lua_pushliteral(L, "own");
  return 1;
}

// The first class of the chain is the base of all, and all metamethods are its own.
constexpr Method kBaseMetatable[] = {{"__add", BaseName}, {"__concat", BaseName}, {"__tostring", BaseName}, {}};
constexpr Attribute kBaseAttributes[] = {{"none", Results<0>, Results<0>}, {"two", Results<2>, Results<2>}, {}};
constexpr Method kHeirMetatable[] = {{"__add", OwnName}, {"__tostring", OwnName}, {}};

char chain_names[kChain][4];
char chain_qualified[kChain][8];
char chain_mangled[kChain][12];
ClassRecord chain[kChain];
NamespaceRecord chain_statics[kChain];
ClassRecord* chain_bases[kChain][2];
const char* chain_base_names[kChain][2];

const NamespaceRecord heir_static = {"Heir", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord* heir_bases[2];
const char* heir_base_names[] = {chain_mangled[0], nullptr};
ClassRecord heir = {"Heir",        "odd.Heir",   &type_table[kChain], New<kChain>, nullptr,        kNoMethods,
                    kNoAttributes, &heir_static, kHeirMetatable,      heir_bases,  heir_base_names};

const NamespaceRecord maker_static = {"Maker", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
ClassRecord maker = {"Maker",      "odd.Maker",   &type_table[kChain + 1], Construct,  nullptr,
                     kNoMethods,   kNoAttributes, &maker_static,           kNoMethods, no_bases,
                     no_base_names};

// Namespaces, each in the one before it.
NamespaceRecord nested[kChain];
const NamespaceRecord* nested_lists[kChain][2];

// Digits at the end make the names ascend.
void Name(char* to, const char* prefix, int number) {
  while (*prefix != '\0') *to++ = *prefix++;
  *to++ = static_cast<char>('0' + number / 10);
  *to++ = static_cast<char>('0' + number % 10);
  *to = '\0';
}

void FillIn() {
  for (int i = 0; i < kChain; ++i) {
    Name(chain_names[i], "C", i);
    Name(chain_qualified[i], "odd.C", i);
    Name(chain_mangled[i], "_p_odd_C", i);
    types[i] = {chain_mangled[i], chain_mangled[i], nullptr, nullptr, &chain[i], 0};
    chain_statics[i] = {chain_names[i], kNoMethods, kNoAttributes, kNoConstants, kNoClasses, kNoNamespaces};
    nested[i] = {chain_names[i], kNoMethods, kNoAttributes, kNoConstants, kNoClasses, nested_lists[i]};
    if (i > 0) {
      chain_base_names[i][0] = chain_mangled[i - 1];
      nested_lists[i - 1][0] = &nested[i];
    }
    chain[i] = {chain_names[i],
                chain_qualified[i],
                &type_table[i],
                i == kChain - 1 ? New<kChain - 1> : New<0>,
                nullptr,
                kNoMethods,
                i == 0 ? kBaseAttributes : kNoAttributes,
                &chain_statics[i],
                i == 0 ? kBaseMetatable : kNoMethods,
                chain_bases[i],
                chain_base_names[i]};
  }
  types[kChain] = {"_p_odd_Heir", "odd::Heir *", nullptr, nullptr, &heir, 0};
  types[kChain + 1] = {"_p_odd_Maker", "odd::Maker *", nullptr, nullptr, &maker, 0};
  for (int i = 0; i < kTypes; ++i) {
    casts[i][0].target_type = &types[i];
    own_types[i] = &types[i];
    own_casts[i] = casts[i];
  }
}

constexpr Method kFunctions[] = {{"construct", SetConstructed}, {"argument_count", ArgumentCount}, {}};
constexpr Attribute kVariables[] = {{"none", Results<0>, SetVariable}, {"two", Results<2>, SetVariable}, {}};
// The end of the chain comes first: registering it registers all others.
ClassRecord* const kClasses[] = {&chain[kChain - 1], &chain[0], &heir, &maker, nullptr};
const NamespaceRecord nest = {"nest", kNoMethods, kNoAttributes, kNoConstants, kNoClasses, nested_lists[0]};
const NamespaceRecord* const kNamespaces[] = {&nest, nullptr};
const NamespaceRecord odd_namespace = {"odd", kFunctions, kVariables, kNoConstants, kClasses, kNamespaces};

}  // namespace

extern "C" [[gnu::visibility("default")]] int luaopen_odd(lua_State* L) {
  if (module_record.next_module == nullptr) FillIn();
  binding::OpenModule(L, {.types = &module_record, .record = &odd_namespace, .source = "odd_wrap"});
  return 1;
}

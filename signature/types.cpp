#include "signature/types.h"

#include <cstring>

#include "binding/handles.h"

namespace tq_mom {
namespace {

using binding::CastEntry;
using binding::ModuleRecord;
using binding::TypeDescriptor;

// Each type's mangled name, readable name and class name.
template <class... Row> constexpr auto PackNamesOf(List<Row...>) {
  Packed<16384> names;
  (Row::AddNames(names), ...);
  return names;
}
constexpr auto PackNames() { return PackNamesOf(Types()); }
constexpr const char* kNames = kTrimmed<PackNames>.text;

constexpr bool SortedByMangledName() {
  auto names = PackNames();
  std::string_view rest(names.text, names.size);
  std::string_view previous;
  while (!rest.empty()) {
    std::string_view mangled = rest.substr(0, rest.find('\0'));
    if (mangled <= previous) return false;
    previous = mangled;
    for (int i = 0; i < 3; ++i) rest.remove_prefix(rest.find('\0') + 1);
  }
  return true;
}
static_assert(SortedByMangledName(), "The rows of signature/types.h are not in the order of their mangled names");

TypeDescriptor own_descriptors[kTypeCount];
TypeDescriptor* own_types[kTypeCount];
// A type's own entry and the end of its list: only its own handles stand for it.
CastEntry cast_entries[kTypeCount][2];
CastEntry* own_casts[kTypeCount];

ModuleRecord module_record;

const char* NextName(const char* name) { return name + std::strlen(name) + 1; }

void SetUpTypes() {
  const char* name = kNames;
  for (int i = 0; i < kTypeCount; ++i) {
    TypeDescriptor& type = own_descriptors[i];
    type.mangled_name = name;
    type.readable_name = NextName(name);
    class_names[i] = NextName(type.readable_name);
    name = NextName(class_names[i]);
    cast_entries[i][0].target_type = &type;
    own_types[i] = &type;
    own_casts[i] = cast_entries[i];
  }
  module_record.type_table = type_table;
  module_record.type_count = kTypeCount;
  module_record.own_types = own_types;
  module_record.own_casts = own_casts;
}

}  // namespace

TypeDescriptor* type_table[kTypeCount + 1];
const char* class_names[kTypeCount];

const char* MangledName(TypeId id) { return own_descriptors[static_cast<int>(id)].mangled_name; }

const char* ReadableName(TypeId id) { return NextName(MangledName(id)); }

void PushFunction(lua_State* L, lua_CFunction function, std::initializer_list<TypeId> results) {
  int upvalues = 0;
  for (TypeId result : results) {
    if (*ClassName(result) == '\0') break;
    if (upvalues == 0) {
      binding::PushHandleUpvalues(L, ClassName(result));
      upvalues = binding::kClassName;
    } else {
      lua_pushstring(L, ClassName(result));
      ++upvalues;
    }
  }
  lua_pushcclosure(L, function, upvalues);
}

TypeDescriptor* OwnType(TypeId id) { return &own_descriptors[static_cast<int>(id)]; }

ModuleRecord* ModuleTypes() {
  if (module_record.type_count == 0) SetUpTypes();
  return &module_record;
}

}  // namespace tq_mom

#include "records/types.h"

#include <cstring>
#include <string_view>

#include "records/records.h"

namespace tq_mom {
namespace {

using binding::CastEntry;
using binding::ModuleRecord;
using binding::TypeDescriptor;

// Each type's mangled name, readable name and class name, each ended by a NUL.
constexpr char kNames[] =
#define TQ_NAMES(mangled, readable, cls) mangled "\0" readable "\0" cls "\0"
#define TQ_PLAIN_NAMES(name, readable) TQ_NAMES("_p_" #name, readable, "")
#define TQ_CLASS_NAMES(name, readable) TQ_NAMES("_p_" #name, readable, #name)
#define TQ_RECORD_NAMES(structure, type, cls) \
  TQ_NAMES("_p_" #structure, "struct " #structure " *|" #structure " *|" #type " *", #cls)
    TQ_TYPES(TQ_PLAIN_NAMES, TQ_RECORD_NAMES, TQ_CLASS_NAMES);
#undef TQ_NAMES
#undef TQ_PLAIN_NAMES
#undef TQ_CLASS_NAMES
#undef TQ_RECORD_NAMES

constexpr bool SortedByMangledName() {
  std::string_view rest(kNames, sizeof(kNames) - 1);
  std::string_view previous;
  while (!rest.empty()) {
    std::string_view mangled = rest.substr(0, rest.find('\0'));
    if (mangled <= previous) return false;
    previous = mangled;
    for (int i = 0; i < 3; ++i) rest.remove_prefix(rest.find('\0') + 1);
  }
  return true;
}
static_assert(SortedByMangledName());

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
    type.readable_name = NextName(type.mangled_name);
    class_names[i] = NextName(type.readable_name);
    name = NextName(class_names[i]);
    cast_entries[i][0].target_type = &type;
    own_types[i] = &type;
    own_casts[i] = cast_entries[i];
  }
  SetUpClasses(own_descriptors);
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

ModuleRecord* Types() {
  if (module_record.next_module == nullptr) SetUpTypes();
  return &module_record;
}

}  // namespace tq_mom

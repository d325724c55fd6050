#include "binding/type_registry.h"

#include <cstring>

namespace binding {
namespace {

constexpr char kRingKey[] = "swig_runtime_data_type_pointer4";

// Visits the modules from `start` around the ring up to `stop`, until a visit returns something. A second interpreter
// may have linked our record into another ring, so that the walk never meets `stop`: a trailing pointer at half the
// speed notices when it goes round.
template <class Visit> auto FindInRing(ModuleRecord* start, const ModuleRecord* stop, Visit visit) {
  ModuleRecord* trailing = start;
  ModuleRecord* current = start;
  bool advance_trailing = false;
  do {
    if (auto found = visit(*current)) return found;
    current = current->next_module;
    if (advance_trailing) trailing = trailing->next_module;
    advance_trailing = !advance_trailing;
  } while (current != stop && current != trailing);
  return decltype(visit(*current))();
}

ModuleRecord* RingHead(lua_State* L) {
  lua_pushstring(L, kRingKey);
  auto* head = lua_rawget(L, LUA_REGISTRYINDEX) == LUA_TLIGHTUSERDATA
                   ? static_cast<ModuleRecord*>(lua_touserdata(L, -1))
                   : nullptr;
  lua_pop(L, 1);
  return head;
}

TypeDescriptor* FindMangled(const ModuleRecord& module, const char* name) {
  std::size_t left = 0;
  std::size_t right = module.type_count;  // one past the last candidate
  while (left < right) {
    std::size_t middle = (left + right - 1) / 2;
    TypeDescriptor* type = module.type_table[middle];
    if (type == nullptr || type->mangled_name == nullptr) break;
    int order = std::strcmp(name, type->mangled_name);
    if (order == 0) return type;
    if (order < 0) {
      right = middle;
    } else {
      left = middle + 1;
    }
  }
  return nullptr;
}

// Searches the modules from `start` around the ring, up to but not including `stop`.
TypeDescriptor* FindMangled(ModuleRecord* start, const ModuleRecord* stop, const char* name) {
  return FindInRing(start, stop, [&](const ModuleRecord& module) { return FindMangled(module, name); });
}

const char* SkipBlanks(const char* text) { return text + std::strspn(text, " "); }

// Whether the wanted spelling is one of the '|'-separated alternatives, blanks aside.
bool IsAlternative(const char* wanted, const char* alternatives) {
  const char* expected = SkipBlanks(wanted);
  bool same = true;
  for (const char* c = SkipBlanks(alternatives);; c = SkipBlanks(c + 1)) {
    if (*c == '|' || *c == '\0') {
      if (same && *expected == '\0') return true;
      if (*c == '\0') return false;
      expected = SkipBlanks(wanted);
      same = true;
    } else if (same && *c == *expected) {
      expected = SkipBlanks(expected + 1);
    } else {
      same = false;
    }
  }
}

TypeDescriptor* FindReadable(const ModuleRecord& module, const char* name) {
  for (std::size_t i = 0; i < module.type_count; ++i) {
    TypeDescriptor* type = module.type_table[i];
    if (type != nullptr && type->readable_name != nullptr && IsAlternative(name, type->readable_name)) return type;
  }
  return nullptr;
}

TypeDescriptor* FindType(ModuleRecord* head, const char* name) {
  if (head == nullptr) return nullptr;
  if (TypeDescriptor* type = FindMangled(head, head, name)) return type;
  return FindInRing(head, head, [&](const ModuleRecord& module) { return FindReadable(module, name); });
}

void PushFront(TypeDescriptor* type, CastEntry* entry) {
  entry->prev_cast = nullptr;
  entry->next_cast = type->casts;
  if (type->casts != nullptr) type->casts->prev_cast = entry;
  type->casts = entry;
}

void MoveToFront(TypeDescriptor* type, CastEntry* entry) {
  if (entry == type->casts) return;
  entry->prev_cast->next_cast = entry->next_cast;
  if (entry->next_cast != nullptr) entry->next_cast->prev_cast = entry->prev_cast;
  PushFront(type, entry);
}

// The type's cast entry for the type of this mangled name, moved to the front; null when there is none.
CastEntry* FindCastByName(TypeDescriptor* type, const char* mangled_name) {
  for (CastEntry* entry = type->casts; entry != nullptr; entry = entry->next_cast) {
    if (std::strcmp(entry->target_type->mangled_name, mangled_name) == 0) {
      MoveToFront(type, entry);
      return entry;
    }
  }
  return nullptr;
}

// Enters the module into the ring, right after its head; false when it is in there already.
bool EnterRing(ModuleRecord* head, ModuleRecord* module) {
  if (FindInRing(head, head, [&](const ModuleRecord& other) { return &other == module; })) return false;
  module->next_module = head->next_module;
  head->next_module = module;
  return true;
}

void FillCasts(ModuleRecord* module, TypeDescriptor* type, const TypeDescriptor* own, CastEntry* casts) {
  bool has_neighbours = module->next_module != module;
  for (CastEntry* entry = casts; entry->target_type != nullptr; ++entry) {
    TypeDescriptor* shared =
        has_neighbours ? FindMangled(module->next_module, module, entry->target_type->mangled_name) : nullptr;
    if (shared != nullptr) {
      if (type != own) {
        if (FindCastByName(type, shared->mangled_name) != nullptr) continue;
      } else {
        entry->target_type = shared;
      }
    }
    PushFront(type, entry);
  }
}

void FillTypeTable(ModuleRecord* module) {
  bool has_neighbours = module->next_module != module;
  for (std::size_t i = 0; i < module->type_count; ++i) {
    TypeDescriptor* own = module->own_types[i];
    TypeDescriptor* type = has_neighbours ? FindMangled(module->next_module, module, own->mangled_name) : nullptr;
    if (type == nullptr) {
      type = own;
    } else if (own->class_record != nullptr) {
      type->class_record = own->class_record;
    }
    FillCasts(module, type, own, module->own_casts[i]);
    module->type_table[i] = type;
  }
  module->type_table[module->type_count] = nullptr;
}

void PropagateClass(const TypeDescriptor& type) {
  for (CastEntry* entry = type.casts; entry != nullptr; entry = entry->next_cast) {
    TypeDescriptor* target = entry->target_type;
    if (entry->converter == nullptr && target->class_record == nullptr) {
      target->class_record = type.class_record;
      PropagateClass(*target);
    }
  }
}

}  // namespace

void JoinRing(lua_State* L, ModuleRecord* module) {
  // What may raise an error comes first, so that an opening that failed can be repeated.
  ModuleRecord* head = RingHead(L);
  if (head == nullptr) {
    lua_pushstring(L, kRingKey);
    lua_pushlightuserdata(L, module);
    lua_rawset(L, LUA_REGISTRYINDEX);
  }
  bool first = module->next_module == nullptr;
  if (first) module->next_module = module;
  if (head != nullptr && !EnterRing(head, module)) return;
  if (first) FillTypeTable(module);
}

void PropagateClasses(const ModuleRecord& module) {
  for (std::size_t i = 0; i < module.type_count; ++i) {
    const TypeDescriptor& type = *module.type_table[i];
    if (type.class_record != nullptr) PropagateClass(type);
  }
}

void ResolveBases(lua_State* L, const ModuleRecord& module) {
  ModuleRecord* head = RingHead(L);
  for (std::size_t i = 0; i < module.type_count; ++i) {
    const TypeDescriptor* own = module.type_table[i];
    const ClassRecord* record = own != nullptr ? own->class_record : nullptr;
    if (record == nullptr) continue;
    for (std::size_t base = 0; record->base_class_names[base] != nullptr; ++base) {
      if (record->bases[base] != nullptr) continue;
      if (const TypeDescriptor* type = FindType(head, record->base_class_names[base])) {
        record->bases[base] = type->class_record;
      }
    }
  }
}

CastEntry* FindCast(TypeDescriptor* expected, const TypeDescriptor* actual) {
  for (CastEntry* entry = expected->casts; entry != nullptr; entry = entry->next_cast) {
    if (entry->target_type == actual) {
      MoveToFront(expected, entry);
      return entry;
    }
  }
  return nullptr;
}

}  // namespace binding

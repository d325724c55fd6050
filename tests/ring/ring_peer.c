/* Lua module "ring_peer": a second native module of the same kind as tq_mom_sync, for the tests. It shares no code with
 * the binding runtime: the declarations below are the binary interface as other modules know it.
 *
 * A script describes module records (register_module), joins them to the interpreter's ring (join), and looks at or
 * changes what it finds there. Records, descriptors and native pointers are light userdata. All that is allocated stays
 * for the life of the process, as static data would. */
#include <dlfcn.h>
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

typedef struct type_descriptor type_descriptor;
typedef struct cast_entry cast_entry;
typedef struct class_record class_record;
typedef struct namespace_record namespace_record;
typedef struct module_record module_record;

struct type_descriptor {
  const char* mangled_name;
  const char* readable_name;
  type_descriptor* (*dyn_cast)(void**);
  cast_entry* casts;
  class_record* class_record;
  int own_data;
};

struct cast_entry {
  type_descriptor* target_type;
  void* (*converter)(void*, int*);
  cast_entry* next_cast;
  cast_entry* prev_cast;
};

struct module_record {
  type_descriptor** type_table;
  size_t type_count;
  module_record* next_module;
  type_descriptor** own_types;
  cast_entry** own_casts;
  void* client_data;
};

typedef struct {
  const char* name;
  lua_CFunction function;
} method;

typedef struct {
  const char* name;
  lua_CFunction getter;
  lua_CFunction setter;
} attribute;

typedef struct {
  int code;
  const char* name;
  long integer_value;
  double floating_value;
  void* pointer_value;
  type_descriptor** type;
} constant;

struct namespace_record {
  const char* name;
  method* methods;
  attribute* attributes;
  constant* constants;
  class_record** classes;
  namespace_record** namespaces;
};

struct class_record {
  const char* name;
  const char* qualified_name;
  type_descriptor** type;
  lua_CFunction constructor;
  void (*destructor)(void*);
  method* methods;
  attribute* attributes;
  namespace_record* cls_static;
  method* metatable;
  class_record** bases;
  const char** base_class_names;
};

typedef struct {
  type_descriptor* type;
  int own;
  void* ptr;
} handle;

static const char kRingKey[] = "swig_runtime_data_type_pointer4";

enum { kMaxModules = 1000, kShift = 16 };

/* Every allocation hangs on this list, so that leak checkers see it as reachable. */
typedef struct chunk {
  struct chunk* next;
  max_align_t data[];
} chunk;

static chunk* all_chunks;

static void* Allocate(lua_State* L, size_t size) {
  chunk* c = calloc(1, sizeof(chunk) + size);
  if (c == NULL) luaL_error(L, "out of memory");
  c->next = all_chunks;
  all_chunks = c;
  return c->data;
}

static char* CopyText(lua_State* L, const char* text) {
  char* copy = Allocate(L, strlen(text) + 1);
  strcpy(copy, text);
  return copy;
}

static void* CheckLight(lua_State* L, int index) {
  luaL_checktype(L, index, LUA_TLIGHTUSERDATA);
  return lua_touserdata(L, index);
}

static void PushLight(lua_State* L, const void* pointer) {
  if (pointer == NULL) {
    lua_pushnil(L);
  } else {
    lua_pushlightuserdata(L, (void*)(uintptr_t)pointer);
  }
}

static void SetText(lua_State* L, const char* key, const char* text) {
  lua_pushstring(L, text);
  lua_setfield(L, -2, key);
}

static void SetLight(lua_State* L, const char* key, const void* pointer) {
  PushLight(L, pointer);
  lua_setfield(L, -2, key);
}

static void SetInteger(lua_State* L, const char* key, lua_Integer value) {
  lua_pushinteger(L, value);
  lua_setfield(L, -2, key);
}

static void SetBoolean(lua_State* L, const char* key, int value) {
  lua_pushboolean(L, value);
  lua_setfield(L, -2, key);
}

/* Converters of cast entries. */

static int new_memory_on_entry;
static int conversions;

static void* ConvertShift(void* pointer, int* new_memory) {
  new_memory_on_entry |= *new_memory;
  conversions++;
  return (char*)pointer + kShift;
}

static void* ConvertToNewMemory(void* pointer, int* new_memory) {
  *new_memory = 1;
  return pointer;
}

typedef void* (*converter_function)(void*, int*);

static converter_function CheckConverter(lua_State* L, int index) {
  static const char* const names[] = {"none", "shift", "new_memory", NULL};
  switch (luaL_checkoption(L, index, "none", names)) {
    case 1: return ConvertShift;
    case 2: return ConvertToNewMemory;
    default: return NULL;
  }
}

/* Destructor of the peer's classes: notes what it was given. */

enum { kMaxDestroyed = 100 };
static void* destroyed[kMaxDestroyed];
static int destroyed_count;

static void Destroy(void* pointer) {
  if (destroyed_count < kMaxDestroyed) destroyed[destroyed_count++] = pointer;
}

static int Destroyed(lua_State* L) {
  lua_createtable(L, destroyed_count, 0);
  for (int i = 0; i < destroyed_count; i++) {
    PushLight(L, destroyed[i]);
    lua_rawseti(L, -2, i + 1);
  }
  destroyed_count = 0;
  return 1;
}

static int Conversions(lua_State* L) {
  lua_pushinteger(L, conversions);
  lua_pushinteger(L, new_memory_on_entry);
  conversions = 0;
  return 2;
}

/* Describing a module. */

static const char* TextField(lua_State* L, int index, const char* key) {
  const char* text = NULL;
  if (lua_getfield(L, index, key) != LUA_TNIL) text = CopyText(L, luaL_checkstring(L, -1));
  lua_pop(L, 1);
  return text;
}

static class_record* MakeClass(lua_State* L, int index, type_descriptor** slot) {
  static method no_methods[1];
  static attribute no_attributes[1];
  static constant no_constants[1];
  static class_record* no_classes[1];
  static namespace_record* no_namespaces[1];
  class_record* c = Allocate(L, sizeof *c);
  namespace_record* ns = Allocate(L, sizeof *ns);
  c->name = TextField(L, index, "name");
  c->qualified_name = TextField(L, index, "qualified_name");
  if (c->qualified_name == NULL) c->qualified_name = c->name;
  c->type = slot;
  c->methods = no_methods;
  c->attributes = no_attributes;
  c->metatable = no_methods;
  ns->name = c->name;
  ns->methods = no_methods;
  ns->attributes = no_attributes;
  ns->constants = no_constants;
  ns->classes = no_classes;
  ns->namespaces = no_namespaces;
  c->cls_static = ns;
  if (lua_getfield(L, index, "destructor"), lua_toboolean(L, -1)) c->destructor = Destroy;
  lua_pop(L, 1);
  size_t base_count = 0;
  if (lua_getfield(L, index, "bases") == LUA_TTABLE) base_count = lua_rawlen(L, -1);
  c->bases = Allocate(L, (base_count + 1) * sizeof(class_record*));
  c->base_class_names = Allocate(L, (base_count + 1) * sizeof(const char*));
  for (size_t i = 0; i < base_count; i++) {
    lua_rawgeti(L, -1, (lua_Integer)i + 1);
    c->base_class_names[i] = CopyText(L, luaL_checkstring(L, -1));
    lua_pop(L, 1);
  }
  lua_pop(L, 1);
  return c;
}

static int CompareTypes(const void* a, const void* b) {
  return strcmp((*(type_descriptor* const*)a)->mangled_name, (*(type_descriptor* const*)b)->mangled_name);
}

static size_t IndexOfOwn(lua_State* L, const module_record* m, const char* name) {
  for (size_t i = 0; i < m->type_count; i++) {
    if (strcmp(m->own_types[i]->mangled_name, name) == 0) return i;
  }
  luaL_error(L, "no type '%s' in this module", name);
  return 0;
}

/* The cast array described at the stack top; without a description, the type itself. */
static cast_entry* MakeCasts(lua_State* L, module_record* m, type_descriptor* own) {
  if (lua_isnil(L, -1)) {
    cast_entry* casts = Allocate(L, 2 * sizeof(cast_entry));
    casts[0].target_type = own;
    return casts;
  }
  luaL_checktype(L, -1, LUA_TTABLE);
  size_t count = lua_rawlen(L, -1);
  cast_entry* casts = Allocate(L, (count + 1) * sizeof(cast_entry));
  for (size_t i = 0; i < count; i++) {
    lua_rawgeti(L, -1, (lua_Integer)i + 1);
    lua_rawgeti(L, -1, 1);
    lua_rawgeti(L, -2, 2);
    casts[i].target_type = m->own_types[IndexOfOwn(L, m, luaL_checkstring(L, -2))];
    casts[i].converter = CheckConverter(L, lua_gettop(L));
    lua_pop(L, 3);
  }
  return casts;
}

/* register_module{ {mangled =, readable =, class = {name =, qualified_name =, destructor =, bases = {names}},
 * casts = {{mangled, converter}, ...}}, ... } -> module record, not yet joined */
static int RegisterModule(lua_State* L) {
  luaL_checktype(L, 1, LUA_TTABLE);
  lua_settop(L, 1);
  module_record* m = Allocate(L, sizeof *m);
  m->type_count = lua_rawlen(L, 1);
  m->type_table = Allocate(L, (m->type_count + 1) * sizeof(type_descriptor*));
  m->own_types = Allocate(L, (m->type_count + 1) * sizeof(type_descriptor*));
  m->own_casts = Allocate(L, (m->type_count + 1) * sizeof(cast_entry*));
  for (size_t i = 0; i < m->type_count; i++) {
    m->own_types[i] = Allocate(L, sizeof(type_descriptor));
    lua_rawgeti(L, 1, (lua_Integer)i + 1);
    m->own_types[i]->mangled_name = TextField(L, 2, "mangled");
    m->own_types[i]->readable_name = TextField(L, 2, "readable");
    lua_pop(L, 1);
  }
  qsort(m->own_types, m->type_count, sizeof(type_descriptor*), CompareTypes);
  for (size_t i = 0; i < m->type_count; i++) {
    lua_rawgeti(L, 1, (lua_Integer)i + 1);
    lua_getfield(L, 2, "mangled");
    size_t place = IndexOfOwn(L, m, lua_tostring(L, -1));
    type_descriptor* own = m->own_types[place];
    lua_pop(L, 1);
    if (lua_getfield(L, 2, "class") == LUA_TTABLE) {
      own->class_record = MakeClass(L, lua_gettop(L), &m->type_table[place]);
    }
    lua_pop(L, 1);
    lua_getfield(L, 2, "casts");
    m->own_casts[place] = MakeCasts(L, m, own);
    lua_settop(L, 1);
  }
  PushLight(L, m);
  return 1;
}

/* Start-up of a module of this kind. */

static module_record* Head(lua_State* L) {
  lua_pushstring(L, kRingKey);
  lua_rawget(L, LUA_REGISTRYINDEX);
  module_record* head = lua_islightuserdata(L, -1) ? lua_touserdata(L, -1) : NULL;
  lua_pop(L, 1);
  return head;
}

static module_record* Next(lua_State* L, const module_record* m, int* steps) {
  if (++*steps > kMaxModules) luaL_error(L, "the ring does not close");
  return m->next_module;
}

static type_descriptor* FindMangled(lua_State* L, module_record* start, module_record* end, const char* name) {
  int steps = 0;
  for (module_record* m = start; m != end; m = Next(L, m, &steps)) {
    for (size_t i = 0; i < m->type_count; i++) {
      type_descriptor* t = m->type_table[i];
      if (t == NULL || t->mangled_name == NULL) break;
      if (strcmp(t->mangled_name, name) == 0) return t;
    }
  }
  return NULL;
}

static void PushFront(type_descriptor* type, cast_entry* entry) {
  entry->prev_cast = NULL;
  entry->next_cast = type->casts;
  if (type->casts != NULL) type->casts->prev_cast = entry;
  type->casts = entry;
}

static void Unlink(type_descriptor* type, cast_entry* entry) {
  if (entry->prev_cast != NULL) entry->prev_cast->next_cast = entry->next_cast;
  if (entry->next_cast != NULL) entry->next_cast->prev_cast = entry->prev_cast;
  if (type->casts == entry) type->casts = entry->next_cast;
}

static int HasCast(type_descriptor* type, const char* name) {
  for (cast_entry* e = type->casts; e != NULL; e = e->next_cast) {
    if (strcmp(e->target_type->mangled_name, name) == 0) {
      Unlink(type, e);
      PushFront(type, e);
      return 1;
    }
  }
  return 0;
}

static void Propagate(type_descriptor* type) {
  for (cast_entry* e = type->casts; e != NULL; e = e->next_cast) {
    if (e->converter == NULL && e->target_type->class_record == NULL) {
      e->target_type->class_record = type->class_record;
      Propagate(e->target_type);
    }
  }
}

/* join(module) -> true when this was the record's first initialisation */
static int Join(lua_State* L) {
  module_record* m = CheckLight(L, 1);
  int first = m->next_module == NULL;
  if (first) m->next_module = m;
  module_record* head = Head(L);
  if (head == NULL) {
    lua_pushstring(L, kRingKey);
    lua_pushlightuserdata(L, m);
    lua_rawset(L, LUA_REGISTRYINDEX);
  } else if (head != m) {
    int steps = 0;
    module_record* walk = Next(L, head, &steps);
    while (walk != head && walk != m) walk = Next(L, walk, &steps);
    if (walk != m) {
      m->next_module = head->next_module;
      head->next_module = m;
    }
  }
  if (first) {
    for (size_t i = 0; i < m->type_count; i++) {
      type_descriptor* own = m->own_types[i];
      type_descriptor* type = FindMangled(L, m->next_module, m, own->mangled_name);
      if (type == NULL) {
        type = own;
      } else if (own->class_record != NULL) {
        type->class_record = own->class_record;
      }
      for (cast_entry* e = m->own_casts[i]; e->target_type != NULL; e++) {
        type_descriptor* found = FindMangled(L, m->next_module, m, e->target_type->mangled_name);
        if (found != NULL && type == own) e->target_type = found;
        if (found == NULL || type == own || !HasCast(type, found->mangled_name)) PushFront(type, e);
      }
      m->type_table[i] = type;
    }
    for (size_t i = 0; i < m->type_count; i++) {
      if (m->type_table[i]->class_record != NULL) Propagate(m->type_table[i]);
    }
  }
  lua_pushboolean(L, first);
  return 1;
}

/* Looking at the ring. */

static int PushHead(lua_State* L) {
  PushLight(L, Head(L));
  return 1;
}

static int SetNext(lua_State* L) {
  module_record* m = CheckLight(L, 1);
  m->next_module = CheckLight(L, 2);
  return 0;
}

/* ring() -> sequence of the module records, from the head */
static int Ring(lua_State* L) {
  lua_newtable(L);
  module_record* head = Head(L);
  if (head == NULL) return 1;
  int steps = 0;
  module_record* m = head;
  do {
    lua_pushlightuserdata(L, m);
    lua_rawseti(L, -2, steps + 1);
    m = Next(L, m, &steps);
  } while (m != head);
  return 1;
}

static int Module(lua_State* L) {
  module_record* m = CheckLight(L, 1);
  lua_settop(L, 1);
  lua_newtable(L);
  SetInteger(L, "count", (lua_Integer)m->type_count);
  SetLight(L, "next", m->next_module);
  SetLight(L, "client_data", m->client_data);
  SetBoolean(L, "terminated", m->type_table[m->type_count] == NULL);
  lua_newtable(L);
  lua_newtable(L);
  lua_newtable(L);
  for (size_t i = 0; i < m->type_count; i++) {
    lua_Integer place = (lua_Integer)i + 1;
    PushLight(L, m->type_table[i]);
    lua_rawseti(L, -4, place);
    PushLight(L, m->own_types[i]);
    lua_rawseti(L, -3, place);
    lua_Integer casts = 0;
    while (m->own_casts[i][casts].target_type != NULL) casts++;
    lua_pushinteger(L, casts);
    lua_rawseti(L, -2, place);
  }
  lua_setfield(L, 2, "own_cast_counts");
  lua_setfield(L, 2, "own_types");
  lua_setfield(L, 2, "types");
  return 1;
}

static int Type(lua_State* L) {
  type_descriptor* type = CheckLight(L, 1);
  lua_settop(L, 1);
  lua_newtable(L);
  SetText(L, "mangled", type->mangled_name);
  SetText(L, "readable", type->readable_name);
  SetBoolean(L, "dyn_cast", type->dyn_cast != NULL);
  SetLight(L, "class", type->class_record);
  SetInteger(L, "own_data", type->own_data);
  lua_newtable(L);
  cast_entry* before = NULL;
  int count = 0;
  for (cast_entry* e = type->casts; e != NULL; before = e, e = e->next_cast) {
    if (e->prev_cast != before) return luaL_error(L, "cast list of '%s': broken back link", type->mangled_name);
    if (++count > kMaxModules) return luaL_error(L, "cast list of '%s' does not end", type->mangled_name);
    lua_newtable(L);
    SetLight(L, "target", e->target_type);
    SetText(L, "mangled", e->target_type->mangled_name);
    SetBoolean(L, "converter", e->converter != NULL);
    lua_rawseti(L, -2, count);
  }
  lua_setfield(L, 2, "casts");
  return 1;
}

/* find(mangled name) -> descriptor, or nil */
static int Find(lua_State* L) {
  const char* name = luaL_checkstring(L, 1);
  module_record* head = Head(L);
  type_descriptor* found = NULL;
  if (head != NULL) {
    found = FindMangled(L, head->next_module, head, name);
    if (found == NULL) {
      for (size_t i = 0; i < head->type_count && found == NULL; i++) {
        if (strcmp(head->type_table[i]->mangled_name, name) == 0) found = head->type_table[i];
      }
    }
  }
  PushLight(L, found);
  return 1;
}

static void PushMethodNames(lua_State* L, const method* methods) {
  lua_newtable(L);
  for (int i = 0; methods[i].name != NULL; i++) {
    lua_pushstring(L, methods[i].name);
    lua_rawseti(L, -2, i + 1);
  }
}

static int Class(lua_State* L) {
  class_record* c = CheckLight(L, 1);
  lua_settop(L, 1);
  lua_newtable(L);
  SetText(L, "name", c->name);
  SetText(L, "qualified_name", c->qualified_name);
  SetLight(L, "type", *c->type);
  SetBoolean(L, "constructor", c->constructor != NULL);
  SetBoolean(L, "destructor", c->destructor != NULL);
  PushMethodNames(L, c->methods);
  lua_setfield(L, 2, "methods");
  PushMethodNames(L, c->metatable);
  lua_setfield(L, 2, "metatable");
  lua_newtable(L);
  for (int i = 0; c->attributes[i].name != NULL; i++) {
    lua_newtable(L);
    SetText(L, "name", c->attributes[i].name);
    SetBoolean(L, "getter", c->attributes[i].getter != NULL);
    SetBoolean(L, "setter", c->attributes[i].setter != NULL);
    lua_rawseti(L, -2, i + 1);
  }
  lua_setfield(L, 2, "attributes");
  SetText(L, "static_name", c->cls_static->name);
  lua_newtable(L);
  for (int i = 0; c->cls_static->constants[i].code != 0; i++) {
    lua_pushinteger(L, (lua_Integer)c->cls_static->constants[i].integer_value);
    lua_setfield(L, -2, c->cls_static->constants[i].name);
  }
  lua_setfield(L, 2, "static_constants");
  lua_newtable(L);
  lua_newtable(L);
  for (int i = 0; c->base_class_names[i] != NULL; i++) {
    lua_pushstring(L, c->base_class_names[i]);
    lua_rawseti(L, -3, i + 1);
    if (c->bases[i] == NULL) {
      lua_pushboolean(L, 0);
    } else {
      lua_pushlightuserdata(L, c->bases[i]);
    }
    lua_rawseti(L, -2, i + 1);
  }
  lua_setfield(L, 2, "bases");
  lua_setfield(L, 2, "base_names");
  return 1;
}

/* Changing what is there. */

static int SetClass(lua_State* L) {
  type_descriptor* type = CheckLight(L, 1);
  type->class_record = lua_isnil(L, 2) ? NULL : CheckLight(L, 2);
  return 0;
}

/* share_slot(class, other): the class names the other one's slot as the place of its type */
static int ShareSlot(lua_State* L) {
  class_record* c = CheckLight(L, 1);
  const class_record* other = CheckLight(L, 2);
  c->type = other->type;
  return 0;
}

static int SetBase(lua_State* L) {
  class_record* c = CheckLight(L, 1);
  c->bases[luaL_checkinteger(L, 2) - 1] = CheckLight(L, 3);
  return 0;
}

/* add_cast(type, target, converter, "front" | "back") */
static int AddCast(lua_State* L) {
  static const char* const places[] = {"front", "back", NULL};
  type_descriptor* type = CheckLight(L, 1);
  cast_entry* entry = Allocate(L, sizeof *entry);
  entry->target_type = CheckLight(L, 2);
  entry->converter = CheckConverter(L, 3);
  cast_entry* last = type->casts;
  while (last != NULL && last->next_cast != NULL) last = last->next_cast;
  if (luaL_checkoption(L, 4, "front", places) == 0 || last == NULL) {
    PushFront(type, entry);
  } else {
    last->next_cast = entry;
    entry->prev_cast = last;
  }
  return 0;
}

/* take_casts(type) -> head of the cast list, which is then empty; put_casts(type, head) undoes it */
static int TakeCasts(lua_State* L) {
  type_descriptor* type = CheckLight(L, 1);
  PushLight(L, type->casts);
  type->casts = NULL;
  return 1;
}

static int PutCasts(lua_State* L) {
  type_descriptor* type = CheckLight(L, 1);
  type->casts = lua_isnil(L, 2) ? NULL : CheckLight(L, 2);
  return 0;
}

static void Overwrite(lua_State* L, const char** place, const char* text) {
  uintptr_t page = (uintptr_t)sysconf(_SC_PAGESIZE);
  uintptr_t start = (uintptr_t)place & ~(page - 1);
  uintptr_t end = (uintptr_t)place + sizeof *place;
  if (mprotect((void*)start, end - start, PROT_READ | PROT_WRITE) != 0) luaL_error(L, "mprotect failed");
  *place = CopyText(L, text);
}

/* rename_class(class, name): breaks the rule that a class has the name of its static namespace */
static int RenameClass(lua_State* L) {
  class_record* c = CheckLight(L, 1);
  Overwrite(L, &c->name, luaL_checkstring(L, 2));
  return 0;
}

/* Native memory and handles. */

static int Alloc(lua_State* L) {
  PushLight(L, Allocate(L, (size_t)luaL_checkinteger(L, 1)));
  return 1;
}

static int PeekInt(lua_State* L) {
  int value;
  memcpy(&value, (char*)CheckLight(L, 1) + luaL_optinteger(L, 2, 0) * (lua_Integer)sizeof value, sizeof value);
  lua_pushinteger(L, value);
  return 1;
}

static int Offset(lua_State* L) {
  PushLight(L, (char*)CheckLight(L, 1) + luaL_checkinteger(L, 2));
  return 1;
}

/* new_handle(pointer, descriptor or nil, own) -> handle, with its class's metatable if that is registered */
static int NewHandle(lua_State* L) {
  void* pointer = CheckLight(L, 1);
  lua_settop(L, 3);
  type_descriptor* type = lua_isnil(L, 2) ? NULL : CheckLight(L, 2);
  handle* h = lua_newuserdata(L, sizeof *h);
  memset(h, 0, sizeof *h);
  h->type = type;
  h->own = lua_toboolean(L, 3);
  h->ptr = pointer;
  if (type != NULL && type->class_record != NULL && lua_getfield(L, LUA_REGISTRYINDEX, "SWIG") == LUA_TTABLE) {
    if (lua_getfield(L, -1, type->class_record->qualified_name) == LUA_TTABLE) {
      lua_setmetatable(L, -3);
    } else {
      lua_pop(L, 1);
    }
    lua_pop(L, 1);
  }
  return 1;
}

/* words(handle) -> descriptor, own, pointer */
static int Words(lua_State* L) {
  luaL_checktype(L, 1, LUA_TUSERDATA);
  luaL_argcheck(L, lua_rawlen(L, 1) >= sizeof(handle), 1, "shorter than a handle");
  handle h;
  memcpy(&h, lua_touserdata(L, 1), sizeof h);
  PushLight(L, h.type);
  lua_pushinteger(L, h.own);
  PushLight(L, h.ptr);
  return 3;
}

/* packed(userdata) -> descriptor, own, the bytes of a packed object: they follow two words */
static int Packed(lua_State* L) {
  enum { kHeader = 2 * sizeof(void*) };
  luaL_checktype(L, 1, LUA_TUSERDATA);
  luaL_argcheck(L, lua_rawlen(L, 1) >= kHeader, 1, "shorter than a packed object");
  const handle* h = lua_touserdata(L, 1);
  PushLight(L, h->type);
  lua_pushinteger(L, h->own);
  lua_pushlstring(L, (const char*)h + kHeader, lua_rawlen(L, 1) - kHeader);
  return 3;
}

static int HandleSize(lua_State* L) {
  lua_pushinteger(L, (lua_Integer)sizeof(handle));
  return 1;
}

/* block(bytes) -> a full userdata that is not a handle */
static int Block(lua_State* L) {
  size_t length;
  const char* bytes = luaL_checklstring(L, 1, &length);
  memcpy(lua_newuserdata(L, length), bytes, length);
  return 1;
}

static int BlockBytes(lua_State* L) {
  luaL_checktype(L, 1, LUA_TUSERDATA);
  lua_pushlstring(L, lua_touserdata(L, 1), lua_rawlen(L, 1));
  return 1;
}

static int BlockSize(lua_State* L) {
  luaL_checktype(L, 1, LUA_TUSERDATA);
  lua_pushinteger(L, (lua_Integer)lua_rawlen(L, 1));
  return 1;
}

static int Address(lua_State* L) {
  PushLight(L, lua_touserdata(L, 1));
  return 1;
}

/* The tested module's exported names. */

static void* Symbol(lua_State* L, const char* path, const char* name) {
  void* library = dlopen(path, RTLD_LAZY);
  if (library == NULL) luaL_error(L, "%s", dlerror());
  void* symbol = dlsym(library, name);
  if (symbol == NULL) luaL_error(L, "%s", dlerror());
  return symbol;
}

/* set_start_up_text(path, text or nil) */
static int SetStartUpText(lua_State* L) {
  const char** text = Symbol(L, luaL_checkstring(L, 1), "luaopen_tq_mom_sync_luacode");
  *text = lua_isnil(L, 2) ? NULL : CopyText(L, luaL_checkstring(L, 2));
  return 0;
}

/* open(path) -> result of luaopen_tq_mom_sync, number of values it left, the lowest of them, the top one */
static int Open(lua_State* L) {
  lua_CFunction open_module;
  *(void**)&open_module = Symbol(L, luaL_checkstring(L, 1), "luaopen_tq_mom_sync");
  int top = lua_gettop(L);
  int result = open_module(L);
  int left = lua_gettop(L) - top;
  lua_pushinteger(L, result);
  lua_pushinteger(L, left);
  lua_pushvalue(L, top + 1);
  lua_pushvalue(L, -4);
  return 4;
}

/* run_user_hook(path) -> number of values that luaopen_tq_mom_sync_user added, the value on top */
static int RunUserHook(lua_State* L) {
  void (*hook)(lua_State*);
  *(void**)&hook = Symbol(L, luaL_checkstring(L, 1), "luaopen_tq_mom_sync_user");
  lua_pushliteral(L, "marker");
  int top = lua_gettop(L);
  hook(L);
  lua_pushinteger(L, lua_gettop(L) - top);
  lua_pushvalue(L, -2);
  return 2;
}

/* Further interpreters in this process. */

static const char kStateType[] = "ring_peer.state";

static lua_State** CheckState(lua_State* L) { return luaL_checkudata(L, 1, kStateType); }

static int NewState(lua_State* L) {
  lua_State** other = lua_newuserdata(L, sizeof *other);
  *other = NULL;
  luaL_setmetatable(L, kStateType);
  *other = luaL_newstate();
  if (*other == NULL) return luaL_error(L, "out of memory");
  luaL_openlibs(*other);
  return 1;
}

static int CloseState(lua_State* L) {
  lua_State** other = CheckState(L);
  if (*other != NULL) lua_close(*other);
  *other = NULL;
  return 0;
}

static void CopyValue(lua_State* from, int index, lua_State* to) {
  switch (lua_type(from, index)) {
    case LUA_TBOOLEAN: lua_pushboolean(to, lua_toboolean(from, index)); break;
    case LUA_TNUMBER:
      if (lua_isinteger(from, index)) {
        lua_pushinteger(to, lua_tointeger(from, index));
      } else {
        lua_pushnumber(to, lua_tonumber(from, index));
      }
      break;
    case LUA_TSTRING: lua_pushstring(to, lua_tostring(from, index)); break;
    case LUA_TLIGHTUSERDATA: lua_pushlightuserdata(to, lua_touserdata(from, index)); break;
    default: lua_pushnil(to);
  }
}

/* state:run(chunk, ...) -> what the chunk returns; its error is raised here. Simple values only, else nil. */
static int RunState(lua_State* L) {
  lua_State* other = *CheckState(L);
  const char* code = luaL_checkstring(L, 2);
  int arguments = lua_gettop(L) - 2;
  luaL_argcheck(L, other != NULL, 1, "closed");
  luaL_checkstack(other, arguments + 2, NULL);
  int failed = luaL_loadstring(other, code) != LUA_OK;
  if (!failed) {
    for (int i = 0; i < arguments; i++) CopyValue(L, i + 3, other);
    failed = lua_pcall(other, arguments, LUA_MULTRET, 0) != LUA_OK;
  }
  if (failed) {
    lua_pushstring(L, lua_tostring(other, -1));
    lua_settop(other, 0);
    return lua_error(L);
  }
  int results = lua_gettop(other);
  luaL_checkstack(L, results, NULL);
  for (int i = 1; i <= results; i++) CopyValue(other, i, L);
  lua_settop(other, 0);
  return results;
}

int luaopen_ring_peer(lua_State* L);

__attribute__((visibility("default"))) int luaopen_ring_peer(lua_State* L) {
  static const luaL_Reg functions[] = {{"register_module", RegisterModule},
                                       {"join", Join},
                                       {"head", PushHead},
                                       {"set_next", SetNext},
                                       {"ring", Ring},
                                       {"module", Module},
                                       {"type", Type},
                                       {"find", Find},
                                       {"class", Class},
                                       {"set_class", SetClass},
                                       {"share_slot", ShareSlot},
                                       {"set_base", SetBase},
                                       {"add_cast", AddCast},
                                       {"take_casts", TakeCasts},
                                       {"put_casts", PutCasts},
                                       {"rename_class", RenameClass},
                                       {"alloc", Alloc},
                                       {"peek_int", PeekInt},
                                       {"offset", Offset},
                                       {"new_handle", NewHandle},
                                       {"words", Words},
                                       {"packed", Packed},
                                       {"handle_size", HandleSize},
                                       {"block", Block},
                                       {"block_bytes", BlockBytes},
                                       {"block_size", BlockSize},
                                       {"address", Address},
                                       {"destroyed", Destroyed},
                                       {"conversions", Conversions},
                                       {"set_start_up_text", SetStartUpText},
                                       {"open", Open},
                                       {"run_user_hook", RunUserHook},
                                       {"new_state", NewState},
                                       {NULL, NULL}};
  static const luaL_Reg state_methods[] = {
      {"run", RunState}, {"close", CloseState}, {"__gc", CloseState}, {NULL, NULL}};
  luaL_newmetatable(L, kStateType);
  luaL_setfuncs(L, state_methods, 0);
  lua_pushvalue(L, -1);
  lua_setfield(L, -2, "__index");
  luaL_newlib(L, functions);
  return 1;
}

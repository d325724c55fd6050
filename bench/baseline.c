/* What the measured functions cost when they are written by hand: one C function for each, the bare Lua C API, the
 * cheapest way known to do exactly the required checks, conversions, table look-ups and messages. It is the yardstick
 * of the measurement and no second implementation: the tables have the size and shape of the full module's, but only
 * the functions that a workload calls do anything. */
#include <assert.h>
#include <lauxlib.h>
#include <limits.h>
#include <lua.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <tq_description.h>
#include <tq_mom/tq_mom.h>

#define TQ_LIKELY(condition) __builtin_expect(!!(condition), 1)
#define TQ_COLD __attribute__((noinline, cold))

struct Class;
struct Type;

struct Cast {
  struct Type* target;
  void* (*converter)(void*, int*);
  struct Cast* next;
  struct Cast* prev;
};

struct Type {
  const char* mangled_name;
  const char* readable_name;
  struct Type* (*dyn_cast)(void**);
  struct Cast* casts;
  const struct Class* class_record;
  int own_data;
};

struct Class {
  const char* name;
  const char* const* fields;
  lua_CFunction constructor;
  void (*destructor)(void*);
};

struct Handle {
  struct Type* type;
  int own;
  void* pointer;
};

/* A class's type has one cast entry, itself. */
#define TQ_DECLARE_TYPE(name, ...) \
  static struct Type type_##name;  \
  static struct Cast cast_##name = {&type_##name, NULL, NULL, NULL};
TQ_MODULE_CLASSES(TQ_DECLARE_TYPE)

static struct Type void_type = {"_p_void", "void *", NULL, NULL, NULL, 0};

/* --- Messages. Everything below is off the hot paths. --- */

static void AddNumber(luaL_Buffer* text, int number) {
  char digits[12];
  char* p = digits + sizeof digits;
  do *--p = (char)('0' + number % 10);
  while (number /= 10);
  luaL_addlstring(text, p, (size_t)(digits + sizeof digits - p));
}

/* Begins a message with the caller's position, as luaL_where(L, 1) spells it, in the buffer instead of in a string. */
static void AddPosition(lua_State* L, luaL_Buffer* text) {
  lua_Debug record;
  if (!lua_getstack(L, 1, &record)) return;
  lua_getinfo(L, "Sl", &record);
  if (record.currentline <= 0) return;
  luaL_addstring(text, record.short_src);
  luaL_addchar(text, ':');
  AddNumber(text, record.currentline);
  luaL_addlstring(text, ": ", 2);
}

static const char* TypeName(lua_State* L, int index) {
  if (!lua_isuserdata(L, index)) return luaL_typename(L, index);
  const struct Handle* handle = lua_touserdata(L, index);
  if (lua_rawlen(L, index) < sizeof *handle || !handle->type || !handle->type->readable_name) {
    return "userdata (unknown type)";
  }
  return handle->type->readable_name;
}

static int Raise(lua_State* L, luaL_Buffer* text) {
  luaL_pushresult(text);
  return lua_error(L);
}

TQ_COLD static int CountError(lua_State* L, const char* function, int count, int positioned) {
  int given = lua_gettop(L);
  luaL_Buffer text;
  luaL_buffinit(L, &text);
  if (positioned) AddPosition(L, &text);
  luaL_addlstring(&text, "Error in ", 9);
  luaL_addstring(&text, function);
  luaL_addlstring(&text, " expected ", 10);
  AddNumber(&text, count);
  luaL_addlstring(&text, "..", 2);
  AddNumber(&text, count);
  luaL_addlstring(&text, " args, got ", 11);
  AddNumber(&text, given);
  return Raise(L, &text);
}

TQ_COLD static int ArgumentError(lua_State* L, const char* function, int argument, const char* expected,
                                 int positioned) {
  const char* given = TypeName(L, argument);
  luaL_Buffer text;
  luaL_buffinit(L, &text);
  if (positioned) AddPosition(L, &text);
  luaL_addlstring(&text, "Error in ", 9);
  luaL_addstring(&text, function);
  luaL_addlstring(&text, " (arg ", 6);
  AddNumber(&text, argument);
  luaL_addlstring(&text, "), expected '", 13);
  luaL_addstring(&text, expected);
  luaL_addlstring(&text, "' got '", 7);
  luaL_addstring(&text, given);
  luaL_addchar(&text, '\'');
  return Raise(L, &text);
}

TQ_COLD static int NegativeError(lua_State* L) {
  luaL_Buffer text;
  luaL_buffinit(L, &text);
  AddPosition(L, &text);
  luaL_addstring(&text, "number must not be negative");
  return Raise(L, &text);
}

TQ_COLD static int PlainError(lua_State* L, const char* text) {
  lua_pushstring(L, text);
  return lua_error(L);
}

/* --- Conversions --- */

TQ_COLD static int NumberToInt(lua_State* L, int index, int* value) {
  int is_number;
  lua_Number number = lua_tonumberx(L, index, &is_number);
  *value = number != number ? 0 : number >= INT_MAX ? INT_MAX : number <= INT_MIN ? INT_MIN : (int)number;
  return is_number;
}

/* Check and conversion in one: false if the value is no number. */
static inline int ToInt(lua_State* L, int index, int* value) {
  int is_integer;
  lua_Integer integer = lua_tointegerx(L, index, &is_integer);
  if (!TQ_LIKELY(is_integer)) return NumberToInt(L, index, value);
  *value = integer > INT_MAX ? INT_MAX : integer < INT_MIN ? INT_MIN : (int)integer;
  return 1;
}

TQ_COLD static int FindCast(struct Handle* handle, struct Type* type, void** pointer) {
  for (struct Cast* cast = type->casts; cast; cast = cast->next) {
    if (cast->target != handle->type) continue;
    if (cast != type->casts) {
      cast->prev->next = cast->next;
      if (cast->next) cast->next->prev = cast->prev;
      cast->next = type->casts;
      cast->prev = NULL;
      type->casts->prev = cast;
      type->casts = cast;
    }
    int new_memory = 0;
    *pointer = cast->converter ? cast->converter(handle->pointer, &new_memory) : handle->pointer;
    assert(!new_memory);
    return 1;
  }
  return 0;
}

/* block is what lua_touserdata gave for the argument. A null one is the caller's shape error unless the value is nil.
 */
static inline int ToRecord(lua_State* L, int index, void* block, struct Type* type, void** pointer) {
  struct Handle* handle = block;
  if (!handle) {
    *pointer = NULL;
    return lua_isnil(L, index);
  }
  if (lua_rawlen(L, index) < sizeof *handle) return 0;
  if (!TQ_LIKELY(type->casts && type->casts->target == handle->type && !type->casts->converter)) {
    return FindCast(handle, type, pointer);
  }
  *pointer = handle->pointer;
  return 1;
}

/* Of any type; null for everything that is no handle. */
static inline void* ToPointer(lua_State* L, int index) {
  struct Handle* handle = lua_touserdata(L, index);
  return handle && lua_rawlen(L, index) >= sizeof *handle ? handle->pointer : NULL;
}

TQ_COLD static void MakeClassTable(lua_State* L) {
  static const char* const kInheritable[] = {"__add", "__sub",    "__mul", "__div", "__mod", "__pow",  "__unm",
                                             "__len", "__concat", "__eq",  "__lt",  "__le",  "__call", "__tostring"};
  lua_pop(L, 1);
  lua_createtable(L, 0, 67);
  lua_createtable(L, 0, 1);
  lua_createtable(L, 0, 15);
  for (size_t i = 0; i < sizeof kInheritable / sizeof *kInheritable; ++i) {
    lua_pushboolean(L, 1);
    lua_setfield(L, -2, kInheritable[i]);
  }
  lua_pushboolean(L, 0);
  lua_setfield(L, -2, "__gc");
  lua_setfield(L, -2, "inheritable_metamethods");
  lua_setfield(L, -2, ".library");
  lua_pushstring(L, "SWIG");
  lua_pushvalue(L, -2);
  lua_rawset(L, LUA_REGISTRYINDEX);
}

/* A function that makes handles of a class is a closure over the strings that find the class's metatable: the key of
 * the class table and the class's name, or names. */
enum { kClassTableKey = 1, kClassName, kSecondClassName };

static inline int PushClassTable(lua_State* L, int key) {
  lua_pushvalue(L, key);
  if (!TQ_LIKELY(lua_rawget(L, LUA_REGISTRYINDEX) == LUA_TTABLE)) MakeClassTable(L);
  return lua_gettop(L);
}

static inline void PushPlainHandle(lua_State* L, void* pointer, struct Type* type, int own) {
  struct Handle* handle = lua_newuserdata(L, sizeof *handle);
  handle->type = type;
  handle->own = own;
  handle->pointer = pointer;
}

/* pointer is not null. */
static inline void PushHandle(lua_State* L, void* pointer, struct Type* type, int own, int class_table, int name) {
  PushPlainHandle(L, pointer, type, own);
  lua_pushvalue(L, lua_upvalueindex(name));
  if (TQ_LIKELY(lua_rawget(L, class_table) == LUA_TTABLE)) {
    lua_setmetatable(L, -2);
  } else {
    lua_pop(L, 1);
  }
}

static inline int ReturnHandle(lua_State* L, void* pointer, struct Type* type, int own) {
  if (!pointer) {
    lua_pushnil(L);
    return 1;
  }
  int class_table = PushClassTable(L, lua_upvalueindex(kClassTableKey));
  PushHandle(L, pointer, type, own, class_table, kClassName);
  return 1;
}

/* --- Commands --- */

static int Set(lua_State* L) {
  int db;
  void* g;
  if (lua_gettop(L) != 3) return CountError(L, "tq_mom_set_sync", 3, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_set_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "tq_mom_set_sync", 2, "int", 1);
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "set", 1, type_tq_global_t.readable_name, 1);
  }
  lua_pushnumber(L, tq_mom_set_sync(g, db, ToPointer(L, 3)));
  return 1;
}

static int GetExt(lua_State* L) {
  int db;
  void *g, *op;
  if (lua_gettop(L) != 4) return CountError(L, "tq_mom_get_ext_sync", 4, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_get_ext_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "tq_mom_get_ext_sync", 2, "int", 1);
  void* op_block = lua_touserdata(L, 3);
  if (!op_block && !lua_isnil(L, 3) && !lua_isuserdata(L, 3)) {
    return ArgumentError(L, "tq_mom_get_ext_sync", 3, "tq_mom_get_op_t *", 1);
  }
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "get_ext", 1, type_tq_global_t.readable_name, 1);
  }
  if (!ToRecord(L, 3, op_block, &type_get_op_t, &op)) {
    return ArgumentError(L, "get_ext", 3, type_get_op_t.readable_name, 1);
  }
  return ReturnHandle(L, tq_mom_get_ext_sync(g, db, op, ToPointer(L, 4)), &type_tq_mom_get_res_t, 0);
}

static int Zrange(lua_State* L) {
  int db, start, stop;
  void* g;
  if (lua_gettop(L) != 5) return CountError(L, "tq_mom_zrange_sync", 5, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_zrange_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "tq_mom_zrange_sync", 2, "int", 1);
  if (!ToInt(L, 4, &start)) return ArgumentError(L, "tq_mom_zrange_sync", 4, "int", 1);
  if (!ToInt(L, 5, &stop)) return ArgumentError(L, "tq_mom_zrange_sync", 5, "int", 1);
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "zrange", 1, type_tq_global_t.readable_name, 1);
  }
  return ReturnHandle(L, tq_mom_zrange_sync(g, db, ToPointer(L, 3), start, stop), &type_tq_mom_zrange_res_t, 0);
}

/* As many values as may lie on the stack beside the arguments without asking for room. */
enum { kGroup = 8 };

static int Hmset(lua_State* L) {
  int db;
  void* g;
  if (lua_gettop(L) != 4) return CountError(L, "tq_mom_hmset_sync", 4, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_hmset_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "tq_mom_hmset_sync", 2, "int", 1);
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "hmset", 1, type_tq_global_t.readable_name, 1);
  }
  void* key = ToPointer(L, 3);
  if (!lua_istable(L, 4)) return PlainError(L, "input error, errcode_1");
  int count = (int)lua_rawlen(L, 4);
  int32_t* fields = NULL;
  if (count > 0) {
    fields = malloc((size_t)count * sizeof *fields);
    if (!fields) return PlainError(L, "memory error");
  }
  for (int i = 0; i < count;) {
    int end = count - i > kGroup ? i + kGroup : count;
    for (; i < end; ++i) {
      lua_rawgeti(L, 4, i + 1);
      if (!TQ_LIKELY(lua_isinteger(L, -1))) {
        free(fields);
        return PlainError(L, "input error, errcode_3");
      }
      fields[i] = (int32_t)lua_tointegerx(L, -1, NULL);
    }
    lua_settop(L, 4);
  }
  int status = tq_mom_hmset_sync(g, db, key, fields, count);
  free(fields);
  lua_pushnumber(L, status);
  return 1;
}

static int Zadd(lua_State* L) {
  int db;
  void* g;
  if (lua_gettop(L) != 4) return CountError(L, "_tq_mom_zadd_sync", 4, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "_tq_mom_zadd_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "_tq_mom_zadd_sync", 2, "int", 1);
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "zadd", 1, type_tq_global_t.readable_name, 1);
  }
  if (!lua_istable(L, 3)) return PlainError(L, "input error, expect array");
  int score_count = (int)lua_rawlen(L, 3);
  double* scores = NULL;
  if (score_count > 0) {
    scores = malloc(((size_t)score_count + 1) * sizeof *scores);
    if (!scores) return PlainError(L, "memory error");
  }
  for (int i = 0; i < score_count;) {
    int end = score_count - i > kGroup ? i + kGroup : score_count;
    for (; i < end; ++i) {
      int is_number;
      lua_rawgeti(L, 3, i + 1);
      scores[i] = lua_tonumberx(L, -1, &is_number);
      if (!TQ_LIKELY(is_number)) {
        free(scores);
        return PlainError(L, "input error");
      }
    }
    lua_settop(L, 4);
  }
  if (!lua_istable(L, 4)) {
    free(scores);
    return PlainError(L, "input error, expect array");
  }
  int member_count = (int)lua_rawlen(L, 4);
  void** members = NULL;
  if (member_count > 0) {
    members = malloc(((size_t)member_count + 1) * sizeof *members);
    if (!members) {
      free(scores);
      return PlainError(L, "memory error");
    }
  }
  for (int i = 0; i < member_count;) {
    int end = member_count - i > kGroup ? i + kGroup : member_count;
    for (; i < end; ++i) {
      lua_rawgeti(L, 4, i + 1);
      struct Handle* handle = lua_touserdata(L, -1);
      if (TQ_LIKELY(handle && lua_rawlen(L, -1) >= sizeof *handle)) {
        members[i] = handle->pointer;
      } else if (lua_isnil(L, -1)) {
        members[i] = NULL;
      } else {
        free(scores);
        free(members);
        return PlainError(L, "input error");
      }
    }
    lua_settop(L, 4);
  }
  int status = score_count == member_count ? tq_mom_zadd_sync(g, db, scores, members, score_count) : -2;
  free(scores);
  free(members);
  lua_pushnumber(L, status);
  return 1;
}

/* --- Scan --- */

struct Reference {
  lua_State* L;
  int number;
};

struct ScanContext {
  struct Reference callback;
  struct Reference argument;
};

static void PushReference(const struct Reference* reference) {
  if (reference->L) lua_rawgeti(reference->L, LUA_REGISTRYINDEX, reference->number);
}

/* Runs in the frame of Scan, whose upvalues it uses. */
static int DeliverMessage(tq_global_t* g, void* message, void* context) {
  struct ScanContext* scan = context;
  if (!scan) return 0;
  lua_State* L = scan->callback.L;
  int class_table = PushClassTable(L, lua_upvalueindex(kClassTableKey));
  PushReference(&scan->callback);
  if (g) {
    PushHandle(L, g, &type_tq_global_t, 0, class_table, kClassName);
  } else {
    lua_pushnil(L);
  }
  if (message) {
    PushHandle(L, message, &type_tq_mom_pubsub_msg_t, 0, class_table, kSecondClassName);
  } else {
    lua_pushnil(L);
  }
  PushReference(&scan->argument);
  if (!lua_isfunction(L, -4)) return 0;
  lua_call(L, 3, 1);
  int result = lua_isinteger(L, -1) ? (int)lua_tointegerx(L, -1, NULL) : 0;
  lua_pop(L, 2);
  return result;
}

static int Scan(lua_State* L) {
  int db, is_number;
  void* g;
  if (lua_gettop(L) != 6) return CountError(L, "tq_mom_scan_sync", 6, 1);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_scan_sync", 1, "tq_global_t *", 1);
  }
  if (!ToInt(L, 2, &db)) return ArgumentError(L, "tq_mom_scan_sync", 2, "int", 1);
  double number = lua_tonumberx(L, 4, &is_number);
  if (!is_number) return ArgumentError(L, "tq_mom_scan_sync", 4, "unsigned int", 1);
  if (!ToRecord(L, 1, block, &type_tq_global_t, &g)) {
    return ArgumentError(L, "scan", 1, type_tq_global_t.readable_name, 1);
  }
  if (!(number >= 0)) return NegativeError(L);
  unsigned int count = number >= UINT_MAX ? UINT_MAX : (unsigned int)number;
  void* key = ToPointer(L, 3);
  int status;
  if (lua_isfunction(L, 5)) {
    struct ScanContext references;
    lua_pushvalue(L, 5);
    references.callback.L = L;
    references.callback.number = luaL_ref(L, LUA_REGISTRYINDEX);
    lua_pushvalue(L, 6);
    references.argument.L = L;
    references.argument.number = luaL_ref(L, LUA_REGISTRYINDEX);
    struct ScanContext* context = malloc(sizeof *context);
    if (!context) return PlainError(L, "memory error");
    *context = references;
    status = tq_mom_scan_sync(g, db, key, count, DeliverMessage, context);
    luaL_unref(L, LUA_REGISTRYINDEX, references.callback.number);
    luaL_unref(L, LUA_REGISTRYINDEX, references.argument.number);
    free(context);
  } else if (lua_isnil(L, 5)) {
    status = tq_mom_scan_sync(g, db, key, count, NULL, NULL);
  } else {
    return PlainError(L, "input error: cb is not function");
  }
  lua_pushnumber(L, status);
  return 1;
}

/* --- Accessors. They run inside the dispatcher's call, so that their messages have no position. --- */

/* Their section tells the dispatcher which functions it may run in its own frame: these have no upvalues, and a getter
 * returns one value. */
#define TQ_ACCESSOR __attribute__((section("tq_accessors")))
extern const char __start_tq_accessors[] __attribute__((visibility("hidden")));
extern const char __stop_tq_accessors[] __attribute__((visibility("hidden")));

static inline int IsAccessor(lua_CFunction function) {
  return (uintptr_t)function >= (uintptr_t)__start_tq_accessors && (uintptr_t)function < (uintptr_t)__stop_tq_accessors;
}

static int PushNil(lua_State* L) {
  lua_pushnil(L);
  return 1;
}

TQ_ACCESSOR static int GetMilseconds(lua_State* L) {
  void* record;
  if (lua_gettop(L) != 1) return CountError(L, "tq_mom_psetex_op_s::milseconds", 1, 0);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_psetex_op_s::milseconds", 1, "struct tq_mom_psetex_op_s *", 0);
  }
  if (!ToRecord(L, 1, block, &type_psetex_op_t, &record)) {
    return ArgumentError(L, "psetex_op_t_milseconds_get", 1, type_psetex_op_t.readable_name, 0);
  }
  if (!record) return PushNil(L);
  lua_pushnumber(L, ((tq_mom_psetex_op_t*)record)->milseconds);
  return 1;
}

TQ_ACCESSOR static int SetMilseconds(lua_State* L) {
  void* record;
  int value;
  if (lua_gettop(L) != 2) return CountError(L, "tq_mom_psetex_op_s::milseconds", 2, 0);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_psetex_op_s::milseconds", 1, "struct tq_mom_psetex_op_s *", 0);
  }
  if (!ToInt(L, 2, &value)) return ArgumentError(L, "tq_mom_psetex_op_s::milseconds", 2, "int", 0);
  if (!ToRecord(L, 1, block, &type_psetex_op_t, &record)) {
    return ArgumentError(L, "psetex_op_t_milseconds_set", 1, type_psetex_op_t.readable_name, 0);
  }
  if (record) ((tq_mom_psetex_op_t*)record)->milseconds = value;
  return 0;
}

TQ_ACCESSOR static int GetField(lua_State* L) {
  void* record;
  if (lua_gettop(L) != 1) return CountError(L, "tq_mom_pubsub_msg_s::field", 1, 0);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_pubsub_msg_s::field", 1, "struct tq_mom_pubsub_msg_s *", 0);
  }
  if (!ToRecord(L, 1, block, &type_tq_mom_pubsub_msg_t, &record)) {
    return ArgumentError(L, "tq_mom_pubsub_msg_t_field_get", 1, type_tq_mom_pubsub_msg_t.readable_name, 0);
  }
  if (!record) return PushNil(L);
  const char* text = ((tq_mom_pubsub_msg_t*)record)->field;
  if (TQ_LIKELY(text[TQ_MOM_FIELD_MAX_LEN - 1] == '\0')) {
    lua_pushstring(L, text);
  } else {
    lua_pushlstring(L, text, strnlen(text, TQ_MOM_FIELD_MAX_LEN));
  }
  return 1;
}

TQ_ACCESSOR static int SetField(lua_State* L) {
  void* record;
  if (lua_gettop(L) != 2) return CountError(L, "tq_mom_pubsub_msg_s::field", 2, 0);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_pubsub_msg_s::field", 1, "struct tq_mom_pubsub_msg_s *", 0);
  }
  const char* text = lua_tolstring(L, 2, NULL);
  if (!text && !lua_isnil(L, 2)) return ArgumentError(L, "tq_mom_pubsub_msg_s::field", 2, "char [128]", 0);
  if (!ToRecord(L, 1, block, &type_tq_mom_pubsub_msg_t, &record)) {
    return ArgumentError(L, "tq_mom_pubsub_msg_t_field_set", 1, type_tq_mom_pubsub_msg_t.readable_name, 0);
  }
  if (!record) return 0;
  char* field = ((tq_mom_pubsub_msg_t*)record)->field;
  if (text) {
    strncpy(field, text, TQ_MOM_FIELD_MAX_LEN - 1);
    field[TQ_MOM_FIELD_MAX_LEN - 1] = '\0';
  } else {
    field[0] = '\0';
  }
  return 0;
}

TQ_ACCESSOR static int GetValues(lua_State* L) {
  void* record;
  if (lua_gettop(L) != 1) return CountError(L, "tq_mom_zrange_res_s::value", 1, 0);
  void* block = lua_touserdata(L, 1);
  if (!block && !lua_isnil(L, 1) && !lua_isuserdata(L, 1)) {
    return ArgumentError(L, "tq_mom_zrange_res_s::value", 1, "struct tq_mom_zrange_res_s *", 0);
  }
  if (!ToRecord(L, 1, block, &type_tq_mom_zrange_res_t, &record)) {
    return ArgumentError(L, "tq_mom_zrange_res_t_value_get", 1, type_tq_mom_zrange_res_t.readable_name, 0);
  }
  if (!record) return PushNil(L);
  tq_mom_zrange_res_t* result = record;
  if (!result->value) {
    lua_newtable(L);
    return 1;
  }
  lua_createtable(L, result->count > INT_MAX ? 0 : (int)result->count, 0);
  for (size_t i = 0; i < result->count; ++i) {
    if (result->value[i]) {
      PushPlainHandle(L, result->value[i], &void_type, 0);
    } else {
      lua_pushnil(L);
    }
    lua_rawseti(L, -2, (lua_Integer)i + 1);
  }
  return 1;
}

/* --- Classes --- */

/* The names that the dispatchers look up are upvalues of one pair of closures. */
enum { kGet = 1, kFn, kBases, kGetItem };
enum { kSet = 1, kSetItem };

/* Classes without bases: the walk over a base is not written out. */
static int HasNoBases(lua_State* L, int metatable) {
  lua_pushvalue(L, lua_upvalueindex(kBases));
  int type = lua_rawget(L, metatable);
  assert(type == LUA_TTABLE);
  (void)type;
  return lua_rawlen(L, -1) == 0;
}

static int GetMember(lua_State* L) {
  assert(lua_isuserdata(L, 1));
  assert(lua_gettop(L) == 2);
  int got = lua_getmetatable(L, 1);
  assert(got);
  (void)got;
  lua_pushvalue(L, lua_upvalueindex(kGet));
  int type = lua_rawget(L, 3);
  assert(type == LUA_TTABLE);
  lua_pushvalue(L, 2);
  lua_rawget(L, 4);
  lua_CFunction getter = lua_tocfunction(L, 5);
  if (TQ_LIKELY(getter != NULL)) {
    if (TQ_LIKELY(IsAccessor(getter))) {
      lua_settop(L, 1);
      return getter(L);
    }
    lua_pushvalue(L, 1);
    lua_call(L, 1, 1);
    return 1;
  }
  lua_pushvalue(L, lua_upvalueindex(kFn));
  type = lua_rawget(L, 3);
  assert(type == LUA_TTABLE);
  lua_pushvalue(L, 2);
  if (lua_rawget(L, -2) == LUA_TFUNCTION) return 1;
  int no_bases = HasNoBases(L, 3);
  assert(no_bases);
  (void)no_bases;
  (void)type;
  lua_pushvalue(L, lua_upvalueindex(kGetItem));
  if (lua_rawget(L, 3) != LUA_TFUNCTION) return 0;
  lua_pushvalue(L, 1);
  lua_pushvalue(L, 2);
  lua_call(L, 2, 1);
  return 1;
}

static int SetMember(lua_State* L) {
  assert(lua_isuserdata(L, 1));
  assert(lua_gettop(L) == 3);
  int got = lua_getmetatable(L, 1);
  assert(got);
  (void)got;
  lua_pushvalue(L, lua_upvalueindex(kSet));
  int type = lua_rawget(L, 4);
  assert(type == LUA_TTABLE);
  (void)type;
  lua_pushvalue(L, 2);
  lua_rawget(L, 5);
  lua_CFunction setter = lua_tocfunction(L, 6);
  if (TQ_LIKELY(setter != NULL)) {
    if (TQ_LIKELY(IsAccessor(setter))) {
      lua_copy(L, 3, 2);
      lua_settop(L, 2);
      return setter(L);
    }
    lua_pushvalue(L, 1);
    lua_pushvalue(L, 3);
    lua_call(L, 2, 0);
    return 0;
  }
  lua_pushvalue(L, lua_upvalueindex(kSetItem));
  if (lua_rawget(L, 4) != LUA_TFUNCTION) {
    return luaL_error(L,
                      "Assignment not possible. No setter/member with this name. For custom assignments implement "
                      "__setitem method.");
  }
  lua_pushvalue(L, 1);
  lua_pushvalue(L, 2);
  lua_pushvalue(L, 3);
  lua_call(L, 3, 0);
  return 0;
}

static int Collect(lua_State* L) {
  struct Handle* handle = lua_touserdata(L, 1);
  assert(handle);
  if (lua_rawlen(L, 1) < sizeof *handle || !handle->own) return 0;
  if (handle->type->class_record && handle->type->class_record->destructor) {
    handle->type->class_record->destructor(handle->pointer);
  }
  return 0;
}

static int Disown(lua_State* L) {
  struct Handle* handle = lua_touserdata(L, 1);
  assert(handle);
  if (lua_rawlen(L, 1) >= sizeof *handle) handle->own = 0;
  return 0;
}

static int ToString(lua_State* L) {
  lua_getmetatable(L, 1);
  lua_getfield(L, -1, ".type");
  lua_pushfstring(L, "<%s userdata: %p>", lua_tostring(L, -1), lua_touserdata(L, 1));
  return 1;
}

static int Equals(lua_State* L) {
  lua_pushboolean(L, ToPointer(L, 1) == ToPointer(L, 2));
  return 1;
}

static int TypeOf(lua_State* L) {
  lua_pushstring(L, TypeName(L, 1));
  return 1;
}

/* Called through "__call", with the static table in front. */
static int Construct(lua_State* L, struct Type* type, size_t size, const char* function) {
  assert(lua_istable(L, 1));
  if (lua_gettop(L) != 1) {
    lua_remove(L, 1);
    return CountError(L, function, 0, 0);
  }
  return ReturnHandle(L, calloc(1, size), type, 1);
}

static int GetNamespaceMember(lua_State* L) {
  lua_getmetatable(L, 1);
  lua_getfield(L, -1, ".get");
  lua_pushvalue(L, 2);
  lua_rawget(L, -2);
  if (!lua_iscfunction(L, -1)) return 0;
  lua_call(L, 0, 1);
  return 1;
}

static int SetNamespaceMember(lua_State* L) {
  lua_settop(L, 3);
  lua_rawset(L, 1);
  return 0;
}

static int NotMeasured(lua_State* L) { return luaL_error(L, "not measured"); }

#define TQ_CLASS(name, kind, tag, ...)                                                                               \
  static int Construct_##name(lua_State* L) { return Construct(L, &type_##name, sizeof(kind tag), #tag "::" #tag); } \
  static const char* const fields_##name[] = {__VA_ARGS__, NULL};                                                    \
  static const struct Class class_##name = {#name, fields_##name, Construct_##name, free};                           \
  static struct Type type_##name = {                                                                                 \
      "_p_" #tag, #kind " " #tag " *|" #tag " *|" #name " *", NULL, &cast_##name, &class_##name, 0};
TQ_MODULE_CLASSES(TQ_CLASS)

struct Accessors {
  const struct Class* owner;
  const char* field;
  lua_CFunction getter;
  lua_CFunction setter;
};

static const struct Accessors measured_fields[] = {
    {&class_psetex_op_t, "milseconds", GetMilseconds, SetMilseconds},
    {&class_tq_mom_pubsub_msg_t, "field", GetField, SetField},
    {&class_tq_mom_zrange_res_t, "value", GetValues, NotMeasured},
};

static const struct {
  const char* name;
  lua_CFunction function;
  const char* class_names[2];
} measured_functions[] = {
    {"set", Set, {NULL, NULL}},
    {"get_ext", GetExt, {"tq_mom_get_res_t", NULL}},
    {"zrange", Zrange, {"tq_mom_zrange_res_t", NULL}},
    {"hmset", Hmset, {NULL, NULL}},
    {"zadd", Zadd, {NULL, NULL}},
    {"scan", Scan, {"tq_global_t", "tq_mom_pubsub_msg_t"}},
};

/* --- Load: every table is presized, every metatable set last. --- */

enum { kGlobals = 1, kRegistryKey, kClassTable, kModule, kIndex, kNewIndex };

static void RawSetFunction(lua_State* L, int table, const char* name, lua_CFunction function) {
  lua_pushstring(L, name);
  lua_pushcfunction(L, function);
  lua_rawset(L, table);
}

static void RawSetInteger(lua_State* L, int table, const char* name, lua_Integer value) {
  lua_pushstring(L, name);
  lua_pushinteger(L, value);
  lua_rawset(L, table);
}

static void RawSetTable(lua_State* L, int table, const char* name, int hash_size) {
  lua_pushstring(L, name);
  lua_createtable(L, 0, hash_size);
  lua_rawset(L, table);
}

static void RawSetCopy(lua_State* L, int table, const char* name, int value) {
  lua_pushstring(L, name);
  lua_pushvalue(L, value);
  lua_rawset(L, table);
}

static void PushDispatcher(lua_State* L, lua_CFunction function, const char* const* names) {
  int count = 0;
  for (; names[count]; ++count) lua_pushstring(L, names[count]);
  lua_pushcclosure(L, function, count);
}

static void AddFields(lua_State* L, const struct Class* record) {
  int metatable = lua_gettop(L);
  int count = 0;
  while (record->fields[count]) ++count;
  lua_pushliteral(L, ".get");
  lua_createtable(L, 0, count);
  lua_pushliteral(L, ".set");
  lua_createtable(L, 0, count);
  for (int i = 0; i < count; ++i) {
    lua_CFunction getter = NotMeasured;
    lua_CFunction setter = NotMeasured;
    for (size_t j = 0; j < sizeof measured_fields / sizeof *measured_fields; ++j) {
      if (measured_fields[j].owner != record || strcmp(measured_fields[j].field, record->fields[i]) != 0) continue;
      getter = measured_fields[j].getter;
      setter = measured_fields[j].setter;
    }
    lua_pushstring(L, record->fields[i]);
    lua_pushvalue(L, -1);
    lua_pushcfunction(L, getter);
    lua_rawset(L, metatable + 2);
    lua_pushcfunction(L, setter);
    lua_rawset(L, metatable + 4);
  }
  lua_rawset(L, metatable);
  lua_rawset(L, metatable);
}

/* Leaves the static table and its metatable on the stack, the metatable on top and not yet set. */
static void MakeNamespace(lua_State* L, int size, int metatable_size) {
  lua_createtable(L, 0, size);
  lua_createtable(L, 0, metatable_size);
  int metatable = lua_gettop(L);
  RawSetTable(L, metatable, ".get", 0);
  RawSetTable(L, metatable, ".set", 0);
  RawSetTable(L, metatable, ".fn", 0);
  RawSetFunction(L, metatable, "__index", GetNamespaceMember);
  RawSetFunction(L, metatable, "__newindex", SetNamespaceMember);
}

static void AddStatics(lua_State* L, const struct Class* owner, int table) {
#define TQ_STATIC(class, name) \
  if (owner == &class_##class) RawSetInteger(L, table, #name, name);
  TQ_MODULE_STATICS(TQ_STATIC)
}

static void AddClass(lua_State* L, const struct Class* record) {
  lua_pushstring(L, record->name);
  lua_createtable(L, 0, 11);
  int metatable = lua_gettop(L);
  int name = metatable - 1;
  RawSetCopy(L, metatable, ".type", name);
  RawSetTable(L, metatable, ".bases", 0);
  AddFields(L, record);
  lua_pushliteral(L, ".fn");
  lua_createtable(L, 0, 1);
  RawSetFunction(L, metatable + 2, "__disown", Disown);
  lua_rawset(L, metatable);
  RawSetCopy(L, metatable, "__index", kIndex);
  RawSetCopy(L, metatable, "__newindex", kNewIndex);
  RawSetFunction(L, metatable, "__gc", Collect);
  RawSetFunction(L, metatable, "__tostring", ToString);
  RawSetFunction(L, metatable, "__eq", Equals);
  MakeNamespace(L, 0, 7);
  int statics = metatable + 1;
  AddStatics(L, record, statics);
  lua_pushliteral(L, "__call");
  lua_pushvalue(L, kRegistryKey);
  lua_pushvalue(L, name);
  lua_pushcclosure(L, record->constructor, 2);
  lua_rawset(L, statics + 1);
  RawSetCopy(L, statics + 1, ".instance", metatable);
  lua_setmetatable(L, statics);
  lua_pushvalue(L, name);
  lua_pushvalue(L, statics);
  lua_rawset(L, kModule);
  lua_pushliteral(L, ".static");
  lua_insert(L, statics);
  lua_rawset(L, metatable);
  lua_rawset(L, kClassTable);
}

static const char* const function_names[] = {
#define TQ_NAME(name) #name,
    TQ_MODULE_FUNCTIONS(TQ_NAME)};

/* The module sets its status codes by a chunk, too. */
static const char status_codes[] =
    "\n"
    "    baseline.TQ_MOM_OK = 0\n"
    "    baseline.TQ_MOM_ERR = -1\n"
    "    baseline.TQ_MOM_INPUT_ERR = -2\n"
    "    baseline.TQ_MOM_MALLOC_ERR = -3\n"
    "    baseline.TQ_MOM_NO_READY = -4\n"
    "    baseline.TQ_MOM_GLOBAL_DB_NO_WRITE = -5";

__attribute__((visibility("default"))) int luaopen_baseline(lua_State* L) {
  static const char* const kIndexNames[] = {".get", ".fn", ".bases", "__getitem", NULL};
  static const char* const kNewIndexNames[] = {".set", "__setitem", NULL};
  lua_settop(L, 0);
  lua_rawgeti(L, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
  RawSetFunction(L, kGlobals, "swig_type", TypeOf);
  RawSetFunction(L, kGlobals, "swig_equals", Equals);
  lua_pushliteral(L, "SWIG");
  PushClassTable(L, kRegistryKey);
#define TQ_COUNT(...) +1
  MakeNamespace(L,
                0 TQ_MODULE_FUNCTIONS(TQ_COUNT) TQ_MODULE_CONSTANTS(TQ_COUNT) TQ_MODULE_STATICS(TQ_COUNT)
                    TQ_MODULE_CLASSES(TQ_COUNT) TQ_MODULE_STATUSES(TQ_COUNT),
                5);
  lua_setmetatable(L, kModule);
#define TQ_CONSTANT(name) RawSetInteger(L, kModule, #name, name);
  TQ_MODULE_CONSTANTS(TQ_CONSTANT)
#define TQ_FLAT_STATIC(class, name) RawSetInteger(L, kModule, #class "_" #name, name);
  TQ_MODULE_STATICS(TQ_FLAT_STATIC)
  for (size_t i = 0; i < sizeof function_names / sizeof *function_names; ++i) {
    RawSetFunction(L, kModule, function_names[i], NotMeasured);
  }
  for (size_t i = 0; i < sizeof measured_functions / sizeof *measured_functions; ++i) {
    lua_pushstring(L, measured_functions[i].name);
    int names = 0;
    if (measured_functions[i].class_names[0]) lua_pushvalue(L, kRegistryKey);
    while (names < 2 && measured_functions[i].class_names[names]) {
      lua_pushstring(L, measured_functions[i].class_names[names++]);
    }
    lua_pushcclosure(L, measured_functions[i].function, names ? names + 1 : 0);
    lua_rawset(L, kModule);
  }
  PushDispatcher(L, GetMember, kIndexNames);
  PushDispatcher(L, SetMember, kNewIndexNames);
#define TQ_ADD_CLASS(name, ...) AddClass(L, &class_##name);
  TQ_MODULE_CLASSES(TQ_ADD_CLASS)
  RawSetCopy(L, kGlobals, "baseline", kModule);
  lua_settop(L, kModule);
  if (luaL_dostring(L, status_codes)) return lua_error(L);
  return 1;
}

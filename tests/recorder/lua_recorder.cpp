// The Lua module `recorder`: what tests see of the recording client library, of native memory and of object handles.
// Addresses are Lua integers, 0 for null.
#include <dlfcn.h>
#include <tq_mom/tq_mom.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <lua.hpp>
#include <string>
#include <type_traits>
#include <utility>

#include "allocations.h"
#include "call_log.h"
#include "layouts.h"

namespace recorder {
namespace {

// The block of an object handle, as every module of this kind lays it out.
struct Handle {
  void* type;
  int own;
  void* pointer;
};

void* CheckAddress(lua_State* L, int index) {
  return reinterpret_cast<void*>(static_cast<uintptr_t>(luaL_checkinteger(L, index)));
}

void PushAddress(lua_State* L, const void* pointer) {
  lua_pushinteger(L, static_cast<lua_Integer>(reinterpret_cast<uintptr_t>(pointer)));
}

Handle* CheckHandle(lua_State* L, int index) {
  luaL_argcheck(L, lua_type(L, index) == LUA_TUSERDATA && lua_rawlen(L, index) >= sizeof(Handle), index,
                "object handle expected");
  return static_cast<Handle*>(lua_touserdata(L, index));
}

void SetInteger(lua_State* L, const char* key, lua_Integer value) {
  lua_pushinteger(L, value);
  lua_setfield(L, -2, key);
}

void Push(lua_State* L, int64_t value) { lua_pushinteger(L, value); }
void Push(lua_State* L, int32_t value) { lua_pushinteger(L, value); }
void Push(lua_State* L, double value) { lua_pushnumber(L, value); }
void Push(lua_State* L, void* value) { PushAddress(L, value); }

void Push(lua_State* L, const Text& text) {
  if (text) {
    lua_pushlstring(L, text->data(), text->size());
  } else {
    lua_pushboolean(L, 0);
  }
}

void Push(lua_State* L, const Timeout& timeout) {
  lua_createtable(L, 0, 2);
  SetInteger(L, "seconds", timeout.seconds);
  SetInteger(L, "microseconds", timeout.microseconds);
}

template <class T> void Push(lua_State* L, const Array<T>& array) {
  lua_createtable(L, static_cast<int>(array.elements.size()), 1);
  SetInteger(L, "address", static_cast<lua_Integer>(array.address));
  lua_Integer i = 0;
  for (const T element : array.elements) {
    Push(L, element);
    lua_rawseti(L, -2, ++i);
  }
}

void Push(lua_State* L, const Option& option) {
  lua_createtable(L, 0, 4);
  SetInteger(L, "address", static_cast<lua_Integer>(option.address));
  SetInteger(L, "flag", option.flag);
  if (option.milseconds) SetInteger(L, "milseconds", *option.milseconds);
  if (option.fields) {
    Push(L, *option.fields);
    lua_setfield(L, -2, "fields");
    SetInteger(L, "field_count", option.field_count);
  }
}

// calls() -> { {name=, [1..n]=arguments, op=option record, results=callback results}, ... }
int GetCalls(lua_State* L) {
  lua_createtable(L, static_cast<int>(Calls().size()), 0);
  lua_Integer position = 0;
  for (const Call& call : Calls()) {
    lua_createtable(L, static_cast<int>(call.arguments.size()), 3);
    lua_pushlstring(L, call.name.data(), call.name.size());
    lua_setfield(L, -2, "name");
    lua_Integer i = 0;
    for (const Value& value : call.arguments) {
      std::visit([L](const auto& v) { Push(L, v); }, value);
      lua_rawseti(L, -2, ++i);
    }
    if (call.option) {
      Push(L, *call.option);
      lua_setfield(L, -2, "op");
    }
    lua_createtable(L, static_cast<int>(call.callback_results.size()), 0);
    i = 0;
    for (const int result : call.callback_results) {
      Push(L, result);
      lua_rawseti(L, -2, ++i);
    }
    lua_setfield(L, -2, "results");
    lua_rawseti(L, -2, ++position);
  }
  return 1;
}

int GetCallCount(lua_State* L) {
  lua_pushinteger(L, static_cast<lua_Integer>(Calls().size()));
  return 1;
}

// returns(client function, result, out value)
int SetReturns(lua_State* L) {
  Prescribe(luaL_checkstring(L, 1), {luaL_checkinteger(L, 2), static_cast<int>(luaL_optinteger(L, 3, 0))});
  return 0;
}

// deliver{ {message=address, global=address or nil, null_context=boolean}, ... }
int SetDeliver(lua_State* L) {
  luaL_checktype(L, 1, LUA_TTABLE);
  const auto count = static_cast<lua_Integer>(lua_rawlen(L, 1));
  std::vector<ScanMessage> messages;
  for (lua_Integer i = 1; i <= count; ++i) {
    lua_rawgeti(L, 1, i);
    lua_getfield(L, -1, "message");
    lua_getfield(L, -2, "global");
    lua_getfield(L, -3, "null_context");
    ScanMessage message{std::nullopt, static_cast<uintptr_t>(lua_tointeger(L, -3)), lua_toboolean(L, -1) != 0};
    if (!lua_isnil(L, -2)) message.global = static_cast<uintptr_t>(lua_tointeger(L, -2));
    messages.push_back(message);
    lua_settop(L, 1);
  }
  PrescribeScan(std::move(messages));
  return 0;
}

int DoReset(lua_State*) {
  Reset();
  ResetRequests();
  return 0;
}

int DoAllocate(lua_State* L) {
  PushAddress(L, Allocate(static_cast<size_t>(luaL_checkinteger(L, 1))));
  return 1;
}

int DoFree(lua_State* L) {
  lua_pushboolean(L, Free(CheckAddress(L, 1)));
  return 1;
}

int GetIsLive(lua_State* L) {
  lua_pushboolean(L, IsLive(CheckAddress(L, 1)));
  return 1;
}

int GetLiveBlocks(lua_State* L) {
  lua_pushinteger(L, static_cast<lua_Integer>(LiveBlocks()));
  return 1;
}

int GetRequests(lua_State* L) {
  lua_newtable(L);
  lua_Integer i = 0;
  for (const size_t size : Requests()) {
    lua_pushinteger(L, static_cast<lua_Integer>(size));
    lua_rawseti(L, -2, ++i);
  }
  return 1;
}

int GetStrayFrees(lua_State* L) {
  lua_pushinteger(L, static_cast<lua_Integer>(StrayFrees()));
  return 1;
}

int DoFailRequest(lua_State* L) {
  FailRequest(static_cast<size_t>(luaL_checkinteger(L, 1)));
  return 0;
}

int DoWatch(lua_State* L) {
  lua_pushinteger(L, WatchAllocations(luaL_checkstring(L, 1)));
  return 1;
}

// read(address, size) -> bytes
int DoRead(lua_State* L) {
  lua_pushlstring(L, static_cast<const char*>(CheckAddress(L, 1)), static_cast<size_t>(luaL_checkinteger(L, 2)));
  return 1;
}

int DoReadText(lua_State* L) {
  lua_pushstring(L, static_cast<const char*>(CheckAddress(L, 1)));
  return 1;
}

int DoWrite(lua_State* L) {
  size_t size;
  const char* const bytes = luaL_checklstring(L, 2, &size);
  std::memcpy(CheckAddress(L, 1), bytes, size);
  return 0;
}

// handle(type descriptor, own, pointer) -> full userdata of three words, without a metatable
int NewHandle(lua_State* L) {
  void* const type = CheckAddress(L, 1);
  const int own = static_cast<int>(luaL_checkinteger(L, 2));
  void* const pointer = CheckAddress(L, 3);
  // Tests compare whole blocks, padding included.
  auto* const handle = static_cast<Handle*>(std::memset(lua_newuserdata(L, sizeof(Handle)), 0, sizeof(Handle)));
  handle->type = type;
  handle->own = own;
  handle->pointer = pointer;
  return 1;
}

// words(handle) -> type descriptor, own, pointer
int GetWords(lua_State* L) {
  const Handle* const handle = CheckHandle(L, 1);
  PushAddress(L, handle->type);
  lua_pushinteger(L, handle->own);
  PushAddress(L, handle->pointer);
  return 3;
}

// block(bytes) -> full userdata with this content
int NewBlock(lua_State* L) {
  size_t size;
  const char* const bytes = luaL_checklstring(L, 1, &size);
  std::memcpy(lua_newuserdata(L, size), bytes, size);
  return 1;
}

int NewLight(lua_State* L) {
  lua_pushlightuserdata(L, CheckAddress(L, 1));
  return 1;
}

int GetAddress(lua_State* L) {
  PushAddress(L, lua_topointer(L, 1));
  return 1;
}

int GetSize(lua_State* L) {
  lua_pushinteger(L, static_cast<lua_Integer>(lua_rawlen(L, 1)));
  return 1;
}

int CallWrapped(lua_State* L) {
  lua_pushvalue(L, lua_upvalueindex(1));
  lua_insert(L, 1);
  lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
  return lua_gettop(L);
}

// cfunction(f) -> a C function that does what f does
int NewCFunction(lua_State* L) {
  luaL_checktype(L, 1, LUA_TFUNCTION);
  lua_settop(L, 1);
  lua_pushcclosure(L, CallWrapped, 1);
  return 1;
}

// Wraps a state's allocator while a function runs.
struct FailingAllocator {
  lua_Alloc original;
  void* original_data;
  lua_Integer fail_in;
  bool once;
  bool failed;
};

void* AllocateOrFail(void* data, void* block, size_t old_size, size_t new_size) {
  auto* const allocator = static_cast<FailingAllocator*>(data);
  const bool grows = new_size > 0 && (block == nullptr || new_size > old_size);
  if (grows && ((allocator->failed && !allocator->once) || --allocator->fail_in == 0)) {
    allocator->failed = true;
    return nullptr;
  }
  return allocator->original(allocator->original_data, block, old_size, new_size);
}

// without_memory(n, f, ...) -> whether it came to it, then as pcall: f runs, and its nth request for Lua memory and all
// later ones fail. short_of_memory(n, f, ...): only that one, so that Lua collects its garbage and asks again.
template <bool once> int WithoutMemory(lua_State* L) {
  FailingAllocator allocator{};
  allocator.once = once;
  allocator.fail_in = luaL_checkinteger(L, 1);
  allocator.original = lua_getallocf(L, &allocator.original_data);
  lua_setallocf(L, AllocateOrFail, &allocator);
  const int status = lua_pcall(L, lua_gettop(L) - 2, LUA_MULTRET, 0);
  lua_setallocf(L, allocator.original, allocator.original_data);
  lua_pushboolean(L, allocator.failed);
  lua_replace(L, 1);
  lua_pushboolean(L, status == LUA_OK);
  lua_insert(L, 2);
  return lua_gettop(L);
}

// stderr_of(f) -> what f wrote to the standard error stream, then as pcall
int StderrOf(lua_State* L) {
  luaL_checktype(L, 1, LUA_TFUNCTION);
  lua_settop(L, 1);
  std::FILE* const file = std::tmpfile();
  if (file == nullptr) return luaL_error(L, "no temporary file");
  std::fflush(stderr);
  const int saved = dup(STDERR_FILENO);
  dup2(fileno(file), STDERR_FILENO);
  const int status = lua_pcall(L, 0, LUA_MULTRET, 0);
  std::fflush(stderr);
  dup2(saved, STDERR_FILENO);
  close(saved);
  std::rewind(file);
  char text[4096];
  const size_t length = std::fread(text, 1, sizeof text, file);
  std::fclose(file);
  lua_pushlstring(L, text, length);
  lua_insert(L, 1);
  lua_pushboolean(L, status == LUA_OK);
  lua_insert(L, 2);
  return lua_gettop(L);
}

// in_new_state(code) -> true and the text that code returns, or false and the error
int InNewState(lua_State* L) {
  const char* const code = luaL_checkstring(L, 1);
  lua_getglobal(L, "package");
  lua_getfield(L, -1, "path");
  lua_getfield(L, -2, "cpath");
  lua_State* const other = luaL_newstate();
  if (other == nullptr) return luaL_error(L, "no new state");
  luaL_openlibs(other);
  lua_getglobal(other, "package");
  lua_pushstring(other, lua_tostring(L, -2));
  lua_setfield(other, -2, "path");
  lua_pushstring(other, lua_tostring(L, -1));
  lua_setfield(other, -2, "cpath");
  lua_settop(other, 0);
  const bool ok = luaL_dostring(other, code) == 0;
  lua_pushboolean(L, ok);
  lua_pushstring(L, luaL_tolstring(other, -1, nullptr));
  lua_close(other);
  return 2;
}

// symbol(path of a loaded object, name) -> address, or nil
int GetSymbol(lua_State* L) {
  void* const object = dlopen(luaL_checkstring(L, 1), RTLD_NOW | RTLD_NOLOAD);
  if (object == nullptr) return luaL_error(L, "%s", dlerror());
  void* const symbol = dlsym(object, luaL_checkstring(L, 2));
  dlclose(object);
  if (symbol == nullptr) {
    lua_pushnil(L);
  } else {
    PushAddress(L, symbol);
  }
  return 1;
}

template <class T> T CheckNative(lua_State* L, int index) {
  if constexpr (std::is_same_v<T, lua_State*>) {
    return L;
  } else if constexpr (std::is_pointer_v<T>) {
    return static_cast<T>(CheckAddress(L, index));
  } else {
    return static_cast<T>(luaL_checkinteger(L, index));
  }
}

// Calls the native function whose address is argument 1. A lua_State parameter is the caller's own and stands for no
// argument's value, but takes a place.
template <class Signature> struct Native;

template <class Result, class... Args> struct Native<Result(Args...)> {
  static int Invoke(lua_State* L) { return Invoke(L, std::index_sequence_for<Args...>()); }

  template <size_t... kIndexes> static int Invoke(lua_State* L, std::index_sequence<kIndexes...>) {
    const auto function = reinterpret_cast<Result (*)(Args...)>(CheckAddress(L, 1));
    if constexpr (std::is_void_v<Result>) {
      const int top = lua_gettop(L);
      function(CheckNative<Args>(L, static_cast<int>(kIndexes) + 2)...);
      return lua_gettop(L) - top;
    } else {
      const Result result = function(CheckNative<Args>(L, static_cast<int>(kIndexes) + 2)...);
      if constexpr (std::is_pointer_v<Result>) {
        PushAddress(L, result);
      } else {
        lua_pushinteger(L, result);
      }
      return 1;
    }
  }
};

void PushLayouts(lua_State* L) {
  lua_newtable(L);
  for (const RecordLayout& record : Layouts()) {
    lua_newtable(L);
    SetInteger(L, "size", static_cast<lua_Integer>(record.size));
    lua_newtable(L);
    for (const FieldLayout& field : record.fields) {
      lua_newtable(L);
      SetInteger(L, "offset", static_cast<lua_Integer>(field.offset));
      SetInteger(L, "size", static_cast<lua_Integer>(field.size));
      lua_setfield(L, -2, field.name);
    }
    lua_setfield(L, -2, "fields");
    lua_setfield(L, -2, record.name);
  }
}

// The module under test binds the client functions when it is loaded; make ours visible to it.
void BecomeGlobal(lua_State* L) {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&BecomeGlobal), &info) == 0 ||
      dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL) == nullptr) {
    luaL_error(L, "the recorder cannot make its symbols global");
  }
}

const luaL_Reg kFunctions[] = {
    {"calls", GetCalls},
    {"call_count", GetCallCount},
    {"returns", SetReturns},
    {"deliver", SetDeliver},
    {"reset", DoReset},
    {"alloc", DoAllocate},
    {"free", DoFree},
    {"is_live", GetIsLive},
    {"live_blocks", GetLiveBlocks},
    {"requests", GetRequests},
    {"stray_frees", GetStrayFrees},
    {"fail_request", DoFailRequest},
    {"watch", DoWatch},
    {"read", DoRead},
    {"read_text", DoReadText},
    {"write", DoWrite},
    {"handle", NewHandle},
    {"words", GetWords},
    {"block", NewBlock},
    {"light", NewLight},
    {"address", GetAddress},
    {"size", GetSize},
    {"cfunction", NewCFunction},
    {"without_memory", WithoutMemory<false>},
    {"short_of_memory", WithoutMemory<true>},
    {"stderr_of", StderrOf},
    {"in_new_state", InNewState},
    {"symbol", GetSymbol},
    {"call_cast", Native<void*(void*)>::Invoke},
    {"call_zadd", Native<int(void*, int, void*, int, void*, int)>::Invoke},
    {"call_zadd_ext", Native<int(void*, int, void*, void*, int, void*, int)>::Invoke},
    {"call_hmsetnx_ext", Native<int(void*, int, void*, void*, void*, int)>::Invoke},
    {"call_ref_set", Native<void(void*, lua_State*, int)>::Invoke},
    {"call_ref", Native<void(void*)>::Invoke},
    {"call_hook", Native<void(lua_State*)>::Invoke},
    {nullptr, nullptr},
};

}  // namespace
}  // namespace recorder

extern "C" int luaopen_recorder(lua_State* L) {
  recorder::BecomeGlobal(L);
  luaL_newlib(L, recorder::kFunctions);
  recorder::PushLayouts(L);
  lua_setfield(L, -2, "layouts");
  recorder::SetInteger(L, "word", sizeof(void*));
  return 1;
}

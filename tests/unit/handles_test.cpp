#include "binding/handles.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "binding/invariant.h"
#include "binding/namespaces.h"
#include "tests/unit/lua_state.h"

namespace {

using binding::CastEntry;
using binding::Handle;
using binding::TypeDescriptor;

// Two types; each takes its own handles, and `base` those of `derived` by way of a converter.
struct Types {
  TypeDescriptor base = {"_p_base", "struct base *|base *", nullptr, &base_casts[0], nullptr, 0};
  TypeDescriptor derived = {"_p_derived", "derived *", nullptr, &derived_cast, nullptr, 0};
  TypeDescriptor empty = {"_p_empty", "empty *", nullptr, nullptr, nullptr, 0};
  CastEntry base_casts[2] = {{&base, nullptr, &base_casts[1], nullptr}, {&derived, ToBase, nullptr, &base_casts[0]}};
  CastEntry derived_cast = {&derived, nullptr, nullptr, nullptr};

  static void* ToBase(void* pointer, int* new_memory) {
    *new_memory = claims_new_memory;
    return static_cast<char*>(pointer) + 4;
  }
  static inline int claims_new_memory = 0;
};

class Handles : public testing::Test {
 protected:
  Handles() { binding::assertion_source = "unit_test_wrap"; }

  const Handle* Top() { return static_cast<const Handle*>(lua_touserdata(L, -1)); }

  unit::LuaState L;
  Types types;
  char object[16] = {};
};

TEST_F(Handles, NullIsNil) {
  binding::PushHandle(L, nullptr, &types.base, 1);
  EXPECT_TRUE(lua_isnil(L, -1));
  EXPECT_EQ(lua_gettop(L), 1);
}

TEST_F(Handles, ThreeWords) {
  binding::PushHandle(L, object, &types.base, 1);
  EXPECT_EQ(lua_type(L, -1), LUA_TUSERDATA);
  EXPECT_EQ(lua_rawlen(L, -1), 3 * sizeof(void*));
  EXPECT_EQ(Top()->type, &types.base);
  EXPECT_EQ(Top()->own, 1);
  EXPECT_EQ(Top()->pointer, object);
  EXPECT_FALSE(lua_getmetatable(L, -1));
  binding::PushHandle(L, object, nullptr, 0);
  EXPECT_EQ(Top()->type, nullptr);
  EXPECT_EQ(Top()->own, 0);
  EXPECT_EQ(lua_gettop(L), 2);
}

TEST_F(Handles, MetatableOfTheClass) {
  binding::ClassRecord record = {};
  record.name = "Base";
  record.qualified_name = "Base";
  types.base.class_record = &record;
  binding::PushHandle(L, object, &types.base, 0);
  EXPECT_FALSE(lua_getmetatable(L, -1)) << "the class is not registered";
  binding::PushClassTable(L);
  lua_pushliteral(L, "no table");
  lua_setfield(L, -2, "Base");
  binding::PushHandle(L, object, &types.base, 0);
  EXPECT_FALSE(lua_getmetatable(L, -1));
  lua_settop(L, 0);
  binding::PushClassTable(L);
  lua_newtable(L);
  lua_pushvalue(L, -1);
  lua_setfield(L, -3, "Base");
  binding::PushHandle(L, object, &types.base, 0);
  ASSERT_TRUE(lua_getmetatable(L, -1));
  EXPECT_TRUE(lua_rawequal(L, -1, 2));
  types.base.class_record = nullptr;
}

TEST_F(Handles, ClassTable) {
  binding::PushClassTable(L);
  ASSERT_EQ(lua_gettop(L), 1);
  binding::PushClassTable(L);
  EXPECT_TRUE(lua_rawequal(L, 1, 2)) << "made once";
  lua_setglobal(L, "classes");
  EXPECT_EQ(L.Run("local names = classes['.library'].inheritable_metamethods\n"
                  "assert(next(classes, next(classes)) == nil and next(classes['.library'], 'inheritable_metamethods') "
                  "== nil)\n"
                  "assert(names.__gc == false)\n"
                  "local count = 0\n"
                  "for name, value in pairs(names) do\n"
                  "  count = count + 1\n"
                  "  assert(value == (name ~= '__gc'), name)\n"
                  "end\n"
                  "for name in ('add sub mul div mod pow unm len concat eq lt le call tostring'):gmatch('%a+') do\n"
                  "  assert(names['__' .. name] == true, name)\n"
                  "end\n"
                  "assert(count == 15)"),
            "");
}

// What stands in the registry under the table's key and is no table is replaced.
TEST_F(Handles, ClassTableIsNoTable) {
  lua_pushliteral(L, "something else");
  lua_setfield(L, LUA_REGISTRYINDEX, "SWIG");
  binding::PushClassTable(L);
  EXPECT_EQ(lua_gettop(L), 1);
  ASSERT_TRUE(lua_istable(L, -1));
  EXPECT_EQ(lua_getfield(L, LUA_REGISTRYINDEX, "SWIG"), LUA_TTABLE);
  EXPECT_TRUE(lua_rawequal(L, 1, 2));
}

TEST_F(Handles, ConvertNil) {
  for (TypeDescriptor* expected : {static_cast<TypeDescriptor*>(nullptr), &types.base, &types.empty}) {
    for (int flags : {0, binding::kDisown}) {
      void* pointer = object;
      lua_pushnil(L);
      EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, expected, flags), 0);
      EXPECT_EQ(pointer, nullptr);
    }
  }
}

TEST_F(Handles, ConvertWhatIsNoHandle) {
  lua_pushinteger(L, 5);
  lua_pushliteral(L, "text");
  lua_newtable(L);
  lua_pushboolean(L, 0);
  lua_pushcfunction(L, binding::Equals);
  lua_pushlightuserdata(L, object);
  lua_pushlightuserdata(L, nullptr);
  std::memset(lua_newuserdata(L, sizeof(Handle) - 1), 0xEE, sizeof(Handle) - 1);
  std::memset(lua_newuserdata(L, sizeof(void*)), 0xEE, sizeof(void*));
  lua_newuserdata(L, 0);
  int none = lua_gettop(L) + 1;
  for (int index = 1; index <= none; ++index) {
    for (int flags : {0, binding::kDisown}) {
      void* pointer = object;
      EXPECT_EQ(binding::ConvertPtr(L, index, &pointer, nullptr, flags), -1) << index;
      EXPECT_EQ(binding::ConvertPtr(L, index, &pointer, &types.base, flags), -1) << index;
    }
    EXPECT_EQ(binding::UntypedPointerAt(L, index), nullptr) << index;
    EXPECT_EQ(binding::HandleAt(L, index), nullptr) << index;
  }
}

TEST_F(Handles, ConvertHandles) {
  void* pointer;
  binding::PushHandle(L, object, &types.base, 1);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.base, 0), 0);
  EXPECT_EQ(pointer, object);
  pointer = nullptr;
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, nullptr, 0), 0);
  EXPECT_EQ(pointer, object);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.derived, 0), -1);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.empty, 0), -1);
  EXPECT_EQ(Top()->own, 1) << "only disowning takes it away";
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.base, binding::kDisown), 0);
  EXPECT_EQ(Top()->own, 0);
  binding::PushHandle(L, object, nullptr, 0);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.base, 0), -1);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, nullptr, 0), 0);
  EXPECT_EQ(binding::UntypedPointerAt(L, -1), object);
}

TEST_F(Handles, WrongTypeIsDisowned) {
  void* pointer;
  binding::PushHandle(L, object, &types.base, 1);
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.derived, binding::kDisown), -1);
  EXPECT_EQ(Top()->own, 0);
}

TEST_F(Handles, Converters) {
  void* pointer;
  binding::PushHandle(L, object, &types.derived, 0);
  EXPECT_FALSE(binding::IsExact(*Top(), types.base));
  EXPECT_EQ(binding::ConvertPtr(L, -1, &pointer, &types.base, 0), 0);
  EXPECT_EQ(pointer, object + 4);
  EXPECT_EQ(types.base.casts, &types.base_casts[1]) << "moved to the front";
  EXPECT_FALSE(binding::IsExact(*Top(), types.base)) << "it has a converter";
}

TEST_F(Handles, ConverterThatAllocates) {
  GTEST_FLAG_SET(death_test_style, "fast");
  Types::claims_new_memory = 1;
  void* pointer;
  binding::PushHandle(L, object, &types.derived, 0);
  EXPECT_DEATH(binding::ConvertPtr(L, -1, &pointer, &types.base, 0),
               "unit_test_wrap:[0-9]+: ConvertPtr: Assertion `!newmemory' failed");
  Types::claims_new_memory = 0;
}

TEST_F(Handles, Exact) {
  binding::PushHandle(L, object, &types.base, 0);
  EXPECT_TRUE(binding::IsExact(*Top(), types.base));
  EXPECT_FALSE(binding::IsExact(*Top(), types.derived));
  EXPECT_FALSE(binding::IsExact(*Top(), types.empty)) << "an empty cast list";
}

TEST_F(Handles, HandleAt) {
  binding::PushHandle(L, object, &types.base, 0);
  EXPECT_EQ(binding::HandleAt(L, -1), Top());
  lua_pushnil(L);
  EXPECT_EQ(binding::HandleAt(L, -1), nullptr);
  lua_pushlightuserdata(L, object);
  EXPECT_EQ(binding::HandleAt(L, -1), nullptr);
  lua_newuserdata(L, sizeof(Handle) - 1);
  EXPECT_EQ(binding::HandleAt(L, -1), nullptr);
}

TEST_F(Handles, TypeNameAndEquality) {
  lua_register(L, "type_name", binding::TypeNameOf);
  lua_register(L, "equals", binding::Equals);
  binding::PushHandle(L, object, &types.base, 0);
  lua_setglobal(L, "base");
  binding::PushHandle(L, object, &types.derived, 1);
  lua_setglobal(L, "derived");
  binding::PushHandle(L, object + 1, &types.base, 0);
  lua_setglobal(L, "other");
  lua_pushlightuserdata(L, object);
  lua_setglobal(L, "light");
  EXPECT_EQ(L.Run("assert(type_name(base) == 'struct base *|base *')\n"
                  "assert(type_name(derived) == 'derived *')\n"
                  "assert(type_name(light) == 'userdata (unknown type)')\n"
                  "assert(type_name(io.stdout) == 'userdata (unknown type)')\n"
                  "assert(type_name(1) == 'number' and type_name(nil) == 'nil' and type_name() == 'no value')\n"
                  "assert(equals(base, derived) == true and equals(base, base) == true)\n"
                  "assert(equals(base, other) == false)\n"
                  "assert(select('#', equals(base, light)) == 0 and select('#', equals(io.stdout, base)) == 0)\n"
                  "assert(select('#', equals(base)) == 0 and select('#', equals(1, 1)) == 0)"),
            "");
}

TEST_F(Handles, Packed) {
  const char bytes[] = "packed bytes";
  binding::PushPacked(L, bytes, sizeof(bytes), &types.base);
  EXPECT_EQ(lua_rawlen(L, -1), 2 * sizeof(void*) + sizeof(bytes));
  EXPECT_EQ(Top()->type, &types.base);
  EXPECT_EQ(Top()->own, 0);
  EXPECT_EQ(std::memcmp(&Top()->pointer, bytes, sizeof(bytes)), 0);
  GTEST_FLAG_SET(death_test_style, "fast");
  EXPECT_DEATH(binding::PushPacked(L, nullptr, 1, &types.base),
               "unit_test_wrap:[0-9]+: PushPacked: Assertion `ptr' failed");
}

}  // namespace

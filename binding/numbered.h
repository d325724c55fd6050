// Lua functions that differ in nothing but a number, which they hand to one body: the getters of all fields, say.
//
// A module has hundreds of them. As C++ functions each takes 30 bytes of code and unwind table on ARM, and a relocation
// in every table that names it. A stub takes two instructions, which load its number and jump, and no table names it:
// it is found by its number, and its number by its address. No compiler gives such functions: those of a template are
// aligned, have unwind entries and lie where they please. Processors without stubs here, and builds with
// TQ_PORTABLE_STUBS, take a table of template instances.
#pragma once

#include <cstddef>
#include <cstdint>
#include <lua.hpp>
#include <utility>

#if !defined(TQ_PORTABLE_STUBS) && defined(__x86_64__) && defined(__LP64__)
#define TQ_STUB_SIZE 16
#define TQ_STUBS_OF(body)       \
  ".balign 16\n" body           \
  "_stubs:\n"                   \
  ".set .Lnumber, 0\n"          \
  ".rept %c0\n"                 \
  ".balign 16\n"                \
  "mov $.Lnumber, %%esi\n"      \
  "jmp " body                   \
  "\n"                          \
  ".set .Lnumber, .Lnumber+1\n" \
  ".endr\n"
#elif !defined(TQ_PORTABLE_STUBS) && defined(__ARM_ARCH_ISA_THUMB) && defined(__ARM_EABI__)
// The body may lie far away and be ARM code, so the jump goes by way of a register.
#define TQ_STUB_SIZE 4
#define TQ_STUBS_OF(body)               \
  ".syntax unified\n"                   \
  ".thumb\n"                            \
  ".balign 4\n"                         \
  "0: ldr r2, 2f\n"                     \
  "1: add r2, pc\n"                     \
  "bx r2\n"                             \
  ".balign 4\n"                         \
  "2: .word " body " - (1b + 4)\n" body \
  "_stubs:\n"                           \
  ".set .Lnumber, 0\n"                  \
  ".rept %c0\n"                         \
  "movs r1, #.Lnumber\n"                \
  "b 0b\n"                              \
  ".set .Lnumber, .Lnumber+1\n"         \
  ".endr\n"
#endif

namespace binding {

// The functions 0 to count() - 1 of one body.
class NumberedFunctions {
 public:
  constexpr NumberedFunctions() = default;

  unsigned count() const { return count_; }

#ifdef TQ_STUB_SIZE
  constexpr NumberedFunctions(const char* stubs, unsigned count) : stubs_(stubs), count_(count) {}

  lua_CFunction At(std::size_t number) const {
    return reinterpret_cast<lua_CFunction>(const_cast<char*>(stubs_ + number * TQ_STUB_SIZE + kThumbBit));
  }
  // Not below count() for every other function.
  std::size_t NumberOf(lua_CFunction function) const {
    return (reinterpret_cast<std::uintptr_t>(function) - reinterpret_cast<std::uintptr_t>(stubs_)) / TQ_STUB_SIZE;
  }

 private:
#ifdef __arm__
  static constexpr unsigned kThumbBit = 1;
#else
  static constexpr unsigned kThumbBit = 0;
#endif

  const char* stubs_ = nullptr;
#else
  constexpr NumberedFunctions(const lua_CFunction* functions, unsigned count) : functions_(functions), count_(count) {}

  lua_CFunction At(std::size_t number) const { return functions_[number]; }
  // The address tells nothing.
  std::size_t NumberOf(lua_CFunction) const { return count_; }

 private:
  const lua_CFunction* functions_ = nullptr;
#endif
  unsigned count_ = 0;
};

}  // namespace binding

// Defines the constant `name`, NumberedFunctions of the body, which is an extern "C" function
//     int body(lua_State* L, std::size_t number)
#ifdef TQ_STUB_SIZE
#define TQ_NUMBERED_FUNCTIONS(name, body, number_of_them)                                                     \
  static_assert((number_of_them) <= 256, "A stub loads its number in one instruction, which takes 0 to 255"); \
  extern "C" [[gnu::visibility("hidden")]] const char body##_stubs[];                                         \
  [[gnu::used]] static void name##Stubs() {                                                                   \
    asm(".pushsection .text." #body "_stubs,\"ax\",%%progbits\n" TQ_STUBS_OF(#body) ".popsection\n"           \
        :                                                                                                     \
        : "i"(number_of_them));                                                                               \
  }                                                                                                           \
  constexpr binding::NumberedFunctions name(body##_stubs, number_of_them)
#else
namespace binding {

template <int (*body)(lua_State*, std::size_t), std::size_t... number>
constexpr lua_CFunction kNumbered[] = {[](lua_State* L) { return body(L, number); }...};

template <int (*body)(lua_State*, std::size_t), std::size_t... number>
constexpr NumberedFunctions MakeNumbered(std::index_sequence<number...>) {
  return {kNumbered<body, number...>, sizeof...(number)};
}

}  // namespace binding

#define TQ_NUMBERED_FUNCTIONS(name, body, number_of_them) \
  constexpr binding::NumberedFunctions name = binding::MakeNumbered<body>(std::make_index_sequence<(number_of_them)>())
#endif

// Strings put together at compile time: a table of them then holds offsets, which need no relocation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tq_mom {

// A string as a template's argument.
template <std::size_t size> struct Literal {
  consteval Literal(const char (&literal)[size]) {  // NOLINT(google-explicit-constructor)
    for (std::size_t i = 0; i < size; ++i) text[i] = literal[i];
  }
  constexpr operator std::string_view() const { return {text, size - 1}; }  // NOLINT(google-explicit-constructor)

  char text[size];
};

// Strings, each ended by a NUL.
template <std::size_t capacity> struct Packed {
  // The offset of the string, which is added unless it is there.
  constexpr std::uint16_t Add(std::string_view string) {
    for (std::size_t at = 0; at < size; at += std::string_view(text + at).size() + 1) {
      if (string == text + at) return static_cast<std::uint16_t>(at);
    }
    std::size_t at = size;
    Append(string);
    return static_cast<std::uint16_t>(at);
  }
  // Adds the parts as one string.
  template <class... Part> constexpr void Append(Part... parts) {
    for (std::string_view part : {std::string_view{parts}...}) {
      for (char c : part) text[size++] = c;
    }
    text[size++] = '\0';
  }
  // For kTrimmed.
  template <std::size_t exact> constexpr Packed<exact> Trimmed() const {
    Packed<exact> trimmed;
    for (; trimmed.size < exact; ++trimmed.size) trimmed.text[trimmed.size] = text[trimmed.size];
    return trimmed;
  }

  char text[capacity] = {};
  std::size_t size = 0;
};

// What the function returns, in a block of just its size.
template <auto pack> inline constexpr auto kTrimmed = pack().template Trimmed<pack().size>();

}  // namespace tq_mom

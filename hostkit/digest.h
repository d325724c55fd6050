// A checksum of bytes that is the same everywhere: FNV-1a with 64 bits.
#pragma once

#include <cstdint>
#include <string_view>

namespace hostkit {

inline std::uint64_t Digest(std::string_view bytes) {
  std::uint64_t sum = 14695981039346656037U;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  return sum;
}

}  // namespace hostkit

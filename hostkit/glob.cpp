#include "hostkit/glob.h"

#include <cstddef>

namespace hostkit {
namespace {

unsigned char At(std::string_view text, std::size_t index) { return static_cast<unsigned char>(text[index]); }

// The set has a member at least, and something behind each backslash: GlobSetLength sees to it.
bool SetMatches(std::string_view set, unsigned char byte) {
  set = set.substr(1, set.size() - 2);
  const bool negated = set.front() == '^';
  if (negated) set.remove_prefix(1);
  bool found = false;
  for (std::size_t index = 0; index < set.size(); ++index) {
    if (set[index] == '\\') ++index;
    const unsigned char low = At(set, index);
    unsigned char high = low;
    if (index + 2 < set.size() && set[index + 1] == '-') {
      index += 2;
      if (set[index] == '\\') ++index;
      high = At(set, index);
    }
    found = found || (low <= byte && byte <= high) || (high <= byte && byte <= low);
  }
  return found != negated;
}

// Bytes of the pattern that one byte of text matches; 0 if it does not.
std::size_t MatchOne(std::string_view pattern, unsigned char byte) {
  switch (pattern.front()) {
    case '?': return 1;
    case '[':
      if (const std::size_t length = GlobSetLength(pattern); length != 0) {
        return SetMatches(pattern.substr(0, length), byte) ? length : 0;
      }
      break;
    case '\\':
      if (pattern.size() > 1) return At(pattern, 1) == byte ? 2 : 0;
      break;
    default: break;
  }
  return At(pattern, 0) == byte ? 1 : 0;
}

}  // namespace

std::size_t GlobSetLength(std::string_view pattern) {
  std::size_t index = 1;
  if (index < pattern.size() && pattern[index] == '^') ++index;
  for (bool first = true; index < pattern.size(); ++index, first = false) {
    if (pattern[index] == ']' && !first) return index + 1;
    if (pattern[index] == '\\') ++index;
  }
  return 0;
}

bool GlobMatches(std::string_view pattern, std::string_view text) {
  std::size_t p = 0;
  std::size_t t = 0;
  // Only the last star ever needs to take more: whatever an earlier one took too little, the last can make up for.
  std::size_t after_star = std::string_view::npos;
  std::size_t star_end = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      after_star = ++p;
      star_end = t;
      continue;
    }
    const std::size_t matched = p < pattern.size() ? MatchOne(pattern.substr(p), At(text, t)) : 0;
    if (matched != 0) {
      p += matched;
      ++t;
    } else if (after_star != std::string_view::npos) {
      p = after_star;
      t = ++star_end;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

}  // namespace hostkit

#include "hostkit/server_pattern.h"

#include <cstddef>

#include "hostkit/glob.h"

namespace hostkit {
namespace {

void AppendEscaped(std::string_view text, std::string* pattern) {
  for (const char byte : text) {
    if (std::string_view("*?[]\\^-").find(byte) != std::string_view::npos) *pattern += '\\';
    *pattern += byte;
  }
}

// A server reads some sets in another way, but not one that lists its members one by one.
void AppendSet(std::string_view set, std::string* pattern) {
  *pattern += '[';
  for (int byte = 1; byte <= 0xFF; ++byte) {
    const char member = static_cast<char>(byte);
    if (GlobMatches(set, {&member, 1})) AppendEscaped({&member, 1}, pattern);
  }
  *pattern += ']';
}

}  // namespace

std::string ServerPattern(std::string_view prefix, int db, std::string_view glob) {
  std::string pattern;
  AppendEscaped(prefix, &pattern);
  pattern += std::to_string(db) + ':';
  while (!glob.empty()) {
    std::size_t length = 1;
    if (glob.front() == '[') {
      length = GlobSetLength(glob);
      if (length != 0) {
        AppendSet(glob.substr(0, length), &pattern);
      } else {
        length = 1;
        pattern += "\\[";
      }
    } else {
      if (glob.front() == '\\' && glob.size() > 1) length = 2;
      pattern += glob.substr(0, length);
    }
    glob.remove_prefix(length);
  }
  return pattern;
}

}  // namespace hostkit

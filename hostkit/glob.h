// Patterns over key texts.
#pragma once

#include <string_view>

namespace hostkit {

// `*` stands for any bytes, `?` for one, `[abc]`, `[a-z]` and `[^a]` for one of a set; `\` takes the next byte as it
// is. An unfinished set takes its `[` as it is.
bool GlobMatches(std::string_view pattern, std::string_view text);

// The length of the set at the head of a pattern that begins with [; 0 if it does not end.
std::size_t GlobSetLength(std::string_view pattern);

}  // namespace hostkit

// Our globs in a server's words.
#pragma once

#include <string>
#include <string_view>

namespace hostkit {

// The server's pattern for what begins with the prefix, the database and a colon, and goes on as the glob says.
std::string ServerPattern(std::string_view prefix, int db, std::string_view glob);

}  // namespace hostkit

// Our globs in a server's words.
#ifndef TQ_HOSTKIT_SERVER_PATTERN_H
#define TQ_HOSTKIT_SERVER_PATTERN_H

#include <string>
#include <string_view>

namespace hostkit {

// The server's pattern for what begins with the prefix, the database and a colon, and goes on as the glob says.
std::string ServerPattern(std::string_view prefix, int db, std::string_view glob);

}  // namespace hostkit

#endif

// The engine over a server or a cluster of servers.
//
// A key is kept as <prefix><database>:<name>, and as the server's own kind of value.
#pragma once

#include <memory>
#include <string_view>

#include "hostkit/engine.h"

namespace hostkit {

// The engine for a redis:// or redis+unix:// URL, not connected yet. kFailed if the URL is malformed. With a value
// other than 0 in TQ_MOM_CLUSTER in the environment every connection takes the server as a node of a cluster.
Status OpenServerEngine(std::string_view url, std::unique_ptr<Engine>* engine);

}  // namespace hostkit

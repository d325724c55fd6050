// Sockets of the loopback interface, for servers that tests play.
#pragma once

#include <string_view>

namespace hostkit {

// A socket that listens at a free port.
int ListenOnLoopback(int* port);
// -1 if nobody listens there.
int ConnectToLoopback(int port);
// False: the other side is gone.
bool SendAll(int socket, std::string_view bytes);
// Small pieces leave at once.
void HurrySmallPieces(int socket);

}  // namespace hostkit

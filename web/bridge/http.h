// The HTTP side of the port: files, and the way to a WebSocket.
#pragma once

#include "client_stream.h"

namespace bridge {

class Service;

// One request of the client; then the socket is closed, or becomes a WebSocket.
void serveHttp(Service& service, ClientStream::Socket socket);

} // namespace bridge

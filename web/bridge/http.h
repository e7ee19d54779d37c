// The HTTP side of the port: files, and the way to a WebSocket.
#pragma once

#include <boost/asio/ip/tcp.hpp>

namespace bridge {

class Service;

// One request of the client; then the socket is closed, or becomes a WebSocket.
void serveHttp(Service& service, boost::asio::ip::tcp::socket socket);

} // namespace bridge

// A client's connection by WebSocket.
#pragma once

#include "client_stream.h"
#include "connection.h"

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>

#include <memory>
#include <string>

namespace bridge {

class Service;
struct SocketCount;

// Counts a socket as long as it is there.
class Counted
{
public:
    explicit Counted(std::shared_ptr<SocketCount> sockets);
    Counted(Counted&&) noexcept = default;
    ~Counted();
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    Counted& operator=(Counted&&) = delete;

private:
    std::shared_ptr<SocketCount> m_sockets;
};

using HttpRequest = boost::beast::http::request<boost::beast::http::empty_body>;

constexpr char subprotocol[] = "scribera-pad.1";
constexpr std::size_t longestMessage = 65536;

// Answers the request for an upgrade, and serves what comes then. The request is needed no longer than the
// call.
void serveWebSocket(Service& service, Counted counted, ClientStream stream, const std::string& origin,
                    const HttpRequest& request);

} // namespace bridge

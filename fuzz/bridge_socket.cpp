// A client of the service: the input's first byte says whether an upgrade to a WebSocket comes before the
// others, and whether its bytes arrive in one piece or in several.

#include "fuzzer.h"
#include "http.h"
#include "service.h"

#include <boost/asio/io_context.hpp>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <string_view>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace bridge;

constexpr unsigned char isUpgraded = 1;
constexpr unsigned char isInPieces = 2;

boost::asio::io_context& context()
{
    static boost::asio::io_context only(1);
    return only;
}

Service& service()
{
    static Options options = [] {
        Options own;
        own.port = 0;
        return own;
    }();
    static Service only(context(), options, serveHttp);
    return only;
}

// The client, on the same thread as the service: nothing of it waits.
class Client
{
public:
    Client() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        // Else the table of sockets that end grows, and the service looks for its clients in it.
        const linger none{1, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(service().port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
                "the service listens");
    }
    ~Client() { close(m_socket); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(std::string_view bytes)
    {
        while (!bytes.empty()) {
            const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
            if (sent < 0 && errno != EAGAIN)
                return; // the service has closed the connection
            bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
            serve();
        }
    }

    // What the service does now, and what it answers.
    void serve()
    {
        while (context().poll() > 0)
            receive();
        receive();
    }

    void receive()
    {
        char bytes[65536];
        for (;;) {
            const ssize_t received = recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT);
            if (received <= 0)
                return;
            if (m_start.size() < 64)
                m_start.append(bytes, static_cast<std::size_t>(received));
        }
    }

    void sendNoMore() { shutdown(m_socket, SHUT_WR); }
    const std::string& start() const { return m_start; }

private:
    const int m_socket;
    std::string m_start; // of what was received
};

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    service().listen();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto how = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    {
        Client client;
        if (how & isUpgraded) {
            const std::string port = std::to_string(service().port());
            client.send("GET /pad HTTP/1.1\r\nHost: 127.0.0.1:" + port + "\r\nOrigin: http://localhost\r\n" +
                        "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n" +
                        "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n" +
                        "Sec-WebSocket-Protocol: scribera-pad.1\r\n\r\n");
            require(client.start().starts_with("HTTP/1.1 101 "), "an allowed page is let in");
        }
        while (!input.empty()) {
            const std::string_view piece = input.substr(0, how & isInPieces ? 7 : input.size());
            client.send(piece);
            input.remove_prefix(piece.size());
        }
        client.sendNoMore();
        client.serve();
    }
    // The client is gone without a word; the service has to notice.
    for (int turn = 0; service().sockets()->count > 0; ++turn) {
        require(turn < 1000, "a connection ends with its client");
        context().run_one_for(std::chrono::milliseconds(10));
    }
    return 0;
}

#include "web_socket.h"

#include "service.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <chrono>
#include <utility>

namespace bridge {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;
using namespace std::chrono_literals;

constexpr auto handshakePatience = 10s;
constexpr auto pingInterval = 15s;

class SocketConnection final : public Connection
{
public:
    SocketConnection(Service& service, Counted counted, ClientStream stream, std::string origin)
        : Connection(service.context(), service, std::move(origin)), m_counted(std::move(counted)),
          m_socket(std::move(stream)), m_aliveTimer(service.context())
    {
    }

    void start(const HttpRequest& request)
    {
        m_socket.next_layer().expireNever(); // the WebSocket has timers of its own
        websocket::stream_base::timeout timeout{};
        timeout.handshake_timeout = handshakePatience;
        timeout.idle_timeout = websocket::stream_base::none(); // which would not count what the client takes
        m_socket.set_option(timeout);
        m_socket.control_callback([this](websocket::frame_type, beast::string_view) { m_isActive = true; });
        m_socket.set_option(websocket::stream_base::decorator([](websocket::response_type& response) {
            response.set(http::field::sec_websocket_protocol, subprotocol);
            response.set(http::field::server, "scribera-bridge");
        }));
        m_socket.read_message_max(longestMessage);
        m_socket.write_buffer_bytes(longestMessage);
        m_socket.async_accept(request, [self = self()](const error_code& error) {
            if (error) {
                self->end();
                return;
            }
            self->watch();
            self->read();
        });
    }

private:
    std::shared_ptr<SocketConnection> self()
    {
        return std::static_pointer_cast<SocketConnection>(shared_from_this());
    }

    void read()
    {
        m_socket.async_read(m_buffer, [self = self()](const error_code& error, std::size_t) {
            if (error) {
                self->end();
                return;
            }
            self->m_isActive = true;
            const asio::const_buffer data = self->m_buffer.cdata();
            self->received({static_cast<const char*>(data.data()), data.size()}, self->m_socket.got_text());
            self->m_buffer.consume(self->m_buffer.size());
            // The closing reads on by itself, and a read beside it, when it fails, waits for it and it for
            // the read.
            if (!self->isClosing())
                self->read();
        });
    }

    void write(const std::string& bytes, bool isText) override
    {
        m_socket.text(isText);
        m_socket.async_write(asio::buffer(bytes), [self = self()](const error_code& error, std::size_t) {
            if (error) {
                self->end();
                return;
            }
            self->m_isActive = true;
            self->written();
        });
    }

    void close(CloseCode code) override
    {
        m_socket.async_close(static_cast<websocket::close_code>(code),
                             [self = self()](const error_code&) { self->end(); });
    }

    void end()
    {
        m_aliveTimer.cancel();
        lost();
    }

    // A client that neither sends nor takes anything is asked whether it is there, and left when it does not
    // answer.
    void watch()
    {
        m_aliveTimer.expires_after(pingInterval);
        m_aliveTimer.async_wait([self = self()](const error_code& error) {
            if (error)
                return;
            if (!std::exchange(self->m_isActive, false)) {
                self->m_socket.next_layer().close(); // ends what is under way
                return;
            }
            if (!std::exchange(self->m_isAsking, true))
                self->m_socket.async_ping({}, [self](const error_code&) { self->m_isAsking = false; });
            self->watch();
        });
    }

    Counted m_counted;
    websocket::stream<ClientStream> m_socket;
    beast::flat_buffer m_buffer{longestMessage + 1024};
    asio::steady_timer m_aliveTimer;
    bool m_isActive = true;
    bool m_isAsking = false;
};

} // namespace

Counted::Counted(std::shared_ptr<SocketCount> sockets) : m_sockets(std::move(sockets))
{
    ++m_sockets->count;
}

Counted::~Counted()
{
    if (!m_sockets)
        return;
    --m_sockets->count;
    if (m_sockets->whenClosed)
        m_sockets->whenClosed();
}

void serveWebSocket(Service& service, Counted counted, ClientStream stream, const std::string& origin,
                    const HttpRequest& request)
{
    const auto connection =
        std::make_shared<SocketConnection>(service, std::move(counted), std::move(stream), origin);
    service.add(connection);
    connection->start(request);
}

} // namespace bridge

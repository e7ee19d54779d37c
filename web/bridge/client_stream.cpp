#include "client_stream.h"

#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/rate_policy.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/teardown.hpp>

#include <variant>

namespace bridge {

namespace asio = boost::asio;
namespace beast = boost::beast;
using Plain = beast::basic_stream<asio::ip::tcp, ClientStream::executor_type>;
using Secure = beast::ssl_stream<Plain>;

struct ClientStream::Layers
{
    Layers(Socket socket, asio::ssl::context* context)
    {
        if (context)
            stream.emplace<Secure>(std::move(socket), *context);
        else
            stream.emplace<Plain>(std::move(socket));
    }

    Secure* secure() { return std::get_if<Secure>(&stream); }
    Plain& plain() { return secure() ? secure()->next_layer() : std::get<Plain>(stream); }

    std::variant<std::monostate, Plain, Secure> stream;
};

ClientStream::ClientStream(Socket socket, asio::ssl::context* tls)
    : m_layers(std::make_unique<Layers>(std::move(socket), tls))
{
}

ClientStream::~ClientStream() = default;
ClientStream::ClientStream(ClientStream&&) noexcept = default;

void ClientStream::start(Done done)
{
    if (Secure* const secure = m_layers->secure())
        secure->async_handshake(asio::ssl::stream_base::server, std::move(done));
    else
        asio::post(get_executor(), [done = std::move(done)] { done({}); });
}

void ClientStream::expireAfter(std::chrono::steady_clock::duration time)
{
    m_layers->plain().expires_after(time);
}

void ClientStream::expireNever()
{
    m_layers->plain().expires_never();
}

ClientStream::Socket& ClientStream::socket()
{
    return m_layers->plain().socket();
}

void ClientStream::close()
{
    m_layers->plain().close();
}

void ClientStream::tearDown(beast::role_type role, Done done)
{
    using beast::websocket::async_teardown;
    if (Secure* const secure = m_layers->secure())
        async_teardown(role, *secure, std::move(done));
    else
        async_teardown(role, m_layers->plain(), std::move(done));
}

ClientStream::executor_type ClientStream::get_executor()
{
    return m_layers->plain().get_executor();
}

void ClientStream::read(const Some<asio::mutable_buffer>& buffers, Moved moved)
{
    if (Secure* const secure = m_layers->secure())
        secure->async_read_some(buffers, std::move(moved));
    else
        m_layers->plain().async_read_some(buffers, std::move(moved));
}

void ClientStream::write(const Some<asio::const_buffer>& buffers, Moved moved)
{
    if (Secure* const secure = m_layers->secure())
        secure->async_write_some(buffers, std::move(moved));
    else
        m_layers->plain().async_write_some(buffers, std::move(moved));
}

} // namespace bridge

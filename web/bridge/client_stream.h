// The bytes of a client, with TLS or without.
//
// One type for both, with erased handlers: HTTP and WebSocket are templates of their stream and of each
// handler, and take a compiler minutes when there are several of them.
#pragma once

#include <boost/asio/async_result.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/beast/core/role.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>

namespace bridge {

class ClientStream
{
public:
    using executor_type = boost::asio::io_context::executor_type;
    using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, executor_type>;
    using Done = std::function<void(boost::system::error_code)>;
    using Moved = std::function<void(boost::system::error_code, std::size_t)>;

    // Without TLS when there is no context for it.
    ClientStream(Socket socket, boost::asio::ssl::context* tls);
    ~ClientStream();
    ClientStream(ClientStream&&) noexcept;
    ClientStream& operator=(ClientStream&&) = delete;

    // Before anything else: the handshake where there is TLS.
    void start(Done done);

    // What is under way ends with an error when it takes longer, and what begins later.
    void expireAfter(std::chrono::steady_clock::duration time);
    void expireNever();

    Socket& socket();
    // At once; what is under way ends with an error.
    void close();
    // In order: TLS is told, then the other side.
    void tearDown(boost::beast::role_type role, Done done);

    // What the templates above ask of a stream.
    executor_type get_executor();
    template <typename Buffers, typename Token>
    auto async_read_some(const Buffers& buffers, Token&& token)
    {
        return boost::asio::async_initiate<Token, void(boost::system::error_code, std::size_t)>(
            [this](auto handler, const Some<boost::asio::mutable_buffer>& some) {
                read(some, erased(std::move(handler)));
            },
            token, Some<boost::asio::mutable_buffer>(buffers));
    }
    template <typename Buffers, typename Token>
    auto async_write_some(const Buffers& buffers, Token&& token)
    {
        return boost::asio::async_initiate<Token, void(boost::system::error_code, std::size_t)>(
            [this](auto handler, const Some<boost::asio::const_buffer>& some) {
                write(some, erased(std::move(handler)));
            },
            token, Some<boost::asio::const_buffer>(buffers));
    }

    // Handlers can only be moved. They all run on the service's one thread, whichever executor they name.
    template <typename Handler>
    static auto erased(Handler handler)
    {
        return [kept = std::make_shared<Handler>(std::move(handler))](auto... result) {
            Handler called(std::move(*kept));
            called(result...);
        };
    }

private:
    // The first buffers of any sequence: nobody asks that all of it be moved at once.
    template <typename Buffer>
    class Some
    {
    public:
        template <typename Buffers>
        explicit Some(const Buffers& buffers)
        {
            const auto end = boost::asio::buffer_sequence_end(buffers);
            for (auto at = boost::asio::buffer_sequence_begin(buffers);
                 at != end && m_count < m_buffers.size(); ++at)
                if (const Buffer buffer(*at); buffer.size() > 0)
                    m_buffers.at(m_count++) = buffer;
        }
        const Buffer* begin() const { return m_buffers.data(); }
        const Buffer* end() const { return m_buffers.data() + m_count; }

    private:
        std::array<Buffer, 8> m_buffers;
        std::size_t m_count = 0;
    };

    struct Layers;

    void read(const Some<boost::asio::mutable_buffer>& buffers, Moved moved);
    void write(const Some<boost::asio::const_buffer>& buffers, Moved moved);

    std::unique_ptr<Layers> m_layers;
};

// The names by which a WebSocket ends its stream.
inline void beast_close_socket(ClientStream& stream)
{
    stream.close();
}
template <typename Handler>
void async_teardown(boost::beast::role_type role, ClientStream& stream, Handler&& handler)
{
    stream.tearDown(role, ClientStream::erased(std::forward<Handler>(handler)));
}

} // namespace bridge

// The service: who listens, who is let in, and who has which pad.
#pragma once

#include "client_stream.h"
#include "connection.h"
#include "options.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace bridge {

// What is served as a file, in memory.
struct Page
{
    std::string_view target;
    std::string_view type;
    std::string content;
};

// How many sockets are open, so that there are descriptors left. It outlives the service with those that are
// left.
struct SocketCount
{
    std::size_t count = 0;
    std::function<void()> whenClosed;
};

class Service : public Pads
{
public:
    // Takes over a socket on which a client has come.
    using Serve = void (*)(Service& service, ClientStream::Socket socket);

    // Throws std::exception with what is missing.
    Service(boost::asio::io_context& context, const Options& options, Serve serve);
    ~Service() override;
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // From then on. Throws std::exception.
    void listen();
    // "http://127.0.0.1:17283"
    std::string address() const;

    const Options& options() const { return m_options; }
    unsigned short port() const { return m_port; }
    bool isSecure() const { return m_tls.has_value(); }
    boost::asio::ssl::context* tls() { return m_tls ? &*m_tls : nullptr; } // null without TLS
    boost::asio::io_context& context() { return m_context; }
    const Page* pageAt(std::string_view target) const;

    // Connections with a WebSocket.
    bool hasRoom() const;
    void add(const std::shared_ptr<Connection>& connection);
    const std::shared_ptr<SocketCount>& sockets() const { return m_sockets; }

private:
    struct Listener
    {
        explicit Listener(boost::asio::io_context& context) : acceptor(context), pause(context) {}
        boost::asio::ip::tcp::acceptor acceptor;
        boost::asio::steady_timer pause;
        bool isAccepting = false;
    };

    std::shared_ptr<PadSession> sessionOn(const PadModel& model) override;
    std::shared_ptr<PadSession> sessionOf(std::string_view token, std::string_view origin) override;
    std::shared_ptr<PadSession> newSession(const Open& open, const std::string& origin) override;

    bool adoptSockets();
    bool openSockets();
    void accept(Listener& listener);
    void serve(ClientStream::Socket socket);
    void stop();
    void stopOnceAllAreGone(int looks);
    void forgetEnded();

    boost::asio::io_context& m_context;
    const Options m_options;
    const Serve m_serve;
    PadSession::Setting m_setting;
    std::optional<boost::asio::ssl::context> m_tls;
    std::vector<Page> m_pages;
    unsigned short m_port = 0;
    std::list<Listener> m_listeners;
    std::vector<std::shared_ptr<PadSession>>
        m_sessions; // those that have or had a process that has not ended
    std::vector<std::weak_ptr<Connection>> m_connections;
    std::shared_ptr<SocketCount> m_sockets = std::make_shared<SocketCount>();
    std::size_t m_mostSockets = 0;
    boost::asio::signal_set m_signals;
    boost::asio::steady_timer m_stopTimer;
    bool m_isStopping = false;
};

} // namespace bridge

#include "service.h"

#include "log.h"
#include "token.h"

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/v6_only.hpp>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace bridge {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using namespace std::chrono_literals;

constexpr std::size_t mostConnections = 32;
constexpr int firstAdopted = 3; // descriptor that the service's manager hands over

std::string ownFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

// An installation has it where nobody starts it by hand, a build tree beside this program.
std::string workerProgram()
{
    const std::string installed = ownFolder() + "/" SCRIBERA_INSTALLED_WORKER;
    return access(installed.c_str(), X_OK) == 0 ? installed : ownFolder() + "/scribera-bridge-worker";
}

// An installation has what is served in its data folder, a build tree beside the programs.
std::string contentOf(const std::string& name)
{
    for (const char* folder : {SCRIBERA_INSTALLED_WEB, SCRIBERA_BUILT_WEB}) {
        std::ifstream file(ownFolder() + '/' + folder + '/' + name, std::ios::binary);
        std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (!content.empty())
            return content;
    }
    return {};
}

// As many as the system lets us have, but for those that workers and files need.
std::size_t roomForSockets()
{
    constexpr std::size_t spare = 64;
    constexpr std::size_t enough = 4096;
    constexpr std::size_t usual = 1024;
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) // a sandbox may forbid to ask
        return usual - spare;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, enough);
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        return usual - spare;
    return static_cast<std::size_t>(limit.rlim_cur) - std::min<std::size_t>(spare, limit.rlim_cur / 2);
}

bool isOwnProcess(const char* variable)
{
    const char* const text = std::getenv(variable);
    return text && text == std::to_string(getpid());
}

} // namespace

Service::Service(asio::io_context& context, const Options& options, Serve serve)
    : m_context(context), m_options(options), m_serve(serve), m_mostSockets(roomForSockets()),
      m_signals(context, SIGINT, SIGTERM), m_stopTimer(context)
{
    m_setting.workerProgram = workerProgram();
    m_setting.driver = m_options.driver;
    m_setting.openTime = std::chrono::seconds(m_options.openSeconds);
    m_setting.resumeTime = std::chrono::seconds(m_options.resumeSeconds);
    if (access(m_setting.workerProgram.c_str(), X_OK) != 0)
        throw std::runtime_error(m_setting.workerProgram + " is missing");
    if (!m_options.certificate.empty()) {
        m_tls.emplace(asio::ssl::context::tls_server);
        m_tls->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                           asio::ssl::context::no_tlsv1_1);
        error_code error;
        m_tls->use_certificate_chain_file(m_options.certificate, error);
        if (error)
            throw std::runtime_error(m_options.certificate + ": " + error.message());
        m_tls->use_private_key_file(m_options.key, asio::ssl::context::pem, error);
        if (error)
            throw std::runtime_error(m_options.key + ": " + error.message());
    }
    m_pages = {
        {"/health", "application/json",
         R"({"service":"scribera-bridge","version":")" SCRIBERA_VERSION R"(","protocol":"scribera-pad.1"})"},
        {"/scribera-pad.js", "text/javascript; charset=utf-8", contentOf("scribera-pad.js")},
        {"/example", "text/html; charset=utf-8", contentOf("example.html")},
    };
    m_sockets->whenClosed = [this] {
        for (Listener& listener : m_listeners)
            accept(listener);
    };
    m_signals.async_wait([this](const error_code& error, int) {
        if (!error)
            stop();
    });
}

Service::~Service()
{
    m_sockets->whenClosed = nullptr;
}

void Service::listen()
{
    constexpr int attempts = 20; // to find a port that is free in both families
    if (!adoptSockets()) {
        int attempt = 0;
        while (!openSockets())
            if (++attempt == attempts)
                throw std::runtime_error("no port is free");
    }
    for (Listener& listener : m_listeners)
        accept(listener);
}

// Sockets that the service's manager has opened. They have to be such as we would open.
bool Service::adoptSockets()
{
    const char* const count = std::getenv("LISTEN_FDS");
    const bool isOurs = count && isOwnProcess("LISTEN_PID");
    const int sockets = isOurs ? std::atoi(count) : 0;
    for (const char* variable : {"LISTEN_FDS", "LISTEN_PID", "LISTEN_FDNAMES"})
        unsetenv(variable);
    for (int descriptor = firstAdopted; descriptor < firstAdopted + sockets; ++descriptor) {
        sockaddr_storage address = {};
        socklen_t length = sizeof address;
        int isListening = 0;
        socklen_t size = sizeof isListening;
        if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
            getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &isListening, &size) != 0 || isListening == 0 ||
            (address.ss_family != AF_INET && address.ss_family != AF_INET6))
            throw std::runtime_error("a socket that was handed over does not listen for connections");
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        Listener& listener = m_listeners.emplace_back(m_context);
        listener.acceptor.assign(address.ss_family == AF_INET ? tcp::v4() : tcp::v6(), descriptor);
        const tcp::endpoint endpoint = listener.acceptor.local_endpoint();
        if (!endpoint.address().is_loopback())
            throw std::runtime_error("a socket that was handed over listens beyond this machine");
        if (m_port != 0 && m_port != endpoint.port())
            throw std::runtime_error("the sockets that were handed over have several ports");
        m_port = endpoint.port();
    }
    return sockets > 0;
}

// False when the port that the system has chosen is not free in the other family.
bool Service::openSockets()
{
    m_listeners.clear();
    m_port = m_options.port;
    for (const char* text : {"127.0.0.1", "::1"}) {
        const tcp::endpoint endpoint(asio::ip::make_address(text), m_port);
        Listener& listener = m_listeners.emplace_back(m_context);
        error_code error;
        listener.acceptor.open(endpoint.protocol(), error);
        if (!error) {
            listener.acceptor.set_option(tcp::acceptor::reuse_address(true), error);
            if (endpoint.protocol() == tcp::v6())
                listener.acceptor.set_option(asio::ip::v6_only(true), error);
            listener.acceptor.bind(endpoint, error);
        }
        const bool isMissing = error == asio::error::address_family_not_supported ||
                               error == boost::system::errc::address_not_available;
        if (isMissing && m_listeners.size() > 1) {
            m_listeners.pop_back(); // a machine without the newer protocol
            continue;
        }
        if (error == asio::error::address_in_use && m_options.port == 0)
            return false;
        if (error)
            throw std::runtime_error(std::string("port ") + std::to_string(m_port) + ": " + error.message());
        listener.acceptor.listen(asio::socket_base::max_listen_connections);
        m_port = listener.acceptor.local_endpoint().port();
    }
    return true;
}

std::string Service::address() const
{
    return std::string(isSecure() ? "https" : "http") + "://127.0.0.1:" + std::to_string(m_port);
}

const Page* Service::pageAt(std::string_view target) const
{
    const auto page =
        std::find_if(m_pages.begin(), m_pages.end(), [&](const Page& row) { return row.target == target; });
    return page == m_pages.end() || page->content.empty() ? nullptr : &*page;
}

void Service::accept(Listener& listener)
{
    if (listener.isAccepting || m_isStopping || m_sockets->count >= m_mostSockets)
        return;
    listener.isAccepting = true;
    const auto came = [this, &listener](const error_code& error, ClientStream::Socket socket) {
        listener.isAccepting = false;
        if (m_isStopping)
            return;
        if (!error) {
            serve(std::move(socket));
            accept(listener);
            return;
        }
        // No descriptor or no memory: for now.
        listener.pause.expires_after(100ms);
        listener.pause.async_wait([this, &listener](const error_code& stopped) {
            if (!stopped)
                accept(listener);
        });
    };
    listener.acceptor.async_accept(m_context.get_executor(), came);
}

void Service::serve(ClientStream::Socket socket)
{
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    m_serve(*this, std::move(socket));
}

bool Service::hasRoom() const
{
    const auto count = std::count_if(m_connections.begin(), m_connections.end(),
                                     [](const std::weak_ptr<Connection>& one) { return !one.expired(); });
    return static_cast<std::size_t>(count) < mostConnections && !m_isStopping;
}

void Service::add(const std::shared_ptr<Connection>& connection)
{
    std::erase_if(m_connections, [](const std::weak_ptr<Connection>& one) { return one.expired(); });
    m_connections.push_back(connection);
}

void Service::forgetEnded()
{
    std::erase_if(m_sessions, [](const std::shared_ptr<PadSession>& session) { return session->isEnded(); });
}

std::shared_ptr<PadSession> Service::sessionOn(const PadModel& model)
{
    forgetEnded();
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                    [&](const auto& session) { return &session->model() == &model; });
    return found == m_sessions.end() ? nullptr : *found;
}

// Each of them is looked at, whichever it is.
std::shared_ptr<PadSession> Service::sessionOf(std::string_view token, std::string_view origin)
{
    std::shared_ptr<PadSession> found;
    for (const std::shared_ptr<PadSession>& session : m_sessions)
        if (isSameToken(session->token(), token) && session->origin() == origin && session->isOpen())
            found = session;
    return found;
}

std::shared_ptr<PadSession> Service::newSession(const Open& open, const std::string& origin)
{
    forgetEnded();
    m_sessions.push_back(std::make_shared<PadSession>(m_context, m_setting, open, origin));
    return m_sessions.back();
}

void Service::stop()
{
    if (std::exchange(m_isStopping, true))
        return;
    for (Listener& listener : m_listeners) {
        error_code ignored;
        listener.acceptor.close(ignored);
        listener.pause.cancel();
    }
    for (const std::shared_ptr<PadSession>& session : m_sessions)
        session->end("service-stops", "the service stops");
    for (const std::weak_ptr<Connection>& one : m_connections)
        if (const std::shared_ptr<Connection> connection = one.lock())
            connection->closeSoon(CloseCode::GoingAway);
    stopOnceAllAreGone(0);
}

void Service::stopOnceAllAreGone(int looks)
{
    constexpr auto interval = 20ms;
    constexpr auto patience = 8s; // longer than a worker has
    const bool areGone = std::all_of(m_sessions.begin(), m_sessions.end(),
                                     [](const auto& session) { return session->isEnded(); }) &&
                         std::all_of(m_connections.begin(), m_connections.end(),
                                     [](const auto& one) { return one.expired(); });
    if (areGone || looks == patience / interval) {
        m_context.stop();
        return;
    }
    m_stopTimer.expires_after(interval);
    m_stopTimer.async_wait([this, looks](const error_code& error) {
        if (!error)
            stopOnceAllAreGone(looks + 1);
    });
}

} // namespace bridge

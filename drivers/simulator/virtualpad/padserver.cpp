#include "padserver.h"

#include "texts.h"

#include <QTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace virtualpad {
namespace {

namespace padlink = simulator::padlink;
using simulator::Descriptor;

constexpr std::size_t MostPeers = 16;
// A host that is this much behind has stopped reading.
constexpr std::size_t LargestBacklog = std::size_t{1} << 20;

std::string systemReason(int code)
{
    return std::generic_category().message(code);
}

bool hasEnded(int socket)
{
    char byte = 0;
    return recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

} // namespace

struct PadServer::Peer
{
    explicit Peer(Descriptor accepted)
        : socket(std::move(accepted)), readable(socket.get(), QSocketNotifier::Read),
          writable(socket.get(), QSocketNotifier::Write)
    {
        writable.setEnabled(false);
    }

    Descriptor socket;
    QSocketNotifier readable;
    QSocketNotifier writable;
    QTimer introduction;
    padlink::Parser parser{padlink::Parser::Peer::Driver};
    std::string outgoing;
    bool isDropped = false; // deleted when nothing of it is being called any more
};

PadServer::PadServer(Welcome welcome) : m_welcome(std::move(welcome)) {}

PadServer::~PadServer()
{
    if (m_listening.isOpen())
        unlink(m_path.c_str());
}

bool PadServer::listen(const std::string& path, std::string& error)
{
    const auto refuse = [&](const std::string& reason) {
        error = path + ": " + reason;
        return false;
    };
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return refuse(trText("Simulator", "is no path for a socket"));
    std::memcpy(address.sun_path, path.data(), path.size());

    const std::string lockPath = path + ".lock";
    Descriptor lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock.isOpen())
        return refuse(filled(trText("Simulator", "cannot be locked: %1"), {systemReason(errno)}));
    if (flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return refuse(trText("Simulator", "another virtual pad is listening there"));

    struct stat state = {};
    if (lstat(path.c_str(), &state) == 0) {
        if (!S_ISSOCK(state.st_mode))
            return refuse(trText("Simulator", "is there already, and no socket"));
        // Whoever listens without our lock is no virtual pad, but is to be left alone too.
        const bool listens = simulator::connectToPad(path).isOpen() || errno != ECONNREFUSED;
        if (listens)
            return refuse(trText("Simulator", "somebody else is listening there"));
        unlink(path.c_str());
    }

    Descriptor listening(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const mode_t mask = umask(0177);
    const bool bound =
        listening.isOpen() &&
        bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int code = errno;
    umask(mask);
    if (!bound)
        return refuse(filled(trText("Simulator", "cannot listen there: %1"), {systemReason(code)}));
    if (::listen(listening.get(), MostPeers) != 0) {
        const int reason = errno;
        unlink(path.c_str());
        return refuse(filled(trText("Simulator", "cannot listen there: %1"), {systemReason(reason)}));
    }
    m_path = path;
    m_lock = std::move(lock);
    m_listening = std::move(listening);
    m_notifier = std::make_unique<QSocketNotifier>(m_listening.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PadServer::acceptPeers);
    return true;
}

void PadServer::acceptPeers()
{
    for (;;) {
        Descriptor socket(accept4(m_listening.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket.isOpen())
            return;
        if (!simulator::isTrustedPeer(socket.get()) || m_peers.size() >= MostPeers)
            continue;
        m_peers.push_back(std::make_unique<Peer>(std::move(socket)));
        Peer& peer = *m_peers.back();
        connect(&peer.readable, &QSocketNotifier::activated, this, [this, &peer] { read(peer); });
        connect(&peer.writable, &QSocketNotifier::activated, this, [this, &peer] { flush(peer); });
        peer.introduction.setSingleShot(true);
        connect(&peer.introduction, &QTimer::timeout, this,
                [this, &peer] { drop(peer, tr("it did not introduce itself")); });
        peer.introduction.start(padlink::IntroductionTime);
    }
}

void PadServer::read(Peer& peer)
{
    if (peer.isDropped)
        return;
    std::array<char, 65536> block;
    const ssize_t count = recv(peer.socket.get(), block.data(), block.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count <= 0) {
        drop(peer);
        return;
    }
    const std::string_view bytes(block.data(), static_cast<std::size_t>(count));
    const auto sink = [&](padlink::Message&& message) { return take(peer, std::move(message)); };
    if (!peer.parser.take(bytes, sink))
        drop(peer, QString::fromStdString(peer.parser.error()));
}

bool PadServer::take(Peer& peer, padlink::Message&& message)
{
    if (peer.isDropped)
        return false;
    if (const auto* hello = std::get_if<padlink::Hello>(&message))
        return introduce(peer, *hello);
    Q_EMIT messageCame(message);
    return !peer.isDropped;
}

bool PadServer::introduce(Peer& peer, const padlink::Hello& hello)
{
    // A host that ended and one that came may show in either order.
    if (m_host != nullptr && hasEnded(m_host->socket.get()))
        drop(*m_host);
    if (hello.version != padlink::ProtocolVersion || m_host != nullptr) {
        write(peer, padlink::encode(padlink::Refusal{m_host != nullptr ? "it has another host"
                                                                       : "it speaks another version"}));
        return false;
    }
    peer.introduction.stop();
    // Whatever the pad still does for nobody is not to be told to this host.
    const std::string model = m_welcome(hello.deviceType);
    if (!write(peer, padlink::encode(padlink::Welcome{padlink::ProtocolVersion, model})))
        return false;
    m_host = &peer;
    Q_EMIT hostCame(hello.deviceType);
    return !peer.isDropped;
}

void PadServer::send(const padlink::Message& message)
{
    if (m_host != nullptr && !write(*m_host, padlink::encode(message)))
        drop(*m_host, tr("it does not read"));
}

void PadServer::disconnectHost()
{
    if (m_host != nullptr)
        drop(*m_host);
}

bool PadServer::write(Peer& peer, const std::string& bytes)
{
    if (peer.outgoing.size() + bytes.size() > LargestBacklog)
        return false;
    peer.outgoing += bytes;
    flush(peer);
    return !peer.isDropped;
}

void PadServer::flush(Peer& peer)
{
    while (!peer.isDropped && !peer.outgoing.empty()) {
        const ssize_t count =
            ::send(peer.socket.get(), peer.outgoing.data(), peer.outgoing.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            // The end of the connection shows when it is read, with what it still said.
            peer.outgoing.clear();
            break;
        }
        if (count < 0)
            break;
        peer.outgoing.erase(0, static_cast<std::size_t>(count));
    }
    if (!peer.isDropped)
        peer.writable.setEnabled(!peer.outgoing.empty());
}

void PadServer::drop(Peer& peer, const QString& reason)
{
    if (peer.isDropped)
        return;
    peer.isDropped = true;
    peer.introduction.stop();
    peer.readable.setEnabled(false);
    peer.writable.setEnabled(false);
    peer.socket.close();
    // The peer's own notifier may be what called this.
    QTimer::singleShot(0, this, [this, &peer] {
        m_peers.erase(
            std::remove_if(m_peers.begin(), m_peers.end(),
                           [&](const std::unique_ptr<Peer>& other) { return other.get() == &peer; }),
            m_peers.end());
    });
    if (m_host == &peer) {
        m_host = nullptr;
        Q_EMIT hostLeft(reason);
    }
}

} // namespace virtualpad

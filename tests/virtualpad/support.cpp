#include "support.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace padlink = simulator::padlink;

bool waitUntil(const std::function<bool()>& condition)
{
    const auto end = Clock::now() + std::chrono::milliseconds(Patience);
    while (!condition()) {
        if (Clock::now() > end)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void enableLink(int waitMilliseconds)
{
    setenv("SCRIBERA_SIM_PAD", SocketName.c_str(), 1);
    setenv("SCRIBERA_SIM_PAD_WAIT_MS", std::to_string(waitMilliseconds).c_str(), 1);
}

ListeningPad::ListeningPad(const std::string& model) : m_pad(*simulator::padForModel(model))
{
    std::string error;
    if (!m_pad.listen(SocketName, error))
        throw std::runtime_error(error);
}

void draw(virtualpad::VirtualPad& pad, int moves)
{
    pad.penDown({0.1, 0.2});
    for (int move = 1; move <= moves; ++move) {
        const std::size_t before = pad.state().ink().size();
        const double part = static_cast<double>(move) / moves;
        pad.penMove({0.1 + 0.8 * part, move % 2 == 0 ? 0.2 : 0.8});
        ASSERT_TRUE(waitUntil([&] { return pad.state().ink().size() > before; }));
    }
    pad.penUp();
    ASSERT_TRUE(waitUntil([&] { return !pad.state().isPenDown(); }));
}

PadProcess::PadProcess(const QStringList& arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_process.setProcessEnvironment(environment);
    m_process.start(QStringLiteral(SCRIBERA_VIRTUAL_PAD),
                    QStringList{QStringLiteral("--socket"), QString::fromStdString(SocketName)} + arguments);
}

PadProcess::~PadProcess()
{
    kill();
}

void PadProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished(Patience);
}

Host::Host()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(SCRIBERA_HOST_PROGRAM), QStringList());
}

Host::~Host()
{
    if (m_process.state() != QProcess::NotRunning)
        kill();
}

QString Host::ask(const QString& line)
{
    m_process.write(line.toUtf8() + '\n');
    const bool answered =
        waitUntil([&] { return m_process.canReadLine() || m_process.state() == QProcess::NotRunning; });
    if (!answered || !m_process.canReadLine()) {
        ADD_FAILURE() << "the host gives no answer to " << line.toStdString();
        return {};
    }
    return QString::fromUtf8(m_process.readLine()).trimmed();
}

void Host::quit()
{
    m_process.write("quit\n");
    EXPECT_TRUE(waitUntil([&] { return m_process.state() == QProcess::NotRunning; }));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_process.exitCode(), 0);
}

void Host::kill()
{
    m_process.kill();
    m_process.waitForFinished(Patience);
}

RawPeer::RawPeer(simulator::Descriptor socket) : m_socket(std::move(socket))
{
    fcntl(m_socket.get(), F_SETFL, fcntl(m_socket.get(), F_GETFL) | O_NONBLOCK);
}

RawPeer RawPeer::connected()
{
    return RawPeer(simulator::connectToPad(SocketName));
}

bool RawPeer::send(const std::string& bytes)
{
    std::size_t sent = 0;
    return waitUntil([&] {
               const ssize_t count =
                   ::send(m_socket.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
               if (count < 0)
                   return errno != EAGAIN;
               sent += static_cast<std::size_t>(count);
               return sent == bytes.size();
           }) &&
           sent == bytes.size();
}

bool RawPeer::readSome(std::string& bytes, bool& ended)
{
    std::array<char, 65536> block;
    const ssize_t count = recv(m_socket.get(), block.data(), block.size(), 0);
    ended = count == 0 || (count < 0 && errno != EAGAIN);
    if (count > 0)
        bytes.append(block.data(), static_cast<std::size_t>(count));
    return count > 0;
}

bool RawPeer::isClosed()
{
    std::string bytes;
    bool ended = false;
    return waitUntil([&] {
        readSome(bytes, ended);
        bytes.clear();
        return ended;
    });
}

std::vector<padlink::Message> RawPeer::messages(padlink::Parser::Peer side, std::size_t count)
{
    std::vector<padlink::Message> result;
    padlink::Parser parser(side);
    bool ended = false;
    waitUntil([&] {
        std::string bytes;
        readSome(bytes, ended);
        EXPECT_TRUE(parser.take(bytes, [&](padlink::Message&& message) {
            result.push_back(std::move(message));
            return true;
        })) << parser.error();
        return ended || result.size() >= count;
    });
    EXPECT_GE(result.size(), count);
    return result;
}

FakePad::FakePad() : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, SocketName.data(), SocketName.size());
    if (bind(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_socket.get(), 8) != 0)
        throw std::runtime_error("the false pad cannot listen");
}

RawPeer FakePad::accept()
{
    simulator::Descriptor accepted;
    EXPECT_TRUE(waitUntil([&] {
        accepted = simulator::Descriptor(accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
        return accepted.isOpen();
    }));
    return RawPeer(std::move(accepted));
}

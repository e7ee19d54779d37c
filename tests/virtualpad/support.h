// What the tests of the virtual pad share: waiting with an event loop, a host in a process of its own, peers
// that misbehave.
#pragma once

#include "../simulator/support.h"
#include "padlink.h"
#include "padsocket.h"
#include "virtualpad.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <future>
#include <string>
#include <vector>

// Delivers events until the condition holds; false after Patience.
bool waitUntil(const std::function<bool()>& condition);

// Calls what may wait for the pad on another thread, while the pad goes on living on this one.
template <typename Function>
auto meanwhile(Function&& function)
{
    auto result = std::async(std::launch::async, std::forward<Function>(function));
    EXPECT_TRUE(
        waitUntil([&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return result.get();
}

// The working directory of every test is its own and empty; this is a socket's name in it.
inline const std::string SocketName = "pad";

// Makes hosts of this process and its children look for the pad, and wait for its answer.
void enableLink(int waitMilliseconds = Patience);

// A pad in this process, without a window, listening at SocketName.
class ListeningPad
{
public:
    explicit ListeningPad(const std::string& model = "SCK210");

    virtualpad::VirtualPad& operator*() { return m_pad; }
    virtualpad::VirtualPad* operator->() { return &m_pad; }

private:
    virtualpad::VirtualPad m_pad;
};

// A line of that many moves across the pad, in the way of the hand: each position waits for a sample.
void draw(virtualpad::VirtualPad& pad, int moves);

// scribera-virtual-pad as a process, at SocketName.
class PadProcess
{
public:
    explicit PadProcess(const QStringList& arguments = {});
    ~PadProcess();

    // At once, without a chance to say good-bye.
    void kill();
    QProcess& process() { return m_process; }

private:
    QProcess m_process;
};

// A host in a process without an application object: tests/virtualpad/host_program.cpp.
class Host
{
public:
    Host();
    ~Host();

    // One line, and its answer.
    QString ask(const QString& line);
    int number(const QString& line) { return ask(line).toInt(); }
    // Ends it as an orderly host does, or kills it.
    void quit();
    void kill();

private:
    QProcess m_process;
};

// One end of a connection as a test has it in its hands: blocking, bounded by Patience.
class RawPeer
{
public:
    RawPeer() = default;
    explicit RawPeer(simulator::Descriptor socket);

    static RawPeer connected();
    bool isOpen() const { return m_socket.isOpen(); }
    // False when the other end is gone.
    bool send(const std::string& bytes);
    // Reads until the other end closes the connection; false after Patience. Needs the pad's event loop.
    bool isClosed();
    // Whole messages of that side as they come, at least count of them.
    std::vector<simulator::padlink::Message> messages(simulator::padlink::Parser::Peer side,
                                                      std::size_t count);
    void close() { m_socket.close(); }

private:
    bool readSome(std::string& bytes, bool& ended);

    simulator::Descriptor m_socket;
};

// A pad that does what the test wants.
class FakePad
{
public:
    FakePad();

    // The next host that connects.
    RawPeer accept();

private:
    simulator::Descriptor m_socket;
};

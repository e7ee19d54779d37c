#include "driverlink.h"

#include "recording.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace simulator {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds PauseBetweenTries{250};
// Within what a host may wait for SCRDAPI_UnInitial.
constexpr milliseconds FlushTime{25};
// A pad that is this much behind has stopped reading.
constexpr std::size_t LargestBacklog = 2 * padlink::LargestPayload;

int millisecondsUntil(Clock::time_point end)
{
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
}

} // namespace

bool DriverLink::start(std::string path, int deviceType)
{
    m_wake = Descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!m_wake.isOpen())
        return false;
    m_path = std::move(path);
    m_deviceType = deviceType;
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
        m_stopping = false;
        m_answered = false;
        m_hadPad = false;
        m_wishes = Wishes();
    }
    // The host's signal handlers belong on the host's threads.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::exception&) {
        const std::lock_guard lock(m_mutex);
        m_running = false;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    if (!m_thread.joinable())
        return false;
    pthread_setname_np(m_thread.native_handle(), "scribera-link");
    return true;
}

void DriverLink::waitForAnswer(milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    if (m_running)
        m_answer.wait_for(lock, limit, [this] { return m_answered; });
}

void DriverLink::stop()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_running = false;
        m_stopping = true;
    }
    wake();
    m_thread.join();
    const std::lock_guard lock(m_mutex);
    m_outgoing.clear();
}

void DriverLink::showScreen(bool on)
{
    const std::lock_guard lock(m_mutex);
    m_wishes.screen = padlink::Screen{on};
    post(*m_wishes.screen);
}

void DriverLink::clear()
{
    const std::lock_guard lock(m_mutex);
    m_wishes.cleared = true;
    m_wishes.version.reset();
    post(padlink::Clear{});
}

void DriverLink::showVersion(bool shown, const std::string& text)
{
    const std::lock_guard lock(m_mutex);
    m_wishes.version = padlink::VersionInfo{shown, text};
    post(*m_wishes.version);
}

void DriverLink::setPenStyle(bool withPressure)
{
    const std::lock_guard lock(m_mutex);
    m_wishes.penStyle = padlink::PenStyle{withPressure};
    post(*m_wishes.penStyle);
}

void DriverLink::showPicture(const unsigned char* pixels, int width, int height)
{
    if (width > padlink::LargestPictureSide || height > padlink::LargestPictureSide)
        return;
    const std::size_t size = std::size_t{2} * static_cast<std::size_t>(width * height);
    const padlink::Picture picture{width, height, {pixels, pixels + size}};
    const std::lock_guard lock(m_mutex);
    post(picture);
}

// With m_mutex held: the order in which the host asked is the order in which the pad hears.
void DriverLink::post(const padlink::Message& message)
{
    if (!m_running || !m_introduced || m_overrun)
        return;
    m_outgoing += padlink::encode(message);
    m_overrun = m_outgoing.size() > LargestBacklog;
    wake();
}

void DriverLink::wake()
{
    const std::uint64_t one = 1;
    // Fails only when the thread has been woken often enough already.
    [[maybe_unused]] const ssize_t written = write(m_wake.get(), &one, sizeof one);
}

bool DriverLink::hasLostPad()
{
    const std::lock_guard lock(m_mutex);
    return m_running && m_hadPad && !m_introduced;
}

bool DriverLink::isStopping()
{
    const std::lock_guard lock(m_mutex);
    return m_stopping;
}

void DriverLink::answered()
{
    const std::lock_guard lock(m_mutex);
    m_answered = true;
    m_answer.notify_all();
}

bool DriverLink::pause()
{
    const Clock::time_point end = Clock::now() + PauseBetweenTries;
    while (!isStopping()) {
        pollfd events{m_wake.get(), POLLIN, 0};
        if (poll(&events, 1, millisecondsUntil(end)) == 0)
            return true;
        std::uint64_t count = 0;
        if (read(m_wake.get(), &count, sizeof count) < 0 && errno != EAGAIN && errno != EINTR)
            return false;
    }
    return false;
}

void DriverLink::run()
{
    do {
        try {
            const Descriptor socket = connectToPad(m_path);
            if (socket.isOpen())
                serve(socket);
        } catch (const std::exception&) {
            // Out of memory: as good as a lost connection.
        }
        {
            const std::lock_guard lock(m_mutex);
            m_introduced = false;
            m_outgoing.clear();
        }
        liftPen();
        answered();
    } while (pause());
}

void DriverLink::serve(const Descriptor& socket)
{
    padlink::Parser parser(padlink::Parser::Peer::Pad);
    m_hasWelcome = false;
    m_sending = padlink::encode(padlink::Hello{padlink::ProtocolVersion, m_deviceType});
    {
        const std::lock_guard lock(m_mutex);
        m_introduced = true;
        m_overrun = false;
        m_outgoing.clear();
        if (m_wishes.cleared)
            post(padlink::Clear{});
        if (m_wishes.penStyle)
            post(*m_wishes.penStyle);
        if (m_wishes.screen)
            post(*m_wishes.screen);
        if (m_wishes.version)
            post(*m_wishes.version);
    }
    const Clock::time_point introduction = Clock::now() + padlink::IntroductionTime;
    for (;;) {
        if (!send(socket))
            return;
        if (isStopping()) {
            flush(socket);
            return;
        }
        if (!m_hasWelcome && Clock::now() >= introduction)
            return;
        const short wanted = m_sending.empty() ? POLLIN : POLLIN | POLLOUT;
        std::array<pollfd, 2> events{{{socket.get(), wanted, 0}, {m_wake.get(), POLLIN, 0}}};
        if (poll(events.data(), events.size(), m_hasWelcome ? -1 : millisecondsUntil(introduction)) < 0 &&
            errno != EINTR)
            return;
        std::uint64_t count = 0;
        if (events[1].revents != 0 && read(m_wake.get(), &count, sizeof count) < 0 && errno != EAGAIN)
            return;
        if ((events[0].revents & ~POLLOUT) != 0 && !receive(socket, parser))
            return;
    }
}

bool DriverLink::send(const Descriptor& socket)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_overrun)
            return false;
        m_sending += m_outgoing;
        m_outgoing.clear();
    }
    if (m_sending.size() > LargestBacklog)
        return false;
    while (!m_sending.empty()) {
        const ssize_t count = ::send(socket.get(), m_sending.data(), m_sending.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno == EAGAIN || errno == EWOULDBLOCK;
        m_sending.erase(0, static_cast<std::size_t>(count));
    }
    return true;
}

void DriverLink::flush(const Descriptor& socket)
{
    const Clock::time_point end = Clock::now() + FlushTime;
    while (send(socket) && !m_sending.empty() && Clock::now() < end) {
        pollfd events{socket.get(), POLLOUT, 0};
        poll(&events, 1, millisecondsUntil(end));
    }
}

bool DriverLink::receive(const Descriptor& socket, padlink::Parser& parser)
{
    std::array<char, 16384> block;
    const ssize_t count = recv(socket.get(), block.data(), block.size(), 0);
    if (count < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    if (count == 0)
        return false;
    const std::string_view bytes(block.data(), static_cast<std::size_t>(count));
    if (parser.take(bytes, [this](padlink::Message&& message) { return take(std::move(message)); }))
        return true;
    if (!parser.error().empty())
        complain("the virtual pad is disconnected: " + parser.error());
    return false;
}

// Once, not with each try.
void DriverLink::complain(const std::string& reason)
{
    if (m_complaint == reason)
        return;
    m_complaint = reason;
    std::fprintf(stderr, "scribera simulator: %s\n", reason.c_str());
}

bool DriverLink::take(padlink::Message&& message)
{
    if (const auto* welcome = std::get_if<padlink::Welcome>(&message)) {
        if (welcome->version != padlink::ProtocolVersion) {
            complain("the virtual pad speaks another version of the protocol");
            return false;
        }
        if (!m_listener.takePadModel(welcome->model))
            return false;
        m_hasWelcome = true;
        {
            const std::lock_guard lock(m_mutex);
            m_hadPad = true;
        }
        answered();
        return true;
    }
    if (const auto* samples = std::get_if<padlink::Samples>(&message)) {
        if (!m_listener.takePadSamples(samples->samples))
            return false;
        for (const ScrSimSample& sample : samples->samples) {
            if (sample.penStatus == PenUp)
                m_touching.reset();
            else if (sample.penStatus >= PenDown && sample.penStatus <= ConfirmKey)
                m_touching = sample;
        }
        return true;
    }
    if (const auto* scan = std::get_if<padlink::FingerprintScan>(&message))
        return m_listener.takePadFingerprint(*scan);
    if (const auto* refusal = std::get_if<padlink::Refusal>(&message))
        complain("the virtual pad refuses: " + refusal->reason);
    return false;
}

// Nobody will tell any more that the pen has left the pad or its key.
void DriverLink::liftPen()
{
    if (!m_touching)
        return;
    const ScrSimSample last = *std::exchange(m_touching, std::nullopt);
    if (!isStopping())
        m_listener.takeLiftedPen({last.x, last.y, 0, PenUp});
}

} // namespace simulator

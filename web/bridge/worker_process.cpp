#include "worker_process.h"

#include "log.h"

#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bridge {
namespace {

using boost::system::error_code;
using namespace std::chrono_literals;

// A thread of the worker's does nothing but listen and answer. One that waits for a processor or a disk is
// given time, one that sleeps over a question will not wake up.
constexpr auto aliveInterval = 250ms;
constexpr int mostAsleep = 2;
constexpr auto orderPatience = 10s;
constexpr int mostUnanswered = orderPatience / aliveInterval;
constexpr auto picturePatience = 60s;
constexpr auto endPatience = 6s;
constexpr std::size_t longestAnswer = std::size_t{256} << 20;

std::system_error systemError(int number, const char* what)
{
    return {number, std::generic_category(), what};
}

std::string newFolder()
{
    const char* parent = nullptr;
    for (const char* variable : {"RUNTIME_DIRECTORY", "XDG_RUNTIME_DIR", "TMPDIR"})
        if (!parent)
            parent = std::getenv(variable);
    std::string folder = std::string(parent ? parent : "/tmp") + "/scribera-bridge.XXXXXX";
    if (!mkdtemp(folder.data()))
        throw systemError(errno, "no folder for temporary files can be made");
    return folder;
}

// Everything of ours, with temporary files in the folder.
std::vector<std::string> environmentWith(const std::string& folder)
{
    std::vector<std::string> all;
    for (char** variable = environ; *variable; ++variable)
        if (!std::string_view(*variable).starts_with("TMPDIR="))
            all.emplace_back(*variable);
    all.push_back("TMPDIR=" + folder);
    return all;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

struct SpawnActions
{
    SpawnActions() { posix_spawn_file_actions_init(&actions); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    posix_spawn_file_actions_t actions{};
};

} // namespace

WorkerProcess::WorkerProcess(boost::asio::io_context& context)
    : m_socket(context), m_end(context), m_aliveTimer(context), m_orderTimer(context), m_endTimer(context)
{
}

WorkerProcess::~WorkerProcess()
{
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    removeFolder();
}

std::shared_ptr<WorkerProcess> WorkerProcess::start(boost::asio::io_context& context, Listener& listener,
                                                    const std::string& program, const std::string& driver)
{
    std::shared_ptr<WorkerProcess> worker(new WorkerProcess(context));
    worker->m_folder = newFolder();
    worker->launch(program, driver);
    worker->m_listener = &listener;
    worker->awaitEnd();
    worker->readHead();
    worker->askWhetherAlive();
    return worker;
}

void WorkerProcess::launch(const std::string& program, const std::string& driver)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw systemError(errno, "no socket for a worker");
    m_socket.assign(boost::asio::local::stream_protocol(), ends[0]);
    SpawnActions actions;
    posix_spawn_file_actions_adddup2(&actions.actions, ends[1], workerDescriptor);
    posix_spawn_file_actions_addclosefrom_np(&actions.actions, workerDescriptor + 1);
    std::vector<std::string> arguments = {program, driver};
    std::vector<std::string> environment = environmentWith(m_folder);
    const int result = posix_spawn(&m_process, program.c_str(), &actions.actions, nullptr,
                                   pointersTo(arguments).data(), pointersTo(environment).data());
    ::close(ends[1]);
    if (result != 0) {
        m_process = -1;
        throw systemError(result, program.c_str());
    }
    // The C library's header for it is none for C++.
    const int end = static_cast<int>(syscall(SYS_pidfd_open, m_process, 0));
    if (end < 0)
        throw systemError(errno, "a worker cannot be watched");
    m_end.assign(end);
}

void WorkerProcess::awaitEnd()
{
    m_end.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                     [self = shared_from_this()](const error_code& error) {
                         if (error)
                             return;
                         waitpid(std::exchange(self->m_process, -1), nullptr, 0);
                         self->m_endTimer.cancel();
                         self->removeFolder();
                         // What it has sent before is still to be read; the reader finds the end.
                         for (const auto& handler : std::exchange(self->m_whenEnded, {}))
                             handler();
                     });
}

void WorkerProcess::whenEnded(std::function<void()> handler)
{
    if (isEnded())
        handler();
    else
        m_whenEnded.push_back(std::move(handler));
}

void WorkerProcess::removeFolder() const
{
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void WorkerProcess::close()
{
    if (std::exchange(m_isOver, true))
        return;
    m_listener = nullptr;
    m_aliveTimer.cancel();
    m_orderTimer.cancel();
    error_code ignored;
    m_socket.close(ignored); // tells it to end
    for (Pending& pending : std::exchange(m_pending, {}))
        pending.handler({true, Fault::None, {}});
    m_endTimer.expires_after(endPatience);
    m_endTimer.async_wait([self = shared_from_this()](const error_code& error) {
        if (!error && self->m_process > 0)
            kill(self->m_process, SIGKILL);
    });
}

void WorkerProcess::fail(const std::string& reason)
{
    if (m_isOver)
        return;
    Listener* const listener = m_listener;
    if (m_process > 0)
        kill(m_process, SIGKILL);
    close();
    listener->workerFailed(reason);
}

void WorkerProcess::order(Order kind, const void* record, std::size_t bytes, Handler handler)
{
    if (m_isOver) {
        handler({true, Fault::None, {}});
        return;
    }
    m_pending.push_back({kind, std::move(handler)});
    send(kind, record, bytes);
    if (m_pending.size() == 1)
        watchOrder();
}

void WorkerProcess::watchOrder()
{
    const Order kind = m_pending.front().kind;
    const bool isPicture = kind == Order::Image || kind == Order::Svg;
    m_orderTimer.expires_after(isPicture ? picturePatience : orderPatience);
    m_orderTimer.async_wait([self = shared_from_this()](const error_code& error) {
        if (!error)
            self->fail("it does not do what it is told");
    });
}

void WorkerProcess::askWhetherAlive()
{
    m_aliveTimer.expires_after(aliveInterval);
    m_aliveTimer.async_wait([self = shared_from_this()](const error_code& error) {
        if (error || self->m_isOver)
            return;
        self->m_asleep =
            self->m_isListening && self->m_unanswered > 0 && self->isAsleep() ? self->m_asleep + 1 : 0;
        if (self->m_asleep == mostAsleep) {
            self->fail("it hangs");
            return;
        }
        if (self->m_unanswered == mostUnanswered) {
            self->fail("it does not answer");
            return;
        }
        ++self->m_unanswered;
        self->send(Order::Alive, nullptr, 0);
        self->askWhetherAlive();
    });
}

// Whether it has told nothing that is still to be read, and none of its threads can go on. False where the
// system does not say.
bool WorkerProcess::isAsleep() const
{
    error_code error;
    if (m_socket.available(error) > 0 || error)
        return false;
    int threads = 0;
    for (std::filesystem::directory_iterator thread("/proc/" + std::to_string(m_process) + "/task", error),
         end;
         !error && thread != end; thread.increment(error)) {
        std::ifstream file(thread->path() / "stat");
        std::string line;
        std::getline(file, line);
        const std::size_t name = line.rfind(") "); // which may hold anything
        if (name == std::string::npos || line.compare(name, 3, ") R") == 0 ||
            line.compare(name, 3, ") D") == 0)
            return false;
        ++threads;
    }
    return !error && threads > 0;
}

void WorkerProcess::send(Order kind, const void* record, std::size_t bytes)
{
    const Head head{static_cast<std::uint32_t>(kind), static_cast<std::uint32_t>(bytes)};
    m_toSend.append(reinterpret_cast<const char*>(&head), sizeof head);
    m_toSend.append(static_cast<const char*>(record), bytes);
    write();
}

void WorkerProcess::write()
{
    if (!m_sending.empty() || m_toSend.empty() || m_isOver)
        return;
    m_sending.swap(m_toSend);
    boost::asio::async_write(m_socket, boost::asio::buffer(m_sending),
                             [self = shared_from_this()](const error_code& error, std::size_t) {
                                 self->m_sending.clear();
                                 if (!error) // otherwise the reader finds the end
                                     self->write();
                             });
}

void WorkerProcess::readHead()
{
    boost::asio::async_read(m_socket, boost::asio::buffer(&m_head, sizeof m_head),
                            [self = shared_from_this()](const error_code& error, std::size_t) {
                                if (error)
                                    self->fail("it has hung up");
                                else if (self->m_head.bytes > longestNews)
                                    self->fail("it talks nonsense");
                                else
                                    self->readBody();
                            });
}

void WorkerProcess::readBody()
{
    m_body.resize(m_head.bytes);
    boost::asio::async_read(m_socket, boost::asio::buffer(m_body),
                            [self = shared_from_this()](const error_code& error, std::size_t) {
                                if (error) {
                                    self->fail("it has hung up");
                                    return;
                                }
                                if (self->m_isOver)
                                    return;
                                self->take();
                                if (!self->m_isOver)
                                    self->readHead();
                            });
}

template <typename Record>
bool WorkerProcess::body(Record& record) const
{
    if (m_body.size() != sizeof record)
        return false;
    std::memcpy(&record, m_body.data(), sizeof record);
    return true;
}

void WorkerProcess::take()
{
    m_isListening = true;
    switch (static_cast<News>(m_head.kind)) {
    case News::Part:
        if (m_pending.empty() || m_parts.size() + m_body.size() > longestAnswer)
            break;
        m_parts.append(m_body.data(), m_body.size());
        return;
    case News::Answer:
        takeAnswer();
        return;
    case News::Points:
        takePoints();
        return;
    case News::Key: {
        KeyRecord key;
        if (!body(key))
            break;
        m_listener->keyCame(key.clears, key.isConfirm != 0);
        return;
    }
    case News::Lost:
        m_listener->padLost();
        return;
    case News::Alive:
        m_unanswered = 0;
        return;
    }
    fail("it talks nonsense");
}

void WorkerProcess::takeAnswer()
{
    AnswerRecord answer;
    if (!body(answer) || m_pending.empty()) {
        fail("it talks nonsense");
        return;
    }
    m_listener->clearsCame(answer.clears);
    const Handler handler = std::move(m_pending.front().handler);
    m_pending.pop_front();
    m_orderTimer.cancel();
    if (!m_pending.empty())
        watchOrder();
    handler({false, answer.fault, std::exchange(m_parts, {})});
}

void WorkerProcess::takePoints()
{
    PointsRecord record;
    const std::size_t bytes = m_body.size() - sizeof record; // huge for a body that is too short
    if (m_body.size() <= sizeof record || bytes % sizeof(InkPoint) != 0) {
        fail("it talks nonsense");
        return;
    }
    std::memcpy(&record, m_body.data(), sizeof record);
    m_points.resize(bytes / sizeof(InkPoint));
    std::memcpy(m_points.data(), m_body.data() + sizeof record, bytes);
    m_listener->pointsCame(record.clears, m_points);
}

} // namespace bridge

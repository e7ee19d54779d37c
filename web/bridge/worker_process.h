// The process that has one pad open, as the service sees it. All on the service's one thread.
#pragma once

#include "worker_link.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

namespace bridge {

// What became of an order.
struct Outcome
{
    bool isFailed = false; // the worker is gone
    Fault fault = Fault::None;
    std::string content;
};

class WorkerProcess : public std::enable_shared_from_this<WorkerProcess>
{
public:
    // What it tells unasked. None comes after gone() or a close().
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void pointsCame(std::uint64_t clears, const std::vector<InkPoint>& points) = 0;
        virtual void keyCame(std::uint64_t clears, bool isConfirm) = 0;
        // Before the answer of an order that was done when the signature had been cleared so often.
        virtual void clearsCame(std::uint64_t clears) = 0;
        virtual void padLost() = 0;
        virtual void workerFailed(const std::string& reason) = 0;
    };

    // The driver as it is given to the worker. Throws std::system_error.
    static std::shared_ptr<WorkerProcess> start(boost::asio::io_context& context, Listener& listener,
                                                const std::string& program, const std::string& driver);
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    using Handler = std::function<void(Outcome)>;
    void order(Order kind, const void* record, std::size_t bytes, Handler handler);

    // Ends it in good order, by force when it does not end soon. The listener is not told anything any more.
    void close();
    // Once the process is gone, at once when it is.
    void whenEnded(std::function<void()> handler);
    bool isEnded() const { return m_process <= 0; }

private:
    explicit WorkerProcess(boost::asio::io_context& context);
    void launch(const std::string& program, const std::string& driver);
    void readHead();
    void readBody();
    void take();
    void takeAnswer();
    void takePoints();
    void fail(const std::string& reason);
    void send(Order kind, const void* record, std::size_t bytes);
    void write();
    void askWhetherAlive();
    bool isAsleep() const;
    void watchOrder();
    void awaitEnd();
    void removeFolder() const;

    template <typename Record>
    bool body(Record& record) const;

    boost::asio::local::stream_protocol::socket m_socket;
    boost::asio::posix::stream_descriptor m_end; // readable once the process has ended
    boost::asio::steady_timer m_aliveTimer;
    boost::asio::steady_timer m_orderTimer;
    boost::asio::steady_timer m_endTimer;
    Listener* m_listener = nullptr;
    pid_t m_process = -1;
    std::string m_folder; // where it has its temporary files
    bool m_isOver = false;
    bool m_isListening = false; // it has started
    int m_unanswered = 0;       // questions whether it is alive
    int m_asleep = 0;           // how often in a row it slept over one

    Head m_head;
    std::vector<char> m_body;
    std::vector<InkPoint> m_points;
    std::string m_parts; // of the answer that is coming

    struct Pending
    {
        Order kind;
        Handler handler;
    };
    std::deque<Pending> m_pending;
    std::string m_sending;
    std::string m_toSend;
    std::vector<std::function<void()>> m_whenEnded;
};

} // namespace bridge

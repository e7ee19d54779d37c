// A pad that is open: its points, its key, and whom it belongs to.
#pragma once

#include "request.h"
#include "worker_process.h"

#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bridge {

// What came from the pad since the last clear, kept once whoever reads it.
struct InkStore
{
    std::deque<InkPoint> points;
    std::uint64_t clears = 0;
    std::uint64_t keys = 0; // that were used; of the last one:
    bool isConfirm = false;
    std::uint64_t pointsBeforeKey = 0;
};

class PadSession : public std::enable_shared_from_this<PadSession>, private WorkerProcess::Listener
{
public:
    // The connection that it belongs to, as it sees it.
    class Owner
    {
    public:
        virtual ~Owner() = default;
        virtual void pointsCame() = 0;
        virtual void keyCame() = 0;
        virtual void cleared() = 0;
        // Reason and message of the notification. The session is not the owner's any more.
        virtual void sessionOver(const char* reason, const char* message) = 0;
    };

    struct Setting
    {
        std::string workerProgram;
        std::string driver;
        std::chrono::seconds resumeTime{};
        std::chrono::seconds openTime{};
    };

    PadSession(boost::asio::io_context& context, const Setting& setting, const Open& open,
               std::string origin);

    ~PadSession() override;
    PadSession(const PadSession&) = delete;
    PadSession& operator=(const PadSession&) = delete;

    using Opened = std::function<void(Outcome)>;
    // Throws std::system_error when there is no process for it.
    void open(Opened handler);

    const std::string& token() const { return m_token; }
    const std::string& origin() const { return m_origin; }
    const PadModel& model() const { return *m_open.model; }
    const Open& wanted() const { return m_open; }
    const OpenedRecord& opened() const { return m_opened; }
    const std::shared_ptr<InkStore>& ink() const { return m_ink; }
    bool isOpen() const { return m_state == State::Open; }
    bool isEnding() const { return m_state == State::Ending; }
    bool isEnded() const { return m_state == State::Ending && (!m_worker || m_worker->isEnded()); }

    // Takes it from the owner before.
    void setOwner(Owner& owner);
    // The owner goes; another one may come for a while.
    void leave(const Owner& owner);

    void order(Order kind, const void* record, std::size_t bytes, WorkerProcess::Handler handler);
    // Whether the last key is the confirm key; nothing when there is none or it was taken.
    std::optional<bool> takeKey();
    // An owner that knows fewer keys than were used did not get the last one: it can be taken again.
    void giveKeyBack() { m_isKeyTaken = false; }

    void end(const char* reason, const char* message);
    // Without telling the owner.
    void close();
    void whenEnded(std::function<void()> handler);

private:
    enum class State
    {
        Opening,
        Open,
        Ending
    };

    void pointsCame(std::uint64_t clears, const std::vector<InkPoint>& points) override;
    void keyCame(std::uint64_t clears, bool isConfirm) override;
    void clearsCame(std::uint64_t clears) override;
    void padLost() override;
    void workerFailed(const std::string& reason) override;

    boost::asio::io_context& m_context;
    const Setting& m_setting;
    const Open m_open;
    const std::string m_origin;
    const std::string m_token;
    State m_state = State::Opening;
    OpenedRecord m_opened;
    std::shared_ptr<InkStore> m_ink = std::make_shared<InkStore>();
    bool m_isKeyTaken = false;
    std::shared_ptr<WorkerProcess> m_worker;
    Owner* m_owner = nullptr;
    boost::asio::steady_timer m_leftTimer;
    boost::asio::steady_timer m_openTimer;
};

} // namespace bridge

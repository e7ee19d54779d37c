#include "pad_session.h"

#include "log.h"
#include "token.h"

#include <cstring>
#include <utility>

namespace bridge {

using boost::system::error_code;

PadSession::PadSession(boost::asio::io_context& context, const Setting& setting, const Open& open,
                       std::string origin)
    : m_context(context), m_setting(setting), m_open(open), m_origin(std::move(origin)), m_token(newToken()),
      m_leftTimer(context), m_openTimer(context)
{
}

PadSession::~PadSession()
{
    if (m_worker)
        m_worker->close();
}

void PadSession::open(Opened handler)
{
    m_worker = WorkerProcess::start(m_context, *this, m_setting.workerProgram, m_setting.driver);
    const OpenRecord record{m_open.model->deviceType, m_open.width, m_open.height};
    order(Order::Open, &record, sizeof record,
          [self = shared_from_this(), handler = std::move(handler)](Outcome outcome) {
              if (!outcome.isFailed && outcome.fault == Fault::None &&
                  outcome.content.size() == sizeof self->m_opened && self->m_state == State::Opening) {
                  std::memcpy(&self->m_opened, outcome.content.data(), sizeof self->m_opened);
                  self->m_state = State::Open;
                  log("pad " + std::string(self->m_open.model->name) + " opened for " +
                      printable(self->m_origin));
              } else {
                  if (!outcome.isFailed)
                      log("pad " + std::string(self->m_open.model->name) +
                          " not opened: " + printable(outcome.content));
                  self->close();
              }
              handler(std::move(outcome));
          });
    m_openTimer.expires_after(m_setting.openTime);
    m_openTimer.async_wait([weak = weak_from_this()](const error_code& error) {
        const std::shared_ptr<PadSession> self = weak.lock();
        if (!error && self)
            self->end("open-too-long", "the pad was open for the longest time that one may be");
    });
}

void PadSession::setOwner(Owner& owner)
{
    m_leftTimer.cancel();
    Owner* const before = std::exchange(m_owner, &owner);
    if (before)
        before->sessionOver("taken-over", "another connection has resumed the session");
}

void PadSession::leave(const Owner& owner)
{
    if (m_owner != &owner)
        return;
    m_owner = nullptr;
    if (m_state == State::Ending)
        return;
    m_leftTimer.expires_after(m_setting.resumeTime);
    m_leftTimer.async_wait([weak = weak_from_this()](const error_code& error) {
        const std::shared_ptr<PadSession> self = weak.lock();
        if (!error && self && !self->m_owner)
            self->close();
    });
}

void PadSession::order(Order kind, const void* record, std::size_t bytes, WorkerProcess::Handler handler)
{
    m_worker->order(kind, record, bytes, std::move(handler));
}

void PadSession::end(const char* reason, const char* message)
{
    const std::shared_ptr<PadSession> kept = shared_from_this();
    if (Owner* const owner = std::exchange(m_owner, nullptr))
        owner->sessionOver(reason, message);
    close();
}

void PadSession::close()
{
    if (m_state == State::Ending)
        return;
    const bool wasOpen = std::exchange(m_state, State::Ending) == State::Open;
    m_owner = nullptr;
    m_leftTimer.cancel();
    m_openTimer.cancel();
    if (m_worker)
        m_worker->close();
    if (wasOpen)
        log("pad " + std::string(m_open.model->name) + " closed");
}

void PadSession::whenEnded(std::function<void()> handler)
{
    if (m_worker)
        m_worker->whenEnded(std::move(handler));
    else
        handler();
}

void PadSession::pointsCame(std::uint64_t clears, const std::vector<InkPoint>& points)
{
    clearsCame(clears);
    if (clears != m_ink->clears)
        return; // wiped meanwhile
    m_ink->points.insert(m_ink->points.end(), points.begin(), points.end());
    if (m_owner)
        m_owner->pointsCame();
}

void PadSession::keyCame(std::uint64_t clears, bool isConfirm)
{
    clearsCame(clears);
    if (clears != m_ink->clears)
        return;
    ++m_ink->keys;
    m_ink->isConfirm = isConfirm;
    m_ink->pointsBeforeKey = m_ink->points.size();
    m_isKeyTaken = false;
    if (m_owner)
        m_owner->keyCame();
}

std::optional<bool> PadSession::takeKey()
{
    if (m_ink->keys == 0 || std::exchange(m_isKeyTaken, true))
        return std::nullopt;
    return m_ink->isConfirm;
}

void PadSession::clearsCame(std::uint64_t clears)
{
    if (clears <= m_ink->clears)
        return;
    m_ink->clears = clears;
    m_ink->points.clear();
    m_ink->points.shrink_to_fit();
    m_ink->keys = 0;
    if (m_owner)
        m_owner->cleared();
}

void PadSession::padLost()
{
    log("pad " + std::string(m_open.model->name) + " does not answer any more");
    end("pad-lost", "the pad does not answer any more");
}

void PadSession::workerFailed(const std::string& reason)
{
    log("worker of pad " + std::string(m_open.model->name) + " failed: " + reason);
    end("worker-failed", "the process that held the pad has ended");
}

} // namespace bridge

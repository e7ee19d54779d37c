#include "connection.h"

#include "log.h"

#include <boost/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace json = boost::json;

namespace bridge {
namespace {

constexpr double mostAtOnce = 200;
constexpr double mostInASecond = 100;
constexpr std::size_t mostWaiting = 200;        // requests
constexpr std::size_t mostNotifications = 1000; // that a client does not read
constexpr std::uint64_t mostPointsTogether = 2000;

void append(std::string& text, std::int64_t number)
{
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

// "[[x,y,pressure,time,mark],...]"
void appendPoints(std::string& text, const std::deque<InkPoint>& points, std::uint64_t from,
                  std::uint64_t end)
{
    text += '[';
    for (std::uint64_t index = from; index < end; ++index) {
        const InkPoint& point = points[index];
        text += index == from ? "[" : ",[";
        for (const std::int64_t number :
             {std::int64_t{point.x}, std::int64_t{point.y}, std::int64_t{point.pressure},
              std::max<std::int64_t>(point.time, 0)}) {
            append(text, number);
            text += ',';
        }
        text += point.mark == Mark::Begin ? "2]" : point.mark == Mark::End ? "1]" : "0]";
    }
    text += ']';
}

std::string notification(const char* method, const json::object& parameters)
{
    return json::serialize(json::object{{"jsonrpc", "2.0"}, {"method", method}, {"params", parameters}});
}

const char* keyName(bool isConfirm)
{
    return isConfirm ? "confirm" : "cancel";
}

json::value textOrNull(std::string_view text)
{
    return text.empty() ? json::value(nullptr) : json::value(json::string_view(text.data(), text.size()));
}

} // namespace

Connection::Connection(boost::asio::io_context& context, Pads& pads, std::string origin)
    : m_context(context), m_pads(pads), m_origin(std::move(origin)), m_waitTimer(context),
      m_allowance(mostAtOnce), m_allowedAt(std::chrono::steady_clock::now())
{
}

Connection::~Connection()
{
    if (m_session)
        m_session->leave(*this);
}

void Connection::lost()
{
    m_isClosed = true;
    m_requests.clear();
    m_waitTimer.cancel();
    if (m_session)
        std::exchange(m_session, nullptr)->leave(*this);
}

void Connection::closeSoon(CloseCode code)
{
    if (m_closing || m_isClosed)
        return;
    m_closing = code;
    m_requests.clear();
    if (!m_isWriting)
        writeNext();
}

// A second's worth comes back each second.
bool Connection::isTooMuch()
{
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> seconds = now - std::exchange(m_allowedAt, now);
    m_allowance = std::min(mostAtOnce, m_allowance + seconds.count() * mostInASecond) - 1;
    return m_allowance < 0 || m_requests.size() >= mostWaiting;
}

void Connection::received(std::string_view message, bool isText)
{
    if (m_closing || m_isClosed)
        return;
    if (!isText) {
        closeSoon(CloseCode::BinaryMessage);
        return;
    }
    if (isTooMuch()) {
        log("a connection of " + printable(m_origin) + " asks for too much");
        closeSoon(CloseCode::TooMuch);
        return;
    }
    m_requests.push_back(readRequest(message));
    proceed();
}

// One request at a time, and the next one only once the client has taken the answer: whoever does not read
// makes nothing grow here.
void Connection::proceed()
{
    while (!m_isBusy && m_out.empty() && m_binary.empty() && !m_requests.empty() && !m_closing &&
           !m_isClosed) {
        const std::variant<Request, Refusal> next = std::move(m_requests.front());
        m_requests.pop_front();
        if (const Refusal* const refusal = std::get_if<Refusal>(&next))
            refuse(refusal->id, refusal->code, refusal->message);
        else
            handle(std::get<Request>(next));
    }
}

void Connection::handle(const Request& request)
{
    const bool needsPad =
        !std::holds_alternative<Open>(request.method) && !std::holds_alternative<Resume>(request.method);
    if (needsPad && !m_session)
        refuse(request.id, "no-session", "there is no open pad: open or resume one first");
    else if (!needsPad && m_session)
        refuse(request.id, "session-open", "this connection has a pad already");
    else
        std::visit([&](const auto& method) { serve(request.id, method); }, request.method);
}

void Connection::serve(std::uint64_t id, const Clear&)
{
    order(id, Order::Clear, nullptr, 0, tellNothing);
}

void Connection::serve(std::uint64_t id, const PenRecord& pen)
{
    order(id, Order::Pen, &pen, sizeof pen, tellNothing);
}

void Connection::serve(std::uint64_t id, const Image& image)
{
    order(id, Order::Image, &image.record, sizeof image.record, pictureOf(image.record.format));
}

void Connection::serve(std::uint64_t id, const Svg& svg)
{
    order(id, Order::Svg, &svg.record, sizeof svg.record, textAs("svg"));
}

void Connection::serve(std::uint64_t id, const Ink&)
{
    order(id, Order::Ink, nullptr, 0, textAs("ink"));
}

void Connection::serve(std::uint64_t id, const Device&)
{
    order(id, Order::Device, nullptr, 0,
          [](Connection& self, std::uint64_t answered, const Outcome& outcome) {
              std::string_view rest = outcome.content;
              json::object texts;
              for (const char* name : {"pad", "pen", "version"}) {
                  const std::string_view text = rest.substr(0, rest.find('\0'));
                  rest.remove_prefix(std::min(rest.size(), text.size() + 1));
                  texts[name] = textOrNull(text);
              }
              self.answer(answered, json::serialize(texts));
          });
}

void Connection::serve(std::uint64_t id, const Fingerprint& fingerprint)
{
    if (m_session->opened().hasFingerprint == 0)
        refuse(id, "no-fingerprint", "the pad has no fingerprint reader");
    else
        order(id, Order::Fingerprint, &fingerprint.record, sizeof fingerprint.record,
              pictureOf(fingerprint.record.format));
}

void Connection::tellNothing(Connection& self, std::uint64_t id, const Outcome&)
{
    self.answer(id, "{}");
}

Connection::Answer Connection::textAs(const char* name)
{
    return [name](Connection& self, std::uint64_t id, const Outcome& outcome) {
        self.answer(id, json::serialize(json::object{{name, outcome.content}}));
    };
}

Connection::Answer Connection::pictureOf(Format format)
{
    return [format](Connection& self, std::uint64_t id, Outcome outcome) {
        self.tellPicture(id, mediaTypeOf(format), std::move(outcome.content));
    };
}

void Connection::serve(std::uint64_t id, const Open& wanted)
{
    if (const std::shared_ptr<PadSession> other = m_pads.sessionOn(*wanted.model)) {
        if (!other->isEnding()) {
            refuse(id, "pad-busy", "another session has the pad");
            return;
        }
        m_isBusy = true;
        other->whenEnded([weak = weak_from_this(), id, wanted] {
            const std::shared_ptr<Connection> self = weak.lock();
            if (!self || self->m_isClosed)
                return;
            self->m_isBusy = false;
            self->serve(id, wanted);
            self->proceed();
        });
        return;
    }
    m_isBusy = true;
    const std::shared_ptr<PadSession> session = m_pads.newSession(wanted, m_origin);
    try {
        session->open([weak = weak_from_this(), id, session](const Outcome& outcome) {
            const std::shared_ptr<Connection> self = weak.lock();
            if (self && !self->m_isClosed)
                self->opened(id, session, outcome);
            else
                session->close(); // nobody knows its token
        });
    } catch (const std::system_error& error) {
        log(std::string("no worker can be started: ") + error.what());
        session->close();
        opened(id, session, {true, Fault::None, {}});
    }
}

void Connection::opened(std::uint64_t id, const std::shared_ptr<PadSession>& session, const Outcome& outcome)
{
    m_isBusy = false;
    if (session->isOpen()) {
        own(session, 0);
        tellSession(id);
    } else if (outcome.isFailed) {
        refuse(id, "worker-failed", "the process for the pad has failed; the service's log tells more");
    } else {
        refuse(id, "pad-not-opened",
               "the pad cannot be opened: is it connected, and its driver installed? The service's log tells "
               "more");
    }
    proceed();
}

void Connection::own(const std::shared_ptr<PadSession>& session, std::uint64_t points)
{
    m_session = session;
    m_overType = "no-session";
    m_ink = session->ink();
    m_cursor = points;
    session->setOwner(*this);
}

void Connection::serve(std::uint64_t id, const Resume& wanted)
{
    const std::shared_ptr<PadSession> session = m_pads.sessionOf(wanted.token, m_origin);
    if (!session) {
        refuse(id, "unknown-token", "there is no such session, or it is over");
        return;
    }
    const InkStore& ink = *session->ink();
    const bool isSameInk = wanted.clears == ink.clears;
    own(session, isSameInk && wanted.points <= ink.points.size() ? wanted.points : 0);
    tellSession(id);
    if ((isSameInk ? wanted.keys : 0) < ink.keys) {
        session->giveKeyBack();
        tellKey();
    }
}

void Connection::serve(std::uint64_t id, const Close&)
{
    m_isBusy = true;
    const std::shared_ptr<PadSession> session = std::exchange(m_session, nullptr);
    m_ink.reset();
    answerWait(nullptr);
    session->close();
    session->whenEnded([weak = weak_from_this(), id] {
        const std::shared_ptr<Connection> self = weak.lock();
        if (!self || self->m_isClosed)
            return;
        self->m_isBusy = false;
        self->answer(id, "{}");
        self->proceed();
    });
}

void Connection::serve(std::uint64_t id, const Points& wanted)
{
    const std::uint64_t total = m_ink->points.size();
    const std::uint64_t from = std::min(wanted.from, total);
    std::string result = "{\"from\":";
    append(result, static_cast<std::int64_t>(from));
    result += ",\"points\":";
    appendPoints(result, m_ink->points, from, from + std::min(wanted.count, total - from));
    result += ",\"total\":";
    append(result, static_cast<std::int64_t>(total));
    answer(id, result + '}');
}

void Connection::serve(std::uint64_t id, const Wait& wanted)
{
    if (m_wait) {
        refuse(id, "waiting", "there is a wait already");
        return;
    }
    m_wait = id;
    if (const std::optional<bool> key = m_session->takeKey()) {
        answerWait(keyName(*key));
        return;
    }
    m_waitTimer.expires_after(std::chrono::milliseconds(wanted.milliseconds));
    m_waitTimer.async_wait([weak = weak_from_this(), id](const boost::system::error_code& error) {
        const std::shared_ptr<Connection> self = weak.lock();
        if (!error && self && self->m_wait == id)
            self->answerWait("timeout");
    });
}

// Null: the session is over.
void Connection::answerWait(const char* key)
{
    const std::optional<std::uint64_t> id = std::exchange(m_wait, std::nullopt);
    m_waitTimer.cancel();
    if (!id || m_isClosed)
        return;
    if (key)
        answer(*id, json::serialize(json::object{{"key", key}}));
    else
        refuse(*id, m_overType, "the session is over");
}

void Connection::order(std::uint64_t id, Order kind, const void* record, std::size_t bytes, Answer answer)
{
    m_isBusy = true;
    m_session->order(kind, record, bytes,
                     [weak = weak_from_this(), id, session = m_session.get(),
                      answer = std::move(answer)](Outcome outcome) {
                         const std::shared_ptr<Connection> self = weak.lock();
                         if (!self || self->m_isClosed)
                             return;
                         self->m_isBusy = false;
                         if (outcome.isFailed || self->m_session.get() != session)
                             self->refuse(id, self->m_overType, "the session is over");
                         else if (outcome.fault == Fault::NoInk)
                             self->refuse(id, "no-ink", "there is no ink");
                         else if (outcome.fault == Fault::NoFingerprint)
                             self->refuse(id, "no-fingerprint", "nobody has put a finger on the reader");
                         else if (outcome.fault != Fault::None)
                             self->refuse(id, "failed",
                                          outcome.content.empty() ? "the pad refused" : outcome.content);
                         else
                             answer(*self, id, std::move(outcome));
                         self->proceed();
                     });
}

void Connection::tellSession(std::uint64_t id)
{
    const Open& wanted = m_session->wanted();
    const OpenedRecord& opened = m_session->opened();
    answer(id, json::serialize(json::object{
                   {"token", m_session->token()},
                   {"model", wanted.model->name},
                   {"canvas", json::object{{"width", wanted.width}, {"height", wanted.height}}},
                   {"area", json::object{{"left", opened.areaLeft},
                                         {"top", opened.areaTop},
                                         {"width", opened.areaWidth},
                                         {"height", opened.areaHeight}}},
                   {"pressureLevels", opened.pressureLevels},
                   {"hasFingerprint", opened.hasFingerprint != 0},
                   {"clears", m_ink->clears},
                   {"points", m_ink->points.size()},
               }));
}

void Connection::tellPicture(std::uint64_t id, const char* type, std::string content)
{
    Out out;
    out.text = "{\"jsonrpc\":\"2.0\",\"id\":" + std::to_string(id) +
               ",\"result\":" + json::serialize(json::object{{"type", type}, {"bytes", content.size()}}) +
               '}';
    out.binary = std::move(content);
    put(std::move(out));
}

void Connection::answer(std::uint64_t id, const std::string& result)
{
    put({"{\"jsonrpc\":\"2.0\",\"id\":" + std::to_string(id) + ",\"result\":" + result + '}', {}, 0});
}

void Connection::refuse(std::optional<std::uint64_t> id, int code, std::string_view message)
{
    json::object refusal{
        {"jsonrpc", "2.0"},
        {"id", nullptr},
        {"error",
         json::object{{"code", code}, {"message", json::string_view(message.data(), message.size())}}}};
    if (id)
        refusal["id"] = *id;
    put({json::serialize(refusal), {}, 0});
}

void Connection::refuse(std::uint64_t id, const char* type, std::string_view message)
{
    constexpr int ours = -32000;
    put({json::serialize(json::object{
             {"jsonrpc", "2.0"},
             {"id", id},
             {"error", json::object{{"code", ours},
                                    {"message", json::string_view(message.data(), message.size())},
                                    {"data", json::object{{"type", type}}}}}}),
         {},
         0});
}

void Connection::pointsCame()
{
    if (!m_isWriting)
        writeNext();
}

void Connection::tellKey()
{
    put({notification("key", {{"key", keyName(m_ink->isConfirm)}, {"keys", m_ink->keys}}),
         {},
         m_ink->pointsBeforeKey});
}

void Connection::keyCame()
{
    tellKey();
    if (m_wait)
        if (const std::optional<bool> key = m_session->takeKey())
            answerWait(keyName(*key));
}

// Points that were not sent are gone, and nothing waits for them any more.
void Connection::cleared()
{
    m_cursor = 0;
    for (Out& out : m_out)
        out.behind = 0;
    put({notification("cleared", {{"clears", m_ink->clears}}), {}, 0});
}

void Connection::sessionOver(const char* reason, const char* message)
{
    const std::shared_ptr<PadSession> kept = std::exchange(m_session, nullptr);
    for (const char* type : {"pad-lost", "worker-failed"})
        if (std::string_view(reason) == type)
            m_overType = type;
    answerWait(nullptr);
    put({notification("closed", {{"reason", reason}, {"message", message}}), {}, m_ink->points.size()});
}

void Connection::put(Out out)
{
    if (m_isClosed)
        return;
    if (m_out.size() >= mostNotifications) {
        m_out.clear();
        closeSoon(CloseCode::TooMuch);
        return;
    }
    m_out.push_back(std::move(out));
    if (!m_isWriting)
        writeNext();
}

void Connection::written()
{
    m_isWriting = false;
    writeNext();
    proceed();
}

void Connection::writeNext()
{
    if (m_isClosed || m_isWriting)
        return;
    if (!m_binary.empty()) {
        m_writing = std::exchange(m_binary, {});
        m_isWriting = true;
        write(m_writing, false);
        return;
    }
    const std::uint64_t points = m_ink ? m_ink->points.size() : 0;
    if (!m_out.empty() && m_out.front().behind <= m_cursor) {
        m_writing = std::move(m_out.front().text);
        m_binary = std::move(m_out.front().binary);
        m_out.pop_front();
        m_isWriting = true;
        write(m_writing, true);
    } else if (m_ink && m_cursor < points && (m_session || !m_out.empty())) {
        writePoints(m_out.empty() ? points : m_out.front().behind);
    } else if (m_closing) {
        m_isClosed = true;
        close(*m_closing);
    }
}

void Connection::writePoints(std::uint64_t end)
{
    const std::uint64_t last = std::min(end, m_cursor + mostPointsTogether);
    m_writing = "{\"jsonrpc\":\"2.0\",\"method\":\"points\",\"params\":{\"from\":";
    append(m_writing, static_cast<std::int64_t>(m_cursor));
    m_writing += ",\"points\":";
    appendPoints(m_writing, m_ink->points, m_cursor, last);
    m_writing += "}}";
    m_cursor = last;
    m_isWriting = true;
    write(m_writing, true);
}

} // namespace bridge

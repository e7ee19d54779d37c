// One client: its requests, one after the other, and what it is told.
#pragma once

#include "pad_session.h"
#include "request.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace bridge {

// Who has which pad.
class Pads
{
public:
    virtual ~Pads() = default;
    virtual std::shared_ptr<PadSession> sessionOn(const PadModel& model) = 0; // null when it is free
    virtual std::shared_ptr<PadSession> sessionOf(std::string_view token, std::string_view origin) = 0;
    virtual std::shared_ptr<PadSession> newSession(const Open& open, const std::string& origin) = 0;
};

// The codes with which a connection is closed.
enum class CloseCode
{
    GoingAway = 1001,
    BinaryMessage = 1003,
    TooMuch = 1008
};

class Connection : public std::enable_shared_from_this<Connection>, private PadSession::Owner
{
public:
    Connection(boost::asio::io_context& context, Pads& pads, std::string origin);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Once everything is told that is to be told.
    void closeSoon(CloseCode code);

protected:
    // From the socket.
    void received(std::string_view message, bool isText);
    void written();
    void lost();
    bool isClosing() const { return m_closing.has_value(); }

    // To the socket, one at a time; written() answers. The bytes stay until then.
    virtual void write(const std::string& bytes, bool isText) = 0;
    virtual void close(CloseCode code) = 0;

private:
    // A message that waits to be written.
    struct Out
    {
        std::string text;
        std::string binary;       // follows the text when it is not empty
        std::uint64_t behind = 0; // so many points come first
    };

    void pointsCame() override;
    void keyCame() override;
    void cleared() override;
    void sessionOver(const char* reason, const char* message) override;

    bool isTooMuch();
    void proceed();
    void handle(const Request& request);
    void serve(std::uint64_t id, const Open& wanted);
    void serve(std::uint64_t id, const Resume& wanted);
    void serve(std::uint64_t id, const Close&);
    void serve(std::uint64_t id, const Clear&);
    void serve(std::uint64_t id, const PenRecord& pen);
    void serve(std::uint64_t id, const Points& wanted);
    void serve(std::uint64_t id, const Wait& wanted);
    void serve(std::uint64_t id, const Image& image);
    void serve(std::uint64_t id, const Svg& svg);
    void serve(std::uint64_t id, const Ink&);
    void serve(std::uint64_t id, const Device&);
    void serve(std::uint64_t id, const Fingerprint& fingerprint);

    void opened(std::uint64_t id, const std::shared_ptr<PadSession>& session, const Outcome& outcome);
    void own(const std::shared_ptr<PadSession>& session, std::uint64_t points);
    void answerWait(const char* key);
    using Answer = std::function<void(Connection&, std::uint64_t, Outcome)>;
    static void tellNothing(Connection& self, std::uint64_t id, const Outcome&);
    static Answer textAs(const char* name);
    static Answer pictureOf(Format format);
    void order(std::uint64_t id, Order kind, const void* record, std::size_t bytes, Answer answer);

    void tellSession(std::uint64_t id);
    void tellKey();
    void tellPicture(std::uint64_t id, const char* type, std::string content);
    void answer(std::uint64_t id, const std::string& result);
    void refuse(std::optional<std::uint64_t> id, int code, std::string_view message);
    void refuse(std::uint64_t id, const char* type, std::string_view message);
    void put(Out out);
    void writeNext();
    void writePoints(std::uint64_t end);

    boost::asio::io_context& m_context;
    Pads& m_pads;
    const std::string m_origin;
    std::shared_ptr<PadSession> m_session;
    std::shared_ptr<InkStore>
        m_ink;                  // of the session, or of the one before as long as points of it are to be sent
    std::uint64_t m_cursor = 0; // points that were sent
    const char* m_overType = "no-session"; // error of what the end of the session overtakes

    std::deque<std::variant<Request, Refusal>> m_requests;
    bool m_isBusy = false; // with one of them
    std::optional<std::uint64_t> m_wait;
    boost::asio::steady_timer m_waitTimer;
    double m_allowance;
    std::chrono::steady_clock::time_point m_allowedAt;

    std::deque<Out> m_out;
    std::string m_writing; // what the socket is writing
    std::string m_binary;  // what has to follow
    bool m_isWriting = false;
    std::optional<CloseCode> m_closing;
    bool m_isClosed = false; // nothing is written any more
};

} // namespace bridge

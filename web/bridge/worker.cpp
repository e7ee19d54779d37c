// scribera-bridge-worker: the process that has one pad open, for scribera-bridge.
#include "failures.h"
#include "pad/driver.h"
#include "pad/session.h"
#include "worker_link.h"

#include <scriberasdk.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QImage>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace bridge;

constexpr QSize fingerprintSize(208, 288);

[[noreturn]] void endProcess(const char* reason)
{
    std::fprintf(stderr, "scribera-bridge-worker: %s\n", reason);
    std::_Exit(1);
}

// Our end of the socket. Both threads send.
class Link
{
public:
    template <typename Record>
    void send(News kind, const Record& record)
    {
        send(kind, &record, sizeof record, nullptr, 0);
    }
    void send(News kind) { send(kind, nullptr, 0, nullptr, 0); }
    void send(News kind, const void* record, std::size_t recordBytes, const void* more, std::size_t moreBytes)
    {
        const Head head{static_cast<std::uint32_t>(kind),
                        static_cast<std::uint32_t>(recordBytes + moreBytes)};
        const std::lock_guard guard(m_sending);
        put(&head, sizeof head);
        put(record, recordBytes);
        put(more, moreBytes);
    }

    // False at the end of the service.
    static bool receive(void* into, std::size_t bytes)
    {
        char* next = static_cast<char*>(into);
        while (bytes > 0) {
            const ssize_t count = recv(workerDescriptor, next, bytes, 0);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return false;
            next += count;
            bytes -= static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    void put(const void* from, std::size_t bytes)
    {
        const char* next = static_cast<const char*>(from);
        while (bytes > 0 && !m_isBroken) {
            const ssize_t count = ::send(workerDescriptor, next, bytes, MSG_NOSIGNAL);
            if (count < 0 && errno == EINTR)
                continue;
            m_isBroken = count < 0; // the other thread finds the end of the service
            next += std::max<ssize_t>(count, 0);
            bytes -= static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        }
    }

    std::mutex m_sending; // held for a whole message
    bool m_isBroken = false;
};

struct Message
{
    Order kind = Order::Alive;
    std::array<char, longestOrder> body{};
    std::size_t bytes = 0;

    template <typename Record>
    Record as() const
    {
        if (bytes != sizeof(Record))
            endProcess("an order of the wrong length");
        Record record;
        std::memcpy(&record, body.data(), sizeof record);
        return record;
    }
};

// Listens to the service and tells it at once what comes from the pad, whatever the main thread is doing.
class Listener
{
public:
    explicit Listener(Link& link) : m_link(link), m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (m_wakeUp < 0)
            endProcess("no descriptor is left");
        m_thread = std::thread([this] { listen(); });
    }
    // Once the service has ended or ended() was called.
    ~Listener()
    {
        m_thread.join();
        close(m_wakeUp);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Null takes it back; from then on it is not used.
    void setSession(Session* session)
    {
        {
            const std::lock_guard guard(m_using);
            m_session = session;
        }
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = write(m_wakeUp, &one, sizeof one);
    }

    // While the pad is looked at: one that does not return from it answers nothing any more.
    void setLooking(bool isLooking) { m_lookingSince = isLooking ? Session::now() : notLooking; }

    // The next order, nothing when none came in time, an end when none will come.
    struct Next
    {
        std::optional<Message> message;
        bool isEnd = false;
    };
    Next next(std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_lock);
        m_come.wait_for(lock, patience, [this] { return m_isEnd || !m_orders.empty(); });
        if (m_isEnd)
            return {std::nullopt, true};
        if (m_orders.empty())
            return {};
        const Message message = m_orders.front();
        m_orders.pop_front();
        return {message, false};
    }

private:
    void listen()
    {
        while (true) {
            int news = -1;
            {
                const std::lock_guard guard(m_using);
                if (m_session)
                    news = m_session->descriptor();
            }
            std::array<pollfd, 3> polled = {
                {{workerDescriptor, POLLIN, 0}, {m_wakeUp, POLLIN, 0}, {news, POLLIN, 0}}};
            poll(polled.data(), polled.size(), -1);
            std::uint64_t count = 0;
            [[maybe_unused]] const ssize_t got = read(m_wakeUp, &count, sizeof count);
            if (polled[0].revents != 0 && !takeOrder())
                break;
            tellEvents();
        }
        // A driver may not come back.
        alarm(5);
        const std::lock_guard guard(m_lock);
        m_isEnd = true;
        m_come.notify_one();
    }

    bool takeOrder()
    {
        Head head;
        Message message;
        if (!Link::receive(&head, sizeof head))
            return false;
        if (head.bytes > message.body.size())
            endProcess("an order that is too long");
        message.kind = static_cast<Order>(head.kind);
        message.bytes = head.bytes;
        if (!Link::receive(message.body.data(), message.bytes))
            return false;
        if (message.kind == Order::Alive) {
            m_link.send(News::Alive);
            const std::int64_t since = m_lookingSince;
            if (since != notLooking && Session::now() - since > longestLook)
                m_link.send(News::Lost);
            return true;
        }
        const std::lock_guard guard(m_lock);
        m_orders.push_back(message);
        m_come.notify_one();
        return true;
    }

    void tellEvents()
    {
        std::vector<PadEvent> events;
        {
            const std::lock_guard guard(m_using);
            if (!m_session)
                return;
            events = m_session->takeEvents();
        }
        for (const PadEvent& event : events) {
            const auto clears = static_cast<std::uint64_t>(event.clears);
            if (event.what == PadEvent::What::KeyTouched)
                continue;
            if (event.what == PadEvent::What::KeyUsed || clears != m_points.clears)
                sendPoints();
            m_points.clears = clears;
            if (event.what == PadEvent::What::KeyUsed) {
                m_link.send(News::Key, KeyRecord{clears, event.isConfirm ? 1U : 0U});
                continue;
            }
            InkPoint point;
            point.x = static_cast<std::uint16_t>(event.x);
            point.y = static_cast<std::int16_t>(event.y);
            point.pressure = static_cast<std::int16_t>(event.pressure);
            point.mark = event.what == PadEvent::What::Down ? Mark::Begin
                         : event.what == PadEvent::What::Up ? Mark::End
                                                            : Mark::None;
            point.time = (event.nanoseconds + m_sinceEpoch) / 1'000'000;
            m_waiting.push_back(point);
            if (m_waiting.size() == mostPoints)
                sendPoints();
        }
        sendPoints();
    }

    void sendPoints()
    {
        if (m_waiting.empty())
            return;
        m_link.send(News::Points, &m_points, sizeof m_points, m_waiting.data(),
                    m_waiting.size() * sizeof(InkPoint));
        m_waiting.clear();
    }

    // What the clock of the events has to be added to for the time of day, as it was at the start: the wall
    // clock may be set while somebody signs.
    static std::int64_t clocksDifference()
    {
        return std::chrono::system_clock::now().time_since_epoch() / std::chrono::nanoseconds(1) -
               Session::now();
    }

    static constexpr std::int64_t notLooking = -1;
    static constexpr std::int64_t longestLook = 10'000'000'000; // nanoseconds
    static constexpr std::size_t mostPoints = 4000;
    static_assert(sizeof(PointsRecord) + mostPoints * sizeof(InkPoint) <= longestNews);

    Link& m_link;
    int m_wakeUp;
    std::atomic<std::int64_t> m_lookingSince{notLooking}; // set by the main thread, read by the other one
    std::mutex m_using;                                   // held while the session is used
    Session* m_session = nullptr;
    std::mutex m_lock; // of the orders and the end
    std::condition_variable m_come;
    std::deque<Message> m_orders;
    bool m_isEnd = false;
    // The listening thread's alone.
    const std::int64_t m_sinceEpoch = clocksDifference();
    PointsRecord m_points;
    std::vector<InkPoint> m_waiting;
    std::thread m_thread; // last: it uses all of this
};

// What was asked for, or why there is none.
struct Result
{
    Fault fault = Fault::None;
    QByteArray content;
};

Result failure(Fault fault, const QString& reason = {})
{
    return {fault, reason.toUtf8()};
}

template <typename Record>
QByteArray bytesOf(const Record& record)
{
    return {reinterpret_cast<const char*>(&record), static_cast<int>(sizeof record)};
}

// Does what the service orders, on the main thread.
class Worker
{
public:
    Worker(Link& link, Listener& listener, Driver driver)
        : m_link(link), m_listener(listener), m_driver(std::move(driver))
    {
    }
    ~Worker()
    {
        m_listener.setSession(nullptr);
        m_session.reset();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void run()
    {
        constexpr std::chrono::milliseconds lookInterval(500);
        while (true) {
            const Listener::Next next = m_listener.next(lookInterval);
            if (next.isEnd)
                return;
            if (next.message)
                answer(obey(*next.message));
            else
                lookAtPad();
        }
    }

private:
    void answer(const Result& result)
    {
        for (int from = 0; from < result.content.size(); from += static_cast<int>(longestNews)) {
            const QByteArray part = result.content.mid(from, static_cast<int>(longestNews));
            m_link.send(News::Part, part.constData(), static_cast<std::size_t>(part.size()), nullptr, 0);
        }
        AnswerRecord record;
        record.clears = m_clears;
        record.fault = result.fault;
        m_link.send(News::Answer, record);
    }

    Result obey(const Message& message)
    {
        if (message.kind == Order::Open)
            return open(message.as<OpenRecord>());
        if (!m_session)
            return failure(Fault::Failed, QStringLiteral("there is no open pad"));
        switch (message.kind) {
        case Order::Clear:
            m_session->clear(); // canvas and points are cleared whatever the pad says
            ++m_clears;
            return {};
        case Order::Pen:
            return setPen(message.as<PenRecord>());
        case Order::Image:
            return image(message.as<PictureRecord>());
        case Order::Svg:
            return svg(message.as<PictureRecord>());
        case Order::Ink:
            return ink();
        case Order::Device:
            return device();
        case Order::Fingerprint:
            return fingerprint(message.as<PictureRecord>());
        case Order::Open:
        case Order::Alive:
            break;
        }
        endProcess("an unknown order");
    }

    Result open(const OpenRecord& record)
    {
        const auto pads = AllPads();
        const auto found = std::find_if(pads.begin(), pads.end(), [&](const CPadModel* pad) {
            return pad->m_nDeviceType == record.deviceType;
        });
        if (m_session || found == pads.end())
            return failure(Fault::Failed, QStringLiteral("no such pad can be opened"));
        const CPadModel& model = **found;
        try {
            m_session =
                std::make_unique<Session>(model, m_driver, nullptr, QSize(record.width, record.height));
        } catch (const Failure& fault) {
            return failure(Fault::NotOpened, fault.reason);
        }
        if (model.m_bHasFingerprint)
            m_session->placeFingerprint(fingerprintSize);
        OpenedRecord opened;
        opened.areaLeft = model.m_nPadOriginX;
        opened.areaTop = model.m_nPadOriginY;
        opened.areaWidth = model.m_nAreaWidth;
        opened.areaHeight = model.m_nAreaHeight;
        opened.pressureLevels = m_session->number(4, 0);
        opened.hasFingerprint = model.m_bHasFingerprint ? 1 : 0;
        m_listener.setSession(m_session.get());
        return {Fault::None, bytesOf(opened)};
    }

    Result setPen(const PenRecord& pen)
    {
        if (pen.width >= 0 && !m_session->setPenWidth(pen.width))
            return failure(Fault::Failed, QStringLiteral("the width of the pen was refused"));
        if (pen.color >= 0 && !m_session->setPenColor(QColor(static_cast<QRgb>(pen.color))))
            return failure(Fault::Failed, QStringLiteral("the colour of the pen was refused"));
        // The choice holds even where the pad does not take it.
        if (pen.byPressure >= 0)
            m_session->setPenStyle(pen.byPressure != 0);
        return {};
    }

    Result saved(int type, const char* suffix, const PictureRecord& picture)
    {
        if (m_session->points() == 0)
            return failure(Fault::NoInk);
        PrivateFolder folder;
        const std::string path = folder.file(std::string("picture.") + suffix);
        if (!m_session->save(type, path, picture.dotsPerInch, QSize(picture.marginX, picture.marginY)))
            return m_session->points() == 0 || isClipped(picture) ? failure(Fault::NoInk)
                                                                  : failure(Fault::Failed, tooLarge());
        QFile file(QFile::decodeName(path.c_str()));
        if (!file.open(QIODevice::ReadOnly))
            return failure(Fault::Failed, tooLarge());
        const QByteArray content = file.readAll();
        if (file.error() != QFileDevice::NoError || content.isEmpty() ||
            (type == EBITI_PDF && !content.trimmed().endsWith("%%EOF")))
            return failure(Fault::Failed, tooLarge());
        return {Fault::None, content};
    }

    static bool isClipped(const PictureRecord& picture)
    {
        return picture.marginX != 0 || picture.marginY != 0;
    }
    static QString tooLarge()
    {
        return QStringLiteral("the picture cannot be made: is the disk full, or the picture too large?");
    }

    Result image(const PictureRecord& picture)
    {
        switch (picture.format) {
        case Format::Png: // the suffix decides about the format; only this type makes white transparent
            return saved(picture.isTransparent != 0 ? EBITI_PNG : EBITI_BITMAP, "png", picture);
        case Format::Jpeg:
            return saved(EBITI_JPG, "jpg", picture);
        case Format::Bmp:
            return saved(EBITI_BITMAP, "bmp", picture);
        case Format::Pdf:
            return saved(EBITI_PDF, "pdf", picture);
        }
        endProcess("an unknown format");
    }

    Result svg(const PictureRecord& picture) { return saved(EBITI_SVG, "svg", picture); }

    Result ink()
    {
        const QByteArray text = m_session->ink();
        return text.isEmpty() ? failure(Fault::NoInk) : Result{Fault::None, text};
    }

    // Three texts, each with a zero byte behind it; empty where the pad does not tell.
    Result device()
    {
        QByteArray texts;
        for (const QString& text : {m_session->padId(), m_session->penId(), m_session->version()})
            texts += text.left(256).remove(QChar(0)).toUtf8() + '\0';
        return {Fault::None, texts};
    }

    Result fingerprint(const PictureRecord& picture)
    {
        const QByteArray bitmap = QByteArray::fromBase64(m_session->fingerprint(EBITI_BITMAP));
        QImage image = QImage::fromData(bitmap, "BMP").convertToFormat(QImage::Format_Grayscale8);
        QImage white = image;
        white.fill(Qt::white);
        if (image.isNull() || image == white)
            return failure(Fault::NoFingerprint);
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const char* const format = picture.format == Format::Png    ? "PNG"
                                   : picture.format == Format::Jpeg ? "JPG"
                                                                    : "BMP";
        return image.save(&buffer, format) ? Result{Fault::None, buffer.data()}
                                           : failure(Fault::Failed, tooLarge());
    }

    // The library does not notice when a pad goes away.
    void lookAtPad()
    {
        constexpr int patience = 4; // looks in a row without an answer
        if (!m_session)
            return;
        m_listener.setLooking(true);
        m_missed = m_session->isAnswering() ? 0 : m_missed + 1;
        m_listener.setLooking(false);
        if (m_missed == patience)
            m_link.send(News::Lost);
    }

    Link& m_link;
    Listener& m_listener;
    const Driver m_driver;
    std::unique_ptr<Session> m_session;
    std::uint64_t m_clears = 0;
    int m_missed = 0;
};

} // namespace

int main(int argc, char** argv)
{
    // A core file would hold the signature.
    const rlimit none = {};
    setrlimit(RLIMIT_CORE, &none);
    for (const int signal : {SIGINT, SIGHUP, SIGTERM}) // the service ends and tells
        std::signal(signal, SIG_IGN);
    std::signal(SIGALRM, [](int) { _exit(1); });
    setenv("SCRIBERA_WORKERS", "wait", 1);
    QCoreApplication application(argc, argv);
    if (argc != 2)
        endProcess("scribera-bridge starts this program");
    Link link;
    Listener listener(link);
    Worker(link, listener, driverNamed(QFile::decodeName(argv[1]))).run();
    return 0;
}

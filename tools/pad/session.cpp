#include "session.h"

#include "failures.h"
#include "interrupts.h"
#include "text.h"

#include <scriberasdk_ext.h>

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <sys/eventfd.h>
#include <unistd.h>

// The families differ in their prefix alone, so that one table serves all models.
struct PadFamily
{
    int deviceType;
    decltype(&SCK210_InitialDevice) initialDevice;
    decltype(&SCK210_UnInitialDevice) unInitialDevice;
    decltype(&SCK210_Clear) clear;
    decltype(&SCK210_getDeviceInfo) getDeviceInfo;
    decltype(&SCK210_GetHWPadID) getPadId;
    decltype(&SCK210_GetHWVersionID) getVersion;
    decltype(&SCK210_SetPenWidth) setPenWidth;
    decltype(&SCK210_SetPenColor) setPenColor;
    decltype(&SCK210_SetPenStyle) setPenStyle;
    decltype(&SCK210_SignatureStatusCallback) setStatusCallback;
    decltype(&SCK210_RealTimeSignatureDataCallback) setRealTimeCallback;
    decltype(&SCK210_GetDeviceConfirmOrCancelKeyStatus) takeTouchedKey;
    decltype(&SCK210_GetTotalPacketsNumber) countPoints;
    decltype(&SCK210_getPackets) getPoint;
    decltype(&SCK210_SetSaveCenterImageClip) setClip;
    decltype(&SCK210_SaveDrawingImage) save;
    decltype(&SCK210_PacketsBase64Encode) encode;
    decltype(&SCK210_PacketsBase64EncodeFree) freeEncoded;
};

#define PAD_FAMILY(model)                                                                                    \
    {SC##model##_DEVICE,                                                                                     \
     SC##model##_InitialDevice,                                                                              \
     SC##model##_UnInitialDevice,                                                                            \
     SC##model##_Clear,                                                                                      \
     SC##model##_getDeviceInfo,                                                                              \
     SC##model##_GetHWPadID,                                                                                 \
     SC##model##_GetHWVersionID,                                                                             \
     SC##model##_SetPenWidth,                                                                                \
     SC##model##_SetPenColor,                                                                                \
     SC##model##_SetPenStyle,                                                                                \
     SC##model##_SignatureStatusCallback,                                                                    \
     SC##model##_RealTimeSignatureDataCallback,                                                              \
     SC##model##_GetDeviceConfirmOrCancelKeyStatus,                                                          \
     SC##model##_GetTotalPacketsNumber,                                                                      \
     SC##model##_getPackets,                                                                                 \
     SC##model##_SetSaveCenterImageClip,                                                                     \
     SC##model##_SaveDrawingImage,                                                                           \
     SC##model##_PacketsBase64Encode,                                                                        \
     SC##model##_PacketsBase64EncodeFree},

namespace {

const PadFamily families[] = {SCRIBERA_FAMILIES(PAD_FAMILY)};

const PadFamily& familyOf(const CPadModel& model)
{
    return *std::find_if(std::begin(families), std::end(families),
                         [&](const PadFamily& family) { return family.deviceType == model.m_nDeviceType; });
}

// The pads that have a pen id.
using GetPenId = decltype(&SCK210_GetHWPenID);
struct PenIdOf
{
    int deviceType;
    GetPenId get;
};
#define PEN_ID(model) {SC##model##_DEVICE, SC##model##_GetHWPenID},
const PenIdOf penIds[] = {SCRIBERA_FAMILIES_WITH_SCREEN(PEN_ID)};

// The pads that have a fingerprint reader.
struct ReaderOf
{
    int deviceType;
    decltype(&SCK421B_SetDisplayedFPImageAt) place;
    decltype(&SCK421B_GetFPImageBase64Data) encode;
    decltype(&SCK421B_FreeFPImageBase64Data) freeEncoded;
};
#define READER(model)                                                                                        \
    {SC##model##_DEVICE, SC##model##_SetDisplayedFPImageAt, SC##model##_GetFPImageBase64Data,                \
     SC##model##_FreeFPImageBase64Data},
const ReaderOf readers[] = {SCRIBERA_FAMILIES_WITH_FINGERPRINT(READER)};

const ReaderOf* readerOf(int deviceType)
{
    const auto* const reader = std::find_if(std::begin(readers), std::end(readers), [&](const ReaderOf& row) {
        return row.deviceType == deviceType;
    });
    return reader == std::end(readers) ? nullptr : reader;
}

// The callbacks bring no argument of the host's. Changes only while no callback can come.
Session* openSession = nullptr;

QString textFrom(int (*get)(int, char*, int), int deviceType)
{
    std::array<char, 256> text{};
    return get(deviceType, text.data(), static_cast<int>(text.size()) - 1) == ARI_SUCCESS
               ? QString::fromUtf8(text.data())
               : QString();
}

} // namespace

Session::Session(const CPadModel& model, const Driver& driver, QWidget* parent, const QSize& canvas,
                 std::function<void()> onConfirm)
    : m_model(model), m_family(familyOf(model)), m_onConfirm(std::move(onConfirm)),
      m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    const int type = m_family.deviceType;
    if (m_wakeUp < 0)
        throw Failure{Text::tr("no descriptor is left")};
    {
        const DriverFolder folder(driver);
        if (!m_family.initialDevice(type, parent, 0, 0, canvas.width(), canvas.height())) {
            close(m_wakeUp);
            throwIfInterrupted();
            throw Failure{whyNotOpened(driver, model)};
        }
    }
    openSession = this;
    m_family.setRealTimeCallback(type, &Session::onPoint);
    m_family.setStatusCallback(type, &Session::onKey);
    const std::lock_guard guard(m_lock);
    putPoints(); // a pen may have been faster
}

Session::~Session()
{
    m_family.unInitialDevice(m_family.deviceType); // waits for a callback that is running
    openSession = nullptr;
    close(m_wakeUp);
}

// On the library's threads.
void Session::onKey(int status) noexcept
{
    Session& session = *openSession;
    if (status == 1 && session.m_onConfirm)
        session.m_onConfirm();
    const std::lock_guard guard(session.m_lock);
    session.lookAtKeys();
    PadEvent event;
    event.what = PadEvent::What::KeyUsed;
    event.isConfirm = status == 1;
    session.put(event);
}

void Session::onPoint(unsigned long, long) noexcept
{
    const std::lock_guard guard(openSession->m_lock);
    openSession->lookAtKeys(); // one that ended the stroke before comes before this point
    openSession->putPoints();
}

// What comes with the callback is scaled, and a pen may be faster than the callback was set: all points that
// are new are read.
void Session::putPoints()
{
    if (m_isClearing)
        return; // clear() looks for those that came behind it
    const int count = m_family.countPoints(m_family.deviceType);
    if (count <= m_pointsTaken)
        m_pointsTaken = 0; // cleared meanwhile
    for (; m_pointsTaken < count; ++m_pointsTaken) {
        _PACKETS point = {};
        point.nIndex = m_pointsTaken;
        if (m_family.getPoint(m_family.deviceType, &point) != ARI_SUCCESS)
            return;
        PadEvent event;
        event.what = point.ucStatus == 1 ? PadEvent::What::Up
                     : m_isPenDown       ? PadEvent::What::Move
                                         : PadEvent::What::Down;
        event.x = point.usX;
        event.y = point.sY;
        event.pressure = point.sPressure;
        m_isPenDown = point.ucStatus != 1;
        put(event);
    }
}

void Session::lookAtKeys()
{
    const int key = m_family.takeTouchedKey(m_family.deviceType);
    if (key < 0)
        return;
    PadEvent event;
    event.what = PadEvent::What::KeyTouched;
    event.isConfirm = key == 1;
    m_isPenDown = false;
    put(event);
}

std::int64_t Session::now()
{
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

void Session::put(const PadEvent& event)
{
    m_events.push_back(event);
    m_events.back().nanoseconds = now();
    m_events.back().clears = m_clears;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(m_wakeUp, &one, sizeof one);
}

std::vector<PadEvent> Session::takeEvents()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(m_wakeUp, &count, sizeof count);
    std::vector<PadEvent> taken;
    const std::lock_guard guard(m_lock);
    lookAtKeys();
    taken.swap(m_events);
    return taken;
}

QString Session::padId() const
{
    return textFrom(m_family.getPadId, m_family.deviceType);
}

QString Session::penId() const
{
    for (const PenIdOf& pad : penIds)
        if (pad.deviceType == m_family.deviceType)
            return textFrom(pad.get, m_family.deviceType);
    return {};
}

QString Session::version() const
{
    return textFrom(m_family.getVersion, m_family.deviceType);
}

int Session::number(int index, int which) const
{
    std::array<std::int32_t, 2> numbers{};
    m_family.getDeviceInfo(m_family.deviceType, index, numbers.data());
    return numbers.at(static_cast<std::size_t>(which));
}

QString Session::text(int index) const
{
    std::array<char, 32> bytes{};
    m_family.getDeviceInfo(m_family.deviceType, index, bytes.data());
    return QString::fromLatin1(bytes.data());
}

bool Session::isAnswering()
{
    std::array<char, 256> id{};
    const bool answers =
        m_family.getPadId(m_family.deviceType, id.data(), static_cast<int>(id.size()) - 1) == ARI_SUCCESS;
    m_hasAnswered = m_hasAnswered || answers;
    return answers || !m_hasAnswered;
}

int Session::points() const
{
    return std::max(0, m_family.countPoints(m_family.deviceType));
}

bool Session::setPen(int width, const QColor& color) const
{
    return setPenWidth(width) && setPenColor(color);
}

bool Session::setPenWidth(int width) const
{
    return m_family.setPenWidth(m_family.deviceType, width) == ARI_SUCCESS;
}

bool Session::setPenColor(const QColor& color) const
{
    return m_family.setPenColor(m_family.deviceType, color.red(), color.green(), color.blue()) == ARI_SUCCESS;
}

bool Session::setPenStyle(bool byPressure) const
{
    return m_family.setPenStyle(m_family.deviceType, byPressure) == ARI_SUCCESS;
}

// Not under the lock: the driver may wait for a callback.
bool Session::clear()
{
    {
        const std::lock_guard guard(m_lock);
        m_isClearing = true;
    }
    const bool isDone = m_family.clear(m_family.deviceType) == ARI_SUCCESS;
    const std::lock_guard guard(m_lock);
    m_isClearing = false;
    m_pointsTaken = 0;
    ++m_clears;
    putPoints();
    return isDone;
}

bool Session::save(int type, const std::string& path, int dotsPerInch, const QSize& clipMargins) const
{
    std::wstring widePath = QFile::decodeName(path.c_str()).toStdWString();
    return m_family.setClip(m_family.deviceType, !clipMargins.isNull(), clipMargins.width(),
                            clipMargins.height()) == ARI_SUCCESS &&
           m_family.save(m_family.deviceType, type, widePath.data(), dotsPerInch == 150 ? 0 : 1) ==
               ARI_SUCCESS;
}

QByteArray Session::ink() const
{
    char* const text = m_family.encode(m_family.deviceType, EBITI_INK);
    QByteArray copy(text);
    m_family.freeEncoded(m_family.deviceType, text);
    return copy;
}

bool Session::placeFingerprint(const QSize& size) const
{
    const ReaderOf* const reader = readerOf(m_family.deviceType);
    return reader && reader->place(reader->deviceType, nullptr, size.width(), size.height(), 0, 0,
                                   size.width(), size.height()) == ARI_SUCCESS;
}

QByteArray Session::fingerprint(int type) const
{
    const ReaderOf* const reader = readerOf(m_family.deviceType);
    if (!reader || m_family.setClip(m_family.deviceType, false, 0, 0) != ARI_SUCCESS)
        return {};
    char* const text = reader->encode(reader->deviceType, type, true);
    QByteArray copy(text);
    reader->freeEncoded(reader->deviceType, text);
    return copy;
}

QString libraryVersion()
{
    const int version = SCRX_Version();
    return QStringLiteral("%1.%2.%3").arg(version / 10000).arg(version / 100 % 100).arg(version % 100);
}

QString libraryFile()
{
    Dl_info found = {};
    return dladdr(dlsym(RTLD_DEFAULT, "SCK210_InitialDevice"), &found) != 0 && found.dli_fname
               ? QFile::decodeName(found.dli_fname)
               : QString();
}

QString whyNotOpened(const Driver& driver, const CPadModel& model)
{
    QString reason;
    if (const QString fault = faultOf(driver, &model); !fault.isEmpty()) {
        reason = driver.path + QLatin1Char(' ') + fault;
    } else {
        std::array<char, 1024> sentence{};
        SCRX_LastStartFailure(sentence.data(), static_cast<int>(sentence.size()));
        reason = QString::fromLocal8Bit(sentence.data());
    }
    return Text::tr("no pad %1: %2").arg(QLatin1String(model.m_pszName), reason);
}

#include "padsession.h"

#include <scriberasdk_ext.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QWidget>

#include <algorithm>
#include <array>
#include <iterator>

// The families differ in their prefix alone, so that one table serves all models.
struct PadFamily
{
    const char* model;
    int deviceType;
    decltype(&SCK210_InitialDevice) initialDevice;
    decltype(&SCK210_UnInitialDevice) unInitialDevice;
    decltype(&SCK210_Clear) clear;
    decltype(&SCK210_getDeviceInfo) getDeviceInfo;
    decltype(&SCK210_GetHWPadID) getHWPadID;
    decltype(&SCK210_SetPenStyle) setPenStyle;
    decltype(&SCK210_SetPenWidth) setPenWidth;
    decltype(&SCK210_SetPenColor) setPenColor;
    decltype(&SCK210_SignatureStatusCallback) setStatusCallback;
    decltype(&SCK210_RealTimeSignatureDataCallback) setRealTimeCallback;
    decltype(&SCK210_GetTotalPacketsNumber) countPoints;
    decltype(&SCK210_SetSaveCenterImageClip) setClip;
    decltype(&SCK210_SaveDrawingImage) save;
    decltype(&SCK210_PacketsBase64Encode) encode;
    decltype(&SCK210_PacketsBase64EncodeFree) freeEncoded;
};

#define PAD_FAMILY(model)                                                                                    \
    {#model,                                                                                                 \
     SC##model##_DEVICE,                                                                                     \
     SC##model##_InitialDevice,                                                                              \
     SC##model##_UnInitialDevice,                                                                            \
     SC##model##_Clear,                                                                                      \
     SC##model##_getDeviceInfo,                                                                              \
     SC##model##_GetHWPadID,                                                                                 \
     SC##model##_SetPenStyle,                                                                                \
     SC##model##_SetPenWidth,                                                                                \
     SC##model##_SetPenColor,                                                                                \
     SC##model##_SignatureStatusCallback,                                                                    \
     SC##model##_RealTimeSignatureDataCallback,                                                              \
     SC##model##_GetTotalPacketsNumber,                                                                      \
     SC##model##_SetSaveCenterImageClip,                                                                     \
     SC##model##_SaveDrawingImage,                                                                           \
     SC##model##_PacketsBase64Encode,                                                                        \
     SC##model##_PacketsBase64EncodeFree},

namespace {

const PadFamily families[] = {SCRIBERA_FAMILIES(PAD_FAMILY)};

constexpr int clipMargin = 12; // pixels around the ink
constexpr ExportSettings wholePicture{EBITI_BITMAP, 300, false};
constexpr int watchInterval = 500; // ms

// The callbacks bring no argument of the host's. Changes only while no callback can come.
PadSession* openSession = nullptr;

} // namespace

PadSession::PadSession()
{
    SCRX_SetWorkers(SCRX_WORKERS_WAIT); // a person takes a while, and nothing has to poll meanwhile
    m_watch.setInterval(watchInterval);
    connect(&m_watch, &QTimer::timeout, this, &PadSession::watch);
}

QStringList PadSession::models()
{
    QStringList names;
    for (const PadFamily& family : families)
        names += QString::fromLatin1(family.model);
    return names;
}

bool PadSession::hasFingerprintReader(const QString& model)
{
    return model == QLatin1String("K421B");
}

bool PadSession::driverIsThere()
{
    return QFile::exists(QStringLiteral("./libscriberadrv.so"));
}

QString PadSession::whyNotOpen()
{
    std::array<char, 1024> sentence{};
    SCRX_LastStartFailure(sentence.data(), int(sentence.size()));
    return QString::fromUtf8(sentence.data());
}

bool PadSession::open(const QString& model, QWidget* parent, const QSize& size)
{
    close();
    const auto* const family = std::find_if(std::begin(families), std::end(families), [&](const auto& row) {
        return model == QLatin1String(row.model);
    });
    if (family == std::end(families) || openSession ||
        !family->initialDevice(family->deviceType, parent, 0, 0, size.width(), size.height()))
        return false;
    m_family = family;
    openSession = this;
    m_highestPressure = std::max(1, information(4, 0));
    if (family->setStatusCallback(family->deviceType, &PadSession::onKey) != ARI_SUCCESS ||
        !family->setRealTimeCallback(family->deviceType, &PadSession::onPoint)) {
        close();
        return false;
    }
    m_answered = false;
    watch();
    m_watch.start();
    return true;
}

void PadSession::close()
{
    if (!m_family)
        return;
    m_watch.stop();
    m_family->unInitialDevice(m_family->deviceType); // waits for a callback that is running
    openSession = nullptr;
    m_family = nullptr;
    m_news.clear(); // the library's threads are gone
}

// On the library's threads. While onKey() runs no pen comes down: here, and only here, what is there is what
// the key confirms or cancels.
void PadSession::onKey(int status) noexcept
{
    News key;
    key.key = status;
    if (status == 1) {
        key.signature = std::make_shared<const Signature>(openSession->take());
    } else {
        // The first clear after the cancel key leaves the pad's own screen to the pad.
        openSession->clear();
        openSession->clear();
    }
    openSession->post(key);
}

void PadSession::onPoint(unsigned long position, long pen) noexcept
{
    News point;
    point.place = {(position & 0xFFFF) / 65535.0, (position >> 16) / 65535.0};
    point.pressure = std::min(1.0, double(pen & 0xFFFF) / openSession->m_highestPressure);
    point.onPad = pen >> 16 == 1;
    openSession->post(point);
}

void PadSession::post(const News& news)
{
    const std::lock_guard lock(m_newsMutex);
    m_news.push_back(news);
    if (m_news.size() == 1) // otherwise the GUI thread is called already
        QMetaObject::invokeMethod(this, "takeNews", Qt::QueuedConnection);
}

void PadSession::takeNews()
{
    std::vector<News> taken;
    {
        const std::lock_guard lock(m_newsMutex);
        taken.swap(m_news);
    }
    for (const News& news : taken) {
        if (!m_family) // closed by a receiver: the rest is of no interest any more
            return;
        if (news.key < 0)
            emit pointStored(news.place, news.pressure, news.onPad);
        else if (news.key == 1)
            emit confirmed(*news.signature);
        else
            emit cancelled();
    }
}

// The library does not notice that the pad is gone, but the driver does. One that never gave an id cannot be
// asked.
void PadSession::watch()
{
    std::array<char, 64> id{};
    const bool answers =
        m_family->getHWPadID(m_family->deviceType, id.data(), int(id.size()) - 1) == ARI_SUCCESS;
    if (m_answered && !answers)
        emit wentAway();
    m_answered = m_answered || answers;
}

// Answers of the kinds that are one or two 32-bit numbers.
int PadSession::information(int index, int number) const
{
    std::array<std::int32_t, 2> answer{};
    if (!m_family || m_family->getDeviceInfo(m_family->deviceType, index, answer.data()) != ARI_SUCCESS)
        return 0;
    return answer.at(static_cast<std::size_t>(number));
}

QWidget* PadSession::canvas() const
{
    return m_family && !g_bUseSignObj ? static_cast<QWidget*>(g_pSignWidget) : nullptr;
}

QSize PadSession::writingArea() const
{
    return {information(2, 1), information(3, 1)};
}

bool PadSession::apply(const PenSettings& pen)
{
    if (!m_family)
        return false;
    const int type = m_family->deviceType;
    const bool width = m_family->setPenWidth(type, pen.width) == ARI_SUCCESS;
    const bool color =
        m_family->setPenColor(type, pen.color.red(), pen.color.green(), pen.color.blue()) == ARI_SUCCESS;
    return m_family->setPenStyle(type, pen.pressure) == ARI_SUCCESS && width && color;
}

bool PadSession::clear()
{
    return m_family && m_family->clear(m_family->deviceType) == ARI_SUCCESS;
}

int PadSession::points() const
{
    return m_family ? std::max(0, m_family->countPoints(m_family->deviceType)) : 0;
}

QByteArray PadSession::inkText() const
{
    if (!m_family)
        return {};
    char* const text = m_family->encode(m_family->deviceType, EBITI_INK);
    QByteArray copy(text);
    m_family->freeEncoded(m_family->deviceType, text);
    return copy;
}

// Empty when the file cannot be made.
QByteArray PadSession::exported(const ExportSettings& settings, const QString& folder) const
{
    QFile file(folder + QStringLiteral("/signature.") + suffix(settings.imageType));
    std::wstring path = file.fileName().toStdWString();
    file.remove(); // an older file must not pass for this one
    // The clipping is said before each export, because Clear switches it off.
    const bool saved =
        m_family->setClip(m_family->deviceType, settings.clip, clipMargin, clipMargin) == ARI_SUCCESS &&
        m_family->save(m_family->deviceType, settings.imageType, path.data(), settings.dpi == 150 ? 0 : 1) ==
            ARI_SUCCESS;
    return saved && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Signature PadSession::take() const
{
    const std::lock_guard lock(m_takeMutex);
    Signature taken;
    const QTemporaryDir folder; // for this user alone, and gone at the end
    taken.points = points();
    if (taken.points == 0 || !folder.isValid())
        return {};
    for (const int type : Signature::imageTypes)
        for (const int dpi : Signature::resolutions)
            for (const bool clip : {false, true})
                taken.files[{type, dpi, clip}] = exported({type, dpi, clip}, folder.path());
    taken.canvas = QImage::fromData(taken.file(wholePicture));
    taken.ink = inkText();
    taken.fingerprint = fingerprintPng();
    const bool stoodStill =
        points() == taken.points && exported(wholePicture, folder.path()) == taken.file(wholePicture);
    return stoodStill ? taken : Signature();
}

bool PadSession::placeFingerprint(QWidget* parent, const QRect& place)
{
    return m_family && m_family->deviceType == SCK421B_DEVICE &&
           SCK421B_SetDisplayedFPImageAt(SCK421B_DEVICE, parent, 0, 0, place.x(), place.y(), place.width(),
                                         place.height()) == ARI_SUCCESS;
}

QByteArray PadSession::fingerprintPng() const
{
    if (!m_family || m_family->deviceType != SCK421B_DEVICE)
        return {};
    SCK421B_SetSaveCenterImageClip(SCK421B_DEVICE, false, 0, 0); // it would replace the rectangle
    char* const text = SCK421B_GetFPImageBase64Data(SCK421B_DEVICE, EBITI_PNG, true);
    QByteArray png = QByteArray::fromBase64(QByteArray(text));
    SCK421B_FreeFPImageBase64Data(SCK421B_DEVICE, text);
    // No call tells whether a finger was read; ridges come in pure red.
    const QImage image = QImage::fromData(png).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        if (std::any_of(row, row + image.width(), [](QRgb pixel) { return pixel == qRgb(255, 0, 0); }))
            return png;
    }
    return {};
}

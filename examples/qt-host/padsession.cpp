#include "padsession.h"

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
    PadFamily                                                                                                \
    {                                                                                                        \
#model, SC##model##_DEVICE, SC##model##_InitialDevice, SC##model##_UnInitialDevice,                  \
            SC##model##_Clear, SC##model##_getDeviceInfo, SC##model##_SetPenStyle, SC##model##_SetPenWidth,  \
            SC##model##_SetPenColor, SC##model##_SignatureStatusCallback,                                    \
            SC##model##_RealTimeSignatureDataCallback, SC##model##_GetTotalPacketsNumber,                    \
            SC##model##_SetSaveCenterImageClip, SC##model##_SaveDrawingImage,                                \
            SC##model##_PacketsBase64Encode, SC##model##_PacketsBase64EncodeFree                             \
    }

namespace {

const PadFamily families[] = {PAD_FAMILY(K210), PAD_FAMILY(K420), PAD_FAMILY(K421B), PAD_FAMILY(KM730),
                              PAD_FAMILY(T580)};

constexpr int imageTypes[] = {EBITI_BITMAP, EBITI_JPG, EBITI_PNG, EBITI_PDF, EBITI_SVG};

// The callbacks bring no argument of the host's. Changes only while no callback can come.
PadSession* openSession = nullptr;

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

QStringList PadSession::models()
{
    QStringList names;
    for (const PadFamily& family : families)
        names += QString::fromLatin1(family.model);
    return names;
}

QString PadSession::suffix(int imageType)
{
    switch (imageType) {
    case EBITI_BITMAP:
        return QStringLiteral("bmp");
    case EBITI_JPG:
        return QStringLiteral("jpg");
    case EBITI_PDF:
        return QStringLiteral("pdf");
    case EBITI_SVG:
        return QStringLiteral("svg");
    default:
        return QStringLiteral("png");
    }
}

bool PadSession::driverIsThere()
{
    return QFile::exists(QStringLiteral("./libscriberadrv.so"));
}

bool PadSession::open(const QString& model, QWidget* parent, const QRect& place)
{
    close();
    const auto* const family = std::find_if(std::begin(families), std::end(families), [&](const auto& row) {
        return model == QLatin1String(row.model);
    });
    if (family == std::end(families) || openSession ||
        !family->initialDevice(family->deviceType, parent, place.x(), place.y(), place.width(),
                               place.height()))
        return false;
    m_family = family;
    openSession = this;
    m_highestPressure = std::max(1, information(4, 0));
    if (family->setStatusCallback(family->deviceType, &PadSession::onKey) == ARI_SUCCESS &&
        family->setRealTimeCallback(family->deviceType, &PadSession::onPoint))
        return true;
    close();
    return false;
}

void PadSession::close()
{
    if (!m_family)
        return;
    m_family->unInitialDevice(m_family->deviceType); // waits for a callback that is running
    openSession = nullptr;
    m_family = nullptr;
    m_news.clear(); // the library's threads are gone
}

// On the library's threads: take a note and return.
void PadSession::onKey(int status) noexcept
{
    openSession->post({status});
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
        if (news.key < 0)
            emit pointStored(news.place, news.pressure, news.onPad);
        else if (news.key == 1)
            emit confirmed();
        else
            emit cancelled();
    }
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

bool PadSession::save(const ExportSettings& settings, const QString& path) const
{
    // Said again before each export, because Clear switches clipping off.
    if (!m_family || m_family->setClip(m_family->deviceType, settings.clip, settings.margins.width(),
                                       settings.margins.height()) != ARI_SUCCESS)
        return false;
    QFile::remove(path); // an older file must not pass for a saved one
    std::wstring widePath = path.toStdWString();
    return m_family->save(m_family->deviceType, settings.imageType, widePath.data(),
                          settings.dpi == 150 ? 0 : 1) == ARI_SUCCESS &&
           QFile(path).size() > 0; // PDF and SVG do not report all that can go wrong
}

QByteArray PadSession::base64(const ExportSettings& settings) const
{
    if (settings.imageType == EBITI_PDF || settings.imageType == EBITI_SVG) {
        // PDF has no Base64 function, and the one for SVG leaves the signature in a file under /tmp.
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("signature.") + suffix(settings.imageType));
        return folder.isValid() && save(settings, path) ? readFile(path).toBase64() : QByteArray();
    }
    if (!m_family || m_family->setClip(m_family->deviceType, settings.clip, settings.margins.width(),
                                       settings.margins.height()) != ARI_SUCCESS)
        return {};
    char* const text = m_family->encode(m_family->deviceType, settings.imageType);
    QByteArray copy(text);
    m_family->freeEncoded(m_family->deviceType, text);
    return copy;
}

QByteArray PadSession::inkText() const
{
    ExportSettings settings;
    settings.imageType = EBITI_INK;
    return base64(settings);
}

QStringList PadSession::saveEverything(const QString& folder, ExportSettings settings) const
{
    const QDir to(folder);
    QStringList failed;
    for (const int type : imageTypes) {
        settings.imageType = type;
        const QString path = to.filePath(QStringLiteral("signature.") + suffix(type));
        if (!save(settings, path))
            failed += path;
    }
    const auto write = [&](const char* name, const QByteArray& content) {
        if (content.isEmpty() || !writeFile(to.filePath(QLatin1String(name)), content))
            failed += to.filePath(QLatin1String(name));
    };
    write("signature.ink", inkText());
    if (const QByteArray fingerprint = fingerprintPng(); !fingerprint.isEmpty())
        write("fingerprint.png", fingerprint);
    return failed;
}

bool PadSession::hasFingerprintReader() const
{
    return m_family && m_family->deviceType == SCK421B_DEVICE;
}

bool PadSession::placeFingerprint(QWidget* parent, const QRect& place)
{
    return hasFingerprintReader() &&
           SCK421B_SetDisplayedFPImageAt(SCK421B_DEVICE, parent, 0, 0, place.x(), place.y(), place.width(),
                                         place.height()) == ARI_SUCCESS;
}

QByteArray PadSession::fingerprintPng() const
{
    if (!hasFingerprintReader())
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

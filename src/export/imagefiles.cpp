#include "export/imagefiles.h"

#include "export/wholefile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

#include <fcntl.h>

namespace {

constexpr std::int64_t kMaxUnpackedBytes = std::int64_t{256} << 20;
constexpr double kMetresPerInch = 0.0254;

int DotsPerMetre(int nDPI)
{
    return static_cast<int>(nDPI / kMetresPerInch);
}

// Formats without an alpha channel would show the colour beneath the transparency, which is black.
bool CarriesAlpha(const QByteArray& Format)
{
    static constexpr const char* kFormats[] = {"png", "webp", "tif", "tiff", "ico",
                                               "cur", "xpm",  "jp2", "icns"};
    return std::any_of(std::begin(kFormats), std::end(kFormats),
                       [&Format](const char* pszFormat) { return Format == pszFormat; });
}

const char* FormatOf(int nImageTypeID)
{
    switch (nImageTypeID) {
    case EBITI_BITMAP:
        return "BMP";
    case EBITI_JPG:
        return "JPG";
    case EBITI_PNG:
        return "PNG";
    default:
        return nullptr;
    }
}

bool Encode(const QImage& Image, const QByteArray& Format, QByteArray& Encoded)
{
    QBuffer Buffer(&Encoded);
    return !Image.isNull() && !Format.isEmpty() && Buffer.open(QIODevice::WriteOnly) &&
           Image.save(&Buffer, Format.constData());
}

// Copies the pixels with transparent ones for opaque white. False when a pixel was not opaque.
bool MaskOpaqueWhite(const QImage& Image, QImage& Masked)
{
    constexpr QRgb kOpaqueWhite = 0xFFFFFFFF;
    QRgb Common = kOpaqueWhite;
    const int nWidth = Image.width(); // asked once: the compiler cannot see that it stays
    const int nHeight = Image.height();
    for (int nY = 0; nY < nHeight; ++nY) {
        const auto* const pSource = reinterpret_cast<const QRgb*>(Image.constScanLine(nY));
        auto* const pTarget = reinterpret_cast<QRgb*>(Masked.scanLine(nY));
        for (int nX = 0; nX < nWidth; ++nX) {
            Common &= pSource[nX];
            pTarget[nX] = pSource[nX] == kOpaqueWhite ? 0 : pSource[nX];
        }
    }
    return qAlpha(Common) == 0xFF;
}

struct CPdfOutput
{
    CPdfOutput() : m_Writer(&m_File) {}

    QFile m_File;
    QPdfWriter m_Writer;
    QPainter m_Painter;
};

} // namespace

void SetResolution(QImage& Image, int nDPI)
{
    Image.setDotsPerMeterX(DotsPerMetre(nDPI));
    Image.setDotsPerMeterY(DotsPerMetre(nDPI));
}

bool IsRasterType(int nImageTypeID)
{
    return FormatOf(nImageTypeID) != nullptr;
}

bool PathFromHost(const wchar_t* pwszPath, QString& strPath)
{
    static_assert(sizeof(wchar_t) == sizeof(char32_t));
    if (!pwszPath)
        return false;
    strPath.clear();
    // Unit by unit: a conversion of the whole would drop a byte order mark at the beginning.
    for (; *pwszPath; ++pwszPath) {
        const auto nUnit = static_cast<char32_t>(*pwszPath);
        if (nUnit > QChar::LastValidCodePoint)
            return false;
        if (QChar::requiresSurrogates(nUnit))
            strPath += QChar(QChar::highSurrogate(nUnit));
        strPath +=
            QChar(QChar::requiresSurrogates(nUnit) ? QChar::lowSurrogate(nUnit) : static_cast<ushort>(nUnit));
    }
    // Half a pair would become a question mark, as any other half does.
    return strPath.isValidUtf16();
}

QImage WithTransparentWhite(const QImage& Image, bool bForPng)
{
    if (Image.format() == QImage::Format_ARGB32) {
        // What the mask below makes of opaque pixels, in one pass.
        QImage Masked(Image.size(), bForPng ? QImage::Format_ARGB32 : QImage::Format_ARGB32_Premultiplied);
        if (Masked.isNull())
            return Masked;
        if (MaskOpaqueWhite(Image, Masked)) {
            Masked.setDotsPerMeterX(Image.dotsPerMeterX());
            Masked.setDotsPerMeterY(Image.dotsPerMeterY());
            return Masked;
        }
    }
    const QImage Mask = Image.createMaskFromColor(QColor(Qt::white).rgb(), Qt::MaskOutColor);
    if (Mask.isNull())
        return {};
    QImage Result = Image;
    Result.setAlphaChannel(Mask);
    return Result;
}

bool SaveRasterFile(QImage Image, const QString& strPath, int nDPI, bool bTransparentWhite)
{
    if (Image.isNull())
        return false;
    const QByteArray Format = QFileInfo(strPath).suffix().toLower().toLatin1();
    SetResolution(Image, nDPI);
    if (bTransparentWhite && CarriesAlpha(Format))
        Image = WithTransparentWhite(Image, Format == "png");
    QByteArray Encoded;
    return Encode(Image, Format, Encoded) && WriteWholeFile(strPath, Encoded);
}

bool SavePdfFile(const QImage& Image, const QString& strPath, int nDPI)
{
    // By its descriptor: QFile takes a name with a colon for something else.
    CFileDescriptor File(
        open(QFile::encodeName(strPath).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!File.IsOpen())
        return false;
    auto pOutput = std::make_unique<CPdfOutput>();
    if (!pOutput->m_File.open(File.Number(), QIODevice::WriteOnly, QFileDevice::AutoCloseHandle))
        return false;
    File.Release();
    try {
        pOutput->m_Writer.setPageSize(QPageSize(QPageSize::A4));
        pOutput->m_Writer.setResolution(nDPI);
        pOutput->m_Writer.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Point);
        if (pOutput->m_Painter.begin(&pOutput->m_Writer)) {
            // Painted as an image: a pixmap would need a GUI application, and looks the same.
            QImage Page = Image;
            SetResolution(Page, nDPI);
            pOutput->m_Painter.drawImage(0, 0, Page);
            pOutput->m_Painter.end();
        }
    } catch (...) {
        // Out of memory. A painter that could not end its page tries again when it is destroyed, where an
        // exception ends the process: what is left of it stays in memory.
        pOutput.release()->m_File.close();
        throw;
    }
    pOutput->m_File.close();
    return true;
}

QByteArray EncodeImage(const QImage& Image, int nImageTypeID, bool bTransparentWhite)
{
    QByteArray Encoded;
    const char* const pszFormat = FormatOf(nImageTypeID);
    if (!pszFormat || Image.isNull())
        return Encoded;
    const bool bMask = nImageTypeID == EBITI_PNG && bTransparentWhite;
    if (!Encode(bMask ? WithTransparentWhite(Image, true) : Image, pszFormat, Encoded))
        Encoded.clear();
    return Encoded;
}

bool SaveEncodedImage(const QByteArray& Encoded, int nImageTypeID, const QString& strPath)
{
    const char* const pszFormat = FormatOf(nImageTypeID);
    if (!pszFormat)
        return false;
    QBuffer Buffer;
    Buffer.setData(Encoded);
    QImageReader Reader(&Buffer, pszFormat);
    // Asked of the header alone: a few bytes may claim an image of gigabytes. Without a readable header the
    // reader's format is not to be relied on.
    const QSize Size = Reader.size();
    const std::int64_t nWidth = Size.width();
    const std::int64_t nHeight =
        std::abs(std::int64_t{Size.height()}); // a bitmap from the top has a negative one
    if (nWidth <= 0 || nHeight == 0)
        return false;
    const QImage::Format eFormat = Reader.imageFormat();
    const bool bKnown = eFormat > QImage::Format_Invalid && eFormat < QImage::NImageFormats;
    const std::int64_t nDepth = bKnown ? QImage::toPixelFormat(eFormat).bitsPerPixel() : 32;
    const std::int64_t nBytesPerLine = (nWidth * nDepth + 31) / 32 * 4;
    if (nHeight > kMaxUnpackedBytes / nBytesPerLine)
        return false;
    QImage Image;
    QByteArray Rewritten;
    return Reader.read(&Image) && Encode(Image, pszFormat, Rewritten) && WriteWholeFile(strPath, Rewritten);
}

char* TextForHost(const QByteArray& Text)
{
    const auto nSize = static_cast<std::size_t>(Text.size());
    char* const pText = new char[nSize + 1];
    std::memcpy(pText, Text.constData(), nSize);
    pText[nSize] = '\0';
    return pText;
}

void FreeTextOfHost(const CLogLabel& Label, const char* pszArgument, const char* pText)
{
    SCR_LOG(Label, "<%ld>-enter, %s=%lx", pszArgument, AsHex(pText));
    if (pText) {
        delete[] pText;
        SCR_LOG(Label, "<%ld>-after call delete[] %s !", pszArgument);
    }
    SCR_LOG(Label, "<%ld>-leave !");
}

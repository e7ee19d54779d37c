#include "export/signexport.h"

#include "export/imagefiles.h"
#include "export/svgdrawing.h"
#include "ink/base64text.h"
#include "ink/inkstream.h"
#include "log/ownfile.h"
#include "model/results.h"
#include "sync/attempt.h"

#include <QByteArray>
#include <QString>

#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <utility>

namespace {

constexpr char kTemporarySvgFile[] = "/tmp/Scrsign.svg";
constexpr int kTemporarySvgDPI = 150;

// The drawing stays there until the next one. Where others have put something of theirs, it is in memory
// only.
bool LeaveInTemporaryFile(const QByteArray& Drawing)
{
    CFileDescriptor File = OpenOwnFile(kTemporarySvgFile, 0);
    return !File.IsOpen() || OverwriteFile(File, Drawing);
}

char* Base64ForHost(const CLogLabel& Label, const QByteArray& Bytes)
{
    try {
        const QByteArray Text = Bytes.toBase64();
        SCR_LOG(Label, "<%ld>-nBase64Size=%d", static_cast<int>(Text.size()));
        return TextForHost(Text);
    } catch (const std::bad_alloc&) {
        SCR_LOG(Label, "<%ld>-no memory for the text !");
        return nullptr;
    }
}

// There was no memory for the clipped picture.
char* RefusedToHost(const CLogLabel& Label)
{
    SCR_LOG(Label, "<%ld>-no memory for the clipped picture !");
    SCR_LOG(Label, "<%ld>-leave with pEncodeBase64Image=%lx !", 0UL);
    return nullptr;
}

char* EncodedForHost(const CLogLabel& Label, const QImage& Image, int nImageTypeID, bool bTransparentWhite)
{
    char* const pEncoded = TextForHost(EncodeImage(Image, nImageTypeID, bTransparentWhite).toBase64());
    SCR_LOG(Label, "<%ld>-leave with pEncodeBase64Image=%lx !", AsHex(pEncoded));
    return pEncoded;
}

char* EncodeInk(const CLogLabel& Label, const CInkSnapshot& Points)
{
    const QByteArray Stream = PackInkStream(Points);
    SCR_LOG(Label, "<%ld>-pTotalPtsData=%lx, ulInkCount=%ld, ulTotalPtsDataSize=%ld",
            AsHex(Stream.constData()), static_cast<long>(Points.Count()),
            static_cast<long>(InkStreamSize(Points.Count())));
    if (Stream.isEmpty())
        return nullptr;
    const QByteArray Text = Stream.toBase64();
    SCR_LOG(Label, "<%ld>-ulnBase64TotalPtsDataSize=%ld", static_cast<long>(Text.size()));
    return TextForHost(Text);
}

} // namespace

CClipSettings CSignExport::Clip() const
{
    const CLocker Lock(m_ClipMutex);
    return m_Clip;
}

void CSignExport::EndClipping()
{
    const CLocker Lock(m_ClipMutex);
    m_Clip.m_bClipImage = false;
}

int CSignExport::SetSaveClipImageMargin(bool bClipImage, int nClipMarginX, int nClipMarginY)
{
    const CLogLabel Label = m_Identity.Label("SetSaveClipImageMargin()");
    SCR_LOG(Label, "<%ld>-Enter, bClipImage=%d, nClipMarginX=%d, nClipMarginY=%d", bClipImage, nClipMarginX,
            nClipMarginY);
    // Without any margin there is no clipping.
    const bool bClips = bClipImage && (nClipMarginX != 0 || nClipMarginY != 0);
    {
        const CLocker Lock(m_ClipMutex);
        m_Clip = {bClips, nClipMarginX, nClipMarginY};
    }
    SCR_LOG(Label, "<%ld>-leave with m_bClipImage=%d", bClips);
    return ARI_SUCCESS;
}

QRect CSignExport::ScanInk(const CSharedImage& Canvas, const CClipSettings& Clip) const
{
    return ::CheckSignImageBoundingBox(Canvas.Image(), Canvas.InkArea(), Clip,
                                       m_Identity.Label("CheckSignImageBoundingBox()"));
}

QRect CSignExport::CheckSignImageBoundingBox() const
{
    return ScanInk(m_Canvas.Snapshot(), Clip());
}

void CSignExport::MakeAsTransparentImage(QImage& Image, const QColor& Color) const
{
    ::MakeAsTransparentImage(Image, Color, m_Identity.Label("MakeAsTransparentImage()"));
}

CSignExport::CSource CSignExport::TakeSource(const CSharedImage& Canvas) const
{
    const CClipSettings Settings = Clip();
    if (!Settings.m_bClipImage)
        return {Canvas.Image(), std::nullopt};
    const QRect rcClip = ScanInk(Canvas, Settings);
    QImage Part;
    Attempt([&] { Part = CopyOfRect(Canvas.Image(), rcClip); });
    return {Part, rcClip};
}

int CSignExport::SaveDrawingImage(int nImageTypeID, const wchar_t* pImageFilePath, int nDPI) const
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImage()");
    SCR_LOG_WIDE(Label, L"<%ld>-enter, nImageTypeID=%d, pImageFilePath=%x, nDPI=%d", nImageTypeID,
                 AsShortHex(pImageFilePath), nDPI);
    bool bSaved = false;
    QString strPath;
    if ((m_Points.Count() > 0 || m_Fingerprint.IsThere()) && PathFromHost(pImageFilePath, strPath)) {
        const CSharedImage Canvas = m_Canvas.Snapshot();
        const CSource Source = TakeSource(Canvas);
        if (Source.m_rcClip)
            SCR_LOG_WIDE(Label, L"<%ld>-after call CheckSignImageBoundingBox(), l=%d, t=%d, r=%d, b=%d",
                         Source.m_rcClip->left(), Source.m_rcClip->top(), Source.m_rcClip->right(),
                         Source.m_rcClip->bottom());
        if (Source.IsRefused()) {
            SCR_LOG_WIDE(Label, L"<%ld>-no memory for the clipped picture !");
            bSaved = nImageTypeID == EBITI_SVG; // whose result does not tell
        } else if (IsRasterType(nImageTypeID))
            bSaved = SaveRasterFile(Source.m_Image, strPath, nDPI, nImageTypeID == EBITI_PNG);
        else if (nImageTypeID == EBITI_PDF)
            bSaved = SaveDrawingImageAsPDFFile(Source.m_Image, strPath, nDPI);
        else if (nImageTypeID == EBITI_SVG)
            bSaved = SaveDrawingImageAsSVGFile(Source, nDPI, [&strPath](const FnHandOver& HandOver) {
                return WriteWholeFile(strPath, HandOver);
            });
    }
    const int nResult = bSaved ? ARI_SUCCESS : kNotDone;
    SCR_LOG_WIDE(Label, L"<%ld>-leave with nResult=%d", nResult);
    return nResult;
}

bool CSignExport::SaveDrawingImageAsPDFFile(const QImage& Image, const QString& strPath, int nDPI) const
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImageAsPDFFile()");
    SCR_LOG(Label, "<%ld>-enter, nDPI=%d", nDPI);
    const bool bRet = SavePdfFile(Image, strPath, nDPI);
    SCR_LOG(Label, "<%ld>-leave with bRet=%d", bRet);
    return bRet;
}

bool CSignExport::SaveDrawingImageAsSVGFile(const CSource& Source, int nDPI,
                                            const std::function<bool(const FnHandOver&)>& Write) const
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImageAsSVGFile()");
    SCR_LOG(Label, "<%ld>-enter, nDPI=%d", nDPI);
    const CInkSnapshot Points = m_Points.Snapshot();
    SCR_LOG(Label, "<%ld>-nInkCount=%d", static_cast<int>(Points.Count()));
    const QPoint Origin = Source.m_rcClip ? Source.m_rcClip->topLeft() : QPoint(0, 0);
    bool bWritten = false;
    try {
        const CSvgContent Content{Source.m_Image.size(), Origin,     Points,
                                  m_PenSetup.Read(),     m_Identity, m_Fingerprint.PictureForSvg()};
        // Asked more than once where the size has to be known first, and not at all by a file that cannot be
        // opened; the lines of the points' mapping are written once all the same.
        bool bLogsMapping = true;
        const FnHandOver HandOver = [&](const FnTakeBytes& Take) {
            return HandOverSvg(Content, nDPI, Take, std::exchange(bLogsMapping, false));
        };
        bWritten = Write(HandOver);
        if (bLogsMapping && m_Identity.m_Model.m_bLogsMapping && IsLogEnabled())
            HandOver([](const char*, std::size_t) { return true; });
    } catch (const std::bad_alloc&) {
    }
    if (!bWritten)
        SCR_LOG(Label, "<%ld>-the drawing could not be written !");
    SCR_LOG(Label, "<%ld>-leave !");
    return true;
}

template <typename TEncodeImage>
char* CSignExport::EncodeByType(const CLogLabel& Label, int nImageTypeID, TEncodeImage EncodeSignImage) const
{
    // The widget of the fingerprint model takes a fingerprint alone for a picture.
    const bool bFingerprintCounts =
        IsRasterType(nImageTypeID) && m_Identity.IsWidget() && m_Fingerprint.IsThere();
    const CInkSnapshot Points = m_Points.Snapshot();
    if (Points.Count() == 0 && !bFingerprintCounts) {
        SCR_LOG(Label, "<%ld>-leave with nullptr due to None of sign image !");
        return nullptr;
    }
    char* pBase64Image = nullptr;
    if (IsRasterType(nImageTypeID))
        pBase64Image = EncodeSignImage();
    else if (nImageTypeID == EBITI_INK)
        pBase64Image = EncodeInk(Label, Points);
    SCR_LOG(Label, "<%ld>-leave with pBase64Image=%lx !", AsHex(pBase64Image));
    return pBase64Image;
}

char* CSignExport::Base64Encode(int nImageTypeID) const
{
    const CLogLabel Label = m_Identity.Label("Base64Encode()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d", nImageTypeID);
    return EncodeByType(Label, nImageTypeID, [=, this] { return EncodeBase64SignImage(nImageTypeID); });
}

char* CSignExport::Base64EncodeEx(int nImageTypeID, bool bEnableTransparentBackground) const
{
    const CLogLabel Label = m_Identity.Label("Base64EncodeEx()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bEnableTransparentBackground=%d", nImageTypeID,
            bEnableTransparentBackground);
    return EncodeByType(Label, nImageTypeID, [=, this] {
        return EncodeBase64SignImageEx(nImageTypeID, bEnableTransparentBackground);
    });
}

char* CSignExport::EncodeBase64SignImage(int nImageTypeID, const std::optional<QRect>& rcPart) const
{
    const CLogLabel Label = m_Identity.Label("EncodeBase64SignImage()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d", nImageTypeID);
    const CSharedImage Canvas = m_Canvas.Snapshot();
    const CSource Source = TakeSource(Canvas);
    if (Source.IsRefused())
        return RefusedToHost(Label);
    const QImage Raster = rcPart && !Source.m_rcClip ? CopyOfRect(Source.m_Image, *rcPart) : Source.m_Image;
    return EncodedForHost(Label, Raster, nImageTypeID, true);
}

char* CSignExport::EncodeBase64SignImageEx(int nImageTypeID, bool bEnableTransparentBackground) const
{
    const CLogLabel Label = m_Identity.Label("EncodeBase64SignImageEx()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bEnableTransparentBackground=%d", nImageTypeID,
            bEnableTransparentBackground);
    const CSharedImage Canvas = m_Canvas.Snapshot();
    const CSource Source = TakeSource(Canvas);
    if (Source.IsRefused())
        return RefusedToHost(Label);
    return EncodedForHost(Label, Source.m_Image, nImageTypeID, bEnableTransparentBackground);
}

char* CSignExport::GetSVGImageBase64Data() const
{
    const CLogLabel Label = m_Identity.Label("GetSVGImageBase64Data()");
    const int nInkCount = m_Points.Count();
    SCR_LOG(Label, "<%ld>-enter, nInkCount=%d", nInkCount);
    char* pSVGBase64Image = nullptr;
    if (nInkCount >= 1) {
        const CSharedImage Canvas = m_Canvas.Snapshot();
        const CSource Source = TakeSource(Canvas);
        std::optional<QByteArray> Drawing;
        if (Source.IsRefused())
            SCR_LOG(Label, "<%ld>-no memory for the clipped picture !");
        else
            SaveDrawingImageAsSVGFile(Source, kTemporarySvgDPI, [&Drawing](const FnHandOver& HandOver) {
                Drawing = SvgBytes(HandOver);
                if (Drawing && !LeaveInTemporaryFile(*Drawing))
                    Drawing.reset();
                return Drawing.has_value();
            });
        SCR_LOG(Label, "<%ld>-byteArray size=%d", Drawing ? static_cast<int>(Drawing->size()) : 0);
        if (Drawing)
            pSVGBase64Image = Base64ForHost(Label, *Drawing);
    }
    SCR_LOG(Label, "<%ld>-leave with pSVGBase64Image=%lx !", AsHex(pSVGBase64Image));
    return pSVGBase64Image;
}

int CSignExport::Base64Decode(int nImageTypeID, const char* pEncodedData, const wchar_t* pImageFilePath)
{
    const CLogLabel Label = m_Identity.Label("Base64Decode()");
    SCR_LOG_WIDE(Label, L"<%ld>-enter, nImageTypeID=%d, pImageFilePath=%x", nImageTypeID,
                 AsShortHex(pImageFilePath));
    int nResult = kNotDone;
    m_DecodedPoints.Clear();
    const std::size_t nTextSize = std::strlen(pEncodedData);
    // The encoders write no longer text.
    if (nTextSize <= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        QString strPath;
        if (IsRasterType(nImageTypeID)) {
            if (PathFromHost(pImageFilePath, strPath) &&
                SaveEncodedImage(DecodeBase64(pEncodedData, static_cast<int>(nTextSize)), nImageTypeID,
                                 strPath))
                nResult = ARI_SUCCESS;
        } else if (nImageTypeID == EBITI_INK) {
            DecodeInkText(pEncodedData, nTextSize, m_DecodedPoints);
            nResult = ARI_SUCCESS;
        }
    }
    SCR_LOG_WIDE(Label, L"<%ld>-leave with nResult=%d !", nResult);
    return nResult;
}

int CSignExport::GetTotalDecodeInkPointsNumber() const
{
    const CLogLabel Label = m_Identity.Label("GetTotalDecodeInkPointsNumber()");
    SCR_LOG(Label, "<%ld>-enter...");
    const int nCount = m_DecodedPoints.Count();
    const int nDecodedInkCount = nCount > 0 ? nCount : kNotDone;
    SCR_LOG(Label, "<%ld>-leave with nDecodedInkCount=%d", nDecodedInkCount);
    return nDecodedInkCount;
}

int CSignExport::GetDecodePACKETS(int nIndex, int nTypeID) const
{
    const CLogLabel Label = m_Identity.Label("GetDecodePACKETS()");
    SCR_LOG(Label, "<%ld>-enter, nIndex=%d, nTypeID=%d", nIndex, nTypeID);
    int nPACKETS = kNotDone;
    _POINTDATA Point;
    if (m_DecodedPoints.Count() > 0) {
        if (!m_DecodedPoints.At(nIndex, Point)) {
            SCR_LOG(Label, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nIndex < 0) || (nIndex >= "
                           "nDecodedInkCount) !");
            return ARI_INVALID_PARAMETERS;
        }
        switch (nTypeID) {
        case INKDATATYPE_X:
            nPACKETS = static_cast<std::int16_t>(Point.usX); // signed, unlike the stored point's query
            break;
        case INKDATATYPE_Y:
            nPACKETS = Point.sY;
            break;
        case INKDATATYPE_STROKEEND:
            nPACKETS = Point.ucStatus;
            break;
        default:
            break;
        }
    }
    SCR_LOG(Label, "<%ld>-leave with nPACKETS=%d", nPACKETS);
    return nPACKETS;
}

// The export and import operations of a sign object: what they take of the object, and their lines.
#include "ink/base64text.h"
#include "ink/inkstream.h"
#include "log/ownfile.h"
#include "signcore/results.h"
#include "signcore/signobject.h"
#include "signcore/svgdrawing.h"

#include <QByteArray>
#include <QString>

#include <cstring>
#include <limits>
#include <new>
#include <optional>

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
        SCR_LOG(Label, "<%ld>-nBase64Size=%d", Text.size());
        return TextForHost(Text);
    } catch (const std::bad_alloc&) {
        SCR_LOG(Label, "<%ld>-no memory for the text !");
        return nullptr;
    }
}

} // namespace

CClipSettings CSignObject::ReadClip() const
{
    const CLocker Lock(m_ClipMutex);
    return m_Clip;
}

CInkSnapshot CSignObject::ReadPoints() const
{
    return m_pPointDataList ? m_pPointDataList->Snapshot() : CInkSnapshot();
}

bool CSignObject::HasPoints() const
{
    return m_pPointDataList && m_pPointDataList->Count() > 0;
}

int CSignObject::SetSaveClipImageMargin(bool bClipImage, int nClipMarginX, int nClipMarginY)
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

QRect CSignObject::ScanInk(const CSharedImage& Canvas, const CClipSettings& Clip) const
{
    return ::CheckSignImageBoundingBox(Canvas.Image(), Canvas.InkArea(), Clip,
                                       m_Identity.Label("CheckSignImageBoundingBox()"));
}

void CSignObject::CheckSignImageBoundingBox(QRect& rcBoundBox)
{
    rcBoundBox = ScanInk(m_Canvas.Snapshot(), ReadClip());
}

void CSignObject::MakeAsTransparentImage(QImage& Image, QColor Color)
{
    ::MakeAsTransparentImage(Image, Color, m_Identity.Label("MakeAsTransparentImage()"));
}

CExportSource CSignObject::TakeExportSource(const CSharedImage& Canvas, bool& bClipped) const
{
    const CClipSettings Clip = ReadClip();
    CExportSource Source;
    Source.m_Image = Canvas.Image();
    bClipped = Clip.m_bClipImage;
    if (bClipped) {
        Source.m_rcClip = ScanInk(Canvas, Clip);
        Source.m_Image = CopyOfRect(Source.m_Image, Source.m_rcClip);
    }
    return Source;
}

int CSignObject::SaveDrawingImage(int nImageTypeID, wchar_t* pImageFilePath, int nDPI)
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImage()");
    SCR_LOG_WIDE(Label, L"<%ld>-enter, nImageTypeID=%d, pImageFilePath=%x, nDPI=%d", nImageTypeID,
                 AsShortHex(pImageFilePath), nDPI);
    bool bSaved = false;
    QString strPath;
    if ((HasPoints() || m_Canvas.FPScore() > 0) && PathFromHost(pImageFilePath, strPath)) {
        const CSharedImage Canvas = m_Canvas.Snapshot();
        bool bClipped = false;
        const CExportSource Source = TakeExportSource(Canvas, bClipped);
        if (bClipped)
            SCR_LOG_WIDE(Label, L"<%ld>-after call CheckSignImageBoundingBox(), l=%d, t=%d, r=%d, b=%d",
                         Source.m_rcClip.left(), Source.m_rcClip.top(), Source.m_rcClip.right(),
                         Source.m_rcClip.bottom());
        if (IsRasterType(nImageTypeID))
            bSaved = SaveRasterFile(Source.m_Image, strPath, nDPI, nImageTypeID == EBITI_PNG);
        else if (nImageTypeID == EBITI_PDF)
            bSaved = SaveDrawingImageAsPDFFile(Source.m_Image, strPath, nDPI);
        else if (nImageTypeID == EBITI_SVG)
            bSaved =
                SaveDrawingImageAsSVGFile(Source, bClipped, nDPI, [&strPath](const FnHandOver& HandOver) {
                    return WriteWholeFile(strPath, HandOver);
                });
    }
    const int nResult = bSaved ? ARI_SUCCESS : kNotDone;
    SCR_LOG_WIDE(Label, L"<%ld>-leave with nResult=%d", nResult);
    return nResult;
}

bool CSignObject::SaveDrawingImageAsPDFFile(const QImage& Image, const QString& strPath, int nDPI) const
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImageAsPDFFile()");
    SCR_LOG(Label, "<%ld>-enter, nDPI=%d", nDPI);
    const bool bRet = SavePdfFile(Image, strPath, nDPI);
    SCR_LOG(Label, "<%ld>-leave with bRet=%d", bRet);
    return bRet;
}

bool CSignObject::SaveDrawingImageAsSVGFile(const CExportSource& Source, bool bClipped, int nDPI,
                                            const std::function<bool(const FnHandOver&)>& Write) const
{
    const CLogLabel Label = m_Identity.Label("SaveDrawingImageAsSVGFile()");
    SCR_LOG(Label, "<%ld>-enter, nDPI=%d", nDPI);
    const CInkSnapshot Points = ReadPoints();
    SCR_LOG(Label, "<%ld>-nInkCount=%d", static_cast<int>(Points.Count()));
    const QPoint Origin = bClipped ? Source.m_rcClip.topLeft() : QPoint(0, 0);
    bool bWritten = false;
    try {
        const CSvgContent Content{
            Source.m_Image.size(),       Origin, Points, m_PenSetup.Read(), m_Identity.m_Model,
            m_Canvas.FingerprintForSvg()};
        bWritten =
            Write([&Content, nDPI](const FnTakeBytes& Take) { return HandOverSvg(Content, nDPI, Take); });
    } catch (const std::bad_alloc&) {
    }
    if (!bWritten)
        SCR_LOG(Label, "<%ld>-the drawing could not be written !");
    SCR_LOG(Label, "<%ld>-leave !");
    return true;
}

template <typename TEncodeImage>
char* CSignObject::EncodeByType(const CLogLabel& Label, int nImageTypeID, TEncodeImage EncodeSignImage) const
{
    // The widget of the fingerprint model takes a fingerprint alone for a picture.
    const bool bFingerprintCounts =
        IsRasterType(nImageTypeID) && m_Identity.IsWidget() && m_Canvas.FPScore() > 0;
    const CInkSnapshot Points = ReadPoints();
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

char* CSignObject::Base64Encode(int nImageTypeID)
{
    const CLogLabel Label = m_Identity.Label("Base64Encode()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d", nImageTypeID);
    return EncodeByType(Label, nImageTypeID, [=, this] { return EncodeBase64SignImage(nImageTypeID); });
}

char* CSignObject::Base64EncodeEx(int nImageTypeID, bool bEnableTransparentBackground)
{
    const CLogLabel Label = m_Identity.Label("Base64EncodeEx()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bEnableTransparentBackground=%d", nImageTypeID,
            bEnableTransparentBackground);
    return EncodeByType(Label, nImageTypeID, [=, this] {
        return EncodeBase64SignImageEx(nImageTypeID, bEnableTransparentBackground);
    });
}

// The raster that is encoded: the clipped box, or the fingerprint's place, or the whole canvas.
QImage CSignObject::TakeRaster(const CSharedImage& Canvas, bool bFPImageOnly) const
{
    bool bClipped = false;
    const CExportSource Source = TakeExportSource(Canvas, bClipped);
    return bFPImageOnly && !bClipped ? CopyOfRect(Source.m_Image, m_Canvas.FPPlacement().m_rcFP)
                                     : Source.m_Image;
}

char* CSignObject::EncodeSource(const CLogLabel& Label, const QImage& Image, int nImageTypeID,
                                bool bTransparentWhite) const
{
    char* const pEncoded = TextForHost(EncodeImage(Image, nImageTypeID, bTransparentWhite).toBase64());
    SCR_LOG(Label, "<%ld>-leave with pEncodeBase64Image=%lx !", AsHex(pEncoded));
    return pEncoded;
}

char* CSignObject::EncodeBase64SignImage(int nImageTypeID, bool bFPImageOnly) const
{
    const CLogLabel Label = m_Identity.Label("EncodeBase64SignImage()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d", nImageTypeID);
    const CSharedImage Canvas = m_Canvas.Snapshot();
    return EncodeSource(Label, TakeRaster(Canvas, bFPImageOnly), nImageTypeID, true);
}

char* CSignObject::EncodeBase64SignImageEx(int nImageTypeID, bool bEnableTransparentBackground) const
{
    const CLogLabel Label = m_Identity.Label("EncodeBase64SignImageEx()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bEnableTransparentBackground=%d", nImageTypeID,
            bEnableTransparentBackground);
    const CSharedImage Canvas = m_Canvas.Snapshot();
    return EncodeSource(Label, TakeRaster(Canvas, false), nImageTypeID, bEnableTransparentBackground);
}

char* CSignObject::GetFPImageBase64Data(int nImageTypeID, bool bFPImageOnly)
{
    const CLogLabel Label = m_Identity.Label("GetFPImageBase64Data()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bFPImageOnly=%d", nImageTypeID, bFPImageOnly);
    const CSignCanvas::CFPPlacement Placement = m_Canvas.FPPlacement();
    const int nSeparateAction =
        m_Identity.IsWidget() ? NFPPA_SIGN_FP_DIFFERENT_WIDGET : NFPPA_FP_ON_CANVAS_FROM_JS;
    char* pFPImageBase64Data = nullptr;
    if (Placement.m_nActionID == nSeparateAction) {
        if (Placement.m_pPicture)
            pFPImageBase64Data =
                Placement.m_pPicture->EncodeBase64SignImage(ReadClip(), bFPImageOnly, nImageTypeID);
    } else if (m_Identity.IsWidget()) {
        // In the middle of the signature the fingerprint has no rectangle of its own to be cut out.
        const bool bOnly = bFPImageOnly && Placement.m_nActionID == NFPPA_SIGN_FP_SAME_WIDGET;
        pFPImageBase64Data = EncodeBase64SignImage(nImageTypeID, bOnly);
    }
    SCR_LOG(Label, "<%ld>-leave with pFPImageBase64Data=%lx !", AsHex(pFPImageBase64Data));
    return pFPImageBase64Data;
}

char* CSignObject::EncodeInk(const CLogLabel& Label, const CInkSnapshot& Points) const
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

char* CSignObject::GetSVGImageBase64Data()
{
    const CLogLabel Label = m_Identity.Label("GetSVGImageBase64Data()");
    const int nInkCount = m_pPointDataList ? m_pPointDataList->Count() : 0;
    SCR_LOG(Label, "<%ld>-enter, nInkCount=%d", nInkCount);
    char* pSVGBase64Image = nullptr;
    if (nInkCount >= 1) {
        const CSharedImage Canvas = m_Canvas.Snapshot();
        bool bClipped = false;
        const CExportSource Source = TakeExportSource(Canvas, bClipped);
        std::optional<QByteArray> Drawing;
        SaveDrawingImageAsSVGFile(Source, bClipped, kTemporarySvgDPI, [&Drawing](const FnHandOver& HandOver) {
            Drawing = SvgBytes(HandOver);
            if (Drawing && !LeaveInTemporaryFile(*Drawing))
                Drawing.reset();
            return Drawing.has_value();
        });
        SCR_LOG(Label, "<%ld>-byteArray size=%d", Drawing ? Drawing->size() : 0);
        if (Drawing)
            pSVGBase64Image = Base64ForHost(Label, *Drawing);
    }
    SCR_LOG(Label, "<%ld>-leave with pSVGBase64Image=%lx !", AsHex(pSVGBase64Image));
    return pSVGBase64Image;
}

void CSignObject::FreeText(const char* pszFunction, const char* pszArgument, char* pText) const
{
    const CLogLabel Label = m_Identity.Label(pszFunction);
    SCR_LOG(Label, "<%ld>-enter, %s=%lx", pszArgument, AsHex(pText));
    if (pText) {
        delete[] pText;
        SCR_LOG(Label, "<%ld>-after call delete[] %s !", pszArgument);
    }
    SCR_LOG(Label, "<%ld>-leave !");
}

int CSignObject::Base64Decode(int nImageTypeID, const char* pEncodedData, wchar_t* pImageFilePath)
{
    const CLogLabel Label = m_Identity.Label("Base64Decode()");
    SCR_LOG_WIDE(Label, L"<%ld>-enter, nImageTypeID=%d, pImageFilePath=%x", nImageTypeID,
                 AsShortHex(pImageFilePath));
    int nResult = kNotDone;
    if (m_pDecodedPointDataList)
        m_pDecodedPointDataList->Clear();
    const std::size_t nTextSize = std::strlen(pEncodedData);
    // The encoders write no longer text.
    if (nTextSize <= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        QString strPath;
        if (IsRasterType(nImageTypeID)) {
            if (PathFromHost(pImageFilePath, strPath) &&
                SaveEncodedImage(DecodeBase64(pEncodedData, static_cast<int>(nTextSize)), nImageTypeID,
                                 strPath))
                nResult = ARI_SUCCESS;
        } else if (nImageTypeID == EBITI_INK && m_pDecodedPointDataList) {
            DecodeInkText(pEncodedData, nTextSize, *m_pDecodedPointDataList);
            nResult = ARI_SUCCESS;
        }
    }
    SCR_LOG_WIDE(Label, L"<%ld>-leave with nResult=%d !", nResult);
    return nResult;
}

int CSignObject::GetTotalDecodeInkPointsNumber()
{
    const CLogLabel Label = m_Identity.Label("GetTotalDecodeInkPointsNumber()");
    SCR_LOG(Label, "<%ld>-enter...");
    const int nCount = m_pDecodedPointDataList ? m_pDecodedPointDataList->Count() : 0;
    const int nDecodedInkCount = nCount > 0 ? nCount : kNotDone;
    SCR_LOG(Label, "<%ld>-leave with nDecodedInkCount=%d", nDecodedInkCount);
    return nDecodedInkCount;
}

int CSignObject::GetDecodePACKETS(int nIndex, int nTypeID)
{
    const CLogLabel Label = m_Identity.Label("GetDecodePACKETS()");
    SCR_LOG(Label, "<%ld>-enter, nIndex=%d, nTypeID=%d", nIndex, nTypeID);
    int nPACKETS = kNotDone;
    _POINTDATA Point;
    if (m_pDecodedPointDataList && m_pDecodedPointDataList->Count() > 0) {
        if (!m_pDecodedPointDataList->At(nIndex, Point)) {
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

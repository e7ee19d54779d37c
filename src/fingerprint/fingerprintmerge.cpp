#include "fingerprint/fingerprintmerge.h"

#include "canvas/drawing.h"
#include "scriberasdk.h"

#include <algorithm>
#include <utility>

namespace {

bool DrawFingerprint(QImage& Canvas, const QImage& Fingerprint, const QRectF& rcTargetFP)
{
    return DrawInBandsOn(Canvas, [&](QPainter& Painter) {
        Painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
        Painter.drawImage(rcTargetFP, Fingerprint, QRectF(0, 0, kFPWidth, kFPHeight));
    });
}

} // namespace

CFingerprintMerge::CFingerprintMerge(const CObjectIdentity& Identity)
    : m_Identity(Identity), m_BlankFingerprint(BlankCanvas(kFPWidth, kFPHeight)),
      m_FPOnlyCanvas(m_BlankFingerprint), m_nNewFPProcessActionID(NFPPA_NONE)
{
}

void CFingerprintMerge::SetFingerprint(QImage Fingerprint, int nScore, int nClears)
{
    if (nClears != m_nClears)
        return;
    m_nFPScore = nScore;
    m_FPOnlyCanvas = std::move(Fingerprint);
    m_bFPBlank = false;
    m_bFullMergeOwed = true;
}

void CFingerprintMerge::CanvasResized()
{
    m_FPOnlyCanvas = m_BlankFingerprint;
    m_bFPBlank = true;
    m_FPLayer = QImage();
    m_bFullMergeOwed = true;
}

void CFingerprintMerge::CanvasCleared()
{
    CanvasResized();
    m_nFPScore = 0;
    ++m_nClears;
    // No biometric picture outlives a clear.
    for (const std::shared_ptr<CFPPicture>& pPicture : m_Pictures)
        pPicture->Clear();
}

void CFingerprintMerge::SetActionID(int nActionID)
{
    m_nNewFPProcessActionID = nActionID;
    m_bFullMergeOwed = true;
}

void CFingerprintMerge::SetFPRect(const QRect& rcFP)
{
    m_rcFP = rcFP;
    m_bFullMergeOwed = true;
}

std::shared_ptr<CFPPicture> CFingerprintMerge::Picture() const
{
    return m_Pictures.empty() || m_Pictures.back()->IsGone() ? nullptr : m_Pictures.back();
}

std::shared_ptr<CFPPicture> CFingerprintMerge::SetPicture(std::shared_ptr<CFPPicture> pPicture)
{
    if (m_Identity.IsWidget() || m_Pictures.empty()) {
        m_Pictures.push_back(std::move(pPicture));
        return nullptr;
    }
    return std::exchange(m_Pictures.back(), std::move(pPicture));
}

std::vector<std::shared_ptr<CFPPicture>> CFingerprintMerge::TakePictures()
{
    return std::exchange(m_Pictures, {});
}

bool CFingerprintMerge::IsPlacedOnCanvas() const
{
    return m_nNewFPProcessActionID == NFPPA_NONE || m_nNewFPProcessActionID == NFPPA_SIGN_FP_SAME_WIDGET;
}

// Where the fingerprint goes on the canvas; hands it on when it goes elsewhere.
QRectF CFingerprintMerge::TargetRect(const QSize& CanvasSize, const CLogLabel& Label, ELogFile eFile,
                                     bool& bHandedOn)
{
    switch (m_nNewFPProcessActionID) {
    case NFPPA_NONE: {
        SCR_LOG_TO(eFile, Label, "<%ld>-m_nNewFPProcessActionID == NFPPA_NONE");
        const double dblTargetFPHeight = CanvasSize.height() * 0.5;
        const double dblTargetFPWidth = dblTargetFPHeight * 208.0 / 288.0;
        const double dblTargetFPX = (CanvasSize.width() - dblTargetFPWidth) * 0.5;
        const double dblTargetFPY = (CanvasSize.height() - dblTargetFPHeight) * 0.5;
        SCR_LOG_TO(eFile, Label, "<%ld>-dblTargetFPHeight=%f, dblTargetFPWidth=%f", dblTargetFPHeight,
                   dblTargetFPWidth);
        SCR_LOG_TO(eFile, Label, "<%ld>-dblTargetFPX=%f, dblTargetFPY=%f", dblTargetFPX, dblTargetFPY);
        return {dblTargetFPX, dblTargetFPY, dblTargetFPWidth, dblTargetFPHeight};
    }
    case NFPPA_SIGN_FP_SAME_WIDGET:
        SCR_LOG_TO(eFile, Label, "<%ld>-m_nNewFPProcessActionID == NFPPA_SIGN_FP_SAME_WIDGET");
        return {static_cast<double>(m_rcFP.left()), static_cast<double>(m_rcFP.top()),
                static_cast<double>(m_rcFP.right()) - m_rcFP.left() + 1,
                static_cast<double>(m_rcFP.bottom()) - m_rcFP.top() + 1};
    case NFPPA_SIGN_FP_DIFFERENT_WIDGET:
        SCR_LOG_TO(eFile, Label, "<%ld>-m_nNewFPProcessActionID == NFPPA_SIGN_FP_DIFFERENT_WIDGET");
        break;
    case NFPPA_FP_ON_CANVAS_FROM_JS:
        SCR_LOG_TO(eFile, Label, "<%ld>-m_nNewFPProcessActionID == NFPPA_FP_ON_CANVAS_FROM_JS");
        break;
    default:
        return {0, 0, 0, 0};
    }
    if (const std::shared_ptr<CFPPicture> pPicture = Picture()) {
        if (!m_Identity.IsWidget())
            SCR_LOG_TO(eFile, Label, "<%ld>-b4 call m_pNewFPWidget->UpdateFPImage(m_FPOnlyCanvas)...");
        bHandedOn = pPicture->UpdateFPImage(m_FPOnlyCanvas, eFile);
    }
    return {0, 0, 0, 0};
}

QRect CFingerprintMerge::Merge(QImage& SignCanvas, const QImage& Strokes, const QRect& rcTouched,
                               ELogFile eFile)
{
    const CLogLabel Label = m_Identity.Label("MergeSignCanvasAndFPCanvas()");
    SCR_LOG_TO(eFile, Label, "<%ld>-Enter...");
    bool bHandedOn = true;
    const QRectF rcTargetFP = TargetRect(SignCanvas.size(), Label, eFile, bHandedOn);
    SCR_LOG_TO(eFile, Label, "<%ld>-rcTargetFP.left=%f, top=%f, width=%f, height=%f", rcTargetFP.left(),
               rcTargetFP.top(), rcTargetFP.width(), rcTargetFP.height());
    SCR_LOG_TO(eFile, Label, "<%ld>-rcSourceFP.left=%f, top=%f, width=%f, height=%f", 0.0, 0.0,
               static_cast<double>(kFPWidth), static_cast<double>(kFPHeight));
    QRect rcChanged = rcTouched;
    if (m_bFullMergeOwed) {
        m_bFullMergeOwed = !MergeAll(SignCanvas, Strokes, rcTargetFP);
        rcChanged = SignCanvas.rect();
    } else {
        m_bFullMergeOwed = !MergePart(SignCanvas, Strokes, rcTouched);
    }
    m_bFullMergeOwed = m_bFullMergeOwed || !bHandedOn;
    SCR_LOG_TO(eFile, Label, "<%ld>-leave !");
    return rcChanged;
}

bool CFingerprintMerge::MergeAll(QImage& SignCanvas, const QImage& Strokes, const QRectF& rcTargetFP)
{
    m_FPLayer = QImage();
    QImage Merged = Strokes.copy();
    if (Merged.isNull() && !Strokes.isNull())
        return false;
    const bool bShows = ShowsInCanvas() && !Merged.isNull();
    const bool bDrawn = !bShows || DrawFingerprint(Merged, m_FPOnlyCanvas, rcTargetFP);
    SignCanvas = std::move(Merged);
    if (!bDrawn || !bShows)
        return bDrawn;
    QImage Layer = BlankCanvas(Strokes.width(), Strokes.height());
    if (Layer.isNull() || !DrawFingerprint(Layer, m_FPOnlyCanvas, rcTargetFP))
        return false;
    m_FPLayer = std::move(Layer);
    return true;
}

bool CFingerprintMerge::MergePart(QImage& SignCanvas, const QImage& Strokes, const QRect& rcPart) const
{
    if (rcPart.isEmpty() || Strokes.isNull())
        return true;
    if (!MakeWritable(SignCanvas) || SignCanvas.size() != Strokes.size())
        return false;
    // The rows of all three lie equally far apart: they have one size and format.
    const std::size_t nStride = static_cast<std::size_t>(SignCanvas.bytesPerLine()) / sizeof(QRgb);
    const std::size_t nFirst =
        static_cast<std::size_t>(rcPart.top()) * nStride + static_cast<std::size_t>(rcPart.left());
    const auto nWidth = static_cast<std::size_t>(rcPart.width());
    auto* pMerged = reinterpret_cast<QRgb*>(SignCanvas.bits()) + nFirst;
    const auto* pStrokes = reinterpret_cast<const QRgb*>(Strokes.constBits()) + nFirst;
    const auto* pLayer =
        m_FPLayer.isNull() ? nullptr : reinterpret_cast<const QRgb*>(m_FPLayer.constBits()) + nFirst;
    for (int nRow = rcPart.height(); nRow > 0; --nRow) {
        if (pLayer) {
            for (std::size_t nX = 0; nX < nWidth; ++nX)
                pMerged[nX] = pStrokes[nX] & pLayer[nX];
            pLayer += nStride;
        } else {
            std::copy_n(pStrokes, nWidth, pMerged);
        }
        pMerged += nStride;
        pStrokes += nStride;
    }
    return true;
}

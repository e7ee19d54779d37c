#include "signcore/signcanvas.h"

#include "signcore/fingerprintmerge.h"

#include <QBrush>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr std::int64_t kMaxCanvasBytes = std::int64_t{1} << 30;
constexpr std::int64_t kBytesPerPixel = 4;

// How strokes are smoothed. Qt deprecates the name in favour of Antialiasing, but draws pens of up to one
// pixel differently under the two, and a signature looks as it always has.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
constexpr QPainter::RenderHint kStrokeHint = QPainter::HighQualityAntialiasing;
#pragma GCC diagnostic pop

// All pixels that a segment can touch: half its width around it, and what antialiasing adds. A width below
// one pixel still draws one.
QRect TouchedBy(const QLineF& Segment, double dblWidth, const QRect& rcCanvas)
{
    const double dblReach = std::max(std::abs(dblWidth), 1.0) / 2 + 2;
    const auto Edge = [](double dblValue, int nMin, int nMax) {
        return static_cast<int>(std::clamp(dblValue, static_cast<double>(nMin), static_cast<double>(nMax)));
    };
    QRect rcTouched;
    rcTouched.setCoords(
        Edge(std::floor(std::min(Segment.x1(), Segment.x2()) - dblReach), 0, rcCanvas.right()),
        Edge(std::floor(std::min(Segment.y1(), Segment.y2()) - dblReach), 0, rcCanvas.bottom()),
        Edge(std::ceil(std::max(Segment.x1(), Segment.x2()) + dblReach), 0, rcCanvas.right()),
        Edge(std::ceil(std::max(Segment.y1(), Segment.y2()) + dblReach), 0, rcCanvas.bottom()));
    return rcTouched;
}

} // namespace

void DrawStrokeSegment(QPainter& Painter, const QLineF& Segment, double dblWidth, const QColor& Color)
{
    Painter.setRenderHint(kStrokeHint, true);
    Painter.setPen(QPen(QBrush(Color), dblWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    Painter.drawLines(&Segment, 1);
}

QSize UsableCanvasSize(int nWidth, int nHeight)
{
    const bool bUsable =
        nWidth > 0 && nHeight > 0 && std::int64_t{nWidth} * nHeight <= kMaxCanvasBytes / kBytesPerPixel;
    return bUsable ? QSize(nWidth, nHeight) : QSize(0, 0);
}

QImage BlankCanvas(int nWidth, int nHeight)
{
    QImage Canvas;
    const QSize Size = UsableCanvasSize(nWidth, nHeight);
    if (!Size.isEmpty() && Attempt([&] { Canvas = QImage(Size, QImage::Format_ARGB32); }))
        Canvas.fill(Qt::white);
    return Canvas;
}

void Whiten(QImage& Canvas, CImageWitness& Witness)
{
    if (Canvas.isDetached()) {
        Witness.NoteWriteInPlace(Canvas);
        Canvas.fill(Qt::white);
    } else {
        Canvas = BlankCanvas(Canvas.width(), Canvas.height());
    }
}

QImage CopyInside(const QImage& Image, const QRect& rcPart)
{
    const QRect rcInside = rcPart & Image.rect();
    return rcInside.isEmpty() ? QImage() : Image.copy(rcInside);
}

void WarmUpDrawing()
{
    QImage Canvas = BlankCanvas(8, 8);
    QPainter Painter(&Canvas);
    DrawStrokeSegment(Painter, QLineF(1, 1, 6, 5), 2.5, Qt::black);
    Painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
    Painter.drawImage(QRectF(1, 1, 4.5, 4.5), BlankCanvas(4, 4), QRectF(0, 0, 4, 4));
}

CSignCanvas::CSignCanvas(const CObjectIdentity& Identity)
    : m_Identity(Identity),
      m_pMerge(Identity.m_Model.m_bHasFingerprint ? std::make_unique<CFingerprintMerge>(Identity) : nullptr)
{
}

CSignCanvas::~CSignCanvas() = default;

void CSignCanvas::clearCanvas(int nWidth, int nHeight)
{
    const CLocker Lock(m_CanvasMutex);
    m_Witness.NoteWrite();
    m_SignCanvas = QImage();
    m_rcInkArea = QRect();
    m_Size = UsableCanvasSize(nWidth, nHeight);
    m_bSizeOwed = true;
    TakeUpSize();
}

void CSignCanvas::Resize(int nWidth, int nHeight)
{
    const CLocker Lock(m_CanvasMutex);
    m_Witness.NoteWrite();
    m_Size = UsableCanvasSize(nWidth, nHeight);
    m_bSizeOwed = true;
    TakeUpSize();
}

void CSignCanvas::TakeUpSize()
{
    if (!m_bSizeOwed)
        return;
    QImage Resized = BlankCanvas(m_Size.width(), m_Size.height());
    QImage Strokes = m_pMerge ? BlankCanvas(m_Size.width(), m_Size.height()) : QImage();
    if (Resized.size() != m_Size || (m_pMerge && Strokes.size() != m_Size))
        return;
    const auto DrawOld = [this](QPainter& Painter) { Painter.drawImage(0, 0, m_SignCanvas); };
    if (!m_SignCanvas.isNull() && !Resized.isNull() && !DrawOn(Resized, DrawOld))
        return;
    m_bSizeOwed = false;
    m_SignCanvas = std::move(Resized);
    m_rcInkArea &= m_SignCanvas.rect();
    if (m_pMerge) {
        // What is seen stays until the next merge, which starts from empty canvases.
        m_SignOnlyCanvas = std::move(Strokes);
        m_pMerge->ClearFPOnlyCanvas();
    }
}

void CSignCanvas::ClearSignCanvas()
{
    const CLogLabel Label = m_Identity.Label("ClearSignCanvas()");
    SCR_LOG(Label, "<%ld>-enter...");
    QRect rcChanged;
    {
        const CLocker Lock(m_CanvasMutex);
        m_Witness.NoteWrite();
        Whiten(m_SignCanvas, m_Witness);
        rcChanged = QRect(QPoint(0, 0), m_Size);
        m_rcInkArea = QRect();
        if (m_pMerge) {
            Whiten(m_SignOnlyCanvas, m_Witness);
            m_pMerge->ClearFPOnlyCanvas();
            m_pMerge->ClearPictures(); // no biometric picture outlives a clear
            m_nFPScore = 0;
            ++m_nClears;
        }
        m_bSizeOwed =
            m_bSizeOwed || m_SignCanvas.size() != m_Size || (m_pMerge && m_SignOnlyCanvas.size() != m_Size);
        TakeUpSize();
    }
    NotifyChanged(rcChanged);
    SCR_LOG(Label, "<%ld>-leave !");
}

void CSignCanvas::StartAt(double dblX, double dblY)
{
    m_dblLastSignWndX = dblX;
    m_dblLastSignWndY = dblY;
}

void CSignCanvas::StartSignOnCanvas(double dblX, double dblY, double dblPressure, const CPenState& Pen)
{
    const CLogLabel Label = m_Identity.Label("StartSignOnCanvas()");
    SCR_LOG(Label, "<%ld>-enter, dblX=%f, dblY=%f, dblPressure=%f", dblX, dblY, dblPressure);
    const double dblWidth = Pen.StrokeWidth(dblPressure);
    const QLineF Segment(m_dblLastSignWndX, m_dblLastSignWndY, dblX, dblY);
    StartAt(dblX, dblY);
    QRect rcChanged;
    {
        const CLocker Lock(m_CanvasMutex);
        TakeUpSize();
        m_Witness.NoteWriteInPlace(m_SignCanvas);
        if (Pen.m_Mapping.m_bFitted && !m_SignCanvas.isNull() && MakeWritable(PenCanvas())) {
            rcChanged = TouchedBy(Segment, dblWidth, m_SignCanvas.rect());
            m_rcInkArea |= rcChanged; // first: a painter that runs out of memory may have drawn a part
            DrawOn(PenCanvas(),
                   [&](QPainter& Painter) { DrawStrokeSegment(Painter, Segment, dblWidth, Pen.m_PenColor); });
        }
        if (m_pMerge)
            rcChanged = MergeFingerprint(rcChanged, ELogFile::Main);
    }
    NotifyChanged(rcChanged);
    if (!m_Identity.IsWidget())
        SCR_LOG(Label, "<%ld>-leave !");
}

CSharedImage CSignCanvas::Snapshot() const
{
    const CLocker Lock(m_CanvasMutex);
    m_Witness.NoteRead();
    return {m_SignCanvas, m_rcInkArea, m_Witness};
}

QImage CSignCanvas::CopyOf(const QRect& rcPart) const
{
    const CLocker Lock(m_CanvasMutex);
    m_Witness.NoteRead();
    return CopyInside(m_SignCanvas, rcPart);
}

QRect CSignCanvas::MergeFingerprint(const QRect& rcTouched, ELogFile eFile)
{
    // The canvas may come into being by the merge, if there was no memory for it before.
    if (m_pMerge->ShowsInCanvas())
        m_rcInkArea = m_SignCanvas.rect() | m_SignOnlyCanvas.rect();
    QRect rcChanged = rcTouched;
    const auto Merge = [&] {
        rcChanged = m_pMerge->MergeSignCanvasAndFPCanvas(m_SignCanvas, m_SignOnlyCanvas, rcTouched, eFile);
    };
    if (!Attempt(Merge))
        m_pMerge->OweFullMerge();
    return rcChanged;
}

void CSignCanvas::NotifyChanged(const QRect& rcChanged) const
{
    if (m_pObserver && !rcChanged.isEmpty())
        m_pObserver->CanvasChanged(rcChanged);
}

int CSignCanvas::FPScore() const
{
    const CLocker Lock(m_CanvasMutex);
    return m_nFPScore;
}

bool CSignCanvas::IsBetterFPScore(int nScore, int& nClears) const
{
    const CLocker Lock(m_CanvasMutex);
    nClears = m_nClears;
    return nScore > m_nFPScore;
}

void CSignCanvas::SetFingerprint(QImage Fingerprint, int nScore, int nClears)
{
    const CLocker Lock(m_CanvasMutex);
    // A clear in between has taken this fingerprint back already.
    if (nClears != m_nClears)
        return;
    m_nFPScore = nScore;
    m_pMerge->SetFPOnlyCanvas(std::move(Fingerprint));
}

bool CSignCanvas::MergeAfterTransfer()
{
    QRect rcChanged;
    bool bMerged = false;
    {
        const CLocker Lock(m_CanvasMutex);
        m_Witness.NoteWrite();
        m_pMerge->OweFullMerge();
        rcChanged = MergeFingerprint(m_SignCanvas.rect(), ELogFile::InThread);
        bMerged = !m_pMerge->IsFullMergeOwed();
    }
    NotifyChanged(rcChanged);
    return bMerged;
}

CSignCanvas::CFPPlacement CSignCanvas::FPPlacement() const
{
    const CLocker Lock(m_CanvasMutex);
    return {m_pMerge->ActionID(), m_pMerge->FPRect(), m_pMerge->Picture()};
}

void CSignCanvas::SetFPRect(const QRect& rcFP)
{
    const CLocker Lock(m_CanvasMutex);
    m_pMerge->SetFPRect(rcFP);
}

void CSignCanvas::SetFPAction(int nActionID)
{
    const CLocker Lock(m_CanvasMutex);
    m_pMerge->SetActionID(nActionID);
}

void CSignCanvas::SetFPPicture(std::shared_ptr<CFPPicture> pPicture)
{
    std::shared_ptr<CFPPicture> pReplaced;
    {
        const CLocker Lock(m_CanvasMutex);
        pReplaced = m_pMerge->SetPicture(std::move(pPicture));
    }
    if (pReplaced)
        pReplaced->ReleaseView();
}

std::vector<std::shared_ptr<CFPPicture>> CSignCanvas::TakeFPPictures()
{
    const CLocker Lock(m_CanvasMutex);
    return m_pMerge ? m_pMerge->TakePictures() : std::vector<std::shared_ptr<CFPPicture>>();
}

QImage CSignCanvas::FingerprintForSvg() const
{
    const CLocker Lock(m_CanvasMutex);
    const bool bShown =
        m_pMerge && m_nFPScore > 0 &&
        (m_pMerge->ActionID() == NFPPA_NONE || m_pMerge->ActionID() == NFPPA_SIGN_FP_SAME_WIDGET);
    return bShown ? m_pMerge->FPOnlyCanvas() : QImage();
}

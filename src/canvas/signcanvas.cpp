#include "canvas/signcanvas.h"

#include "canvas/drawing.h"
#include "sync/attempt.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// All pixels that a segment can touch: half its width around it, and what antialiasing adds, which is more
// than one pixel at the ends of Qt 6's thin lines. A width below one pixel still draws one; round caps are
// curves that stand out by less than a thousandth.
QRect TouchedBy(const QLineF& Segment, double dblWidth, const QRect& rcCanvas)
{
    const double dblReach = std::max(std::abs(dblWidth), 1.0) * 0.5005 + 2;
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
    QImage Strokes = m_pLayer ? BlankCanvas(m_Size.width(), m_Size.height()) : QImage();
    if (Resized.size() != m_Size || (m_pLayer && Strokes.size() != m_Size))
        return;
    const auto DrawOld = [this](QPainter& Painter) { Painter.drawImage(0, 0, m_SignCanvas); };
    if (!m_SignCanvas.isNull() && !Resized.isNull() && !DrawInBandsOn(Resized, DrawOld))
        return;
    m_bSizeOwed = false;
    m_SignCanvas = std::move(Resized);
    m_rcInkArea &= m_SignCanvas.rect();
    if (m_pLayer) {
        // What is seen stays until the next merge, which starts from empty canvases.
        m_SignOnlyCanvas = std::move(Strokes);
        m_pLayer->CanvasResized();
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
        if (m_pLayer) {
            Whiten(m_SignOnlyCanvas, m_Witness);
            m_pLayer->CanvasCleared();
        }
        m_bSizeOwed =
            m_bSizeOwed || m_SignCanvas.size() != m_Size || (m_pLayer && m_SignOnlyCanvas.size() != m_Size);
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

void CSignCanvas::StartSignOnCanvas(double dblX, double dblY, double dblPressure,
                                    const std::optional<CStrokeStyle>& Style)
{
    const CLogLabel Label = m_Identity.Label("StartSignOnCanvas()");
    SCR_LOG(Label, "<%ld>-enter, dblX=%f, dblY=%f, dblPressure=%f", dblX, dblY, dblPressure);
    const QLineF Segment(m_dblLastSignWndX, m_dblLastSignWndY, dblX, dblY);
    StartAt(dblX, dblY);
    QRect rcChanged;
    {
        const CLocker Lock(m_CanvasMutex);
        TakeUpSize();
        m_Witness.NoteWriteInPlace(m_SignCanvas);
        if (Style && !m_SignCanvas.isNull() && MakeWritable(PenCanvas())) {
            rcChanged = TouchedBy(Segment, Style->m_dblWidth, m_SignCanvas.rect());
            m_rcInkArea |= rcChanged; // first: a painter that runs out of memory may have drawn a part
            DrawOn(PenCanvas(), [&](QPainter& Painter) {
                DrawStrokeSegment(Painter, Segment, Style->m_dblWidth, Style->m_Color);
            });
        }
        if (m_pLayer)
            rcChanged = MergeTouched(rcChanged, ELogFile::Main);
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

QRect CSignCanvas::MergeTouched(const QRect& rcTouched, ELogFile eFile)
{
    // The canvas may come into being by the merge, if there was no memory for it before.
    if (m_pLayer->ShowsInCanvas())
        m_rcInkArea = m_SignCanvas.rect() | m_SignOnlyCanvas.rect();
    QRect rcChanged = rcTouched;
    const auto Merge = [&] { rcChanged = m_pLayer->Merge(m_SignCanvas, m_SignOnlyCanvas, rcTouched, eFile); };
    if (!Attempt(Merge))
        m_pLayer->OweFullMerge();
    return rcChanged;
}

void CSignCanvas::NotifyChanged(const QRect& rcChanged) const
{
    if (m_pObserver && !rcChanged.isEmpty())
        m_pObserver->CanvasChanged(rcChanged);
}

bool CSignCanvas::MergeLayer()
{
    QRect rcChanged;
    bool bMerged = false;
    {
        const CLocker Lock(m_CanvasMutex);
        m_Witness.NoteWrite();
        m_pLayer->OweFullMerge();
        rcChanged = MergeTouched(m_SignCanvas.rect(), ELogFile::InThread);
        bMerged = !m_pLayer->IsFullMergeOwed();
    }
    NotifyChanged(rcChanged);
    return bMerged;
}

// The signing canvas: the image that the pen draws into.
#pragma once

#include "signcore/objectidentity.h"
#include "signcore/pensetup.h"
#include "signcore/sharedimage.h"
#include "sync/attempt.h"
#include "sync/mutex.h"

#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QRect>
#include <QSize>

#include <memory>
#include <vector>

class CFPPicture;
class CFingerprintMerge;

// Told of every change of a picture, on the thread that made it. Only notes it: the canvas or the picture may
// be locked meanwhile.
class ICanvasObserver
{
public:
    virtual void CanvasChanged(const QRect& rcChanged) = 0;

protected:
    ~ICanvasObserver() = default;
};

// Draws one stroke segment the way every picture of a signature has it, on screen, in files and as vectors.
void DrawStrokeSegment(QPainter& Painter, const QLineF& Segment, double dblWidth, const QColor& Color);

// This size; an empty one if it is zero, negative or beyond 1 GiB of pixels.
QSize UsableCanvasSize(int nWidth, int nHeight);

// An opaque white image of this size; a null one for unusable sizes and when memory is short.
QImage BlankCanvas(int nWidth, int nHeight);

// Fills with white what an export may still hold a snapshot of, without copying it first. Null afterwards
// when memory is short.
void Whiten(QImage& Canvas, CImageWitness& Witness);

// Has Draw(QPainter&) draw on the image. False when it ran out of memory: then the pixels are the image's own
// anew, since what a painter leaves behind halfway may keep others from painting.
template <typename TDraw>
bool DrawOn(QImage& Canvas, TDraw Draw)
{
    bool bDrawn = false;
    const auto Paint = [&] {
        QPainter Painter(&Canvas);
        if (Painter.isActive()) {
            Draw(Painter);
            bDrawn = Painter.end();
        }
    };
    if (Attempt(Paint) && bDrawn)
        return true;
    QImage Own;
    if (Attempt([&] { Own = Canvas.copy(); }) && !Own.isNull())
        Canvas = std::move(Own);
    return false;
}

// A copy of the part of the image that lies in the rectangle; null when none does.
QImage CopyInside(const QImage& Image, const QRect& rcPart);

// Draws once, out of sight, so that everything global that drawing needs of Qt exists from then on.
void WarmUpDrawing();

// The canvas of one sign object. The driver's thread draws, the host's thread clears and resizes, the display
// thread merges, the exporting threads and the paint handling copy; m_CanvasMutex serialises them all. The
// last point belongs to the driver's thread alone.
//
// On a model with a fingerprint reader the pen draws into a canvas of its own, and what everybody sees is
// that canvas merged with the fingerprint.
//
// Nothing here throws for want of memory. What cannot be drawn then is missing from the picture, and a size
// or a merge that had to wait is made up for by the next change.
class CSignCanvas
{
public:
    explicit CSignCanvas(const CObjectIdentity& Identity);
    ~CSignCanvas();

    // Set before the first thread that draws is started.
    void SetObserver(ICanvasObserver* pObserver) { m_pObserver = pObserver; }

    // Replaces the canvas by a blank one of this size.
    void clearCanvas(int nWidth, int nHeight);

    // Gives the canvas a new size. Ink keeps its pixel position.
    void Resize(int nWidth, int nHeight);

    // Fills the canvas white and has it repainted.
    void ClearSignCanvas();

    // The next segment starts here.
    void StartAt(double dblX, double dblY);

    // Draws the segment from the last point to this one, which becomes the last point. Nothing is drawn as
    // long as the pen has no mapping.
    void StartSignOnCanvas(double dblX, double dblY, double dblPressure, const CPenState& Pen);

    // The canvas as it is now. Shares its pixels until the next segment is drawn.
    CSharedImage Snapshot() const;

    // A copy of the part of the canvas that lies in the rectangle.
    QImage CopyOf(const QRect& rcPart) const;

    // The following are for models with a fingerprint reader.

    // Score of the fingerprint that is there; 0 without one, and on other models.
    int FPScore() const;

    // Whether a fingerprint with this score is better than the one that is there. nClears then tells
    // SetFingerprint(), which brings the picture, whether the canvas was cleared meanwhile.
    bool IsBetterFPScore(int nScore, int& nClears) const;
    void SetFingerprint(QImage Fingerprint, int nScore, int nClears);

    // Merges strokes and fingerprint after the pad has shown it; on the display thread. False when memory was
    // short.
    bool MergeAfterTransfer();

    // Where the fingerprint goes.
    struct CFPPlacement
    {
        int m_nActionID;
        QRect m_rcFP;
        std::shared_ptr<CFPPicture> m_pPicture; // null without a separate picture
    };
    CFPPlacement FPPlacement() const;
    void SetFPRect(const QRect& rcFP);
    void SetFPAction(int nActionID);
    void SetFPPicture(std::shared_ptr<CFPPicture> pPicture);
    std::vector<std::shared_ptr<CFPPicture>> TakeFPPictures();

    // The fingerprint as the signature's vector form shows it; null when it shows none.
    QImage FingerprintForSvg() const;

private:
    // Gives the canvases their size if that is still owed.
    void TakeUpSize();
    QImage& PenCanvas() { return m_pMerge ? m_SignOnlyCanvas : m_SignCanvas; }
    QRect MergeFingerprint(const QRect& rcTouched, ELogFile eFile);
    void NotifyChanged(const QRect& rcChanged) const;

    const CObjectIdentity& m_Identity;
    ICanvasObserver* m_pObserver = nullptr;

    mutable CMutex m_CanvasMutex;
    QSize m_Size{0, 0};       // what the canvases should have
    bool m_bSizeOwed = false; // they do not have it yet
    QImage m_SignCanvas;      // what is shown and exported
    CImageWitness m_Witness;
    QRect m_rcInkArea;       // outside of it the canvas is white; grows with what is drawn
    QImage m_SignOnlyCanvas; // the strokes alone; null on models without a fingerprint reader
    std::unique_ptr<CFingerprintMerge> m_pMerge; // null on those
    int m_nFPScore = 0;
    int m_nClears = 0;

    double m_dblLastSignWndX = 0;
    double m_dblLastSignWndY = 0;
};

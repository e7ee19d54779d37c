// The signing canvas: the image that the pen draws into.
#pragma once

#include "canvas/canvaslayer.h"
#include "canvas/canvasobserver.h"
#include "canvas/sharedimage.h"
#include "model/objectidentity.h"
#include "sync/mutex.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QSize>

#include <optional>

// How a segment looks.
struct CStrokeStyle
{
    double m_dblWidth; // in pixels
    QColor m_Color;
};

// The canvas of one sign object. The driver's thread draws, the host's thread clears and resizes, the display
// thread merges, the exporting threads and the paint handling copy; m_CanvasMutex serialises them all. The
// last point belongs to the driver's thread alone.
//
// Where something is laid over the strokes, the pen draws into a canvas of its own, and what everybody sees
// is that canvas merged with the layer.
//
// Nothing here throws for want of memory. What cannot be drawn then is missing from the picture, and a size
// or a merge that had to wait is made up for by the next change.
class CSignCanvas
{
public:
    explicit CSignCanvas(const CObjectIdentity& Identity) : m_Identity(Identity) {}

    // Set, if at all, before the canvas has a size and before the first thread that draws is started.
    void SetObserver(ICanvasObserver& Observer) { m_pObserver = &Observer; }
    void SetLayer(ICanvasLayer& Layer) { m_pLayer = &Layer; }

    // For what lies in the layer.
    CMutex& CanvasMutex() const { return m_CanvasMutex; }

    // Replaces the canvas by a blank one of this size.
    void clearCanvas(int nWidth, int nHeight);

    // Gives the canvas a new size. Ink keeps its pixel position.
    void Resize(int nWidth, int nHeight);

    // Fills the canvas white and has it repainted.
    void ClearSignCanvas();

    // The next segment starts here.
    void StartAt(double dblX, double dblY);

    // Draws the segment from the last point to this one, which becomes the last point. Nothing is drawn
    // without a style.
    void StartSignOnCanvas(double dblX, double dblY, double dblPressure,
                           const std::optional<CStrokeStyle>& Style);

    // The canvas as it is now. Shares its pixels until the next segment is drawn.
    CSharedImage Snapshot() const;

    // A copy of the part of the canvas that lies in the rectangle.
    QImage CopyOf(const QRect& rcPart) const;

    // Merges all of the layer into the canvas; on the display thread. False when memory was short.
    bool MergeLayer();

private:
    // Gives the canvases their size if that is still owed.
    void TakeUpSize();
    QImage& PenCanvas() { return m_pLayer ? m_SignOnlyCanvas : m_SignCanvas; }
    QRect MergeTouched(const QRect& rcTouched, ELogFile eFile);
    void NotifyChanged(const QRect& rcChanged) const;

    const CObjectIdentity& m_Identity;
    ICanvasObserver* m_pObserver = nullptr;
    ICanvasLayer* m_pLayer = nullptr;

    mutable CMutex m_CanvasMutex;
    QSize m_Size{0, 0};       // what the canvases should have
    bool m_bSizeOwed = false; // they do not have it yet
    QImage m_SignCanvas;      // what is shown and exported
    CImageWitness m_Witness;
    QRect m_rcInkArea;       // outside of it the canvas is white; grows with what is drawn
    QImage m_SignOnlyCanvas; // the strokes alone; null without a layer

    double m_dblLastSignWndX = 0;
    double m_dblLastSignWndY = 0;
};

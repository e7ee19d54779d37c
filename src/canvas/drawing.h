// How pictures are made and drawn on.
#pragma once

#include "canvas/sharedimage.h"
#include "sync/attempt.h"

#include <QColor>
#include <QImage>
#include <QLineF>
#include <QPainter>
#include <QRect>
#include <QSize>

#include <utility>

// Draws one stroke segment the way every picture of a signature has it, on screen, in files and as vectors.
void DrawStrokeSegment(QPainter& Painter, const QLineF& Segment, double dblWidth, const QColor& Color);

// This size; an empty one if it is zero, negative or beyond 1 GiB of pixels.
QSize UsableCanvasSize(int nWidth, int nHeight);

// An opaque white image of this size; a null one for unusable sizes and when memory is short.
QImage BlankCanvas(int nWidth, int nHeight);

// Fills with white what an export may still hold a snapshot of, without copying it first. Null afterwards
// when memory is short.
void Whiten(QImage& Canvas, CImageWitness& Witness);

// Has Draw(QPainter&) draw on the image. False when it ran out of memory: then the image has new pixels of
// its own, since what a painter leaves behind halfway may keep others from painting.
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

// The rectangle that a host's four numbers mean, with its edges saturated.
QRect RectFromHost(int nLeft, int nTop, int nWidth, int nHeight);

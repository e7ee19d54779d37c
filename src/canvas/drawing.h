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

// What a painter draws on in the place of a picture without transparent pixels, as all of signatures are. On
// Qt 6 its own pixels as those of a format without transparency: what is drawn is the same, but faster, and
// Qt does not hand a stroke's parts to other threads: where the system refuses it one, it would wait for it
// for ever.
#if QT_VERSION_MAJOR < 6
inline QImage& OpaqueView(QImage& Canvas)
{
    return Canvas;
}
#else
inline QImage OpaqueView(QImage& Canvas)
{
    return {Canvas.bits(), Canvas.width(), Canvas.height(), Canvas.bytesPerLine(), QImage::Format_RGB32};
}
#endif

// The same for a picture that is drawn on another one, of which nobody else holds the pixels.
inline QImage Opaque(QImage Picture)
{
    Picture.reinterpretAsFormat(QImage::Format_RGB32);
    return Picture;
}

// Has Draw(QPainter&) draw on the image, which is never transparent. False when it ran out of memory: then
// the image has new pixels of its own, since what a painter leaves behind halfway may keep others from
// painting.
template <typename TDraw>
bool DrawOn(QImage& Canvas, TDraw Draw)
{
    bool bDrawn = false;
    const auto Paint = [&] {
        auto&& View = OpaqueView(Canvas);
        QPainter Painter(&View);
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

// The same for what draws another picture: in bands, so low that Qt 6 does not use other threads for one
// either.
template <typename TDraw>
bool DrawInBandsOn(QImage& Canvas, TDraw Draw)
{
    if constexpr (QT_VERSION_MAJOR < 6) // which has no memory to spare for a clip, and needs none
        return DrawOn(Canvas, Draw);
    constexpr int kRows = 64;
    const int nWidth = Canvas.width();
    const int nHeight = Canvas.height();
    return DrawOn(Canvas, [&](QPainter& Painter) {
        for (int nTop = 0; nTop < nHeight; nTop += kRows) {
            Painter.setClipRect(0, nTop, nWidth, kRows);
            Draw(Painter);
        }
    });
}

// A copy of the part of the image that lies in the rectangle; null when none does.
QImage CopyInside(const QImage& Image, const QRect& rcPart);

// Draws once, out of sight, so that everything global that drawing needs of Qt exists from then on.
void WarmUpDrawing();

// The rectangle that a host's four numbers mean, with its edges saturated.
QRect RectFromHost(int nLeft, int nTop, int nWidth, int nHeight);

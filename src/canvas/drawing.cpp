#include "canvas/drawing.h"

#include <QBrush>
#include <QPen>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

constexpr std::int64_t kMaxCanvasBytes = std::int64_t{1} << 30;
constexpr std::int64_t kBytesPerPixel = 4;

// How strokes are smoothed. Qt 5 deprecates the first name in favour of the second, but draws pens of up to
// one pixel differently under the two, and a signature looks as it always has. Qt 6 has the second one only.
#if QT_VERSION_MAJOR < 6
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
constexpr QPainter::RenderHint kStrokeHint = QPainter::HighQualityAntialiasing;
#pragma GCC diagnostic pop
#else
constexpr QPainter::RenderHint kStrokeHint = QPainter::Antialiasing;
#endif

int Saturated(std::int64_t nValue)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(nValue, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
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
    DrawInBandsOn(Canvas, [](QPainter& Painter) {
        DrawStrokeSegment(Painter, QLineF(1, 1, 6, 5), 2.5, Qt::black);
        Painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
        Painter.drawImage(QRectF(1, 1, 4.5, 4.5), BlankCanvas(4, 4), QRectF(0, 0, 4, 4));
    });
}

QRect RectFromHost(int nLeft, int nTop, int nWidth, int nHeight)
{
    return {QPoint(nLeft, nTop),
            QPoint(Saturated(std::int64_t{nLeft} + nWidth - 1), Saturated(std::int64_t{nTop} + nHeight - 1))};
}

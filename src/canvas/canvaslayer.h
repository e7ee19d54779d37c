// What is laid over the strokes of a canvas.
#pragma once

#include "log/logfileutil.h"

#include <QImage>
#include <QRect>

// Called by the canvas only, which holds its lock meanwhile; that lock protects the layer too.
class ICanvasLayer
{
public:
    // The canvas has a new size, or was cleared for the host. Either way the layer is blank from then on.
    virtual void CanvasResized() = 0;
    virtual void CanvasCleared() = 0;

    // Whether the next merge leaves something of the layer in the canvas.
    virtual bool ShowsInCanvas() const = 0;

    // Makes SignCanvas the merge of Strokes and layer, within rcTouched where that is enough. Returns what
    // was changed. Writes its lines to eFile. May throw when memory is short.
    virtual QRect Merge(QImage& SignCanvas, const QImage& Strokes, const QRect& rcTouched,
                        ELogFile eFile) = 0;

    // The next merge covers the whole canvas, or still has to.
    virtual void OweFullMerge() = 0;
    virtual bool IsFullMergeOwed() const = 0;

protected:
    ~ICanvasLayer() = default;
};

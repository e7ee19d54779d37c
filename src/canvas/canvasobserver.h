// What is told of changes.
#pragma once

#include <QRect>

// Told of every change of a picture, on the thread that made it. Only notes it: the canvas or the picture may
// be locked meanwhile.
class ICanvasObserver
{
public:
    virtual void CanvasChanged(const QRect& rcChanged) = 0;

protected:
    ~ICanvasObserver() = default;
};

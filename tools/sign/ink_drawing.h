// The strokes that the library draws from ink.
#pragma once

#include "appearance.h"
#include "ink/inkpoints.h"
#include "model/padmodel.h"

#include <QColor>

struct InkPen
{
    const CPadModel& pad;
    int width; // 1 to 10
    QColor colour;
};

// On a canvas of 400 pixels in height, as scribera-pad has it: the pen's width counts in pixels.
sign::Ink drawnInk(const CInkSnapshot& points, const InkPen& pen);

// The strokes as pictures of any size and as vectors. The lines, their places and their widths are those of
// the library's own pictures. All throw Failure when it cannot be done.
#pragma once

#include "ink/inkpoints.h"
#include "model/padmodel.h"

#include <QByteArray>
#include <QColor>
#include <QSize>

// How the strokes are drawn.
struct Drawing
{
    const CPadModel& pad;
    QSize size; // of the canvas, in pixels
    int penWidth;
    QColor color;
    int dotsPerInch;
};

// On paper, the canvas of a drawing has this resolution, unless it is drawn as the library saves it.
constexpr int CanvasDotsPerInch = 150;

// A picture on white, of the canvas's size on paper: at twice its resolution it has twice as many pixels each
// way.
QByteArray toPng(const CInkSnapshot& ink, const Drawing& drawing);

// A page of the canvas's size on paper, with the lines as vectors.
QByteArray toPdf(const CInkSnapshot& ink, const Drawing& drawing);

// A path a stroke: the outline of its ink.
QByteArray toCompactSvg(const CInkSnapshot& ink, const Drawing& drawing);

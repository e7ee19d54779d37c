// A surface and the used part of it, drawn with characters.
#pragma once

#include <QString>

// From 0 to 1 each, where the pad's edges lie on the surface. Left may lie right of right: a surface may be
// mounted in any way.
struct UsedSurface
{
    double left;
    double top;
    double right;
    double bottom;
    bool isTurned; // the pad's upper edge runs along the surface's left or right one
};

// The surface's own proportions are width by height. 1 and 2 mark the pad's upper left and upper right
// corner.
QString drawing(const UsedSurface& used, double widthByHeight);

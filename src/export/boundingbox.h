// Where the ink of an image is, and images with their white made transparent.
#pragma once

#include "model/objectidentity.h"

#include <QImage>
#include <QRect>

// Clip settings of an export.
struct CClipSettings
{
    bool m_bClipImage = false;
    int m_nClipMarginX = 0; // pixels left and right of the ink
    int m_nClipMarginY = 0; // pixels above and below it
};

// Scans an ARGB32 image. A pixel is ink when its red, green and blue are not all 255. No ink lies outside
// rcInkArea, which may be larger than the ink's box. With logging on, every ink pixel writes lines: under
// Label, and under the tag of an edge that it moves.
//
// Gives the ink widened by the margins and clamped to the image; inclusive edges. Without ink the widening
// starts from edges that no pixel has moved, so that the left lies beyond the right unless the margins are
// huge.
QRect CheckSignImageBoundingBox(const QImage& Image, const QRect& rcInkArea, const CClipSettings& Clip,
                                const CLogLabel& Label);

// The part of the image in the rectangle, as QImage::copy() has it: the whole image for a null rectangle,
// transparent where the rectangle leaves the image, and null for one that is inside out or beyond 1 GiB.
QImage CopyOfRect(const QImage& Image, const QRect& rcRect);

// Makes every pixel of a 32-bit image that equals the colour exactly, alpha included, fully transparent; its
// red, green and blue stay.
void MakeAsTransparentImage(QImage& Image, const QColor& Color, const CLogLabel& Label);

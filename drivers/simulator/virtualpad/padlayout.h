// Where everything is on the drawn pad.
#pragma once

#include "pads.h"
#include "pensampler.h"

#include <QRectF>
#include <QSizeF>

#include <optional>

namespace virtualpad {

struct PadLayout
{
    // The pad as large as it gets in the space, in its middle.
    PadLayout(const simulator::Pad& pad, QSizeF space);

    Place placeAt(QPointF position) const;
    // Smaller lengths follow the pad's size.
    double scaled(double length) const { return length * screen.width(); }

    QRectF body;
    QRectF bezel;
    QRectF screen; // the writing area
    QRectF cancelKey;
    QRectF confirmKey;
    QRectF light;
    QRectF label;
    std::optional<QRectF> sensor; // where the pad has one
};

} // namespace virtualpad

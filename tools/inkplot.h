// What the pen did over time: position, pressure and speed, with bands where it was lifted. Throw Failure for
// ink without points.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>

#include <optional>

QByteArray toSvgPlot(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre);

// The same as a picture. Needs an application with fonts.
QByteArray toPngPlot(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre);

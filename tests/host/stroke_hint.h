#pragma once

// What every second drawing of a signature sets on its painter.

#include <QPainter>

// The old name of antialiasing is meant where there is one: Qt 5 draws pens of up to one pixel differently
// under the new one.
#if QT_VERSION_MAJOR < 6
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
inline constexpr QPainter::RenderHint strokeHint = QPainter::HighQualityAntialiasing;
#pragma GCC diagnostic pop
#else
inline constexpr QPainter::RenderHint strokeHint = QPainter::Antialiasing;
#endif

// The points as text for other programs, all fields of the records in their order. Numbers are written
// without regard to the locale.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>

// A header line, then a line a point.
QByteArray toCsv(const CInkSnapshot& ink);

// {"points": [...]}, an object a point.
QByteArray toJson(const CInkSnapshot& ink);

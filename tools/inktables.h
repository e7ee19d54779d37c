// The points as text for other programs, all fields of the records in their order, and back. Numbers are
// written without regard to the locale.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>
#include <QString>

// A header line, then a line a point.
QByteArray toCsv(const CInkSnapshot& ink);

// {"points": [...]}, an object a point.
QByteArray toJson(const CInkSnapshot& ink);

// What the two above wrote, from the input of that name. Throw Failure.
CInkSnapshot fromCsv(const QByteArray& text, const QString& name);
CInkSnapshot fromJson(const QByteArray& text, const QString& name);

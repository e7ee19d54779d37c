// The points as signature time series of ISO/IEC 19794-7:2007. What of the layout is sure and what is not,
// and what gets lost, is told in docs/ink-formats.md.
#pragma once

#include "ink/inkpoints.h"
#include "model/padmodel.h"

#include <QByteArray>
#include <QString>

#include <optional>

// The full form: channels X, Y, time, pressure and tip switch. The resolution, where it is known, is that of
// X and Y in pad units a millimetre. Throws Failure for points that the form cannot hold.
QByteArray toIsoSignature(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre);

// From the input of that name. With the size of pad units, lengths become these; without it, positions are
// pad units already. Throws Failure.
CInkSnapshot fromIsoSignature(const QByteArray& bytes, const QString& name,
                              std::optional<double> unitsPerMillimetre);

// The compact form: a byte a channel, X, Y, steps of time, pressure and tip switch, in shares of what the pad
// has.
QByteArray toCompactIsoSignature(const CInkSnapshot& ink, const CPadModel& pad);
CInkSnapshot fromCompactIsoSignature(const QByteArray& bytes, const QString& name, const CPadModel& pad);

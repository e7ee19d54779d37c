// The points in the Ink Markup Language (InkML) of the W3C.
#pragma once

#include "ink/inkpoints.h"
#include "inkto.h"

#include <QByteArray>
#include <QString>

// A trace a stroke, its end included, with every field of the records. The pad is named, and the size of its
// units told, where they are known.
QByteArray toInkMl(const CInkSnapshot& ink, const Circumstances& circumstances);

// The traces of any program. With the size of pad units, lengths become these; with a pad, pressures become
// its levels. What a document does not tell is assumed; see docs/ink-formats.md. From the input of that name.
// Throws Failure.
CInkSnapshot fromInkMl(const QByteArray& text, const QString& name, const Circumstances& circumstances);

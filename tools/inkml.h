// The points in the Ink Markup Language (InkML) of the W3C.
#pragma once

#include "ink/inkpoints.h"
#include "model/padmodel.h"

#include <QByteArray>
#include <QString>

// A trace a stroke, its end included, with every field of the records. The pad is named where it is known.
QByteArray toInkMl(const CInkSnapshot& ink, const CPadModel* pad);

// The traces of any program, their positions as pad units. What a document does not tell is assumed; see
// docs/ink-formats.md. From the input of that name. Throws Failure.
CInkSnapshot fromInkMl(const QByteArray& text, const QString& name);

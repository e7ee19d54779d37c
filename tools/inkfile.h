// From and to files: the ink packet stream that comes in, the text that goes out.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>
#include <QString>

// Reads a whole ink packet stream; "-" is standard input. Throws Failure.
CInkSnapshot readInk(const QString& path);

// "-" is standard output. A partly written file is removed. Throws Failure.
void writeOutput(const QByteArray& text, const QString& path);

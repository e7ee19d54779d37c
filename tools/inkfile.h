// The ink packet stream that comes in.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>
#include <QString>

// The text of a whole ink packet stream; "-" is standard input. Throws Failure.
QByteArray readInkText(const QString& path);

// The points of such a text, which came from there. Throws Failure.
CInkSnapshot inkOf(const QByteArray& text, const QString& path);

// Reads a whole ink packet stream; "-" is standard input. Throws Failure.
CInkSnapshot readInk(const QString& path);

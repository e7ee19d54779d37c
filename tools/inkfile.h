// What comes in: files, and the ink packet stream.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>
#include <QString>

// As faults of a file name it; "-" is standard input.
QString inputName(const QString& path);

// In mebibytes: some seven million points of a stream, hours of writing.
constexpr int LargestInput = 256;

// All of a file; "-" is standard input. Throws Failure, also for one that is larger.
QByteArray readInput(const QString& path, int mebibytes = LargestInput);

// The points of such a text, which came from there. Throws Failure.
CInkSnapshot inkOf(const QByteArray& text, const QString& path);

// Reads a whole ink packet stream; "-" is standard input. Throws Failure.
CInkSnapshot readInk(const QString& path);

// A live windowless object of the K210 family, whose Base64Decode is fuzzed.
#pragma once

#include "scriberasdk.h"

#include <QByteArray>

// Starts the simulated pad in a directory of its own, which is removed when the process ends by itself.
void startPad();

// The result of a decode that writes into that directory. The text ends at its first zero byte.
int decode(int imageTypeId, const QByteArray& text);

// Whether the last decode wrote an image.
bool hasDecodedFile();

// The points of the last decode are those of this stream.
void requireDecodedPoints(const QByteArray& stream);

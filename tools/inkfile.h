// The ink packet stream that comes in.
#pragma once

#include "ink/inkpoints.h"

#include <QString>

// Reads a whole ink packet stream; "-" is standard input. Throws Failure.
CInkSnapshot readInk(const QString& path);

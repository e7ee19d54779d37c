// Text that goes out, to a file or to standard output.
#pragma once

#include <QByteArray>
#include <QString>

// "-" is standard output. A partly written file is removed. Throws Failure.
void writeOutput(const QByteArray& text, const QString& path);

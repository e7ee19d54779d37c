#include "inkfile.h"

#include "failures.h"
#include "ink/inkstream.h"
#include "simulator/recording.h"

#include <QFile>

#include <cstdio>

namespace {

// Some seven million points: hours of writing.
constexpr qint64 LargestText = qint64{256} << 20;

bool isStandardStream(const QString& path)
{
    return path == QLatin1String("-");
}

QString nameOf(const QString& path)
{
    return isStandardStream(path) ? QStringLiteral("standard input") : path;
}

// In blocks, because a pipe does not tell how much is coming.
QByteArray readWhole(QFile& file, const QString& name)
{
    QByteArray content;
    for (;;) {
        const QByteArray block = file.read(1 << 16);
        if (file.error() != QFileDevice::NoError)
            throw Failure{name + QStringLiteral(": cannot be read: ") + file.errorString()};
        if (block.isEmpty())
            return content;
        content += block;
        if (content.size() > LargestText)
            throw Failure{name + QStringLiteral(": is larger than 256 MiB")};
    }
}

} // namespace

QByteArray readInkText(const QString& path)
{
    QFile file(path);
    if (!(isStandardStream(path) ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        throw Failure{nameOf(path) + QStringLiteral(": cannot be opened: ") + file.errorString()};
    return readWhole(file, nameOf(path));
}

CInkSnapshot inkOf(const QByteArray& text, const QString& path)
{
    CInkPointList points;
    if (const std::optional<CInkStreamFault> fault = ReadInkStreamText(text, points))
        throw Failure{QStringLiteral("%1:%2: ").arg(nameOf(path)).arg(fault->m_nOffset) + fault->m_strReason};
    return points.Snapshot();
}

CInkSnapshot readInk(const QString& path)
{
    return inkOf(readInkText(path), path);
}

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

CInkSnapshot readInk(const QString& path)
{
    const bool fromStandardInput = isStandardStream(path);
    const QString name = fromStandardInput ? QStringLiteral("standard input") : path;
    QFile file(path);
    if (!(fromStandardInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        throw Failure{name + QStringLiteral(": cannot be opened: ") + file.errorString()};
    CInkPointList points;
    if (const std::optional<CInkStreamFault> fault = ReadInkStreamText(readWhole(file, name), points))
        throw Failure{QStringLiteral("%1:%2: ").arg(name).arg(fault->m_nOffset) + fault->m_strReason};
    return points.Snapshot();
}

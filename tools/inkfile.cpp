#include "inkfile.h"

#include "failures.h"
#include "ink/inkstream.h"
#include "simulator/recording.h"
#include "text.h"

#include <QFile>

#include <cstdio>

namespace {

bool isStandardStream(const QString& path)
{
    return path == QLatin1String("-");
}

// In blocks, because a pipe does not tell how much is coming.
QByteArray readWhole(QFile& file, const QString& name, int mebibytes)
{
    QByteArray content;
    for (;;) {
        const QByteArray block = file.read(1 << 16);
        if (file.error() != QFileDevice::NoError)
            throw Failure{Text::tr("%1: cannot be read: %2").arg(name, file.errorString())};
        if (block.isEmpty())
            return content;
        content += block;
        if (content.size() > qint64{mebibytes} << 20)
            throw Failure{Text::tr("%1: is larger than %2 MiB").arg(name).arg(mebibytes)};
    }
}

} // namespace

QString inputName(const QString& path)
{
    return isStandardStream(path) ? Text::tr("standard input") : path;
}

QByteArray readInput(const QString& path, int mebibytes)
{
    QFile file(path);
    if (!(isStandardStream(path) ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        throw Failure{Text::tr("%1: cannot be opened: %2").arg(inputName(path), file.errorString())};
    return readWhole(file, inputName(path), mebibytes);
}

CInkSnapshot inkOf(const QByteArray& text, const QString& path)
{
    CInkPointList points;
    if (const std::optional<CInkStreamFault> fault = ReadInkStreamText(text, points))
        throw Failure{QStringLiteral("%1:%2: ").arg(inputName(path)).arg(fault->m_nOffset) +
                      fault->m_strReason};
    return points.Snapshot();
}

CInkSnapshot readInk(const QString& path)
{
    return inkOf(readInput(path), path);
}

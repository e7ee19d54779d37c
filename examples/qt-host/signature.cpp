#include "signature.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <algorithm>

QVector<InkPoint> readInk(const QByteArray& text)
{
    const auto decoded =
        QByteArray::fromBase64Encoding(text.simplified(), QByteArray::AbortOnBase64DecodingErrors);
    const QByteArray& stream = decoded.decoded;
    constexpr int recordSize = sizeof(_POINTDATA);
    if (!decoded || stream.size() < recordSize || stream.size() % recordSize != 1 || stream.back() != 0)
        return {};
    QVector<InkPoint> points;
    const auto first = qFromLittleEndian<qint64>(stream.constData() + offsetof(_POINTDATA, llTick));
    for (const char* record = stream.constData(); record + recordSize <= stream.constData() + stream.size();
         record += recordSize) {
        const auto tick = qFromLittleEndian<qint64>(record + offsetof(_POINTDATA, llTick));
        const int earliest = points.isEmpty() ? 0 : points.last().millisecond;
        // A stream from elsewhere may have any ticks; time never runs back here, nor for more than an hour.
        const auto elapsed = std::clamp<double>(double(tick) - double(first), earliest, 3600000);
        points.append({QPointF(qFromLittleEndian<quint16>(record + offsetof(_POINTDATA, usX)),
                               qFromLittleEndian<qint16>(record + offsetof(_POINTDATA, sY))),
                       double(qFromLittleEndian<qint16>(record + offsetof(_POINTDATA, sPressure))),
                       record[offsetof(_POINTDATA, ucStatus)] != 0, int(elapsed)});
    }
    return points;
}

bool Signature::isWhole() const
{
    // A tap leaves points and no ink: a stroke needs a second point before the pen is lifted.
    const QVector<InkPoint> written = readInk(ink);
    const bool hasStroke =
        std::adjacent_find(written.begin(), written.end(), [](const InkPoint& one, const InkPoint& next) {
            return !one.lifted && !next.lifted;
        }) != written.end();
    return hasStroke && !canvas.isNull() &&
           std::none_of(files.begin(), files.end(), [](const auto& file) { return file.second.isEmpty(); });
}

QByteArray Signature::file(const ExportSettings& settings) const
{
    const auto found = files.find(settings);
    return found == files.end() ? QByteArray() : found->second;
}

QStringList Signature::saveEverything(const QString& folder) const
{
    const QDir to(folder);
    QStringList failed;
    const auto write = [&](const QString& name, const QByteArray& content) {
        if (!writeFile(to.filePath(name), content))
            failed += to.filePath(name);
    };
    for (const int type : imageTypes)
        write(QStringLiteral("signature.") + suffix(type), file({type}));
    write(QStringLiteral("signature.ink"), ink);
    if (!fingerprint.isEmpty())
        write(QStringLiteral("fingerprint.png"), fingerprint);
    return failed;
}

QString suffix(int imageType)
{
    switch (imageType) {
    case EBITI_BITMAP:
        return QStringLiteral("bmp");
    case EBITI_JPG:
        return QStringLiteral("jpg");
    case EBITI_PDF:
        return QStringLiteral("pdf");
    case EBITI_SVG:
        return QStringLiteral("svg");
    default:
        return QStringLiteral("png");
    }
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

// A signature as the host keeps it. Needs neither the pad nor the library: it is read, saved and played when
// the pad is closed again.
#pragma once

#include <scriberasdk.h>

#include <QByteArray>
#include <QImage>
#include <QPointF>
#include <QStringList>
#include <QVector>

#include <map>
#include <tuple>

struct InkPoint
{
    QPointF place; // in pad units
    double pressure = 0;
    bool lifted = false;
    int millisecond = 0; // since the first point
};

// Empty when the text is no ink packet stream.
QVector<InkPoint> readInk(const QByteArray& text);

struct ExportSettings
{
    int imageType = EBITI_PNG;
    int dpi = 300;
    bool clip = true;

    bool operator<(const ExportSettings& other) const
    {
        return std::tie(imageType, dpi, clip) < std::tie(other.imageType, other.dpi, other.clip);
    }
};

// Taken in one go at the confirmation; what is drawn afterwards does not change it.
struct Signature
{
    int points = 0;
    QImage canvas;                              // all of it, as it was seen
    std::map<ExportSettings, QByteArray> files; // every kind of file in every setting
    QByteArray ink;                             // the ink packet stream
    QByteArray fingerprint;                     // a PNG; empty when no finger was read

    bool isWhole() const; // there is a stroke, and no file is missing
    QByteArray file(const ExportSettings& settings) const;
    QStringList saveEverything(const QString& folder) const; // what did not succeed

    static constexpr int imageTypes[] = {EBITI_BITMAP, EBITI_JPG, EBITI_PNG, EBITI_PDF, EBITI_SVG};
    static constexpr int resolutions[] = {150, 300};
};

QString suffix(int imageType); // "png"
bool writeFile(const QString& path, const QByteArray& content);

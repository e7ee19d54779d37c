// A host: takes signatures away as texts, and proves that nothing is lost on the way. Each signature's ink
// packet stream is played back on the simulated pad and taken away once more.
//
//   carry_away <library> <output folder> <recording>...
//
// Runs, like any host, in a folder that holds the pad's driver; without a window.
#include "pad.h"

#include <QDir>
#include <QFile>

#include <tuple>

namespace {

using Point = std::tuple<int, int, int, int>; // x, y, pressure, stroke end

struct Signature
{
    std::vector<Point> points;
    QByteArray stream;
    QByteArray canvas; // as a Base64 bitmap
    QByteArray png;
    QByteArray svg;
};

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

int sizeOf(const QByteArray& text)
{
    return static_cast<int>(text.size());
}

Signature take(const Pad& pad, const char* title, const QString& recording)
{
    qputenv("SCRIBERA_SIM_RECORDING", recording.toLocal8Bit());
    Signature result;
    if (!pad.open(nullptr))
        return result;
    pad.waitForKey(title);
    const int count = pad.points();
    for (_PACKETS point{}; point.nIndex < count; ++point.nIndex) {
        if (pad.call("getPackets", &point) == ARI_SUCCESS)
            result.points.emplace_back(point.usX, point.sY, point.sPressure, point.ucStatus);
    }
    const auto encoded = [&pad](int type) {
        return pad.text("PacketsBase64Encode", "PacketsBase64EncodeFree", type);
    };
    result.stream = encoded(EBITI_INK);
    result.canvas = encoded(EBITI_BITMAP);
    result.png = encoded(EBITI_PNG);
    result.svg = pad.text("GetSVGImageBase64Data", "FreeSVGImageBase64Data");
    QFile::remove("/tmp/Scrsign.svg"); // where the library draws it, for everybody on this machine to find
    pad.call("UnInitialDevice");
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = argumentsOf("carry_away <library> <output folder> <recording>...", 3, 1000);
    QLibrary library(arguments[1]);
    load(library);
    bool good = true;
    int recording = 3;
    std::printf("%-7s %9s %9s %9s %9s  %s\n", "model", "ink text", "png text", "bmp text", "svg text",
                "played back");
    for (const Model& model : kModels) {
        const Pad pad(library, model);
        const QString stem = arguments[2] + '/' + model.name;
        good = QDir().mkpath(stem) && good;
        const Signature first = take(pad, model.name, arguments[recording]);
        recording = recording + 1 < arguments.size() ? recording + 1 : 3;
        good = writeFile(stem + "/ink.txt", first.stream) && writeFile(stem + "/png.txt", first.png) &&
               writeFile(stem + "/svg.txt", first.svg) && good;
        const Signature again =
            take(pad, qPrintable(QString(model.name) + " played back"), stem + "/ink.txt");
        const bool samePoints = !first.points.empty() && again.points == first.points;
        const bool sameCanvas = !first.canvas.isEmpty() && again.canvas == first.canvas;
        good = samePoints && sameCanvas && good;
        std::printf("%-7s %9d %9d %9d %9d  %s points, %s canvas\n", model.name, sizeOf(first.stream),
                    sizeOf(first.png), sizeOf(first.canvas), sizeOf(first.svg), samePoints ? "same" : "OTHER",
                    sameCanvas ? "same" : "OTHER");
        std::fflush(stdout);
    }
    return good ? 0 : 1;
}

// A host: signs once on every pad, without a window and with one, and takes the signature away as files.
//
//   sign_on_every_pad <library> <output folder> <recording>...
//
// Runs in a folder that holds the pad's driver, ./libscriberadrv.so; here that is the simulated pad, which
// the environment tells what to play.
#include "pad.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

namespace {

struct FileType
{
    const char* suffix;
    int id;
};

constexpr FileType kFileTypes[] = {
    {"bmp", EBITI_BITMAP}, {"jpg", EBITI_JPG}, {"png", EBITI_PNG}, {"pdf", EBITI_PDF}, {"svg", EBITI_SVG}};

int countStrokes(const Pad& pad, int points)
{
    int strokes = 0;
    for (_PACKETS point{}; point.nIndex < points; ++point.nIndex) {
        if (pad.call("getPackets", &point) == ARI_SUCCESS)
            strokes += point.ucStatus;
    }
    return strokes;
}

// Saves every file type and returns their sizes as text; empty when one was not saved.
QString saveAll(const Pad& pad, const QString& stem)
{
    QStringList sizes;
    for (const FileType& type : kFileTypes) {
        const QString path = stem + '.' + type.suffix;
        if (!pad.save(type.id, path))
            return {};
        sizes << QStringLiteral("%1 %2").arg(type.suffix).arg(QFileInfo(path).size());
    }
    return sizes.join(QStringLiteral(", "));
}

bool sign(const Pad& pad, const char* title, QWidget* window, const QString& stem)
{
    if (!pad.open(window))
        return false;
    pad.call("SetPenWidth", 2);
    const double seconds = pad.waitForKey(title);
    const int points = pad.points();
    const int strokes = countStrokes(pad, points);
    pad.call("SetSaveCenterImageClip", false, 0, 0);
    const QString whole = saveAll(pad, stem);
    pad.call("SetSaveCenterImageClip", true, 10, 10);
    const QString clipped = saveAll(pad, stem + QStringLiteral("-clipped"));
    std::printf("%-18s %6d %7d %7.1f  %s\n%-42s %s\n", title, points, strokes, seconds, qPrintable(whole),
                "  clipped", qPrintable(clipped));
    std::fflush(stdout);
    const bool confirmed = pressedKey == 1;
    return pad.call("UnInitialDevice") == ARI_SUCCESS && confirmed && points > 0 && !whole.isEmpty() &&
           !clipped.isEmpty();
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments =
        argumentsOf("sign_on_every_pad <library> <output folder> <recording>...", 3, 1000);
    QLibrary library(arguments[1]);
    load(library);
    bool good = true;
    int recording = 3;
    std::printf("%-18s %6s %7s %7s  %s\n", "model", "points", "strokes", "seconds", "files and their bytes");
    for (const Model& model : kModels) {
        qputenv("SCRIBERA_SIM_RECORDING", arguments[recording].toLocal8Bit());
        recording = recording + 1 < arguments.size() ? recording + 1 : 3;
        const QString folder = arguments[2] + '/' + model.name;
        good = QDir().mkpath(folder) && good;
        const Pad pad(library, model);
        QWidget window;
        window.resize(760, 420);
        window.show();
        good = sign(pad, qPrintable(QString(model.name) + " windowless"), nullptr, folder + "/windowless") &&
               good;
        good = sign(pad, qPrintable(QString(model.name) + " widget"), &window, folder + "/widget") && good;
    }
    return good ? 0 : 1;
}

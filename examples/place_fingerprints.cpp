// A host: takes a signature and a fingerprint on the K421B and puts the fingerprint everywhere it can go.
//
//   place_fingerprints <library> <output folder> <recording>
//
// Runs, like any host, in a folder that holds the pad's driver; the simulated one also delivers a
// fingerprint.
#include "pad.h"

#include <QDir>
#include <QFile>
#include <QWidget>

namespace {

constexpr Model kModel = {"K421B", SCK421B_DEVICE, 737};

struct Placement
{
    const char* name;
    bool windowless;
    bool separate; // the fingerprint goes to a canvas or window of its own
    int place[4];  // left, top, width, height; no width: in the middle of the signature
};

constexpr Placement kPlacements[] = {{"none", true, false, {0, 0, 0, 0}},
                                     {"same-widget", false, false, {540, 90, 160, 220}},
                                     {"different-widget", false, true, {0, 0, 22, 30}},
                                     {"own-canvas", true, true, {10, 10, 208, 288}}};

bool take(const Pad& pad, const Placement& placement, QWidget& window, QWidget& other, const QString& folder)
{
    QWidget* const parent = placement.windowless ? nullptr : &window;
    if (!pad.open(parent))
        return false;
    pad.call("SetPenWidth", 2);
    int placed = ARI_SUCCESS;
    if (placement.place[2] > 0)
        placed = pad.call("SetDisplayedFPImageAt", placement.separate ? &other : parent, 228, 308,
                          placement.place[0], placement.place[1], placement.place[2], placement.place[3]);
    pad.waitForKey(placement.name);
    const QString stem = folder + '/' + placement.name;
    const bool saved = pad.save(EBITI_PNG, stem + "-signature.png");
    const QByteArray alone = QByteArray::fromBase64(
        pad.text("GetFPImageBase64Data", "FreeFPImageBase64Data", int{EBITI_PNG}, true));
    QFile file(stem + "-fingerprint.png");
    const bool exported =
        !alone.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(alone) == alone.size();
    std::printf("%-18s signature %s, fingerprint %s\n", placement.name, saved ? "saved" : "NOT SAVED",
                alone.isEmpty() ? "only in the signature" : "exported too");
    std::fflush(stdout);
    const bool ended = pad.call("UnInitialDevice") == ARI_SUCCESS;
    // Without a window and a place of its own, the fingerprint is to be had in the signature alone.
    const bool expectsExport = !placement.windowless || placement.separate;
    return placed == ARI_SUCCESS && saved && exported == expectsExport && pressedKey == 1 && ended;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments =
        argumentsOf("place_fingerprints <library> <output folder> <recording>", 3, 3);
    QLibrary library(arguments[1]);
    load(library);
    qputenv("SCRIBERA_SIM_RECORDING", arguments[3].toLocal8Bit());
    bool good = QDir().mkpath(arguments[2]);
    const Pad pad(library, kModel);
    for (const Placement& placement : kPlacements) {
        QWidget window;
        window.resize(760, 420);
        window.show();
        QWidget other;
        other.resize(228, 308);
        other.show();
        good = take(pad, placement, window, other, arguments[2]) && good;
    }
    return good ? 0 : 1;
}

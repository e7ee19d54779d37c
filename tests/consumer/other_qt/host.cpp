// A host with windows of the Qt that the library is not built for, linked as such a host would be.
//
//   other_qt_host MODEL
//
// Runs in a folder that holds the simulated pad's driver, which plays a signature and presses a key. Asks for
// widgets with logging on, then signs without one. Exit code 1 when something was not as it should be, with
// what it was.
#include "scriberasdk.h"
#include "scriberasdk_ext.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QThread>
#include <QWidget>

#include <cstdio>
#include <string_view>

namespace {

struct Family
{
    std::string_view model;
    int type;
    decltype(&SCK210_InitialDevice) open;
    decltype(&SCK210_InitialDeviceByWId) openById;
    decltype(&SCK210_UnInitialDevice) close;
    decltype(&SCK210_GetDeviceConfirmOrCancelKeyStatus) key;
    decltype(&SCK210_SaveDrawingImage) save;
    decltype(&SCK210_AboutBox) about;
    decltype(&SCK210_AboutBoxByWId) aboutById;
};

#define FAMILY(Model)                                                                                        \
    {#Model,                                                                                                 \
     SC##Model##_DEVICE,                                                                                     \
     SC##Model##_InitialDevice,                                                                              \
     SC##Model##_InitialDeviceByWId,                                                                         \
     SC##Model##_UnInitialDevice,                                                                            \
     SC##Model##_GetDeviceConfirmOrCancelKeyStatus,                                                          \
     SC##Model##_SaveDrawingImage,                                                                           \
     SC##Model##_AboutBox,                                                                                   \
     SC##Model##_AboutBoxByWId},
constexpr Family families[] = {SCRIBERA_FAMILIES(FAMILY)};

bool failed = false;

void expect(bool condition, const char* what)
{
    if (!condition) {
        std::printf("not so: %s\n", what);
        failed = true;
    }
}

void expectRefusal(bool opened)
{
    char words[1024];
    expect(!opened, "the pad does not open");
    expect(SCRX_LastStartFailure(words, sizeof words) == SCRX_START_WRONG_QT, "because of the other Qt");
    expect(!g_pSignWidget, "there is no object");
    std::puts(words);
}

bool hasInk(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < 128)
                return true;
    return false;
}

void askForWidgets(const Family& family)
{
    QWidget window;
    window.resize(640, 480);
    window.show();
    QCoreApplication::processEvents();
    g_bEnableLog = 1;
    expectRefusal(family.open(family.type, &window, 0, 0, 400, 250));
    expectRefusal(family.openById(family.type, window.winId(), 0, 0, 400, 250));
    family.about(&window);
    family.aboutById(window.winId());
    g_bEnableLog = 0;
    expect(window.children().isEmpty(), "nothing was put into the window");
    window.resize(320, 240);
    QCoreApplication::processEvents();
}

void signWithoutWidget(const Family& family)
{
    if (!family.open(family.type, nullptr, 0, 0, 400, 250)) {
        expect(false, "the pad opens without a window");
        return;
    }
    QElapsedTimer timer;
    timer.start();
    int key = -1; // told once
    while ((key = family.key(family.type)) == -1 && timer.elapsed() < 60'000) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
    expect(key == 1, "the signature is confirmed");
    wchar_t path[] = L"signature.jpg";
    expect(family.save(family.type, EBITI_JPG, path, 0) == ARI_SUCCESS, "the signature is saved");
    expect(hasInk(QImage(QStringLiteral("signature.jpg"))), "the file shows ink");
    expect(family.close(family.type) == ARI_SUCCESS, "the pad closes");
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const std::string_view model = argc > 1 ? argv[1] : "";
    bool known = false;
    for (const Family& family : families) {
        if (family.model != model)
            continue;
        known = true;
        askForWidgets(family);
        signWithoutWidget(family);
    }
    expect(known, "the model is known");
    return failed ? 1 : 0;
}

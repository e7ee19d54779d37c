#include <QApplication>
#include <QWidget>
#include <scriberasdk.h>
int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QWidget window;
    window.resize(594, 400); // in the proportions of the pad
    if (!SCT580_InitialDevice(SCT580_DEVICE, &window, 0, 0, 594, 400))
        return 1; // the canvas fills the window
    SCT580_SignatureStatusCallback(SCT580_DEVICE,
                                   [](int) { QMetaObject::invokeMethod(qApp, &QApplication::quit); });
    window.show();
    QApplication::exec(); // until a key of the pad is tapped
    wchar_t path[] = L"signature.svg";
    const int result = SCT580_SaveDrawingImage(SCT580_DEVICE, EBITI_SVG, path, 1);
    return SCT580_UnInitialDevice(SCT580_DEVICE) != ARI_SUCCESS || result != ARI_SUCCESS;
}

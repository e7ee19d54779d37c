// A Qt window with the signature in it: confirm saves it and closes the window, cancel lets the person start
// again.
#include <QApplication>
#include <QResizeEvent>
#include <QWidget>

#include <cstdio>

#include <scriberasdk.h>

class SignWindow : public QWidget
{
public:
    bool open()
    {
        // On the GUI thread, like everything in this class.
        if (!SCK210_InitialDevice(SCK210_DEVICE, this, 0, 0, width(), height()))
            return false;
        canvas = static_cast<QWidget*>(g_pSignWidget);
        SCK210_SignatureStatusCallback(SCK210_DEVICE, keyTapped);
        return true;
    }

    ~SignWindow() override { SCK210_UnInitialDevice(SCK210_DEVICE); }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        // Ink stays where it is in pixels: once there is some, the canvas keeps its size.
        if (canvas && SCK210_GetTotalPacketsNumber(SCK210_DEVICE) < 1)
            canvas->resize(event->size());
    }

private:
    // Runs on the library's thread and returns at once.
    static void keyTapped(int key)
    {
        QMetaObject::invokeMethod(
            qApp, [key] { key == 1 ? confirm() : cancel(); }, Qt::QueuedConnection);
    }

    static void confirm()
    {
        wchar_t path[] = L"signature.png";
        SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10);
        const int result = SCK210_SaveDrawingImage(SCK210_DEVICE, EBITI_PNG, path, 1);
        std::puts(result == ARI_SUCCESS ? "saved" : "not saved");
        QApplication::exit(result == ARI_SUCCESS ? 0 : 1);
    }

    static void cancel()
    {
        SCK210_Clear(SCK210_DEVICE);
        std::puts("cleared");
    }

    QWidget* canvas = nullptr; // the library's; moved and resized here, never deleted
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    SignWindow window;
    window.setWindowTitle(QStringLiteral("Please sign"));
    window.resize(660, 400); // in the proportions of the pad, 2360 x 1430
    if (!window.open()) {
        std::fputs("no pad\n", stderr);
        return 1;
    }
    window.show();
    return QApplication::exec();
}

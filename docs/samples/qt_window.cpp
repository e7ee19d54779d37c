// A Qt window with the signature in it: confirm saves it and closes the window, cancel lets the person start
// again. The canvas has a pixel for each pixel of the screen, however fine that is.
#include <QApplication>
#include <QGraphicsView>
#include <QResizeEvent>

#include <cstdio>

#include <scriberasdk.h>

class SignWindow : public QGraphicsView
{
public:
    SignWindow()
    {
        setScene(new QGraphicsScene(this));
        scene()->addWidget(paper);
        setRenderHint(QPainter::SmoothPixmapTransform);
        setFrameShape(NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    }

    ~SignWindow() override { SCK210_UnInitialDevice(SCK210_DEVICE); }

    bool open()
    {
        // On the GUI thread, like everything in this class but keyTapped().
        const QSize pixels = size() * devicePixelRatioF();
        if (!SCK210_InitialDevice(SCK210_DEVICE, paper, 0, 0, pixels.width(), pixels.height()))
            return false;
        canvas = static_cast<QWidget*>(g_pSignWidget);
        // In pixels of the canvas, 10 at most.
        SCK210_SetPenWidth(SCK210_DEVICE, qMin(10, qRound(3 * devicePixelRatioF())));
        SCK210_SignatureStatusCallback(SCK210_DEVICE, keyTapped);
        fit();
        return true;
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QGraphicsView::resizeEvent(event);
        if (canvas)
            fit();
    }

private:
    void fit()
    {
        // Ink stays where it is in pixels: once there is some, the canvas keeps its size, and only its
        // picture grows or shrinks.
        if (SCK210_GetTotalPacketsNumber(SCK210_DEVICE) < 1) {
            canvas->resize(size() * devicePixelRatioF());
            paper->resize(canvas->size());
        }
        const double scale = qMin(double(width()) / canvas->width(), double(height()) / canvas->height());
        setSceneRect(canvas->rect());
        setTransform(QTransform::fromScale(scale, scale));
    }

    // On the library's thread. While this runs no pen comes down: what is saved and cleared here is what the
    // person had signed when the key was touched.
    static void keyTapped(int key)
    {
        static bool saved = false; // the first confirmation counts
        if (saved)
            return;
        if (key == 1) {
            wchar_t path[] = L"signature.png";
            SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10);
            saved = SCK210_SaveDrawingImage(SCK210_DEVICE, EBITI_PNG, path, 1) == ARI_SUCCESS;
            std::puts(saved ? "saved" : "not saved"); // not without ink, for example
            if (saved)
                QMetaObject::invokeMethod(qApp, &QApplication::quit, Qt::QueuedConnection);
        } else {
            SCK210_Clear(SCK210_DEVICE); // the canvas and the points
            SCK210_Clear(SCK210_DEVICE); // now the pad, too
            std::puts("cleared");
        }
    }

    QWidget* const paper = new QWidget; // the scene deletes it
    QWidget* canvas = nullptr;          // the library's; moved and resized here, never deleted
};

int main(int argc, char** argv)
{
#if QT_VERSION_MAJOR < 6 // later ones do so unasked
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
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

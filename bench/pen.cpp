// What a pen sample costs on its way through the driver's callback.
#include "benchmarks.h"
#include "pad.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr Effort SignatureEffort{.rounds = 15};

void takeNotice(unsigned long, long) {}

std::shared_ptr<Pad> openPad(Library& library, const Model& model, const QSize& size)
{
    auto pad = std::make_shared<Pad>(library, model, size);
    require(pad->function<bool(int, ScriberaRealTimeSignDataCallback)>("RealTimeSignatureDataCallback")(
                pad->deviceType(), takeNotice),
            "no callback");
    return pad;
}

// Both sides have drawn the same signature before anything is measured.
void requireSamePicture(const Pad& pad, const QImage& image)
{
    require(pad.canvas() == image.convertToFormat(pad.canvas().format()),
            "the two sides draw different pictures");
}

void registerMove(const Model& model, const QSize& size, bool hasFingerprint)
{
    const std::string name = std::string("pen move") + (hasFingerprint ? " with fingerprint" : "") + "/" +
                             model.name + "/" + nameOf(size);
    compare(name, {.ratio = hasFingerprint ? 1.5 : 1.1}, SignatureEffort, [&model, size, hasFingerprint] {
        const auto signature = std::make_shared<Signature>(model, size);
        const auto pad = openPad(Library::shipped(), model, size);
        const auto image = std::make_shared<QImage>(blankImage(size));
        pad->write(*signature);
        drawBare(*image, *signature);
        requireSamePicture(*pad, *image);
        if (hasFingerprint)
            pad->takeFingerprint();
        return Sides{movesOf(pad, signature), segmentsOf(image, signature)};
    });
}

void registerLogOff()
{
    const QSize size = canvasSizes.front();
    compare("log off/K210/" + nameOf(size), {.ratio = 1.02}, {.rounds = 60}, [size] {
        const Model& model = modelNamed("K210");
        const auto signature = std::make_shared<Signature>(model, size);
        return Sides{movesOf(openPad(Library::shipped(), model, size), signature),
                     movesOf(openPad(Library::withoutLog(), model, size), signature)};
    });
}

constexpr char LogFile[] = "/tmp/scriberasdk.log";

int linesInLog()
{
    std::FILE* const file = std::fopen(LogFile, "r");
    require(file != nullptr, "there is no log");
    int lines = 0;
    for (int c = std::getc(file); c != EOF; c = std::getc(file))
        lines += c == '\n';
    std::fclose(file);
    return lines;
}

// A line as long as those of a move.
const std::string line =
    "[CK210SignObj::RxK210SignPadRawData()]:<123456789>-Pen_Move, dblSignWndX=123.456789, "
    "dblSignWndY=98.765432, dblSignWndPressure=2.345678, \n";

// As anybody writes a log.
void appendLine(const char* path)
{
    std::FILE* const file = std::fopen(path, "a");
    require(file && std::fputs(line.c_str(), file) >= 0, "a line is not written");
    std::fclose(file);
}

// By the fewest calls of the system that append a line.
void appendLineBySystem(const char* path)
{
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    require(file >= 0 && write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size()),
            "a line is not written");
    close(file);
}

void registerLogOn(const std::string& name, const Promise& promise, void (*append)(const char*))
{
    const QSize size = canvasSizes.front();
    compare(name + "/K210/" + nameOf(size), promise, SignatureEffort, [size, append] {
        const Model& model = modelNamed("K210");
        const auto signature = std::make_shared<Signature>(model, size);
        const auto pad = openPad(Library::shipped(), model, size);
        // How many lines a move has: those of a touch with a move, less those of a touch.
        const auto linesOf = [&](std::size_t samples) {
            std::remove(LogFile);
            Library::shipped().enableLog(true);
            for (std::size_t at = 0; at < samples; ++at)
                pad->sample(signature->strokes.front()[at]);
            Library::shipped().enableLog(false);
            return linesInLog();
        };
        const int lines = linesOf(2) - linesOf(1);
        const auto quiet = movesOf(pad, signature);
        const auto library = [=](std::vector<double>& times) {
            std::remove(LogFile);
            Library::shipped().enableLog(true);
            quiet(times);
            Library::shipped().enableLog(false);
        };
        const auto bare = [=](std::vector<double>& times) {
            std::remove("bare.log");
            const double start = threadTime();
            for (int left = lines * signature->moves; left > 0; --left)
                append("bare.log");
            times.push_back((threadTime() - start) / signature->moves);
        };
        return Sides{library, bare};
    });
}

// Draws what is exposed out of an image, and nothing else. Another thread tells it what was touched.
class BareWidget : public QWidget
{
public:
    explicit BareWidget(const QSize& size) : m_image(blankImage(size)) { resize(size); }

    void touch(const QRect& touched) { QCoreApplication::postEvent(this, new Touch(touched)); }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QWidget::event(event);
        update(static_cast<Touch*>(event)->touched);
        return true;
    }

    void paintEvent(QPaintEvent* event) override
    {
        QPainter painter(this);
        painter.drawImage(event->rect(), m_image, event->rect());
    }

private:
    struct Touch : QEvent
    {
        explicit Touch(const QRect& rect) : QEvent(QEvent::User), touched(rect) {}
        QRect touched;
    };

    QImage m_image;
};

// How often a widget was painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    int count() const { return m_count; }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint;
        return false;
    }

private:
    int m_count = 0;
};

// Delivers what waits. A repaint that a posted event asks for comes in a round of its own.
double secondsOfEvents()
{
    const double start = threadTime();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return threadTime() - start;
}

// Either side paints once for each move; what the pen touched, and no more.
void requirePaints(QWidget& widget, const Side& side, int moves)
{
    const PaintCounter counter(widget);
    std::vector<double> ignored;
    side(ignored);
    require(counter.count() == moves,
            std::to_string(counter.count()) + " paints for " + std::to_string(moves) + " moves");
}

void registerRepaint(const QSize& size)
{
    compare("repaint/K210/" + nameOf(size), {.ratio = 1.5}, SignatureEffort, [size] {
        const Model& model = modelNamed("K210");
        const auto signature = std::make_shared<Signature>(model, size);
        const auto window = std::make_shared<QWidget>();
        window->resize(size);
        window->show();
        const auto bareWidget = std::make_shared<BareWidget>(size);
        bareWidget->show();
        const auto pad = std::make_shared<Pad>(Library::shipped(), model, size, window.get());
        QCoreApplication::processEvents();
        const auto library = [=](std::vector<double>& times) {
            static_cast<void>(window); // outlives the pad
            double seconds = 0;
            for (const std::vector<PenSample>& stroke : signature->strokes) {
                pad->sample(stroke.front());
                for (auto at = stroke.begin() + 1; at != stroke.end(); ++at) {
                    std::thread([&pad = *pad, at] { pad.sample(*at); }).join(); // a driver's thread
                    seconds += secondsOfEvents();
                }
                pad->sample({0, 0, 0, PENSTATUS_UP});
            }
            times.push_back(seconds / signature->moves);
        };
        const auto bare = [=](std::vector<double>& times) {
            double seconds = 0;
            for (const std::vector<Segment>& stroke : signature->segments) {
                for (const Segment& segment : stroke) {
                    const double reach = std::max(segment.width, 1.0) / 2 + 2;
                    const QRect touched = QRectF(segment.line.p1(), segment.line.p2())
                                              .normalized()
                                              .adjusted(-reach, -reach, reach, reach)
                                              .toAlignedRect();
                    std::thread([&widget = *bareWidget, touched] { widget.touch(touched); }).join();
                    seconds += secondsOfEvents();
                }
            }
            times.push_back(seconds / signature->moves);
        };
        requirePaints(*window->findChild<QWidget*>(), library, signature->moves);
        requirePaints(*bareWidget, bare, signature->moves);
        return Sides{library, bare};
    });
}

} // namespace

void registerPen()
{
    for (const Model& model : models) {
        for (const QSize& size : canvasSizes)
            registerMove(model, size, false);
    }
    for (const QSize& size : canvasSizes)
        registerMove(modelNamed("K421B"), size, true);
    registerLogOff();
    // More than the bare way: each line makes sure that the file is the user's own.
    registerLogOn("log on", {.ratio = 1.5}, appendLine);
    registerLogOn("log on, against system calls alone", {}, appendLineBySystem);
    for (const QSize& size : canvasSizes)
        registerRepaint(size);
}

} // namespace bench

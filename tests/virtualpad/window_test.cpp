// The window of the virtual pad under a mouse, and a real host at the other end. Runs at the scale and on the
// platform that the environment sets.
#include "support.h"

#include "mainwindow.h"

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QPalette>
#include <QPushButton>
#if QT_VERSION_MAJOR >= 6
#include <QPointingDevice>
#endif
#include <QTabletEvent>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include <cmath>
#include <cstdlib>

using namespace virtualpad;

namespace {

class WindowTest : public testing::Test
{
protected:
    explicit WindowTest(const std::string& model = "SCK210") : m_pad(model), m_window(*m_pad)
    {
        enableLink();
        std::filesystem::create_symlink(SCRIBERA_DRIVER_LIBRARY, "libscriberadrv.so");
        m_window.resize(760, 640);
        m_window.show();
        EXPECT_TRUE(waitUntil([this] { return m_window.windowHandle()->isExposed(); }));
    }

    PadView& view() { return m_window.view(); }
    PadLayout layout() { return view().layoutNow(); }

    QPointF onScreen(double x, double y)
    {
        const QRectF screen = layout().screen;
        return {screen.left() + x * screen.width(), screen.top() + y * screen.height()};
    }

    void mouse(QEvent::Type type, QPointF position)
    {
        const bool moves = type == QEvent::MouseMove;
        QMouseEvent event(type, position, view().mapToGlobal(position.toPoint()),
                          moves ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view(), &event);
    }

    void key(QEvent::Type type, int code)
    {
        QKeyEvent event(type, code, Qt::NoModifier);
        QApplication::sendEvent(&view(), &event);
    }

    // As a hand does: each position takes a sample's time, and it stops at the corners, so that none is cut.
    void drawLine(const std::vector<QPointF>& corners)
    {
        mouse(QEvent::MouseButtonPress, corners.front());
        for (std::size_t corner = 1; corner < corners.size(); ++corner) {
            for (int step = 1; step <= 12; ++step) {
                const std::size_t before = m_pad->state().ink().size();
                const double part = step / 12.0;
                mouse(QEvent::MouseMove, corners[corner - 1] * (1 - part) + corners[corner] * part);
                ASSERT_TRUE(waitUntil([&] { return m_pad->state().ink().size() > before; }));
            }
            const Place reached = layout().placeAt(corners[corner]);
            ASSERT_TRUE(waitUntil([&] {
                const InkPoint& last = m_pad->state().ink().back();
                return std::abs(static_cast<double>(last.x) - reached.x) < 0.001 &&
                       std::abs(static_cast<double>(last.y) - reached.y) < 0.001;
            }));
        }
        mouse(QEvent::MouseButtonRelease, corners.back());
        ASSERT_TRUE(waitUntil([&] { return !m_pad->state().isPenDown(); }));
    }

    QImage picture() { return view().grab().toImage(); }
    // Of the pixel there, in the view's coordinates.
    QColor colourAt(QPointF position)
    {
        const QImage image = picture();
        const QPointF pixel = position * view().devicePixelRatioF();
        return image.pixelColor(static_cast<int>(pixel.x()), static_cast<int>(pixel.y()));
    }
    // There or on a pixel beside it: thin ink need not cover the middle of one.
    bool isInkAt(QPointF position)
    {
        const QImage image = picture();
        const QPoint pixel = (position * view().devicePixelRatioF()).toPoint();
        for (int y = -1; y <= 1; ++y) {
            for (int x = -1; x <= 1; ++x) {
                if (image.pixelColor(pixel + QPoint(x, y)).lightness() < 150)
                    return true;
            }
        }
        return false;
    }
    QString labelText(const char* accessibleName)
    {
        for (const QLabel* label : m_window.findChildren<QLabel*>()) {
            if (label->accessibleName() == QLatin1String(accessibleName))
                return label->text();
        }
        return {};
    }

    ListeningPad m_pad;
    MainWindow m_window;
};

class FingerWindowTest : public WindowTest
{
protected:
    FingerWindowTest() : WindowTest("SCK421B") {}
};

double distance(QPointF point, QPointF from, QPointF to)
{
    const QPointF along = to - from;
    const double length = QPointF::dotProduct(along, along);
    const double part =
        length > 0 ? std::clamp(QPointF::dotProduct(point - from, along) / length, 0.0, 1.0) : 0.0;
    const QPointF off = point - from - along * part;
    return std::hypot(off.x(), off.y());
}

} // namespace

TEST_F(WindowTest, AStrokeOfTheMouseIsInTheSavedSignature)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); })) << "the library switches the screen on";
    EXPECT_EQ(m_pad->hostDeviceType(), 2);
    drawLine({onScreen(0.15, 0.3), onScreen(0.35, 0.8), onScreen(0.55, 0.25), onScreen(0.85, 0.6)});
    drawLine({onScreen(0.2, 0.9), onScreen(0.8, 0.85)});
    const auto sent = static_cast<int>(m_pad->samplesSent());
    ASSERT_GE(sent, 4 * 12 + 4) << "each position, and both ends of two strokes";
    ASSERT_TRUE(waitUntil([&] { return host.number(QStringLiteral("points")) == sent; }));

    const QPointF confirm = layout().confirmKey.center();
    mouse(QEvent::MouseButtonPress, confirm);
    mouse(QEvent::MouseButtonRelease, confirm);
    ASSERT_TRUE(waitUntil([&] { return host.number(QStringLiteral("status")) == 1; }));
    ASSERT_EQ(host.ask(QStringLiteral("save signature.png")), QStringLiteral("0"));
    ASSERT_EQ(host.ask(QStringLiteral("close")), QStringLiteral("0"));
    host.quit();

    const QImage image = QImage(QStringLiteral("signature.png")).convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(800, 480));
    const std::vector<QPointF> corners[] = {{{0.15, 0.3}, {0.35, 0.8}, {0.55, 0.25}, {0.85, 0.6}},
                                            {{0.2, 0.9}, {0.8, 0.85}}};
    const auto isInk = [&](int x, int y) {
        return image.rect().contains(x, y) && qAlpha(image.pixel(x, y)) > 0 && qGray(image.pixel(x, y)) < 128;
    };
    const auto onCanvas = [](QPointF corner) { return QPointF(corner.x() * 800, corner.y() * 480); };
    // All along the way of the mouse there is ink, and nowhere else.
    for (const std::vector<QPointF>& stroke : corners) {
        for (std::size_t corner = 1; corner < stroke.size(); ++corner) {
            const QPointF from = onCanvas(stroke[corner - 1]);
            const QPointF to = onCanvas(stroke[corner]);
            for (int step = 2; step <= 48; ++step) {
                const QPointF place = from + (to - from) * (step / 50.0);
                bool found = false;
                for (int y = -4; y <= 4; ++y) {
                    for (int x = -4; x <= 4; ++x)
                        found =
                            found || isInk(static_cast<int>(place.x()) + x, static_cast<int>(place.y()) + y);
                }
                EXPECT_TRUE(found) << "no ink near " << place.x() << ", " << place.y();
            }
        }
    }
    int strange = 0;
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!isInk(x, y))
                continue;
            ++inked;
            double nearest = 1e9;
            for (const std::vector<QPointF>& stroke : corners) {
                for (std::size_t corner = 1; corner < stroke.size(); ++corner)
                    nearest = std::min(nearest, distance(QPointF(x, y), onCanvas(stroke[corner - 1]),
                                                         onCanvas(stroke[corner])));
            }
            strange += nearest > 14 ? 1 : 0;
        }
    }
    EXPECT_GT(inked, 1000);
    EXPECT_EQ(strange, 0);
}

TEST_F(WindowTest, TheHostsEndLeavesThePadToTheNext)
{
    for (int round = 0; round < 2; ++round) {
        Host host;
        ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
        ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); }));
        EXPECT_EQ(labelText("Connected host"), QStringLiteral("Host connected, device type 2"));
        drawLine({onScreen(0.2, 0.2), onScreen(0.8, 0.8)});
        const auto sent = static_cast<int>(m_pad->samplesSent());
        EXPECT_TRUE(waitUntil([&] { return host.number(QStringLiteral("points")) == sent; }));
        if (round == 0) {
            host.kill();
        } else {
            ASSERT_EQ(host.ask(QStringLiteral("close")), QStringLiteral("0"));
            host.quit();
        }
        ASSERT_TRUE(waitUntil([&] { return !m_pad->hostDeviceType(); }));
        EXPECT_EQ(labelText("Connected host"), QStringLiteral("No host"));
    }
}

TEST_F(WindowTest, AHostKeepsItsSignatureWhenThePadIsUnplugged)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); }));
    mouse(QEvent::MouseButtonPress, onScreen(0.3, 0.5));
    mouse(QEvent::MouseMove, onScreen(0.5, 0.5));
    ASSERT_TRUE(waitUntil([&] { return host.number(QStringLiteral("points")) > 5; }));
    m_pad->setModel(*simulator::padForModel("SCT12")); // unplugs it
    ASSERT_TRUE(waitUntil([&] {
        const int count = host.number(QStringLiteral("points"));
        return host.ask(QStringLiteral("point %1").arg(count - 1)).endsWith(QLatin1String(" 1"));
    })) << "the stroke has an end";
    ASSERT_TRUE(waitUntil([&] { return m_pad->hostDeviceType() && m_pad->state().isLit(); }));
    const int before = host.number(QStringLiteral("points"));
    drawLine({onScreen(0.2, 0.2), onScreen(0.8, 0.8)});
    const auto sent = static_cast<int>(m_pad->samplesSent());
    EXPECT_TRUE(waitUntil([&] { return host.number(QStringLiteral("points")) == before + sent; }));
}

TEST_F(WindowTest, APinnedModelOfAnotherKindFailsTheHostsCheck)
{
    m_pad->setPinned(true);
    Host host;
    EXPECT_EQ(host.ask(QStringLiteral("open 5")), QStringLiteral("false"));
    m_pad->setPinned(false);
    EXPECT_EQ(host.ask(QStringLiteral("open 5")), QStringLiteral("true"));
    EXPECT_EQ(host.ask(QStringLiteral("model")), QStringLiteral("SCK420"));
    EXPECT_EQ(m_pad->state().pad().model, "SCK420");
}

TEST_F(WindowTest, TheStatusLineTellsOfAMismatch)
{
    m_pad->setPinned(true);
    RawPeer host = RawPeer::connected();
    ASSERT_TRUE(host.send(simulator::padlink::encode(simulator::padlink::Hello{1, 5})));
    ASSERT_TRUE(waitUntil([&] { return m_pad->isMismatch(); }));
    EXPECT_EQ(labelText("Connected host"),
              QStringLiteral("Host for device type 5 connected; SCK210 is none, so it refuses the pad"));
}

TEST_F(WindowTest, EnterAndEscapeAreTheKeys)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    for (const auto& [code, status, part] : {std::tuple{Qt::Key_Return, 1, Key::Confirm},
                                             {Qt::Key_Escape, 0, Key::Cancel},
                                             {Qt::Key_Enter, 1, Key::Confirm}}) {
        const QRectF place = part == Key::Confirm ? layout().confirmKey : layout().cancelKey;
        const QPointF corner(place.left() + place.height() * 0.5, place.center().y());
        const QColor before = colourAt(corner);
        key(QEvent::KeyPress, code);
        EXPECT_EQ(m_pad->state().pressedKey(), part);
        EXPECT_NE(colourAt(corner), before) << "a key that is pressed shows it";
        key(QEvent::KeyRelease, code);
        EXPECT_FALSE(m_pad->state().pressedKey());
        EXPECT_EQ(colourAt(corner), before);
        EXPECT_TRUE(
            waitUntil([&, expected = status] { return host.number(QStringLiteral("status")) == expected; }));
    }
}

TEST_F(WindowTest, EnterOnAFocusedButtonActsAsTheButton)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    QToolButton* record = nullptr;
    for (QToolButton* button : m_window.findChildren<QToolButton*>()) {
        if (button->text() == QLatin1String("Record"))
            record = button;
    }
    ASSERT_NE(record, nullptr);
    const auto press = [&](int code) {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, code, Qt::NoModifier);
            QApplication::sendEvent(record, &event);
        }
    };
    record->setFocus();
    ASSERT_EQ(m_window.focusWidget(), record);
    press(Qt::Key_Return);
    EXPECT_TRUE(m_pad->isRecording());
    press(Qt::Key_Enter);
    EXPECT_FALSE(m_pad->isRecording());
    EXPECT_EQ(m_pad->samplesSent(), 0) << "no key of the pad was touched";
    press(Qt::Key_Escape); // means no button
    EXPECT_TRUE(waitUntil([&] { return host.number(QStringLiteral("status")) == 0; }));
}

TEST_F(FingerWindowTest, EnterOnTheBrowseButtonBrowses)
{
    const QPointF sensor = layout().sensor->center();
    mouse(QEvent::MouseButtonPress, sensor);
    mouse(QEvent::MouseButtonRelease, sensor);
    QPushButton* browse = nullptr;
    for (QPushButton* button : m_window.findChildren<QPushButton*>()) {
        if (button->text().contains(QLatin1String("rowse")))
            browse = button;
    }
    ASSERT_NE(browse, nullptr);
    bool browsed = false;
    QTimer closing;
    QObject::connect(&closing, &QTimer::timeout, &closing, [&] {
        if (auto* const files = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            browsed = true;
            files->reject();
        }
    });
    closing.start(0);
    browse->setFocus();
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(browse, &event);
    EXPECT_TRUE(browsed);
    EXPECT_NE(m_window.findChild<QDialog*>(), nullptr) << "the finger is still to be put on";
}

TEST_F(WindowTest, ADarkThemeIsWhollyDark)
{
    const QPalette before = QApplication::palette();
    // Of the pixels beside the pad, without its shadow, as many are light.
    const auto lightShare = [this] {
        const QImage image = m_window.grab().toImage();
        const double ratio = m_window.devicePixelRatioF();
        const double shadow = layout().scaled(0.05);
        const QRectF body = layout().body.adjusted(-shadow, -shadow, shadow, shadow);
        const QRectF pad(body.topLeft() + view().mapTo(&m_window, QPoint()), body.size());
        int light = 0;
        int all = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (pad.contains(QPointF(x, y) / ratio))
                    continue;
                ++all;
                light += image.pixelColor(x, y).lightness() > 128 ? 1 : 0;
            }
        }
        return static_cast<double>(light) / all;
    };
    QApplication::setPalette(QPalette(QColor(0xe0, 0xe0, 0xe0), QColor(0xf0, 0xf0, 0xf0)));
    EXPECT_TRUE(waitUntil([&] { return lightShare() > 0.9; }));
    QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2a, 0x2a, 0x2a));
    QApplication::setPalette(dark);
    EXPECT_TRUE(waitUntil([&] { return lightShare() < 0.05; }))
        << lightShare() << " is light: letters are few";
    QApplication::setPalette(before);
}

TEST_F(WindowTest, AfterTheCancelKeyPadAndHostAreBothEmpty)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); }));
    drawLine({onScreen(0.3, 0.5), onScreen(0.7, 0.5)});
    ASSERT_TRUE(isInkAt(onScreen(0.5, 0.5)));
    const QPointF cancel = layout().cancelKey.center();
    mouse(QEvent::MouseButtonPress, cancel);
    EXPECT_TRUE(isInkAt(onScreen(0.5, 0.5)));
    mouse(QEvent::MouseButtonRelease, cancel);
    EXPECT_FALSE(isInkAt(onScreen(0.5, 0.5)));
    ASSERT_TRUE(waitUntil([&] { return host.number(QStringLiteral("status")) == 0; }));
    // The library leaves the pad alone in the first clearing after this key.
    ASSERT_EQ(host.ask(QStringLiteral("clear")), QStringLiteral("0"));
    EXPECT_EQ(host.number(QStringLiteral("points")), -8);
    drawLine({onScreen(0.3, 0.5), onScreen(0.7, 0.5)});
    EXPECT_TRUE(isInkAt(onScreen(0.5, 0.5)));
    ASSERT_EQ(host.ask(QStringLiteral("clear")), QStringLiteral("0"));
    EXPECT_TRUE(waitUntil([&] { return !isInkAt(onScreen(0.5, 0.5)); }));
}

TEST_F(WindowTest, TheScreenGoesOnAndOffAndIsCleared)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 2")), QStringLiteral("true"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); }));
    const QPointF middle = onScreen(0.5, 0.5);
    EXPECT_GT(colourAt(middle).lightness(), 220);
    drawLine({onScreen(0.3, 0.5), onScreen(0.7, 0.5)});
    EXPECT_TRUE(isInkAt(middle));
    ASSERT_EQ(host.ask(QStringLiteral("clear")), QStringLiteral("0"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().ink().empty(); }));
    EXPECT_GT(colourAt(middle).lightness(), 220);

    const QImage without = picture();
    ASSERT_EQ(host.ask(QStringLiteral("version 1")), QStringLiteral("0"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isVersionShown(); }));
    EXPECT_EQ(m_pad->state().versionText(), "SCK210");
    EXPECT_NE(picture(), without);
    ASSERT_EQ(host.ask(QStringLiteral("version 0")), QStringLiteral("0"));
    ASSERT_TRUE(waitUntil([&] { return !m_pad->state().isVersionShown(); }));
    EXPECT_EQ(picture(), without);

    ASSERT_EQ(host.ask(QStringLiteral("screen 0")), QStringLiteral("0"));
    ASSERT_TRUE(waitUntil([&] { return !m_pad->state().isLit(); }));
    EXPECT_LT(colourAt(middle).lightness(), 60);
}

TEST_F(FingerWindowTest, AFingerComesBackAsAPictureOnThePad)
{
    Host host;
    ASSERT_EQ(host.ask(QStringLiteral("open 7")), QStringLiteral("true"));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().isLit(); }));
    const QImage before = picture();
    const QPointF sensor = layout().sensor->center();
    mouse(QEvent::MouseButtonPress, sensor);
    mouse(QEvent::MouseButtonRelease, sensor);
    auto* const dialog = m_window.findChild<QDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->accept();
    // The library shows what it took on the pad's screen.
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().picture().has_value(); }));
    EXPECT_EQ(m_pad->state().picture()->width, 104);
    EXPECT_EQ(m_pad->state().picture()->height, 144);
    EXPECT_NE(picture(), before);
}

TEST_F(FingerWindowTest, APictureHasItsColours)
{
    RawPeer host = RawPeer::connected();
    simulator::padlink::Picture picture{104, 144, {}};
    for (int index = 0; index < 104 * 144; ++index) {
        const bool upper = index < 104 * 72;
        picture.pixels.push_back(upper ? 0xf8 : 0x00); // red above, blue below
        picture.pixels.push_back(upper ? 0x00 : 0x1f);
    }
    using namespace simulator::padlink;
    ASSERT_TRUE(host.send(encode(Hello{ProtocolVersion, 7}) + encode(Screen{true}) + encode(picture)));
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().picture().has_value(); }));
    const QPointF upper = onScreen(0.85, 0.35);
    EXPECT_EQ(colourAt(upper), QColor(255, 0, 0));
    EXPECT_EQ(colourAt(onScreen(0.85, 0.65)), QColor(0, 0, 255));
}

TEST_F(WindowTest, OnlyAPadWithASensorOffersIt)
{
    const auto button = [this] {
        for (QToolButton* candidate : m_window.findChildren<QToolButton*>()) {
            if (candidate->text().contains(QLatin1String("ingerprint")))
                return candidate;
        }
        return static_cast<QToolButton*>(nullptr);
    };
    ASSERT_NE(button(), nullptr);
    EXPECT_FALSE(button()->isEnabled());
    m_pad->setModel(*simulator::padForModel("SCK421B"));
    EXPECT_TRUE(button()->isEnabled());
}

TEST_F(WindowTest, AStylusPressesAsItSays)
{
    const auto stylus = [this](QEvent::Type type, QPointF position, double pressure) {
        const QPointF onScreen = view().mapToGlobal(position.toPoint());
        const Qt::MouseButton changed = type == QEvent::TabletMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButton held = type == QEvent::TabletRelease ? Qt::NoButton : Qt::LeftButton;
#if QT_VERSION_MAJOR < 6
        QTabletEvent event(type, position, onScreen, QTabletEvent::Stylus, QTabletEvent::Pen, pressure, 0, 0,
                           0, 0, 0, Qt::NoModifier, 1, changed, held);
#else
        QTabletEvent event(type, QPointingDevice::primaryPointingDevice(), position, onScreen, pressure, 0, 0,
                           0, 0, 0, Qt::NoModifier, changed, held);
#endif
        QApplication::sendEvent(&view(), &event);
        EXPECT_TRUE(event.isAccepted()) << "or a mouse would follow";
    };
    stylus(QEvent::TabletPress, onScreen(0.4, 0.5), 0.75);
    ASSERT_TRUE(waitUntil([&] { return !m_pad->state().ink().empty(); }));
    EXPECT_NEAR(m_pad->state().ink().front().pressure, 0.75, 0.001);
    stylus(QEvent::TabletMove, onScreen(0.6, 0.5), 0.25);
    ASSERT_TRUE(waitUntil([&] { return m_pad->state().ink().back().x > 0.599F; }));
    EXPECT_NEAR(m_pad->state().ink().back().pressure, 0.25, 0.001);
    stylus(QEvent::TabletRelease, onScreen(0.6, 0.5), 0);
    EXPECT_TRUE(waitUntil([&] { return !m_pad->state().isPenDown(); }));
}

TEST_F(WindowTest, WhatIsRecordedIsReplayedTheSame)
{
    m_pad->startRecording();
    drawLine({onScreen(0.2, 0.2), onScreen(0.5, 0.8), onScreen(0.8, 0.3)});
    key(QEvent::KeyPress, Qt::Key_Return);
    key(QEvent::KeyRelease, Qt::Key_Return);
    const simulator::Recording first = m_pad->stopRecording();
    ASSERT_GT(first.samples.size(), 30U);
    EXPECT_EQ(first.samples.front().milliseconds, 0);
    EXPECT_EQ(first.samples[first.samples.size() - 2].status, simulator::ConfirmKey);
    std::string error;
    ASSERT_TRUE(simulator::writeRecording(first, "first.rec", error)) << error;
    const std::vector<InkPoint> ink = m_pad->state().ink();

    m_pad->setModel(*simulator::padForModel("SCK420"));
    m_pad->setModel(*simulator::padForModel("SCK210")); // a blank one
    ASSERT_TRUE(m_pad->state().ink().empty());
    m_pad->startRecording();
    ASSERT_TRUE(m_pad->startReplay("first.rec", false, error)) << error;
    EXPECT_TRUE(m_pad->isReplaying());
    ASSERT_TRUE(waitUntil([&] { return !m_pad->isReplaying(); }));
    const simulator::Recording second = m_pad->stopRecording();
    EXPECT_TRUE(second.samples == first.samples);
    EXPECT_EQ(m_pad->state().ink().size(), ink.size()) << "drawn on the pad's own screen meanwhile";
    EXPECT_TRUE(isInkAt(onScreen(0.35, 0.5)));
    EXPECT_FALSE(m_pad->startReplay("missing.rec", false, error));
    EXPECT_NE(error.find("missing.rec"), std::string::npos);
}

TEST_F(WindowTest, ItIsDrawnInTheScreensOwnPixels)
{
    const double ratio = view().devicePixelRatioF();
    EXPECT_EQ(ratio, qEnvironmentVariableIsEmpty("QT_SCALE_FACTOR")
                         ? 1.0
                         : std::atof(qgetenv("QT_SCALE_FACTOR").constData()));
    drawLine({onScreen(0.2, 0.3), onScreen(0.7, 0.7)});
    const QImage image = picture();
    EXPECT_EQ(image.size(), view().size() * ratio);
    if (ratio < 2)
        return;
    // A picture made larger afterwards has blocks of one colour; in this one the ink's edge runs through
    // them.
    int mixed = 0;
    const QRect screen = QRectF(layout().screen.topLeft() * ratio, layout().screen.size() * ratio).toRect();
    for (int y = screen.top() & ~1; y + 1 < screen.bottom(); y += 2) {
        for (int x = screen.left() & ~1; x + 1 < screen.right(); x += 2) {
            const int lightness = image.pixelColor(x, y).lightness();
            mixed += std::abs(lightness - image.pixelColor(x + 1, y + 1).lightness()) > 60 ? 1 : 0;
        }
    }
    EXPECT_GT(mixed, 100);
}

TEST_F(WindowTest, InkKeepsItsPlaceWhenTheWindowIsResized)
{
    drawLine({onScreen(0.3, 0.5), onScreen(0.7, 0.5)});
    ASSERT_TRUE(isInkAt(onScreen(0.5, 0.5)));
    const double width = layout().screen.width();
    m_window.resize(560, 480);
    ASSERT_TRUE(waitUntil([&] { return layout().screen.width() < width - 50; }));
    EXPECT_TRUE(isInkAt(onScreen(0.5, 0.5)));
    EXPECT_FALSE(isInkAt(onScreen(0.5, 0.6)));
}

TEST_F(WindowTest, EverythingToTouchHasAName)
{
    EXPECT_FALSE(view().accessibleName().isEmpty());
    EXPECT_FALSE(view().accessibleDescription().isEmpty());
    int buttons = 0;
    for (const QToolButton* button : m_window.findChildren<QToolButton*>()) {
        if (!button->defaultAction())
            continue;
        ++buttons;
        EXPECT_FALSE(button->accessibleName().isEmpty());
        EXPECT_FALSE(button->toolTip().isEmpty());
    }
    EXPECT_EQ(buttons, 3);
    for (const char* name : {"Connected host", "Report rate", "Samples sent"})
        EXPECT_FALSE(labelText(name).isEmpty()) << name;
}

// The demo host's window from inside, with a person at the simulated pad.
#include "support.h"

#include "mainwindow.h"
#include "previewdialog.h"
#include "replayview.h"
#include "signaturepanel.h"

#include <scriberasim.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QToolButton>
#include <QtEndian>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include <dlfcn.h>

namespace {

struct Model
{
    const char* name;
    QRect area; // in pad units
    int highestPressure;
};

std::ostream& operator<<(std::ostream& stream, const Model& model)
{
    return stream << model.name;
}

const Model models[] = {{"K210", {160, 220, 2360, 1430}, 2048},
                        {"K420", {200, 200, 2300, 1300}, 2048},
                        {"K421B", {2050, 1750, 21170, 11490}, 2048},
                        {"KM730", {550, 180, 29870, 20120}, 8192},
                        {"T580", {550, 180, 29870, 20120}, 8192}};

// The person at the pad whose driver the host has loaded.
class Person
{
public:
    explicit Person(const Model& model) : m_model(model) {}
    ~Person()
    {
        if (m_driver)
            dlclose(m_driver);
    }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

    template <typename Function>
    Function* control(const char* name)
    {
        if (!m_driver)
            m_driver = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_NOLOAD);
        return reinterpret_cast<Function*>(m_driver ? dlsym(m_driver, name) : nullptr);
    }
    // A straight line; the places in parts of the writing area, the pressure in parts of the highest.
    void draw(QPointF from, QPointF to, double pressure = 0.2)
    {
        constexpr int steps = 40;
        QVector<ScrSimSample> samples;
        for (int i = 0; i <= steps; ++i) {
            const QPointF place = from + (to - from) * i / steps;
            samples.append({m_model.area.x() + int(place.x() * m_model.area.width()),
                            m_model.area.y() + int(place.y() * m_model.area.height()),
                            int(pressure * m_model.highestPressure), i == 0 ? 0 : 1});
        }
        samples.append({samples.last().x, samples.last().y, 0, 2});
        ASSERT_EQ(control<decltype(ScrSim_SendSamples)>("ScrSim_SendSamples")(samples.data(), samples.size()),
                  0);
        waitIdle();
    }
    void press(int key)
    {
        ASSERT_EQ(control<decltype(ScrSim_PressKey)>("ScrSim_PressKey")(key), 0);
        waitIdle();
    }
    void putFinger()
    {
        ASSERT_EQ(control<decltype(ScrSim_SendSyntheticFingerprint)>("ScrSim_SendSyntheticFingerprint")(
                      "loop", 1, 80),
                  0);
        waitIdle();
    }

private:
    void waitIdle() { ASSERT_EQ(control<decltype(ScrSim_WaitIdle)>("ScrSim_WaitIdle")(60000), 0); }

    const Model& m_model;
    void* m_driver = nullptr;
};

bool waitUntil(const std::function<bool()>& condition)
{
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < 60000; QApplication::processEvents(QEventLoop::AllEvents, 10))
        if (condition())
            return true;
    return false;
}

bool isInk(const QColor& color)
{
    return color.lightness() < 128;
}

class DemoWindow : public HostTest, public testing::WithParamInterface<Model>
{
protected:
    explicit DemoWindow(const Model& model = GetParam()) : person(model), m_model(model)
    {
        QDir::setCurrent(path("."));
        window = std::make_unique<MainWindow>(QString::fromLatin1(model.name));
        window->show();
        QApplication::processEvents();
    }
    ~DemoWindow() override
    {
        window.reset();
        QDir::setCurrent("/");
    }
    bool open()
    {
        window->openPad();
        return waitUntil([&] { return window->session().isOpen() && canvas().isVisible(); });
    }
    QWidget& canvas() const { return *window->session().canvas(); }
    QImage drawn() const { return canvas().grab().toImage(); }
    template <typename Widget>
    Widget& find(const char* name) const
    {
        Widget* const found = window->findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_TRUE(found) << name;
        return *found;
    }
    std::string state() const { return find<QLabel>("state").text().toStdString(); }
    std::string count() const { return find<QLabel>("count").text().toStdString(); }
    // Waits until the window knows of everything that the pad delivered.
    bool caughtUp() const
    {
        const std::string expected = std::to_string(window->session().points()) + " points";
        return waitUntil([&] { return count() == expected; });
    }
    // Whether there is ink at the place, and the paper above and below it is free.
    testing::AssertionResult inkAt(QPointF place) const
    {
        const QImage image = drawn();
        const int x = int(place.x() * image.width());
        const int y = int(place.y() * image.height());
        for (const int distance : {0, -14, 14})
            if (isInk(image.pixelColor(x, y + distance)) != (distance == 0))
                return testing::AssertionFailure() << x << ", " << y + distance;
        return testing::AssertionSuccess();
    }

    Person person;
    std::unique_ptr<MainWindow> window;
    const Model& m_model;
};

// What does not depend on the model.
class DemoWindowOnce : public DemoWindow
{
protected:
    DemoWindowOnce() : DemoWindow(models[0]) {}
};

class DemoWindowWithReader : public DemoWindow
{
protected:
    DemoWindowWithReader() : DemoWindow(models[2]) {}
};

TEST_P(DemoWindow, PlacesTheCanvasInThePadsProportions)
{
    ASSERT_TRUE(open());
    const auto& panel = *window->findChild<SignaturePanel*>();
    EXPECT_EQ(canvas().parentWidget(), &panel);
    EXPECT_TRUE(panel.rect().contains(canvas().geometry()));
    const double height = double(canvas().width()) * m_model.area.height() / m_model.area.width();
    EXPECT_NEAR(canvas().height(), height, 1.5);
    EXPECT_EQ(state(), "Waiting for the pad");
}

TEST_P(DemoWindow, BlankCanvasFollowsTheWindow)
{
    ASSERT_TRUE(open());
    const QSize before = canvas().size();
    for (const QSize size : {QSize(1500, 1000), QSize(1080, 640), QSize(1300, 800)}) {
        window->resize(size);
        QApplication::processEvents();
        const QRect panel = window->findChild<SignaturePanel*>()->rect();
        EXPECT_TRUE(panel.contains(canvas().geometry()));
        EXPECT_TRUE(panel.width() - canvas().width() < 16 || panel.height() - canvas().height() < 16);
    }
    EXPECT_GT(canvas().width(), before.width());
    person.draw({0.2, 0.3}, {0.8, 0.3});
    EXPECT_TRUE(inkAt({0.5, 0.3}));
    EXPECT_TRUE(inkAt({0.25, 0.3}));
    EXPECT_TRUE(inkAt({0.75, 0.3}));
}

TEST_P(DemoWindow, ResizeKeepsTheInkUnderThePen)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(caughtUp());
    const QSize signedOn = canvas().size();
    for (const QSize size : {QSize(1500, 1000), QSize(900, 500)}) {
        window->resize(size);
        QApplication::processEvents();
        EXPECT_EQ(canvas().size(), signedOn);
        EXPECT_TRUE(window->findChild<SignaturePanel*>()->rect().contains(canvas().geometry()));
    }
    // The second stroke begins on the first one and stands right below it.
    person.draw({0.5, 0.3}, {0.5, 0.7});
    person.draw({0.2, 0.8}, {0.8, 0.8});
    EXPECT_TRUE(inkAt({0.25, 0.3}));
    EXPECT_TRUE(inkAt({0.75, 0.3}));
    EXPECT_TRUE(inkAt({0.25, 0.8}));
    EXPECT_TRUE(isInk(drawn().pixelColor(canvas().width() / 2, canvas().height() / 2)));

    window->resize(1500, 1000);
    find<QPushButton>("clear").click();
    QApplication::processEvents();
    EXPECT_GT(canvas().width(), signedOn.width()) << "without ink it follows again";
    person.draw({0.2, 0.4}, {0.8, 0.4});
    EXPECT_TRUE(inkAt({0.75, 0.4}));
}

TEST_P(DemoWindow, PenSettingsReachTheInk)
{
    ASSERT_TRUE(open());
    find<QAbstractButton>("pressure").setChecked(false);
    find<QSlider>("penWidth").setValue(8);
    find<QToolButton>("Blue").click();
    person.draw({0.1, 0.5}, {0.9, 0.5}, 0.9);
    const QRgb blue = qRgb(0x10, 0x35, 0x9c);
    const QRect column(canvas().width() / 2, 0, 1, canvas().height());
    EXPECT_NEAR(countOf(drawn(), column, blue), 8, 1);
    find<QToolButton>("Green").click();
    find<QSlider>("penWidth").setValue(2);
    person.draw({0.1, 0.8}, {0.9, 0.8}, 0.9);
    EXPECT_NEAR(countOf(drawn(), column, blue), 8, 1) << "what is drawn stays as it is";
    const QColor thin = drawn().pixelColor(canvas().width() / 2, int(canvas().height() * 0.8));
    EXPECT_GT(thin.green(), thin.blue());

    // They also outlive the pad.
    find<QPushButton>("clear").click();
    find<QSlider>("penWidth").setValue(8);
    ASSERT_TRUE(open());
    person.draw({0.1, 0.5}, {0.9, 0.5}, 0.9);
    EXPECT_NEAR(countOf(drawn(), column, qRgb(0x0b, 0x6b, 0x3a)), 8, 1);
}

TEST_P(DemoWindow, PressureMakesTheStrokeWider)
{
    ASSERT_TRUE(open());
    const auto thickness = [&](double y) {
        const QImage image = drawn();
        int dark = 0;
        for (int row = int((y - 0.12) * image.height()); row < int((y + 0.12) * image.height()); ++row)
            dark += isInk(image.pixelColor(image.width() / 2, row)) ? 1 : 0;
        return dark;
    };
    person.draw({0.2, 0.25}, {0.8, 0.25}, 0.2);
    person.draw({0.2, 0.75}, {0.8, 0.75}, 0.9);
    EXPECT_GT(thickness(0.75), thickness(0.25));
    EXPECT_GT(thickness(0.25), 0);
}

TEST_P(DemoWindow, CountsAndKeysMoveTheState)
{
    ASSERT_TRUE(open());
    EXPECT_EQ(count(), "0 points");
    EXPECT_FALSE(find<QPushButton>("save").isEnabled());
    int confirmations = 0;
    QObject::connect(window.get(), &MainWindow::confirmed, [&] { ++confirmations; });

    int keys = 0;
    QObject::connect(&window->session(), &PadSession::confirmed, [&] { ++keys; });
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return keys == 1; }));
    EXPECT_EQ(confirmations, 0) << "nothing is signed yet";
    EXPECT_EQ(state(), "Waiting for the pad");
    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(waitUntil([&] { return count() == "42 points"; })) << count();
    EXPECT_EQ(state(), "Signing");
    EXPECT_EQ(confirmations, 0);

    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return confirmations == 1; }));
    EXPECT_EQ(state().substr(0, 13), "Confirmed at ");
    EXPECT_TRUE(find<QPushButton>("save").isEnabled());

    person.draw({0.2, 0.6}, {0.8, 0.6});
    ASSERT_TRUE(waitUntil([&] { return count() == "84 points"; })) << count();
    EXPECT_EQ(state(), "Signing") << "new ink is not confirmed";
    find<QPushButton>("confirm").click();
    EXPECT_EQ(confirmations, 2);
    EXPECT_EQ(state().substr(0, 13), "Confirmed at ");

    person.press(0);
    ASSERT_TRUE(waitUntil([&] { return state().rfind("Cancelled", 0) == 0; }));
    EXPECT_EQ(count(), "0 points");
    EXPECT_EQ(window->session().points(), 0);
    EXPECT_FALSE(inkAt({0.5, 0.3}));
}

TEST_P(DemoWindow, RealTimePointsComeScaledToOne)
{
    ASSERT_TRUE(open());
    QVector<QPointF> places;
    QVector<double> pressures;
    int lifts = 0;
    QObject::connect(&window->session(), &PadSession::pointStored,
                     [&](QPointF place, double pressure, bool onPad) {
                         places += place;
                         pressures += pressure;
                         lifts += onPad ? 0 : 1;
                     });
    person.draw({0.1, 0.2}, {0.9, 0.6}, 0.5);
    ASSERT_TRUE(waitUntil([&] { return places.size() == 42; })) << places.size();
    EXPECT_EQ(lifts, 1);
    EXPECT_NEAR(places.first().x(), 0.1, 0.002);
    EXPECT_NEAR(places.first().y(), 0.2, 0.002);
    EXPECT_NEAR(places.last().x(), 0.9, 0.002);
    EXPECT_NEAR(places.last().y(), 0.6, 0.002);
    EXPECT_NEAR(pressures[20], 0.5, 0.01);
}

TEST_P(DemoWindow, AnotherModelTakesThePlace)
{
    ASSERT_TRUE(open());
    auto& choice = find<QComboBox>("model");
    for (const Model& next : models) {
        choice.setCurrentText(QString::fromLatin1(next.name));
        ASSERT_TRUE(waitUntil([&] { return window->session().isOpen(); })) << next.name;
        EXPECT_EQ(window->session().writingArea(), next.area.size());
        Person another(next);
        another.draw({0.2, 0.5}, {0.8, 0.5});
        EXPECT_TRUE(inkAt({0.5, 0.5})) << next.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Models, DemoWindow, testing::ValuesIn(models),
                         [](const auto& model) { return std::string(model.param.name); });

TEST_F(DemoWindowOnce, WaitsForTheDriverAndTriesAgain)
{
    unplug();
    window->openPad();
    EXPECT_FALSE(window->session().isOpen());
    EXPECT_EQ(state(), "No pad");
    EXPECT_TRUE(find<QPushButton>("tryAgain").isVisible());
    EXPECT_EQ(find<QLabel>("noticeTitle").text(), "The pad's driver is missing");
    EXPECT_TRUE(find<QLabel>("noticeAdvice").text().contains(QDir::currentPath()));
    EXPECT_FALSE(find<QPushButton>("clear").isEnabled());
    find<QPushButton>("tryAgain").click();
    EXPECT_EQ(state(), "No pad") << "still not there";

    plugIn();
    find<QPushButton>("tryAgain").click();
    ASSERT_TRUE(window->session().isOpen());
    EXPECT_EQ(state(), "Waiting for the pad");
    EXPECT_FALSE(find<QPushButton>("tryAgain").isVisible());
    person.draw({0.2, 0.5}, {0.8, 0.5});
    EXPECT_TRUE(inkAt({0.5, 0.5}));
}

TEST_F(DemoWindowOnce, SaysWhenAnotherPadIsOnTheCounter)
{
    qputenv("SCRIBERA_SIM_MODEL", "SCK420");
    window->openPad();
    qunsetenv("SCRIBERA_SIM_MODEL");
    EXPECT_FALSE(window->session().isOpen());
    EXPECT_EQ(find<QLabel>("noticeTitle").text(), "The K210 does not answer");
}

TEST_F(DemoWindowOnce, PreviewShowsAndCopiesEveryKind)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.5}, {0.8, 0.5}, 0.9);
    PreviewDialog dialog(window->session(), window.get());
    auto& type = *dialog.findChild<QComboBox*>("type");
    ASSERT_EQ(type.count(), 5);
    for (int i = 0; i < type.count(); ++i) {
        type.setCurrentIndex(i);
        const QImage shown = dialog.findChild<QLabel*>("preview")->pixmap(Qt::ReturnByValue).toImage();
        int dark = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                dark += isInk(shown.pixelColor(x, y)) ? 1 : 0;
        EXPECT_GT(dark, 20) << i;
        EXPECT_LT(dark, shown.width() * shown.height() / 3) << i;

        dialog.findChild<QPushButton*>("copy")->click();
        const QByteArray content = QByteArray::fromBase64(QApplication::clipboard()->text().toLatin1());
        EXPECT_FALSE(content.isEmpty()) << i;
        const QString suffix = PadSession::suffix(dialog.settings().imageType);
        EXPECT_TRUE(suffix == "pdf" ? content.startsWith("%PDF")
                                    : content.startsWith("<?xml") == (suffix == "svg"));
        if (suffix == "png" || suffix == "jpg" || suffix == "bmp") {
            const QImage picture = QImage::fromData(content, suffix.toLatin1().constData());
            EXPECT_NEAR(picture.width(), canvas().width() * 0.6 + 2 * 12, 20) << "the ink and its margins";
        }
    }
}

TEST_F(DemoWindowWithReader, FingerprintGoesIntoTheField)
{
    ASSERT_TRUE(open());
    EXPECT_TRUE(window->session().fingerprintPng().isEmpty()) << "no finger yet";
    person.draw({0.1, 0.8}, {0.5, 0.8});
    person.putFinger();
    const QRgb red = qRgb(255, 0, 0);
    ASSERT_TRUE(waitUntil([&] { return !window->session().fingerprintPng().isEmpty(); }));
    const QImage print = QImage::fromData(window->session().fingerprintPng(), "PNG");
    EXPECT_NEAR(double(print.width()) / print.height(), 208.0 / 288, 0.02);
    const QRect topRight(canvas().width() * 2 / 3, 0, canvas().width() / 3, canvas().height() / 2);
    EXPECT_GT(countOf(drawn(), topRight, red), 500);
    EXPECT_EQ(countOf(drawn(), canvas().rect(), red), countOf(drawn(), topRight, red));
    EXPECT_TRUE(inkAt({0.3, 0.8}));
}

TEST_F(DemoWindowWithReader, FingerprintGoesBesideTheField)
{
    ASSERT_TRUE(open());
    find<QComboBox>("fingerprintPlace").setCurrentIndex(1);
    person.draw({0.1, 0.8}, {0.5, 0.8});
    person.putFinger();
    const QRgb red = qRgb(255, 0, 0);
    ASSERT_TRUE(waitUntil([&] { return !window->session().fingerprintPng().isEmpty(); }));
    QApplication::processEvents();
    EXPECT_EQ(countOf(drawn(), canvas().rect(), red), 0);
    const QImage shown = window->grab().toImage();
    const QRect aside(shown.width() - 290, 0, 290, shown.height());
    EXPECT_GT(countOf(shown, aside, red), 50);
    EXPECT_EQ(QImage::fromData(window->session().fingerprintPng(), "PNG").size(), QSize(22, 30));
    // Back again, and no trace of it beside the field.
    find<QComboBox>("fingerprintPlace").setCurrentIndex(0);
    QApplication::processEvents();
    EXPECT_EQ(countOf(window->grab().toImage(), aside, red), 0);
}

// Two strokes a second apart, side by side.
std::vector<_POINTDATA> twoStrokes()
{
    std::vector<_POINTDATA> points;
    for (int stroke = 0; stroke < 2; ++stroke)
        for (int i = 0; i <= 11; ++i) {
            _POINTDATA point{};
            point.usX = qToLittleEndian<quint16>(quint16(1000 + 1000 * stroke + 50 * qMin(i, 10)));
            point.sY = qToLittleEndian<qint16>(qint16(1000 + 40 * qMin(i, 10)));
            point.sPressure = qToLittleEndian<qint16>(500);
            point.ucStatus = i == 11;
            point.llTick = qToLittleEndian<qint64>(5'000'000'000 + qint64{1000} * stroke + qint64{10} * i);
            points.push_back(point);
        }
    return points;
}

QByteArray streamOf(const std::vector<_POINTDATA>& points)
{
    const QByteArray records(reinterpret_cast<const char*>(points.data()),
                             int(points.size() * sizeof points[0]));
    return records + QByteArray(1, '\0');
}

class Replay : public testing::Test
{
protected:
    // Dark pixels in the left and in the right half.
    std::pair<int, int> darkHalves()
    {
        const QImage shown = view.grab().toImage();
        std::pair<int, int> dark;
        const QRect area = view.drawingArea().adjusted(5, 5, -5, -5);
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                (x < area.center().x() ? dark.first : dark.second) += isInk(shown.pixelColor(x, y)) ? 1 : 0;
        return dark;
    }
    ReplayView view;
};

TEST_F(Replay, DrawsStrokesAtTheirTime)
{
    ASSERT_TRUE(view.setInk(streamOf(twoStrokes()).toBase64()));
    EXPECT_EQ(view.duration(), 1110);
    view.setMillisecond(0);
    EXPECT_EQ(darkHalves(), std::pair(0, 0));
    view.setMillisecond(50);
    const auto [half, nothing] = darkHalves();
    EXPECT_GT(half, 20);
    EXPECT_EQ(nothing, 0);
    view.setMillisecond(900);
    const auto [whole, still] = darkHalves();
    EXPECT_GT(whole, half * 3 / 2);
    EXPECT_EQ(still, 0) << "the second stroke comes later, and no line leads to it";
    view.setMillisecond(1110);
    EXPECT_EQ(darkHalves().first, whole);
    EXPECT_NEAR(darkHalves().second, whole, whole / 5.0);
}

TEST_F(Replay, TakesItsOwnTime)
{
    view.show();
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(view.setInk(streamOf(twoStrokes()).toBase64() + "\n"));
    auto& position = *view.findChild<QSlider*>();
    ASSERT_TRUE(waitUntil([&] { return position.value() == view.duration(); }));
    EXPECT_GE(clock.elapsed(), view.duration() - 1);
    EXPECT_GT(darkHalves().second, 20);
}

TEST_F(Replay, RefusesWhatIsNoInk)
{
    const QByteArray good = streamOf(twoStrokes());
    EXPECT_FALSE(view.setInk(""));
    EXPECT_FALSE(view.setInk("no ink!"));
    EXPECT_FALSE(view.setInk(QByteArray(1, '\0').toBase64()));
    EXPECT_FALSE(view.setInk(good.left(good.size() - 1).toBase64()));
    EXPECT_FALSE(view.setInk(good.mid(1).toBase64()));
    QByteArray wrongEnd = good;
    wrongEnd.back() = 'x';
    EXPECT_FALSE(view.setInk(wrongEnd.toBase64()));
    EXPECT_TRUE(view.setInk(good.toBase64()));
}

TEST_F(Replay, ReadsTimesThatMakeNoSense)
{
    std::vector<_POINTDATA> senseless = twoStrokes();
    senseless[0].llTick = std::numeric_limits<qint64>::min();
    senseless[1].llTick = std::numeric_limits<qint64>::max();
    senseless[2].llTick = 0;
    const QVector<InkPoint> points = readInk(streamOf(senseless).toBase64());
    ASSERT_EQ(points.size(), 24);
    for (int i = 1; i < points.size(); ++i) {
        EXPECT_GE(points[i].millisecond, points[i - 1].millisecond);
        EXPECT_LE(points[i].millisecond, 3600000);
    }
}

TEST_F(DemoWindowOnce, ReplaysWhatWasSigned)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.2}, {0.4, 0.4});
    person.draw({0.6, 0.2}, {0.8, 0.4});
    const QVector<InkPoint> points = readInk(window->session().inkText());
    ASSERT_EQ(points.size(), 84);
    EXPECT_TRUE(points[41].lifted);
    EXPECT_FALSE(points[40].lifted);
    EXPECT_EQ(points[0].place, QPointF(160 + 472, 220 + 286));
    EXPECT_EQ(points[0].millisecond, 0);
}

} // namespace

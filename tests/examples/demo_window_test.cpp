// The demo host's window from inside, with a person at the simulated pad.
#include "support.h"

#include "documentdialog.h"
#include "mainwindow.h"
#include "model/padmodel.h"
#include "previewdialog.h"
#include "replayview.h"
#include "signaturepanel.h"

#include <simclient.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QGraphicsView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QSlider>
#include <QThread>
#include <QToolButton>
#include <QtEndian>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
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

const std::vector<Model> models = [] {
    std::vector<Model> list;
    for (const CPadModel* row : AllPads())
        list.push_back({row->m_pszName,
                        {row->m_nPadOriginX, row->m_nPadOriginY, row->m_nAreaWidth, row->m_nAreaHeight},
                        row->m_nInitialMaxPressure});
    return list;
}();

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

    const simulator::Client& control()
    {
        if (!m_driver) {
            m_driver = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_NOLOAD);
            if (!m_driver || m_control.resolve(m_driver))
                throw std::runtime_error("the host has not loaded the simulated pad");
        }
        return m_control;
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
        ASSERT_EQ(control().SendSamples(samples.data(), samples.size()), 0);
        waitIdle();
    }
    // The pen comes down and is lifted at the same place.
    void tap(QPointF place)
    {
        const int x = m_model.area.x() + int(place.x() * m_model.area.width());
        const int y = m_model.area.y() + int(place.y() * m_model.area.height());
        const ScrSimSample samples[] = {{x, y, m_model.highestPressure / 2, 0}, {x, y, 0, 2}};
        ASSERT_EQ(control().SendSamples(samples, 2), 0);
        waitIdle();
    }
    int calls(const char* entryPoint) { return control().CallCount(entryPoint); }
    void setResult(const char* entryPoint, int result)
    {
        ASSERT_EQ(control().SetResult(entryPoint, result), 0);
    }
    void press(int key)
    {
        ASSERT_EQ(control().PressKey(key), 0);
        waitIdle();
    }
    void putFinger()
    {
        ASSERT_EQ(control().SendSyntheticFingerprint("loop", 1, 80), 0);
        waitIdle();
    }

private:
    void waitIdle() { ASSERT_EQ(control().WaitIdle(60000), 0); }

    const Model& m_model;
    void* m_driver = nullptr;
    simulator::Client m_control;
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
    // What the form shows of the signature.
    QGraphicsView& field() const { return *window->findChild<QGraphicsView*>(); }
    bool signAndConfirm()
    {
        person.draw({0.2, 0.3}, {0.8, 0.3}, 0.9);
        person.press(1);
        return waitUntil([&] { return isConfirmed(); });
    }
    bool isConfirmed() const { return state().rfind("Confirmed at ", 0) == 0; }
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
    testing::AssertionResult inkAt(QPointF place) const { return inkAt(place, drawn()); }
    static testing::AssertionResult inkAt(QPointF place, const QImage& image)
    {
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
    EXPECT_TRUE(panel.rect().contains(field().geometry()));
    EXPECT_EQ(canvas().size(), field().size());
    const double height = double(canvas().width()) * m_model.area.height() / m_model.area.width();
    EXPECT_NEAR(canvas().height(), height, 1.5);
    EXPECT_EQ(state(), "Waiting for the signature");
}

TEST_P(DemoWindow, BlankCanvasFollowsTheWindow)
{
    ASSERT_TRUE(open());
    const QSize before = canvas().size();
    for (const QSize size : {QSize(1500, 1000), QSize(1080, 640), QSize(1300, 800)}) {
        window->resize(size);
        QApplication::processEvents();
        const QRect panel = window->findChild<SignaturePanel*>()->rect();
        EXPECT_TRUE(panel.contains(field().geometry()));
        EXPECT_EQ(canvas().size(), field().size());
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
        const QRect panel = window->findChild<SignaturePanel*>()->rect();
        EXPECT_TRUE(panel.contains(field().geometry()));
        EXPECT_TRUE(panel.width() - field().width() < 16 || panel.height() - field().height() < 16);
        EXPECT_TRUE(inkAt({0.5, 0.3}, field().grab().toImage())) << "all of it is shown";
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
    find<QToolButton>("blue").click();
    person.draw({0.1, 0.5}, {0.9, 0.5}, 0.9);
    const QRgb blue = qRgb(0x10, 0x35, 0x9c);
    const QRect column(canvas().width() / 2, 0, 1, canvas().height());
    EXPECT_NEAR(countOf(drawn(), column, blue), 8, 1);
    find<QToolButton>("green").click();
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

    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(waitUntil([&] { return count() == "42 points"; })) << count();
    EXPECT_EQ(state(), "Signing");
    EXPECT_EQ(confirmations, 0);
    EXPECT_FALSE(find<QPushButton>("save").isEnabled()) << "saved is what is confirmed";
    find<QPushButton>("clear").click();
    EXPECT_EQ(state(), "Waiting for the signature");
    EXPECT_EQ(count(), "0 points");

    person.draw({0.2, 0.3}, {0.8, 0.3});
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return isConfirmed(); }));
    EXPECT_EQ(confirmations, 1);
    EXPECT_EQ(count(), "42 points");
    EXPECT_TRUE(find<QPushButton>("save").isEnabled());
    EXPECT_FALSE(find<QPushButton>("confirm").isEnabled());
}

TEST_P(DemoWindow, ConfirmKeyFreezesTheSignature)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3}, 0.9);
    const QImage seen = drawn().convertToFormat(QImage::Format_RGB32);
    // The host hears of the key when more is drawn already.
    person.press(1);
    person.draw({0.2, 0.7}, {0.8, 0.7}, 0.9);
    EXPECT_EQ(state(), "Waiting for the signature");
    ASSERT_TRUE(waitUntil([&] { return isConfirmed(); }));
    const Signature& signature = window->signature();
    EXPECT_EQ(signature.points, 42);
    EXPECT_EQ(count(), "42 points");
    EXPECT_EQ(readInk(signature.ink).size(), 42);
    EXPECT_EQ(signature.canvas.convertToFormat(QImage::Format_RGB32), seen);
    EXPECT_EQ(field().grab().toImage().convertToFormat(QImage::Format_RGB32), seen) << "shown to the end";
    for (const int type : {EBITI_BITMAP, EBITI_PNG}) {
        QImage whole(seen.size(), QImage::Format_RGB32);
        whole.fill(Qt::white);
        QPainter(&whole).drawImage(0, 0, QImage::fromData(signature.file({type, 300, false})));
        EXPECT_EQ(whole, seen) << type;
    }
    const QImage clipped = QImage::fromData(signature.file({EBITI_BITMAP, 300, true}));
    EXPECT_LT(clipped.height(), seen.height() / 5) << "the later stroke is not in it";
}

TEST_P(DemoWindow, PadIsOpenForOneSignatureOnly)
{
    ASSERT_TRUE(open());
    ASSERT_TRUE(signAndConfirm());
    EXPECT_FALSE(window->session().isOpen());
    const ScrSimSample sample{m_model.area.x() + 10, m_model.area.y() + 10, 500, 0};
    EXPECT_NE(person.control().SendSamples(&sample, 1), 0);

    find<QPushButton>("clear").click();
    EXPECT_TRUE(window->session().isOpen());
    EXPECT_EQ(state(), "Waiting for the signature");
    EXPECT_EQ(count(), "0 points");
    EXPECT_FALSE(find<QPushButton>("save").isEnabled());
    EXPECT_TRUE(window->signature().ink.isEmpty());
    person.draw({0.2, 0.6}, {0.8, 0.6}, 0.9);
    ASSERT_TRUE(caughtUp());
    find<QPushButton>("confirm").click();
    EXPECT_TRUE(isConfirmed());
    EXPECT_FALSE(window->session().isOpen());
    EXPECT_TRUE(inkAt({0.5, 0.6}, window->signature().canvas));
}

TEST_P(DemoWindow, NothingIsConfirmedWithoutInk)
{
    ASSERT_TRUE(open());
    const auto expectNothing = [&] {
        EXPECT_EQ(state(), "Waiting for the signature");
        for (const char* name : {"confirm", "save", "replay"})
            EXPECT_FALSE(find<QPushButton>(name).isEnabled()) << name;
        EXPECT_TRUE(find<QPushButton>("load").isEnabled());
    };
    int keys = 0;
    QObject::connect(&window->session(), &PadSession::confirmed, [&] { ++keys; });
    expectNothing();
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return keys == 1; }));
    expectNothing();
    person.tap({0.5, 0.5});
    person.tap({0.6, 0.5});
    ASSERT_TRUE(waitUntil([&] { return count() == "4 points"; })) << count();
    expectNothing();
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return keys == 2; }));
    expectNothing();
    EXPECT_TRUE(window->session().isOpen());
    ASSERT_TRUE(signAndConfirm());
    for (const char* name : {"save", "replay"})
        EXPECT_TRUE(find<QPushButton>(name).isEnabled()) << name;
}

TEST_P(DemoWindow, CancelKeyClearsFormAndPad)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(caughtUp());
    const int clears = person.calls("SCRDAPI_ClearDeviceContent");
    person.press(0);
    ASSERT_TRUE(waitUntil([&] { return state().rfind("Cancelled", 0) == 0; }));
    EXPECT_EQ(count(), "0 points");
    EXPECT_EQ(window->session().points(), 0);
    EXPECT_FALSE(inkAt({0.5, 0.3}));
    EXPECT_EQ(person.calls("SCRDAPI_ClearDeviceContent"), clears + 1) << "the pad keeps its screen otherwise";
    EXPECT_TRUE(window->session().isOpen());
    ASSERT_TRUE(signAndConfirm());
}

TEST_P(DemoWindow, CancelKeyTakesNoLaterInkAway)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3}, 0.9);
    int keys = 0;
    QObject::connect(window.get(), &MainWindow::cancelled, [&] { ++keys; });
    // The window hears of the key when the person has signed again already.
    const int clears = person.calls("SCRDAPI_ClearDeviceContent");
    person.press(0);
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < 60000 && person.calls("SCRDAPI_ClearDeviceContent") == clears;)
        QThread::msleep(1);
    person.draw({0.2, 0.7}, {0.8, 0.7}, 0.9);
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return isConfirmed(); }));
    EXPECT_EQ(keys, 1);
    EXPECT_EQ(window->signature().points, 42);
    EXPECT_TRUE(inkAt({0.5, 0.7}, window->signature().canvas));
    EXPECT_FALSE(inkAt({0.5, 0.3}, window->signature().canvas));
}

TEST_P(DemoWindow, NoticesThatThePadWentAway)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(caughtUp());
    QStringList reasons;
    QObject::connect(window.get(), &MainWindow::noPad, [&](const QString& reason) { reasons += reason; });
    person.setResult("SCRDAPI_GetDevicePadID", -1);
    ASSERT_TRUE(waitUntil([&] { return state() == "No pad"; }));
    EXPECT_EQ(reasons, QStringList(QStringLiteral("the %1 went away").arg(m_model.name)));
    EXPECT_EQ(find<QLabel>("noticeTitle").text(), QStringLiteral("The %1 went away").arg(m_model.name));
    EXPECT_TRUE(find<QPushButton>("tryAgain").isVisible());
    EXPECT_FALSE(window->session().isOpen());
    EXPECT_EQ(count(), "0 points");
    for (const char* name : {"confirm", "clear", "replay", "save"})
        EXPECT_FALSE(find<QPushButton>(name).isEnabled()) << name;

    person.setResult("SCRDAPI_GetDevicePadID", 0);
    find<QPushButton>("tryAgain").click();
    EXPECT_EQ(state(), "Waiting for the signature");
    ASSERT_TRUE(signAndConfirm());
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
    EXPECT_EQ(state(), "Waiting for the signature");
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

TEST_F(DemoWindowOnce, KeepsAPadThatNeverGaveItsId)
{
    ASSERT_TRUE(open());
    person.setResult("SCRDAPI_GetDevicePadID", -1);
    ASSERT_TRUE(open());
    const int asked = person.calls("SCRDAPI_GetDevicePadID");
    ASSERT_TRUE(waitUntil([&] { return person.calls("SCRDAPI_GetDevicePadID") > asked + 1; }));
    EXPECT_EQ(state(), "Waiting for the signature");
    EXPECT_TRUE(window->session().isOpen());
}

TEST_F(DemoWindowOnce, SaysWhenASignatureCannotBeTaken)
{
    ASSERT_TRUE(open());
    person.draw({0.2, 0.3}, {0.8, 0.3});
    ASSERT_TRUE(caughtUp());
    const QByteArray folder = qgetenv("TMPDIR");
    write("file", {});
    qputenv("TMPDIR", path("file").toLocal8Bit()); // nothing can be made in there
    find<QPushButton>("confirm").click();
    folder.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", folder);
    EXPECT_EQ(state().rfind("Not confirmed", 0), 0u) << state();
    EXPECT_TRUE(window->session().isOpen());
    EXPECT_FALSE(find<QPushButton>("save").isEnabled());
    find<QPushButton>("confirm").click();
    EXPECT_TRUE(isConfirmed());
}

// Of the widgets side by side in each parent, and of lines of text in their labels. The signature field is
// several layers on purpose.
void expectNothingOverlaps(const QWidget& parent, const std::string& where)
{
    QList<QWidget*> visible;
    for (QWidget* child : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (child->isVisible() && !child->isWindow())
            visible += child;
    for (int i = 0; i < visible.size(); ++i) {
        const QWidget& one = *visible[i];
        const std::string name =
            where + "/" + one.metaObject()->className() + " " + one.objectName().toStdString();
        EXPECT_TRUE(parent.rect().contains(one.geometry())) << name;
        for (int j = 0; j < i; ++j)
            EXPECT_FALSE(one.geometry().intersects(visible[j]->geometry()))
                << name << " and " << visible[j]->objectName().toStdString();
        if (const auto* text = qobject_cast<const QLabel*>(&one); text && text->wordWrap()) {
            EXPECT_GE(text->height(), text->heightForWidth(text->width())) << name;
        } else if (text) {
            EXPECT_GE(text->width(), text->sizeHint().width()) << name;
        }
        if (!qobject_cast<const SignaturePanel*>(&one))
            expectNothingOverlaps(one, name);
    }
}

TEST_P(DemoWindow, FitsASmallScreenAndKeepsItsSize)
{
    // 1366 x 768 less a title bar and a task bar.
    EXPECT_LE(window->width(), 1366);
    EXPECT_LE(window->height(), 690);
    for (const QSize size : {QSize(1, 1), window->size()}) {
        window->resize(size);
        QApplication::processEvents();
        const QSize kept = window->size();
        const auto look = [&](const char* when) {
            QApplication::processEvents();
            EXPECT_EQ(window->size(), kept) << when;
            expectNothingOverlaps(*window, when);
        };
        unplug();
        window->openPad();
        look("no driver");
        const auto& notice = *find<QLabel>("noticeTitle").parentWidget();
        expectNothingOverlaps(notice, "notice");
        plugIn();
        ASSERT_TRUE(open());
        look("waiting");
        person.draw({0.2, 0.3}, {0.8, 0.3});
        ASSERT_TRUE(caughtUp());
        look("signing");
        person.press(0);
        ASSERT_TRUE(waitUntil([&] { return state().rfind("Cancelled", 0) == 0; }));
        look("cancelled");
        ASSERT_TRUE(signAndConfirm());
        look("confirmed");
    }
}

TEST_F(DemoWindowOnce, PreviewShowsAndCopiesEveryKind)
{
    ASSERT_TRUE(open());
    ASSERT_TRUE(signAndConfirm());
    PreviewDialog dialog(window->signature(), window.get());
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
        const QString kind = suffix(dialog.settings().imageType);
        EXPECT_TRUE(kind == "pdf" ? content.startsWith("%PDF")
                                  : content.startsWith("<?xml") == (kind == "svg"));
        if (kind == "png" || kind == "jpg" || kind == "bmp") {
            const QImage picture = QImage::fromData(content, kind.toLatin1().constData());
            const int whole = window->signature().canvas.width();
            EXPECT_NEAR(picture.width(), whole * 0.6 + 2 * 12, 20) << "the ink and its margins";
        }
    }
}

#ifdef SCRIBERA_SIGN_PROGRAM
// One empty page.
QByteArray document()
{
    QByteArray content = "%PDF-1.7\n";
    QByteArray places;
    int number = 0;
    for (const char* object :
         {"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
          "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] >>"}) {
        places += QByteArray::number(content.size()).rightJustified(10, '0') + " 00000 n \n";
        content += QByteArray::number(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    return content + "xref\n0 4\n0000000000 65535 f \n" + places +
           "trailer << /Size 4 /Root 1 0 R >>\nstartxref\n" + QByteArray::number(content.size()) +
           "\n%%EOF\n";
}

TEST_F(DemoWindowOnce, SignsADocument)
{
    qputenv("SCRIBERA_SIGN", SCRIBERA_SIGN_PROGRAM);
    ASSERT_TRUE(open());
    EXPECT_FALSE(find<QPushButton>("signDocument").isEnabled());
    ASSERT_TRUE(signAndConfirm());
    EXPECT_TRUE(find<QPushButton>("signDocument").isEnabled());
    const int made = QProcess::execute(
        "sh",
        {"-c", "openssl req -x509 -newkey rsa:2048 -nodes -keyout own.key -out own.pem -subj /CN=Counter "
               "2>/dev/null && openssl pkcs12 -export -inkey own.key -in own.pem -passout 'pass:a b' "
               "-out own.p12"});
    ASSERT_EQ(made, 0);
    write("contract.pdf", document());

    DocumentDialog dialog(window->signature().ink, m_model.name, {}, window.get());
    const auto line = [&](const char* name) { return dialog.findChild<QLineEdit*>(name); };
    auto& sign = *dialog.findChild<QPushButton*>("sign");
    auto& result = *dialog.findChild<QLabel*>("result");
    const auto signNow = [&] {
        sign.click();
        EXPECT_TRUE(waitUntil([&] { return sign.isEnabled(); }));
        return result.text().toStdString();
    };
    EXPECT_FALSE(sign.isEnabled()) << "nothing is named";
    line("document")->setText(path("contract.pdf"));
    line("output")->setText(path("signed.pdf"));
    line("certificate")->setText(path("own.p12"));
    line("password")->setText("wrong");
    EXPECT_NE(signNow().find("password"), std::string::npos) << result.text().toStdString();
    EXPECT_FALSE(QFile::exists(path("signed.pdf")));
    line("password")->setText("a b");
    EXPECT_NE(signNow().find("sealed by Counter"), std::string::npos) << result.text().toStdString();
    QFile signedFile(path("signed.pdf"));
    ASSERT_TRUE(signedFile.open(QIODevice::ReadOnly));
    EXPECT_TRUE(signedFile.readAll().startsWith(document()));
    EXPECT_EQ(
        QProcess::execute(SCRIBERA_SIGN_PROGRAM, {"verify", path("signed.pdf"), "--trust", path("own.pem")}),
        0);
}
#endif

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

TEST_F(DemoWindowWithReader, CancelKeyTakesTheFingerprintAwayToo)
{
    ASSERT_TRUE(open());
    const QRgb red = qRgb(255, 0, 0);
    for (int turn = 0; turn < 2; ++turn) {
        person.draw({0.1, 0.8}, {0.5, 0.8});
        person.putFinger();
        ASSERT_TRUE(waitUntil([&] { return countOf(drawn(), canvas().rect(), red) > 500; }));
        const int clears = person.calls("SCRDAPI_ClearDeviceContent");
        person.press(0);
        ASSERT_TRUE(waitUntil([&] { return person.calls("SCRDAPI_ClearDeviceContent") > clears; }))
            << "the pad shows it otherwise";
        ASSERT_TRUE(waitUntil([&] { return state().rfind("Cancelled", 0) == 0; }));
        EXPECT_EQ(countOf(drawn(), canvas().rect(), red), 0);
        EXPECT_TRUE(window->session().fingerprintPng().isEmpty());
        EXPECT_EQ(person.calls("SCRDAPI_ClearDeviceContent"), clears + 1);
    }
}

TEST_F(DemoWindowWithReader, ConfirmedFingerprintStays)
{
    ASSERT_TRUE(open());
    EXPECT_FALSE(find<QPushButton>("exportFingerprint").isEnabled());
    person.putFinger();
    ASSERT_TRUE(waitUntil([&] { return !window->session().fingerprintPng().isEmpty(); }));
    EXPECT_FALSE(find<QPushButton>("confirm").isEnabled()) << "a finger is no signature";
    const QImage print = QImage::fromData(window->session().fingerprintPng());
    ASSERT_TRUE(signAndConfirm());
    EXPECT_TRUE(find<QPushButton>("exportFingerprint").isEnabled());
    EXPECT_EQ(QImage::fromData(window->signature().fingerprint).size(), print.size());
    EXPECT_GT(countOf(field().grab().toImage(), field().rect(), qRgb(255, 0, 0)), 500);
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
    // The confirmed one is shown when the pad is closed, too.
    person.press(1);
    ASSERT_TRUE(waitUntil([&] { return isConfirmed(); }));
    QApplication::processEvents();
    EXPECT_GT(countOf(window->grab().toImage(), aside, red), 50);
    find<QPushButton>("clear").click();
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
    ReplayView view{streamOf(twoStrokes()).toBase64() + "\n"};
};

TEST_F(Replay, DrawsStrokesAtTheirTime)
{
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
    QElapsedTimer clock;
    clock.start();
    ReplayView playing(streamOf(twoStrokes()).toBase64());
    playing.show();
    auto& position = *playing.findChild<QSlider*>();
    ASSERT_TRUE(waitUntil([&] { return position.value() == playing.duration(); }));
    EXPECT_GE(clock.elapsed(), playing.duration() - 1);
    EXPECT_EQ(playing.duration(), 1110);
}

TEST_F(Replay, RefusesWhatIsNoInk)
{
    const auto noInk = [](const QByteArray& text) { return readInk(text).isEmpty(); };
    const QByteArray good = streamOf(twoStrokes());
    EXPECT_TRUE(noInk(""));
    EXPECT_TRUE(noInk("no ink!"));
    EXPECT_TRUE(noInk(QByteArray(1, '\0').toBase64()));
    EXPECT_TRUE(noInk(good.left(good.size() - 1).toBase64()));
    EXPECT_TRUE(noInk(good.mid(1).toBase64()));
    QByteArray wrongEnd = good;
    wrongEnd.back() = 'x';
    EXPECT_TRUE(noInk(wrongEnd.toBase64()));
    EXPECT_FALSE(noInk(good.toBase64()));
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

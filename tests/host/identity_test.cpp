// Who the pad is: texts from the driver, the tables of device information, the About texts.

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <functional>
#include <thread>

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include "pen.h"

namespace scribera::test {
namespace {

class Identity : public OpenPadTest
{
protected:
    struct Asked
    {
        const char* exportedName;
        const char* objectName;
        const char* entryPoint;
        const char* argument;
        int (*call)(int, char*, int);
    };
    std::vector<Asked> questions() const
    {
        std::vector<Asked> all = {
            {"GetHWPadID", "GetDevicePadID", "SCRDAPI_GetDevicePadID", "pPadID", api().GetHWPadID},
            {"GetHWVersionID", "GetDevicePartsVersion", "SCRDAPI_GetDevicePartsVersion", "pVersion",
             api().GetHWVersionID}};
        if (model().hasScreen)
            all.push_back(
                {"GetHWPenID", "GetDevicePenID", "SCRDAPI_GetDevicePenID", "pPenID", api().GetHWPenID});
        return all;
    }
    bool canvasIsWhite()
    {
        EXPECT_GT(pad().points(), 0);
        return isWhite(pad().canvas());
    }
};

TEST_P(Identity, TextsAndResultsOfTheDriverArePassedOn)
{
    for (const Asked& asked : questions()) {
        sim().setText(asked.entryPoint, "Text of the pad");
        char buffer[64];
        std::memset(buffer, 0x5a, sizeof buffer);
        EXPECT_EQ(asked.call(type(), buffer, 40), 0) << asked.exportedName;
        EXPECT_STREQ(buffer, "Text of the pad");
        EXPECT_EQ(buffer[16], 0x5a) << "nothing behind the text";
        EXPECT_EQ(sim().LastArgument(asked.entryPoint), 40);
        for (const int result : {-7, 5, INT_MIN}) {
            sim().SetResult(asked.entryPoint, result);
            EXPECT_EQ(asked.call(type(), buffer, 40), result) << asked.exportedName;
        }
        sim().SetResult(asked.entryPoint, 0);
    }
}

TEST_P(Identity, BuffersAndSizesGoToTheDriverUnchanged)
{
    for (const Asked& asked : questions()) {
        sim().setText(asked.entryPoint, "0123456789");
        char buffer[16];
        std::memset(buffer, 0x5a, sizeof buffer);
        asked.call(type(), buffer, 4);
        EXPECT_EQ(std::string(buffer, 4), "0123") << asked.exportedName;
        EXPECT_EQ(buffer[4], 0x5a);
        for (const int size : {0, -1, 1, INT_MIN}) {
            const int calls = sim().CallCount(asked.entryPoint);
            asked.call(type(), buffer, size);
            EXPECT_EQ(sim().CallCount(asked.entryPoint), calls + 1);
            EXPECT_EQ(sim().LastArgument(asked.entryPoint), size);
        }
        const int calls = sim().CallCount(asked.entryPoint);
        asked.call(type(), nullptr, 16);
        EXPECT_EQ(sim().CallCount(asked.entryPoint), calls + 1) << "null is the driver's affair";
        EXPECT_EQ(sim().LastArgument(asked.entryPoint), 16);
    }
}

TEST_P(Identity, QuestionsWriteTheirLines)
{
    for (const Asked& asked : questions()) {
        char buffer[16];
        sim().SetResult(asked.entryPoint, 3);
        logged([&] { EXPECT_EQ(asked.call(type(), buffer, 16), 3); });
        EXPECT_EQ(textsOf(mainLog(), method(asked.objectName)),
                  (Texts{printed("enter, %s=%s, nMaxCount=16", asked.argument, hex(buffer).c_str()),
                         "leave with nResult=3"}));
        EXPECT_EQ(textsOf(mainLog(), exported(asked.exportedName)).back(), "leave with nResult=3 !");
        sim().SetResult(asked.entryPoint, 0);
    }
}

TEST_P(Identity, VersionDisplayAndPenStyleGoToTheDriver)
{
    for (const bool on : {true, false}) {
        EXPECT_EQ(api().SetPenStyle(type(), on), 0);
        EXPECT_EQ(sim().LastArgument("SCRDAPI_SetDevicePenStyle"), on);
        if (!model().hasScreen)
            continue;
        EXPECT_EQ(api().DisplayHWVersion(type(), on), 0);
        EXPECT_EQ(sim().LastArgument("SCRDAPI_ShowVersionInfoOnDevice"), on);
    }
    if (model().hasScreen) {
        sim().SetResult("SCRDAPI_ShowVersionInfoOnDevice", -4);
        logged([&] { EXPECT_EQ(api().DisplayHWVersion(type(), true), -4); });
        EXPECT_EQ(textsOf(mainLog(), method("ShowVersionInfoOnDevice")),
                  (Texts{"enter, bOn=1", "leave with nResult=-4"}));
    }
}

TEST_P(Identity, SwitchingTheScreenOffClearsTheCanvasAndOnDoesNot)
{
    if (!model().hasScreen) {
        EXPECT_EQ(api().OpenLCD, nullptr);
        EXPECT_EQ(Library::instance().symbol(std::string(model().prefix) + "OpenLCD"), nullptr);
        return;
    }
    pad().draw(wave(model(), 10));
    ASSERT_FALSE(canvasIsWhite());
    EXPECT_EQ(api().OpenLCD(type(), true), 0);
    EXPECT_EQ(sim().LastArgument("SCRDAPI_OpenDeviceLCD"), 1);
    EXPECT_FALSE(canvasIsWhite());
    logged([&] {
        sim().SetResult("SCRDAPI_OpenDeviceLCD", 9);
        EXPECT_EQ(api().OpenLCD(type(), false), 9);
    });
    EXPECT_EQ(sim().LastArgument("SCRDAPI_OpenDeviceLCD"), 0);
    EXPECT_TRUE(canvasIsWhite());
    EXPECT_EQ(pad().points(), 12) << "the points stay";
    const std::vector<LogLine> lines = mainLog();
    EXPECT_EQ(textsOf(lines, method("OpenDeviceLCD")), (Texts{"enter, bOn=0", "leave with nResult=9"}));
    EXPECT_EQ(textsOf(lines, method("ClearSignCanvas")), (Texts{"enter...", "leave !"}));
    EXPECT_EQ(textsOf(lines, exported("OpenLCD")),
              (Texts{printed("Enter, nDeviceType=%d, bOn=0", type()), "leave with nResult=9 !"}));
}

TEST_P(Identity, CanvasIsClearedBeforeThePadsScreenGoesOff)
{
    if (model().hasScreen) {
        pad().draw(wave(model(), 10));
        sim().SetDelay("SCRDAPI_OpenDeviceLCD", 300);
        std::atomic<bool> white{false};
        const int calls = sim().CallCount("SCRDAPI_OpenDeviceLCD");
        std::thread watcher([&] {
            // The driver is busy switching from here on.
            for (int i = 0; i < 300 && sim().CallCount("SCRDAPI_OpenDeviceLCD") == calls; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            white = isWhite(decoded(takeImage(pad(), ImageBmp).bytes(), "BMP"));
        });
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(api().OpenLCD(type(), false), 0);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(290));
        watcher.join();
        EXPECT_TRUE(white);
        sim().SetDelay("SCRDAPI_OpenDeviceLCD", 0);
    }
}

TEST_P(Identity, WithoutTheScreenCallNothingIsCleared)
{
    installDriverWithout("OpenDeviceLCD");
    ASSERT_TRUE(pad().start());
    if (model().hasScreen) {
        pad().draw(wave(model(), 10));
        EXPECT_EQ(api().OpenLCD(type(), false), -1);
        EXPECT_EQ(api().OpenLCD(type(), true), -1);
        EXPECT_FALSE(canvasIsWhite());
    }
}

TEST_P(Identity, DeviceInformationIsTheTableOfTheModel)
{
    const auto number = [](std::int32_t value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    const std::string name = std::string(model().name) == "K421B" ? "K421H" : model().name;
    const std::string expected[] = {std::string(1, '\x01'),
                                    number(0) + number(model().areaWidth),
                                    number(0) + number(model().areaHeight),
                                    number(model().maxPressure),
                                    std::string("Corvenna", 9),
                                    std::string(name.c_str(), name.size() + 1),
                                    number(3) + number(0)};
    for (int index = 1; index <= 7; ++index) {
        for (const char background : {'\x5a', '\x00', '\xff'}) {
            std::string buffer(64, background);
            EXPECT_EQ(api().getDeviceInfo(type(), index, buffer.data()), 0) << index;
            const std::string& bytes = expected[index - 1];
            EXPECT_EQ(buffer.substr(0, bytes.size()), bytes) << index;
            EXPECT_EQ(buffer.substr(bytes.size()), std::string(64 - bytes.size(), background)) << index;
        }
    }
    std::string buffer(64, 'u');
    for (const int index : {0, 8, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(api().getDeviceInfo(type(), index, buffer.data()), -2) << index;
    EXPECT_EQ(buffer, std::string(64, 'u'));
    for (int index = 1; index <= 7; ++index)
        EXPECT_EQ(api().getDeviceInfo(type(), index, nullptr), -2);
}

TEST_P(Identity, DeviceInformationWritesItsLines)
{
    char buffer[16];
    logged([&] { EXPECT_EQ(api().getDeviceInfo(type(), 5, buffer), 0); });
    EXPECT_EQ(textsOf(mainLog(), method("GetDeviceInfo")),
              (Texts{"Enter, nIndex=5, pOutput=" + hex(buffer), "leave !"}));
    EXPECT_EQ(textsOf(mainLog(), exported("getDeviceInfo")).back(), "leave with nResult=0 !");
}

TEST_P(Identity, AboutInfoIsTheWholeText)
{
    const std::string text = "About\n\nScribera SDK on Linux OS\nVersion : 3.0.0.0\nCopyright 2024 Corvenna";
    for (const bool live : {true, false}) {
        if (!live) {
            EXPECT_EQ(pad().stop(), 0);
        }
        std::string buffer(128, 'u');
        api().GetAboutInfo(type(), buffer.data());
        EXPECT_STREQ(buffer.c_str(), text.c_str());
        EXPECT_EQ(buffer.substr(text.size() + 1), std::string(127 - text.size(), 'u'));
        api().GetAboutInfo(type(), nullptr);
        for (const int wrong : {0, -1, 6, otherModel(model()).deviceType}) {
            std::string untouched(128, 'u');
            api().GetAboutInfo(wrong, untouched.data());
            EXPECT_EQ(untouched, std::string(128, 'u'));
        }
    }
}

SCRIBERA_INSTANTIATE_ALL(Identity);

class WidgetAbout : public PadTest
{
protected:
    struct Shown
    {
        int boxes = 0;
        QString title;
        QString text;
        bool modal = false;
        QWidget* parent = nullptr;
    };
    // Runs the call, which blocks until somebody closes the box.
    static Shown watch(const std::function<void()>& call)
    {
        Shown shown;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            ++shown.boxes;
            shown.title = box->windowTitle();
            shown.text = box->text();
            shown.modal = box->isModal();
            shown.parent = box->parentWidget();
            box->accept();
        });
        timer.start(10);
        call();
        for (int i = 0; i < 5; ++i)
            processEvents();
        return shown;
    }
    static void expectAbout(const Shown& shown, QWidget* parent)
    {
        EXPECT_EQ(shown.boxes, 1);
        EXPECT_EQ(shown.title, QString("About"));
        EXPECT_EQ(shown.text, QString("<p align='center'>Scribera SDK on Linux OS<br>Version : 3.0.0.0<br>"
                                      "Copyright 2024 Corvenna</p>"));
        EXPECT_TRUE(shown.modal);
        EXPECT_EQ(shown.parent, parent);
    }
};

TEST_P(WidgetAbout, BoxShowsTheText)
{
    expectAbout(watch([&] { api().AboutBox(nullptr); }), nullptr);
    QWidget& parent = pad().makeParent(true);
    expectAbout(watch([&] { api().AboutBox(&parent); }), &parent);
    expectAbout(watch([&] { api().AboutBoxByWId(parent.winId()); }), &parent);
}

TEST_P(WidgetAbout, UnknownWindowIdShowsNothing)
{
    pad().makeParent(true);
    for (const WindowId id : {WindowId(0), WindowId(987654321), ~WindowId(0)})
        EXPECT_EQ(watch([&] { api().AboutBoxByWId(id); }).boxes, 0) << id;
}

TEST_P(WidgetAbout, OffTheGuiThreadNothingIsShown)
{
    const WindowId id = pad().makeParent(true).winId();
    const Shown shown = watch([&] {
        std::atomic<bool> done{false};
        std::thread other([&] {
            api().AboutBox(nullptr);
            api().AboutBoxByWId(id);
            done = true;
        });
        EXPECT_TRUE(waitUntil([&] { return done.load(); }));
        other.join();
    });
    EXPECT_EQ(shown.boxes, 0);
}

SCRIBERA_INSTANTIATE(WidgetAbout, Kind::Widget);

class WindowlessAbout : public PadTest
{
};

TEST_P(WindowlessAbout, WithoutApplicationNothingHappens)
{
    api().AboutBox(nullptr);
    api().AboutBoxByWId(0);
    api().AboutBoxByWId(1234);
    ASSERT_TRUE(pad().start());
    api().AboutBox(nullptr);
    api().AboutBoxByWId(1234);
}

SCRIBERA_INSTANTIATE(WindowlessAbout, Kind::Windowless);

} // namespace
} // namespace scribera::test

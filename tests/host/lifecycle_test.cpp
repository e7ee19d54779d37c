// Making and destroying the one sign object, and what calls meet while it lives.

#include <atomic>
#include <thread>

#include <QPointer>

#include "exported_operations.h"

namespace scribera::test {
namespace {

class Lifecycle : public PadTest
{
protected:
    Library& library() { return Library::instance(); }

    Texts linesOf(const std::string& operation) { return textsOf(mainLog(), exported(operation)); }

    std::string typeText() const { return std::to_string(type()); }
};

TEST_P(Lifecycle, StartMakesOneObjectOfTheFamilyAndStopTakesItAway)
{
    expectNoObject();
    ASSERT_TRUE(pad().start());
    EXPECT_NE(library().signWidget, nullptr);
    EXPECT_EQ(library().useSignObj != 0, !padCase().isWidget());
    if (padCase().isWidget()) {
        ASSERT_NE(pad().signWidget(), nullptr);
        EXPECT_STREQ(pad().signWidget()->metaObject()->className(), model().widgetClass.c_str());
        EXPECT_EQ(static_cast<void*>(pad().signWidget()), library().signWidget);
    }
    EXPECT_EQ(pad().stop(), 0);
    expectNoObject();
}

TEST_P(Lifecycle, StartAndStopWriteTheirLines)
{
    QWidget* parent = padCase().isWidget() ? &pad().makeParent(true) : nullptr;
    const StartOptions options{.width = 120, .height = 60, .x = 7, .y = 9};
    logged([&] {
        EXPECT_TRUE(pad().start(options));
        EXPECT_EQ(pad().stopKeepingParent(), 0);
    });
    EXPECT_EQ(linesOf("InitialDevice"), (Texts{"Enter, nDeviceType=" + typeText() + ", pParentWidget=" +
                                                   hex(parent) + ", nX=7, nY=9, nWidth=120, nHeight=60",
                                               "leave with bRet=1 !"}));
    EXPECT_EQ(linesOf("UnInitialDevice"),
              (Texts{"Enter, nDeviceType=" + typeText(), "leave with ARI_SUCCESS..."}));
}

TEST_P(Lifecycle, StartByWindowIdWritesItsLines)
{
    ASSERT_NO_FATAL_FAILURE(logged(
        [&] { ASSERT_TRUE(pad().start({.width = 120, .height = 60, .x = 7, .y = 9, .byWindowId = true})); }));
    EXPECT_EQ(linesOf("InitialDeviceByWId"),
              (Texts{"Enter, nDeviceType=" + typeText() + ", nX=7, nY=9, nWidth=120, nHeight=60",
                     "leave with bRet=1 !"}));
    EXPECT_TRUE(linesOf("InitialDevice").empty());
    EXPECT_EQ(library().useSignObj != 0, !padCase().isWidget());
    if (padCase().isWidget()) {
        EXPECT_EQ(static_cast<void*>(pad().signWidget()), library().signWidget);
    }
}

TEST_P(Lifecycle, SecondStartReturnsTrueAndChangesNothing)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 8));
    void* const object = library().signWidget;
    const std::size_t driverCalls = sim().callLog().size();
    const std::size_t threads = ProcessState::now().threads.size();
    QWidget* parent = pad().parent();

    setLogging(true);
    EXPECT_TRUE(api().InitialDevice(type(), parent, 0, 0, 10, 10));
    EXPECT_TRUE(api().InitialDeviceByWId(type(), parent ? parent->winId() : 0, 0, 0, 10, 10));
    if (parent) {
        EXPECT_TRUE(api().InitialDeviceByWId(type(), 0x7ffffff0, 0, 0, 10, 10)); // not even looked for
    }
    setLogging(false);

    EXPECT_EQ(library().signWidget, object);
    EXPECT_EQ(sim().callLog().size(), driverCalls);
    EXPECT_EQ(ProcessState::now().threads.size(), threads);
    EXPECT_EQ(pad().points(), 10);
    EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
    for (const char* operation : {"InitialDevice", "InitialDeviceByWId"}) {
        const Texts texts = linesOf(operation);
        ASSERT_GE(texts.size(), 2u);
        for (std::size_t i = 1; i < texts.size(); i += 2)
            EXPECT_EQ(texts[i], "leave with true due to g_pSignWidget already created !");
    }
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(library().useSignObj, 0);
}

TEST_P(Lifecycle, StopWithoutObjectSucceeds)
{
    logged([&] { EXPECT_EQ(api().UnInitialDevice(type()), 0); });
    EXPECT_EQ(linesOf("UnInitialDevice"),
              (Texts{"Enter, nDeviceType=" + typeText(), "leave with ARI_SUCCESS..."}));
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
}

TEST_P(Lifecycle, AnyFamilyAndKindMayFollowAnother)
{
    for (const PadCase& next : padCase().isWidget() ? allCases() : casesOf(Kind::Windowless)) {
        SCOPED_TRACE(next.name());
        ASSERT_TRUE(pad().start());
        pad().draw(wave(model(), 4));
        EXPECT_EQ(pad().stop(), 0);
        Pad other(next);
        ASSERT_TRUE(other.start());
        EXPECT_EQ(other.points(), -8);
        other.draw(wave(other.model(), 4));
        EXPECT_EQ(other.points(), 6);
        EXPECT_EQ(other.stop(), 0);
    }
}

TEST_P(Lifecycle, AnotherFamilyMeetsNoObject)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 8));
    const QImage before = pad().canvas();
    void* const object = library().signWidget;
    const unsigned char flag = library().useSignObj;

    for (const PadModel& other : padModels()) {
        if (&other == &model())
            continue;
        const Operations& otherApi = library().family(other);
        const PadCase otherCase{&other, padCase().kind};
        for (const ExportedOperation& operation : objectOperations(other)) {
            SCOPED_TRACE(otherCase.exported(operation.name));
            const std::vector<LogLine> lines = logged([&] {
                EXPECT_EQ(operation.call(otherApi, other.deviceType).text, operation.missingObjectResult());
            });
            ASSERT_EQ(lines.size(), 2u) << testing::PrintToString(lines);
            EXPECT_EQ(lines[1].text, operation.leaveText(operation.missingObjectResult()));
        }
        EXPECT_EQ(otherApi.getPackets(other.deviceType, nullptr), -1);
        EXPECT_TRUE(otherApi.InitialDevice(other.deviceType, pad().parent(), 0, 0, 10, 10));
        EXPECT_TRUE(otherApi.InitialDeviceByWId(other.deviceType,
                                                pad().parent() ? pad().parent()->winId() : 0, 0, 0, 10, 10));
        EXPECT_EQ(library().signWidget, object);
        logged([&] { EXPECT_EQ(otherApi.UnInitialDevice(other.deviceType), 0); });
        EXPECT_EQ(textsOf(mainLog(), otherCase.exported("UnInitialDevice")).back(),
                  "leave with ARI_SUCCESS...");
        EXPECT_EQ(library().signWidget, object);
        EXPECT_EQ(library().useSignObj, flag);
    }
    EXPECT_EQ(pad().points(), 10);
    EXPECT_EQ(pad().canvas(), before);
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 20);
}

TEST_P(Lifecycle, StatusOfAWrongStartIsNotKept)
{
    EXPECT_FALSE(api().InitialDevice(otherModel(model()).deviceType, nullptr, 0, 0, 10, 10));
    expectNoObject();
    EXPECT_FALSE(api().InitialDeviceByWId(otherModel(model()).deviceType, 0, 0, 0, 10, 10));
    expectNoObject();
}

TEST_P(Lifecycle, NullGivenToAFreeFunctionIsNotDeleted)
{
    ASSERT_TRUE(pad().start());
    const std::pair<const char*, void (*)(int, char*)> functions[] = {
        {"FreeInkPointTime", api().FreeInkPointTime},
        {"Base64EncodeFree", api().PacketsBase64EncodeFree},
        {"Base64EncodeExFree", api().PacketsBase64EncodeExFree},
        {"FreeSVGImageBase64Data", api().FreeSVGImageBase64Data},
        {"FreeFPImageBase64Data", api().FreeFPImageBase64Data},
    };
    for (const auto& [name, function] : functions) {
        if (!function)
            continue;
        logged([&, release = function] { release(type(), nullptr); });
        const Texts lines = textsOf(mainLog(), method(name));
        ASSERT_EQ(lines.size(), 2u) << testing::PrintToString(lines);
        EXPECT_TRUE(lines[0].starts_with("enter, p") && lines[0].ends_with("=0")) << lines[0];
        EXPECT_EQ(lines[1], "leave !");
    }
}

// ---- calls from callbacks

struct CallbackCalls
{
    const Operations* api = nullptr;
    int deviceType = 0;
    int wrongType = 0;
    QWidget* parent = nullptr;
    std::atomic<int> stopResult = 99;
    std::atomic<int> wrongTypeStopResult = 99;
    std::atomic<int> done = 0;
    bool ink = false; // the canvas shows something when the callback comes
};
CallbackCalls calls;

void callInside(const PadModel& model, QWidget* parent = nullptr)
{
    calls.api = &Library::instance().family(model);
    calls.deviceType = model.deviceType;
    calls.wrongType = otherModel(model).deviceType;
    calls.parent = parent;
}

void stopInside()
{
    calls.stopResult = calls.api->UnInitialDevice(calls.deviceType);
    calls.wrongTypeStopResult = calls.api->UnInitialDevice(calls.wrongType);
    ++calls.done;
}

TEST_P(Lifecycle, StopIsRefusedInsideTheStatusCallback)
{
    ASSERT_TRUE(pad().start());
    callInside(model());
    ASSERT_EQ(api().SignatureStatusCallback(type(), [](int) { stopInside(); }), 0);
    ASSERT_NO_FATAL_FAILURE(logged([&] {
        sim().pressKey(1);
        ASSERT_TRUE(waitUntil([] { return calls.done == 1; }));
    }));
    EXPECT_EQ(calls.stopResult, -1);
    EXPECT_EQ(calls.wrongTypeStopResult, -2);
    EXPECT_EQ(
        linesOf("UnInitialDevice"),
        (Texts{"Enter, nDeviceType=" + typeText(),
               "leave with nResult=-1 due to (called inside a callback) !",
               "Enter, nDeviceType=" + std::to_string(calls.wrongType),
               "leave with ARI_INVALID_PARAMETERS due to (nDeviceType != " + model().deviceName + ") !"}));
    EXPECT_NE(library().signWidget, nullptr);
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 10);
}

TEST_P(Lifecycle, StopIsRefusedInsideTheRealTimeCallback)
{
    ASSERT_TRUE(pad().start());
    callInside(model());
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) { stopInside(); }));
    logged([&] { sim().send({sampleAt(model(), {0.5, 0.5}, PenDown)}); });
    EXPECT_EQ(calls.done, 1);
    EXPECT_EQ(calls.stopResult, -1);
    EXPECT_EQ(calls.wrongTypeStopResult, -2);
    const Texts texts = linesOf("UnInitialDevice");
    ASSERT_EQ(texts.size(), 4u);
    EXPECT_EQ(texts[1], "leave with nResult=-1 due to (called inside a callback) !");
    EXPECT_NE(library().signWidget, nullptr);
}

TEST_P(Lifecycle, StopOfAnotherFamilyIsRefusedInsideACallbackToo)
{
    ASSERT_TRUE(pad().start());
    callInside(otherModel(model()));
    ASSERT_EQ(api().SignatureStatusCallback(type(), [](int) { stopInside(); }), 0);
    sim().pressKey(0);
    ASSERT_TRUE(waitUntil([] { return calls.done == 1; }));
    EXPECT_EQ(calls.stopResult, -1);
    EXPECT_NE(library().signWidget, nullptr);
}

// What a host may do inside a callback: everything but stop.
void callEverything(int deviceType)
{
    const Operations& api = *calls.api;
    EXPECT_EQ(api.SetPenWidth(deviceType, 5), 0);
    EXPECT_EQ(api.SetPenColor(deviceType, 200, 0, 0), 0);
    EXPECT_EQ(api.SetPenStyle(deviceType, false), 0);
    EXPECT_TRUE(api.InitialDevice(deviceType, calls.parent, 0, 0, 1, 1));
    EXPECT_EQ(api.SetSaveCenterImageClip(deviceType, true, 3, 3), 0);
    EXPECT_GT(api.GetTotalPacketsNumber(deviceType), 0);
    Packet packet{0, 0, 0, 0, 9};
    EXPECT_EQ(api.getPackets(deviceType, &packet), 0);
    EXPECT_EQ(packet.status, 0);
    char* time = api.GetInkPointTime(deviceType, 0);
    EXPECT_NE(time, nullptr);
    api.FreeInkPointTime(deviceType, time);
    for (const int image : {ImageBmp, ImageJpeg, ImagePng, ImagePdf, ImageSvg}) {
        std::wstring path = L"inside.png";
        // Clipped to its ink, a picture without any is not there to be saved.
        const bool empty = !calls.ink && image != ImagePdf && image != ImageSvg;
        EXPECT_EQ(api.SaveDrawingImage(deviceType, image, path.data(), 1), empty ? -8 : 0) << image;
    }
    char* stream = api.PacketsBase64Encode(deviceType, ImageInk);
    api.PacketsBase64EncodeFree(deviceType, stream);
    char about[256] = "";
    api.GetAboutInfo(deviceType, about);
    api.AboutBox(calls.parent);
    api.AboutBoxByWId(1);
    if (api.OpenLCD)
        api.OpenLCD(deviceType, true);
    EXPECT_EQ(api.UnInitialDevice(deviceType), -1);
    EXPECT_EQ(api.SignatureStatusCallback(deviceType, [](int) {}), 0);
    EXPECT_TRUE(api.RealTimeSignatureDataCallback(deviceType, [](unsigned long, long) {}));
    EXPECT_EQ(api.Clear(deviceType), 0);
    EXPECT_EQ(api.GetTotalPacketsNumber(deviceType), -8);
    ++calls.done;
}

TEST_P(Lifecycle, StatusCallbackMayCallTheLibrary)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 30));
    callInside(model(), pad().parent());
    calls.ink = true;
    ASSERT_EQ(api().SignatureStatusCallback(type(), [](int) { callEverything(calls.deviceType); }), 0);
    setLogging(true);
    sim().pressKey(1);
    ASSERT_TRUE(waitUntil([] { return calls.done == 1; }));
    setLogging(false);
    mainLog(); // every line still has its form
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 10);
}

TEST_P(Lifecycle, RealTimeCallbackMayCallTheLibrary)
{
    ASSERT_TRUE(pad().start());
    callInside(model(), pad().parent());
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(
        type(), [](unsigned long, long) { callEverything(calls.deviceType); }));
    logged([&] { sim().send(wave(model(), 8)); });
    EXPECT_EQ(calls.done, 1);
    mainLog();
    EXPECT_EQ(pad().points(), 9); // all but the first, which the callback cleared away
}

TEST_P(Lifecycle, StopWaitsForARunningStatusCallback)
{
    ASSERT_TRUE(pad().start());
    static std::atomic<int> stage;
    stage = 0;
    ASSERT_EQ(api().SignatureStatusCallback(type(),
                                            [](int) {
                                                stage = 1;
                                                std::this_thread::sleep_for(std::chrono::milliseconds(150));
                                                stage = 2;
                                            }),
              0);
    sim().pressKey(1);
    ASSERT_TRUE(waitUntil([] { return stage >= 1; }));
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(stage, 2);
}

TEST_P(Lifecycle, NothingCallsBackAfterStop)
{
    static std::atomic<int> called;
    static std::atomic<bool> stopped;
    called = 0;
    stopped = false;
    for (int round = 0; round < 10; ++round) {
        stopped = false;
        ASSERT_TRUE(pad().start());
        ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) {
            ++called;
            EXPECT_FALSE(stopped);
        }));
        writeRecording(model(), "stream.txt", 500);
        ASSERT_EQ(sim().Play("stream.txt", 0, 1, -1), 0) << sim().LastError();
        const int before = called;
        ASSERT_TRUE(waitUntil([&] { return called > before + 50; }));
        EXPECT_EQ(pad().stop(), 0);
        stopped = true;
    }
}

SCRIBERA_INSTANTIATE_ALL(Lifecycle);

// ---- the order in which the flag is set, and what belongs to one kind only

class WidgetLifecycle : public Lifecycle
{
};

TEST_P(WidgetLifecycle, UnknownWindowIdIsRefusedWithoutAnObject)
{
    for (const WindowId id : {WindowId(0x7ffffff0), ~WindowId(0)}) {
        const std::vector<LogLine> lines =
            logged([&] { EXPECT_FALSE(api().InitialDeviceByWId(type(), id, 1, 2, 3, 4)); });
        ASSERT_EQ(lines.size(), 2u) << testing::PrintToString(lines);
        EXPECT_EQ(lines[0].text, "Enter, nDeviceType=" + typeText() + ", nX=1, nY=2, nWidth=3, nHeight=4");
        EXPECT_EQ(lines[1].text, "leave with false due to (g_pSignWidget == nullptr) !");
        expectNoObject();
    }
    ASSERT_TRUE(pad().start());
}

TEST_P(WidgetLifecycle, WidgetTakesTheGivenPlaceAndIsShown)
{
    ASSERT_TRUE(pad().start({.width = 321, .height = 123, .x = 11, .y = 22}));
    QWidget* widget = pad().signWidget();
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(widget->geometry(), QRect(11, 22, 321, 123));
    EXPECT_TRUE(widget->isVisible());
}

TEST_P(WidgetLifecycle, WidgetInAHiddenWindowHasItsCanvasAtOnce)
{
    ASSERT_TRUE(pad().start({.width = 321, .height = 123, .parentShown = false}));
    EXPECT_FALSE(pad().signWidget()->isVisible());
    EXPECT_FALSE(pad().signWidget()->isHidden()); // it will show with its window
    pad().draw(wave(model(), 20));
    EXPECT_EQ(pad().canvas().size(), QSize(321, 123));
    pad().parent()->show();
    processEvents();
    EXPECT_TRUE(pad().signWidget()->isVisible());
    EXPECT_EQ(pad().canvas().size(), QSize(321, 123));
}

TEST_P(WidgetLifecycle, StopHidesTheWidgetAndDeletesItWhenEventsRun)
{
    ASSERT_TRUE(pad().start());
    QPointer<QWidget> widget = pad().signWidget();
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_EQ(library().signWidget, nullptr);
    ASSERT_FALSE(widget.isNull());
    EXPECT_TRUE(widget->isHidden());
    processEvents();
    EXPECT_TRUE(widget.isNull());
}

TEST_P(WidgetLifecycle, WindowlessStartUnderALiveWidgetTurnsTheFlagOnAndNothingElse)
{
    for (const bool byId : {false, true}) {
        SCOPED_TRACE(byId);
        ASSERT_TRUE(pad().start());
        QPointer<QWidget> widget = pad().signWidget();
        void* const object = library().signWidget;
        const std::size_t driverCalls = sim().callLog().size();
        logged([&] {
            EXPECT_TRUE(byId ? api().InitialDeviceByWId(type(), 0, 0, 0, 50, 50)
                             : api().InitialDevice(type(), nullptr, 0, 0, 50, 50));
        });
        EXPECT_EQ(linesOf(byId ? "InitialDeviceByWId" : "InitialDevice").back(),
                  "leave with true due to g_pSignWidget already created !");
        EXPECT_NE(library().useSignObj, 0);
        EXPECT_EQ(library().signWidget, object);
        EXPECT_EQ(sim().callLog().size(), driverCalls);

        // Every call still reaches the widget.
        pad().draw(wave(model(), 20));
        EXPECT_EQ(pad().points(), 22);
        EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
        const std::vector<LogLine> lines = logged([&] {
            for (const ExportedOperation& operation : objectOperations(model()))
                operation.call(api(), type());
        });
        for (const LogLine& line : lines)
            EXPECT_FALSE(line.label.starts_with(model().windowlessClass)) << testing::PrintToString(line);
        EXPECT_FALSE(textsOf(lines, model().widgetClass + "::ClearDeviceContent()").empty());
        widget->resize(200, 100);
        processEvents();

        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        expectNoObject();
        processEvents();
        EXPECT_TRUE(widget.isNull());
        pad().closeParent();
        pad().sim().close();
    }
}

TEST_P(WidgetLifecycle, FlagSetByHandUnderALiveWidgetIsSurvived)
{
    ASSERT_TRUE(pad().start());
    library().useSignObj = 0x80;
    pad().draw(wave(model(), 20));
    EXPECT_EQ(pad().points(), 22);
    EXPECT_EQ(pad().stop(), 0);
    expectNoObject();
}

TEST_P(WidgetLifecycle, FlagLeftSetMakesAWindowlessObjectInSpiteOfTheParent)
{
    for (const bool byId : {false, true}) {
        for (const unsigned char flag : {1, 2, 0x80}) {
            library().useSignObj = flag;
            ASSERT_TRUE(pad().start({.byWindowId = byId}));
            EXPECT_EQ(pad().signWidget(), nullptr);
            EXPECT_NE(library().useSignObj, 0);
            logged([&] { EXPECT_EQ(api().Clear(type()), 0); });
            EXPECT_FALSE(textsOf(mainLog(), model().windowlessClass + "::ClearDeviceContent()").empty());
            pad().draw(wave(model(), 20));
            EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
            EXPECT_EQ(pad().stop(), 0);
            expectNoObject();
        }
    }
    ASSERT_TRUE(pad().start());
    EXPECT_NE(pad().signWidget(), nullptr);
}

TEST_P(WidgetLifecycle, FlagLeftSetMakesAnUnknownWindowIdWindowless)
{
    library().useSignObj = 1;
    ASSERT_TRUE(api().InitialDeviceByWId(type(), 0x7ffffff0, 0, 0, 40, 20));
    EXPECT_NE(library().signWidget, nullptr);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    expectNoObject();
}

TEST_P(WidgetLifecycle, FlagClearedByHandUnderAWindowlessObjectIsSurvived)
{
    Pad windowless(PadCase{&model(), Kind::Windowless});
    ASSERT_TRUE(windowless.start());
    library().useSignObj = 0;
    windowless.draw(wave(model(), 20));
    EXPECT_EQ(windowless.points(), 22);
    EXPECT_EQ(windowless.canvas().size(), QSize(400, 200));
    EXPECT_EQ(windowless.stop(), 0);
    expectNoObject();
}

TEST_P(WidgetLifecycle, ParentClosedWhileLiveStopsThePad)
{
    pad().makeParent(true);
    const std::set<std::string> threads = idleThreads();
    ASSERT_TRUE(pad().start());
    pad().closeParent();
    EXPECT_EQ(library().signWidget, nullptr);
    EXPECT_TRUE(threadsAre(threads));
    EXPECT_EQ(sim().callLog().back(), "SCRDAPI_UnInitial");
    EXPECT_EQ(api().Clear(type()), -1);
    EXPECT_EQ(api().GetTotalPacketsNumber(type()), -8);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    ASSERT_TRUE(pad().start());
}

TEST_P(WidgetLifecycle, WidgetDeletedByTheHostStopsThePad)
{
    ASSERT_TRUE(pad().start());
    delete pad().signWidget();
    EXPECT_EQ(library().signWidget, nullptr);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    ASSERT_TRUE(pad().start());
}

TEST_P(WidgetLifecycle, ParentClosedAfterStopBeforeEventsRan)
{
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    pad().closeParent(); // takes the widget that waits for its deletion with it
    EXPECT_EQ(library().signWidget, nullptr);
    ASSERT_TRUE(pad().start());
}

TEST_P(WidgetLifecycle, NewObjectBeforeTheOldWidgetIsGoneKeepsItsPlace)
{
    ASSERT_TRUE(pad().start());
    QPointer<QWidget> old = pad().signWidget();
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    ASSERT_TRUE(api().InitialDevice(type(), pad().parent(), 0, 0, 100, 50));
    void* const object = library().signWidget;
    processEvents(); // destroys the old one only
    EXPECT_TRUE(old.isNull());
    EXPECT_EQ(library().signWidget, object);
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 10);
}

TEST_P(WidgetLifecycle, ParentClosedWhileThePenStreams)
{
    writeRecording(model(), "stream.txt", 2000);
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(pad().start());
        ASSERT_EQ(sim().Play("stream.txt", 0, 1, -1), 0) << sim().LastError();
        ASSERT_TRUE(waitUntil([&] { return pad().points() > 100; }));
        pad().closeParent();
        EXPECT_EQ(library().signWidget, nullptr);
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
    }
}

SCRIBERA_INSTANTIATE(WidgetLifecycle, Kind::Widget);

} // namespace
} // namespace scribera::test

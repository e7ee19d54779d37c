// A driver that fails, dawdles or calls back at the wrong time, and callbacks of the host that do not return
// for long.

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <thread>

#include <dlfcn.h>

#include "eager_test.h"
#include "qt_threads.h"

namespace scribera::test {
namespace {

using namespace std::chrono_literals;

// How long a callback blocks. What it shows does not depend on the length; SCRIBERA_TEST_LONG asks for that
// of a host that is stuck in a dialogue.
std::chrono::milliseconds blockingTime()
{
    return std::getenv("SCRIBERA_TEST_LONG") ? 5s : 300ms;
}

class FailingDriver : public InkTest
{
protected:
    std::vector<std::string> entryPoints() const
    {
        std::vector<std::string> names = {"UnInitial", "GetDevicePadID", "SetDevicePenStyle",
                                          "ClearDeviceContent"};
        if (model().hasScreen)
            names.insert(names.end(), {"OpenDeviceLCD", "GetDevicePenID", "ShowVersionInfoOnDevice"});
        if (model().hasFingerprint)
            names.push_back("ShowFPImageOnDevice");
        return names;
    }

    // A whole use of the pad, in which exactly the failing entry point's code comes through.
    void useWhile(const std::string& failing, int code)
    {
        const auto expected = [&](const char* entryPoint) { return failing == entryPoint ? code : 0; };
        char text[32] = "";
        EXPECT_EQ(api().GetHWPadID(type(), text, sizeof text), expected("GetDevicePadID"));
        EXPECT_EQ(api().GetHWVersionID(type(), text, sizeof text), 0);
        EXPECT_EQ(api().SetPenStyle(type(), true), expected("SetDevicePenStyle"));
        EXPECT_EQ(api().Clear(type()), expected("ClearDeviceContent"));
        if (model().hasScreen) {
            EXPECT_EQ(api().GetHWPenID(type(), text, sizeof text), expected("GetDevicePenID"));
            EXPECT_EQ(api().DisplayHWVersion(type(), true), expected("ShowVersionInfoOnDevice"));
            EXPECT_EQ(api().OpenLCD(type(), false), expected("OpenDeviceLCD"));
        }
        draw(wave(model(), 12));
        expectSameInk();
    }

    int callDriver(const char* entryPoint)
    {
        void* const driver = dlopen(driverFile, RTLD_NOW | RTLD_LOCAL);
        auto* const call = reinterpret_cast<int (*)()>(dlsym(driver, entryPoint));
        const int result = call();
        dlclose(driver);
        return result;
    }
};

TEST_P(FailingDriver, EveryEntryPointMayFailAndTheRestGoesOn)
{
    const std::set<std::string> threads = idleThreads();
    for (const std::string& failing : entryPoints()) {
        for (const int code : {-1, 99, INT_MIN}) {
            SCOPED_TRACE(failing + " gives " + std::to_string(code));
            sim().open();
            const std::string entryPoint = "SCRDAPI_" + failing;
            ASSERT_EQ(sim().SetResult(entryPoint.c_str(), code), 0);
            ASSERT_TRUE(start());
            useWhile(failing, code);
            const int ends = sim().CallCount("SCRDAPI_UnInitial");
            EXPECT_EQ(pad().stopKeepingParent(), 0);
            EXPECT_EQ(sim().CallCount("SCRDAPI_UnInitial"), ends + 1);
            EXPECT_EQ(Library::instance().signWidget, nullptr);
            sim().Reset();
            if (failing == "UnInitial") {
                EXPECT_EQ(callDriver("SCRDAPI_UnInitial"), 0) << "the driver's own thread still ran";
            }
            pad().closeParent();
            sim().close();
            endQtsOwnThreads();
            EXPECT_TRUE(threadsAre(threads));
        }
    }
}

TEST_P(FailingDriver, FailedQuestionForTheModelFailsTheStart)
{
    sim().open();
    ASSERT_EQ(sim().SetResult("SCRDAPI_GetDevicePartsVersion", -1), 0); // and no text
    EXPECT_FALSE(pad().start());
    EXPECT_EQ(Library::instance().signWidget, nullptr);
    EXPECT_EQ(sim().callLog().back(), "SCRDAPI_UnInitial");
    sim().Reset();
    ASSERT_TRUE(start());
    useWhile("", 0);
}

// The driver does not stop when it is told to, and a new one would be a second one.
TEST_P(FailingDriver, SamplesOfADriverThatDoesNotStopReachNobody)
{
    static std::atomic<int> called;
    called = 0;
    ASSERT_TRUE(pad().start());
    ASSERT_TRUE(api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) { ++called; }));
    sim().send(wave(model(), 10));
    const int before = called;
    EXPECT_EQ(before, 12);
    ASSERT_EQ(sim().SetResult("SCRDAPI_UnInitial", -1), 0);
    EXPECT_EQ(pad().stopKeepingParent(), 0);
    sim().send(wave(model(), 10));
    EXPECT_EQ(called, before);
    EXPECT_FALSE(api().InitialDevice(type(), pad().parent(), 0, 0, 100, 50));
    sim().send(wave(model(), 10));
    EXPECT_EQ(called, before);

    sim().Reset();
    EXPECT_EQ(callDriver("SCRDAPI_UnInitial"), 0);
    ASSERT_TRUE(start());
    useWhile("", 0);
}

SCRIBERA_INSTANTIATE_ALL(FailingDriver);

// ---- callbacks at the wrong time

class EagerDriver : public EagerTest
{
protected:
    bool open() { return api().InitialDevice(type(), pad().parent(), 0, 0, 200, 100); }

    void expectNothingLeft()
    {
        EagerTest::expectNothingLeft();
        EXPECT_FALSE(ProcessState::now().maps("libeager_driver.so"));
    }
};

TEST_P(EagerDriver, CallsBeforeTheStartAndDuringTheStopAreTakenOrDropped)
{
    static std::atomic<bool> open_;
    open_ = false;
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(open());
        open_ = true;
        ASSERT_TRUE(
            api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) { EXPECT_TRUE(open_); }));
        ASSERT_EQ(api().SignatureStatusCallback(type(),
                                                [](int status) {
                                                    EXPECT_EQ(status, 1);
                                                    EXPECT_TRUE(open_);
                                                }),
                  0);
        ASSERT_TRUE(waitUntil([&] { return pad().points() > 100; }));
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        open_ = false;
        expectNothingLeft();
    }
}

TEST_P(EagerDriver, CallsOfADriverThatThenRefusesToStartReachNobody)
{
    setenv("EAGER_RESULT", "-3", 1);
    logged([&] { EXPECT_FALSE(open()); });
    EXPECT_TRUE(textsOf(mainLog(), method(model().handler)).empty());
    expectNothingLeft();
    unsetenv("EAGER_RESULT");
    ASSERT_TRUE(open());
    ASSERT_TRUE(waitUntil([&] { return pad().points() > 100; }));
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    expectNothingLeft();
}

SCRIBERA_INSTANTIATE_ALL(EagerDriver);

// ---- a slow driver

class SlowDriver : public PadTest
{
};

TEST_P(SlowDriver, EveryEntryPointMayTakeItsTime)
{
    sim().open();
    for (const char* name :
         {"Initial", "UnInitial", "OpenDeviceLCD", "ClearDeviceContent", "GetDevicePenID", "GetDevicePadID",
          "GetDevicePartsVersion", "ShowVersionInfoOnDevice", "SetDevicePenStyle", "ShowFPImageOnDevice"})
        ASSERT_EQ(sim().SetDelay((std::string("SCRDAPI_") + name).c_str(), 50), 0);
    ASSERT_TRUE(pad().start());
    if (model().hasFingerprint) {
        const std::vector<unsigned char> print(208 * 288, 100);
        ASSERT_EQ(sim().SendFingerprint(print.data(), static_cast<int>(print.size()), 1), 0);
    }
    sim().send(wave(model(), 30));
    EXPECT_EQ(pad().points(), 32);
    EXPECT_EQ(api().SetPenStyle(type(), true), 0);
    EXPECT_EQ(api().Clear(type()), 0);
    sim().send(wave(model(), 10));
    EXPECT_EQ(pad().points(), 12);
}

TEST_P(SlowDriver, PenGoesOnWhileAQuestionWaits)
{
    ASSERT_TRUE(pad().start());
    ASSERT_EQ(sim().SetDelay("SCRDAPI_GetDevicePadID", 2000), 0);
    std::atomic<bool> answered = false;
    const int asked = sim().CallCount("SCRDAPI_GetDevicePadID");
    std::thread question([&] {
        char text[32];
        EXPECT_EQ(api().GetHWPadID(type(), text, sizeof text), 0);
        answered = true;
    });
    EXPECT_TRUE(waitUntil([&] { return sim().CallCount("SCRDAPI_GetDevicePadID") > asked; }));
    sim().send(wave(model(), 12));
    EXPECT_EQ(pad().points(), 14);
    EXPECT_FALSE(answered);
    question.join();
}

SCRIBERA_INSTANTIATE_ALL(SlowDriver);

// ---- callbacks that do not return for long

class BlockedCallback : public InkTest
{
protected:
    static inline std::atomic<int> stage;
    static inline std::atomic<bool> released;
    static inline std::atomic<int> called;

    static void block()
    {
        if (called++ > 0)
            return;
        stage = 1;
        while (!released)
            std::this_thread::sleep_for(1ms);
        stage = 2;
    }

    // Strokes come until one of their points has blocked the callback. The thread releases it.
    std::thread blockByPoint()
    {
        prepare();
        EXPECT_TRUE(api().RealTimeSignatureDataCallback(type(), [](unsigned long, long) { block(); }));
        sim().queue(wave(model(), 20));
        return releaseLater();
    }

    std::thread blockByKey(int key)
    {
        prepare();
        EXPECT_EQ(api().SignatureStatusCallback(type(), [](int) { block(); }), 0);
        sim().pressKey(key);
        return releaseLater();
    }

    void expectTheHostGoesOn()
    {
        for (const int image : {ImageBmp, ImagePng, ImagePdf, ImageSvg})
            EXPECT_EQ(pad().save(image, "blocked.png"), 0);
        EXPECT_GT(pad().points(), 0);
        EXPECT_EQ(api().SetPenWidth(type(), 4), 0);
        EXPECT_EQ(api().SetPenWidth(type(), 3), 0);
        char* text = api().PacketsBase64Encode(type(), ImageInk);
        EXPECT_NE(text, nullptr);
        api().PacketsBase64EncodeFree(type(), text);
        processEvents();
    }

private:
    static void prepare()
    {
        stage = 0;
        released = false;
        called = 0;
    }

    static std::thread releaseLater()
    {
        EXPECT_TRUE(waitUntil([] { return stage == 1; }));
        return std::thread([] {
            std::this_thread::sleep_for(blockingTime());
            released = true;
        });
    }
};

TEST_P(BlockedCallback, RealTimeCallbackHoldsUpThePenAndNothingElse)
{
    ASSERT_TRUE(start());
    std::thread release = blockByPoint();
    expectTheHostGoesOn();
    EXPECT_TRUE(stage != 1 || pad().points() == 1);
    release.join();
    sim().waitIdle();
    EXPECT_EQ(called, 22);
    redraw().feed(wave(model(), 20));
    expectSameInk();
}

TEST_P(BlockedCallback, StopWaitsForARealTimeCallback)
{
    ASSERT_TRUE(pad().start());
    std::thread release = blockByPoint();
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(stage, 2);
    release.join();
    ASSERT_TRUE(pad().start());
}

TEST_P(BlockedCallback, StatusCallbackHoldsUpTheNextStrokeAndNothingElse)
{
    ASSERT_TRUE(pad().start());
    sim().send(wave(model(), 20));
    std::thread release = blockByKey(1);
    sim().queue(wave(model(), 20));
    expectTheHostGoesOn();
    EXPECT_TRUE(stage != 1 || pad().points() == 22);
    release.join();
    sim().waitIdle();
    EXPECT_EQ(pad().points(), 44);
}

SCRIBERA_INSTANTIATE_ALL(BlockedCallback);

class WidgetBlockedCallback : public BlockedCallback
{
};

TEST_P(WidgetBlockedCallback, WindowThatGoesWaitsForTheCallback)
{
    for (const bool statusCallback : {false, true}) {
        ASSERT_TRUE(pad().start());
        std::thread release = statusCallback ? blockByKey(0) : blockByPoint();
        pad().closeParent();
        EXPECT_EQ(stage, 2);
        EXPECT_EQ(Library::instance().signWidget, nullptr);
        release.join();
        sim().close();
    }
}

SCRIBERA_INSTANTIATE(WidgetBlockedCallback, Kind::Widget);

} // namespace
} // namespace scribera::test

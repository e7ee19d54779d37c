// Hosts that do not say goodbye: a process that ends, or unloads the library, while the pen streams.

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QTimer>

#include "harness.h"

namespace scribera::test {
namespace {

[[noreturn]] void fail(const char* reason)
{
    std::fprintf(stderr, "%s\n", reason);
    std::_Exit(1);
}

// Starts the pad that the child was told of, which streams without end, and never stops it.
Pad& startStreaming(const std::vector<std::string>& arguments)
{
    static Pad* pad; // still there when the process ends
    pad = new Pad(PadCase::of(arguments));
    if (!pad->start())
        fail("start failed");
    pad->api().RealTimeSignatureDataCallback(pad->type(), [](unsigned long, long) {});
    pad->api().SignatureStatusCallback(pad->type(), [](int) {});
    if (pad->sim().Play("stream.txt", 0, 1, 1) != 0)
        fail(pad->sim().LastError());
    if (!waitUntil([&] { return pad->points() > 200; }))
        fail("no points arrived");
    return *pad;
}

const ChildProgram exitWhileStreaming("exit-while-streaming",
                                      [](const std::vector<std::string>& arguments) -> int {
                                          startStreaming(arguments);
                                          std::exit(0);
                                      });

const ChildProgram quickExitWhileStreaming("quick-exit-while-streaming",
                                           [](const std::vector<std::string>& arguments) -> int {
                                               startStreaming(arguments);
                                               std::quick_exit(0);
                                           });

const ChildProgram returnWhileStreaming("return-while-streaming",
                                        [](const std::vector<std::string>& arguments) {
                                            startStreaming(arguments);
                                            return 0;
                                        });

// The way most Qt hosts end: the window and the application are destroyed in main, one after the other.
const ChildProgram returnWithWindow("return-with-window", [](const std::vector<std::string>& arguments) {
    Pad& pad = startStreaming(arguments);
    QTimer::singleShot(50, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    pad.closeParent();
    destroyApplication();
    return Library::instance().signWidget ? 2 : 0;
});

// A host that closes its pad when its application object is gone already, with the window still there.
const ChildProgram
    stopAfterApplication("stop-after-application", [](const std::vector<std::string>& arguments) {
        Pad& pad = startStreaming(arguments);
        if (pad.model().hasFingerprint && arguments.size() > 2) { // "placed"
            auto* const other = new QWidget; // stays, like the window: Qt cannot destroy one any more
            if (pad.api().SetDisplayedFPImageAt(pad.type(), other, 300, 200, 1, 1, 50, 20) != 0)
                return 2;
        }
        processEvents();
        // Qt's painting stands on what goes with the application: no stroke may be under way just then.
        if (pad.sim().StopPlaying() != 0 || pad.sim().WaitIdle(20000) != 0)
            return 5;
        destroyApplication();
        if (pad.api().Clear(pad.type()) != 0)
            return 3;
        if (pad.api().UnInitialDevice(pad.type()) != 0 || Library::instance().signWidget)
            return 4;
        return 0;
    });

// A forked child ends the pad that it has inherited, and lets the window go.
const ChildProgram stopInForkedChild("stop-in-forked-child", [](const std::vector<std::string>& arguments) {
    Pad& pad = startStreaming(arguments);
    const bool stops = arguments.size() < 3; // else "window": it only goes
    const pid_t child = fork();
    if (child == 0) {
        if (stops && pad.api().UnInitialDevice(pad.type()) != 0)
            _exit(11);
        if (stops && (Library::instance().signWidget || Library::instance().useSignObj))
            _exit(12);
        pad.closeParent();
        if (pad.api().UnInitialDevice(pad.type()) != 0 || pad.points() != -8)
            _exit(13);
        _exit(0);
    }
    int status = -1;
    if (!waitUntil([&] { return waitpid(child, &status, WNOHANG) == child; })) {
        kill(child, SIGKILL);
        return 2;
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::printf("the child ended with %d\n", status);
        return 3;
    }
    const int points = pad.points(); // the parent's pad knows nothing of it
    if (!waitUntil([&] { return pad.points() > points + 100; }))
        return 4;
    return pad.stop() == 0 && !Library::instance().signWidget ? 0 : 5;
});

const ChildProgram exitInsideCallback("exit-inside-callback", [](const std::vector<std::string>& arguments) {
    static Pad* pad;
    pad = new Pad(PadCase::of(arguments));
    if (!pad->start())
        return 1;
    pad->api().SignatureStatusCallback(pad->type(), [](int) { std::exit(0); });
    pad->sim().PressKey(1);
    waitUntil([] { return false; });
    return 2;
});

const ChildProgram
    unloadWhileStreaming("unload-while-streaming", [](const std::vector<std::string>& arguments) {
        Pad& pad = startStreaming(arguments);
        void* const library = Library::instance().handle();
        const Operations api = pad.api();
        int points = pad.points();
        if (dlclose(library) != 0)
            return 2;
        // What streams goes on, and a host that loads the library again finds its object.
        if (!waitUntil([&] { return api.GetTotalPacketsNumber(pad.type()) > points + 500; }))
            return 3;
        processEvents();
        void* const again = dlopen(SCRIBERA_SDK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (!again || dlsym(again, "g_pSignWidget") != static_cast<void*>(&Library::instance().signWidget))
            return 4;
        if (arguments.size() > 2) // "stop"
            return pad.stop() == 0 && !Library::instance().signWidget ? 0 : 5;
        return 0;
    });

const ChildProgram unloadUnused("unload-unused", [](const std::vector<std::string>&) {
    for (int i = 0; i < 20; ++i) {
        void* const library = dlopen(SCRIBERA_SDK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (!library || dlclose(library) != 0)
            return 1;
    }
    return 0;
});

class Teardown : public PadTest
{
protected:
    void SetUp() override
    {
        PadTest::SetUp();
        writeRecording(model(), "stream.txt", 3000);
    }

    ChildResult run(const std::string& program, const std::vector<std::string>& more = {})
    {
        std::vector<std::string> arguments = padCase().words();
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runChild(program, arguments);
    }
};

TEST_P(Teardown, ProcessThatExitsWhileThePenStreamsEnds)
{
    for (int round = 0; round < 5; ++round)
        ASSERT_TRUE(endedWell(run("exit-while-streaming")));
}

TEST_P(Teardown, ProcessThatExitsQuicklyWhileThePenStreamsEnds)
{
    ASSERT_TRUE(endedWell(run("quick-exit-while-streaming")));
}

TEST_P(Teardown, ProcessWhoseMainReturnsWhileThePenStreamsEnds)
{
    for (int round = 0; round < 5; ++round)
        ASSERT_TRUE(endedWell(run("return-while-streaming")));
}

TEST_P(Teardown, LibraryUnloadedWhileThePenStreamsGoesOn)
{
    for (int round = 0; round < 3; ++round)
        ASSERT_TRUE(endedWell(run("unload-while-streaming")));
}

TEST_P(Teardown, LibraryUnloadedWhileThePenStreamsCanStillBeStopped)
{
    ASSERT_TRUE(endedWell(run("unload-while-streaming", {"stop"})));
}

TEST_P(Teardown, ForkedChildForgetsThePadThatItHasInherited)
{
    ASSERT_TRUE(endedWell(run("stop-in-forked-child")));
    ASSERT_TRUE(endedWell(run("stop-in-forked-child", {"window"})));
}

SCRIBERA_INSTANTIATE_ALL(Teardown);

class WindowlessTeardown : public Teardown
{
};

TEST_P(WindowlessTeardown, ProcessThatExitsInsideTheStatusCallbackEnds)
{
    ASSERT_TRUE(endedWell(run("exit-inside-callback")));
}

SCRIBERA_INSTANTIATE(WindowlessTeardown, Kind::Windowless);

class WidgetTeardown : public Teardown
{
};

TEST_P(WidgetTeardown, HostWhoseWindowGoesAtTheEndOfMainEnds)
{
    for (int round = 0; round < 5; ++round)
        ASSERT_TRUE(endedWell(run("return-with-window")));
}

TEST_P(WidgetTeardown, PadMayBeClosedAfterTheApplicationIsGone)
{
    ASSERT_TRUE(endedWell(run("stop-after-application")));
    ASSERT_TRUE(endedWell(run("stop-after-application", {"placed"})));
}

SCRIBERA_INSTANTIATE(WidgetTeardown, Kind::Widget);

TEST(LibraryFile, IsLoadedAndUnloadedAgainAndAgain)
{
    ASSERT_TRUE(endedWell(runChild("unload-unused", {})));
}

} // namespace
} // namespace scribera::test

// The driver library: found or not, whole or not, started, stopped, and left without a trace.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "harness.h"

namespace scribera::test {
namespace {

class Driver : public PadTest
{
protected:
    void SetUp() override
    {
        PadTest::SetUp();
        m_idleThreads = idleThreads();
    }

    // A start that must fail, and everything that must hold after it. The process has done it before.
    void expectFailedStart(const Texts& loadLines)
    {
        const bool simulated = sim().isOpen();
        const ProcessState before = ProcessState::now();
        const std::vector<LogLine> lines = logged([&] { EXPECT_FALSE(start()); });
        processEvents();
        const ProcessState after = ProcessState::now();

        EXPECT_EQ(textsOf(lines, method("LoadScriberaDriver")), loadLines);
        EXPECT_EQ(textsOf(lines, method("IsDeviceConnected")),
                  (Texts{"enter...", "leave with m_bDeviceConnected=0"}));
        expectNothingLeft(lines);
        EXPECT_TRUE(threadsAre(m_idleThreads));
        EXPECT_EQ(after.files, before.files);
        EXPECT_EQ(after.maps("libscriberadrv.so"), simulated);
    }

    // Where no library can be loaded.
    void expectNotLoaded()
    {
        warmUp();
        expectFailedStart({"Enter...", "'libscriberadrv.so' Library is not loaded !", "leave with bRet=0"});
    }

    void expectNothingLeft(const std::vector<LogLine>& lines)
    {
        expectNoObject();
        EXPECT_EQ(api().GetTotalPacketsNumber(type()), -8);
        EXPECT_EQ(pad().signWidget(), nullptr);

        // The start stops what it began, through its own family's function, and leaves last.
        EXPECT_EQ(textsOf(lines, exported("UnInitialDevice")),
                  (Texts{"Enter, nDeviceType=" + std::to_string(type()), "leave with ARI_SUCCESS..."}));
        EXPECT_EQ(textsOf(lines, method("ShutdownScriberaDriver")).front(), "Enter...");
        EXPECT_EQ(textsOf(lines, method("ShutdownScriberaDriver")).back(), "leave !");
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back().label, exported("InitialDevice"));
        EXPECT_EQ(lines.back().text, "leave with bRet=0 !");
    }

    bool start()
    {
        QWidget* parent = padCase().isWidget() ? &pad().makeParent(true) : nullptr;
        return api().InitialDevice(type(), parent, 0, 0, 100, 50);
    }

    // The first widget and the first thread of a process open files that the process keeps. Expects a driver
    // that fails.
    void warmUp()
    {
        if (padCase().isWidget()) {
            QWidget(&pad().makeParent(true)).show();
            processEvents();
        }
        EXPECT_FALSE(start());
        EXPECT_TRUE(threadsAre(m_idleThreads));
    }

    std::vector<std::string> required() const
    {
        std::vector<std::string> names = {"Initial",           "UnInitial",
                                          "GetDevicePadID",    "GetDevicePartsVersion",
                                          "SetDevicePenStyle", "ClearDeviceContent"};
        if (model().hasScreen)
            names.insert(names.end(), {"GetDevicePenID", "GetDeviceSecureID", "ShowVersionInfoOnDevice"});
        if (model().hasFingerprint)
            names.push_back("ShowFPImageOnDevice");
        return names;
    }

    Texts startCalls() const
    {
        Texts calls = {"SCRDAPI_Initial", "SCRDAPI_GetDevicePartsVersion", "SCRDAPI_ClearDeviceContent"};
        if (model().hasScreen)
            calls.push_back("SCRDAPI_OpenDeviceLCD");
        return calls;
    }

    Texts stopCalls() const
    {
        return {model().hasScreen ? "SCRDAPI_OpenDeviceLCD" : "SCRDAPI_ClearDeviceContent",
                "SCRDAPI_UnInitial"};
    }

    std::set<std::string> m_idleThreads; // of a process with no pad open
};

const std::vector<std::string> everyEntryPoint = {"Initial",
                                                  "UnInitial",
                                                  "OpenDeviceLCD",
                                                  "ClearDeviceContent",
                                                  "GetDevicePenID",
                                                  "GetDevicePadID",
                                                  "GetDeviceSecureID",
                                                  "GetDevicePartsVersion",
                                                  "ShowVersionInfoOnDevice",
                                                  "SetDevicePenStyle",
                                                  "ShowFPImageOnDevice"};

Texts withoutCall(Texts calls, const std::string& missing)
{
    std::erase(calls, "SCRDAPI_" + missing);
    return calls;
}

TEST_P(Driver, MissingFile)
{
    removeDriver();
    expectNotLoaded();
}

TEST_P(Driver, FileThatIsNoLibrary)
{
    removeDriver();
    std::ofstream(driverFile) << "This is not a library.\n";
    expectNotLoaded();
}

TEST_P(Driver, EmptyFile)
{
    removeDriver();
    std::ofstream(driverFile) << "";
    expectNotLoaded();
}

TEST_P(Driver, DirectoryInItsPlace)
{
    removeDriver();
    std::filesystem::create_directory(driverFile);
    expectNotLoaded();
}

TEST_P(Driver, LinkThatLeadsNowhere)
{
    installDriver("nothing-here.so");
    expectNotLoaded();
}

TEST_P(Driver, IsTakenFromTheCurrentDirectoryOnly)
{
    std::filesystem::create_directory("elsewhere");
    std::filesystem::current_path("elsewhere");
    EXPECT_FALSE(start());
    std::filesystem::current_path("..");
    ASSERT_TRUE(pad().start());
}

TEST_P(Driver, FailedStartIsFollowedByAGoodOne)
{
    removeDriver();
    EXPECT_FALSE(start());
    installDriver();
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 10);
}

TEST_P(Driver, FailedStartByWindowIdLeavesNothing)
{
    removeDriver();
    const WindowId id = padCase().isWidget() ? pad().makeParent(true).winId() : 0;
    const std::vector<LogLine> lines =
        logged([&] { EXPECT_FALSE(api().InitialDeviceByWId(type(), id, 0, 0, 100, 50)); });
    processEvents();
    EXPECT_EQ(textsOf(lines, exported("InitialDeviceByWId")).back(), "leave with bRet=0 !");
    EXPECT_EQ(textsOf(lines, exported("UnInitialDevice")).size(), 2u);
    expectNoObject();
    EXPECT_EQ(pad().signWidget(), nullptr);
}

TEST_P(Driver, LackingARequiredEntryPointIsRefused)
{
    for (const std::string& missing : required()) {
        SCOPED_TRACE("without " + missing);
        installDriverWithout(missing);
        warmUp();
        expectFailedStart(
            {"Enter...", "'libscriberadrv.so' Library APIs failed to load !", "leave with bRet=0"});

        // Nothing was started, and what was found is called to stop all the same.
        sim().open();
        sim().Reset();
        EXPECT_FALSE(start());
        processEvents();
        EXPECT_EQ(sim().callLog(), withoutCall(stopCalls(), missing));
        sim().close();
        EXPECT_TRUE(threadsAre(m_idleThreads));
    }
}

TEST_P(Driver, LackingAnEntryPointThatTheModelDoesNotNeedIsEnough)
{
    const std::vector<std::string> needed = required();
    for (const std::string& missing : everyEntryPoint) {
        if (std::find(needed.begin(), needed.end(), missing) != needed.end())
            continue;
        SCOPED_TRACE("without " + missing);
        installDriverWithout(missing);
        ASSERT_TRUE(pad().start());
        EXPECT_EQ(sim().callLog(), withoutCall(startCalls(), missing));
        pad().draw(wave(model(), 8));
        EXPECT_EQ(pad().points(), 10);
        if (model().hasScreen) {
            pad().draw(wave(model(), 8));
            const QImage before = pad().canvas();
            if (missing == "OpenDeviceLCD") {
                EXPECT_EQ(api().OpenLCD(type(), false), -1);
                EXPECT_EQ(pad().canvas(), before);
            }
        }
        sim().Reset();
        logged([&] { EXPECT_EQ(pad().stopKeepingParent(), 0); });
        EXPECT_EQ(sim().callLog(), withoutCall(stopCalls(), missing));
        EXPECT_EQ(textsOf(mainLog(), method("ShutdownScriberaDriver")).back(), "leave !");
        pad().closeParent();
        sim().close();
    }
}

TEST_P(Driver, IsCalledInTheDocumentedOrder)
{
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(sim().callLog(), startCalls());
    EXPECT_EQ(sim().LastArgument("SCRDAPI_Initial"), type());
    EXPECT_EQ(sim().LastArgument("SCRDAPI_GetDevicePartsVersion"), 32);
    if (model().hasScreen) {
        EXPECT_EQ(sim().LastArgument("SCRDAPI_OpenDeviceLCD"), 1);
    }

    sim().Reset();
    EXPECT_EQ(pad().stopKeepingParent(), 0);
    EXPECT_EQ(sim().callLog(), stopCalls());
    if (model().hasScreen) {
        EXPECT_EQ(sim().LastArgument("SCRDAPI_OpenDeviceLCD"), 0);
    }
}

TEST_P(Driver, StartAndStopWriteTheirLines)
{
    setLogging(true);
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(pad().stopKeepingParent(), 0);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    EXPECT_EQ(textsOf(lines, method("LoadScriberaDriver")),
              (Texts{"Enter...", "after call m_pfn_SCRDAPI_Initial(), nResult=0", "leave with bRet=1"}));

    const bool aroundClear = !model().hasScreen && padCase().isWidget();
    const Texts clearLines = {"b4 call m_pfn_SCRDAPI_ClearDeviceContent()...",
                              "after call m_pfn_SCRDAPI_ClearDeviceContent()..."};
    Texts check = {"enter...", std::string("cVersion=") + model().modelText + ", nResult=0"};
    Texts stop = {"Enter..."};
    if (aroundClear) {
        check.insert(check.end(), clearLines.begin(), clearLines.end());
        stop.insert(stop.end(), clearLines.begin(), clearLines.end());
    }
    check.push_back("leave with m_bDeviceConnected=1");
    stop.push_back("leave !");
    EXPECT_EQ(textsOf(lines, method("IsDeviceConnected")), check);
    EXPECT_EQ(textsOf(lines, method("ShutdownScriberaDriver")), stop);
    EXPECT_EQ(textsOf(lines, method("Shutdown")).front(), "Enter...");
    EXPECT_EQ(textsOf(lines, method("Shutdown")).back(), "leave !");
}

TEST_P(Driver, RefusalToStartFailsTheStart)
{
    sim().open();
    ASSERT_EQ(sim().SetResult("SCRDAPI_Initial", 1), 0);
    warmUp();
    for (const int code : {1, -1, 99, -2147483647 - 1}) {
        SCOPED_TRACE(code);
        sim().open();
        sim().Reset();
        ASSERT_EQ(sim().SetResult("SCRDAPI_Initial", code), 0);
        expectFailedStart({"Enter...", "after call m_pfn_SCRDAPI_Initial(), nResult=" + std::to_string(code),
                           "leave with bRet=0"});
        Texts calls = {"SCRDAPI_Initial"};
        for (const std::string& call : stopCalls())
            calls.push_back(call);
        EXPECT_EQ(sim().callLog(), calls);

        sim().close();
        EXPECT_FALSE(ProcessState::now().maps("libscriberadrv.so"));
    }
}

TEST_P(Driver, ResultsOfPreparingThePadAreNotLookedAt)
{
    sim().open();
    for (const char* name : {"SCRDAPI_ClearDeviceContent", "SCRDAPI_OpenDeviceLCD"})
        ASSERT_EQ(sim().SetResult(name, -7), 0);
    EXPECT_TRUE(pad().start());
}

TEST_P(Driver, SamplesDuringTheConnectionCheckLeaveNoTrace)
{
    writeRecording(model(), "early.txt", 200);
    setenv("SCRIBERA_SIM_RECORDING", "early.txt", 1);
    setenv("SCRIBERA_SIM_RATE", "max", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    sim().open();
    ASSERT_EQ(sim().SetDelay("SCRDAPI_GetDevicePartsVersion", 500), 0);
    setLogging(true);
    ASSERT_TRUE(pad().start());
    sim().waitIdle();
    setLogging(false);
    EXPECT_EQ(pad().points(), -8);
    EXPECT_TRUE(textsOf(mainLog(), method(model().handler)).empty());
}

TEST_P(Driver, IsUnloadedAtStop)
{
    ASSERT_TRUE(start());
    EXPECT_TRUE(ProcessState::now().maps("libscriberadrv.so"));
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_FALSE(ProcessState::now().maps("libscriberadrv.so"));
}

TEST_P(Driver, FiftyCyclesLeaveNothingBehind)
{
    const auto cycle = [this](int number) {
        ASSERT_TRUE(pad().start({.parentShown = number % 2 == 0, .byWindowId = number % 3 == 0}));
        if (number % 5 != 0) {
            pad().draw(wave(model(), 10));
            sim().pressKey(number % 2);
        }
        EXPECT_EQ(pad().stop(), 0);
    };
    // What the process opens once and keeps; a painted window brings some of it late.
    for (int i = 0; i < 10; ++i)
        cycle(i);
    EXPECT_TRUE(threadsAre(m_idleThreads));
    const ProcessState before = ProcessState::now();
    EXPECT_FALSE(before.maps("libscriberadrv.so"));
    for (int i = 0; i < 50; ++i)
        cycle(i);
    EXPECT_TRUE(threadsAre(m_idleThreads));
    const ProcessState after = ProcessState::now();
    EXPECT_EQ(after.files, before.files);
    for (const std::string& file : after.mappedFiles)
        EXPECT_TRUE(before.mappedFiles.contains(file)) << file;
}

TEST_P(Driver, FiftyFailedStartsLeaveNothingBehind)
{
    sim().open();
    sim().setText("SCRDAPI_GetDevicePartsVersion", "NOTAPAD");
    warmUp();
    const ProcessState before = ProcessState::now();
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(start());
        processEvents();
    }
    EXPECT_TRUE(threadsAre(m_idleThreads));
    const ProcessState after = ProcessState::now();
    EXPECT_EQ(after.files, before.files);
    EXPECT_EQ(after.mappedFiles, before.mappedFiles);
}

SCRIBERA_INSTANTIATE_ALL(Driver);

// ---- a system that refuses threads

// The limit holds for ordinary users only. Where the test is root, this process becomes one as far as the
// limit goes, with a number that no other process has.
bool obeyThreadLimit()
{
    if (geteuid() != 0)
        return true;
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2];
    if (setresuid(100000 + static_cast<uid_t>(getpid()), -1, -1) != 0 ||
        syscall(SYS_capget, &header, data) != 0)
        return false;
    data[0].effective &= ~(1u << CAP_SYS_RESOURCE | 1u << CAP_SYS_ADMIN);
    return syscall(SYS_capset, &header, data) == 0;
}

// Opens the pad while no more thread, one more, two more and so on can be had, until that is enough.
const ChildProgram shortOfThreads("short-of-threads", [](const std::vector<std::string>& arguments) {
    const PadCase padCase = PadCase::of(arguments);
    Pad pad(padCase);
    // The first use: what the process keeps.
    if (!pad.start() || pad.stop() != 0 || !obeyThreadLimit())
        return 1;
    QWidget* const parent = padCase.isWidget() ? &pad.makeParent(true) : nullptr;
    const std::set<std::string> threads = idleThreads();
    const bool counts =
        getuid() != geteuid(); // a user with other processes gets no thread at the lowest limit
    int refused = 0;
    for (rlim_t more = 0;; ++more) {
        setSoftLimit(RLIMIT_NPROC, counts ? threads.size() + more : more == 0 ? 1 : RLIM_INFINITY);
        removeLogs();
        setLogging(true);
        const bool started = pad.api().InitialDevice(pad.type(), parent, 0, 0, 200, 100);
        setLogging(false);
        const std::vector<std::string> lines = textsOf(mainLog(), padCase.method("IsDeviceConnected"));
        if (started)
            break;
        if (more > 10)
            return 2;
        processEvents();
        const bool ownRefused =
            lines.size() == 3 && lines[1] == "(worker thread not started), no more threads !!!";
        refused += ownRefused;
        // Later the driver gets no thread for itself.
        if (Library::instance().extensions().LastStartFailure(nullptr, 0) !=
            (ownRefused ? StartNoThread : StartDriverRefused))
            return 8;
        if (lines.back() != "leave with m_bDeviceConnected=0")
            return 3;
        if (Library::instance().signWidget || Library::instance().useSignObj || pad.signWidget() ||
            ProcessState::now().maps("libscriberadrv.so") || !threadsAre(threads))
            return 4;
    }
    const int own = padCase.model->hasFingerprint ? 2 : 1;
    if (refused != (counts ? own : 1)) {
        std::printf("%d refused\n", refused);
        return 5;
    }
    setSoftLimit(RLIMIT_NPROC, 1); // what is drawn from now on needs none
    static std::atomic<int> called;
    pad.api().SignatureStatusCallback(pad.type(), [](int) { ++called; });
    pad.sim().open();
    pad.draw(wave(pad.model(), 8));
    pad.sim().pressKey(1);
    if (!waitUntil([] { return called == 1; }) || pad.points() != 10)
        return 6;
    setSoftLimit(RLIMIT_NPROC, RLIM_INFINITY);
    return pad.stop() == 0 && threadsAre(threads) ? 0 : 7;
});

class Threads : public PadTest
{
};

TEST_P(Threads, PadWhoseThreadIsRefusedIsNotOpened)
{
    ASSERT_TRUE(endedWell(runChild("short-of-threads", padCase().words())));
}

SCRIBERA_INSTANTIATE_ALL(Threads);

} // namespace
} // namespace scribera::test

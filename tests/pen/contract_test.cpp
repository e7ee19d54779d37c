// What the library may rely on at every entry point of the driver.

#include <atomic>
#include <cstdlib>
#include <cstring>

#include <sys/wait.h>
#include <unistd.h>

#include "mockdevices.h"
#include "pen.h"
#include "pendriver.h"

namespace scribera::test {
namespace {

constexpr int kOk = 0;
constexpr int kFailed = -1;
constexpr int kInvalid = -2;

class PenDriverContract : public testing::Test
{
protected:
    void SetUp() override { installPenDriver(); }

    const int m_type = padModel("K421B").deviceType;
    MockDevices m_devices;
};

void ignore(int, int, int, int) {}

TEST_F(PenDriverContract, WrongArgumentsAreRefused)
{
    m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    for (const int type : {-1, 0, 99, INT32_MIN, INT32_MAX})
        EXPECT_EQ(driver.Initial(type, ignore, nullptr), kInvalid) << type;
    EXPECT_EQ(driver.Initial(m_type, nullptr, nullptr), kInvalid);
    EXPECT_EQ(driver.UnInitial(), kFailed) << "nothing was started";
}

TEST_F(PenDriverContract, NothingAnswersUnlessStarted)
{
    m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    char text[32] = "untouched";
    const auto expectAll = [&](int result) {
        EXPECT_EQ(driver.OpenDeviceLCD(true), result);
        EXPECT_EQ(driver.OpenDeviceLCD(false), result);
        EXPECT_EQ(driver.ClearDeviceContent(), result);
        EXPECT_EQ(driver.ShowVersionInfoOnDevice(true), result);
        EXPECT_EQ(driver.SetDevicePenStyle(true), result);
        EXPECT_EQ(driver.ShowFPImageOnDevice(nullptr, 0, 0, 0, nullptr), result);
        for (auto* const ask : {driver.GetDevicePenID, driver.GetDevicePadID, driver.GetDeviceSecureID,
                                driver.GetDevicePartsVersion})
            EXPECT_EQ(ask(text, sizeof text), result);
    };
    expectAll(kFailed);
    EXPECT_STREQ(text, "untouched");
    ASSERT_EQ(driver.start(m_type), kOk);
    expectAll(kOk);
    EXPECT_EQ(driver.start(m_type), kFailed) << "twice";
    expectAll(kOk);
    EXPECT_EQ(driver.UnInitial(), kOk);
    EXPECT_EQ(driver.UnInitial(), kFailed) << "twice";
    expectAll(kFailed);
    EXPECT_EQ(driver.start(m_type), kOk) << "again";
    expectAll(kOk);
}

TEST_F(PenDriverContract, TextsFitTheirBuffers)
{
    m_devices.plug(recordingNamed("no-pressure"));
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), kOk);
    for (auto* const ask : {driver.GetDevicePenID, driver.GetDevicePadID, driver.GetDeviceSecureID,
                            driver.GetDevicePartsVersion}) {
        char whole[256];
        ASSERT_EQ(ask(whole, sizeof whole), kOk);
        ASSERT_NE(whole[0], '\0');
        for (const int size : {1, 2, 5, 31, 32}) {
            char text[64];
            std::memset(text, '#', sizeof text);
            EXPECT_EQ(ask(text, size), kOk);
            EXPECT_EQ(std::string(text), std::string(whole).substr(0, static_cast<std::size_t>(size) - 1));
            EXPECT_EQ(text[size], '#') << "nothing behind the buffer";
        }
        char text[2] = "#";
        EXPECT_EQ(ask(nullptr, 32), kInvalid);
        EXPECT_EQ(ask(text, 0), kInvalid);
        EXPECT_EQ(ask(text, -5), kInvalid);
        EXPECT_EQ(text[0], '#');
    }
}

TEST_F(PenDriverContract, ItIsThePadThatTheHostAsksFor)
{
    m_devices.plug(recordingNamed("no-pressure"));
    for (const PadModel& model : padModels()) {
        PenDriver driver;
        ASSERT_EQ(driver.start(model.deviceType), kOk);
        char version[32];
        ASSERT_EQ(driver.GetDevicePartsVersion(version, sizeof version), kOk);
        EXPECT_TRUE(std::string(version).starts_with(model.modelText + " pen ")) << version;
    }
}

PenDriver* g_called = nullptr; // set before the pen moves, for its callback
std::atomic<int> g_results[3];
std::atomic<bool> g_isDone{false};

TEST_F(PenDriverContract, CallsInsideTheCallbackAreAnswered)
{
    MockKernel& device = m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    g_called = &driver;
    const auto call = [](int, int, int, int) {
        char text[32];
        g_results[0] = g_called->UnInitial();
        g_results[1] = g_called->Initial(5, ignore, nullptr);
        g_results[2] = g_called->GetDevicePadID(text, sizeof text);
        g_isDone = true;
    };
    ASSERT_EQ(driver.Initial(m_type, call, nullptr), kOk);
    device.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(waitUntil([] { return g_isDone.load(); }));
    EXPECT_EQ(g_results[0], kFailed) << "a thread cannot wait for its own end";
    EXPECT_EQ(g_results[1], kFailed);
    EXPECT_EQ(g_results[2], kOk);
    EXPECT_EQ(driver.UnInitial(), kOk);
}

TEST_F(PenDriverContract, StopEndsTheStroke)
{
    MockKernel& device = m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), kOk);
    device.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(device.waitUntilTaken());
    EXPECT_EQ(driver.UnInitial(), kOk);
    const std::vector<PadSample> samples = driver.samples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[1], (PadSample{samples[0].x, samples[0].y, 0, PenUp}));
    device.send(eventsOf(recordingNamed("tall")));
    EXPECT_EQ(driver.samples().size(), 2u) << "nothing comes after the end";
}

TEST_F(PenDriverContract, NothingIsLeftAfterTheEnd)
{
    m_devices.plug(recordingNamed("tall"));
    const std::set<std::string> threads = idleThreads();
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), kOk);
    ASSERT_EQ(driver.UnInitial(), kOk);
    const std::size_t files = ProcessState::now().files.size();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(driver.start(m_type), kOk);
        ASSERT_EQ(driver.UnInitial(), kOk);
    }
    // The mocked devices close their end of a connection a moment later.
    EXPECT_TRUE(waitUntil([&] { return ProcessState::now().files.size() <= files; }));
    EXPECT_TRUE(threadsAre(threads));
    EXPECT_TRUE(driver.unload()) << "the driver stays in memory";
}

TEST_F(PenDriverContract, UnloadsWithoutAStart)
{
    PenDriver driver;
    EXPECT_TRUE(driver.unload());
}

int leaveOpen(const std::vector<std::string>& arguments)
{
    auto* const devices = new MockDevices; // which are there to the end
    MockKernel& device = devices->plug(recordingNamed("tall"));
    auto* const driver = new PenDriver;
    if (driver->start(padModel("K421B").deviceType) != kOk)
        return 1;
    device.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    if (!device.waitUntilTaken())
        return 2;
    if (arguments[0] == "unload") {
        driver->unload();
        device.send({{EV_KEY, BTN_TOUCH, 0}, {EV_SYN, SYN_REPORT, 0}});
        if (!device.waitUntilTaken())
            return 3;
    }
    std::exit(0);
}
const ChildProgram leavingOpen("pen-driver-left-open", leaveOpen);

TEST_F(PenDriverContract, ProcessMayEndWithAnOpenPad)
{
    EXPECT_TRUE(endedWell(runChild("pen-driver-left-open", {"exit"})));
}

TEST_F(PenDriverContract, OpenPadStaysLoaded)
{
    EXPECT_TRUE(endedWell(runChild("pen-driver-left-open", {"unload"})));
}

TEST_F(PenDriverContract, ForkedChildEndsWhatItDoesNotHaveAndStartsAnew)
{
    MockKernel& device = m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), kOk);
    const pid_t child = fork();
    if (child == 0) {
        alarm(30); // a child that hangs is a failure
        const int ended = driver.UnInitial();
        const int started = driver.start(m_type);
        _exit(ended == kOk && started == kOk && driver.UnInitial() == kOk ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    device.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(device.waitUntilTaken());
    EXPECT_EQ(driver.samples().size(), 1u) << "the parent goes on";
}

} // namespace
} // namespace scribera::test

// The driver's entry points, the functions with which a test steers them, and the library's coming and going.
#include "model/padmodel.h"
#include "support.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

// Threads of the pad in this process, by their name.
std::size_t padThreads()
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(entry.path() / "comm");
        std::string name;
        std::getline(file, name);
        if (name == "scribera-sim")
            ++count;
    }
    return count;
}

class ControlTest : public SimulatorTest
{
protected:
    std::string callLog()
    {
        std::string text(static_cast<std::size_t>(m_driver.CallLog(nullptr, 0)) + 1, '?');
        m_driver.CallLog(text.data(), static_cast<int>(text.size()));
        text.pop_back();
        return text;
    }

    Driver m_driver;
};

using LibraryTest = SimulatorTest;

} // namespace

TEST_F(ControlTest, queuedSamplesArriveAsTheyAre)
{
    ASSERT_EQ(m_driver.start(2), 0);
    std::vector<ScrSimSample> sent;
    sent.reserve(1005);
    for (int index = 0; index < 1000; ++index)
        sent.push_back({index, INT_MIN + index, INT_MAX - index, index % 7});
    ASSERT_EQ(m_driver.SendSamples(sent.data(), 600), 0);
    ASSERT_EQ(m_driver.SendSamples(sent.data() + 600, 400), 0);
    ASSERT_EQ(m_driver.SendSample(5, 6, 7, 8), 0);
    ASSERT_EQ(m_driver.PressKey(1), 0);
    ASSERT_EQ(m_driver.PressKey(0), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    for (const ScrSimSample& sample :
         {ScrSimSample{5, 6, 7, 8}, {0, 0, 0, 4}, {0, 0, 0, 2}, {0, 0, 0, 3}, {0, 0, 0, 2}})
        sent.push_back(sample);
    EXPECT_EQ(Received::samples(), sent);
}

TEST_F(ControlTest, refusesSamplesItCannotDeliver)
{
    const ScrSimSample sample{1, 2, 3, 0};
    EXPECT_EQ(m_driver.SendSamples(&sample, 1), -1);
    EXPECT_STREQ(m_driver.LastError(), "the pad is not started");
    ASSERT_EQ(m_driver.start(2), 0);
    EXPECT_EQ(m_driver.SendSamples(nullptr, 1), -1);
    EXPECT_EQ(m_driver.SendSamples(&sample, -1), -1);
    EXPECT_EQ(m_driver.SendSamples(&sample, 0), 0);
    EXPECT_EQ(m_driver.PressKey(2), -1);
    EXPECT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_TRUE(Received::all().empty());
}

TEST_F(ControlTest, startsOnceAndStopsOnce)
{
    EXPECT_EQ(m_driver.unInitial(), -1);
    EXPECT_EQ(m_driver.start(4), 0);
    EXPECT_EQ(m_driver.start(4), -1);
    EXPECT_EQ(padThreads(), 1U);
    EXPECT_EQ(m_driver.unInitial(), 0);
    EXPECT_EQ(m_driver.unInitial(), -1);
}

TEST_F(ControlTest, refusesUnknownDevicesAndAMissingCallback)
{
    for (const int deviceType : {-1, 0, 1, 6, 8})
        EXPECT_EQ(m_driver.start(deviceType), -2) << deviceType;
    EXPECT_EQ(m_driver.initial(4, nullptr, nullptr), -2);
    // The fingerprint callback may be missing.
    ASSERT_EQ(m_driver.initial(2, Received::takeSample, nullptr), 0);
    ASSERT_EQ(m_driver.SendSyntheticFingerprint("loop", 1, 1), 0);
    ASSERT_EQ(m_driver.SendSample(1, 2, 3, 4), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(Received::all().size(), 1U);
}

TEST_F(ControlTest, aCallbackCanNeitherStopThePadNorWaitForIt)
{
    ASSERT_EQ(m_driver.start(4), 0);
    std::atomic<int> stopped{7};
    std::atomic<int> idle{7};
    Received::whenReceived([&](std::size_t) {
        stopped = m_driver.unInitial();
        idle = m_driver.WaitIdle(Patience);
    });
    ASSERT_EQ(m_driver.SendSample(1, 2, 3, 0), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(stopped, -1);
    EXPECT_EQ(idle, -1);
    EXPECT_EQ(m_driver.unInitial(), 0);
}

TEST_F(ControlTest, aCallbackMaySend)
{
    ASSERT_EQ(m_driver.start(4), 0);
    Received::whenReceived([&](std::size_t count) {
        if (count < 5) {
            EXPECT_EQ(m_driver.SendSample(static_cast<int>(count), 0, 0, 1), 0);
        }
    });
    ASSERT_EQ(m_driver.SendSample(0, 0, 0, 0), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(Received::samples().size(), 5U);
}

TEST_F(ControlTest, fiftyStartsAndStopsLeaveNoThread)
{
    const std::string path = std::string(SCRIBERA_RECORDINGS) + "/initials.rec";
    for (int round = 0; round < 50; ++round) {
        ASSERT_EQ(m_driver.start(round % 2 == 0 ? 4 : 7), 0) << round;
        ASSERT_EQ(m_driver.Play(path.c_str(), 50, 1, 1), 0);
        const std::size_t before = Received::all().size();
        ASSERT_TRUE(Received::waitFor(before + 1));
        ASSERT_EQ(m_driver.unInitial(), 0) << round;
    }
    // The kernel's list forgets a joined thread a moment later.
    EXPECT_TRUE(becomesTrue([] { return padThreads() == 0; }));
}

TEST_F(ControlTest, nothingArrivesAfterTheStop)
{
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(m_driver.start(4), 0);
        const std::vector<ScrSimSample> many(10'000, ScrSimSample{1, 2, 3, 1});
        Received::clear();
        ASSERT_EQ(m_driver.SendSamples(many.data(), static_cast<int>(many.size())), 0);
        ASSERT_TRUE(Received::waitFor(1));
        ASSERT_EQ(m_driver.unInitial(), 0);
        const std::size_t count = Received::all().size();
        // What was left in the queue does not come with the next start either.
        ASSERT_EQ(m_driver.start(4), 0);
        ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
        ASSERT_EQ(m_driver.unInitial(), 0);
        EXPECT_EQ(Received::all().size(), count);
    }
}

TEST_F(ControlTest, aSetResultIsReturnedAndLeavesOutTheEffect)
{
    ASSERT_EQ(m_driver.SetResult("SCRDAPI_Initial", -7), 0);
    EXPECT_EQ(m_driver.start(4), -7);
    EXPECT_EQ(padThreads(), 0U);
    EXPECT_EQ(m_driver.SendSample(1, 2, 3, 0), -1);
    ASSERT_EQ(m_driver.SetResult("SCRDAPI_Initial", 0), 0);
    ASSERT_EQ(m_driver.start(4), 0);

    ASSERT_EQ(m_driver.SetResult("SCRDAPI_UnInitial", 3), 0);
    EXPECT_EQ(m_driver.unInitial(), 3);
    EXPECT_EQ(m_driver.SendSample(1, 2, 3, 0), 0);
    ASSERT_EQ(m_driver.SetResult("SCRDAPI_UnInitial", 0), 0);

    char buffer[4] = "abc";
    ASSERT_EQ(m_driver.SetResult("SCRDAPI_GetDevicePadID", -5), 0);
    EXPECT_EQ(m_driver.padId(buffer, sizeof buffer), -5);
    EXPECT_STREQ(buffer, "abc");

    ASSERT_EQ(m_driver.SetResult("SCRDAPI_ShowFPImageOnDevice", -6), 0);
    unsigned char picture[2] = {1, 2};
    EXPECT_EQ(m_driver.showPicture(picture, 2, 1, 1, nullptr), -6);
    EXPECT_EQ(m_driver.TransferCount(), 0);

    for (const char* name : {"SCRDAPI_OpenDeviceLCD", "SCRDAPI_ClearDeviceContent",
                             "SCRDAPI_ShowVersionInfoOnDevice", "SCRDAPI_SetDevicePenStyle"})
        ASSERT_EQ(m_driver.SetResult(name, -9), 0);
    EXPECT_EQ(m_driver.openLcd(true), -9);
    EXPECT_EQ(m_driver.clearContent(), -9);
    EXPECT_EQ(m_driver.showVersion(true), -9);
    EXPECT_EQ(m_driver.setPenStyle(true), -9);

    EXPECT_EQ(m_driver.SetResult("OpenDeviceLCD", 1), -1);
    EXPECT_EQ(m_driver.SetResult(nullptr, 1), -1);
}

TEST_F(ControlTest, aSetDelayIsWaitedOnThatEntryPointOnly)
{
    ASSERT_EQ(m_driver.SetDelay("SCRDAPI_OpenDeviceLCD", 80), 0);
    const auto begin = Clock::now();
    EXPECT_EQ(m_driver.openLcd(true), 0);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(80));
    ASSERT_EQ(m_driver.SetDelay("SCRDAPI_OpenDeviceLCD", 3'600'000), 0);
    EXPECT_EQ(m_driver.clearContent(), 0);
    ASSERT_EQ(m_driver.SetDelay("SCRDAPI_OpenDeviceLCD", 0), 0);
    EXPECT_EQ(m_driver.openLcd(true), 0);
    EXPECT_EQ(m_driver.SetDelay("SCRDAPI_OpenDeviceLCD", -1), -1);
    EXPECT_EQ(m_driver.SetDelay("nothing", 1), -1);
}

TEST_F(ControlTest, samplesArriveWhileAnEntryPointIsDelayed)
{
    ASSERT_EQ(m_driver.start(4), 0);
    ASSERT_EQ(m_driver.SetDelay("SCRDAPI_ClearDeviceContent", 200), 0);
    std::atomic<bool> returned{false};
    std::thread caller([&] {
        m_driver.clearContent();
        returned = true;
    });
    // The call is counted before its delay begins.
    EXPECT_TRUE(becomesTrue([&] { return m_driver.CallCount("SCRDAPI_ClearDeviceContent") == 1; }));
    EXPECT_EQ(m_driver.SendSample(1, 2, 3, 0), 0);
    EXPECT_TRUE(Received::waitFor(1));
    caller.join();
    EXPECT_TRUE(returned);
}

TEST_F(ControlTest, eachIdentityHasAText)
{
    char buffer[64];
    EXPECT_EQ(m_driver.padId(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "SIMPAD0001");
    EXPECT_EQ(m_driver.penId(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "SIMPEN0001");
    EXPECT_EQ(m_driver.secureId(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "SIMSEC0001");
    for (const CPadModel* model : AllPads()) {
        ASSERT_EQ(m_driver.start(model->m_nDeviceType), 0);
        EXPECT_EQ(m_driver.partsVersion(buffer, sizeof buffer), 0);
        EXPECT_EQ(buffer, std::string("SC") + model->m_pszName);
        ASSERT_EQ(m_driver.unInitial(), 0);
    }
    // A known pad's name may be short; any other text is the pad's own.
    for (const auto& [setting, reported] : {std::pair{"SCT470 V1", "SCT470 V1"},
                                            {"T470", "SCT470"},
                                            {"T470 V1", "T470 V1"},
                                            {"K999", "K999"}}) {
        setenv("SCRIBERA_SIM_MODEL", setting, 1);
        ASSERT_EQ(m_driver.start(2), 0);
        EXPECT_EQ(m_driver.partsVersion(buffer, sizeof buffer), 0);
        EXPECT_STREQ(buffer, reported);
        ASSERT_EQ(m_driver.unInitial(), 0);
    }
}

TEST_F(ControlTest, aTextIsWrittenAsFarAsThereIsRoom)
{
    char buffer[9];
    const auto written = [&](int maxCount) {
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(m_driver.secureId(buffer, maxCount), 0);
        return std::string(buffer, sizeof buffer);
    };
    ASSERT_EQ(m_driver.SetText("SCRDAPI_GetDeviceSecureID", "a\0bcd", 5, 1), 0);
    EXPECT_EQ(written(8), std::string("a\0bcd\0###", 9));
    EXPECT_EQ(written(6), std::string("a\0bcd\0###", 9));
    EXPECT_EQ(written(5), std::string("a\0bcd####", 9));
    EXPECT_EQ(written(1), std::string("a########", 9));
    ASSERT_EQ(m_driver.SetText("SCRDAPI_GetDeviceSecureID", "xyz", 3, 0), 0);
    EXPECT_EQ(written(8), "xyz######");
    ASSERT_EQ(m_driver.SetText("SCRDAPI_GetDeviceSecureID", nullptr, 0, 1), 0);
    EXPECT_EQ(written(8), std::string("\0########", 9));

    EXPECT_EQ(m_driver.secureId(nullptr, 4), -2);
    EXPECT_EQ(m_driver.secureId(buffer, 0), -2);
    EXPECT_EQ(m_driver.secureId(buffer, -1), -2);
    EXPECT_EQ(m_driver.SetText("SCRDAPI_OpenDeviceLCD", "a", 1, 1), -1);
    EXPECT_EQ(m_driver.SetText("SCRDAPI_GetDevicePenID", nullptr, 1, 1), -1);
    EXPECT_EQ(m_driver.SetText("SCRDAPI_GetDevicePenID", "a", -1, 1), -1);
}

TEST_F(ControlTest, countsCallsKeepsArgumentsAndTheirOrder)
{
    char buffer[32];
    unsigned char picture[8] = {};
    for (const char* name : EntryPoints) {
        EXPECT_EQ(m_driver.CallCount(name), 0) << name;
        EXPECT_EQ(m_driver.LastArgument(name), INT_MIN) << name;
    }
    EXPECT_EQ(callLog(), "");
    m_driver.start(5);
    m_driver.openLcd(true);
    m_driver.openLcd(false);
    m_driver.clearContent();
    m_driver.penId(buffer, 31);
    m_driver.padId(buffer, 30);
    m_driver.secureId(buffer, 29);
    m_driver.partsVersion(buffer, 28);
    m_driver.showVersion(true);
    m_driver.setPenStyle(true);
    m_driver.showPicture(picture, 8, 2, 2, nullptr);
    m_driver.unInitial();
    m_driver.start(99);

    const std::pair<const char*, std::pair<int, int>> expected[] = {
        {"SCRDAPI_Initial", {2, 99}},
        {"SCRDAPI_UnInitial", {1, INT_MIN}},
        {"SCRDAPI_OpenDeviceLCD", {2, 0}},
        {"SCRDAPI_ClearDeviceContent", {1, INT_MIN}},
        {"SCRDAPI_GetDevicePenID", {1, 31}},
        {"SCRDAPI_GetDevicePadID", {1, 30}},
        {"SCRDAPI_GetDeviceSecureID", {1, 29}},
        {"SCRDAPI_GetDevicePartsVersion", {1, 28}},
        {"SCRDAPI_ShowVersionInfoOnDevice", {1, 1}},
        {"SCRDAPI_SetDevicePenStyle", {1, 1}},
        {"SCRDAPI_ShowFPImageOnDevice", {1, 8}},
    };
    for (const auto& [name, calls] : expected) {
        EXPECT_EQ(m_driver.CallCount(name), calls.first) << name;
        EXPECT_EQ(m_driver.LastArgument(name), calls.second) << name;
    }
    const std::string log =
        "SCRDAPI_Initial SCRDAPI_OpenDeviceLCD SCRDAPI_OpenDeviceLCD SCRDAPI_ClearDeviceContent "
        "SCRDAPI_GetDevicePenID SCRDAPI_GetDevicePadID SCRDAPI_GetDeviceSecureID "
        "SCRDAPI_GetDevicePartsVersion SCRDAPI_ShowVersionInfoOnDevice SCRDAPI_SetDevicePenStyle "
        "SCRDAPI_ShowFPImageOnDevice SCRDAPI_UnInitial SCRDAPI_Initial";
    EXPECT_EQ(callLog(), log);
    EXPECT_EQ(m_driver.CallLog(buffer, 20), static_cast<int>(log.size()));
    EXPECT_EQ(buffer, log.substr(0, 19));
    EXPECT_EQ(m_driver.CallCount("SCRDAPI_Nothing"), -1);
    EXPECT_EQ(m_driver.LastArgument(nullptr), INT_MIN);
}

TEST_F(ControlTest, resetForgetsSettingsAndCountersButNotTheStartedPad)
{
    char buffer[32];
    unsigned char picture[2] = {1, 2};
    ASSERT_EQ(m_driver.start(4), 0);
    m_driver.SetResult("SCRDAPI_OpenDeviceLCD", -4);
    m_driver.SetDelay("SCRDAPI_ClearDeviceContent", 3'600'000);
    m_driver.SetText("SCRDAPI_GetDevicePadID", "other", 5, 1);
    m_driver.showPicture(picture, 2, 1, 1, nullptr);
    m_driver.SetTransferTime(3'600'000);
    m_driver.SetResult("nothing", 1);
    m_driver.Reset();
    EXPECT_EQ(callLog(), "");
    EXPECT_EQ(m_driver.TransferCount(), 0);
    EXPECT_EQ(m_driver.LastPicture(nullptr, 0, nullptr, nullptr), 0);
    EXPECT_STREQ(m_driver.LastError(), "");
    EXPECT_EQ(m_driver.openLcd(true), 0);
    EXPECT_EQ(m_driver.clearContent(), 0);
    EXPECT_EQ(m_driver.padId(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "SIMPAD0001");
    EXPECT_EQ(m_driver.showPicture(picture, 2, 1, 1, nullptr), 0);
    EXPECT_EQ(m_driver.SendSample(1, 2, 3, 0), 0);
    EXPECT_TRUE(Received::waitFor(1));
}

TEST_F(LibraryTest, unloadsWhenThePadIsStopped)
{
    const std::string path = SCRIBERA_DRIVER_LIBRARY;
    for (int round = 0; round < 3; ++round) {
        Driver driver;
        ASSERT_TRUE(driver.isLoaded());
        EXPECT_TRUE(isLibraryLoaded(path));
        ASSERT_EQ(driver.start(7), 0);
        EXPECT_NE(driver.LastError(), nullptr);
        ASSERT_EQ(driver.SendSyntheticFingerprint("arch", 1, 1), 0);
        ASSERT_EQ(driver.WaitIdle(Patience), 0);
        ASSERT_EQ(driver.unInitial(), 0);
        driver.unload();
        EXPECT_FALSE(isLibraryLoaded(path));
    }
}

TEST_F(LibraryTest, staysLoadedUnderAStartedPad)
{
    const std::string path = SCRIBERA_DRIVER_LIBRARY;
    {
        Driver driver;
        ASSERT_EQ(driver.start(4), 0);
        const std::string recording = std::string(SCRIBERA_RECORDINGS) + "/flowing.rec";
        ASSERT_EQ(driver.Play(recording.c_str(), 0, 1, -1), 0);
        driver.unload();
        EXPECT_TRUE(isLibraryLoaded(path));
        EXPECT_TRUE(Received::waitFor(Received::all().size() + 1000));
    }
    {
        // The same instance, found again.
        Driver driver;
        EXPECT_EQ(driver.CallCount("SCRDAPI_Initial"), 1);
        EXPECT_EQ(driver.unInitial(), 0);
    }
    EXPECT_FALSE(isLibraryLoaded(path));
}

TEST_F(LibraryTest, isFreshWhenLoadedAgain)
{
    {
        Driver driver;
        driver.SetResult("SCRDAPI_OpenDeviceLCD", -4);
        EXPECT_EQ(driver.openLcd(true), -4);
    }
    Driver driver;
    EXPECT_EQ(driver.CallCount("SCRDAPI_OpenDeviceLCD"), 0);
    EXPECT_EQ(driver.openLcd(true), 0);
}

TEST_F(LibraryTest, hasEveryEntryPoint)
{
    const Driver driver;
    for (const char* name : EntryPoints)
        EXPECT_NE(driver.find(name), nullptr) << name;
    // Nothing of the inside is to be found.
    EXPECT_EQ(
        driver.find("_ZN9simulator13readRecordingERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERNS_"
                    "9RecordingERS5_"),
        nullptr);
}

TEST_F(LibraryTest, eachVariantLacksItsEntryPointAndNoOther)
{
    for (const char* missing : EntryPoints) {
        SCOPED_TRACE(missing);
        const std::string folder = missing + std::strlen("SCRDAPI_");
        const Driver driver(std::string(SCRIBERA_DRIVER_VARIANTS) + "/" + folder + "/libscriberadrv.so");
        ASSERT_TRUE(driver.isLoaded());
        for (const char* name : EntryPoints)
            EXPECT_EQ(driver.find(name) == nullptr, std::string(name) == missing) << name;
        ASSERT_NE(driver.CallCount, nullptr);
        // The control functions know the entry points by name, the missing one too.
        EXPECT_EQ(driver.CallCount(missing), 0);
    }
}

// Recordings and packet streams as the pad plays them: samples, order, timing, keys and loops.
#include "pads.h"
#include "support.h"

#include <cmath>
#include <cstdlib>

namespace {

using std::chrono::milliseconds;

// Taps a steady pen: `count` samples, `step` milliseconds apart.
std::string steadyRecording(int count, int step)
{
    std::string text =
        "# scribera recording 1\nmodel: SCT580\narea: 550 180 29870 20120\nmax-pressure: 8192\n";
    for (int index = 0; index < count; ++index) {
        const int status = index == 0 ? 0 : index == count - 1 ? 2 : 1;
        text += std::to_string(index * step) + " " + std::to_string(600 + index) + " " +
                std::to_string(200 + index) + " " + std::to_string(index % 8192) + " " +
                std::to_string(status) + "\n";
    }
    return text;
}

class PlaybackTest : public SimulatorTest
{
protected:
    void start(int deviceType = 4)
    {
        ASSERT_TRUE(m_driver.isLoaded());
        ASSERT_EQ(m_driver.start(deviceType), 0);
    }

    // No sample came before its time, counted from `begin`.
    static void expectNoneEarly(const std::vector<Event>& events, Clock::time_point begin, double step)
    {
        for (std::size_t index = 0; index < events.size(); ++index) {
            const std::chrono::duration<double, std::milli> passed = events[index].time - begin;
            ASSERT_GE(passed.count(), step * static_cast<double>(index) - 0.001) << "sample " << index;
        }
    }

    Driver m_driver;
};

} // namespace

TEST_F(PlaybackTest, deliversEverySampleInOrderOnOneThreadOfItsOwn)
{
    start();
    const std::string path = std::string(SCRIBERA_RECORDINGS) + "/flowing.rec";
    ASSERT_EQ(m_driver.Play(path.c_str(), 0, 0, -1), 0) << m_driver.LastError();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(Received::samples(), readSamples(path));
    const std::vector<Event> events = Received::all();
    for (const Event& event : events) {
        ASSERT_EQ(event.thread, events.front().thread);
        ASSERT_NE(event.thread, std::this_thread::get_id());
    }
}

TEST_F(PlaybackTest, atTrueRateEachSampleComesAtItsTime)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(101, 5));
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, -1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 101U);
    expectNoneEarly(events, begin, 5);
    EXPECT_LT(events.back().time - begin, 10 * milliseconds(500));
}

TEST_F(PlaybackTest, nTimesTheRateTakesAnNthOfTheTime)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(1001, 50));
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.Play(path.c_str(), 100, 0, -1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 1001U);
    expectNoneEarly(events, begin, 0.5);
    // 50 s recorded, 0.5 s to play.
    EXPECT_LT(events.back().time - begin, milliseconds(5000));
}

TEST_F(PlaybackTest, aFractionOfTheRateTakesLonger)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(21, 5));
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.Play(path.c_str(), 0.5, 0, -1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 21U);
    expectNoneEarly(events, begin, 10);
}

TEST_F(PlaybackTest, withoutARateNothingIsWaitedFor)
{
    start();
    // Ten hours on paper.
    const std::string path = m_directory.write("r", steadyRecording(1001, 36'000));
    ASSERT_EQ(m_driver.Play(path.c_str(), 0, 0, 1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(Received::all().size(), 1003U);
}

TEST_F(PlaybackTest, aSlowHostGetsEverySampleLate)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(200, 1));
    Received::whenReceived([](std::size_t count) {
        if (count == 1)
            std::this_thread::sleep_for(milliseconds(300)); // a host that is busy
    });
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, -1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(Received::samples(), readSamples(path));
}

TEST_F(PlaybackTest, aPacketStreamIsPlayedWithItsOwnNumbersAndPauses)
{
    // Two records, 60 ms apart: (1000, -2, 77) on the stroke and (65535, 3, 0) at its end.
    const unsigned char bytes[49] = {0xe8, 3, 0xfe, 0xff, 77, 0, 0, 0,    100,  0, 0, 0, 0, 0, 0, 0,  1,
                                     0,    0, 0,    0,    0,  0, 0, 0xff, 0xff, 3, 0, 0, 0, 1, 0, 160};
    std::string text;
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t index = 0; index < 48; index += 3) {
        const unsigned group =
            static_cast<unsigned>(bytes[index] << 16 | bytes[index + 1] << 8 | bytes[index + 2]);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += Digits[group >> shift & 63];
    }
    text += "AA==";
    const std::string path = m_directory.write("stream", text);

    // A small pad: its area and pressure would change the numbers if they were scaled.
    start(5);
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, -1), 0) << m_driver.LastError();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<ScrSimSample> expected{{1000, -2, 77, 0}, {65535, 3, 0, 2}};
    EXPECT_EQ(Received::samples(), expected);
    EXPECT_GE(Received::all().back().time - begin, milliseconds(60));
}

TEST_F(PlaybackTest, aRecordingIsScaledToTheStartedPad)
{
    const std::string path = m_directory.write(
        "r", "# scribera recording 1\nmodel: SCT580\narea: 550 180 29870 20120\nmax-pressure: 8192\n"
             "0 550 180 0 0\n1 30419 20299 8192 1\n2 15485 10240 4096 2\n3 9 9 9 4\n");
    struct Case
    {
        int deviceType;
        const char* model; // null: the canonical one
        simulator::Area area;
        int maxPressure;
    };
    const Case cases[] = {
        {2, nullptr, {160, 220, 2360, 1430}, 2048},   {2, "SCT470", {160, 220, 2360, 1430}, 1024},
        {5, nullptr, {200, 200, 2300, 1300}, 2048},   {7, nullptr, {2050, 1750, 21170, 11490}, 2048},
        {3, nullptr, {550, 180, 29870, 20120}, 8192}, {4, nullptr, {550, 180, 29870, 20120}, 8192}};
    for (const Case& pad : cases) {
        SCOPED_TRACE(pad.deviceType);
        Received::clear();
        if (pad.model != nullptr)
            setenv("SCRIBERA_SIM_MODEL", pad.model, 1);
        else
            unsetenv("SCRIBERA_SIM_MODEL");
        start(pad.deviceType);
        ASSERT_EQ(m_driver.Play(path.c_str(), 0, 0, -1), 0);
        ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
        ASSERT_EQ(m_driver.unInitial(), 0);
        // Corner to corner, middle to middle, full pressure to full pressure; the key's numbers as they are.
        const simulator::Area& area = pad.area;
        const std::vector<ScrSimSample> expected{
            {area.originX, area.originY, 0, 0},
            {area.originX + area.width - 1, area.originY + area.height - 1, pad.maxPressure, 1},
            {area.originX + area.width / 2, area.originY + area.height / 2, pad.maxPressure / 2, 2},
            {9, 9, 9, 4}};
        EXPECT_EQ(Received::samples(), expected);
    }
}

TEST_F(PlaybackTest, theKeyComesAtTheEnd)
{
    const std::string path = m_directory.write("r", steadyRecording(3, 1));
    const std::vector<ScrSimSample> recorded = readSamples(path);
    for (const int key : {1, 0}) {
        Received::clear();
        start();
        const auto begin = Clock::now();
        ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, key), 0);
        ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
        ASSERT_EQ(m_driver.unInitial(), 0);
        std::vector<ScrSimSample> expected = recorded;
        expected.push_back({0, 0, 0, key == 1 ? 4 : 3});
        expected.push_back({0, 0, 0, 2});
        EXPECT_EQ(Received::samples(), expected);
        const std::vector<Event> events = Received::all();
        ASSERT_EQ(events.size(), 5U);
        EXPECT_GE(events[3].time - begin, milliseconds(252));
        EXPECT_GE(events[4].time - begin, milliseconds(342));
    }
}

TEST_F(PlaybackTest, loopsUntilItIsStopped)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(10, 1));
    std::vector<ScrSimSample> pass = readSamples(path);
    pass.push_back({0, 0, 0, 4});
    pass.push_back({0, 0, 0, 2});
    ASSERT_EQ(m_driver.Play(path.c_str(), 0, 1, 1), 0);
    ASSERT_TRUE(Received::waitFor(10 * pass.size()));
    ASSERT_EQ(m_driver.StopPlaying(), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<ScrSimSample> samples = Received::samples();
    for (std::size_t index = 0; index < samples.size(); ++index)
        ASSERT_EQ(samples[index], pass[index % pass.size()]) << index;
    EXPECT_EQ(m_driver.WaitIdle(0), 0);
    EXPECT_EQ(Received::samples().size(), samples.size());
}

TEST_F(PlaybackTest, aLoopAtARateKeepsTheRateFromPassToPass)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(5, 5));
    const auto begin = Clock::now();
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 1, -1), 0);
    ASSERT_TRUE(Received::waitFor(20));
    std::vector<Event> events = Received::all();
    events.resize(20);
    // The next pass begins 5 ms after the last sample, so all are 5 ms apart.
    expectNoneEarly(events, begin, 5);
}

TEST_F(PlaybackTest, stoppingThePadEndsALoop)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(10, 1));
    ASSERT_EQ(m_driver.Play(path.c_str(), 0, 1, -1), 0);
    ASSERT_TRUE(Received::waitFor(25));
    ASSERT_EQ(m_driver.unInitial(), 0);
    const std::size_t count = Received::all().size();
    EXPECT_EQ(m_driver.WaitIdle(0), 0);
    EXPECT_EQ(Received::all().size(), count);
}

TEST_F(PlaybackTest, playingAgainReplacesWhatPlays)
{
    start();
    const std::string longOne = m_directory.write("long", steadyRecording(10, 1000));
    const std::string shortOne = m_directory.write("short", steadyRecording(4, 1));
    ASSERT_EQ(m_driver.Play(longOne.c_str(), 0.001, 0, 1), 0);
    ASSERT_TRUE(Received::waitFor(1));
    ASSERT_EQ(m_driver.Play(shortOne.c_str(), 0, 0, -1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    std::vector<ScrSimSample> expected{readSamples(longOne).front()};
    for (const ScrSimSample& sample : readSamples(shortOne))
        expected.push_back(sample);
    EXPECT_EQ(Received::samples(), expected);
}

TEST_F(PlaybackTest, tellsItsProgressInThousandths)
{
    EXPECT_EQ(m_driver.Progress(), 1000);
    start();
    EXPECT_EQ(m_driver.Progress(), 1000);
    const std::string path = m_directory.write("r", steadyRecording(4, 3'000'000));
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, -1), 0);
    ASSERT_TRUE(Received::waitFor(1));
    // The first of four; the next is due in an hour.
    EXPECT_TRUE(becomesTrue([this] { return m_driver.Progress() == 250; }));
    ASSERT_EQ(m_driver.StopPlaying(), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_EQ(m_driver.Progress(), 1000);
}

TEST_F(PlaybackTest, whatIsQueuedMeanwhileIsNotHeldUp)
{
    start();
    const std::string path = m_directory.write("r", steadyRecording(2, 3'600'000));
    ASSERT_EQ(m_driver.Play(path.c_str(), 1, 0, -1), 0);
    ASSERT_TRUE(Received::waitFor(1));
    ASSERT_EQ(m_driver.SendSample(1, 2, 3, 1), 0);
    ASSERT_TRUE(Received::waitFor(2));
    EXPECT_EQ(Received::samples().back(), (ScrSimSample{1, 2, 3, 1}));
    EXPECT_EQ(m_driver.WaitIdle(1), -1);
}

TEST_F(PlaybackTest, refusesWhatItCannotPlayAndTellsWhy)
{
    const std::string good = m_directory.write("good", steadyRecording(2, 1));
    EXPECT_EQ(m_driver.Play(good.c_str(), 1, 0, -1), -1);
    EXPECT_STREQ(m_driver.LastError(), "the pad is not started");
    EXPECT_EQ(m_driver.StopPlaying(), -1);
    start();
    EXPECT_EQ(m_driver.Play(nullptr, 1, 0, -1), -1);
    EXPECT_EQ(m_driver.Play("", 1, 0, -1), -1);
    EXPECT_STREQ(m_driver.LastError(), "no recording named");
    EXPECT_EQ(m_driver.Play(good.c_str(), -1, 0, -1), -1);
    EXPECT_EQ(m_driver.Play(good.c_str(), std::nan(""), 0, -1), -1);
    EXPECT_STREQ(m_driver.LastError(), "the speed is not a number from 0 up");
    EXPECT_EQ(m_driver.Play(good.c_str(), 1, 0, 2), -1);
    EXPECT_STREQ(m_driver.LastError(), "the key at the end is none of -1, 0 and 1");
    const std::string bad = m_directory.write("bad", steadyRecording(2, 1) + "0 1 2 3 0\n");
    EXPECT_EQ(m_driver.Play(bad.c_str(), 1, 0, -1), -1);
    EXPECT_EQ(m_driver.LastError(), bad + ":7: time '0' is before the previous sample's");
    EXPECT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_TRUE(Received::all().empty());
}

TEST_F(PlaybackTest, theEnvironmentNamesRecordingRateAndKey)
{
    const std::string path = m_directory.write("r", steadyRecording(5, 1000));
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "max", 1);
    setenv("SCRIBERA_SIM_KEY", "cancel", 1);
    setenv("SCRIBERA_SIM_START_MS", "120", 1);
    const auto begin = Clock::now();
    start();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    std::vector<ScrSimSample> expected = readSamples(path);
    expected.push_back({0, 0, 0, 3});
    expected.push_back({0, 0, 0, 2});
    EXPECT_EQ(Received::samples(), expected);
    ASSERT_FALSE(Received::all().empty());
    EXPECT_GE(Received::all().front().time - begin, milliseconds(120));
}

TEST_F(PlaybackTest, theEnvironmentsRateIsANumber)
{
    const std::string path = m_directory.write("r", steadyRecording(11, 100));
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "10", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    const auto begin = Clock::now();
    start();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 11U);
    expectNoneEarly(events, begin, 10);
}

TEST_F(PlaybackTest, theEnvironmentLoops)
{
    const std::string path = m_directory.write("r", steadyRecording(5, 1));
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "max", 1);
    setenv("SCRIBERA_SIM_LOOP", "1", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    start();
    EXPECT_TRUE(Received::waitFor(100));
    ASSERT_EQ(m_driver.unInitial(), 0);
}

TEST_F(PlaybackTest, anEnvironmentThatCannotBeUsedIsRefusedWithTheReason)
{
    const std::string good = m_directory.write("good", steadyRecording(2, 1));
    const std::string bad = m_directory.write("bad", "# scribera recording 1\nmodel\n");
    const std::string missing = m_directory.path("missing");
    struct Case
    {
        const char* variable;
        std::string value;
        std::string reason;
    };
    const Case cases[] = {
        {"SCRIBERA_SIM_RECORDING", bad, bad + ":2: header line 'model' is missing"},
        {"SCRIBERA_SIM_RECORDING", missing, missing + ": cannot be opened: No such file or directory"},
        {"SCRIBERA_SIM_RATE", "0", "SCRIBERA_SIM_RATE is not a number above 0 or \"max\""},
        {"SCRIBERA_SIM_RATE", "-1", "SCRIBERA_SIM_RATE is not a number above 0 or \"max\""},
        {"SCRIBERA_SIM_RATE", "fast", "SCRIBERA_SIM_RATE is not a number above 0 or \"max\""},
        {"SCRIBERA_SIM_RATE", "inf", "SCRIBERA_SIM_RATE is not a number above 0 or \"max\""},
        {"SCRIBERA_SIM_RATE", "2x", "SCRIBERA_SIM_RATE is not a number above 0 or \"max\""},
        {"SCRIBERA_SIM_LOOP", "yes", "SCRIBERA_SIM_LOOP is not an integer"},
        {"SCRIBERA_SIM_KEY", "ok", "SCRIBERA_SIM_KEY is not \"confirm\" or \"cancel\""},
        {"SCRIBERA_SIM_START_MS", "-1", "SCRIBERA_SIM_START_MS is not an integer from 0 to 3600000"},
        {"SCRIBERA_SIM_START_MS", "3600001", "SCRIBERA_SIM_START_MS is not an integer from 0 to 3600000"},
        {"SCRIBERA_SIM_PAD_WAIT_MS", "soon", "SCRIBERA_SIM_PAD_WAIT_MS is not an integer from 0 to 3600000"},
        {"SCRIBERA_SIM_PAD", std::string(200, 'x'),
         std::string(200, 'x') + ": is longer than a socket's path may be, 107 bytes"},
    };
    // Also where it would not matter: without a recording nothing has a rate.
    for (const std::string& recording : {good, std::string()}) {
        for (const Case& bad : cases) {
            SCOPED_TRACE(bad.variable + ("=" + bad.value) + " with '" + recording + "'");
            setenv("SCRIBERA_SIM_RECORDING", recording.c_str(), 1);
            setenv(bad.variable, bad.value.c_str(), 1);
            testing::internal::CaptureStderr();
            const int result = m_driver.start(4);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "scribera simulator: " + bad.reason + "\n");
            EXPECT_EQ(result, -1);
            EXPECT_EQ(m_driver.LastError(), bad.reason);
            EXPECT_EQ(m_driver.unInitial(), -1) << "nothing was started";
            unsetenv(bad.variable);
            if (recording.empty()) { // the same pad, set right
                EXPECT_EQ(m_driver.start(4), 0);
                EXPECT_EQ(m_driver.WaitIdle(Patience), 0);
                EXPECT_EQ(m_driver.unInitial(), 0);
            }
        }
    }
    EXPECT_TRUE(Received::all().empty());
}

TEST_F(PlaybackTest, theEnvironmentPressesAKeyWithoutInk)
{
    setenv("SCRIBERA_SIM_START_MS", "20", 1);
    for (const auto& [key, status] : {std::pair{"confirm", 4}, {"cancel", 3}}) {
        setenv("SCRIBERA_SIM_KEY", key, 1);
        Received::clear();
        const auto begin = Clock::now();
        start();
        ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
        ASSERT_EQ(m_driver.unInitial(), 0);
        EXPECT_EQ(Received::samples(), (std::vector<ScrSimSample>{{0, 0, 0, status}, {0, 0, 0, 2}}));
        const std::vector<Event> events = Received::all();
        ASSERT_EQ(events.size(), 2U);
        EXPECT_GE(events[0].time - begin, milliseconds(20 + 250));
        EXPECT_GE(events[1].time - begin, milliseconds(20 + 250 + 90));
    }
}

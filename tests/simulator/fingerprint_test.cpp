// Fingerprints: the synthetic patterns, the reader of PGM files, and their way to the host.
#include "fingerprint.h"
#include "support.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <set>

namespace {

using simulator::RidgePattern;
using simulator::syntheticFingerprint;
using Pixels = std::vector<unsigned char>;

constexpr int Width = 208;
constexpr int Height = 288;
constexpr double Pi = 3.14159265358979323846;

constexpr std::pair<RidgePattern, const char*> Patterns[] = {
    {RidgePattern::Loop, "loop"}, {RidgePattern::Whorl, "whorl"}, {RidgePattern::Arch, "arch"}};

std::uint64_t fingerprintHash(const Pixels& pixels)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const unsigned char byte : pixels)
        hash = (hash ^ byte) * 0x100000001b3U;
    return hash;
}

int at(const Pixels& pixels, int x, int y)
{
    return pixels[std::size_t{Width} * static_cast<std::size_t>(y) + static_cast<std::size_t>(x)];
}

int meanOf(const Pixels& pixels)
{
    return static_cast<int>(std::accumulate(pixels.begin(), pixels.end(), 0L) /
                            static_cast<long>(pixels.size()));
}

// Twice the angle of the strongest change of grey around a pixel, from the sums of squared differences.
double doubledAngle(const Pixels& pixels, int x, int y)
{
    double squares = 0;
    double products = 0;
    constexpr int Reach = 9;
    for (int row = y - Reach; row <= y + Reach; ++row) {
        for (int column = x - Reach; column <= x + Reach; ++column) {
            const double right = at(pixels, column + 1, row) - at(pixels, column - 1, row);
            const double down = at(pixels, column, row + 1) - at(pixels, column, row - 1);
            squares += right * right - down * down;
            products += 2 * right * down;
        }
    }
    return std::atan2(products, squares);
}

// How many half turns the ridges make on the way around the middle of the print.
int halfTurns(const Pixels& pixels)
{
    constexpr int Steps = 120;
    constexpr double Radius = 52;
    double turned = 0;
    double previous = 0;
    for (int step = 0; step <= Steps; ++step) {
        const double way = 2 * Pi * step / Steps;
        const double angle = doubledAngle(pixels, static_cast<int>(std::lround(104 + Radius * std::cos(way))),
                                          static_cast<int>(std::lround(128 + Radius * std::sin(way))));
        if (step > 0)
            turned += std::remainder(angle - previous, 2 * Pi);
        previous = angle;
    }
    return static_cast<int>(std::lround(turned / (2 * Pi)));
}

class FingerprintTest : public SimulatorTest
{
protected:
    void start(int deviceType = 7) { ASSERT_EQ(m_driver.start(deviceType), 0); }

    Driver m_driver;
};

std::string greyMap(int width, int height, const Pixels& pixels)
{
    std::string text = "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n";
    text.append(pixels.begin(), pixels.end());
    return text;
}

std::string refusal(const std::string& content)
{
    Pixels pixels;
    std::string error;
    return simulator::parseGreyMap(content, "f", pixels, error) ? "accepted" : error;
}

} // namespace

TEST(RidgePatternTest, aPatternAndASeedGiveTheSameBytesEverywhere)
{
    EXPECT_EQ(fingerprintHash(syntheticFingerprint(RidgePattern::Loop, 1)), 0xa7731b6fd6bcc43bU);
    EXPECT_EQ(fingerprintHash(syntheticFingerprint(RidgePattern::Whorl, 1)), 0x7de6ee8cd525fa65U);
    EXPECT_EQ(fingerprintHash(syntheticFingerprint(RidgePattern::Arch, 1)), 0xba2a6f4ca3218c36U);
    EXPECT_EQ(fingerprintHash(syntheticFingerprint(RidgePattern::Loop, 4294967295)), 0x5a2e133c6674ea69U);
}

TEST(RidgePatternTest, patternsAndSeedsDiffer)
{
    std::set<std::uint64_t> hashes;
    for (const auto& [pattern, name] : Patterns) {
        for (std::uint64_t seed = 0; seed < 4; ++seed)
            hashes.insert(fingerprintHash(syntheticFingerprint(pattern, seed)));
    }
    EXPECT_EQ(hashes.size(), 12U);
}

TEST(RidgePatternTest, isADarkOvalOfRidgesOnALightGround)
{
    for (const auto& [pattern, name] : Patterns) {
        for (std::uint64_t seed = 1; seed <= 4; ++seed) {
            SCOPED_TRACE(name + (" " + std::to_string(seed)));
            const Pixels pixels = syntheticFingerprint(pattern, seed);
            ASSERT_EQ(pixels.size(), 59904U);
            for (const int x : {0, 207}) {
                for (const int y : {0, 287})
                    EXPECT_GT(at(pixels, x, y), 230);
            }
            const int mean = meanOf(pixels);
            EXPECT_GT(mean, 110);
            EXPECT_LT(mean, 210);
            const auto dark =
                std::count_if(pixels.begin(), pixels.end(), [&](int grey) { return grey < mean; });
            EXPECT_GT(dark, 59904 / 5);
            EXPECT_LT(dark, 59904 / 2);
            // Ridges every 7 to 11 pixels on the way down through the middle, where they run across.
            int ridges = 0;
            for (int y = 30; y < 100; ++y) {
                const auto grey = [&](int row) {
                    return at(pixels, 103, row) + at(pixels, 104, row) + at(pixels, 105, row);
                };
                ridges += grey(y) < 3 * mean && grey(y - 1) >= 3 * mean;
            }
            EXPECT_GE(ridges, 5);
            EXPECT_LE(ridges, 12);
        }
    }
}

TEST(RidgePatternTest, ridgesTurnAsThePatternSays)
{
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        EXPECT_EQ(std::abs(halfTurns(syntheticFingerprint(RidgePattern::Loop, seed))), 1);
        EXPECT_EQ(std::abs(halfTurns(syntheticFingerprint(RidgePattern::Whorl, seed))), 2);
        EXPECT_EQ(halfTurns(syntheticFingerprint(RidgePattern::Arch, seed)), 0);
    }
}

TEST(RidgePatternTest, isFoundByItsName)
{
    for (const auto& [pattern, name] : Patterns)
        EXPECT_EQ(simulator::ridgePatternByName(name), pattern);
    for (const char* name : {"", "Loop", "loops", "tented"})
        EXPECT_EQ(simulator::ridgePatternByName(name), std::nullopt);
}

TEST(GreyMapTest, takesBothForms)
{
    Pixels expected(59904, 255);
    const Pixels picture{0, 1, 2, 10, 200, 255};
    for (std::size_t index = 0; index < picture.size(); ++index)
        expected[(143 + index / 3) * Width + 102 + index % 3] = picture[index];
    const std::string raw(picture.begin(), picture.end());
    for (const std::string& content : {"P5\n3 2\n255\n" + raw, "P5 # made by hand\n# 9 9\n3\t2 255 " + raw,
                                       std::string("P2\n3 2\n255\n0 1 2\n10 200 255\n"),
                                       std::string("P2 3 2 255 000 1 2 # half\n10 200 255")}) {
        Pixels pixels;
        std::string error;
        ASSERT_TRUE(simulator::parseGreyMap(content, "f", pixels, error)) << error;
        EXPECT_EQ(pixels, expected);
    }
}

TEST(GreyMapTest, cutsALargerPictureAroundItsMiddle)
{
    constexpr int Columns = 211;
    constexpr int Rows = 300;
    Pixels picture;
    for (int index = 0; index < Columns * Rows; ++index)
        picture.push_back(static_cast<unsigned char>(index % 251));
    Pixels pixels;
    std::string error;
    ASSERT_TRUE(simulator::parseGreyMap(greyMap(Columns, Rows, picture), "f", pixels, error)) << error;
    ASSERT_EQ(pixels.size(), 59904U);
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x)
            ASSERT_EQ(at(pixels, x, y), picture[static_cast<std::size_t>((y + 6) * Columns + x + 1)]);
    }
}

TEST(GreyMapTest, cutsOneWayAndFillsTheOther)
{
    Pixels pixels;
    std::string error;
    ASSERT_TRUE(simulator::parseGreyMap(greyMap(400, 10, Pixels(4000, 7)), "f", pixels, error)) << error;
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 7), 2080);
    EXPECT_EQ(at(pixels, 0, 139), 7);
    EXPECT_EQ(at(pixels, 207, 148), 7);
    EXPECT_EQ(at(pixels, 0, 138), 255);
    EXPECT_EQ(at(pixels, 0, 149), 255);
}

TEST(GreyMapTest, whatIsWrittenIsReadBack)
{
    const Pixels print = syntheticFingerprint(RidgePattern::Loop, 3);
    Pixels pixels;
    std::string error;
    ASSERT_TRUE(simulator::parseGreyMap(simulator::formatGreyMap(print), "f", pixels, error)) << error;
    EXPECT_EQ(pixels, print);
}

TEST(GreyMapTest, refusesEachMalformedPictureWithItsReason)
{
    const std::string form = "f: is not a grey PGM picture, which would begin with P5 or P2";
    const std::string header = "f: the header does not give width, height and largest grey value";
    const std::string size = "f: width or height is not within 1 to 16384";
    const std::pair<std::string, std::string> cases[] = {
        {"", form},
        {"P", form},
        {"P6 1 1 255 abc", form},
        {"\x89PNG\r\n", form},
        {"P5", header},
        {"P5 3", header},
        {"P5 3 2", header},
        {"P5 # 3 2 255", header},
        {"P5 3 x 255 ", header},
        {"P5 -3 2 255 ", header},
        {"P5 3.0 2 255 ", header},
        {"P5 3 2 255x", header},
        {"P5 9999999999 2 255 ", header},
        {"P5 0 2 255 ", size},
        {"P5 3 0 255 ", size},
        {"P5 16385 1 255 ", size},
        {"P5 999999999 999999999 255 ", size},
        {"P5 1 1 65535 ab", "f: the largest grey value is 65535, not 255"},
        {"P5 1 1 1 a", "f: the largest grey value is 1, not 255"},
        {"P5 1 1 0 a", "f: the largest grey value is 0, not 255"},
        {"P5 1 1 255", "f: no white space between header and picture"},
        {"P5 1 1 255 ", "f: fewer than 1 x 1 grey values"},
        {"P5 3 2 255 abcde", "f: fewer than 3 x 2 grey values"},
        {"P5 3 2 255 abcdefg", "f: more than 3 x 2 grey values"},
        {"P5 16384 16384 255 a", "f: fewer than 16384 x 16384 grey values"},
        {"P2 3 2 255 1 2 3 4 5", "f: fewer than 3 x 2 grey values"},
        {"P2 3 2 255 1 2 3 4 5 6 7", "f: more than 3 x 2 grey values"},
        {"P2 3 2 255 1 2 3 256 5 6", "f: grey value 4 is not an integer from 0 to 255"},
        {"P2 3 2 255 1 -2 3 4 5 6", "f: grey value 2 is not an integer from 0 to 255"},
        {"P2 3 2 255 1 2 3 4 5 6x", "f: grey value 6 is not an integer from 0 to 255"},
        {"P2 16384 16384 255 1", "f: fewer than 16384 x 16384 grey values"},
    };
    for (const auto& [content, reason] : cases)
        EXPECT_EQ(refusal(content), reason) << content;
}

TEST_F(FingerprintTest, rawBytesArriveAsTheyAre)
{
    start();
    const unsigned char raw[] = {1, 2, 3};
    const Pixels large(60000, 9);
    ASSERT_EQ(m_driver.SendFingerprint(raw, 3, 55), 0);
    ASSERT_EQ(m_driver.SendFingerprint(nullptr, 59904, -4), 0);
    ASSERT_EQ(m_driver.SendFingerprint(large.data(), 60000, 0), 0);
    ASSERT_EQ(m_driver.SendFingerprint(raw, 0, 1), 0);
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0].length, 3);
    EXPECT_EQ(events[0].score, 55);
    Pixels expected(59904, 255);
    std::copy(std::begin(raw), std::end(raw), expected.begin());
    EXPECT_EQ(events[0].pixels, expected);
    EXPECT_TRUE(events[1].isNull);
    EXPECT_EQ(events[1].length, 59904);
    EXPECT_EQ(events[1].score, -4);
    EXPECT_EQ(events[2].pixels, large);
    EXPECT_EQ(events[3].length, 0);
    EXPECT_EQ(events[3].pixels, Pixels(59904, 255));
}

TEST_F(FingerprintTest, aBurstKeepsItsPlaceAmongTheSamples)
{
    start();
    // Hold the pad's thread in its first callback, so that all the rest is queued together.
    std::atomic<bool> queued{false};
    Received::whenReceived([&](std::size_t) { queued.wait(false); });
    ASSERT_EQ(m_driver.SendSample(0, 0, 0, 0), 0);
    std::vector<int> expected{-1};
    const unsigned char raw[] = {1};
    for (int round = 0; round < 20; ++round) {
        for (int count = 0; count < round % 3; ++count) {
            ASSERT_EQ(m_driver.SendSample(0, 0, 0, 1), 0);
            expected.push_back(-1);
        }
        for (int count = 0; count < round % 4; ++count) {
            ASSERT_EQ(m_driver.SendFingerprint(raw, 1, 4 * round + count), 0);
            expected.push_back(4 * round + count);
        }
    }
    queued = true;
    queued.notify_all();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    std::vector<int> order;
    for (const Event& event : Received::all())
        order.push_back(event.kind == Event::Finger ? event.score : -1);
    EXPECT_EQ(order, expected);
}

TEST_F(FingerprintTest, syntheticOnesAndFilesArriveWhole)
{
    start();
    const Pixels print = syntheticFingerprint(RidgePattern::Arch, 4294967295U);
    const std::string path = m_directory.write("print.pgm", simulator::formatGreyMap(print));
    ASSERT_EQ(m_driver.SendSyntheticFingerprint("arch", 4294967295U, 12), 0) << m_driver.LastError();
    ASSERT_EQ(m_driver.SendFingerprintFile(path.c_str(), 13), 0) << m_driver.LastError();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 2U);
    for (std::size_t index = 0; index < 2; ++index) {
        EXPECT_EQ(events[index].kind, Event::Finger);
        EXPECT_EQ(events[index].pixels, print);
        EXPECT_EQ(events[index].length, 59904);
        EXPECT_EQ(events[index].score, index == 0 ? 12 : 13);
        EXPECT_EQ(events[index].thread, events[0].thread);
        EXPECT_NE(events[index].thread, std::this_thread::get_id());
    }
}

TEST_F(FingerprintTest, refusesWhatItCannotDeliver)
{
    const unsigned char raw[] = {1};
    const std::string good = m_directory.write("good", simulator::formatGreyMap(Pixels(59904, 1)));
    for (const auto& send : std::initializer_list<std::function<int()>>{
             [&] { return m_driver.SendFingerprint(raw, 1, 1); },
             [&] { return m_driver.SendSyntheticFingerprint("loop", 1, 1); },
             [&] { return m_driver.SendFingerprintFile(good.c_str(), 1); }}) {
        EXPECT_EQ(send(), -1);
        EXPECT_STREQ(m_driver.LastError(), "the pad is not started");
    }
    start();
    EXPECT_EQ(m_driver.SendFingerprint(raw, -1, 1), -1);
    for (const char* name : {static_cast<const char*>(nullptr), "", "spiral"}) {
        EXPECT_EQ(m_driver.SendSyntheticFingerprint(name, 1, 1), -1);
        EXPECT_STREQ(m_driver.LastError(), "the pattern is none of \"loop\", \"whorl\" and \"arch\"");
    }
    EXPECT_EQ(m_driver.SendFingerprintFile(nullptr, 1), -1);
    EXPECT_EQ(m_driver.SendFingerprintFile("", 1), -1);
    EXPECT_STREQ(m_driver.LastError(), "no fingerprint file named");
    const std::string bad = m_directory.write("bad", "P5 2 2 255 abc");
    EXPECT_EQ(m_driver.SendFingerprintFile(bad.c_str(), 1), -1);
    EXPECT_EQ(m_driver.LastError(), bad + ": fewer than 2 x 2 grey values");
    const std::string missing = m_directory.path("missing");
    EXPECT_EQ(m_driver.SendFingerprintFile(missing.c_str(), 1), -1);
    EXPECT_EQ(m_driver.LastError(), missing + ": cannot be opened: No such file or directory");
    EXPECT_EQ(m_driver.WaitIdle(Patience), 0);
    EXPECT_TRUE(Received::all().empty());
}

TEST_F(FingerprintTest, theEnvironmentsComesBetweenTheRecordingAndTheKey)
{
    const std::string path = std::string(SCRIBERA_RECORDINGS) + "/initials.rec";
    const std::size_t recorded = readSamples(path).size();
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "50", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    setenv("SCRIBERA_SIM_KEY", "confirm", 1);
    setenv("SCRIBERA_SIM_FINGERPRINT", "whorl", 1);
    for (const bool isMaximal : {false, true}) {
        if (isMaximal)
            setenv("SCRIBERA_SIM_RATE", "max", 1);
        Received::clear();
        start();
        ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
        ASSERT_EQ(m_driver.unInitial(), 0);
        const std::vector<Event> events = Received::all();
        ASSERT_EQ(events.size(), recorded + 3);
        EXPECT_EQ(events[recorded].kind, Event::Finger);
        EXPECT_EQ(events[recorded].pixels, syntheticFingerprint(RidgePattern::Whorl, 1));
        EXPECT_EQ(events[recorded].length, 59904);
        EXPECT_EQ(events[recorded].score, 80);
        EXPECT_EQ(events[recorded + 1].sample, (ScrSimSample{0, 0, 0, 4}));
        EXPECT_EQ(events[recorded + 2].sample, (ScrSimSample{0, 0, 0, 2}));
        EXPECT_EQ(Received::samples().size(), recorded + 2);
    }
}

TEST_F(FingerprintTest, theEnvironmentsComesAtItsTime)
{
    const std::string path = m_directory.write("r", "# scribera recording 1\nmodel: SCK421B\narea: 2050 1750 "
                                                    "21170 11490\nmax-pressure: 2048\n0 3000 3000 5 "
                                                    "0\n30 3000 3000 0 2\n");
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_START_MS", "50", 1);
    setenv("SCRIBERA_SIM_KEY", "cancel", 1);
    // A file: a synthetic one would take longer to make than this is exact.
    const std::string print = m_directory.write("p.pgm", simulator::formatGreyMap(Pixels(59904, 1)));
    setenv("SCRIBERA_SIM_FINGERPRINT", print.c_str(), 1);
    const auto begin = Clock::now();
    start();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 5U);
    EXPECT_EQ(events[2].kind, Event::Finger);
    EXPECT_GE(events[2].time - begin, std::chrono::milliseconds(50 + 30 + 120));
    EXPECT_GE(events[3].time - begin, std::chrono::milliseconds(50 + 30 + 250));
}

TEST_F(FingerprintTest, theEnvironmentGivesScoreSeedAndFile)
{
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    setenv("SCRIBERA_SIM_FINGERPRINT", "loop", 1);
    setenv("SCRIBERA_SIM_FINGERPRINT_SCORE", "-2147483648", 1);
    setenv("SCRIBERA_SIM_FINGERPRINT_SEED", "4294967295", 1);
    // Without a recording too, and without a key then.
    start();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    ASSERT_EQ(m_driver.unInitial(), 0);
    const Pixels print(59904, 77);
    const std::string path = m_directory.write("p.pgm", simulator::formatGreyMap(print));
    setenv("SCRIBERA_SIM_FINGERPRINT", path.c_str(), 1);
    setenv("SCRIBERA_SIM_FINGERPRINT_SCORE", "2147483647", 1);
    start();
    ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].score, -2147483647 - 1);
    EXPECT_EQ(events[0].pixels, syntheticFingerprint(RidgePattern::Loop, 4294967295U));
    EXPECT_EQ(events[1].score, 2147483647);
    EXPECT_EQ(events[1].pixels, print);
}

TEST_F(FingerprintTest, theEnvironmentsComesOnceInALoop)
{
    const std::string path = std::string(SCRIBERA_RECORDINGS) + "/initials.rec";
    const std::size_t recorded = readSamples(path).size();
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "max", 1);
    setenv("SCRIBERA_SIM_LOOP", "1", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    setenv("SCRIBERA_SIM_FINGERPRINT", "loop", 1);
    for (const bool withKey : {false, true}) {
        if (withKey)
            setenv("SCRIBERA_SIM_KEY", "confirm", 1);
        const std::size_t pass = recorded + (withKey ? 2 : 0);
        Received::clear();
        start();
        ASSERT_TRUE(Received::waitFor(3 * pass + 1));
        ASSERT_EQ(m_driver.unInitial(), 0);
        const std::vector<Event> events = Received::all();
        for (std::size_t index = 0; index < events.size(); ++index)
            ASSERT_EQ(events[index].kind == Event::Finger, index == recorded) << index;
        EXPECT_EQ(events[pass + 1].sample, events[0].sample);
    }
}

TEST_F(FingerprintTest, otherPadsHaveNoSensor)
{
    const std::string path = std::string(SCRIBERA_RECORDINGS) + "/initials.rec";
    setenv("SCRIBERA_SIM_RECORDING", path.c_str(), 1);
    setenv("SCRIBERA_SIM_RATE", "max", 1);
    setenv("SCRIBERA_SIM_START_MS", "0", 1);
    for (const char* value : {"loop", "no such file"}) {
        setenv("SCRIBERA_SIM_FINGERPRINT", value, 1);
        for (const int deviceType : {2, 3, 4, 5}) {
            Received::clear();
            start(deviceType);
            ASSERT_EQ(m_driver.WaitIdle(Patience), 0);
            ASSERT_EQ(m_driver.unInitial(), 0);
            EXPECT_EQ(Received::all().size(), readSamples(path).size());
            EXPECT_EQ(Received::samples().size(), readSamples(path).size());
        }
    }
}

TEST_F(FingerprintTest, anEnvironmentThatCannotBeUsedIsRefusedWithTheReason)
{
    const std::string recording = std::string(SCRIBERA_RECORDINGS) + "/initials.rec";
    const std::string bad = m_directory.write("bad.pgm", "P5 1 1 255 ab");
    const std::string missing = m_directory.path("whirl");
    struct Case
    {
        const char* variable;
        std::string value;
        std::string reason;
    };
    const std::string score =
        "SCRIBERA_SIM_FINGERPRINT_SCORE is not an integer from -2147483648 to 2147483647";
    const std::string seed = "SCRIBERA_SIM_FINGERPRINT_SEED is not an integer from 0 to 4294967295";
    const Case cases[] = {
        {"SCRIBERA_SIM_FINGERPRINT", missing, missing + ": cannot be opened: No such file or directory"},
        {"SCRIBERA_SIM_FINGERPRINT", bad, bad + ": more than 1 x 1 grey values"},
        {"SCRIBERA_SIM_FINGERPRINT_SCORE", "good", score},
        {"SCRIBERA_SIM_FINGERPRINT_SCORE", "2147483648", score},
        {"SCRIBERA_SIM_FINGERPRINT_SEED", "-1", seed},
        {"SCRIBERA_SIM_FINGERPRINT_SEED", "4294967296", seed},
    };
    for (const char* path : {recording.c_str(), ""}) {
        setenv("SCRIBERA_SIM_RECORDING", path, 1);
        for (const Case& wrong : cases) {
            SCOPED_TRACE(wrong.variable + ("=" + wrong.value));
            setenv(wrong.variable, wrong.value.c_str(), 1);
            testing::internal::CaptureStderr();
            const int result = m_driver.start(7);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "scribera simulator: " + wrong.reason + "\n");
            EXPECT_EQ(result, -1);
            EXPECT_EQ(m_driver.LastError(), wrong.reason);
            EXPECT_EQ(m_driver.unInitial(), -1) << "nothing was started";
            EXPECT_TRUE(Received::all().empty());
            unsetenv(wrong.variable);
        }
    }
}

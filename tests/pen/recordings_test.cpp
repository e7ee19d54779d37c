// Recordings played on a mocked device, through the built driver, and through the library and back: each
// sample and each stored point is what a program of the tests computes from the recording with exact
// fractions.

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "mockdevices.h"
#include "pen.h"
#include "pendriver.h"
#include "pythonprogram.h"

namespace scribera::test {
namespace {

struct Play
{
    std::string recording;
    std::string model = "K421B";
    std::string fit = "keep";
    std::string rotation = "0";
    std::string area{};
};

void PrintTo(const Play& play, std::ostream* out)
{
    *out << play.recording << ' ' << play.model << ' ' << play.fit << ' ' << play.rotation << ' '
         << play.area;
}

std::vector<Play> plays()
{
    std::vector<Play> all;
    for (const std::string& recording : recordings()) {
        const bool isOurs = recording.starts_with(SCRIBERA_PEN_RECORDINGS);
        for (const PadModel& model : padModels()) {
            for (const char* fit : {"keep", "stretch"}) {
                if (!isOurs || model.name == "K421B" || recording == recordingNamed("offset"))
                    all.push_back({recording, model.name, fit});
            }
        }
    }
    for (const char* rotation : {"90", "180", "270"}) {
        for (const char* name : {"unequal", "inverted"}) {
            all.push_back({recordingNamed(name), "K210", "keep", rotation});
            all.push_back({recordingNamed(name), "T580", "keep", rotation, "12.5,3.25,80,90.001"});
        }
    }
    all.push_back({recordingNamed("unequal"), "KM730", "stretch", "0", "0,0,10,10"});
    return all;
}

std::string playName(const testing::TestParamInfo<Play>& info)
{
    const Play& play = info.param;
    std::string name = std::filesystem::path(play.recording).stem().string() + "_" + play.model + "_" +
                       play.fit + "_" + play.rotation + (play.area.empty() ? "" : "_area");
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::vector<PadSample> expectedSamples(const Play& play)
{
    const PadModel& model = padModel(play.model);
    std::vector<std::string> arguments = {play.recording};
    for (const int number :
         {model.originX, model.originY, model.areaWidth, model.areaHeight, model.maxPressure})
        arguments.push_back(std::to_string(number));
    for (const std::string& setting : {play.fit, play.rotation, play.area})
        arguments.push_back(setting);
    std::istringstream lines(runPython("expected.py", arguments));
    std::vector<PadSample> samples;
    for (PadSample sample{}; lines >> sample.x >> sample.y >> sample.pressure >> sample.status;)
        samples.push_back(sample);
    return samples;
}

// A stroke is stored with its last point once more, as its end.
std::vector<Ink> pointsOf(const std::vector<PadSample>& samples)
{
    std::vector<Ink> points;
    for (const PadSample& sample : samples) {
        if (sample.status == PenUp) {
            points.push_back(points.back());
            points.back().status = 1;
        } else {
            points.push_back({static_cast<std::uint16_t>(sample.x), static_cast<std::int16_t>(sample.y),
                              static_cast<std::int16_t>(sample.pressure), 0});
        }
    }
    return points;
}

bool hasKeys(const std::vector<PadSample>& samples)
{
    return std::any_of(samples.begin(), samples.end(), [](const PadSample& sample) {
        return sample.status == CancelKeyDown || sample.status == ConfirmKeyDown;
    });
}

class PenDriverRecordings : public testing::TestWithParam<Play>
{
protected:
    void SetUp() override
    {
        setLogging(false);
        installPenDriver();
        setenv("SCRIBERA_PEN_FIT", GetParam().fit.c_str(), 1);
        setenv("SCRIBERA_PEN_ROTATE", GetParam().rotation.c_str(), 1);
        setenv("SCRIBERA_PEN_AREA", GetParam().area.c_str(), 1);
    }

    MockDevices m_devices;
};

TEST_P(PenDriverRecordings, AreExactInTheDriverAndInTheLibrary)
{
    const std::vector<PadSample> samples = expectedSamples(GetParam());
    const std::vector<Event> events = eventsOf(GetParam().recording);
    const PadModel& model = padModel(GetParam().model);
    MockKernel& device = m_devices.plug(GetParam().recording);
    {
        PenDriver driver;
        ASSERT_EQ(driver.start(model.deviceType), 0);
        device.send(events);
        ASSERT_TRUE(device.waitUntilTaken());
        EXPECT_EQ(driver.samples(), samples);
        EXPECT_EQ(driver.UnInitial(), 0);
        EXPECT_EQ(driver.samples(), samples) << "something came at the end";
    }
    if (hasKeys(samples))
        return; // which clear what was signed

    const std::vector<Ink> expected = pointsOf(samples);
    const Operations& api = Library::instance().family(model);
    ASSERT_TRUE(api.InitialDevice(model.deviceType, nullptr, 0, 0, 400, 200));
    device.send(events);
    ASSERT_TRUE(device.waitUntilTaken());
    std::vector<Ink> stored;
    for (int index = 0; index < api.GetTotalPacketsNumber(model.deviceType); ++index) {
        Packet packet{index, 0, 0, 0, 0};
        ASSERT_EQ(api.getPackets(model.deviceType, &packet), 0);
        stored.push_back({packet.x, packet.y, packet.pressure, packet.status});
    }
    EXPECT_EQ(stored, expected);
    if (char* const text = api.PacketsBase64Encode(model.deviceType, ImageInk)) {
        std::vector<Ink> streamed;
        QByteArray bytes = QByteArray::fromBase64(text);
        bytes.chop(1); // the stream's last byte is a zero
        for (const StreamRecord& record : recordsOf(bytes))
            streamed.push_back({record.x, record.y, record.pressure, record.status});
        EXPECT_EQ(streamed, expected);
        api.PacketsBase64EncodeFree(model.deviceType, text);
    } else {
        EXPECT_TRUE(expected.empty());
    }
    EXPECT_EQ(api.UnInitialDevice(model.deviceType), 0);
}

INSTANTIATE_TEST_SUITE_P(, PenDriverRecordings, testing::ValuesIn(plays()), playName);

// Replayed by the mocked devices themselves, with the times of the recording.
TEST(PenDriverReplay, GivesTheSame)
{
    installPenDriver();
    const Play play{recordingNamed("offset")};
    const std::vector<PadSample> expected = expectedSamples(play);
    MockDevices devices;
    devices.plug(play.recording);
    PenDriver driver;
    ASSERT_EQ(driver.start(padModel(play.model).deviceType), 0);
    devices.replay(play.recording);
    EXPECT_TRUE(waitUntil([&] { return driver.samples().size() >= expected.size(); }));
    EXPECT_EQ(driver.UnInitial(), 0);
    EXPECT_EQ(driver.samples(), expected);
}

} // namespace
} // namespace scribera::test

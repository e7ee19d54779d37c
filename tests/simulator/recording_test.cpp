// The reader of recordings and packet streams, and the scaling from pad to pad.
#include "files.h"
#include "pads.h"
#include "support.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using simulator::Area;
using simulator::RecordedSample;
using simulator::Recording;

const std::string Header =
    "# scribera recording 1\nmodel: SCT580\narea: 550 180 29870 20120\nmax-pressure: 8192\n";

std::string base64(const std::string& bytes)
{
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        unsigned group = 0;
        for (std::size_t place = 0; place < 3; ++place)
            group = group << 8 |
                    (index + place < bytes.size() ? static_cast<unsigned char>(bytes[index + place]) : 0U);
        for (std::size_t place = 0; place < 4; ++place)
            text += index + place > bytes.size() ? '=' : Digits[group >> (18 - 6 * place) & 63];
    }
    return text;
}

std::string packet(int x, int y, int pressure, int status, std::uint64_t tick, std::uint64_t seconds = 1)
{
    std::string bytes;
    const auto add = [&](std::uint64_t value, int count) {
        for (int index = 0; index < count; ++index)
            bytes += static_cast<char>(value >> (8 * index) & 255U);
    };
    add(static_cast<std::uint16_t>(x), 2);
    add(static_cast<std::uint16_t>(y), 2);
    add(static_cast<std::uint16_t>(pressure), 2);
    add(static_cast<std::uint8_t>(status), 1);
    add(0xa5, 1);
    add(tick, 8);
    add(seconds, 8);
    return bytes;
}

std::string refusal(const std::string& text)
{
    Recording recording;
    std::string error;
    if (simulator::parseRecording(text, "f", recording, error))
        return "accepted";
    return error;
}

std::string streamRefusal(const std::string& text)
{
    Recording recording;
    std::string error;
    if (simulator::parsePacketStream(text, "f", recording, error))
        return "accepted";
    return error;
}

class RecordingFileTest : public SimulatorTest
{
};

} // namespace

TEST(RecordingTest, takesHeaderSamplesCommentsAndBlankLines)
{
    Recording recording;
    std::string error;
    const std::string text =
        "# scribera recording 1\n\n# a comment: not a header\nmax-pressure: 2048\n"
        "  area :  -5 +7\t2300 1300  \nmodel:  SCK420 of mine\n \t \n0 1 2 3 0\n# between\n"
        "  0\t-1 -2 4 1\n1000000000 2147483647 -2147483648 0 7";
    ASSERT_TRUE(simulator::parseRecording(text, "f", recording, error)) << error;
    EXPECT_EQ(recording.model, "SCK420 of mine");
    EXPECT_EQ(recording.area, (Area{-5, 7, 2300, 1300}));
    EXPECT_EQ(recording.maxPressure, 2048);
    EXPECT_TRUE(recording.scalable);
    const std::vector<RecordedSample> expected{
        {0, 1, 2, 3, 0}, {0, -1, -2, 4, 1}, {1000000000, 2147483647, -2147483647 - 1, 0, 7}};
    EXPECT_EQ(recording.samples, expected);
}

TEST(RecordingTest, takesARecordingWithoutSamples)
{
    EXPECT_EQ(refusal(Header), "accepted");
}

TEST(RecordingTest, refusesEachMalformedLineWithItsNumberAndReason)
{
    const std::string first = "# scribera recording 1\n";
    const std::string model = "model: SCT580\n";
    const std::string area = "area: 550 180 29870 20120\n";
    const std::string pressure = "max-pressure: 8192\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "f:1: the first line is not '# scribera recording 1'"},
        {"model: SCT580\n", "f:1: the first line is not '# scribera recording 1'"},
        {"# scribera recording 2\n", "f:1: the first line is not '# scribera recording 1'"},
        {"# scribera recording 1\r\n", "f:1: the first line is not '# scribera recording 1'"},
        {first + "speed: 3\n", "f:2: unknown header line 'speed'"},
        {first + "mo\x01"
                 "el\xff: a\n",
         "f:2: unknown header line 'mo?el?'"},
        {first + "model:\n", "f:2: model has no name or one of more than 64 bytes"},
        {first + "model: " + std::string(65, 'M') + "\n",
         "f:2: model has no name or one of more than 64 bytes"},
        {first + model + model, "f:3: second header line 'model'"},
        {first + area + area, "f:3: second header line 'area'"},
        {first + pressure + pressure, "f:3: second header line 'max-pressure'"},
        {first + "area: 1 2 3\n", "f:2: area needs four numbers: originX originY width height"},
        {first + "area: 1 2 3 4 5\n", "f:2: area needs four numbers: originX originY width height"},
        {first + "area: 1 2 3 x\n", "f:2: area number 'x' is no integer or out of range"},
        {first + "area: 1 2 0 4\n", "f:2: area number '0' is no integer or out of range"},
        {first + "area: 1 2 3 -4\n", "f:2: area number '-4' is no integer or out of range"},
        {first + "area: 1000001 2 3 4\n", "f:2: area number '1000001' is no integer or out of range"},
        {first + "area: 1 -1000001 3 4\n", "f:2: area number '-1000001' is no integer or out of range"},
        {first + "max-pressure: 0\n", "f:2: max-pressure '0' is not an integer from 1 to 1000000"},
        {first + "max-pressure: 1000001\n",
         "f:2: max-pressure '1000001' is not an integer from 1 to 1000000"},
        {first + "max-pressure: 12.5\n", "f:2: max-pressure '12.5' is not an integer from 1 to 1000000"},
        {first + area + pressure, "f:3: header line 'model' is missing"},
        {first + model + pressure, "f:3: header line 'area' is missing"},
        {first + model + area, "f:3: header line 'max-pressure' is missing"},
        {first + model + area + "0 1 2 3 0\n", "f:4: header line 'max-pressure' is missing"},
        {Header + "0 1 2 3 0\n" + model, "f:6: header line 'model' behind the first sample"},
        {Header + "0 1 2 3\n", "f:5: a sample needs five numbers: milliseconds x y pressure status"},
        {Header + "0 1 2 3 0 9\n", "f:5: a sample needs five numbers: milliseconds x y pressure status"},
        {Header + "\n# c\n0 1 2 3 zero\n", "f:7: 'zero' is not an integer"},
        {Header + "0 1.5 2 3 0\n", "f:5: '1.5' is not an integer"},
        {Header + "0 1 2 3 0x1\n", "f:5: '0x1' is not an integer"},
        {Header + "0 +-1 2 3 0\n", "f:5: '+-1' is not an integer"},
        {Header + "0 99999999999999999999 2 3 0\n", "f:5: '99999999999999999999' is not an integer"},
        {Header + "0 2147483648 2 3 0\n", "f:5: '2147483648' does not fit into 32 bits"},
        {Header + "0 1 2 3 -2147483649\n", "f:5: '-2147483649' does not fit into 32 bits"},
        {Header + "-1 1 2 3 0\n", "f:5: time '-1' is not within 0 to 1000000000 ms"},
        {Header + "1000000001 1 2 3 0\n", "f:5: time '1000000001' is not within 0 to 1000000000 ms"},
        {Header + "5 1 2 3 0\n4 1 2 3 1\n", "f:6: time '4' is before the previous sample's"},
        {Header + "0 1 2 3 0\r\n", "f:5: '0?' is not an integer"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_EQ(refusal(text), reason);
}

TEST(RecordingTest, keepsQuotedWordsShort)
{
    EXPECT_EQ(refusal(Header + "0 1 2 3 " + std::string(1000, 'z') + "\n"),
              "f:5: '" + std::string(40, 'z') + "...' is not an integer");
}

TEST(RecordingTest, whatIsWrittenIsReadBack)
{
    Recording recording;
    recording.model = "SCK210";
    recording.area = {160, 220, 2360, 1430};
    recording.maxPressure = 2048;
    recording.samples = {{0, 200, 300, 10, 0}, {5, -7, 0, 2048, 1}, {5, 1, 1, 0, 2}, {300, 0, 0, 0, 4}};
    Recording back;
    std::string error;
    ASSERT_TRUE(simulator::parseRecording(simulator::formatRecording(recording), "f", back, error)) << error;
    EXPECT_EQ(back.model, recording.model);
    EXPECT_EQ(back.area, recording.area);
    EXPECT_EQ(back.maxPressure, recording.maxPressure);
    EXPECT_EQ(back.samples, recording.samples);
}

TEST(PacketStreamTest, takesRecordsWithTheirNumbersStrokesAndTimes)
{
    const std::string bytes =
        packet(65535, -3, 8192, 0, 1'000'000'000'000) + packet(10, 20, 30, 0, 1'000'000'000'007) +
        packet(11, 21, 0, 1, 1'000'000'000'007) + packet(1, 2, 3, 0, 1'000'000'000'900) +
        packet(1, 2, 0, 1, 1'000'000'001'000) + '\0';
    Recording recording;
    std::string error;
    ASSERT_TRUE(simulator::parsePacketStream(base64(bytes) + "\n", "f", recording, error)) << error;
    EXPECT_FALSE(recording.scalable);
    const std::vector<RecordedSample> expected{{0, 65535, -3, 8192, 0},
                                               {7, 10, 20, 30, 1},
                                               {7, 11, 21, 0, 2},
                                               {900, 1, 2, 3, 0},
                                               {1000, 1, 2, 0, 2}};
    EXPECT_EQ(recording.samples, expected);
}

TEST(PacketStreamTest, takesTheEmptyStream)
{
    Recording recording;
    std::string error;
    ASSERT_TRUE(simulator::parsePacketStream("AA==", "f", recording, error)) << error;
    EXPECT_TRUE(recording.samples.empty());
}

TEST(PacketStreamTest, refusesEachMalformedStreamWithItsOffsetAndReason)
{
    const std::string one = packet(1, 2, 3, 0, 100);
    const std::pair<std::string, std::string> cases[] = {
        {"", "f:0: neither a recording nor an ink packet stream, it is empty"},
        {"AA*=", "f:2: byte '*' is not of the Base64 alphabet, and a recording would begin with '# scribera "
                 "recording 1'"},
        {"AA==A", "f:2: byte '=' is not of the Base64 alphabet, and a recording would begin with '# scribera "
                  "recording 1'"},
        {"AAA", "f:3: the Base64 text ends within a group of four"},
        {"AB==", "f:1: the last Base64 digit carries bits that belong to no byte"},
        {base64(one), "f:32: the stream has 24 bytes, which is no number of 24-byte records and one byte"},
        {base64("ab"), "f:4: the stream has 2 bytes, which is no number of 24-byte records and one byte"},
        {base64(one + "x"), "f:32: the byte behind the last record is not zero"},
        {base64(packet(1, 2, 3, 2, 100) + '\0'), "f:8: record 1: status 2 is neither 0 nor 1"},
        {base64(one + packet(1, 2, 3, 0, 99) + '\0'),
         "f:42: record 2: its tick goes back, or is over 1000000000 ms after the first"},
        {base64(one + packet(1, 2, 3, 0, 1'000'000'101) + '\0'),
         "f:42: record 2: its tick goes back, or is over 1000000000 ms after the first"},
        {base64(one + packet(1, 2, 3, 0, 200) + packet(1, 2, 3, 0, 150) + '\0'),
         "f:74: record 3: its tick goes back, or is over 1000000000 ms after the first"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_EQ(streamRefusal(text), reason);
}

TEST_F(RecordingFileTest, tellsTheTwoFormsApart)
{
    Recording recording;
    std::string error;
    ASSERT_TRUE(simulator::readRecording(m_directory.write("a", Header + "0 1 2 3 0\n"), recording, error));
    EXPECT_TRUE(recording.scalable);
    ASSERT_TRUE(simulator::readRecording(m_directory.write("b", "AA=="), recording, error));
    EXPECT_FALSE(recording.scalable);
}

TEST_F(RecordingFileTest, refusesWhatIsNoReadableFile)
{
    Recording recording;
    std::string error;
    const auto refusalOf = [&](const std::string& path) {
        return simulator::readRecording(path, recording, error) ? "accepted" : error;
    };
    const std::string missing = m_directory.path("missing");
    EXPECT_EQ(refusalOf(missing), missing + ": cannot be opened: No such file or directory");
    const std::string below = m_directory.write("file", "AA==") + "/below";
    EXPECT_EQ(refusalOf(below), below + ": cannot be opened: Not a directory");
    const std::string directory = m_directory.path(".");
    EXPECT_EQ(refusalOf(directory), directory + ": is not a regular file");
    const std::string pipe = m_directory.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(refusalOf(pipe), pipe + ": is not a regular file");
    const std::string large = m_directory.write("large", "");
    ASSERT_EQ(truncate(large.c_str(), (off_t{64} << 20) + 1), 0);
    EXPECT_EQ(refusalOf(large), large + ": is larger than 64 MiB");
}

TEST_F(RecordingFileTest, aFailedWriteLeavesNoFile)
{
    std::string error;
    const std::string path = m_directory.path("none/out");
    EXPECT_FALSE(simulator::writeFile("text", path, error));
    EXPECT_EQ(error, path + ": cannot be written: No such file or directory");
    EXPECT_FALSE(simulator::writeFile("text", "/dev/full", error));
    EXPECT_EQ(error, "/dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST(ScalingTest, roundsToTheNearestAndStaysInside)
{
    Recording recording;
    recording.area = {100, 200, 1000, 500};
    recording.maxPressure = 1000;
    recording.samples = {
        {0, 100, 200, 0, 0},      // the first pixel
        {0, 1099, 699, 1000, 1},  // the last one
        {0, 101, 201, 1, 1},      // a quarter of a unit; 2.048 of pressure
        {0, 102, 202, 500, 1},    // half a unit goes up
        {0, 106, 0, 999, 1},      // y left of the area
        {0, 5000, 5000, 1500, 2}, // all beyond
        {0, 5000, 5000, 1500, 4}, // a key
        {0, -9, -9, -9, 99},      // a status nobody knows
    };
    simulator::scaleRecording(recording, {10, 20, 250, 125}, 2048);
    const std::vector<RecordedSample> expected{
        {0, 10, 20, 0, 0},    {0, 259, 144, 2048, 1}, {0, 10, 20, 2, 1},        {0, 11, 21, 1024, 1},
        {0, 12, 20, 2046, 1}, {0, 259, 144, 2048, 2}, {0, 5000, 5000, 1500, 4}, {0, -9, -9, -9, 99}};
    EXPECT_EQ(recording.samples, expected);
    EXPECT_EQ(recording.area, (Area{10, 20, 250, 125}));
    EXPECT_EQ(recording.maxPressure, 2048);
}

TEST(ScalingTest, leavesASampleAloneOnThePadItIsFor)
{
    Recording recording;
    recording.area = {100, 200, 1000, 500};
    recording.maxPressure = 1000;
    recording.samples = {{0, 5000, -5000, 1500, 1}};
    simulator::scaleRecording(recording, {100, 200, 1000, 500}, 1000);
    EXPECT_EQ(recording.samples, (std::vector<RecordedSample>{{0, 5000, -5000, 1500, 1}}));
}

TEST(ScalingTest, surviveTheLargestNumbers)
{
    Recording recording;
    recording.area = {-1000000, 1000000, 1, 1000000};
    recording.maxPressure = 1;
    recording.samples = {{0, 2147483647, -2147483647 - 1, -2147483647 - 1, 1}};
    simulator::scaleRecording(recording, {-1000000, 1000000, 1000000, 1}, 1000000);
    EXPECT_EQ(recording.samples, (std::vector<RecordedSample>{{0, -1, 1000000, 0, 1}}));
}

TEST(PadsTest, theModelsPressureAndTheAreaOfItsFamily)
{
    EXPECT_EQ(simulator::padForDevice(2, "SCK210 2.0")->maxPressure, 2048);
    EXPECT_EQ(simulator::padForDevice(2, "SCK210R1")->maxPressure, 1024);
    EXPECT_EQ(simulator::padForDevice(2, "something else")->model, "SCK210");
    EXPECT_EQ(simulator::padForDevice(7, "SCK420")->area, (Area{2050, 1750, 21170, 11490}));
    EXPECT_EQ(simulator::padForDevice(6, "SCK420"), nullptr);
    EXPECT_EQ(simulator::padForModel("SCK421B")->deviceType, 7);
    EXPECT_EQ(simulator::padForModel("SC"), nullptr);
}

TEST(PadsTest, aModelIsNamedWithAndWithoutItsPrefix)
{
    for (const char* name : {"K210", "K210R1", "T470", "N210", "T12", "K420", "K421B", "KM730", "T580"}) {
        SCOPED_TRACE(name);
        const simulator::Pad* const pad = simulator::padForModel(name);
        ASSERT_NE(pad, nullptr);
        EXPECT_EQ(pad->model, std::string("SC") + name);
        EXPECT_EQ(simulator::padForModel(std::string("SC") + name), pad);
    }
    for (const char* name : {"", "210", "SCK21", "SCK210X", "K210X", "k210", "SCSCK210", "CK210"})
        EXPECT_EQ(simulator::padForModel(name), nullptr) << name;
}

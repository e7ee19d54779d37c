// A pen that is pulled out while somebody signs, and put back.

#include "mockdevices.h"
#include "pen.h"
#include "pendriver.h"

namespace scribera::test {
namespace {

std::vector<Event> downAt(int x)
{
    return {{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_ABS, ABS_X, x}, {EV_SYN, SYN_REPORT, 0}};
}
std::vector<Event> moveTo(int x)
{
    return {{EV_ABS, ABS_X, x}, {EV_SYN, SYN_REPORT, 0}};
}
const std::vector<Event> kUp = {{EV_KEY, BTN_TOUCH, 0}, {EV_KEY, BTN_TOOL_PEN, 0}, {EV_SYN, SYN_REPORT, 0}};

class PenDriverUnplugged : public testing::TestWithParam<Unplugging>
{
protected:
    void SetUp() override
    {
        setLogging(false);
        installPenDriver();
    }

    std::vector<int> statuses() const
    {
        std::vector<int> found;
        for (int index = 0; index < m_api.GetTotalPacketsNumber(m_type); ++index) {
            Packet packet{index, 0, 0, 0, 0};
            EXPECT_EQ(m_api.getPackets(m_type, &packet), 0);
            found.push_back(packet.status);
        }
        return found;
    }
    bool answers() const
    {
        char text[64] = "";
        return m_api.GetHWPadID(m_type, text, sizeof text) == 0;
    }

    const int m_type = padModel("K421B").deviceType;
    const Operations& m_api = Library::instance().family(padModel("K421B"));
    MockDevices m_devices;
};

TEST_P(PenDriverUnplugged, InMidStrokeEndsTheStrokeAndGoesOnAfterwards)
{
    MockKernel& first = m_devices.plug(recordingNamed("tall"));
    ASSERT_TRUE(m_api.InitialDevice(m_type, nullptr, 0, 0, 400, 200));
    EXPECT_TRUE(answers());
    first.send(downAt(100));
    first.send(moveTo(200));
    ASSERT_TRUE(first.waitUntilTaken());
    EXPECT_EQ(statuses(), (std::vector<int>{0, 0}));

    m_devices.unplug(5, GetParam());
    ASSERT_TRUE(waitUntil([&] { return !answers(); }));
    ASSERT_TRUE(waitUntil([&] { return statuses().size() == 3; })) << "the stroke is ended";
    EXPECT_EQ(statuses(), (std::vector<int>{0, 0, 1})) << "and what was signed is kept";
    char text[64] = "";
    EXPECT_NE(m_api.GetHWPadID(m_type, text, sizeof text), 0);
    EXPECT_NE(m_api.GetHWPenID(m_type, text, sizeof text), 0);
    EXPECT_NE(m_api.GetHWVersionID(m_type, text, sizeof text), 0);

    // Another one is not taken for it.
    m_devices.plug(recordingNamed("offset"), 6);
    MockKernel& second = m_devices.plug(recordingNamed("tall"), 8);
    ASSERT_TRUE(waitUntil([&] { return answers(); }));
    EXPECT_EQ(m_api.GetHWPadID(m_type, text, sizeof text), 0);
    EXPECT_STREQ(text, "tall");
    second.send(downAt(300));
    second.send(kUp);
    ASSERT_TRUE(second.waitUntilTaken());
    EXPECT_EQ(statuses(), (std::vector<int>{0, 0, 1, 0, 1}));

    m_devices.unplug(8, GetParam());
    ASSERT_TRUE(waitUntil([&] { return !answers(); }));
    EXPECT_NE(m_api.Clear(m_type), 0);
    EXPECT_EQ(m_api.UnInitialDevice(m_type), 0) << "also without the device";
}

TEST_P(PenDriverUnplugged, KeyIsNotTakenForPressed)
{
    MockKernel& device = m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), 0);
    device.send({{EV_KEY, BTN_STYLUS2, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(device.waitUntilTaken());
    m_devices.unplug(5, GetParam());
    char text[64] = "";
    ASSERT_TRUE(waitUntil([&] { return driver.GetDevicePadID(text, sizeof text) != 0; }));
    EXPECT_EQ(driver.UnInitial(), 0);
    EXPECT_EQ(driver.samples(), (std::vector<PadSample>{{0, 0, 0, ConfirmKeyDown}}))
        << "nobody let it go, so nothing is confirmed";
}

TEST_P(PenDriverUnplugged, SaysSoOnce)
{
    m_devices.plug(recordingNamed("tall"));
    PenDriver driver;
    const ErrorOutput errors;
    ASSERT_EQ(driver.start(m_type), 0);
    m_devices.unplug(5, GetParam());
    ASSERT_TRUE(waitUntil([&] { return driver.ClearDeviceContent() != 0; }));
    m_devices.plug(recordingNamed("tall"), 7);
    ASSERT_TRUE(waitUntil([&] { return driver.ClearDeviceContent() == 0; }));
    EXPECT_EQ(driver.UnInitial(), 0);
    EXPECT_EQ(errors.text(),
              "scribera pen: tall is gone; waiting for it to come back\nscribera pen: tall is back\n");
}

TEST_P(PenDriverUnplugged, KeyboardLeavesThePenAlone)
{
    setenv("SCRIBERA_PEN_CONFIRM", "KEY_ENTER", 1);
    MockKernel& pen = m_devices.plug(recordingNamed("tall"));
    m_devices.plug(silentNamed("keyboard"), 3);
    PenDriver driver;
    ASSERT_EQ(driver.start(m_type), 0);
    m_devices.unplug(3, GetParam());
    pen.send(downAt(1));
    pen.send(kUp);
    ASSERT_TRUE(pen.waitUntilTaken());
    EXPECT_EQ(driver.samples().size(), 2u);
    EXPECT_EQ(driver.ClearDeviceContent(), 0);
    MockKernel& back = m_devices.plug(silentNamed("keyboard"), 4);
    ASSERT_TRUE(back.waitUntilTaken());
    back.send(
        {{EV_KEY, KEY_ENTER, 1}, {EV_SYN, SYN_REPORT, 0}, {EV_KEY, KEY_ENTER, 0}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(back.waitUntilTaken());
    EXPECT_EQ(driver.samples().size(), 4u) << "it is known again";
}

std::string unpluggingName(const testing::TestParamInfo<Unplugging>& info)
{
    constexpr const char* kNames[] = {"ByAnError", "ByAHangUp", "ByUdevAlone"};
    return kNames[static_cast<int>(info.param)];
}
INSTANTIATE_TEST_SUITE_P(, PenDriverUnplugged,
                         testing::Values(Unplugging::Error, Unplugging::HangUp, Unplugging::Removal),
                         unpluggingName);

} // namespace
} // namespace scribera::test

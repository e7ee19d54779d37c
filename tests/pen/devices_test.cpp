// Which of the machine's devices the driver takes, and what it says of those that it does not.
#include "devices.h"

#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>

#include "mockdevices.h"
#include "pen.h"
#include "pendriver.h"

namespace scribera::test {
namespace {

constexpr char kNode[] = "/dev/input/event5";

struct Judged
{
    std::string name;
    pen::Kind kind;
    std::string reason{};
};

void PrintTo(const Judged& judged, std::ostream* out)
{
    *out << judged.name;
}

class PenDriverJudgement : public testing::TestWithParam<Judged>
{
};

TEST_P(PenDriverJudgement, GoesByTheEventBits)
{
    MockDevices devices;
    const bool isSilent = std::ifstream(silentNamed(GetParam().name)).good();
    devices.plug(isSilent ? silentNamed(GetParam().name) : recordingNamed(GetParam().name));
    const pen::InputDevice device(kNode);
    EXPECT_EQ(device.name(), GetParam().name);
    const pen::Judgement judgement = judge(device);
    EXPECT_EQ(judgement.kind, GetParam().kind) << nameOf(judgement.kind);
    EXPECT_EQ(judgement.reason, GetParam().reason);
}

const Judged kJudged[] = {
    {"offset", pen::Kind::Pen},
    {"unequal", pen::Kind::Pen},
    {"no-pressure", pen::Kind::Pen},
    {"by-pressure", pen::Kind::Pen},
    {"absurd", pen::Kind::Pen},
    {"flat-pressure", pen::Kind::Pen},
    {"fingers", pen::Kind::TouchScreen},
    {"one-finger", pen::Kind::TouchScreen},
    {"touchpad", pen::Kind::Touchpad},
    {"old-touchpad", pen::Kind::Touchpad},
    {"keyboard", pen::Kind::None, "tells no position"},
    {"express-keys", pen::Kind::None, "tells no position"},
    {"one-axis", pen::Kind::None, "tells no position"},
    {"joystick", pen::Kind::None, "is not touched"},
    {"never-touched", pen::Kind::None, "has a pen's buttons, but never tells that the tip touches"},
    {"flat-across", pen::Kind::None, "has no range on its x axis"},
    {"flat-down", pen::Kind::None, "has no range on its y axis"},
    {"flat-screen", pen::Kind::None, "has no range on its x axis"},
};
INSTANTIATE_TEST_SUITE_P(, PenDriverJudgement, testing::ValuesIn(kJudged), [](const auto& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

class PenDriverDevices : public testing::Test
{
protected:
    void SetUp() override { installPenDriver(); }

    int start(PenDriver& driver) { return driver.start(padModel("K210").deviceType); }
    std::string nameOf(PenDriver& driver)
    {
        char text[64] = "";
        return start(driver) == 0 && driver.GetDevicePadID(text, sizeof text) == 0 ? text : "";
    }
    std::string refusal()
    {
        PenDriver driver;
        const ErrorOutput errors;
        EXPECT_EQ(start(driver), -1);
        return errors.text();
    }

    MockDevices m_devices;
};

TEST_F(PenDriverDevices, AreLookedForAndNoneIsThere)
{
    EXPECT_EQ(refusal(), "scribera pen: no pen and no touch screen: there are no input devices\n");
    setenv("SCRIBERA_PEN_DEVICE", "/dev/input/event77", 1);
    EXPECT_EQ(refusal(),
              "scribera pen: no device to sign on is \"/dev/input/event77\": /dev/input/event77 cannot be "
              "opened: No such file or directory\n");
}

TEST_F(PenDriverDevices, AreNamedWithWhyTheyAreRefused)
{
    m_devices.plug(silentNamed("keyboard"), 0);
    m_devices.plug(recordingNamed("offset"), 1);
    m_devices.forbid(1);
    EXPECT_EQ(refusal(),
              std::string("scribera pen: no pen and no touch screen: /dev/input/event0 (keyboard) tells no "
                          "position; /dev/input/event1 (offset) no permission to read it: ") +
                  pen::kHowToGetPermission + "\n");
}

TEST_F(PenDriverDevices, APenGoesBeforeATouchScreen)
{
    m_devices.plug(recordingNamed("fingers"), 2);
    m_devices.plug(recordingNamed("tall"), 10);
    m_devices.plug(recordingNamed("offset"), 9);
    PenDriver driver;
    EXPECT_EQ(nameOf(driver), "offset") << "the first, by its number";
}

TEST_F(PenDriverDevices, OneIsChosenByNameOrPath)
{
    m_devices.plug(recordingNamed("fingers"), 2);
    m_devices.plug(recordingNamed("offset"), 9);
    m_devices.plug(silentNamed("touchpad"), 3);
    for (const auto& [wanted, name] :
         {std::pair{"FING", "fingers"}, std::pair{"/dev/input/event3", "touchpad"},
          std::pair{"fset", "offset"}}) {
        setenv("SCRIBERA_PEN_DEVICE", wanted, 1);
        PenDriver driver;
        EXPECT_EQ(nameOf(driver), name);
    }
}

TEST_F(PenDriverDevices, OnlyTheChosenOneSigns)
{
    MockKernel& other = m_devices.plug(recordingNamed("tall"), 9);
    MockKernel& chosen = m_devices.plug(recordingNamed("offset"), 5);
    PenDriver driver;
    ASSERT_EQ(nameOf(driver), "offset");
    other.send(eventsOf(recordingNamed("tall")));
    chosen.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(chosen.waitUntilTaken());
    EXPECT_EQ(driver.samples().size(), 1u);
}

// Whether others really see nothing then cannot be shown here: the mocked device lets any number of readers
// have it.
TEST_F(PenDriverDevices, AreAskedForAlone)
{
    MockKernel& device = m_devices.plug(recordingNamed("offset"));
    PenDriver driver;
    ASSERT_EQ(start(driver), 0);
    EXPECT_EQ(device.grabs(), 1);
    ASSERT_EQ(driver.UnInitial(), 0);
    setenv("SCRIBERA_PEN_GRAB", "0", 1);
    ASSERT_EQ(start(driver), 0);
    EXPECT_EQ(device.grabs(), 1);
}

TEST_F(PenDriverDevices, StayEverybodysWhereTheSystemRefuses)
{
    MockKernel& device = m_devices.plug(recordingNamed("offset"));
    device.refuseGrabs(true);
    PenDriver driver;
    const ErrorOutput errors;
    ASSERT_EQ(start(driver), 0);
    EXPECT_EQ(errors.text(),
              "scribera pen: offset stays everybody's: the system does not give it to this process alone\n");
    device.send(eventsOf(recordingNamed("offset")));
    ASSERT_TRUE(device.waitUntilTaken());
    EXPECT_GT(driver.samples().size(), 60u);
}

TEST_F(PenDriverDevices, SettingsThatDoNotFitAreRefused)
{
    m_devices.plug(recordingNamed("offset"));
    setenv("SCRIBERA_PEN_AREA", "0,0,1000,10", 1);
    EXPECT_EQ(refusal(),
              "scribera pen: SCRIBERA_PEN_AREA does not lie on the device, which has 299 x 166 mm\n");
    setenv("SCRIBERA_PEN_AREA", "0,0", 1);
    EXPECT_EQ(refusal(), "scribera pen: SCRIBERA_PEN_AREA is \"0,0\"; it has to be left,top,width,height in "
                         "millimetres, such as 10,10,120.5,80\n");
}

struct KeySetting
{
    const char* confirm;
    const char* cancel;
    unsigned confirmCode;
    unsigned cancelCode;
    const char* holder;
};

class PenDriverKeys : public testing::TestWithParam<KeySetting>
{
};

// The keyboard is a device of its own; the express keys are another part of the same tablet.
TEST_P(PenDriverKeys, MayBeAnotherDevices)
{
    installPenDriver();
    setenv("SCRIBERA_PEN_CONFIRM", GetParam().confirm, 1);
    setenv("SCRIBERA_PEN_CANCEL", GetParam().cancel, 1);
    MockDevices devices;
    MockKernel& pen = devices.plug(recordingNamed("offset"), 1);
    devices.plug(silentNamed("touchpad"), 4);
    MockKernel& holder = devices.plug(silentNamed(GetParam().holder), 3);
    PenDriver driver;
    ASSERT_EQ(driver.start(padModel("K210").deviceType), 0);
    std::vector<PadSample> expected;
    for (const auto& [code, status] :
         {std::pair{GetParam().confirmCode, ConfirmKeyDown}, {GetParam().cancelCode, CancelKeyDown}}) {
        for (const int value : {1, 2, 0}) {
            holder.send({{EV_KEY, static_cast<std::uint16_t>(code), value}, {EV_SYN, SYN_REPORT, 0}});
            ASSERT_TRUE(holder.waitUntilTaken());
        }
        if (code != 0) {
            expected.push_back({0, 0, 0, status});
            expected.push_back({0, 0, 0, PenUp});
        }
    }
    EXPECT_EQ(driver.samples(), expected);
    // Nothing while the tip is on.
    pen.send({{EV_KEY, BTN_TOOL_PEN, 1}, {EV_KEY, BTN_TOUCH, 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(pen.waitUntilTaken());
    holder.send({{EV_KEY, static_cast<std::uint16_t>(GetParam().confirmCode), 1}, {EV_SYN, SYN_REPORT, 0}});
    ASSERT_TRUE(holder.waitUntilTaken());
    EXPECT_EQ(driver.samples().size(), expected.size() + 1);
}

const KeySetting kKeySettings[] = {
    {"KEY_ENTER@keyb", "KEY_ESC@KEYBOARD", KEY_ENTER, KEY_ESC, "keyboard"},
    {"KEY_ENTER", "KEY_ESC", KEY_ENTER, KEY_ESC, "keyboard"},
    {"BTN_0", "BTN_1", BTN_0, BTN_1, "express-keys"},
    {"BTN_1@express", "none", BTN_1, 0, "express-keys"},
};
INSTANTIATE_TEST_SUITE_P(, PenDriverKeys, testing::ValuesIn(kKeySettings), [](const auto& info) {
    return std::string(info.param.holder == std::string("keyboard") ? "Keyboard" : "ExpressKeys") +
           std::to_string(info.index);
});

} // namespace
} // namespace scribera::test

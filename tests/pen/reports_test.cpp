// What a device tells, as strokes and keys, step by step.
#include "reports.h"
#include "wholestrokes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <random>

#include <linux/input.h>

namespace pen {

void PrintTo(const Sample& sample, std::ostream* out)
{
    *out << '{' << sample.x << ' ' << sample.y << ' ' << sample.pressure << ' ' << sample.status << '}';
}

namespace {

// A pad whose units are those of the device, 0 to 999; pressure 0 to 99 becomes 1 to 100.
constexpr Axis kAxis{0, 999, 0};
constexpr WritingArea kArea{0, 0, 1000, 1000};
constexpr int kLimit = 100;

using Step = std::function<void(Reports&)>;
using Steps = std::vector<Step>;

Step event(unsigned type, unsigned code, int value)
{
    return [=](Reports& reports) { reports.take(type, code, value); };
}
Step button(unsigned code, int value)
{
    return event(EV_KEY, code, value);
}
Step axis(unsigned code, int value)
{
    return event(EV_ABS, code, value);
}
Step at(int x, int y, int pressure = 49)
{
    return [=](Reports& reports) {
        reports.take(EV_ABS, ABS_X, x);
        reports.take(EV_ABS, ABS_Y, y);
        reports.take(EV_ABS, ABS_PRESSURE, pressure);
    };
}
Step finger(int slot, int id, int x, int y)
{
    return [=](Reports& reports) {
        reports.take(EV_ABS, ABS_MT_SLOT, slot);
        reports.take(EV_ABS, ABS_MT_TRACKING_ID, id);
        reports.take(EV_ABS, ABS_MT_POSITION_X, x);
        reports.take(EV_ABS, ABS_MT_POSITION_Y, y);
    };
}
Step slide(int slot, int x)
{
    return [=](Reports& reports) {
        reports.take(EV_ABS, ABS_MT_SLOT, slot);
        reports.take(EV_ABS, ABS_MT_POSITION_X, x);
    };
}
Step leave(int slot)
{
    return [=](Reports& reports) {
        reports.take(EV_ABS, ABS_MT_SLOT, slot);
        reports.take(EV_ABS, ABS_MT_TRACKING_ID, -1);
    };
}
Step tool(int slot, int type)
{
    return [=](Reports& reports) {
        reports.take(EV_ABS, ABS_MT_SLOT, slot);
        reports.take(EV_ABS, ABS_MT_TOOL_TYPE, type);
    };
}
Step elsewhere(Status key, bool down)
{
    return [=](Reports& reports) { reports.key(key, down); };
}
const Step kReport = event(EV_SYN, SYN_REPORT, 0);
const Step kLose = [](Reports& reports) { reports.lose(); };
const Step kEnd = [](Reports& reports) { reports.end(); };
const Step kForget = [](Reports& reports) { reports.forgetKey(); };

constexpr Sample down(int x, int y, int pressure = 50)
{
    return {x, y, pressure, PenDown};
}
constexpr Sample move(int x, int y, int pressure = 50)
{
    return {x, y, pressure, PenMove};
}
constexpr Sample up(int x = 0, int y = 0)
{
    return {x, y, 0, PenUp};
}
constexpr Sample touched(Status key)
{
    return {0, 0, 0, key};
}

Surface surfaceOf(Touch touch)
{
    Surface surface;
    surface.touch = touch;
    surface.x = kAxis;
    surface.y = kAxis;
    if (touch != Touch::Contacts)
        surface.pressure = Axis{0, 99, 0};
    surface.slots = touch == Touch::Contacts ? 5 : 0;
    return surface;
}

struct Story
{
    const char* name;
    Touch touch;
    Steps steps;
    std::vector<Sample> samples;
};

void PrintTo(const Story& story, std::ostream* out)
{
    *out << story.name;
}

class PenDriverReports : public testing::TestWithParam<Story>
{
};

TEST_P(PenDriverReports, Give)
{
    std::vector<Sample> samples;
    Reports reports(surfaceOf(GetParam().touch), Mapping(kAxis, kAxis, kArea, {}), kLimit,
                    [&](const Sample& sample) { samples.push_back(sample); });
    reports.setKeyCodes(BTN_STYLUS2, BTN_STYLUS);
    for (const Step& step : GetParam().steps)
        step(reports);
    EXPECT_EQ(samples, GetParam().samples);
}

const Step kTouch = button(BTN_TOUCH, 1);
const Step kLift = button(BTN_TOUCH, 0);
const Step kConfirm = button(BTN_STYLUS2, 1);
const Step kConfirmUp = button(BTN_STYLUS2, 0);
const Step kCancel = button(BTN_STYLUS, 1);
const Step kCancelUp = button(BTN_STYLUS, 0);
const Step kPen = button(BTN_TOOL_PEN, 1);
const Step kPenAway = button(BTN_TOOL_PEN, 0);
const Step kRubber = button(BTN_TOOL_RUBBER, 1);
const Step kRubberAway = button(BTN_TOOL_RUBBER, 0);

const Story kTipStories[] = {
    {"AStroke",
     Touch::Button,
     {at(1, 2), kTouch, kReport, at(3, 4, 98), kReport, kReport, at(5, 6), kLift, kReport, at(7, 8), kReport},
     {down(1, 2), move(3, 4, 99), move(3, 4, 99), up(3, 4)}},
    {"NothingBeforeTheReportEnds", Touch::Button, {at(1, 2), kTouch}, {}},
    {"NothingWhileItHovers",
     Touch::Button,
     {kPen, at(1, 2, 0), kReport, at(3, 4, 0), kReport, kPenAway, kReport},
     {}},
    {"ATapInOneReport", Touch::Button, {at(1, 2), kTouch, kLift, kReport}, {}},
    {"APenWithoutToolBits",
     Touch::Button,
     {at(1, 1), kTouch, kReport, kLift, kReport},
     {down(1, 1), up(1, 1)}},
    {"OutOfRangeEndsAStroke",
     Touch::Button,
     {kPen, at(1, 1), kTouch, kReport, kPenAway, kReport, at(2, 2), kReport},
     {down(1, 1), up(1, 1)}},
    {"TheEraser", Touch::Button, {kRubber, at(1, 1), kTouch, kReport, at(2, 2), kReport, kLift, kReport}, {}},
    {"TurnedInMidStroke",
     Touch::Button,
     {kPen, at(1, 1), kTouch, kReport, kPenAway, kRubber, at(2, 2), kReport, at(3, 3), kReport, kRubberAway,
      kPen, at(4, 4), kReport, kLift, kReport},
     {down(1, 1), up(1, 1), down(4, 4), up(4, 4)}},
    {"EraserBesideThePen", Touch::Button, {kPen, kRubber, at(1, 1), kTouch, kReport}, {}},
    {"AMouse", Touch::Button, {button(BTN_TOOL_MOUSE, 1), at(1, 1), kTouch, kReport, at(2, 2), kReport}, {}},
    {"ALens", Touch::Button, {button(BTN_TOOL_LENS, 1), at(1, 1), kTouch, kReport}, {}},
    {"ABrush", Touch::Button, {button(BTN_TOOL_BRUSH, 1), at(1, 1), kTouch, kReport}, {down(1, 1)}},
    {"ThePressureAlone",
     Touch::Pressure,
     {at(1, 1, 0), kReport, at(2, 2, 1), kReport, kReport, at(3, 3, 0), kReport},
     {down(2, 2, 2), move(2, 2, 2), up(2, 2)}},
    {"LostEventsEndAStroke",
     Touch::Button,
     {kTouch, at(1, 1), kReport, kLose, at(9, 9), kReport, at(8, 8), kReport, kLift, kReport},
     {down(1, 1), up(1, 1), down(9, 9), move(8, 8), up(8, 8)}},
    {"LiftedWhileEventsAreLost",
     Touch::Button,
     {kTouch, at(1, 1), kReport, kLose, kLift, at(9, 9), kReport},
     {down(1, 1), up(1, 1)}},
    {"LostEventsWithoutAStroke", Touch::Button, {at(1, 1), kReport, kLose, kReport}, {}},
    {"KeysOfAnIncompleteReportAreLost", Touch::Button, {kConfirm, kLose, kReport}, {}},
    {"TheEndOfTheDevice", Touch::Button, {kTouch, at(1, 1), kReport, kEnd, kEnd}, {down(1, 1), up(1, 1)}},
    {"TheConfirmKey",
     Touch::Button,
     {kConfirm, kReport, kReport, kConfirmUp, kReport},
     {touched(ConfirmKey), up()}},
    {"TheCancelKey", Touch::Button, {kCancel, kReport, kCancelUp, kReport}, {touched(CancelKey), up()}},
    {"RepeatsOfAKey",
     Touch::Button,
     {kConfirm, kReport, button(BTN_STYLUS2, 2), kReport, button(BTN_STYLUS2, 2), kReport, kConfirmUp,
      kReport},
     {touched(ConfirmKey), up()}},
    {"AKeyTwiceDown",
     Touch::Button,
     {kConfirm, kReport, kConfirm, kReport, kConfirmUp, kReport, kConfirmUp, kReport},
     {touched(ConfirmKey), up()}},
    {"AKeyInOneReport", Touch::Button, {kConfirm, kConfirmUp, kReport}, {touched(ConfirmKey), up()}},
    {"TheFirstOfTwoKeys",
     Touch::Button,
     {kCancel, kReport, kConfirm, kReport, kCancelUp, kReport, kConfirmUp, kReport},
     {touched(CancelKey), up()}},
    {"KeysOnTheSurface",
     Touch::Button,
     {kTouch, at(1, 1), kReport, kConfirm, kReport, kConfirmUp, kReport, kCancel, kReport, kLift, kReport,
      kCancelUp, kReport},
     {down(1, 1), move(1, 1), move(1, 1), move(1, 1), up(1, 1)}},
    {"AKeyTogetherWithTheTip", Touch::Button, {kTouch, at(1, 1), kConfirm, kReport}, {down(1, 1)}},
    {"AKeyTogetherWithTheLift",
     Touch::Button,
     {kTouch, at(1, 1), kReport, kLift, kConfirm, kReport, kConfirmUp, kReport},
     {down(1, 1), up(1, 1), touched(ConfirmKey), up()}},
    {"AKeyHeldWhenTheTipTouches",
     Touch::Button,
     {kConfirm, kReport, kTouch, at(1, 1), kReport, kConfirmUp, kReport, kLift, kReport},
     {touched(ConfirmKey), up(), down(1, 1), move(1, 1), up(1, 1)}},
    {"AHeldKeyAtTheEnd",
     Touch::Button,
     {kConfirm, kReport, kEnd, kConfirmUp, kReport},
     {touched(ConfirmKey)}},
    {"AForgottenKey",
     Touch::Button,
     {kConfirm, kReport, kForget, kConfirmUp, kReport},
     {touched(ConfirmKey)}},
    {"AKeyHeldWhileEventsAreLost",
     Touch::Button,
     {kConfirm, kReport, kLose, kConfirmUp, kReport},
     {touched(ConfirmKey), up()}},
    {"KeysOfAnotherDevice",
     Touch::Button,
     {elsewhere(ConfirmKey, true), elsewhere(CancelKey, true), elsewhere(CancelKey, false),
      elsewhere(ConfirmKey, false), kTouch, at(1, 1), kReport, elsewhere(CancelKey, true)},
     {touched(ConfirmKey), up(), down(1, 1)}},
    {"GarbageTypesAndCodes",
     Touch::Button,
     {event(EV_REL, 0, 5), event(99, 99, -1), axis(0xffff, 7), axis(ABS_MT_SLOT, 3),
      axis(ABS_MT_POSITION_X, 3), button(0, 1), button(0xffff, 1), event(EV_SYN, SYN_MT_REPORT, 0),
      event(EV_SYN, SYN_CONFIG, 0), kTouch, at(1, 1), kReport},
     {down(1, 1)}},
    {"ValuesOutside", Touch::Button, {kTouch, at(-5, 2000000000, 300), kReport}, {down(0, 999, 100)}},
};

const Story kFingerStories[] = {
    {"AFinger",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, slide(0, 3), kReport, leave(0), kReport},
     {down(1, 2), move(3, 2), up(3, 2)}},
    {"AReportOfNobody", Touch::Contacts, {finger(0, 7, 1, 2), kReport, kReport}, {down(1, 2), move(1, 2)}},
    {"ASecondFinger",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, finger(1, 8, 9, 9), kReport, slide(1, 8), kReport, slide(0, 4),
      slide(1, 7), kReport, leave(0), kReport, slide(1, 6), kReport, leave(1), kReport},
     {down(1, 2), move(4, 2), up(4, 2)}},
    {"ANewFingerBesideTheSecond",
     Touch::Contacts,
     {finger(0, 7, 1, 2), finger(1, 8, 9, 9), kReport, leave(0), kReport, finger(0, 9, 5, 5), kReport,
      slide(1, 8), kReport},
     {down(1, 2), up(1, 2), down(5, 5)}},
    {"AnotherFingerInTheSameSlot",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, finger(0, 8, 5, 5), kReport},
     {down(1, 2), up(1, 2), down(5, 5)}},
    {"APalm",
     Touch::Contacts,
     {finger(0, 7, 1, 2), tool(0, MT_TOOL_PALM), kReport, slide(0, 3), kReport, leave(0), kReport},
     {}},
    {"AFingerThatBecomesAPalm",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, tool(0, MT_TOOL_PALM), kReport, slide(0, 3), kReport},
     {down(1, 2), up(1, 2)}},
    {"AFingerAfterThePalm",
     Touch::Contacts,
     {finger(0, 7, 1, 2), tool(0, MT_TOOL_PALM), kReport, leave(0), kReport, finger(0, 8, 3, 3), kReport},
     {down(3, 3)}},
    {"AFingerBesideAPalm",
     Touch::Contacts,
     {finger(0, 7, 1, 2), tool(0, MT_TOOL_PALM), kReport, finger(1, 8, 3, 3), kReport, slide(0, 9), kReport},
     {down(3, 3)}},
    {"LostEventsOfAFinger",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, kLose, slide(0, 9), kReport, slide(0, 8), kReport},
     {down(1, 2), up(1, 2), down(9, 2), move(8, 2)}},
    {"LostEventsOfAFingerThatIsGone",
     Touch::Contacts,
     {finger(0, 7, 1, 2), kReport, kLose, leave(0), kReport},
     {down(1, 2), up(1, 2)}},
    {"TheEndOfTheScreen", Touch::Contacts, {finger(2, 7, 1, 2), kReport, kEnd}, {down(1, 2), up(1, 2)}},
    {"ThePointerMadeOfContacts", Touch::Contacts, {axis(ABS_X, 4), axis(ABS_Y, 4), kTouch, kReport}, {}},
    {"SlotsThatAreNot",
     Touch::Contacts,
     {finger(-1, 7, 1, 2), kReport, finger(5, 8, 1, 2), kReport, finger(0x7fffffff, 9, 1, 2), kReport,
      finger(-0x7fffffff - 1, 9, 1, 2), kReport, finger(4, 10, 1, 2), kReport},
     {down(1, 2)}},
    {"OddNumbersOfContacts",
     Touch::Contacts,
     {finger(0, -7, 1, 2), kReport, finger(0, 0, 1, 2), kReport, finger(0, -2, 1, 2), kReport},
     {down(1, 2), up(1, 2)}},
};

std::string storyName(const testing::TestParamInfo<Story>& info)
{
    return info.param.name;
}
INSTANTIATE_TEST_SUITE_P(Tip, PenDriverReports, testing::ValuesIn(kTipStories), storyName);
INSTANTIATE_TEST_SUITE_P(Fingers, PenDriverReports, testing::ValuesIn(kFingerStories), storyName);

TEST(PenDriverReportsOf, DeviceWithoutPressureHaveHalf)
{
    Surface surface = surfaceOf(Touch::Button);
    surface.pressure.reset();
    std::vector<Sample> samples;
    Reports reports(surface, Mapping(kAxis, kAxis, kArea, {}), kLimit,
                    [&](const Sample& sample) { samples.push_back(sample); });
    for (const Step& step : {at(1, 2, 99), kTouch, kReport, kLift, kReport})
        step(reports);
    EXPECT_EQ(samples, (std::vector<Sample>{down(1, 2, kLimit / 2), up(1, 2)}));
}

TEST(PenDriverReportsOf, AFingerWritesWhereThereIsNoPen)
{
    for (const bool fingersWrite : {false, true}) {
        Surface surface = surfaceOf(Touch::Button);
        surface.fingersWrite = fingersWrite;
        std::vector<Sample> samples;
        Reports reports(surface, Mapping(kAxis, kAxis, kArea, {}), kLimit,
                        [&](const Sample& sample) { samples.push_back(sample); });
        for (const Step& step : {button(BTN_TOOL_FINGER, 1), at(1, 2), kTouch, kReport, kLift, kReport})
            step(reports);
        EXPECT_EQ(samples,
                  fingersWrite ? (std::vector<Sample>{down(1, 2), up(1, 2)}) : std::vector<Sample>{});
    }
}

// Whatever a device says: strokes and keys begin and end in turn, and all lies on the pad.
TEST(PenDriverReportsOf, AnythingAreWholeStrokes)
{
    const char* const wanted = std::getenv("SCRIBERA_TEST_SEED");
    const unsigned seed =
        wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : std::random_device{}();
    SCOPED_TRACE("SCRIBERA_TEST_SEED=" + std::to_string(seed));
    std::mt19937 engine(seed);
    const auto among = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(engine);
    };
    constexpr unsigned kKeys[] = {BTN_TOUCH,    BTN_TOUCH,       BTN_TOUCH,      BTN_STYLUS, BTN_STYLUS2,
                                  BTN_TOOL_PEN, BTN_TOOL_RUBBER, BTN_TOOL_MOUSE, 0};
    constexpr unsigned kAxes[] = {
        ABS_X, ABS_Y, ABS_PRESSURE, ABS_MT_SLOT, ABS_MT_TRACKING_ID, ABS_MT_POSITION_X, ABS_MT_TOOL_TYPE};
    int seen = 0;
    for (int history = 0; history < 600; ++history) {
        const Touch touch = static_cast<Touch>(history % 3);
        scribera::test::WholeStrokes strokes(kArea, kLimit);
        Reports reports(surfaceOf(touch), Mapping(kAxis, kAxis, kArea, {}), kLimit,
                        [&](const Sample& sample) { strokes.take(sample); });
        reports.setKeyCodes(BTN_STYLUS2, BTN_STYLUS);
        for (int step = 0; step < 200; ++step) {
            switch (among(0, 40)) {
            case 0:
                reports.lose();
                break;
            case 1:
                reports.key(among(0, 1) ? ConfirmKey : CancelKey, among(0, 1) == 1);
                break;
            case 2:
                reports.take(static_cast<unsigned>(among(0, 0xffff)), static_cast<unsigned>(among(0, 0xffff)),
                             among(-0x7fffffff, 0x7fffffff));
                break;
            default:
                if (among(0, 2) == 0)
                    reports.take(EV_SYN, SYN_REPORT, 0);
                else if (among(0, 2) == 0)
                    reports.take(EV_KEY, kKeys[among(0, std::size(kKeys) - 1)], among(0, 2));
                else
                    reports.take(EV_ABS, kAxes[among(0, std::size(kAxes) - 1)],
                                 among(0, 9) ? among(-1, 4) : among(-0x7fffffff, 0x7fffffff));
            }
        }
        reports.end();
        EXPECT_TRUE(strokes.isRight()) << history;
        EXPECT_FALSE(strokes.hasOpenStroke()) << history;
        seen += strokes.count();
    }
    EXPECT_GT(seen, 1000);
}

} // namespace
} // namespace pen

// What is there, and what it is.
#include "model/padmodel.h"
#include "padsupport.h"

#include <linux/input-event-codes.h>

namespace {

class PadInfo : public PadToolTest
{
};

// Where a corner of the pad lies in the drawing: column and line, both from the drawing's own upper left.
struct Corner
{
    int column = -1;
    int line = -1;
};

// Only the drawing, and neither the lines above it nor the legend.
Corner cornerIn(const QByteArray& output, char mark)
{
    int line = 0;
    for (const QByteArray& text : output.split('\n')) {
        if (!text.startsWith(':'))
            continue;
        if (const int column = text.indexOf(mark); column >= 0)
            return {column, line};
        ++line;
    }
    return {};
}

TEST_F(PadInfo, TellsOfEachModel)
{
    for (const CPadModel* model : AllPads()) {
        const PadOutcome outcome = run({"info", "--driver", "simulated", "--model", model->m_pszName});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
        const auto tells = [&](const char* name, const QByteArray& value) {
            return outcome.output.contains(QByteArray(name).leftJustified(16) + value + '\n');
        };
        const QByteArray number = QByteArray::number(model->m_nDeviceType);
        EXPECT_TRUE(tells("pad:", "SIMPAD0001")) << outcome.output.toStdString();
        EXPECT_TRUE(tells("pen:", model->m_bHasScreen ? "SIMPEN0001" : "none"));
        EXPECT_TRUE(tells("version:", "SC" + QByteArray(model->m_pszName)));
        EXPECT_TRUE(tells("model:", QByteArray(model->m_pszReportedName) + ", device type " + number +
                                        ", of Corvenna"));
        EXPECT_TRUE(tells("pressure:", "up to " + QByteArray::number(model->m_nInitialMaxPressure)));
        EXPECT_TRUE(tells("writing area:", QByteArray::number(model->m_nAreaWidth) + " x " +
                                               QByteArray::number(model->m_nAreaHeight) +
                                               " units, the first at " +
                                               QByteArray::number(model->m_nPadOriginX) + ',' +
                                               QByteArray::number(model->m_nPadOriginY)));
        EXPECT_EQ(tells("keys:", "act when they are touched"), model->m_eKeyRule == EKeyRule::AtTouch);
        EXPECT_TRUE(outcome.output.contains('/' + QByteArray(libraryName) + ", 3.0\n"));
    }
}

TEST_F(PadInfo, ListsDriversAndWhyTheyCannotBeUsed)
{
    write("libscriberadrv.so", "no library");
    const PadOutcome outcome = run({"list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.contains("  simulated       " SCRIBERA_DRIVER_LIBRARY))
        << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("yes: simulated pad\n"));
    const QByteArray here = outcome.output.mid(outcome.output.indexOf("  current folder  "));
    EXPECT_TRUE(here.left(here.indexOf('\n')).contains("/libscriberadrv.so ")) << here.toStdString();
    EXPECT_TRUE(here.left(here.indexOf('\n')).contains("  no: cannot be loaded: "));
}

#ifdef SCRIBERA_HAS_PEN_DRIVER

TEST_F(PadInfo, ListsInputDevicesAndWhyTheyCannotBeSignedOn)
{
    const auto lineOf = [&](const MockedDevice& device, const Variables& variables = {}) {
        const PadOutcome outcome = run({"list"}, variables, beside(device));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
        return outcome.output.split('\n').value(1).simplified().toStdString();
    };
    EXPECT_EQ(lineOf(penTablet()), "/dev/input/event5 Mocked tablet pen yes: signed on");
    EXPECT_EQ(lineOf(penTablet(), {{"SCRIBERA_PEN_DEVICE", "other"}}),
              "/dev/input/event5 Mocked tablet pen yes");
    EXPECT_EQ(lineOf({"Keyboard", {KEY_A, KEY_ENTER}, {}}),
              "/dev/input/event5 Keyboard - no: tells no position");
    const MockedDevice touchpad = {
        "Touchpad", {BTN_TOUCH, BTN_TOOL_FINGER}, {{ABS_X, {0, 100, 1}}, {ABS_Y, {0, 100, 1}}}};
    EXPECT_EQ(lineOf(touchpad),
              "/dev/input/event5 Touchpad touchpad yes, where SCRIBERA_PEN_DEVICE names it");
    EXPECT_EQ(lineOf(touchpad, {{"SCRIBERA_PEN_DEVICE", "touchpad"}}),
              "/dev/input/event5 Touchpad touchpad yes: signed on");
}

TEST_F(PadInfo, SaysThatASettingCannotBeUsed)
{
    const PadOutcome outcome = run({"list"}, {{"SCRIBERA_PEN_FIT", "tight"}}, beside(penTablet()));
    EXPECT_TRUE(outcome.output.contains("SCRIBERA_PEN_FIT is \"tight\"; it has to be keep or stretch"))
        << outcome.output.toStdString();
}

// 200 x 100 mm; the K210's area is 2360 x 1430, which leaves 165.0 mm of the width.
TEST_F(PadInfo, TellsWhatOfTheDeviceIsUsed)
{
    const PadOutcome outcome = run({"info", "--driver", "pen"}, {}, beside(penTablet()));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    for (const char* line : {"pad:            Mocked tablet\n", "pen:            0003:1209:0001\n",
                             "version:        SCK210 pen " SCRIBERA_VERSION "\n",
                             "device:         /dev/input/event5, Mocked tablet, a pen\n",
                             "its x axis:     0 to 20000, 100 units/mm\n",
                             "its y axis:     0 to 10000, 100 units/mm\n", "its pressure:   0 to 1023\n",
                             "used:           165.0 x 100.0 mm of 200.0 x 100.0 mm, 17.5 mm from the left "
                             "and 0.0 mm from the top\n"})
        EXPECT_TRUE(outcome.output.contains(line)) << line << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("BTN_STYLUS2 of this device\n"));
}

TEST_F(PadInfo, DrawsTheUsedPartInEachMounting)
{
    struct Mounting
    {
        const char* rotation;
        bool firstIsRight, firstIsLow, secondIsRight, secondIsLow;
    };
    // The pad's upper left and upper right corner, on a device that was turned clockwise.
    for (const Mounting& mounting :
         {Mounting{"0", false, false, true, false}, Mounting{"90", false, true, false, false},
          Mounting{"180", true, true, false, true}, Mounting{"270", true, false, true, true}}) {
        const PadOutcome outcome =
            run({"info", "--driver", "pen"},
                {{"SCRIBERA_PEN_ROTATE", mounting.rotation}, {"SCRIBERA_PEN_FIT", "stretch"}},
                beside(penTablet()));
        const Corner first = cornerIn(outcome.output, '1');
        const Corner second = cornerIn(outcome.output, '2');
        ASSERT_TRUE(first.column > 0 && second.column > 0) << outcome.output.toStdString();
        // Stretched, both lie in corners of the whole drawing: 60 characters by 15 lines.
        EXPECT_EQ(first.column, mounting.firstIsRight ? 60 : 1) << mounting.rotation;
        EXPECT_EQ(first.line, mounting.firstIsLow ? 14 : 0) << mounting.rotation;
        EXPECT_EQ(second.column, mounting.secondIsRight ? 60 : 1) << mounting.rotation;
        EXPECT_EQ(second.line, mounting.secondIsLow ? 14 : 0) << mounting.rotation;
    }
}

TEST_F(PadInfo, TellsOfDevicesWithoutSizeAndPressure)
{
    MockedDevice device = penTablet();
    device.axes = {{ABS_X, {-1000, 1000, 0}}, {ABS_Y, {500, 0, 0}}};
    device.buttons = {BTN_TOOL_PEN, BTN_TOUCH};
    const PadOutcome outcome =
        run({"info", "--driver", "pen", "--model", "T580"},
            {{"SCRIBERA_PEN_FIT", "stretch"}, {"SCRIBERA_PEN_CANCEL", "KEY_ESC@board"}}, beside(device));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    for (const char* line :
         {"its x axis:     -1000 to 1000\n", "its y axis:     500 to 0\n",
          "its pressure:   not felt; half of the pad's is told\n",
          "confirm key:    BTN_STYLUS2, which this device does not have\n",
          "cancel key:     KEY_ESC of board\n",
          "used:           x -1000.0 to 1000.0, y 500.0 to 0.0; the device does not tell its size\n"})
        EXPECT_TRUE(outcome.output.contains(line)) << line << outcome.output.toStdString();
    EXPECT_EQ(cornerIn(outcome.output, '1').line, 0);
}

TEST_F(PadInfo, SaysThatThereIsNothingToSignOn)
{
    const PadOutcome outcome = run({"info", "--driver", "pen"}, {}, beside({"Keyboard", {KEY_A}, {}}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.error.contains("/dev/input/event5 (Keyboard) tells no position"))
        << outcome.error.toStdString();
}

#endif

} // namespace

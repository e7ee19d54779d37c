// What the environment may ask of the driver, and how it is told what it may not.
#include "settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <linux/input.h>

namespace pen {
namespace {

struct Variable
{
    Variable(const char* variable, const std::string& value) : name(variable)
    {
        setenv(name, value.c_str(), 1);
    }
    ~Variable() { unsetenv(name); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    const char* const name;
};

Settings readWith(const char* name, const std::string& value)
{
    const Variable variable(name, value);
    return readSettings();
}

TEST(PenDriverSettings, HaveTheirDefaults)
{
    const Settings settings = readSettings();
    EXPECT_EQ(settings.device, "");
    EXPECT_EQ(settings.fit, Fit::Keep);
    EXPECT_FALSE(settings.area);
    EXPECT_EQ(settings.rotation, 0);
    EXPECT_TRUE(settings.grab);
    ASSERT_TRUE(settings.confirm && settings.cancel);
    EXPECT_EQ(settings.confirm->code, static_cast<unsigned>(BTN_STYLUS2));
    EXPECT_EQ(settings.cancel->code, static_cast<unsigned>(BTN_STYLUS));
    EXPECT_TRUE(settings.confirm->isUsual && settings.cancel->isUsual);
}

TEST(PenDriverSettings, EmptyIsNotSet)
{
    for (const char* name : {"DEVICE", "FIT", "AREA", "ROTATE", "CONFIRM", "CANCEL", "GRAB"}) {
        const Settings settings = readWith((std::string("SCRIBERA_PEN_") + name).c_str(), "");
        EXPECT_EQ(settings.confirm->code, static_cast<unsigned>(BTN_STYLUS2)) << name;
        EXPECT_TRUE(settings.grab && !settings.area && settings.fit == Fit::Keep) << name;
    }
}

TEST(PenDriverSettings, AreRead)
{
    EXPECT_EQ(readWith("SCRIBERA_PEN_DEVICE", "/dev/input/event3").device, "/dev/input/event3");
    EXPECT_EQ(readWith("SCRIBERA_PEN_FIT", "stretch").fit, Fit::Stretch);
    EXPECT_EQ(readWith("SCRIBERA_PEN_FIT", "keep").fit, Fit::Keep);
    for (const int degrees : {0, 90, 180, 270})
        EXPECT_EQ(readWith("SCRIBERA_PEN_ROTATE", std::to_string(degrees)).rotation, degrees);
    EXPECT_FALSE(readWith("SCRIBERA_PEN_GRAB", "0").grab);
    EXPECT_TRUE(readWith("SCRIBERA_PEN_GRAB", "1").grab);

    const std::optional<SurfaceArea> area = readWith("SCRIBERA_PEN_AREA", "0,1.5,120.0005,80").area;
    ASSERT_TRUE(area);
    EXPECT_EQ(area->left, 0);
    EXPECT_EQ(area->top, 1500);
    EXPECT_EQ(area->width, 120001) << "to the micrometre";
    EXPECT_EQ(area->height, 80000);

    const std::optional<Button> key = readWith("SCRIBERA_PEN_CONFIRM", "KEY_ENTER@Some Keyboard").confirm;
    ASSERT_TRUE(key);
    EXPECT_EQ(key->code, static_cast<unsigned>(KEY_ENTER));
    EXPECT_EQ(key->device, "Some Keyboard");
    EXPECT_FALSE(key->isUsual);
    EXPECT_EQ(readWith("SCRIBERA_PEN_CANCEL", "BTN_0").cancel->device, "");
    EXPECT_FALSE(readWith("SCRIBERA_PEN_CANCEL", "none").cancel);
    EXPECT_FALSE(readWith("SCRIBERA_PEN_CONFIRM", "none").confirm);
}

struct RefusedSetting
{
    const char* name;
    std::vector<std::string> values;
    const char* wanted;
};

TEST(PenDriverSettings, RefusalsTellWhatIsWanted)
{
    constexpr char kKey[] =
        "the name of a key or button, such as BTN_STYLUS or KEY_ENTER, with @ and a part of a "
        "device's name behind it or not, or none";
    const RefusedSetting refused[] = {
        {"SCRIBERA_PEN_FIT", {"Keep", "fit", " "}, "keep or stretch"},
        {"SCRIBERA_PEN_ROTATE", {"45", "360", "-90", "090", "90 ", "right"}, "0, 90, 180 or 270"},
        {"SCRIBERA_PEN_GRAB", {"2", "no", "01"}, "0 or 1"},
        {"SCRIBERA_PEN_AREA",
         {"1", "1,2,3", "1,2,3,4,5", "1,2,3,", ",,,", "0,0,0,5", "0,0,5,0", "-1,0,5,5", "0,-1,5,5",
          "0,0,5,-5", "0,0,10000.1,5", "a,b,c,d", "0;0;5;5", "0,0,5,5mm", "0,0,nan,5", "0,0,inf,5",
          "0,0,0.0001,5", " 0,0,5,5"},
         "left,top,width,height in millimetres, such as 10,10,120.5,80"},
        {"SCRIBERA_PEN_CONFIRM", {"BTN_NOBODY", "ABS_X", "331", "BTN_STYLUS@", "@Pen", "None"}, kKey},
        {"SCRIBERA_PEN_CANCEL", {"enter", "KEY_ENTER ", "@"}, kKey},
    };
    for (const RefusedSetting& one : refused) {
        for (const std::string& value : one.values) {
            try {
                readWith(one.name, value);
                ADD_FAILURE() << one.name << "=" << value << " is taken";
            } catch (const Refusal& refusal) {
                EXPECT_EQ(std::string(refusal.what()),
                          std::string(one.name) + " is \"" + value + "\"; it has to be " + one.wanted);
            }
        }
    }
}

} // namespace
} // namespace pen

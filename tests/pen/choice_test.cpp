// Which of several devices is signed on, and what is said where there is none.
#include "devices.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace pen {
namespace {

Found found(int number, const std::string& name, Kind kind, const std::string& reason = {})
{
    Found result;
    result.node = "/dev/input/event" + std::to_string(number);
    result.name = name;
    result.judgement.kind = kind;
    result.judgement.reason = reason;
    return result;
}

std::string refusal(const std::vector<Found>& devices, const std::string& wanted)
{
    try {
        return "chosen: " + choose(devices, wanted).node;
    } catch (const Refusal& error) {
        return error.what();
    }
}

const std::vector<Found> kDesk = {found(0, "Keyboard", Kind::None, "tells no position"),
                                  found(1, "Touchpad", Kind::Touchpad), found(2, "Screen", Kind::TouchScreen),
                                  found(3, "Pen Tablet S", Kind::Pen), found(4, "Pen Tablet L", Kind::Pen)};

TEST(PenDriverChoice, IsTheFirstPen)
{
    EXPECT_EQ(choose(kDesk, "").node, "/dev/input/event3");
}

TEST(PenDriverChoice, IsTheFirstTouchScreenWithoutAPen)
{
    EXPECT_EQ(choose({kDesk.begin(), kDesk.begin() + 3}, "").node, "/dev/input/event2");
}

TEST(PenDriverChoice, IsWhatIsMeant)
{
    EXPECT_EQ(choose(kDesk, "tablet l").node, "/dev/input/event4");
    EXPECT_EQ(choose(kDesk, "Tablet").node, "/dev/input/event3");
    EXPECT_EQ(choose(kDesk, "touchpad").node, "/dev/input/event1") << "for those who ask for it";
    EXPECT_EQ(choose(kDesk, "/dev/input/event2").node, "/dev/input/event2");
}

TEST(PenDriverChoice, FollowsLinks)
{
    const std::string target = std::filesystem::current_path() / "event9";
    std::filesystem::remove("tablet");
    std::filesystem::create_symlink(target, "tablet");
    std::ofstream(target).put('\n');
    Found device = found(9, "Tablet", Kind::Pen);
    device.node = target;
    EXPECT_EQ(choose({device}, std::filesystem::current_path() / "tablet").node, target);
    EXPECT_FALSE(isMeant(target, "Tablet", std::filesystem::current_path() / "event8"));
    EXPECT_FALSE(isMeant(target, "Tablet", ""));
}

TEST(PenDriverChoice, TellsWhatWasLookedAt)
{
    EXPECT_EQ(refusal({}, ""), "no pen and no touch screen: there are no input devices");
    EXPECT_EQ(refusal({}, "pen"), "no device to sign on is \"pen\": there are no input devices");
    EXPECT_EQ(refusal({kDesk[0], kDesk[1], found(5, "", Kind::None, "cannot be opened: No such device")}, ""),
              "no pen and no touch screen: /dev/input/event0 (Keyboard) tells no position; /dev/input/event1 "
              "(Touchpad) is a touchpad, which SCRIBERA_PEN_DEVICE has to name; /dev/input/event5 cannot be "
              "opened: "
              "No such device");
    EXPECT_EQ(
        refusal({kDesk[0], kDesk[3]}, "keyb"),
        "no device to sign on is \"keyb\": /dev/input/event0 (Keyboard) tells no position; /dev/input/event3 "
        "(Pen Tablet S) is not meant");
}

} // namespace
} // namespace pen

// The numbers that the pads are known by. The tests walk the library's own table; this one holds the table
// against what is written down here.

#include "harness.h"

namespace scribera::test {
namespace {

struct Known
{
    std::string name;
    int deviceType;
    int originX;
    int originY;
    int areaWidth;
    int areaHeight;
    int maxPressure;
    bool pressureByMember;
    bool keyAtRelease;
    bool hasScreen;
    bool hasFingerprint;
};

TEST(PadTable, SaysWhatThePadsAreKnownBy)
{
    const std::vector<Known> pads = {
        {"K210", 2, 160, 220, 2360, 1430, 2048, true, true, true, false},
        {"K420", 5, 200, 200, 2300, 1300, 2048, true, true, true, false},
        {"K421B", 7, 2050, 1750, 21170, 11490, 2048, false, true, true, true},
        {"KM730", 3, 550, 180, 29870, 20120, 8192, true, false, false, false},
        {"T580", 4, 550, 180, 29870, 20120, 8192, true, false, false, false},
    };
    for (const Known& known : pads) {
        SCOPED_TRACE(known.name);
        const PadModel& pad = padModel(known.name);
        EXPECT_EQ(pad.deviceType, known.deviceType);
        EXPECT_EQ(pad.originX, known.originX);
        EXPECT_EQ(pad.originY, known.originY);
        EXPECT_EQ(pad.areaWidth, known.areaWidth);
        EXPECT_EQ(pad.areaHeight, known.areaHeight);
        EXPECT_EQ(pad.maxPressure, known.maxPressure);
        EXPECT_EQ(pad.pressureByMember, known.pressureByMember);
        EXPECT_EQ(pad.keyAtRelease, known.keyAtRelease);
        EXPECT_EQ(pad.hasScreen, known.hasScreen);
        EXPECT_EQ(pad.hasFingerprint, known.hasFingerprint);
    }
}

TEST(PadTable, GivesEachPadANameAndADeviceTypeOfItsOwn)
{
    std::set<std::string> names;
    std::set<int> types;
    for (const PadModel& pad : padModels()) {
        names.insert(pad.name);
        types.insert(pad.deviceType);
    }
    EXPECT_EQ(names.size(), padModels().size());
    EXPECT_EQ(types.size(), padModels().size());
}

} // namespace
} // namespace scribera::test

// The pictures for the pad's own display, which nobody sees from outside.
#include "fingerprint_reference.h"

#include "fingerprint/fpintake.h"

#include <algorithm>

namespace scribera::test {
namespace {

// Whether a good part of the picture lies anywhere in the intake.
bool holds(const CFingerprintIntake& intake, const Bytes& picture)
{
    const auto* const first = reinterpret_cast<const unsigned char*>(&intake);
    const auto part = picture.begin() + devicePictureSize / 2;
    return std::search(first, first + sizeof intake, part, part + 200) != first + sizeof intake;
}

TEST(DevicePicture, IsKeptNoLongerThanItIsOnItsWay)
{
    const CObjectIdentity identity{g_PadK421B, EObjectKind::Windowless};
    CSignCanvas canvas{identity};
    CFingerprintMerge merge{identity};
    canvas.SetLayer(merge);
    canvas.clearCanvas(120, 80);
    const CScriberaDriver driver{identity, {}}; // not loaded: nobody takes the picture
    bool isGoingToShutDown = false;
    const auto intake =
        std::make_unique<CFingerprintIntake>(identity, canvas, merge, driver, isGoingToShutDown);
    const Bytes print = ridges(1);
    const Bytes picture = devicePicture(print);

    intake->RxSignPadFPRawData(print.data(), static_cast<int>(print.size()), 1);
    EXPECT_TRUE(holds(*intake, picture));
    intake->CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    intake->ProcessShowFPImgaeRawDataOnDevice();
    EXPECT_TRUE(holds(*intake, picture)) << "on its way to the pad";
    intake->CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    intake->ProcessShowFPImgaeRawDataOnDevice();
    canvas.ClearSignCanvas();
    EXPECT_FALSE(holds(*intake, picture));
}

} // namespace
} // namespace scribera::test

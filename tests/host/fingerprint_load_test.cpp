// Everything at once for a while, and again and again.

#include <atomic>
#include <chrono>
#include <thread>

#include <QApplication>

#include "fingerprint_reference.h"

namespace scribera::test {
namespace {

class FingerprintLoad : public FingerprintTest
{
};

// Pen and prints on the driver's thread, the display thread's transfers and merges, exports on a thread of
// the host, and painting, placements, resizing and clearing on the main one.
TEST_P(FingerprintLoad, EverythingAtOnce)
{
    ASSERT_TRUE(start(600, 300));
    ASSERT_EQ(sim().SetTransferTime(1), 0);
    std::atomic<bool> going = true;
    std::atomic<int> exports = 0;

    std::thread person([&] {
        const std::vector<ScrSimSample> ink = wave(model(), 200);
        std::vector<Bytes> prints;
        for (unsigned seed = 0; seed < 4; ++seed)
            prints.push_back(ridges(seed));
        for (int score = 1; going; ++score) {
            const Bytes& print = prints[static_cast<std::size_t>(score) % prints.size()];
            sim().SendFingerprint(print.data(), static_cast<int>(print.size()), score);
            sim().SendSamples(ink.data(), static_cast<int>(ink.size()));
            sim().WaitIdle(60000);
        }
    });
    std::thread exporter([&] {
        for (int round = 0; going; ++round) {
            const int imageType = 1 + round % 3;
            api().FreeFPImageBase64Data(type(),
                                        api().GetFPImageBase64Data(type(), imageType, round % 2 == 0));
            api().PacketsBase64EncodeFree(type(), api().PacketsBase64Encode(type(), imageType));
            api().PacketsBase64EncodeExFree(type(), api().PacketsBase64EncodeEx(type(), imageType, true));
            pad().save(round % 2 == 0 ? ImageBmp : ImageSvg, "load.out");
            api().FreeSVGImageBase64Data(type(), api().GetSVGImageBase64Data(type()));
            api().GetTotalPacketsNumber(type());
            ++exports;
        }
    });

    const auto end = std::chrono::steady_clock::now() + testDuration();
    int placed = 0;
    for (int round = 0; std::chrono::steady_clock::now() < end || exports < 3 || sim().TransferCount() < 3;
         ++round) {
        switch (round % 8) {
        case 0:
            if (padCase().isWidget()) {
                EXPECT_EQ(place(pad().parent(), QRect(), QRect(round % 50, 10, 90, 120)), 0);
                pad().signWidget()->repaint();
            }
            break;
        case 2:
            if (m_otherWindows.size() > 3)
                m_otherWindows.erase(m_otherWindows.begin());
            if (placed < 400) { // each stays until the end
                EXPECT_EQ(placeElsewhere(QRect(3, 3, 80, 20)), 0);
                ++placed;
            }
            break;
        case 4:
            if (padCase().isWidget())
                pad().signWidget()->resize(500 + round % 200, 250 + round % 100);
            break;
        case 6:
            if (round % 5 == 0) {
                EXPECT_EQ(api().Clear(type()), 0);
            }
            break;
        default:
            api().SetSaveCenterImageClip(type(), round % 16 < 8, 3, 3);
            break;
        }
        processEvents();
    }
    going = false;
    person.join();
    exporter.join();
    EXPECT_GT(exports, 0);
    EXPECT_GT(sim().TransferCount(), 0);

    // Nothing was left in disorder: from a clear on it is an ordinary pad.
    if (padCase().isWidget())
        pad().signWidget()->resize(400, 200);
    processEvents();
    sim().waitIdle();
    EXPECT_EQ(api().Clear(type()), 0);
    api().SetSaveCenterImageClip(type(), false, 0, 0);
    m_copy =
        std::make_unique<PadPictures>(padCase().isWidget() ? 400 : 600, padCase().isWidget() ? 200 : 300);
    ASSERT_EQ(placeElsewhere(QRect(5, 5, 80, 20)), 0);
    take(ridges(9), 1);
    draw(wave(model(), 30));
    expectSame("in the end");
}

TEST_P(FingerprintLoad, FiftyRoundsLeaveNothingBehind)
{
    const Bytes print = ridges(1);
    const auto round = [&](int number) {
        ASSERT_TRUE(start(200, 100));
        const int transfers = sim().TransferCount();
        ASSERT_EQ(placeElsewhere(QRect(3, 3, 80, 20)), 0);
        ASSERT_EQ(placeElsewhere(QRect(4, 4, 80, 20)), 0);
        // Every other round ends in the middle of a transfer.
        if (number % 2 == 1)
            sim().SetTransferTime(600000);
        ASSERT_EQ(sim().SendFingerprint(print.data(), static_cast<int>(print.size()), 1), 0);
        pad().draw(wave(model(), 10)); // without a drawing of the test's own, for which Qt 6 takes threads
        ASSERT_TRUE(waitUntil([&] { return sim().TransferCount() > transfers; }));
        api().FreeFPImageBase64Data(type(), api().GetFPImageBase64Data(type(), ImagePng, true));
        ASSERT_EQ(pad().stop(), 0);
        m_otherWindows.clear();
        processEvents();
    };
    const std::set<std::string> threads = idleThreads();
    round(0);
    round(1);
    if (HasFatalFailure())
        return;
    const ProcessState before = ProcessState::now();
    const int widgets = qApp ? QApplication::allWidgets().size() : 0;
    for (int i = 0; i < 50; ++i) {
        round(i);
        ASSERT_FALSE(HasFatalFailure()) << "round " << i;
    }
    EXPECT_TRUE(threadsAre(threads));
    const ProcessState after = ProcessState::now();
    EXPECT_EQ(after.files, before.files);
    EXPECT_EQ(after.mappedFiles, before.mappedFiles);
    EXPECT_FALSE(after.maps("libscriberadrv.so"));
    EXPECT_EQ(qApp ? QApplication::allWidgets().size() : 0, widgets);
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintLoad);

} // namespace
} // namespace scribera::test

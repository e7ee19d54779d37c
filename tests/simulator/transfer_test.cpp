// Pictures for the pad's own display.
#include "support.h"

#include <atomic>

namespace {

class TransferTest : public SimulatorTest
{
protected:
    TransferTest() : m_picture(std::size_t{104} * 144 * 2)
    {
        for (std::size_t index = 0; index < m_picture.size(); ++index)
            m_picture[index] = static_cast<unsigned char>(index * 7 + index / 256);
    }

    int show(bool* abort) { return m_driver.showPicture(m_picture.data(), 29952, 104, 144, abort); }

    std::vector<unsigned char> lastPicture()
    {
        std::vector<unsigned char> picture(
            static_cast<std::size_t>(m_driver.LastPicture(nullptr, 0, nullptr, nullptr)));
        m_driver.LastPicture(picture.data(), static_cast<int>(picture.size()), nullptr, nullptr);
        return picture;
    }

    static void set(bool& flag) { __atomic_store_n(&flag, true, __ATOMIC_RELEASE); }

    Driver m_driver;
    std::vector<unsigned char> m_picture;
};

} // namespace

TEST_F(TransferTest, keepsTheLastPicture)
{
    EXPECT_EQ(m_driver.LastPicture(nullptr, 0, nullptr, nullptr), 0);
    bool abort = false;
    ASSERT_EQ(show(&abort), 0);
    EXPECT_EQ(lastPicture(), m_picture);
    int width = 0;
    int height = 0;
    unsigned char start[3] = {0, 0, 0xee};
    EXPECT_EQ(m_driver.LastPicture(start, 2, &width, &height), 29952);
    EXPECT_EQ(width, 104);
    EXPECT_EQ(height, 144);
    EXPECT_EQ(start[0], m_picture[0]);
    EXPECT_EQ(start[1], m_picture[1]);
    EXPECT_EQ(start[2], 0xee);

    unsigned char small[4] = {9, 8, 7, 6};
    ASSERT_EQ(m_driver.showPicture(small, 4, 1, 2, nullptr), 0);
    EXPECT_EQ(lastPicture(), std::vector<unsigned char>({9, 8, 7, 6}));
    EXPECT_EQ(m_driver.TransferCount(), 2);
    EXPECT_EQ(m_driver.AbortedTransferCount(), 0);
}

TEST_F(TransferTest, refusesNumbersThatDescribeNoPicture)
{
    bool abort = false;
    unsigned char* pixels = m_picture.data();
    EXPECT_EQ(m_driver.showPicture(nullptr, 29952, 104, 144, &abort), -2);
    EXPECT_EQ(m_driver.showPicture(pixels, 29951, 104, 144, &abort), -2);
    EXPECT_EQ(m_driver.showPicture(pixels, 29952, 104, 143, &abort), -2);
    EXPECT_EQ(m_driver.showPicture(pixels, 0, 0, 144, &abort), -2);
    EXPECT_EQ(m_driver.showPicture(pixels, 29952, -104, -144, &abort), -2);
    EXPECT_EQ(m_driver.showPicture(pixels, 0, 65536, 65536, &abort), -2);
    EXPECT_EQ(m_driver.TransferCount(), 0);
    EXPECT_EQ(m_driver.LastPicture(nullptr, 0, nullptr, nullptr), 0);
}

TEST_F(TransferTest, takesItsTime)
{
    ASSERT_EQ(m_driver.SetTransferTime(60), 0);
    bool abort = false;
    const auto begin = Clock::now();
    EXPECT_EQ(show(&abort), 0);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(60));
    EXPECT_EQ(m_driver.SetTransferTime(-1), -1);
}

TEST_F(TransferTest, aFlagThatIsSetAlreadyAllowsNoTransfer)
{
    bool abort = true;
    EXPECT_EQ(show(&abort), -1);
    EXPECT_EQ(m_driver.TransferCount(), 1);
    EXPECT_EQ(m_driver.AbortedTransferCount(), 1);
    EXPECT_EQ(m_driver.LastPicture(nullptr, 0, nullptr, nullptr), 0);
}

TEST_F(TransferTest, givesUpWhenTheFlagIsSetMeanwhile)
{
    unsigned char earlier[2] = {0xf8, 0};
    ASSERT_EQ(m_driver.showPicture(earlier, 2, 1, 1, nullptr), 0);
    // An hour: the test's own time limit is shorter.
    ASSERT_EQ(m_driver.SetTransferTime(3'600'000), 0);
    bool abort = false;
    std::atomic<int> result{7};
    std::thread host([&] { result = show(&abort); });
    EXPECT_TRUE(becomesTrue([this] { return m_driver.TransferCount() == 2; }));
    EXPECT_EQ(m_driver.AbortedTransferCount(), 0);
    EXPECT_EQ(result, 7);
    set(abort);
    host.join();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(m_driver.AbortedTransferCount(), 1);
    EXPECT_EQ(lastPicture(), std::vector<unsigned char>({0xf8, 0}));
}

TEST_F(TransferTest, penAndFingerprintsArriveDuringATransfer)
{
    ASSERT_EQ(m_driver.start(7), 0);
    ASSERT_EQ(m_driver.SetTransferTime(3'600'000), 0);
    bool abort = false;
    std::atomic<int> result{7};
    std::thread host([&] { result = show(&abort); });
    EXPECT_TRUE(becomesTrue([this] { return m_driver.TransferCount() == 1; }));
    EXPECT_EQ(m_driver.SendSample(3000, 2000, 5, 0), 0);
    for (int score = 1; score <= 10; ++score)
        EXPECT_EQ(m_driver.SendSyntheticFingerprint("whorl", 1, score), 0);
    EXPECT_EQ(m_driver.SendSample(3001, 2000, 5, 1), 0);
    EXPECT_TRUE(Received::waitFor(12));
    EXPECT_EQ(result, 7);
    set(abort);
    host.join();
    EXPECT_EQ(result, -1);
    const std::vector<Event> events = Received::all();
    ASSERT_EQ(events.size(), 12U);
    for (int score = 1; score <= 10; ++score)
        EXPECT_EQ(events[static_cast<std::size_t>(score)].score, score);
}

TEST_F(TransferTest, stoppingThePadDoesNotEndATransfer)
{
    ASSERT_EQ(m_driver.start(7), 0);
    ASSERT_EQ(m_driver.SetTransferTime(3'600'000), 0);
    bool abort = false;
    std::atomic<int> result{7};
    std::thread host([&] { result = show(&abort); });
    EXPECT_TRUE(becomesTrue([this] { return m_driver.TransferCount() == 1; }));
    EXPECT_EQ(m_driver.unInitial(), 0);
    EXPECT_EQ(result, 7);
    set(abort);
    host.join();
    EXPECT_EQ(result, -1);
}

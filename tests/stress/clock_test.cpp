// A wall clock that is set while a person signs. This program defines time() itself, and the library, loaded
// into it, finds this one before the system's.

#include <atomic>
#include <cstring>
#include <ctime>

#include "pen.h"

namespace {

std::atomic<std::time_t> clockShift = 0;

} // namespace

extern "C" std::time_t time(std::time_t* out) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::time_t shifted = now.tv_sec + clockShift.load();
    if (out)
        *out = shifted;
    return shifted;
}

namespace scribera::test {
namespace {

class WallClock : public OpenInkTest
{
protected:
    void SetUp() override
    {
        setenv("TZ", "UTC", 1);
        clockShift = 0;
        OpenInkTest::SetUp();
    }
};

constexpr std::time_t hour = 3600;

TEST_P(WallClock, SetBackInTheMiddleOfASignatureLosesNothing)
{
    const std::time_t before = std::time(nullptr);
    for (const std::time_t shift : {std::time_t(0), -hour, 24 * hour, -2 * before}) {
        clockShift = shift;
        draw(wave(model(), 10));
    }
    clockShift = 0;
    expectSameInk();

    const Taken ink = takeImage(pad(), ImageInk);
    const std::vector<StreamRecord> records = recordsOf(ink.bytes());
    ASSERT_EQ(records.size(), 48u);
    for (std::size_t i = 1; i < records.size(); ++i)
        EXPECT_GE(records[i].tick, records[i - 1].tick) << "the tick clock does not know of the wall clock";
    const auto secondsOf = [&](std::size_t stroke) { return records[stroke * 12].seconds; };
    const std::int64_t tolerance = 60;
    EXPECT_NEAR(secondsOf(0), before, tolerance);
    EXPECT_NEAR(secondsOf(1), before - hour, tolerance);
    EXPECT_NEAR(secondsOf(2), before + 24 * hour, tolerance);
    EXPECT_NEAR(secondsOf(3), -before, tolerance);

    // The texts say what the clock said.
    for (std::size_t stroke = 0; stroke < 4; ++stroke) {
        const auto seconds = static_cast<std::time_t>(secondsOf(stroke));
        std::tm parts{};
        gmtime_r(&seconds, &parts);
        char expected[64];
        std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S.", &parts);
        const std::string text = takeTime(pad(), static_cast<int>(stroke * 12));
        EXPECT_EQ(text.substr(0, std::strlen(expected)), expected);
    }
}

TEST_P(WallClock, YearsBeyondReasonGiveATextAllTheSame)
{
    const std::time_t now = std::time(nullptr);
    const std::vector<std::time_t> shifts = {std::time_t(1) << 40, std::time_t(1) << 61,
                                             -(std::time_t(1) << 61)};
    for (const std::time_t shift : shifts) {
        clockShift = shift - now;
        sim().send(stroke(model(), {{0.5, 0.5}}));
    }
    clockShift = 0;
    ASSERT_EQ(pad().points(), 6);
    for (int index = 0; index < 6; ++index) {
        char* text = api().GetInkPointTime(type(), index);
        ASSERT_NE(text, nullptr);
        const std::size_t length = strnlen(text, 100);
        EXPECT_GE(length, std::strlen("2024-03-09 14:05:17.482")) << text;
        EXPECT_LT(length, 100u);
        api().FreeInkPointTime(type(), text);
    }
    EXPECT_EQ(pad().save(ImageSvg, "late.svg"), 0);
}

SCRIBERA_INSTANTIATE_ALL(WallClock);

} // namespace
} // namespace scribera::test

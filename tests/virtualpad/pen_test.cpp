// The pen of the virtual pad: samples from a hand, recordings, and what shows on the screen.
#include "support.h"

#include "padlayout.h"

#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string_view>

using namespace virtualpad;
using simulator::RecordedSample;

namespace {

const std::vector<std::string> Models = [] {
    std::istringstream names(simulator::modelNames());
    return std::vector(std::istream_iterator<std::string>(names), {});
}();

const simulator::Pad& padOf(std::string_view model)
{
    return *simulator::padForModel(model);
}

// A hand that moves by that much of the pad's width each 8 ms, and is lifted.
std::vector<RecordedSample> samplesOfHand(const simulator::Pad& pad, double step, int moves)
{
    PenSampler sampler(pad);
    std::vector<RecordedSample> samples;
    const auto keep = [&](std::vector<RecordedSample> more) {
        samples.insert(samples.end(), more.begin(), more.end());
    };
    double time = 1000;
    sampler.down(time, {0.1, 0.5});
    for (int move = 1; move <= moves; ++move) {
        time += 8;
        sampler.move(time, {0.1 + step * move, 0.5});
        keep(sampler.takeUntil(time));
    }
    sampler.up(time);
    keep(sampler.takeUntil(time + 1000));
    EXPECT_FALSE(sampler.isActive());
    return samples;
}

double meanPressure(const std::vector<RecordedSample>& samples)
{
    double sum = 0;
    for (const RecordedSample& sample : samples)
        sum += sample.pressure;
    return sum / static_cast<double>(samples.size());
}

} // namespace

TEST(PenSampler, AStrokeIsDownThenMovesThenUpEveryFiveMilliseconds)
{
    const std::vector<RecordedSample> samples = samplesOfHand(padOf("SCK210"), 0.01, 50);
    ASSERT_EQ(samples.size(), 81U); // 400 ms
    for (std::size_t index = 0; index < samples.size(); ++index) {
        EXPECT_EQ(samples[index].milliseconds, 1000 + 5 * static_cast<int>(index));
        EXPECT_EQ(samples[index].status, index == 0    ? simulator::PenDown
                                         : index == 80 ? simulator::PenUp
                                                       : simulator::PenMove);
    }
}

TEST(PenSampler, PositionsLieOnTheWayOfTheHandInPadUnits)
{
    for (const std::string& model : Models) {
        const simulator::Pad& pad = padOf(model);
        const std::vector<RecordedSample> samples = samplesOfHand(pad, 0.01, 50);
        for (const RecordedSample& sample : samples) {
            const double part = 0.1 + 0.01 * static_cast<double>(sample.milliseconds - 1000) / 8;
            EXPECT_NEAR(sample.x, pad.area.originX + part * (pad.area.width - 1), 1) << model;
            EXPECT_EQ(sample.y, pad.area.originY + std::lround(0.5 * (pad.area.height - 1))) << model;
        }
    }
}

TEST(PenSampler, ARestingPenIsReportedToo)
{
    PenSampler sampler(padOf("SCK420"));
    sampler.down(0, {0.3, 0.4});
    const std::vector<RecordedSample> samples = sampler.takeUntil(1020);
    EXPECT_EQ(samples.size(), 201U);
    for (const RecordedSample& sample : samples) {
        EXPECT_EQ(sample.x, samples.front().x);
        EXPECT_EQ(sample.y, samples.front().y);
    }
    // The line begins where and when the hand moves on, not where it rested.
    sampler.move(1030, {0.9, 0.4});
    const std::vector<RecordedSample> later = sampler.takeUntil(1050);
    ASSERT_FALSE(later.empty());
    EXPECT_EQ(later.front().x, samples.front().x);
    EXPECT_EQ(later.back().x, 200 + std::lround(0.9 * 2299));
}

TEST(PenSampler, ThePenStaysOnThePad)
{
    for (const std::string& model : Models) {
        const simulator::Pad& pad = padOf(model);
        PenSampler sampler(pad);
        std::mt19937 random(7);
        std::uniform_real_distribution<double> anywhere(-3, 4);
        sampler.down(0, {anywhere(random), anywhere(random)}, anywhere(random));
        for (int move = 1; move < 500; ++move)
            sampler.move(move * 3.7, {anywhere(random), anywhere(random)}, anywhere(random));
        sampler.up(1900);
        const std::vector<RecordedSample> samples = sampler.takeUntil(5000);
        ASSERT_GT(samples.size(), 300U);
        for (const RecordedSample& sample : samples) {
            EXPECT_GE(sample.x, pad.area.originX);
            EXPECT_LT(sample.x, pad.area.originX + pad.area.width);
            EXPECT_GE(sample.y, pad.area.originY);
            EXPECT_LT(sample.y, pad.area.originY + pad.area.height);
            EXPECT_GE(sample.pressure, sample.status == simulator::PenUp ? 0 : 1);
            EXPECT_LE(sample.pressure, pad.maxPressure);
        }
    }
}

TEST(PenSampler, AQuickMousePressesLessThanASlowOneAndWithinItsBounds)
{
    for (const std::string& model : Models) {
        const simulator::Pad& pad = padOf(model);
        const std::vector<RecordedSample> slow = samplesOfHand(pad, 0.0005, 60);
        const std::vector<RecordedSample> quick = samplesOfHand(pad, 0.014, 60);
        EXPECT_LT(meanPressure(quick), 0.8 * meanPressure(slow)) << model;
        for (const auto& samples : {slow, quick}) {
            for (const RecordedSample& sample : samples) {
                if (sample.status == simulator::PenUp)
                    continue;
                EXPECT_GE(sample.pressure, std::floor(SpeedPressure::Least * pad.maxPressure));
                EXPECT_LE(sample.pressure, std::ceil(SpeedPressure::Most * pad.maxPressure));
            }
        }
        // Smooth: a hand does not jump.
        for (std::size_t index = 1; index + 1 < slow.size(); ++index)
            EXPECT_LT(std::abs(slow[index].pressure - slow[index - 1].pressure), 0.08 * pad.maxPressure);
    }
}

TEST(PenSampler, AStylusPressesAsItSays)
{
    const simulator::Pad& pad = padOf("SCT580");
    PenSampler sampler(pad);
    sampler.down(0, {0.5, 0.5}, 0.25);
    sampler.move(40, {0.5, 0.6}, 0.75);
    const std::vector<RecordedSample> samples = sampler.takeUntil(60);
    ASSERT_EQ(samples.size(), 9U);
    EXPECT_EQ(samples.front().pressure, 2048);
    EXPECT_EQ(samples[4].pressure, 4096);
    EXPECT_EQ(samples.back().pressure, 6144);
}

TEST(PenSampler, AStrokeThatIsCutShortIsLifted)
{
    PenSampler sampler(padOf("SCK210"));
    sampler.down(0, {0.5, 0.5});
    sampler.move(30, {0.6, 0.5});
    EXPECT_FALSE(sampler.takeUntil(30).empty());
    const std::vector<RecordedSample> rest = sampler.finish();
    ASSERT_FALSE(rest.empty());
    EXPECT_EQ(rest.back().status, simulator::PenUp);
    EXPECT_EQ(rest.back().x, 160 + std::lround(0.6 * 2359));
    EXPECT_FALSE(sampler.isActive());
    EXPECT_TRUE(sampler.finish().empty());
}

TEST(PenRecorder, AReplayedRecordingIsRecordedAsItWas)
{
    for (const char* name : {"flowing.rec", "initials.rec", "paraph.rec"}) {
        simulator::Recording original;
        std::string error;
        ASSERT_TRUE(simulator::readRecording(std::string(SCRIBERA_RECORDINGS "/") + name, original, error))
            << error;
        for (const std::string& model : Models) {
            const simulator::Pad& pad = padOf(model);
            simulator::Recording expected = original;
            simulator::scaleRecording(expected, pad.area, pad.maxPressure);
            expected.model = pad.model;

            PenPlayer player;
            PenRecorder recorder;
            recorder.start(pad);
            player.start(123456.75, expected, false);
            for (double time = 123456; player.isPlaying(); time += 6.3) {
                for (const RecordedSample& sample : player.takeUntil(time))
                    recorder.add(sample);
            }
            const simulator::Recording recorded = recorder.stop();
            ASSERT_TRUE(simulator::writeRecording(recorded, "again.rec", error)) << error;
            simulator::Recording read;
            ASSERT_TRUE(simulator::readRecording("again.rec", read, error)) << error;
            EXPECT_TRUE(read.samples == expected.samples) << name << " on " << model;
            EXPECT_EQ(read.model, model);
            EXPECT_TRUE(read.area == pad.area);
            EXPECT_EQ(read.maxPressure, pad.maxPressure);
        }
    }
}

TEST(PenPlayer, StoppingLiftsThePen)
{
    simulator::Recording recording;
    recording.samples = {{0, 500, 500, 9, 0}, {5, 510, 500, 9, 1}, {1000, 520, 500, 0, 2}};
    PenPlayer player;
    player.start(100, recording, false);
    EXPECT_EQ(player.takeUntil(200).size(), 2U);
    const std::vector<RecordedSample> last = player.stop();
    ASSERT_EQ(last.size(), 1U);
    EXPECT_TRUE(last[0] == (RecordedSample{105, 510, 500, 0, 2}));
    EXPECT_TRUE(player.stop().empty());
    EXPECT_FALSE(player.isPlaying());
}

TEST(PenPlayer, ALoopGoesOnAndARecordingThatEndsPressedIsLifted)
{
    simulator::Recording recording;
    recording.samples = {{0, 500, 500, 9, 0}, {5, 510, 500, 9, 1}};
    PenPlayer player;
    player.start(0, recording, true);
    for (int pass = 0; pass < 3; ++pass) {
        const std::vector<RecordedSample> samples = player.takeUntil(10'000.0 * (pass + 1));
        ASSERT_EQ(samples.size(), 3U);
        EXPECT_EQ(samples.back().status, simulator::PenUp);
    }
    EXPECT_TRUE(player.isPlaying());
    EXPECT_TRUE(player.stop().empty());
}

TEST(PadState, KeepsInkFromAnywhereOnTheScreen)
{
    constexpr int Least = std::numeric_limits<int>::min();
    constexpr int Most = std::numeric_limits<int>::max();
    for (const std::string& model : Models) {
        PadState state(padOf(model));
        state.apply({0, Least, Most, Least, 0});
        state.apply({0, Most, Least, Most, 1});
        ASSERT_EQ(state.ink().size(), 2U);
        const InkPoint& first = state.ink().front();
        const InkPoint& second = state.ink().back();
        EXPECT_TRUE(first.x == 0 && first.y == 1 && first.pressure == 0) << model;
        EXPECT_TRUE(second.x == 1 && second.y == 0 && second.pressure == 1) << model;
    }
}

TEST(PadState, ShowsInkOnlyOnAScreenThatIsOn)
{
    for (const std::string& model : Models) {
        const simulator::Pad& pad = padOf(model);
        PadState state(pad);
        const auto stroke = [&] {
            const int x = pad.area.originX + 100;
            for (int status : {0, 1, 2})
                state.apply({0, x, pad.area.originY, 5, status});
            return state.ink().size();
        };
        EXPECT_TRUE(state.isLit()) << "without a host somebody may try the pen";
        EXPECT_EQ(stroke(), 2U);
        state.hostCame();
        EXPECT_TRUE(state.ink().empty());
        EXPECT_EQ(state.isLit(), !hasScreen(pad)) << model;
        EXPECT_EQ(stroke(), hasScreen(pad) ? 0U : 2U) << model;
        state.showScreen(true);
        state.clear();
        EXPECT_EQ(stroke(), 2U);
        EXPECT_TRUE(state.ink().front().beginsStroke);
        EXPECT_FALSE(state.ink().back().beginsStroke);
        const int sheet = state.sheet();
        state.showVersion(true, model);
        state.showPicture({2, 1, {1, 2, 3, 4}});
        state.clear();
        EXPECT_TRUE(state.ink().empty());
        EXPECT_GT(state.sheet(), sheet);
        EXPECT_FALSE(state.isVersionShown());
        EXPECT_FALSE(state.picture());
    }
}

TEST(PadState, TheCancelKeyClearsThePadWhenItIsLetGo)
{
    for (const std::string& model : Models) {
        SCOPED_TRACE(model);
        const simulator::Pad& pad = padOf(model);
        PadState state(pad);
        const auto apply = [&](int status) {
            state.apply({0, pad.area.originX + 9, pad.area.originY + 9, 9, status});
        };
        const auto write = [&] {
            for (const int status : {simulator::PenDown, simulator::PenMove, simulator::PenUp})
                apply(status);
            state.showPicture({1, 1, {0, 0}});
            state.showVersion(true, "1.0");
        };
        write();
        apply(simulator::ConfirmKey);
        apply(simulator::PenUp);
        EXPECT_EQ(state.ink().size(), 2U) << "what is confirmed stays to be seen";
        apply(simulator::CancelKey);
        EXPECT_EQ(state.ink().size(), 2U);
        EXPECT_TRUE(state.picture() && state.isVersionShown());
        const int sheet = state.sheet();
        apply(simulator::PenUp);
        EXPECT_TRUE(state.ink().empty());
        EXPECT_FALSE(state.picture() || state.isVersionShown());
        EXPECT_NE(state.sheet(), sheet);
        write();
        EXPECT_EQ(state.ink().size(), 2U) << "once for each touch";
    }
}

TEST(PadLayout, TheWritingAreaHasThePadsProportionsAndEverythingIsOnThePad)
{
    for (const std::string& model : Models) {
        const simulator::Pad& pad = padOf(model);
        for (const QSizeF space :
             {QSizeF(760, 600), QSizeF(320, 240), QSizeF(1900, 500), QSizeF(300, 1200)}) {
            const PadLayout layout(pad, space);
            const double proportion = static_cast<double>(pad.area.width) / pad.area.height;
            EXPECT_NEAR(layout.screen.width() / layout.screen.height(), proportion, 1e-9) << model;
            EXPECT_TRUE(QRectF(QPointF(), space).contains(layout.body));
            std::vector<QRectF> parts{layout.screen, layout.cancelKey, layout.confirmKey, layout.light,
                                      layout.label};
            EXPECT_EQ(layout.sensor.has_value(), model == "SCK421B");
            if (layout.sensor)
                parts.push_back(*layout.sensor);
            for (std::size_t first = 0; first < parts.size(); ++first) {
                EXPECT_TRUE(layout.body.contains(parts[first])) << model << " " << first;
                for (std::size_t second = 0; second < first; ++second)
                    EXPECT_FALSE(parts[first].intersects(parts[second]))
                        << model << " " << first << " " << second;
            }
        }
    }
}

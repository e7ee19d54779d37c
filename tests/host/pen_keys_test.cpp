// Confirm and cancel keys: when the host hears of them, and what else they do.

#include <thread>

#include "pen.h"

namespace scribera::test {
namespace {

using namespace std::chrono_literals;

class Keys : public OpenInkTest
{
protected:
    static constexpr ScrSimSample confirmDown = {10, 20, 30, ConfirmKeyDown};
    static constexpr ScrSimSample cancelDown = {10, 20, 30, CancelKeyDown};
    static constexpr ScrSimSample up = {10, 20, 30, PenUp};
    ScrSimSample at(double x, int status) const { return sampleAt(model(), {x, 0.5}, status); }
    int poll() const { return api().GetDeviceConfirmOrCancelKeyStatus(type()); }
    int clears() { return sim().CallCount("SCRDAPI_ClearDeviceContent"); }
};

TEST_P(Keys, EachPressIsReportedOnce)
{
    StatusRecorder recorder(pad());
    EXPECT_EQ(poll(), -1);
    std::vector<int> expected;
    for (const int key : {1, 0, 0, 1}) {
        sim().pressKey(key);
        expected.push_back(key);
        ASSERT_TRUE(recorder.waitFor(expected.size()));
        EXPECT_EQ(poll(), key);
        EXPECT_EQ(poll(), -1);
    }
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.statuses(), expected);
    EXPECT_EQ(pad().points(), -8);
}

TEST_P(Keys, ActionComesAtReleaseOrAtTouchAsTheModelHasIt)
{
    StatusRecorder recorder(pad());
    std::vector<int> expected;
    for (const auto& [touch, status] : {std::pair(confirmDown, 1), std::pair(cancelDown, 0)}) {
        pad().draw({touch});
        EXPECT_EQ(poll(), status) << "the poll knows of the touch at once";
        if (model().keyAtRelease) {
            std::this_thread::sleep_for(100ms);
            EXPECT_EQ(recorder.statuses(), expected);
        } else {
            ASSERT_TRUE(recorder.waitFor(expected.size() + 1));
        }
        pad().draw({up});
        expected.push_back(status);
        ASSERT_TRUE(recorder.waitFor(expected.size()));
        std::this_thread::sleep_for(50ms);
        EXPECT_EQ(recorder.statuses(), expected);
        EXPECT_EQ(poll(), -1);
    }
}

TEST_P(Keys, ReleaseWithoutTouchDoesNothing)
{
    StatusRecorder recorder(pad());
    pad().draw({up, up});
    pad().draw(stroke(model(), {{0.2, 0.2}, {0.5, 0.5}}));
    pad().draw({up});
    std::this_thread::sleep_for(50ms);
    EXPECT_TRUE(recorder.statuses().empty());
    EXPECT_EQ(poll(), -1);
}

TEST_P(Keys, TouchInAStrokeEndsItWithoutAnEndMark)
{
    StatusRecorder recorder(pad());
    draw({at(0.1, PenDown), at(0.4, PenMove), confirmDown, at(0.7, PenMove), up, at(0.9, PenMove)});
    ASSERT_TRUE(recorder.waitFor(1));
    ASSERT_EQ(redraw().points().size(), 2u);
    expectSameInk();
}

TEST_P(Keys, TouchOnTheOtherKeyTakesOver)
{
    if (!model().keyAtRelease) {
        // Here every touch acts by itself.
        ASSERT_TRUE(pad().start());
        StatusRecorder recorder(pad());
        pad().draw({cancelDown});
        ASSERT_TRUE(recorder.waitFor(1));
        pad().draw({confirmDown});
        ASSERT_TRUE(recorder.waitFor(2));
        pad().draw({up});
        EXPECT_EQ(recorder.statuses(), (std::vector<int>{0, 1}));
        EXPECT_EQ(poll(), 1);
        return;
    }
    ASSERT_TRUE(pad().start());
    StatusRecorder recorder(pad());
    pad().draw({cancelDown, confirmDown, up});
    ASSERT_TRUE(recorder.waitFor(1));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.statuses(), std::vector<int>{1});
    EXPECT_EQ(poll(), 1);
    // The cancel key was touched all the same.
    const int before = clears();
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(clears(), before);
}

TEST_P(Keys, StrokeBegunOnATouchedKeyLeavesTheKeyTouched)
{
    StatusRecorder recorder(pad());
    pad().draw({confirmDown});
    if (!model().keyAtRelease) {
        ASSERT_TRUE(recorder.waitFor(1));
    }
    pad().draw({at(0.2, PenDown), at(0.6, PenMove), at(0.6, PenUp)});
    EXPECT_EQ(pad().points(), 3);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.statuses().size(), model().keyAtRelease ? 0u : 1u);
    pad().draw({up});
    ASSERT_TRUE(recorder.waitFor(1));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.statuses(), std::vector<int>{1});
}

TEST_P(Keys, TouchWhileTheCallbackRunsWaitsAndIsTaken)
{
    StatusRecorder recorder(pad());
    recorder.block();
    setLogging(true);
    sim().pressKey(1);
    ASSERT_TRUE(waitUntil([&] { return recorder.isInside(); }));
    sim().queue({at(0.2, PenDown), at(0.6, PenMove), at(0.6, PenUp)});
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(pad().points(), -8);
    recorder.unblock();
    sim().waitIdle();
    setLogging(false);
    EXPECT_EQ(pad().points(), 3);
    for (const LogLine& line : mainLog())
        EXPECT_EQ(line.text.find("skip due to"), std::string::npos) << line.text;
    EXPECT_EQ(recorder.statuses(), std::vector<int>{1});
}

TEST_P(Keys, KeyPressedWhileTheCallbackRunsIsReportedAfterwards)
{
    StatusRecorder recorder(pad());
    recorder.block();
    sim().pressKey(1);
    ASSERT_TRUE(waitUntil([&] { return recorder.isInside(); }));
    sim().queue({cancelDown, up});
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(recorder.statuses(), std::vector<int>{1});
    recorder.unblock();
    ASSERT_TRUE(recorder.waitFor(2));
    EXPECT_EQ(recorder.statuses(), (std::vector<int>{1, 0}));
}

TEST_P(Keys, QueriesGoOnWhileTheCallbackRuns)
{
    pad().draw(wave(model(), 10));
    StatusRecorder recorder(pad());
    recorder.block();
    sim().pressKey(1);
    ASSERT_TRUE(waitUntil([&] { return recorder.isInside(); }));
    EXPECT_EQ(pad().points(), 12);
    EXPECT_EQ(poll(), 1);
    EXPECT_FALSE(takeTime(pad(), 0).empty());
    EXPECT_EQ(pad().save(ImagePng, "meanwhile.png"), 0);
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(pad().points(), -8);
    recorder.unblock();
}

TEST_P(Keys, WithoutCallbackTheActionIsConsumed)
{
    {
        StatusRecorder recorder(pad());
        EXPECT_EQ(api().SignatureStatusCallback(type(), nullptr), 0);
        setLogging(true);
        sim().pressKey(1);
        EXPECT_TRUE(
            waitUntil([&] { return textsOf(inThreadLog(), method("DoClickConfirmKeyAction")).size() == 3; }));
        setLogging(false);
        EXPECT_TRUE(recorder.statuses().empty());
    }
    StatusRecorder recorder(pad());
    sim().pressKey(0);
    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_EQ(recorder.statuses(), std::vector<int>{0}) << "what was consumed must not come again";
}

TEST_P(Keys, ClearAfterCancelLeavesThePadsScreenAlone)
{
    StatusRecorder recorder(pad());
    sim().SetResult("SCRDAPI_ClearDeviceContent", 7);
    pad().draw(wave(model(), 10));
    sim().pressKey(0);
    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_EQ(pad().points(), 12) << "a key by itself clears nothing";
    const int before = clears();
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(clears(), before);
    EXPECT_EQ(pad().points(), -8);
    EXPECT_EQ(poll(), 0) << "clearing does not touch the key status";
    EXPECT_EQ(api().Clear(type()), 7);
    EXPECT_EQ(clears(), before + 1);
    sim().pressKey(1);
    ASSERT_TRUE(recorder.waitFor(2));
    EXPECT_EQ(api().Clear(type()), 7);
    EXPECT_EQ(clears(), before + 2);
    // The canvas was cleared each time.
    sim().SetResult("SCRDAPI_ClearDeviceContent", 0);
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    EXPECT_TRUE(isWhite(pad().canvas()));
}

TEST_P(Keys, ClearForgetsThePointsThoughThePadFails)
{
    sim().SetResult("SCRDAPI_ClearDeviceContent", -5);
    pad().draw(wave(model(), 10));
    EXPECT_EQ(api().Clear(type()), -5);
    EXPECT_EQ(pad().points(), -8);
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    EXPECT_TRUE(isWhite(pad().canvas()));
}

TEST_P(Keys, ClearBetweenTouchAndReleaseKeepsTheKey)
{
    StatusRecorder recorder(pad());
    pad().draw({confirmDown});
    EXPECT_EQ(api().Clear(type()), 0);
    pad().draw({up});
    ASSERT_TRUE(recorder.waitFor(1));
    EXPECT_EQ(recorder.statuses(), std::vector<int>{1});
    EXPECT_EQ(poll(), 1);
}

TEST_P(Keys, ClearSwitchesClippingOff)
{
    EXPECT_EQ(api().SetSaveCenterImageClip(type(), true, 5, 5), 0);
    EXPECT_EQ(api().Clear(type()), 0);
    pad().draw(wave(model(), 10));
    EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
}

SCRIBERA_INSTANTIATE_ALL(Keys);

} // namespace
} // namespace scribera::test

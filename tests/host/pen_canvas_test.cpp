// The canvas after samples, pixel by pixel against a second drawing.

#include <climits>
#include <random>

#include "pen.h"

namespace scribera::test {
namespace {

class Drawing : public OpenInkTest
{
protected:
    void step(double x, double y, int status) { draw({sampleAt(model(), {x, y, 0.3}, status)}); }

    // Of the column in the middle, edge pixels by their share.
    double thickness()
    {
        const QImage canvas = pad().canvas();
        double sum = 0;
        for (int y = 0; y < canvas.height(); ++y)
            sum += 1.0 - qGray(canvas.pixel(200, y)) / 255.0;
        return sum;
    }
};

TEST_P(Drawing, EqualsARedrawInEveryWidthAndPressureMode)
{
    const QColor colors[] = {Qt::black,         QColor(20, 40, 160),
                             QColor(255, 0, 0), QColor(254, 255, 255),
                             QColor(0, 255, 0), QColor(128, 128, 128)};
    int round = 0;
    for (const bool pressure : {true, false}) {
        for (const int width : {1, 3, 10}) {
            setPressure(pressure);
            setPenWidth(width);
            setPenColor(colors[round]);
            std::vector<ScrSimSample> samples = wave(model(), 12 + round);
            for (ScrSimSample& sample : samples)
                sample.y += model().areaHeight * (round - 3) / 12;
            draw(samples);
            expectSameInk(printed("width %d, pressure %d", width, pressure));
            ++round;
        }
    }
}

TEST_P(Drawing, EqualsARedrawWithThePenAsItComes)
{
    draw(wave(model(), 30));
    expectSameInk();
}

TEST_P(Drawing, EqualsARedrawInEverySize)
{
    for (const QSize size : {QSize(800, 400), QSize(1, 1), QSize(1, 300), QSize(37, 511), QSize(401, 203)}) {
        ASSERT_TRUE(start({.width = size.width(), .height = size.height()}));
        for (const bool pressure : {true, false}) {
            setPressure(pressure);
            draw(wave(model(), 15));
            expectSameInk(printed("%d x %d", size.width(), size.height()));
        }
    }
}

TEST_P(Drawing, EqualsARedrawInTheSizeOfAScreen)
{
    ASSERT_TRUE(start({.width = 1920, .height = 960}));
    draw(wave(model(), 40));
    expectSameInk();
}

TEST_P(Drawing, ColorsOutOfRangeDrawBlack)
{
    const int bad[][3] = {{-1, 200, 200},    {200, 256, 200},     {200, 200, 1000},
                          {INT_MIN, 0, 200}, {200, INT_MAX, 200}, {300, -300, 300}};
    double y = 0.1;
    for (const auto& color : bad) {
        ASSERT_EQ(api().SetPenColor(type(), 250, 100, 100), 0);
        EXPECT_EQ(api().SetPenColor(type(), color[0], color[1], color[2]), 0);
        draw(stroke(model(), {{0.1, y}, {0.5, y + 0.05}, {0.9, y}}));
        y += 0.12;
    }
    expectSameInk();
}

TEST_P(Drawing, WhiteInkCoversInk)
{
    draw(stroke(model(), {{0.2, 0.5}, {0.8, 0.5}}));
    setPenColor(Qt::white);
    draw(stroke(model(), {{0.5, 0.2}, {0.5, 0.8}}));
    expectSameInk();
}

TEST_P(Drawing, PenSettingsHoldFromTheNextSegmentOn)
{
    step(0.1, 0.2, PenDown);
    step(0.3, 0.8, PenMove);
    setPenWidth(10);
    expectSameInk("what was drawn before must not change");
    step(0.5, 0.2, PenMove);
    setPenColor(QColor(10, 120, 200));
    step(0.7, 0.8, PenMove);
    setPressure(false);
    step(0.9, 0.2, PenMove);
    step(0.9, 0.2, PenUp);
    expectSameInk();
}

TEST_P(Drawing, RefusedPenWidthChangesNothing)
{
    setPenWidth(5);
    for (const int width : {0, 11, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(api().SetPenWidth(type(), width), -2) << width;
    draw(wave(model(), 10));
    expectSameInk();
    for (const int width : {1, 10})
        EXPECT_EQ(api().SetPenWidth(type(), width), 0) << width;
}

TEST_P(Drawing, FullPressureIsAsThickAsTheModelSays)
{
    pad().draw(stroke(model(), {{0.1, 0.5, 1.0}, {0.9, 0.5, 1.0}}));
    EXPECT_NEAR(thickness(), model().maxPressure == 8192 ? 9.0 : model().maxPressure * 3 / 306.0, 0.1);
}

TEST_P(Drawing, WithoutPressureEverySegmentIsAsWideAsThePen)
{
    ASSERT_EQ(api().SetPenStyle(type(), false), 0);
    for (const double pressure : {0.0, 0.01, 0.5, 1.0}) {
        ASSERT_EQ(api().Clear(type()), 0);
        pad().draw(stroke(model(), {{0.1, 0.5, pressure}, {0.9, 0.5, pressure}}));
        EXPECT_NEAR(thickness(), 3.0, 0.05) << pressure;
    }
}

TEST_P(Drawing, PenStyleIsKeptThoughThePadReportsAFailure)
{
    sim().SetResult("SCRDAPI_SetDevicePenStyle", 5);
    EXPECT_EQ(api().SetPenStyle(type(), false), 5);
    redraw().setPressure(false);
    draw(wave(model(), 10));
    expectSameInk();
}

TEST_P(Drawing, PressureAtTheLimitIsDrawnAndAboveItNot)
{
    const int limit = model().maxPressure;
    std::vector<ScrSimSample> samples =
        stroke(model(), {{0.1, 0.3}, {0.3, 0.3}, {0.5, 0.6}, {0.7, 0.3}, {0.9, 0.6}});
    samples[0].pressure = limit + 1000; // a touch is not checked
    samples[1].pressure = limit;
    samples[2].pressure = limit + 1;
    samples[3].pressure = INT_MAX;
    samples[4].pressure = limit / 4;
    samples[5].pressure = INT_MAX;
    draw(samples);
    ASSERT_EQ(redraw().segments().size(), 2u);
    expectSameInk();
}

TEST_P(Drawing, NegativeAndZeroPressuresAreLiteral)
{
    for (const bool pressure : {true, false}) {
        setPressure(pressure);
        std::vector<ScrSimSample> samples =
            stroke(model(), {{0.1, 0.3}, {0.3, 0.3}, {0.5, 0.6}, {0.7, 0.3}, {0.9, 0.6}});
        const int pressures[] = {-5, 0, -1, -500, -40000, 0};
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i].pressure = pressures[i];
            samples[i].y += pressure ? 0 : model().areaHeight / 4;
        }
        draw(samples);
        expectSameInk();
    }
}

TEST_P(Drawing, ExtremeCoordinatesLandOnTheEdge)
{
    const int p = model().maxPressure / 4;
    const int right = model().originX + model().areaWidth - 1;
    const int bottom = model().originY + model().areaHeight - 1;
    const std::vector<ScrSimSample> samples = {{model().originX, model().originY, p, PenDown},
                                               {right, bottom, p, PenMove},
                                               {right + 1, model().originY - 1, p, PenMove},
                                               {INT_MIN, bottom / 2, p, PenMove},
                                               {INT_MAX, INT_MIN, p, PenMove},
                                               {INT_MIN, INT_MAX, p, PenMove},
                                               {INT_MIN, INT_MIN, p, PenMove},
                                               {INT_MAX, INT_MAX, p, PenMove},
                                               {0, 0, p, PenUp}};
    draw(samples);
    expectSameInk();
}

TEST_P(Drawing, MoveWithoutTouchAndUnknownStatusesAreIgnored)
{
    std::vector<ScrSimSample> samples = {sampleAt(model(), {0.2, 0.2}, PenMove),
                                         sampleAt(model(), {0.8, 0.8}, PenMove),
                                         sampleAt(model(), {0.8, 0.8}, PenUp)};
    pad().draw(samples);
    EXPECT_EQ(pad().points(), -8);
    samples.clear();
    samples.push_back(sampleAt(model(), {0.1, 0.5}, PenDown));
    double x = 0.15;
    for (const int status : {5, 6, 255, 256, 65536, -1, -2, INT_MIN, INT_MAX}) {
        samples.push_back(sampleAt(model(), {0.5, 0.1}, status));
        samples.push_back(sampleAt(model(), {x, 0.5 + 0.02 * (status % 7)}, PenMove));
        x += 0.08;
    }
    samples.push_back(sampleAt(model(), {x, 0.5}, PenUp));
    samples.push_back(sampleAt(model(), {0.9, 0.9}, PenMove));
    draw(samples);
    expectSameInk();
}

TEST_P(Drawing, TapLeavesPointsButNoInk)
{
    draw(stroke(model(), {{0.5, 0.5}}));
    expectSameInk();
    EXPECT_TRUE(isWhite(pad().canvas()));
}

TEST_P(Drawing, TouchInTheMiddleOfAStrokeBeginsANewOne)
{
    const std::vector<ScrSimSample> samples = {
        sampleAt(model(), {0.1, 0.1}, PenDown), sampleAt(model(), {0.4, 0.1}, PenMove),
        sampleAt(model(), {0.1, 0.8}, PenDown), sampleAt(model(), {0.4, 0.8}, PenMove),
        sampleAt(model(), {0.4, 0.8}, PenUp),   sampleAt(model(), {0.4, 0.9}, PenUp)};
    draw(samples);
    ASSERT_EQ(redraw().points().size(), 5u);
    expectSameInk();
}

TEST_P(Drawing, RandomSamplesEqualARedraw)
{
    ASSERT_TRUE(start({.width = 320, .height = 160}));
    std::mt19937 random(static_cast<unsigned>(type()));
    const auto between = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    for (int round = 0; round < 4; ++round) {
        std::vector<ScrSimSample> samples;
        for (int i = 0; i < 60; ++i) {
            const int kind = between(0, 19);
            const int status = kind < 14 ? PenMove : kind < 17 ? PenDown : kind < 19 ? PenUp : between(5, 9);
            samples.push_back({model().originX + between(-200, model().areaWidth + 200),
                               model().originY + between(-200, model().areaHeight + 200),
                               between(-20, model().maxPressure + 50) / between(1, 8), status});
        }
        setPenWidth(between(1, 10));
        setPenColor(QColor(between(0, 255), between(0, 255), between(0, 255)));
        setPressure(between(0, 1) == 1);
        draw(samples);
        expectSameInk("round " + std::to_string(round));
    }
}

TEST_P(Drawing, ClearLeavesAWhiteCanvasOfTheSameSizeAndThePenAsItWas)
{
    setPenWidth(6);
    setPenColor(QColor(0, 0, 200));
    pad().draw(wave(model(), 10));
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(pad().points(), -8);
    draw(stroke(model(), {{0.5, 0.5}}));
    expectSameInk();
    draw(wave(model(), 10));
    expectSameInk();
}

TEST_P(Drawing, ClearInTheMiddleOfAStrokeLeavesThePenDown)
{
    step(0.1, 0.2, PenDown);
    step(0.4, 0.8, PenMove);
    ASSERT_EQ(api().Clear(type()), 0);
    redraw().clear();
    step(0.7, 0.2, PenMove);
    step(0.9, 0.8, PenUp);
    expectSameInk();
    // Nothing is stored for the end of a stroke whose points are gone.
    step(0.1, 0.2, PenDown);
    ASSERT_EQ(api().Clear(type()), 0);
    step(0.1, 0.2, PenUp);
    EXPECT_EQ(pad().points(), -8);
}

TEST_P(Drawing, NewObjectBeginsWithThePenAsItComes)
{
    setPenWidth(10);
    setPenColor(QColor(0, 0, 200));
    setPressure(false);
    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 5, 5), 0);
    pad().draw(wave(model(), 10));
    ASSERT_TRUE(start());
    EXPECT_EQ(pad().points(), -8);
    draw(wave(model(), 20));
    expectSameInk();
}

SCRIBERA_INSTANTIATE_ALL(Drawing);

// Pads of one family that differ in their pressure.
class OlderPad : public InkTest
{
};

TEST_P(OlderPad, HasItsOwnPressureLimitButTheSameWidthRule)
{
    if (!model().pressureByMember || model().maxPressure != 2048 || model().name != "K210") {
        // One text only: the limit is the model's.
        ASSERT_TRUE(pad().start());
        std::int32_t limit = 0;
        EXPECT_EQ(api().getDeviceInfo(type(), 4, &limit), 0);
        EXPECT_EQ(limit, model().maxPressure);
        return;
    }
    const std::pair<const char*, int> pads[] = {{"SCT470", 1024},  {"SCK210R1", 1024}, {"SCT480R1", 1024},
                                                {"SCK190", 1024},  {"SCN210", 1024},   {"SCK210", 2048},
                                                {"SCT12345", 2048}};
    for (const auto& [text, limit] : pads) {
        sim().setText("SCRDAPI_GetDevicePartsVersion", text);
        ASSERT_TRUE(start()) << text;
        redraw().setMaxPressure(limit);
        std::vector<ScrSimSample> samples = stroke(model(), {{0.1, 0.5}, {0.3, 0.4}, {0.5, 0.6}, {0.7, 0.4}});
        samples[1].pressure = limit;
        samples[2].pressure = limit + 1;
        samples[3].pressure = 300;
        draw(samples);
        expectSameInk(text);
        EXPECT_EQ(pad().stop(), 0);
    }
}

SCRIBERA_INSTANTIATE_ALL(OlderPad);

} // namespace
} // namespace scribera::test

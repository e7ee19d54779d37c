// The canvas after samples, pixel by pixel against a second drawing.

#include <climits>
#include <random>

#include "pen.h"

namespace scribera::test {
namespace {

class Drawing : public PadTest
{
};

TEST_P(Drawing, EqualsARedrawInEveryWidthAndPressureMode)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const QColor colors[] = {Qt::black,         QColor(20, 40, 160),
                             QColor(255, 0, 0), QColor(254, 255, 255),
                             QColor(0, 255, 0), QColor(128, 128, 128)};
    int round = 0;
    for (const bool pressure : {true, false}) {
        for (const int width : {1, 3, 10}) {
            const QColor color = colors[round];
            ASSERT_EQ(api().SetPenStyle(type(), pressure), 0);
            ASSERT_EQ(api().SetPenWidth(type(), width), 0);
            ASSERT_EQ(api().SetPenColor(type(), color.red(), color.green(), color.blue()), 0);
            redraw.setPressure(pressure);
            redraw.setPenWidth(width);
            redraw.setColor(color);
            std::vector<ScrSimSample> samples = wave(model(), 12 + round);
            for (ScrSimSample& sample : samples)
                sample.y += model().areaHeight * (round - 3) / 12;
            pad().draw(samples);
            redraw.feed(samples);
            EXPECT_TRUE(holdsCanvas(pad(), redraw)) << "width " << width << ", pressure " << pressure;
            EXPECT_TRUE(holdsPoints(pad(), redraw));
            ++round;
        }
    }
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, EqualsARedrawWithThePenAsItComes)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    pad().draw(wave(model(), 30));
    redraw.feed(wave(model(), 30));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, EqualsARedrawInEverySize)
{
    for (const QSize size : {QSize(800, 400), QSize(1, 1), QSize(1, 300), QSize(37, 511), QSize(401, 203)}) {
        ASSERT_TRUE(pad().start({.width = size.width(), .height = size.height()}));
        Redraw redraw(model(), size.width(), size.height());
        for (const bool pressure : {true, false}) {
            ASSERT_EQ(api().SetPenStyle(type(), pressure), 0);
            redraw.setPressure(pressure);
            pad().draw(wave(model(), 15));
            redraw.feed(wave(model(), 15));
            EXPECT_TRUE(holdsCanvas(pad(), redraw)) << size.width() << " x " << size.height();
        }
        EXPECT_EQ(pad().stop(), 0);
    }
}

TEST_P(Drawing, EqualsARedrawInTheSizeOfAScreen)
{
    ASSERT_TRUE(pad().start({.width = 1920, .height = 960}));
    Redraw redraw(model(), 1920, 960);
    pad().draw(wave(model(), 40));
    redraw.feed(wave(model(), 40));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, ColorsOutOfRangeDrawBlack)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const int bad[][3] = {{-1, 200, 200},    {200, 256, 200},     {200, 200, 1000},
                          {INT_MIN, 0, 200}, {200, INT_MAX, 200}, {300, -300, 300}};
    double y = 0.1;
    for (const auto& color : bad) {
        ASSERT_EQ(api().SetPenColor(type(), 250, 100, 100), 0);
        EXPECT_EQ(api().SetPenColor(type(), color[0], color[1], color[2]), 0);
        const auto line = stroke(model(), {{0.1, y}, {0.5, y + 0.05}, {0.9, y}});
        pad().draw(line);
        redraw.feed(line);
        y += 0.12;
    }
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, WhiteInkCoversInk)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const auto line = stroke(model(), {{0.2, 0.5}, {0.8, 0.5}});
    const auto across = stroke(model(), {{0.5, 0.2}, {0.5, 0.8}});
    pad().draw(line);
    redraw.feed(line);
    ASSERT_EQ(api().SetPenColor(type(), 255, 255, 255), 0);
    redraw.setColor(Qt::white);
    pad().draw(across);
    redraw.feed(across);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, PenSettingsHoldFromTheNextSegmentOn)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const auto step = [&](double x, double y, int status) {
        const ScrSimSample sample = sampleAt(model(), {x, y, 0.3}, status);
        pad().draw({sample});
        redraw.feed(sample);
    };
    step(0.1, 0.2, PenDown);
    step(0.3, 0.8, PenMove);
    EXPECT_EQ(api().SetPenWidth(type(), 10), 0);
    redraw.setPenWidth(10);
    EXPECT_TRUE(holdsCanvas(pad(), redraw)) << "what was drawn before must not change";
    step(0.5, 0.2, PenMove);
    EXPECT_EQ(api().SetPenColor(type(), 10, 120, 200), 0);
    redraw.setColor(QColor(10, 120, 200));
    step(0.7, 0.8, PenMove);
    EXPECT_EQ(api().SetPenStyle(type(), false), 0);
    redraw.setPressure(false);
    step(0.9, 0.2, PenMove);
    step(0.9, 0.2, PenUp);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, RefusedPenWidthChangesNothing)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    ASSERT_EQ(api().SetPenWidth(type(), 5), 0);
    redraw.setPenWidth(5);
    for (const int width : {0, 11, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(api().SetPenWidth(type(), width), -2) << width;
    pad().draw(wave(model(), 10));
    redraw.feed(wave(model(), 10));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    for (const int width : {1, 10})
        EXPECT_EQ(api().SetPenWidth(type(), width), 0) << width;
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, FullPressureIsAsThickAsTheModelSays)
{
    ASSERT_TRUE(pad().start());
    pad().draw(stroke(model(), {{0.1, 0.5, 1.0}, {0.9, 0.5, 1.0}}));
    const QImage canvas = pad().canvas();
    double thickness = 0; // of the column in the middle, edge pixels by their share
    for (int y = 0; y < canvas.height(); ++y)
        thickness += 1.0 - qGray(canvas.pixel(200, y)) / 255.0;
    const double expected = model().maxPressure == 8192 ? 9.0 : model().maxPressure * 3 / 306.0;
    EXPECT_NEAR(thickness, expected, 0.1);
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, WithoutPressureEverySegmentIsAsWideAsThePen)
{
    ASSERT_TRUE(pad().start());
    ASSERT_EQ(api().SetPenStyle(type(), false), 0);
    for (const double pressure : {0.0, 0.01, 0.5, 1.0}) {
        ASSERT_EQ(api().Clear(type()), 0);
        pad().draw(stroke(model(), {{0.1, 0.5, pressure}, {0.9, 0.5, pressure}}));
        const QImage canvas = pad().canvas();
        double thickness = 0;
        for (int y = 0; y < canvas.height(); ++y)
            thickness += 1.0 - qGray(canvas.pixel(200, y)) / 255.0;
        EXPECT_NEAR(thickness, 3.0, 0.05) << pressure;
    }
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, PenStyleIsKeptThoughThePadReportsAFailure)
{
    ASSERT_TRUE(pad().start());
    sim().SetResult("SCRDAPI_SetDevicePenStyle", 5);
    EXPECT_EQ(api().SetPenStyle(type(), false), 5);
    Redraw redraw(model(), 400, 200);
    redraw.setPressure(false);
    pad().draw(wave(model(), 10));
    redraw.feed(wave(model(), 10));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, PressureAtTheLimitIsDrawnAndAboveItNot)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const int limit = model().maxPressure;
    std::vector<ScrSimSample> samples =
        stroke(model(), {{0.1, 0.3}, {0.3, 0.3}, {0.5, 0.6}, {0.7, 0.3}, {0.9, 0.6}});
    samples[0].pressure = limit + 1000; // a touch is not checked
    samples[1].pressure = limit;
    samples[2].pressure = limit + 1;
    samples[3].pressure = INT_MAX;
    samples[4].pressure = limit / 4;
    samples[5].pressure = INT_MAX;
    pad().draw(samples);
    redraw.feed(samples);
    ASSERT_EQ(redraw.segments().size(), 2u);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, NegativeAndZeroPressuresAreLiteral)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    for (const bool pressure : {true, false}) {
        ASSERT_EQ(api().SetPenStyle(type(), pressure), 0);
        redraw.setPressure(pressure);
        std::vector<ScrSimSample> samples =
            stroke(model(), {{0.1, 0.3}, {0.3, 0.3}, {0.5, 0.6}, {0.7, 0.3}, {0.9, 0.6}});
        const int pressures[] = {-5, 0, -1, -500, -40000, 0};
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i].pressure = pressures[i];
            samples[i].y += pressure ? 0 : model().areaHeight / 4;
        }
        pad().draw(samples);
        redraw.feed(samples);
        EXPECT_TRUE(holdsCanvas(pad(), redraw));
        EXPECT_TRUE(holdsPoints(pad(), redraw));
    }
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, ExtremeCoordinatesLandOnTheEdge)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
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
    pad().draw(samples);
    redraw.feed(samples);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, MoveWithoutTouchAndUnknownStatusesAreIgnored)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
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
    pad().draw(samples);
    redraw.feed(samples);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, TapLeavesPointsButNoInk)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    redraw.feed(stroke(model(), {{0.5, 0.5}}));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_TRUE(isWhite(pad().canvas()));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, TouchInTheMiddleOfAStrokeBeginsANewOne)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const std::vector<ScrSimSample> samples = {
        sampleAt(model(), {0.1, 0.1}, PenDown), sampleAt(model(), {0.4, 0.1}, PenMove),
        sampleAt(model(), {0.1, 0.8}, PenDown), sampleAt(model(), {0.4, 0.8}, PenMove),
        sampleAt(model(), {0.4, 0.8}, PenUp),   sampleAt(model(), {0.4, 0.9}, PenUp)};
    pad().draw(samples);
    redraw.feed(samples);
    ASSERT_EQ(redraw.points().size(), 5u);
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, RandomSamplesEqualARedraw)
{
    ASSERT_TRUE(pad().start({.width = 320, .height = 160}));
    std::mt19937 random(static_cast<unsigned>(type()));
    const auto between = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    Redraw redraw(model(), 320, 160);
    for (int round = 0; round < 4; ++round) {
        std::vector<ScrSimSample> samples;
        for (int i = 0; i < 60; ++i) {
            const int kind = between(0, 19);
            const int status = kind < 14 ? PenMove : kind < 17 ? PenDown : kind < 19 ? PenUp : between(5, 9);
            samples.push_back({model().originX + between(-200, model().areaWidth + 200),
                               model().originY + between(-200, model().areaHeight + 200),
                               between(-20, model().maxPressure + 50) / between(1, 8), status});
        }
        const int width = between(1, 10);
        const QColor color(between(0, 255), between(0, 255), between(0, 255));
        const bool pressure = between(0, 1) == 1;
        ASSERT_EQ(api().SetPenWidth(type(), width), 0);
        ASSERT_EQ(api().SetPenColor(type(), color.red(), color.green(), color.blue()), 0);
        ASSERT_EQ(api().SetPenStyle(type(), pressure), 0);
        redraw.setPenWidth(width);
        redraw.setColor(color);
        redraw.setPressure(pressure);
        pad().draw(samples);
        redraw.feed(samples);
        EXPECT_TRUE(holdsPoints(pad(), redraw));
        EXPECT_TRUE(holdsCanvas(pad(), redraw)) << "round " << round;
    }
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, ClearLeavesAWhiteCanvasOfTheSameSizeAndThePenAsItWas)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    ASSERT_EQ(api().SetPenWidth(type(), 6), 0);
    ASSERT_EQ(api().SetPenColor(type(), 0, 0, 200), 0);
    redraw.setPenWidth(6);
    redraw.setColor(QColor(0, 0, 200));
    pad().draw(wave(model(), 10));
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(pad().points(), -8);
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    redraw.feed(stroke(model(), {{0.5, 0.5}}));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    pad().draw(wave(model(), 10));
    redraw.feed(wave(model(), 10));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, ClearInTheMiddleOfAStrokeLeavesThePenDown)
{
    ASSERT_TRUE(pad().start());
    Redraw redraw(model(), 400, 200);
    const auto draw = [&](const ScrSimSample& sample) {
        pad().draw({sample});
        redraw.feed(sample);
    };
    draw(sampleAt(model(), {0.1, 0.2}, PenDown));
    draw(sampleAt(model(), {0.4, 0.8}, PenMove));
    ASSERT_EQ(api().Clear(type()), 0);
    redraw.clear();
    draw(sampleAt(model(), {0.7, 0.2}, PenMove));
    draw(sampleAt(model(), {0.9, 0.8}, PenUp));
    EXPECT_TRUE(holdsPoints(pad(), redraw));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    // Nothing is stored for the end of a stroke whose points are gone.
    draw(sampleAt(model(), {0.1, 0.2}, PenDown));
    ASSERT_EQ(api().Clear(type()), 0);
    draw(sampleAt(model(), {0.1, 0.2}, PenUp));
    EXPECT_EQ(pad().points(), -8);
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Drawing, NewObjectBeginsWithThePenAsItComes)
{
    ASSERT_TRUE(pad().start());
    ASSERT_EQ(api().SetPenWidth(type(), 10), 0);
    ASSERT_EQ(api().SetPenColor(type(), 0, 0, 200), 0);
    ASSERT_EQ(api().SetPenStyle(type(), false), 0);
    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 5, 5), 0);
    pad().draw(wave(model(), 10));
    EXPECT_EQ(pad().stop(), 0);
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(pad().points(), -8);
    Redraw redraw(model(), 400, 200);
    pad().draw(wave(model(), 20));
    redraw.feed(wave(model(), 20));
    EXPECT_TRUE(holdsCanvas(pad(), redraw));
    EXPECT_EQ(pad().stop(), 0);
}

SCRIBERA_INSTANTIATE_ALL(Drawing);

// Pads of one family that differ in their pressure.
class OlderPad : public PadTest
{
};

TEST_P(OlderPad, HasItsOwnPressureLimitButTheSameWidthRule)
{
    if (!model().pressureByMember || model().maxPressure != 2048 || std::string(model().name) != "K210") {
        // One text only: the limit is the model's.
        ASSERT_TRUE(pad().start());
        std::int32_t limit = 0;
        EXPECT_EQ(api().getDeviceInfo(type(), 4, &limit), 0);
        EXPECT_EQ(limit, model().maxPressure);
        EXPECT_EQ(pad().stop(), 0);
        return;
    }
    for (const auto& [text, limit] : std::initializer_list<std::pair<const char*, int>>{{"SCT470", 1024},
                                                                                        {"SCK210R1", 1024},
                                                                                        {"SCT480R1", 1024},
                                                                                        {"SCK190", 1024},
                                                                                        {"SCN210", 1024},
                                                                                        {"SCK210", 2048},
                                                                                        {"SCT12345", 2048}}) {
        sim().setText("SCRDAPI_GetDevicePartsVersion", text);
        ASSERT_TRUE(pad().start()) << text;
        Redraw redraw(model(), 400, 200);
        redraw.setMaxPressure(limit);
        std::vector<ScrSimSample> samples = stroke(model(), {{0.1, 0.5}, {0.3, 0.4}, {0.5, 0.6}, {0.7, 0.4}});
        samples[1].pressure = limit;
        samples[2].pressure = limit + 1;
        samples[3].pressure = 300;
        pad().draw(samples);
        redraw.feed(samples);
        EXPECT_TRUE(holdsCanvas(pad(), redraw)) << text;
        EXPECT_TRUE(holdsPoints(pad(), redraw)) << text;
        EXPECT_EQ(pad().stop(), 0);
    }
}

SCRIBERA_INSTANTIATE_ALL(OlderPad);

} // namespace
} // namespace scribera::test

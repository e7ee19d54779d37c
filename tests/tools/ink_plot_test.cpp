// What the pen did over time, as a plot.

#include "support.h"

#include <QColor>
#include <QImage>
#include <QXmlStreamReader>

#include <algorithm>
#include <limits>
#include <map>

namespace {

class InkPlotTest : public InkToolTest
{
};

// The elements of a plot, by name; each with its attributes, and its text as the one without a name.
std::multimap<std::string, std::map<std::string, std::string>> elementsOf(const QByteArray& svg)
{
    std::multimap<std::string, std::map<std::string, std::string>> elements;
    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const std::string name = xml.name().toString().toStdString();
        std::map<std::string, std::string> attributes;
        for (const QXmlStreamAttribute& attribute : xml.attributes())
            attributes[attribute.name().toString().toStdString()] =
                attribute.value().toString().toStdString();
        if (name == "text")
            attributes[""] = xml.readElementText().toStdString();
        elements.emplace(name, attributes);
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return elements;
}

std::vector<std::string> valuesOf(const QByteArray& svg, const char* element, const char* attribute)
{
    std::vector<std::string> values;
    const auto elements = elementsOf(svg);
    const auto [first, last] = elements.equal_range(element);
    for (auto found = first; found != last; ++found)
        values.push_back(found->second.at(attribute));
    return values;
}

bool has(const std::vector<std::string>& values, const char* value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

// In 100 ms to the right, faster in its second half, a pause of 100 ms, a tap.
const std::vector<Point> LineAndTap = {
    {100, 50, 10, 0, 5000, 0}, {150, 50, 30, 0, 5050, 0},  {250, 50, 20, 0, 5100, 0},
    {250, 50, 20, 1, 5100, 0}, {250, 250, 30, 0, 5200, 0}, {250, 250, 30, 1, 5200, 0},
};

} // namespace

TEST_F(InkPlotTest, EveryPanelHasItsCurves)
{
    const QByteArray svg = outputOf({"plot"}, textOf(LineAndTap));
    const std::vector<std::string> expected = {
        // Position, x of both strokes and then y, from 50 to 250; pressure from 10 to 30; speed from 1000 to
        // 2000.
        "80.0,150.0 305.0,110.0 530.0,30.0",
        "980.0,30.0",
        "80.0,190.0 305.0,190.0 530.0,190.0",
        "980.0,30.0",
        "80.0,390.0 305.0,230.0 530.0,310.0",
        "980.0,230.0",
        "305.0,590.0 530.0,430.0",
    };
    EXPECT_EQ(valuesOf(svg, "polyline", "points"), expected);
    const std::vector<std::string> texts = valuesOf(svg, "text", "");
    for (const char* text : {"50", "250", "10", "30", "1000", "2000", "0", "0.1", "0.2", "pressure",
                             "position in pad units: x blue, y orange", "speed in pad units a second"})
        EXPECT_TRUE(has(texts, text)) << text;
}

TEST_F(InkPlotTest, LiftsAreGrey)
{
    const QByteArray svg = outputOf({"plot"}, textOf(LineAndTap));
    EXPECT_EQ(valuesOf(svg, "rect", "x"), (std::vector<std::string>{"0.0", "530.0"}));
    EXPECT_EQ(valuesOf(svg, "rect", "width"), (std::vector<std::string>{"1000.0", "450.0"}));
    EXPECT_EQ(valuesOf(svg, "rect", "fill"), (std::vector<std::string>{"#ffffff", "#e4e4e4"}));
}

TEST_F(InkPlotTest, SpeedIsInMillimetresWhereTheResolutionIsKnown)
{
    const std::vector<std::string> texts =
        valuesOf(outputOf({"plot", "--units-per-mm", "20"}, textOf(LineAndTap)), "text", "");
    for (const char* text : {"50", "100", "speed in mm/s"})
        EXPECT_TRUE(has(texts, text)) << text;
    EXPECT_FALSE(has(texts, "2000"));
}

TEST_F(InkPlotTest, APictureShowsTheSame)
{
    const QImage picture = QImage::fromData(outputOf({"plot", "--png"}, textOf(LineAndTap)), "PNG");
    ASSERT_EQ(picture.size(), QSize(1000, 640));
    EXPECT_EQ(picture.pixelColor(5, 5), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(700, 300), QColor("#e4e4e4"));
    int dark = 0; // the title over the second panel
    for (int x = 80; x < 130; ++x)
        for (int y = 210; y < 224; ++y)
            dark += qGray(picture.pixel(x, y)) < 128;
    EXPECT_GT(dark, 20);
}

TEST_F(InkPlotTest, TheWidestNumbersArePlotted)
{
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    const QByteArray svg = outputOf({"plot"}, textOf({{0, -32768, -32768, 0, smallest, 0},
                                                      {65535, 32767, 32767, 0, smallest + 1, 0},
                                                      {0, 0, 0, 0, largest, 0}}));
    EXPECT_EQ(valuesOf(svg, "polyline", "points").size(), 4U);
    EXPECT_EQ(svg.count("nan") + svg.count("inf"), 0);
    // No time, no speed.
    EXPECT_EQ(valuesOf(outputOf({"plot"}, textOf({{7, 8, 9, 0, 3, 0}})), "polyline", "points"),
              (std::vector<std::string>{"80.0,190.0", "80.0,30.0", "80.0,390.0"}));
}

TEST_F(InkPlotTest, WithoutPointsThereIsNothingToPlot)
{
    const Outcome outcome = runInk({"plot", "-o", path("out")}, textOf({}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error.toStdString(), "scribera-ink: there are no points to plot\n");
}

// The strokes as pictures and vectors, held against the library's own form.

#include "failures.h"
#include "inkdrawing.h"
#include "inkto.h"
#include "signatures.h"
#include "support.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

Drawing drawingOn(const CPadModel& pad)
{
    return {pad, QSize(800, 400), 3, QColor(Qt::black), CanvasDotsPerInch};
}

// In grey, so many times as large as its canvas.
QImage rendered(const QByteArray& svg, int times = 1)
{
    QImage image(800 * times, 400 * times, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QSvgRenderer renderer(svg);
    EXPECT_TRUE(renderer.isValid());
    renderer.render(&painter);
    painter.end();
    return image.convertToFormat(QImage::Format_Grayscale8);
}

constexpr int LightestInk = 223;

bool isInk(const QImage& image, int x, int y)
{
    return x >= 0 && y >= 0 && x < image.width() && y < image.height() &&
           image.constScanLine(y)[x] <= LightestInk;
}

// The share of one picture's ink that lies within a pixel of the other's.
double shareNear(const QImage& one, const QImage& other)
{
    int ink = 0;
    int near = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x) {
            if (!isInk(one, x, y))
                continue;
            ++ink;
            bool isNear = false;
            for (int around = 0; around < 9; ++around)
                isNear = isNear || isInk(other, x + around % 3 - 1, y + around / 3 - 1);
            near += isNear;
        }
    return ink == 0 ? 1 : static_cast<double>(near) / ink;
}

void expectSameInk(const QImage& one, const QImage& other)
{
    ASSERT_EQ(one.size(), other.size());
    EXPECT_GE(shareNear(one, other), 0.995);
    EXPECT_GE(shareNear(other, one), 0.995);
}

std::size_t strokesWithLines(const CInkSnapshot& ink)
{
    std::size_t strokes = 0;
    std::size_t points = 0; // of the open one
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        points = ink.At(index).ucStatus == kStatusOnStroke ? points + 1 : 0;
        strokes += points == 2;
    }
    return strokes;
}

int pathsIn(const QByteArray& svg)
{
    QXmlStreamReader xml(svg);
    int paths = 0;
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("path"))
            ++paths;
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return paths;
}

class InkDrawingTest : public InkToolTest
{
};

} // namespace

TEST_F(InkDrawingTest, TheCompactSvgShowsTheSameInATenthOfTheSize)
{
    int index = 0;
    for (const CInkSnapshot& ink : recordedSignatures()) {
        SCOPED_TRACE(index++);
        const Drawing drawing = drawingOn(g_PadT580);
        const QByteArray compact = toCompactSvg(ink, drawing);
        const QByteArray exported = toSvg(ink, drawing);
        EXPECT_LE(compact.size() * 10, exported.size());
        EXPECT_EQ(static_cast<std::size_t>(pathsIn(compact)), strokesWithLines(ink));
        expectSameInk(rendered(compact), rendered(exported));
        expectSameInk(rendered(compact, 4), rendered(exported, 4));
    }
}

TEST_F(InkDrawingTest, TheCompactSvgShowsTheSameOfRandomStrokes)
{
    qint64 size = 0;
    qint64 exportedSize = 0;
    for (std::uint64_t seed = 0; seed < 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const CInkSnapshot ink = randomSignature(padOf(seed), seed);
        const Drawing drawing = drawingOn(padOf(seed));
        const QByteArray compact = toCompactSvg(ink, drawing);
        const QByteArray exported = toSvg(ink, drawing);
        size += compact.size();
        exportedSize += exported.size();
        EXPECT_EQ(static_cast<std::size_t>(pathsIn(compact)), strokesWithLines(ink));
        expectSameInk(rendered(compact), rendered(exported));
    }
    EXPECT_LE(size * 10, exportedSize);
}

TEST_F(InkDrawingTest, TheCompactSvgOfWhatIsHardToOutline)
{
    const auto expectSame = [](const std::vector<Point>& points, int penWidth) {
        SCOPED_TRACE(textOf(points).toStdString());
        CInkPointList list;
        for (const Point& point : points) {
            _POINTDATA stored{};
            stored.usX = static_cast<std::uint16_t>(point.x);
            stored.sY = static_cast<std::int16_t>(point.y);
            stored.sPressure = static_cast<std::int16_t>(point.pressure);
            stored.ucStatus = static_cast<std::uint8_t>(point.status);
            list.Append(stored);
        }
        Drawing drawing = drawingOn(g_PadK210);
        drawing.penWidth = penWidth;
        expectSameInk(rendered(toCompactSvg(list.Snapshot(), drawing)),
                      rendered(toSvg(list.Snapshot(), drawing)));
    };
    // There and back on the same line, sharp corners, a dot, a dot within a line, a tiny loop of a broad pen,
    // widths that jump, points beyond the edges.
    expectSame({{500, 500, 900}, {1500, 600, 900}, {500, 500, 900}, {1500, 600, 900}}, 10);
    expectSame({{500, 500, 900}, {900, 1200, 900}, {1000, 500, 900}, {1100, 1200, 900}}, 10);
    expectSame({{500, 500, 900}, {500, 500, 900}, {500, 500, 900}}, 10);
    expectSame({{500, 500, 100}, {700, 500, 100}, {700, 500, 2000}, {900, 500, 100}}, 3);
    expectSame({{500, 500, 1500},
                {506, 500, 1500},
                {509, 506, 1500},
                {506, 512, 1500},
                {500, 512, 1500},
                {497, 506, 1500},
                {500, 500, 1500},
                {506, 500, 1500},
                {509, 506, 1500}},
               10);
    expectSame({{500, 500, 50}, {600, 520, 1900}, {700, 500, 50}, {800, 520, 1900}, {900, 530, 1000}}, 10);
    expectSame({{0, 0, 800}, {60000, 32000, 800}, {1, -32000, 800}}, 3);
    expectSame({}, 3);
}

TEST_F(InkDrawingTest, PicturesHaveTheResolutionThatIsAskedFor)
{
    const QByteArray stream = toStreamText(recordedSignatures().front());
    const QByteArray svg = outputOf({"to-svg", "--model", "T580"}, stream);
    for (const int dpi : {75, 150, 600}) {
        SCOPED_TRACE(dpi);
        const QImage picture = QImage::fromData(
            outputOf({"to-png", "--model", "T580", "--dpi", QString::number(dpi)}, stream), "PNG");
        EXPECT_EQ(picture.size(), QSize(800, 400) * dpi / 150);
        EXPECT_NEAR(picture.dotsPerMeterX(), dpi / 0.0254, 1);
        if (dpi >= 150)
            expectSameInk(picture.convertToFormat(QImage::Format_Grayscale8), rendered(svg, dpi / 150));
    }
}

TEST_F(InkDrawingTest, ThePageHasVectors)
{
    const CInkSnapshot ink = recordedSignatures().front();
    const QByteArray pdf = outputOf({"to-pdf", "--model", "T580", "--color", "#0000ff"}, toStreamText(ink));
    EXPECT_FALSE(pdf.contains("/Subtype /Image"));
    const QString file = write("signature.pdf", pdf);
    ASSERT_EQ(QProcess::execute("pdftoppm", {"-png", "-singlefile", "-r", "600", file, path("page")}), 0);
    const QImage page(path("page.png"));
    ASSERT_EQ(page.size(), QSize(3200, 1600)); // 800 x 400 dots at 150 dots per inch
    expectSameInk(page.convertToFormat(QImage::Format_Grayscale8),
                  rendered(toSvg(ink, {g_PadT580, QSize(800, 400), 3, QColor(Qt::blue), 150}), 4));
    bool isBlue = false;
    for (int x = 0; x < page.width(); ++x)
        isBlue = isBlue || page.pixelColor(x, page.height() / 2) == QColor(Qt::blue);
    EXPECT_TRUE(isBlue);
}

TEST_F(InkDrawingTest, WhatIsTooLargeIsRefused)
{
    const Outcome outcome = runInk({"to-png", "--model", "K210", "--size", "32767x32767", "--dpi", "2400"},
                                   textOf(threeStrokes()));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error.toStdString(),
              "scribera-ink: the picture has more than a gigabyte, or more than there is memory\n");
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // The exported form names fonts: Qt wants an application for them, and complains of their size.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "default.warning=false");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

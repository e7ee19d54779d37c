// The object without a window, and canvases of every size for both kinds.

#include <climits>
#include <filesystem>

#include <QCoreApplication>

#include "harness.h"

namespace scribera::test {
namespace {

class Windowless : public PadTest
{
};

TEST_P(Windowless, NeedsNoApplicationForAnythingUpToSavingEveryType)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    ASSERT_TRUE(pad().start({.width = 640, .height = 320}));
    EXPECT_EQ(api().SetPenWidth(type(), 4), 0);
    EXPECT_EQ(api().SetPenColor(type(), 20, 40, 160), 0);
    EXPECT_EQ(api().SetPenStyle(type(), true), 0);
    pad().draw(wave(model(), 60));
    EXPECT_EQ(pad().points(), 62);
    for (const bool clip : {false, true}) {
        EXPECT_EQ(api().SetSaveCenterImageClip(type(), clip, clip ? 6 : 0, clip ? 6 : 0), 0);
        const std::string name = clip ? "clipped." : "whole.";
        for (const FileType& file : fileTypes)
            EXPECT_EQ(pad().save(file.id, name + file.suffix), 0);
        EXPECT_EQ(fileContent(name + "bmp").substr(0, 2), "BM");
        EXPECT_EQ(fileContent(name + "jpg").substr(0, 3), "\xff\xd8\xff");
        EXPECT_EQ(fileContent(name + "png").substr(1, 3), "PNG");
        EXPECT_EQ(fileContent(name + "pdf").substr(0, 5), "%PDF-");
        EXPECT_NE(fileContent(name + "pdf").find("%%EOF"), std::string::npos);
        EXPECT_NE(fileContent(name + "svg").find("</svg>"), std::string::npos);
        const QImage saved(QString::fromStdString(name + "bmp"));
        EXPECT_EQ(saved.size() == QSize(640, 320), !clip) << saved.width() << " x " << saved.height();
    }
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(pad().points(), -8);
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

TEST_P(Windowless, CanvasHasTheSizeThatWasAskedForAndIsWhiteWhereNothingWasWritten)
{
    ASSERT_TRUE(pad().start({.width = 400, .height = 200}));
    pad().draw(stroke(model(), {{0.25, 0.5}, {0.75, 0.5}}));
    const QImage canvas = pad().canvas();
    ASSERT_EQ(canvas.size(), QSize(400, 200));
    EXPECT_EQ(canvas.pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(canvas.pixel(399, 199), qRgb(255, 255, 255));
    EXPECT_NE(canvas.pixel(200, 99) & 0xffffff, 0xffffffu & 0xffffff);
}

TEST_P(Windowless, PlaceOfTheWidgetDoesNotMatter)
{
    for (const int place : {INT_MIN, -5, 0, INT_MAX}) {
        ASSERT_TRUE(pad().start({.width = 300, .height = 100, .x = place, .y = place}));
        pad().draw(wave(model(), 20));
        EXPECT_EQ(pad().canvas().size(), QSize(300, 100));
    }
}

TEST_P(Windowless, ConstructorWritesItsLines)
{
    ASSERT_NO_FATAL_FAILURE(logged([&] { ASSERT_TRUE(pad().start({.width = 400, .height = 200})); }));
    const Texts texts = textsOf(mainLog(), method(model().windowlessClass));
    ASSERT_GE(texts.size(), 4u);
    EXPECT_EQ(texts[0], "Enter, nWidth=400, nHeight=200");
    EXPECT_EQ(texts[1], "width=400, height=200");
    EXPECT_TRUE(texts[2].starts_with("m_pDoConfirmOrCancelKeyActionThread=")) << texts[2];
    EXPECT_EQ(texts.back(), "leave !");

    // The thread is told of the object it works for.
    const std::string thread = "C" + model().name + "Obj_DoConfirmOrCancelKeyActionThread";
    EXPECT_EQ(textsOf(inThreadLog(), thread + "::" + thread + "()"),
              Texts{"enter, m_pSignObj=" + hex(Library::instance().signWidget)});
}

TEST_P(Windowless, ThreadWritesEntryAndLeave)
{
    setLogging(true);
    ASSERT_TRUE(pad().start());
    const std::string run = "C" + model().name + "Obj_DoConfirmOrCancelKeyActionThread::run()";
    EXPECT_TRUE(waitUntil([&] { return textsOf(inThreadLog(), run) == Texts{"enter"}; }));
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(textsOf(inThreadLog(), run), (Texts{"enter", "Leave !"}));
}

TEST_P(Windowless, LinesNameTheWindowlessClass)
{
    setLogging(true);
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 10));
    sim().pressKey(1);
    sim().pressKey(0);
    pad().canvas();
    api().Clear(type());
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    for (const std::vector<LogLine>& lines : {mainLog(), inThreadLog()}) {
        for (const LogLine& line : lines)
            EXPECT_EQ(line.label.find("SignWidget::"), std::string::npos) << testing::PrintToString(line);
    }
}

TEST_P(Windowless, SegmentWritesEntryAndLeave)
{
    ASSERT_TRUE(pad().start());
    logged([&] { pad().draw(stroke(model(), {{0.25, 0.5}, {0.75, 0.5}})); });
    const Texts texts = textsOf(mainLog(), method("StartSignOnCanvas"));
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_TRUE(texts[0].starts_with("enter, dblX=")) << texts[0];
    EXPECT_EQ(texts[1], "leave !");
}

TEST_P(Windowless, InkThatCameBeforeTheFirstSaveIsThere)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 40));
    const QImage first = pad().canvas();
    ASSERT_FALSE(first.isNull());
    QImage blank(first.size(), first.format());
    blank.fill(Qt::white);
    EXPECT_NE(first, blank);
    EXPECT_EQ(pad().canvas(), first);
}

SCRIBERA_INSTANTIATE(Windowless, Kind::Windowless);

// ---- canvas sizes

class Canvas : public PadTest
{
protected:
    void useEmptyCanvases(const std::vector<QSize>& sizes, StartOptions options = {})
    {
        for (const QSize& size : sizes) {
            options.width = size.width();
            options.height = size.height();
            useEmptyCanvas(options);
        }
    }

    // Points are stored and told, whatever the canvas; pictures cannot be saved from an empty one.
    void useEmptyCanvas(const StartOptions& options)
    {
        SCOPED_TRACE(std::to_string(options.width) + " x " + std::to_string(options.height));
        ASSERT_TRUE(pad().start(options));
        pad().draw(wave(model(), 20));
        EXPECT_EQ(pad().points(), 22);
        Packet packet{21, 0, 0, 0, 0};
        EXPECT_EQ(api().getPackets(type(), &packet), 0);
        EXPECT_EQ(packet.status, 1);
        for (const bool clip : {false, true}) {
            EXPECT_EQ(api().SetSaveCenterImageClip(type(), clip, clip ? 9 : 0, clip ? 9 : 0), 0);
            for (const int image : {ImageBmp, ImageJpeg, ImagePng}) {
                std::filesystem::remove("none.png");
                EXPECT_EQ(pad().save(image, "none.png"), -8);
            }
            EXPECT_EQ(pad().save(ImagePdf, "empty.pdf"), 0);
            EXPECT_EQ(pad().save(ImageSvg, "empty.svg"), 0);
        }
        EXPECT_EQ(api().Clear(type()), 0);
        EXPECT_EQ(pad().points(), -8);
    }
};

const std::vector<QSize> emptySizes = {{0, 0},        {0, 200},  {200, 0},           {-1, -1},
                                       {-1, 200},     {200, -1}, {INT_MIN, INT_MIN}, {INT_MIN, 200},
                                       {200, INT_MIN}};

TEST_P(Canvas, EmptyOrNegativeSizeDrawsNothingAndStoresPoints)
{
    useEmptyCanvases(emptySizes);
}

TEST_P(Canvas, EmptyOrNegativeSizeByWindowId)
{
    useEmptyCanvases(emptySizes, {.byWindowId = true});
}

TEST_P(Canvas, AbsurdSizeDrawsNothingAndStoresPoints)
{
    // More than 1 GiB of pixels, also after a window system has cut it to what it can show.
    useEmptyCanvases({{INT_MAX, INT_MAX}, {65536, 65536}, {16385, 16384}, {INT_MAX, 65536}});
}

TEST_P(Canvas, SmallestCanvasIsSaved)
{
    ASSERT_TRUE(pad().start({.width = 1, .height = 1}));
    pad().draw(wave(model(), 20));
    const QImage canvas = pad().canvas();
    ASSERT_EQ(canvas.size(), QSize(1, 1));
    EXPECT_NE(canvas.pixel(0, 0), qRgb(255, 255, 255));
}

SCRIBERA_INSTANTIATE_ALL(Canvas);

class WindowlessCanvas : public Canvas
{
};

TEST_P(WindowlessCanvas, LongThinSizesBeyondTheLimitDrawNothing)
{
    useEmptyCanvases({{INT_MAX, 1}, {1, INT_MAX}});
}

SCRIBERA_INSTANTIATE(WindowlessCanvas, Kind::Windowless);

class WidgetCanvas : public Canvas
{
};

TEST_P(WidgetCanvas, EmptyOrNegativeSizeInAHiddenWindow)
{
    useEmptyCanvases(emptySizes, {.parentShown = false});
}

TEST_P(WidgetCanvas, PlacesAtTheEndsOfTheNumbersAreSurvived)
{
    for (const int place : {INT_MIN, -100000, INT_MAX}) {
        for (const int size : {INT_MIN, 0, 100, INT_MAX}) {
            SCOPED_TRACE(std::to_string(place) + ", size " + std::to_string(size));
            ASSERT_TRUE(pad().start({.width = size, .height = size, .x = place, .y = place}));
            pad().draw(wave(model(), 20));
            EXPECT_EQ(pad().points(), 22);
        }
    }
}

SCRIBERA_INSTANTIATE(WidgetCanvas, Kind::Widget);

} // namespace
} // namespace scribera::test

// Saving the inked part of the canvas: the box, its margins, and its lines.

#include <algorithm>
#include <climits>

#include "pen.h"

namespace scribera::test {
namespace {

class Clip : public OpenPadTest
{
protected:
    int clip(bool on, int marginX, int marginY) const
    {
        return api().SetSaveCenterImageClip(type(), on, marginX, marginY);
    }
    QImage whole() // the canvas whatever the clip setting; leaves clipping off
    {
        EXPECT_EQ(clip(false, 0, 0), 0);
        return pad().canvas();
    }
};

TEST_P(Clip, SavesTheBoxOfTheInkAndItsMargins)
{
    pad().draw(stroke(model(), {{0.4, 0.3}, {0.6, 0.7}, {0.5, 0.2}}));
    const QImage canvas = whole();
    const std::pair<int, int> margins[] = {{0, 5},
                                           {5, 0},
                                           {1, 1},
                                           {10, 20},
                                           {150, 3},
                                           {3, 150},
                                           {1000, 1000},
                                           {99998, 99998},
                                           {99999, 0},
                                           {INT_MAX, 0},
                                           {0, INT_MAX},
                                           {INT_MAX, INT_MAX},
                                           {INT_MAX - 1, INT_MAX - 200}};
    for (const auto& [x, y] : margins) {
        ASSERT_EQ(clip(true, x, y), 0);
        EXPECT_TRUE(sameColors(pad().canvas(), canvas.copy(inkBox(canvas, x, y)))) << x << ", " << y;
    }
}

TEST_P(Clip, MarginsStopAtEveryEdge)
{
    ASSERT_TRUE(pad().start({.width = 100, .height = 50}));
    for (const auto& [x, y] :
         {std::pair(0.0, 0.0), std::pair(0.95, 0.9), std::pair(0.0, 0.9), std::pair(0.95, 0.0)}) {
        ASSERT_EQ(api().Clear(type()), 0);
        pad().draw(stroke(model(), {{x, y, 0.02}, {x + 0.01, y, 0.02}}));
        const QImage canvas = whole();
        ASSERT_FALSE(isWhite(canvas));
        for (const int margin : {1, 10, 60}) {
            ASSERT_EQ(clip(true, margin, margin), 0);
            EXPECT_TRUE(sameColors(pad().canvas(), canvas.copy(inkBox(canvas, margin, margin))));
        }
    }
}

TEST_P(Clip, FaintAndColoredInkIsInk)
{
    for (const QColor& color : {QColor(254, 255, 255), QColor(255, 255, 254), QColor(255, 0, 255)}) {
        ASSERT_EQ(api().Clear(type()), 0);
        ASSERT_EQ(api().SetPenColor(type(), color.red(), color.green(), color.blue()), 0);
        pad().draw(stroke(model(), {{0.3, 0.4}, {0.5, 0.5}}));
        const QImage canvas = whole();
        const QRect box = inkBox(canvas, 4, 6);
        ASSERT_FALSE(box.isNull());
        ASSERT_EQ(clip(true, 4, 6), 0);
        EXPECT_TRUE(sameColors(pad().canvas(), canvas.copy(box)));
    }
}

TEST_P(Clip, WithoutAnyMarginItIsOff)
{
    pad().draw(wave(model(), 10));
    EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
    const QImage canvas = whole();
    EXPECT_EQ(clip(true, 0, 0), 0);
    EXPECT_TRUE(sameColors(pad().canvas(), canvas));
    EXPECT_EQ(clip(true, 0, 5), 0);
    EXPECT_TRUE(sameColors(pad().canvas(), canvas.copy(inkBox(canvas, 0, 5))));
    EXPECT_EQ(clip(true, -1, 0), -2);
    EXPECT_EQ(clip(true, 0, -1), -2);
    EXPECT_EQ(clip(false, INT_MIN, INT_MIN), -2);
    EXPECT_TRUE(sameColors(pad().canvas(), canvas.copy(inkBox(canvas, 0, 5)))) << "a refusal changes nothing";
    EXPECT_EQ(clip(true, 0, 0), 0);
    EXPECT_TRUE(sameColors(pad().canvas(), canvas)) << "no margins switch it off again";
    EXPECT_EQ(clip(true, 7, 0), 0);
    EXPECT_EQ(clip(false, 7, 7), 0);
    EXPECT_TRUE(sameColors(pad().canvas(), canvas));
}

// Without ink the margins widen edges that no pixel has moved: nothing of the canvas at first, then some of
// it or all.
TEST_P(Clip, PointsWithoutInkGiveWhatTheMarginsReach)
{
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    const QImage canvas = whole();
    ASSERT_TRUE(isWhite(canvas));
    const std::pair<int, int> margins[] = {
        {1, 1},         {5, 0},         {0, 99999},     {99598, 99798}, {99599, 99799},    {99599, 99800},
        {99600, 99800}, {99700, 99799}, {99700, 99999}, {99998, 99998}, {99999, 99999},    {100000, 99850},
        {INT_MAX, 1},   {1, INT_MAX},   {99999, 99798}, {99998, 99999}, {INT_MAX, INT_MAX}};
    for (const auto& [x, y] : margins) {
        SCOPED_TRACE(testing::Message() << "margins " << x << " and " << y);
        const auto reached = [](int margin, int size) {
            return std::pair(std::max(99999 - margin, 0), margin <= size ? margin - 1 : size - 1);
        };
        const auto [left, right] = reached(x, 400);
        const auto [top, bottom] = reached(y, 200);
        const QImage expected = canvas.copy(QRect(QPoint(left, top), QPoint(right, bottom)));
        ASSERT_EQ(clip(true, x, y), 0);
        for (const auto& [imageType, path] :
             {std::pair(ImageBmp, "no.bmp"), std::pair(ImageJpeg, "no.jpg"), std::pair(ImagePng, "no.png")}) {
            EXPECT_EQ(pad().save(imageType, path), expected.isNull() ? -8 : 0) << path;
            EXPECT_FALSE(takeImage(pad(), imageType).null);
            if (expected.isNull()) {
                EXPECT_EQ(takeImage(pad(), imageType).text, "") << path;
                EXPECT_EQ(takeImageEx(pad(), imageType, true).text, "") << path;
                EXPECT_EQ(takeImageEx(pad(), imageType, false).text, "") << path;
            } else {
                EXPECT_EQ(loaded(path).size(), expected.size()) << path;
                EXPECT_TRUE(
                    samePixels(decoded(takeImageEx(pad(), ImagePng, false).bytes(), "PNG"), expected));
            }
        }
        EXPECT_EQ(pad().save(ImagePdf, "no.pdf"), 0);
        EXPECT_EQ(pad().save(ImageSvg, "no.svg"), 0);
        EXPECT_FALSE(takeSvg(pad()).null);
    }
    EXPECT_EQ(pad().points(), 2);
}

TEST_P(Clip, HoldsForEveryText)
{
    pad().draw(wave(model(), 10));
    const QImage canvas = whole();
    ASSERT_EQ(clip(true, 12, 9), 0);
    const QImage clipped = canvas.copy(inkBox(canvas, 12, 9));
    ASSERT_NE(clipped.size(), canvas.size());
    EXPECT_TRUE(sameColors(decoded(takeImage(pad(), ImageBmp).bytes(), "BMP"), clipped));
    EXPECT_TRUE(isCanvasOnNothing(decoded(takeImage(pad(), ImagePng).bytes(), "PNG"), clipped));
    EXPECT_TRUE(samePixels(decoded(takeImageEx(pad(), ImagePng, false).bytes(), "PNG"), clipped));
    EXPECT_TRUE(samePixels(decoded(takeImage(pad(), ImageJpeg).bytes(), "JPG"),
                           decoded(encoded(clipped, "JPG"), "JPG")));
}

TEST_P(Clip, SettingWritesItsLines)
{
    setLogging(true);
    EXPECT_EQ(clip(true, 3, 4), 0);
    EXPECT_EQ(clip(true, 0, 0), 0);
    setLogging(false);
    EXPECT_EQ(textsOf(mainLog(), method("SetSaveClipImageMargin")),
              (Texts{"Enter, bClipImage=1, nClipMarginX=3, nClipMarginY=4", "leave with m_bClipImage=1",
                     "Enter, bClipImage=1, nClipMarginX=0, nClipMarginY=0", "leave with m_bClipImage=0"}));
    EXPECT_EQ(textsOf(mainLog(), exported("SetSaveCenterImageClip")).front(),
              printed("Enter, nDeviceType=%d, bClipImage=1, nClipMarginX=3, nClipMarginY=4", type()));
}

TEST_P(Clip, ScanWritesALineForEveryEdgeThatMoves)
{
    ASSERT_TRUE(pad().start({.width = 14, .height = 9}));
    ASSERT_EQ(api().SetPenStyle(type(), false), 0);
    ASSERT_EQ(api().SetPenWidth(type(), 1), 0);
    ASSERT_EQ(api().SetPenColor(type(), 10, 20, 200), 0);
    pad().draw(stroke(model(), {{0.7, 0.2}, {0.3, 0.7}, {0.6, 0.8}}));
    const QImage canvas = whole();
    ASSERT_EQ(clip(true, 1, 2), 0);
    const std::vector<LogLine> lines = logged([&] { EXPECT_EQ(pad().save(ImageBmp, "clipped.bmp"), 0); });

    const std::string scan = method("CheckSignImageBoundingBox");
    const std::vector<std::string> tags = {"[x < nLeft]", "[x > nRight]", "[y < nTop]", "[y > nBottom]"};
    std::vector<std::pair<std::string, std::string>> expected = {{scan, "Enter, nWidth=14, nHeight=9"}};
    int left = 99999;
    int top = 99999;
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 14; ++x) {
            const QRgb p = canvas.pixel(x, y);
            if ((p & 0xffffff) == 0xffffff)
                continue;
            const std::string text =
                printed("[%d, %d]-<R=%d, G=%d, B=%d, A=255> ", x, y, qRed(p), qGreen(p), qBlue(p));
            const bool moves[] = {x<left, x> right, y<top, y> bottom};
            for (std::size_t edge = 0; edge < 4; ++edge) {
                if (moves[edge])
                    expected.emplace_back(tags[edge], text);
            }
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
            expected.emplace_back(scan, "<line end>");
        }
    }
    ASSERT_GE(right, 0);
    expected.emplace_back(scan,
                          printed("nLeft=%d, nRight=%d, nTop=%d, nBottom=%d", left, right, top, bottom));
    const QRect box = inkBox(canvas, 1, 2);
    expected.emplace_back(scan, printed("leave with rcBoundBox.Left=%d, Right=%d, Top=%d, Bottom=%d",
                                        box.left(), box.right(), box.top(), box.bottom()));
    std::vector<std::pair<std::string, std::string>> seen;
    for (const LogLine& line : lines) {
        if (line.label == scan || std::find(tags.begin(), tags.end(), line.label) != tags.end())
            seen.emplace_back(line.label, line.text);
    }
    EXPECT_EQ(seen, expected);
}

TEST_P(Clip, SavingWritesTheBoxOnlyWhenItAskedForOne)
{
    ASSERT_TRUE(pad().start({.width = 60, .height = 30}));
    pad().draw(wave(model(), 5));
    const QRect box = inkBox(whole(), 3, 2);
    for (const bool on : {true, false}) {
        ASSERT_EQ(clip(on, 3, 2), 0);
        logged([&] { EXPECT_EQ(pad().save(ImageBmp, "box.bmp"), 0); });
        const Texts texts = textsOf(mainLog(), method("SaveDrawingImage"));
        ASSERT_EQ(texts.size(), on ? 3u : 2u);
        EXPECT_TRUE(texts[0].starts_with("enter, nImageTypeID=1, pImageFilePath=")) << texts[0];
        EXPECT_TRUE(texts[0].ends_with(", nDPI=300")) << texts[0];
        if (on) {
            EXPECT_EQ(texts[1], printed("after call CheckSignImageBoundingBox(), l=%d, t=%d, r=%d, b=%d",
                                        box.left(), box.top(), box.right(), box.bottom()));
        }
        EXPECT_EQ(texts.back(), "leave with nResult=0");
    }
}

SCRIBERA_INSTANTIATE_ALL(Clip);

} // namespace
} // namespace scribera::test

// The box that clipped exports take, against its formula written out and Qt's own copy, for margins that
// hosts set and for those that they should not.
#include "export/boundingbox.h"

#include "pen.h"

#include <limits>

namespace scribera::test {
namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();

QRect formula(const QImage& image, long long marginX, long long marginY)
{
    const QRect none(QPoint(99999, 99999), QPoint(-1, -1));
    const QRect ink = inkOf(image).isNull() ? none : inkOf(image);
    long long left = ink.left();
    long long top = ink.top();
    long long right = ink.right();
    long long bottom = ink.bottom();
    left = left - marginX < 0 ? 0 : left - marginX;
    top = top - marginY < 0 ? 0 : top - marginY;
    right = right + marginX < image.width() ? right + marginX : image.width() - 1;
    bottom = bottom + marginY < image.height() ? bottom + marginY : image.height() - 1;
    return {QPoint(static_cast<int>(left), static_cast<int>(top)),
            QPoint(static_cast<int>(right), static_cast<int>(bottom))};
}

// Transparent pixels count too, which equality of images would not look beneath.
bool sameImages(const QImage& seen, const QImage& expected)
{
    if (seen.isNull() || expected.isNull())
        return seen.isNull() && expected.isNull();
    return seen.format() == expected.format() && same(seen, expected);
}

void expectLiteral(const QImage& image, int marginX, int marginY)
{
    SCOPED_TRACE(testing::Message() << image.width() << " x " << image.height() << ", margins " << marginX
                                    << " and " << marginY);
    const QRect box = CheckSignImageBoundingBox(image, image.rect(), {true, marginX, marginY}, {"", "", ""});
    const QRect expected = formula(image, marginX, marginY);
    ASSERT_EQ(box, expected);
    ASSERT_TRUE(sameImages(CopyOfRect(image, box), image.copy(expected)));
}

void expectLiteralForManyMargins(const QImage& image)
{
    // Around all places where something begins: at the edges, and where no ink meets the image.
    std::vector<int> margins = {0, 1, 2, 5, 100, 49999, 50000, 99900, intMax - 100000, intMax - 1, intMax};
    for (const int start : {99999 - image.width(), 99999 - image.height(), 99999}) {
        for (int near = -3; near <= 3; ++near)
            margins.push_back(start + near);
    }
    for (const int marginX : margins) {
        for (const int marginY : margins) {
            ASSERT_NO_FATAL_FAILURE(expectLiteral(image, marginX, marginY));
        }
    }
}

TEST(ClipBox, OfInkIsThatOfTheFormula)
{
    QImage image = blank(40, 30);
    image.setPixel(11, 7, 0xFFFEFFFF);
    expectLiteralForManyMargins(image);
    image.setPixel(39, 29, 0xFF0000FF);
    image.setPixel(0, 13, 0x00000000);
    expectLiteralForManyMargins(image);
}

TEST(ClipBox, OfNoInkIsThatOfTheFormula)
{
    expectLiteralForManyMargins(blank(40, 30));
    expectLiteralForManyMargins(blank(1, 1));
}

TEST(ClipBox, OfNoInkOnAnImmenseCanvasIsThatOfTheFormula)
{
    const QImage image = blank(60000, 3);
    for (const int marginX : {0, 39998, 39999, 40000, 49998, 49999, 50000, 50001, 59999, 60000, 60001}) {
        for (const int marginY : {99995, 99996, 99997, 99998, 99999})
            ASSERT_NO_FATAL_FAILURE(expectLiteral(image, marginX, marginY));
    }
}

TEST(ClipBox, OfNoInkIsTheWholeImageWhereTheRectangleIsNull)
{
    const QImage image = blank(40, 30);
    const QRect box =
        CheckSignImageBoundingBox(image, image.rect(), {true, 99999 - 40, 99999 - 30}, {"", "", ""});
    EXPECT_TRUE(box.isNull());
    EXPECT_EQ(CopyOfRect(image, box).size(), image.size());
    const QRect next =
        CheckSignImageBoundingBox(image, image.rect(), {true, 99999 - 40 + 2, 99999 - 30 + 1}, {"", "", ""});
    EXPECT_EQ(CopyOfRect(image, next).size(), QSize(2, 1));
}

TEST(ClipBox, OfNegativeMarginsStaysWithinIntegers)
{
    QImage image = blank(40, 30);
    for (int round = 0; round < 2; ++round) {
        for (const int margin : {-1, -20, -99999, intMin + 1, intMin}) {
            const QRect box =
                CheckSignImageBoundingBox(image, image.rect(), {true, margin, margin}, {"", "", ""});
            EXPECT_GT(box.left(), box.right()) << margin;
            EXPECT_TRUE(CopyOfRect(image, box).isNull()) << margin;
        }
        image.setPixel(11, 7, 0xFF000000);
    }
}

TEST(CopyOfRect, IsQtsOwnWhereverTheRectangleLies)
{
    QImage image = blank(40, 30);
    image.setPixel(5, 5, 0xFF0000FF);
    for (const int left : {-60, -50, -49, -1, 0, 5, 39, 40, 41, 500}) {
        for (const int top : {-60, -31, -30, -1, 0, 5, 29, 30, 31, 500}) {
            for (const QSize& size : {QSize(50, 30), QSize(1, 1), QSize(0, 0), QSize(0, 5), QSize(-3, 4)}) {
                const QRect rect(QPoint(left, top), size);
                EXPECT_TRUE(sameImages(CopyOfRect(image, rect), image.copy(rect)))
                    << left << ", " << top << ", " << size.width() << " x " << size.height();
            }
        }
    }
}

TEST(CopyOfRect, OfARectangleBeyondReasonIsNoneOrEmpty)
{
    const QImage image = blank(40, 30);
    for (const QRect& rect :
         {QRect(QPoint(0, 0), QPoint(intMax, intMax)), QRect(QPoint(intMin, intMin), QPoint(intMax, intMax)),
          QRect(QPoint(intMax, 0), QPoint(intMin, 0)), QRect(QPoint(0, 0), QPoint(1 << 20, 1 << 20))})
        EXPECT_TRUE(CopyOfRect(image, rect).isNull());
    QImage empty(6, 3, QImage::Format_ARGB32);
    empty.fill(0);
    for (const QPoint& corner :
         {QPoint(intMax - 5, 0), QPoint(0, intMax - 2), QPoint(intMin, intMin), QPoint(intMax - 5, intMin)})
        EXPECT_TRUE(
            sameImages(CopyOfRect(image, QRect(corner, QPoint(corner.x() + 5, corner.y() + 2))), empty));
}

} // namespace
} // namespace scribera::test

// White made transparent in one pass, against the steps that define it.
#include "export/imagefiles.h"

#include <QColor>
#include <QImage>

#include <random>

#include <gtest/gtest.h>

namespace {

QImage byMask(QImage image)
{
    image.setAlphaChannel(image.createMaskFromColor(QColor(Qt::white).rgb(), Qt::MaskOutColor));
    return image;
}

void expectSame(const QImage& image, bool forPng = false)
{
    const QImage made = WithTransparentWhite(image, forPng);
    const QImage expected = forPng ? byMask(image).convertToFormat(QImage::Format_ARGB32) : byMask(image);
    ASSERT_EQ(made.format(), expected.format());
    ASSERT_EQ(made, expected);
    // Equality of images takes no notice of what lies beneath transparency; a file would show it.
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x)
            ASSERT_EQ(reinterpret_cast<const QRgb*>(made.constScanLine(y))[x],
                      reinterpret_cast<const QRgb*>(expected.constScanLine(y))[x])
                << x << ", " << y;
    }
    EXPECT_EQ(made.dotsPerMeterX(), expected.dotsPerMeterX());
    EXPECT_EQ(made.dotsPerMeterY(), expected.dotsPerMeterY());
}

// Noise with much white and nearly white in it; all alpha bytes lie at or above leastAlpha.
QImage noise(int width, int height, QImage::Format format, int leastAlpha)
{
    std::mt19937 random(static_cast<unsigned>(width * height + leastAlpha)); // the same every time
    const auto below = [&random](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    QImage image(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int alpha = leastAlpha + below(256 - leastAlpha);
            const QRgb colours[] = {0xFFFFFFFF, qRgba(255, 255, 255, alpha), qRgba(254, 255, 255, alpha),
                                    qRgba(below(256), below(256), below(256), alpha)};
            reinterpret_cast<QRgb*>(image.scanLine(y))[x] = colours[below(4)];
        }
    }
    image.setDotsPerMeterX(5905);
    image.setDotsPerMeterY(11811);
    return image;
}

TEST(TransparentWhite, IsThatOfTheMaskOnOpaquePictures)
{
    for (const int width : {1, 3, 16, 17, 131}) {
        expectSame(noise(width, 29, QImage::Format_ARGB32, 255));
        expectSame(noise(width, 29, QImage::Format_ARGB32, 255), true);
    }
}

TEST(TransparentWhite, IsThatOfTheMaskWherePixelsLetOthersThrough)
{
    expectSame(noise(131, 29, QImage::Format_ARGB32, 0));
    expectSame(noise(131, 29, QImage::Format_ARGB32, 254));
}

TEST(TransparentWhite, IsThatOfTheMaskInOtherFormats)
{
    expectSame(noise(131, 29, QImage::Format_RGB32, 255));
    expectSame(noise(131, 29, QImage::Format_ARGB32_Premultiplied, 255));
}

TEST(TransparentWhite, OfNoPictureIsNone)
{
    EXPECT_TRUE(WithTransparentWhite(QImage(), false).isNull());
    EXPECT_TRUE(WithTransparentWhite(QImage(), true).isNull());
}

TEST(TransparentWhite, LeavesThePictureItselfAsItWas)
{
    const QImage image = noise(40, 40, QImage::Format_ARGB32, 255);
    const QImage before = image.copy();
    WithTransparentWhite(image, false);
    WithTransparentWhite(image, true);
    EXPECT_EQ(image, before);
}

} // namespace

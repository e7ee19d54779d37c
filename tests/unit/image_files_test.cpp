// What the pictures' functions answer to what the exported ones do not let through to them.
#include "export/imagefiles.h"

#include "scriberasdk.h"

#include <QImage>

#include <filesystem>

#include <gtest/gtest.h>

namespace scribera::test {
namespace {

constexpr int noRaster[] = {-1, 0, EBITI_INK, EBITI_PDF, EBITI_SVG, 100};

QImage picture()
{
    QImage image(40, 30, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    image.setPixel(7, 9, 0xff0000ff);
    return image;
}

TEST(ImageFiles, OnlyRastersAreEncoded)
{
    for (const int type : noRaster) {
        EXPECT_FALSE(IsRasterType(type)) << type;
        EXPECT_TRUE(EncodeImage(picture(), type, true).isEmpty()) << type;
    }
    for (const int type : {EBITI_BITMAP, EBITI_JPG, EBITI_PNG}) {
        EXPECT_TRUE(IsRasterType(type)) << type;
        EXPECT_FALSE(EncodeImage(picture(), type, true).isEmpty()) << type;
        EXPECT_TRUE(EncodeImage(QImage(), type, true).isEmpty()) << type;
    }
}

TEST(ImageFiles, BytesOfNoRasterBecomeNoFile)
{
    const QByteArray png = EncodeImage(picture(), EBITI_PNG, false);
    for (const int type : noRaster)
        EXPECT_FALSE(SaveEncodedImage(png, type, QStringLiteral("saved"))) << type;
    EXPECT_FALSE(SaveEncodedImage(png, EBITI_BITMAP, QStringLiteral("saved")));
    EXPECT_FALSE(std::filesystem::exists("saved"));
    EXPECT_TRUE(SaveEncodedImage(png, EBITI_PNG, QStringLiteral("saved")));
    EXPECT_EQ(QImage(QStringLiteral("saved"), "PNG").convertToFormat(QImage::Format_ARGB32).pixel(7, 9),
              0xff0000ffU);
}

TEST(ImageFiles, NoPictureBecomesNoFile)
{
    EXPECT_FALSE(SaveRasterFile(QImage(), QStringLiteral("saved.png"), 300, true));
    EXPECT_FALSE(SaveRasterFile(picture(), QStringLiteral("saved.without-format"), 300, true));
    EXPECT_FALSE(SavePdfFile(picture(), QStringLiteral("no/such/folder.pdf"), 300));
    EXPECT_FALSE(std::filesystem::exists("saved.png"));
}

} // namespace
} // namespace scribera::test

// The signature as Base64 text: pictures and SVG.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

class Base64 : public SignedTest
{
};

TEST_P(Base64, PicturesDecodeToTheCanvas)
{
    EXPECT_TRUE(sameColors(decoded(takeImage(pad(), ImageBmp).bytes(), "BMP"), canvas()));
    const QImage png = decoded(takeImage(pad(), ImagePng).bytes(), "PNG");
    EXPECT_TRUE(isCanvasOnNothing(png, canvas()));
    EXPECT_TRUE(samePixels(png, onNothing(canvas())));
    EXPECT_TRUE(samePixels(decoded(takeImage(pad(), ImageJpeg).bytes(), "JPG"),
                           decoded(encoded(canvas(), "JPG"), "JPG")));
}

TEST_P(Base64, TransparencyIsAsAskedForInPngOnly)
{
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng, ImageInk}) {
        const std::string plain = takeImage(pad(), imageType).text;
        ASSERT_FALSE(plain.empty());
        EXPECT_TRUE(takeImageEx(pad(), imageType, true).text == plain) << imageType;
        EXPECT_EQ(takeImageEx(pad(), imageType, false).text == plain, imageType != ImagePng) << imageType;
    }
    const QImage opaque = decoded(takeImageEx(pad(), ImagePng, false).bytes(), "PNG");
    EXPECT_TRUE(samePixels(opaque, canvas()));
    EXPECT_EQ(opaque.pixel(0, 0), qRgba(255, 255, 255, 255));
    EXPECT_TRUE(isCanvasOnNothing(decoded(takeImageEx(pad(), ImagePng, true).bytes(), "PNG"), canvas()));
}

TEST_P(Base64, TextIsPaddedUnbrokenAndEnded)
{
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng, ImageInk}) {
        char* text = api().PacketsBase64Encode(type(), imageType);
        ASSERT_NE(text, nullptr);
        const std::size_t length = std::strlen(text);
        const QByteArray bytes =
            QByteArray::fromBase64(QByteArray(text), QByteArray::AbortOnBase64DecodingErrors);
        EXPECT_EQ(length, 4 * ((static_cast<std::size_t>(bytes.size()) + 2) / 3)) << imageType;
        EXPECT_EQ(text[length], 0);
        EXPECT_TRUE(bytes.toBase64() == QByteArray(text)) << imageType;
        EXPECT_EQ(std::strspn(text, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
                  length);
        api().PacketsBase64EncodeFree(type(), text);
    }
}

TEST_P(Base64, WithoutPointsThereIsNoText)
{
    ASSERT_TRUE(pad().start());
    std::ofstream(svgScratchFile) << "old";
    setLogging(true);
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng, ImageInk}) {
        removeLogs();
        EXPECT_TRUE(takeImage(pad(), imageType).null) << imageType;
        EXPECT_TRUE(takeImageEx(pad(), imageType, true).null) << imageType;
        EXPECT_EQ(textsOf(mainLog(), method("Base64Encode")),
                  (Texts{printed("enter, nImageTypeID=%d", imageType),
                         "leave with nullptr due to None of sign image !"}));
        EXPECT_EQ(textsOf(mainLog(), method("Base64EncodeEx")).back(),
                  "leave with nullptr due to None of sign image !");
        EXPECT_EQ(textsOf(mainLog(), exported("PacketsBase64Encode")).back(),
                  "leave with pEncodeBase64Image=0 !");
    }
    EXPECT_TRUE(takeSvg(pad()).null);
    setLogging(false);
    const std::string entry = textsOf(mainLog(), method("GetSVGImageBase64Data")).front();
    EXPECT_TRUE(entry == "enter, nInkCount=0" || entry == "enter, nInkCount=-8") << entry;
    EXPECT_EQ(textsOf(mainLog(), exported("GetSVGImageBase64Data")).back(), "leave with pSVGBase64Image=0 !");
    EXPECT_EQ(fileContent(svgScratchFile), "old");
}

TEST_P(Base64, UnknownTypesAreRefused)
{
    for (const int imageType : {-1, 0, 4, 5, 7, 8, 9, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(api().PacketsBase64Encode(type(), imageType), nullptr) << imageType;
        EXPECT_EQ(api().PacketsBase64EncodeEx(type(), imageType, true), nullptr) << imageType;
    }
}

TEST_P(Base64, TapIsAWhitePicture)
{
    ASSERT_TRUE(pad().start());
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    EXPECT_TRUE(isWhite(decoded(takeImage(pad(), ImageBmp).bytes(), "BMP")));
    const QImage png = decoded(takeImage(pad(), ImagePng).bytes(), "PNG");
    ASSERT_EQ(png.size(), QSize(400, 200));
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 400; ++x)
            ASSERT_EQ(qAlpha(png.pixel(x, y)), 0);
    }
}

TEST_P(Base64, TextsOutliveTheSignatureAndEachOther)
{
    char* first = api().PacketsBase64Encode(type(), ImagePng);
    char* second = api().PacketsBase64EncodeEx(type(), ImagePng, true);
    char* third = api().GetSVGImageBase64Data(type());
    const std::string text = first;
    ASSERT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(second, text);
    api().PacketsBase64EncodeFree(type(), second); // any free function takes any text
    api().FreeSVGImageBase64Data(type(), first);
    api().PacketsBase64EncodeExFree(type(), third);
}

TEST_P(Base64, FreeFunctionsTakeNull)
{
    ASSERT_TRUE(pad().start());
    setLogging(true);
    api().PacketsBase64EncodeFree(type(), nullptr);
    api().PacketsBase64EncodeExFree(type(), nullptr);
    api().FreeSVGImageBase64Data(type(), nullptr);
    setLogging(false);
    for (const char* name :
         {"PacketsBase64EncodeFree", "PacketsBase64EncodeExFree", "FreeSVGImageBase64Data"}) {
        EXPECT_EQ(textsOf(mainLog(), exported(name)),
                  (Texts{printed("enter, nDeviceType=%d, pEncodedData=0", type()), "leave !"}))
            << name;
    }
}

TEST_P(Base64, EncodingAndFreeingWriteTheirLines)
{
    startWithInk(60, 30);
    setLogging(true);
    char* plain = api().PacketsBase64Encode(type(), ImageBmp);
    char* other = api().PacketsBase64EncodeEx(type(), ImageJpeg, true);
    char* svg = api().GetSVGImageBase64Data(type());
    const std::string plainText = hex(plain);
    const std::string otherText = hex(other);
    const std::string svgText = hex(svg);
    const std::size_t svgLength = std::strlen(svg);
    api().PacketsBase64EncodeFree(type(), plain);
    api().PacketsBase64EncodeExFree(type(), other);
    api().FreeSVGImageBase64Data(type(), svg);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    EXPECT_EQ(textsOf(lines, exported("PacketsBase64Encode")).back(),
              "leave with pEncodeBase64Image=" + plainText + " !");
    EXPECT_EQ(textsOf(lines, method("Base64Encode")),
              (Texts{"enter, nImageTypeID=1", "leave with pBase64Image=" + plainText + " !"}));
    EXPECT_EQ(textsOf(lines, method("EncodeBase64SignImage")).back(),
              "leave with pEncodeBase64Image=" + plainText + " !");
    EXPECT_EQ(textsOf(lines, method("Base64EncodeEx")).back(), "leave with pBase64Image=" + otherText + " !");
    EXPECT_EQ(textsOf(lines, method("EncodeBase64SignImageEx")),
              (Texts{"enter, nImageTypeID=2, bEnableTransparentBackground=1",
                     "leave with pEncodeBase64Image=" + otherText + " !"}));
    const Texts svgLines = textsOf(lines, method("GetSVGImageBase64Data"));
    ASSERT_GE(svgLines.size(), 3u);
    EXPECT_EQ(svgLines[0], "enter, nInkCount=32");
    EXPECT_EQ(svgLines[1], printed("byteArray size=%d", static_cast<int>(fs::file_size(svgScratchFile))));
    EXPECT_EQ(svgLines[2], printed("nBase64Size=%d", static_cast<int>(svgLength)));
    EXPECT_EQ(textsOf(lines, exported("GetSVGImageBase64Data")).back(),
              "leave with pSVGBase64Image=" + svgText + " !");
    for (const auto& [name, pointer] :
         {std::pair("Base64EncodeFree", plainText), std::pair("Base64EncodeExFree", otherText),
          std::pair("FreeSVGImageBase64Data", svgText)}) {
        EXPECT_EQ(textsOf(lines, method(name)),
                  (Texts{"enter, pEncodedData=" + pointer, "after call delete[] pEncodedData !", "leave !"}))
            << name;
    }
}

TEST_P(Base64, SvgTextIsTheScratchFile)
{
    std::ofstream(svgScratchFile) << std::string(1000000, 'x');
    const QByteArray bytes = takeSvg(pad()).bytes();
    EXPECT_TRUE(bytes.toStdString() == fileContent(svgScratchFile));
    EXPECT_NE(bytes.indexOf("</svg>"), -1);
    EXPECT_EQ(bytes.indexOf("xxxx"), -1);
    // The same drawing as a file of the lower resolution.
    ASSERT_EQ(pad().save(ImageSvg, "same.svg", 0), 0);
    EXPECT_TRUE(bytes.toStdString() == fileContent("same.svg"));
    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 6, 3), 0);
    const QByteArray clipped = takeSvg(pad()).bytes();
    ASSERT_EQ(pad().save(ImageSvg, "same.svg", 0), 0);
    EXPECT_TRUE(clipped.toStdString() == fileContent("same.svg"));
    EXPECT_FALSE(clipped == bytes);
}

// Whoever may write to /tmp may have put something there under the name of the scratch file. The text is that
// of this signature all the same, and nobody else gets it.
TEST_P(Base64, ScratchFileOfOthersIsNotUsed)
{
    const QByteArray expected = takeSvg(pad()).bytes();
    EXPECT_NE(expected.indexOf("</svg>"), -1);
    fs::remove(svgScratchFile);

    fs::create_directory(svgScratchFile);
    EXPECT_TRUE(takeSvg(pad()).bytes() == expected) << "a folder";
    fs::remove(svgScratchFile);

    std::ofstream("elsewhere") << "mine";
    for (const char* target : {"elsewhere", "nowhere"}) {
        fs::create_symlink(fs::absolute(target), svgScratchFile);
        EXPECT_TRUE(takeSvg(pad()).bytes() == expected) << "a link to " << target;
        EXPECT_TRUE(fs::is_symlink(svgScratchFile));
        fs::remove(svgScratchFile);
    }
    EXPECT_EQ(fileContent("elsewhere"), "mine");
    EXPECT_FALSE(fs::exists("nowhere"));

    std::ofstream(svgScratchFile) << "theirs";
    fs::create_hard_link(svgScratchFile, "/tmp/second.svg");
    EXPECT_TRUE(takeSvg(pad()).bytes() == expected) << "a file with a second name";
    EXPECT_EQ(fileContent(svgScratchFile), "theirs");
    fs::remove("/tmp/second.svg");
    fs::remove(svgScratchFile);

    ASSERT_EQ(mkfifo(svgScratchFile, 0666), 0);
    EXPECT_TRUE(takeSvg(pad()).bytes() == expected) << "a pipe";
    fs::remove(svgScratchFile);
}

TEST_P(Base64, ScratchFileOfAnotherUserIsNotUsed)
{
    const QByteArray expected = takeSvg(pad()).bytes();
    std::ofstream(svgScratchFile) << "theirs";
    fs::permissions(svgScratchFile, fs::perms(0666));
    if (chown(svgScratchFile, 65534, 65534) != 0)
        GTEST_SKIP() << "only root can give a file away";
    EXPECT_TRUE(takeSvg(pad()).bytes() == expected);
    EXPECT_EQ(fileContent(svgScratchFile), "theirs");
}

TEST_P(Base64, SvgOnAFullDiskIsNull)
{
    std::ofstream(svgScratchFile) << "older";
    const FullTmp full;
    if (!full.isFull())
        GTEST_SKIP() << "needs a /tmp of its own";
    EXPECT_TRUE(takeSvg(pad()).null);
    EXPECT_EQ(fileContent(svgScratchFile), "older");
}

// ---------------------------------------------------------------------------------------------- signing

// Every stroke is a dash in a field of its own, so a picture tells which strokes it holds.
class WhileSigning : public PadTest
{
protected:
    static constexpr int fieldWidth = 24;
    static constexpr int fieldHeight = 16;
    static constexpr int columns = 1920 / fieldWidth;
    static constexpr int rows = 960 / fieldHeight;
    static constexpr int fields = columns * rows;

    static QPoint fieldOf(int index) // follows no order of lines
    {
        const int place = static_cast<int>(index * 1979LL % fields);
        return {place % columns * fieldWidth, place / columns * fieldHeight};
    }
    std::vector<ScrSimSample> dash(int index) const
    {
        const QPoint corner = fieldOf(index);
        const auto at = [&](int dx, int status) {
            return ScrSimSample{model().originX + (corner.x() + dx) * model().areaWidth / 1920,
                                model().originY + (corner.y() + fieldHeight / 2) * model().areaHeight / 960,
                                model().maxPressure / 4, status};
        };
        return {at(5, PenDown), at(fieldWidth - 6, PenMove), at(fieldWidth - 6, PenUp)};
    }

    // Which dashes the picture holds must be the first so many, each of them whole. -1 when it is not so.
    static int dashesIn(const QImage& picture, const QImage& complete)
    {
        int count = 0;
        bool ended = false;
        for (int i = 0; i < fields; ++i) {
            const QRect field(fieldOf(i), QSize(fieldWidth, fieldHeight));
            const QImage part = picture.copy(field);
            if (isWhite(part)) {
                ended = true;
                continue;
            }
            if (ended || !sameColors(part, complete.copy(field)))
                return -1;
            ++count;
        }
        return count;
    }

    // Has the library make pictures while a pen draws dash after dash, and looks at what they hold.
    void watch(const std::function<QByteArray()>& make)
    {
        ASSERT_TRUE(pad().start({.width = 1920, .height = 960}));
        ASSERT_EQ(api().SetPenStyle(type(), false), 0);
        std::atomic<bool> stop{false};
        // A few dashes for each picture, so that however slow the encoder is, the pen still has some to draw.
        constexpr int dashesAtATime = 20;
        std::atomic<int> allowed{dashesAtATime};
        int sent = 0;
        std::thread pen([&] {
            while (!stop) {
                if (sent < allowed) {
                    const auto samples = dash(sent++);
                    sim().SendSamples(samples.data(), static_cast<int>(samples.size()));
                }
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            }
        });
        EXPECT_TRUE(waitUntil([&] { return pad().points() > 30; }));
        struct Made
        {
            QByteArray bytes;
            int before;
            int after;
        };
        std::vector<Made> pictures;
        // A busy machine may give the pen's threads no time during one call; a pen that had to wait for the
        // encoder would get some in none.
        int grown = 0;
        for (int i = 0; i < 30 && grown < 3; ++i) {
            const int before = pad().points();
            allowed = before / 3 + dashesAtATime;
            const QByteArray bytes = make();
            const int after = pad().points();
            pictures.push_back({bytes, before, after});
            grown += after - before > 12 ? 1 : 0;
        }
        stop = true;
        pen.join();
        sim().waitIdle();
        EXPECT_EQ(grown, 3) << "the pen had to wait";
        const QImage complete = pad().canvas();
        EXPECT_EQ(dashesIn(complete, complete), sent);
        const std::size_t checked = std::min<std::size_t>(pictures.size(), 4);
        for (const Made& made :
             std::vector<Made>(pictures.end() - static_cast<std::ptrdiff_t>(checked), pictures.end())) {
            const QImage picture = onWhite(QImage::fromData(made.bytes));
            ASSERT_EQ(picture.size(), QSize(1920, 960));
            const int dashes = dashesIn(picture, complete);
            EXPECT_GE(dashes, made.before / 3) << "a mix, or too old";
            EXPECT_LE(dashes, made.after / 3 + 1);
        }
        EXPECT_EQ(pad().stop(), 0);
    }

    static QImage onWhite(const QImage& image)
    {
        QImage white = image.convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < white.height(); ++y) {
            for (int x = 0; x < white.width(); ++x) {
                if (qAlpha(white.pixel(x, y)) == 0)
                    white.setPixel(x, y, 0xffffffff);
            }
        }
        return white;
    }
};

TEST_P(WhileSigning, PngTextHoldsAMomentAndThePenGoesOn)
{
    watch([this] { return takeImage(pad(), ImagePng).bytes(); });
}

TEST_P(WhileSigning, SavedPngHoldsAMomentAndThePenGoesOn)
{
    watch([this] {
        EXPECT_EQ(pad().save(ImagePng, "moment.png"), 0);
        return QByteArray::fromStdString(fileContent("moment.png"));
    });
}

TEST_P(WhileSigning, OpaqueTextHoldsAMomentAndThePenGoesOn)
{
    watch([this] { return takeImageEx(pad(), ImagePng, false).bytes(); });
}

SCRIBERA_INSTANTIATE_ALL(Base64);
SCRIBERA_INSTANTIATE_ALL(WhileSigning);

} // namespace
} // namespace scribera::test

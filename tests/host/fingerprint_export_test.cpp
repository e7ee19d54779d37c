// The print in files, in encoded texts and on its own.

#include <array>
#include <filesystem>

#include <QRegularExpression>

#include "fingerprint_reference.h"

namespace scribera::test {
namespace {

const std::vector<int> rasterTypes = {ImageBmp, ImageJpeg, ImagePng};

const QRect placesWithoutPixels[] = {QRect(5, 5, 0, 0),     QRect(5, 5, 10, 0),    QRect(5, 5, 0, 10),
                                     QRect(20, 20, -5, 10), QRect(20, 20, 10, -5), QRect(20, 20, -5, -5)};

struct SvgPicture
{
    QRectF place;
    QImage image;
};

class FingerprintExport : public OpenFingerprintTest
{
protected:
    std::vector<ScrSimSample> someInk() const
    {
        return stroke(model(), {{0.1, 0.2, 0.1}, {0.3, 0.6, 0.2}, {0.7, 0.3, 0.05}});
    }

    void clip(bool on, int marginX = 0, int marginY = 0)
    {
        EXPECT_EQ(api().SetSaveCenterImageClip(type(), on, marginX, marginY), 0);
    }

    // The fingerprint exports, in every type, against a picture that holds all that is due.
    void expectExports(const QImage& whole, const QRect& place, const std::string& what)
    {
        for (const int imageType : rasterTypes) {
            EXPECT_EQ(printText(imageType, false), encoded(whole, imageType))
                << what << ", type " << imageType;
            EXPECT_EQ(printText(imageType, true), encoded(whole.copy(place), imageType))
                << what << ", print only, type " << imageType;
        }
        clip(true, 4, 9);
        for (const int imageType : rasterTypes) {
            const QByteArray box = encoded(whole.copy(inkBox(whole, 4, 9)), imageType);
            EXPECT_EQ(printText(imageType, false), box) << what << ", clipped, type " << imageType;
            EXPECT_EQ(printText(imageType, true), box) << what << ", clipped, print only, type " << imageType;
        }
        clip(false);
        EXPECT_EQ(printText(ImageBmp, true), encoded(whole.copy(place), ImageBmp))
            << what << ", no longer clipped";
    }

    // The print alone, out of a place with both corners inside that holds no pixel: all of the picture when
    // it is empty both ways, else a text without a character.
    void expectNoPixels(const QImage& whole, const QRect& place)
    {
        const bool isWhole = place.width() == 0 && place.height() == 0;
        for (const int imageType : rasterTypes) {
            const QByteArray text = printText(imageType, true);
            EXPECT_FALSE(text.isNull());
            EXPECT_EQ(text, isWhole ? encoded(whole, imageType) : QByteArray(""))
                << testing::PrintToString(std::array{place.x(), place.y(), place.width(), place.height()});
        }
    }

    std::string svg()
    {
        EXPECT_EQ(pad().save(ImageSvg, "print.svg"), 0);
        return fileContent("print.svg");
    }

    static std::vector<SvgPicture> picturesIn(const std::string& svg)
    {
        std::vector<SvgPicture> pictures;
        QRegularExpressionMatchIterator tags =
            QRegularExpression("<image[^>]*>").globalMatch(QString::fromStdString(svg));
        while (tags.hasNext()) {
            const QString tag = tags.next().captured();
            const auto value = [&](const QString& name) {
                return QRegularExpression("\\b" + name + "=\"([^\"]*)\"").match(tag).captured(1);
            };
            const QString data = value("href");
            pictures.push_back({QRectF(value("x").toDouble(), value("y").toDouble(),
                                       value("width").toDouble(), value("height").toDouble()),
                                decoded(data.mid(data.indexOf(',') + 1).toLatin1())});
        }
        return pictures;
    }

    void expectPrintIn(const std::string& content, const QSize& canvas, const std::string& what)
    {
        const std::vector<SvgPicture> pictures = picturesIn(content);
        ASSERT_EQ(pictures.size(), 1u) << what;
        const QRect middle((canvas.width() - printWidth) / 2, (canvas.height() - printHeight) / 2, printWidth,
                           printHeight);
        EXPECT_EQ(pictures[0].place, QRectF(middle)) << what;
        EXPECT_TRUE(same(pictures[0].image, m_copy->print())) << what;
    }
};

// ---- a print without any ink

TEST_P(FingerprintExport, PrintAloneIsEnoughForEveryFile)
{
    for (const int imageType : {1, 2, 3, 7, 8}) {
        const std::string path = "none-" + std::to_string(imageType);
        EXPECT_EQ(pad().save(imageType, path), -8);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    take(ridges(1), 1);
    EXPECT_EQ(pad().points(), -8);
    for (const FileType& file : fileTypes)
        EXPECT_EQ(pad().save(file.id, std::string("print.") + file.suffix), 0) << file.suffix;
    EXPECT_TRUE(same(pad().canvas(), m_copy->canvas()));
    EXPECT_EQ(decoded(encoded(m_copy->canvas(), ImagePng)),
              QImage("print.png").convertToFormat(QImage::Format_ARGB32));
    EXPECT_EQ(QImage("print.jpg").size(), QSize(400, 200));
    EXPECT_EQ(fileContent("print.pdf").substr(0, 5), "%PDF-");
    expectPrintIn(fileContent("print.svg"), QSize(400, 200), "print alone");
    clip(true, 5, 6);
    EXPECT_TRUE(same(pad().canvas(), m_copy->canvas().copy(inkBox(m_copy->canvas(), 5, 6))));
    clear();
    EXPECT_EQ(pad().save(ImageBmp, "cleared.bmp"), -8);
    EXPECT_FALSE(std::filesystem::exists("cleared.bmp"));
}

TEST_P(FingerprintExport, PrintAloneIsEncodedByTheWidgetOnly)
{
    const bool widget = padCase().isWidget();
    for (const int imageType : {1, 2, 3, 6}) {
        EXPECT_TRUE(encode(imageType).isNull());
        EXPECT_TRUE(encodeEx(imageType, true).isNull());
    }
    take(ridges(1), 1);
    for (const int imageType : rasterTypes) {
        const QByteArray text = encoded(m_copy->canvas(), imageType);
        const QByteArray opaque = encodedOpaque(m_copy->canvas(), imageType);
        EXPECT_EQ(encode(imageType), widget ? text : QByteArray()) << imageType;
        EXPECT_EQ(encodeEx(imageType, true), widget ? text : QByteArray()) << imageType;
        EXPECT_EQ(encodeEx(imageType, false), widget ? opaque : QByteArray()) << imageType;
        EXPECT_EQ(encode(imageType).isNull(), !widget);
    }
    logged([&] {
        EXPECT_TRUE(encode(ImageInk).isNull());
        EXPECT_TRUE(encodeEx(ImageInk, true).isNull());
    });
    EXPECT_EQ(textsOf(mainLog(), method("Base64Encode")).back(),
              "leave with nullptr due to None of sign image !");
    EXPECT_EQ(textsOf(mainLog(), method("Base64EncodeEx")).back(),
              "leave with nullptr due to None of sign image !");
    EXPECT_TRUE(svgText().isNull());
}

TEST_P(FingerprintExport, InkAndPrintAreSavedAsOnePicture)
{
    draw(someInk());
    take(ridges(1), 1);
    EXPECT_TRUE(same(pad().canvas(), m_copy->canvas()));
    for (const int imageType : rasterTypes) {
        EXPECT_EQ(encode(imageType), encoded(m_copy->canvas(), imageType));
        EXPECT_EQ(encodeEx(imageType, false), encodedOpaque(m_copy->canvas(), imageType));
    }
    clip(true, 3, 0);
    const QImage box = m_copy->canvas().copy(inkBox(m_copy->canvas(), 3, 0));
    for (const int imageType : rasterTypes) {
        EXPECT_EQ(encode(imageType), encoded(box, imageType));
        EXPECT_EQ(encodeEx(imageType, true), encoded(box, imageType));
    }
}

// ---- the print on its own

TEST_P(FingerprintExport, PrintOnAPictureOfItsOwnIsExported)
{
    const QRect place(9, 4, 80, 24);
    ASSERT_EQ(placeElsewhere(place), 0);
    draw(someInk());
    take(ridges(1), 1);
    expectExports(m_copy->holder(), place, "own picture");
    EXPECT_TRUE(same(pad().canvas(), m_copy->strokes()));
}

TEST_P(FingerprintExport, NothingDrawnOnAPictureOfItsOwnIsWhiteOrClippedToNothing)
{
    const QRect place(9, 4, 80, 24);
    ASSERT_EQ(placeElsewhere(place), 0);
    for (const int imageType : rasterTypes) {
        EXPECT_EQ(printText(imageType, false), encoded(m_copy->holder(), imageType));
        EXPECT_EQ(printText(imageType, true), encoded(m_copy->holder().copy(place), imageType));
    }
    clip(true, 2, 2);
    for (const int imageType : rasterTypes) {
        const QByteArray text = printText(imageType, false);
        EXPECT_FALSE(text.isNull());
        EXPECT_EQ(text, "");
    }
}

TEST_P(FingerprintExport, PlaceWithoutPixelsOnAPictureOfItsOwnGivesAllOrNothing)
{
    for (const QRect& place : placesWithoutPixels) {
        ASSERT_EQ(placeElsewhere(place), 0);
        expectNoPixels(m_copy->holder(), place);
    }
}

TEST_P(FingerprintExport, ClipMarginsOfTheSignatureHoldForThePrint)
{
    ASSERT_EQ(placeElsewhere(QRect(30, 8, 40, 10)), 0);
    take(ridges(1), 1);
    for (const auto& [x, y] : std::vector<std::pair<int, int>>{{0, 3}, {7, 0}, {1000, 1000}, {0, 0}}) {
        clip(true, x, y);
        const QImage due =
            x == 0 && y == 0 ? m_copy->holder() : m_copy->holder().copy(inkBox(m_copy->holder(), x, y));
        EXPECT_EQ(printText(ImageBmp, false), encoded(due, ImageBmp)) << x << ", " << y;
    }
    clip(true, 5, 5);
    EXPECT_EQ(api().Clear(type()), 0); // ends clipping
    EXPECT_EQ(printText(ImageBmp, false),
              encoded(blank(holderSize().width(), holderSize().height()), ImageBmp));
}

TEST_P(FingerprintExport, OnlyPicturesAreExported)
{
    ASSERT_EQ(placeElsewhere(QRect(30, 8, 40, 10)), 0);
    take(ridges(1), 1);
    for (const int imageType : {-1, 0, 4, 5, 6, 7, 8, 100}) {
        logged([&] { EXPECT_EQ(api().GetFPImageBase64Data(type(), imageType, false), nullptr); });
        EXPECT_EQ(
            textsOf(mainLog(), exported("GetFPImageBase64Data")),
            (Texts{
                "enter, nDeviceType=7, nImageTypeID=" + std::to_string(imageType) + ", bFPImageOnly=0",
                "leave with nullptr due to (nImageTypeID < EBITI_BITMAP) || (nImageTypeID > EBITI_PNG) !"}));
    }
    EXPECT_EQ(api().GetFPImageBase64Data(5, ImageBmp, false), nullptr);
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(api().GetFPImageBase64Data(type(), ImageBmp, false), nullptr);
}

TEST_P(FingerprintExport, ExportAndFreeWriteTheirLines)
{
    ASSERT_EQ(placeElsewhere(QRect(30, 8, 40, 10)), 0);
    take(ridges(1), 1);
    char* text = nullptr;
    logged([&] { text = api().GetFPImageBase64Data(type(), ImagePng, true); });
    ASSERT_NE(text, nullptr);
    const std::string address = hex(text);
    EXPECT_EQ(textsOf(mainLog(), exported("GetFPImageBase64Data")),
              (Texts{"enter, nDeviceType=7, nImageTypeID=3, bFPImageOnly=1",
                     "leave with pFPImageBase64Data=" + address + " !"}));
    EXPECT_EQ(textsOf(mainLog(), "CK421BFPWidget::EncodeBase64SignImage()").back(),
              "leave with pEncodeBase64Image=" + address + " !");
    EXPECT_FALSE(textsOf(mainLog(), method("GetFPImageBase64Data")).empty());

    logged([&] {
        api().FreeFPImageBase64Data(5, text); // not this family's: nothing is released
        api().FreeFPImageBase64Data(type(), text);
    });
    EXPECT_EQ(textsOf(mainLog(), exported("FreeFPImageBase64Data")),
              (Texts{"enter, nDeviceType=5, pFPImageBase64Data=" + address,
                     "leave due to (nDeviceType != SCK421B_DEVICE) !",
                     "enter, nDeviceType=7, pFPImageBase64Data=" + address, "leave !"}));
    EXPECT_EQ(textsOf(mainLog(), method("FreeFPImageBase64Data")),
              (Texts{"enter, pFPImageBase64Data=" + address, "after call delete[] pFPImageBase64Data !",
                     "leave !"}));
    api().FreeFPImageBase64Data(type(), nullptr);
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_TRUE(inThreadLog().empty() || textsOf(inThreadLog(), method("GetFPImageBase64Data")).empty());
}

TEST_P(FingerprintExport, TextIsPaddedAndEnded)
{
    ASSERT_EQ(placeElsewhere(QRect(30, 8, 40, 10)), 0);
    for (int score = 1; score <= 4; ++score) {
        take(ridges(static_cast<unsigned>(score)), score);
        const QByteArray text = printText(ImagePng, true);
        const QByteArray bytes = QByteArray::fromBase64(text, QByteArray::AbortOnBase64DecodingErrors);
        EXPECT_FALSE(bytes.isEmpty());
        EXPECT_EQ(text.size(), (bytes.size() + 2) / 3 * 4);
        EXPECT_FALSE(text.contains('\n'));
    }
}

// ---- as SVG

TEST_P(FingerprintExport, SvgCarriesThePrintBeforeTheStrokes)
{
    for (const QSize& size : {QSize(400, 200), QSize(801, 401), QSize(1920, 960), QSize(209, 400)}) {
        SCOPED_TRACE(testing::Message() << size.width() << " x " << size.height());
        ASSERT_TRUE(start(size.width(), size.height()));
        draw(someInk());
        EXPECT_TRUE(picturesIn(svg()).empty());
        const std::string inkOnly = svg();
        take(ridges(1), 1);
        const std::string both = svg();
        expectPrintIn(both, size, "print and ink");
        for (const char* stroke : {"<polyline", "<path", "<line"}) {
            const std::size_t at = both.find(stroke);
            if (at != std::string::npos) {
                EXPECT_LT(both.find("<image"), at) << stroke;
            }
            const auto count = [&](const std::string& text) {
                int found = 0;
                for (std::size_t p = text.find(stroke); p != std::string::npos; p = text.find(stroke, p + 1))
                    ++found;
                return found;
            };
            EXPECT_EQ(count(both), count(inkOnly)) << stroke;
        }
        expectPrintIn(QByteArray::fromBase64(svgText()).toStdString(), size, "as text");
        clear();
        draw(someInk());
        EXPECT_TRUE(picturesIn(svg()).empty());
    }
}

TEST_P(FingerprintExport, ClippedSvgCarriesThePrintInTheMiddleOfTheBox)
{
    draw(someInk());
    take(ridges(1), 1);
    QSize box;
    for (int marginX = 4; marginX < 6; ++marginX) {
        for (int marginY = 4; marginY < 6; ++marginY) {
            clip(true, marginX, marginY);
            box = inkBox(m_copy->canvas(), marginX, marginY).size();
            if (box.height() % 2 == 0)
                expectPrintIn(svg(), box, "clipped");
        }
    }
    // Even heights are made here, should no margin above have given one.
    if (box.height() % 2 != 0) {
        draw(stroke(model(), {{0.5, 0.0, 0.2}, {0.5, 1.0, 0.2}}));
        clip(true, 4, 1000);
        box = inkBox(m_copy->canvas(), 4, 1000).size();
        ASSERT_EQ(box.height(), 200);
        expectPrintIn(svg(), box, "clipped at full height");
    }
}

TEST_P(FingerprintExport, SvgOfASignatureWhosePrintIsElsewhereHasNoPrint)
{
    ASSERT_EQ(placeElsewhere(QRect(1, 1, 20, 20)), 0);
    take(ridges(1), 1);
    EXPECT_TRUE(picturesIn(svg()).empty());
    draw(someInk());
    EXPECT_TRUE(picturesIn(svg()).empty());
    ASSERT_FALSE(svgText().isNull());
    EXPECT_TRUE(picturesIn(QByteArray::fromBase64(svgText()).toStdString()).empty());
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintExport);

// ---- widget

class FingerprintWidgetExport : public FingerprintExport
{
};

TEST_P(FingerprintWidgetExport, WithoutPlacementItIsTheMergedPicture)
{
    for (const int imageType : rasterTypes)
        EXPECT_EQ(printText(imageType, false), encoded(blank(400, 200), imageType));
    draw(someInk());
    EXPECT_EQ(printText(ImageBmp, true), encoded(m_copy->canvas(), ImageBmp));
    take(ridges(1), 1);
    // "Print only" says nothing without a place.
    expectExports(m_copy->canvas(), m_copy->canvas().rect(), "no placement");
}

TEST_P(FingerprintWidgetExport, InTheHostsRectangleItIsThatRectangle)
{
    const QRect place(120, 20, 100, 140);
    ASSERT_EQ(placeSame(place), 0);
    draw(someInk());
    take(ridges(1), 1);
    expectExports(m_copy->canvas(), place, "host's rectangle");
    // The flag is gone with the call.
    EXPECT_EQ(encode(ImageBmp), encoded(m_copy->canvas(), ImageBmp));
}

TEST_P(FingerprintWidgetExport, PlaceWithoutPixelsInTheHostsWindowGivesAllOrNothing)
{
    draw(someInk());
    for (const QRect& place : placesWithoutPixels) {
        ASSERT_EQ(placeSame(place), 0);
        expectNoPixels(m_copy->canvas(), place);
    }
}

// A refused place stays stored, however large it is.
TEST_P(FingerprintWidgetExport, RefusedPlaceBeyondReasonGivesNothing)
{
    draw(someInk());
    ASSERT_EQ(placeSame(QRect(1, 2, 60, 80)), 0);
    ASSERT_EQ(placeSame(QRect(0, 0, 17000, 16000)), -2);
    const QByteArray text = printText(ImageBmp, true);
    EXPECT_FALSE(text.isNull());
    EXPECT_EQ(text.size(), 0);
}

TEST_P(FingerprintWidgetExport, SvgCarriesThePrintInTheMiddleUnderTheHostsRectangleToo)
{
    ASSERT_EQ(placeSame(QRect(1, 2, 60, 80)), 0);
    take(ridges(1), 1);
    expectPrintIn(svg(), QSize(400, 200), "print alone");
    draw(someInk());
    expectPrintIn(svg(), QSize(400, 200), "with ink");
}

TEST_P(FingerprintWidgetExport, ScoreOutlivesAResize)
{
    take(ridges(1), 1);
    resize(420, 240);
    EXPECT_TRUE(same(pad().canvas(), m_copy->canvas()));
    EXPECT_EQ(encode(ImageBmp), encoded(m_copy->canvas(), ImageBmp));
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWidgetExport, Kind::Widget);

// ---- windowless

class FingerprintWindowlessExport : public FingerprintExport
{
};

TEST_P(FingerprintWindowlessExport, WithoutPlacementThereIsNoExport)
{
    draw(someInk());
    take(ridges(1), 1);
    const std::vector<LogLine> lines = logged([&] {
        for (const int imageType : rasterTypes) {
            EXPECT_EQ(api().GetFPImageBase64Data(type(), imageType, false), nullptr);
            EXPECT_EQ(api().GetFPImageBase64Data(type(), imageType, true), nullptr);
        }
    });
    EXPECT_EQ(textsOf(lines, exported("GetFPImageBase64Data")).back(), "leave with pFPImageBase64Data=0 !");
}

SCRIBERA_INSTANTIATE_FINGERPRINT(FingerprintWindowlessExport, Kind::Windowless);

} // namespace
} // namespace scribera::test

// Signature files of all five types.

#include <QTransform>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

#include <QXmlStreamReader>

#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

class Save : public SignedTest
{
};

TEST_P(Save, RastersCarryTheirResolution)
{
    for (const auto& [level, dotsPerMetre] : {std::pair(0, 5905), {1, 11811}, {7, 11811}, {-1, 11811}}) {
        ASSERT_EQ(pad().save(ImageBmp, "dpi.bmp", level), 0);
        ASSERT_EQ(pad().save(ImagePng, "dpi.png", level), 0);
        for (const char* path : {"dpi.bmp", "dpi.png"}) {
            const QImage image = loaded(path);
            EXPECT_EQ(image.dotsPerMeterX(), dotsPerMetre) << path << ", level " << level;
            EXPECT_EQ(image.dotsPerMeterY(), dotsPerMetre) << path << ", level " << level;
        }
    }
}

TEST_P(Save, RastersEqualTheCanvas)
{
    for (const FileType& file : fileTypes)
        ASSERT_EQ(pad().save(file.id, std::string("canvas.") + file.suffix), 0);
    EXPECT_TRUE(sameColors(loaded("canvas.bmp"), canvas()));
    EXPECT_TRUE(isCanvasOnNothing(loaded("canvas.png"), canvas()));
    EXPECT_TRUE(samePixels(loaded("canvas.png"), onNothing(canvas())));
    EXPECT_TRUE(samePixels(loaded("canvas.jpg"), decoded(encoded(canvas(), "JPG"), "JPG")));
}

TEST_P(Save, SuffixDecidesTheFormat)
{
    const QImage jpeg = decoded(encoded(canvas(), "JPG"), "JPG");
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        ASSERT_EQ(pad().save(imageType, "suffix.bmp"), 0);
        EXPECT_EQ(fileContent("suffix.bmp").substr(0, 2), "BM");
        EXPECT_TRUE(sameColors(loaded("suffix.bmp"), canvas())) << "type " << imageType;
        for (const char* path : {"suffix.jpg", "suffix.jpeg", "SUFFIX.JPG"}) {
            ASSERT_EQ(pad().save(imageType, path), 0);
            EXPECT_EQ(fileContent(path).substr(0, 3), "\xff\xd8\xff");
            EXPECT_TRUE(samePixels(loaded(path), jpeg)) << path << ", type " << imageType;
        }
        ASSERT_EQ(pad().save(imageType, "suffix.png"), 0);
        EXPECT_EQ(fileContent("suffix.png").substr(1, 3), "PNG");
        if (imageType == ImagePng) {
            EXPECT_TRUE(isCanvasOnNothing(loaded("suffix.png"), canvas()));
        } else {
            EXPECT_TRUE(samePixels(loaded("suffix.png"), canvas())) << "type " << imageType;
        }
    }
}

TEST_P(Save, PathsThatCannotBeWrittenAreRefused)
{
    fs::create_directory("directory.png");
    fs::create_directory("directory.pdf");
    std::ofstream("file") << "in the way";
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        for (const char* path : {"", "nosuffix", "unknown.suffix", "trailing.", "picture.txt",
                                 "directory.png", "missing/picture.png", "file/picture.png", ".", "/"}) {
            EXPECT_EQ(pad().save(imageType, path), -8) << path << ", type " << imageType;
        }
    }
    for (const char* path : {"", "directory.pdf", "missing/picture.pdf", "file/picture.pdf"})
        EXPECT_EQ(pad().save(ImagePdf, path), -8) << path;
    for (const FileType& file : fileTypes)
        EXPECT_EQ(api().SaveDrawingImage(type(), file.id, nullptr, 1), -8) << file.suffix;
    for (const char* path : {"nosuffix", "unknown.suffix", "trailing.", "picture.txt", "missing"})
        EXPECT_FALSE(fs::exists(path)) << path;
    EXPECT_EQ(fileContent("file"), "in the way");
    EXPECT_TRUE(fs::is_directory("directory.png"));
    expectSameInk();
}

TEST_P(Save, PdfNeedsNoSuffix)
{
    EXPECT_EQ(pad().save(ImagePdf, "document"), 0);
    EXPECT_EQ(fileContent("document").substr(0, 5), "%PDF-");
}

TEST_P(Save, FullDiskIsAFailureForRasters)
{
    for (const auto& full :
         {std::pair(ImageBmp, "full.bmp"), {ImageJpeg, "full.jpg"}, {ImagePng, "full.png"}}) {
        fs::create_symlink("/dev/full", full.second);
        logged([&] { EXPECT_EQ(pad().save(full.first, full.second), -8) << full.second; });
        EXPECT_EQ(textsOf(mainLog(), method("SaveDrawingImage")).back(), "leave with nResult=-8");
        EXPECT_EQ(textsOf(mainLog(), exported("SaveDrawingImage")).back(), "leave with nResult=-8 !");
    }
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    expectSameInk();
}

TEST_P(Save, SvgThatCannotBeWrittenCountsAsSaved)
{
    fs::create_directory("directory.svg");
    fs::create_symlink("/dev/full", "full.svg");
    for (const char* path : {"directory.svg", "missing/picture.svg", "full.svg"}) {
        logged([&] { EXPECT_EQ(pad().save(ImageSvg, path), 0) << path; });
        EXPECT_EQ(textsOf(mainLog(), method("SaveDrawingImageAsSVGFile")),
                  (Texts{"enter, nDPI=300", "nInkCount=32", "the drawing could not be written !", "leave !"}))
            << path;
    }
    expectSameInk();
}

TEST_P(Save, WithoutPointsNothingIsWritten)
{
    ASSERT_TRUE(pad().start());
    for (const FileType& file : fileTypes) {
        const std::string path = std::string("empty.") + file.suffix;
        EXPECT_EQ(pad().save(file.id, path), -8) << path;
        EXPECT_FALSE(fs::exists(path));
    }
    std::ofstream("old.png") << "old";
    EXPECT_EQ(pad().save(ImagePng, "old.png"), -8);
    EXPECT_EQ(fileContent("old.png"), "old");
}

TEST_P(Save, UnsupportedTypesAreRefused)
{
    for (const int imageType : {-1, 0, 4, 5, 6, 9, 100, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(pad().save(imageType, "refused.png"), -2) << imageType;
        EXPECT_FALSE(fs::exists("refused.png"));
    }
}

TEST_P(Save, ExistingFileIsReplaced)
{
    for (const FileType& file : fileTypes) {
        const std::string path = std::string("replaced.") + file.suffix;
        std::ofstream(path) << std::string(2000000, 'x');
        ASSERT_EQ(pad().save(file.id, path), 0);
        EXPECT_LT(fs::file_size(path), 1000000u);
        EXPECT_EQ(fileContent(path).find("xxxxxxxxxx"), std::string::npos);
    }
}

TEST_P(Save, SameSignatureGivesTheSameFile)
{
    for (const FileType& file : fileTypes) {
        if (file.id == ImagePdf)
            continue; // carries its date
        const std::string path = std::string("twice.") + file.suffix;
        ASSERT_EQ(pad().save(file.id, path), 0);
        const std::string first = fileContent(path);
        ASSERT_EQ(pad().save(file.id, path), 0);
        EXPECT_TRUE(fileContent(path) == first) << path;
    }
    expectSameInk();
}

TEST_P(Save, SavingWritesItsLines)
{
    setLogging(true);
    std::wstring path = L"lines.pdf";
    ASSERT_EQ(api().SaveDrawingImage(type(), ImagePdf, path.data(), 0), 0);
    ASSERT_EQ(pad().save(ImageSvg, "lines.svg", 5), 0);
    EXPECT_EQ(pad().save(6, "lines.ink"), -2);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    const std::string pointer =
        printed("%x", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(path.data())));
    EXPECT_EQ(textsOf(lines, exported("SaveDrawingImage"))[0],
              printed("enter, nDeviceType=%d, nImageTypeID=7, pImageFilePath=%s, nDPILevel=0", type(),
                      pointer.c_str()));
    EXPECT_EQ(textsOf(lines, exported("SaveDrawingImage"))[1], "leave with nResult=0 !");
    EXPECT_EQ(textsOf(lines, exported("SaveDrawingImage")).back(),
              "leave with ARI_INVALID_PARAMETERS due to nImageTypeID out of range !");
    EXPECT_EQ(textsOf(lines, method("SaveDrawingImage"))[0],
              printed("enter, nImageTypeID=7, pImageFilePath=%s, nDPI=150", pointer.c_str()));
    EXPECT_EQ(textsOf(lines, method("SaveDrawingImageAsPDFFile")),
              (Texts{"enter, nDPI=150", "leave with bRet=1"}));
    EXPECT_EQ(textsOf(lines, method("SaveDrawingImageAsSVGFile")),
              (Texts{"enter, nDPI=300", "nInkCount=32", "leave !"}));
}

// ---------------------------------------------------------------------------------------------- PDF

struct PdfPicture
{
    int pages = 0;
    double pageWidth = 0; // points
    double pageHeight = 0;
    QImage image;
    bool exact = false;   // not by way of JPEG
    QTransform placement; // unit square to points
};

// Reads what Qt's writer puts down: plain objects, streams with their length in an object of their own.
class PdfReader
{
public:
    explicit PdfReader(const std::string& path) : m_text(fileContent(path)) {}

    PdfPicture read()
    {
        PdfPicture picture;
        const std::regex page(R"(/Type /Page\s)");
        picture.pages = static_cast<int>(
            std::distance(std::sregex_iterator(m_text.begin(), m_text.end(), page), std::sregex_iterator()));
        std::smatch match;
        if (std::regex_search(m_text, match, std::regex(R"(/MediaBox \[0 0 ([\d.]+) ([\d.]+)\])"))) {
            picture.pageWidth = std::stod(match[1]);
            picture.pageHeight = std::stod(match[2]);
        }
        readImage(picture);
        readContent(picture);
        return picture;
    }

private:
    std::string object(int number) const
    {
        const std::string begin = "\n" + std::to_string(number) + " 0 obj";
        const std::size_t from = m_text.find(begin);
        if (from == std::string::npos)
            return {};
        return m_text.substr(from + begin.size());
    }
    QByteArray stream(const std::string& text, std::size_t from) const
    {
        std::smatch match;
        const std::string head = text.substr(from, text.find("stream\n", from) - from);
        if (!std::regex_search(head, match, std::regex(R"(/Length (\d+) 0 R)")))
            return {};
        const int length = std::stoi(object(std::stoi(match[1])));
        const std::size_t begin = text.find("stream\n", from) + 7;
        QByteArray bytes(text.data() + begin, length);
        if (head.find("/FlateDecode") != std::string::npos) {
            QByteArray sized(4, '\0'); // the size is a hint only
            sized[1] = 0x10;
            bytes = qUncompress(sized + bytes);
        }
        return bytes;
    }
    void readImage(PdfPicture& picture) const
    {
        const std::size_t at = m_text.find("/Subtype /Image");
        if (at == std::string::npos)
            return;
        const std::string head = m_text.substr(at, m_text.find("stream\n", at) - at);
        std::smatch match;
        if (!std::regex_search(head, match, std::regex(R"(/Width (\d+))")))
            return;
        const int width = std::stoi(match[1]);
        if (!std::regex_search(head, match, std::regex(R"(/Height (\d+))")))
            return;
        const int height = std::stoi(match[1]);
        const QByteArray bytes = stream(m_text, at);
        if (head.find("/DCTDecode") != std::string::npos) {
            picture.image = QImage::fromData(bytes, "JPG");
            return;
        }
        picture.exact = true;
        const bool grey = head.find("/DeviceGray") != std::string::npos;
        if (bytes.size() < width * height * (grey ? 1 : 3))
            return;
        picture.image =
            QImage(reinterpret_cast<const uchar*>(bytes.constData()), width, height, width * (grey ? 1 : 3),
                   grey ? QImage::Format_Grayscale8 : QImage::Format_RGB888)
                .copy();
    }
    // Follows the transformations up to where the picture is painted.
    void readContent(PdfPicture& picture) const
    {
        std::smatch match;
        if (!std::regex_search(m_text, match, std::regex(R"(/Contents (\d+) 0 R)")))
            return;
        const std::string content = stream(object(std::stoi(match[1])), 0).toStdString();
        std::vector<QTransform> saved;
        QTransform current;
        const std::regex step(
            R"(([-\d.]+) ([-\d.]+) ([-\d.]+) ([-\d.]+) ([-\d.]+) ([-\d.]+) cm\b|\bq\b|\bQ\b|/Im\d+ +Do\b)");
        for (std::sregex_iterator it(content.begin(), content.end(), step); it != std::sregex_iterator();
             ++it) {
            const std::string word = it->str();
            if (word == "q") {
                saved.push_back(current);
            } else if (word == "Q") {
                if (!saved.empty()) {
                    current = saved.back();
                    saved.pop_back();
                }
            } else if (word.ends_with("Do")) {
                picture.placement = current;
            } else {
                const auto number = [&](std::size_t i) { return std::stod((*it)[i]); };
                current =
                    QTransform(number(1), number(2), number(3), number(4), number(5), number(6)) * current;
            }
        }
    }

    std::string m_text;
};

TEST_P(Save, PdfIsOnePageWithThePictureInItsCorner)
{
    for (const auto& [level, dpi] : {std::pair(0, 150.0), std::pair(1, 300.0)}) {
        for (const bool clip : {false, true}) {
            ASSERT_EQ(api().SetSaveCenterImageClip(type(), clip, 8, 8), 0);
            const QImage expected = clip ? canvas().copy(inkBox(canvas(), 8, 8)) : canvas();
            ASSERT_EQ(pad().save(ImagePdf, "page.pdf", level), 0);
            const PdfPicture picture = PdfReader("page.pdf").read();
            EXPECT_EQ(picture.pages, 1);
            EXPECT_NEAR(picture.pageWidth, 595, 1);
            EXPECT_NEAR(picture.pageHeight, 842, 1);
            ASSERT_EQ(picture.image.size(), expected.size());
            if (picture.exact) {
                EXPECT_TRUE(sameColors(picture.image, expected));
            } else {
                EXPECT_TRUE(inkAgrees(picture.image, expected));
            }
            // One dot of the picture is one dot of the page, ten points from its left and upper edge.
            const QRectF place = picture.placement.mapRect(QRectF(0, 0, 1, 1));
            const double dot = 72 / dpi;
            EXPECT_NEAR(place.width(), expected.width() * dot, 0.05);
            EXPECT_NEAR(place.height(), expected.height() * dot, 0.05);
            EXPECT_NEAR(place.left(), 10, dot);
            EXPECT_NEAR(picture.pageHeight - place.bottom(), 10, 1);
        }
    }
}

// ---------------------------------------------------------------------------------------------- SVG

struct SvgPicture
{
    std::string viewBox;
    std::string width;
    std::string height;
    std::vector<Segment> lines;
    bool roundEnds = true;
};

SvgPicture readSvg(const std::string& path)
{
    SvgPicture picture;
    QXmlStreamReader reader(QByteArray::fromStdString(fileContent(path)));
    double width = 0;
    bool round = false;
    QColor color;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        if (reader.name() == QLatin1String("svg")) {
            picture.viewBox = attributes.value("viewBox").toString().toStdString();
            picture.width = attributes.value("width").toString().toStdString();
            picture.height = attributes.value("height").toString().toStdString();
        } else if (reader.name() == QLatin1String("g") && attributes.hasAttribute("stroke-width")) {
            width = attributes.value("stroke-width").toDouble();
            color = QColor(attributes.value("stroke").toString());
            round = attributes.value("stroke-linecap") == QLatin1String("round") &&
                    attributes.value("stroke-linejoin") == QLatin1String("round");
        } else if (reader.name() == QLatin1String("polyline")) {
            const QStringList places = attributes.value("points").toString().simplified().split(' ');
            const auto point = [&](int i) {
                const QStringList numbers = places.at(i).split(',');
                return QPointF(numbers.at(0).toDouble(), numbers.at(1).toDouble());
            };
            EXPECT_EQ(places.size(), 2);
            picture.roundEnds = picture.roundEnds && round;
            picture.lines.push_back({point(0), point(1), width, color});
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return picture;
}

void expectLines(const SvgPicture& picture, const std::vector<Segment>& segments, const QPoint& origin)
{
    ASSERT_EQ(picture.lines.size(), segments.size());
    EXPECT_TRUE(picture.roundEnds);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const Segment& line = picture.lines[i];
        const QPointF from = segments[i].from - origin;
        const QPointF to = segments[i].to - origin;
        EXPECT_NEAR(line.from.x(), from.x(), 0.01) << i;
        EXPECT_NEAR(line.from.y(), from.y(), 0.01) << i;
        EXPECT_NEAR(line.to.x(), to.x(), 0.01) << i;
        EXPECT_NEAR(line.to.y(), to.y(), 0.01) << i;
        EXPECT_NEAR(line.width, segments[i].width, 0.01) << i;
        EXPECT_EQ(line.color, segments[i].color) << i;
    }
}

TEST_P(Save, SvgHoldsTheStrokesInCanvasPlaces)
{
    ASSERT_EQ(pad().save(ImageSvg, "strokes.svg"), 0);
    const SvgPicture whole = readSvg("strokes.svg");
    EXPECT_EQ(whole.viewBox, "0 0 400 200");
    expectLines(whole, redraw().segments(), {0, 0});

    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 9, 4), 0);
    ASSERT_EQ(pad().save(ImageSvg, "clipped.svg"), 0);
    const QRect box = inkBox(canvas(), 9, 4);
    const SvgPicture clipped = readSvg("clipped.svg");
    EXPECT_EQ(clipped.viewBox, printed("0 0 %d %d", box.width(), box.height()));
    expectLines(clipped, redraw().segments(), box.topLeft());
}

TEST_P(Save, SvgSizeFollowsTheResolution)
{
    for (const auto& [level, dpi] : {std::pair(0, 150.0), std::pair(1, 300.0)}) {
        ASSERT_EQ(pad().save(ImageSvg, "size.svg", level), 0);
        const SvgPicture picture = readSvg("size.svg");
        EXPECT_NEAR(std::stod(picture.width), 400 * 25.4 / dpi, 0.01) << picture.width;
        EXPECT_NEAR(std::stod(picture.height), 200 * 25.4 / dpi, 0.01) << picture.height;
        EXPECT_TRUE(picture.width.ends_with("mm"));
    }
}

TEST_P(Save, SvgIsDrawnWithThePenOfTheMoment)
{
    setPenWidth(7);
    setPenColor(QColor(10, 100, 250));
    for (const bool pressed : {true, false}) {
        setPressure(pressed);
        redraw().clear(); // only here, for the same strokes with another pen
        redraw().feed(wave(model(), 30));
        ASSERT_EQ(pad().save(ImageSvg, "pen.svg"), 0);
        expectLines(readSvg("pen.svg"), redraw().segments(), {0, 0});
    }
}

TEST_P(Save, SvgClosesAStrokeOnlyAtItsEndMark)
{
    ASSERT_TRUE(pad().start());
    StatusRecorder recorder(pad());
    pad().draw({sampleAt(model(), {0.1, 0.2}, PenDown),
                sampleAt(model(), {0.3, 0.2}, PenMove),
                {0, 0, 0, ConfirmKeyDown},
                {0, 0, 0, PenUp}});
    ASSERT_TRUE(recorder.waitFor(1));
    pad().draw(stroke(model(), {{0.5, 0.8}, {0.7, 0.8}}));
    pad().draw({sampleAt(model(), {0.2, 0.9}, PenDown), sampleAt(model(), {0.4, 0.9}, PenMove)});
    ASSERT_EQ(pad().points(), 7);
    ASSERT_EQ(pad().save(ImageSvg, "open.svg"), 0);
    // The key ended the first stroke without a mark, so a line leads on to the second.
    const SvgPicture picture = readSvg("open.svg");
    ASSERT_EQ(picture.lines.size(), 4u);
    EXPECT_NEAR(picture.lines[1].from.x(), picture.lines[0].to.x(), 0.01);
    EXPECT_NEAR(picture.lines[1].to.x(), picture.lines[2].from.x(), 0.01);
    EXPECT_NEAR(picture.lines[1].to.y(), picture.lines[2].from.y(), 0.01);
}

TEST_P(Save, SvgOfATapHasNoStroke)
{
    ASSERT_TRUE(pad().start());
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    ASSERT_EQ(pad().save(ImageSvg, "tap.svg"), 0);
    EXPECT_TRUE(readSvg("tap.svg").lines.empty());
    EXPECT_EQ(readSvg("tap.svg").viewBox, "0 0 400 200");
}

TEST_P(Save, SvgPutsInkWhereTheCanvasHasIt)
{
    // Of one width: Qt draws pens of up to a pixel a little aside, and only with the hint that SVG does not
    // have.
    ASSERT_TRUE(start());
    setPressure(false);
    draw(wave(model(), 30));
    ASSERT_EQ(pad().save(ImageSvg, "whole.svg"), 0);
    const QImage whole = renderedSvg("whole.svg", canvas().size());
    EXPECT_FALSE(isWhite(whole));
    EXPECT_TRUE(inkAgrees(whole, canvas()));
    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 9, 4), 0);
    ASSERT_EQ(pad().save(ImageSvg, "clipped.svg"), 0);
    const QImage part = canvas().copy(inkBox(canvas(), 9, 4));
    EXPECT_TRUE(inkAgrees(renderedSvg("clipped.svg", part.size()), part));
}

SCRIBERA_INSTANTIATE_ALL(Save);

// Names outside the alphabet; the process writes UTF-8.
class SaveByName : public OpenPadTest
{
protected:
    void SetUp() override
    {
        setenv("LC_ALL", "C.UTF-8", 1);
        std::setlocale(LC_ALL, "");
        OpenPadTest::SetUp();
    }
};

TEST_P(SaveByName, FileNamesOfAllScriptsAreKept)
{
    pad().draw(wave(model(), 10));
    for (const FileType& file : fileTypes) {
        const std::wstring name =
            L"\u043f\u043e\u0434\u043f\u0438\u0441\u044c \u7b7e\u540d \u00df \U0001F58B." + wide(file.suffix);
        const std::string utf8 =
            "\xd0\xbf\xd0\xbe\xd0\xb4\xd0\xbf\xd0\xb8\xd1\x81\xd1\x8c \xe7\xad\xbe\xe5\x90\x8d "
            "\xc3\x9f \xf0\x9f\x96\x8b." +
            std::string(file.suffix);
        EXPECT_EQ(saveWide(pad(), file.id, name), 0) << utf8;
        EXPECT_TRUE(fs::exists(utf8)) << utf8;
        EXPECT_GT(fileContent(utf8).size(), 100u);
    }
}

TEST_P(SaveByName, NothingInANameHasAMeaning)
{
    pad().draw(wave(model(), 10));
    const std::string text = takeImage(pad(), ImagePng).text;
    fs::create_directory("%2e");
    for (const auto& [name, utf8] : {std::pair<std::wstring, std::string>(L":odd", ":odd"),
                                     {L":/odd", ":/odd"},
                                     {L"qrc:odd", "qrc:odd"},
                                     {L"file:odd", "file:odd"},
                                     {L"a:b:odd", "a:b:odd"},
                                     {L"\ufeffodd", "\xef\xbb\xbfodd"},
                                     {L"\ufeff\ufeffodd", "\xef\xbb\xbf\xef\xbb\xbfodd"},
                                     {L"od\ufeffd", "od\xef\xbb\xbf"
                                                    "d"},
                                     {L"\ufffeodd", "\xef\xbf\xbeodd"},
                                     {L"%2e/odd", "%2e/odd"},
                                     {L"~odd", "~odd"}}) {
        if (name.find(L'/') != std::wstring::npos)
            fs::create_directory(fs::path(utf8).parent_path());
        for (const FileType& file : fileTypes) {
            const std::string path = utf8 + "." + file.suffix;
            EXPECT_EQ(saveWide(pad(), file.id, name + L"." + wide(file.suffix)), 0) << path;
            EXPECT_GT(fileContent(path).size(), 100u) << path;
        }
        std::wstring path = name;
        EXPECT_EQ(api().Base64Decode(type(), ImagePng, text.c_str(), path.data()), 0) << utf8;
        EXPECT_GT(fileContent(utf8).size(), 100u) << utf8;
    }
    EXPECT_FALSE(fs::exists("odd.png"));
}

TEST_P(SaveByName, UnitsThatAreNoCharactersAreRefused)
{
    pad().draw(wave(model(), 10));
    const std::string text = takeImage(pad(), ImagePng).text;
    for (const unsigned unit :
         {0xd800u, 0xdbffu, 0xdc00u, 0xdfffu, 0x110000u, 0x7fffffffu, 0xfffe0000u, 0xffffffffu}) {
        for (const std::size_t at : {0, 4}) {
            std::wstring path = L"odd-?.png";
            path[at] = static_cast<wchar_t>(unit);
            for (const FileType& file : fileTypes)
                EXPECT_EQ(saveWide(pad(), file.id, path), -8) << std::hex << unit << " " << file.suffix;
            EXPECT_EQ(api().Base64Decode(type(), ImagePng, text.c_str(), path.data()), -8)
                << std::hex << unit;
        }
    }
    EXPECT_FALSE(fs::exists("odd-?.png"));
    const std::wstring tooLong(5000, L'n');
    EXPECT_EQ(saveWide(pad(), ImagePng, tooLong + L".png"), -8);
    EXPECT_EQ(saveWide(pad(), ImagePdf, tooLong + L".pdf"), -8);
    EXPECT_EQ(pad().points(), 12);
}

SCRIBERA_INSTANTIATE_ALL(SaveByName);

} // namespace
} // namespace scribera::test

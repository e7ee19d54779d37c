// The ink packet stream there and back, and pictures decoded to files.

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

class InkStream : public OpenInkTest
{
protected:
    static Ink inkOf(const StreamRecord& record)
    {
        return {record.x, record.y, record.pressure, record.status};
    }
    int decodedCount() const { return api().GetTotalDecodePacketsNumber(type()); }
    int value(int index, int selector) const { return api().GetDecodePacketsData(type(), index, selector); }
    int decodeInk(const QByteArray& bytes)
    {
        return decode(pad(), ImageInk, bytes.toBase64().toStdString(), "unused");
    }
    void expectDecoded(const std::vector<Ink>& points)
    {
        ASSERT_EQ(decodedCount(), static_cast<int>(points.size()));
        for (int i = 0; i < decodedCount(); ++i) {
            const Ink& point = points[static_cast<std::size_t>(i)];
            ASSERT_EQ(value(i, 1), static_cast<std::int16_t>(point.x)) << i;
            ASSERT_EQ(value(i, 2), point.y) << i;
            ASSERT_EQ(value(i, 3), point.status) << i;
        }
    }
    void fillDecodedList()
    {
        StreamRecord record;
        record.x = 5;
        ASSERT_EQ(decodeInk(streamOf({record})), 0);
        ASSERT_EQ(decodedCount(), 1);
    }
};

TEST_P(InkStream, HoldsTheStoredPointsInTwentyFourBytesEach)
{
    pad().draw({{70000, 40000, 100000, PenDown},
                {4, 5, 6, PenUp},
                {300, 301, 302, PenDown},
                {303, 304, 305, PenMove}});
    const QByteArray stream = takeImage(pad(), ImageInk).bytes();
    ASSERT_EQ(stream.size(), 24 * 4 + 1);
    EXPECT_EQ(stream.back(), 0);
    const std::vector<Ink> points = storedPoints(pad());
    ASSERT_EQ(points.size(), 4u);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto* record = reinterpret_cast<const unsigned char*>(stream.constData()) + 24 * i;
        const auto two = [&](int at) { return record[at] | record[at + 1] << 8; };
        EXPECT_EQ(two(0), points[i].x) << i;
        EXPECT_EQ(two(2), static_cast<std::uint16_t>(points[i].y)) << i;
        EXPECT_EQ(two(4), static_cast<std::uint16_t>(points[i].pressure)) << i;
        EXPECT_EQ(record[6], points[i].status) << i;
        EXPECT_EQ(record[7], 0) << i;
    }
    EXPECT_EQ(takeImageEx(pad(), ImageInk, true).bytes(), stream);
    EXPECT_EQ(takeImageEx(pad(), ImageInk, false).bytes(), stream);
}

TEST_P(InkStream, TapIsSixtyEightCharacters)
{
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    EXPECT_EQ(takeImage(pad(), ImageInk).text.size(), 68u);
}

TEST_P(InkStream, ComesBackAsItWent)
{
    pad().draw(wave(model(), 100));
    const std::string text = takeImage(pad(), ImageInk).text;
    EXPECT_EQ(api().Base64Decode(type(), ImageInk, text.c_str(), nullptr), 0) << "the path is not used";
    ASSERT_EQ(decodedCount(), 102);
    expectDecoded(storedPoints(pad()));
    EXPECT_EQ(pad().points(), 102) << "the stored points are others";
    EXPECT_EQ(api().Clear(type()), 0);
    EXPECT_EQ(decodedCount(), 102) << "clearing does not concern them";
}

// The library keeps points in blocks, which the stream crosses in both directions.
TEST_P(InkStream, LongSignatureComesBackAsItWent)
{
    ASSERT_TRUE(pad().start({.width = 40, .height = 20}));
    pad().draw(wave(model(), 9000));
    const Taken taken = takeImage(pad(), ImageInk);
    const std::vector<Ink> points = storedPoints(pad());
    ASSERT_EQ(points.size(), 9002u);
    const std::vector<StreamRecord> records = recordsOf(taken.bytes());
    ASSERT_EQ(records.size(), points.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        ASSERT_EQ(inkOf(records[i]), points[i]) << i;
        ASSERT_TRUE(i == 0 || records[i].tick >= records[i - 1].tick) << i;
    }
    ASSERT_EQ(decode(pad(), ImageInk, taken.text, "unused"), 0);
    expectDecoded(points);
}

// The pad plays what the library exported, and the library gets the same signature once more.
TEST_P(InkStream, PlayedBackByThePadGivesTheSameSignature)
{
    ASSERT_TRUE(start({.width = 640, .height = 330}));
    std::vector<ScrSimSample> samples = wave(model(), 150);
    const auto more = stroke(model(), {{0.0, 0.0, 1.0}, {1.0, 1.0, 0.0}, {0.2, 0.9, 0.5}});
    samples.insert(samples.end(), more.begin(), more.end());
    const auto tap = stroke(model(), {{0.5, 0.5}});
    samples.insert(samples.end(), tap.begin(), tap.end());
    draw(samples);
    ASSERT_TRUE(holdsPoints(pad(), redraw()));
    const std::string text = takeImage(pad(), ImageInk).text;
    const std::vector<StreamRecord> first =
        recordsOf(QByteArray::fromBase64(QByteArray::fromStdString(text)));
    ASSERT_EQ(first.size(), samples.size());
    std::ofstream("ink.txt") << text;

    ASSERT_EQ(api().Clear(type()), 0);
    ASSERT_EQ(sim().Play("ink.txt", 0, 0, -1), 0) << sim().LastError();
    sim().waitIdle();
    expectSameInk();
    const std::vector<StreamRecord> second = recordsOf(takeImage(pad(), ImageInk).bytes());
    ASSERT_EQ(second.size(), first.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(inkOf(second[i]), inkOf(first[i])) << i;
        EXPECT_GE(second[i].tick, first.back().tick) << i;
    }
}

TEST_P(InkStream, DecodedValuesAreReadAsTheyLie)
{
    StreamRecord record;
    record.x = 40000;
    record.y = -300;
    record.status = 200;
    record.padding = 0xee;
    StreamRecord other;
    other.x = 32767;
    other.y = 32767;
    other.status = 1;
    ASSERT_EQ(decodeInk(streamOf({record, other})), 0);
    ASSERT_EQ(decodedCount(), 2);
    EXPECT_EQ(value(0, 1), 40000 - 65536);
    EXPECT_EQ(value(0, 2), -300);
    EXPECT_EQ(value(0, 3), 200);
    EXPECT_EQ(value(1, 1), 32767);
    EXPECT_EQ(value(1, 2), 32767);
    EXPECT_EQ(value(1, 3), 1);
}

TEST_P(InkStream, RefusesIndicesAndSelectorsInOrder)
{
    EXPECT_EQ(decodedCount(), -8);
    for (const int index : {-1, 0, 1, INT32_MAX}) {
        EXPECT_EQ(value(index, 1), -8) << "an empty list comes before the index";
        for (const int selector : {0, 4, -1, INT32_MIN})
            EXPECT_EQ(value(index, selector), -2) << "the selector comes before the list";
    }
    fillDecodedList();
    for (const int index : {-1, 1, 2, INT32_MIN, INT32_MAX}) {
        for (const int selector : {1, 2, 3})
            EXPECT_EQ(value(index, selector), -2);
    }
    EXPECT_EQ(value(0, 1), 5);
    EXPECT_EQ(value(0, 4), -2);
}

TEST_P(InkStream, WholeGroupsOnlyAreTaken)
{
    for (const int bytes : {0, 1, 7, 22, 23, 24, 25, 47, 48, 49, 71, 240, 241}) {
        fillDecodedList();
        std::string text = QByteArray(bytes, 'a').toBase64().toStdString();
        if (bytes == 0)
            text = "!";
        EXPECT_EQ(decode(pad(), ImageInk, text, ""), 0) << bytes;
        EXPECT_EQ(decodedCount(), bytes < 24 ? -8 : bytes / 24) << bytes;
    }
}

TEST_P(InkStream, ForeignCharactersAreSkipped)
{
    pad().draw(wave(model(), 8));
    const std::string text = takeImage(pad(), ImageInk).text;
    std::string broken = "\xff\x80 -_*";
    for (std::size_t i = 0; i < text.size(); ++i) {
        broken += text[i];
        if (i % 7 == 0)
            broken += "\r\n";
        if (i % 5 == 0)
            broken += "!\x01\xfe";
    }
    ASSERT_EQ(decode(pad(), ImageInk, broken, ""), 0);
    ASSERT_EQ(decodedCount(), 10);
    const std::vector<Ink> points = storedPoints(pad());
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(value(i, 2), points[static_cast<std::size_t>(i)].y);
    for (const char* garbage : {"====", "=", "A", "AA=A", "\xff\xff\xff\xff", "%s%n%s%n", "..."}) {
        EXPECT_EQ(decode(pad(), ImageInk, garbage, ""), 0) << garbage;
        EXPECT_EQ(decodedCount(), -8) << garbage;
    }
}

TEST_P(InkStream, LastDecodeReplacesTheOneBefore)
{
    ASSERT_EQ(decodeInk(streamOf(std::vector<StreamRecord>(50))), 0);
    EXPECT_EQ(decodedCount(), 50);
    ASSERT_EQ(decodeInk(streamOf(std::vector<StreamRecord>(3))), 0);
    EXPECT_EQ(decodedCount(), 3);
}

TEST_P(InkStream, ArgumentsAreCheckedBeforeTheListIsTouched)
{
    fillDecodedList();
    for (const int imageType : {-1, 0, 4, 5, 7, 8, INT32_MAX})
        EXPECT_EQ(api().Base64Decode(type(), imageType, "QUJD", nullptr), -2) << imageType;
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng, ImageInk}) {
        EXPECT_EQ(api().Base64Decode(type(), imageType, nullptr, nullptr), -2);
        EXPECT_EQ(api().Base64Decode(type(), imageType, "", nullptr), -2);
    }
    EXPECT_EQ(decodedCount(), 1);
}

TEST_P(InkStream, EncodingAndDecodingWriteTheirLines)
{
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    setLogging(true);
    const std::string text = takeImage(pad(), ImageInk).text;
    EXPECT_EQ(decode(pad(), ImageInk, text, "x"), 0);
    EXPECT_EQ(decodedCount(), 2);
    EXPECT_EQ(value(1, 3), 1);
    EXPECT_EQ(value(2, 3), -2);
    EXPECT_EQ(value(0, 4), -2);
    EXPECT_EQ(api().Base64Decode(type(), ImageInk, "", nullptr), -2);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    const Texts encode = textsOf(lines, method("Base64Encode"));
    ASSERT_EQ(encode.size(), 4u);
    EXPECT_EQ(encode[0], "enter, nImageTypeID=6");
    EXPECT_TRUE(encode[1].starts_with("pTotalPtsData=")) << encode[1];
    EXPECT_TRUE(encode[1].ends_with(", ulInkCount=2, ulTotalPtsDataSize=49")) << encode[1];
    EXPECT_EQ(encode[2], "ulnBase64TotalPtsDataSize=68");
    EXPECT_TRUE(encode[3].starts_with("leave with pBase64Image=")) << encode[3];

    const Texts exportedDecode = textsOf(lines, exported("Base64Decode"));
    ASSERT_EQ(exportedDecode.size(), 4u);
    EXPECT_TRUE(exportedDecode[0].starts_with(
        printed("enter, nDeviceType=%d, nImageTypeID=6, pImageFilePath=", type())));
    EXPECT_EQ(exportedDecode[1], "leave with nResult=0 !");
    EXPECT_EQ(exportedDecode[2], printed("enter, nDeviceType=%d, nImageTypeID=6, pImageFilePath=0", type()));
    EXPECT_EQ(exportedDecode[3], "leave with nullptr due to (pEncodedData : null or empty) !");
    EXPECT_EQ(textsOf(lines, method("Base64Decode")).back(), "leave with nResult=0 !");
    EXPECT_EQ(textsOf(lines, exported("GetTotalDecodePacketsNumber")).back(),
              "leave with nDecodedInkCount=2 !");
    EXPECT_EQ(textsOf(lines, method("GetTotalDecodeInkPointsNumber")).back(),
              "leave with nDecodedInkCount=2");
    EXPECT_EQ(
        textsOf(lines, method("GetDecodePACKETS")),
        (Texts{"enter, nIndex=1, nTypeID=3", "leave with nPACKETS=1", "enter, nIndex=2, nTypeID=3",
               "leave with ARI_INVALID_PARAMETERS due to (nIndex < 0) || (nIndex >= nDecodedInkCount) !"}));
    EXPECT_EQ(
        textsOf(lines, exported("GetDecodePacketsData")),
        (Texts{printed("enter, nDeviceType=%d, nIndex=1, nTypeID=3", type()), "leave with nPACKETS=1 !",
               printed("enter, nDeviceType=%d, nIndex=2, nTypeID=3", type()), "leave with nPACKETS=-2 !",
               printed("enter, nDeviceType=%d, nIndex=0, nTypeID=4", type()),
               "leave with ARI_INVALID_PARAMETERS due to (nTypeID < INKDATATYPE_X) || (nTypeID > "
               "INKDATATYPE_STROKEEND) !"}));
}

// ---------------------------------------------------------------------------------------------- pictures

TEST_P(InkStream, PicturesAreDecodedToFilesOfTheirType)
{
    pad().draw(wave(model(), 30));
    const QImage canvas = pad().canvas();
    const std::string bmp = takeImage(pad(), ImageBmp).text;
    const std::string jpeg = takeImage(pad(), ImageJpeg).text;
    const std::string png = takeImage(pad(), ImagePng).text;
    fillDecodedList();
    // The suffix does not matter here.
    for (const char* suffix : {"", ".bmp", ".jpg", ".png", ".txt"}) {
        const std::string path = std::string("decoded") + suffix;
        ASSERT_EQ(decode(pad(), ImageBmp, bmp, path), 0) << path;
        EXPECT_EQ(fileContent(path).substr(0, 2), "BM");
        EXPECT_TRUE(sameColors(loaded(path), canvas));
        ASSERT_EQ(decode(pad(), ImageJpeg, jpeg, path), 0) << path;
        EXPECT_EQ(fileContent(path).substr(0, 3), "\xff\xd8\xff");
        EXPECT_TRUE(
            samePixels(loaded(path),
                       decoded(encoded(decoded(QByteArray::fromBase64(jpeg.c_str()), "JPG"), "JPG"), "JPG")));
        ASSERT_EQ(decode(pad(), ImagePng, png, path), 0) << path;
        EXPECT_EQ(fileContent(path).substr(1, 3), "PNG");
        EXPECT_TRUE(isCanvasOnNothing(loaded(path), canvas));
    }
    EXPECT_EQ(decodedCount(), -8) << "the list is emptied by every decode";
    EXPECT_EQ(pad().points(), 32);
}

// A bitmap with a negative height begins with its uppermost row.
TEST_P(InkStream, BitmapFromTheTopIsDecoded)
{
    pad().draw(wave(model(), 30));
    const QImage canvas = pad().canvas();
    QByteArray bytes = encoded(canvas.mirrored(), "BMP");
    const std::int32_t height = -canvas.height();
    std::memcpy(bytes.data() + 22, &height, sizeof height);
    ASSERT_TRUE(sameColors(decoded(bytes, "BMP"), canvas));
    ASSERT_EQ(decode(pad(), ImageBmp, bytes.toBase64().toStdString(), "top-down"), 0);
    EXPECT_TRUE(sameColors(loaded("top-down"), canvas));
}

TEST_P(InkStream, BytesOfAnotherTypeAreRefused)
{
    pad().draw(wave(model(), 10));
    const int types[] = {ImageBmp, ImageJpeg, ImagePng, ImageInk};
    for (const int source : types) {
        const std::string text = takeImage(pad(), source).text;
        for (const int target : {ImageBmp, ImageJpeg, ImagePng}) {
            if (source == target)
                continue;
            fillDecodedList();
            EXPECT_EQ(decode(pad(), target, text, "wrong.png"), -8) << source << " as " << target;
            EXPECT_FALSE(fs::exists("wrong.png"));
            EXPECT_EQ(decodedCount(), -8) << "a failed decode leaves no points";
        }
    }
    for (const char* garbage : {"!", "====", "QUJD", "iVBORw0KGgo=", "Qk0=", "/9j/"}) {
        for (const int target : {ImageBmp, ImageJpeg, ImagePng}) {
            EXPECT_EQ(decode(pad(), target, garbage, "wrong.png"), -8) << garbage << " as " << target;
            EXPECT_FALSE(fs::exists("wrong.png"));
        }
    }
}

TEST_P(InkStream, CutAndChangedPicturesDoNoHarm)
{
    ASSERT_TRUE(pad().start({.width = 60, .height = 30}));
    pad().draw(wave(model(), 10));
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        const QByteArray bytes = takeImage(pad(), imageType).bytes();
        for (int cut = 0; cut < bytes.size(); cut += 1 + bytes.size() / 40) {
            const int result =
                decode(pad(), imageType, bytes.left(cut).toBase64().toStdString() + "!", "cut");
            EXPECT_TRUE(result == 0 || result == -8) << result;
            QByteArray changed = bytes;
            changed[cut] = static_cast<char>(changed[cut] ^ 0xff);
            const int other = decode(pad(), imageType, changed.toBase64().toStdString(), "changed");
            EXPECT_TRUE(other == 0 || other == -8) << other;
        }
    }
    EXPECT_EQ(pad().points(), 12);
}

TEST_P(InkStream, PicturesThatCannotBeWrittenAreRefused)
{
    pad().draw(wave(model(), 10));
    fs::create_directory("directory");
    std::ofstream("file") << "in the way";
    fs::create_symlink("/dev/full", "full");
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        const std::string text = takeImage(pad(), imageType).text;
        for (const char* path : {"", "directory", "file/picture", "missing/picture", "full"}) {
            fillDecodedList();
            logged([&] {
                EXPECT_EQ(decode(pad(), imageType, text, path), -8) << path << ", type " << imageType;
            });
            EXPECT_EQ(textsOf(mainLog(), method("Base64Decode")).back(), "leave with nResult=-8 !");
            EXPECT_EQ(decodedCount(), -8);
        }
        EXPECT_EQ(api().Base64Decode(type(), imageType, text.c_str(), nullptr), -8);
    }
    EXPECT_EQ(fileContent("file"), "in the way");
    EXPECT_EQ(pad().points(), 12);
}

// ---------------------------------------------------------------------------------------------- size

void put(QByteArray& bytes, std::uint32_t value, int count, bool bigEndian)
{
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<char>(value >> 8 * (bigEndian ? count - 1 - i : i)));
}

QByteArray bmpOf(int width, int height, int bits)
{
    QByteArray bytes("BM");
    put(bytes, 1000, 4, false);
    put(bytes, 0, 4, false);
    put(bytes, 54, 4, false);
    put(bytes, 40, 4, false);
    put(bytes, static_cast<std::uint32_t>(width), 4, false);
    put(bytes, static_cast<std::uint32_t>(height), 4, false);
    put(bytes, 1, 2, false);
    put(bytes, static_cast<std::uint32_t>(bits), 2, false);
    for (int i = 0; i < 6; ++i)
        put(bytes, 0, 4, false);
    return bytes + QByteArray(4096, '\0');
}

void putChunk(QByteArray& bytes, const QByteArray& name, const QByteArray& content)
{
    put(bytes, static_cast<std::uint32_t>(content.size()), 4, true);
    const QByteArray checked = name + content;
    std::uint32_t crc = 0xffffffffu;
    for (const char c : checked) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xedb88320u : crc >> 1;
    }
    bytes += checked;
    put(bytes, ~crc, 4, true);
}

QByteArray pngOf(int width, int height, int depth, int colorType)
{
    QByteArray bytes("\x89PNG\r\n\x1a\n", 8);
    QByteArray header;
    put(header, static_cast<std::uint32_t>(width), 4, true);
    put(header, static_cast<std::uint32_t>(height), 4, true);
    header.append(static_cast<char>(depth));
    header.append(static_cast<char>(colorType));
    header.append(3, '\0');
    putChunk(bytes, "IHDR", header);
    putChunk(bytes, "IDAT", qCompress(QByteArray(1000000, '\0')).mid(4));
    putChunk(bytes, "IEND", {});
    return bytes;
}

QByteArray jpegOf(int width, int height)
{
    QImage small(8, 8, QImage::Format_RGB32);
    small.fill(Qt::white);
    QByteArray bytes = encoded(small, "JPG");
    const int frame = bytes.indexOf(QByteArray("\xff\xc0", 2));
    QByteArray size;
    put(size, static_cast<std::uint32_t>(height), 2, true);
    put(size, static_cast<std::uint32_t>(width), 2, true);
    return bytes.replace(frame + 5, 4, size);
}

TEST_P(InkStream, PicturesThatWouldUnpackBeyondReasonAreNotTried)
{
    const long before = residentKilobytesAtMost();
    const std::pair<int, QByteArray> huge[] = {
        {ImageBmp, bmpOf(20000, 20000, 32)},    {ImageBmp, bmpOf(20000, -20000, 24)},
        {ImageBmp, bmpOf(8193, 8193, 32)},      {ImageBmp, bmpOf(0x7fffffff, 0x7fffffff, 24)},
        {ImageBmp, bmpOf(1, INT32_MIN, 1)},     {ImageBmp, bmpOf(0x7fffffff, INT32_MIN, 32)},
        {ImageBmp, bmpOf(1, 0x7fffffff, 1)},    {ImageBmp, bmpOf(8192, -8193, 32)},
        {ImageBmp, bmpOf(0x7fffffff, 1, 24)},   {ImagePng, pngOf(30000, 30000, 8, 6)},
        {ImagePng, pngOf(8193, 8193, 8, 6)},    {ImagePng, pngOf(8193, 8193, 8, 2)},
        {ImagePng, pngOf(1000000, 100, 16, 6)}, {ImagePng, pngOf(0x7fffffff, 0x7fffffff, 8, 6)},
        {ImageJpeg, jpegOf(65500, 65500)},      {ImageJpeg, jpegOf(8193, 8193)}};
    for (const auto& [imageType, bytes] : huge) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(decode(pad(), imageType, bytes.toBase64().toStdString(), "huge"), -8)
            << imageType << ", " << bytes.left(40).toHex().toStdString();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
        EXPECT_FALSE(fs::exists("huge"));
    }
    EXPECT_LT(residentKilobytesAtMost() - before, 100000);
    // Large is not huge.
    QImage large(2000, 1500, QImage::Format_RGB32);
    large.fill(Qt::white);
    EXPECT_EQ(decode(pad(), ImageBmp, encoded(large, "BMP").toBase64().toStdString(), "large"), 0);
    EXPECT_EQ(loaded("large").size(), QSize(2000, 1500));
}

SCRIBERA_INSTANTIATE_ALL(InkStream);

} // namespace
} // namespace scribera::test

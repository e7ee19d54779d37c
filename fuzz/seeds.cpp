// Writes the corpora from which the fuzzers start: small images in the forms that their readers tell apart,
// headers that promise more than follows, ink packet streams whole and broken.

#include "scriberasdk.h"

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

namespace {

struct Seed
{
    const char* name;
    QByteArray bytes;
};

using Seeds = std::vector<Seed>;

void write(const QDir& corpora, const char* target, const Seeds& seeds)
{
    const QDir directory(corpora.filePath(QString::fromLatin1(target)));
    bool written = directory.mkpath(QStringLiteral("."));
    for (const Seed& seed : seeds) {
        QFile file(directory.filePath(QString::fromLatin1(seed.name)));
        written = written && file.open(QIODevice::WriteOnly) && file.write(seed.bytes) == seed.bytes.size() &&
                  file.flush();
    }
    if (!written) {
        std::fprintf(stderr, "cannot write into %s\n", qPrintable(directory.path()));
        std::exit(1);
    }
}

// A stroke on paper.
QImage picture(QImage::Format format)
{
    QImage image(9, 7, QImage::Format_ARGB32);
    image.fill(Qt::white);
    for (int step = 0; step < 7; ++step)
        image.setPixelColor(step + 1, step, QColor(10 * step, 0, 255 - 10 * step, 255 - 30 * step));
    return image.convertToFormat(format);
}

QByteArray encoded(const QImage& image, const char* format, int quality = -1)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, format, quality)) {
        std::fprintf(stderr, "no %s writer\n", format);
        std::exit(1);
    }
    return bytes;
}

QByteArray changed(QByteArray bytes, int offset, const char* hex)
{
    const QByteArray replacement = QByteArray::fromHex(hex);
    return bytes.replace(offset, replacement.size(), replacement);
}

Seeds bitmaps()
{
    const QByteArray colour = encoded(picture(QImage::Format_RGB32), "BMP");
    return {
        {"colour", colour},
        {"palette", encoded(picture(QImage::Format_Indexed8), "BMP")},
        {"one-bit", encoded(picture(QImage::Format_Mono), "BMP")},
        {"cut", colour.left(60)},
        {"header-only", colour.left(54)},
        {"immense", changed(colour, 18, "ffffff7fffffff7f")},
        {"large", changed(colour, 18, "0020000000200000")},
        {"at-the-limit", changed(colour, 18, "e0150000e0150000")},
        {"upside-down", changed(colour, 22, "f9ffffff")},
        {"no-height", changed(colour, 22, "00000000")},
        // 8 bits, run lengths: a run, an absolute run, a jump out of the picture, the end.
        {"run-lengths",
         QByteArray::fromHex("424d52000000000000003e000000280000000400000003000000010008000100000014000000"
                             "0000000000000000020000000200000000000000ffffff000401000000030100010000000002"
                             "7f7f04010001")},
        // 16 bits with masks of their own.
        {"masks",
         QByteArray::fromHex("424d4a0000000000000042000000280000000200000002000000010010000300000008000000"
                             "0000000000000000000000000000000000f80000e00700001f000000ff00f81fe0070000")},
    };
}

Seeds jpegs()
{
    const QByteArray colour = encoded(picture(QImage::Format_RGB32), "JPG", 10);
    const int frame = colour.indexOf(QByteArray::fromHex("ffc0"));
    return {
        {"colour", colour},
        {"grey", encoded(picture(QImage::Format_Grayscale8), "JPG", 10)},
        {"cut", colour.left(colour.size() / 2)},
        {"no-end", colour.chopped(2)},
        {"marker-only", QByteArray::fromHex("ffd8ffd9")},
        {"immense", changed(colour, frame + 5, "ffffffff")},
        {"no-height", changed(colour, frame + 5, "0000")},
    };
}

// A PNG chunk with its check sum, so that a changed header is read at all.
QByteArray chunk(const char* type, const QByteArray& content)
{
    const QByteArray body = type + content;
    quint32 sum = 0xFFFFFFFF;
    for (const char byte : body) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum & 1 ? sum >> 1 ^ 0xEDB88320 : sum >> 1;
    }
    const auto bigEndian = [](quint32 number) {
        return QByteArray::fromHex(QByteArray::number(number, 16).rightJustified(8, '0'));
    };
    return bigEndian(static_cast<quint32>(content.size())) + body + bigEndian(~sum);
}

Seeds pngs()
{
    const QByteArray colour = encoded(picture(QImage::Format_ARGB32), "PNG");
    constexpr int HeaderStart = 8;
    constexpr int HeaderEnd = 33;
    const auto withHeader = [&colour](const char* hex) {
        return colour.left(HeaderStart) + chunk("IHDR", QByteArray::fromHex(hex)) + colour.mid(HeaderEnd);
    };
    return {
        {"colour", colour},
        {"opaque", encoded(picture(QImage::Format_RGB32), "PNG")},
        {"palette", encoded(picture(QImage::Format_Indexed8), "PNG")},
        {"one-bit", encoded(picture(QImage::Format_Mono), "PNG")},
        {"grey", encoded(picture(QImage::Format_Grayscale8), "PNG")},
        {"deep", encoded(picture(QImage::Format_RGBA64), "PNG")},
        {"cut", colour.left(colour.size() / 2)},
        {"immense", withHeader("7fffffff7fffffff0806000000")},
        {"large-palette", withHeader("00010000000100000803000000")},
        {"large-deep", withHeader("00001000000020001006000000")},
        {"interlaced", withHeader("00000009000000070806000001")},
        {"no-width", withHeader("00000000000000070806000000")},
        {"text",
         colour.left(HeaderEnd) + chunk("tEXt", QByteArray("Title\0scribble", 14)) + colour.mid(HeaderEnd)},
    };
}

QByteArray record(quint16 x, qint16 y, qint16 pressure, quint8 status, qint64 tick)
{
    const _POINTDATA point{x, y, pressure, status, 0, tick, 1'700'000'000};
    return QByteArray(reinterpret_cast<const char*>(&point), sizeof point);
}

Seeds streams()
{
    const QByteArray tap = record(1000, 900, 300, 0, 5000) + record(1000, 900, 300, 1, 5005);
    const QByteArray end(1, '\0');
    return {
        {"tap", tap + end},
        {"two-strokes", tap + record(65535, -1, -1, 0, 6000) + record(2, 3, 2048, 0, 6005) + end},
        {"no-points", end},
        {"no-end", tap},
        {"wrong-end", tap + "x"},
        {"cut", tap.left(40)},
        {"status", record(1, 2, 3, 200, 5000) + end},
        {"ticks-back", record(1, 2, 3, 0, 5000) + record(1, 2, 3, 0, 4999) + end},
        {"widest-ticks", record(1, 2, 3, 0, std::numeric_limits<qint64>::min()) +
                             record(1, 2, 3, 1, std::numeric_limits<qint64>::max()) + end},
    };
}

Seeds texts()
{
    const QByteArray stream = streams().front().bytes.toBase64();
    return {
        {"bitmap", '\0' + bitmaps().front().bytes.toBase64()},
        {"jpeg", '\1' + jpegs().front().bytes.toBase64()},
        {"png", '\2' + pngs().front().bytes.toBase64()},
        {"ink", '\3' + stream},
        {"ink-in-lines", '\3' + stream.left(20) + "\r\n" + stream.mid(20) + '\n'},
        {"ink-url-alphabet", QByteArray("\3-_-_-_-_-_-_-_-_-_-_-_-_-_-_-_-_-_-_")},
        {"padding-inside", QByteArray("\3QQ==QQ==QQ==")},
        {"no-base64", QByteArray("\2<svg/> \x80\xFF")},
        {"empty", QByteArray("\3")},
    };
}

Seeds inkTexts()
{
    Seeds seeds = streams();
    const QByteArray stream = seeds.front().bytes.toBase64();
    seeds.push_back({"text", stream});
    seeds.push_back({"text-line", stream + '\n'});
    seeds.push_back({"text-broken", stream.left(20) + '\n' + stream.mid(20)});
    seeds.push_back({"text-cut", stream.left(30)});
    seeds.push_back({"text-spare-bits", QByteArray("AB==")});
    seeds.push_back({"text-padding", QByteArray("A===")});
    return seeds;
}

QByteArray recordingOf(const QByteArray& samples)
{
    return "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\nmax-pressure: 2048\n" + samples;
}

Seeds recordings()
{
    Seeds seeds = {
        {"stroke", recordingOf("0 400 500 300 0\n5 410 510 320 1\n9 410 510 0 2\n")},
        {"keys", recordingOf("0 0 0 0 4\n90 0 0 0 2\n200 -1 -1 0 3\n")},
        {"comments", recordingOf("# nothing\n\n0 400 500 300 0\n# more\n")},
        {"unknown-status", recordingOf("0 1 2 3 99\n1 1 2 3 -5\n")},
        {"no-samples", recordingOf("")},
        {"no-header", QByteArray("# scribera recording 1\n")},
        {"other-version", QByteArray("# scribera recording 2\nmodel: SCK210\n")},
        {"times-back", recordingOf("9 1 2 3 0\n8 1 2 3 1\n")},
        {"long", recordingOf("1000000000 1 2 3 0\n1000000001 1 2 3 1\n")},
        {"wide", recordingOf("0 2147483647 -2147483648 2147483647 0\n")},
        {"too-wide", recordingOf("0 2147483648 1 1 0\n")},
        {"words", recordingOf("0 1 2 3 0 0\n")},
        {"carriage-return", recordingOf("0 1 2 3 0\r\n")},
        {"no-area", QByteArray("# scribera recording 1\nmodel: SCK210\narea: 0 0 0 1\nmax-pressure: 1\n")},
        {"immense-area",
         QByteArray("# scribera recording 1\nmodel: X\narea: 2147483647 0 2147483647 1\nmax-pressure: 1\n")},
    };
    for (const Seed& stream : streams())
        seeds.push_back({stream.name, stream.bytes.toBase64()});
    return seeds;
}

// Calls of the interface. A number is a byte less 16; 240 and above begin one of four bytes.
QByteArray session(int family, const QByteArray& calls)
{
    // Opened with a canvas of 64 by 32, both callbacks registered, a stroke of four samples and a key.
    const QByteArray start =
        QByteArray::fromHex("00") + static_cast<char>(family) + QByteArray::fromHex("01000010");
    return start +
           QByteArray::fromHex("02030000"
                               "02040000"
                               "08000450502000505121015555250150602802"
                               "080101") +
           calls;
}

Seeds calls()
{
    static constexpr const char* names[] = {"k210", "k420", "k421b", "km730", "t580"};
    Seeds seeds;
    for (int family = 0; family < 5; ++family) {
        QByteArray all;
        for (int group = 1; group <= 7; ++group)
            for (int what = 0; what < 7; ++what)
                all += QByteArray::fromHex("110000001010000000000000")
                           .prepend(static_cast<char>(what))
                           .prepend(static_cast<char>(group));
        seeds.push_back({names[family], session(family, all)});
    }
    seeds.push_back(
        {"pictures", session(0, QByteArray::fromHex("0411000010 0412000110 0413000210 0417000310"
                                                    "0418000410 051100 051200 051300 051600 0502"))});
    seeds.push_back({"print", session(2, QByteArray::fromHex("08026400 108060 0600404010104040 00 0602130000"
                                                             "0403 1300 0402"))});
    seeds.push_back({"driver-fails", session(1, QByteArray::fromHex("080302f000000005 0103 0805 0103"))});
    seeds.push_back({"reopened", session(3, QByteArray::fromHex("000300 0004 01000010 0003 00"))});
    seeds.push_back({"other-family", session(4, QByteArray::fromHex("fa00010000 10 e1 02 01 e6 02 00"))});
    return seeds;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: scribera-fuzz-seeds DIRECTORY\n");
        return 2;
    }
    const QDir corpora(QString::fromLocal8Bit(argv[1]));
    write(corpora, "decode_bitmap", bitmaps());
    write(corpora, "decode_jpg", jpegs());
    write(corpora, "decode_png", pngs());
    write(corpora, "decode_ink", streams());
    write(corpora, "decode_text", texts());
    write(corpora, "ink_reader", inkTexts());
    write(corpora, "recording", recordings());
    write(corpora, "api", calls());
    return 0;
}

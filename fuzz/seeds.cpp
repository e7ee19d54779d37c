// Writes the corpora from which the fuzzers start: small images in the forms that their readers tell apart,
// headers that promise more than follows, ink packet streams whole and broken, ink in other forms,
// recordings, conversations with the virtual pad, sequences of calls, clients of the service, documents.

#ifdef SCRIBERA_SIGNS_DOCUMENTS
#include "document_seeds.h"
#endif
#include "padlink.h"
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
#include <cstring>
#include <iterator>
#include <limits>
#include <vector>

namespace {

struct Seed
{
    QByteArray name;
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
        {"wide-own-area", QByteArray("# scribera recording 1\nmodel: SCT580\narea: 550 180 29870 20120\n"
                                     "max-pressure: 8192\n0 -2147483648 2147483647 -2147483648 0\n")},
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

using Messages = std::vector<simulator::padlink::Message>;

QByteArray bytesOf(const Messages& messages)
{
    QByteArray bytes;
    for (const simulator::padlink::Message& message : messages)
        bytes += QByteArray::fromStdString(simulator::padlink::encode(message));
    return bytes;
}

// A conversation as link.cpp takes it: who speaks, in pieces of how many bytes, and what is said.
enum class Speaker
{
    Driver,
    Pad,
};

QByteArray said(Speaker speaker, int piece, const Messages& messages, const QByteArray& more = {})
{
    return QByteArray(1, static_cast<char>((piece - 1) * 2 + (speaker == Speaker::Pad ? 1 : 0))) +
           bytesOf(messages) + more;
}

Seeds conversations()
{
    using namespace simulator::padlink;
    constexpr auto driver = Speaker::Driver;
    constexpr auto pad = Speaker::Pad;
    const Hello hello{ProtocolVersion, SCK421B_DEVICE};
    const Welcome welcome{ProtocolVersion, "SCK421B"};
    const Picture picture{3, 2, std::vector<unsigned char>(12, 0x5a)};
    const Samples stroke{{{400, 500, 300, 0}, {410, 510, 320, 1}, {410, 510, 0, 2}}};
    const Samples wide{{{std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -1, 99}}};
    const FingerprintScan scan{80, std::vector<unsigned char>(simulator::FingerprintSize, 90)};
    const auto hex = QByteArray::fromHex;
    return {
        {"driver", said(driver, 7,
                        {hello, Clear{}, PenStyle{false}, Screen{true}, VersionInfo{true, "SCK421B\n2"},
                         picture, Screen{false}})},
        {"driver-byte-by-byte", said(driver, 1, {hello, Clear{}, VersionInfo{false, ""}, picture})},
        {"driver-twice", said(driver, 128, {hello, hello})},
        {"driver-unknown", said(driver, 128, {hello}, hex("07000000"))},
        {"driver-cut", said(driver, 3, {hello, picture}).chopped(1)},
        {"driver-switch", said(driver, 128, {hello}, hex("0201000002"))},
        {"driver-unprintable", said(driver, 128, {hello}, hex("0402000001ff"))},
        {"driver-version", said(driver, 128, {Hello{2, -1}})},
        {"picture-no-width", said(driver, 128, {hello}, hex("06060000000001000000"))},
        {"picture-short", said(driver, 128, {hello}, hex("0606000002000100ffff"))},
        {"picture-immense", said(driver, 128, {hello}, hex("06ffffffffffffff"))},
        {"pad", said(pad, 5, {welcome, stroke, wide})},
        {"pad-fingerprint", said(pad, 128, {welcome, scan, stroke})},
        {"pad-refuses", said(pad, 128, {Refusal{"it has another host"}, stroke})},
        {"pad-first-samples", said(pad, 128, {stroke})},
        {"pad-no-model", said(pad, 128, {}, hex("410c0000") + "SCRIBERA" + hex("01000000"))},
        {"pad-other-protocol", said(pad, 128, {}, hex("410d0000") + "scribera" + hex("0100000041"))},
        {"samples-uneven", said(pad, 128, {welcome}, hex("43110000") + QByteArray(17, '\1'))},
        {"nothing", said(pad, 1, {})},
    };
}

Seeds padsOfDrivers()
{
    using namespace simulator::padlink;
    const Welcome welcome{ProtocolVersion, "SCK421B"};
    const Samples touching{{{400, 500, 300, 0}, {410, 510, 320, 1}}};
    const Samples key{{{0, 0, 0, 4}}};
    const Samples lifted{{{410, 510, 0, 2}, {1, 1, 1, 77}}};
    const FingerprintScan scan{80, std::vector<unsigned char>(simulator::FingerprintSize, 90)};
    const auto whole = [](int refused, const Messages& messages, const QByteArray& more = {}) {
        return QByteArray(1, '\0') + static_cast<char>(refused) + bytesOf(messages) + more;
    };
    return {
        {"stroke", whole(0, {welcome, touching, lifted})},
        {"lost-while-touching", whole(0, {welcome, touching})},
        {"lost-on-a-key", whole(0, {welcome, touching, lifted, key})},
        {"refused-model", whole(1, {welcome, touching})},
        {"refused-samples", whole(3, {welcome, touching, touching, lifted})},
        {"fingerprint", whole(0, {welcome, scan, touching, lifted})},
        {"refused-fingerprint", whole(3, {welcome, touching, scan, lifted})},
        {"pad-refuses", whole(0, {Refusal{"it has another host"}, touching})},
        {"other-version", whole(0, {Welcome{2, "SCK421B"}, touching})},
        {"broken", whole(0, {welcome, touching}, "\x43\x01")},
        {"wrong", whole(0, {welcome, touching}, "\x01\x02\x03\x04")},
        {"silent", whole(0, {})},
        {"in-pieces", QByteArray("\x01\x00", 2) + bytesOf({welcome, touching, lifted, touching})},
    };
}

// Calls of the interface, as api.cpp reads them.
enum Group
{
    Open,
    AskPad,
    Pen,
    Points,
    Files,
    Texts,
    Fingerprint,
    About,
    PadDoes,
};

QByteArray byte(int value)
{
    return QByteArray(1, static_cast<char>(value));
}

QByteArray number(int value)
{
    if (value >= -0x10 && value < 0xe0)
        return byte(value + 0x10);
    const auto bits = static_cast<unsigned>(value);
    return byte(0xf0) + byte(bits >> 24) + byte(bits >> 16 & 0xff) + byte(bits >> 8 & 0xff) +
           byte(bits & 0xff);
}

QByteArray text(const QByteArray& bytes)
{
    return byte(bytes.size()) + bytes;
}

QByteArray call(Group group, const std::vector<QByteArray>& parts)
{
    QByteArray bytes = byte(group);
    for (const QByteArray& part : parts)
        bytes += part;
    return bytes;
}

const QByteArray OwnType = byte(0);
const QByteArray No = byte(0);
const QByteArray Yes = byte(1);

QByteArray openedByWindow(int family, int window)
{
    return call(Open, {byte(family), byte(0), byte(0), OwnType, number(window), byte(7)});
}

// With a canvas of 64 by 32 or 300 by 150.
QByteArray opened(int family, bool large = false)
{
    return call(Open, {byte(family), byte(1), byte(large ? 1 : 0), OwnType, number(0)});
}

QByteArray closed()
{
    return call(Open, {byte(3), OwnType});
}

// What the callbacks do beside looking about.
QByteArray withCallbacks(int status, int point)
{
    return call(Pen, {byte(3), Yes, byte(status), OwnType}) + call(Pen, {byte(4), No, byte(point), OwnType});
}

QByteArray signedOn(int family)
{
    constexpr int Samples[][4] = {{60, 64, 50, 0}, {110, 90, 60, 1}, {140, 100, 60, 1}, {140, 100, 0, 2}};
    const int scale = family < 2 ? 1 : 10;
    QByteArray samples = byte(static_cast<int>(std::size(Samples)));
    for (const auto& [x, y, pressure, status] : Samples)
        samples += number(x * scale) + number(y * scale) + number(pressure) + byte(status);
    return call(PadDoes, {byte(0), samples});
}

QByteArray keyPressed(int key)
{
    return call(PadDoes, {byte(1), byte(key)});
}

// The family is named with each call while no pad is open.
QByteArray everyFunction(const QByteArray& family = {})
{
    const auto call = [&](Group group, std::vector<QByteArray> parts) {
        parts.insert(parts.begin(), family);
        return ::call(group, parts);
    };
    QByteArray all;
    for (int what = 0; what < 7; ++what) {
        for (int index = 1; index <= (what == 2 ? 7 : 1); ++index)
            all += call(AskPad, {No, number(32), byte(what), Yes, number(index), OwnType});
    }
    if (family.isEmpty())
        all += signedOn(0);
    all += call(Pen, {byte(0), Yes, OwnType}) + call(Pen, {byte(1), number(5), OwnType}) +
           call(Pen, {byte(2), number(255), number(0), number(256), OwnType}) + call(Pen, {byte(5), OwnType});
    for (int index : {0, 3, 4, -1}) {
        for (int what = 0; what < 4; ++what)
            all += call(Points, {number(index), byte(what), what == 1 ? No : QByteArray(), OwnType});
    }
    for (int type = 0; type <= 9; ++type) {
        all += call(Files, {number(type), byte(0), byte(3), number(type % 2), OwnType});
        for (int what = 0; what < 3; ++what)
            all += call(Texts, {number(type), byte(type % 2), number(-1), byte(what), OwnType});
    }
    all += call(Files, {number(0), byte(1), number(3), number(4), Yes, OwnType}) +
           call(Files, {number(3), byte(0), byte(2), number(1), OwnType}) +
           call(Texts, {number(3), No, number(-1), byte(0), OwnType});
    all += call(Files,
                {number(EBITI_INK), byte(2), text(streams().front().bytes.toBase64()), No, byte(0), OwnType});
    for (int selector = 1; selector <= 3; ++selector)
        all += call(Points, {number(1), byte(4), number(selector), OwnType});
    const auto fingerprint = [&](int what) {
        return call(Fingerprint, {byte(what), number(EBITI_PNG), Yes, byte(25), byte(20), number(4),
                                  number(4), number(40), number(30), byte(17), number(-1), OwnType});
    };
    all += fingerprint(0) + fingerprint(1) +
           call(PadDoes, {byte(2), byte(0), byte(3), No, number(208 * 288), number(80)}) + fingerprint(2);
    all += call(About, {No, byte(1), OwnType, No});
    return all;
}

Seeds calls()
{
    static constexpr const char* names[] = {"k210", "k420", "k421b", "km730", "t580"};
    Seeds seeds;
    for (int family = 0; family < 5; ++family) {
        seeds.push_back({names[family], opened(family) + everyFunction()});
        seeds.push_back(
            {names[family] + QByteArray("-closed"),
             openedByWindow(family, 5) + everyFunction(byte(family)) + openedByWindow(family, 0)});
    }
    const QByteArray logged = call(About, {Yes, byte(0), OwnType, No});
    for (int does = 0; does < 7; ++does)
        seeds.push_back({"callback-" + QByteArray::number(does),
                         opened(does % 5) + withCallbacks(does, 6 - does) + signedOn(does % 5) +
                             keyPressed(1) + signedOn(does % 5) + keyPressed(0)});
    const auto fingerprint = [](int length, int score, const QByteArray& isNull = No) {
        return call(PadDoes, {byte(2), byte(9), byte(7), isNull, number(length), number(score)});
    };
    seeds.push_back({"prints", opened(2, true) + signedOn(2) + fingerprint(208 * 288, 50) +
                                   fingerprint(100, 60) + fingerprint(0, 70) +
                                   fingerprint(208 * 288, 80, Yes) + everyFunction()});
    for (int entryPoint = 0; entryPoint < 9; ++entryPoint)
        seeds.push_back({"driver-fails-" + QByteArray::number(entryPoint),
                         opened(2) + call(PadDoes, {byte(3), byte(entryPoint), number(5)}) + everyFunction() +
                             closed() + opened(2) + call(PadDoes, {byte(5)}) + opened(2)});
    for (const char* model : {"SCK210", "SCT470 %s%n", "", "SCK"})
        seeds.push_back({"model-" + QByteArray::number(static_cast<int>(std::strlen(model))),
                         byte(PadDoes) + byte(0) + byte(4) + text(model) + No + byte(0) + opened(0) +
                             signedOn(0) + everyFunction()});
    seeds.push_back({"logged", opened(0) + logged + signedOn(0) + keyPressed(1) +
                                   call(PadDoes, {byte(4), text("%s%n%99999d"), No, byte(0)}) +
                                   call(AskPad, {No, number(32), byte(1), Yes, OwnType})});
    seeds.push_back(
        {"reopened", opened(3) + signedOn(3) + closed() + opened(3, true) + signedOn(3) + closed()});
    // Other families, types and windows while one is open.
    seeds.push_back({"strangers", opened(4) + byte(0xe6) + byte(1) + byte(0) + byte(0) + OwnType +
                                      number(300) + byte(7) +
                                      call(Points, {number(0), byte(0), byte(7), number(2)}) + byte(0xea) +
                                      byte(0) + number(0) + byte(0) + OwnType});
    return seeds;
}

// Records of both forms of signature time series, by the layout that docs/ink-formats.md describes.
Seeds signatureRecords()
{
    const QByteArray head("SDI\0 10", 8);
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    const QByteArray ours = head + hex("c160 80a200 80a200 808000 00 00 00");
    const QByteArray points = hex("00 000002 83e87ffe0000010201 83e87ffe0005010200");
    return {
        {"full", ours + points},
        {"no-points", ours + hex("00 000000")},
        {"too-many", ours + hex("00 ffffff 83e87ffe0000010201")},
        {"cut", (ours + points).chopped(3)},
        {"followed", ours + points + hex("00")},
        {"steps", head + hex("c0e0 00 00 80a000 00 00 00 00 000002 80018002000100070180038004ffff000801")},
        {"statistics",
         head + hex("e141 f880008001800280038004 00 00 808800 00 00 00 80 000002 80018002ffff00020007"
                    "ffff 80038004000000080000ffff 0003616263")},
        {"all-channels", head + hex("ffff") + hex("fc").append(10, '\x11') + hex("00").repeated(15) +
                             hex("00 00 000001") + QByteArray(31, '\x80')},
        {"x-alone", head + hex("8000 00 00 00 000001 8001")},
        {"linear", head + hex("c000 02 00 00 00 000001 80018001")},
        {"scaled-away", head + hex("c100 00 00 800000 00 00 000002 800180010001 80018001ffff")},
        {"edition", QByteArray("SDI\0 20", 8) + hex("c000")},
        {"compact", hex("8080004001 81800a4001 82810a0000 00ffffff02")},
        {"compact-cut", hex("8080004001 8180")},
    };
}

// Ink in the forms that are texts.
Seeds inkDocuments()
{
    const auto inkMl = [](const QByteArray& content) {
        return "<ink xmlns=\"http://www.w3.org/2003/InkML\">" + content + "</ink>";
    };
    const QByteArray format =
        "<traceFormat xml:id=\"f\"><channel name=\"Y\"/><channel name=\"X\"/>"
        "<channel name=\"T\" respectTo=\"#t\"/><intermittentChannels><channel name=\"F\"/>"
        "<channel name=\"S\" type=\"boolean\"/></intermittentChannels></traceFormat>";
    const QByteArray start = "<timestamp xml:id=\"t\" time=\"1700000000000\"/>";
    return {
        {"inkml", inkMl("<trace>10 0,9 14.5,8 28</trace><trace type=\"penUp\">1 1</trace>")},
        {"inkml-differences", inkMl("<trace>1125 18432,'23'43,\"7\"-8,3-5,7 -3,!#F!*,? ?</trace>")},
        {"inkml-context", inkMl("<definitions>" + start + "</definitions><context xml:id=\"c\">" + format +
                                "</context><annotation type=\"first-tick\">-5</annotation>"
                                "<trace contextRef=\"#c\">1 2 3 400 T,1 2 8,1 2 9 1 F</trace>")},
        {"inkml-group", inkMl("<traceGroup><traceGroup><trace continuation=\"begin\">1 2</trace></traceGroup>"
                              "<annotationXML/><traceView/></traceGroup><trace>3 4</trace>")},
        {"inkml-time", inkMl("<definitions><timestamp xml:id=\"a\" timeString=\"2023-11-14T22:13:20Z\"/>"
                             "<timestamp xml:id=\"b\" timestampRef=\"#a\" timeOffset=\"-1\"/></definitions>"
                             "<trace timeOffset=\"30\">1 2</trace>")},
        {"inkml-units",
         inkMl("<context><inkSource><traceFormat><channel name=\"X\" type=\"integer\" units=\"cm\"/>"
               "<channel name=\"Y\" units=\"in\" orientation=\"-ve\" max=\"4\"/>"
               "<channel name=\"F\" min=\"-1\" max=\"1\"/><channel name=\"T\" units=\"s\"/></traceFormat>"
               "<channelProperties><channelProperty channel=\"X\" name=\"resolution\" value=\"1000\" "
               "units=\"1/cm\"/></channelProperties></inkSource></context>"
               "<trace>327 1.5 0 0,330 1.6 .5 .005</trace>")},
        {"inkml-steps",
         inkMl("<context><inkSource><traceFormat><channel name=\"X\"/><channel name=\"Y\"/><channel "
               "name=\"F\"/>"
               "</traceFormat><channelProperties><channelProperty channel=\"Y\" name=\"resolution\" "
               "value=\".01\" units=\"mm\"/></channelProperties></inkSource></context>"
               "<trace>1 2 .25,3 4 1</trace>")},
        {"inkml-entity", "<!DOCTYPE ink [<!ENTITY a \"1 2\">]>" + inkMl("<trace>&a;</trace>")},
        {"inkml-cut", inkMl(format).chopped(40)},
        {"inkml-large", inkMl("<trace>1e9 99999999999999999999,-.5 '2</trace>")},
        {"csv", "x,y,pressure,status,tick,seconds\n1,-2,3,0,-9223372036854775808,5\r\n1,2,3,1,7,8\n"},
        {"csv-status", "x,y,pressure,status,tick,seconds\n1,2,3,4,5,6\n"},
        {"json",
         R"({"points":[{"x":1,"y":-2,"pressure":3,"status":0,"tick":4,"seconds":9223372036854775807}]})"},
        {"json-broken", R"({"points":[{"x":1.5,"y":null},[)"},
        {"recording", "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\nmax-pressure: 2048\n"
                      "0 500 400 7 0\n5 501 402 9 1\n10 501 402 0 2\n500 3 1 1 4\n"},
    };
}

// A device, its mounting, and a signature on it.
Seeds penEvents()
{
    const auto raw = [](int value) {
        return QByteArray(reinterpret_cast<const char*>(&value), static_cast<int>(sizeof value));
    };
    const auto axis = [&](int first, int last, int resolution) {
        return raw(first) + raw(last) + raw(resolution);
    };
    const auto device = [](int model, int touch, const QByteArray& x, const QByteArray& y,
                           const QByteArray& rest) { return byte(model) + byte(touch) + x + y + rest; };
    const auto button = [](int index, int value) { return byte(1) + byte(index) + byte(value); };
    const auto value = [&](int index, int at) { return byte(3) + byte(index) + raw(at); };
    const QByteArray report = byte(6);
    const QByteArray lost = byte(0);
    const QByteArray plain = byte(0) + byte(0) + byte(0); // kept proportions, not turned, all of the surface
    const QByteArray stroke = button(3, 1) + value(0, 100) + value(1, 100) + report + button(0, 1) + report +
                              value(0, 200) + value(2, 900) + report + button(0, 0) + report + button(3, 0) +
                              report;
    const QByteArray keys = button(1, 1) + report + button(1, 0) + report + button(2, 1) + report +
                            button(0, 1) + report + button(2, 0) + report;
    const auto finger = [&](int slot, int id) {
        return value(3, slot) + value(6, id) + value(4, 300) + value(5, 300) + report;
    };
    const QByteArray fingers = finger(0, 1) + finger(1, 2) + value(3, 0) + value(4, 400) + report + lost +
                               report + value(7, 2) + report + value(6, -1) + report + finger(0, 3);
    const QByteArray tablet = axis(0, 21600, 100);
    const QByteArray force = byte(1) + axis(0, 8191, 0);
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    Seeds seeds;
    for (int model = 0; model < 5; ++model)
        seeds.push_back({"pen-" + QByteArray::number(model),
                         device(model, 1, tablet, axis(13500, 0, 90), force) + byte(0) + plain + stroke +
                             lost + report + keys + stroke});
    for (int turns = 0; turns < 4; ++turns)
        seeds.push_back({"turned-" + QByteArray::number(turns),
                         device(2, 1, tablet, tablet, force) + byte(0) + byte(turns % 2) + byte(turns) +
                             byte(1) + raw(1000) + raw(2500) + raw(50000) + raw(60001) + stroke});
    seeds.push_back({"by-pressure", device(0, 2, tablet, tablet, axis(0, 255, 0)) + byte(0) + plain +
                                        value(2, 5) + report + value(2, 0) + report});
    seeds.push_back({"no-pressure", device(3, 1, tablet, tablet, byte(0)) + byte(1) + plain + stroke});
    seeds.push_back({"absurd", device(4, 1, axis(kLeast, kMost, kMost), axis(kMost, kLeast, 1), force) +
                                   byte(0) + plain + value(0, kMost) + value(1, kLeast) + button(0, 1) +
                                   report});
    seeds.push_back({"fingers", device(2, 0, tablet, tablet, byte(0)) + byte(9) + byte(1) + plain + fingers});
    seeds.push_back({"garbage", device(2, 1, tablet, tablet, force) + byte(0) + plain + byte(4) +
                                    QByteArray::fromHex("0300ffff00000080") + stroke + byte(5) + byte(1) +
                                    byte(1)});
    return seeds;
}

QByteArray request(const char* method, const QByteArray& params)
{
    return QByteArray(R"({"jsonrpc":"2.0","id":1,"method":")") + method + R"(","params":)" + params + '}';
}

QByteArray resume(const QByteArray& counts)
{
    return request("resume", R"({"token":")" + QByteArray(43, 'A') + "\"," + counts + '}');
}

// One of each method, what is none, origins and hosts.
Seeds requestsOfPages()
{
    return {
        {"open", request("open", R"({"model":"K210","width":800,"height":485})")},
        {"resume", resume(R"("clears":1,"points":2,"keys":3)")},
        {"close", request("close", "{}")},
        {"clear", request("clear", "{}")},
        {"pen", request("pen", R"({"width":3,"color":"#00ffAB","pressure":true})")},
        {"points", request("points", R"({"from":0,"count":100})")},
        {"wait", request("wait", R"({"timeout":1000})")},
        {"image", request("image", R"({"format":"png","dpi":150,"clip":[10,10],"transparent":true})")},
        {"svg", request("svg", R"({"clip":[1,0]})")},
        {"ink", request("ink", "{}")},
        {"device", request("device", "{}")},
        {"fingerprint", request("fingerprint", R"({"format":"bmp"})")},
        {"batch", '[' + request("close", "{}") + ']'},
        {"large", R"({"jsonrpc":"2.0","id":9007199254740992,"method":"close"})"},
        {"deep", QByteArray(R"({"a":)").repeated(10) + '1' + QByteArray(10, '}')},
        {"origin", "https://counter.bank.example:8443"},
        {"local", "http://localhost:80"},
        {"host", "127.0.0.1:17283"},
        {"host6", "[::1]:17283"},
    };
}

// A client's frame. Its mask is zero, so that the engine sees what it says.
QByteArray frame(int first, const QByteArray& payload)
{
    QByteArray head = byte(first);
    if (payload.size() < 126)
        head += byte(0x80 | payload.size());
    else
        head += byte(0x80 | 126) + byte(payload.size() >> 8) + byte(payload.size() & 0xff);
    return head + QByteArray(4, 0) + payload;
}

Seeds clientsOfTheService()
{
    constexpr int text = 0x81;
    constexpr int firstPart = 0x01;
    constexpr int lastPart = 0x80;
    constexpr int binary = 0x82;
    constexpr int closing = 0x88;
    constexpr int ping = 0x89;
    constexpr int pong = 0x8a;
    const QByteArray asRequest = byte(0);
    const QByteArray asSocket = byte(1);
    const QByteArray inPieces = byte(3);
    const QByteArray open = request("open", R"({"model":"K210","width":800,"height":400})");
    const QByteArray image = request("image", R"({"format":"png","dpi":300,"clip":[10,10]})");
    const QByteArray goodbye = frame(closing, byte(0x03) + byte(0xe8) + "bye");
    return {
        {"health", asRequest + "GET /health HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"},
        {"example", asRequest + "GET /example?a=b HTTP/1.1\r\nHost: localhost\r\n\r\n"},
        {"head", asRequest + "HEAD /scribera-pad.js HTTP/1.0\r\nHost: [::1]\r\nOrigin: null\r\n\r\n"},
        {"body", asRequest + "POST /health HTTP/1.1\r\nHost: localhost\r\nContent-Length: 4\r\n\r\nbody"},
        {"chunks",
         asRequest + "GET / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\n\r\n"},
        {"path", asRequest + "GET /../../%2e%2e/etc/passwd HTTP/1.1\r\nHost: localhost\r\n\r\n"},
        {"long-header", asRequest + "GET /health HTTP/1.1\r\nHost: " + QByteArray(6000, 'a') + "\r\n\r\n"},
        {"no-request", asRequest + "\x16\x03\x01"},
        {"open", asSocket + frame(text, open) + goodbye},
        {"image", inPieces + frame(text, open) + frame(text, image)},
        {"parts",
         asSocket + frame(firstPart, open.left(20)) + frame(ping, "now") + frame(lastPart, open.mid(20))},
        {"wait", asSocket + frame(text, request("wait", R"({"timeout":1000})")) + frame(pong, "")},
        {"resume", asSocket + frame(text, resume(R"("clears":0,"points":0,"keys":0)"))},
        {"binary", asSocket + frame(binary, QByteArray(300, 1))},
        {"reserved", asSocket + frame(0xf1, "a")},
        {"unmasked", asSocket + QByteArray::fromHex("8105") + "hello"},
        {"endless", asSocket + QByteArray::fromHex("81ff") + QByteArray(8, '\x7f') + QByteArray(4, 0)},
        {"not-text", asSocket + frame(text, "\xc3\x28")},
        {"long-ping", asSocket + frame(ping, QByteArray(200, 'p'))},
        {"half-close", asSocket + frame(closing, byte(3))},
        {"many", asSocket + frame(text, "[]").repeated(250)},
    };
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
    write(corpora, "ink_document", inkDocuments());
    write(corpora, "iso_signature", signatureRecords());
    write(corpora, "link", conversations());
    write(corpora, "driver_link", padsOfDrivers());
    write(corpora, "recording", recordings());
    write(corpora, "api", calls());
    write(corpora, "pen_events", penEvents());
    write(corpora, "bridge_request", requestsOfPages());
    write(corpora, "bridge_socket", clientsOfTheService());
#ifdef SCRIBERA_SIGNS_DOCUMENTS
    Seeds documents;
    for (const auto& [name, content] : documentSeeds())
        documents.push_back({QByteArray::fromStdString(name), QByteArray::fromStdString(content)});
    write(corpora, "document", documents);
#endif
    return 0;
}

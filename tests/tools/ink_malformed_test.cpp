// Streams that are none: what is said of them, and where.

#include "support.h"

#include <QFile>

namespace {

class InkMalformedTest : public InkToolTest
{
protected:
    void expectRefused(const QByteArray& text, const std::string& message) const
    {
        SCOPED_TRACE(message);
        const Outcome piped = runInk({"info"}, text);
        EXPECT_EQ(piped.exitCode, 1);
        EXPECT_EQ(piped.output.toStdString(), "");
        EXPECT_EQ(piped.error.toStdString(), "scribera-ink: standard input:" + message + "\n");
        const QString file = write("broken.ink", text);
        const Outcome named = runInk({"to-csv", file, "-o", path("out")});
        EXPECT_EQ(named.exitCode, 1);
        EXPECT_EQ(named.error.toStdString(), "scribera-ink: " + file.toStdString() + ":" + message + "\n");
        EXPECT_FALSE(QFile::exists(path("out")));
    }
};

QByteArray changed(QByteArray bytes, int offset, char byte)
{
    bytes[offset] = byte;
    return bytes;
}

// The tap's text: 49 bytes in 68 characters.
QByteArray tap()
{
    return textOf({{10, 20, 30, 0, 100, 5}, {10, 20, 30, 1, 105, 5}});
}

} // namespace

TEST_F(InkMalformedTest, NoText)
{
    expectRefused("", "0: there is no text");
    expectRefused("\n \r\n", "0: there is no text");
}

TEST_F(InkMalformedTest, ForeignCharacters)
{
    ASSERT_EQ(tap().size(), 68);
    for (const char foreign : {'*', '-', '_', ' ', '\t', '=', '\0', '\x80', '\xFF'})
        expectRefused(changed(tap(), 33, foreign), "33: not a Base64 character");
    expectRefused(" " + tap(), "0: not a Base64 character");
    expectRefused(tap() + "\nAA==", "66: not a Base64 character");
}

TEST_F(InkMalformedTest, FaultsInABrokenTextAreNamedWhereTheyStand)
{
    QByteArray broken = tap();
    broken.insert(40, "\r\n").insert(20, '\n').insert(0, '\n');
    ASSERT_EQ(runInk({"info"}, broken).exitCode, 0);
    expectRefused(changed(broken, 1, '*'), "1: not a Base64 character");
    expectRefused(changed(broken, 22, '*'), "22: not a Base64 character");
    expectRefused(changed(broken, 44, ' '), "44: not a Base64 character");
    expectRefused(broken.left(71) + "\n \n", "71: the Base64 text ends within a group of four characters");
    expectRefused(broken.left(68) + '\n',
                  "68: the stream ends after 48 bytes, which are not whole records of 24 bytes and one more");
    expectRefused("A\nB=\n=\n", "2: the last Base64 character has bits that belong to no byte");
    expectRefused("AA=\n==\n", "6: the Base64 text ends within a group of four characters");
    expectRefused("\nA\n=\n==", "3: more than two padding characters");

    std::vector<Point> points = threeStrokes();
    points[0].status = 2;
    QByteArray text = textOf(points);
    text.insert(8, '\n');
    expectRefused(text, "9: record 1, at byte 0 of the stream: status 2 is neither 0 nor 1");
}

TEST_F(InkMalformedTest, TruncatedText)
{
    for (const int length : {1, 2, 3, 63, 66, 67})
        expectRefused(tap().left(length),
                      std::to_string(length) + ": the Base64 text ends within a group of four characters");
    expectRefused(tap() + '=', "69: the Base64 text ends within a group of four characters");
    expectRefused("A===", "1: more than two padding characters");
    expectRefused("====", "0: more than two padding characters");
}

TEST_F(InkMalformedTest, BitsThatBelongToNoByte)
{
    expectRefused("AB==", "1: the last Base64 character has bits that belong to no byte");
    expectRefused("AAAAAAB=", "6: the last Base64 character has bits that belong to no byte");
}

TEST_F(InkMalformedTest, SizesThatAreNoRecordsAndOneByte)
{
    const QByteArray stream = streamOf(threeStrokes());
    for (const int size : {2, 23, 24, 26, 48, 50, static_cast<int>(stream.size()) - 1}) {
        const QByteArray text = stream.left(size).toBase64();
        expectRefused(text + '\n', std::to_string(text.size()) + ": the stream ends after " +
                                       std::to_string(size) +
                                       " bytes, which are not whole records of 24 bytes and one more");
    }
}

TEST_F(InkMalformedTest, AnotherLastByteThanZero)
{
    expectRefused(changed(streamOf({}), 0, 'x').toBase64(),
                  "0: the byte after the last record, byte 0 of the stream, is not zero");
    const QByteArray stream = streamOf({{10, 20, 30, 0, 100, 5}, {10, 20, 30, 1, 105, 5}});
    expectRefused(changed(stream, 48, '\1').toBase64(),
                  "64: the byte after the last record, byte 48 of the stream, is not zero");
}

TEST_F(InkMalformedTest, UnknownStatus)
{
    std::vector<Point> points = threeStrokes();
    points[0].status = 2;
    expectRefused(textOf(points), "8: record 1, at byte 0 of the stream: status 2 is neither 0 nor 1");
    points = threeStrokes();
    points[4].status = 255;
    expectRefused(textOf(points), "136: record 5, at byte 96 of the stream: status 255 is neither 0 nor 1");
}

TEST_F(InkMalformedTest, TicksThatGoBack)
{
    std::vector<Point> points = threeStrokes();
    points[2].tick = points[1].tick; // at the same moment is allowed
    EXPECT_EQ(runInk({"info"}, textOf(points)).exitCode, 0);
    points[2].tick = points[1].tick - 1;
    expectRefused(textOf(points),
                  "74: record 3, at byte 48 of the stream: tick 5004 is before the previous record's, 5005");
}

TEST_F(InkMalformedTest, TheFirstFaultIsNamed)
{
    std::vector<Point> points = threeStrokes();
    points[1].status = 7;
    points[3].status = 9;
    expectRefused(textOf(points), "40: record 2, at byte 24 of the stream: status 7 is neither 0 nor 1");
    expectRefused(changed(textOf(points), 100, '!'), "100: not a Base64 character");
}

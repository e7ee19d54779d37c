// Signatures as files.
#include "padsupport.h"
#include "surroundings.h"

#include <QFile>
#include <QImage>
#include <QSvgRenderer>

namespace {

class PadSign : public PadToolTest
{
protected:
    PadOutcome signed_(const QStringList& options,
                       const Variables& variables = playing("flowing.rec", "confirm")) const
    {
        return run(QStringList{"sign", "--driver", "simulated"} + options, variables);
    }
    QImage picture(const QStringList& options, const char* file = "a.png") const
    {
        const PadOutcome outcome = signed_(options + QStringList{"-o", file});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
        return QImage(path(file)).convertToFormat(QImage::Format_ARGB32);
    }
};

int countOf(const QImage& image, QRgb color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color ? 1 : 0;
    return count;
}

constexpr QRgb black = 0xff000000;

TEST_F(PadSign, SavesEveryKindOfFile)
{
    QStringList options;
    const QStringList suffixes = {"png", "jpg", "jpeg", "bmp", "pdf", "svg", "ink", "txt", "PNG"};
    for (const QString& suffix : suffixes)
        options += {"-o", "a." + suffix};
    const PadOutcome outcome = signed_(options);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    EXPECT_TRUE(outcome.output.startsWith("K210: 701 points, 4 strokes, ")) << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("\na.png\na.jpg\n"));
    EXPECT_EQ(outcome.error.toStdString(), "Please sign on the pad K210, then touch its confirm key.\n");
    for (const QString suffix : {"png", "jpg", "jpeg", "bmp", "PNG"}) {
        const QImage image = QImage(path("a." + suffix)).convertToFormat(QImage::Format_ARGB32);
        EXPECT_EQ(image.size(), QSize(660, 400)) << suffix.toStdString();
        EXPECT_GT(countOf(image, black), 200) << suffix.toStdString();
        EXPECT_EQ(image.pixel(0, 0), 0xffffffff) << suffix.toStdString();
    }
    const QByteArray pdf = readFile(path("a.pdf"));
    EXPECT_TRUE(pdf.startsWith("%PDF-") && pdf.trimmed().endsWith("%%EOF") &&
                pdf.contains("/Subtype /Image"));
    EXPECT_TRUE(QSvgRenderer(readFile(path("a.svg"))).isValid());
    for (const char* file : {"a.ink", "a.txt"}) {
        const QByteArray stream = QByteArray::fromBase64(readFile(path(file)));
        EXPECT_EQ(stream.size(), 701 * 24 + 1) << file;
    }
}

TEST_F(PadSign, SavesThePictureThatIsWanted)
{
    EXPECT_EQ(picture({"--transparent"}).pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(picture({"--size", "300x200"}).size(), QSize(300, 200));
    EXPECT_EQ(picture({"--model", "T580"}).size(), QSize(594, 400));
    const QImage clipped = picture({"--clip"});
    EXPECT_LT(clipped.width(), 660);
    EXPECT_LT(clipped.height(), 400);
    EXPECT_GT(countOf(picture({"--colour", "#0000ff"}), 0xff0000ff), 200);
    EXPECT_GT(countOf(picture({"--width", "9"}), black), countOf(picture({"--width", "1"}), black));
    EXPECT_NEAR(picture({"--dpi", "150"}).dotsPerMeterX(), 150 / 0.0254, 2);
    EXPECT_NEAR(picture({}).dotsPerMeterX(), 300 / 0.0254, 2);
}

TEST_F(PadSign, EndsAtTheCancelKey)
{
    write("a.png", "older");
    const PadOutcome outcome = signed_({"-o", "a.png"}, playing("flowing.rec", "cancel"));
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_TRUE(outcome.error.endsWith("scribera-pad: cancelled; nothing is saved\n"));
    EXPECT_EQ(readFile(path("a.png")), "older");
}

TEST_F(PadSign, EndsWhenNobodyConfirms)
{
    const PadOutcome outcome = signed_({"-o", "a.png", "--timeout", "1"}, {});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_TRUE(outcome.error.endsWith("scribera-pad: nobody confirmed in time; nothing is saved\n"));
    EXPECT_FALSE(QFile::exists(path("a.png")));
}

TEST_F(PadSign, SavesNothingWithoutInk)
{
    write("tap.rec", "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\nmax-pressure: 2048\n"
                     "0 200 300 1024 0\n5 200 300 0 2\n");
    Variables tap = playing("", "confirm");
    tap["SCRIBERA_SIM_RECORDING"] = "tap.rec";
    for (const Variables& variables : {playing("", "confirm"), tap}) {
        const PadOutcome outcome = signed_({"-o", "a.png", "-o", "a.ink"}, variables);
        EXPECT_EQ(outcome.exitCode, 5);
        EXPECT_TRUE(outcome.error.endsWith("scribera-pad: confirmed without a signature; nothing is saved\n"))
            << outcome.error.toStdString();
        EXPECT_FALSE(QFile::exists(path("a.png")) || QFile::exists(path("a.ink")));
    }
}

TEST_F(PadSign, SavesAnOlderFilesReplacementWithItsPermissions)
{
    write("a.png", "older");
    QFile::setPermissions(path("a.png"), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(signed_({"-o", "a.png"}).exitCode, 0);
    EXPECT_TRUE(readFile(path("a.png")).startsWith(QByteArray::fromHex("89504e47")));
    EXPECT_EQ(QFile::permissions(path("a.png")) & (QFile::ReadGroup | QFile::ReadOther), 0);
}

TEST_F(PadSign, SaysThatAFileCannotBeWritten)
{
    const PadOutcome folder = signed_({"-o", "none/a.png"});
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_TRUE(folder.error.startsWith("scribera-pad: none/a.png: cannot be written: there is no folder "))
        << folder.error.toStdString();
    for (const char* suffix : {"png", "jpg", "bmp", "pdf", "svg", "ink"}) {
        const QString full = QStringLiteral("full.") + suffix;
        EXPECT_TRUE(QFile::link("/dev/full", path(full)));
        const PadOutcome outcome = signed_({"-o", full});
        EXPECT_EQ(outcome.exitCode, 1) << suffix;
        EXPECT_TRUE(outcome.error.endsWith("scribera-pad: " + full.toLatin1() +
                                           ": cannot be written: No space left on device\n"))
            << outcome.error.toStdString();
    }
}

TEST_F(PadSign, SaysThatThereIsNoRoomToMakeAPicture)
{
    for (const char* suffix : {"png", "jpg", "bmp", "pdf", "svg"}) {
        const QString file = QStringLiteral("a.") + suffix;
        // A page is left for the folder and the driver's link.
        if (!scribera::test::resizePrivateTmp("size=4096"))
            GTEST_SKIP() << "the system gives no /tmp of its own";
        Variables variables = playing("flowing.rec", "confirm");
        variables["TMPDIR"] = "/tmp";
        const PadOutcome outcome = signed_({"-o", file}, variables);
        scribera::test::resizePrivateTmp("size=50%");
        EXPECT_EQ(outcome.exitCode, 1) << suffix;
        EXPECT_TRUE(outcome.error.contains(file.toLatin1() + ": cannot be made: "))
            << outcome.error.toStdString();
        EXPECT_FALSE(QFile::exists(path(file)));
    }
}

TEST_F(PadSign, TakesPathsBeyondAscii)
{
    const QString file = QString::fromUtf8("zażółć.png");
    EXPECT_EQ(signed_({"-o", file}).exitCode, 0);
    EXPECT_TRUE(QFile::exists(path(file)));
}

TEST_F(PadSign, SignsInAWindow)
{
    Variables variables = playing("flowing.rec", "confirm");
    variables["QT_QPA_PLATFORM"] = "offscreen";
    const PadOutcome outcome = signed_({"--window", "-o", "a.png"}, variables);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    EXPECT_GT(countOf(QImage(path("a.png")).convertToFormat(QImage::Format_ARGB32), black), 200);
    variables["SCRIBERA_SIM_KEY"] = "cancel";
    EXPECT_EQ(signed_({"--window", "-o", "b.png"}, variables).exitCode, 3);
    variables.remove("SCRIBERA_SIM_KEY");
    EXPECT_EQ(signed_({"--window", "--timeout", "1", "-o", "b.png"}, variables).exitCode, 4);
    EXPECT_FALSE(QFile::exists(path("b.png")));
}

TEST_F(PadSign, SaysThatNoWindowCanBeShown)
{
    const PadOutcome none = signed_({"--window", "-o", "a.png"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.error.toStdString(), "scribera-pad: no window can be shown: there is no display\n");
    const PadOutcome wrong = signed_({"--window", "-o", "a.png"}, {{"QT_QPA_PLATFORM", "nonsense"}});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_EQ(wrong.error.toStdString(),
              "scribera-pad: no window can be shown: QT_QPA_PLATFORM=nonsense cannot be used\n");
}

} // namespace

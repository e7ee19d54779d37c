// scribera-virtual-pad as a user starts it.
#include "files.h"
#include "support.h"

#include <QIcon>
#include <QImage>

#include <algorithm>

namespace {

class ProgramTest : public testing::Test
{
protected:
    ProgramTest()
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        unsetenv("QT_SCALE_FACTOR");
    }

    static Outcome run(const std::vector<std::string>& arguments)
    {
        return runProgram(SCRIBERA_VIRTUAL_PAD, arguments);
    }

    static void expectRefused(const std::vector<std::string>& arguments, int exitCode,
                              const std::string& reason)
    {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_EQ(outcome.error.rfind("scribera-virtual-pad: ", 0), 0U) << outcome.error;
        EXPECT_NE(outcome.error.find(reason), std::string::npos) << outcome.error << " for " << reason;
    }

    static int inkPixels(const QImage& image)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                count += colour.blue() > colour.red() + 40 && colour.red() < 60 ? 1 : 0;
            }
        }
        return count;
    }
};

} // namespace

TEST_F(ProgramTest, HelpAndVersionNeedNoDisplay)
{
    unsetenv("QT_QPA_PLATFORM");
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.error, "");
    for (const char* option : {"--model", "--socket", "--replay", "--loop", "--fingerprint", "--position",
                               "--size", "--screenshot", "--help", "--version", "SCT480R1", "Exit code"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, "scribera-virtual-pad " SCRIBERA_VERSION "\n");
    setenv("DISPLAY", "nobody.invalid:7", 1); // nor a display that can be reached
    EXPECT_EQ(run({"-h"}).output, help.output);
    EXPECT_EQ(run({"-v"}).output, version.output);
    unsetenv("DISPLAY");
    expectRefused({}, 1, "there is no display");
    expectRefused({"--modell"}, 2, "Unknown option 'modell'");
}

TEST_F(ProgramTest, QtsOwnOptionsAreAccepted)
{
    unsetenv("QT_QPA_PLATFORM");
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    for (const char* platform : {"-platform", "--platform"}) {
        const Outcome outcome = run({"--size", "700x600", platform, "offscreen", "-style", "fusion",
                                     "--screenshot", "shot.png", "--socket", SocketName});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(QImage(QStringLiteral("shot.png")).size(), QSize(700, 600));
    }
    expectRefused({"-platform", "offscreen", "--modell"}, 2, "Unknown option 'modell'");
}

TEST_F(ProgramTest, ModelsAreNamedWithAndWithoutTheirPrefix)
{
    for (const std::string model : {"K421B", "SCK421B"}) {
        const std::string path = model + ".png";
        const Outcome outcome = run({"--screenshot", path, "--model", model, "--socket", SocketName});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    }
    EXPECT_EQ(QImage(QStringLiteral("K421B.png")), QImage(QStringLiteral("SCK421B.png")));
}

TEST_F(ProgramTest, TheDesktopFindsTheProgramAndItsIcon)
{
    const std::filesystem::path folder(SCRIBERA_VIRTUAL_PAD_SOURCES);
    const std::string name = std::filesystem::path(SCRIBERA_VIRTUAL_PAD).filename();
    const std::string entry = '\n' + contentOf(folder / (name + ".desktop"));
    for (const char* line : {"[Desktop Entry]", "Type=Application", "Terminal=false"})
        EXPECT_NE(entry.find('\n' + std::string(line) + '\n'), std::string::npos) << line;
    for (const char* key : {"Exec=", "Icon="})
        EXPECT_NE(entry.find('\n' + (key + name) + '\n'), std::string::npos) << key;
    const QIcon icon(QString::fromStdString(folder / (name + ".svg")));
    for (const int size : {16, 48, 256}) {
        const QImage image = icon.pixmap(size).toImage();
        ASSERT_EQ(image.size(), QSize(size, size));
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
        EXPECT_GT(image.pixelColor(size / 4, size / 2).lightness(), 150) << "the pad's screen";
    }
}

TEST_F(ProgramTest, WrongArgumentsAreRefusedWithTwo)
{
    expectRefused({"--modell", "SCK210"}, 2, "Unknown option 'modell'");
    expectRefused({"--model"}, 2, "Missing value");
    expectRefused({"--model", "SCK2"}, 2, "there is no model 'SCK2'");
    expectRefused({"--model", "SCK210X"}, 2, "there is no model 'SCK210X'");
    expectRefused({"--model", "SCK210", "--model", "SCK420"}, 2, "--model is given twice");
    expectRefused({"--model", "SCK210", "--fingerprint", "loop"}, 2, "has no fingerprint sensor");
    expectRefused({"--replay="}, 2, "--replay needs a value");
    expectRefused({"--loop"}, 2, "--loop needs --replay");
    expectRefused({"--loop", "--replay", "x", "--screenshot", "y"}, 2, "never ends");
    expectRefused({"--position", "3"}, 2, "the position '3' is not X,Y");
    expectRefused({"--position", "3,x"}, 2, "is not X,Y");
    expectRefused({"--size", "800"}, 2, "the size '800' is not WxH");
    expectRefused({"--size", "0x10"}, 2, "is not WxH");
    expectRefused({"--size", "99999x10"}, 2, "is not WxH");
    expectRefused({"file.rec"}, 2, "unexpected argument 'file.rec'");
}

TEST_F(ProgramTest, FailuresAreReportedWithOne)
{
    std::string error;
    ASSERT_TRUE(simulator::writeFile("# scribera recording 1\nmodel: X\nnonsense\n", "bad.rec", error));
    expectRefused({"--replay", "missing.rec"}, 1, "missing.rec: cannot be opened");
    expectRefused({"--replay", "bad.rec"}, 1, "bad.rec:3: ");
    expectRefused({"--fingerprint", "missing.pgm"}, 1, "missing.pgm: cannot be opened");
    expectRefused({"--fingerprint", "bad.rec"}, 1, "bad.rec: ");
    expectRefused({"--socket", std::string(120, 'x')}, 1, "longer than");
    expectRefused({"--socket", "missing/pad"}, 1, "missing/pad: ");
    ListeningPad pad;
    expectRefused({"--socket", SocketName}, 1, "pad: another virtual pad is listening there");
}

TEST_F(ProgramTest, AScreenshotShowsTheWindow)
{
    const Outcome outcome = run({"--screenshot", "shot.png", "--size", "700x600", "--socket", SocketName});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    const QImage image(QStringLiteral("shot.png"));
    EXPECT_EQ(image.size(), QSize(700, 600));
    EXPECT_EQ(inkPixels(image), 0);
    EXPECT_FALSE(std::filesystem::exists(SocketName)) << "it takes its socket with it";
    const Outcome failed = run({"--screenshot", "missing/shot.png", "--socket", SocketName});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_NE(failed.error.find("missing/shot.png: cannot be written"), std::string::npos) << failed.error;
}

TEST_F(ProgramTest, AScreenshotAfterAReplayShowsTheInk)
{
    std::string error;
    simulator::Recording recording{"SCK210", {160, 220, 2360, 1430}, 2048, {}, true};
    for (int index = 0; index <= 40; ++index)
        recording.samples.push_back({index * 5, 400 + index * 40, 900, 900,
                                     index == 0    ? 0
                                     : index == 40 ? 2
                                                   : 1});
    ASSERT_TRUE(simulator::writeRecording(recording, "line.rec", error));
    for (const char* model : {"SCK210", "SCK421B"}) {
        const Outcome outcome = run({"--screenshot", "shot.png", "--replay", "line.rec", "--model", model,
                                     "--size", "790x700", "--socket", SocketName});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_GT(inkPixels(QImage(QStringLiteral("shot.png"))), 400) << model;
    }
}

TEST_F(ProgramTest, EachHostIsShownTheRecordingAndThenTheFinger)
{
    std::string error;
    simulator::Recording recording{"SCK421B", {2050, 1750, 21170, 11490}, 2048, {}, true};
    recording.samples = {{0, 5000, 5000, 900, 0}, {5, 5100, 5000, 900, 1}, {10, 5100, 5000, 0, 2}};
    ASSERT_TRUE(simulator::writeRecording(recording, "line.rec", error));
    PadProcess pad({QStringLiteral("--replay"), QStringLiteral("line.rec"), QStringLiteral("--fingerprint"),
                    QStringLiteral("arch")});
    ASSERT_TRUE(waitUntil([] { return std::filesystem::exists(SocketName); }));
    enableLink();
    std::vector<unsigned char> pixels;
    ASSERT_TRUE(virtualpad::VirtualPad::readFinger("arch", pixels, error));
    for (int round = 0; round < 2; ++round) {
        Received::clear();
        Driver driver;
        ASSERT_EQ(driver.start(7), 0);
        ASSERT_EQ(driver.openLcd(true), 0);
        ASSERT_TRUE(waitUntil([] { return Received::all().size() >= 4; }));
        EXPECT_EQ(Received::samples(), samplesOf(recording));
        EXPECT_EQ(Received::all().back().pixels, pixels);
        EXPECT_EQ(Received::all().back().score, 80);
    }
}

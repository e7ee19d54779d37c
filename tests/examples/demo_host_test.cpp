// The demo host's command line, run as a person runs it.
#include "support.h"

#include <QDir>
#include <QIcon>
#include <QRegularExpression>

#include <algorithm>

namespace {

// Of the window at its first size: the inside of the signature field.
constexpr QRect signatureField(60, 205, 660, 345);
constexpr QSize windowSize(1080, 660);

class DemoHost : public HostTest
{
protected:
    Outcome runHost(const QStringList& arguments, const Variables& variables = {}) const
    {
        return run(SCRIBERA_DEMO_HOST, arguments, variables);
    }
    static Variables signing(const char* key)
    {
        return {{"SCRIBERA_SIM_RECORDING", recording("flowing.rec")}, {"SCRIBERA_SIM_KEY", key}};
    }
    // The host's own lines; the platform plugin of these tests has things to say too.
    static QStringList complaints(const Outcome& outcome)
    {
        return QString::fromStdString(outcome.error)
            .split('\n')
            .filter(QRegularExpression("^scribera-demo-host: "));
    }
};

class DemoHostOnModel : public DemoHost, public testing::WithParamInterface<const char*>
{
};

TEST_P(DemoHostOnModel, SavesAllAndShowsTheInk)
{
    Variables variables = signing("confirm");
    variables["SCRIBERA_SIM_FINGERPRINT"] = "loop";
    variables["SCRIBERA_SIM_RATE"] = "4"; // the fingerprint has to reach the pad's screen before the key
    const Outcome outcome = runHost({"--model", GetParam(), "--auto-save", "out/deep", "--screenshot",
                                     "window.png", "--after", "confirm"},
                                    variables);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(complaints(outcome), QStringList());

    QStringList expected = {"signature.bmp", "signature.ink", "signature.jpg",
                            "signature.pdf", "signature.png", "signature.svg"};
    const bool hasReader = std::string(GetParam()) == "K421B";
    if (hasReader)
        expected.prepend("fingerprint.png");
    EXPECT_EQ(QDir(path("out/deep")).entryList(QDir::Files, QDir::Name), expected);
    for (const QString& name : expected.filter("signature"))
        EXPECT_TRUE(holdsDrawing(contentOf(path("out/deep/" + name)), name.section('.', 1)));
    if (hasReader) {
        const QImage print(path("out/deep/fingerprint.png"));
        EXPECT_GT(countOf(print, print.rect(), qRgb(255, 0, 0)), print.width() * print.height() / 10);
    }
    EXPECT_EQ(pointsIn(contentOf(path("out/deep/signature.ink"))),
              signatureIn(recording("flowing.rec")).points);

    const QImage window(path("window.png"));
    EXPECT_EQ(window.size(), windowSize);
    EXPECT_GT(countOf(window, signatureField, qRgb(0, 0, 0)), 1000);
}

INSTANTIATE_TEST_SUITE_P(Models, DemoHostOnModel, testing::Values("K210", "K420", "K421B", "KM730", "T580"),
                         [](const auto& model) { return std::string(model.param); });

TEST_F(DemoHost, ShowsNoInkBeforeThePersonSigns)
{
    ASSERT_EQ(runHost({"--screenshot", "window.png", "--after", "0.3"}).exitCode, 0);
    const QImage window(path("window.png"));
    EXPECT_EQ(window.size(), windowSize);
    EXPECT_EQ(countOf(window, signatureField, qRgb(0, 0, 0)), 0);
}

TEST_F(DemoHost, DrawsTwiceAsFineOnAFineScreen)
{
    Variables variables = signing("confirm");
    variables["QT_SCALE_FACTOR"] = "2";
    const QStringList arguments = {"--auto-save", "fine", "--screenshot", "window.png", "--after", "confirm"};
    ASSERT_EQ(runHost(arguments, variables).exitCode, 0);
    const QImage window(path("window.png"));
    EXPECT_EQ(window.size(), 2 * windowSize);
    const QRect field(2 * signatureField.topLeft(), 2 * signatureField.size());
    EXPECT_GT(countOf(window, field, qRgb(0, 0, 0)), 4000);
    // Magnified, a picture has four equal pixels for each one.
    int mixed = 0;
    for (int y = field.top(); y < field.bottom(); y += 2)
        for (int x = field.left(); x < field.right(); x += 2)
            mixed +=
                window.pixel(x, y) != window.pixel(x + 1, y) || window.pixel(x, y) != window.pixel(x, y + 1)
                    ? 1
                    : 0;
    EXPECT_GT(mixed, 500);
    // What is saved has as many pixels as the screen shows.
    variables.remove("QT_SCALE_FACTOR");
    ASSERT_EQ(runHost({"--auto-save", "coarse"}, variables).exitCode, 0);
    const int fine = QImage(path("fine/signature.png")).width() - 2 * 12;
    const int coarse = QImage(path("coarse/signature.png")).width() - 2 * 12;
    EXPECT_NEAR(fine, 2 * coarse, 20);
    EXPECT_GT(coarse, 200);
}

TEST_F(DemoHost, HelpsWithoutADisplay)
{
    for (const char* option : {"--help", "-h", "--version", "-v"}) {
        const Outcome outcome = runHost({option}, {{"QT_QPA_PLATFORM", "xcb"}});
        EXPECT_EQ(outcome.exitCode, 0) << option << ": " << outcome.error;
        EXPECT_NE(outcome.output.find("scribera-demo-host"), std::string::npos) << option;
    }
}

TEST_F(DemoHost, EndsAtTheCancelKeyWhenItWasToSave)
{
    const Outcome outcome = runHost({"--auto-save", "out"}, signing("cancel"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(complaints(outcome), QStringList("scribera-demo-host: cancelled at the pad"));
    EXPECT_TRUE(QDir(path("out")).entryList(QDir::Files).isEmpty());
}

TEST_F(DemoHost, SaysThatTheDriverIsMissing)
{
    unplug();
    const Outcome outcome = runHost({"--auto-save", "out"});
    EXPECT_EQ(outcome.exitCode, 1);
    ASSERT_EQ(complaints(outcome).size(), 1) << outcome.error;
    EXPECT_TRUE(complaints(outcome)[0].startsWith("scribera-demo-host: no pad: There is no driver: "));
}

TEST_F(DemoHost, ShowsItsWindowWithoutADriver)
{
    unplug();
    EXPECT_EQ(runHost({"--screenshot", "window.png", "--after", "0.3"}).exitCode, 0);
    EXPECT_EQ(QImage(path("window.png")).size(), windowSize);
}

TEST_F(DemoHost, SaysWhatCannotBeSaved)
{
    write("taken", "a file");
    EXPECT_EQ(runHost({"--auto-save", "taken"}).exitCode, 1);
    const Outcome picture = runHost({"--screenshot", "nowhere/window.png", "--after", "0"});
    EXPECT_EQ(picture.exitCode, 1);
    EXPECT_EQ(complaints(picture), QStringList("scribera-demo-host: cannot save nowhere/window.png"));
    QDir(path(".")).mkpath("out/signature.pdf");
    const Outcome file = runHost({"--auto-save", "out", "--screenshot", "window.png", "--after", "confirm"},
                                 signing("confirm"));
    EXPECT_EQ(file.exitCode, 1);
    EXPECT_EQ(complaints(file), QStringList("scribera-demo-host: cannot save out/signature.pdf"));
}

TEST_F(DemoHost, RefusesWrongUsageInOneLine)
{
    const QList<QStringList> calls = {
        {"--model", "K999"}, {"--model"},     {"--frobnicate"},   {"stray"},          {"--after", "later"},
        {"--after", "-1"},   {"--after", ""}, {"--after", "1e9"}, {"--after", "nan"}, {"--auto-save"}};
    for (const QStringList& call : calls) {
        const Outcome outcome = runHost(call);
        const std::string shown = call.join(' ').toStdString();
        EXPECT_EQ(outcome.exitCode, 2) << shown;
        EXPECT_EQ(outcome.error.rfind("scribera-demo-host: ", 0), 0u) << shown << ": " << outcome.error;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << shown;
    }
}

TEST_F(DemoHost, DesktopEntryNamesTheDemoAndTheIcon)
{
    const QString stem = QStringLiteral(SCRIBERA_DEMO_HOST_SOURCES "/scribera-demo-host");
    const QList<QByteArray> lines = contentOf(stem + ".desktop").split('\n');
    for (const char* line : {"[Desktop Entry]", "Type=Application", "Exec=scribera-demo --window",
                             "Icon=scribera-demo-host", "Terminal=false"})
        EXPECT_TRUE(lines.contains(line)) << line;
    const QIcon icon(stem + ".svg");
    for (const int size : {16, 48, 256}) {
        const QImage image = icon.pixmap(size).toImage();
        ASSERT_EQ(image.size(), QSize(size, size));
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
        EXPECT_GT(image.pixelColor(size / 2, size / 8).lightness(), 200) << "the form's paper";
    }
}

TEST_F(DemoHost, HelpsAndNamesItsVersion)
{
    const Outcome help = runHost({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* option : {"--model", "--auto-save", "--screenshot", "--after", "--version"})
        EXPECT_NE(help.output.find(option), std::string::npos) << option;
    const Outcome version = runHost({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, "scribera-demo-host " SCRIBERA_VERSION "\n");
}

} // namespace

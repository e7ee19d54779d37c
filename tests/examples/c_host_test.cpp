// The host in C, run as a person runs it.
#include "support.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

namespace {

class CHost : public HostTest
{
protected:
    Outcome runHost(const QStringList& arguments, const Variables& variables = {}) const
    {
        return run(SCRIBERA_C_HOST, arguments, variables);
    }
    static Variables signing(const char* key)
    {
        return {{"SCRIBERA_SIM_RECORDING", recording("flowing.rec")}, {"SCRIBERA_SIM_KEY", key}};
    }
};

class CHostOnModel : public CHost, public testing::WithParamInterface<const char*>
{
};

const std::string prompt = "Please sign on the K210, then touch its confirm key.\n";

TEST_P(CHostOnModel, SavesEveryKindOfFile)
{
    QStringList files;
    const QStringList suffixes = {"bmp", "jpg", "png", "pdf", "svg", "ink"};
    for (const QString& suffix : suffixes)
        files += "signature." + suffix;
    const Outcome outcome = runHost(QStringList{"--model", GetParam()} + files, signing("confirm"));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    for (const QString& suffix : suffixes)
        EXPECT_TRUE(holdsDrawing(contentOf(path("signature." + suffix)), suffix));

    const Recorded expected = signatureIn(recording("flowing.rec"));
    EXPECT_EQ(pointsIn(contentOf(path("signature.ink"))), expected.points);
    const std::string counted = std::string(GetParam()) + ": " + std::to_string(expected.points) +
                                " points, " + std::to_string(expected.strokes) + " strokes, ";
    EXPECT_EQ(outcome.output.substr(0, counted.size()), counted);
    EXPECT_NE(outcome.output.find("\nsignature.png\n"), std::string::npos) << outcome.output;
}

INSTANTIATE_TEST_SUITE_P(Models, CHostOnModel, testing::Values("K210", "K420", "K421B", "KM730", "T580"),
                         [](const auto& model) { return std::string(model.param); });

// The library stamps each point right before it tells the host, so both clocks see the same delays of a busy
// machine. The pause before the first point is long enough to show in a time that began too early.
TEST_F(CHost, TellsTheTimeOfTheSignature)
{
    Variables variables = signing("confirm");
    variables["SCRIBERA_SIM_RATE"] = "1";
    variables["SCRIBERA_SIM_START_MS"] = "2000";
    const Outcome outcome = runHost({"a.ink"}, variables);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    const double told = std::stod(outcome.output.substr(outcome.output.find("strokes, ") + 9));
    const QByteArray stream = QByteArray::fromBase64(contentOf(path("a.ink")));
    const auto tickAt = [&](int point) {
        return qFromLittleEndian<qint64>(stream.constData() + qsizetype{24} * point + 8);
    };
    const double stored = double(tickAt(stream.size() / 24 - 1) - tickAt(0)) / 1000;
    EXPECT_GT(stored, 1) << "four seconds, less what the first point was late";
    EXPECT_NEAR(told, stored, 0.25);
}

TEST_F(CHost, ReplacesAnOlderFile)
{
    write("old.png", "no picture");
    EXPECT_EQ(runHost({"old.png"}, signing("confirm")).exitCode, 0);
    EXPECT_TRUE(holdsDrawing(contentOf(path("old.png")), "png"));
}

TEST_F(CHost, TakesPathsBeyondAscii)
{
    EXPECT_EQ(runHost({QString::fromUtf8("zażółć.png")}, signing("confirm")).exitCode, 0);
    EXPECT_TRUE(QFile::exists(path(QString::fromUtf8("zażółć.png"))));
}

TEST_F(CHost, EndsAtTheCancelKey)
{
    const Outcome outcome = runHost({"a.png"}, signing("cancel"));
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.error, prompt + "scribera-c-host: cancelled at the pad\n");
    EXPECT_FALSE(QFile::exists(path("a.png")));
}

TEST_F(CHost, EndsWhenNoKeyIsTouched)
{
    const Outcome outcome = runHost({"--timeout", "1", "a.png"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.error, prompt + "scribera-c-host: no key was touched in time\n");
}

TEST_F(CHost, RefusesAConfirmationWithoutInk)
{
    const Outcome outcome = runHost({"a.png"}, {{"SCRIBERA_SIM_KEY", "confirm"}});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, prompt + "scribera-c-host: confirmed without a signature\n");
}

TEST_F(CHost, NamesTheFileThatCannotBeSaved)
{
    for (const char* suffix : {"bmp", "jpg", "png", "pdf", "svg", "ink"}) {
        const QString file = QStringLiteral("nowhere/a.") + suffix;
        const Outcome outcome = runHost({file}, signing("confirm"));
        EXPECT_EQ(outcome.exitCode, 1) << suffix;
        EXPECT_NE(outcome.error.find("cannot save " + file.toStdString() + "\n"), std::string::npos)
            << outcome.error;
    }
}

TEST_F(CHost, SaysThatThereIsNoPad)
{
    unplug();
    const Outcome outcome = runHost({"--model", "T580", "a.png"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error.find("scribera-c-host: no pad: There is no driver: "), 0u) << outcome.error;
    EXPECT_NE(outcome.error.find("; the current directory is "), std::string::npos) << outcome.error;
}

TEST_F(CHost, TakesAModelByTheNameThatItsPadReports)
{
    const Outcome outcome = runHost({"--model", "SCKM730", "a.png"}, signing("confirm"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.output.rfind("KM730: ", 0), 0u) << outcome.output;
}

TEST_F(CHost, SaysThatThePadIsAnotherModel)
{
    EXPECT_EQ(runHost({"--model", "K420", "a.png"}, {{"SCRIBERA_SIM_MODEL", "SCK210"}}).exitCode, 1);
}

TEST_F(CHost, RefusesWrongUsageInOneLine)
{
    const QList<QStringList> calls = {{},
                                      {"--model"},
                                      {"--model", "K999", "a.png"},
                                      {"--model", "SCSCK210", "a.png"},
                                      {"--model", "K210"},
                                      {"--timeout", "soon", "a.png"},
                                      {"--timeout", "0", "a.png"},
                                      {"--timeout", "99999999999999999999", "a.png"},
                                      {"--frobnicate", "a.png"},
                                      {"a.gif"},
                                      {"noSuffix"},
                                      {"a.png", "--model"}};
    for (const QStringList& call : calls) {
        const Outcome outcome = runHost(call);
        const std::string shown = call.join(' ').toStdString();
        EXPECT_EQ(outcome.exitCode, 2) << shown;
        EXPECT_EQ(outcome.error.rfind("scribera-c-host: ", 0), 0u) << shown << outcome.error;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << shown;
        EXPECT_EQ(outcome.output, "") << shown;
    }
}

TEST_F(CHost, HelpsAndNamesItsVersion)
{
    const Outcome help = runHost({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.output.rfind("Usage: scribera-c-host ", 0), 0u);
    const Outcome version = runHost({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, "scribera-c-host " SCRIBERA_VERSION "\n");
}

TEST(CHostBuild, KnowsNothingOfQt)
{
    const QJsonArray commands = QJsonDocument::fromJson(contentOf(SCRIBERA_COMPILE_COMMANDS)).array();
    int found = 0;
    for (const auto& entry : commands) {
        const QJsonObject object = entry.toObject();
        if (!object["file"].toString().endsWith("/c-host/main.c"))
            continue;
        ++found;
        const QString command = object["command"].toString();
        EXPECT_FALSE(command.contains("qt", Qt::CaseInsensitive)) << command.toStdString();
        EXPECT_TRUE(command.contains("-std=c11")) << command.toStdString();
        EXPECT_FALSE(contentOf(object["file"].toString()).contains("#include <Q"));
    }
    EXPECT_EQ(found, 1);
}

} // namespace

// Arguments, help, files that cannot be used.

#include "model/padmodel.h"
#include "support.h"

#include <QFile>

namespace {

class InkUsageTest : public InkToolTest
{
};

const QStringList CommandNames = {"info",      "plot",     "to-json",        "to-csv",     "to-svg",
                                  "to-png",    "to-pdf",   "to-recording",   "to-inkml",   "to-iso19794-7",
                                  "from-json", "from-csv", "from-recording", "from-inkml", "from-iso19794-7"};
const QStringList DrawingCommands = {"to-svg", "to-png", "to-pdf"};

void expectWrongUsage(const QStringList& arguments, const std::string& reason)
{
    SCOPED_TRACE(arguments.join(' ').toStdString());
    const Outcome outcome = runInk(arguments, textOf(threeStrokes()));
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output.toStdString(), "");
    EXPECT_EQ(outcome.error.toStdString(), "scribera-ink: " + reason + "\nTry 'scribera-ink --help'.\n");
}

} // namespace

TEST_F(InkUsageTest, HelpNamesAllCommands)
{
    for (const char* option : {"--help", "-h"}) {
        const QByteArray help = outputOf({option}, {});
        EXPECT_TRUE(help.startsWith("Usage: scribera-ink COMMAND"));
        for (const QString& command : CommandNames)
            EXPECT_TRUE(help.contains("  " + command.toLatin1() + " ")) << command.toStdString();
        EXPECT_TRUE(help.contains("Exit code"));
    }
}

TEST_F(InkUsageTest, HelpOfACommandNamesItsOptions)
{
    for (const QString& command : CommandNames) {
        SCOPED_TRACE(command.toStdString());
        const QByteArray help = outputOf({command, "--help"}, "not a stream, and not read");
        EXPECT_TRUE(help.contains(command.toLatin1()));
        EXPECT_TRUE(help.contains("--output"));
        const bool isIso = command.endsWith("iso19794-7");
        const bool isInkMl = command.endsWith("inkml");
        const bool draws = DrawingCommands.contains(command);
        const bool takesModel = isIso || draws || isInkMl || command == "to-recording" || command == "info";
        EXPECT_EQ(help.contains("--compact"), isIso || command == "to-svg");
        EXPECT_EQ(help.contains("--units-per-mm"),
                  isInkMl || isIso || command == "info" || command == "plot");
        EXPECT_EQ(help.contains("--require-signature"), command == "info");
        EXPECT_EQ(help.contains("--model"), takesModel);
        EXPECT_EQ(help.contains("K421B"), takesModel);
        for (const char* option : {"--size", "--pen-width", "--color"})
            EXPECT_EQ(help.contains(option), draws) << option;
        EXPECT_EQ(help.contains("--dpi"), command == "to-svg" || command == "to-png");
    }
}

TEST_F(InkUsageTest, VersionIsTold)
{
    EXPECT_EQ(outputOf({"--version"}, {}).toStdString(), "scribera-ink " SCRIBERA_VERSION "\n");
}

TEST_F(InkUsageTest, WrongCommands)
{
    expectWrongUsage({}, "no command named");
    expectWrongUsage({"draw"}, "there is no command 'draw'");
    expectWrongUsage({"Info"}, "there is no command 'Info'");
    expectWrongUsage({"-o", "x", "info"}, "a command comes first, not '-o'");
    expectWrongUsage({"-"}, "a command comes first, not '-'");
}

TEST_F(InkUsageTest, WrongOptions)
{
    expectWrongUsage({"info", "--frobnicate"}, "Unknown option 'frobnicate'.");
    expectWrongUsage({"to-csv", "--model", "K210"}, "Unknown option 'model'.");
    expectWrongUsage({"to-csv", "-o"}, "Missing value after '-o'.");
    expectWrongUsage({"to-csv", "a", "b"}, "more than one file");
    expectWrongUsage({"to-iso19794-7", "--compact"}, "--model is missing");
    expectWrongUsage({"from-iso19794-7", "--model", "K210"}, "--model belongs to --compact");
    for (const char* command : {"to-iso19794-7", "from-iso19794-7"})
        expectWrongUsage({command, "--compact", "--model", "K210", "--units-per-mm", "5"},
                         "--units-per-mm does not go with --compact");
    for (const char* command : {"to-iso19794-7", "from-iso19794-7", "to-inkml", "from-inkml"})
        for (const QString number : {"0", "-1", "many", "nan", "10001"})
            expectWrongUsage({command, "--units-per-mm", number},
                             "--units-per-mm " + number.toStdString() + " is not a number of 0.1 to 10000");
    expectWrongUsage({"from-inkml", "--model", "K999"},
                     "--model K999 is not one of K210, K420, K421B, KM730, T580");
}

TEST_F(InkUsageTest, TheModelHasToBeNamed)
{
    QStringList names;
    for (const CPadModel* model : AllPads())
        names += model->m_pszName;
    for (const char* command : {"to-svg", "to-png", "to-pdf", "to-recording"}) {
        expectWrongUsage({command}, "--model is missing");
        for (const QString model : {"K999", "SCSCK210", "SC", "k210", "scK210", "K421", "K421H", "K210_"})
            expectWrongUsage({command, "--model", model},
                             ("--model " + model + " is not one of " + names.join(", ")).toStdString());
    }
}

TEST_F(InkUsageTest, WrongDrawings)
{
    const QStringList command = {"to-svg", "--model", "T580"};
    for (const QString size : {"800", "800x", "x400", "0x400", "800x0", "-1x5", "32768x1", "1x99999999999",
                               "8 x4", "800x400x1", "+8x4", "800X400"})
        expectWrongUsage(command + QStringList{"--size", size},
                         "--size " + size.toStdString() + " is not WxH with sides of 1 to 32767 pixels");
    for (const QString width : {"0", "11", "-3", "3.5", "wide", " 3"})
        expectWrongUsage(command + QStringList{"--pen-width", width},
                         "--pen-width " + width.toStdString() + " is not 1 to 10");
    for (const QString color : {"inky", "#12345", "#80ff0000", "transparent"})
        expectWrongUsage(command + QStringList{"--color", color},
                         "--color " + color.toStdString() +
                             " is not #rrggbb or the name of an opaque colour");
    for (const QString dpi : {"0", "151", "600", "150.0"})
        expectWrongUsage(command + QStringList{"--dpi", dpi},
                         "--dpi " + dpi.toStdString() + " is not 150 or 300");
    expectWrongUsage(command + QStringList{"--compact", "--dpi", "300"},
                     "--compact does not go with --dpi 300");
    for (const QString dpi : {"0", "29", "2401", "150.0"})
        expectWrongUsage({"to-png", "--model", "T580", "--dpi", dpi},
                         "--dpi " + dpi.toStdString() + " is not a whole number of 30 to 2400");
}

TEST_F(InkUsageTest, WrongOptionsAreToldBeforeAnythingIsRead)
{
    expectWrongUsage({"to-svg", "--model", "T580", "--dpi", "1", path("missing")},
                     "--dpi 1 is not 150 or 300");
}

TEST_F(InkUsageTest, InputThatCannotBeRead)
{
    const Outcome missing = runInk({"info", path("missing")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.error.toStdString(), "scribera-ink: " + path("missing").toStdString() +
                                               ": cannot be opened: No such file or directory\n");
    const Outcome directory = runInk({"info", path("")});
    EXPECT_EQ(directory.exitCode, 1);
    EXPECT_TRUE(directory.error.contains("directory")) << directory.error.toStdString();
}

TEST_F(InkUsageTest, OutputThatCannotBeWritten)
{
    const QString file = write("signature.ink", textOf(threeStrokes()));
    struct Case
    {
        QString target;
        const char* reason;
    };
    for (const Case& wrong :
         {Case{"/dev/full", "No space left on device"}, Case{path("."), "Is a directory"},
          Case{file + "/below", "Not a directory"}, Case{path("none/out"), "No such file or directory"}}) {
        SCOPED_TRACE(wrong.target.toStdString());
        const Outcome outcome = runInk({"to-json", file, "-o", wrong.target});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.error.toStdString(), "scribera-ink: " + wrong.target.toStdString() +
                                                   ": cannot be written: " + wrong.reason + "\n");
    }
    EXPECT_EQ(contentOf(file), textOf(threeStrokes()));
}

TEST_F(InkUsageTest, ADoubleDashEndsTheOptions)
{
    write("-signature", textOf(threeStrokes()));
    EXPECT_FALSE(outputOf({"info", "--", path("-signature")}, {}).isEmpty());
}

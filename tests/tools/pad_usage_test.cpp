// Arguments, help, and drivers that cannot be used.
#include "model/padmodel.h"
#include "padsupport.h"

#include <QFile>

namespace {

class PadUsage : public PadToolTest
{
protected:
    void expectWrong(const QStringList& arguments, const std::string& reason) const
    {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const PadOutcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output.toStdString(), "");
        EXPECT_EQ(outcome.error.toStdString(), "scribera-pad: " + reason + "\nTry 'scribera-pad --help'.\n");
    }
};

const QStringList commandNames = {"list", "info", "watch", "record", "sign", "doctor"};

TEST_F(PadUsage, HelpsWithAllCommands)
{
    for (const char* option : {"--help", "-h"}) {
        const PadOutcome help = run({option});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_TRUE(help.output.startsWith("Usage: scribera-pad COMMAND"));
        for (const QString& command : commandNames)
            EXPECT_TRUE(help.output.contains("  " + command.toLatin1() + " ")) << command.toStdString();
        EXPECT_TRUE(help.output.contains("Exit code"));
    }
    for (const QString& command : commandNames) {
        const PadOutcome help = run({command, "--help"});
        EXPECT_EQ(help.exitCode, 0) << command.toStdString();
        EXPECT_EQ(help.output.contains("--driver"), command != "list");
        EXPECT_EQ(help.error.toStdString(), "");
    }
}

TEST_F(PadUsage, TellsItsVersion)
{
    EXPECT_EQ(run({"--version"}).output.toStdString(), "scribera-pad " SCRIBERA_VERSION "\n");
}

TEST_F(PadUsage, SaysWhenStandardOutputIsFull)
{
    const QStringList toFullDisk = {"sh", "-c", "exec \"$@\" >/dev/full", "sh"};
    for (const QStringList& arguments : {QStringList{"--help"},
                                         {"list"},
                                         {"info", "--driver", "simulated"},
                                         {"doctor", "--driver", "simulated"},
                                         {"watch", "--driver", "simulated", "--seconds", "5"}}) {
        const PadOutcome outcome = run(arguments, playing("initials.rec", "confirm"), toFullDisk);
        EXPECT_EQ(outcome.exitCode, 1) << arguments.join(' ').toStdString();
        EXPECT_TRUE(outcome.error.endsWith("standard output: cannot be written: No space left on device\n"))
            << outcome.error.toStdString();
    }
}

TEST_F(PadUsage, RefusesWrongCommands)
{
    expectWrong({}, "no command named");
    expectWrong({"draw"}, "there is no command 'draw'");
    expectWrong({"--driver", "pen", "info"}, "a command comes first, not '--driver'");
}

TEST_F(PadUsage, RefusesWrongOptions)
{
    expectWrong({"list", "--driver", "pen"}, "Unknown option 'driver'.");
    expectWrong({"list", "more"}, "unexpected: more");
    expectWrong({"info", "more"}, "unexpected: more");
    expectWrong({"info", "--driver", ""}, "--driver is empty");
    expectWrong({"watch", "--seconds"}, "Missing value after '--seconds'.");
    for (const QString seconds : {"0", "-1", "soon", "86401", "1.5", "99999999999"}) {
        expectWrong({"watch", "--seconds", seconds},
                    ("--seconds " + seconds + " is not 1 to 86400 seconds").toStdString());
        expectWrong({"sign", "--timeout", seconds, "-o", "a.png"},
                    ("--timeout " + seconds + " is not 1 to 86400 seconds").toStdString());
    }
    expectWrong({"record"}, "no file named");
    expectWrong({"record", "a", "b"}, "unexpected: b");
}

TEST_F(PadUsage, RefusesModelsThatAreNone)
{
    QStringList names;
    for (const CPadModel* model : AllPads())
        names += model->m_pszName;
    for (const QStringList& command :
         {QStringList{"info"}, {"watch"}, {"record", "a.rec"}, {"sign", "-o", "a.png"}, {"doctor"}})
        for (const QString model : {"K999", "k210", "SCSCK210"})
            expectWrong(command + QStringList{"--model", model},
                        ("--model " + model + " is not one of " + names.join(", ")).toStdString());
}

TEST_F(PadUsage, RefusesSignaturesThatCannotBe)
{
    expectWrong({"sign"}, "--output is missing");
    const std::string suffixes = ".png, .jpg, .jpeg, .bmp, .pdf, .svg, .ink, .txt";
    for (const QString file : {"a", "a.gif", "a.png.", "png"})
        expectWrong({"sign", "-o", file}, file.toStdString() + " has none of the suffixes " + suffixes);
    for (const QString size : {"800", "0x400", "10001x5", "800x-1"})
        expectWrong({"sign", "-o", "a.png", "--size", size},
                    "--size " + size.toStdString() + " is not WxH with sides of 1 to 10000 pixels");
    expectWrong({"sign", "-o", "a.png", "--width", "11"}, "--width 11 is not 1 to 10");
    expectWrong({"sign", "-o", "a.png", "--colour", "inky"},
                "--colour inky is not #rrggbb or the name of an opaque colour");
    expectWrong({"sign", "-o", "a.png", "--colour", "#ffffff"},
                "--colour cannot be white: ink of that colour is taken for paper");
    expectWrong({"sign", "-o", "a.png", "--dpi", "600"}, "--dpi 600 is not 150 or 300");
}

TEST_F(PadUsage, SaysWhichDriverIsMissing)
{
    for (const QStringList& command :
         {QStringList{"info"}, {"watch"}, {"record", "a.rec"}, {"sign", "-o", "a.png"}}) {
        const PadOutcome here = run(command);
        EXPECT_EQ(here.exitCode, 1);
        EXPECT_TRUE(here.error.endsWith("/libscriberadrv.so is not there\n")) << here.error.toStdString();
        const PadOutcome elsewhere = run(command + QStringList{"--driver", "nowhere.so"});
        EXPECT_EQ(elsewhere.exitCode, 1);
        EXPECT_TRUE(elsewhere.error.endsWith("/nowhere.so is not there\n")) << elsewhere.error.toStdString();
    }
    EXPECT_FALSE(QFile::exists(path("a.rec")));
}

TEST_F(PadUsage, SaysWhatADriverLacks)
{
    write("text.so", "no library");
    const PadOutcome text = run({"info", "--driver", "text.so"});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_TRUE(text.error.contains("text.so cannot be loaded: ")) << text.error.toStdString();
    const QString lacking = QStringLiteral(SCRIBERA_DRIVER_VARIANTS "/GetDevicePadID/libscriberadrv.so");
    const PadOutcome variant = run({"info", "--driver", lacking});
    EXPECT_EQ(variant.exitCode, 1);
    EXPECT_TRUE(variant.error.contains("is no driver of such a pad: it lacks SCRDAPI_GetDevicePadID\n"))
        << variant.error.toStdString();
}

TEST_F(PadUsage, SaysThatTheDriverDoesNotStart)
{
    EXPECT_EQ(run({"info", "--driver", "simulated", "--model", "K420"}, {{"SCRIBERA_SIM_MODEL", "SCK210"}})
                  .exitCode,
              1);
}

TEST_F(PadUsage, TakesTheDriverOfTheCurrentFolder)
{
    EXPECT_TRUE(QFile::link(QStringLiteral(SCRIBERA_DRIVER_LIBRARY), path("libscriberadrv.so")));
    const PadOutcome outcome = run({"info", "--model", "SCT580"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    EXPECT_TRUE(outcome.output.contains("/libscriberadrv.so, simulated pad\n"))
        << outcome.output.toStdString();
}

TEST_F(PadUsage, TakesADriverByItsFile)
{
    EXPECT_TRUE(QFile::copy(QStringLiteral(SCRIBERA_DRIVER_LIBRARY), path("mine.so")));
    const PadOutcome outcome = run({"info", "--driver", "mine.so"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
    EXPECT_TRUE(outcome.output.contains("/mine.so, simulated pad\n")) << outcome.output.toStdString();
}

} // namespace

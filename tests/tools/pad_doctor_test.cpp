// The examination of everything that a signature needs.
#include "padsupport.h"
#include "surroundings.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

namespace {

class PadDoctor : public PadToolTest
{
protected:
    PadDoctor()
    {
        for (const char* file : {scribera::test::mainLogFile, scribera::test::inThreadLogFile})
            QFile::remove(file);
    }
    ~PadDoctor() override
    {
        for (const char* file : {scribera::test::mainLogFile, scribera::test::inThreadLogFile})
            if (!QFile::remove(file))
                rmdir(file);
    }

    // The line about this, without its first words' blanks.
    std::string lineOf(const char* what, const PadOutcome& outcome) const
    {
        for (const QByteArray& line : outcome.output.split('\n'))
            if (line.mid(5).startsWith(QByteArray(what).leftJustified(16)))
                return (line.left(5).trimmed() + ' ' + line.mid(21)).toStdString();
        return "no line " + outcome.output.toStdString() + outcome.error.toStdString();
    }
    PadOutcome examine(const QStringList& options = {"--driver", "simulated"},
                       const Variables& variables = {}) const
    {
        return run(QStringList{"doctor"} + options, variables);
    }
};

TEST_F(PadDoctor, FindsEverythingInOrder)
{
    const PadOutcome outcome = examine();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output.toStdString();
    for (const QByteArray& line : outcome.output.trimmed().split('\n'))
        EXPECT_TRUE(line.startsWith("OK   ")) << line.toStdString();
    EXPECT_NE(lineOf("library", outcome).find(std::string(libraryName) + ", version " SCRIBERA_VERSION),
              std::string::npos);
    EXPECT_EQ(lineOf("current folder", outcome), "OK " + QDir(path(".")).canonicalPath().toStdString());
    EXPECT_EQ(lineOf("windows", outcome),
              "OK there is no display: signatures are taken without a window only");
    EXPECT_EQ(lineOf("pad", outcome), "OK SCK210, SIMPAD0001");
    EXPECT_EQ(lineOf("log", outcome), "OK /tmp/scriberasdk.log is made when a host switches logging on");
    EXPECT_FALSE(QFile::exists(scribera::test::mainLogFile)) << "looking makes no file";
}

TEST_F(PadDoctor, SaysThatThereIsNoDriver)
{
    const PadOutcome outcome = examine({});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(lineOf("driver", outcome)
                  .find("is not there; link the pad's driver there, or name one with --driver"),
              std::string::npos);
    EXPECT_EQ(lineOf("pad", outcome), "FIX not tried, for want of a driver");
}

TEST_F(PadDoctor, SaysWhereALinkLeads)
{
    EXPECT_TRUE(QFile::link("/nowhere/driver.so", path("libscriberadrv.so")));
    EXPECT_NE(lineOf("driver", examine({})).find("leads to /nowhere/driver.so, which is not there"),
              std::string::npos);
}

TEST_F(PadDoctor, NamesTheEntryPointsThatAreMissing)
{
    for (const char* name : {"Initial", "UnInitial", "ClearDeviceContent", "GetDevicePadID",
                             "GetDevicePartsVersion", "SetDevicePenStyle"}) {
        const PadOutcome outcome =
            examine({"--driver", QStringLiteral(SCRIBERA_DRIVER_VARIANTS "/%1/libscriberadrv.so").arg(name)});
        EXPECT_EQ(outcome.exitCode, 1) << name;
        EXPECT_NE(lineOf("driver", outcome).find("it lacks SCRDAPI_" + std::string(name) + ";"),
                  std::string::npos)
            << lineOf("driver", outcome);
    }
    // Pads work without it.
    EXPECT_EQ(examine({"--driver", SCRIBERA_DRIVER_VARIANTS "/OpenDeviceLCD/libscriberadrv.so"}).exitCode, 0);
    // Only some models have these.
    const QString reader = SCRIBERA_DRIVER_VARIANTS "/ShowFPImageOnDevice/libscriberadrv.so";
    EXPECT_EQ(examine({"--driver", reader, "--model", "K420"}).exitCode, 0);
    EXPECT_EQ(examine({"--driver", reader, "--model", "K421B"}).exitCode, 1);
}

TEST_F(PadDoctor, SurvivesADriverThatCrashesAtItsStart)
{
    const PadOutcome outcome =
        examine({"--driver", SCRIBERA_TROUBLED_DRIVER}, {{"TROUBLED_DRIVER", "crash"}});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(lineOf("driver", outcome).substr(0, 3), "OK ");
    EXPECT_EQ(lineOf("pad", outcome), "FIX the driver crashes: Aborted: ask its maker");
}

TEST_F(PadDoctor, SurvivesADriverThatCrashesWhenItIsLoaded)
{
    const PadOutcome outcome =
        examine({"--driver", SCRIBERA_TROUBLED_DRIVER}, {{"TROUBLED_DRIVER", "crash at load"}});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(lineOf("driver", outcome).find(" crashes: Aborted"), std::string::npos)
        << lineOf("driver", outcome);
}

TEST_F(PadDoctor, SaysThatThePadIsAnotherModel)
{
    const PadOutcome outcome =
        examine({"--driver", "simulated", "--model", "K420"}, {{"SCRIBERA_SIM_MODEL", "SCK210"}});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(lineOf("pad", outcome).substr(0, 17), "FIX no pad K420: ");
}

TEST_F(PadDoctor, SaysWhyNothingIsLogged)
{
    const char* const log = scribera::test::mainLogFile;
    const auto lineWith = [&] { return lineOf("log", examine()); };
    EXPECT_TRUE(QFile::link("/dev/null", log));
    EXPECT_EQ(lineWith(), "FIX /tmp/scriberasdk.log is no plain file: nothing is logged; remove it");
    QFile::remove(log);
    QDir().mkdir(log);
    EXPECT_EQ(lineWith(), "FIX /tmp/scriberasdk.log is no plain file: nothing is logged; remove it");
    rmdir(log);
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("12345") == 5);
    file.close();
    EXPECT_EQ(lineWith(), "OK /tmp/scriberasdk.log, 5 bytes");
    EXPECT_EQ(::link(log, "/tmp/second-name"), 0);
    EXPECT_EQ(lineWith(), "FIX /tmp/scriberasdk.log has a second name: nothing is logged; remove it");
    QFile::remove("/tmp/second-name");
    if (geteuid() == 0 && chown(log, 65534, 65534) == 0) {
        EXPECT_EQ(lineWith(),
                  "FIX /tmp/scriberasdk.log belongs to another user: nothing is logged; remove it");
    }
}

TEST_F(PadDoctor, TriesTheDisplayThatIsNamed)
{
    const PadOutcome shown = examine({"--driver", "simulated"}, {{"QT_QPA_PLATFORM", "offscreen"}});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_NE(lineOf("windows", shown).find(" on offscreen"), std::string::npos);
    const PadOutcome wrong = examine({"--driver", "simulated"}, {{"DISPLAY", ":98765"}});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_EQ(lineOf("windows", wrong), "FIX DISPLAY=:98765 cannot be used: correct or unset it");
}

TEST_F(PadDoctor, SaysThatTheCurrentFolderIsGone)
{
    const PadOutcome outcome =
        run({"doctor"}, {}, {"sh", "-c", "mkdir gone && cd gone && rmdir ../gone && exec \"$@\"", "sh"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(lineOf("current folder", outcome).substr(0, 4), "FIX ");
}

#ifdef SCRIBERA_HAS_PEN_DRIVER

TEST_F(PadDoctor, FollowsTheChainToThePen)
{
    const PadOutcome pen = run({"doctor", "--driver", "pen"}, {}, beside(penTablet()));
    EXPECT_EQ(pen.exitCode, 0) << pen.output.toStdString();
    EXPECT_EQ(lineOf("device", pen), "OK /dev/input/event5, Mocked tablet, a pen");
    EXPECT_EQ(lineOf("pad", pen), "OK SCK210 pen " SCRIBERA_VERSION ", Mocked tablet");
    const PadOutcome none = run({"doctor", "--driver", "pen"}, {}, beside({"Keyboard", {1}, {}}));
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_NE(lineOf("device", none)
                  .find("FIX no pen and no touch screen: /dev/input/event5 (Keyboard) tells no position"),
              std::string::npos)
        << lineOf("device", none);
}

// A copy of the driver in a host's folder is known again.
TEST_F(PadDoctor, KnowsThePenDriverInTheCurrentFolder)
{
    EXPECT_TRUE(QFile::copy(SCRIBERA_PEN_DRIVER, path("libscriberadrv.so")));
    const PadOutcome outcome = run({"doctor"}, {}, beside(penTablet()));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output.toStdString();
    EXPECT_EQ(lineOf("device", outcome), "OK /dev/input/event5, Mocked tablet, a pen");
}

#endif

} // namespace

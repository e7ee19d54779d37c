// Ctrl-C and keys of the terminal, in each command that waits.
#include "padsupport.h"

#include <QFile>

#include <csignal>

namespace {

using On = RunningPad::On;

class PadInterrupt : public PadToolTest
{
};

class PadTerminal : public PadToolTest
{
protected:
    static QStringList signing() { return {"sign", "--driver", "simulated", "-o", "a.png"}; }
};

struct Waiting
{
    QStringList arguments;
    const char* words; // once it waits
};

const std::vector<Waiting> waiting = {
    {{"watch", "--driver", "simulated"}, "Watching"},
    {{"record", "--driver", "simulated", "a.rec"}, "Recording"},
    {{"sign", "--driver", "simulated", "-o", "a.png"}, "Please sign"},
};

TEST_F(PadInterrupt, EndsBySignalsAndLeavesNothing)
{
    for (const Waiting& command : waiting) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            const std::string shown = command.arguments[0].toStdString() + " " + std::to_string(signal);
            RunningPad tool(*this, On::Pipe, command.arguments, playing("initials.rec", ""));
            ASSERT_TRUE(tool.prints(command.words)) << shown;
            tool.send(signal);
            const PadOutcome outcome = tool.end();
            const bool isRegularEnd = command.arguments[0] == "watch" && signal == SIGINT;
            EXPECT_EQ(outcome.exitCode, isRegularEnd ? 0 : -1) << shown << outcome.output.toStdString();
            EXPECT_EQ(outcome.signal, isRegularEnd ? 0 : signal) << shown;
            EXPECT_FALSE(QFile::exists(path("a.rec")) || QFile::exists(path("a.png"))) << shown;
        }
    }
}

TEST_F(PadInterrupt, EndsAWindow)
{
    Variables variables = playing("initials.rec", "");
    variables["QT_QPA_PLATFORM"] = "offscreen";
    variables["QT_LOGGING_RULES"] = "*=false";
    // The window says nothing; the driver's pause is the sign that the pad is open.
    RunningPad tool(*this, On::Pipe,
                    {"sign", "--window", "--driver", SCRIBERA_TROUBLED_DRIVER, "-o", "a.png"}, variables);
    ASSERT_TRUE(tool.prints("started"));
    tool.send(SIGINT);
    EXPECT_EQ(tool.end().signal, SIGINT);
}

// The first signal waits for the driver, the second does not.
TEST_F(PadInterrupt, LeavesADriverThatHangsAtTheSecondSignal)
{
    for (const Waiting& command : waiting) {
        QStringList arguments = command.arguments;
        arguments[2] = SCRIBERA_TROUBLED_DRIVER;
        RunningPad tool(*this, On::Terminal, arguments, {{"TROUBLED_DRIVER", "hang"}});
        ASSERT_TRUE(tool.prints("hanging"));
        tool.send(SIGINT);
        tool.send(SIGTERM);
        const PadOutcome outcome = tool.end();
        EXPECT_TRUE(outcome.signal == SIGTERM || outcome.signal == SIGINT) << outcome.signal;
    }
}

TEST_F(PadInterrupt, EndsTheExaminationOfADriverThatHangs)
{
    RunningPad tool(*this, On::Pipe, {"doctor", "--driver", SCRIBERA_TROUBLED_DRIVER},
                    {{"TROUBLED_DRIVER", "hang"}});
    ASSERT_TRUE(tool.prints("hanging"));
    tool.send(SIGINT);
    EXPECT_EQ(tool.end().signal, SIGINT);
}

TEST_F(PadTerminal, EnterConfirms)
{
    RunningPad tool(*this, On::Terminal, signing(), playing("initials.rec", ""));
    ASSERT_TRUE(tool.prints(" Or press Enter here; Escape cancels."));
    ASSERT_TRUE(tool.prints(" s, 407 points, "));
    EXPECT_TRUE(tool.takesSingleKeys());
    tool.type("\r");
    const PadOutcome outcome = tool.end();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output.toStdString();
    EXPECT_TRUE(QFile::exists(path("a.png")));
    EXPECT_FALSE(tool.takesSingleKeys()) << "the terminal is as before";
}

TEST_F(PadTerminal, EscapeCancels)
{
    for (const Waiting& command : {waiting[1], waiting[2]}) {
        RunningPad tool(*this, On::Terminal, command.arguments, playing("initials.rec", ""));
        ASSERT_TRUE(tool.prints(" s, 407 points, "));
        tool.type("\033");
        EXPECT_EQ(tool.end().exitCode, 3);
        EXPECT_FALSE(tool.takesSingleKeys());
        EXPECT_FALSE(QFile::exists(path("a.rec")) || QFile::exists(path("a.png")));
    }
}

TEST_F(PadTerminal, OtherKeysDoNothing)
{
    RunningPad tool(*this, On::Terminal, signing(), playing("initials.rec", ""));
    ASSERT_TRUE(tool.prints(" s, 407 points, "));
    tool.type("\033[A"); // an arrow, which begins as Escape does
    tool.type("q");
    tool.type("\n");
    EXPECT_EQ(tool.end().exitCode, 0);
}

TEST_F(PadTerminal, EnterWithoutInkSavesNothing)
{
    RunningPad tool(*this, On::Terminal, signing());
    ASSERT_TRUE(tool.prints(" s, 0 points, "));
    tool.type("\r");
    EXPECT_EQ(tool.end().exitCode, 5);
}

TEST_F(PadTerminal, CtrlCEndsAndRestores)
{
    for (const Waiting& command : waiting) {
        RunningPad tool(*this, On::Terminal, command.arguments, playing("initials.rec", ""));
        ASSERT_TRUE(tool.prints(command.words));
        tool.type("\003");
        const PadOutcome outcome = tool.end();
        EXPECT_EQ(outcome.signal, command.arguments[0] == "watch" ? 0 : SIGINT);
        EXPECT_FALSE(tool.takesSingleKeys());
    }
}

TEST_F(PadTerminal, IsAsBeforeWhileTheToolIsStopped)
{
    RunningPad tool(*this, On::Terminal, signing(), playing("initials.rec", ""));
    ASSERT_TRUE(tool.prints(" s, 407 points, "));
    tool.type("\032"); // Ctrl-Z
    ASSERT_TRUE(tool.stops());
    EXPECT_FALSE(tool.takesSingleKeys());
    tool.send(SIGCONT);
    EXPECT_TRUE(tool.comesToTakeSingleKeys(true));
    tool.send(SIGTERM);
    EXPECT_EQ(tool.end().signal, SIGTERM);
    EXPECT_FALSE(tool.takesSingleKeys());
}

TEST_F(PadTerminal, ShowsALineThatMoves)
{
    RunningPad tool(*this, On::Terminal, {"watch", "--driver", "simulated"},
                    playing("flowing.rec", "confirm"));
    tool.narrow(40);
    ASSERT_TRUE(tool.prints("confirm key used"));
    tool.type("\003");
    const QByteArray printed = tool.end().output;
    // Nothing but the first words, the keys and the sum ends a line.
    EXPECT_LE(printed.count('\n'), 5) << printed.toStdString();
    EXPECT_GT(printed.count("\rmove x"), 10);
    for (const QByteArray& line : printed.mid(printed.indexOf('\r')).replace('\n', '\r').split('\r'))
        if (line.startsWith("move")) {
            EXPECT_LT(line.size(), 100) << line.toStdString();
        }
    EXPECT_TRUE(printed.contains("4 strokes"));
}

} // namespace

// What comes from the pad: shown, and recorded.
#include "padsupport.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

namespace {

class PadWatch : public PadToolTest
{
protected:
    // Until the pad's key, which comes last; then Ctrl-C.
    QByteArray watched(const QStringList& options, const Variables& variables) const
    {
        RunningPad tool(*this, RunningPad::On::Pipe, QStringList{"watch", "--driver", "simulated"} + options,
                        variables);
        EXPECT_TRUE(tool.prints("used"));
        tool.send(SIGINT);
        const PadOutcome outcome = tool.end();
        EXPECT_EQ(outcome.exitCode, 0);
        return outcome.output;
    }
};

class PadRecord : public PadToolTest
{
};

// As the library stores them: the point that ends a stroke repeats the one before.
std::vector<RecordedPoint> storedOf(std::vector<RecordedPoint> samples)
{
    for (std::size_t index = 1; index < samples.size(); ++index)
        if (samples[index].status == 2) {
            samples[index].x = samples[index - 1].x;
            samples[index].y = samples[index - 1].y;
            samples[index].pressure = samples[index - 1].pressure;
        }
    return samples;
}

// All but the times.
void expectSame(const std::vector<RecordedPoint>& one, const std::vector<RecordedPoint>& other)
{
    ASSERT_EQ(one.size(), other.size());
    for (std::size_t index = 0; index < one.size(); ++index) {
        EXPECT_EQ(one[index].x, other[index].x) << index;
        EXPECT_EQ(one[index].y, other[index].y) << index;
        EXPECT_EQ(one[index].pressure, other[index].pressure) << index;
        EXPECT_EQ(one[index].status, other[index].status) << index;
    }
}

TEST_F(PadWatch, ShowsEachSampleAsAnObject)
{
    const QByteArray printed = watched({"--json", "--model", "T580"}, playing("flowing.rec", "cancel"));
    const QMap<QString, int> statuses = {{"down", 0}, {"move", 1}, {"up", 2}};
    std::vector<RecordedPoint> samples;
    QStringList keys;
    QJsonObject last;
    double seconds = 0;
    for (const QByteArray& line : printed.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.isEmpty())
            continue;
        last = object;
        const QString event = object["event"].toString();
        EXPECT_GE(object["seconds"].toDouble(), seconds);
        seconds = object["seconds"].toDouble();
        if (statuses.contains(event)) {
            const RecordedPoint sample = {0, object["x"].toInt(), object["y"].toInt(),
                                          object["pressure"].toInt(), statuses[event]};
            EXPECT_EQ(object.contains("gap"), sample.status != 0);
            samples.push_back(sample);
        } else if (object.contains("key")) {
            keys += event + ' ' + object["key"].toString();
        }
    }
    expectSame(samples, storedOf(samplesIn(readFile(padRecording("flowing.rec")))));
    EXPECT_EQ(keys, (QStringList{"touched cancel", "used cancel"}));
    EXPECT_EQ(last["event"].toString(), "end");
    EXPECT_EQ(last["points"].toInt(), static_cast<int>(samples.size()));
    EXPECT_EQ(last["strokes"].toInt(), 4);
    EXPECT_GT(last["rate"].toDouble(), 0);
    EXPECT_GT(last["longestGap"].toDouble(), 0);
}

TEST_F(PadWatch, ShowsEachSampleInALine)
{
    write("two.rec", "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\nmax-pressure: 2048\n"
                     "0 200 300 1024 0\n5 210 310 2048 1\n10 210 310 0 2\n");
    Variables variables = playing("", "confirm");
    variables["SCRIBERA_SIM_RECORDING"] = "two.rec"; // found from the folder in which the tool is started
    const QByteArray printed = watched({}, variables);
    EXPECT_TRUE(printed.startsWith("Watching the pad K210. Ctrl-C ends.\n"));
    EXPECT_TRUE(printed.contains(" s  down x   200 y   300 pressure 1024 [##########----------]\n"))
        << printed.toStdString();
    EXPECT_TRUE(printed.contains(" s  move x   210 y   310 pressure 2048 [####################] gap "));
    EXPECT_TRUE(printed.contains(" s  up   x   210 y   310 pressure 2048 "));
    EXPECT_TRUE(printed.contains(" s  confirm key touched\n"));
    EXPECT_TRUE(printed.contains(" s  confirm key used\n"));
    EXPECT_TRUE(printed.contains(" s, 3 points, 1 strokes, "));
    EXPECT_FALSE(printed.contains('\r')) << "no terminal";
}

TEST_F(PadWatch, EndsAfterItsTime)
{
    const PadOutcome outcome = run({"watch", "--driver", "simulated", "--seconds", "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.endsWith(" s, 0 points, 0 strokes, no points/s, longest gap 0.0 ms\n"))
        << outcome.output.toStdString();
}

TEST_F(PadRecord, WritesWhatThePenHasDone)
{
    for (const char* model : {"T580", "K421B"}) {
        const PadOutcome outcome = run({"record", "--driver", "simulated", "--model", model, "mine.rec"},
                                       playing("flowing.rec", "confirm"));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.error.toStdString();
        const QByteArray recording = readFile(path("mine.rec"));
        EXPECT_TRUE(recording.startsWith("# scribera recording 1\nmodel: SC" + QByteArray(model) + '\n'));
        std::vector<RecordedPoint> recorded = samplesIn(recording);
        ASSERT_GT(recorded.size(), 2u);
        EXPECT_EQ(recorded.back().status, 2);
        recorded.pop_back();
        EXPECT_EQ(recorded.back().status, 4) << "the confirm key";
        recorded.pop_back();
        if (QByteArray(model) == "T580") // on which it was made: nothing is scaled
            expectSame(recorded, storedOf(samplesIn(readFile(padRecording("flowing.rec")))));
        EXPECT_EQ(recorded.size(), samplesIn(readFile(padRecording("flowing.rec"))).size());
        // Played again it is the same once more.
        Variables again = {{"SCRIBERA_SIM_RATE", "max"}, {"SCRIBERA_SIM_RECORDING", "mine.rec"}};
        EXPECT_EQ(run({"record", "--driver", "simulated", "--model", model, "again.rec"}, again).exitCode, 0);
        expectSame(samplesIn(readFile(path("again.rec"))), samplesIn(recording));
    }
}

TEST_F(PadRecord, HasTheTimesOfThePen)
{
    Variables variables = playing("initials.rec", "confirm");
    variables["SCRIBERA_SIM_RATE"] = "1";
    ASSERT_EQ(run({"record", "--driver", "simulated", "--model", "T580", "mine.rec"}, variables).exitCode, 0);
    const std::vector<RecordedPoint> recorded = samplesIn(readFile(path("mine.rec")));
    EXPECT_EQ(recorded.front().milliseconds, 0);
    for (std::size_t index = 1; index < recorded.size(); ++index)
        EXPECT_GE(recorded[index].milliseconds, recorded[index - 1].milliseconds);
    // Less what the first sample was late.
    EXPECT_GT(recorded.back().milliseconds,
              samplesIn(readFile(padRecording("initials.rec"))).back().milliseconds / 2);
}

TEST_F(PadRecord, KeepsTheCancelKeyAndGoesOn)
{
    RunningPad tool(*this, RunningPad::On::Terminal, {"record", "--driver", "simulated", "mine.rec"},
                    playing("initials.rec", "cancel"));
    ASSERT_TRUE(tool.prints(" s, 407 points")) << "so many are in the recording";
    EXPECT_TRUE(tool.comesToTakeSingleKeys(true));
    tool.type("\r");
    EXPECT_EQ(tool.end().exitCode, 0);
    const std::vector<RecordedPoint> recorded = samplesIn(readFile(path("mine.rec")));
    EXPECT_GE(recorded.size(), 407u);
    EXPECT_EQ(recorded.back().status, 2);
}

TEST_F(PadRecord, WritesToStandardOutput)
{
    const PadOutcome outcome =
        run({"record", "--driver", "simulated", "-"}, playing("initials.rec", "confirm"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.startsWith("# scribera recording 1\n"));
}

TEST_F(PadRecord, WritesNothingWithoutASample)
{
    const PadOutcome outcome = run({"record", "--driver", "simulated", "--seconds", "1", "mine.rec"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_TRUE(outcome.error.endsWith("scribera-pad: the pen has done nothing; nothing is written\n"));
    EXPECT_FALSE(QFile::exists(path("mine.rec")));
}

TEST_F(PadRecord, SaysThatTheFileCannotBeWritten)
{
    write("file", "x");
    const auto errorOf = [&](const QString& file) {
        const PadOutcome outcome =
            run({"record", "--driver", "simulated", file}, playing("initials.rec", "confirm"));
        EXPECT_EQ(outcome.exitCode, 1) << file.toStdString();
        return outcome.error.toStdString();
    };
    // Before anybody has signed in vain, where that can be told.
    EXPECT_EQ(errorOf("."), "scribera-pad: .: cannot be written: it is a folder\n");
    EXPECT_EQ(errorOf("none/mine.rec")
                  .rfind("scribera-pad: none/mine.rec: cannot be written: there is no folder ", 0),
              0u);
    EXPECT_EQ(errorOf("file/mine.rec")
                  .rfind("scribera-pad: file/mine.rec: cannot be written: there is no folder ", 0),
              0u);
    const std::string full = errorOf("/dev/full");
    EXPECT_NE(full.find("scribera-pad: /dev/full: cannot be written: No space left on device\n"),
              std::string::npos)
        << full;
}

} // namespace

// What the tool makes of well-formed streams.

#include "model/padmodel.h"
#include "recording.h"
#include "support.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace {

class InkConversionTest : public InkToolTest
{
};

constexpr std::int64_t Smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t Largest = std::numeric_limits<std::int64_t>::max();

std::string infoOf(const std::vector<Point>& points)
{
    return outputOf({"info"}, textOf(points)).toStdString();
}

QByteArray recordingOf(const char* model, const std::vector<Point>& points)
{
    return outputOf({"to-recording", "--model", model}, textOf(points));
}

} // namespace

TEST_F(InkConversionTest, InfoTellsWhatTheStreamHolds)
{
    // On strokes: three steps in 16 ms and one in 2 ms.
    EXPECT_EQ(infoOf(threeStrokes()), "points:       7\n"
                                      "strokes:      3\n"
                                      "date:         2023-11-14 22:13:20 UTC to 2023-11-14 22:13:22 UTC\n"
                                      "duration:     2.250 s\n"
                                      "x:            300 to 65535\n"
                                      "y:            -20 to 32767\n"
                                      "pressure:     7 to 2048\n"
                                      "report rate:  222.2 points/s\n"
                                      "gaps:         none\n"
                                      "signed:       no, the strokes have 4 steps\n");
}

TEST_F(InkConversionTest, InfoOfAStreamWithoutPoints)
{
    EXPECT_EQ(infoOf({}), "points:       0\n"
                          "strokes:      0\n"
                          "date:         none\n"
                          "duration:     0.000 s\n"
                          "x:            none\n"
                          "y:            none\n"
                          "pressure:     none\n"
                          "report rate:  none\n"
                          "gaps:         none\n"
                          "signed:       no, there is no ink\n");
}

TEST_F(InkConversionTest, InfoTellsMillimetresWhereTheResolutionIsKnown)
{
    const QByteArray info =
        outputOf({"info", "--units-per-mm", "20"}, textOf({{100, 50, 1, 0, 0, 0}, {300, 100, 1, 1, 9, 0}}));
    EXPECT_TRUE(info.contains("\nsize:         10.0 x 2.5 mm\n")) << info.toStdString();
}

TEST_F(InkConversionTest, InfoTellsDatesThatAreDates)
{
    const auto date = [](std::int64_t first, std::int64_t last) {
        const std::string info = infoOf({{1, 2, 3, 0, 0, first}, {1, 2, 3, 1, 5, last}});
        const std::size_t at = info.find("date:         ") + 14;
        return info.substr(at, info.find('\n', at) - at);
    };
    EXPECT_EQ(date(1, 1), "1970-01-01 00:00:01 UTC");
    EXPECT_EQ(date(253402300799, 253402300799), "9999-12-31 23:59:59 UTC");
    EXPECT_EQ(date(0, 0), "none");
    EXPECT_EQ(date(Smallest, Largest), "none");
}

TEST_F(InkConversionTest, InfoCountsStepsThatAreTooLong)
{
    std::vector<Point> points;
    for (int index = 0; index < 20; ++index)
        points.push_back({100 + index, 100, 50, 0, 5 * index, 0});
    points.push_back({130, 100, 50, 0, 95 + 15, 0}); // three times the usual step is none
    points.push_back({140, 100, 50, 0, 110 + 16, 0});
    points.push_back({150, 100, 50, 0, 126 + 45, 0});
    points.push_back({150, 100, 50, 1, 176, 0});
    points.push_back({150, 100, 50, 0, 9000, 0}); // nor is a pause between strokes
    const std::string info = infoOf(points);
    EXPECT_NE(info.find("\ngaps:         2, the longest of 0.045 s\n"), std::string::npos) << info;
    EXPECT_NE(infoOf({{0, 0, 0, 0, Smallest, 0}, {0, 0, 0, 1, Largest, 0}}).find("gaps:         none\n"),
              std::string::npos);
}

namespace {

// A stroke of so many points, 5 ms and so far apart, in zigzag when it is bent.
std::vector<Point> stroke(int count, int stride, int bend)
{
    std::vector<Point> points;
    for (int index = 0; index < count; ++index)
        points.push_back({500 + index * stride, 500 + index % 2 * bend, 90, 0, 5 * index, 0});
    points.push_back(points.back());
    points.back().status = 1;
    return points;
}

} // namespace

TEST_F(InkConversionTest, InfoJudgesWhetherSomethingWasSigned)
{
    const auto judgement = [](const std::vector<Point>& points, const QStringList& options = {}) {
        const Outcome told = runInk(QStringList{"info"} + options, textOf(points));
        EXPECT_EQ(told.exitCode, 0);
        const Outcome required = runInk(QStringList{"info", "--require-signature"} + options, textOf(points));
        EXPECT_EQ(required.output, told.output);
        const std::string text = told.output.mid(told.output.indexOf("\nsigned:       ") + 15).toStdString();
        EXPECT_EQ(required.exitCode, text == "yes\n" ? 0 : 3);
        return text;
    };
    EXPECT_EQ(judgement(stroke(60, 10, 30)), "yes\n");
    EXPECT_EQ(judgement(stroke(60, 10, 0)), "no, the ink is one straight line\n");
    EXPECT_EQ(judgement(stroke(20, 10, 30)), "no, the pen wrote for 95 ms\n");
    EXPECT_EQ(judgement(stroke(60, 0, 0)), "no, there are only dots\n");
    EXPECT_EQ(judgement(stroke(60, 1, 10)), "no, the ink has 59 x 10 pad units\n");
    // What is large for one pad is small for another, and in millimetres it is plain.
    EXPECT_EQ(judgement(stroke(60, 10, 30), {"--model", "K210"}), "yes\n");
    EXPECT_EQ(judgement(stroke(60, 10, 30), {"--model", "K421B"}), "no, the ink has 590 x 30 pad units\n");
    EXPECT_EQ(judgement(stroke(60, 10, 30), {"--units-per-mm", "100"}), "yes\n");
    EXPECT_EQ(judgement(stroke(60, 10, 30), {"--units-per-mm", "200"}), "no, the ink has 3.0 x 0.1 mm\n");
    for (const char* name : {"initials", "flowing", "paraph"}) {
        const QByteArray ink =
            outputOf({"from-recording", SCRIBERA_RECORDINGS + QStringLiteral("/%1.rec").arg(name)}, {});
        EXPECT_EQ(runInk({"info", "--require-signature", "--model", "T580"}, ink).exitCode, 0) << name;
    }
}

TEST_F(InkConversionTest, InfoWithoutTimeOnAStrokeNamesNoRate)
{
    const std::string info = infoOf({{1, 2, 3, 0, 77, 0}, {1, 2, 3, 1, 77, 0}, {9, 9, 9, 0, 99, 0}});
    EXPECT_NE(info.find("duration:     0.022 s\n"), std::string::npos) << info;
    EXPECT_NE(info.find("report rate:  none\n"), std::string::npos) << info;
}

TEST_F(InkConversionTest, AnEndWithoutAPointIsNoStroke)
{
    const std::string info =
        infoOf({{1, 2, 3, 1, 10, 0}, {4, 5, 6, 0, 20, 0}, {4, 5, 6, 1, 25, 0}, {4, 5, 6, 1, 90, 0}});
    EXPECT_NE(info.find("points:       4\nstrokes:      1\n"), std::string::npos) << info;
    EXPECT_NE(info.find("report rate:  200.0 points/s\n"), std::string::npos) << info;
}

TEST_F(InkConversionTest, TheWidestTimesAreCountedWhole)
{
    const std::string info = infoOf({{0, 0, 0, 0, Smallest, 0}, {0, 0, 0, 1, Largest, 0}});
    EXPECT_NE(info.find("duration:     18446744073709551.615 s\n"), std::string::npos) << info;
}

TEST_F(InkConversionTest, CsvHasEveryFieldOfEveryPoint)
{
    EXPECT_EQ(outputOf({"to-csv"}, textOf({{65535, -32768, 32767, 0, Smallest, Smallest},
                                           {0, 1, -1, 1, Largest, Largest}}))
                  .toStdString(),
              "x,y,pressure,status,tick,seconds\n"
              "65535,-32768,32767,0,-9223372036854775808,-9223372036854775808\n"
              "0,1,-1,1,9223372036854775807,9223372036854775807\n");
    EXPECT_EQ(outputOf({"to-csv"}, textOf({})).toStdString(), "x,y,pressure,status,tick,seconds\n");
}

TEST_F(InkConversionTest, JsonHasEveryFieldOfEveryPoint)
{
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(outputOf({"to-json"}, textOf(threeStrokes())), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    const QJsonArray points = document.object()["points"].toArray();
    ASSERT_EQ(static_cast<std::size_t>(points.size()), threeStrokes().size());
    for (int index = 0; index < points.size(); ++index) {
        SCOPED_TRACE(index);
        const Point& point = threeStrokes()[static_cast<std::size_t>(index)];
        const QJsonObject object = points[index].toObject();
        EXPECT_EQ(object.size(), 6);
        EXPECT_EQ(object["x"].toInt(-1), point.x);
        EXPECT_EQ(object["y"].toInt(-1), point.y);
        EXPECT_EQ(object["pressure"].toInt(-1), point.pressure);
        EXPECT_EQ(object["status"].toInt(-1), point.status);
        EXPECT_EQ(object["tick"].toDouble(), static_cast<double>(point.tick));
        EXPECT_EQ(object["seconds"].toDouble(), static_cast<double>(point.seconds));
    }
}

TEST_F(InkConversionTest, JsonWithoutPointsIsAnEmptyList)
{
    const QJsonDocument document = QJsonDocument::fromJson(outputOf({"to-json"}, textOf({})));
    EXPECT_TRUE(document.object()["points"].isArray());
    EXPECT_TRUE(document.object()["points"].toArray().isEmpty());
}

TEST_F(InkConversionTest, JsonWritesTheWidestTimesToTheLastDigit)
{
    const QByteArray json = outputOf({"to-json"}, textOf({{0, 0, 0, 0, Smallest, Largest}}));
    EXPECT_TRUE(json.contains("\"tick\":-9223372036854775808,\"seconds\":9223372036854775807}"))
        << json.toStdString();
}

TEST_F(InkConversionTest, TheSimulatedPadTakesTheRecordingAsItTakesTheStream)
{
    for (const CPadModel* model : AllPads()) {
        SCOPED_TRACE(model->m_pszName);
        const std::string text = recordingOf(model->m_pszName, threeStrokes()).toStdString();
        simulator::Recording recording;
        simulator::Recording fromStream;
        std::string error;
        ASSERT_TRUE(simulator::parseRecording(text, "recording", recording, error)) << error;
        ASSERT_TRUE(
            simulator::parsePacketStream(textOf(threeStrokes()).toStdString(), "stream", fromStream, error))
            << error;
        const simulator::Pad* const pad = simulator::padForModel(model->m_pszName);
        EXPECT_EQ(recording.model, std::string("SC") + model->m_pszName);
        EXPECT_EQ(recording.area, pad->area);
        EXPECT_EQ(recording.maxPressure, pad->maxPressure);
        EXPECT_EQ(recording.samples, fromStream.samples);
        EXPECT_EQ(recording.samples.size(), threeStrokes().size());
    }
}

TEST_F(InkConversionTest, ThePadsOwnNamesOfTheModelsAreUnderstood)
{
    for (const CPadModel* model : AllPads()) {
        const std::string own = std::string("SC") + model->m_pszName;
        SCOPED_TRACE(own);
        EXPECT_EQ(recordingOf(own.c_str(), threeStrokes()), recordingOf(model->m_pszName, threeStrokes()));
        EXPECT_EQ(outputOf({"to-svg", "--model", own.c_str()}, textOf(threeStrokes())),
                  outputOf({"to-svg", "--model", model->m_pszName}, textOf(threeStrokes())));
    }
}

TEST_F(InkConversionTest, RecordingOfAStreamWithoutPoints)
{
    const std::string text = recordingOf("K420", {}).toStdString();
    simulator::Recording recording;
    std::string error;
    ASSERT_TRUE(simulator::parseRecording(text, "recording", recording, error)) << error;
    EXPECT_TRUE(recording.samples.empty());
}

TEST_F(InkConversionTest, TheLongestRecordingIsALimit)
{
    const std::vector<Point> longest = {{1, 1, 1, 0, -5, 0},
                                        {1, 1, 1, 1, simulator::LongestRecording - 5, 0}};
    EXPECT_TRUE(recordingOf("T580", longest).contains("1000000000 1 1 1 2\n"));
    std::vector<Point> tooLong = longest;
    tooLong[1].tick += 1;
    const Outcome outcome = runInk({"to-recording", "--model", "T580"}, textOf(tooLong));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output.toStdString(), "");
    EXPECT_TRUE(outcome.error.contains("longest recording")) << outcome.error.toStdString();
}

TEST_F(InkConversionTest, FileAndStandardInputGiveTheSame)
{
    const QString file = write("signature.ink", textOf(threeStrokes()));
    const std::vector<QStringList> commands = {{"info"},
                                               {"to-json"},
                                               {"to-csv"},
                                               {"to-svg", "--model", "K210"},
                                               {"to-recording", "--model", "K210"}};
    for (const QStringList& command : commands) {
        SCOPED_TRACE(command.first().toStdString());
        const QByteArray fromFile = outputOf(command + QStringList{file}, {});
        EXPECT_FALSE(fromFile.isEmpty());
        EXPECT_EQ(fromFile, outputOf(command, textOf(threeStrokes())));
        EXPECT_EQ(fromFile, outputOf(command + QStringList{"-"}, textOf(threeStrokes())));
        const QString target = path("out");
        EXPECT_EQ(outputOf(command + QStringList{file, "-o", target}, {}).toStdString(), "");
        EXPECT_EQ(contentOf(target), fromFile);
    }
}

TEST_F(InkConversionTest, LineEndsAndBlanksMayFollowTheText)
{
    for (const char* behind : {"\n", "\r\n", " \t\n\n"})
        EXPECT_EQ(outputOf({"to-csv"}, textOf(threeStrokes()) + behind),
                  outputOf({"to-csv"}, textOf(threeStrokes())));
}

TEST_F(InkConversionTest, LineBreaksMayStandAnywhereInTheText)
{
    const QByteArray text = textOf(threeStrokes());
    for (const QByteArray lineBreak : {"\n", "\r\n"})
        for (const int width : {1, 4, 7, 64, 76}) {
            SCOPED_TRACE(width);
            QByteArray wrapped;
            for (int at = 0; at < text.size(); at += width)
                wrapped += text.mid(at, width) + lineBreak;
            EXPECT_EQ(outputOf({"to-csv"}, wrapped), outputOf({"to-csv"}, text));
            EXPECT_EQ(outputOf({"to-csv"}, lineBreak + wrapped), outputOf({"to-csv"}, text));
        }
}

TEST_F(InkConversionTest, TheUnusedByteOfARecordIsIgnored)
{
    QByteArray stream = streamOf(threeStrokes());
    stream[7] = '\x5A';
    EXPECT_EQ(outputOf({"to-csv"}, stream.toBase64()), outputOf({"to-csv"}, textOf(threeStrokes())));
}

TEST_F(InkConversionTest, ALongStreamIsReadWhole)
{
    // Several of the blocks in which points are kept and pipes deliver.
    std::vector<Point> points;
    for (int index = 0; index < 20'000; ++index)
        points.push_back({index % 2000, index % 1300, index % 2048, index % 100 == 99, 5 * index, index});
    const QList<QByteArray> lines = outputOf({"to-csv"}, textOf(points)).split('\n');
    ASSERT_EQ(lines.size(), 20'002); // the header, and nothing after the last line end
    for (int index = 0; index < 20'000; ++index) {
        const Point& point = points[static_cast<std::size_t>(index)];
        const std::string expected = std::to_string(point.x) + "," + std::to_string(point.y) + "," +
                                     std::to_string(point.pressure) + "," + std::to_string(point.status) +
                                     "," + std::to_string(point.tick) + "," + std::to_string(point.seconds);
        ASSERT_EQ(lines[index + 1].toStdString(), expected);
    }
}

// The forms that ink can have: there and back, by others' programs, broken ones.

#include "failures.h"
#include "inkml.h"
#include "inktables.h"
#include "inkto.h"
#include "isosignature.h"
#include "model/padmodel.h"
#include "signatures.h"
#include "support.h"

#include <QProcess>

#include <array>
#include <functional>

namespace {

constexpr std::uint64_t Signatures = 500;

// Runs the check with 500 random signatures, each of a pad of its own, and with the recordings, which are all
// of one.
void forEachSignature(const std::function<void(const CInkSnapshot&, const CPadModel&)>& check)
{
    for (std::uint64_t seed = 0; seed < Signatures && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        check(randomSignature(padOf(seed), seed), padOf(seed));
    }
    for (const CInkSnapshot& ink : recordedSignatures())
        check(ink, g_PadT580);
}

void forEachSetOfPoints(const std::function<void(const CInkSnapshot&)>& check)
{
    for (std::uint64_t seed = 0; seed < Signatures && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        check(randomPoints(seed));
    }
    forEachSignature([&check](const CInkSnapshot& ink, const CPadModel&) { check(ink); });
}

std::string refusal(const std::function<CInkSnapshot(const QByteArray&, const QString&)>& read,
                    const QByteArray& text)
{
    try {
        read(text, QStringLiteral("input"));
    } catch (const Failure& failure) {
        return failure.reason.toStdString();
    }
    return "nothing was refused";
}

std::string csvOf(const CInkSnapshot& ink)
{
    QByteArray csv = toCsv(ink);
    csv.remove(0, csv.indexOf('\n') + 1);
    return csv.toStdString();
}

// By somebody who knows nothing beside the document.
CInkSnapshot readInkMl(const QByteArray& text, const QString& name)
{
    return fromInkMl(text, name, {});
}

CInkSnapshot readIsoSignature(const QByteArray& bytes, const QString& name)
{
    return fromIsoSignature(bytes, name, std::nullopt);
}

class InkFormatsTest : public InkToolTest
{
};

} // namespace

TEST_F(InkFormatsTest, CsvKeepsEverything)
{
    forEachSetOfPoints(
        [](const CInkSnapshot& ink) { EXPECT_EQ(difference(fromCsv(toCsv(ink), {}), ink), ""); });
}

TEST_F(InkFormatsTest, JsonKeepsEverything)
{
    forEachSetOfPoints(
        [](const CInkSnapshot& ink) { EXPECT_EQ(difference(fromJson(toJson(ink), {}), ink), ""); });
}

TEST_F(InkFormatsTest, InkMlKeepsEverything)
{
    forEachSetOfPoints([](const CInkSnapshot& ink) {
        EXPECT_EQ(difference(readInkMl(toInkMl(ink, {}), QStringLiteral("input")), ink), "");
    });
}

TEST_F(InkFormatsTest, InkMlWithMillimetresKeepsEverything)
{
    const std::array<Circumstances, 4> known = {
        {{nullptr, 0.1}, {nullptr, 19.685039}, {&g_PadT580, 196.85}, {&g_PadK210, 10000}}};
    std::size_t turn = 0;
    forEachSetOfPoints([&](const CInkSnapshot& ink) {
        const Circumstances& circumstances = known[turn++ % known.size()];
        const QByteArray text = toInkMl(ink, circumstances);
        EXPECT_EQ(difference(fromInkMl(text, QStringLiteral("input"), circumstances), ink), "");
        // Device units are what they are for those who do not ask for millimetres.
        EXPECT_EQ(difference(readInkMl(text, QStringLiteral("input")), ink), "");
    });
}

TEST_F(InkFormatsTest, RecordingsKeepAllButClockAndDate)
{
    forEachSignature([](const CInkSnapshot& ink, const CPadModel& pad) {
        EXPECT_EQ(difference(fromRecording(toRecording(ink, pad), {}), ink), "");
    });
}

TEST_F(InkFormatsTest, FullSignatureRecordsKeepAllButClockAndDate)
{
    forEachSignature([](const CInkSnapshot& ink, const CPadModel&) {
        EXPECT_EQ(difference(readIsoSignature(toIsoSignature(ink, std::nullopt), {}), ink), "");
        for (const double resolution : {0.1, 19.685039, 196.85, 10000.0}) {
            const QByteArray bytes = toIsoSignature(ink, resolution);
            EXPECT_EQ(difference(readIsoSignature(bytes, {}), ink), "");
            EXPECT_EQ(difference(fromIsoSignature(bytes, {}, resolution), ink), "");
        }
    });
}

TEST_F(InkFormatsTest, CompactSignatureRecordsKeepTheNearestOfTheirSteps)
{
    forEachSignature([](const CInkSnapshot& ink, const CPadModel& pad) {
        const QByteArray bytes = toCompactIsoSignature(ink, pad);
        const CInkSnapshot read = fromCompactIsoSignature(bytes, {}, pad);
        EXPECT_EQ(toCompactIsoSignature(read, pad), bytes);
        ASSERT_EQ(read.Count(), ink.Count());
        const auto within = [](int one, int other, double range) { return std::abs(one - other) <= range; };
        for (std::size_t index = 0; index < ink.Count(); ++index) {
            const _POINTDATA& point = read.At(index);
            const _POINTDATA& written = ink.At(index);
            ASSERT_TRUE(within(point.usX, written.usX, pad.m_nAreaWidth / 512.0 + 1)) << index;
            ASSERT_TRUE(within(point.sY, written.sY, pad.m_nAreaHeight / 512.0 + 1)) << index;
            ASSERT_TRUE(within(point.sPressure, written.sPressure, pad.m_nInitialMaxPressure / 510.0 + 1));
            ASSERT_EQ(point.ucStatus, written.ucStatus) << index;
            if (index == 0)
                continue;
            const std::int64_t step = written.llTick - ink.At(index - 1).llTick;
            ASSERT_EQ(point.llTick - read.At(index - 1).llTick, std::min<std::int64_t>(step, 255)) << index;
        }
    });
}

TEST_F(InkFormatsTest, InkMlIsWhatTheSchemaAllows)
{
    QStringList files;
    const auto add = [&](const CInkSnapshot& ink, const Circumstances& circumstances) {
        files += write(std::to_string(files.size()).c_str(), toInkMl(ink, circumstances));
    };
    for (std::uint64_t seed = 0; seed < Signatures; ++seed) {
        add(randomSignature(padOf(seed), seed), {&padOf(seed), 0.1 + static_cast<double>(seed) / 3});
        add(randomPoints(seed), {});
    }
    for (const CInkSnapshot& ink : recordedSignatures())
        add(ink, {&g_PadT580, 10000});
    const auto validate = [](const QStringList& documents) {
        QProcess checker;
        checker.setProcessChannelMode(QProcess::MergedChannels);
        checker.start(QStringLiteral("xmllint"),
                      QStringList{QStringLiteral("--noout"), QStringLiteral("--relaxng"),
                                  QStringLiteral(SCRIBERA_INKML_SCHEMA)} +
                          documents);
        EXPECT_TRUE(checker.waitForFinished(-1)) << checker.errorString().toStdString();
        EXPECT_EQ(checker.exitStatus(), QProcess::NormalExit);
        return checker.exitCode() == 0 ? std::string() : checker.readAll().right(2000).toStdString();
    };
    EXPECT_EQ(validate(files), "");

    // The schema does not allow anything else.
    const QByteArray good = contentOf(files.first());
    const std::array<std::pair<const char*, const char*>, 7> changes = {
        {{"<traceFormat>", "<traceFormat frame=\"1\">"},
         {"<channelProperties>", "<channelProperties/><channelProperties>"},
         {" name=\"resolution\" value=\"0.1\"", " name=\"resolution\" value=\"1e-1\""},
         {"name=\"X\"", "nome=\"X\""},
         {" T 0 ", " TX 0 "},
         {"<timestamp xml:id=\"start\"", "<timestamp"},
         {"http://www.w3.org/2003/InkML", "http://www.w3.org/2003/Ink"}}};
    for (const auto& [from, to] : changes) {
        QByteArray bad = good;
        ASSERT_NE(bad.replace(from, to), good) << from;
        EXPECT_NE(validate({write("bad", bad)}), "") << from;
    }
}

TEST_F(InkFormatsTest, TheToolGoesEveryWay)
{
    const QByteArray stream = toStreamText(recordedSignatures().front());
    const QString file = write("signature.ink", stream);
    const std::vector<std::pair<QString, QStringList>> forms = {
        {"json", {}},
        {"csv", {}},
        {"inkml", {"--model", "T580"}},
        {"recording", {"--model", "T580"}},
        {"iso19794-7", {"--units-per-mm", "200"}},
    };
    for (const auto& [form, options] : forms) {
        SCOPED_TRACE(form.toStdString());
        const QByteArray written = outputOf(QStringList{"to-" + form, file} + options, {});
        EXPECT_EQ(outputOf({"from-" + form}, written), stream);
        EXPECT_EQ(outputOf({"from-" + form, write("written", written)}, {}), stream);
    }
    const QStringList millimetres = {"--units-per-mm", "196.85"};
    EXPECT_EQ(outputOf(QStringList{"from-inkml"} + millimetres,
                       outputOf(QStringList{"to-inkml", file} + millimetres, {})),
              stream);
    const QStringList compact = {"--compact", "--model", "T580"};
    const QByteArray bytes = outputOf(QStringList{"to-iso19794-7", file} + compact, {});
    EXPECT_EQ(bytes, toCompactIsoSignature(recordedSignatures().front(), g_PadT580));
    EXPECT_EQ(outputOf(QStringList{"to-iso19794-7"} + compact,
                       outputOf(QStringList{"from-iso19794-7"} + compact, bytes)),
              bytes);
}

TEST_F(InkFormatsTest, KeysOfARecordingAreNoInk)
{
    const QByteArray recording = "# scribera recording 1\nmodel: SCK210\narea: 160 220 2360 1430\n"
                                 "max-pressure: 2048\n0 500 400 7 0\n5 501 402 9 1\n10 501 402 9 2\n"
                                 "500 3 1 1 4\n";
    EXPECT_EQ(csvOf(fromRecording(recording, {})), "500,400,7,0,0,0\n501,402,9,0,5,0\n501,402,9,1,10,0\n");
    QByteArray other = recording;
    EXPECT_EQ(refusal(fromRecording, other.replace("9 1\n", "9 7\n")),
              "input: point 2: status 7 is none of a pen or a key");
    other = recording;
    EXPECT_EQ(refusal(fromRecording, other.replace("5 501", "5 70000")),
              "input: point 2: x 70000 is not within 0 to 65535");
    EXPECT_EQ(refusal(fromRecording, "nothing"), "input:1: the first line is not '# scribera recording 1'");
}

TEST_F(InkFormatsTest, CsvAsSpreadsheetsSaveIt)
{
    const QByteArray text = "x,y,pressure,status,tick,seconds\r\n1,-2,3,0,4,5\r\n";
    EXPECT_EQ(csvOf(fromCsv(text, {})), "1,-2,3,0,4,5\n");
    EXPECT_EQ(csvOf(fromCsv("\xef\xbb\xbf" + text, {})), "1,-2,3,0,4,5\n");
}

TEST_F(InkFormatsTest, CsvThatIsNone)
{
    const QByteArray header = "x,y,pressure,status,tick,seconds\n";
    for (const char* mark : {"\xef\xbb", "\xef\xbb\xbf\xef\xbb\xbf", "\xfe\xff"})
        EXPECT_EQ(refusal(fromCsv, mark + header),
                  "input:1: is not the header line x,y,pressure,status,tick,seconds");
    EXPECT_EQ(refusal(fromCsv, ""), "input:1: is not the header line x,y,pressure,status,tick,seconds");
    for (const char* line : {"", "1,2,3,0,4", "1,2,3,0,4,5,", "1,2,3,0,4,5 ", "1,2,3,0,4,x", "1;2;3;0;4;5",
                             "1,2,3,0,4,9223372036854775808", "+1,2,3,0,4,5", "1.0,2,3,0,4,5"})
        EXPECT_EQ(refusal(fromCsv, header + "1,2,3,0,4,5\n" + line + "\n"),
                  "input:3: is not six whole numbers with commas between them")
            << line;
    EXPECT_EQ(refusal(fromCsv, header + "65536,2,3,0,4,5"), "input:2: x 65536 is not within 0 to 65535");
    EXPECT_EQ(refusal(fromCsv, header + "1,40000,3,0,4,5"), "input:2: y 40000 is not within -32768 to 32767");
    EXPECT_EQ(refusal(fromCsv, header + "1,2,-32769,0,4,5"),
              "input:2: pressure -32769 is not within -32768 to 32767");
    EXPECT_EQ(refusal(fromCsv, header + "1,2,3,2,4,5"), "input:2: status 2 is not within 0 to 1");
    EXPECT_EQ(refusal(fromCsv, header + "1,2,3,0,4,5\n1,2,3,0,3,5"),
              "input:3: time 3 is before the previous point's, 4");
}

TEST_F(InkFormatsTest, JsonThatIsNone)
{
    const auto points = [](const QByteArray& list) { return "{\"points\":" + list + "}"; };
    EXPECT_EQ(refusal(fromJson, "{"), "input:1: unterminated object");
    for (const QByteArray& none : {QByteArray("[]"), QByteArray("{}"), points("7"), points("{}")})
        EXPECT_EQ(refusal(fromJson, none), "input: has no list of points") << none.toStdString();
    for (const char* x : {"1.5", "\"1\"", "null", "1e-3", "9223372036854775808"})
        EXPECT_EQ(refusal(fromJson, points("[{\"x\":" + QByteArray(x) + "}]")),
                  "input: point 1: x is not a whole number")
            << x;
    EXPECT_EQ(refusal(fromJson, points("[7]")), "input: point 1: x is not a whole number");
    EXPECT_NE(refusal(fromJson, QByteArray(100'000, '[')), "nothing was refused");
}

namespace {

QByteArray inkMl(const QByteArray& content)
{
    return "<ink xmlns=\"http://www.w3.org/2003/InkML\">" + content + "</ink>";
}

std::string ofInkMl(const QByteArray& content, const Circumstances& circumstances = {})
{
    return csvOf(fromInkMl(inkMl(content), QStringLiteral("input"), circumstances));
}

std::string refusalOfInkMl(const QByteArray& content, const Circumstances& circumstances = {})
{
    return refusal(
        [&](const QByteArray& text, const QString& name) { return fromInkMl(text, name, circumstances); },
        inkMl(content));
}

// A context with a source of ink, of these channels and properties of channels.
QByteArray sourceOf(const QByteArray& channels, const QByteArray& properties = {})
{
    return "<context xml:id='c'><inkSource xml:id='s'><traceFormat>" + channels +
           "</traceFormat><channelProperties>" + properties + "</channelProperties></inkSource></context>";
}

QByteArray resolution(const char* channel, const char* value, const char* units)
{
    return QByteArray("<channelProperty channel='") + channel + "' name='resolution' value='" + value +
           "' units='" + units + "'/>";
}

constexpr Circumstances TwentyToAMillimetre = {nullptr, 20};

} // namespace

TEST_F(InkFormatsTest, InkMlOfTheFewestWords)
{
    // Strokes end where traces do, points are 5 ms apart and pressed alike.
    EXPECT_EQ(ofInkMl("<trace>10 0, 9 14.4,\n8 -28.5</trace><trace>130 155</trace>"),
              "10,0,1024,0,0,0\n9,14,1024,0,5,0\n8,-29,1024,0,10,0\n8,-29,1024,1,10,0\n"
              "130,155,1024,0,15,0\n130,155,1024,1,15,0\n");
    EXPECT_EQ(ofInkMl(""), "");
    EXPECT_EQ(ofInkMl("<trace/><trace> </trace>"), "");
}

TEST_F(InkFormatsTest, InkMlWithDifferences)
{
    // Velocities from the second point on, accelerations from the third.
    EXPECT_EQ(ofInkMl("<trace>1125 18432,'23'43,\"7\"-8,3-5,7 -3,!5!*,*?</trace>"),
              "1125,18432,1024,0,0,0\n1148,18475,1024,0,5,0\n1178,18510,1024,0,10,0\n"
              "1211,18540,1024,0,15,0\n1251,18567,1024,0,20,0\n5,18567,1024,0,25,0\n5,18567,1024,0,30,0\n"
              "5,18567,1024,1,30,0\n");
    EXPECT_EQ(ofInkMl("<trace>#F #-1A,'1'1,**</trace>"),
              "15,-26,1024,0,0,0\n16,-25,1024,0,5,0\n17,-24,1024,0,10,0\n17,-24,1024,1,10,0\n");
}

TEST_F(InkFormatsTest, InkMlWithChannelsOfItsOwn)
{
    EXPECT_EQ(
        ofInkMl("<definitions><timestamp xml:id='when' timeString='2023-11-14T22:13:20Z'/>"
                "<timestamp xml:id='later' timestampRef='#when' timeOffset='1500'/>"
                "<inkSource xml:id='pad'><traceFormat>"
                "<channel name='T' type='integer' units='ms' respectTo='#later'/>"
                "<channel name='OTx'/><channel name='Y'/><channel name='X'/>"
                "<intermittentChannels><channel name='F'/><channel name='S' type='boolean' default='F'/>"
                "</intermittentChannels></traceFormat></inkSource></definitions>"
                "<context xml:id='c' inkSourceRef='#pad'/>"
                "<trace>10 0 2 1 500 T,300 0 4 3 600,700 0 6 5 600 F</trace>"),
        "1,2,500,0,10,1700000001\n3,4,600,0,300,1700000001\n5,6,600,1,700,1700000002\n");
}

TEST_F(InkFormatsTest, InkMlWithContextsAndGroups)
{
    EXPECT_EQ(
        ofInkMl("<definitions><context xml:id='yx'><traceFormat><channel name='Y'/><channel name='X'/>"
                "</traceFormat></context></definitions>"
                "<annotation type='note'>x</annotation><annotationXML><a xmlns='b'><c/></a></annotationXML>"
                "<traceGroup contextRef='#yx'><trace>1 2</trace><traceGroup><trace>3 4</trace></traceGroup>"
                "</traceGroup><trace>5 6</trace><trace contextRef='#yx'>7 8</trace>"
                "<trace type='penUp'>9 9</trace>"),
        "2,1,1024,0,0,0\n2,1,1024,1,0,0\n4,3,1024,0,5,0\n4,3,1024,1,5,0\n"
        "5,6,1024,0,10,0\n5,6,1024,1,10,0\n8,7,1024,0,15,0\n8,7,1024,1,15,0\n");
    EXPECT_EQ(ofInkMl("<trace xml:id='a' continuation='begin'>1 1</trace>"
                      "<trace continuation='middle' priorRef='#a'>2 2</trace>"
                      "<trace continuation='end' priorRef='#a'>3 3</trace>"),
              "1,1,1024,0,0,0\n2,2,1024,0,5,0\n3,3,1024,0,10,0\n3,3,1024,1,10,0\n");
}

TEST_F(InkFormatsTest, AnInkMlDocumentByteForByte)
{
    const auto document = [](const QByteArray& model, const QByteArray& properties) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<ink xmlns=\"http://www.w3.org/2003/InkML\">\n"
               "<context><inkSource xml:id=\"pad\"" +
               model +
               "><traceFormat>"
               "<channel name=\"X\" type=\"integer\" units=\"dev\"/>"
               "<channel name=\"Y\" type=\"integer\" units=\"dev\"/>"
               "<channel name=\"F\" type=\"integer\" units=\"dev\"/>"
               "<channel name=\"S\" type=\"boolean\"/>"
               "<channel name=\"T\" type=\"integer\" units=\"ms\" respectTo=\"#start\"/>"
               "<channel name=\"seconds\" type=\"integer\" units=\"s\"/></traceFormat>" +
               properties +
               "</inkSource><timestamp xml:id=\"start\" time=\"9000\"/></context>\n"
               "<annotation type=\"first-tick\">77</annotation>\n"
               "<trace>1000 -2 258 T 0 9,1000 -2 258 F 5 9</trace>\n"
               "</ink>\n";
    };
    const QByteArray stream = textOf({{1000, -2, 258, 0, 77, 9}, {1000, -2, 258, 1, 82, 9}});
    EXPECT_EQ(outputOf({"to-inkml"}, stream), document("", ""));
    EXPECT_EQ(outputOf({"to-inkml", "--model", "T580", "--units-per-mm", "1.9685e1"}, stream),
              document(" model=\"T580\"",
                       "<channelProperties>"
                       "<channelProperty channel=\"X\" name=\"resolution\" value=\"19.685\" units=\"1/mm\"/>"
                       "<channelProperty channel=\"Y\" name=\"resolution\" value=\"19.685\" units=\"1/mm\"/>"
                       "</channelProperties>"));
}

TEST_F(InkFormatsTest, InkMlInUnitsOfLengthBecomesPadUnits)
{
    struct Case
    {
        const char* units;
        const char* values;
        const char* positions;
    };
    for (const Case& told : {Case{"m", "0.0327 .01", "654,200"}, Case{"cm", "3.27 1", "654,200"},
                             Case{"mm", "32.7 -10.02", "654,-200"}, Case{"in", "1 0.5", "508,254"},
                             Case{"pt", "72 36", "508,254"}, Case{"pc", "6 3", "508,254"},
                             Case{"himetric", "3270 1000", "654,200"}}) {
        SCOPED_TRACE(told.units);
        const QByteArray units = QByteArray(" units='") + told.units + "'/>";
        const std::string expected = told.positions;
        for (const char* type : {"", " type='decimal'", " type='double'"})
            EXPECT_EQ(ofInkMl(sourceOf("<channel name='X'" + QByteArray(type) + units + "<channel name='Y'" +
                                       type + units) +
                                  "<trace>" + told.values + "</trace>",
                              TwentyToAMillimetre),
                      expected + ",1024,0,0,0\n" + expected + ",1024,1,0,0\n");
    }
    // The two may differ, and differences are told in the same units.
    EXPECT_EQ(
        ofInkMl(sourceOf("<channel name='Y' units='in'/><channel name='X' type='integer' units='mm'/>") +
                    "<trace>1 2,'.5'3,\"0\"1</trace>",
                TwentyToAMillimetre),
        "40,508,1024,0,0,0\n100,762,1024,0,5,0\n180,1016,1024,0,10,0\n180,1016,1024,1,10,0\n");
    EXPECT_EQ(refusalOfInkMl(sourceOf("<channel name='X' units='m'/><channel name='Y' units='m'/>") +
                                 "<trace>1 1,4 1</trace>",
                             TwentyToAMillimetre),
              "input: point 2: x 80000 is not within 0 to 65535");
}

TEST_F(InkFormatsTest, InkMlWithAResolutionBecomesPadUnits)
{
    const auto of = [](const QByteArray& channel, const QByteArray& properties, const char* values) {
        const std::string csv = ofInkMl(sourceOf("<channel name='X'" + channel + "/><channel name='Y'" +
                                                     channel + "/><channel name='F' type='integer'/>",
                                                 properties) +
                                            "<trace>" + values + " 7</trace>",
                                        TwentyToAMillimetre);
        return csv.substr(0, csv.find(",7,"));
    };
    const auto both = [](const char* value, const char* units) {
        return resolution("X", value, units) + resolution("Y", value, units) + resolution("F", "0", "1/dev");
    };
    const QByteArray steps = " type='integer' units='dev'";
    EXPECT_EQ(of(steps, both("5000", "1/in"), "2500 5000"), "254,508");
    EXPECT_EQ(of(steps, both("0.01", "mm"), "3270 1000"), "654,200");
    EXPECT_EQ(of("", both("100", "1/mm"), "3270 1000.4"), "654,200");
    // Whole numbers with a resolution count its steps, whatever units they name beside it.
    EXPECT_EQ(of(" type='integer' units='cm'", both("1000", "1/cm"), "3270 1000"), "654,200");
    EXPECT_EQ(of(" type='integer' units='himetric'", both("1", "1/himetric"), "3270 1000"), "654,200");
    EXPECT_EQ(of(" type='integer' max='9600' units='cm'",
                 resolution("X", "367.8161", "1/cm") + resolution("Y", "440.36697", "1/cm"), "3678 4404"),
              "2000,2000");
    // Others are lengths where they have units of length.
    EXPECT_EQ(of(" type='decimal' units='mm'", both("5000", "1/in"), "32.7 10"), "654,200");
}

TEST_F(InkFormatsTest, InkMlInUnitsOfLengthNeedsTheSizeOfPadUnits)
{
    const auto of = [](const char* x, const char* y, const QByteArray& properties = {}) {
        return refusalOfInkMl(
            sourceOf(QByteArray("<channel name='X'") + x + "/><channel name='Y'" + y + "/>", properties) +
            "\n<trace>3.27 1</trace>");
    };
    EXPECT_EQ(
        of(" units='cm'", " units='cm'"),
        "input:2: channel X is in cm; --units-per-mm has to tell how many pad units are in a millimetre");
    EXPECT_EQ(
        of(" units='dev'", " type='integer' units='mm'"),
        "input:2: channel Y is in mm; --units-per-mm has to tell how many pad units are in a millimetre");
    EXPECT_EQ(
        of(" units='mm'", "", resolution("X", "100", "1/mm")),
        "input:2: channel X is in mm; --units-per-mm has to tell how many pad units are in a millimetre");
    // Device units and steps are pad units, and so are units of no certain length.
    for (const char* units : {"", " units='dev'", " units='px'", " units='em'"})
        EXPECT_EQ(of(units, units), "nothing was refused") << units;
    EXPECT_EQ(of(" type='integer' units='cm'", " type='integer' units='cm'",
                 resolution("X", "1000", "1/cm") + resolution("Y", "1000", "1/cm")),
              "nothing was refused");
    // What is nowhere used does not matter.
    EXPECT_EQ(ofInkMl(sourceOf("<channel name='X' units='cm'/><channel name='Y' units='cm'/>")), "");
    const QString file =
        write("notes.inkml",
              inkMl(sourceOf("<channel name='X' units='cm'/><channel name='Y'/>") + "<trace>3.27 1</trace>"));
    const Outcome outcome = runInk({"from-inkml", file});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(
        outcome.error.toStdString(),
        "scribera-ink: " + file.toStdString() +
            ":1: channel X is in cm; --units-per-mm has to tell how many pad units are in a millimetre\n");
}

TEST_F(InkFormatsTest, InkMlWithoutLengthsHasNoMillimetres)
{
    const auto of = [](const QByteArray& content) {
        return refusalOfInkMl(content + "<trace>3 1</trace>", TwentyToAMillimetre);
    };
    const auto told = [](const char* channel) {
        return std::string("input:1: channel ") + channel +
               " tells no length; without --units-per-mm its values are taken as pad units";
    };
    EXPECT_EQ(of(""), told("X"));
    const QByteArray millimetres = "<channel name='X' units='mm'/>";
    for (const char* units : {"", " units='dev'", " units='px'", " units='s'", " units='CM'"})
        EXPECT_EQ(of(sourceOf(millimetres + "<channel name='Y'" + units + "/>")), told("Y")) << units;
    for (const auto& [value, units] :
         {std::pair("0", "1/mm"), std::pair("-5", "1/mm"), std::pair("nan", "1/mm"), std::pair("inf", "mm"),
          std::pair("", "mm"), std::pair("7", "1/dev"), std::pair("7", ""), std::pair("7", "1/"),
          std::pair("7", "mm/1")})
        EXPECT_EQ(of(sourceOf(millimetres + "<channel name='Y' type='integer' units='mm'/>",
                              resolution("Y", value, units))),
                  told("Y"))
            << value << ' ' << units;
}

TEST_F(InkFormatsTest, InkMlWithTheFormatOfItsContext)
{
    // The context's own channels take the place of the source's, whose resolution they keep.
    const QByteArray source = "<inkSource xml:id='s'><traceFormat><channel name='X'/><channel name='Y'/>"
                              "</traceFormat><channelProperties>" +
                              resolution("X", "100", "1/mm") + resolution("Y", "50", "1/mm") +
                              "</channelProperties></inkSource>";
    const QByteArray format = "<traceFormat xml:id='f'><channel name='Y'/><channel name='X'/></traceFormat>";
    for (const QByteArray& context :
         {"<context>" + format + source + "</context>", "<context>" + source + format + "</context>",
          "<definitions>" + source + format +
              "</definitions><context inkSourceRef='#s' traceFormatRef='#f'/>",
          "<definitions>" + source + "</definitions><context inkSourceRef='#s'>" + format + "</context>",
          "<definitions>" + format + "</definitions><context traceFormatRef='#f'>" + source + "</context>"})
        EXPECT_EQ(ofInkMl(context + "<trace>1000 3000</trace>", TwentyToAMillimetre),
                  "600,400,1024,0,0,0\n600,400,1024,1,0,0\n")
            << context.toStdString();
}

TEST_F(InkFormatsTest, InkMlWithAFormatWithoutAContext)
{
    const QByteArray format =
        "<traceFormat><channel name='Y'/><channel name='X'/><channel name='F'/></traceFormat>";
    for (const QByteArray& told : {format, "<inkSource xml:id='s'>" + format + "</inkSource>"}) {
        EXPECT_EQ(ofInkMl(told + "<trace>1 2 300</trace>"), "2,1,300,0,0,0\n2,1,300,1,0,0\n");
        // What is only defined is not in force.
        EXPECT_EQ(refusalOfInkMl("<definitions>" + told + "</definitions><trace>1 2 300</trace>"),
                  "input: point 1: has more than the 2 values");
    }
}

TEST_F(InkFormatsTest, InkMlThatCountsTheOtherWay)
{
    // Within the range that is told, from 0 where only its end is; otherwise from 0 downwards.
    EXPECT_EQ(ofInkMl(sourceOf("<channel name='X' orientation='-ve' min='100' max='1100'/>"
                               "<channel name='Y' orientation='-ve' max='500'/>"
                               "<channel name='F' type='integer' orientation='-ve' max='2047'/>") +
                      "<trace>100 500 0,1100 0 2047,'-100'20'-7</trace>"),
              "1100,0,2047,0,0,0\n100,500,0,0,5,0\n200,480,7,0,10,0\n200,480,7,1,10,0\n");
    EXPECT_EQ(ofInkMl(sourceOf("<channel name='X' orientation='+ve' max='9'/>"
                               "<channel name='Y' orientation='-ve'/>") +
                      "<trace>7 30</trace>"),
              "7,-30,1024,0,0,0\n7,-30,1024,1,0,0\n");
    EXPECT_EQ(ofInkMl(sourceOf("<channel name='X' units='mm'/><channel name='Y' units='cm' orientation='-ve' "
                               "max='2.1'/>") +
                          "<trace>7 0.5</trace>",
                      TwentyToAMillimetre),
              "140,320,1024,0,0,0\n140,320,1024,1,0,0\n");
}

TEST_F(InkFormatsTest, InkMlWithTimesInSeconds)
{
    const auto of = [](const QByteArray& channel, const QByteArray& properties, const char* trace) {
        return ofInkMl(
            "<definitions><timestamp xml:id='t' time='1700000000000'/></definitions>" +
            sourceOf("<channel name='X'/><channel name='Y'/><channel name='T'" + channel + "/>", properties) +
            "<trace timeOffset='40'>" + trace + "</trace>");
    };
    EXPECT_EQ(of(" units='s'", "", "1 1 .0053,1 1 1.2"),
              "1,1,1024,0,45,0\n1,1,1024,0,1240,0\n1,1,1024,1,1240,0\n");
    EXPECT_EQ(of(" units='s' respectTo='#t'", "", "1 1 0,1 1 1.5"),
              "1,1,1024,0,0,1700000000\n1,1,1024,0,1500,1700000001\n1,1,1024,1,1500,1700000001\n");
    EXPECT_EQ(of(" type='integer' units='s'", resolution("T", "100", "1/s"), "1 1 3"),
              "1,1,1024,0,70,0\n1,1,1024,1,70,0\n");
    for (const char* units : {"", " units='ms'", " units='dev'", " units='mm'"})
        EXPECT_EQ(of(units, "", "1 1 3"), "1,1,1024,0,43,0\n1,1,1024,1,43,0\n") << units;
}

TEST_F(InkFormatsTest, InkMlWithARangeOfPressures)
{
    const auto of = [](const QByteArray& channel, const char* pressures, const CPadModel* pad) {
        QByteArray trace;
        for (const QByteArray& pressure : QByteArray(pressures).split(' '))
            trace += (trace.isEmpty() ? "" : ",") + QByteArray("1 1 ") + pressure;
        const CInkSnapshot ink = fromInkMl(
            inkMl(sourceOf("<channel name='X'/><channel name='Y'/><channel name='F'" + channel + "/>") +
                  "<trace>" + trace + "</trace>"),
            {}, {pad, std::nullopt});
        std::string text;
        for (std::size_t index = 0; index + 1 < ink.Count(); ++index)
            text += (index == 0 ? "" : " ") + std::to_string(ink.At(index).sPressure);
        return text;
    };
    // A pad has its levels.
    EXPECT_EQ(of(" type='decimal' min='0' max='1'", "0 .25 1", &g_PadK210), "0 512 2048");
    EXPECT_EQ(of(" type='integer' max='32767' units='dev'", "0 16384 32767", &g_PadT580), "0 4096 8192");
    EXPECT_EQ(of(" min='-1' max='1'", "-1 0 .5", &g_PadK210), "0 1024 1536");
    EXPECT_EQ(of(" min='-1' max='1' orientation='-ve'", "-1 0 .5", &g_PadK210), "2048 1024 512");
    EXPECT_EQ(of(" type='integer' min='100' max='2148'", "100 612 2148", &g_PadK210), "0 512 2048");
    // Without one, what rounding would take is spread, and everything else is left as it is.
    EXPECT_EQ(of(" type='decimal' min='0' max='1'", "0 .25 1", nullptr), "0 256 1024");
    EXPECT_EQ(of(" max='100'", "0 25 33.3 100", nullptr), "0 256 341 1024");
    EXPECT_EQ(of(" max='1024'", "0 25.4 1024", nullptr), "0 25 1024");
    EXPECT_EQ(of(" type='integer' max='255'", "0 25 255", nullptr), "0 25 255");
    // Where no end is told, shares of 1 are known by all of them being such.
    EXPECT_EQ(of(" type='decimal'", "0 .25 1", nullptr), "0 256 1024");
    EXPECT_EQ(of("", "0 .25 .75", &g_PadK210), "0 512 1536");
    EXPECT_EQ(of(" orientation='-ve'", "0 .25 .75", nullptr), "1024 768 256");
    EXPECT_EQ(of(" type='decimal'", "0 .25 1.5 900", nullptr), "0 0 2 900");
    EXPECT_EQ(of(" type='decimal'", "0 -.25 1", nullptr), "0 0 1");
    EXPECT_EQ(of(" type='integer'", "0 0 1", &g_PadK210), "0 0 1");
    // A range of nothing is none.
    for (const char* range : {" max='0'", " max='nan'", " min='3' max='3'", " min='3' max='2'", " min='5'"})
        EXPECT_EQ(of(range, "7 8.6", &g_PadK210), "7 9") << range;
}

TEST_F(InkFormatsTest, InkMlThatIsNone)
{
    const auto of = [](const QByteArray& content) { return refusalOfInkMl(content); };
    EXPECT_EQ(refusal(readInkMl, "<ink/>"), "input:1: is not an InkML document");
    EXPECT_EQ(refusal(readInkMl, "<svg xmlns='http://www.w3.org/2003/InkML'/>"),
              "input:1: is not an InkML document");
    EXPECT_EQ(refusal(readInkMl, "<!DOCTYPE ink [<!ENTITY a 'aaaa'>]>" + inkMl("<trace>&a;</trace>")),
              "input:1: has a document type, which is not read");
    EXPECT_EQ(refusal(readInkMl, ""), "input:1: Premature end of document.");
    EXPECT_EQ(refusal(readInkMl, inkMl("\n<trace>1 2</trace>").chopped(3)),
              "input:2: Premature end of document.");
    EXPECT_EQ(of("<trace>1 2</trace>") + of("<trace>&b;</trace>"),
              "nothing was refusedinput:1: Entity 'b' not declared.");
    EXPECT_EQ(of("<trace>1 2,3</trace>"), "input: point 2: has 1 of the 2 values");
    EXPECT_EQ(of("<trace>1 2,</trace><trace>1 2 3</trace>"), "input: point 2: has more than the 2 values");
    EXPECT_EQ(of("<trace>1 2,,3 4</trace>"), "input: point 2: has 0 of the 2 values");
    for (const char* none : {"x", "-", "inf", "nan", "1e", "--1", "+1", "#", "0x1", "'", ";", "\xc3\xa4"})
        EXPECT_TRUE(of("<trace>1 " + QByteArray(none) + "</trace>").starts_with("input: point 1: ")) << none;
    EXPECT_EQ(of("<trace>1 99999999999999999999999</trace>"),
              "input: point 1: a value does not fit into 64 bits");
    EXPECT_EQ(of("<trace>1 2,'40000 0,*0</trace>"), "input: point 3: x 80001 is not within 0 to 65535");
    EXPECT_EQ(of("<trace contextRef='#none'>1 2</trace>"),
              "input:1: reference #none leads to nothing above it");
    EXPECT_EQ(of("<context><traceFormat><channel name='X'/></traceFormat></context>"),
              "input:1: the trace format has no channels X and Y");
    EXPECT_EQ(of(QByteArray("<traceGroup>").repeated(100) + QByteArray("</traceGroup>").repeated(100)),
              "input:1: groups lie deeper than 64");
    const auto ofChannels = [&of](int count, int formats) {
        return of("<definitions>" +
                  ("<traceFormat><channel name='X'/><channel name='Y'/>" +
                   QByteArray("<channel name='Z'/>").repeated(count - 2) + "</traceFormat>")
                      .repeated(formats) +
                  "</definitions>");
    };
    EXPECT_EQ(ofChannels(64, 64), "nothing was refused");
    EXPECT_EQ(ofChannels(65, 1), "input:1: has too many channels");
    EXPECT_EQ(ofChannels(63, 66), "input:1: has too many channels");
    const QByteArray timed = "<context><traceFormat><channel name='X'/><channel name='Y'/><channel name='T'/>"
                             "</traceFormat></context><trace>1 2 5,1 2 4</trace>";
    EXPECT_EQ(of(timed), "input: point 2: time 4 is before the previous point's, 5");
}

TEST_F(InkFormatsTest, AFullSignatureRecordByteForByte)
{
    const QByteArray bytes = outputOf({"to-iso19794-7", "--units-per-mm", "20"},
                                      textOf({{1000, -2, 258, 0, 77, 9}, {1000, -2, 258, 1, 82, 9}}));
    EXPECT_EQ(bytes.toHex().toStdString(), "53444900"
                                           "20313000"
                                           "c160"
                                           "80a200"
                                           "80a200"
                                           "808000"
                                           "00"
                                           "00"
                                           "00"
                                           "00"
                                           "000002"
                                           "83e87ffe0000010201"
                                           "83e87ffe0005010200");
}

TEST_F(InkFormatsTest, WhatAFullSignatureRecordCannotHold)
{
    const auto refused = [](const std::vector<Point>& points) {
        const Outcome outcome = runInk({"to-iso19794-7"}, textOf(points));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, QByteArray());
        return outcome.error.toStdString();
    };
    EXPECT_EQ(refused({{1, 1, 1, 0, 0, 0}, {32768, 1, 1, 0, 0, 0}}),
              "scribera-ink: point 2: x is 32768, which the format cannot hold\n");
    EXPECT_EQ(refused({{1, 1, -1, 0, 0, 0}}),
              "scribera-ink: point 1: the pressure is -1, which the format cannot hold\n");
    EXPECT_EQ(refused({{1, 1, 1, 0, 0, 0}, {1, 1, 1, 0, 65536, 0}}),
              "scribera-ink: point 2: comes after a pause of 65536 ms, which the format cannot hold\n");
    // Longer than times can tell, but without a pause that is.
    const QByteArray steps = textOf({{1, 1, 1, 0, 0, 0}, {1, 1, 1, 0, 65535, 0}, {1, 1, 1, 1, 131070, 0}});
    EXPECT_EQ(outputOf({"from-iso19794-7"}, outputOf({"to-iso19794-7"}, steps)), steps);
}

TEST_F(InkFormatsTest, SignatureRecordsOfOthers)
{
    const auto of = [](const char* hex) { return csvOf(readIsoSignature(QByteArray::fromHex(hex), {})); };
    const QByteArray head = "5344490020313000";
    // X and Y alone.
    EXPECT_EQ(of(head + "c000"
                        "0000"
                        "00"
                        "00"
                        "000002"
                        "80018002"
                        "80038004"),
              "1,2,1024,0,0,0\n3,4,1024,0,5,0\n");
    // With Z and R, statistics of X, pressure as the switch, time in halves of a millisecond, extended data.
    EXPECT_EQ(of(head + "e141"
                        "f880008001800280038004"
                        "00"
                        "00"
                        "808800"
                        "00"
                        "00"
                        "00"
                        "80"
                        "000002"
                        "80018002ffff00020007ffff"
                        "80038004000000080000ffff"
                        "0003616263"),
              "1,2,7,0,1,0\n3,4,0,1,4,0\n");
}

TEST_F(InkFormatsTest, SignatureRecordsOfAnotherResolutionBecomePadUnits)
{
    const QByteArray head = "5344490020313000";
    // X in hundredths, Y in quarters of a millimetre.
    const QByteArray record = QByteArray::fromHex(head + "c000"
                                                         "80b480"
                                                         "809000"
                                                         "00"
                                                         "00"
                                                         "000002"
                                                         "83e87ffe"
                                                         "8bb88002");
    EXPECT_EQ(csvOf(readIsoSignature(record, {})), "1000,-2,1024,0,0,0\n3000,2,1024,0,5,0\n");
    EXPECT_EQ(csvOf(fromIsoSignature(record, {}, 20)), "200,-10,1024,0,0,0\n600,10,1024,0,5,0\n");
    EXPECT_EQ(outputOf({"to-csv"}, outputOf({"from-iso19794-7", "--units-per-mm", "20"}, record)),
              "x,y,pressure,status,tick,seconds\n200,-10,1024,0,0,0\n600,10,1024,0,5,0\n");
    EXPECT_EQ(refusal([](const QByteArray& bytes,
                         const QString& name) { return fromIsoSignature(bytes, name, 10000); },
                      record),
              "input: point 1: x 100000 is not within 0 to 65535");
    const QByteArray lengthless = QByteArray::fromHex(head + "c000"
                                                             "80b480"
                                                             "00"
                                                             "00"
                                                             "00"
                                                             "000000");
    EXPECT_EQ(
        refusal(
            [](const QByteArray& bytes, const QString& name) { return fromIsoSignature(bytes, name, 20); },
            lengthless),
        "input:15: channel Y tells no length; without --units-per-mm its values are taken as pad units");
    EXPECT_EQ(csvOf(readIsoSignature(lengthless, {})), "");
}

TEST_F(InkFormatsTest, SignatureRecordsThatAreNone)
{
    const QByteArray good = toIsoSignature(recordedSignatures().front(), std::nullopt);
    EXPECT_EQ(refusal(readIsoSignature, ""), "input:0: is not a signature record of ISO/IEC 19794-7");
    EXPECT_EQ(refusal(readIsoSignature, "FMR" + good.mid(3)),
              "input:0: is not a signature record of ISO/IEC 19794-7");
    EXPECT_EQ(refusal(readIsoSignature, good.left(5) + "2" + good.mid(6)),
              "input:4: is not of the edition of 2007, the one that is read");
    for (int size = 8; size < 22; ++size)
        EXPECT_NE(refusal(readIsoSignature, good.left(size)).find("the record ends too early"),
                  std::string::npos)
            << size;
    const std::string count = std::to_string(recordedSignatures().front().Count());
    for (const int size : {22, 100, static_cast<int>(good.size()) - 1})
        EXPECT_EQ(refusal(readIsoSignature, good.left(size)),
                  "input:22: the record ends before its " + count + " points do");
    EXPECT_EQ(refusal(readIsoSignature, good + '\0'),
              "input:" + std::to_string(good.size()) + ": bytes follow the record");
    QByteArray bad = good;
    bad[8] = '\x41';
    EXPECT_EQ(refusal(readIsoSignature, bad), "input:10: the record has no channels X and Y");
    bad = good;
    bad[10] = '\x02';
    EXPECT_EQ(refusal(readIsoSignature, bad),
              "input:11: the linear part of channel X was removed, and cannot be put back");
    bad = good;
    bad[22] = '\x7f'; // the first point's x
    EXPECT_TRUE(refusal(readIsoSignature, bad).starts_with("input: point 1: x -"))
        << refusal(readIsoSignature, bad);
    EXPECT_EQ(refusal([](const QByteArray& bytes,
                         const QString& name) { return fromCompactIsoSignature(bytes, name, g_PadK210); },
                      "1234567"),
              "input:0: 7 bytes are not whole points of 5");
}

TEST_F(InkFormatsTest, TheToolRefusesInOneLine)
{
    for (const char* form : {"json", "csv", "recording", "inkml", "iso19794-7"}) {
        SCOPED_TRACE(form);
        const Outcome outcome = runInk({QStringLiteral("from-") + form, "-o", path("out")}, "no such thing");
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.error.startsWith("scribera-ink: standard input")) << outcome.error.toStdString();
        EXPECT_EQ(outcome.error.count('\n'), 1) << outcome.error.toStdString();
        EXPECT_FALSE(QFile::exists(path("out")));
    }
}

// The command-line tools, run as a user runs them.
#include "fingerprint.h"
#include "support.h"

#include <sstream>

namespace {

class GenerateToolTest : public SimulatorTest
{
};

class FingerprintToolTest : public SimulatorTest
{
};

class ImportToolTest : public SimulatorTest
{
protected:
    Outcome import(const std::string& text, std::vector<std::string> arguments = {})
    {
        m_input = m_directory.write("ink.txt", text);
        arguments.push_back(m_input);
        return runProgram(SCRIBERA_IMPORT_TOOL, arguments);
    }

    std::string m_input;
};

const std::string Header580 =
    "# scribera recording 1\nmodel: SCT580\narea: 550 180 29870 20120\nmax-pressure: 8192\n";

} // namespace

TEST_F(GenerateToolTest, givesTheShippedRecordingsByteForByte)
{
    for (const std::string style : {"flowing", "initials", "paraph"}) {
        const std::string shipped = contentOf(std::string(SCRIBERA_RECORDINGS) + "/" + style + ".rec");
        const Outcome toOutput = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", style, "--seed", "1"});
        EXPECT_EQ(toOutput.exitCode, 0);
        EXPECT_EQ(toOutput.error, "");
        EXPECT_TRUE(toOutput.output == shipped) << style;
        const std::string path = m_directory.path(style);
        const Outcome toFile = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", style, "-o", path});
        EXPECT_EQ(toFile.exitCode, 0);
        EXPECT_EQ(toFile.output, "");
        EXPECT_TRUE(contentOf(path) == shipped) << style;
    }
}

TEST_F(GenerateToolTest, takesModelsWithAndWithoutTheirPrefix)
{
    const Outcome whole = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "paraph", "--model", "SCK210R1"});
    const Outcome brief = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "paraph", "--model", "K210R1"});
    EXPECT_EQ(whole.exitCode, 0) << whole.error;
    EXPECT_EQ(brief.output, whole.output);
    EXPECT_NE(whole.output.find("\nmodel: SCK210R1\n"), std::string::npos);
    const Outcome none = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "paraph", "--model", "K210R2"});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_NE(none.error.find("there is no model 'K210R2'"), std::string::npos) << none.error;
}

TEST_F(GenerateToolTest, whatItWritesCanBePlayedOnEveryModel)
{
    std::istringstream models(simulator::modelNames());
    for (std::string model; models >> model;) {
        SCOPED_TRACE(model);
        const Outcome outcome =
            runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "paraph", "--seed", "77", "--model", model});
        ASSERT_EQ(outcome.exitCode, 0);
        simulator::Recording recording;
        std::string error;
        ASSERT_TRUE(simulator::parseRecording(outcome.output, "f", recording, error)) << error;
        EXPECT_EQ(recording.model, model);
        ASSERT_GT(recording.samples.size(), 100U);
        const simulator::Area& area = recording.area;
        int status = simulator::PenUp;
        for (const simulator::RecordedSample& sample : recording.samples) {
            ASSERT_GE(sample.x, area.originX);
            ASSERT_LT(sample.x, area.originX + area.width);
            ASSERT_GE(sample.y, area.originY);
            ASSERT_LT(sample.y, area.originY + area.height);
            ASSERT_LE(sample.pressure, recording.maxPressure);
            // A stroke is down, moves, up; none begins within another.
            ASSERT_EQ(sample.status == simulator::PenDown, status == simulator::PenUp);
            status = sample.status;
        }
        EXPECT_EQ(status, simulator::PenUp);
    }
}

TEST_F(GenerateToolTest, seedsDiffer)
{
    const Outcome first = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "flowing", "--seed", "2"});
    const Outcome again = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "flowing", "--seed", "2"});
    const Outcome other = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "flowing", "--seed", "3"});
    EXPECT_TRUE(first.output == again.output);
    EXPECT_FALSE(first.output == other.output);
}

TEST_F(GenerateToolTest, namesWhatIsWrong)
{
    const auto refusal = [](const std::string& reason) {
        return std::string("scribera-sim-generate: ")
            .append(reason)
            .append("\nTry 'scribera-sim-generate --help'.\n");
    };
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "--style is missing"},
        {{"--style"}, "--style needs a value"},
        {{"--style", "angular"}, "there is no style 'angular'"},
        {{"--style", "flowing", "--seed", "-1"}, "the seed '-1' is not 0 or a positive integer"},
        {{"--style", "flowing", "--seed", "one"}, "the seed 'one' is not 0 or a positive integer"},
        {{"--style", "flowing", "--model", "SCX1"}, "there is no model 'SCX1'"},
        {{"flowing"}, "unknown argument 'flowing'"},
    };
    for (const auto& [arguments, reason] : cases) {
        const Outcome outcome = runProgram(SCRIBERA_GENERATE_TOOL, arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, refusal(reason));
    }
    const std::string path = m_directory.path("none/out");
    const Outcome outcome = runProgram(SCRIBERA_GENERATE_TOOL, {"--style", "flowing", "-o", path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error,
              "scribera-sim-generate: " + path + ": cannot be written: No such file or directory\n");
}

TEST_F(FingerprintToolTest, writesWhatThePadDelivers)
{
    const std::string expected =
        simulator::formatGreyMap(simulator::syntheticFingerprint(simulator::RidgePattern::Whorl, 5));
    const Outcome toOutput = runProgram(SCRIBERA_FINGERPRINT_TOOL, {"--pattern", "whorl", "--seed", "5"});
    EXPECT_EQ(toOutput.exitCode, 0);
    EXPECT_EQ(toOutput.error, "");
    EXPECT_TRUE(toOutput.output == expected);
    const std::string path = m_directory.path("print.pgm");
    const Outcome toFile = runProgram(SCRIBERA_FINGERPRINT_TOOL, {"--pattern", "loop", "-o", path});
    EXPECT_EQ(toFile.exitCode, 0);
    EXPECT_EQ(toFile.output, "");
    std::vector<unsigned char> pixels;
    std::string error;
    ASSERT_TRUE(simulator::readGreyMap(path, pixels, error)) << error;
    EXPECT_EQ(pixels, simulator::syntheticFingerprint(simulator::RidgePattern::Loop, 1));
}

TEST_F(FingerprintToolTest, namesWhatIsWrong)
{
    const auto refusal = [](const std::string& reason) {
        return std::string("scribera-sim-fingerprint: ")
            .append(reason)
            .append("\nTry 'scribera-sim-fingerprint --help'.\n");
    };
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "--pattern is missing"},
        {{"--pattern"}, "--pattern needs a value"},
        {{"--pattern", "spiral"}, "there is no pattern 'spiral'"},
        {{"--pattern", "loop", "--seed", "-1"}, "the seed '-1' is not 0 or a positive integer"},
        {{"--pattern", "loop", "--seed", ""}, "the seed '' is not 0 or a positive integer"},
        {{"loop"}, "unknown argument 'loop'"},
    };
    for (const auto& [arguments, reason] : cases) {
        const Outcome outcome = runProgram(SCRIBERA_FINGERPRINT_TOOL, arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, refusal(reason));
    }
    const Outcome outcome = runProgram(SCRIBERA_FINGERPRINT_TOOL, {"--pattern", "loop", "-o", "/dev/full"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error,
              "scribera-sim-fingerprint: /dev/full: cannot be written: No space left on device\n");
    const Outcome help = runProgram(SCRIBERA_FINGERPRINT_TOOL, {"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.starts_with("usage: scribera-sim-fingerprint --pattern NAME"));
}

TEST_F(ImportToolTest, takesCountedRowsInPadUnits)
{
    const Outcome outcome = import("6\n1000 2000 500 1 900 450 100\n1010 2010 505 1 900 450 200\n"
                                   "1010 2010 510 0 900 450 0\n1020 2020 600 1 900 450 300\n"
                                   "1030 2030 605 1 900 450 8192\n# the end\n1030 2030 700 0 900 450 0\n",
                                   {"--pad"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, Header580 + "0 1000 2000 100 0\n5 1010 2010 200 1\n10 1010 2010 0 2\n"
                                          "100 1020 2020 300 0\n105 1030 2030 8192 1\n200 1030 2030 0 2\n");
}

TEST_F(ImportToolTest, takesTimedRowsAndLiftsThePenAtTheEnd)
{
    const Outcome outcome = import("2.000 300 400 0\r\n2.010 300 400 0.5\r\n2.0204 310 410 1\r\n",
                                   {"--pad", "--model", "SCK420"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, "# scribera recording 1\nmodel: SCK420\narea: 200 200 2300 1300\nmax-pressure: "
                              "2048\n0 300 400 1024 0\n10 310 410 2048 1\n15 310 410 0 2\n");
}

TEST_F(ImportToolTest, centresAndScalesWithoutPadUnits)
{
    // 100 wide and 100 high: 90 of 100 parts of the lower side, 1300. The largest pressure becomes the pad's.
    const Outcome outcome = import("3\n0 0 0 1 25\n100 0 5 1 50\n100 100 10 1 12.5\n", {"--model", "SCK420"});
    EXPECT_EQ(outcome.exitCode, 0);
    // Middle (1349.5, 849.5), half a side 585.
    EXPECT_EQ(outcome.output,
              "# scribera recording 1\nmodel: SCK420\narea: 200 200 2300 1300\nmax-pressure: "
              "2048\n0 765 265 1024 0\n5 1935 265 2048 1\n10 1935 1435 512 1\n15 1935 1435 0 2\n");
}

TEST_F(ImportToolTest, turnsUpsideDown)
{
    const std::string ink = "2\n300 200 0 1 25\n300 300 5 1 50\n";
    const Outcome inPadUnits = import(ink, {"--pad", "--flip-y", "--model", "SCK420"});
    // 200 is the first row and becomes the last, 1499.
    EXPECT_TRUE(inPadUnits.output.ends_with("\n0 300 1499 25 0\n5 300 1399 50 1\n10 300 1399 0 2\n"))
        << inPadUnits.output;
    const Outcome fitted = import(ink, {"--flip-y", "--model", "K420"});
    EXPECT_TRUE(fitted.output.ends_with("\n0 1350 1435 1024 0\n5 1350 265 2048 1\n10 1350 265 0 2\n"))
        << fitted.output;
}

TEST_F(ImportToolTest, warnsOfACountThatDoesNotMatch)
{
    const Outcome outcome = import("# made by hand\n3\n1000 2000 500 1 100\n1010 2010 505 0 0\n", {"--pad"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "scribera-sim-import: warning: " + m_input +
                                 ":2: the count line says 3, but there are 2 rows\n");
    EXPECT_EQ(outcome.output, Header580 + "0 1000 2000 100 0\n5 1000 2000 0 2\n");
}

TEST_F(ImportToolTest, refusesEachMalformedLineWithItsNumberAndReason)
{
    const std::string number = "is not a number, or too large";
    const std::pair<std::string, std::string> cases[] = {
        {"", ": no rows"},
        {"# nothing\n\n", ": no rows"},
        {"0\n", ": no rows"},
        {"-1\n", ":1: the count line is not 0 or a positive integer"},
        {"two\n", ":1: the count line is not 0 or a positive integer"},
        {"1 2\n", ":1: neither a count line nor a row of 4 columns (seconds x y pressure)"},
        {"1 2 3 4 5\n", ":1: neither a count line nor a row of 4 columns (seconds x y pressure)"},
        {"1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17\n", ":1: more than 16 columns"},
        {"1\n1 2 3 1\n", ":2: a row needs 5 columns or more: x y milliseconds pen_down ... pressure"},
        {"1\n1 2 3 2 5\n", ":2: pen_down is neither 0 nor 1"},
        {"1\n1 b 3 1 5\n", ":2: column 2 " + number},
        {"1\n1 2 nan 1 5\n", ":2: column 3 " + number},
        {"1\n1e300 2 3 1 5\n", ":2: column 1 " + number},
        {"1\n1 2 3 1 -5\n", ":2: the pressure is negative"},
        {"2\n1 2 3 1 5\n1 2 2 1 5\n", ":3: the time is before the previous row's"},
        {"2\n1 2 3 1 5\n1 2 2e9 1 5\n", ":3: the time is too long after the first row's"},
        {"0.1 1 2 0.5\n0.2 1 2\n", ":2: a row needs 4 columns: seconds x y pressure"},
        {"0.1 1 2 1.5\n", ":1: the pressure is not within 0 to 1"},
        {"0.1 1 2 -0.5\n", ":1: the pressure is negative"},
        {"0.1 1 2 0\n", ": the pen is never down"},
        {"1\n1 2 3 0 5\n", ": the pen is never down"},
        {"1\n1 2 3 1 0\n", ": no row with the pen down has any pressure"},
    };
    for (const auto& [text, reason] : cases) {
        const Outcome outcome = import(text);
        EXPECT_EQ(outcome.exitCode, 1) << text;
        EXPECT_EQ(outcome.output, "") << text;
        EXPECT_EQ(outcome.error, "scribera-sim-import: " + m_input + reason + "\n");
    }
}

TEST_F(ImportToolTest, refusesPadUnitsOutsideThePad)
{
    const Outcome outcome = import("2\n1000 2000 500 1 100\n549 2000 505 1 100\n", {"--pad"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "scribera-sim-import: " + m_input +
                                 ":3: position or pressure outside the pad's range for SCT580\n");
}

TEST_F(ImportToolTest, aRefusedFileLeavesTheOutputAlone)
{
    const std::string output = m_directory.write("out.rec", "before");
    EXPECT_EQ(import("x\n", {"-o", output}).exitCode, 1);
    EXPECT_EQ(contentOf(output), "before");
    EXPECT_EQ(import("1\n1 2 3 1 5\n", {"-o", output}).exitCode, 0);
    EXPECT_TRUE(contentOf(output).starts_with("# scribera recording 1\n"));
}

TEST_F(ImportToolTest, namesWrongArguments)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "no file named"},
        {{"a", "b"}, "more than one file"},
        {{"a", "-o"}, "-o needs a value"},
        {{"a", "--model", "SCX1"}, "there is no model 'SCX1'"},
        {{"--fast", "a"}, "unknown option '--fast'"},
    };
    for (const auto& [arguments, reason] : cases) {
        const Outcome outcome = runProgram(SCRIBERA_IMPORT_TOOL, arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.error, "scribera-sim-import: " + reason + "\nTry 'scribera-sim-import --help'.\n");
    }
    const std::string missing = m_directory.path("missing");
    const Outcome outcome = runProgram(SCRIBERA_IMPORT_TOOL, {missing});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error,
              "scribera-sim-import: " + missing + ": cannot be opened: No such file or directory\n");
}

TEST_F(SimulatorTest, everyToolTellsItsVersionAndItsUse)
{
    for (const std::string tool : {SCRIBERA_GENERATE_TOOL, SCRIBERA_FINGERPRINT_TOOL, SCRIBERA_IMPORT_TOOL}) {
        const std::string name = tool.substr(tool.rfind('/') + 1);
        const Outcome version = runProgram(tool, {"--version"});
        EXPECT_EQ(version.exitCode, 0);
        EXPECT_EQ(version.output, name + " " SCRIBERA_VERSION "\n");
        const Outcome help = runProgram(tool, {"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_TRUE(help.output.starts_with("usage: " + name + " ")) << help.output;
    }
}

// Which pads a family accepts by the text they report, and the highest pressure that follows from it.

#include <algorithm>
#include <cstring>

#include "harness.h"

namespace scribera::test {
namespace {

struct AcceptedText
{
    const char* family;
    const char* text;
    int maxPressure;
};

constexpr AcceptedText acceptedTexts[] = {
    {"K210", "SCT470", 1024},   {"K210", "SCK210R1", 1024}, {"K210", "SCT480R1", 1024},
    {"K210", "SCK190", 1024},   {"K210", "SCN210", 1024},   {"K210", "SCK210", 2048},
    {"K210", "SCT12", 2048},    {"K420", "SCK420", 2048},   {"K421B", "SCK421B", 2048},
    {"KM730", "SCKM730", 8192}, {"T580", "SCT580", 8192},
};

class Connection : public PadTest
{
protected:
    // Those that this family accepts, or those that the others do.
    std::vector<AcceptedText> texts(bool own) const
    {
        std::vector<AcceptedText> found;
        for (const AcceptedText& accepted : acceptedTexts) {
            if ((accepted.family == model().name) == own)
                found.push_back(accepted);
        }
        return found;
    }

    bool startWith(const std::string& text, bool terminate = true)
    {
        sim().open();
        sim().setText("SCRDAPI_GetDevicePartsVersion", text, terminate);
        bool started = false;
        logged([&] { started = pad().start(); });
        return started;
    }

    Texts checkLines() { return textsOf(mainLog(), method("IsDeviceConnected")); }

    void expectRejected(const std::string& text, bool terminate = true)
    {
        SCOPED_TRACE("text \"" + text + "\"");
        EXPECT_FALSE(startWith(text, terminate));
        const Texts lines = checkLines();
        ASSERT_EQ(lines.size(), 3u);
        EXPECT_EQ(lines[0], "enter...");
        EXPECT_EQ(lines[1].substr(0, 9 + text.size()), "cVersion=" + text);
        EXPECT_TRUE(lines[1].ends_with(", nResult=0")) << lines[1];
        EXPECT_EQ(lines[2], "leave with m_bDeviceConnected=0");
        expectNoObject();
        EXPECT_EQ(api().GetTotalPacketsNumber(type()), -8);
        processEvents();
    }

    // The pad was started, so it has to be stopped, though nothing else was asked of it.
    void expectCallsOfRejection()
    {
        const Texts calls = {"SCRDAPI_Initial", "SCRDAPI_GetDevicePartsVersion",
                             model().hasScreen ? "SCRDAPI_OpenDeviceLCD" : "SCRDAPI_ClearDeviceContent",
                             "SCRDAPI_UnInitial"};
        EXPECT_EQ(sim().callLog(), calls);
    }

    // The highest pressure that a pen move may have, found by trying the values around it.
    void expectHighestPressure(int highest)
    {
        sim().send({sampleAt(model(), {0.5, 0.5}, PenDown)});
        int points = 1;
        ASSERT_EQ(pad().points(), points);
        for (const int pressure : {highest - 1, highest, highest + 1, highest + 2, 65536}) {
            ScrSimSample move = sampleAt(model(), {0.6, 0.6}, PenMove);
            move.pressure = pressure;
            sim().send({move});
            points += pressure <= highest ? 1 : 0;
            EXPECT_EQ(pad().points(), points) << "pressure " << pressure;
        }
    }
};

TEST_P(Connection, AcceptsEveryTextOfItsFamily)
{
    for (const AcceptedText& accepted : texts(true)) {
        for (const char* behind : {"", "-", "Z", " V1.02 2023/11/30", "0123456789012345678"}) {
            const std::string text = std::string(accepted.text) + behind;
            SCOPED_TRACE(text);
            ASSERT_TRUE(startWith(text));
            EXPECT_EQ(checkLines().at(1), "cVersion=" + text + ", nResult=0");
            // The K421B's limit is fixed, whatever the pad reports.
            expectHighestPressure(accepted.maxPressure);
            EXPECT_EQ(pad().stop(), 0);
        }
    }
}

TEST_P(Connection, RejectsEveryTextOfAnotherFamily)
{
    for (const AcceptedText& accepted : texts(false)) {
        expectRejected(accepted.text);
        expectCallsOfRejection();
        sim().Reset();
    }
}

TEST_P(Connection, RejectsTextsThatAreTooShort)
{
    for (const AcceptedText& accepted : texts(true)) {
        std::string text = accepted.text;
        while (!text.empty()) {
            text.pop_back();
            bool prefixed = false; // "SCK210R" is the shorter name with something behind it
            for (const AcceptedText& other : texts(true))
                prefixed = prefixed || text.starts_with(other.text);
            if (!prefixed)
                expectRejected(text);
        }
    }
}

TEST_P(Connection, RejectsTextsThatDifferInOneCharacter)
{
    for (const AcceptedText& accepted : texts(true)) {
        for (std::size_t i = 0; i < std::min<std::size_t>(std::string(accepted.text).size(), 5); ++i) {
            std::string text = accepted.text;
            text[i] = static_cast<char>(text[i] ^ 0x20);
            expectRejected(text);
        }
        expectRejected(" " + std::string(accepted.text));
    }
}

TEST_P(Connection, TextWithoutTerminatorIsCutAtTheEndOfTheBuffer)
{
    const std::string text = model().modelText + std::string(200, 'x');
    ASSERT_TRUE(startWith(text, false));
    EXPECT_EQ(checkLines().at(1), "cVersion=" + text.substr(0, 32) + ", nResult=0");
    EXPECT_EQ(pad().stop(), 0);

    EXPECT_FALSE(startWith(std::string(200, 'y'), false));
    EXPECT_EQ(checkLines().at(1), "cVersion=" + std::string(32, 'y') + ", nResult=0");
    processEvents();

    const std::string full = model().modelText + std::string(32 - model().modelText.size(), 'z');
    ASSERT_TRUE(startWith(full)); // no room for the terminator
    EXPECT_EQ(checkLines().at(1), "cVersion=" + full + ", nResult=0");
}

TEST_P(Connection, TextThatThePadDoesNotEndIsComparedByItsCharacters)
{
    ASSERT_TRUE(startWith(model().modelText, false));
    EXPECT_TRUE(checkLines().at(1).starts_with("cVersion=" + model().modelText));
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_FALSE(startWith("", false));
    processEvents();
}

TEST_P(Connection, TextIsNoFormat)
{
    const std::string text = model().modelText + "%s%n%d%x";
    ASSERT_TRUE(startWith(text));
    EXPECT_EQ(checkLines().at(1), "cVersion=" + text + ", nResult=0");
    EXPECT_EQ(pad().stop(), 0);
    expectRejected("%s%s%s%n");
}

TEST_P(Connection, ResultOfAskingForTheTextIsOnlyLogged)
{
    sim().open();
    ASSERT_EQ(sim().SetResult("SCRDAPI_GetDevicePartsVersion", -5), 0); // and writes nothing
    logged([&] { EXPECT_FALSE(pad().start()); });
    const Texts lines = checkLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(lines[1].ends_with(", nResult=-5")) << lines[1];
    processEvents();
}

TEST_P(Connection, PreparesThePadBetweenItsLines)
{
    ASSERT_TRUE(startWith(model().modelText));
    const std::vector<LogLine> lines = mainLog();
    Texts order;
    for (const LogLine& line : lines) {
        if (line.label == method("IsDeviceConnected") || line.label == method("LoadScriberaDriver"))
            order.push_back(line.label.substr(line.label.find("::") + 2) + " " + line.text);
    }
    ASSERT_GE(order.size(), 6u);
    EXPECT_EQ(order[0], "IsDeviceConnected() enter...");
    EXPECT_EQ(order[1], "LoadScriberaDriver() Enter...");
    EXPECT_EQ(order[3], "LoadScriberaDriver() leave with bRet=1");
    EXPECT_EQ(order[4], "IsDeviceConnected() cVersion=" + model().modelText + ", nResult=0");
    EXPECT_EQ(order.back(), "IsDeviceConnected() leave with m_bDeviceConnected=1");
}

SCRIBERA_INSTANTIATE_ALL(Connection);

} // namespace
} // namespace scribera::test

// The two log files: when they are written, the form of their lines, and that they change nothing else.

#include <algorithm>
#include <clocale>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "exported_operations.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

long long monotonicMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

class Logging : public PadTest
{
protected:
    // Everything that a host does, once.
    void wholeSession()
    {
        ASSERT_TRUE(pad().start());
        EXPECT_EQ(api().SetPenWidth(type(), 5), 0);
        EXPECT_EQ(api().SetPenColor(type(), 0, 0, 200), 0);
        pad().draw(wave(model(), 30));
        sim().pressKey(1);
        EXPECT_EQ(pad().points(), 32);
        char* time = api().GetInkPointTime(type(), 0);
        EXPECT_NE(time, nullptr);
        api().FreeInkPointTime(type(), time);
        EXPECT_EQ(api().SetSaveCenterImageClip(type(), true, 4, 4), 0);
        for (const int image : {ImageBmp, ImageJpeg, ImagePng, ImagePdf, ImageSvg})
            EXPECT_EQ(pad().save(image, "session." + std::to_string(image) + ".png"), 0);
        processEvents();
        EXPECT_EQ(api().Clear(type()), 0);
        EXPECT_EQ(pad().stop(), 0);
    }

    void loggedSession()
    {
        setLogging(true);
        wholeSession();
        setLogging(false);
    }
};

TEST_P(Logging, WritesNoFileWhileItIsOff)
{
    wholeSession();
    for (const ExportedOperation& operation : objectOperations(model()))
        operation.call(api(), otherModel(model()).deviceType);
    EXPECT_FALSE(fs::exists(mainLogFile));
    EXPECT_FALSE(fs::exists(inThreadLogFile));
}

TEST_P(Logging, SwitchIsZeroAtLoadAndNeverWrittenByTheLibrary)
{
    EXPECT_EQ(Library::instance().enableLog, 0);
    wholeSession();
    EXPECT_EQ(Library::instance().enableLog, 0);
    setLogging(true, 0x40);
    wholeSession();
    EXPECT_EQ(Library::instance().enableLog, 0x40);
}

TEST_P(Logging, EveryNonZeroByteSwitchesItOn)
{
    for (const int value : {1, 2, 0x80, 0xff}) {
        removeLogs();
        setLogging(true, static_cast<unsigned char>(value));
        api().Clear(0);
        EXPECT_EQ(mainLog().size(), 2u) << value;
    }
    setLogging(false);
    removeLogs();
    api().Clear(0);
    EXPECT_FALSE(fs::exists(mainLogFile));
}

TEST_P(Logging, EveryLineOfASessionHasTheFormOfALine)
{
    setLogging(true);
    const long long before = monotonicMilliseconds();
    wholeSession();
    const long long after = monotonicMilliseconds();
    setLogging(false);

    const std::vector<std::string> edges = {"[x < nLeft]", "[x > nRight]", "[y < nTop]", "[y > nBottom]"};
    for (const std::vector<LogLine>& lines : {mainLog(), inThreadLog()}) {
        EXPECT_FALSE(lines.empty());
        for (const LogLine& line : lines) {
            if (std::find(edges.begin(), edges.end(), line.label) != edges.end() || line.text == "<line end>")
                continue;
            EXPECT_TRUE(line.hasTick) << testing::PrintToString(line);
            EXPECT_GE(line.tick, before) << testing::PrintToString(line);
            EXPECT_LE(line.tick, after) << testing::PrintToString(line);
            EXPECT_TRUE(line.label.starts_with(model().prefix) ||
                        line.label.starts_with(std::string(padCase().className()) + "::") ||
                        line.label.starts_with(std::string("C") + model().name))
                << testing::PrintToString(line);
        }
    }
}

TEST_P(Logging, LineEndsInCommaBlankAndNewline)
{
    logged([&] { api().SetPenWidth(0, 3); });
    const std::string content = fileContent(mainLogFile);
    ASSERT_GE(content.size(), 3u);
    EXPECT_EQ(content.substr(content.size() - 5), " !, \n");
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 2);
    const std::string begin = "[" + exported("SetPenWidth") + "]:<";
    EXPECT_EQ(content.substr(0, begin.size()), begin);
}

TEST_P(Logging, TickNeverDecreasesFromCallToCall)
{
    const std::vector<LogLine> lines = logged([&] {
        for (int i = 0; i < 300; ++i)
            api().Clear(0);
    });
    ASSERT_EQ(lines.size(), 600u);
    for (std::size_t i = 1; i < lines.size(); ++i)
        ASSERT_GE(lines[i].tick, lines[i - 1].tick);
}

TEST_P(Logging, LinesAreAppendedToAnExistingFile)
{
    std::ofstream(mainLogFile) << "[someone()]:<1>-was here, \n";
    setLogging(true);
    api().Clear(0);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].text, "was here");
}

TEST_P(Logging, FileThatCannotBeOpenedChangesNoResult)
{
    fs::create_directory(mainLogFile);
    fs::create_directory(inThreadLogFile);
    loggedSession();
    EXPECT_TRUE(fs::is_empty(mainLogFile));
    EXPECT_TRUE(fs::is_empty(inThreadLogFile));
    fs::remove(mainLogFile);
    fs::remove(inThreadLogFile);
}

// Whoever may write to /tmp may have put something there under the names of the log files.

TEST_P(Logging, LinksAreNotFollowed)
{
    std::ofstream("elsewhere") << "mine";
    fs::create_symlink(fs::absolute("elsewhere"), mainLogFile);
    fs::create_symlink(fs::absolute("nowhere"), inThreadLogFile);
    loggedSession();
    EXPECT_EQ(fileContent("elsewhere"), "mine");
    EXPECT_FALSE(fs::exists("nowhere"));
    EXPECT_TRUE(fs::is_symlink(mainLogFile));
    EXPECT_TRUE(fs::is_symlink(inThreadLogFile));
    removeLogs();
}

TEST_P(Logging, FileWithASecondNameIsLeftAlone)
{
    for (const char* log : {mainLogFile, inThreadLogFile}) {
        std::ofstream(log) << "[someone()]:<1>-was here, \n";
        fs::create_hard_link(log, std::string(log) + ".second");
    }
    loggedSession();
    EXPECT_EQ(mainLog().size(), 1u);
    EXPECT_EQ(inThreadLog().size(), 1u);
    for (const char* log : {mainLogFile, inThreadLogFile})
        fs::remove(std::string(log) + ".second");
    setLogging(true);
    api().Clear(0);
    setLogging(false);
    EXPECT_EQ(mainLog().size(), 3u) << "with one name it is an ordinary file";
}

TEST_P(Logging, PipeGetsNothingAndHoldsNobodyUp)
{
    std::vector<int> readers;
    for (const char* log : {mainLogFile, inThreadLogFile}) {
        ASSERT_EQ(mkfifo(log, 0666), 0);
        readers.push_back(open(log, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        ASSERT_GE(readers.back(), 0);
    }
    loggedSession();
    for (const int reader : readers) {
        char byte = 0;
        EXPECT_LE(read(reader, &byte, 1), 0);
        close(reader);
    }
    removeLogs();
}

TEST_P(Logging, FileOfAnotherUserIsLeftAlone)
{
    constexpr uid_t nobody = 65534;
    for (const char* log : {mainLogFile, inThreadLogFile}) {
        std::ofstream(log) << "[someone()]:<1>-was here, \n";
        fs::permissions(log, fs::perms(0666));
        if (chown(log, nobody, nobody) != 0)
            GTEST_SKIP() << "only root can give a file away";
    }
    loggedSession();
    EXPECT_EQ(mainLog().size(), 1u);
    EXPECT_EQ(inThreadLog().size(), 1u);
}

TEST_P(Logging, FilesAreNotKeptOpen)
{
    setLogging(true);
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 10));
    for (const std::string& file : ProcessState::now().files) {
        EXPECT_NE(file, mainLogFile);
        EXPECT_NE(file, inThreadLogFile);
    }
    removeLogs(); // the next line starts a new file
    api().Clear(type());
    EXPECT_TRUE(fs::exists(mainLogFile));
    setLogging(false);
}

TEST_P(Logging, PathsThatTheLocaleCannotWriteStillGiveLines)
{
    ASSERT_STREQ(std::setlocale(LC_ALL, "C"), "C");
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 10));
    const auto save = [&](std::wstring path) {
        return api().SaveDrawingImage(type(), ImagePng, path.data(), 1);
    };
    const Texts texts = textsOf(logged([&] {
                                    EXPECT_EQ(save(L"\x7b7e\x540d.png"), 0);
                                    EXPECT_EQ(save(L"\xd800\x7fffffff/none.png"), -8); // no character at all
                                    EXPECT_EQ(save(std::wstring(5000, L'\x7b7e')), -8);
                                }),
                                exported("SaveDrawingImage"));
    ASSERT_EQ(texts.size(), 6u);
    EXPECT_EQ(texts[1], "leave with nResult=0 !");
    EXPECT_EQ(texts[3], "leave with nResult=-8 !");
    EXPECT_EQ(texts[5], "leave with nResult=-8 !");
}

// The format buffers are exported and keep the last message of their kind.
template <class Character>
std::string bufferText(const char* name)
{
    const auto* buffer = static_cast<const Character*>(Library::instance().symbol(name));
    return buffer ? std::string(buffer, std::find(buffer, buffer + 256, Character(0))) : "missing";
}

TEST_P(Logging, FormatBuffersHoldTheLastMessageOfTheirKind)
{
    EXPECT_EQ(bufferText<char>("g_cKeyBuf"), "");
    EXPECT_EQ(bufferText<wchar_t>("g_wszKeyBuf"), "");
    EXPECT_EQ(bufferText<char>("g_cKeyBuf_InThread"), "");
    setLogging(true);
    std::wstring path = L"none.png";
    api().SaveDrawingImage(0, ImagePng, path.data(), 1);
    const std::string wideMessage = mainLog().back().message;
    api().Clear(0);
    const std::string narrowMessage = mainLog().back().message;
    ASSERT_TRUE(pad().start());
    sim().pressKey(1);
    const std::string lastText = "leave !";
    ASSERT_TRUE(waitUntil([&] {
        const std::vector<std::string> texts = textsOf(inThreadLog(), method("DoClickConfirmKeyAction"));
        return !texts.empty() && texts.back() == lastText;
    }));
    setLogging(false);
    EXPECT_EQ(bufferText<wchar_t>("g_wszKeyBuf"), wideMessage);
    EXPECT_EQ(bufferText<char>("g_cKeyBuf_InThread"), inThreadLog().back().message);
    EXPECT_EQ(bufferText<char>("g_cKeyBuf"), mainLog().back().message);
    EXPECT_NE(bufferText<char>("g_cKeyBuf"), narrowMessage);
}

TEST_P(Logging, ValueBuffersAreNeverWritten)
{
    loggedSession();
    EXPECT_EQ(bufferText<char>("g_cValueBuf"), "");
    EXPECT_EQ(bufferText<char>("g_cValueBuf_InThread"), "");
    EXPECT_EQ(bufferText<wchar_t>("g_wszValueBuf"), "");
}

TEST_P(Logging, SwitchedOnInACallbackItBeginsWithTheNextLine)
{
    ASSERT_TRUE(pad().start());
    ASSERT_EQ(api().SignatureStatusCallback(type(), [](int) { setLogging(true); }), 0);
    sim().pressKey(1);
    const std::vector<std::string> expected = {"Pen_Down_On_Confirm_Key !", "leave !"};
    EXPECT_TRUE(waitUntil([&] { return inThreadLog().size() >= expected.size(); }));
    setLogging(false);
    EXPECT_EQ(textsOf(inThreadLog(), method("DoClickConfirmKeyAction")), expected);
}

TEST_P(Logging, SwitchedOffInACallbackItEndsThere)
{
    ASSERT_TRUE(pad().start());
    ASSERT_EQ(api().SignatureStatusCallback(type(), [](int) { setLogging(false); }), 0);
    processEvents();
    removeLogs();
    setLogging(true);
    sim().pressKey(0);
    EXPECT_TRUE(waitUntil([] { return !loggingIsOn(); }));
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_EQ(textsOf(inThreadLog(), method("DoClickCancelKeyAction")), std::vector<std::string>{"Enter..."});
}

TEST_P(Logging, LinesOfManyThreadsStayWhole)
{
    ASSERT_TRUE(pad().start());
    const std::vector<LogLine> lines = logged([&] {
        sim().queue(wave(model(), 400));
        for (int i = 0; i < 200; ++i) {
            api().GetTotalPacketsNumber(type());
            api().SetPenWidth(type(), 1 + i % 10);
        }
        sim().waitIdle();
    });
    EXPECT_EQ(withLabel(lines, exported("SetPenWidth")).size(), 400u);
    EXPECT_EQ(textsOf(lines, method("StartSignOnCanvas")).size(), padCase().isWidget() ? 400u : 800u);
}

SCRIBERA_INSTANTIATE_ALL(Logging);

} // namespace
} // namespace scribera::test

// What fails around the library: disks, paths, log files, locales, memory.

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>

#include <sys/resource.h>
#include <unistd.h>

#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

// ---- files

class BadFiles : public InkTest
{
};

TEST_P(BadFiles, PdfOnAFullDiskReportsThatTheFileCouldBeOpened)
{
    ASSERT_NO_FATAL_FAILURE(startWithInk());
    fs::create_symlink("/dev/full", "full.pdf");
    EXPECT_EQ(pad().save(ImagePdf, "full.pdf"), 0);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
    expectSameInk();
}

TEST_P(BadFiles, PathsOfFiveThousandCharactersWriteNothing)
{
    ASSERT_NO_FATAL_FAILURE(startWithInk());
    const auto before = std::distance(fs::directory_iterator("."), fs::directory_iterator());
    std::wstring nested;
    while (nested.size() < 5000)
        nested += L"directory/";
    for (const FileType& file : fileTypes) {
        const std::wstring suffix = L"." + wide(file.suffix);
        for (const std::wstring& path : {std::wstring(5000, L'n') + suffix,
                                         std::wstring(5000, L'\u7b7e') + suffix, nested + L"x" + suffix}) {
            // A drawing counts as saved whatever happened to the file.
            EXPECT_EQ(saveWide(pad(), file.id, path), file.id == ImageSvg ? 0 : -8) << file.suffix;
        }
    }
    for (const int image : {ImageBmp, ImageJpeg, ImagePng}) {
        const Taken taken = takeImage(pad(), image);
        std::wstring path(5000, L'n');
        EXPECT_EQ(api().Base64Decode(type(), image, taken.text.c_str(), path.data()), -8);
        path = nested + L"x";
        EXPECT_EQ(api().Base64Decode(type(), image, taken.text.c_str(), path.data()), -8);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), before);
    expectSameInk();
}

TEST_P(BadFiles, LogsOnAFullDiskChangeNoResult)
{
    const FullTmp full;
    if (!full.isFull())
        GTEST_SKIP() << "needs a /tmp of its own";
    setLogging(true);
    ASSERT_NO_FATAL_FAILURE(startWithInk());
    sim().pressKey(1);
    for (const FileType& file : fileTypes)
        EXPECT_EQ(pad().save(file.id, std::string("logged.") + file.suffix), 0);
    expectSameInk();
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(fileContent(mainLogFile), "");
    EXPECT_EQ(fileContent(inThreadLogFile), "");
}

SCRIBERA_INSTANTIATE_ALL(BadFiles);

// ---- locales

// Makes a locale of the system's definitions in the working directory, for this process only.
bool makeLocale(const std::string& definition, const std::string& charmap, const std::string& name)
{
    fs::create_directory("locales");
    const std::string command = "localedef --no-archive -i " + definition + " -f " + charmap +
                                " \"$PWD/locales/" + name + "\" >localedef.txt 2>&1";
    static_cast<void>(std::system(command.c_str())); // also complains about mere warnings
    setenv("LOCPATH", (fs::current_path() / "locales").c_str(), 1);
    setenv("LC_ALL", name.c_str(), 1);
    return std::setlocale(LC_ALL, "") != nullptr;
}

class Locales : public PadTest
{
protected:
    // Everything that a signature can be handed over as. What depends on the moment is taken out.
    Texts handedOver()
    {
        Texts all;
        EXPECT_TRUE(pad().start());
        EXPECT_EQ(api().SetPenWidth(type(), 5), 0);
        sim().send(wave(model(), 40));
        for (const FileType& file : fileTypes) {
            const std::string path = std::string("signature.") + file.suffix;
            EXPECT_EQ(pad().save(file.id, path), 0) << path;
            std::string content = fileContent(path);
            if (file.id == ImagePdf)
                content = std::regex_replace(content, std::regex("/CreationDate[^\n]*\n"), "");
            all.push_back(content);
        }
        for (const int image : {ImageBmp, ImageJpeg, ImagePng})
            all.push_back(takeImage(pad(), image).text);
        all.push_back(takeSvg(pad()).text);
        for (const Ink& ink : storedPoints(pad()))
            all.push_back(testing::PrintToString(ink));
        const std::string time = takeTime(pad(), 0);
        EXPECT_TRUE(std::regex_match(time, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})"))) << time;
        EXPECT_EQ(pad().stop(), 0);
        return all;
    }
};

TEST_P(Locales, DecimalCommaChangesNothingThatIsHandedOver)
{
    ASSERT_STREQ(std::setlocale(LC_ALL, "C"), "C");
    const Texts plain = handedOver();
    ASSERT_GT(plain.size(), 40u);
    ASSERT_TRUE(makeLocale("de_DE", "UTF-8", "de_DE.UTF-8"))
        << "needs localedef and the package locales: " << fileContent("localedef.txt");
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    char number[8];
    std::snprintf(number, sizeof number, "%.1f", 0.5);
    ASSERT_STREQ(number, "0,5");

    setLogging(true);
    const std::vector<std::string> german = handedOver();
    setLogging(false);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",") << "the host's locale is the host's";
    ASSERT_EQ(german.size(), plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i)
        EXPECT_TRUE(german[i] == plain[i]) << "number " << i;
    EXPECT_FALSE(mainLog().empty());
}

TEST_P(Locales, WithoutUtf8EverythingButNamesBeyondAsciiIsAsEver)
{
    unsetenv("LC_ALL");
    setenv("LANG", "POSIX", 1);
    ASSERT_STREQ(std::setlocale(LC_ALL, "POSIX"), "C");
    const Texts posix = handedOver();
    ASSERT_STREQ(std::setlocale(LC_ALL, "C.UTF-8"), "C.UTF-8");
    const Texts utf8 = handedOver();
    ASSERT_EQ(posix.size(), utf8.size());
    for (std::size_t i = 0; i < posix.size(); ++i)
        EXPECT_TRUE(posix[i] == utf8[i]) << "number " << i;
}

// What the name becomes is the locale's affair; the file is there and whole.
TEST_P(Locales, NameThatTheLocaleCannotWriteStillNamesOneFile)
{
    unsetenv("LC_ALL");
    setenv("LANG", "POSIX", 1);
    ASSERT_STREQ(std::setlocale(LC_ALL, "POSIX"), "C");
    ASSERT_TRUE(pad().start());
    sim().send(wave(model(), 20));
    fs::create_directory("names");
    EXPECT_EQ(saveWide(pad(), ImagePng, L"names/\u7b7e\u540d \U0001F58B.png"), 0);
    ASSERT_EQ(std::distance(fs::directory_iterator("names"), fs::directory_iterator()), 1);
    EXPECT_EQ(loaded(fs::directory_iterator("names")->path()).size(), QSize(400, 200));
}

SCRIBERA_INSTANTIATE_ALL(Locales);

// ---- memory

std::size_t addressSpace()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t pages = 0;
    statm >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

bool isOneOf(int result, std::initializer_list<int> documented, const char* what)
{
    if (std::find(documented.begin(), documented.end(), result) != documented.end())
        return true;
    std::printf("%s gave %d\n", what, result);
    return false;
}

// Uses a pad with a canvas of 25 MiB while only so many MiB more can be had. Every call ends with one of its
// documented results, every sample is stored as long as a chunk of points can be, and once there is memory
// again the pad works.
const ChildProgram shortOfMemory("short-of-memory", [](const std::vector<std::string>& arguments) {
    const PadCase padCase = PadCase::of(arguments);
    const std::size_t megabytes = std::stoul(arguments.at(2));
    Pad pad(padCase);
    // First use: what the process keeps, and Qt's plugins.
    if (!pad.start())
        return 1;
    pad.draw(wave(pad.model(), 5));
    pad.save(ImagePng, "first.png");
    if (pad.stopKeepingParent() != 0)
        return 2;

    bool good = true;
    setSoftLimit(RLIMIT_AS, addressSpace() + (megabytes << 20));
    const bool started = pad.start({.width = 3276, .height = 2000});
    if (started) {
        if (pad.model().hasFingerprint) {
            const std::vector<unsigned char> print(208 * 288, 90);
            pad.sim().SendFingerprint(print.data(), static_cast<int>(print.size()), 10);
        }
        const std::vector<ScrSimSample> ink = wave(pad.model(), 20);
        const auto sign = [&] {
            pad.sim().SendSamples(ink.data(), static_cast<int>(ink.size()));
            pad.sim().WaitIdle(60000);
        };
        sign();
        good &= isOneOf(pad.points(), {22}, "GetTotalPacketsNumber");
        for (const FileType& file : fileTypes)
            good &=
                isOneOf(pad.save(file.id, std::string("short.") + file.suffix), {0, -8}, "SaveDrawingImage");
        for (const int image : {ImageBmp, ImageJpeg, ImagePng, ImageInk}) {
            pad.api().PacketsBase64EncodeFree(pad.type(), pad.api().PacketsBase64Encode(pad.type(), image));
            pad.api().PacketsBase64EncodeExFree(pad.type(),
                                                pad.api().PacketsBase64EncodeEx(pad.type(), image, true));
        }
        pad.api().SetSaveCenterImageClip(pad.type(), true, 5, 5);
        good &= isOneOf(pad.save(ImagePng, "clipped.png"), {0, -8}, "SaveDrawingImage");
        sign();
        if (QWidget* const widget = pad.signWidget()) {
            widget->resize(3300, 2100);
            processEvents();
            sign();
        }
        good &= isOneOf(pad.api().Clear(pad.type()), {0, -8}, "Clear");
        sign();
        good &= isOneOf(pad.stopKeepingParent(), {0}, "UnInitialDevice");
    }
    setSoftLimit(RLIMIT_AS, RLIM_INFINITY);
    pad.closeParent();
    pad.sim().close();
    if (!good)
        return 3;

    // With memory again it is an ordinary pad.
    if (Library::instance().signWidget || !pad.start())
        return 4;
    pad.draw(wave(pad.model(), 20));
    Redraw redraw(pad.model(), 400, 200);
    redraw.feed(wave(pad.model(), 20));
    if (!holdsPoints(pad, redraw) || !holdsCanvas(pad, redraw))
        return 5;
    return pad.stop() == 0 ? 0 : 6;
});

// A sanitizer's own memory cannot be limited.
#if !defined(SCRIBERA_SANITIZED_MEMORY)
class Memory : public PadTest
{
};

TEST_P(Memory, CanvasThatIsRefusedLeavesADocumentedPad)
{
    for (const char* megabytes : {"4", "30", "45", "58", "85", "130"}) {
        SCOPED_TRACE(megabytes);
        Texts arguments = padCase().words();
        arguments.push_back(megabytes);
        EXPECT_TRUE(endedWell(runChild("short-of-memory", arguments)));
    }
}

SCRIBERA_INSTANTIATE_ALL(Memory);
#endif

} // namespace
} // namespace scribera::test

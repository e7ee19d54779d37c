// Why the last start failed, as the library tells it.

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>

#include "harness.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

int lastFailure(char* text, int size)
{
    return Library::instance().extensions().LastStartFailure(text, size);
}

int code()
{
    return lastFailure(nullptr, 0);
}

std::string sentence()
{
    std::string text(1024, '#');
    lastFailure(text.data(), static_cast<int>(text.size()));
    text.resize(std::strlen(text.data()));
    return text;
}

bool says(const std::string& part)
{
    return sentence().find(part) != std::string::npos;
}

class StartFailed : public PadTest
{
protected:
    bool start()
    {
        QWidget* parent = padCase().isWidget() ? &pad().makeParent(true) : nullptr;
        const bool started = api().InitialDevice(type(), parent, 0, 0, 100, 50);
        processEvents();
        return started;
    }
};

TEST_P(StartFailed, BeforeTheFirstStartThereIsNoReason)
{
    EXPECT_EQ(code(), StartOk);
    EXPECT_EQ(sentence(), "");
}

TEST_P(StartFailed, GoodStartTakesTheReasonBackAndTheEndOfThePadKeepsIt)
{
    removeDriver();
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverMissing);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_EQ(code(), StartDriverMissing);

    installDriver();
    ASSERT_TRUE(start());
    EXPECT_EQ(code(), StartOk);
    EXPECT_EQ(sentence(), "");
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    EXPECT_EQ(code(), StartOk);
}

TEST_P(StartFailed, StartOfAnOpenPadIsAGoodOne)
{
    ASSERT_TRUE(start());
    EXPECT_FALSE(api().InitialDevice(type() + 1, nullptr, 0, 0, 10, 10));
    EXPECT_EQ(code(), StartWrongDeviceType);
    EXPECT_TRUE(start());
    EXPECT_EQ(code(), StartOk);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
}

TEST_P(StartFailed, MissingDriverIsToldWithFolderAndLoadersWords)
{
    removeDriver();
    for (const bool dangling : {false, true}) {
        if (dangling)
            installDriver("nothing-here.so");
        EXPECT_FALSE(start());
        EXPECT_EQ(code(), StartDriverMissing);
        EXPECT_TRUE(says("./libscriberadrv.so: cannot open shared object file")) << sentence();
        EXPECT_TRUE(says("the current directory is " + fs::current_path().string())) << sentence();
    }
}

TEST_P(StartFailed, FileThatIsNoLibraryIsToldWithLoadersWords)
{
    removeDriver();
    std::ofstream(driverFile) << "This is not a library.\n";
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverNotLoaded);
    EXPECT_TRUE(says("file too short")) << sentence();

    removeDriver();
    fs::create_directory(driverFile);
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverNotLoaded);
    EXPECT_TRUE(says("Is a directory")) << sentence();
}

TEST_P(StartFailed, MissingEntryPointIsNamed)
{
    installDriverWithout("GetDevicePadID");
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverIncomplete);
    EXPECT_EQ(sentence(), "The driver lacks what a " + model().name + " needs: SCRDAPI_GetDevicePadID");
}

TEST_P(StartFailed, AllMissingEntryPointsAreNamed)
{
    installDriver(SCRIBERA_SDK_LIBRARY); // a library, but no driver
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverIncomplete);
    std::vector<std::string> names = {
        "Initial",          "UnInitial", "ClearDeviceContent", "GetDevicePadID", "GetDevicePartsVersion",
        "SetDevicePenStyle"};
    if (model().hasScreen)
        names.insert(names.end(), {"GetDevicePenID", "GetDeviceSecureID", "ShowVersionInfoOnDevice"});
    if (model().hasFingerprint)
        names.push_back("ShowFPImageOnDevice");
    for (const std::string& name : names)
        EXPECT_TRUE(says("SCRDAPI_" + name)) << name << ": " << sentence();
    const std::string text = sentence();
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), static_cast<long>(names.size()) - 1) << text;
}

TEST_P(StartFailed, RefusalOfTheDriverIsToldWithItsResult)
{
    sim().open();
    for (const int result : {7, -2147483647 - 1}) {
        ASSERT_EQ(sim().SetResult("SCRDAPI_Initial", result), 0);
        EXPECT_FALSE(start());
        EXPECT_EQ(code(), StartDriverRefused);
        EXPECT_TRUE(says("SCRDAPI_Initial gave " + std::to_string(result) + ":")) << sentence();
    }
}

TEST_P(StartFailed, UnknownModelIsToldWithThePadsOwnText)
{
    sim().open();
    sim().setText("SCRDAPI_GetDevicePartsVersion", "NOTAPAD V1");
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartModelUnknown);
    EXPECT_EQ(sentence(), "The pad is no " + model().name + ": it calls itself 'NOTAPAD V1', with result 0");
}

TEST_P(StartFailed, SentenceIsOneLineWhateverThePadSays)
{
    sim().open();
    sim().setText("SCRDAPI_GetDevicePartsVersion", "a\nb\x1b[2Jc\x7f%s%n");
    EXPECT_FALSE(start());
    EXPECT_TRUE(says("'a?b?[2Jc?%s%n'")) << sentence();
}

TEST_P(StartFailed, WrongDeviceTypeIsTold)
{
    for (const int wrong : {0, -1, otherModel(model()).deviceType}) {
        EXPECT_FALSE(api().InitialDevice(wrong, nullptr, 0, 0, 10, 10));
        EXPECT_EQ(code(), StartWrongDeviceType);
        EXPECT_EQ(sentence(), "The device type is " + std::to_string(wrong) + ", and " + model().prefix +
                                  " takes " + std::to_string(type()) + " only");
        ASSERT_TRUE(start());
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        EXPECT_FALSE(api().InitialDeviceByWId(wrong, 0, 0, 0, 10, 10));
        EXPECT_EQ(code(), StartWrongDeviceType);
    }
}

SCRIBERA_INSTANTIATE_ALL(StartFailed);

// ---- the text

class StartFailedText : public StartFailed
{
};

TEST_P(StartFailedText, IsCutToTheBufferAtAWholeCharacter)
{
    fs::create_directory("Größe€𝄞"); // characters of two to four bytes
    fs::current_path("Größe€𝄞");
    EXPECT_FALSE(start());
    const std::string whole = sentence();
    ASSERT_TRUE(whole.ends_with("/Größe€𝄞")) << whole;
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    for (std::size_t size = 1; size <= whole.size() + 3; ++size) {
        std::vector<char> text(size + 1, '#');
        EXPECT_EQ(lastFailure(text.data(), static_cast<int>(size)), StartDriverMissing);
        EXPECT_EQ(text.back(), '#') << "beyond the buffer";
        const std::string cut = text.data();
        ASSERT_LT(cut.size(), size);
        EXPECT_TRUE(whole.starts_with(cut)) << cut;
        EXPECT_FALSE(cut.size() < whole.size() && continues(whole[cut.size()])) << "cut in a character";
        EXPECT_GE(cut.size() + 4, std::min(size, whole.size())) << "cut too early";
    }
}

TEST_P(StartFailedText, IsNotWrittenWhereThereIsNoRoom)
{
    removeDriver();
    EXPECT_FALSE(start());
    char text[] = "##";
    for (const int size : {0, -1, -2147483647 - 1})
        EXPECT_EQ(lastFailure(text, size), StartDriverMissing);
    EXPECT_STREQ(text, "##");
    EXPECT_EQ(lastFailure(nullptr, 100), StartDriverMissing);
    EXPECT_EQ(lastFailure(text, 1), StartDriverMissing);
    EXPECT_STREQ(text, "");
}

TEST_P(StartFailedText, LongFolderIsCutAndNothingElse)
{
    for (int depth = 0; depth < 10; ++depth) {
        const std::string name(200, static_cast<char>('a' + depth));
        fs::create_directory(name);
        fs::current_path(name);
    }
    EXPECT_FALSE(start());
    EXPECT_EQ(code(), StartDriverMissing);
    EXPECT_EQ(sentence().size(), 1023u);
    EXPECT_TRUE(says("cannot open shared object file")) << sentence();
}

// What belongs together is told together, whichever threads start and ask.
TEST_P(StartFailedText, FitsItsCodeOnEveryThread)
{
    removeDriver();
    std::atomic<bool> going = true;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([&] {
            while (going)
                api().InitialDevice(type() + 1, nullptr, 0, 0, 10, 10);
        });
    const auto ask = [] {
        char text[1024];
        const int answer = lastFailure(text, sizeof text);
        const std::string words = text;
        return (answer == StartOk && words.empty()) ||
               (answer == StartWrongDeviceType && words.starts_with("The device type is ")) ||
               (answer == StartDriverMissing && words.starts_with("There is no driver: "));
    };
    threads.emplace_back([&] {
        while (going)
            EXPECT_TRUE(ask());
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(start());
        EXPECT_TRUE(ask());
    }
    going = false;
    for (std::thread& thread : threads)
        thread.join();
}

TEST_P(StartFailedText, ForkedChildHasWhatItsParentHad)
{
    removeDriver();
    EXPECT_FALSE(start());
    const std::string text = sentence();
    const pid_t child = fork();
    if (child == 0)
        _exit(code() == StartDriverMissing && sentence() == text ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

INSTANTIATE_TEST_SUITE_P(, StartFailedText, testing::Values(PadCase{&padModel("K210"), Kind::Windowless}),
                         caseName);

// ---- windows

class WidgetStartFailed : public StartFailed
{
};

TEST_P(WidgetStartFailed, AwayFromTheApplicationsThread)
{
    QWidget& parent = pad().makeParent(true);
    const WindowId id = parent.winId();
    std::thread([&] { EXPECT_FALSE(api().InitialDevice(type(), &parent, 0, 0, 100, 50)); }).join();
    EXPECT_EQ(code(), StartWrongThread);
    EXPECT_TRUE(says("thread of the QApplication")) << sentence();
    ASSERT_TRUE(start());
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    std::thread([&] { EXPECT_FALSE(api().InitialDeviceByWId(type(), id, 0, 0, 100, 50)); }).join();
    EXPECT_EQ(code(), StartWrongThread);
}

TEST_P(WidgetStartFailed, UnknownWindowIdIsNamed)
{
    EXPECT_FALSE(api().InitialDeviceByWId(type(), 123456789, 0, 0, 100, 50));
    EXPECT_EQ(code(), StartNoWindow);
    EXPECT_TRUE(says("123456789")) << sentence();
}

// Runs the function in the middle of a start: the parent hears of the new widget while that is made.
class DuringStart : public QObject
{
public:
    explicit DuringStart(std::function<void()> function) : m_function(std::move(function)) {}
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::ChildAdded)
            m_function();
        return false;
    }

private:
    const std::function<void()> m_function;
};

TEST_P(WidgetStartFailed, StartInTheMiddleOfAStart)
{
    QWidget& parent = pad().makeParent(true);
    int inner = -1;
    std::string words;
    DuringStart during([&] {
        if (inner >= 0)
            return;
        EXPECT_FALSE(api().InitialDevice(type(), &parent, 0, 0, 10, 10));
        inner = code();
        words = sentence();
    });
    parent.installEventFilter(&during);
    const std::vector<LogLine> log = logged([&] { EXPECT_TRUE(start()); });
    parent.removeEventFilter(&during);
    EXPECT_EQ(inner, StartInCallback);
    EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const LogLine& line) {
        return line.text == "leave with false due to (called inside a callback) !";
    }));
    EXPECT_TRUE(words.starts_with("A callback or an event")) << words;
    EXPECT_EQ(code(), StartOk) << "the start that ends last counts";
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
}

// A parent that is none of this Qt's. The library must not touch it.
QWidget* foreignWidget()
{
    static char place;
    return reinterpret_cast<QWidget*>(&place);
}

// What a process with another Qt has loaded.
class OtherQt
{
public:
    OtherQt() : m_handle(dlopen(SCRIBERA_OTHER_QT, RTLD_NOW)) { EXPECT_NE(m_handle, nullptr) << dlerror(); }
    ~OtherQt() { dlclose(m_handle); }
    OtherQt(const OtherQt&) = delete;
    OtherQt& operator=(const OtherQt&) = delete;

private:
    void* const m_handle;
};

const std::string ownQt = std::to_string(QT_VERSION_MAJOR);
const std::string otherQtLine = "no widget of Qt " + ownQt + ", and this process has another Qt !";

long countOtherQtLines(const std::vector<LogLine>& lines)
{
    return std::count_if(lines.begin(), lines.end(),
                         [](const LogLine& line) { return line.text == otherQtLine; });
}

TEST_P(WidgetStartFailed, OwnWindowIsGoodBesideAnotherQt)
{
    const OtherQt otherQt;
    QWidget& parent = pad().makeParent(true);
    const auto lines = logged([&] { EXPECT_TRUE(api().InitialDevice(type(), &parent, 0, 0, 100, 50)); });
    EXPECT_EQ(code(), StartOk);
    EXPECT_EQ(countOtherQtLines(lines), 0);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
    processEvents();
    EXPECT_TRUE(api().InitialDeviceByWId(type(), parent.winId(), 0, 0, 100, 50));
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
}

TEST_P(WidgetStartFailed, WindowOfAnotherQtIsRefused)
{
    ensureApplication();
    const OtherQt otherQt;
    auto lines = logged([&] { EXPECT_FALSE(api().InitialDevice(type(), foreignWidget(), 0, 0, 100, 50)); });
    EXPECT_EQ(code(), StartWrongQt);
    EXPECT_TRUE(says("needs a widget of Qt " + ownQt)) << sentence();
    EXPECT_EQ(textsOf(lines, exported("InitialDevice")).size(), 3u) << "Enter, the reason, leave";
    EXPECT_EQ(countOtherQtLines(lines), 1);
    lines = logged([&] { EXPECT_FALSE(api().InitialDeviceByWId(type(), 123456789, 0, 0, 100, 50)); });
    EXPECT_EQ(code(), StartWrongQt);
    EXPECT_EQ(countOtherQtLines(lines), 1);
    lines = logged([&] { api().AboutBox(foreignWidget()); });
    EXPECT_EQ(countOtherQtLines(lines), 1);
    lines = logged([&] { api().AboutBoxByWId(123456789); });
    EXPECT_EQ(countOtherQtLines(lines), 1);
}

SCRIBERA_INSTANTIATE(WidgetStartFailed, Kind::Widget);

class FingerprintBesideAnotherQt : public StartFailed
{
};

TEST_P(FingerprintBesideAnotherQt, IsNotPutIntoAWindowOfThatQt)
{
    const OtherQt otherQt;
    ASSERT_TRUE(start());
    auto lines = logged(
        [&] { EXPECT_EQ(api().SetDisplayedFPImageAt(type(), foreignWidget(), 100, 50, 0, 0, 9, 9), -1); });
    EXPECT_EQ(countOtherQtLines(lines), 1);
    lines = logged(
        [&] { EXPECT_EQ(api().SetDisplayedFPImageAtByWId(type(), 123456789, 100, 50, 0, 0, 9, 9), -1); });
    EXPECT_EQ(countOtherQtLines(lines), 1);
    EXPECT_EQ(api().UnInitialDevice(type()), 0);
}

INSTANTIATE_TEST_SUITE_P(, FingerprintBesideAnotherQt,
                         testing::Values(PadCase{&padModel("K421B"), Kind::Widget}), caseName);

class NoApplication : public PadTest
{
};

TEST_P(NoApplication, WidgetIsRefusedWithThatReason)
{
    EXPECT_FALSE(api().InitialDevice(type(), foreignWidget(), 0, 0, 100, 50));
    EXPECT_EQ(code(), StartNoApplication);
    EXPECT_TRUE(says("needs a QApplication")) << sentence();
    EXPECT_FALSE(api().InitialDeviceByWId(type(), 5, 0, 0, 100, 50));
    EXPECT_EQ(code(), StartNoApplication);
}

TEST_P(NoApplication, AnotherQtIsNoticed)
{
    const OtherQt otherQt;
    EXPECT_FALSE(api().InitialDevice(type(), foreignWidget(), 0, 0, 100, 50));
    EXPECT_EQ(code(), StartWrongQt);
    EXPECT_TRUE(says("needs a widget of Qt " + ownQt)) << sentence();
    EXPECT_FALSE(api().InitialDeviceByWId(type(), 5, 0, 0, 100, 50));
    EXPECT_EQ(code(), StartWrongQt);
    // What needs no window works beside it.
    ASSERT_TRUE(pad().start());
    EXPECT_EQ(pad().stop(), 0);
}

#ifdef SCRIBERA_OTHER_QT_HOST
TEST_P(NoApplication, HostOfAnotherQtSignsWithoutAWidget)
{
    removeLogs();
    const std::string recording = SCRIBERA_SOURCE_DIR "/drivers/simulator/recordings/initials.rec";
    // Qt's offscreen platform leaves its screen behind.
    const std::string command =
        "SCRIBERA_SIM_RATE=20 SCRIBERA_SIM_KEY=confirm SCRIBERA_SIM_RECORDING=" + recording +
        " ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 " SCRIBERA_OTHER_QT_HOST " " + model().name +
        " >said 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << fileContent("said");
    EXPECT_NE(fileContent("said").find("needs a widget of Qt " + ownQt), std::string::npos)
        << fileContent("said");
    EXPECT_EQ(countOtherQtLines(mainLog()), 4) << "two starts, two About boxes";
}
#endif

SCRIBERA_INSTANTIATE(NoApplication, Kind::Windowless);

} // namespace
} // namespace scribera::test

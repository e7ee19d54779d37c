// Every test in an empty working directory of its own, with an application object. ctest runs one test a
// process.
#include "mainwindow.h"
#include "support.h"

#include <QApplication>

#include <cstdlib>
#include <filesystem>

// As in the host tests: Fontconfig keeps what it parsed, and loses its own pointer to it; so does the bus,
// which Qt asks about assistive technologies, with its connection.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\nleak:libdbus-1.so\n";
}

extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

namespace {

class OwnDirectory : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override
    {
        m_directory = std::make_unique<TemporaryDirectory>();
        std::filesystem::current_path(m_directory->path(""));
        setenv("XDG_RUNTIME_DIR", m_directory->path("").c_str(), 1);
        for (const char* name : {"PAD", "PAD_WAIT_MS", "MODEL", "RECORDING", "FINGERPRINT", "KEY"})
            unsetenv((std::string("SCRIBERA_SIM_") + name).c_str());
        // For the leak checker in the programs that tests start: as above, and the offscreen platform loses
        // its screen. The stacks have to reach far enough to be told apart.
        const std::string suppressions = m_directory->write(
            "suppressions",
            "leak:libfontconfig.so\nleak:QGuiApplicationPrivate::createPlatformIntegration\n");
        setenv("LSAN_OPTIONS", (m_leakOptions + ":print_suppressions=0:suppressions=" + suppressions).c_str(),
               1);
        setenv("ASAN_OPTIONS", (m_addressOptions + ":fast_unwind_on_malloc=0").c_str(), 1);
        Received::clear();
    }

    void OnTestEnd(const testing::TestInfo&) override
    {
        std::filesystem::current_path("/");
        m_directory.reset();
        Received::clear();
    }

    const std::string m_leakOptions = qgetenv("LSAN_OPTIONS").toStdString();
    const std::string m_addressOptions = qgetenv("ASAN_OPTIONS").toStdString();
    std::unique_ptr<TemporaryDirectory> m_directory;
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Below it Qt makes folders; each test has its own later.
    const TemporaryDirectory directory;
    setenv("XDG_RUNTIME_DIR", directory.path("").c_str(), 1);
    std::filesystem::permissions(directory.path(""), std::filesystem::perms::owner_all);
    virtualpad::followScreenScale();
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    // Never destroyed: the screen of the offscreen platform would be lost with it.
    [[maybe_unused]] static const auto* const application = new QApplication(argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new OwnDirectory);
    return RUN_ALL_TESTS();
}

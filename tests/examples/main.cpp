// Tests of windows and pictures need an application object; the pad plays only what a test asks for.
#include <QApplication>

#include <gtest/gtest.h>

// Read by the leak checker where the tests are built with it. Fontconfig keeps what it parsed until the
// process ends and loses its own pointer to it.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

int main(int argc, char** argv)
{
    for (const char* name : {"SCRIBERA_SIM_MODEL", "SCRIBERA_SIM_RECORDING", "SCRIBERA_SIM_RATE",
                             "SCRIBERA_SIM_LOOP", "SCRIBERA_SIM_KEY", "SCRIBERA_SIM_FINGERPRINT"})
        qunsetenv(name);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    // Never destroyed: the screen of the offscreen platform would be lost with it.
    [[maybe_unused]] static const auto* const application = new QApplication(argc, argv);
    return RUN_ALL_TESTS();
}

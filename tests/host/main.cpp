// Runs one test in this process, with a working directory and a /tmp of its own. Asked for several tests it
// starts itself once for each, because a test may need a process without an application object, or ends one.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "harness.h"
#include "surroundings.h"

namespace fs = std::filesystem;

// Read by the leak checker where the tests are built with it. Fontconfig keeps what it parsed until the
// process ends and loses its own pointer to it; the application object of a widget test starts it. Nothing of
// the library's or of Qt's is left out.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

namespace {

void cleanEnvironment()
{
    std::vector<std::string> settings;
    for (char** variable = environ; *variable; ++variable) {
        if (std::strncmp(*variable, "SCRIBERA_SIM_", 13) == 0 ||
            std::strncmp(*variable, "SCRIBERA_PEN_", 13) == 0)
            settings.emplace_back(*variable, std::strcspn(*variable, "="));
    }
    for (const std::string& name : settings)
        unsetenv(name.c_str());
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

std::vector<std::string> selectedTests()
{
    const std::string command = "'" + scribera::test::thisProgram() +
                                "' --gtest_list_tests '--gtest_filter=" + testing::GTEST_FLAG(filter) + "'";
    std::vector<std::string> tests;
    FILE* list = popen(command.c_str(), "r");
    if (!list)
        return tests;
    std::string suite;
    char line[1024];
    while (std::fgets(line, sizeof line, list)) {
        std::string name = line;
        name = name.substr(0, name.find_first_of("#\n"));
        name.erase(name.find_last_not_of(' ') + 1);
        if (name.empty())
            continue;
        if (name.front() != ' ')
            suite = name;
        else
            tests.push_back(suite + name.substr(name.find_first_not_of(' ')));
    }
    pclose(list);
    return tests;
}

int runEach(const std::vector<std::string>& tests, char** argv)
{
    std::vector<std::string> failed;
    for (const std::string& test : tests) {
        const std::string filter = "--gtest_filter=" + test;
        std::cout.flush();
        const pid_t child = fork();
        if (child == 0) {
            execl(scribera::test::thisProgram().c_str(), argv[0], filter.c_str(), "--gtest_brief=1",
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        const bool passed = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        std::cout << (passed ? "passed  " : "FAILED  ") << test << "\n";
        if (!passed)
            failed.push_back(test);
    }
    std::cout << tests.size() - failed.size() << " of " << tests.size() << " tests passed\n";
    return failed.empty() && !tests.empty() ? 0 : 1;
}

int runOne(const std::string& test)
{
    if (!scribera::test::makeTmpPrivate({SCRIBERA_BINARY_DIR, SCRIBERA_SOURCE_DIR}))
        scribera::test::lockSharedTmp();

    std::string name = test + "." + std::to_string(getpid());
    std::replace(name.begin(), name.end(), '/', '-');
    const fs::path directory = fs::path(SCRIBERA_TEST_WORK_DIR) / name;
    fs::remove_all(directory);
    fs::create_directories(directory);
    fs::current_path(directory);
    fs::permissions(directory, fs::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", directory.c_str(), 1);

    const int result = RUN_ALL_TESTS();
    if (result == 0) {
        fs::current_path("/");
        fs::remove_all(directory);
    } else {
        for (const char* path : {scribera::test::mainLogFile, scribera::test::inThreadLogFile}) {
            std::error_code missing;
            fs::copy_file(path, directory / fs::path(path).filename(), missing);
        }
        std::cout << "left for a look: " << directory.string() << "\n";
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    cleanEnvironment();
    if (argc > 1 && std::strcmp(argv[1], "--child") == 0)
        return scribera::test::runChildProgram({argv + 2, argv + argc});

    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();

    const std::string filter = testing::GTEST_FLAG(filter);
    if (filter.find_first_of("*?:") == std::string::npos && filter.find("-") == std::string::npos)
        return runOne(filter);
    return runEach(selectedTests(), argv);
}

#include "processes.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>

#include "surroundings.h"

namespace scribera::test {

namespace fs = std::filesystem;

namespace {

// Never destroyed by the end of the process: the window system's plugin is gone by then.
QApplication* application = nullptr;

std::vector<std::pair<std::string, ChildProgram::Main>>& childPrograms()
{
    static std::vector<std::pair<std::string, ChildProgram::Main>> programs;
    return programs;
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return condition();
        processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::chrono::duration<double> testDuration()
{
    const char* const seconds = std::getenv("SCRIBERA_TEST_SECONDS");
    const double value = seconds ? std::atof(seconds) : 0;
    return std::chrono::duration<double>(value > 0 ? value : 2);
}

void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    static int argc = 1;
    static char name[] = "host_tests";
    static char* argv[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    application = new QApplication(argc, argv);
    application->setQuitOnLastWindowClosed(false);
}

void destroyApplication()
{
    delete application;
    application = nullptr;
}

void processEvents()
{
    if (!application)
        return;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

ProcessState ProcessState::now()
{
    ProcessState state;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/task")) {
        // Qt keeps those of its pool for half a minute, and Qt 6 paints with them.
        std::string name;
        std::getline(std::ifstream(entry.path() / "comm"), name);
        if (name != "Thread (pooled)")
            state.threads.insert(entry.path().filename());
    }
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the descriptor of this very listing
        const fs::path target = fs::read_symlink(entry.path(), gone);
        if (!gone && target.string().find("/proc/") != 0)
            state.files.push_back(target.string());
    }
    std::sort(state.files.begin(), state.files.end());
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos)
            state.mappedFiles.insert(line.substr(path));
    }
    return state;
}

std::set<std::string> idleThreads()
{
    pid_t first = 0;
    std::thread([&first] { first = gettid(); }).join();
    std::set<std::string> threads = ProcessState::now().threads;
    threads.erase(std::to_string(first)); // joined, but perhaps not yet out of the list
    return threads;
}

bool threadsAre(const std::set<std::string>& threads)
{
    return waitUntil([&] { return ProcessState::now().threads == threads; });
}

bool ProcessState::maps(const std::string& fileName) const
{
    return std::any_of(mappedFiles.begin(), mappedFiles.end(),
                       [&](const std::string& path) { return fs::path(path).filename() == fileName; });
}

std::string thisProgram()
{
    const fs::path program = fs::read_symlink("/proc/self/exe");
#ifdef SCRIBERA_EMULATED // where there is a script of the same name
    return fs::path(SCRIBERA_EMULATED) / program.filename();
#else
    return program;
#endif
}

ChildProgram::ChildProgram(const char* name, Main main)
{
    childPrograms().emplace_back(name, main);
}

int runChildProgram(const std::vector<std::string>& arguments)
{
    for (const auto& [name, main] : childPrograms()) {
        if (!arguments.empty() && name == arguments.front())
            return main({arguments.begin() + 1, arguments.end()});
    }
    std::fprintf(stderr, "no such child program\n");
    return 125;
}

ChildResult runChild(const std::string& name, const std::vector<std::string>& arguments,
                     std::chrono::milliseconds limit)
{
    std::vector<std::string> words = {thisProgram(), "--child", name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    // A process that ends with its pad open leaves memory behind by intent, and the leak checker's stop of
    // all threads does not get along with threads that are still busy.
    std::vector<std::string> variables;
    std::string asanOptions = "ASAN_OPTIONS=detect_leaks=0";
    for (char** variable = environ; *variable; ++variable) {
        if (std::strncmp(*variable, "ASAN_OPTIONS=", 13) == 0)
            asanOptions = std::string(*variable) + ":detect_leaks=0";
        else
            variables.emplace_back(*variable);
    }
    variables.push_back(asanOptions);
    std::vector<char*> envp;
    for (std::string& variable : variables)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    const std::string outputFile = "child-output.txt";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = -1;
    const int failure = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error(std::string("cannot start a child: ") + std::strerror(failure));

    ChildResult result;
    const auto start = std::chrono::steady_clock::now();
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() - start > limit) {
            result.timedOut = true;
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    result.exited = WIFEXITED(status);
    if (result.exited)
        result.exitCode = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    result.output = fileContent(outputFile);
    return result;
}

void PrintTo(const ChildResult& result, std::ostream* out)
{
    if (result.timedOut)
        *out << "killed after " << result.duration.count() << " ms";
    else if (result.exited)
        *out << "exit code " << result.exitCode;
    else
        *out << "signal " << result.signal;
    *out << "; output:\n" << result.output;
}

testing::AssertionResult endedWell(const ChildResult& result)
{
    if (!result.timedOut && result.exited && result.exitCode == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(result);
}

long residentKilobytesAtMost()
{
    const std::string status = fileContent("/proc/self/status");
    return std::stol(status.substr(status.find("VmHWM:") + 6));
}

void setSoftLimit(__rlimit_resource resource, rlim_t limit)
{
    rlimit both{};
    getrlimit(resource, &both);
    both.rlim_cur = std::min(limit, both.rlim_max);
    setrlimit(resource, &both);
}

std::string fileContent(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

FullTmp::FullTmp()
{
    // Something has to be there: a size of 0 means that there is no limit.
    std::ofstream("/tmp/filling") << "x";
    struct statfs use;
    m_full = statfs("/tmp", &use) == 0 &&
             resizePrivateTmp("size=" + std::to_string((use.f_blocks - use.f_bfree) *
                                                       static_cast<unsigned long>(use.f_bsize)));
}

FullTmp::~FullTmp()
{
    if (m_full)
        resizePrivateTmp("size=50%");
    fs::remove("/tmp/filling");
}

} // namespace scribera::test

// Waiting, application objects, threads and files of this process, and children.
#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gtest/gtest.h>

namespace scribera::test {

// Waits until the condition holds; delivers Qt events meanwhile where there is an application. False when it
// did not come true in time.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

// How long a test of load lasts: SCRIBERA_TEST_SECONDS, or two seconds.
std::chrono::duration<double> testDuration();

void ensureApplication(); // a QApplication on the offscreen platform, made once
void destroyApplication();
void processEvents(); // events and deferred deletions

struct ProcessState
{
    std::set<std::string> threads;     // ids
    std::vector<std::string> files;    // what the open descriptors name, sorted
    std::set<std::string> mappedFiles; // libraries and the like
    static ProcessState now();
    bool maps(const std::string& fileName) const; // by the last part of the path
};

// The threads of a process with no pad open, those included that a sanitizer adds with the first thread.
std::set<std::string> idleThreads();

// Whether these are the process's threads. A thread that was waited for may take the system a moment more to
// end, so this waits.
bool threadsAre(const std::set<std::string>& threads);

// Code that must run in a process of its own: ends it, unloads the library and so on. Registered by name,
// started with runChild() in the working directory and /tmp of the test.
struct ChildProgram
{
    using Main = int (*)(const std::vector<std::string>& arguments);
    ChildProgram(const char* name, Main main);
};

// What starts this program once more.
std::string thisProgram();

struct ChildResult
{
    bool timedOut = false;
    bool exited = false;
    int exitCode = -1;
    int signal = 0;
    std::string output; // both streams
    std::chrono::milliseconds duration{};
};

void PrintTo(const ChildResult& result, std::ostream* out);
ChildResult runChild(const std::string& name, const std::vector<std::string>& arguments,
                     std::chrono::milliseconds limit = std::chrono::seconds(60));
testing::AssertionResult endedWell(const ChildResult& result); // exited with 0, in time

// Leaves no room for another byte in the test's own /tmp while it lives, where there is one.
class FullTmp
{
public:
    FullTmp();
    ~FullTmp();
    FullTmp(const FullTmp&) = delete;
    FullTmp& operator=(const FullTmp&) = delete;

    bool isFull() const { return m_full; }

private:
    bool m_full = false;
};

long residentKilobytesAtMost();                              // of this process so far
void setSoftLimit(__rlimit_resource resource, rlim_t limit); // at most the hard one
std::string fileContent(const std::string& path);

} // namespace scribera::test

// The library's own threads while nothing waits for them: they poll, or sleep when they are told to.

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include <pthread.h>

#include "harness.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

int setWorkers(int mode)
{
    return Library::instance().extensions().SetWorkers(mode);
}

// One thread as the system shows it.
struct Task
{
    std::string name;
    char state = '?'; // R runs or wants to, S sleeps
    long switches = 0;
    unsigned long long runTime = 0; // nanoseconds
};

Task taskAt(const fs::path& folder)
{
    Task task;
    std::ifstream status(folder / "status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream words(line);
        std::string key;
        words >> key;
        if (key == "Name:")
            words >> task.name;
        else if (key == "State:")
            words >> task.state;
        else if (key.ends_with("voluntary_ctxt_switches:")) { // and nonvoluntary
            long count = 0;
            words >> count;
            task.switches += count;
        }
    }
    std::ifstream(folder / "schedstat") >> task.runTime;
    return task;
}

// Addresses and ticks change from pad to pad.
std::string withoutNumbers(std::string text)
{
    std::erase_if(text, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
    return text;
}

class Workers : public PadTest
{
protected:
    void SetUp() override
    {
        PadTest::SetUp();
        unsetenv("SCRIBERA_WORKERS");
    }

    // The library's threads bear the names of their classes, as much of them as the system keeps.
    std::vector<Task> workers() const
    {
        const std::string kind = padCase().isWidget() ? "Widget_" : "Obj_";
        const std::string begin = ("C" + model().name + kind);
        std::vector<Task> found;
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/task")) {
            const Task task = taskAt(entry.path());
            if (task.name.starts_with(begin))
                found.push_back(task);
        }
        return found;
    }

    std::size_t ownThreads() const { return model().hasFingerprint ? 2 : 1; }

    bool sleep() const
    {
        return waitUntil([this] {
            const std::vector<Task> tasks = workers();
            return tasks.size() == ownThreads() &&
                   std::all_of(tasks.begin(), tasks.end(),
                               [](const Task& task) { return task.state == 'S'; });
        });
    }

    // All have run for a while since now, though they give their turns to whoever else is busy.
    bool run() const
    {
        // A thread takes its name after it has begun.
        if (!waitUntil([this] { return workers().size() == ownThreads(); }))
            return false;
        const std::vector<Task> before = workers();
        return waitUntil([&] {
            const std::vector<Task> after = workers();
            for (std::size_t i = 0; i < before.size(); ++i)
                if (after.size() != before.size() || after[i].runTime < before[i].runTime + 2'000'000)
                    return false;
            return true;
        });
    }

    bool keyIsTold(int key)
    {
        const int before = told;
        api().SignatureStatusCallback(type(), [](int) { ++told; });
        sim().pressKey(key);
        return waitUntil([&] { return told == before + 1; });
    }

    void printFinger(int score)
    {
        const std::vector<unsigned char> print(208 * 288, 40);
        ASSERT_EQ(sim().SendFingerprint(print.data(), static_cast<int>(print.size()), score), 0);
        sim().waitIdle();
    }

    static std::atomic<int> told;
};

std::atomic<int> Workers::told{0};

TEST_P(Workers, PollUnlessTheyAreToldToWait)
{
    ASSERT_TRUE(pad().start());
    EXPECT_TRUE(run());
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Workers, ThatWaitSleepUntilThereIsSomethingToDo)
{
    ASSERT_EQ(setWorkers(WorkersWait), 0);
    ASSERT_TRUE(pad().start());
    ASSERT_TRUE(sleep());
    std::vector<Task> before = workers();

    // What the pen writes and the host asks is none of their business.
    pad().draw(wave(model(), 500));
    EXPECT_EQ(api().Clear(type()), 0);
    std::vector<Task> after = workers();
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(after[i].runTime, before[i].runTime) << after[i].name;
        EXPECT_EQ(after[i].switches, before[i].switches) << after[i].name;
    }

    for (const int key : {1, 0, 0, 1}) {
        EXPECT_TRUE(keyIsTold(key));
        EXPECT_TRUE(sleep());
    }
    if (model().hasFingerprint) {
        for (int score = 1; score <= 3; ++score) {
            printFinger(score);
            EXPECT_TRUE(waitUntil([&] { return sim().TransferCount() == score; }));
            EXPECT_TRUE(sleep());
        }
    }
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Workers, ThatWaitEndWithThePad)
{
    ASSERT_EQ(setWorkers(WorkersWait), 0);
    const std::set<std::string> threads = idleThreads();
    for (int cycle = 0; cycle < 20; ++cycle) {
        ASSERT_TRUE(pad().start());
        if (cycle % 2 == 0) {
            EXPECT_TRUE(sleep());
        }
        if (cycle % 5 == 0)
            sim().pressKey(1);
        EXPECT_EQ(pad().stop(), 0);
    }
    EXPECT_TRUE(threadsAre(threads));
}

TEST_P(Workers, EnvironmentSaysWhatTheHostDoesNot)
{
    setenv("SCRIBERA_WORKERS", "wait", 1);
    ASSERT_TRUE(pad().start());
    EXPECT_TRUE(sleep());
    // An open pad keeps what it was opened with.
    setenv("SCRIBERA_WORKERS", "poll", 1);
    ASSERT_EQ(setWorkers(WorkersPoll), 0);
    EXPECT_TRUE(keyIsTold(1));
    EXPECT_TRUE(sleep());
    EXPECT_EQ(pad().stop(), 0);

    setenv("SCRIBERA_WORKERS", "wait", 1);
    ASSERT_TRUE(pad().start());
    EXPECT_TRUE(run()) << "the host said poll";
    EXPECT_EQ(pad().stop(), 0);

    ASSERT_EQ(setWorkers(WorkersWait), 0);
    for (const int wrong : {-1, 2, 99})
        EXPECT_EQ(setWorkers(wrong), -2);
    setenv("SCRIBERA_WORKERS", "poll", 1);
    ASSERT_TRUE(pad().start());
    EXPECT_TRUE(sleep()) << "the host said wait";
    EXPECT_EQ(pad().stop(), 0);
}

TEST_P(Workers, UnknownValueInTheEnvironmentPollsAndIsLoggedOnce)
{
    const std::string label = padCase().method(padCase().className());
    const std::string line = "SCRIBERA_WORKERS is neither 'poll' nor 'wait', polling !";
    for (const char* value : {"", "Wait", "wait ", "1"}) {
        SCOPED_TRACE(value);
        setenv("SCRIBERA_WORKERS", value, 1);
        removeLogs();
        setLogging(true);
        ASSERT_TRUE(pad().start());
        setLogging(false);
        const std::vector<std::string> lines = textsOf(mainLog(), label);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1);
        EXPECT_TRUE(run());
        EXPECT_EQ(pad().stop(), 0);
    }
}

TEST_P(Workers, LogIsTheSameInBothModes)
{
    const auto history = [this](int mode) {
        EXPECT_EQ(setWorkers(mode), 0);
        removeLogs();
        setLogging(true);
        EXPECT_TRUE(pad().start({.parentShown = false})); // painting comes when it comes
        pad().draw(wave(model(), 5));
        EXPECT_TRUE(keyIsTold(1));
        EXPECT_TRUE(keyIsTold(0));
        if (model().hasFingerprint) {
            printFinger(1);
            EXPECT_TRUE(waitUntil([] {
                return !withLabel(inThreadLog(), "CK421BSignWidget::MergeSignCanvasAndFPCanvas()").empty() ||
                       !withLabel(inThreadLog(), "CK421BSignObj::MergeSignCanvasAndFPCanvas()").empty();
            }));
        }
        EXPECT_EQ(pad().stopKeepingParent(), 0);
        setLogging(false);
        // The two threads of the K421B keep no order between them.
        std::map<std::string, std::vector<std::string>> lines;
        for (const LogLine& line : mainLog())
            lines["main"].push_back(line.label + " " + withoutNumbers(line.text));
        for (const LogLine& line : inThreadLog())
            lines[line.label].push_back(withoutNumbers(line.text));
        pad().closeParent();
        sim().close();
        return lines;
    };
    const auto polling = history(WorkersPoll);
    EXPECT_EQ(history(WorkersWait), polling);
}

// Whoever is left over after the host ended the thread in its callback must not wait for it.
TEST_P(Workers, ThatWaitMayBeEndedByTheCallback)
{
    ASSERT_EQ(setWorkers(WorkersWait), 0);
    const std::set<std::string> threads = idleThreads();
    ASSERT_TRUE(pad().start());
    ASSERT_TRUE(sleep());
    api().SignatureStatusCallback(type(), [](int) { pthread_exit(nullptr); });
    sim().pressKey(1);
    EXPECT_TRUE(waitUntil([this] { return workers().size() == ownThreads() - 1; }));
    sim().pressKey(0);
    pad().draw(wave(model(), 8));
    EXPECT_EQ(pad().points(), 10);
    EXPECT_EQ(pad().stop(), 0);
    EXPECT_TRUE(threadsAre(threads));
    ASSERT_TRUE(pad().start());
    EXPECT_TRUE(keyIsTold(1));
    EXPECT_EQ(pad().stop(), 0);
}

SCRIBERA_INSTANTIATE_ALL(Workers);

} // namespace
} // namespace scribera::test

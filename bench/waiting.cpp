// How long somebody waits: for the key lock, for the first drawn sample, for a processor while the library's
// threads poll.
#include "benchmarks.h"
#include "pad.h"
#include "scriberasdk_ext.h"
#include "signobj/signobj.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <dlfcn.h>

// Called by the driver after each sample of its own thread.
extern "C" {
extern void (*g_benchSampleDelivered)();
void (*g_benchSampleDelivered)() = nullptr;
}

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto SamplePeriod = std::chrono::milliseconds(5); // 200 samples a second
constexpr int SamplesPerRound = 400;
// 2,000 figures on either side.
constexpr Effort SampleEffort{.rounds = 5, .part = 0.99, .repetitions = 1};

// Work at every tick of a pad's sample rate.
template <typename Work>
void atSampleRate(Work work)
{
    Clock::time_point due = Clock::now();
    for (int sample = 0; sample < SamplesPerRound; ++sample) {
        due += SamplePeriod;
        std::this_thread::sleep_until(due);
        work(due);
    }
}

// An object with both polling threads, and its key lock.
class PolledObject
{
public:
    PolledObject()
    {
        CStartFailure failure;
        require(m_object->IsDeviceConnected(failure), "the pad does not open");
    }
    ~PolledObject() { m_object->Shutdown(); }
    PolledObject(const PolledObject&) = delete;
    PolledObject& operator=(const PolledObject&) = delete;

    CMutex& keyLock() { return m_object->KeyActions().KeyActionMutex(); }

private:
    const std::unique_ptr<CSignObj> m_object = MakeSignObj(g_PadK421B, 400, 200);
};

void takeLock(CMutex& mutex, std::vector<double>& times)
{
    atSampleRate([&](Clock::time_point) {
        const double start = wallTime();
        mutex.lock();
        times.push_back(wallTime() - start);
        mutex.unlock();
    });
}

void registerLock()
{
    compare("key lock, 99th percentile", {.ratio = 3, .most = 5e-6}, SampleEffort, [] {
        const auto library = [](std::vector<double>& times) {
            PolledObject object;
            takeLock(object.keyLock(), times);
        };
        const auto bare = [](std::vector<double>& times) {
            CMutex mutex;
            takeLock(mutex, times);
        };
        return Sides{library, bare};
    });
}

// How late a thread runs that waits for its next sample.
void wake(std::vector<double>& times)
{
    atSampleRate([&](Clock::time_point due) {
        times.push_back(std::chrono::duration<double>(Clock::now() - due).count());
    });
}

// What a thread needs for work that takes about 20 ms, on the clock on the wall, on either core.
void workOnAllCores(std::vector<double>& times)
{
    const double start = wallTime();
    std::vector<std::thread> threads;
    for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core) {
        threads.emplace_back([] {
            unsigned value = 1;
            for (int step = 0; step < 20'000'000; ++step)
                benchmark::DoNotOptimize(value = value * 1664525U + 1013904223U);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    times.push_back(wallTime() - start);
}

template <typename Work>
Side besideIdlePad(const char* model, Work work, int workers = SCRX_WORKERS_POLL)
{
    return [=](std::vector<double>& times) {
        Library::shipped().setWorkers(workers);
        const Pad pad(Library::shipped(), modelNamed(model), QSize(400, 200));
        Library::shipped().setWorkers(SCRX_WORKERS_POLL); // for the benchmarks that come after
        work(times);
    };
}

// As many threads as the pad's, which look at a flag and do not give their turn away.
template <typename Work>
Side besideStubbornThreads(Work work)
{
    return [=](std::vector<double>& times) {
        std::atomic<bool> stops{false};
        const auto poll = [&stops] {
            while (!stops.load(std::memory_order_relaxed)) {
            }
        };
        std::thread first(poll);
        std::thread second(poll);
        work(times);
        stops = true;
        first.join();
        second.join();
    };
}

template <typename Work>
void registerPolling(const std::string& name, const Effort& effort, Work work)
{
    for (const char* const model : {"K210", "K421B"})
        compare(name + " beside an idle " + model, {}, effort, [=] {
            return Sides{besideIdlePad(model, work), work};
        });
    compare(name + " beside threads that do not yield", {}, effort, [=] {
        return Sides{besideIdlePad("K421B", work), besideStubbornThreads(work)};
    });
}

void registerPolling()
{
    registerPolling("wake-up, median,", {.rounds = 5, .repetitions = 1}, wake);
    registerPolling("wake-up, 99th percentile,", SampleEffort, wake);
    registerPolling("work on all cores", {.rounds = 15, .repetitions = 1}, workOnAllCores);
}

// Pads whose workers wait cost nobody anything.
void registerWaitingWorkers()
{
    for (const char* const model : {"K210", "K421B"})
        compare(std::string("work on all cores beside a waiting ") + model, {.ratio = 1.02},
                {.rounds = 15, .repetitions = 1}, [=] {
                    return Sides{besideIdlePad(model, workOnAllCores, SCRX_WORKERS_WAIT), workOnAllCores};
                });
}

// What the process takes of its processors in a second in which it does nothing.
void restForASecond(std::vector<double>& times)
{
    const double start = processTime();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    times.push_back(processTime() - start);
}

// Here waiting stands beside polling.
void registerRest()
{
    for (const char* const model : {"K210", "K421B"})
        compare(std::string("second of rest, waiting and polling ") + model, {.most = 1e-3},
                {.rounds = 5, .repetitions = 1}, [=] {
                    return Sides{besideIdlePad(model, restForASecond, SCRX_WORKERS_WAIT),
                                 besideIdlePad(model, restForASecond)};
                });
}

std::atomic<double> keyActed{0};

// From the release of a key to the host's callback, at the rate of samples.
Side keysOf(int workers)
{
    return [=](std::vector<double>& times) {
        Library::shipped().setWorkers(workers);
        const Pad pad(Library::shipped(), modelNamed("K210"), QSize(400, 200));
        Library::shipped().setWorkers(SCRX_WORKERS_POLL); // for the benchmarks that come after
        pad.function<int(int, void (*)(int))>("SignatureStatusCallback")(
            pad.deviceType(), [](int) { keyActed.store(wallTime()); });
        atSampleRate([&](Clock::time_point) {
            keyActed = 0;
            pad.sample({0, 0, 0, PENSTATUS_CONFIRMKEY_DOWN});
            const double start = wallTime();
            pad.sample({0, 0, 0, PENSTATUS_UP});
            while (keyActed.load() == 0)
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            times.push_back(keyActed - start);
        });
    };
}

// Here, too, waiting stands beside polling.
void registerKeys()
{
    const auto sides = [] { return Sides{keysOf(SCRX_WORKERS_WAIT), keysOf(SCRX_WORKERS_POLL)}; };
    compare("key, median, waiting and polling", {.most = 1e-3}, {.rounds = 5, .repetitions = 1}, sides);
    compare("key, 99th percentile, waiting and polling", {.most = 1e-3}, SampleEffort, sides);
}

std::atomic<double> firstDrawn{0};
int (*countPoints)(int) = nullptr; // set before the driver starts

void noteFirstDrawn()
{
    if (firstDrawn.load(std::memory_order_relaxed) > 0)
        return;
    // A touch draws nothing, the move after it does.
    if (countPoints(SCK210_DEVICE) >= 2)
        firstDrawn.store(wallTime());
}

void registerStart()
{
    compare("start to first drawn sample", {.over = 2e-3}, {.rounds = 41}, [] {
        const auto library = [](std::vector<double>& times) {
            Library& shipped = Library::shipped();
            countPoints = reinterpret_cast<int (*)(int)>(shipped.symbol("SCK210_GetTotalPacketsNumber"));
            firstDrawn = 0;
            g_benchSampleDelivered = noteFirstDrawn;
            const double start = wallTime();
            const Pad pad(shipped, modelNamed("K210"), QSize(400, 200));
            while (firstDrawn.load() == 0)
                std::this_thread::yield();
            times.push_back(firstDrawn - start);
            g_benchSampleDelivered = nullptr;
        };
        const auto bare = [](std::vector<double>& times) {
            const double start = wallTime();
            void* const driver = dlopen("./libscriberadrv.so", RTLD_NOW);
            const QImage image = blankImage(QSize(400, 200));
            times.push_back(wallTime() - start);
            require(driver && !image.isNull(), "no driver");
            dlclose(driver);
        };
        return Sides{library, bare};
    });
}

} // namespace

void registerWaiting()
{
    registerLock();
    registerStart();
    registerPolling();
    registerWaitingWorkers();
    registerRest();
    registerKeys();
}

} // namespace bench

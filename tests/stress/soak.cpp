// A signature that does not end: streams samples into a pad and watches what grows. The stored points may,
// and nothing else. A pad at 1,000 samples a second gives a millisecond to each.
//
//   soak [SAMPLES [MODEL]]    10,000,000 and K210 without arguments; K421B merges a fingerprint meanwhile

#include "scriberasdk.h"
#include "simclient.h"
#include "workdirectory.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>

namespace {

namespace fs = std::filesystem;

constexpr int StrokeLength = 500; // points, the one that ends it included
constexpr int BatchStrokes = 20;
constexpr int WarmUpBatches = 10;
constexpr long long RecordSize = 24;
constexpr long long Slack = 512 << 10; // of the allocator and of queues that keep their capacity
// On a virtual machine the time that other machines take counts as the thread's own, so a few may be longer.
constexpr double SampleTime = 0.001;
constexpr long long SamplesPerLongOne = 100'000;
constexpr int TimeoutMs = 600'000;

#if defined(SCRIBERA_SANITIZED_MEMORY)
constexpr bool HeapCanBeAsked = false; // the sanitizer's allocator answers nothing
constexpr double Slowdown = 20;
#else
constexpr bool HeapCanBeAsked = true;
constexpr double Slowdown = 1;
#endif

struct Family
{
    int deviceType;
    int originX;
    int originY;
    int areaWidth;
    int areaHeight;
    bool (*initial)(int, QWidget*, int, int, int, int);
    int (*unInitial)(int);
    int (*count)(int);
    int (*clear)(int);
    bool (*realTime)(int, ScriberaRealTimeSignDataCallback);
    char* (*encode)(int, int);
    void (*encodeFree)(int, char*);
};

#define FAMILY(prefix, x, y, width, height)                                                                  \
    {                                                                                                        \
        prefix##DEVICE, x, y, width, height, prefix##InitialDevice, prefix##UnInitialDevice,                 \
            prefix##GetTotalPacketsNumber, prefix##Clear, prefix##RealTimeSignatureDataCallback,             \
            prefix##PacketsBase64Encode, prefix##PacketsBase64EncodeFree                                     \
    }

const Family k210 = FAMILY(SCK210_, 160, 220, 2360, 1430);
const Family k421b = FAMILY(SCK421B_, 2050, 1750, 21170, 11490);

[[noreturn]] void fail(const std::string& reason)
{
    std::fprintf(stderr, "soak: %s\n", reason.c_str());
    std::_Exit(1); // with the pad open
}

void require(bool holds, const std::string& what)
{
    if (!holds)
        fail(what);
}

// Processor time of the thread that delivers the samples: what other processes take of the machine is not
// the library's.
double threadTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Written by the driver's thread, read when it is idle.
double lastCall = -1;
double longest = 0;
long long longestAt = 0;
long long longOnes = 0;
std::atomic<long long> calls = 0;

void onPoint(unsigned long, long)
{
    const double now = threadTime();
    const double took = lastCall < 0 ? 0 : now - lastCall;
    if (took > longest) {
        longest = took;
        longestAt = calls;
    }
    longOnes += took > SampleTime * Slowdown;
    lastCall = now;
    ++calls;
}

long long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
}

long long entriesOf(const char* directory)
{
    return std::distance(fs::directory_iterator(directory), fs::directory_iterator());
}

struct Census
{
    long long threads = entriesOf("/proc/self/task");
    long long descriptors = entriesOf("/proc/self/fd");
    bool operator==(const Census&) const = default;
};

std::vector<ScrSimSample> batch(const Family& family)
{
    std::vector<ScrSimSample> samples;
    for (int stroke = 0; stroke < BatchStrokes; ++stroke) {
        for (int i = 0; i < StrokeLength - 1; ++i) {
            const double part = static_cast<double>(i) / StrokeLength;
            const double x = 0.1 + 0.8 * part;
            const double y = 0.5 + 0.4 * std::sin(part * 20 + stroke);
            samples.push_back({family.originX + static_cast<int>(x * family.areaWidth),
                               family.originY + static_cast<int>(y * family.areaHeight), 200 + i % 400,
                               i == 0 ? PENSTATUS_DOWN : PENSTATUS_MOVE});
        }
        samples.push_back({0, 0, 0, PENSTATUS_UP});
    }
    return samples;
}

void soak(const Family& family, long long wanted)
{
    // What the process opens once and keeps.
    require(family.initial(family.deviceType, nullptr, 0, 0, 400, 200) &&
                family.unInitial(family.deviceType) == 0,
            "the pad does not open and close");
    const Census closed;
    void* const library = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_LOCAL);
    require(library != nullptr, "the simulated pad is not there");
    simulator::Client driver;
    require(!driver.resolve(library), "this is not the simulated pad");
    const int type = family.deviceType;
    require(family.initial(type, nullptr, 0, 0, 400, 200), "the pad does not start");
    require(family.realTime(type, onPoint), "no callback");
    if (type == SCK421B_DEVICE) {
        const std::vector<unsigned char> print(208 * 288, 90);
        require(driver.SendFingerprint(print.data(), static_cast<int>(print.size()), 50) == 0,
                "no fingerprint");
    }

    const std::vector<ScrSimSample> samples = batch(family);
    const auto perBatch = static_cast<long long>(samples.size());
    const auto send = [&](long long batches) {
        for (long long i = 0; i < batches; ++i) {
            require(driver.SendSamples(samples.data(), static_cast<int>(samples.size())) == 0, "no samples");
            require(driver.WaitIdle(TimeoutMs) == 0, "the samples were not taken in time");
        }
    };
    send(WarmUpBatches);
    require(type != SCK421B_DEVICE || driver.TransferCount() == 1, "the fingerprint was not shown");
    const Census before;
    const long long heapBefore = heapInUse();
    longest = 0;
    longOnes = 0;

    const long long batches = std::max<long long>(1, wanted / perBatch - WarmUpBatches);
    constexpr int Steps = 10;
    long long sent = 0;
    for (int step = 1; step <= Steps; ++step) {
        send(batches * step / Steps - sent);
        sent = batches * step / Steps;
        require(Census() == before, "threads or descriptors grew");
        const long long growth = heapInUse() - heapBefore;
        const long long needed = sent * perBatch * RecordSize;
        if (HeapCanBeAsked)
            require(std::llabs(growth - needed) < needed / 100 + Slack,
                    "the heap grew by " + std::to_string(growth) + " bytes, the points need " +
                        std::to_string(needed));
    }
    const long long total = (WarmUpBatches + sent) * perBatch;
    const long long growth = heapInUse() - heapBefore;
    require(family.count(type) == total, "points are missing");
    require(calls == total, "callbacks are missing");
    require(longOnes <= 1 + total / SamplesPerLongOne,
            std::to_string(longOnes) + " samples took more than a millisecond of processor time");

    // What an export takes goes back whole, and so does everything with a clear.
    char* text = family.encode(type, EBITI_INK);
    require(text && std::strlen(text) == static_cast<std::size_t>((total * RecordSize + 1 + 2) / 3 * 4),
            "no ink");
    family.encodeFree(type, text);
    const long long afterExport = heapInUse() - heapBefore;
    require(!HeapCanBeAsked || std::llabs(afterExport - growth) < Slack, "an export keeps memory");
    require(family.clear(type) == 0, "the signature is not cleared");
    const long long afterClear = heapInUse() - heapBefore;
    require(!HeapCanBeAsked || afterClear < Slack, "a clear keeps memory");
    require(Census() == before, "threads or descriptors grew");
    require(family.unInitial(type) == 0, "the pad is not closed");
    dlclose(library);
    const Census after;
    require(after == closed, std::to_string(after.threads - closed.threads) + " threads and " +
                                 std::to_string(after.descriptors - closed.descriptors) +
                                 " descriptors are left");

    std::printf("%lld samples; heap +%lld bytes, points %lld; %lld after the export, %lld after the clear; "
                "longest sample %.3f ms of processor time (number %lld), %lld beyond a millisecond; %lld "
                "threads, %lld descriptors\n",
                total, growth, sent * perBatch * RecordSize, afterExport, afterClear, longest * 1e3,
                longestAt, longOnes, before.threads, before.descriptors);
}

} // namespace

int main(int argc, char** argv)
{
    const long long wanted = argc > 1 ? std::atoll(argv[1]) : 10'000'000;
    const std::string model = argc > 2 ? argv[2] : "K210";
    if (argc > 3 || wanted < 1 || wanted > 80'000'000 || (model != "K210" && model != "K421B")) {
        std::fprintf(stderr, "usage: soak [SAMPLES [K210|K421B]], at most 80000000 samples\n");
        return 2;
    }
    const scribera::test::WorkDirectory directory(SCRIBERA_DRIVER_LIBRARY);
    soak(model == "K210" ? k210 : k421b, wanted);
    return 0;
}

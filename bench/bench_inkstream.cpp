// How long the library takes to encode and decode a long signature as an ink packet stream, beside the bare
// work of the same kind: one memcpy of the records, Qt's Base64, one copy into a new array. Both sides run in
// turn in one process, with the same allocator settings; what counts is the ratio of the medians. Time is the
// processor time of the calling thread, which does all the work on either side: on a busy machine the clock
// on the wall also counts the other processes' turns.

#include "scriberasdk.h"
#include "scriberasim.h"

#include <QByteArray>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>

namespace {

namespace fs = std::filesystem;

constexpr int PointCount = 250'000;
constexpr int Rounds = 41;
constexpr double LargestRatio = 1.3;
constexpr int Patience = 600'000; // ms

[[noreturn]] void fail(const std::string& reason)
{
    std::fprintf(stderr, "bench_inkstream: %s\n", reason.c_str());
    std::exit(1);
}

void require(bool condition, const char* what)
{
    if (!condition)
        fail(what);
}

// Without this the allocator would change its own thresholds while the two sides run, and give blocks of
// these sizes back to the system and take them again, each time.
void fixAllocator()
{
    require(mallopt(M_MMAP_THRESHOLD, 32 << 20) == 1 && mallopt(M_TRIM_THRESHOLD, 1 << 30) == 1,
            "the allocator's thresholds cannot be set");
}

// The working directory in which the library finds the simulated pad.
class WorkDirectory
{
public:
    WorkDirectory()
    {
        std::string name = (fs::temp_directory_path() / "bench_inkstream.XXXXXX").string();
        require(mkdtemp(name.data()) != nullptr, "no temporary directory");
        m_path = name;
        fs::create_symlink(SCRIBERA_DRIVER_LIBRARY, m_path / "libscriberadrv.so");
        fs::current_path(m_path);
    }
    WorkDirectory(const WorkDirectory&) = delete;
    WorkDirectory& operator=(const WorkDirectory&) = delete;
    ~WorkDirectory()
    {
        std::error_code ignored;
        fs::current_path("/", ignored);
        fs::remove_all(m_path, ignored);
    }

private:
    fs::path m_path;
};

// One stroke that wanders over the pad; its numbers fill the bits of a record as real ones do.
std::vector<ScrSimSample> longStroke()
{
    std::vector<ScrSimSample> samples;
    samples.reserve(PointCount);
    for (int index = 0; index < PointCount; ++index)
        samples.push_back({160 + index % 2360, 220 + index / 170, 1 + index * 7 % 2047, index == 0 ? 0 : 1});
    return samples;
}

void sign()
{
    void* const driver = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_NOLOAD);
    require(driver != nullptr, "the simulated pad is not loaded");
    const auto send = reinterpret_cast<decltype(&ScrSim_SendSamples)>(dlsym(driver, "ScrSim_SendSamples"));
    const auto wait = reinterpret_cast<decltype(&ScrSim_WaitIdle)>(dlsym(driver, "ScrSim_WaitIdle"));
    const std::vector<ScrSimSample> samples = longStroke();
    require(send(samples.data(), PointCount) == 0 && wait(Patience) == 0, "the samples were not delivered");
    dlclose(driver);
    require(SCK210_GetTotalPacketsNumber(SCK210_DEVICE) == PointCount, "not every sample became a point");
}

double threadMilliseconds()
{
    timespec now{};
    require(clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) == 0, "the thread's processor time is not known");
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double millisecondsOf(const std::function<void()>& work)
{
    const double start = threadMilliseconds();
    work();
    return threadMilliseconds() - start;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// True when the library stays within the ratio.
bool compare(const char* name, const std::function<void()>& library, const std::function<void()>& bare)
{
    std::vector<double> libraryTimes;
    std::vector<double> bareTimes;
    library(); // the first pass of each fills the allocator's lists
    bare();
    for (int round = 0; round < Rounds; ++round) {
        libraryTimes.push_back(millisecondsOf(library));
        bareTimes.push_back(millisecondsOf(bare));
    }
    const double ratio = median(libraryTimes) / median(bareTimes);
    std::printf("%-7s %9.3f ms   bare %9.3f ms   ratio %.3f\n", name, median(libraryTimes), median(bareTimes),
                ratio);
    return ratio <= LargestRatio;
}

bool compareEncoding(const QByteArray& stream)
{
    const auto library = [] {
        SCK210_PacketsBase64EncodeFree(SCK210_DEVICE, SCK210_PacketsBase64Encode(SCK210_DEVICE, EBITI_INK));
    };
    const auto bare = [&stream] {
        QByteArray copy(stream.size(), Qt::Uninitialized);
        std::memcpy(copy.data(), stream.constData(), static_cast<std::size_t>(stream.size()));
        const QByteArray text = copy.toBase64();
        const auto size = static_cast<std::size_t>(text.size());
        const std::unique_ptr<char[]> forHost(new char[size + 1]);
        std::memcpy(forHost.get(), text.constData(), size + 1);
    };
    return compare("encode", library, bare);
}

bool compareDecoding(const QByteArray& text)
{
    const auto library = [&text] {
        require(SCK210_Base64Decode(SCK210_DEVICE, EBITI_INK, text.constData(), nullptr) == ARI_SUCCESS,
                "the library refuses its own text");
    };
    std::unique_ptr<_POINTDATA[]> points;
    const auto bare = [&text, &points] {
        points.reset();
        const QByteArray stream = QByteArray::fromBase64(text);
        points.reset(new _POINTDATA[PointCount]);
        std::memcpy(points.get(), stream.constData(), PointCount * sizeof(_POINTDATA));
    };
    const bool within = compare("decode", library, bare);
    require(SCK210_GetTotalDecodePacketsNumber(SCK210_DEVICE) == PointCount, "not every point came back");
    return within;
}

bool measure()
{
    const WorkDirectory directory;
    require(SCK210_InitialDevice(SCK210_DEVICE, nullptr, 0, 0, 400, 240), "the pad does not start");
    sign();
    char* const encoded = SCK210_PacketsBase64Encode(SCK210_DEVICE, EBITI_INK);
    require(encoded != nullptr, "nothing is encoded");
    const QByteArray text(encoded);
    SCK210_PacketsBase64EncodeFree(SCK210_DEVICE, encoded);
    const QByteArray stream = QByteArray::fromBase64(text);
    require(stream.size() == PointCount * static_cast<int>(sizeof(_POINTDATA)) + 1,
            "the stream's size is wrong");

    std::printf("%d points, %d characters, medians of %d rounds\n", PointCount, text.size(), Rounds);
    const bool encodes = compareEncoding(stream);
    const bool decodes = compareDecoding(text);
    SCK210_UnInitialDevice(SCK210_DEVICE);
    return encodes && decodes;
}

} // namespace

int main(int argc, char** argv)
{
    const bool checks = argc == 2 && std::strcmp(argv[1], "--check") == 0;
    if (argc > 1 && !checks) {
        std::fprintf(stderr,
                     "usage: bench_inkstream [--check]\n"
                     "--check: exit code 1 when the library takes more than %.1f times the bare work\n",
                     LargestRatio);
        return 2;
    }
    fixAllocator();
    const bool within = measure();
    if (checks && !within) {
        std::fprintf(stderr, "bench_inkstream: above %.1f times the bare work\n", LargestRatio);
        return 1;
    }
    return 0;
}

// Measures the library beside the bare work of the same kind and prints one table of ratios. All options of
// Google Benchmark hold; --check gives exit code 1 when a promise is not kept, --peers adds another drawing
// library, --write-strokes FILE only writes what is drawn.
#include "benchmarks.h"
#include "pad.h"
#include "table.h"
#include "workdirectory.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <malloc.h>

namespace {

// Without this the allocator would change its own thresholds while the two sides run, and give large blocks
// back to the system and take them again, each time.
void fixAllocator()
{
    bench::require(mallopt(M_MMAP_THRESHOLD, 32 << 20) == 1 && mallopt(M_TRIM_THRESHOLD, 1 << 30) == 1,
                   "the allocator's thresholds cannot be set");
}

// Whether the option is there; takes it out.
bool takeOption(int& argc, char** argv, const char* option)
{
    char** const end = std::remove_if(
        argv + 1, argv + argc, [option](const char* argument) { return std::strcmp(argument, option) == 0; });
    const bool isThere = end != argv + argc;
    argc = static_cast<int>(end - argv);
    return isThere;
}

} // namespace

int main(int argc, char** argv)
{
    fixAllocator();
    const bool checks = takeOption(argc, argv, "--check");
    const bool wantsPeers = takeOption(argc, argv, "--peers");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (argc == 3 && std::strcmp(argv[1], "--write-strokes") == 0) {
        bench::writeStrokes(argv[2]);
        return 0;
    }
    const QApplication application(argc, argv);
    bench::registerPen();
    bench::registerExports();
    bench::registerStore();
    bench::registerWaiting();
    bench::registerGrowth();
#if defined(SCRIBERA_BENCH_CAIRO)
    if (wantsPeers)
        bench::registerCairo();
#else
    bench::require(!wantsPeers, "built without Cairo");
#endif
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const scribera::test::WorkDirectory directory(SCRIBERA_BENCH_DRIVER);
    bench::Table table;
    bench::require(benchmark::RunSpecifiedBenchmarks(&table) > 0, "no benchmark has such a name");
    for (const std::string& name : table.broken())
        std::fprintf(stderr, "bench: not kept: %s\n", name.c_str());
    return checks && !table.broken().empty() ? 1 : 0;
}

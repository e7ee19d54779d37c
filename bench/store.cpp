// What the stored points take: memory, and time for the longest of very many.
#include "benchmarks.h"
#include "comparison.h"
#include "ink/inkpoints.h"

#include <algorithm>
#include <vector>

#include <malloc.h>

namespace bench {
namespace {

constexpr double RecordSize = sizeof(_POINTDATA);

double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

_POINTDATA somePoint(int number)
{
    return StampedPoint(number % 2000, number % 1000, number % 2048, kStatusOnStroke);
}

// The largest number of bytes for a point at any length between 10,000 points and 200,000. In the place of
// seconds stand bytes.
void measureMemory(std::vector<double>& times)
{
    CInkPointList points;
    const double before = heapInUse();
    double most = 0;
    for (int count = 1; count <= 200'000; ++count) {
        points.Append(somePoint(count));
        if (count >= 10'000)
            most = std::max(most, (heapInUse() - before) / count);
    }
    times.push_back(most);
}

// The longest append of ten million, against one that was planned for from the beginning. Of three runs the
// shortest counts: a virtual machine stops now and then, but not at the same append.
constexpr int Appends = 10'000'000;

template <typename Append>
double longestOf(Append append)
{
    double longest = 0;
    double last = threadTime();
    for (int number = 0; number < Appends; ++number) {
        append(number);
        const double now = threadTime();
        longest = std::max(longest, now - last);
        last = now;
    }
    return longest;
}

} // namespace

void registerStore()
{
    compare("memory per point, bytes as seconds", {.ratio = 1.25}, {.rounds = 1, .repetitions = 1}, [] {
        return Sides{measureMemory, [](std::vector<double>& times) { times.push_back(RecordSize); }};
    });
    compare("longest of 10000000 appends", {.most = 1e-3}, {.rounds = 3, .part = 0, .repetitions = 1}, [] {
        const auto library = [](std::vector<double>& times) {
            CInkPointList points;
            times.push_back(longestOf([&points](int number) { points.Append(somePoint(number)); }));
        };
        const auto bare = [](std::vector<double>& times) {
            std::vector<_POINTDATA> points(Appends);
            times.push_back(longestOf(
                [&points](int number) { points[static_cast<std::size_t>(number)] = somePoint(number); }));
        };
        return Sides{library, bare};
    });
}

} // namespace bench

// Measuring the library beside the bare work of the same kind.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace bench {

[[noreturn]] void fail(const std::string& reason);

inline void require(bool holds, const std::string& what)
{
    if (!holds)
        fail(what);
}

// Seconds of processor time of the calling thread: on a busy machine the clock on the wall also counts the
// turns of other processes.
double threadTime();
// The same of all threads of the process.
double processTime();
// Seconds on the clock on the wall, for what includes waiting.
double wallTime();

// Wants at least one value. The part is a fraction: 0.5 gives the median.
double quantile(std::vector<double> values, double part);
inline double median(std::vector<double> values)
{
    return quantile(std::move(values), 0.5);
}

// What a benchmark promises; what is zero is not promised.
struct Promise
{
    double ratio = 0; // library / bare, at most
    double most = 0;  // seconds of the library, at most
    double over = 0;  // seconds of the library over the bare work, at most
};

// A side of a comparison: does its work and appends the seconds that one time took, or several such figures.
using Side = std::function<void(std::vector<double>& times)>;

// What both sides need is prepared when a repetition begins and goes when it ends.
struct Sides
{
    Side library;
    Side bare;
};

// How often a comparison runs, and which part of the figures counts: the median, or a late quantile.
struct Effort
{
    int rounds;
    double part = 0.5;
    int repetitions = 0; // 0: as many as the command line wants
};

// Registers a benchmark that runs both sides in turn.
void compare(const std::string& name, const Promise& promise, const Effort& effort,
             std::function<Sides()> prepare);

// A side of `count` calls in a row.
template <typename Work>
Side repeated(int count, Work work, double (*clock)() = threadTime)
{
    return [=](std::vector<double>& times) mutable {
        const double start = clock();
        for (int call = 0; call < count; ++call)
            work();
        times.push_back((clock() - start) / count);
    };
}

} // namespace bench

#include "comparison.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace bench {
namespace {

double secondsOf(clockid_t clock)
{
    timespec now{};
    require(clock_gettime(clock, &now) == 0, "a clock is missing");
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void report(benchmark::State& state, const char* name, double value)
{
    if (value > 0)
        state.counters[name] = value;
}

// One repetition. Which side goes first changes from round to round, so that neither always finds the caches
// that the other left.
void run(benchmark::State& state, const Promise& promise, double part, const Sides& sides)
{
    std::vector<double> library;
    std::vector<double> bare;
    std::vector<double> ignored; // the first time fills caches and the allocator's lists
    sides.library(ignored);
    sides.bare(ignored);
    bool libraryFirst = false;
    for ([[maybe_unused]] auto round : state) {
        libraryFirst = !libraryFirst;
        if (libraryFirst)
            sides.library(library);
        sides.bare(bare);
        if (!libraryFirst)
            sides.library(library);
        state.SetIterationTime(library.back());
    }
    // Of each round by itself where that is possible: the pace of a virtual machine changes in between.
    std::vector<double> ratios;
    for (std::size_t round = 0; part == 0.5 && library.size() == bare.size() && round < bare.size(); ++round)
        ratios.push_back(library[round] / bare[round]);
    const double libraryTime = quantile(std::move(library), part);
    state.counters["library"] = libraryTime;
    const double bareTime = quantile(std::move(bare), part);
    state.counters["bare"] = bareTime;
    state.counters["ratio"] = ratios.empty() ? libraryTime / bareTime : median(std::move(ratios));
    report(state, "promised_ratio", promise.ratio);
    report(state, "promised_most", promise.most);
    report(state, "promised_over", promise.over);
}

} // namespace

void fail(const std::string& reason)
{
    std::fprintf(stderr, "bench: %s\n", reason.c_str());
    std::_Exit(1); // a pad may be open
}

double threadTime()
{
    return secondsOf(CLOCK_THREAD_CPUTIME_ID);
}

double processTime()
{
    return secondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

double wallTime()
{
    return secondsOf(CLOCK_MONOTONIC);
}

double quantile(std::vector<double> values, double part)
{
    const auto at =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

void compare(const std::string& name, const Promise& promise, const Effort& effort,
             std::function<Sides()> prepare)
{
    auto* const registered = benchmark::RegisterBenchmark(
        name.c_str(), [promise, part = effort.part, prepare = std::move(prepare)](benchmark::State& state) {
            run(state, promise, part, prepare());
        });
    registered->UseManualTime()->Iterations(effort.rounds);
    if (effort.repetitions > 0)
        registered->Repetitions(effort.repetitions);
}

} // namespace bench

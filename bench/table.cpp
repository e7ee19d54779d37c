#include "table.h"

#include "comparison.h"

#include <cstdio>
#include <iterator>

namespace bench {
namespace {

std::string duration(double seconds)
{
    struct Unit
    {
        double seconds;
        const char* name;
    };
    static constexpr Unit units[] = {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {1e-9, "ns"}};
    const Unit* unit = units;
    while (seconds < unit->seconds && unit != std::end(units) - 1)
        ++unit;
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %s", seconds / unit->seconds, unit->name);
    return text;
}

std::string ratio(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, value < 0.01 ? "%.4f" : value < 0.1 ? "%.3f" : "%.2f", value);
    return text;
}

} // namespace

bool Table::ReportContext(const Context& context)
{
    PrintBasicContext(&GetErrorStream(), context);
    std::printf("%-44s %12s %12s %9s  %s\n", "", "library", "bare", "ratio", "promised");
    return true;
}

void Table::ReportRuns(const std::vector<Run>& runs)
{
    std::map<std::string, std::vector<double>> counters;
    std::string name;
    for (const Run& run : runs) {
        if (run.error_occurred)
            fail(run.benchmark_name() + ": " + run.error_message);
        if (run.run_type != Run::RT_Iteration)
            continue;
        name = run.run_name.function_name;
        for (const auto& [counter, value] : run.counters)
            counters[counter].push_back(value.value);
    }
    if (!counters.empty())
        printRow(name, counters);
}

void Table::printRow(const std::string& name, const std::map<std::string, std::vector<double>>& counters)
{
    const auto value = [&counters](const char* counter) {
        const auto found = counters.find(counter);
        return found == counters.end() ? 0 : median(found->second);
    };
    const double library = value("library");
    const double bare = value("bare");
    std::string promised;
    bool kept = true;
    const auto promise = [&](const char* counter, double measured, const std::string& text) {
        if (value(counter) == 0)
            return;
        promised += (promised.empty() ? "" : ", ") + text;
        kept = kept && measured <= value(counter);
    };
    promise("promised_ratio", value("ratio"), "<= " + ratio(value("promised_ratio")));
    promise("promised_most", library, "<= " + duration(value("promised_most")));
    promise("promised_over", library - bare, "<= " + duration(value("promised_over")) + " over");
    if (!kept) {
        promised += "  NOT KEPT";
        m_broken.push_back(name);
    }
    std::printf("%-44s %12s %12s %9s  %s\n", name.c_str(), duration(library).c_str(),
                bare > 0 ? duration(bare).c_str() : "", bare > 0 ? ratio(value("ratio")).c_str() : "",
                promised.c_str());
    std::fflush(stdout);
}

} // namespace bench

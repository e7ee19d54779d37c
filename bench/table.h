// The benchmarks' results as one table.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

// Collects the repetitions of every benchmark and prints a row with their medians when the last one is in.
class Table : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    // Names of the benchmarks that did not keep what they promise.
    const std::vector<std::string>& broken() const { return m_broken; }

private:
    void printRow(const std::string& name, const std::map<std::string, std::vector<double>>& counters);

    std::vector<std::string> m_broken;
};

} // namespace bench

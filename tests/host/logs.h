// The log files.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "surroundings.h"

namespace scribera::test {

struct LogLine
{
    std::string label;
    std::string message; // the whole message, with its tick
    bool hasTick = false;
    long long tick = 0;
    std::string text; // the message behind "<tick>-"; the whole message where there is no such beginning
};

void PrintTo(const LogLine& line, std::ostream* out);

// Reads a log and checks every line's form: "[label]:message, \n". Reports a test failure for a line that
// differs. A missing file has no lines.
std::vector<LogLine> readLog(const std::string& path);
std::vector<LogLine> mainLog();
std::vector<LogLine> inThreadLog();
void removeLogs();

std::vector<LogLine> withLabel(const std::vector<LogLine>& lines, const std::string& label);
std::vector<std::string> textsOf(const std::vector<LogLine>& lines, const std::string& label);
std::vector<std::string> labelsOf(const std::vector<LogLine>& lines);
std::string hex(const void* pointer); // as %lx writes it

template <class Function>
std::string hexOf(Function* function)
{
    return hex(reinterpret_cast<const void*>(function));
}

} // namespace scribera::test

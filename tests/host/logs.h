// The log files.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "surroundings.h"

namespace scribera::test {

using Texts = std::vector<std::string>;

struct LogLine
{
    std::string label;
    std::string message; // the whole message, with its tick
    bool hasTick = false;
    long long tick = 0;
    std::string text; // the message behind "<tick>-"; the whole message where there is no such beginning
};

void PrintTo(const LogLine& line, std::ostream* out);

// Their lines, whose form is checked: "[label]:message, \n". Reports a test failure for a line that differs.
// A missing file has no lines.
std::vector<LogLine> mainLog();
std::vector<LogLine> inThreadLog();
void removeLogs();

// Runs the call with logging on and no earlier line in either file. What it wrote to the main one.
std::vector<LogLine> logged(const std::function<void()>& call);

std::vector<LogLine> withLabel(const std::vector<LogLine>& lines, const std::string& label);
Texts textsOf(const std::vector<LogLine>& lines, const std::string& label);
std::string hex(const void* pointer); // as %lx writes it

template <class Function>
std::string hexOf(Function* function)
{
    return hex(reinterpret_cast<const void*>(function));
}

} // namespace scribera::test

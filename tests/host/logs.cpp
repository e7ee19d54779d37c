#include "logs.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <optional>

#include <gtest/gtest.h>

#include "library.h"
#include "processes.h"

namespace scribera::test {

namespace fs = std::filesystem;

void PrintTo(const LogLine& line, std::ostream* out)
{
    *out << "[" << line.label << "]:" << line.message;
}

namespace {

std::optional<LogLine> parseLine(const std::string& line)
{
    const std::string tail = ", ";
    const std::size_t labelEnd = line.find("]:");
    if (line.empty() || line.front() != '[' || labelEnd == std::string::npos || line.size() < labelEnd + 4 ||
        line.compare(line.size() - tail.size(), tail.size(), tail) != 0)
        return std::nullopt;

    LogLine parsed;
    parsed.label = line.substr(1, labelEnd - 1);
    parsed.message = line.substr(labelEnd + 2, line.size() - tail.size() - labelEnd - 2);
    parsed.text = parsed.message;
    const std::size_t tickEnd = parsed.message.find('>');
    if (parsed.message.size() > 1 && parsed.message.front() == '<' && tickEnd != std::string::npos &&
        tickEnd > 1 &&
        std::all_of(parsed.message.begin() + 1, parsed.message.begin() + static_cast<std::ptrdiff_t>(tickEnd),
                    [](char c) { return c >= '0' && c <= '9'; })) {
        parsed.hasTick = true;
        parsed.tick = std::stoll(parsed.message.substr(1, tickEnd - 1));
        if (parsed.message.compare(tickEnd + 1, 1, "-") == 0)
            parsed.text = parsed.message.substr(tickEnd + 2);
    }
    return parsed;
}

std::vector<LogLine> readLog(const std::string& path)
{
    std::vector<LogLine> lines;
    const std::string content = fileContent(path);
    std::size_t begin = 0;
    while (begin < content.size()) {
        const std::size_t end = content.find('\n', begin);
        if (end == std::string::npos) {
            ADD_FAILURE() << path << ": last line has no end: " << content.substr(begin);
            break;
        }
        const std::string line = content.substr(begin, end - begin);
        if (const std::optional<LogLine> parsed = parseLine(line))
            lines.push_back(*parsed);
        else
            ADD_FAILURE() << path << ": malformed line: " << line;
        begin = end + 1;
    }
    return lines;
}

} // namespace

std::vector<LogLine> mainLog()
{
    return readLog(mainLogFile);
}

std::vector<LogLine> inThreadLog()
{
    return readLog(inThreadLogFile);
}

void removeLogs()
{
    fs::remove(mainLogFile);
    fs::remove(inThreadLogFile);
}

std::vector<LogLine> logged(const std::function<void()>& call)
{
    removeLogs();
    setLogging(true);
    call();
    setLogging(false);
    return mainLog();
}

std::vector<LogLine> withLabel(const std::vector<LogLine>& lines, const std::string& label)
{
    std::vector<LogLine> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const LogLine& line) { return line.label == label; });
    return found;
}

Texts textsOf(const std::vector<LogLine>& lines, const std::string& label)
{
    Texts texts;
    for (const LogLine& line : withLabel(lines, label))
        texts.push_back(line.text);
    return texts;
}

std::string hex(const void* pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "%lx", reinterpret_cast<unsigned long>(pointer));
    return text;
}

} // namespace scribera::test

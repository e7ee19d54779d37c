// scribera-sim-import: turns handwriting in the common text forms into a recording.
#include "catalogues.h"
#include "files.h"
#include "recording.h"
#include "texts.h"
#include "words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

using simulator::Pad;
using simulator::RecordedSample;
using simulator::Recording;

// A row of either form: time in milliseconds, position and pressure as the file has them.
struct Row
{
    std::size_t line = 0;
    double milliseconds = 0;
    double x = 0;
    double y = 0;
    double pressure = 0;
    bool contact = false;
};

struct Ink
{
    std::vector<Row> rows;
    bool pressureIsShare = false; // 0 to 1, the largest being the pad's largest
};

enum class Form
{
    Counted, // a count line, then x y milliseconds pen_down [azimuth tilt ...] pressure
    Timed,   // seconds x y pressure
};

bool parseNumber(std::string_view text, double& value)
{
    // Far above any tablet's numbers, far below those for which arithmetic on doubles loses units.
    constexpr double Largest = 1.0e14;
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    // Nothing smaller is a measure of anything, and a quotient by it could leave the range of a double.
    if (code == std::errc() && std::fabs(value) < 1.0e-9)
        value = 0;
    return code == std::errc() && end == text.data() + text.size() && std::isfinite(value) &&
           std::fabs(value) <= Largest;
}

class InkReader
{
public:
    explicit InkReader(const std::string& name) : m_name(name) {}

    bool read(std::string_view text)
    {
        std::size_t number = 0;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            ++number;
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            if (!takeLine(line, number)) {
                m_error = m_name + ":" + std::to_string(number) + ": " + m_error;
                return false;
            }
        }
        if (m_ink.rows.empty()) {
            m_error = filled(trText("Simulator", "%1: no rows"), {m_name});
            return false;
        }
        if (m_form == Form::Counted && m_count != static_cast<std::int64_t>(m_ink.rows.size()))
            m_warning = filled(trText("Simulator", "%1:%2: the count line says %3, but there are %4 rows"),
                               {m_name, std::to_string(m_countLine), std::to_string(m_count),
                                std::to_string(m_ink.rows.size())});
        return true;
    }

    const Ink& ink() const { return m_ink; }
    const std::string& error() const { return m_error; }
    const std::string& warning() const { return m_warning; }

private:
    static constexpr std::size_t MostColumns = 16;

    bool refuse(std::string reason)
    {
        m_error = std::move(reason);
        return false;
    }

    bool takeLine(std::string_view line, std::size_t number)
    {
        std::array<std::string_view, MostColumns> words;
        std::size_t count = 0;
        const bool fits = simulator::splitWords(line, words.data(), words.size(), count);
        if (count == 0 || line.front() == '#')
            return true;
        if (!fits)
            return refuse(trText("Simulator", "more than 16 columns"));
        if (!m_form) {
            if (count == 1)
                return takeCount(words[0], number);
            if (count != 4)
                return refuse(trText("Simulator",
                                     "neither a count line nor a row of 4 columns (seconds x y pressure)"));
            m_form = Form::Timed;
            m_ink.pressureIsShare = true;
        }
        std::array<double, MostColumns> values{};
        for (std::size_t index = 0; index < count; ++index) {
            if (!parseNumber(words[index], values[index]))
                return refuse(filled(trText("Simulator", "column %1 is not a number, or too large"),
                                     {std::to_string(index + 1)}));
        }
        return m_form == Form::Counted ? takeCountedRow(values, count, number)
                                       : takeTimedRow(values, count, number);
    }

    bool takeCount(std::string_view word, std::size_t number)
    {
        if (!simulator::parseInteger(word, m_count) || m_count < 0)
            return refuse(trText("Simulator", "the count line is not 0 or a positive integer"));
        m_countLine = number;
        m_form = Form::Counted;
        return true;
    }

    bool takeCountedRow(const std::array<double, MostColumns>& values, std::size_t count, std::size_t number)
    {
        if (count < 5)
            return refuse(
                trText("Simulator", "a row needs 5 columns or more: x y milliseconds pen_down ... pressure"));
        if (values[3] != 0 && values[3] != 1)
            return refuse(trText("Simulator", "pen_down is neither 0 nor 1"));
        return takeRow({number, values[2], values[0], values[1], values[count - 1], values[3] == 1});
    }

    bool takeTimedRow(const std::array<double, MostColumns>& values, std::size_t count, std::size_t number)
    {
        if (count != 4)
            return refuse(trText("Simulator", "a row needs 4 columns: seconds x y pressure"));
        if (values[3] > 1)
            return refuse(trText("Simulator", "the pressure is not within 0 to 1"));
        return takeRow({number, values[0] * 1000.0, values[1], values[2], values[3], values[3] > 0});
    }

    bool takeRow(const Row& row)
    {
        if (row.pressure < 0)
            return refuse(trText("Simulator", "the pressure is negative"));
        if (!m_ink.rows.empty() && row.milliseconds < m_ink.rows.back().milliseconds)
            return refuse(trText("Simulator", "the time is before the previous row's"));
        if (!m_ink.rows.empty() && row.milliseconds - m_ink.rows.front().milliseconds >
                                       static_cast<double>(simulator::LongestRecording - 1000))
            return refuse(trText("Simulator", "the time is too long after the first row's"));
        m_ink.rows.push_back(row);
        return true;
    }

    std::string m_name;
    Ink m_ink;
    std::optional<Form> m_form;
    std::int64_t m_count = 0;
    std::size_t m_countLine = 0;
    std::string m_error;
    std::string m_warning;
};

// Where a row's position and pressure come to lie on the pad.
struct Mapping
{
    double scale = 1;
    double fromX = 0;
    double fromY = 0;
    double toX = 0;
    double toY = 0;
    double ySign = 1;
    double pressureScale = 1;
};

// The written part, centred with a margin, proportions kept.
Mapping fittedMapping(const Ink& ink, const Pad& pad, bool flipY)
{
    constexpr double Filled = 0.9;
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
    double largestPressure = 0;
    bool first = true;
    for (const Row& row : ink.rows) {
        if (!row.contact)
            continue;
        left = first ? row.x : std::min(left, row.x);
        right = first ? row.x : std::max(right, row.x);
        top = first ? row.y : std::min(top, row.y);
        bottom = first ? row.y : std::max(bottom, row.y);
        largestPressure = std::max(largestPressure, row.pressure);
        first = false;
    }
    const double width = right - left;
    const double height = bottom - top;
    Mapping mapping;
    if (width > 0 && height > 0)
        mapping.scale = std::min(Filled * pad.area.width / width, Filled * pad.area.height / height);
    else if (width > 0)
        mapping.scale = Filled * pad.area.width / width;
    else if (height > 0)
        mapping.scale = Filled * pad.area.height / height;
    mapping.fromX = 0.5 * (left + right);
    mapping.fromY = 0.5 * (top + bottom);
    mapping.toX = pad.area.originX + 0.5 * (pad.area.width - 1);
    mapping.toY = pad.area.originY + 0.5 * (pad.area.height - 1);
    mapping.ySign = flipY ? -1 : 1;
    mapping.pressureScale = pad.maxPressure / largestPressure;
    return mapping;
}

// Numbers that are pad units already.
Mapping padMapping(const Ink& ink, const Pad& pad, bool flipY)
{
    Mapping mapping;
    if (flipY) {
        mapping.ySign = -1;
        mapping.toY = 2.0 * pad.area.originY + pad.area.height - 1;
    }
    mapping.pressureScale = ink.pressureIsShare ? pad.maxPressure : 1;
    return mapping;
}

bool isInside(const RecordedSample& sample, const Pad& pad)
{
    const simulator::Area& area = pad.area;
    return sample.x >= area.originX && sample.x < area.originX + area.width && sample.y >= area.originY &&
           sample.y < area.originY + area.height && sample.pressure <= pad.maxPressure;
}

// Doubles far outside an int's range stay outside every pad.
int rounded(double value)
{
    return static_cast<int>(std::floor(std::clamp(value, -1.0e9, 1.0e9) + 0.5));
}

bool convert(const Ink& ink, const Pad& pad, const Mapping& mapping, const std::string& name,
             Recording& recording, std::string& error)
{
    // What the pen's last report before lifting lasts, when the file ends with the pen down.
    constexpr std::int64_t LastStep = 5;
    recording.model = pad.model;
    recording.area = pad.area;
    recording.maxPressure = pad.maxPressure;

    std::optional<double> start;
    bool inStroke = false;
    const auto liftPen = [&](std::int64_t milliseconds) {
        RecordedSample sample = recording.samples.back();
        sample.milliseconds = milliseconds;
        sample.pressure = 0;
        sample.status = simulator::PenUp;
        recording.samples.push_back(sample);
        inStroke = false;
    };
    for (const Row& row : ink.rows) {
        if (!start && row.contact)
            start = row.milliseconds;
        const auto milliseconds =
            start ? static_cast<std::int64_t>(std::floor(row.milliseconds - *start + 0.5)) : 0;
        if (!row.contact) {
            if (inStroke)
                liftPen(milliseconds);
            continue;
        }
        RecordedSample sample;
        sample.milliseconds = milliseconds;
        sample.x = rounded(mapping.toX + mapping.scale * (row.x - mapping.fromX));
        sample.y = rounded(mapping.toY + mapping.ySign * mapping.scale * (row.y - mapping.fromY));
        sample.pressure = rounded(row.pressure * mapping.pressureScale);
        if (row.pressure > 0)
            sample.pressure = std::max(sample.pressure, 1);
        sample.status = inStroke ? simulator::PenMove : simulator::PenDown;
        if (!isInside(sample, pad)) {
            error = filled(trText("Simulator", "%1:%2: position or pressure outside the pad's range for %3"),
                           {name, std::to_string(row.line), std::string(pad.model)});
            return false;
        }
        recording.samples.push_back(sample);
        inStroke = true;
    }
    if (inStroke)
        liftPen(recording.samples.back().milliseconds + LastStep);
    return true;
}

std::string usage()
{
    return filled(
        trText(
            "Simulator",
            "usage: scribera-sim-import [--model MODEL] [--pad] [--flip-y] FILE [-o OUT]\n"
            "Turns handwriting into a recording for the simulated pad. FILE is one of\n"
            "  a count line, then rows: x y milliseconds pen_down [azimuth tilt ...] pressure\n"
            "  rows without a count line: seconds x y pressure, pressure 0 to 1, 0 in the air\n\n"
            "  --model MODEL  pad to write on, default SCT580; one of these, also without SC:\n"
            "                 %1\n"
            "  --pad          the positions, and pressures that are no shares of 1, are pad units already:\n"
            "                 do not scale them\n"
            "  --flip-y       turn upside down: in the file y grows upwards\n"
            "  -o OUT         file to write, default standard output\n"
            "  --help         this text\n"
            "  --version      name and version\n\n"
            "Without --pad the written part is scaled to the pad's writing area with a margin, proportions "
            "kept,\n"
            "and the file's largest pressure becomes the pad's.\n"
            "Exit code: 0 done, 1 the file is refused or OUT cannot be written, 2 wrong arguments.\n"),
        {simulator::modelNames()});
}

int refuseArguments(const std::string& reason)
{
    std::fprintf(stderr, "scribera-sim-import: %s\n%s\n", reason.c_str(),
                 filled(trText("Simulator", "Try '%1 --help'."), {"scribera-sim-import"}).c_str());
    return 2;
}

int refuseFile(const std::string& reason)
{
    std::fprintf(stderr, "scribera-sim-import: %s\n", reason.c_str());
    return 1;
}

int import(const std::string& input, const std::string& output, const Pad& pad, bool inPadUnits, bool flipY)
{
    std::string content;
    std::string error;
    if (!simulator::readFile(input, content, error))
        return refuseFile(error);
    InkReader reader(input);
    if (!reader.read(content))
        return refuseFile(reader.error());
    if (!reader.warning().empty())
        std::fprintf(stderr, "scribera-sim-import: %s\n",
                     filled(trText("Simulator", "warning: %1"), {reader.warning()}).c_str());

    const Ink& ink = reader.ink();
    if (std::none_of(ink.rows.begin(), ink.rows.end(), [](const Row& row) { return row.contact; }))
        return refuseFile(filled(trText("Simulator", "%1: the pen is never down"), {input}));
    if (std::none_of(ink.rows.begin(), ink.rows.end(),
                     [](const Row& row) { return row.contact && row.pressure > 0; }))
        return refuseFile(
            filled(trText("Simulator", "%1: no row with the pen down has any pressure"), {input}));
    const Mapping mapping = inPadUnits ? padMapping(ink, pad, flipY) : fittedMapping(ink, pad, flipY);
    Recording recording;
    if (!convert(ink, pad, mapping, input, recording, error))
        return refuseFile(error);
    if (!simulator::writeRecording(recording, output, error))
        return refuseFile(error);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    loadCatalogues();
    std::string input;
    std::string output = "-";
    const Pad* pad = simulator::padForModel("SCT580");
    bool inPadUnits = false;
    bool flipY = false;
    bool onlyFiles = false;
    for (int index = 1; index < argc; ++index) {
        const std::string argument = argv[index];
        if (onlyFiles || !argument.starts_with('-') || argument == "-") {
            if (!input.empty())
                return refuseArguments(trText("Simulator", "more than one file"));
            input = argument;
        } else if (argument == "--help" || argument == "-h") {
            std::fputs(usage().c_str(), stdout);
            return 0;
        } else if (argument == "--version") {
            std::puts("scribera-sim-import " SCRIBERA_VERSION);
            return 0;
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--pad") {
            inPadUnits = true;
        } else if (argument == "--flip-y") {
            flipY = true;
        } else if (argument == "--model" || argument == "-o") {
            if (++index == argc)
                return refuseArguments(filled(trText("Simulator", "%1 needs a value"), {argument}));
            if (argument == "-o") {
                output = argv[index];
                continue;
            }
            pad = simulator::padForModel(argv[index]);
            if (pad == nullptr)
                return refuseArguments(filled(trText("Simulator", "there is no model '%1'"), {argv[index]}));
        } else {
            return refuseArguments(filled(trText("Simulator", "unknown option '%1'"), {argument}));
        }
    }
    if (input.empty())
        return refuseArguments(trText("Simulator", "no file named"));
    return import(input, output, *pad, inPadUnits, flipY);
}

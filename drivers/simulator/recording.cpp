#include "recording.h"

#include "files.h"
#include "texts.h"
#include "words.h"

#include <algorithm>
#include <array>
#include <limits>

namespace simulator {
namespace {

constexpr std::string_view FirstLine = "# scribera recording 1";
// Larger than any pad, small enough that a 32-bit position times it fits into 63 bits.
constexpr int LargestExtent = 1'000'000;

// Untrusted words end up in messages: keep them short and printable.
std::string quoted(std::string_view text)
{
    constexpr std::size_t Longest = 40;
    std::string result = "'";
    for (char character : text.substr(0, Longest))
        result += character >= ' ' && character <= '~' ? character : '?';
    if (text.size() > Longest)
        result += "...";
    return result + "'";
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

class RecordingParser
{
public:
    RecordingParser(Recording& recording, std::string& reason) : m_recording(recording), m_reason(reason) {}

    bool takeLine(std::string_view line)
    {
        if (trimmed(line).empty() || line.front() == '#')
            return true;
        const std::size_t colon = line.find(':');
        return colon == std::string_view::npos ? takeSample(line) : takeHeader(line, colon);
    }

    bool finish() { return headerComplete(); }

private:
    bool refuse(std::string reason)
    {
        m_reason = std::move(reason);
        return false;
    }

    bool takeHeader(std::string_view line, std::size_t colon)
    {
        const std::string_view name = trimmed(line.substr(0, colon));
        const std::string_view value = trimmed(line.substr(colon + 1));
        if (!m_recording.samples.empty())
            return refuse(
                filled(trText("Simulator", "header line %1 behind the first sample"), {quoted(name)}));
        if (name == "model") {
            if (m_hasModel)
                return refuse(filled(trText("Simulator", "second header line '%1'"), {"model"}));
            if (value.empty() || value.size() > 64)
                return refuse(trText("Simulator", "model has no name or one of more than 64 bytes"));
            m_recording.model = value;
            m_hasModel = true;
            return true;
        }
        if (name == "area")
            return takeArea(value);
        if (name == "max-pressure") {
            std::int64_t number = 0;
            if (m_recording.maxPressure != 0)
                return refuse(filled(trText("Simulator", "second header line '%1'"), {"max-pressure"}));
            if (!parseInteger(value, number) || number < 1 || number > LargestExtent)
                return refuse(
                    filled(trText("Simulator", "max-pressure %1 is not an integer from 1 to 1000000"),
                           {quoted(value)}));
            m_recording.maxPressure = static_cast<int>(number);
            return true;
        }
        return refuse(filled(trText("Simulator", "unknown header line %1"), {quoted(name)}));
    }

    bool takeArea(std::string_view value)
    {
        if (m_recording.area.width != 0)
            return refuse(filled(trText("Simulator", "second header line '%1'"), {"area"}));
        std::array<std::string_view, 4> words;
        std::size_t count = 0;
        if (!splitWords(value, words.data(), words.size(), count) || count != words.size())
            return refuse(trText("Simulator", "area needs four numbers: originX originY width height"));
        std::array<std::int64_t, 4> numbers{};
        for (std::size_t index = 0; index < words.size(); ++index) {
            const bool isExtent = index >= 2;
            if (!parseInteger(words[index], numbers[index]) || numbers[index] > LargestExtent ||
                numbers[index] < (isExtent ? 1 : -LargestExtent))
                return refuse(filled(trText("Simulator", "area number %1 is no integer or out of range"),
                                     {quoted(words[index])}));
        }
        m_recording.area = {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
                            static_cast<int>(numbers[2]), static_cast<int>(numbers[3])};
        return true;
    }

    bool headerComplete()
    {
        if (!m_hasModel)
            return refuse(filled(trText("Simulator", "header line '%1' is missing"), {"model"}));
        if (m_recording.area.width == 0)
            return refuse(filled(trText("Simulator", "header line '%1' is missing"), {"area"}));
        if (m_recording.maxPressure == 0)
            return refuse(filled(trText("Simulator", "header line '%1' is missing"), {"max-pressure"}));
        return true;
    }

    bool takeSample(std::string_view line)
    {
        if (m_recording.samples.empty() && !headerComplete())
            return false;
        std::array<std::string_view, 5> words;
        std::size_t count = 0;
        if (!splitWords(line, words.data(), words.size(), count) || count != words.size())
            return refuse(
                trText("Simulator", "a sample needs five numbers: milliseconds x y pressure status"));
        std::array<std::int64_t, 5> numbers{};
        for (std::size_t index = 0; index < words.size(); ++index) {
            if (!parseInteger(words[index], numbers[index]))
                return refuse(filled(trText("Simulator", "%1 is not an integer"), {quoted(words[index])}));
            if (index > 0 && (numbers[index] < std::numeric_limits<int>::min() ||
                              numbers[index] > std::numeric_limits<int>::max()))
                return refuse(
                    filled(trText("Simulator", "%1 does not fit into 32 bits"), {quoted(words[index])}));
        }
        if (numbers[0] < 0 || numbers[0] > LongestRecording)
            return refuse(
                filled(trText("Simulator", "time %1 is not within 0 to 1000000000 ms"), {quoted(words[0])}));
        if (!m_recording.samples.empty() && numbers[0] < m_recording.samples.back().milliseconds)
            return refuse(
                filled(trText("Simulator", "time %1 is before the previous sample's"), {quoted(words[0])}));
        m_recording.samples.push_back({numbers[0], static_cast<int>(numbers[1]), static_cast<int>(numbers[2]),
                                       static_cast<int>(numbers[3]), static_cast<int>(numbers[4])});
        return true;
    }

    Recording& m_recording;
    std::string& m_reason;
    bool m_hasModel = false;
};

constexpr int NotBase64 = -1;

int base64Value(char character)
{
    if (character >= 'A' && character <= 'Z')
        return character - 'A';
    if (character >= 'a' && character <= 'z')
        return character - 'a' + 26;
    if (character >= '0' && character <= '9')
        return character - '0' + 52;
    if (character == '+')
        return 62;
    if (character == '/')
        return 63;
    return NotBase64;
}

// Strict: no blanks inside, complete groups, padding only at the end and with unused bits zero.
bool decodeBase64(std::string_view text, std::vector<unsigned char>& bytes, std::size_t& offset,
                  std::string& reason)
{
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    const std::size_t digits = text.size() - padding;
    for (offset = 0; offset < digits; ++offset) {
        if (base64Value(text[offset]) == NotBase64) {
            reason =
                filled(trText("Simulator",
                              "byte %1 is not of the Base64 alphabet, and a recording would begin with '%2'"),
                       {quoted(text.substr(offset, 1)), std::string(FirstLine)});
            return false;
        }
    }
    offset = text.size();
    if (text.size() % 4 != 0) {
        reason = trText("Simulator", "the Base64 text ends within a group of four");
        return false;
    }
    bytes.clear();
    bytes.reserve(text.size() / 4 * 3);
    unsigned int group = 0;
    int bits = 0;
    for (std::size_t index = 0; index < digits; ++index) {
        group = (group << 6) | static_cast<unsigned int>(base64Value(text[index]));
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes.push_back(static_cast<unsigned char>(group >> bits));
            group &= (1U << bits) - 1;
        }
    }
    if (group != 0) {
        offset = digits - 1;
        reason = trText("Simulator", "the last Base64 digit carries bits that belong to no byte");
        return false;
    }
    return true;
}

std::uint64_t littleEndian(const unsigned char* bytes, int count)
{
    std::uint64_t value = 0;
    for (int index = count - 1; index >= 0; --index)
        value = (value << 8) | bytes[index];
    return value;
}

} // namespace

bool parseRecording(std::string_view text, const std::string& name, Recording& recording, std::string& error)
{
    recording = Recording();
    std::string reason;
    RecordingParser parser(recording, reason);
    std::size_t number = 0;
    const auto refuse = [&] {
        error = name + ":" + std::to_string(std::max<std::size_t>(number, 1)) + ": " + reason;
        return false;
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++number;
        if (number == 1 && line != FirstLine) {
            reason = filled(trText("Simulator", "the first line is not '%1'"), {std::string(FirstLine)});
            return refuse();
        }
        if (!parser.takeLine(line))
            return refuse();
    }
    if (number == 0)
        reason = filled(trText("Simulator", "the first line is not '%1'"), {std::string(FirstLine)});
    return number > 0 && parser.finish() ? true : refuse();
}

bool parsePacketStream(std::string_view text, const std::string& name, Recording& recording,
                       std::string& error)
{
    constexpr std::size_t RecordSize = 24;
    recording = Recording();
    recording.scalable = false;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);

    const auto refuse = [&](std::size_t offset, const std::string& reason) {
        error = name + ":" + std::to_string(offset) + ": " + reason;
        return false;
    };
    if (text.empty())
        return refuse(0, trText("Simulator", "neither a recording nor an ink packet stream, it is empty"));
    std::vector<unsigned char> bytes;
    std::size_t offset = 0;
    std::string reason;
    if (!decodeBase64(text, bytes, offset, reason))
        return refuse(offset, reason);
    const auto offsetOfByte = [](std::size_t index) { return index / 3 * 4 + index % 3; };

    const std::size_t count = bytes.size() / RecordSize;
    if (bytes.size() % RecordSize != 1)
        return refuse(
            text.size(),
            filled(trText("Simulator",
                          "the stream has %1 bytes, which is no number of 24-byte records and one byte"),
                   {std::to_string(bytes.size())}));
    if (bytes.back() != 0)
        return refuse(offsetOfByte(bytes.size() - 1),
                      trText("Simulator", "the byte behind the last record is not zero"));

    recording.samples.reserve(count);
    std::uint64_t firstTick = 0;
    bool inStroke = false;
    for (std::size_t index = 0; index < count; ++index) {
        const unsigned char* record = bytes.data() + index * RecordSize;
        const std::string number = std::to_string(index + 1);
        const unsigned int status = record[6];
        if (status > 1)
            return refuse(offsetOfByte(index * RecordSize + 6),
                          filled(trText("Simulator", "record %1: status %2 is neither 0 nor 1"),
                                 {number, std::to_string(status)}));
        const std::uint64_t tick = littleEndian(record + 8, 8);
        if (index == 0)
            firstTick = tick;
        // The difference is taken modulo 2^64, so a tick that goes back shows as an absurd one too.
        const std::uint64_t elapsed = tick - firstTick;
        if (elapsed > static_cast<std::uint64_t>(LongestRecording) ||
            (index > 0 && static_cast<std::int64_t>(elapsed) < recording.samples.back().milliseconds))
            return refuse(
                offsetOfByte(index * RecordSize + 8),
                filled(trText("Simulator",
                              "record %1: its tick goes back, or is over 1000000000 ms after the first"),
                       {number}));
        RecordedSample sample;
        sample.milliseconds = static_cast<std::int64_t>(elapsed);
        sample.x = static_cast<std::uint16_t>(littleEndian(record, 2));
        sample.y = static_cast<std::int16_t>(littleEndian(record + 2, 2));
        sample.pressure = static_cast<std::int16_t>(littleEndian(record + 4, 2));
        sample.status = status == 1 ? PenUp : inStroke ? PenMove : PenDown;
        inStroke = status == 0;
        recording.samples.push_back(sample);
    }
    return true;
}

bool readRecording(const std::string& path, Recording& recording, std::string& error)
{
    std::string content;
    if (!readFile(path, content, error))
        return false;
    return content.starts_with('#') ? parseRecording(content, path, recording, error)
                                    : parsePacketStream(content, path, recording, error);
}

std::string formatRecording(const Recording& recording)
{
    std::string text(FirstLine);
    const auto number = [&](std::int64_t value, char behind) {
        text += std::to_string(value);
        text += behind;
    };
    text += "\nmodel: " + recording.model + "\narea: ";
    number(recording.area.originX, ' ');
    number(recording.area.originY, ' ');
    number(recording.area.width, ' ');
    number(recording.area.height, '\n');
    text += "max-pressure: ";
    number(recording.maxPressure, '\n');
    for (const RecordedSample& sample : recording.samples) {
        number(sample.milliseconds, ' ');
        number(sample.x, ' ');
        number(sample.y, ' ');
        number(sample.pressure, ' ');
        number(sample.status, '\n');
    }
    return text;
}

bool writeRecording(const Recording& recording, const std::string& path, std::string& error)
{
    return writeFile(formatRecording(recording), path, error);
}

namespace {

// To the nearest, halves upwards, also below zero. divisor > 0.
std::int64_t roundedQuotient(std::int64_t dividend, std::int64_t divisor)
{
    const std::int64_t shifted = dividend + divisor / 2;
    const std::int64_t quotient = shifted / divisor;
    return shifted % divisor < 0 ? quotient - 1 : quotient;
}

int scaledPosition(int position, int fromOrigin, int fromExtent, int toOrigin, int toExtent)
{
    const std::int64_t distance = static_cast<std::int64_t>(position) - fromOrigin;
    const std::int64_t scaled = roundedQuotient(distance * toExtent, fromExtent);
    return toOrigin + static_cast<int>(std::clamp<std::int64_t>(scaled, 0, toExtent - 1));
}

} // namespace

void scaleRecording(Recording& recording, const Area& area, int maxPressure)
{
    if (!recording.scalable)
        return;
    const Area from = recording.area;
    const int fromPressure = recording.maxPressure;
    for (RecordedSample& sample : recording.samples) {
        if (sample.status < PenDown || sample.status > PenUp)
            continue;
        if (from != area) {
            sample.x = scaledPosition(sample.x, from.originX, from.width, area.originX, area.width);
            sample.y = scaledPosition(sample.y, from.originY, from.height, area.originY, area.height);
        }
        if (fromPressure != maxPressure) {
            const std::int64_t scaled =
                roundedQuotient(static_cast<std::int64_t>(sample.pressure) * maxPressure, fromPressure);
            sample.pressure = static_cast<int>(std::clamp<std::int64_t>(scaled, 0, maxPressure));
        }
    }
    recording.area = area;
    recording.maxPressure = maxPressure;
}

} // namespace simulator

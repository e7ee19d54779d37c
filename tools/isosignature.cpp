#include "isosignature.h"

#include "failures.h"
#include "incoming.h"
#include "pen/padmapping.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

// In the order of the format.
enum Channel
{
    X,
    Y,
    Z,
    VelocityX,
    VelocityY,
    AccelerationX,
    AccelerationY,
    Time,
    TimeStep,
    Force,
    TipSwitch,
    TiltX,
    TiltY,
    Azimuth,
    Elevation,
    Rotation,
    ChannelCount
};

constexpr const char* ChannelNames[ChannelCount] = {"X",  "Y", "Z", "VX", "VY", "AX", "AY", "T",
                                                    "DT", "F", "S", "TX", "TY", "Az", "El", "R"};

constexpr char Head[] = "SDI\0 10"; // with the zero byte behind it
constexpr int HeadSize = sizeof Head;

// Of a channel's preamble.
constexpr unsigned HasScaling = 0x80;
constexpr unsigned HasStatistics[] = {0x40, 0x20, 0x10, 0x08}; // smallest, largest, mean, deviation
constexpr unsigned HasNoLinearPart = 0x02;

constexpr unsigned HasExtendedData = 0x80; // of the body's preamble
constexpr std::size_t MostPoints = 0xFFFFFF;

// A scaling value's exponent and the least value of a channel with a sign are counted from 0.
constexpr int ExponentBias = 16;
constexpr int FractionBits = 11;
constexpr int SignedBias = 32768;

constexpr std::uint16_t bitOf(Channel channel)
{
    return static_cast<std::uint16_t>(0x8000U >> channel);
}

constexpr bool isSigned(int channel)
{
    return channel == X || channel == Y || (channel >= VelocityX && channel <= AccelerationY) ||
           channel == TiltX || channel == TiltY;
}

constexpr int sizeOf(int channel)
{
    return channel == TipSwitch ? 1 : 2;
}

// Writing

void appendBigEndian(QByteArray& bytes, std::uint64_t value, int size)
{
    for (int byte = size - 1; byte >= 0; --byte)
        bytes += static_cast<char>(value >> (8 * byte) & 0xFF);
}

// The nearest that there is.
std::uint16_t scalingValue(double value)
{
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent) * 2 - 1; // value = (1 + fraction) * 2^(exponent - 1)
    constexpr int steps = 1 << FractionBits;
    const int step = static_cast<int>(std::lround(fraction * steps));
    const int code = (exponent - 1 + ExponentBias) * steps + step; // a full step carries over
    return static_cast<std::uint16_t>(std::clamp(code, 0, 0xFFFF));
}

double scalingOf(unsigned code)
{
    const double fraction = (code & ((1U << FractionBits) - 1)) / static_cast<double>(1 << FractionBits);
    return std::ldexp(1 + fraction, static_cast<int>(code >> FractionBits) - ExponentBias);
}

void appendDescription(QByteArray& bytes, std::optional<double> scaling)
{
    bytes += static_cast<char>(scaling ? HasScaling : 0);
    if (scaling)
        appendBigEndian(bytes, scalingValue(*scaling), 2);
}

[[noreturn]] void refusePoint(std::size_t index, const QString& reason)
{
    throw Failure{Text::tr("point %1: %2, which the format cannot hold").arg(index + 1).arg(reason)};
}

std::uint64_t elapsed(const CInkSnapshot& ink, std::size_t from, std::size_t to)
{
    return static_cast<std::uint64_t>(ink.At(to).llTick) - static_cast<std::uint64_t>(ink.At(from).llTick);
}

constexpr std::uint64_t MostMilliseconds = std::numeric_limits<std::uint16_t>::max();

// Times since the first point where they fit, the steps otherwise.
Channel timeChannel(const CInkSnapshot& ink)
{
    return ink.Count() == 0 || elapsed(ink, 0, ink.Count() - 1) <= MostMilliseconds ? Time : TimeStep;
}

// Reading

class Input
{
public:
    Input(const QByteArray& bytes, QString name) : m_bytes(bytes), m_name(std::move(name)) {}

    [[noreturn]] void refuse(const QString& reason) const
    {
        throw Failure{QStringLiteral("%1:%2: ").arg(m_name).arg(m_at) + reason};
    }

    int left() const { return m_bytes.size() - m_at; }
    unsigned number(int size)
    {
        if (left() < size)
            refuse(Text::tr("the record ends too early"));
        unsigned value = 0;
        for (int byte = 0; byte < size; ++byte)
            value = value << 8 | static_cast<unsigned char>(m_bytes.at(m_at++));
        return value;
    }
    void expectHead()
    {
        if (m_bytes.left(4) != QByteArray::fromRawData(Head, 4))
            refuse(Text::tr("is not a signature record of ISO/IEC 19794-7"));
        m_at = 4;
        if (m_bytes.mid(4, HeadSize - 4) != QByteArray::fromRawData(Head + 4, HeadSize - 4))
            refuse(Text::tr("is not of the edition of 2007, the one that is read"));
        m_at = HeadSize;
    }
    void skip(int size)
    {
        if (left() < size)
            refuse(Text::tr("the record ends too early"));
        m_at += size;
    }

private:
    const QByteArray& m_bytes;
    const QString m_name;
    int m_at = 0;
};

struct Description
{
    std::vector<int> channels; // included, in their order
    std::array<std::optional<double>, ChannelCount> scaling;

    bool has(Channel channel) const
    {
        return std::find(channels.begin(), channels.end(), channel) != channels.end();
    }
    int pointSize() const
    {
        int size = 0;
        for (const int channel : channels)
            size += sizeOf(channel);
        return size;
    }
};

Description readDescription(Input& input)
{
    Description description;
    const unsigned included = input.number(2);
    for (int channel = 0; channel < ChannelCount; ++channel)
        if (included & bitOf(static_cast<Channel>(channel)))
            description.channels.push_back(channel);
    if (!description.has(X) || !description.has(Y))
        input.refuse(Text::tr("the record has no channels X and Y"));
    for (const int channel : description.channels) {
        const unsigned preamble = input.number(1);
        if (preamble & HasNoLinearPart)
            input.refuse(Text::tr("the linear part of channel %1 was removed, and cannot be put back")
                             .arg(QLatin1String(ChannelNames[channel])));
        if (preamble & HasScaling)
            description.scaling[static_cast<std::size_t>(channel)] = scalingOf(input.number(2));
        for (const unsigned statistic : HasStatistics)
            if (preamble & statistic)
                input.skip(sizeOf(channel));
    }
    input.skip(1); // reserved
    return description;
}

// Pad units in what is 1 in a channel of positions. Two resolutions that the format cannot tell apart are
// one, so that a pad's own records come back as they were.
double unitsOfValue(const Input& input, const Description& description, Channel channel,
                    std::optional<double> unitsPerMillimetre)
{
    if (!unitsPerMillimetre)
        return 1;
    const std::optional<double> scaling = description.scaling[channel];
    if (!scaling)
        input.refuse(
            Text::tr("channel %1 tells no length; without --units-per-mm its values are taken as pad units")
                .arg(QLatin1String(ChannelNames[channel])));
    return scalingOf(scalingValue(*unitsPerMillimetre)) / *scaling;
}

} // namespace

QByteArray toIsoSignature(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre)
{
    if (ink.Count() > MostPoints)
        throw Failure{Text::tr("there are more points than the %1 of the format").arg(MostPoints)};
    const Channel time = timeChannel(ink);
    QByteArray bytes(Head, HeadSize);
    appendBigEndian(bytes, bitOf(X) | bitOf(Y) | bitOf(time) | bitOf(Force) | bitOf(TipSwitch), 2);
    appendDescription(bytes, unitsPerMillimetre);
    appendDescription(bytes, unitsPerMillimetre);
    appendDescription(bytes, 1); // milliseconds
    appendDescription(bytes, std::nullopt);
    appendDescription(bytes, std::nullopt);
    bytes += '\0'; // reserved
    bytes += '\0'; // no extended data
    appendBigEndian(bytes, ink.Count(), 3);
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        const std::uint64_t milliseconds = time == Time ? elapsed(ink, 0, index)
                                           : index == 0 ? 0
                                                        : elapsed(ink, index - 1, index);
        if (point.usX > std::numeric_limits<std::int16_t>::max())
            refusePoint(index, Text::tr("x is %1").arg(point.usX));
        if (point.sPressure < 0)
            refusePoint(index, Text::tr("the pressure is %1").arg(point.sPressure));
        if (milliseconds > MostMilliseconds)
            refusePoint(index, Text::tr("comes after a pause of %1 ms").arg(milliseconds));
        appendBigEndian(bytes, static_cast<std::uint16_t>(SignedBias + point.usX), sizeOf(X));
        appendBigEndian(bytes, static_cast<std::uint16_t>(SignedBias + point.sY), sizeOf(Y));
        appendBigEndian(bytes, milliseconds, sizeOf(time));
        appendBigEndian(bytes, static_cast<std::uint64_t>(point.sPressure), sizeOf(Force));
        appendBigEndian(bytes, point.ucStatus == kStatusOnStroke ? 1 : 0, sizeOf(TipSwitch));
    }
    return bytes;
}

CInkSnapshot fromIsoSignature(const QByteArray& bytes, const QString& name,
                              std::optional<double> unitsPerMillimetre)
{
    Input input(bytes, name);
    input.expectHead();
    const Description description = readDescription(input);
    const double unitsOfX = unitsOfValue(input, description, X, unitsPerMillimetre);
    const double unitsOfY = unitsOfValue(input, description, Y, unitsPerMillimetre);
    const bool isExtended = (input.number(1) & HasExtendedData) != 0;
    const unsigned count = input.number(3);
    if (input.left() / description.pointSize() < static_cast<int>(count))
        input.refuse(Text::tr("the record ends before its %1 points do").arg(count));

    IncomingInk ink(name, IncomingInk::Places::Points);
    const bool hasSwitch = description.has(TipSwitch);
    double steps = 0; // of time, added up
    for (unsigned number = 1; number <= count; ++number) {
        IncomingPoint point;
        if (ink.last())
            point.tick = ink.last()->tick + AssumedStep;
        for (const int channel : description.channels) {
            const int value =
                static_cast<int>(input.number(sizeOf(channel))) - (isSigned(channel) ? SignedBias : 0);
            const double scaled = value / description.scaling[static_cast<std::size_t>(channel)].value_or(1);
            switch (channel) {
            case X:
                point.x = std::llround(value * unitsOfX);
                break;
            case Y:
                point.y = std::llround(value * unitsOfY);
                break;
            case Time:
                point.tick = std::llround(scaled);
                break;
            case TimeStep:
                steps += scaled;
                if (!description.has(Time))
                    point.tick = std::llround(steps);
                break;
            case Force:
                point.pressure = value;
                if (!hasSwitch)
                    point.status = value > 0 ? kStatusOnStroke : kStatusStrokeEnd;
                break;
            case TipSwitch:
                point.status = value > 0 ? kStatusOnStroke : kStatusStrokeEnd;
                break;
            default:
                break;
            }
        }
        ink.append(point, number);
    }
    if (isExtended)
        input.skip(static_cast<int>(input.number(2)));
    if (input.left() > 0)
        input.refuse(Text::tr("bytes follow the record"));
    return ink.ink();
}

namespace {

constexpr int ByteSteps = 256;
constexpr int CompactPointSize = 5;
constexpr std::uint64_t LongestCompactStep = 255; // ms

// Of that many equal parts of the area, the one where the position lies, and its middle again.
int partOf(int raw, int origin, int size)
{
    return static_cast<int>(std::int64_t{OffsetInArea(raw, origin, size)} * ByteSteps / size);
}

int middleOf(int part, int origin, int size)
{
    return origin + static_cast<int>((std::int64_t{2} * part + 1) * size / (std::int64_t{2} * ByteSteps));
}

} // namespace

QByteArray toCompactIsoSignature(const CInkSnapshot& ink, const CPadModel& pad)
{
    constexpr int full = ByteSteps - 1;
    QByteArray bytes;
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        const std::uint64_t step = index == 0 ? 0 : elapsed(ink, index - 1, index);
        const int pressure = std::clamp<int>(point.sPressure, 0, pad.m_nInitialMaxPressure);
        bytes += static_cast<char>(partOf(point.usX, pad.m_nPadOriginX, pad.m_nAreaWidth));
        bytes += static_cast<char>(partOf(point.sY, pad.m_nPadOriginY, pad.m_nAreaHeight));
        bytes += static_cast<char>(std::min(step, LongestCompactStep));
        bytes += static_cast<char>((2 * pressure * full + pad.m_nInitialMaxPressure) /
                                   (2 * pad.m_nInitialMaxPressure));
        bytes += static_cast<char>(point.ucStatus == kStatusOnStroke ? 1 : 0);
    }
    return bytes;
}

CInkSnapshot fromCompactIsoSignature(const QByteArray& bytes, const QString& name, const CPadModel& pad)
{
    constexpr int full = ByteSteps - 1;
    Input input(bytes, name);
    if (bytes.size() % CompactPointSize != 0)
        input.refuse(Text::tr("%1 bytes are not whole points of %2").arg(bytes.size()).arg(CompactPointSize));
    IncomingInk ink(name, IncomingInk::Places::Points);
    for (std::size_t number = 1; input.left() > 0; ++number) {
        IncomingPoint point;
        point.x = middleOf(static_cast<int>(input.number(1)), pad.m_nPadOriginX, pad.m_nAreaWidth);
        point.y = middleOf(static_cast<int>(input.number(1)), pad.m_nPadOriginY, pad.m_nAreaHeight);
        const unsigned step = input.number(1);
        point.tick = ink.last() ? ink.last()->tick + step : 0;
        point.pressure =
            (2 * input.number(1) * static_cast<unsigned>(pad.m_nInitialMaxPressure) + full) / (2 * full);
        point.status = input.number(1) > 0 ? kStatusOnStroke : kStatusStrokeEnd;
        ink.append(point, number);
    }
    return ink.ink();
}

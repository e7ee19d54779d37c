#include "signatures.h"

#include "inkto.h"
#include "random.h"
#include "support.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

class Dice
{
public:
    explicit Dice(std::uint64_t seed) : m_random(seed) {}

    std::int64_t from(std::int64_t first, std::int64_t last)
    {
        return first + static_cast<std::int64_t>(m_random.even() * static_cast<double>(last - first + 1));
    }
    bool oneIn(int count) { return from(1, count) == 1; }
    // Also the ends of the range, more often than chance would have them.
    template <typename T>
    T any()
    {
        using Limits = std::numeric_limits<T>;
        if (oneIn(4))
            return oneIn(2) ? Limits::min() : Limits::max();
        std::uint64_t bits = 0;
        for (int part = 0; part < 4; ++part)
            bits = bits << 16 | static_cast<std::uint64_t>(from(0, 0xFFFF));
        return static_cast<T>(bits);
    }
    double bell() { return m_random.bell(); }

private:
    simulator::Random m_random;
};

} // namespace

CInkSnapshot randomSignature(const CPadModel& pad, std::uint64_t seed)
{
    Dice dice(seed);
    CInkPointList points;
    _POINTDATA point{};
    point.usX = static_cast<std::uint16_t>(pad.m_nPadOriginX);
    point.sY = static_cast<std::int16_t>(pad.m_nPadOriginY);
    const auto held = [](double value, int first, int size) {
        return std::clamp(static_cast<int>(std::lround(value)), first, first + size - 1);
    };
    const std::int64_t strokes = dice.from(dice.oneIn(20) ? 0 : 1, 6);
    for (std::int64_t stroke = 0; stroke < strokes; ++stroke) {
        double x = static_cast<double>(pad.m_nPadOriginX + dice.from(0, pad.m_nAreaWidth));
        double y = static_cast<double>(pad.m_nPadOriginY + dice.from(0, pad.m_nAreaHeight));
        const double stride = pad.m_nAreaWidth / 100.0;
        double pressure = dice.from(1, 20) / 100.0; // of the highest
        double alongX = dice.bell() * stride;
        double alongY = dice.bell() * stride;
        const std::int64_t count = dice.from(dice.oneIn(10) ? 0 : 1, 80);
        for (std::int64_t number = 0; number < count; ++number) {
            point.usX = static_cast<std::uint16_t>(held(x, pad.m_nPadOriginX, pad.m_nAreaWidth));
            point.sY = static_cast<std::int16_t>(held(y, pad.m_nPadOriginY, pad.m_nAreaHeight));
            point.sPressure = static_cast<std::int16_t>(
                std::clamp<double>(pressure * pad.m_nInitialMaxPressure, 1, pad.m_nInitialMaxPressure));
            point.ucStatus = kStatusOnStroke;
            points.Append(point);
            point.llTick += dice.from(0, 9);
            alongX = 0.8 * alongX + 0.4 * dice.bell() * stride;
            alongY = 0.8 * alongY + 0.4 * dice.bell() * stride;
            pressure += 0.1 * (0.5 - pressure) + 0.02 * dice.bell();
            x += alongX;
            y += alongY;
        }
        if (stroke + 1 < strokes || !dice.oneIn(5)) {
            point.ucStatus = kStatusStrokeEnd;
            points.Append(point);
        }
        point.llTick += dice.from(20, 1500);
    }
    return points.Snapshot();
}

CInkSnapshot randomPoints(std::uint64_t seed)
{
    Dice dice(seed);
    std::vector<std::int64_t> ticks(static_cast<std::size_t>(dice.from(0, 120)));
    for (std::int64_t& tick : ticks)
        tick = dice.any<std::int64_t>();
    std::sort(ticks.begin(), ticks.end());
    CInkPointList points;
    for (const std::int64_t tick : ticks) {
        _POINTDATA point{};
        point.usX = dice.any<std::uint16_t>();
        point.sY = dice.any<std::int16_t>();
        point.sPressure = dice.any<std::int16_t>();
        point.ucStatus = dice.oneIn(5) ? kStatusStrokeEnd : kStatusOnStroke;
        point.llTick = tick;
        point.llSeconds = dice.any<std::int64_t>();
        points.Append(point);
    }
    return points.Snapshot();
}

const CPadModel& padOf(std::uint64_t seed)
{
    return *AllPads()[seed % AllPads().size()];
}

std::vector<CInkSnapshot> recordedSignatures()
{
    std::vector<CInkSnapshot> signatures;
    const QDir folder(QStringLiteral(SCRIBERA_RECORDINGS));
    for (const QString& name : folder.entryList({QStringLiteral("*.rec")}, QDir::Files))
        signatures.push_back(fromRecording(contentOf(folder.filePath(name)), name));
    EXPECT_GE(signatures.size(), 3U);
    return signatures;
}

std::string difference(const CInkSnapshot& one, const CInkSnapshot& other)
{
    if (one.Count() != other.Count())
        return std::to_string(one.Count()) + " points and " + std::to_string(other.Count());
    for (std::size_t index = 0; index < one.Count(); ++index) {
        const _POINTDATA& first = one.At(index);
        const _POINTDATA& second = other.At(index);
        if (first.usX != second.usX || first.sY != second.sY || first.sPressure != second.sPressure ||
            first.ucStatus != second.ucStatus || first.llTick != second.llTick ||
            first.llSeconds != second.llSeconds)
            return "point " + std::to_string(index) + " differs";
    }
    return {};
}

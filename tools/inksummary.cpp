#include "inksummary.h"

#include <algorithm>

namespace {

// Ticks do not decrease, but may lie further apart than a signed number reaches.
std::uint64_t milliseconds(const _POINTDATA& from, const _POINTDATA& to)
{
    return static_cast<std::uint64_t>(to.llTick) - static_cast<std::uint64_t>(from.llTick);
}

} // namespace

void Range::take(int value)
{
    m_smallest = m_empty ? value : std::min(m_smallest, value);
    m_largest = m_empty ? value : std::max(m_largest, value);
    m_empty = false;
}

std::optional<double> InkSummary::reportRate() const
{
    if (stepsDuration == 0)
        return std::nullopt;
    return static_cast<double>(steps) * 1000.0 / static_cast<double>(stepsDuration);
}

InkSummary summarise(const CInkSnapshot& ink)
{
    InkSummary summary;
    summary.points = ink.Count();
    const _POINTDATA* onStroke = nullptr; // the point before, while a stroke is open
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        summary.x.take(point.usX);
        summary.y.take(point.sY);
        summary.pressure.take(point.sPressure);
        const bool ends = point.ucStatus == kStatusStrokeEnd;
        if (onStroke) {
            ++summary.steps;
            summary.stepsDuration += milliseconds(*onStroke, point);
        } else if (!ends) {
            ++summary.strokes;
        }
        onStroke = ends ? nullptr : &point;
    }
    if (summary.points > 0)
        summary.duration = milliseconds(ink.At(0), ink.At(ink.Count() - 1));
    return summary;
}

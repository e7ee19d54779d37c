#include "inksummary.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Ticks do not decrease, but may lie further apart than a signed number reaches.
std::uint64_t milliseconds(const _POINTDATA& from, const _POINTDATA& to)
{
    return static_cast<std::uint64_t>(to.llTick) - static_cast<std::uint64_t>(from.llTick);
}

// The one in the middle; the steps are reordered.
std::uint64_t usualStep(std::vector<std::uint64_t>& steps)
{
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return *middle;
}

void findGaps(std::vector<std::uint64_t>& steps, InkSummary& summary)
{
    if (steps.empty())
        return;
    // Without multiplying what may be as long as a number can tell.
    const std::uint64_t usual = std::max<std::uint64_t>(usualStep(steps), 1);
    for (const std::uint64_t step : steps)
        if (step > 0 && (step - 1) / 3 >= usual) {
            ++summary.gaps;
            summary.longestGap = std::max(summary.longestGap, step);
        }
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
    bool hasLength = false;               // the open stroke
    std::vector<std::uint64_t> steps;
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        summary.x.take(point.usX);
        summary.y.take(point.sY);
        summary.pressure.take(point.sPressure);
        const bool ends = point.ucStatus == kStatusStrokeEnd;
        if (onStroke) {
            ++summary.steps;
            steps.push_back(milliseconds(*onStroke, point));
            summary.stepsDuration += steps.back();
            const double length = std::hypot(point.usX - onStroke->usX, point.sY - onStroke->sY);
            summary.length += length;
            summary.strokesWithLength += length > 0 && !hasLength ? 1 : 0;
            hasLength = hasLength || length > 0;
        } else if (!ends) {
            ++summary.strokes;
            hasLength = false;
        }
        onStroke = ends ? nullptr : &point;
    }
    findGaps(steps, summary);
    if (summary.points > 0) {
        const _POINTDATA& last = ink.At(ink.Count() - 1);
        summary.duration = milliseconds(ink.At(0), last);
        summary.firstSecond = ink.At(0).llSeconds;
        summary.lastSecond = last.llSeconds;
    }
    return summary;
}

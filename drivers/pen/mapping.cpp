#include "mapping.h"

#include "texts.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace pen {
namespace {

constexpr int kMicrometres = 1000; // in a millimetre

Wide magnitude(Wide value)
{
    return value < 0 ? -value : value;
}

// round(numerator / denominator), half up, kept within 0 and last; the denominator is not 0.
int roundedWithin(Wide numerator, Wide denominator, int last)
{
    if (denominator < 0) {
        numerator = -numerator;
        denominator = -denominator;
    }
    if (numerator <= 0)
        return 0;
    return static_cast<int>(std::min<Wide>((2 * numerator + denominator) / (2 * denominator), last));
}

Stretch whole(const Axis& axis)
{
    return {axis.minimum, axis.maximum, 1};
}

// The part of an axis from a distance to its beginning on, both in micrometres.
Stretch part(const Axis& axis, long long begin, long long length)
{
    const int direction = axis.span() < 0 ? -1 : 1;
    const Wide first = Wide{axis.minimum} * kMicrometres + direction * (Wide{begin} * axis.resolution);
    return {first, first + direction * (Wide{length} * axis.resolution), kMicrometres};
}

// Shortens a stretch around its middle to a length of numerator / denominator of the axis's units.
Stretch shortened(const Stretch& stretch, Wide numerator, Wide denominator)
{
    const Wide middle = (stretch.first + stretch.last) * denominator;
    const Wide length = (stretch.last < stretch.first ? -numerator : numerator) * stretch.denominator;
    return {middle - length, middle + length, 2 * stretch.denominator * denominator};
}

} // namespace

Mapping::Mapping(const Axis& x, const Axis& y, const WritingArea& area, const Settings& settings)
    : m_area(area), m_turned(settings.rotation % 180 != 0), m_horizontal(whole(x)), m_vertical(whole(y))
{
    const bool hasSize = x.resolution > 0 && y.resolution > 0;
    if (settings.area) {
        const SurfaceArea& wanted = *settings.area;
        if (!hasSize)
            throw Refusal(
                trText("PenDriver", "SCRIBERA_PEN_AREA cannot be used: the device does not tell its size"));
        const auto fits = [](const Axis& axis, long long end) {
            return Wide{end} * axis.resolution <= magnitude(axis.span()) * kMicrometres;
        };
        if (!fits(x, wanted.left + wanted.width) || !fits(y, wanted.top + wanted.height))
            throw Refusal(filled(
                trText("PenDriver", "SCRIBERA_PEN_AREA does not lie on the device, which has %1 x %2 mm"),
                {std::to_string(std::abs(x.span()) / x.resolution),
                 std::to_string(std::abs(y.span()) / y.resolution)}));
        m_horizontal = part(x, wanted.left, wanted.width);
        m_vertical = part(y, wanted.top, wanted.height);
    }

    // A device turned clockwise by 90 degrees has its y axis along the pad's x axis, from its end to its
    // beginning.
    if (m_turned)
        std::swap(m_horizontal, m_vertical);
    if (settings.rotation == 90 || settings.rotation == 180)
        std::swap(m_horizontal.first, m_horizontal.last);
    if (settings.rotation == 180 || settings.rotation == 270)
        std::swap(m_vertical.first, m_vertical.last);

    if (settings.fit == Fit::Stretch)
        return;
    const Wide unitsAcross = hasSize ? (m_turned ? y : x).resolution : 1;
    const Wide unitsDown = hasSize ? (m_turned ? x : y).resolution : 1;
    // Both stretches have one denominator: the whole axes, or parts in micrometres.
    const Wide across = magnitude(m_horizontal.last - m_horizontal.first) * unitsDown * area.height;
    const Wide down = magnitude(m_vertical.last - m_vertical.first) * unitsAcross * area.width;
    if (across > down)
        m_horizontal = shortened(m_horizontal, down, unitsDown * area.height * m_horizontal.denominator);
    else if (down > across)
        m_vertical = shortened(m_vertical, across, unitsAcross * area.width * m_vertical.denominator);
}

PadPoint Mapping::map(int x, int y) const
{
    const auto along = [](const Stretch& stretch, int value, int size) {
        return roundedWithin((value * stretch.denominator - stretch.first) * (size - 1),
                             stretch.last - stretch.first, size - 1);
    };
    return {m_area.left + along(m_horizontal, m_turned ? y : x, m_area.width),
            m_area.top + along(m_vertical, m_turned ? x : y, m_area.height)};
}

int padPressure(const std::optional<Axis>& axis, int value, int limit)
{
    if (!axis)
        return limit / 2;
    return 1 + roundedWithin((Wide{value} - axis->minimum) * (limit - 1), axis->span(), limit - 1);
}

} // namespace pen

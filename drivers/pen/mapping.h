// From the units of an input device to those of a pad, without a rounding error.
#pragma once

#include "settings.h"

#include <optional>

namespace pen {

// An axis as the kernel describes it. The far end may be the smaller value.
struct Axis
{
    int minimum;
    int maximum;
    int resolution; // units in a millimetre; 0 when the device does not say

    long long span() const { return static_cast<long long>(maximum) - minimum; }
    bool isUsable() const { return span() != 0; }
};

// The part of a pad that is signed on, in the pad's units.
struct WritingArea
{
    int left;
    int top;
    int width;
    int height;
};

struct PadPoint
{
    int x;
    int y;

    bool operator==(const PadPoint&) const = default;
};

// Products of axis spans, resolutions and areas, which 64 bits do not hold.
__extension__ typedef __int128 Wide;

// Two values of an axis, as exact fractions: those that become the first and the last unit of the pad.
struct Stretch
{
    Wide first;
    Wide last;
    Wide denominator; // of both; positive

    double firstValue() const { return static_cast<double>(first) / static_cast<double>(denominator); }
    double lastValue() const { return static_cast<double>(last) / static_cast<double>(denominator); }
};

class Mapping
{
public:
    // Throws Refusal when the settings name an area that the device does not have.
    Mapping(const Axis& x, const Axis& y, const WritingArea& area, const Settings& settings);

    // The point of the pad for one of the device, rounded half up; what lies outside lands on the edge.
    PadPoint map(int x, int y) const;

    // What of the device's axes is used, in the device's own orientation and units.
    const Stretch& usedX() const { return m_turned ? m_vertical : m_horizontal; }
    const Stretch& usedY() const { return m_turned ? m_horizontal : m_vertical; }

private:
    WritingArea m_area;
    bool m_turned;        // the device's y axis runs along the pad's x axis
    Stretch m_horizontal; // of the axis that runs along the pad's x axis
    Stretch m_vertical;
};

// Pressure of a touching pen, from 1 to the limit; half of the limit for devices that do not feel any.
int padPressure(const std::optional<Axis>& axis, int value, int limit);

} // namespace pen

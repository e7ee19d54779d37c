// What a stream holds, in a few numbers.
#pragma once

#include "ink/inkpoints.h"

#include <cstddef>
#include <cstdint>
#include <optional>

// Smallest and largest of the values taken in.
class Range
{
public:
    void take(int value);
    int smallest() const { return m_smallest; }
    int largest() const { return m_largest; }
    int size() const { return m_largest - m_smallest; }

private:
    bool m_empty = true;
    int m_smallest = 0;
    int m_largest = 0;
};

struct InkSummary
{
    std::size_t points = 0;
    std::size_t strokes = 0; // an end without a point before it is none
    Range x;
    Range y;
    Range pressure;
    std::uint64_t duration = 0; // milliseconds from the first to the last point

    // From point to point of the strokes, the pauses between strokes left out.
    std::size_t steps = 0;
    std::uint64_t stepsDuration = 0; // milliseconds

    // Steps of more than three times the usual one, where points are missing.
    std::size_t gaps = 0;
    std::uint64_t longestGap = 0; // milliseconds

    double length = 0; // of the strokes, in pad units
    std::size_t strokesWithLength = 0;

    // Of the first and the last point, in seconds since 1970.
    std::int64_t firstSecond = 0;
    std::int64_t lastSecond = 0;

    // Points a second while the pen writes; nothing when no time passes on a stroke.
    std::optional<double> reportRate() const;
};

InkSummary summarise(const CInkSnapshot& ink);

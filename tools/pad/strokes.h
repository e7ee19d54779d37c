// What a pen has done so far, in a few numbers.
#pragma once

#include "session.h"

#include <QString>

#include <cstdint>
#include <optional>

// How many, in words.
QString pointsText(int count);
QString strokesText(int count);

class Strokes
{
public:
    void take(const PadEvent& event);

    int points() const { return m_points; }
    int strokes() const { return m_strokes; }
    bool isPenDown() const { return m_isPenDown; }
    bool hasInk() const { return m_hasInk; } // a tap leaves none
    double seconds() const;                  // from the first point to the last

    // Between points of a stroke, the pauses between strokes left out.
    std::optional<double> rate() const;         // points a second, of all strokes
    std::optional<double> rateOfStroke() const; // of the last one
    std::optional<double> gap() const;          // seconds before the last point
    double longestGap() const { return m_longestGap / 1e9; }

private:
    struct Steps
    {
        std::int64_t count = 0;
        std::int64_t nanoseconds = 0;
        std::optional<double> rate() const;
    };

    int m_points = 0;
    int m_strokes = 0;
    bool m_isPenDown = false;
    bool m_hasInk = false;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
    std::int64_t m_gap = -1; // none before the first point of a stroke
    std::int64_t m_longestGap = 0;
    Steps m_all;
    Steps m_ofStroke;
};

// While a pad is waited for.
QString progressText(double seconds, const Strokes& strokes, bool answers);

#include "strokes.h"

#include "text.h"

#include <algorithm>

void Strokes::take(const PadEvent& event)
{
    using What = PadEvent::What;
    if (event.what == What::KeyTouched)
        m_isPenDown = false; // a key ends the stroke without a point
    if (event.what == What::KeyTouched || event.what == What::KeyUsed)
        return;
    const bool begins = !m_isPenDown;
    m_gap = begins ? -1 : event.nanoseconds - m_last;
    if (begins) {
        m_strokes += event.what == What::Up ? 0 : 1;
        m_ofStroke = {};
    } else {
        m_longestGap = std::max(m_longestGap, m_gap);
        for (Steps* const steps : {&m_all, &m_ofStroke}) {
            ++steps->count;
            steps->nanoseconds += m_gap;
        }
    }
    if (m_points++ == 0)
        m_first = event.nanoseconds;
    m_last = event.nanoseconds;
    m_hasInk = m_hasInk || event.what == What::Move;
    m_isPenDown = event.what != What::Up;
}

double Strokes::seconds() const
{
    return static_cast<double>(m_last - m_first) / 1e9;
}

std::optional<double> Strokes::Steps::rate() const
{
    return nanoseconds > 0
               ? std::optional(static_cast<double>(count) * 1e9 / static_cast<double>(nanoseconds))
               : std::nullopt;
}

std::optional<double> Strokes::rate() const
{
    return m_all.rate();
}

std::optional<double> Strokes::rateOfStroke() const
{
    return m_ofStroke.rate();
}

std::optional<double> Strokes::gap() const
{
    return m_gap < 0 ? std::nullopt : std::optional(static_cast<double>(m_gap) / 1e9);
}

QString pointsText(int count)
{
    return Text::tr("%n points", nullptr, count);
}

QString strokesText(int count)
{
    return Text::tr("%n strokes", nullptr, count);
}

QString progressText(double seconds, const Strokes& strokes, bool answers)
{
    return (answers ? Text::tr("%1 s, %2, %3", "seconds, points, strokes")
                    : Text::tr("%1 s, %2, %3; the pad does not answer", "seconds, points, strokes"))
        .arg(numberText(seconds, 1), pointsText(strokes.points()), strokesText(strokes.strokes()));
}

// Whether samples are whole strokes and keys, one after the other, on the pad.
#pragma once

#include "reports.h"

namespace scribera::test {

class WholeStrokes
{
public:
    WholeStrokes(const pen::WritingArea& area, int pressureLimit) : m_area(area), m_limit(pressureLimit) {}

    void take(const pen::Sample& sample)
    {
        const bool writes = sample.status == pen::PenDown || sample.status == pen::PenMove;
        const bool isOnPad = sample.x >= m_area.left && sample.x < m_area.left + m_area.width &&
                             sample.y >= m_area.top && sample.y < m_area.top + m_area.height;
        m_isRight &=
            writes ? isOnPad && sample.pressure >= 1 && sample.pressure <= m_limit : sample.pressure == 0;
        if (sample.status == pen::PenUp)
            m_isRight &= m_state != Off;
        else
            m_isRight &= m_state == (sample.status == pen::PenMove ? On : Off);
        m_state = sample.status == pen::PenUp ? Off : writes ? On : Key;
        ++m_count;
    }

    // The device is gone: a key is let go without a word.
    void end() { m_state = m_state == Key ? Off : m_state; }

    bool isRight() const { return m_isRight; }
    bool hasOpenStroke() const { return m_state == On; }
    int count() const { return m_count; }

private:
    enum State
    {
        Off,
        On,
        Key
    };
    const pen::WritingArea m_area;
    const int m_limit;
    State m_state = Off;
    bool m_isRight = true;
    int m_count = 0;
};

} // namespace scribera::test

// A recording played on the pad as if a pen did it.
#pragma once

#include "recording.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace virtualpad {

// Times are milliseconds of one steady clock; so are those of the samples that come out.
class PenPlayer
{
public:
    // The recording is already that of the pad it is played on.
    void start(double time, simulator::Recording recording, bool loop);
    // Lifts the pen if it is down: the samples that this takes.
    std::vector<simulator::RecordedSample> stop();
    bool isPlaying() const { return m_isPlaying; }

    // The samples that are due by then; of a late call not more than one pass.
    std::vector<simulator::RecordedSample> takeUntil(double time);

private:
    // Between two passes.
    static constexpr double Pause = 1500;

    std::int64_t clockTime(const simulator::RecordedSample& sample) const;

    simulator::Recording m_recording;
    bool m_loop = false;
    bool m_isPlaying = false;
    double m_begin = 0;
    std::size_t m_next = 0;
};

} // namespace virtualpad

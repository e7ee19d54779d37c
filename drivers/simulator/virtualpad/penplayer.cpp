#include "penplayer.h"

#include <cmath>
#include <utility>

namespace virtualpad {

void PenPlayer::start(double time, simulator::Recording recording, bool loop)
{
    m_recording = std::move(recording);
    m_loop = loop;
    m_begin = time;
    m_next = 0;
    m_isPlaying = !m_recording.samples.empty();
}

std::vector<simulator::RecordedSample> PenPlayer::stop()
{
    std::vector<simulator::RecordedSample> samples;
    if (m_isPlaying && m_next > 0 && m_recording.samples[m_next - 1].status != simulator::PenUp) {
        samples.push_back(m_recording.samples[m_next - 1]);
        samples.back().milliseconds = clockTime(samples.back());
        samples.back().pressure = 0;
        samples.back().status = simulator::PenUp;
    }
    m_isPlaying = false;
    return samples;
}

std::int64_t PenPlayer::clockTime(const simulator::RecordedSample& sample) const
{
    return std::llround(m_begin + static_cast<double>(sample.milliseconds));
}

std::vector<simulator::RecordedSample> PenPlayer::takeUntil(double time)
{
    std::vector<simulator::RecordedSample> samples;
    while (m_isPlaying) {
        const simulator::RecordedSample& next = m_recording.samples[m_next];
        if (m_begin + static_cast<double>(next.milliseconds) > time)
            break;
        samples.push_back(next);
        samples.back().milliseconds = clockTime(next);
        if (++m_next < m_recording.samples.size())
            continue;
        // A recording may end without lifting the pen.
        const std::vector<simulator::RecordedSample> last = stop();
        samples.insert(samples.end(), last.begin(), last.end());
        if (!m_loop)
            break;
        m_isPlaying = true;
        m_next = 0;
        m_begin = time + Pause;
    }
    return samples;
}

} // namespace virtualpad

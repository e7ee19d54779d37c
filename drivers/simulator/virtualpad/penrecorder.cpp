#include "penrecorder.h"

#include <algorithm>
#include <utility>

namespace virtualpad {

void PenRecorder::start(const simulator::Pad& pad)
{
    m_recording = simulator::Recording();
    m_recording.model = pad.model;
    m_recording.area = pad.area;
    m_recording.maxPressure = pad.maxPressure;
    m_isRecording = true;
}

simulator::Recording PenRecorder::stop()
{
    m_isRecording = false;
    std::vector<simulator::RecordedSample>& samples = m_recording.samples;
    if (!samples.empty() && samples.back().status != simulator::PenUp) {
        samples.push_back(samples.back());
        samples.back().pressure = 0;
        samples.back().status = simulator::PenUp;
    }
    return std::exchange(m_recording, simulator::Recording());
}

void PenRecorder::add(simulator::RecordedSample sample)
{
    // Nearly three hours of writing. Readers of files have their limits too.
    constexpr std::size_t MostSamples = 2'000'000;
    if (!m_isRecording || m_recording.samples.size() >= MostSamples)
        return;
    if (m_recording.samples.empty())
        m_begin = sample.milliseconds;
    const std::int64_t earlier = m_recording.samples.empty() ? 0 : m_recording.samples.back().milliseconds;
    sample.milliseconds =
        std::clamp<std::int64_t>(sample.milliseconds - m_begin, earlier, simulator::LongestRecording);
    m_recording.samples.push_back(sample);
}

} // namespace virtualpad

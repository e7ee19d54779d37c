// Keeps what the pen does on the pad as a recording.
#pragma once

#include "recording.h"

namespace virtualpad {

// Samples carry milliseconds of one steady clock. A recording begins with its first sample.
class PenRecorder
{
public:
    void start(const simulator::Pad& pad);
    // What was kept; a stroke in progress is ended.
    simulator::Recording stop();
    bool isRecording() const { return m_isRecording; }
    bool isEmpty() const { return m_recording.samples.empty(); }

    void add(simulator::RecordedSample sample);

private:
    simulator::Recording m_recording;
    bool m_isRecording = false;
    std::int64_t m_begin = 0;
};

} // namespace virtualpad

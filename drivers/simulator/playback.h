// What the sample thread plays.
#pragma once

#include "recording.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {

// A finger on the sensor, between the samples.
struct Fingerprint
{
    std::size_t position = 0; // number of samples before it
    bool isNull = false;
    std::vector<unsigned char> pixels;
    int length = 0;
    int score = 0;
};

// A recording being played: its samples, those of the closing key included, and where it stands.
struct Playback
{
    using Clock = std::chrono::steady_clock;

    std::vector<RecordedSample> samples;
    std::size_t recordedCount = 0; // samples without the closing key's
    std::size_t next = 0;
    // Delivered once, in the first pass, between the recording and the key.
    std::optional<Fingerprint> fingerprint;
    double speed = 1; // 0: as fast as the host takes them
    bool loop = false;
    Clock::time_point start;

    bool isFingerprintNext() const { return fingerprint && next == fingerprint->position; }
    bool isAtEnd() const { return next == samples.size() && !fingerprint; }
    Clock::time_point dueTime() const;
    void fingerprintDelivered();
    // At the end: back to the first sample when looping. False when the end is final.
    bool rewind();

private:
    Clock::duration scaled(std::int64_t recordedMilliseconds) const;
};

} // namespace simulator

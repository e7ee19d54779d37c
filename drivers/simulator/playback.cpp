#include "playback.h"

#include <algorithm>

namespace simulator {
namespace {

using Clock = Playback::Clock;

constexpr int LoopPause = 5;
// Before the key's pause is over: the key ends what the finger is part of.
constexpr int FingerprintPause = 120;

} // namespace

// Not for speed 0.
Clock::duration Playback::scaled(std::int64_t recordedMilliseconds) const
{
    // Ten years at most: a tiny speed must not overflow the clock.
    constexpr double Longest = 3.0e17;
    const double nanoseconds = static_cast<double>(recordedMilliseconds) * 1.0e6 / speed;
    return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(nanoseconds, Longest)));
}

Clock::time_point Playback::dueTime() const
{
    if (speed == 0)
        return start;
    if (!isFingerprintNext())
        return start + scaled(samples[next].milliseconds);
    const std::int64_t end = next == 0 ? 0 : samples[next - 1].milliseconds;
    return start + scaled(end + FingerprintPause);
}

void Playback::fingerprintDelivered()
{
    // A key's pause has room for the finger; without one the next pass begins later.
    if (next == samples.size() && speed > 0)
        start += scaled(FingerprintPause);
    fingerprint.reset();
}

bool Playback::rewind()
{
    if (!loop || samples.empty())
        return false;
    if (speed > 0)
        start += scaled(samples.back().milliseconds + LoopPause);
    next = 0;
    return true;
}

} // namespace simulator

// Random numbers that are the same on every machine.
#pragma once

#include <cstdint>

namespace simulator {

// SplitMix64.
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    // Evenly from 0 up to 1.
    double even()
    {
        m_state += 0x9e3779b97f4a7c15U;
        std::uint64_t value = m_state;
        value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
        value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
        value ^= value >> 31;
        return static_cast<double>(value >> 11) * (1.0 / 9007199254740992.0);
    }

    // A bell of deviation 1, never beyond 3.5.
    double bell()
    {
        // One at a time: the order of calls within one expression is the compiler's.
        double sum = 0;
        for (int count = 0; count < 4; ++count)
            sum += even();
        return (sum - 2.0) * 1.7320508075688772;
    }

private:
    std::uint64_t m_state;
};

} // namespace simulator

#include "pensampler.h"

#include <algorithm>
#include <cmath>

namespace virtualpad {
namespace {

// At this speed, in widths of the writing area a second, half of what speed can take away is gone.
constexpr double HalfSpeed = 1.2;
constexpr double PressureSettling = 45; // milliseconds

int position(double fraction, int origin, int extent)
{
    return origin + static_cast<int>(std::lround(fraction * (extent - 1)));
}

} // namespace

void SpeedPressure::begin()
{
    m_pressure = Least;
}

double SpeedPressure::next(double speed, double milliseconds)
{
    const double wanted = Least + (Most - Least) / (1 + std::max(speed, 0.0) / HalfSpeed);
    m_pressure += (wanted - m_pressure) * (1 - std::exp(-std::max(milliseconds, 0.0) / PressureSettling));
    return m_pressure;
}

void PenSampler::down(double time, Place place, std::optional<double> pressure)
{
    m_inputs.clear();
    m_active = true;
    m_end.reset();
    m_begin = time;
    m_count = 0;
    m_last.reset();
    m_speedPressure.begin();
    add(time, place, pressure);
}

void PenSampler::move(double time, Place place, std::optional<double> pressure)
{
    if (m_active && !m_end)
        add(time, place, pressure);
}

void PenSampler::up(double time)
{
    if (m_active && !m_end)
        m_end = std::max(time, m_inputs.back().time);
}

void PenSampler::add(double time, Place place, std::optional<double> pressure)
{
    place = {std::clamp(place.x, 0.0, 1.0), std::clamp(place.y, 0.0, 1.0)};
    if (pressure)
        pressure = std::clamp(*pressure, 0.0, 1.0);
    if (!m_inputs.empty()) {
        const Input last = m_inputs.back();
        time = std::max(time, last.time);
        if (time - last.time > Rest)
            m_inputs.push_back({time - Rest / 4, last.place, last.pressure});
    }
    m_inputs.push_back({time, place, pressure});
}

std::vector<simulator::RecordedSample> PenSampler::takeUntil(double time)
{
    std::vector<simulator::RecordedSample> samples;
    while (m_active) {
        const double sampled = m_begin + static_cast<double>(m_count) * ReportInterval;
        // The first sample waits for nothing: the pad feels the touch itself.
        if (m_count > 0 && sampled + Lag > time)
            break;
        const bool isLast = m_end && m_count > 0 && sampled >= *m_end;
        samples.push_back(sampleAt(sampled, isLast         ? simulator::PenUp
                                            : m_count == 0 ? simulator::PenDown
                                                           : simulator::PenMove));
        ++m_count;
        m_active = !isLast;
    }
    return samples;
}

std::vector<simulator::RecordedSample> PenSampler::finish()
{
    if (!m_active)
        return {};
    if (!m_end)
        m_end = std::max(m_inputs.back().time, m_begin + static_cast<double>(m_count) * ReportInterval);
    return takeUntil(*m_end + Lag + ReportInterval);
}

simulator::RecordedSample PenSampler::sampleAt(double time, int status)
{
    while (m_inputs.size() > 1 && m_inputs[1].time <= time)
        m_inputs.pop_front();
    Place place = m_inputs.front().place;
    std::optional<double> pressure = m_inputs.front().pressure;
    if (m_inputs.size() > 1) {
        const Input& from = m_inputs[0];
        const Input& to = m_inputs[1];
        const double part = std::clamp((time - from.time) / (to.time - from.time), 0.0, 1.0);
        place = {std::lerp(from.place.x, to.place.x, part), std::lerp(from.place.y, to.place.y, part)};
        if (from.pressure && to.pressure)
            pressure = std::lerp(*from.pressure, *to.pressure, part);
    }
    if (!pressure) {
        double speed = 0;
        if (m_last) {
            const double height = static_cast<double>(m_pad->area.height) / m_pad->area.width;
            speed = std::hypot(place.x - m_last->x, (place.y - m_last->y) * height) * ReportRate;
        }
        pressure = m_speedPressure.next(speed, m_last ? ReportInterval : 0);
    }
    m_last = place;

    simulator::RecordedSample sample;
    sample.milliseconds = std::llround(time);
    sample.x = position(place.x, m_pad->area.originX, m_pad->area.width);
    sample.y = position(place.y, m_pad->area.originY, m_pad->area.height);
    // A pen that touches presses, however little.
    sample.pressure =
        std::clamp(static_cast<int>(std::lround(*pressure * m_pad->maxPressure)), 1, m_pad->maxPressure);
    if (status == simulator::PenUp)
        sample.pressure = 0;
    sample.status = status;
    return sample;
}

} // namespace virtualpad

// Makes of a mouse or a stylus, which report when they like, a pen that the pad samples at its report rate.
#pragma once

#include "pads.h"
#include "recording.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace virtualpad {

constexpr int ReportRate = 200; // samples a second, of every model
constexpr double ReportInterval = 1000.0 / ReportRate;

// A place on the writing area in fractions of its size.
struct Place
{
    double x = 0;
    double y = 0;
};

// A mouse has no pressure: a quick hand presses less than a slow one, and no hand changes at once.
class SpeedPressure
{
public:
    // Fractions of the largest pressure between which all results lie.
    static constexpr double Least = 0.10;
    static constexpr double Most = 0.60;

    void begin();
    // speed in widths of the writing area a second, over that many milliseconds.
    double next(double speed, double milliseconds);

private:
    double m_pressure = Least;
};

// Times are milliseconds of one steady clock; so are those of the samples that come out.
class PenSampler
{
public:
    explicit PenSampler(const simulator::Pad& pad) : m_pad(&pad) {}

    void setPad(const simulator::Pad& pad) { m_pad = &pad; }

    // pressure: of a stylus, 0 to 1; without one it follows from the speed. A place outside is moved to the
    // nearest edge.
    void down(double time, Place place, std::optional<double> pressure = std::nullopt);
    void move(double time, Place place, std::optional<double> pressure = std::nullopt);
    void up(double time);

    // From down() until the sample with which the pen is lifted has been taken.
    bool isActive() const { return m_active; }

    // The samples that are due by then. They lag Lag milliseconds behind the hand, so that there is a later
    // position to draw the line to.
    std::vector<simulator::RecordedSample> takeUntil(double time);
    // All that is left of a stroke that has been ended; ends the stroke if it has not.
    std::vector<simulator::RecordedSample> finish();

    static constexpr double Lag = 20;

private:
    struct Input
    {
        double time = 0;
        Place place;
        std::optional<double> pressure;
    };

    // A pen that rested draws no line through its rest.
    static constexpr double Rest = 40;

    void add(double time, Place place, std::optional<double> pressure);
    simulator::RecordedSample sampleAt(double time, int status);

    const simulator::Pad* m_pad;
    std::deque<Input> m_inputs; // the one before the next sample's time, and the later ones
    bool m_active = false;
    std::optional<double> m_end;
    double m_begin = 0;
    std::int64_t m_count = 0; // samples since m_begin
    std::optional<Place> m_last;
    SpeedPressure m_speedPressure;
};

} // namespace virtualpad

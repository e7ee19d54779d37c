// Points that come in from another format.
#pragma once

#include "ink/inkpoints.h"

#include <QString>

#include <cstdint>
#include <optional>

// Milliseconds from point to point where a format tells no times: what the pads report.
constexpr std::int64_t AssumedStep = 5;

// Of every point where a format tells no pressures: about half of what most pads know, so that there is
// something to draw.
constexpr std::int64_t AssumedPressure = 1024;

struct IncomingPoint
{
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t pressure = AssumedPressure;
    std::int64_t status = kStatusOnStroke;
    std::int64_t tick = 0;
    std::int64_t seconds = 0;
};

// Takes points that an ink packet stream can hold, and no others.
class IncomingInk
{
public:
    // Faults are told of the input of that name, and of the place in it that is counted like this: "file:7: "
    // with lines, "file: point 7: " otherwise.
    enum class Places
    {
        Lines,
        Points
    };
    IncomingInk(QString name, Places places) : m_name(std::move(name)), m_places(places) {}

    // Throws Failure, with the place.
    void append(const IncomingPoint& point, std::size_t place);
    [[noreturn]] void refuse(std::size_t place, const QString& reason) const;

    const std::optional<IncomingPoint>& last() const { return m_last; }
    CInkSnapshot ink() const { return m_points.Snapshot(); }

private:
    const QString m_name;
    const Places m_places;
    CInkPointList m_points;
    std::optional<IncomingPoint> m_last;
};

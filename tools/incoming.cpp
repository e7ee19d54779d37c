#include "incoming.h"

#include "failures.h"
#include "text.h"

#include <limits>

namespace {

struct Field
{
    const char* name;
    std::int64_t IncomingPoint::*value;
    std::int64_t smallest;
    std::int64_t largest;
};

template <typename T>
constexpr Field fieldOf(const char* name, std::int64_t IncomingPoint::*value)
{
    return {name, value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

constexpr Field NarrowFields[] = {
    fieldOf<decltype(_POINTDATA::usX)>("x", &IncomingPoint::x),
    fieldOf<decltype(_POINTDATA::sY)>("y", &IncomingPoint::y),
    fieldOf<decltype(_POINTDATA::sPressure)>("pressure", &IncomingPoint::pressure),
    {"status", &IncomingPoint::status, kStatusOnStroke, kStatusStrokeEnd},
};

} // namespace

void IncomingInk::refuse(std::size_t place, const QString& reason) const
{
    const QString pattern =
        m_places == Places::Lines ? QStringLiteral("%1:%2: %3") : Text::tr("%1: point %2: %3");
    throw Failure{pattern.arg(m_name, QString::number(place), reason)};
}

void IncomingInk::append(const IncomingPoint& point, std::size_t place)
{
    for (const Field& field : NarrowFields) {
        const std::int64_t value = point.*field.value;
        if (value < field.smallest || value > field.largest)
            refuse(place, Text::tr("%1 %2 is not within %3 to %4")
                              .arg(QLatin1String(field.name))
                              .arg(value)
                              .arg(field.smallest)
                              .arg(field.largest));
    }
    if (m_last && point.tick < m_last->tick)
        refuse(place,
               Text::tr("time %1 is before the previous point's, %2").arg(point.tick).arg(m_last->tick));
    _POINTDATA stored{};
    stored.usX = static_cast<std::uint16_t>(point.x);
    stored.sY = static_cast<std::int16_t>(point.y);
    stored.sPressure = static_cast<std::int16_t>(point.pressure);
    stored.ucStatus = static_cast<std::uint8_t>(point.status);
    stored.llTick = point.tick;
    stored.llSeconds = point.seconds;
    m_points.Append(stored);
    m_last = point;
}

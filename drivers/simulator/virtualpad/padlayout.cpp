#include "padlayout.h"

#include "padstate.h"

#include <algorithm>

namespace virtualpad {
namespace {

// All in widths of the writing area.
constexpr double Side = 0.075;
constexpr double Top = 0.07;
constexpr double Bottom = 0.175;
constexpr double BezelWidth = 0.016;
constexpr double KeyWidth = 0.17;
constexpr double KeyHeight = 0.072;
constexpr double SensorZone = 0.19;
constexpr double SensorWidth = 0.115;
constexpr double Air = 0.045; // around the pad, for its shadow

} // namespace

PadLayout::PadLayout(const simulator::Pad& pad, QSizeF space)
{
    const double height = static_cast<double>(pad.area.height) / pad.area.width;
    const double zone = hasFingerprintSensor(pad) ? SensorZone : 0;
    const double bodyWidth = 1 + 2 * Side + zone;
    const double bodyHeight = height + Top + Bottom;
    const double unit = std::max(
        std::min(space.width() / (bodyWidth + 2 * Air), space.height() / (bodyHeight + 2 * Air)), 1.0);
    const auto box = [&](double x, double y, double width, double tall) {
        return QRectF(body.left() + x * unit, body.top() + y * unit, width * unit, tall * unit);
    };
    body = QRectF((space.width() - bodyWidth * unit) / 2, (space.height() - bodyHeight * unit) / 2,
                  bodyWidth * unit, bodyHeight * unit);
    screen = box(Side, Top, 1, height);
    bezel = box(Side - BezelWidth, Top - BezelWidth, 1 + 2 * BezelWidth, height + 2 * BezelWidth);

    const double keyTop = Top + height + (Bottom + BezelWidth - KeyHeight) / 2;
    const double middle = Side + 0.5;
    cancelKey = box(middle - KeyWidth - 0.03, keyTop, KeyWidth, KeyHeight);
    confirmKey = box(middle + 0.03, keyTop, KeyWidth, KeyHeight);
    const double lightSize = 0.014;
    light = box(Side, keyTop + (KeyHeight - lightSize) / 2, lightSize, lightSize);
    label = box(Side + 1 - 0.24, keyTop, 0.24, KeyHeight);
    if (zone > 0) {
        const double tall = SensorWidth * simulator::FingerprintHeight / simulator::FingerprintWidth;
        sensor =
            box(Side + 1 + (zone + Side - SensorWidth) / 2, Top + (height - tall) / 2, SensorWidth, tall);
    }
}

Place PadLayout::placeAt(QPointF position) const
{
    return {(position.x() - screen.left()) / screen.width(), (position.y() - screen.top()) / screen.height()};
}

} // namespace virtualpad

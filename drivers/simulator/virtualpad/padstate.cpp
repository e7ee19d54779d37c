#include "padstate.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace virtualpad {

bool hasScreen(const simulator::Pad& pad)
{
    return pad.deviceType != 3 && pad.deviceType != 4;
}

bool hasFingerprintSensor(const simulator::Pad& pad)
{
    return pad.deviceType == 7;
}

void PadState::setPad(const simulator::Pad& pad)
{
    m_pad = &pad;
    m_isPenDown = false;
    m_pressedKey.reset();
    clear();
}

void PadState::hostCame()
{
    clear();
    m_hasHost = true;
    m_screenOn = false;
    m_withPressure = true;
}

void PadState::hostLeft()
{
    clear();
    m_hasHost = false;
    m_screenOn = true;
    m_withPressure = true;
}

void PadState::showScreen(bool on)
{
    m_screenOn = on;
    if (!on)
        clear();
}

void PadState::clear()
{
    removeInk();
    m_picture.reset();
    m_versionShown = false;
}

void PadState::showVersion(bool shown, std::string text)
{
    m_versionShown = shown;
    m_versionText = std::move(text);
}

void PadState::showPicture(simulator::padlink::Picture picture)
{
    m_picture = std::move(picture);
}

void PadState::removeInk()
{
    m_ink.clear();
    m_isStrokeBegun = false;
    ++m_sheet;
}

void PadState::apply(const simulator::RecordedSample& sample)
{
    switch (sample.status) {
    case simulator::PenDown:
    case simulator::PenMove:
        m_isPenDown = true;
        m_pressedKey.reset();
        break;
    case simulator::CancelKey:
    case simulator::ConfirmKey:
        m_isPenDown = false;
        m_isStrokeBegun = false;
        m_pressedKey = sample.status == simulator::ConfirmKey ? Key::Confirm : Key::Cancel;
        return;
    case simulator::PenUp:
        m_isPenDown = false;
        m_isStrokeBegun = false;
        // Hosts count on that: their first clearing after this key leaves the pad alone.
        if (std::exchange(m_pressedKey, std::nullopt) == Key::Cancel)
            clear();
        return;
    default:
        return;
    }
    if (!isLit() || m_ink.size() >= MostInk)
        return;
    const simulator::Area& area = m_pad->area;
    const auto part = [](int position, int origin, int extent) {
        // A recording's places may lie anywhere.
        const std::int64_t distance = std::int64_t{position} - origin;
        return std::clamp(static_cast<float>(distance) / static_cast<float>(extent - 1), 0.0F, 1.0F);
    };
    InkPoint point;
    point.x = part(sample.x, area.originX, area.width);
    point.y = part(sample.y, area.originY, area.height);
    point.pressure =
        std::clamp(static_cast<float>(sample.pressure) / static_cast<float>(m_pad->maxPressure), 0.0F, 1.0F);
    point.beginsStroke = sample.status == simulator::PenDown || !m_isStrokeBegun;
    m_isStrokeBegun = true;
    m_ink.push_back(point);
}

} // namespace virtualpad

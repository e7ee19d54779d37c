#include "reports.h"

#include <linux/input.h>

#include <algorithm>
#include <utility>

namespace pen {
namespace {

// The bit of a tool, 0 for a code that is none.
unsigned toolBit(unsigned code)
{
    return code >= BTN_TOOL_PEN && code <= BTN_TOOL_LENS ? 1u << (code - BTN_TOOL_PEN) : 0;
}

bool writes(unsigned tool, const Surface& surface)
{
    return tool == BTN_TOOL_PEN || tool == BTN_TOOL_BRUSH || tool == BTN_TOOL_PENCIL ||
           tool == BTN_TOOL_AIRBRUSH || (tool == BTN_TOOL_FINGER && surface.fingersWrite);
}

} // namespace

Reports::Reports(const Surface& surface, const Mapping& mapping, int pressureLimit, Send send)
    : m_surface(surface), m_mapping(mapping), m_pressureLimit(pressureLimit), m_send(std::move(send)),
      m_contacts(static_cast<std::size_t>(std::max(surface.slots, 0)))
{
    if (m_surface.pressure)
        m_tip.pressure = m_surface.pressure->minimum;
}

void Reports::setKeyCodes(unsigned confirm, unsigned cancel)
{
    m_confirmCode = confirm;
    m_cancelCode = cancel;
}

void Reports::take(unsigned type, unsigned code, int value)
{
    if (type == EV_KEY)
        takeKey(code, value);
    else if (type == EV_ABS && m_surface.touch == Touch::Contacts)
        takeContact(code, value);
    else if (type == EV_ABS)
        takeAbsolute(code, value);
    else if (type == EV_SYN && code == SYN_REPORT)
        report();
}

void Reports::takeKey(unsigned code, int value)
{
    constexpr int kRepeat = 2;
    if (value == kRepeat)
        return;
    const bool down = value != 0;
    if (code == BTN_TOUCH)
        m_touchButton = down;
    if (const unsigned bit = toolBit(code)) {
        unsigned& tools = writes(code, m_surface) ? m_penTools : m_otherTools;
        tools = down ? tools | bit : tools & ~bit;
        m_hasPenTool |= m_penTools != 0;
    }
    if (code != 0 && code == m_confirmCode)
        m_keys.emplace_back(ConfirmKey, down);
    if (code != 0 && code == m_cancelCode)
        m_keys.emplace_back(CancelKey, down);
}

void Reports::takeAbsolute(unsigned code, int value)
{
    if (code == ABS_X)
        m_tip.x = value;
    else if (code == ABS_Y)
        m_tip.y = value;
    else if (code == ABS_PRESSURE)
        m_tip.pressure = value;
}

void Reports::takeContact(unsigned code, int value)
{
    if (code == ABS_MT_SLOT) {
        m_slot = static_cast<std::size_t>(value);
        return;
    }
    if (code < ABS_MT_TOUCH_MAJOR || code > ABS_MT_TOOL_Y || m_slot >= m_contacts.size())
        return; // of the pointer that the kernel makes of the contacts, or of a slot that the device does not
                // have
    Contact& contact = m_contacts[m_slot];
    switch (code) {
    case ABS_MT_TRACKING_ID:
        contact.isNew = value >= 0 && value != contact.id;
        contact.palm = contact.palm && !contact.isNew;
        contact.id = std::max(value, -1);
        break;
    case ABS_MT_POSITION_X:
        contact.x = value;
        break;
    case ABS_MT_POSITION_Y:
        contact.y = value;
        break;
    case ABS_MT_PRESSURE:
        contact.pressure = value;
        break;
    case ABS_MT_TOOL_TYPE:
        contact.palm = value == MT_TOOL_PALM;
        break;
    default:
        break;
    }
    contact.isTouched = true;
}

void Reports::report()
{
    if (m_surface.touch == Touch::Contacts)
        reportContacts();
    else
        reportTip();
    for (const auto& [which, down] : std::exchange(m_keys, {}))
        key(which, down);
}

bool Reports::tipTouches() const
{
    // A pen out of range touches nothing, whatever the button says.
    if (m_otherTools != 0 || (m_hasPenTool && m_penTools == 0))
        return false;
    return m_surface.touch == Touch::Button ? m_touchButton : m_tip.pressure != m_surface.pressure->minimum;
}

void Reports::reportTip()
{
    if (tipTouches())
        put(m_tip);
    else
        lift();
}

void Reports::reportContacts()
{
    bool penIsTouched = false;
    if (m_pen) {
        const Contact& contact = m_contacts[*m_pen];
        penIsTouched = contact.isTouched;
        if (contact.id != m_penId || contact.palm) {
            lift();
            m_pen.reset();
        }
    }
    const bool others =
        !penIsTouched && std::any_of(m_contacts.begin(), m_contacts.end(),
                                     [](const Contact& contact) { return contact.isTouched; });
    if (m_pen) {
        if (!others)
            put(m_contacts[*m_pen]);
    } else {
        for (std::size_t slot = 0; slot < m_contacts.size() && !m_pen; ++slot) {
            const Contact& contact = m_contacts[slot];
            if (contact.isNew && contact.id >= 0 && !contact.palm) {
                m_pen = slot;
                m_penId = contact.id;
                put(contact);
            }
        }
    }
    for (Contact& contact : m_contacts) {
        contact.isTouched = false;
        contact.isNew = false;
    }
}

void Reports::put(const Contact& at)
{
    if (m_pressedKey)
        key(*m_pressedKey, false);
    const PadPoint point = m_mapping.map(at.x, at.y);
    m_last = {point.x, point.y, padPressure(m_surface.pressure, at.pressure, m_pressureLimit),
              m_isOn ? PenMove : PenDown};
    m_isOn = true;
    m_send(m_last);
}

void Reports::lift()
{
    if (!m_isOn)
        return;
    m_isOn = false;
    m_send({m_last.x, m_last.y, 0, PenUp});
}

void Reports::lose()
{
    m_keys.clear();
    lift();
    // A contact that is still there afterwards goes on with a stroke of its own.
    if (m_pen)
        m_contacts[*m_pen].isNew = true;
    m_pen.reset();
}

void Reports::end()
{
    lift();
    m_pressedKey.reset();
}

void Reports::key(Status key, bool down)
{
    if (down && !m_isOn && !m_pressedKey) {
        m_pressedKey = key;
        m_send({0, 0, 0, key});
    } else if (!down && m_pressedKey == key) {
        m_pressedKey.reset();
        m_send({0, 0, 0, PenUp});
    }
}

} // namespace pen

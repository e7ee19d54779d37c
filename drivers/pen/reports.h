// The events of an input device as the samples of a pad.
#pragma once

#include "mapping.h"

#include <functional>
#include <optional>
#include <vector>

namespace pen {

// The values of a pad's pen status.
enum Status : int
{
    PenDown = 0,
    PenMove = 1,
    PenUp = 2,
    CancelKey = 3,
    ConfirmKey = 4,
};

struct Sample
{
    int x;
    int y;
    int pressure;
    int status;

    bool operator==(const Sample&) const = default;
};

// How a device tells that somebody touches it.
enum class Touch
{
    Contacts, // slots of a multitouch surface
    Button,   // the tip, or a single finger, by BTN_TOUCH
    Pressure  // only by a pressure that is not the least
};

struct Surface
{
    Touch touch = Touch::Button;
    Axis x{};
    Axis y{};
    std::optional<Axis> pressure;
    int slots = 0;             // of a multitouch surface
    bool fingersWrite = false; // there is no pen that a finger would be beside
};

// A device's events, report by report:
//
//   Off --- a report finds the tip on the surface: pen down -----------------------> On
//   On ---- each further report: pen move -----------------------------------------> On
//   On ---- the tip leaves, the tool is turned, events are lost, the device goes: up -> Off
//   Off --- a button that is a key goes down: key touched --------------------------> Key
//   Key --- it comes up: up ----------------------------------------------------------> Off
//   Key --- the tip touches: up, and then as from Off
//
// Nothing else gives a sample: neither hovering nor the eraser, a mouse, a second finger, or a button while
// the tip is on the surface. One thread uses an object of this class.
class Reports
{
public:
    using Send = std::function<void(const Sample&)>;

    Reports(const Surface& surface, const Mapping& mapping, int pressureLimit, Send send);

    // What the device's buttons that are keys are; a code of 0 is none.
    void setKeyCodes(unsigned confirm, unsigned cancel);

    // One event of the device, or of its state when that is taken for the first time or anew.
    void take(unsigned type, unsigned code, int value);

    // The system has lost events; the device's state follows.
    void lose();

    // The device is gone, or the pad is closed. What was drawn is ended; a key is let go without a word, as
    // it might confirm what nobody confirmed.
    void end();

    // A key that is a button of another device.
    void key(Status key, bool down);

    // A key is let go without a word, since nobody will tell of it any more.
    void forgetKey() { m_pressedKey.reset(); }

private:
    struct Contact
    {
        int id = -1; // -1: nobody touches
        int x = 0;
        int y = 0;
        int pressure = 0;
        bool palm = false;
        bool isNew = false;     // may begin a stroke with the next report
        bool isTouched = false; // named by the report so far
    };

    void takeKey(unsigned code, int value);
    void takeAbsolute(unsigned code, int value);
    void takeContact(unsigned code, int value);
    void report();
    void reportTip();
    void reportContacts();
    bool tipTouches() const;
    void put(const Contact& at);
    void lift();

    const Surface m_surface;
    const Mapping m_mapping;
    const int m_pressureLimit;
    const Send m_send;

    unsigned m_confirmCode = 0;
    unsigned m_cancelCode = 0;
    std::vector<std::pair<Status, bool>> m_keys; // of the report so far, in their order

    Contact m_tip; // of a device without slots
    bool m_touchButton = false;
    unsigned m_penTools = 0;   // tools in range that write, as bits
    unsigned m_otherTools = 0; // and those that do not
    bool m_hasPenTool = false; // such a tool has been in range

    std::vector<Contact> m_contacts;
    std::size_t m_slot = 0;           // of the contact that the next events are about
    std::optional<std::size_t> m_pen; // the contact that writes
    int m_penId = -1;                 // and its id

    bool m_isOn = false;
    std::optional<Status> m_pressedKey;
    Sample m_last{0, 0, 0, PenUp}; // of the stroke
};

} // namespace pen

// The input devices of the machine, and which of them can be signed on.
#pragma once

#include "reports.h"

#include <bitset>
#include <memory>
#include <string>
#include <vector>

struct libevdev;
struct udev;

namespace pen {

// An open device. Closing it gives it back to everybody else.
class InputDevice
{
public:
    // Opens a node for reading, without waiting for events. Throws Refusal, also where there is no
    // permission.
    explicit InputDevice(const std::string& node);
    InputDevice(InputDevice&&) noexcept = default;
    InputDevice& operator=(InputDevice&&) noexcept = default;
    ~InputDevice() = default;

    const std::string& node() const { return m_node; }
    std::string name() const;
    libevdev* handle() const { return m_handle.get(); }
    int descriptor() const;
    bool has(unsigned type, unsigned code) const;
    // Bus, vendor, product, version and serial number, by which a device is known again.
    std::string identity() const;

    // Takes the device away from everybody else. False where the system refuses.
    bool grab();

private:
    struct Close
    {
        void operator()(libevdev* handle) const;
    };
    std::string m_node;
    std::unique_ptr<libevdev, Close> m_handle;
};

enum class Kind
{
    Pen,         // a pen tablet or pen display
    TouchScreen, // fingers, on the picture
    Touchpad,    // fingers, beside it; only for those who ask for it
    None
};

// "pen", "touch screen" and so on.
std::string nameOf(Kind kind);

// What a device is good for. The event bits decide; what udev says of it is a hint where they leave a doubt.
struct Judgement
{
    Kind kind = Kind::None;
    std::string reason; // why it is none
    Surface surface;
};
Judgement judge(const InputDevice& device, bool udevSaysTouchScreen = false);

// A device of the machine, opened for a moment.
struct Found
{
    std::string node;
    std::string name; // empty where it could not be asked
    std::string identity;
    bool isOpened = false;
    bool saysTouchScreen = false; // udev
    std::bitset<768> buttons;     // the codes of its keys and buttons
    Judgement judgement;
};

// A connection to udev, for one thread.
class Udev
{
public:
    Udev();
    udev* handle() const { return m_handle.get(); }

    // All nodes of input devices, in the order of their numbers; a wanted path also where udev does not know
    // it.
    std::vector<Found> devices(const std::string& wanted = {}) const;

private:
    struct Unref
    {
        void operator()(udev* handle) const;
    };
    std::unique_ptr<udev, Unref> m_handle;
};

// Whether a device is the one that a person means: its path, also through links, or a part of its name in any
// case.
bool isMeant(const std::string& node, const std::string& name, const std::string& wanted);

// The device to sign on: the one that is meant; without a wish the first pen, otherwise the first touch
// screen. Throws Refusal, which tells what was looked at and why it was refused.
const Found& choose(const std::vector<Found>& devices, const std::string& wanted);

// How an ordinary user is allowed to use input devices.
extern const char* const kHowToGetPermission;

} // namespace pen

// What the environment asks of the driver.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace pen {

// Why the driver does not start, in words for the person at the keyboard.
class Refusal : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// A part of the device's surface, in micrometres from its upper left corner.
struct SurfaceArea
{
    long long left;
    long long top;
    long long width;
    long long height;
};

enum class Fit
{
    Keep,   // the largest centred rectangle of the writing area's proportions
    Stretch // all of the surface
};

// A button that is one of the pad's keys.
struct Button
{
    unsigned code;        // as in <linux/input-event-codes.h>
    std::string device;   // path, or part of the name, of the device that has it; empty: not said
    bool isUsual = false; // nobody asked for it: the device that is signed on has it, or nobody
};

struct Settings
{
    std::string device; // path, or part of a name; empty: the first pen, otherwise the first touch screen
    Fit fit = Fit::Keep;
    std::optional<SurfaceArea> area;
    int rotation = 0; // degrees by which the device is turned clockwise: 0, 90, 180 or 270
    std::optional<Button> confirm;
    std::optional<Button> cancel;
    bool grab = true; // keep the device from everybody else while the pad is open
};

// Reads the variables SCRIBERA_PEN_*; throws Refusal for a value that cannot be used.
Settings readSettings();

} // namespace pen

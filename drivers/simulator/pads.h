// The pads that the simulator can be: what each model reports and how large its writing area is.
#pragma once

#include <string>
#include <string_view>

namespace simulator {

// Writing area in pad units; the last column is originX + width - 1, the last row originY + height - 1.
struct Area
{
    int originX = 0;
    int originY = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Area&) const = default;
};

struct Pad
{
    int deviceType;
    std::string_view model;
    Area area;
    int maxPressure;
};

// The pad that a host takes for this model string: the first of the family whose name the text begins with,
// else the family's canonical pad. Null when no family has this device type.
const Pad* padForDevice(int deviceType, std::string_view modelText);

// The pad of exactly this name, with or without the "SC" before it, as people write it; null when there is
// none.
const Pad* padForModel(std::string_view name);

// The model string that a pad of this device type reports unless told otherwise.
std::string_view canonicalModel(int deviceType);

// All model names, separated by blanks, for messages and help texts.
std::string modelNames();

} // namespace simulator

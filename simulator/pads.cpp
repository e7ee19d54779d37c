#include "pads.h"

#include <array>

namespace simulator {
namespace {

constexpr Area AreaOf210{160, 220, 2360, 1430};
constexpr Area AreaOf420{200, 200, 2300, 1300};
constexpr Area AreaOf421B{2050, 1750, 21170, 11490};
constexpr Area AreaOfLarge{550, 180, 29870, 20120};

// In the order in which a host tests them, so the longer name stands before the name it begins with.
constexpr std::array<Pad, 11> Pads{{
    {2, "SCT470", AreaOf210, 1024},
    {2, "SCK210R1", AreaOf210, 1024},
    {2, "SCT480R1", AreaOf210, 1024},
    {2, "SCK190", AreaOf210, 1024},
    {2, "SCN210", AreaOf210, 1024},
    {2, "SCK210", AreaOf210, 2048},
    {2, "SCT12", AreaOf210, 2048},
    {5, "SCK420", AreaOf420, 2048},
    {7, "SCK421B", AreaOf421B, 2048},
    {3, "SCKM730", AreaOfLarge, 8192},
    {4, "SCT580", AreaOfLarge, 8192},
}};

} // namespace

std::string_view canonicalModel(int deviceType)
{
    switch (deviceType) {
    case 3:
        return "SCKM730";
    case 4:
        return "SCT580";
    case 5:
        return "SCK420";
    case 7:
        return "SCK421B";
    default:
        return "SCK210";
    }
}

const Pad* padForDevice(int deviceType, std::string_view modelText)
{
    const Pad* canonical = nullptr;
    for (const Pad& pad : Pads) {
        if (pad.deviceType != deviceType)
            continue;
        if (modelText.starts_with(pad.model))
            return &pad;
        if (pad.model == canonicalModel(deviceType))
            canonical = &pad;
    }
    return canonical;
}

const Pad* padForModel(std::string_view name)
{
    for (const Pad& pad : Pads) {
        if (name == pad.model || name == pad.model.substr(2))
            return &pad;
    }
    return nullptr;
}

std::string modelNames()
{
    std::string names;
    for (const Pad& pad : Pads) {
        if (!names.empty())
            names += ' ';
        names += pad.model;
    }
    return names;
}

} // namespace simulator
